#pragma once

#include "rover/RoverFinding.h"

#include <QByteArrayView>
#include <QStringList>

// What Rover reports when it loads a blockset's style file. `blockFiles` are
// the names of the files in the archive's blocks/ folder (compared ignoring
// case); a block whose file is not among them is an error. Without a list
// (nullptr) that check is left out.
RoverFindings checkRoverStyle(QByteArrayView bytes, const QStringList *blockFiles = nullptr);
