#pragma once

#include "storage/PackedEntries.h"
#include "storage/PlatformFile.h"
#include "storage/Result.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <vector>

class ArchiveSink;

// Writes a .bset archive from a folder: every file below it, with entry names
// relative to it ("/" separated, sorted, names as ArchiveEntryNames stores them),
// empty folders as folder entries; links, pipes and devices are left out. The
// archive replaces its target atomically and durably: the old file stays whole
// until the new one is on disk.
//
// With `packed`, a file whose packed form is known (unchanged since the archive
// was opened or last saved, or recompressed by Shrink) is written with those
// bytes as they are; every other file is packed as EntryPacking::packForSave
// says. After the save `packed` knows the new archive's entries.
class ArchiveWriter {
public:
    explicit ArchiveWriter(QString target, PackedEntries *packed = nullptr);

    // Collects every file below `folder` (read when written).
    Result addFolder(const QString &folder);
    // Writes the archive and puts it in the target's place.
    Result write();
    // Writes the archive beside the target under a hidden name (`asideName`), on
    // disk, leaving the target as it is, for a save that puts it in place together
    // with its update file (PairSwitch).
    Result writeAside(QByteArray &asideName);
    // The archive written aside is in the target's place now: `packed` takes
    // its entries as the ones a later save copies.
    void asidePutInPlace();

    // What write() puts into the archive: the files' entry names in order, and
    // the empty folders ("name/").
    QStringList fileEntries() const;
    QStringList folderEntries() const;

private:
    Result writeTo(bool aside, QByteArray *asideName);
    struct PackedFile {
        QString entryName; // relative, "/" separated
        QByteArray path;   // on disk
    };
    Result packFile(const PackedFile &file, PlatformFile::FileStamp &stamp, PackedEntry &entry) const;
    Result writeEmpty(ArchiveSink &sink) const;
    Result writeEntries(ArchiveSink &sink, std::vector<PackedEntries::Written> &written) const;

    QString m_target;
    PackedEntries *m_packed = nullptr;
    QByteArray m_root; // the folder added last
    std::vector<PackedEntries::Written> m_written;
    QString m_writtenTarget;
    PlatformFile::FileStamp m_writtenStamp;
    std::vector<PackedFile> m_files;
    std::vector<QString> m_emptyFolders; // "name/" entries
};
