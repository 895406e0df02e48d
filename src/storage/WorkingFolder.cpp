#include "storage/WorkingFolder.h"

#include <QByteArray>
#include <QDir>
#include <QFileInfo>

#include <cerrno>
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
            if (PlatformFile::openFolderAt(folder, name, false, sub, err))
                removeContents(sub, depth + 1, false);
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
    return PlatformFile::defaultTempRoot();
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

QString WorkingFolder::sessionPath() const
{
    return m_folder + u".session"_s;
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

// Locks `lockPath`, a plain file of this user that is not a link.
bool WorkingFolder::takeLock(const QString &lockPath)
{
    if (!PlatformFile::takeLock(fsName(lockPath), m_lock))
        return false;
    m_lockPath = lockPath;
    return true;
}

// Releases the lock; with `removeFile` the lock file goes too. A lock file left
// behind is taken by the next editor.
void WorkingFolder::dropLock(bool removeFile)
{
    PlatformFile::dropLock(fsName(m_lockPath), m_lock, removeFile);
}

bool WorkingFolder::holdsLock() const
{
    return m_lock.isHeld();
}

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
    std::vector<PlatformFile::Entry> entries;
    int err = 0;
    m_leftover = false;
    if (PlatformFile::listFolder(opened, entries, err)) {
        for (const PlatformFile::Entry &entry : entries) {
            PlatformFile::Folder item;
            std::vector<PlatformFile::Entry> inside;
            const bool emptyItemFolder = entry.kind == PlatformFile::Kind::Folder && isItemFolderName(entry.name)
                                         && PlatformFile::openFolderAt(opened, entry.name, false, item, err)
                                         && PlatformFile::listFolder(item, inside, err) && inside.empty();
            m_leftover = m_leftover || !emptyItemFolder;
        }
    }
    makeItemFolders(opened);
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

Result WorkingFolder::createWorkingFolders()
{
    if (holdsLock()) {
        PlatformFile::Folder folder;
        if (openFolder(folder))
            makeItemFolders(folder);
        return Result();
    }
    for (int n = 1; n <= kNamedFolders; ++n) {
        const QString name = n == 1 ? u"Cubrix"_s : u"Cubrix-%1"_s.arg(n);
        if (claim(joined(m_root, name)))
            return Result();
    }
    // Every usual name is taken: a fresh folder with a unique name.
    const QString unique = PlatformFile::makeUniqueFolder(joined(m_root, u"Cubrix-XXXXXX"_s));
    if (!unique.isEmpty() && claim(unique))
        return Result();
    const QFileInfo root(m_root);
    if (!root.exists())
        return Result::failure(u"the folder for temporary files \"%1\" does not exist"_s.arg(m_root));
    if (!root.isDir())
        return Result::failure(u"\"%1\", the folder for temporary files, is not a folder"_s.arg(m_root));
    if (!root.isWritable())
        return Result::failure(u"the folder for temporary files \"%1\" cannot be written"_s.arg(m_root));
    return Result::failure(u"no working folder can be made in \"%1\""_s.arg(m_root));
}

void WorkingFolder::clearWorkingFolders()
{
    PlatformFile::Folder folder;
    if (!openFolder(folder))
        return;
    for (const char *name : kItemFolders) {
        PlatformFile::Folder item;
        int err = 0;
        if (PlatformFile::openFolderAt(folder, name, false, item, err))
            removeContents(item, 1, false);
    }
    removeContents(folder, 0, true);
    makeItemFolders(folder);
}

void WorkingFolder::removeWorkingFolders()
{
    if (!holdsLock())
        return;
    clearWorkingFolders();
    if (PlatformFile::Folder folder; openFolder(folder)) {
        for (const char *name : kItemFolders)
            PlatformFile::removeFolder(folder, name);
    }
    QDir().rmdir(m_folder);
    dropLock(true);
}
