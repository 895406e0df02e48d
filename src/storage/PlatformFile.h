#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <ctime>
#include <functional>
#include <utility>
#include <vector>

#ifndef Q_OS_UNIX
class QLockFile;
#endif

// The file-system calls of the archive and working-folder code that differ between
// Unix and Windows, so that the logic around them is written once.
//
// Files are C runtime descriptors on both systems. Names and paths are bytes: as
// the file system stores them on Unix, UTF-8 with "/" separators on Windows.
// The Unix and the Windows versions live in PlatformFile_unix.cpp and
// PlatformFile_win.cpp; CMake compiles the one of the target system.
// Failures give an errno value (Windows errors are mapped to the nearest one).
// Nothing here follows a link: on Unix the calls work relative to an open folder
// with O_NOFOLLOW; on Windows symbolic links and junctions are checked for by name
// before use, or refused through the open handle where Windows allows it.
namespace PlatformFile {

QByteArray encodeName(const QString &path);
QString decodeName(const QByteArray &name);
QString errorText(int err);

// A folder whose entries are reached by name: an open descriptor on Unix, the
// folder's checked path on Windows. It closes itself when it goes.
struct Folder {
#ifdef Q_OS_UNIX
    int fd = -1;
    bool isOpen() const
    {
        return fd >= 0;
    }
#else
    QByteArray path;
    bool isOpen() const
    {
        return !path.isEmpty();
    }
#endif
    Folder() = default;
    ~Folder();
    Folder(Folder &&other) noexcept;
    Folder &operator=(Folder &&other) noexcept;
    Folder(const Folder &) = delete;
    Folder &operator=(const Folder &) = delete;
};

enum class Kind { Missing, File, Folder, Other }; // Other: a link, pipe, device, ...

struct Entry {
    QByteArray name;
    Kind kind;
};

// Opens the folder at `path`; a link as the last component is followed only when
// `followLink` is set.
bool openFolder(const QByteArray &path, bool followLink, Folder &folder, int &err);
// Opens the folder `name` ("a" or "a/b/") below `parent`, never through a link as
// its last component; with `create`, a missing folder is made first.
bool openFolderAt(const Folder &parent, const QByteArray &name, bool create, Folder &folder, int &err);
// Closes the folder before it goes.
void closeFolder(Folder &folder);
// Lists a folder ("." and ".." left out), each entry's kind read without
// following links.
bool listFolder(const Folder &folder, std::vector<Entry> &entries, int &err);
Kind kindAt(const Folder &folder, const QByteArray &name);
// Makes the folder `name`; `ownerOnly` gives it rights for its owner alone.
bool makeFolder(const Folder &parent, const QByteArray &name, bool ownerOnly, int &err);
// Removes a file or a link (the link, never what it points to).
bool removeFile(const Folder &folder, const QByteArray &name);
// Removes an empty folder.
bool removeFolder(const Folder &folder, const QByteArray &name);

// The folder `path` if it is a real folder (no link) of this user. With `create`
// a missing folder is made, and the folder is given rights for its owner alone.
bool openOwnFolder(const QByteArray &path, bool create, Folder &folder);
// Makes a new owner-only folder from `pattern`, whose last six characters are
// "XXXXXX"; its path, or "" on failure.
QString makeUniqueFolder(const QString &pattern);

bool closeFile(int fd, int &err);
void closeFile(int fd); // when the file was only read, or is dropped anyway

// An open file descriptor that closes itself when it goes.
class FileHandle {
public:
    FileHandle() = default;
    explicit FileHandle(int fd) : m_fd(fd) {}
    ~FileHandle() { reset(); }
    FileHandle(FileHandle &&other) noexcept : m_fd(std::exchange(other.m_fd, -1)) {}
    FileHandle &operator=(FileHandle &&other) noexcept
    {
        if (this != &other) {
            reset();
            m_fd = std::exchange(other.m_fd, -1);
        }
        return *this;
    }
    FileHandle(const FileHandle &) = delete;
    FileHandle &operator=(const FileHandle &) = delete;

    int get() const { return m_fd; }
    bool isOpen() const { return m_fd >= 0; }
    // Hands the descriptor to a new owner.
    int release() { return std::exchange(m_fd, -1); }
    void reset()
    {
        if (m_fd >= 0)
            closeFile(std::exchange(m_fd, -1));
    }
    // Closes now and says whether everything written reached the file system: a
    // write may report its failure only here.
    bool close(int &err) { return m_fd < 0 || closeFile(std::exchange(m_fd, -1), err); }

private:
    int m_fd = -1;
};

// Opens a plain file for reading. Not open, with `err` set when it cannot be opened, with
// `err` 0 when it is no plain file.
FileHandle openToRead(const QByteArray &path, qint64 &size, int &err);
// Opens `name` below `folder` for writing, creating it. A file that is there
// already is emptied only when it is a plain file with no second name (hard link)
// and not a link. -1 with `err` set when it cannot be opened, with `err` 0 when it
// is no such plain file.
FileHandle createFile(const Folder &folder, const QByteArray &name, int &err);
bool readAt(int fd, char *data, qint64 length, qint64 offset);
// Writes all of `data`: at the file's own position, or at `offset` (the file's
// own position, too, when `offset` is negative).
bool writeAll(int fd, const char *data, size_t length, int &err);
bool writeAt(int fd, const char *data, size_t length, qint64 offset, int &err);
// Sets the file's modification (and access) time.
void setModified(int fd, std::time_t time);
// What a file looks like on disk now: any change by another program (a write, a
// replace by rename) changes the stamp.
struct FileStamp {
    bool exists = false;
    bool missing = false; // known not to exist (as opposed to: cannot be looked at)
    qint64 size = -1;
    qint64 mtimeNs = 0;
    qint64 ctimeNs = 0;
    quint64 inode = 0;
    bool operator==(const FileStamp &) const = default;
};
FileStamp fileStamp(const QByteArray &path);

// Whether `part`, one component of a path, names on this system the file it
// reads as. Windows reads more into some names: "a:b" names a data stream of "a",
// trailing dots and spaces are dropped, device names reach devices.
bool isPlainName(QByteArrayView part);
// The system's folder for temporary files when the environment names none.
QString defaultTempRoot();
// Windows replaces no file that is open: a reader of an archive must be closed
// before the archive is saved over.
#ifdef Q_OS_UNIX
constexpr bool kReplaceNeedsClosedFile = false;
#else
constexpr bool kReplaceNeedsClosedFile = true;
#endif

// Lets the heap keep memory that a save allocates and frees for every entry.
void keepAllocatorMemory();

// Makes the C library read the local time zone once instead of at every
// local-time conversion (libzip converts the time of every archive entry it
// reads). Called at the start of a program, before any other thread runs.
void readTimeZoneOnce();

// Puts the file at `path` on the desktop's list of recently used documents, which
// the file choosers and launchers of other programs show: the freedesktop
// recently-used.xbel (through GLib's bookmark file) on Linux, the shell's recent
// documents on Windows. Best effort: where the list cannot be read or written, or
// GLib is missing, nothing happens; a list that cannot be read is never rewritten.
void addRecentDocument(const QString &path, const QString &mimeType);

// The program name ("iexplore.exe") of a running process other than this one
// that has the file at `path` loaded; "" when none has. On Unix a process whose
// memory maps show the file (as Wine maps a loaded DLL), on Windows one whose
// module list holds it. Processes that cannot be looked at are skipped.
QString processUsingFile(const QString &path);

// A lock file held by this process: a second process cannot take it while this
// one lives, and the lock ends with the process. flock on Unix; a QLockFile on
// Windows (which takes over the lock file of a process that died).
struct Lock {
#ifdef Q_OS_UNIX
    int fd = -1;
    bool isHeld() const
    {
        return fd >= 0;
    }
#else
    QLockFile *file = nullptr; // owned; released by dropLock
    bool isHeld() const
    {
        return file != nullptr;
    }
#endif
};
// Locks `path`, a plain file of this user that is not a link, creating it.
bool takeLock(const QByteArray &path, Lock &lock);
// Releases the lock; with `removeFile` the lock file goes too (on Windows it
// always goes).
void dropLock(const QByteArray &path, Lock &lock, bool removeFile);

// The file a save writes before it replaces its target. On Linux it starts
// unnamed (O_TMPFILE) and so vanishes by itself if the process dies; elsewhere it
// has a hidden name from the start. While a save runs its file is marked busy
// (flock'ed on Unix, held open without leave to delete on Windows), so that
// removeStaleSaveFile tells the leftovers of a killed save from a running one.
struct SaveFile {
    int fd = -1;
    QByteArray tempName; // its hidden name beside the target, while `named`
    bool named = false;
    unsigned long attributes = 0; // the old target's marks kept for the new file (Windows)
};
enum class SaveFailure { None, Open, Write, Rename };
// Gives a fresh hidden name for a save file; tried again while names are taken.
using NameMaker = std::function<QByteArray()>;
bool openSaveFile(const Folder &dir, const QByteArray &target, const NameMaker &newName, SaveFile &file, int &err);
// Puts the written file on disk, then in the target's place (the old target stays
// whole until that instant), durably. On failure the file is dropped.
bool replaceWithSaveFile(const Folder &dir, const QByteArray &target, const NameMaker &newName, SaveFile &file,
                         SaveFailure &failure, int &err);
// Drops an unfinished save file.
void dropSaveFile(const Folder &dir, SaveFile &file);
// Removes `name`, the save file of an earlier save, unless a running save holds it.
void removeStaleSaveFile(const Folder &dir, const QByteArray &name);
// Puts the written file on disk under a hidden name of its own beside the target
// (in `file.tempName`) and closes it, leaving the target as it is: for saves that
// put several files in place together.
bool keepSaveFile(const Folder &dir, const NameMaker &newName, SaveFile &file, int &err);

// Renames `from` to `to` in one folder, replacing `to` atomically.
bool renameIn(const Folder &dir, const QByteArray &from, const QByteArray &to, int &err);
// A second name `to` for the file `from` (a hard link); false where the file
// system has none.
bool linkIn(const Folder &dir, const QByteArray &from, const QByteArray &to, int &err);
// A second name `to` for the file at `from` (paths; a hard link, never a symbolic one).
bool hardLink(const QByteArray &from, const QByteArray &to, int &err);
// Puts the folder's entries (renames, new names) on disk.
bool syncFolder(const Folder &dir, int &err);

#ifndef Q_OS_UNIX
// The errno value nearest to a Windows error code, and to GetLastError().
int errnoFromSystem(unsigned long error);
int lastSystemError();
#endif

} // namespace PlatformFile
