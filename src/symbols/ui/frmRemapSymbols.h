#pragma once

#include "symbols/RemapDialog.h"

#include <QDialog>

class QComboBox;
class QLabel;
class QPushButton;
class QTabWidget;

// "Remap Symbols": the Remap All and Sync Double tabs, each with its prefix list.
// The tab showing when OK is pressed decides the method; the core runs it.
class frmRemapSymbols : public QDialog, public RemapDialog {
    Q_OBJECT

public:
    explicit frmRemapSymbols(QWidget *parent = nullptr);

    bool run(const std::function<bool(const RemapChoice &)> &accept) override;

    // What OK would hand over now.
    RemapChoice choice() const;

private:
    void okClicked();
    QWidget *makeTab(const QString &suffix, const QString &title, const QString &description, QComboBox *&list,
                     const QString &labelName);

    QTabWidget *tabMethod;
    QComboBox *lstStrictPrefixRemapAll;
    QComboBox *lstStrictPrefixSyncDouble;
    QPushButton *btnOK;
    QPushButton *btnCancel;
    std::function<bool(const RemapChoice &)> m_accept;
};
