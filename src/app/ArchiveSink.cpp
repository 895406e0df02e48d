#include "app/ArchiveSink.h"

#include <QByteArrayView>
#include <QRandomGenerator>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace {

// Writes reach the disk in chunks of this size.
constexpr size_t kBufferSize = 256 * 1024;

QByteArray tempPrefix(const QByteArray &name)
{
    return '.' + name + ".cubrix-";
}

bool isTempSuffix(QByteArrayView suffix)
{
    return suffix.size() == 8 && std::all_of(suffix.begin(), suffix.end(), [](char c) {
               return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f');
           });
}

bool writeAt(int fd, const char *data, size_t length, off_t offset, int &err)
{
    while (length > 0) {
        const ssize_t n = pwrite(fd, data, length, offset);
        if (n < 0) {
            if (errno == EINTR)
                continue;
            err = errno;
            return false;
        }
        data += n;
        length -= size_t(n);
        offset += n;
    }
    return true;
}

} // namespace

ArchiveSink::ArchiveSink(int dirFd, QByteArray name) : m_dirFd(dirFd), m_name(std::move(name))
{
    zip_error_init(&m_error);
    // Test hook: "stall" pauses the save after its first chunk, "named" takes the
    // path of systems without O_TMPFILE.
    const QByteArray hook = qgetenv("CUBRIX_TEST_ARCHIVE_WRITE");
    m_stallForTest = hook.contains("stall");
    m_forceNamed = hook.contains("named");
}

ArchiveSink::~ArchiveSink()
{
    rollback();
    zip_error_fini(&m_error);
}

void ArchiveSink::removeStaleTemps(int dirFd, const QByteArray &name)
{
    const int listFd = dup(dirFd);
    DIR *dir = listFd >= 0 ? fdopendir(listFd) : nullptr;
    if (!dir) {
        if (listFd >= 0)
            close(listFd);
        return;
    }
    rewinddir(dir); // the duplicate shares the folder's read position
    const QByteArray prefix = tempPrefix(name);
    std::vector<QByteArray> candidates;
    while (dirent *entry = readdir(dir)) {
        const QByteArrayView fileName(entry->d_name);
        if (fileName.startsWith(prefix) && isTempSuffix(fileName.sliced(prefix.size())))
            candidates.push_back(fileName.toByteArray());
    }
    closedir(dir);
    for (const QByteArray &file : candidates) {
        const int fd = openat(dirFd, file.constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
        if (fd < 0)
            continue;
        struct stat st {};
        if (fstat(fd, &st) == 0 && S_ISREG(st.st_mode) && st.st_uid == geteuid()
            && flock(fd, LOCK_EX | LOCK_NB) == 0)
            unlinkat(dirFd, file.constData(), 0);
        close(fd);
    }
}

zip_source_t *ArchiveSink::createSource(zip_error_t *error)
{
    return zip_source_function_create(&ArchiveSink::callback, this, error);
}

bool ArchiveSink::begin()
{
    rollback();
    struct stat old {};
    const bool keepMode = fstatat(m_dirFd, m_name.constData(), &old, AT_SYMLINK_NOFOLLOW) == 0 && S_ISREG(old.st_mode);
#ifdef O_TMPFILE
    if (!m_forceNamed)
        m_fd = openat(m_dirFd, ".", O_TMPFILE | O_WRONLY | O_CLOEXEC, 0666);
#endif
    if (m_fd < 0) {
        for (int attempt = 0; attempt < 16 && m_fd < 0; ++attempt) {
            m_tempName = newTempName();
            m_fd = openat(m_dirFd, m_tempName.constData(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666);
            if (m_fd < 0 && errno != EEXIST)
                break;
        }
        if (m_fd < 0)
            return fail(ZIP_ER_TMPOPEN, errno);
        m_named = true;
    }
    flock(m_fd, LOCK_EX | LOCK_NB);
    if (keepMode)
        fchmod(m_fd, old.st_mode & 0777); // the new archive keeps the old one's rights
    m_buffer.resize(kBufferSize);
    m_bufferStart = 0;
    m_bufferLength = 0;
    m_size = 0;
    m_flushed = false;
    return true;
}

bool ArchiveSink::write(const void *data, size_t length)
{
    if (m_fd < 0)
        return fail(ZIP_ER_INTERNAL, 0);
    if (m_bufferLength + length > m_buffer.size() && !flush())
        return false;
    if (length >= m_buffer.size()) {
        int err = 0;
        if (!writeAt(m_fd, static_cast<const char *>(data), length, off_t(m_bufferStart), err))
            return fail(ZIP_ER_WRITE, err);
        m_bufferStart += length;
        m_size = std::max(m_size, m_bufferStart);
        return true;
    }
    std::memcpy(m_buffer.data() + m_bufferLength, data, length);
    m_bufferLength += length;
    m_size = std::max(m_size, m_bufferStart + m_bufferLength);
    return true;
}

bool ArchiveSink::seek(zip_uint64_t offset)
{
    if (!flush())
        return false;
    m_bufferStart = offset;
    return true;
}

bool ArchiveSink::commit()
{
    if (m_fd < 0)
        return fail(ZIP_ER_INTERNAL, 0);
    if (!flush())
        return false;
    if (fsync(m_fd) != 0)
        return failAndRollback(ZIP_ER_WRITE, errno);
    if (!m_named && !linkUnnamed())
        return false;
    if (renameat(m_dirFd, m_tempName.constData(), m_dirFd, m_name.constData()) != 0)
        return failAndRollback(ZIP_ER_RENAME, errno);
    m_named = false; // the file now is the target
    close(m_fd);
    m_fd = -1;
    if (fsync(m_dirFd) != 0 && errno != EINVAL)
        return fail(ZIP_ER_WRITE, errno);
    return true;
}

void ArchiveSink::rollback()
{
    if (m_fd < 0)
        return;
    if (m_named)
        unlinkat(m_dirFd, m_tempName.constData(), 0);
    close(m_fd);
    m_fd = -1;
    m_named = false;
}

QByteArray ArchiveSink::newTempName() const
{
    return tempPrefix(m_name) + QByteArray::number(QRandomGenerator::global()->generate(), 16).rightJustified(8, '0');
}

// Gives the unnamed file a hidden name beside the target, ready for the rename.
bool ArchiveSink::linkUnnamed()
{
    for (int attempt = 0; attempt < 16; ++attempt) {
        m_tempName = newTempName();
        int result = linkat(m_fd, "", m_dirFd, m_tempName.constData(), AT_EMPTY_PATH);
        if (result != 0 && errno != EEXIST) {
            // Linking a descriptor directly may need a privilege; the /proc link does not.
            const QByteArray procPath = "/proc/self/fd/" + QByteArray::number(m_fd);
            result = linkat(AT_FDCWD, procPath.constData(), m_dirFd, m_tempName.constData(), AT_SYMLINK_FOLLOW);
        }
        if (result == 0) {
            m_named = true;
            return true;
        }
        if (errno != EEXIST)
            break;
    }
    return failAndRollback(ZIP_ER_TMPOPEN, errno);
}

bool ArchiveSink::flush()
{
    if (m_bufferLength == 0)
        return true;
    int err = 0;
    if (!writeAt(m_fd, m_buffer.data(), m_bufferLength, off_t(m_bufferStart), err))
        return fail(ZIP_ER_WRITE, err);
    m_bufferStart += m_bufferLength;
    m_bufferLength = 0;
    if (m_stallForTest && !m_flushed) {
        // A save that stops here, after its first chunk reached the disk, lets a
        // test kill the process in the middle of a save.
        std::fputs("archive write stalled\n", stderr);
        std::fflush(stderr);
        sleep(60);
    }
    m_flushed = true;
    return true;
}

bool ArchiveSink::fail(int zipCode, int err)
{
    zip_error_set(&m_error, zipCode, err);
    return false;
}

bool ArchiveSink::failAndRollback(int zipCode, int err)
{
    fail(zipCode, err);
    rollback();
    return false;
}

// libzip's side of the sink. The output starts as "no file yet": libzip then
// builds a new archive and never reads the old one.
zip_int64_t ArchiveSink::callback(void *state, void *data, zip_uint64_t length, zip_source_cmd_t command)
{
    auto *sink = static_cast<ArchiveSink *>(state);
    switch (command) {
    case ZIP_SOURCE_SUPPORTS:
        return zip_source_make_command_bitmap(
            ZIP_SOURCE_OPEN, ZIP_SOURCE_READ, ZIP_SOURCE_CLOSE, ZIP_SOURCE_STAT, ZIP_SOURCE_ERROR, ZIP_SOURCE_FREE,
            ZIP_SOURCE_SEEK, ZIP_SOURCE_TELL, ZIP_SOURCE_SUPPORTS, ZIP_SOURCE_BEGIN_WRITE, ZIP_SOURCE_COMMIT_WRITE,
            ZIP_SOURCE_ROLLBACK_WRITE, ZIP_SOURCE_WRITE, ZIP_SOURCE_SEEK_WRITE, ZIP_SOURCE_TELL_WRITE,
            ZIP_SOURCE_REMOVE, -1);
    case ZIP_SOURCE_STAT:
        // libzip reads "no such file" as the start of a new archive.
        zip_error_set(&sink->m_error, ZIP_ER_READ, ENOENT);
        return -1;
    case ZIP_SOURCE_OPEN:
    case ZIP_SOURCE_CLOSE:
    case ZIP_SOURCE_READ:
    case ZIP_SOURCE_TELL:
        return 0;
    case ZIP_SOURCE_SEEK:
        return zip_source_seek_compute_offset(0, 0, data, length, &sink->m_error) < 0 ? -1 : 0;
    case ZIP_SOURCE_ERROR:
        return zip_error_to_data(&sink->m_error, data, length);
    case ZIP_SOURCE_FREE:
    case ZIP_SOURCE_ROLLBACK_WRITE:
        sink->rollback();
        return 0;
    case ZIP_SOURCE_BEGIN_WRITE:
        return sink->begin() ? 0 : -1;
    case ZIP_SOURCE_WRITE:
        return sink->write(data, length) ? zip_int64_t(length) : -1;
    case ZIP_SOURCE_TELL_WRITE:
        return zip_int64_t(sink->tell());
    case ZIP_SOURCE_SEEK_WRITE: {
        const zip_int64_t offset = zip_source_seek_compute_offset(sink->tell(), sink->size(), data, length, &sink->m_error);
        return offset >= 0 && sink->seek(zip_uint64_t(offset)) ? 0 : -1;
    }
    case ZIP_SOURCE_COMMIT_WRITE:
        return sink->commit() ? 0 : -1;
    default: // REMOVE among them: the sink never deletes the target
        zip_error_set(&sink->m_error, ZIP_ER_OPNOTSUPP, 0);
        return -1;
    }
}
