#include "storage/FileStash.h"

#include "storage/PlatformFile.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>

using namespace Qt::StringLiterals;

void FileStash::setFolders(const QString &workingFolder, const QString &stashFolder)
{
    m_working = workingFolder;
    m_stash = stashFolder;
}

FileStash::FolderState FileStash::capture(const QStringList &subfolders) const
{
    FolderState state;
    for (const QString &sub : subfolders) {
        QDirIterator it(m_working + u'/' + sub, QDir::Files | QDir::Hidden | QDir::System | QDir::NoSymLinks,
                        QDirIterator::Subdirectories);
        while (it.hasNext()) {
            const QString path = it.next();
            const PlatformFile::FileStamp stamp = PlatformFile::fileStamp(PlatformFile::encodeName(path));
            if (stamp.exists)
                state.insert(path.mid(m_working.size() + 1), {stamp.inode, stamp.size, stamp.mtimeNs});
        }
    }
    return state;
}

QString FileStash::keep(const QString &relative)
{
    if (!QDir().mkpath(m_stash))
        return QString();
    QString name = QString::number(++m_next);
    const QByteArray from = PlatformFile::encodeName(m_working + u'/' + relative);
    const QByteArray to = PlatformFile::encodeName(m_stash + u'/' + name);
    int err = 0;
    if (PlatformFile::hardLink(from, to, err) || QFile::copy(m_working + u'/' + relative, m_stash + u'/' + name))
        return name;
    return QString();
}

bool FileStash::put(const QString &stashed, const QString &relative) const
{
    const QString target = m_working + u'/' + relative;
    QFile::remove(target);
    if (stashed.isEmpty())
        return true;
    int err = 0;
    return PlatformFile::hardLink(PlatformFile::encodeName(m_stash + u'/' + stashed), PlatformFile::encodeName(target),
                                  err)
           || QFile::copy(m_stash + u'/' + stashed, target);
}

void FileStash::drop(const QString &stashed) const
{
    if (!stashed.isEmpty())
        QFile::remove(m_stash + u'/' + stashed);
}

void FileStash::clear()
{
    if (!m_stash.isEmpty())
        QDir(m_stash).removeRecursively();
    m_next = 0;
}
