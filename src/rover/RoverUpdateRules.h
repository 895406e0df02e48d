#pragma once

#include "rover/RoverFinding.h"

#include <QByteArrayView>

// What Rover reports when it reads a blockset's update file.
RoverFindings checkRoverUpdate(QByteArrayView bytes);
