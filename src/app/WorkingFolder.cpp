#include "app/WorkingFolder.h"

#include <QByteArray>
#include <QFile>

#include <dirent.h>
#include <fcntl.h>
#include <stdlib.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

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
    return QFile::encodeName(path);
}

bool isItemFolderName(const char *name)
{
    for (const char *item : kItemFolders) {
        if (qstrcmp(name, item) == 0)
            return true;
    }
    return false;
}

bool isFolderEntry(int dirFd, const dirent *entry)
{
    if (entry->d_type != DT_UNKNOWN)
        return entry->d_type == DT_DIR;
    struct stat st {};
    return fstatat(dirFd, entry->d_name, &st, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(st.st_mode);
}

// Deletes everything in the folder `dirFd` (files, links, sub-folders with their
// contents), never following a link; at the top of the working folder the three
// item folders stay. Every failure is ignored.
void removeContents(int dirFd, int depth, bool keepItemFolders)
{
    const int listFd = dup(dirFd);
    DIR *dir = listFd >= 0 ? fdopendir(listFd) : nullptr;
    if (!dir) {
        if (listFd >= 0)
            close(listFd);
        return;
    }
    rewinddir(dir); // the duplicate shares the folder's read position
    std::vector<QByteArray> files;
    std::vector<QByteArray> folders;
    while (dirent *entry = readdir(dir)) {
        if (qstrcmp(entry->d_name, ".") == 0 || qstrcmp(entry->d_name, "..") == 0)
            continue;
        const bool folder = isFolderEntry(dirFd, entry);
        if (folder && keepItemFolders && isItemFolderName(entry->d_name))
            continue;
        (folder ? folders : files).emplace_back(entry->d_name);
    }
    closedir(dir);
    for (const QByteArray &name : files)
        unlinkat(dirFd, name.constData(), 0);
    for (const QByteArray &name : folders) {
        if (depth + 1 < kMaxDepth) {
            const int subFd = openat(dirFd, name.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
            if (subFd >= 0) {
                removeContents(subFd, depth + 1, false);
                close(subFd);
            }
        }
        unlinkat(dirFd, name.constData(), AT_REMOVEDIR);
    }
}

} // namespace

QString WorkingFolder::tempRoot()
{
    for (const char *name : {"Temp", "TMPDIR"}) {
        const QString value = qEnvironmentVariable(name);
        if (!value.isEmpty())
            return value;
    }
    return u"/tmp"_s;
}

WorkingFolder::WorkingFolder(const QString &root) : m_root(root), m_folder(joined(root, u"Cubrix"_s)) {}

WorkingFolder::~WorkingFolder()
{
    if (m_lockFd >= 0)
        close(m_lockFd);
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

// Takes `folder` for this editor: locks "<folder>.lock" beside it and makes sure
// the folder is a real folder of this user with owner-only rights, creating it if
// needed. False (and nothing held) when another editor holds the lock or the
// folder is a link or someone else's.
bool WorkingFolder::claim(const QString &folder)
{
    const QString lockPath = folder + u".lock"_s;
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

    const QByteArray folderName = fsName(folder);
    struct stat st {};
    if (lstat(folderName.constData(), &st) != 0) {
        mkdir(folderName.constData(), 0700);
        if (lstat(folderName.constData(), &st) != 0)
            st.st_mode = 0;
    }
    const int folderFd = S_ISDIR(st.st_mode) && st.st_uid == geteuid()
                             ? ::open(folderName.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC)
                             : -1;
    struct stat opened {};
    if (folderFd < 0 || fstat(folderFd, &opened) != 0 || opened.st_uid != geteuid()) {
        if (folderFd >= 0)
            close(folderFd);
        unlink(lockName.constData());
        close(lockFd);
        return false;
    }
    if ((opened.st_mode & 07777) != 0700)
        fchmod(folderFd, 0700);
    m_folder = folder;
    m_lockPath = lockPath;
    m_lockFd = lockFd;
    makeItemFolders(folderFd);
    close(folderFd);
    return true;
}

// The working folder, opened without following a link; -1 unless this editor
// holds it.
int WorkingFolder::openFolder() const
{
    if (m_lockFd < 0)
        return -1;
    const int fd = ::open(fsName(m_folder).constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    struct stat st {};
    if (fd >= 0 && (fstat(fd, &st) != 0 || st.st_uid != geteuid())) {
        close(fd);
        return -1;
    }
    return fd;
}

// Makes blocks, textures and sounds; something else in their place (a file, a
// link) is removed first.
void WorkingFolder::makeItemFolders(int folderFd) const
{
    for (const char *name : kItemFolders) {
        if (mkdirat(folderFd, name, 0700) == 0 || errno != EEXIST)
            continue;
        struct stat st {};
        if (fstatat(folderFd, name, &st, AT_SYMLINK_NOFOLLOW) == 0 && !S_ISDIR(st.st_mode)) {
            unlinkat(folderFd, name, 0);
            mkdirat(folderFd, name, 0700);
        }
    }
}

void WorkingFolder::createWorkingFolders()
{
    if (m_lockFd >= 0) {
        const int fd = openFolder();
        if (fd >= 0) {
            makeItemFolders(fd);
            close(fd);
        }
        return;
    }
    for (int n = 1; n <= kNamedFolders; ++n) {
        const QString name = n == 1 ? u"Cubrix"_s : u"Cubrix-%1"_s.arg(n);
        if (claim(joined(m_root, name)))
            return;
    }
    // Every usual name is taken: a fresh folder with a unique name.
    QByteArray pattern = fsName(joined(m_root, u"Cubrix-XXXXXX"_s));
    if (mkdtemp(pattern.data()))
        claim(QFile::decodeName(pattern));
}

void WorkingFolder::clearWorkingFolders()
{
    const int folderFd = openFolder();
    if (folderFd < 0)
        return;
    for (const char *name : kItemFolders) {
        const int itemFd = openat(folderFd, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
        if (itemFd >= 0) {
            removeContents(itemFd, 1, false);
            close(itemFd);
        }
    }
    removeContents(folderFd, 0, true);
    makeItemFolders(folderFd);
    close(folderFd);
}

void WorkingFolder::removeWorkingFolders()
{
    if (m_lockFd < 0)
        return;
    clearWorkingFolders();
    const int folderFd = openFolder();
    if (folderFd >= 0) {
        for (const char *name : kItemFolders)
            unlinkat(folderFd, name, AT_REMOVEDIR);
        close(folderFd);
    }
    rmdir(fsName(m_folder).constData());
    unlink(fsName(m_lockPath).constData());
    close(m_lockFd);
    m_lockFd = -1;
}
