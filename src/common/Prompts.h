#pragma once

#include <QString>
#include <QStringList>

// The one door to the user. Every message box, file dialog and the New Blockset
// dialog go through this interface (the symbol dialogs through SymbolPrompt), so
// each document command can run end to end in a test (scripted answers) or in
// cubrix-cli (answers from its options).

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
    // A question with buttons of its own (`buttons`, the first the default) and a
    // Cancel that Escape and closing the box answer too: the index of the button
    // chosen, or -1 for Cancel.
    virtual int choose(const QString &text, const QString &title, const QString &detail, const QStringList &buttons,
                       PromptIcon icon) = 0;
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
};
