#include "storage/ArchiveSource.h"

#include "storage/PlatformFile.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr qint64 kWindow = qint64(1) << 20;

struct WindowedFile {
    PlatformFile::FileHandle file;
    qint64 size = 0;
    qint64 position = 0;
    qint64 windowStart = 0;
    qint64 windowLength = 0;
    std::vector<char> window;
    zip_error_t error;

    bool readAt(char *data, qint64 length, qint64 offset)
    {
        if (PlatformFile::readAt(file.get(), data, length, offset))
            return true;
        zip_error_set(&error, ZIP_ER_READ, 0);
        return false;
    }

    zip_int64_t read(char *data, qint64 wanted)
    {
        const qint64 length = std::min(wanted, size - position);
        if (length <= 0)
            return 0;
        if (length >= kWindow) { // a large piece goes straight to its place
            if (!readAt(data, length, position))
                return -1;
        } else {
            if (position < windowStart || position + length > windowStart + windowLength) {
                window.resize(size_t(std::min(kWindow, size))); // a small archive gets a small window
                windowStart = position;
                windowLength = std::min(kWindow, size - position);
                if (!readAt(window.data(), windowLength, windowStart)) {
                    windowLength = 0;
                    return -1;
                }
            }
            std::memcpy(data, window.data() + (position - windowStart), size_t(length));
        }
        position += length;
        return length;
    }
};

zip_int64_t callback(void *state, void *data, zip_uint64_t length, zip_source_cmd_t command)
{
    auto *file = static_cast<WindowedFile *>(state);
    switch (command) {
    case ZIP_SOURCE_OPEN: file->position = 0; return 0;
    case ZIP_SOURCE_READ:
        return file->read(static_cast<char *>(data), qint64(std::min<zip_uint64_t>(length, zip_uint64_t(file->size))));
    case ZIP_SOURCE_CLOSE: return 0;
    case ZIP_SOURCE_STAT: {
        auto *stat = static_cast<zip_stat_t *>(data);
        zip_stat_init(stat);
        stat->size = zip_uint64_t(file->size);
        stat->valid |= ZIP_STAT_SIZE;
        return sizeof(zip_stat_t);
    }
    case ZIP_SOURCE_ERROR: return zip_error_to_data(&file->error, data, length);
    case ZIP_SOURCE_FREE:
        zip_error_fini(&file->error);
        delete file;
        return 0;
    case ZIP_SOURCE_SEEK: {
        const zip_int64_t to = zip_source_seek_compute_offset(zip_uint64_t(file->position), zip_uint64_t(file->size),
                                                              data, length, &file->error);
        if (to < 0)
            return -1;
        file->position = to;
        return 0;
    }
    case ZIP_SOURCE_TELL: return file->position;
    case ZIP_SOURCE_SUPPORTS:
        return zip_source_make_command_bitmap(ZIP_SOURCE_OPEN, ZIP_SOURCE_READ, ZIP_SOURCE_CLOSE, ZIP_SOURCE_STAT,
                                              ZIP_SOURCE_ERROR, ZIP_SOURCE_FREE, ZIP_SOURCE_SEEK, ZIP_SOURCE_TELL,
                                              ZIP_SOURCE_SUPPORTS, -1);
    default: zip_error_set(&file->error, ZIP_ER_OPNOTSUPP, 0); return -1;
    }
}

} // namespace

zip_source_t *windowedReadSource(int fd, qint64 size, std::vector<char> tail, zip_error_t *error)
{
    auto *file = new WindowedFile;
    file->file = PlatformFile::FileHandle(fd);
    file->size = size;
    file->windowLength = std::min(size, qint64(tail.size()));
    file->windowStart = size - file->windowLength;
    file->window = std::move(tail);
    zip_error_init(&file->error);
    zip_source_t *source = zip_source_function_create(callback, file, error);
    if (!source) {
        zip_error_fini(&file->error);
        delete file;
    }
    return source;
}
