#pragma once

#include "shrink/ShrinkBlockset.h"

#include <QDialog>

// The result of Tools ▸ Shrink Blockset: each item's packed bytes before and
// after (the items Shrink changed), and the total.
class ShrinkDialog : public QDialog {
    Q_OBJECT

public:
    ShrinkDialog(const QList<ShrinkItem> &items, QWidget *parent = nullptr);
};
