#include "storage/PlatformFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#if defined(Q_OS_LINUX) && defined(__GLIBC__)
#include <malloc.h>
#endif
#ifdef CUBRIX_HAVE_GLIB
#include <glib.h>
#endif

namespace PlatformFile {

namespace {

// A system call's result: true when it is 0, else false with `err` set from errno.
bool succeeded(int result, int &err)
{
    if (result == 0)
        return true;
    err = errno;
    return false;
}

Kind kindOfMode(mode_t mode)
{
    return S_ISREG(mode) ? Kind::File : S_ISDIR(mode) ? Kind::Folder : Kind::Other;
}

} // namespace

QByteArray encodeName(const QString &path)
{
    return QFile::encodeName(path);
}

QString decodeName(const QByteArray &name)
{
    return QFile::decodeName(name);
}

QString errorText(int err)
{
    return QString::fromLocal8Bit(std::strerror(err));
}

bool openFolder(const QByteArray &path, bool followLink, Folder &folder, int &err)
{
    folder.fd = ::open(path.constData(), O_RDONLY | O_DIRECTORY | (followLink ? 0 : O_NOFOLLOW) | O_CLOEXEC);
    err = errno;
    return folder.fd >= 0;
}

bool openFolderAt(const Folder &parent, const QByteArray &name, bool create, Folder &folder, int &err)
{
    constexpr int flags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
    folder.fd = openat(parent.fd, name.constData(), flags);
    if (folder.fd < 0 && errno == ENOENT && create) {
        if (mkdirat(parent.fd, name.constData(), 0777) == 0 || errno == EEXIST)
            folder.fd = openat(parent.fd, name.constData(), flags);
    }
    err = errno;
    return folder.fd >= 0;
}

void closeFolder(Folder &folder)
{
    if (folder.fd >= 0)
        close(folder.fd);
    folder.fd = -1;
}

Folder::~Folder()
{
    closeFolder(*this);
}

Folder::Folder(Folder &&other) noexcept : fd(std::exchange(other.fd, -1)) {}

Folder &Folder::operator=(Folder &&other) noexcept
{
    if (this != &other) {
        closeFolder(*this);
        fd = std::exchange(other.fd, -1);
    }
    return *this;
}

bool listFolder(const Folder &folder, std::vector<Entry> &entries, int &err)
{
    entries.clear();
    const int listFd = dup(folder.fd);
    DIR *dir = listFd >= 0 ? fdopendir(listFd) : nullptr;
    if (!dir) {
        err = errno;
        if (listFd >= 0)
            close(listFd);
        return false;
    }
    rewinddir(dir); // the duplicate shares the folder's read position
    errno = 0;
    while (dirent *entry = readdir(dir)) {
        if (qstrcmp(entry->d_name, ".") == 0 || qstrcmp(entry->d_name, "..") == 0)
            continue;
        Kind kind = entry->d_type == DT_REG ? Kind::File : entry->d_type == DT_DIR ? Kind::Folder : Kind::Other;
        if (entry->d_type == DT_UNKNOWN) {
            struct stat st {};
            if (fstatat(folder.fd, entry->d_name, &st, AT_SYMLINK_NOFOLLOW) == 0)
                kind = kindOfMode(st.st_mode);
        }
        entries.push_back({QByteArray(entry->d_name), kind});
        errno = 0;
    }
    err = errno;
    closedir(dir);
    return err == 0;
}

Kind kindAt(const Folder &folder, const QByteArray &name)
{
    struct stat st {};
    if (fstatat(folder.fd, name.constData(), &st, AT_SYMLINK_NOFOLLOW) != 0)
        return Kind::Missing;
    return kindOfMode(st.st_mode);
}

bool makeFolder(const Folder &parent, const QByteArray &name, bool ownerOnly, int &err)
{
    return succeeded(mkdirat(parent.fd, name.constData(), ownerOnly ? 0700 : 0777), err);
}

bool removeFile(const Folder &folder, const QByteArray &name)
{
    return unlinkat(folder.fd, name.constData(), 0) == 0;
}

bool removeFolder(const Folder &folder, const QByteArray &name)
{
    return unlinkat(folder.fd, name.constData(), AT_REMOVEDIR) == 0;
}

bool openOwnFolder(const QByteArray &path, bool create, Folder &folder)
{
    folder.fd = -1;
    if (create) {
        struct stat st {};
        if (lstat(path.constData(), &st) != 0) {
            mkdir(path.constData(), 0700);
            if (lstat(path.constData(), &st) != 0)
                st.st_mode = 0;
        }
        if (!S_ISDIR(st.st_mode) || st.st_uid != geteuid())
            return false;
    }
    const int fd = ::open(path.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (fd < 0)
        return false;
    struct stat opened {};
    if (fstat(fd, &opened) != 0 || opened.st_uid != geteuid()) {
        close(fd);
        return false;
    }
    if (create && (opened.st_mode & 07777) != 0700)
        fchmod(fd, 0700);
    folder.fd = fd;
    return true;
}

QString makeUniqueFolder(const QString &pattern)
{
    QByteArray path = encodeName(pattern);
    return mkdtemp(path.data()) ? decodeName(path) : QString();
}

FileHandle openToRead(const QByteArray &path, qint64 &size, int &err)
{
    // O_NONBLOCK: a pipe in the file's place cannot make the open hang.
    FileHandle file(::open(path.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    if (!file.isOpen()) {
        err = errno;
        return file;
    }
    struct stat st {};
    if (fstat(file.get(), &st) != 0 || !S_ISREG(st.st_mode)) {
        err = 0;
        return FileHandle();
    }
    if (st.st_size > 0) // an empty file is never read
        fcntl(file.get(), F_SETFL, fcntl(file.get(), F_GETFL) & ~O_NONBLOCK);
    size = st.st_size;
    return file;
}

FileHandle createFile(const Folder &folder, const QByteArray &name, int &err)
{
    // O_NOFOLLOW: a link found in the folder is refused, never written through;
    // O_NONBLOCK: a pipe in its place cannot make the open hang.
    FileHandle file(
        openat(folder.fd, name.constData(), O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0666));
    if (!file.isOpen()) {
        err = errno;
        return file;
    }
    struct stat st {};
    const int fd = file.get();
    if (fstat(fd, &st) != 0 || !S_ISREG(st.st_mode) || st.st_nlink > 1 || (st.st_size > 0 && ftruncate(fd, 0) != 0)) {
        err = 0;
        return FileHandle();
    }
    return file;
}

FileStamp fileStamp(const QByteArray &path)
{
    FileStamp stamp;
    struct stat st {};
    if (::stat(path.constData(), &st) != 0) {
        stamp.missing = errno == ENOENT || errno == ENOTDIR;
        return stamp;
    }
    stamp.exists = true;
    stamp.size = st.st_size;
    stamp.mtimeNs = qint64(st.st_mtim.tv_sec) * 1000000000 + st.st_mtim.tv_nsec;
    stamp.ctimeNs = qint64(st.st_ctim.tv_sec) * 1000000000 + st.st_ctim.tv_nsec;
    stamp.inode = st.st_ino;
    return stamp;
}

bool readAt(int fd, char *data, qint64 length, qint64 offset)
{
    while (length > 0) {
        const ssize_t n = pread(fd, data, size_t(length), off_t(offset));
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return false; // an error, or the file ended early
        data += n;
        length -= n;
        offset += n;
    }
    return true;
}

bool writeAt(int fd, const char *data, size_t length, qint64 offset, int &err)
{
    while (length > 0) {
        const ssize_t n = offset < 0 ? ::write(fd, data, length) : pwrite(fd, data, length, off_t(offset));
        if (n < 0) {
            if (errno == EINTR)
                continue;
            err = errno;
            return false;
        }
        data += n;
        length -= size_t(n);
        if (offset >= 0)
            offset += n;
    }
    return true;
}

void setModified(int fd, std::time_t time)
{
    const timespec times[2] = {{time, 0}, {time, 0}};
    futimens(fd, times);
}

bool closeFile(int fd, int &err)
{
    return succeeded(close(fd), err);
}

bool isPlainName(QByteArrayView)
{
    return true;
}

QString defaultTempRoot()
{
    return QStringLiteral("/tmp");
}

// Every deflated entry allocates and frees some 400 KiB of zlib state. glibc hands
// that memory back to the system after each entry and faults it in again for the
// next one, which costs a third of the packing time of a folder of small files;
// letting the heap keep a few MiB avoids it. Done once, on the first save.
void keepAllocatorMemory()
{
#if defined(Q_OS_LINUX) && defined(__GLIBC__)
    static const bool tuned = [] {
        mallopt(M_MMAP_THRESHOLD, 1 << 20);
        mallopt(M_TRIM_THRESHOLD, 8 << 20);
        return true;
    }();
    Q_UNUSED(tuned);
#endif
}

void readTimeZoneOnce()
{
#if defined(__GLIBC__)
    // With TZ unset, glibc looks at /etc/localtime again for every conversion;
    // ":/etc/localtime" names the same zone and is read once. A TZ the user set,
    // even an empty one (UTC), stays as it is.
    if (!qEnvironmentVariableIsSet("TZ"))
        qputenv("TZ", ":/etc/localtime");
#endif
}

void addRecentDocument([[maybe_unused]] const QString &path, [[maybe_unused]] const QString &mimeType)
{
#ifdef CUBRIX_HAVE_GLIB
    const QString dataHome = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    if (dataHome.isEmpty() || !QDir().mkpath(dataHome))
        return;
    const QByteArray listPath = encodeName(dataHome + QStringLiteral("/recently-used.xbel"));
    GBookmarkFile *list = g_bookmark_file_new();
    GError *error = nullptr;
    const bool loaded = g_bookmark_file_load_from_file(list, listPath.constData(), &error);
    const bool missing = !loaded && g_error_matches(error, G_FILE_ERROR, G_FILE_ERROR_NOENT);
    g_clear_error(&error);
    gchar *uri = g_filename_to_uri(encodeName(QFileInfo(path).absoluteFilePath()).constData(), nullptr, nullptr);
    if ((loaded || missing) && uri) {
        g_bookmark_file_set_mime_type(list, uri, mimeType.toUtf8().constData());
        g_bookmark_file_add_application(list, uri, "Cubrix", "cubrix %f");
        (void)g_bookmark_file_to_file(list, listPath.constData(), nullptr); // written whole, then renamed
    }
    g_free(uri);
    g_bookmark_file_free(list);
#endif
}

namespace {

// A process's memory maps are read in pieces, up to a bound far above any real
// process's, so that a look at all processes stays quick whatever they map.
constexpr qint64 kMapsPiece = 64 * 1024;
constexpr qint64 kMaxMaps = 64 * 1024 * 1024;

// Whether the maps of `pid` list the file `target`: a line "address perms offset
// device inode   path", the path ending the line (" (deleted)" when replaced).
bool mapsFile(const char *pid, const QByteArray &target)
{
    const FileHandle maps(::open(("/proc/" + QByteArray(pid) + "/maps").constData(), O_RDONLY | O_CLOEXEC));
    if (!maps.isOpen())
        return false;
    const QByteArray field = ' ' + target;
    const QByteArray replaced = field + " (deleted)";
    QByteArray pending;
    qint64 total = 0;
    char piece[kMapsPiece];
    ssize_t got = 0;
    while (total < kMaxMaps && (got = ::read(maps.get(), piece, sizeof piece)) > 0) {
        total += got;
        pending.append(piece, got);
        qsizetype start = 0;
        for (qsizetype end = pending.indexOf('\n'); end >= 0; end = pending.indexOf('\n', start)) {
            const QByteArrayView line = QByteArrayView(pending).sliced(start, end - start);
            if (line.endsWith(field) || line.endsWith(replaced))
                return true;
            start = end + 1;
        }
        pending.remove(0, start);
    }
    return false;
}

// The program of `pid` as its command line names it ("iexplore.exe" for a
// Windows program under Wine), else the kernel's short name.
QString programName(const char *pid)
{
    QFile cmdline(decodeName(QByteArray("/proc/") + pid + "/cmdline"));
    QByteArray program = cmdline.open(QIODevice::ReadOnly) ? cmdline.read(4096) : QByteArray();
    program.truncate(program.indexOf('\0') < 0 ? program.size() : program.indexOf('\0'));
    program = program.mid(std::max(program.lastIndexOf('/'), program.lastIndexOf('\\')) + 1);
    if (program.isEmpty()) {
        QFile comm(decodeName(QByteArray("/proc/") + pid + "/comm"));
        if (comm.open(QIODevice::ReadOnly))
            program = comm.readLine().trimmed();
    }
    return decodeName(program);
}

} // namespace

QString processUsingFile(const QString &path)
{
    const QByteArray target = encodeName(QFileInfo(path).canonicalFilePath());
    DIR *proc = target.isEmpty() ? nullptr : opendir("/proc");
    if (!proc)
        return {};
    const QByteArray self = QByteArray::number(getpid());
    QString found;
    while (const dirent *entry = readdir(proc)) {
        const QByteArrayView pid(entry->d_name);
        if (pid.isEmpty() || !std::all_of(pid.begin(), pid.end(), [](char c) { return c >= '0' && c <= '9'; })
            || pid == self || !mapsFile(entry->d_name, target))
            continue;
        found = programName(entry->d_name);
        if (found.isEmpty())
            found = decodeName(QByteArray(entry->d_name));
        break;
    }
    closedir(proc);
    return found;
}

bool takeLock(const QByteArray &path, Lock &lock)
{
    const int fd = ::open(path.constData(), O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0600);
    if (fd < 0)
        return false;
    struct stat held {};
    struct stat named {};
    // The lock counts only while the name still leads to the locked file: a
    // process that removed its lock file may have done so after this one opened it.
    if (fstat(fd, &held) != 0 || !S_ISREG(held.st_mode) || held.st_uid != geteuid() || flock(fd, LOCK_EX | LOCK_NB) != 0
        || lstat(path.constData(), &named) != 0 || named.st_dev != held.st_dev || named.st_ino != held.st_ino) {
        close(fd);
        return false;
    }
    lock.fd = fd;
    return true;
}

void dropLock(const QByteArray &path, Lock &lock, bool removeFile)
{
    if (lock.fd < 0)
        return;
    if (removeFile)
        unlink(path.constData());
    close(lock.fd);
    lock.fd = -1;
}

bool openSaveFile(const Folder &dir, const QByteArray &target, const NameMaker &newName, SaveFile &file, int &err)
{
    struct stat old {};
    const bool keepMode = fstatat(dir.fd, target.constData(), &old, AT_SYMLINK_NOFOLLOW) == 0 && S_ISREG(old.st_mode);
    file = SaveFile();
#if defined(Q_OS_LINUX) && defined(O_TMPFILE)
    file.fd = openat(dir.fd, ".", O_TMPFILE | O_WRONLY | O_CLOEXEC, 0666);
#endif
    if (file.fd < 0) {
        for (int attempt = 0; attempt < 16 && file.fd < 0; ++attempt) {
            file.tempName = newName();
            file.fd =
                openat(dir.fd, file.tempName.constData(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666);
            if (file.fd < 0 && errno != EEXIST)
                break;
        }
        if (file.fd < 0) {
            err = errno;
            return false;
        }
        file.named = true;
    }
    flock(file.fd, LOCK_EX | LOCK_NB);
    if (keepMode)
        fchmod(file.fd, old.st_mode & 0777); // the new archive keeps the old one's rights
    return true;
}

namespace {

// Gives the unnamed file a hidden name beside the target, ready for the rename.
bool linkUnnamed([[maybe_unused]] const Folder &dir, [[maybe_unused]] const NameMaker &newName,
                 [[maybe_unused]] SaveFile &file, int &err)
{
#if defined(Q_OS_LINUX) && defined(O_TMPFILE)
    for (int attempt = 0; attempt < 16; ++attempt) {
        file.tempName = newName();
        int result = linkat(file.fd, "", dir.fd, file.tempName.constData(), AT_EMPTY_PATH);
        if (result != 0 && errno != EEXIST) {
            // Linking a descriptor directly may need a privilege; the /proc link does not.
            const QByteArray procPath = "/proc/self/fd/" + QByteArray::number(file.fd);
            result = linkat(AT_FDCWD, procPath.constData(), dir.fd, file.tempName.constData(), AT_SYMLINK_FOLLOW);
        }
        if (result == 0) {
            file.named = true;
            return true;
        }
        if (errno != EEXIST)
            break;
    }
    err = errno;
#else
    err = ENOSYS;
#endif
    return false;
}

} // namespace

bool replaceWithSaveFile(const Folder &dir, const QByteArray &target, const NameMaker &newName, SaveFile &file,
                         SaveFailure &failure, int &err)
{
    failure = SaveFailure::None;
    if (fsync(file.fd) != 0) {
        err = errno;
        failure = SaveFailure::Write;
    } else if (!file.named && !linkUnnamed(dir, newName, file, err)) {
        failure = SaveFailure::Open;
    } else if (renameat(dir.fd, file.tempName.constData(), dir.fd, target.constData()) != 0) {
        err = errno;
        failure = SaveFailure::Rename;
    }
    if (failure != SaveFailure::None) {
        dropSaveFile(dir, file);
        return false;
    }
    file.named = false; // the file now is the target
    close(file.fd);
    file.fd = -1;
    // The rename survives a power loss only once the folder is on disk.
    if (fsync(dir.fd) != 0 && errno != EINVAL) {
        err = errno;
        failure = SaveFailure::Write;
        return false;
    }
    return true;
}

void dropSaveFile(const Folder &dir, SaveFile &file)
{
    if (file.fd < 0)
        return;
    if (file.named)
        unlinkat(dir.fd, file.tempName.constData(), 0);
    close(file.fd);
    file.fd = -1;
    file.named = false;
}

void removeStaleSaveFile(const Folder &dir, const QByteArray &name)
{
    const int fd = openat(dir.fd, name.constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0)
        return;
    struct stat st {};
    if (fstat(fd, &st) == 0 && S_ISREG(st.st_mode) && st.st_uid == geteuid() && flock(fd, LOCK_EX | LOCK_NB) == 0)
        unlinkat(dir.fd, name.constData(), 0);
    close(fd);
}

bool keepSaveFile(const Folder &dir, const NameMaker &newName, SaveFile &file, int &err)
{
    if (fsync(file.fd) != 0) {
        err = errno;
        dropSaveFile(dir, file);
        return false;
    }
    if (!file.named && !linkUnnamed(dir, newName, file, err)) {
        dropSaveFile(dir, file);
        return false;
    }
    close(file.fd);
    file.fd = -1;
    return true;
}

bool renameIn(const Folder &dir, const QByteArray &from, const QByteArray &to, int &err)
{
    return succeeded(renameat(dir.fd, from.constData(), dir.fd, to.constData()), err);
}

bool linkIn(const Folder &dir, const QByteArray &from, const QByteArray &to, int &err)
{
    return succeeded(linkat(dir.fd, from.constData(), dir.fd, to.constData(), 0), err);
}

bool hardLink(const QByteArray &from, const QByteArray &to, int &err)
{
    return succeeded(::link(from.constData(), to.constData()), err);
}

bool syncFolder(const Folder &dir, int &err)
{
    if (fsync(dir.fd) == 0 || errno == EINVAL)
        return true;
    err = errno;
    return false;
}

} // namespace PlatformFile
