#include "draw/BlocksetEntries.h"

#include "storage/ArchiveReader.h"
#include "storage/FolderEntries.h"

#include <QFile>
#include <QHash>

#include <memory>

BlocksetEntries folderEntries(const QString &folder)
{
    auto entries = std::make_shared<FolderEntries>(folder);
    return [entries](const QString &entry) -> std::optional<QByteArray> {
        const QString path = entries->path(entry);
        QFile file(path);
        if (path.isEmpty() || !file.open(QIODevice::ReadOnly))
            return std::nullopt;
        return file.readAll();
    };
}

BlocksetEntries archiveEntries(ArchiveReader &archive)
{
    // Of names that differ only in case, the later entry wins, as on extraction.
    auto names = std::make_shared<QHash<QString, QString>>();
    for (const QString &name : archive.entryNames())
        names->insert(FolderEntries::foldedCase(QString(name).replace(u'\\', u'/')), name);
    return [&archive, names](const QString &entry) -> std::optional<QByteArray> {
        const QString folded = FolderEntries::foldedCase(QString(entry).replace(u'\\', u'/'));
        const auto found = names->constFind(folded);
        QByteArray bytes;
        if (found == names->cend() || !archive.readEntry(*found, bytes))
            return std::nullopt;
        return bytes;
    };
}
