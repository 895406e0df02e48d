#pragma once

#include "rover/RoverFinding.h"

#include <QByteArrayView>
#include <QList>
#include <QStringList>

// One block entry of a style as Rover takes it.
struct RoverStyleBlock {
    QString file;   // as written: Rover opens the archive entry blocks/ + file
    QString symbol; // the single symbol
    QString name;   // the style's name for the block, "" when not given
    int line = 0;
};

// What Rover reports when it loads a blockset's style file. `blockFiles` are
// the names of the files in the archive's blocks/ folder (compared ignoring
// case); a block whose file is not among them is an error. Without a list
// (nullptr) that check is left out. `blocks`, when given, receives the entries
// whose block files Rover opens, in style order, up to where reading stops: an
// entry whose single symbol an earlier one has is left out, as Rover does not
// open its file.
RoverFindings checkRoverStyle(QByteArrayView bytes, const QStringList *blockFiles = nullptr,
                              QList<RoverStyleBlock> *blocks = nullptr);
