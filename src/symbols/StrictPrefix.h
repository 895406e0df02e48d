#pragma once

#include "formats/BlocksetModel.h"

#include <optional>

class OperationHost;

// The strict prefix controls of the settings page as core state: the settings
// page only renders SymbolSettings.

// A click on cbxStrictPrefix leaving it `checked`. Ticked: the prefix list is
// enabled (window background) and, when the blockset is in strict prefix and sync
// double mode (set by a remap, or read: every double symbol is the common prefix
// followed by the block's own symbol), cbxSyncDouble is enabled and ticked as the
// user setting syncDouble says. Cleared: the prefix list is disabled (button face)
// and cbxSyncDouble is cleared and disabled. No symbol is rewritten.
void strictPrefixClicked(SymbolSettings &symbols, const QList<BlockRow> &blocks, bool checked, bool syncDoubleSetting);
// Whether every block has a double symbol, all of them share one prefix, and each
// ends with the block's single symbol: the blocks are in sync double mode.
bool doublesFollowSingles(const QList<BlockRow> &blocks);

// A choice in lstStrictPrefix. `remembered` is the position the list had when it
// received the focus (none when the position was set by the program, which never
// asks). Under showWarnings asks "Do you want to remap all double character
// symbols to match the new prefix?"; on Yes every two-character double symbol
// gets the new prefix in front of its second character. Returns the position the
// list must show: the chosen one, or the remembered one after a No. `remembered`
// follows a change the user confirmed.
int remapPrefix(OperationHost &host, std::optional<int> &remembered, int chosen);
