#pragma once

#include "rover/RoverBlock.h"

#include <QByteArrayView>

// Reads a block file (Windows-1252 bytes) as Rover reads it: the block, and
// Rover's errors and warnings with the block file's lines and Rover's own
// texts. The first error ends reading, as it ends Rover's; a BSP tree with a
// cycle is reported as an error too, since Rover crashes on it. Nothing is
// changed for loading yet (see loadRoverBlock). Linear in the input.
RoverBlockFile readRoverBlock(QByteArrayView bytes);
