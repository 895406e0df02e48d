#pragma once

#include "items/ItemKind.h"

#include <QString>

class OperationHost;

// Adding files from anywhere on disk to the open blockset. Each file is copied
// into its folder of the working folder and gets a row; a block also gets its
// symbols (the Add Block dialog) and a block name no other block has. The source
// file is never changed. A copy that fails leaves neither a file nor a row.

// The Add Block, Add Texture or Add Sound command: the multi-select dialog, then
// each chosen file whose extension the command accepts (blocks sorted by
// character code first, and only while the block limit allows). Shows the
// summary ("2 blocks added.") in the status panel; returns the number added.
int addItems(OperationHost &host, ItemKind kind);

// One file each; false when it was not added (duplicate name, missing source,
// Cancel in the symbol dialog, a copy that failed).
bool addBlockFile(OperationHost &host, const QString &path);
bool addTextureFile(OperationHost &host, const QString &path);
bool addSoundFile(OperationHost &host, const QString &path);
bool addItemFile(OperationHost &host, ItemKind kind, const QString &path);

// Whether the extension of `path` (after its last ".") is one the list takes,
// ignoring case as Windows and Rover do: "x.BLOCK" is a block file.
bool isItemFile(ItemKind kind, const QString &path);
// The list's extensions for messages: ".gif, .jpg".
QString itemExtensionsText(ItemKind kind);

// The block limit: a block may be added while there are fewer blocks than
// symbols in the alphabet.
bool blockLimitAllows(OperationHost &host);
// "The maximum of 89 block has been reached."
void showBlockLimitMessage(OperationHost &host);
