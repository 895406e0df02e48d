#include "app/WorkingFolder.h"

#include <QByteArray>
#include <QDir>

#include <cerrno>
#include <vector>

#ifdef Q_OS_UNIX
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

using namespace Qt::StringLiterals;

namespace {

const char *const kItemFolders[] = {"blocks", "textures", "sounds"};
// "Cubrix", "Cubrix-2", ... are tried in turn while other editors hold them.
constexpr int kNamedFolders = 64;
// Folder walks stop here; no blockset nests deeper.
constexpr int kMaxDepth = 64;

QString joined(const QString &root, const QString &name)
{
    return root.endsWith(u'/') ? root + name : root + u'/' + name;
}

QByteArray fsName(const QString &path)
{
    return PlatformFile::encodeName(path);
}

bool isItemFolderName(const QByteArray &name)
{
    for (const char *item : kItemFolders) {
        if (name == item)
            return true;
    }
    return false;
}

// Deletes everything in `folder` (files, links, sub-folders with their contents),
// never following a link; at the top of the working folder the three item folders
// stay. Every failure is ignored.
void removeContents(const PlatformFile::Folder &folder, int depth, bool keepItemFolders)
{
    std::vector<PlatformFile::Entry> entries;
    int err = 0;
    PlatformFile::listFolder(folder, entries, err); // what could be listed is still removed
    std::vector<QByteArray> files;
    std::vector<QByteArray> folders;
    for (const PlatformFile::Entry &entry : entries) {
        const bool isFolder = entry.kind == PlatformFile::Kind::Folder;
        if (isFolder && keepItemFolders && isItemFolderName(entry.name))
            continue;
        (isFolder ? folders : files).push_back(entry.name);
    }
    for (const QByteArray &name : files)
        PlatformFile::removeFile(folder, name);
    for (const QByteArray &name : folders) {
        if (depth + 1 < kMaxDepth) {
            PlatformFile::Folder sub;
            if (PlatformFile::openFolderAt(folder, name, false, sub, err)) {
                removeContents(sub, depth + 1, false);
                PlatformFile::closeFolder(sub);
            }
        }
        PlatformFile::removeFolder(folder, name);
    }
}

} // namespace

QString WorkingFolder::tempRoot()
{
    for (const char *name : {"Temp", "TMPDIR"}) {
        const QString value = qEnvironmentVariable(name);
        if (!value.isEmpty())
            return QDir::fromNativeSeparators(value);
    }
#ifdef Q_OS_UNIX
    return u"/tmp"_s;
#else
    return QDir::tempPath();
#endif
}

WorkingFolder::WorkingFolder(const QString &root) : m_root(root), m_folder(joined(root, u"Cubrix"_s)) {}

WorkingFolder::~WorkingFolder()
{
    dropLock(false);
}

QString WorkingFolder::workingFolder() const
{
    return m_folder;
}

QString WorkingFolder::blocksFolder() const
{
    return m_folder + u"/blocks"_s;
}

QString WorkingFolder::texturesFolder() const
{
    return m_folder + u"/textures"_s;
}

QString WorkingFolder::soundsFolder() const
{
    return m_folder + u"/sounds"_s;
}

#ifdef Q_OS_UNIX

// Locks `lockPath`, a plain file of this user that is not a link.
bool WorkingFolder::takeLock(const QString &lockPath)
{
    const QByteArray lockName = fsName(lockPath);
    const int lockFd = ::open(lockName.constData(), O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0600);
    if (lockFd < 0)
        return false;
    struct stat held {};
    struct stat named {};
    // The lock counts only while the name still leads to the locked file: an
    // editor that removed its lock file may have done so after this one opened it.
    if (fstat(lockFd, &held) != 0 || !S_ISREG(held.st_mode) || held.st_uid != geteuid()
        || flock(lockFd, LOCK_EX | LOCK_NB) != 0 || lstat(lockName.constData(), &named) != 0
        || named.st_dev != held.st_dev || named.st_ino != held.st_ino) {
        close(lockFd);
        return false;
    }
    m_lockPath = lockPath;
    m_lockFd = lockFd;
    return true;
}

// Releases the lock; with `removeFile` the lock file goes too. A lock file left
// behind is taken by the next editor.
void WorkingFolder::dropLock(bool removeFile)
{
    if (m_lockFd < 0)
        return;
    if (removeFile)
        unlink(fsName(m_lockPath).constData());
    close(m_lockFd);
    m_lockFd = -1;
}

bool WorkingFolder::holdsLock() const
{
    return m_lockFd >= 0;
}

#else

bool WorkingFolder::takeLock(const QString &lockPath)
{
    // A lock file whose process is gone is taken over. One that is merely old is
    // safe too: a running editor keeps its lock file open, so Windows refuses to
    // delete it.
    auto lock = std::make_unique<QLockFile>(lockPath);
    if (!lock->tryLock(0))
        return false;
    m_lockPath = lockPath;
    m_lock = std::move(lock);
    return true;
}

// QLockFile removes its file whenever it lets go.
void WorkingFolder::dropLock(bool removeFile)
{
    Q_UNUSED(removeFile);
    m_lock.reset();
}

bool WorkingFolder::holdsLock() const
{
    return m_lock != nullptr;
}

#endif

// Takes `folder` for this editor: locks "<folder>.lock" beside it and makes sure
// the folder is a real folder of this user with owner-only rights, creating it if
// needed. False (and nothing held) when another editor holds the lock or the
// folder is a link or someone else's.
bool WorkingFolder::claim(const QString &folder)
{
    if (!takeLock(folder + u".lock"_s))
        return false;
    PlatformFile::Folder opened;
    if (!PlatformFile::openOwnFolder(fsName(folder), true, opened)) {
        dropLock(true);
        return false;
    }
    m_folder = folder;
    makeItemFolders(opened);
    PlatformFile::closeFolder(opened);
    return true;
}

// The working folder, opened without following a link; false unless this editor
// holds it.
bool WorkingFolder::openFolder(PlatformFile::Folder &folder) const
{
    return holdsLock() && PlatformFile::openOwnFolder(fsName(m_folder), false, folder);
}

// Makes blocks, textures and sounds; something else in their place (a file, a
// link) is removed first.
void WorkingFolder::makeItemFolders(const PlatformFile::Folder &folder) const
{
    for (const char *name : kItemFolders) {
        int err = 0;
        if (PlatformFile::makeFolder(folder, name, true, err) || err != EEXIST)
            continue;
        const PlatformFile::Kind kind = PlatformFile::kindAt(folder, name);
        if (kind != PlatformFile::Kind::Missing && kind != PlatformFile::Kind::Folder) {
            PlatformFile::removeFile(folder, name);
            PlatformFile::makeFolder(folder, name, true, err);
        }
    }
}

void WorkingFolder::createWorkingFolders()
{
    if (holdsLock()) {
        PlatformFile::Folder folder;
        if (openFolder(folder)) {
            makeItemFolders(folder);
            PlatformFile::closeFolder(folder);
        }
        return;
    }
    for (int n = 1; n <= kNamedFolders; ++n) {
        const QString name = n == 1 ? u"Cubrix"_s : u"Cubrix-%1"_s.arg(n);
        if (claim(joined(m_root, name)))
            return;
    }
    // Every usual name is taken: a fresh folder with a unique name.
    const QString unique = PlatformFile::makeUniqueFolder(joined(m_root, u"Cubrix-XXXXXX"_s));
    if (!unique.isEmpty())
        claim(unique);
}

void WorkingFolder::clearWorkingFolders()
{
    PlatformFile::Folder folder;
    if (!openFolder(folder))
        return;
    for (const char *name : kItemFolders) {
        PlatformFile::Folder item;
        int err = 0;
        if (PlatformFile::openFolderAt(folder, name, false, item, err)) {
            removeContents(item, 1, false);
            PlatformFile::closeFolder(item);
        }
    }
    removeContents(folder, 0, true);
    makeItemFolders(folder);
    PlatformFile::closeFolder(folder);
}

void WorkingFolder::removeWorkingFolders()
{
    if (!holdsLock())
        return;
    clearWorkingFolders();
    PlatformFile::Folder folder;
    if (openFolder(folder)) {
        for (const char *name : kItemFolders)
            PlatformFile::removeFolder(folder, name);
        PlatformFile::closeFolder(folder);
    }
    QDir().rmdir(m_folder);
    dropLock(true);
}
