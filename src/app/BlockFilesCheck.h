#pragma once

#include "app/BlocksetCheck.h"

#include <QByteArrayView>
#include <QString>

// Adds Rover's findings for the block files a style lists, as Rover meets them
// while it loads the blockset: every block whose file Rover opens (blocks/FILE
// as the finding's file, with the block file's line), its textures and sound
// judged by Rover's readers, the archive's names compared ignoring case. Any
// error means Rover does not load the blockset. `folder` holds the blockset
// unpacked; a block file it lacks is the style check's finding, not repeated.
void checkBlockFiles(BlocksetCheck &check, const QString &folder, QByteArrayView styleBytes);
