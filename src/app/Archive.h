#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <memory>

// The ZIP archive behind a .bset file, with the five operations the editor uses.
// Extraction never writes outside the target folder; writing replaces the archive
// atomically and durably (the old archive stays whole until the new one is on disk).
class Archive {
public:
    Archive();
    ~Archive();
    Archive(const Archive &) = delete;
    Archive &operator=(const Archive &) = delete;

    // Reads the archive's directory. False when missing or not a ZIP archive.
    bool openArchive(const QString &path);
    // Writes every entry of the opened archive below `folder`. False on any
    // read error (CRC errors included) or write error.
    bool extractAll(const QString &folder);
    // Starts an empty archive to be written to `path`; "" drops the current one.
    bool newArchive(const QString &path);
    // Adds every file in `folder` (and, when `recursive`, in its sub-folders)
    // with entry names relative to `folder`, "/" separated.
    bool addFiles(const QString &folder, bool recursive);
    // Writes the archive built so far, replacing an existing file.
    bool writeArchive();

    // Names of the opened archive's entries in archive order, as stored (UTF-8, or
    // code page 437 for names not marked as UTF-8) without "./" components; for
    // counting items.
    QStringList entryNames() const;
    // Reads the entry stored under `name` (as entryNames() gives it; the last one
    // of that name) into `data`.
    // False when it is missing, larger than `maxSize`, or unreadable (CRC error).
    bool readEntry(const QString &name, QByteArray &data, qint64 maxSize = 64 * 1024 * 1024);

    // A short reason for the last failure, for logs.
    QString lastError() const;

private:
    struct Impl;
    std::unique_ptr<Impl> d;
};
