#pragma once

#include <QString>
#include <QStringList>

#include <functional>

// The one door to the user. Every message box, file dialog and the New Blockset
// dialog go through this interface, so each document command can run end to end
// in a test (scripted answers) or in cubrix-cli (answers from its options).

enum class PromptButtons { Ok, YesNo, YesNoCancel };
enum class PromptIcon { None, Critical, Question, Exclamation, Information };
enum class PromptAnswer { Ok, Yes, No, Cancel };

// What the New Blockset dialog hands back to the new-blockset command.
struct NewBlocksetChoice {
    QString name;
    QString version;
    bool strictPrefix = false; // cbxNewStrictPrefix checked
    bool syncDouble = false;   // cbxNewSyncDouble checked
    int prefixIndex = 0;       // entry of lstNewStrictPrefix (position in the prefix alphabet)
};

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

class Prompts {
public:
    virtual ~Prompts() = default;

    virtual PromptAnswer message(const QString &text, const QString &title, PromptButtons buttons, PromptIcon icon) = 0;
    // A message with a detail the user may unfold (why a file could not be read,
    // say); where nothing can unfold, the detail is left out.
    virtual PromptAnswer message(const QString &text, const QString &title, const QString &detail,
                                 PromptButtons buttons, PromptIcon icon)
    {
        Q_UNUSED(detail);
        return message(text, title, buttons, icon);
    }
    // Full path of the chosen file, or "" when cancelled.
    virtual QString openFile(const QString &title, const QString &filter, const QString &folder) = 0;
    // Full paths in the dialog's order; empty when cancelled.
    virtual QStringList openFiles(const QString &title, const QString &filter, const QString &folder) = 0;
    // Full path, or "" when cancelled.
    virtual QString saveFile(const QString &title, const QString &filter, const QString &defaultExt,
                             const QString &folder) = 0;
    // Shows the New Blockset dialog (modal, no Cancel) and returns its values.
    // `strictPrefixSetting` and `syncDoubleSetting` are the user settings it starts from.
    virtual NewBlocksetChoice newBlockset(bool strictPrefixSetting, bool syncDoubleSetting) = 0;
    // Shows the Add Block or Edit Symbols dialog (modal) and returns its answer.
    virtual SymbolDialogAnswer symbolDialog(const SymbolDialogSetup &setup) = 0;
};
