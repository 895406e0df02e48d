#include "storage/FolderEntries.h"

#include <QDir>
#include <QFileInfo>

#include <utility>

using namespace Qt::StringLiterals;

FolderEntries::FolderEntries(QString folder) : m_folder(std::move(folder)) {}

QString FolderEntries::foldedCase(const QString &name)
{
    QString folded = name;
    for (QChar &c : folded)
        if (c >= u'A' && c <= u'Z')
            c = QChar(c.unicode() + (u'a' - u'A'));
    return folded;
}

const FolderEntries::Listing &FolderEntries::listing(const QString &folder)
{
    const auto found = m_listings.constFind(folder);
    if (found != m_listings.cend())
        return *found;
    Listing names;
    const QStringList entries =
        QDir(folder).entryList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System);
    for (const QString &name : entries) {
        // Of two names that differ only in case, the exact one is found first anyway.
        names.insert(foldedCase(name), name);
    }
    return *m_listings.insert(folder, names);
}

QString FolderEntries::path(const QString &entry)
{
    QString current = m_folder;
    const QStringList parts = QString(entry).replace(u'\\', u'/').split(u'/', Qt::SkipEmptyParts);
    if (parts.isEmpty())
        return QString();
    for (const QString &part : parts) {
        if (part == "."_L1 || part == ".."_L1)
            return QString();
        const QString exact = current + u'/' + part;
        if (QFileInfo::exists(exact)) {
            current = exact;
            continue;
        }
        const QString onDisk = listing(current).value(foldedCase(part));
        if (onDisk.isEmpty())
            return QString();
        current += u'/' + onDisk;
    }
    return QFileInfo(current).isFile() ? current : QString();
}
