#pragma once

#include <QString>
#include <QStringList>

#include <functional>

// What one of the two symbol dialogs (Add Block, Edit Symbols) shows: the core
// decides every entry and selection, the dialog only renders them.
struct SymbolDialogSetup {
    enum Kind { AddBlock, EditSymbols };
    Kind kind = AddBlock;
    QString caption;           // "Add symbols for wall.block"
    QStringList singles;       // lstSingleChars
    int singleIndex = -1;      // its selected entry (-1: none, the list is empty)
    bool strictPrefix = false; // lists for the double symbol, else the text field
    QString prefix;            // the blockset's prefix (lstDoublePrefix, fixed)
    int prefixIndex = 0;       // its position in the prefix alphabet
    bool syncDouble = false;   // lstDoubleChars follows lstSingleChars and is disabled
    QStringList doubleChars;   // lstDoubleChars
    int doubleIndex = -1;
    QString doubleText; // fldDoubleChars as it opens
    // The OK check of a typed double symbol: shows its message and returns false
    // to keep the dialog open (with the focus in fldDoubleChars).
    std::function<bool(const QString &)> acceptDouble;
};

// What a symbol dialog hands back: OK or not, and the two symbols chosen.
struct SymbolDialogAnswer {
    bool accepted = false;
    QString single;
    QString doubleSymbol;
};

// The symbols OK gives in the dialog as it opens (what an untouched dialog chooses).
SymbolDialogAnswer offeredSymbols(const SymbolDialogSetup &setup);
// The double symbol of the strict-prefix lists: the prefix followed by the
// chosen character, or nothing when no character is left to choose.
QString strictDoubleSymbol(const SymbolDialogSetup &setup, int doubleIndex);

// The door to the two symbol dialogs: the window shows them, cubrix-cli answers
// from its command line, tests script them.
class SymbolPrompt {
public:
    virtual ~SymbolPrompt() = default;
    // Shows the Add Block or Edit Symbols dialog (modal) and returns its answer.
    virtual SymbolDialogAnswer symbolDialog(const SymbolDialogSetup &setup) = 0;
};
