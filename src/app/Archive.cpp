#include "app/Archive.h"

#include <QByteArrayView>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>

#include <zip.h>

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
#include <vector>

using namespace Qt::StringLiterals;

namespace {

// Entry names deeper than this are not blockset content; they are skipped on
// extraction and refused on packing, which keeps every folder walk bounded.
constexpr int kMaxDepth = 64;
// Unpacking and packing move data in chunks of this size.
constexpr size_t kChunk = 256 * 1024;
// More end-of-directory signatures than this in an archive's tail make libzip try
// each candidate directory in turn; no real archive has them, so it is refused.
constexpr int kMaxEndRecords = 16;

QString errnoText(int err)
{
    return QString::fromLocal8Bit(std::strerror(err));
}

QString fromFsName(const QByteArray &name)
{
    return QFile::decodeName(name);
}

QString zipErrorText(int zipCode)
{
    zip_error_t error;
    zip_error_init_with_code(&error, zipCode);
    const QString text = QString::fromUtf8(zip_error_strerror(&error));
    zip_error_fini(&error);
    return text;
}

// An entry's name as UTF-8: as stored when it is flagged or valid UTF-8, else read
// as code page 437, the ZIP format's own (libzip's guess).
QByteArray entryName(zip_t *za, zip_uint64_t index)
{
    const char *name = zip_get_name(za, index, ZIP_FL_ENC_GUESS);
    return name ? QByteArray(name) : QByteArray();
}

// Splits an entry name into the folder components it may be written to. "\" is a
// separator too (old Windows tools wrote such names). False for a name that must
// not be written at all: absolute, with a drive letter, with a ".." component, or
// too deep.
bool splitEntryName(const QByteArray &name, std::vector<QByteArray> &parts, bool &isFolder)
{
    parts.clear();
    if (name.isEmpty())
        return false;
    const char first = name.at(0);
    if (first == '/' || first == '\\')
        return false;
    if (name.size() >= 2 && name.at(1) == ':'
        && ((first >= 'A' && first <= 'Z') || (first >= 'a' && first <= 'z')))
        return false;
    const char last = name.at(name.size() - 1);
    isFolder = last == '/' || last == '\\';
    qsizetype start = 0;
    for (qsizetype i = 0; i <= name.size(); ++i) {
        if (i < name.size() && name.at(i) != '/' && name.at(i) != '\\')
            continue;
        const QByteArrayView part(name.constData() + start, i - start);
        start = i + 1;
        if (part.isEmpty() || part == ".")
            continue;
        if (part == "..")
            return false;
        parts.push_back(part.toByteArray());
        if (int(parts.size()) > kMaxDepth)
            return false;
    }
    return !parts.empty();
}

bool writeAll(int fd, const char *data, size_t length, off_t offset, int &err)
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

// Opens (creating where missing) the folder made of the first `count` components
// below the extraction root, one component at a time and never through a link.
// Remembers the last folder: the entries of one folder usually follow each other.
class FolderWalker {
public:
    explicit FolderWalker(int rootFd) : m_root(rootFd) {}
    ~FolderWalker() { closeCurrent(); }
    FolderWalker(const FolderWalker &) = delete;
    FolderWalker &operator=(const FolderWalker &) = delete;

    int open(const std::vector<QByteArray> &parts, size_t count, QString &error)
    {
        QByteArray key;
        for (size_t i = 0; i < count; ++i) {
            key += parts[i];
            key += '/';
        }
        if (m_fd >= 0 && key == m_key)
            return m_fd;
        closeCurrent();
        int current = m_root;
        for (size_t i = 0; i < count; ++i) {
            int next = openat(current, parts[i].constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
            if (next < 0 && errno == ENOENT) {
                if (mkdirat(current, parts[i].constData(), 0777) == 0 || errno == EEXIST)
                    next = openat(current, parts[i].constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
            }
            const int err = errno;
            if (current != m_root)
                close(current);
            if (next < 0) {
                error = u"cannot make folder \"%1\": %2"_s.arg(fromFsName(key), errnoText(err));
                return -1;
            }
            current = next;
        }
        if (current == m_root)
            return m_root;
        m_fd = current;
        m_key = key;
        return m_fd;
    }

private:
    void closeCurrent()
    {
        if (m_fd >= 0)
            close(m_fd);
        m_fd = -1;
        m_key.clear();
    }

    int m_root;
    int m_fd = -1;
    QByteArray m_key;
};

// The file that a save writes, delivered to libzip as its output.
//
// libzip's own file output writes a temporary file beside the target, renames it
// without flushing it to disk and leaves it behind when the process dies. Instead
// libzip writes into this sink: an unnamed O_TMPFILE file in the target's folder,
// which vanishes by itself if the process dies or the save fails. On commit the
// data is fsync'ed, the file is linked under a hidden temporary name, renamed over
// the target (the old archive stays whole until this instant) and the folder is
// fsync'ed so that the rename survives a power loss.
//
// Where O_TMPFILE is not available the sink creates a uniquely named hidden file
// instead (".<target>.cubrix-XXXXXXXX"), removed on every failure. Every such file
// is flock'ed while its save runs, so the next save to the same folder can tell
// the leftovers of a killed process (no lock) from a save in progress and removes
// them.
class ArchiveSink {
public:
    ArchiveSink(int dirFd, QByteArray name) : m_dirFd(dirFd), m_name(std::move(name))
    {
        zip_error_init(&m_error);
        // Test hook: "stall" pauses the save after its first chunk, "named" takes
        // the path of systems without O_TMPFILE.
        const QByteArray hook = qgetenv("CUBRIX_TEST_ARCHIVE_WRITE");
        m_stallForTest = hook.contains("stall");
        m_forceNamed = hook.contains("named");
    }
    ~ArchiveSink()
    {
        rollback();
        zip_error_fini(&m_error);
    }
    ArchiveSink(const ArchiveSink &) = delete;
    ArchiveSink &operator=(const ArchiveSink &) = delete;

    static QByteArray tempPrefix(const QByteArray &name) { return '.' + name + ".cubrix-"; }

    // Removes hidden temporary files of earlier saves to `name` whose process is gone.
    static void removeStaleTemps(int dirFd, const QByteArray &name)
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
        std::vector<QByteArray> stale;
        while (dirent *entry = readdir(dir)) {
            const QByteArrayView fileName(entry->d_name);
            if (fileName.size() != prefix.size() + 8 || !fileName.startsWith(prefix))
                continue;
            const QByteArrayView suffix = fileName.sliced(prefix.size());
            if (std::all_of(suffix.begin(), suffix.end(),
                            [](char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f'); }))
                stale.push_back(fileName.toByteArray());
        }
        closedir(dir);
        for (const QByteArray &file : stale) {
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

    bool begin()
    {
        rollback();
        struct stat old {};
        const bool keepMode = fstatat(m_dirFd, m_name.constData(), &old, AT_SYMLINK_NOFOLLOW) == 0
                              && S_ISREG(old.st_mode);
#ifdef O_TMPFILE
        if (!m_forceNamed)
            m_fd = openat(m_dirFd, ".", O_TMPFILE | O_WRONLY | O_CLOEXEC, 0666);
#endif
        if (m_fd < 0) {
            for (int attempt = 0; attempt < 16 && m_fd < 0; ++attempt) {
                m_tempName = newTempName();
                m_fd = openat(m_dirFd, m_tempName.constData(),
                              O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666);
                if (m_fd < 0 && errno != EEXIST)
                    break;
            }
            if (m_fd < 0)
                return fail(ZIP_ER_TMPOPEN, errno);
            m_named = true;
        }
        flock(m_fd, LOCK_EX | LOCK_NB);
        if (keepMode)
            fchmod(m_fd, old.st_mode & 0777);
        m_buffer.resize(kChunk);
        m_bufferStart = 0;
        m_bufferLength = 0;
        m_size = 0;
        m_flushed = false;
        return true;
    }

    bool write(const void *data, size_t length)
    {
        if (m_fd < 0)
            return fail(ZIP_ER_INTERNAL, 0);
        if (m_bufferLength + length > m_buffer.size() && !flush())
            return false;
        if (length >= m_buffer.size()) {
            int err = 0;
            if (!writeAll(m_fd, static_cast<const char *>(data), length, off_t(m_bufferStart), err))
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

    zip_uint64_t tell() const { return m_bufferStart + m_bufferLength; }
    zip_uint64_t size() const { return m_size; }

    bool seek(zip_uint64_t offset)
    {
        if (!flush())
            return false;
        m_bufferStart = offset;
        return true;
    }

    bool commit()
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

    void rollback()
    {
        if (m_fd < 0)
            return;
        if (m_named)
            unlinkat(m_dirFd, m_tempName.constData(), 0);
        close(m_fd);
        m_fd = -1;
        m_named = false;
    }

    zip_error_t *error() { return &m_error; }

private:
    QByteArray newTempName() const
    {
        return tempPrefix(m_name)
               + QByteArray::number(QRandomGenerator::global()->generate(), 16).rightJustified(8, '0');
    }

    // Gives the unnamed file a hidden name beside the target, ready for the rename.
    bool linkUnnamed()
    {
        for (int attempt = 0; attempt < 16; ++attempt) {
            m_tempName = newTempName();
            int result = linkat(m_fd, "", m_dirFd, m_tempName.constData(), AT_EMPTY_PATH);
            if (result != 0 && errno != EEXIST) {
                // Linking a descriptor directly needs a privilege; the /proc link does not.
                const QByteArray procPath = "/proc/self/fd/" + QByteArray::number(m_fd);
                result = linkat(AT_FDCWD, procPath.constData(), m_dirFd, m_tempName.constData(),
                                AT_SYMLINK_FOLLOW);
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

    bool flush()
    {
        if (m_bufferLength == 0)
            return true;
        int err = 0;
        if (!writeAll(m_fd, m_buffer.data(), m_bufferLength, off_t(m_bufferStart), err))
            return fail(ZIP_ER_WRITE, err);
        m_bufferStart += m_bufferLength;
        m_bufferLength = 0;
        if (m_stallForTest && !m_flushed) {
            // A save that stops here, after its first chunk reached the disk, lets
            // a test kill the process in the middle of a save.
            std::fputs("archive write stalled\n", stderr);
            std::fflush(stderr);
            sleep(60);
        }
        m_flushed = true;
        return true;
    }

    bool fail(int zipCode, int err)
    {
        zip_error_set(&m_error, zipCode, err);
        return false;
    }

    bool failAndRollback(int zipCode, int err)
    {
        fail(zipCode, err);
        rollback();
        return false;
    }

    int m_dirFd;
    QByteArray m_name;
    QByteArray m_tempName;
    int m_fd = -1;
    bool m_named = false;
    bool m_stallForTest = false;
    bool m_forceNamed = false;
    bool m_flushed = false;
    std::vector<char> m_buffer;
    zip_uint64_t m_bufferStart = 0;
    size_t m_bufferLength = 0;
    zip_uint64_t m_size = 0;
    zip_error_t m_error;
};

// libzip's interface to the sink. The output starts as "no file": libzip then
// builds a new archive and never reads the old one.
zip_int64_t sinkCallback(void *state, void *data, zip_uint64_t length, zip_source_cmd_t command)
{
    auto *sink = static_cast<ArchiveSink *>(state);
    switch (command) {
    case ZIP_SOURCE_SUPPORTS:
        return zip_source_make_command_bitmap(
            ZIP_SOURCE_OPEN, ZIP_SOURCE_READ, ZIP_SOURCE_CLOSE, ZIP_SOURCE_STAT, ZIP_SOURCE_ERROR,
            ZIP_SOURCE_FREE, ZIP_SOURCE_SEEK, ZIP_SOURCE_TELL, ZIP_SOURCE_SUPPORTS, ZIP_SOURCE_BEGIN_WRITE,
            ZIP_SOURCE_COMMIT_WRITE, ZIP_SOURCE_ROLLBACK_WRITE, ZIP_SOURCE_WRITE, ZIP_SOURCE_SEEK_WRITE,
            ZIP_SOURCE_TELL_WRITE, ZIP_SOURCE_REMOVE, -1);
    case ZIP_SOURCE_STAT:
        zip_error_set(sink->error(), ZIP_ER_READ, ENOENT);
        return -1;
    case ZIP_SOURCE_OPEN:
    case ZIP_SOURCE_CLOSE:
    case ZIP_SOURCE_READ:
    case ZIP_SOURCE_TELL:
        return 0;
    case ZIP_SOURCE_SEEK:
        return zip_source_seek_compute_offset(0, 0, data, length, sink->error()) < 0 ? -1 : 0;
    case ZIP_SOURCE_ERROR:
        return zip_error_to_data(sink->error(), data, length);
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
        const zip_int64_t offset =
            zip_source_seek_compute_offset(sink->tell(), sink->size(), data, length, sink->error());
        return offset >= 0 && sink->seek(zip_uint64_t(offset)) ? 0 : -1;
    }
    case ZIP_SOURCE_COMMIT_WRITE:
        return sink->commit() ? 0 : -1;
    default:
        zip_error_set(sink->error(), ZIP_ER_OPNOTSUPP, 0);
        return -1;
    }
}

struct PackedFile {
    QByteArray entryName; // relative, "/" separated
    QByteArray path;      // on disk
};

} // namespace

struct Archive::Impl {
    zip_t *reader = nullptr;
    QString readerPath;
    bool writing = false;
    QString target;
    std::vector<PackedFile> files;
    std::vector<QByteArray> emptyFolders; // "name/" entries
    QString error;

    void closeReader()
    {
        if (reader)
            zip_discard(reader);
        reader = nullptr;
        readerPath.clear();
    }

    bool fail(const QString &text)
    {
        error = text;
        return false;
    }

    bool writeEmptyArchive(ArchiveSink &sink);
};

Archive::Archive() : d(std::make_unique<Impl>()) {}

Archive::~Archive()
{
    d->closeReader();
}

bool Archive::openArchive(const QString &path)
{
    d->closeReader();
    d->error.clear();
    // The file is opened here (not by libzip) so that a folder, a pipe or an empty
    // file is refused before libzip sees it, and so that the tail check and libzip
    // read the same file.
    const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0)
        return d->fail(u"cannot open \"%1\": %2"_s.arg(path, errnoText(errno)));
    struct stat st {};
    if (fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
        close(fd);
        return d->fail(u"\"%1\" is not a file"_s.arg(path));
    }
    if (st.st_size == 0) {
        close(fd);
        return d->fail(u"\"%1\" is empty"_s.arg(path));
    }
    fcntl(fd, F_SETFL, fcntl(fd, F_GETFL) & ~O_NONBLOCK);

    // The end-of-directory record lies in the last 64 KiB + 22 bytes.
    const qint64 tailSize = std::min<qint64>(st.st_size, 65535 + 22);
    QByteArray tail(tailSize, '\0');
    if (pread(fd, tail.data(), size_t(tailSize), off_t(st.st_size - tailSize)) != ssize_t(tailSize)) {
        close(fd);
        return d->fail(u"cannot read \"%1\""_s.arg(path));
    }
    const qsizetype endRecords = tail.count(QByteArrayView("PK\x05\x06", 4));
    if (endRecords == 0 || endRecords > kMaxEndRecords) {
        close(fd);
        return d->fail(u"\"%1\" is not a ZIP archive"_s.arg(path));
    }

    int zipCode = 0;
    d->reader = zip_fdopen(fd, ZIP_RDONLY | ZIP_CHECKCONS, &zipCode);
    if (!d->reader) {
        close(fd);
        return d->fail(u"\"%1\" is not a readable ZIP archive: %2"_s.arg(path, zipErrorText(zipCode)));
    }
    d->readerPath = path;
    return true;
}

bool Archive::extractAll(const QString &folder)
{
    d->error.clear();
    if (!d->reader)
        return d->fail(u"no archive is open"_s);
    const int rootFd = ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (rootFd < 0)
        return d->fail(u"cannot open folder \"%1\": %2"_s.arg(folder, errnoText(errno)));

    bool ok = true;
    {
        FolderWalker walker(rootFd);
        std::vector<char> buffer(kChunk);
        std::vector<QByteArray> parts;
        const zip_int64_t count = zip_get_num_entries(d->reader, 0);
        for (zip_int64_t i = 0; ok && i < count; ++i) {
            const zip_uint64_t index = zip_uint64_t(i);
            const QByteArray name = entryName(d->reader, index);
            bool isFolder = false;
            if (!splitEntryName(name, parts, isFolder))
                continue; // would land outside the folder
            zip_uint8_t system = 0;
            zip_uint32_t attributes = 0;
            if (zip_file_get_external_attributes(d->reader, index, 0, &system, &attributes) == 0
                && system == ZIP_OPSYS_UNIX && ((attributes >> 16) & S_IFMT) == S_IFLNK)
                continue; // links are never created

            QString error;
            if (isFolder) {
                if (walker.open(parts, parts.size(), error) < 0)
                    ok = d->fail(error);
                continue;
            }
            const int dirFd = walker.open(parts, parts.size() - 1, error);
            if (dirFd < 0) {
                ok = d->fail(error);
                break;
            }
            const QByteArray &leaf = parts.back();
            const QString shown = QString::fromUtf8(name);
            // O_NOFOLLOW: a link found in the folder is refused, never written through;
            // O_NONBLOCK: a pipe in its place cannot make the open hang.
            const int fd = openat(dirFd, leaf.constData(),
                                  O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0666);
            if (fd < 0) {
                ok = d->fail(u"cannot write \"%1\": %2"_s.arg(shown, errnoText(errno)));
                break;
            }
            struct stat st {};
            if (fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
                close(fd);
                ok = d->fail(u"cannot write \"%1\": not a file"_s.arg(shown));
                break;
            }
            zip_file_t *entry = zip_fopen_index(d->reader, index, 0);
            if (!entry) {
                ok = d->fail(u"cannot read \"%1\": %2"_s.arg(shown, QString::fromUtf8(zip_strerror(d->reader))));
            } else {
                off_t offset = 0;
                for (;;) {
                    const zip_int64_t n = zip_fread(entry, buffer.data(), buffer.size());
                    if (n < 0) {
                        ok = d->fail(u"cannot read \"%1\": %2"_s.arg(shown, QString::fromUtf8(zip_file_strerror(entry))));
                        break;
                    }
                    if (n == 0)
                        break;
                    int err = 0;
                    if (!writeAll(fd, buffer.data(), size_t(n), offset, err)) {
                        ok = d->fail(u"cannot write \"%1\": %2"_s.arg(shown, errnoText(err)));
                        break;
                    }
                    offset += n;
                }
                // libzip reports a CRC mismatch at the latest here.
                if (zip_fclose(entry) != 0 && ok)
                    ok = d->fail(u"cannot read \"%1\": checksum or data error"_s.arg(shown));
            }
            if (ok) {
                zip_stat_t info;
                if (zip_stat_index(d->reader, index, 0, &info) == 0 && (info.valid & ZIP_STAT_MTIME)) {
                    const timespec times[2] = {{info.mtime, 0}, {info.mtime, 0}};
                    futimens(fd, times);
                }
            }
            if (close(fd) != 0 && ok)
                ok = d->fail(u"cannot write \"%1\": %2"_s.arg(shown, errnoText(errno)));
            if (!ok)
                unlinkat(dirFd, leaf.constData(), 0); // a half-read entry is no entry
        }
    }
    close(rootFd);
    return ok;
}

QStringList Archive::entryNames() const
{
    QStringList names;
    if (!d->reader)
        return names;
    const zip_int64_t count = zip_get_num_entries(d->reader, 0);
    for (zip_int64_t i = 0; i < count; ++i) {
        names.append(QString::fromUtf8(entryName(d->reader, zip_uint64_t(i))));
    }
    return names;
}

bool Archive::readEntry(const QString &name, QByteArray &data, qint64 maxSize)
{
    data.clear();
    d->error.clear();
    if (!d->reader)
        return d->fail(u"no archive is open"_s);
    const QByteArray wanted = name.toUtf8();
    const zip_int64_t count = zip_get_num_entries(d->reader, 0);
    for (zip_int64_t i = 0; i < count; ++i) {
        if (entryName(d->reader, zip_uint64_t(i)) != wanted)
            continue;
        zip_stat_t info;
        if (zip_stat_index(d->reader, zip_uint64_t(i), 0, &info) != 0 || !(info.valid & ZIP_STAT_SIZE))
            return d->fail(u"cannot read \"%1\""_s.arg(name));
        if (info.size > zip_uint64_t(maxSize))
            return d->fail(u"\"%1\" is too large"_s.arg(name));
        zip_file_t *entry = zip_fopen_index(d->reader, zip_uint64_t(i), 0);
        if (!entry)
            return d->fail(u"cannot read \"%1\": %2"_s.arg(name, QString::fromUtf8(zip_strerror(d->reader))));
        data.resize(qsizetype(info.size));
        qsizetype filled = 0;
        bool ok = true;
        char probe = 0;
        for (;;) {
            // One byte beyond the stated size would reveal a lying directory.
            char *target = filled < data.size() ? data.data() + filled : &probe;
            const zip_uint64_t room = filled < data.size() ? zip_uint64_t(data.size() - filled) : 1;
            const zip_int64_t n = zip_fread(entry, target, room);
            if (n == 0)
                break;
            if (n < 0 || target == &probe) {
                ok = false;
                break;
            }
            filled += qsizetype(n);
        }
        if (zip_fclose(entry) != 0 || filled != data.size())
            ok = false;
        if (!ok) {
            data.clear();
            return d->fail(u"cannot read \"%1\": checksum or data error"_s.arg(name));
        }
        return true;
    }
    return d->fail(u"\"%1\" is not in the archive"_s.arg(name));
}

bool Archive::newArchive(const QString &path)
{
    d->error.clear();
    d->files.clear();
    d->emptyFolders.clear();
    d->target = path;
    d->writing = !path.isEmpty();
    return true;
}

bool Archive::addFiles(const QString &folder, bool recursive)
{
    d->error.clear();
    if (!d->writing)
        return d->fail(u"no archive was started"_s);
    QByteArray root = QFile::encodeName(folder);
    while (root.size() > 1 && root.endsWith('/'))
        root.chop(1);
    const int rootFd = ::open(root.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (rootFd < 0)
        return d->fail(u"cannot read folder \"%1\": %2"_s.arg(folder, errnoText(errno)));

    // Depth-first, names sorted: the archive lists the top-level files first, then
    // each sub-folder with its contents, the same on every run.
    struct Pending {
        QByteArray relative; // "" for the folder itself, else "a/b/"
        int depth;
    };
    std::vector<Pending> pending{{QByteArray(), 0}};
    bool ok = true;
    while (ok && !pending.empty()) {
        const Pending current = pending.back();
        pending.pop_back();
        const int fd = current.relative.isEmpty()
                           ? dup(rootFd)
                           : openat(rootFd, current.relative.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
        DIR *dir = fd >= 0 ? fdopendir(fd) : nullptr;
        if (!dir) {
            const int err = errno;
            if (fd >= 0)
                close(fd);
            ok = d->fail(u"cannot read folder \"%1\": %2"_s.arg(fromFsName(root + '/' + current.relative), errnoText(err)));
            break;
        }
        rewinddir(dir);
        std::vector<QByteArray> files;
        std::vector<QByteArray> folders;
        bool empty = true;
        errno = 0;
        while (dirent *entry = readdir(dir)) {
            const QByteArray name(entry->d_name);
            if (name == "." || name == "..")
                continue;
            empty = false;
            unsigned char type = entry->d_type;
            if (type == DT_UNKNOWN) {
                struct stat st {};
                if (fstatat(dirfd(dir), entry->d_name, &st, AT_SYMLINK_NOFOLLOW) == 0)
                    type = S_ISREG(st.st_mode) ? DT_REG : S_ISDIR(st.st_mode) ? DT_DIR : DT_UNKNOWN;
            }
            // Links, pipes and devices are no blockset content and are not packed.
            if (type == DT_REG)
                files.push_back(name);
            else if (type == DT_DIR && recursive)
                folders.push_back(name);
            errno = 0;
        }
        const int readError = errno;
        closedir(dir);
        if (readError != 0) {
            ok = d->fail(u"cannot read folder \"%1\": %2"_s.arg(fromFsName(root + '/' + current.relative), errnoText(readError)));
            break;
        }
        if (empty && !current.relative.isEmpty())
            d->emptyFolders.push_back(current.relative);
        std::sort(files.begin(), files.end());
        std::sort(folders.begin(), folders.end());
        for (const QByteArray &name : files)
            d->files.push_back({current.relative + name, root + '/' + current.relative + name});
        if (!folders.empty() && current.depth + 1 >= kMaxDepth) {
            ok = d->fail(u"folders nested too deeply in \"%1\""_s.arg(folder));
            break;
        }
        for (auto it = folders.rbegin(); it != folders.rend(); ++it)
            pending.push_back({current.relative + *it + '/', current.depth + 1});
    }
    close(rootFd);
    return ok;
}

bool Archive::Impl::writeEmptyArchive(ArchiveSink &sink)
{
    // An archive without entries is its end-of-directory record alone.
    static const char endRecord[22] = {'P', 'K', 5, 6};
    if (!sink.begin() || !sink.write(endRecord, sizeof endRecord) || !sink.commit())
        return fail(u"cannot write \"%1\": %2"_s.arg(target, QString::fromUtf8(zip_error_strerror(sink.error()))));
    return true;
}

bool Archive::writeArchive()
{
    d->error.clear();
    if (!d->writing)
        return d->fail(u"no archive was started"_s);

    // A link as the target: the file it points to is replaced, not the link.
    QString target = d->target;
    const QFileInfo targetInfo(target);
    if (targetInfo.isSymLink() && !targetInfo.canonicalFilePath().isEmpty())
        target = targetInfo.canonicalFilePath();
    const QFileInfo resolved(target);
    const QByteArray dirPath = QFile::encodeName(resolved.absolutePath());
    const QByteArray name = QFile::encodeName(resolved.fileName());
    if (name.isEmpty())
        return d->fail(u"\"%1\" is not a file name"_s.arg(target));
    const int dirFd = ::open(dirPath.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (dirFd < 0)
        return d->fail(u"cannot open folder \"%1\": %2"_s.arg(fromFsName(dirPath), errnoText(errno)));
    ArchiveSink::removeStaleTemps(dirFd, name);

    bool ok = true;
    {
        ArchiveSink sink(dirFd, name);
        if (d->files.empty() && d->emptyFolders.empty()) {
            ok = d->writeEmptyArchive(sink);
        } else {
            zip_error_t error;
            zip_error_init(&error);
            zip_source_t *output = zip_source_function_create(sinkCallback, &sink, &error);
            zip_t *za = output ? zip_open_from_source(output, ZIP_CREATE | ZIP_TRUNCATE, &error) : nullptr;
            if (!za) {
                if (output)
                    zip_source_free(output);
                ok = d->fail(u"cannot start \"%1\": %2"_s.arg(target, QString::fromUtf8(zip_error_strerror(&error))));
            }
            for (size_t i = 0; ok && i < d->emptyFolders.size(); ++i) {
                if (zip_dir_add(za, d->emptyFolders[i].constData(), ZIP_FL_ENC_GUESS) < 0)
                    ok = d->fail(QString::fromUtf8(zip_strerror(za)));
            }
            for (size_t i = 0; ok && i < d->files.size(); ++i) {
                const PackedFile &file = d->files[i];
                zip_source_t *input = zip_source_file_create(file.path.constData(), 0, 0, &error);
                if (!input) {
                    ok = d->fail(u"cannot read \"%1\": %2"_s.arg(fromFsName(file.path), QString::fromUtf8(zip_error_strerror(&error))));
                    break;
                }
                if (zip_file_add(za, file.entryName.constData(), input, ZIP_FL_ENC_GUESS | ZIP_FL_OVERWRITE) < 0) {
                    zip_source_free(input);
                    ok = d->fail(u"cannot add \"%1\": %2"_s.arg(fromFsName(file.path), QString::fromUtf8(zip_strerror(za))));
                }
            }
            if (ok && zip_close(za) != 0)
                ok = d->fail(u"cannot write \"%1\": %2"_s.arg(target, QString::fromUtf8(zip_strerror(za))));
            if (za && !ok)
                zip_discard(za); // frees the sink's source, which drops the unfinished file
            zip_error_fini(&error);
        }
    }
    close(dirFd);
    return ok;
}

QString Archive::lastError() const
{
    return d->error;
}
