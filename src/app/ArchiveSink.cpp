#include "app/ArchiveSink.h"

#include <QByteArrayView>
#include <QRandomGenerator>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <thread>
#include <utility>

#ifdef Q_OS_UNIX
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#else
#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <string>
#endif

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

#ifdef Q_OS_UNIX

// Removes the leftover `file` of an earlier save unless a running save holds its lock.
void removeIfStale(const PlatformFile::Folder &dir, const QByteArray &file)
{
    const int fd = openat(dir.fd, file.constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0)
        return;
    struct stat st {};
    if (fstat(fd, &st) == 0 && S_ISREG(st.st_mode) && st.st_uid == geteuid() && flock(fd, LOCK_EX | LOCK_NB) == 0)
        unlinkat(dir.fd, file.constData(), 0);
    close(fd);
}

#else

std::wstring widePath(const PlatformFile::Folder &dir, const QByteArray &name)
{
    return PlatformFile::decodeName(dir.path + '/' + name).toStdWString();
}

// A running save keeps its file open without leave to delete it, so only the
// leftovers of ended saves can be removed.
void removeIfStale(const PlatformFile::Folder &dir, const QByteArray &file)
{
    if (PlatformFile::kindAt(dir, file) == PlatformFile::Kind::File)
        PlatformFile::removeFile(dir, file);
}

#endif

} // namespace

ArchiveSink::ArchiveSink(const PlatformFile::Folder &dir, QByteArray name) : m_dir(dir), m_name(std::move(name))
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

void ArchiveSink::removeStaleTemps(const PlatformFile::Folder &dir, const QByteArray &name)
{
    std::vector<PlatformFile::Entry> entries;
    int err = 0;
    PlatformFile::listFolder(dir, entries, err); // what could be listed is still cleared
    const QByteArray prefix = tempPrefix(name);
    for (const PlatformFile::Entry &entry : entries) {
        const QByteArrayView fileName(entry.name);
        if (fileName.startsWith(prefix) && isTempSuffix(fileName.sliced(prefix.size())))
            removeIfStale(dir, entry.name);
    }
}

zip_source_t *ArchiveSink::createSource(zip_error_t *error)
{
    return zip_source_function_create(&ArchiveSink::callback, this, error);
}

bool ArchiveSink::begin()
{
    rollback();
    if (!openOutput())
        return false;
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
        if (!PlatformFile::writeAt(m_fd, static_cast<const char *>(data), length, qint64(m_bufferStart), err))
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
    return publish();
}

#ifdef Q_OS_UNIX

// Opens the output: unnamed where the system allows, else under a new hidden
// name. Locked while the save runs.
bool ArchiveSink::openOutput()
{
    struct stat old {};
    const bool keepMode = fstatat(m_dir.fd, m_name.constData(), &old, AT_SYMLINK_NOFOLLOW) == 0 && S_ISREG(old.st_mode);
#if defined(Q_OS_LINUX) && defined(O_TMPFILE)
    if (!m_forceNamed)
        m_fd = openat(m_dir.fd, ".", O_TMPFILE | O_WRONLY | O_CLOEXEC, 0666);
#endif
    if (m_fd < 0) {
        for (int attempt = 0; attempt < 16 && m_fd < 0; ++attempt) {
            m_tempName = newTempName();
            m_fd = openat(m_dir.fd, m_tempName.constData(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666);
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
    return true;
}

// Makes the written file the target: on disk first, then renamed over it.
bool ArchiveSink::publish()
{
    if (fsync(m_fd) != 0)
        return failAndRollback(ZIP_ER_WRITE, errno);
#if defined(Q_OS_LINUX) && defined(O_TMPFILE)
    if (!m_named && !linkUnnamed())
        return false;
#endif
    if (renameat(m_dir.fd, m_tempName.constData(), m_dir.fd, m_name.constData()) != 0)
        return failAndRollback(ZIP_ER_RENAME, errno);
    m_named = false; // the file now is the target
    close(m_fd);
    m_fd = -1;
    if (fsync(m_dir.fd) != 0 && errno != EINVAL)
        return fail(ZIP_ER_WRITE, errno);
    return true;
}

void ArchiveSink::rollback()
{
    if (m_fd < 0)
        return;
    if (m_named)
        unlinkat(m_dir.fd, m_tempName.constData(), 0);
    close(m_fd);
    m_fd = -1;
    m_named = false;
}

#else

bool ArchiveSink::openOutput()
{
    // The new archive keeps the old one's hidden, system and archive marks.
    const DWORD old = GetFileAttributesW(widePath(m_dir, m_name).c_str());
    constexpr DWORD kept = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_ARCHIVE;
    m_attributes = old != INVALID_FILE_ATTRIBUTES && !(old & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT))
                       ? old & kept
                       : 0;
    if (m_attributes == 0)
        m_attributes = FILE_ATTRIBUTE_NORMAL;
    HANDLE file = INVALID_HANDLE_VALUE;
    DWORD error = 0;
    for (int attempt = 0; attempt < 16 && file == INVALID_HANDLE_VALUE; ++attempt) {
        m_tempName = newTempName();
        file = CreateFileW(widePath(m_dir, m_tempName).c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_NEW,
                           FILE_ATTRIBUTE_HIDDEN, nullptr);
        error = GetLastError();
        if (file == INVALID_HANDLE_VALUE && error != ERROR_FILE_EXISTS && error != ERROR_ALREADY_EXISTS)
            break;
    }
    if (file == INVALID_HANDLE_VALUE)
        return fail(ZIP_ER_TMPOPEN, PlatformFile::errnoFromSystem(error));
    m_named = true;
    m_fd = _open_osfhandle(reinterpret_cast<intptr_t>(file), _O_WRONLY | _O_BINARY);
    if (m_fd < 0) {
        CloseHandle(file);
        return failAndRollback(ZIP_ER_TMPOPEN, EMFILE);
    }
    return true;
}

// Makes the written file the target: on disk first, then moved over it. Windows
// moves no file that is open, so it is closed before the move.
bool ArchiveSink::publish()
{
    if (_commit(m_fd) != 0)
        return failAndRollback(ZIP_ER_WRITE, errno);
    int err = 0;
    const bool closed = PlatformFile::closeFile(m_fd, err);
    m_fd = -1;
    if (!closed)
        return failAndRollback(ZIP_ER_WRITE, err);
    const std::wstring temp = widePath(m_dir, m_tempName);
    SetFileAttributesW(temp.c_str(), m_attributes);
    if (!MoveFileExW(temp.c_str(), widePath(m_dir, m_name).c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
        return failAndRollback(ZIP_ER_RENAME, PlatformFile::lastSystemError());
    m_named = false; // the file now is the target
    return true;
}

void ArchiveSink::rollback()
{
    if (m_fd >= 0)
        PlatformFile::closeFile(m_fd);
    m_fd = -1;
    if (m_named)
        PlatformFile::removeFile(m_dir, m_tempName);
    m_named = false;
}

#endif

QByteArray ArchiveSink::newTempName() const
{
    return tempPrefix(m_name) + QByteArray::number(QRandomGenerator::global()->generate(), 16).rightJustified(8, '0');
}

#if defined(Q_OS_LINUX) && defined(O_TMPFILE)
// Gives the unnamed file a hidden name beside the target, ready for the rename.
bool ArchiveSink::linkUnnamed()
{
    for (int attempt = 0; attempt < 16; ++attempt) {
        m_tempName = newTempName();
        int result = linkat(m_fd, "", m_dir.fd, m_tempName.constData(), AT_EMPTY_PATH);
        if (result != 0 && errno != EEXIST) {
            // Linking a descriptor directly may need a privilege; the /proc link does not.
            const QByteArray procPath = "/proc/self/fd/" + QByteArray::number(m_fd);
            result = linkat(AT_FDCWD, procPath.constData(), m_dir.fd, m_tempName.constData(), AT_SYMLINK_FOLLOW);
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
#endif

bool ArchiveSink::flush()
{
    if (m_bufferLength == 0)
        return true;
    int err = 0;
    if (!PlatformFile::writeAt(m_fd, m_buffer.data(), m_bufferLength, qint64(m_bufferStart), err))
        return fail(ZIP_ER_WRITE, err);
    m_bufferStart += m_bufferLength;
    m_bufferLength = 0;
    if (m_stallForTest && !m_flushed) {
        // A save that stops here, after its first chunk reached the disk, lets a
        // test kill the process in the middle of a save.
        std::fputs("archive write stalled\n", stderr);
        std::fflush(stderr);
        std::this_thread::sleep_for(std::chrono::seconds(60));
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
