#pragma once

#include "items/ItemKind.h"

#include <QString>

class OperationHost;

// The label edit of a row: renames the row's file in the working folder to
// `newName`. Refused, with a message that is always shown, when the extension
// changes, the name is empty, another row of the list already has it (names
// match ignoring case, as on Windows) or the file system cannot hold it; asks
// "Are you sure to rename this block?" under showWarnings. Returns true when the
// edit stands (the row and the file carry the new name), false when the label
// must go back to the old text; the file then keeps its old name too.
bool renameItem(OperationHost &host, ItemKind kind, int row, const QString &newName);
