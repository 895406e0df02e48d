#pragma once

#include "storage/Result.h"

#include <QByteArray>
#include <QString>

#include <vector>

class ArchiveSink;

// Writes a .bset archive from a folder: every file below it, with entry names
// relative to it ("/" separated, sorted, names as ArchiveEntryNames stores them),
// empty folders as folder entries; links, pipes and devices are left out. The
// archive replaces its target atomically and durably: the old file stays whole
// until the new one is on disk.
class ArchiveWriter {
public:
    explicit ArchiveWriter(QString target);

    // Collects every file below `folder` (read when written).
    Result addFolder(const QString &folder);
    // Writes the archive and puts it in the target's place.
    Result write();
    // Writes the archive beside the target under a hidden name (`asideName`), on
    // disk, leaving the target as it is, for a save that puts it in place together
    // with its update file (PairSwitch).
    Result writeAside(QByteArray &asideName);

private:
    Result writeTo(bool aside, QByteArray *asideName);
    struct PackedFile {
        QString entryName; // relative, "/" separated
        QByteArray path;   // on disk
    };
    Result writeEmpty(ArchiveSink &sink) const;
    Result writeEntries(ArchiveSink &sink) const;

    QString m_target;
    std::vector<PackedFile> m_files;
    std::vector<QString> m_emptyFolders; // "name/" entries
};
