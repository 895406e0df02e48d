#pragma once

#include "common/Prompts.h"

#include <QDialog>
#include <QPointer>

class QCheckBox;
class QComboBox;
class QLineEdit;
class QPushButton;
class QWidget;

// The New Blockset dialog: name, version and the symbol modes of a new blockset.
// It has no Cancel: OK is the only way out (Esc and the title bar do nothing),
// since the document has already been emptied when it is shown.
class frmNew : public QDialog {
    Q_OBJECT

public:
    // The two user settings the symbol choices start from.
    frmNew(bool strictPrefixSetting, bool syncDoubleSetting, QWidget *parent = nullptr);

    // Shows the dialog modally and hands back what the user chose.
    static NewBlocksetChoice ask(bool strictPrefixSetting, bool syncDoubleSetting);

    // The dialog's values as the new-blockset command takes them.
    NewBlocksetChoice choice() const;

    // Check states (0 or 1) of the two boxes, stored by OK.
    int intNewStrictPrefix = 0;
    int intNewSyncDouble = 0;

public slots:
    // No Cancel: Esc and closing the window leave the dialog open.
    void reject() override;

protected:
    void showEvent(QShowEvent *event) override;

private:
    void strictPrefixClicked(bool checked);
    void setPrefixListEnabled(bool enabled);
    void okClicked();

    bool m_syncDoubleSetting;
    QPointer<QWidget> m_centreOn; // the window that was active when the dialog was made
    QLineEdit *m_fldNewName;
    QLineEdit *m_fldNewVersion;
    QCheckBox *m_cbxNewStrictPrefix;
    QComboBox *m_lstNewStrictPrefix;
    QCheckBox *m_cbxNewSyncDouble;
    QPushButton *m_okButton;
};
