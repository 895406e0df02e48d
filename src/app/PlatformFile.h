#pragma once

#include <QByteArray>
#include <QString>

#include <ctime>
#include <vector>

// The file-system calls of the archive and working-folder code that differ between
// Unix and Windows, so that the logic around them is written once.
//
// Files are C runtime descriptors on both systems. Names and paths are bytes: as
// the file system stores them on Unix, UTF-8 with "/" separators on Windows.
// Failures give an errno value (Windows errors are mapped to the nearest one).
// Nothing here follows a link: on Unix the calls work relative to an open folder
// with O_NOFOLLOW; on Windows symbolic links and junctions are checked for by name
// before use, or refused through the open handle where Windows allows it.
namespace PlatformFile {

QByteArray encodeName(const QString &path);
QString decodeName(const QByteArray &name);
QString errorText(int err);

// A folder whose entries are reached by name: an open descriptor on Unix, the
// folder's checked path on Windows.
struct Folder {
#ifdef Q_OS_UNIX
    int fd = -1;
    bool isOpen() const { return fd >= 0; }
#else
    QByteArray path;
    bool isOpen() const { return !path.isEmpty(); }
#endif
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

// Opens a plain file for reading. -1 with `err` set when it cannot be opened, with
// `err` 0 when it is no plain file.
int openToRead(const QByteArray &path, qint64 &size, int &err);
// Opens `name` below `folder` for writing, creating it. A file that is there
// already is emptied only when it is a plain file with no second name (hard link)
// and not a link. -1 with `err` set when it cannot be opened, with `err` 0 when it
// is no such plain file.
int createFile(const Folder &folder, const QByteArray &name, int &err);
bool readAt(int fd, char *data, qint64 length, qint64 offset);
bool writeAll(int fd, const char *data, size_t length, int &err);
bool writeAt(int fd, const char *data, size_t length, qint64 offset, int &err);
// Sets the file's modification (and access) time.
void setModified(int fd, std::time_t time);
bool closeFile(int fd, int &err);
void closeFile(int fd); // when the file was only read, or is dropped anyway

#ifndef Q_OS_UNIX
// The errno value nearest to a Windows error code, and to GetLastError().
int errnoFromSystem(unsigned long error);
int lastSystemError();
#endif

} // namespace PlatformFile
