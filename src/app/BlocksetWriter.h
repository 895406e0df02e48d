#pragma once

#include "formats/BlocksetModel.h"
#include "storage/Result.h"

#include <QByteArray>
#include <QString>

class PackedEntries;
class WorkingFolder;

// Writes an open blockset to disk: the style file into the working folder, the
// working folder packed into the archive, and the update file beside it.
class BlocksetWriter {
public:
    explicit BlocksetWriter(const WorkingFolder &folder) : m_folder(folder) {}

    // Writes `styleName` ("Castle.style") from `content` into the working folder;
    // another style file whose name differs only in case is removed, so that one
    // style is packed. `bytes` receives what was written.
    Result writeStyle(const QString &styleName, const BlocksetContent &content, QByteArray &bytes);
    // Packs the working folder into `archivePath`, replacing it atomically;
    // files `packed` knows are written with their packed bytes as they are.
    Result packArchive(const QString &archivePath, PackedEntries &packed);
    // Writes the update file for the archive as it is on disk now (its size
    // goes into the file). `bytes` receives what was written.
    static Result writeUpdateFile(const QString &updatePath, const QString &archivePath, const QString &version,
                                  const QString &comment, QByteArray &bytes);

private:
    const WorkingFolder &m_folder;
};
