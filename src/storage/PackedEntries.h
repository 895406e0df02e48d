#pragma once

#include "storage/ArchiveReader.h"
#include "storage/PackedEntry.h"
#include "storage/PlatformFile.h"

#include <QHash>
#include <QList>
#include <QString>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

// What the next save can write for the files of the working folder without
// compressing them again: for each file (by its path below the folder) the
// packed forms known for it, each tied to the file as it was when the form was
// made (its stamp: size, modification time, inode; an edit writes a new file,
// which changes the stamp). A form's bytes lie in the archive last opened or
// saved (by entry position), or in memory (a form Shrink made, or one made in
// the background for the size shown).
//
// A form made for a file's content rather than for one file on disk (the
// style, which every save writes anew) is found by that content: same length,
// same checksum, and the same bytes once unpacked.
class PackedEntries {
public:
    PackedEntries();
    ~PackedEntries();
    PackedEntries(const PackedEntries &) = delete;
    PackedEntries &operator=(const PackedEntries &) = delete;

    void clear();

    // `archivePath` was just unpacked into `folder`: `origins` tell where each
    // file came from.
    void adoptArchive(const QString &archivePath, const QString &folder,
                      const std::vector<ArchiveEntryOrigin> &origins);

    struct Written {
        QString path;
        PlatformFile::FileStamp stamp; // the file the entry was made from
        quint64 index = 0;
        PackedForm form;
    };
    // `archivePath` was just saved with `written` (`archiveStamp` names the file
    // written, which may still wait beside the target to be renamed into its
    // place): it is the source from now on, and the forms it holds are dropped
    // from memory.
    void adoptWritten(const QString &archivePath, const std::vector<Written> &written,
                      const PlatformFile::FileStamp &archiveStamp);

    // Whether two stamps name the same content: size, modification time and inode
    // (not the change time, which a hard link kept for an undo changes).
    static bool sameFile(const PlatformFile::FileStamp &a, const PlatformFile::FileStamp &b);
    // A form made for the file `path` as `stamp` describes it.
    void remember(const QString &path, const PlatformFile::FileStamp &stamp, const PackedEntry &entry);
    // A form made for a content `path` will have (its stamp is unknown yet).
    void rememberContent(const QString &path, const PackedEntry &entry);

    // The form known for the file as it is now, without reading it.
    std::optional<PackedForm> formFor(const QString &path, const PlatformFile::FileStamp &stamp) const;
    // The packed form of a content for `path` (see rememberContent), checked
    // by unpacking it.
    std::optional<PackedEntry> entryForContent(const QString &path, const QByteArray &content);
    // The packed bytes for the file as it is now; nullopt when no form fits or
    // its bytes cannot be read any more (the archive was changed by another
    // program): the caller compresses the file itself.
    std::optional<PackedEntry> entryFor(const QString &path, const PlatformFile::FileStamp &stamp);

    // Closes the source archive (before a save replaces it; Windows replaces no
    // open file). It is opened again when needed.
    void releaseSource();

private:
    struct Form {
        PlatformFile::FileStamp stamp; // !exists: found by content
        PackedForm form;
        QByteArray packed;        // in memory, or
        qint64 archiveIndex = -1; // in the source archive
    };
    std::optional<PackedEntry> bytesOf(const Form &form);
    void add(const QString &path, Form form);

    QHash<QString, QList<Form>> m_forms; // newest first
    QString m_sourcePath;
    PlatformFile::FileStamp m_sourceStamp;
    std::unique_ptr<ArchiveReader> m_source;
};
