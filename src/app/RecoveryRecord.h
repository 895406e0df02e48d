#pragma once

#include "formats/BlocksetModel.h"
#include "storage/Result.h"

#include <QByteArray>
#include <QString>

#include <optional>

// What the editor needs to bring back an unsaved blockset after it ended
// without closing (a crash, a kill, a power cut). The item files are in the
// working folder already; this record, kept beside it (never inside: everything
// inside is packed), holds what lives only in memory: the blockset's path, the
// style as it would be saved (values, block names and symbols), the symbol
// settings, the update comment and the changed flags. Written after every change
// of a changed blockset, removed when the blockset is saved or closed.
struct RecoveryRecord {
    QString blocksetPath; // "" while untitled
    QString blocksetFileName;
    bool untitled = false;
    bool blocksetChanged = false;
    bool updateChanged = false;
    QByteArray style; // the style file's bytes
    SymbolSettings symbols;
    QString updateComment;
    QString versionText;

    Result write(const QString &path) const;
    static std::optional<RecoveryRecord> read(const QString &path);
};
