#pragma once

#include "items/ItemKind.h"

class OperationHost;

// The Remove command of one item list. Asks "Are you sure to remove n blocks?"
// (under showWarnings), deletes the selected rows' files from the working folder
// and the rows themselves from the last to the first, and leaves the row the list
// moved to as the one selected row. `selection` is updated in place.
// Returns false when nothing was removed (no selection, or the user said No).
bool removeItems(OperationHost &host, ItemKind kind, ListSelection &selection);
