#include "storage/PlatformFile.h"

#include "storage/WindowsNames.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QTemporaryDir>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string>
#include <utility>

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
// After windows.h, which they need.
#include <shlobj.h>
#include <tlhelp32.h>

namespace PlatformFile {

int errnoFromSystem(unsigned long error)
{
    static const std::pair<unsigned long, int> known[] = {
        {ERROR_FILE_NOT_FOUND, ENOENT},    {ERROR_PATH_NOT_FOUND, ENOENT},      {ERROR_INVALID_NAME, ENOENT},
        {ERROR_INVALID_DRIVE, ENOENT},     {ERROR_BAD_NETPATH, ENOENT},         {ERROR_ACCESS_DENIED, EACCES},
        {ERROR_SHARING_VIOLATION, EACCES}, {ERROR_LOCK_VIOLATION, EACCES},      {ERROR_FILE_EXISTS, EEXIST},
        {ERROR_ALREADY_EXISTS, EEXIST},    {ERROR_DISK_FULL, ENOSPC},           {ERROR_HANDLE_DISK_FULL, ENOSPC},
        {ERROR_WRITE_PROTECT, EROFS},      {ERROR_TOO_MANY_OPEN_FILES, EMFILE}, {ERROR_NOT_ENOUGH_MEMORY, ENOMEM},
        {ERROR_OUTOFMEMORY, ENOMEM}};
    for (const auto &[code, value] : known) {
        if (code == error)
            return value;
    }
    return EIO;
}

int lastSystemError()
{
    return errnoFromSystem(GetLastError());
}

namespace {

// Reads and writes go to the C runtime in pieces it can count in an int.
constexpr qint64 kMaxPiece = 1 << 30;
const QFile::Permissions kOwnerRights = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;

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

// The folder at `path`, made first (for its owner alone, when `ownerOnly`) when
// it is missing and `create` asks for it.
bool useFolder(const QByteArray &path, bool create, bool ownerOnly, Folder &folder, int &err)
{
    folder.path.clear();
    Kind kind = kindOfPath(path);
    if (kind == Kind::Missing && create) {
        ownerOnly ? QDir().mkdir(decodeName(path), kOwnerRights) : QDir().mkdir(decodeName(path));
        kind = kindOfPath(path);
    }
    if (kind != Kind::Folder) {
        err = folderError(kind);
        return false;
    }
    folder.path = path;
    return true;
}

// A Windows call's result: true when it succeeded, else false with `err` set.
bool succeeded(BOOL ok, int &err)
{
    if (!ok)
        err = lastSystemError();
    return ok != FALSE;
}

// The C runtime's descriptor for `handle`, which it then owns; the handle is
// closed when no descriptor is left.
FileHandle adopt(HANDLE handle, int flags, int &err)
{
    const int fd = _open_osfhandle(reinterpret_cast<intptr_t>(handle), flags | _O_BINARY);
    if (fd < 0) {
        err = EMFILE;
        CloseHandle(handle);
    }
    return FileHandle(fd);
}

// The save file's bytes on disk and the file closed (Windows moves no open
// file); on failure the save file is dropped.
bool commitAndClose(const Folder &dir, SaveFile &file, int &err)
{
    const bool committed = _commit(file.fd) == 0;
    if (!committed)
        err = errno;
    const bool closed = closeFile(file.fd, err) && committed;
    file.fd = -1;
    if (!closed)
        dropSaveFile(dir, file);
    return closed;
}

} // namespace

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
    return useFolder(childPath(parent, name), create, false, folder, err);
}

void closeFolder(Folder &folder)
{
    folder.path.clear();
}

Folder::~Folder() = default;

Folder::Folder(Folder &&other) noexcept : path(std::exchange(other.path, QByteArray())) {}

Folder &Folder::operator=(Folder &&other) noexcept
{
    if (this != &other)
        path = std::exchange(other.path, QByteArray());
    return *this;
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
    if (ownerOnly ? QDir().mkdir(path, kOwnerRights) : QDir().mkdir(path))
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
    int err = 0;
    return useFolder(path, create, true, folder, err);
}

QString makeUniqueFolder(const QString &pattern)
{
    QTemporaryDir dir(pattern);
    if (!dir.isValid())
        return QString();
    dir.setAutoRemove(false); // made owner-only by QTemporaryDir
    return dir.path();
}

FileHandle openToRead(const QByteArray &path, qint64 &size, int &err)
{
    const std::wstring name = widePath(path);
    const DWORD attributes = GetFileAttributesW(name.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY)) {
        err = 0;
        return FileHandle();
    }
    // Shared for deleting too, so that the file can be saved over while it is open.
    HANDLE file = CreateFileW(name.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                              nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        err = lastSystemError();
        return FileHandle();
    }
    LARGE_INTEGER length{};
    if (GetFileType(file) != FILE_TYPE_DISK || !GetFileSizeEx(file, &length)) {
        CloseHandle(file);
        err = 0;
        return FileHandle();
    }
    size = length.QuadPart;
    return adopt(file, _O_RDONLY, err);
}

FileHandle createFile(const Folder &folder, const QByteArray &name, int &err)
{
    // FILE_FLAG_OPEN_REPARSE_POINT opens a link itself instead of what it leads to,
    // so the checks below see (and refuse) it.
    HANDLE file =
        CreateFileW(widePath(childPath(folder, name)).c_str(), GENERIC_WRITE | FILE_READ_ATTRIBUTES, FILE_SHARE_READ,
                    nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        err = lastSystemError();
        return FileHandle();
    }
    BY_HANDLE_FILE_INFORMATION info{};
    LARGE_INTEGER start{};
    if (GetFileType(file) != FILE_TYPE_DISK || !GetFileInformationByHandle(file, &info)
        || (info.dwFileAttributes & (FILE_ATTRIBUTE_REPARSE_POINT | FILE_ATTRIBUTE_DIRECTORY))
        || info.nNumberOfLinks > 1 || !SetFilePointerEx(file, start, nullptr, FILE_BEGIN) || !SetEndOfFile(file)) {
        CloseHandle(file);
        err = 0;
        return FileHandle();
    }
    return adopt(file, _O_WRONLY, err);
}

FileStamp fileStamp(const QByteArray &path)
{
    FileStamp stamp;
    const QFileInfo info(decodeName(path));
    stamp.missing = !info.exists();
    if (stamp.missing)
        return stamp;
    stamp.exists = true;
    stamp.size = info.size();
    stamp.mtimeNs = info.lastModified().toMSecsSinceEpoch() * 1000000;
    const QDateTime changed = info.metadataChangeTime();
    stamp.ctimeNs = changed.isValid() ? changed.toMSecsSinceEpoch() * 1000000 : 0;
    return stamp;
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

bool writeAt(int fd, const char *data, size_t length, qint64 offset, int &err)
{
    if (offset >= 0 && _lseeki64(fd, offset, SEEK_SET) != offset) {
        err = errno;
        return false;
    }
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

bool isPlainName(QByteArrayView part)
{
    return isWindowsPlainName(part);
}

QString defaultTempRoot()
{
    return QDir::tempPath();
}

void keepAllocatorMemory() {}

void readTimeZoneOnce() {}

void addRecentDocument(const QString &path, const QString &mimeType)
{
    Q_UNUSED(mimeType); // the shell takes the type from the file name
    const std::wstring wide = QDir::toNativeSeparators(QFileInfo(path).absoluteFilePath()).toStdWString();
    SHAddToRecentDocs(SHARD_PATHW, wide.c_str());
}

namespace {

// The long form of a path ("C:\\PROGRA~1\\..." becomes "C:\\Program Files\\..."),
// so that two spellings of one file compare equal.
std::wstring longPath(const std::wstring &path)
{
    const DWORD size = GetLongPathNameW(path.c_str(), nullptr, 0);
    if (size == 0)
        return path;
    std::wstring full(size, L'\0');
    const DWORD length = GetLongPathNameW(path.c_str(), full.data(), size);
    if (length == 0 || length >= size)
        return path;
    full.resize(length);
    return full;
}

bool samePath(const std::wstring &a, const std::wstring &b)
{
    return CompareStringOrdinal(a.c_str(), int(a.size()), b.c_str(), int(b.size()), TRUE) == CSTR_EQUAL;
}

// Whether process `pid` has the module `wanted` loaded; 32-bit modules of a
// 32-bit process are listed too.
bool hasModule(DWORD pid, const std::wstring &wanted)
{
    HANDLE modules = INVALID_HANDLE_VALUE;
    // The list cannot be taken while the process loads a module: a few tries.
    for (int attempt = 0; attempt < 3 && modules == INVALID_HANDLE_VALUE; ++attempt) {
        modules = CreateToolhelp32Snapshot(TH32CS_SNAPMODULE | TH32CS_SNAPMODULE32, pid);
        if (modules == INVALID_HANDLE_VALUE && GetLastError() != ERROR_BAD_LENGTH)
            return false; // access denied, or the process has ended
    }
    if (modules == INVALID_HANDLE_VALUE)
        return false;
    MODULEENTRY32W module{};
    module.dwSize = sizeof module;
    bool found = false;
    for (BOOL more = Module32FirstW(modules, &module); more && !found; more = Module32NextW(modules, &module))
        found = samePath(longPath(module.szExePath), wanted);
    CloseHandle(modules);
    return found;
}

} // namespace

QString processUsingFile(const QString &path)
{
    const std::wstring wanted = longPath(QDir::toNativeSeparators(QFileInfo(path).absoluteFilePath()).toStdWString());
    HANDLE processes = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    if (processes == INVALID_HANDLE_VALUE)
        return {};
    PROCESSENTRY32W process{};
    process.dwSize = sizeof process;
    QString found;
    for (BOOL more = Process32FirstW(processes, &process); more && found.isEmpty();
         more = Process32NextW(processes, &process)) {
        if (process.th32ProcessID != 0 && process.th32ProcessID != GetCurrentProcessId()
            && hasModule(process.th32ProcessID, wanted))
            found = QString::fromWCharArray(process.szExeFile);
    }
    CloseHandle(processes);
    return found;
}

// A lock file whose process is gone is taken over. One that is merely old is safe
// too: a running process keeps its lock file open, so Windows refuses to delete it.
bool takeLock(const QByteArray &path, Lock &lock)
{
    auto *file = new QLockFile(decodeName(path));
    if (!file->tryLock(0)) {
        delete file;
        return false;
    }
    lock.file = file;
    return true;
}

// QLockFile removes its file whenever it lets go.
void dropLock([[maybe_unused]] const QByteArray &path, Lock &lock, [[maybe_unused]] bool removeFile)
{
    delete lock.file;
    lock.file = nullptr;
}

// The save file is held open without leave to delete it while the save runs,
// which marks it as in use for removeStaleSaveFile.
bool openSaveFile(const Folder &dir, const QByteArray &target, const NameMaker &newName, SaveFile &file, int &err)
{
    file = SaveFile();
    // The new archive keeps the old one's hidden, system and archive marks.
    const DWORD old = GetFileAttributesW(widePath(childPath(dir, target)).c_str());
    constexpr DWORD kept = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_ARCHIVE;
    file.attributes =
        old != INVALID_FILE_ATTRIBUTES && !(old & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT))
            ? old & kept
            : 0;
    if (file.attributes == 0)
        file.attributes = FILE_ATTRIBUTE_NORMAL;
    HANDLE handle = INVALID_HANDLE_VALUE;
    DWORD error = 0;
    for (int attempt = 0; attempt < 16 && handle == INVALID_HANDLE_VALUE; ++attempt) {
        file.tempName = newName();
        handle = CreateFileW(widePath(childPath(dir, file.tempName)).c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                             CREATE_NEW, FILE_ATTRIBUTE_HIDDEN, nullptr);
        error = GetLastError();
        if (handle == INVALID_HANDLE_VALUE && error != ERROR_FILE_EXISTS && error != ERROR_ALREADY_EXISTS)
            break;
    }
    if (handle == INVALID_HANDLE_VALUE) {
        err = errnoFromSystem(error);
        return false;
    }
    file.fd = adopt(handle, _O_WRONLY, err).release();
    file.named = file.fd >= 0;
    if (!file.named)
        removeFile(dir, file.tempName);
    return file.named;
}

// Windows moves no file that is open, so the file is closed before the move.
bool replaceWithSaveFile(const Folder &dir, const QByteArray &target, [[maybe_unused]] const NameMaker &newName,
                         SaveFile &file, SaveFailure &failure, int &err)
{
    failure = SaveFailure::None;
    if (!commitAndClose(dir, file, err)) {
        failure = SaveFailure::Write;
        return false;
    }
    const std::wstring temp = widePath(childPath(dir, file.tempName));
    SetFileAttributesW(temp.c_str(), file.attributes);
    if (!MoveFileExW(temp.c_str(), widePath(childPath(dir, target)).c_str(),
                     MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) {
        err = lastSystemError();
        failure = SaveFailure::Rename;
        dropSaveFile(dir, file);
        return false;
    }
    file.named = false; // the file now is the target
    return true;
}

bool keepSaveFile(const Folder &dir, [[maybe_unused]] const NameMaker &newName, SaveFile &file, int &err)
{
    if (!commitAndClose(dir, file, err))
        return false;
    SetFileAttributesW(widePath(childPath(dir, file.tempName)).c_str(), file.attributes);
    return true;
}

bool renameIn(const Folder &dir, const QByteArray &from, const QByteArray &to, int &err)
{
    return succeeded(MoveFileExW(widePath(childPath(dir, from)).c_str(), widePath(childPath(dir, to)).c_str(),
                                 MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH),
                     err);
}

bool linkIn(const Folder &dir, const QByteArray &from, const QByteArray &to, int &err)
{
    return succeeded(
        CreateHardLinkW(widePath(childPath(dir, to)).c_str(), widePath(childPath(dir, from)).c_str(), nullptr), err);
}

bool hardLink(const QByteArray &from, const QByteArray &to, int &err)
{
    return succeeded(CreateHardLinkW(widePath(to).c_str(), widePath(from).c_str(), nullptr), err);
}

// MOVEFILE_WRITE_THROUGH has put each rename on disk already.
bool syncFolder([[maybe_unused]] const Folder &dir, [[maybe_unused]] int &err)
{
    return true;
}

void dropSaveFile(const Folder &dir, SaveFile &file)
{
    if (file.fd >= 0)
        closeFile(file.fd);
    file.fd = -1;
    if (file.named)
        removeFile(dir, file.tempName);
    file.named = false;
}

// A running save keeps its file open without leave to delete it, so only the
// leftovers of ended saves can be removed.
void removeStaleSaveFile(const Folder &dir, const QByteArray &name)
{
    if (kindAt(dir, name) == Kind::File)
        removeFile(dir, name);
}

} // namespace PlatformFile
