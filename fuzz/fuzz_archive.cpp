// The archive open and extraction into a fresh working folder. Nothing may land
// outside that folder: the target aborts when anything but the archive and the
// folder stands beside them afterwards.
#include "FuzzSupport.h"
#include "storage/ArchiveReader.h"

CUBRIX_FUZZ_ENTRY(fuzzArchive)
{
    static const QString folder = fuzzFolder("archive");
    const QString archivePath = folder + QStringLiteral("/input.bset");
    const QString target = folder + QStringLiteral("/work");
    QDir(target).removeRecursively();
    QDir().mkpath(target);
    fuzzWrite(archivePath, fuzzBytes(data, size));
    {
        ArchiveReader archive;
        if (archive.open(archivePath)) {
            (void)archive.extractAll(target);
            QByteArray entry;
            (void)archive.readEntry(QStringLiteral("blocks/wall.block"), entry);
        }
    }
    const QStringList beside =
        QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    if (beside != QStringList({QStringLiteral("input.bset"), QStringLiteral("work")})) {
        std::fprintf(stderr, "extraction wrote outside its folder: %s\n", qPrintable(beside.join(u' ')));
        std::abort();
    }
    return 0;
}
