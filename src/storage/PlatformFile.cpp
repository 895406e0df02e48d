// The parts of the platform layer that are the same on every system, written
// with its own calls.
#include "storage/PlatformFile.h"

namespace PlatformFile {

bool writeAll(int fd, const char *data, size_t length, int &err)
{
    return writeAt(fd, data, length, -1, err);
}

void closeFile(int fd)
{
    int err = 0;
    closeFile(fd, err);
}

} // namespace PlatformFile
