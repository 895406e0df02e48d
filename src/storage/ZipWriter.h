#pragma once

#include "storage/PackedEntry.h"

#include <QByteArray>
#include <QString>

#include <ctime>

class ArchiveSink;

// Writes the records of a ZIP archive into an ArchiveSink: for each entry its
// local header and its data as packed already, then the central directory and
// the end record. The data goes in exactly as given, so an entry copied from
// another archive or recompressed by Shrink keeps its bytes. Names are stored
// as ArchiveEntryNames encodes them (Windows-1252 bytes without the UTF-8 flag
// where they fit). No Zip64: Rover's ZIP reader knows none, so an archive of
// more than 65,535 entries or 4 GiB is refused.
class ZipWriter {
public:
    explicit ZipWriter(ArchiveSink &sink) : m_sink(sink) {}

    bool begin();
    // "name/" entries: a folder without content.
    bool addFolder(const QString &name, std::time_t modified);
    bool addFile(const QString &name, std::time_t modified, const PackedEntry &entry);
    // Writes the central directory and the end record; the sink is not committed.
    bool finish();

    // The bytes an entry named `name` takes besides its packed data (local
    // header and directory record), and the end record's bytes: with the
    // packed sizes they give the archive's size before it is written.
    static qint64 entryOverhead(const QString &name);
    static constexpr qint64 kEndRecordBytes = 22;

    // The position of the next entry in the archive's directory.
    int entryCount() const { return m_count; }
    // Why the last call failed.
    QString error() const { return m_error; }

private:
    bool addEntry(const QString &name, std::time_t modified, const PackedForm &form, const QByteArray &packed,
                  bool folder);
    bool write(const QByteArray &bytes);
    bool fail(const QString &reason);

    ArchiveSink &m_sink;
    QByteArray m_directory; // central directory records so far
    qint64 m_offset = 0;
    int m_count = 0;
    QString m_error;
};
