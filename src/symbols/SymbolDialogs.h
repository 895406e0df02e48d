#pragma once

#include "common/Prompts.h"
#include "formats/BlocksetModel.h"
#include "symbols/SymbolPrompt.h"

class OperationHost;

// What the Add Block and Edit Symbols dialogs offer, decided from the block rows
// and the symbol modes the settings page shows: only free single symbols, the
// blockset's prefix in strict prefix mode, the double following the single in
// sync double mode, and a typed double symbol checked before OK closes.

// The Add Block dialog for the block file `fileName` about to be added.
SymbolDialogSetup addBlockSetup(Prompts &prompts, const BlocksetContent &content, const QString &fileName);
// The Edit Symbols dialog for the block row `row`: its own symbols are offered and selected.
SymbolDialogSetup editSymbolsSetup(Prompts &prompts, const BlocksetContent &content, int row);

// The OK check of a double symbol typed as free text: "Incorrect double character
// symbol!" when it is not valid, "The double character symbol is already used!"
// when a row other than `editedRow` has it. Returns whether it is accepted.
bool checkTypedDouble(Prompts &prompts, const QList<BlockRow> &blocks, const QString &text, int editedRow);

// Edit Item with skipEdit off: the Edit Symbols dialog for the block row `row`.
// Writes only the symbols that changed and sets the changed flag only then.
// Returns whether a symbol changed.
bool editSymbols(OperationHost &host, int row);
