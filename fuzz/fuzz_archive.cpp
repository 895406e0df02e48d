// The archive open and extraction into a fresh working folder, then a save that
// copies the entries' packed bytes as they are. Nothing may land outside that
// folder: the target aborts when anything but the archive, the folder and the
// saved copy stands beside them afterwards, or when the copy does not unpack
// to the files the folder holds.
#include "FuzzSupport.h"
#include "storage/ArchiveReader.h"
#include "storage/ArchiveWriter.h"
#include "storage/PackedEntries.h"

#include <QDirIterator>
#include <QMap>

namespace {

// Every file below `root` by its relative path, with its bytes.
QMap<QString, QByteArray> fuzzTree(const QString &root)
{
    QMap<QString, QByteArray> tree;
    QDirIterator it(root, QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        QFile file(it.next());
        tree.insert(QDir(root).relativeFilePath(file.fileName()),
                    file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<unreadable>"));
    }
    return tree;
}

} // namespace

CUBRIX_FUZZ_ENTRY(fuzzArchive)
{
    static const QString folder = fuzzFolder("archive");
    const QString archivePath = folder + QStringLiteral("/input.bset");
    const QString target = folder + QStringLiteral("/work");
    const QString copyPath = folder + QStringLiteral("/copy.bset");
    QDir(target).removeRecursively();
    QDir().mkpath(target);
    QFile::remove(copyPath);
    fuzzWrite(archivePath, fuzzBytes(data, size));
    bool extracted = false;
    PackedEntries packed;
    {
        ArchiveReader archive;
        std::vector<ArchiveEntryOrigin> origins;
        if (archive.open(archivePath)) {
            extracted = archive.extractAll(target, &origins).ok();
            QByteArray entry;
            (void)archive.readEntry(QStringLiteral("blocks/wall.block"), entry);
            packed.adoptArchive(archivePath, target, origins);
        }
    }
    if (extracted) {
        ArchiveWriter copy(copyPath, &packed);
        if (copy.addFolder(target) && copy.write()) {
            const QString again = folder + QStringLiteral("/again");
            QDir(again).removeRecursively();
            QDir().mkpath(again);
            ArchiveReader reader;
            if (!reader.open(copyPath) || !reader.extractAll(again) || fuzzTree(again) != fuzzTree(target)) {
                std::fprintf(stderr, "the saved copy does not hold the unpacked files\n");
                std::abort();
            }
            QDir(again).removeRecursively();
        }
        QFile::remove(copyPath);
    }
    const QStringList beside =
        QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    if (beside != QStringList({QStringLiteral("input.bset"), QStringLiteral("work")})) {
        std::fprintf(stderr, "extraction wrote outside its folder: %s\n", qPrintable(beside.join(u' ')));
        std::abort();
    }
    return 0;
}
