#pragma once

#include "common/Prompts.h"
#include "symbols/SymbolPrompt.h"

#include <QDialog>
#include <optional>

class QComboBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;

// What frmAddBlock and frmEditSymbols share: the single symbol list, the double
// symbol as prefix and character lists (strict prefix) or as free text, OK with
// its check of a typed double symbol. The core decides every entry (see
// SymbolDialogSetup); the dialog shows them and hands back the user's choice.
class SymbolDialog : public QDialog {
    Q_OBJECT

public:
    // Shows frmAddBlock or frmEditSymbols as `setup` asks, modal to `parent`.
    static SymbolDialogAnswer ask(const SymbolDialogSetup &setup, Prompts &prompts, QWidget *parent);

    SymbolDialogAnswer answer() const { return m_answer; }

protected:
    SymbolDialog(const SymbolDialogSetup &setup, QWidget *parent);
    // Where a subclass adds its own buttons, left of OK and Cancel.
    void addButton(QPushButton *button);
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void build();
    void fill();
    void singleChanged(int index);
    void okClicked();
    QString chosenDouble() const;

    SymbolDialogSetup m_setup;
    SymbolDialogAnswer m_answer;
    std::optional<int> m_singleRemembered;

    QGroupBox *grpSingle;
    QLabel *lblSingle;
    QComboBox *lstSingleChars;
    QGroupBox *grpDouble;
    QLabel *lblPrefix;
    QComboBox *lstDoublePrefix;
    QLabel *lblDouble;
    QComboBox *lstDoubleChars;
    QLabel *lblDoubleChars;
    QLineEdit *fldDoubleChars;
    QLabel *lblDoubleShown;
    QPushButton *btnOK;
    QPushButton *btnCancel;
    class QHBoxLayout *m_buttons;
};

// The symbol dialogs of the running program, modal to `parent`.
class SymbolDialogPrompt : public SymbolPrompt {
public:
    SymbolDialogPrompt(Prompts &prompts, QWidget *parent) : m_prompts(prompts), m_parent(parent) {}
    SymbolDialogAnswer symbolDialog(const SymbolDialogSetup &setup) override
    {
        return SymbolDialog::ask(setup, m_prompts, m_parent);
    }

private:
    Prompts &m_prompts;
    QWidget *m_parent;
};
