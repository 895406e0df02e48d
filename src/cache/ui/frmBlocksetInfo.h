#pragma once

#include "cache/CacheRow.h"

#include <QDialog>

class QLabel;

// "Blockset Info": everything the manager knows about one cached blockset, with
// buttons copying its tag and address. It shows the row as given; it opens no file.
class frmBlocksetInfo : public QDialog {
    Q_OBJECT

public:
    explicit frmBlocksetInfo(const CacheRow &row, QWidget *parent = nullptr);

private:
    void copyText(const QString &text);

    QLabel *lblURL = nullptr;
};
