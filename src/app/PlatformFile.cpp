#include "app/PlatformFile.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <cerrno>
#include <cstring>

#ifdef Q_OS_UNIX
#include <dirent.h>
#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>
#else
#include <QFileInfo>
#include <QTemporaryDir>

#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#include <fcntl.h>
#include <io.h>
#include <sys/utime.h>
#include <windows.h>

#include <string>
#endif

namespace PlatformFile {

#ifdef Q_OS_UNIX

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

namespace {

Kind kindOfMode(mode_t mode)
{
    return S_ISREG(mode) ? Kind::File : S_ISDIR(mode) ? Kind::Folder : Kind::Other;
}

} // namespace

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
    if (mkdirat(parent.fd, name.constData(), ownerOnly ? 0700 : 0777) == 0)
        return true;
    err = errno;
    return false;
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

int openToRead(const QByteArray &path, qint64 &size, int &err)
{
    // O_NONBLOCK: a pipe in the file's place cannot make the open hang.
    const int fd = ::open(path.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) {
        err = errno;
        return -1;
    }
    struct stat st {};
    if (fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
        close(fd);
        err = 0;
        return -1;
    }
    if (st.st_size > 0) // an empty file is never read
        fcntl(fd, F_SETFL, fcntl(fd, F_GETFL) & ~O_NONBLOCK);
    size = st.st_size;
    return fd;
}

int createFile(const Folder &folder, const QByteArray &name, int &err)
{
    // O_NOFOLLOW: a link found in the folder is refused, never written through;
    // O_NONBLOCK: a pipe in its place cannot make the open hang.
    const int fd = openat(folder.fd, name.constData(), O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0666);
    if (fd < 0) {
        err = errno;
        return -1;
    }
    struct stat st {};
    if (fstat(fd, &st) != 0 || !S_ISREG(st.st_mode) || st.st_nlink > 1 || ftruncate(fd, 0) != 0) {
        close(fd);
        err = 0;
        return -1;
    }
    return fd;
}

bool readAt(int fd, char *data, qint64 length, qint64 offset)
{
    return pread(fd, data, size_t(length), off_t(offset)) == ssize_t(length);
}

bool writeAll(int fd, const char *data, size_t length, int &err)
{
    while (length > 0) {
        const ssize_t n = ::write(fd, data, length);
        if (n < 0) {
            if (errno == EINTR)
                continue;
            err = errno;
            return false;
        }
        data += n;
        length -= size_t(n);
    }
    return true;
}

bool writeAt(int fd, const char *data, size_t length, qint64 offset, int &err)
{
    off_t at = off_t(offset);
    while (length > 0) {
        const ssize_t n = pwrite(fd, data, length, at);
        if (n < 0) {
            if (errno == EINTR)
                continue;
            err = errno;
            return false;
        }
        data += n;
        length -= size_t(n);
        at += n;
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
    if (close(fd) == 0)
        return true;
    err = errno;
    return false;
}

#else // Windows

namespace {

// Reads and writes go to the C runtime in pieces it can count in an int.
constexpr qint64 kMaxPiece = 1 << 30;

std::wstring widePath(const QByteArray &path)
{
    return QString::fromUtf8(path).toStdWString();
}

QByteArray childPath(const Folder &folder, const QByteArray &name)
{
    QByteArray path = folder.path;
    if (!path.endsWith('/'))
        path += '/';
    path += name;
    while (path.endsWith('/'))
        path.chop(1);
    return path;
}

// Every reparse point (symbolic link, junction, mount point, ...) counts as a
// link and is never gone through.
Kind kindOfPath(const QByteArray &path)
{
    const DWORD attributes = GetFileAttributesW(widePath(path).c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES)
        return Kind::Missing;
    if (attributes & FILE_ATTRIBUTE_REPARSE_POINT)
        return Kind::Other;
    return (attributes & FILE_ATTRIBUTE_DIRECTORY) ? Kind::Folder : Kind::File;
}

int folderError(Kind kind)
{
    return kind == Kind::Missing ? ENOENT : kind == Kind::Other ? ELOOP : ENOTDIR;
}

QFile::Permissions ownerRights()
{
    return QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;
}

} // namespace

int errnoFromSystem(unsigned long error)
{
    switch (error) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_INVALID_NAME:
    case ERROR_INVALID_DRIVE:
    case ERROR_BAD_NETPATH:
        return ENOENT;
    case ERROR_ACCESS_DENIED:
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
        return EACCES;
    case ERROR_FILE_EXISTS:
    case ERROR_ALREADY_EXISTS:
        return EEXIST;
    case ERROR_DISK_FULL:
    case ERROR_HANDLE_DISK_FULL:
        return ENOSPC;
    case ERROR_WRITE_PROTECT:
        return EROFS;
    case ERROR_TOO_MANY_OPEN_FILES:
        return EMFILE;
    case ERROR_NOT_ENOUGH_MEMORY:
    case ERROR_OUTOFMEMORY:
        return ENOMEM;
    default:
        return EIO;
    }
}

int lastSystemError()
{
    return errnoFromSystem(GetLastError());
}

QByteArray encodeName(const QString &path)
{
    return QDir::fromNativeSeparators(path).toUtf8();
}

QString decodeName(const QByteArray &name)
{
    return QString::fromUtf8(name);
}

QString errorText(int err)
{
    char text[256] = {};
    strerror_s(text, sizeof text, err);
    return QString::fromLocal8Bit(text);
}

bool openFolder(const QByteArray &path, bool followLink, Folder &folder, int &err)
{
    folder.path.clear();
    const Kind kind = kindOfPath(path);
    const bool isFolder = kind == Kind::Folder || (followLink && QFileInfo(decodeName(path)).isDir());
    if (!isFolder) {
        err = folderError(kind);
        return false;
    }
    folder.path = path;
    return true;
}

bool openFolderAt(const Folder &parent, const QByteArray &name, bool create, Folder &folder, int &err)
{
    folder.path.clear();
    const QByteArray path = childPath(parent, name);
    Kind kind = kindOfPath(path);
    if (kind == Kind::Missing && create) {
        QDir().mkdir(decodeName(path));
        kind = kindOfPath(path);
    }
    if (kind != Kind::Folder) {
        err = folderError(kind);
        return false;
    }
    folder.path = path;
    return true;
}

void closeFolder(Folder &folder)
{
    folder.path.clear();
}

bool listFolder(const Folder &folder, std::vector<Entry> &entries, int &err)
{
    entries.clear();
    const QDir dir(decodeName(folder.path));
    if (!dir.exists()) {
        err = ENOENT;
        return false;
    }
    const QStringList names =
        dir.entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::NoSort);
    for (const QString &name : names) {
        const QByteArray encoded = encodeName(name);
        entries.push_back({encoded, kindOfPath(childPath(folder, encoded))});
    }
    return true;
}

Kind kindAt(const Folder &folder, const QByteArray &name)
{
    return kindOfPath(childPath(folder, name));
}

bool makeFolder(const Folder &parent, const QByteArray &name, bool ownerOnly, int &err)
{
    const QString path = decodeName(childPath(parent, name));
    if (ownerOnly ? QDir().mkdir(path, ownerRights()) : QDir().mkdir(path))
        return true;
    err = kindAt(parent, name) != Kind::Missing ? EEXIST : EACCES;
    return false;
}

bool removeFile(const Folder &folder, const QByteArray &name)
{
    const std::wstring path = widePath(childPath(folder, name));
    const DWORD attributes = GetFileAttributesW(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES)
        return false;
    if (attributes & FILE_ATTRIBUTE_DIRECTORY) {
        // A link to a folder (or a junction) is removed as a folder; the folder it
        // leads to stays untouched.
        return (attributes & FILE_ATTRIBUTE_REPARSE_POINT) && RemoveDirectoryW(path.c_str());
    }
    if (DeleteFileW(path.c_str()))
        return true;
    // Windows refuses to delete a read-only file; Unix asks for the folder's rights only.
    return (attributes & FILE_ATTRIBUTE_READONLY)
           && SetFileAttributesW(path.c_str(), attributes & ~DWORD(FILE_ATTRIBUTE_READONLY))
           && DeleteFileW(path.c_str());
}

bool removeFolder(const Folder &folder, const QByteArray &name)
{
    const QByteArray path = childPath(folder, name);
    return kindOfPath(path) == Kind::Folder && RemoveDirectoryW(widePath(path).c_str());
}

// The folder's owner is not checked here: the temporary folder lies in the user's
// own profile, which other users cannot write to.
bool openOwnFolder(const QByteArray &path, bool create, Folder &folder)
{
    folder.path.clear();
    Kind kind = kindOfPath(path);
    if (kind == Kind::Missing && create) {
        QDir().mkdir(decodeName(path), ownerRights());
        kind = kindOfPath(path);
    }
    if (kind != Kind::Folder)
        return false;
    folder.path = path;
    return true;
}

QString makeUniqueFolder(const QString &pattern)
{
    QTemporaryDir dir(pattern);
    if (!dir.isValid())
        return QString();
    dir.setAutoRemove(false); // made owner-only by QTemporaryDir
    return dir.path();
}

int openToRead(const QByteArray &path, qint64 &size, int &err)
{
    const std::wstring name = widePath(path);
    const DWORD attributes = GetFileAttributesW(name.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY)) {
        err = 0;
        return -1;
    }
    // Shared for deleting too, so that the file can be saved over while it is open.
    HANDLE file = CreateFileW(name.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                              nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        err = lastSystemError();
        return -1;
    }
    LARGE_INTEGER length{};
    if (GetFileType(file) != FILE_TYPE_DISK || !GetFileSizeEx(file, &length)) {
        CloseHandle(file);
        err = 0;
        return -1;
    }
    const int fd = _open_osfhandle(reinterpret_cast<intptr_t>(file), _O_RDONLY | _O_BINARY);
    if (fd < 0) {
        err = EMFILE;
        CloseHandle(file);
        return -1;
    }
    size = length.QuadPart;
    return fd;
}

int createFile(const Folder &folder, const QByteArray &name, int &err)
{
    // FILE_FLAG_OPEN_REPARSE_POINT opens a link itself instead of what it leads to,
    // so the checks below see (and refuse) it.
    HANDLE file = CreateFileW(widePath(childPath(folder, name)).c_str(), GENERIC_WRITE | FILE_READ_ATTRIBUTES,
                              FILE_SHARE_READ, nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT,
                              nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        err = lastSystemError();
        return -1;
    }
    BY_HANDLE_FILE_INFORMATION info{};
    LARGE_INTEGER start{};
    if (GetFileType(file) != FILE_TYPE_DISK || !GetFileInformationByHandle(file, &info)
        || (info.dwFileAttributes & (FILE_ATTRIBUTE_REPARSE_POINT | FILE_ATTRIBUTE_DIRECTORY)) || info.nNumberOfLinks > 1
        || !SetFilePointerEx(file, start, nullptr, FILE_BEGIN) || !SetEndOfFile(file)) {
        CloseHandle(file);
        err = 0;
        return -1;
    }
    const int fd = _open_osfhandle(reinterpret_cast<intptr_t>(file), _O_WRONLY | _O_BINARY);
    if (fd < 0) {
        err = EMFILE;
        CloseHandle(file);
        return -1;
    }
    return fd;
}

bool readAt(int fd, char *data, qint64 length, qint64 offset)
{
    if (_lseeki64(fd, offset, SEEK_SET) != offset)
        return false;
    while (length > 0) {
        const int n = _read(fd, data, unsigned(std::min(length, kMaxPiece)));
        if (n <= 0)
            return false;
        data += n;
        length -= n;
    }
    return true;
}

bool writeAll(int fd, const char *data, size_t length, int &err)
{
    while (length > 0) {
        const int n = _write(fd, data, unsigned(std::min(qint64(length), kMaxPiece)));
        if (n < 0) {
            err = errno;
            return false;
        }
        data += n;
        length -= size_t(n);
    }
    return true;
}

bool writeAt(int fd, const char *data, size_t length, qint64 offset, int &err)
{
    if (_lseeki64(fd, offset, SEEK_SET) != offset) {
        err = errno;
        return false;
    }
    return writeAll(fd, data, length, err);
}

void setModified(int fd, std::time_t time)
{
    __utimbuf64 times{time, time};
    _futime64(fd, &times);
}

bool closeFile(int fd, int &err)
{
    if (_close(fd) == 0)
        return true;
    err = errno;
    return false;
}

#endif

void closeFile(int fd)
{
    int err = 0;
    closeFile(fd, err);
}

} // namespace PlatformFile
