#pragma once

#include "formats/BlocksetModel.h"

#include <QString>

// The 89-character symbol alphabet; its length is the block limit of a blockset.
const QString &symbolAlphabet();
// The prefix alphabet: "." followed by the symbol alphabet (90 characters).
const QString &prefixAlphabet();
int blockLimit();

// A double symbol typed as free text: empty, or a prefix character followed by a symbol character.
bool isValidDoubleSymbol(const QString &text);

// Whether a block row other than `editedRow` (-1: none) has `text` as its double
// symbol. An empty text is never counted as used.
bool isDoubleSymbolUsed(const QList<BlockRow> &blocks, const QString &text, int editedRow);

// Sets the symbol controls after a style was read.
void refreshSymbolSettings(SymbolSettings &symbols, bool strictPrefixConsistent, bool syncDoubleConsistent,
                           const QString &commonPrefix, bool strictPrefixSetting, bool syncDoubleSetting);
