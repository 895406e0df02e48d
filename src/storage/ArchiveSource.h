#pragma once

#include <QtGlobal>

#include <zip.h>

#include <vector>

// A libzip source over the open archive file `fd` of `size` bytes that reads
// through a window of 1 MiB: unpacking reads the archive from front to back in
// pieces of a few KiB, which the window turns into one read call per MiB and no
// seeks. `tail`, the file's last bytes as the caller has read them already, is
// the first window: libzip starts at the end, and a small archive is read whole
// from it. The source owns `fd` and closes it when freed (also when creating it
// fails).
zip_source_t *windowedReadSource(int fd, qint64 size, std::vector<char> tail, zip_error_t *error);
