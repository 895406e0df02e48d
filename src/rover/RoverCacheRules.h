#pragma once

#include "rover/RoverFinding.h"

#include <QByteArrayView>

// What Rover reports when it reads its cache index (cache.txt). Any error
// makes Rover discard the whole index.
RoverFindings checkRoverCache(QByteArrayView bytes);
