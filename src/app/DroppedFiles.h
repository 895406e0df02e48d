#pragma once

#include <QStringList>

class BlocksetDocument;

// Files dropped on the editor window. The type of a file is the text after its
// last ".", ignoring case: "bset", "block", "gif", "jpg" and "wav" are taken
// ("photo.JPG" too); every other file is named in one message.
bool isDroppableFile(const QString &path);

enum class DropOutcome { Nothing, OpenedBlockset, AddedItems };

// The first dropped blockset is opened and everything else dropped with it is
// ignored. Otherwise the blocks are added in the order dropped while the block
// limit allows (its message shown once), then the textures, then the sounds.
// With no blockset open nothing is added: the user is told to open or make one.
DropOutcome dropFiles(BlocksetDocument &document, const QStringList &paths);
