#pragma once

#include <QDialog>

class QCheckBox;
class QPushButton;
class RegistryWrapper;

// The Options dialog: the seven on/off settings as check boxes, written to the
// settings store on OK. Double-symbol synchronisation is offered only together
// with the strict prefix.
class frmOptions : public QDialog {
    Q_OBJECT

public:
    explicit frmOptions(RegistryWrapper &settings, QWidget *parent = nullptr);

    void accept() override;

private:
    void strictPrefixClicked(bool checked);

    RegistryWrapper &m_settings;
    QCheckBox *cbxShowWarnings;
    QCheckBox *cbxSyncBlockset;
    QCheckBox *cbxSyncBlock;
    QCheckBox *cbxStrictPrefix;
    QCheckBox *cbxSyncDouble;
    QCheckBox *cbxSkipEdit;
    QCheckBox *cbxUpdateFile;
    QPushButton *cmdOK;
    QPushButton *cmdCancel;
};
