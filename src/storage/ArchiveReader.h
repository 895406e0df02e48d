#pragma once

#include "storage/PackedEntry.h"
#include "storage/Result.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

// Where an unpacked file came from: its entry in the archive and how it was stored.
struct ArchiveEntryOrigin {
    QString path;      // the file below the extraction folder, "/" separated
    quint64 index = 0; // the entry's position in the archive's directory
    PackedForm form;
};

// Reads the ZIP archive behind a .bset file: its directory, one entry, or every
// entry unpacked into a folder. Extraction never writes outside that folder and
// never creates or follows a link.
class ArchiveReader {
public:
    ArchiveReader();
    ~ArchiveReader();
    ArchiveReader(const ArchiveReader &) = delete;
    ArchiveReader &operator=(const ArchiveReader &) = delete;

    // Reads the archive's directory. Fails when the file is missing, no file, or
    // not a ZIP archive.
    Result open(const QString &path);
    bool isOpen() const;
    // The size of the file that open() last opened, whether or not it held a
    // readable archive; -1 when the file itself could not be opened.
    qint64 fileSize() const;
    void close();

    // Writes every entry below `folder`. Fails on any read error (CRC errors
    // included) or write error; an entry that failed is not left half-written.
    // `origins`, when given, receives for each file written where it came from
    // (a file that a later entry replaced is left out).
    Result extractAll(const QString &folder, std::vector<ArchiveEntryOrigin> *origins = nullptr);

    // Names of the entries in archive order (decoded as ArchiveEntryNames says),
    // without "./" components; for counting items.
    QStringList entryNames() const;
    // Reads the entry named `name` (as entryNames() gives it; of two entries of one
    // name the later, as extraction keeps). Fails when it is missing, larger than
    // `maxSize`, or unreadable (CRC error).
    Result readEntry(const QString &name, QByteArray &data, qint64 maxSize = 64 * 1024 * 1024);
    // Reads the entry at `index` (its place among entryNames()), as readEntry does.
    Result readEntryAt(quint64 index, QByteArray &data, qint64 maxSize = 64 * 1024 * 1024);
    // The entry at `index` as stored (its compressed bytes, not unpacked), for
    // copying it into another archive unchanged.
    Result readPacked(quint64 index, PackedEntry &entry);

private:
    struct Impl;
    std::unique_ptr<Impl> d;
};
