#pragma once

#include "formats/BlocksetModel.h"
#include "storage/Result.h"

#include <QByteArray>
#include <QString>

class PackedEntries;
class WorkingFolder;

// Writes an open blockset to disk: the style file into the working folder, the
// working folder packed into the archive, and the update file beside it (the
// update file names the archive's size, so the two are one pair).
class BlocksetWriter {
public:
    explicit BlocksetWriter(const WorkingFolder &folder) : m_folder(folder) {}

    // Writes `styleName` ("Castle.style") from `content` into the working folder;
    // another style file whose name differs only in case is removed, so that one
    // style is packed. `bytes` receives what was written.
    Result writeStyle(const QString &styleName, const BlocksetContent &content, QByteArray &bytes);
    // Packs the working folder into `archivePath`, replacing it atomically;
    // files `known` holds packed forms of are written with those bytes as they are.
    Result packArchive(const QString &archivePath, PackedEntries &known);
    // Packs the working folder (as packArchive) and writes its update file, then
    // puts both in place together (PairSwitch): when either cannot be written,
    // neither target changes. `updateFailed` tells that the update file was what failed.
    Result packPair(const QString &archivePath, PackedEntries &known, const QString &updatePath, const QString &version,
                    const QString &comment, QByteArray &updateBytes, bool &updateFailed);
    // Writes the update file for the archive as it is on disk now (its size
    // goes into the file). `bytes` receives what was written.
    static Result writeUpdateFile(const QString &updatePath, const QString &archivePath, const QString &version,
                                  const QString &comment, QByteArray &bytes);

private:
    const WorkingFolder &m_folder;
};
