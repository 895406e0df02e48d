#include "app/ui/ShrinkDialog.h"

#include "app/BlocksetSize.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QTreeWidget>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

ShrinkDialog::ShrinkDialog(const QList<ShrinkItem> &items, QWidget *parent) : QDialog(parent)
{
    setObjectName(u"frmShrink"_s);
    setWindowTitle(u"Shrink Blockset"_s);
    auto *tree = new QTreeWidget(this);
    tree->setObjectName(u"ShrinkResults"_s);
    tree->setRootIsDecorated(false);
    tree->setHeaderLabels({u"Item"_s, u"Before"_s, u"After"_s, u"What was done"_s});
    for (int column : {1, 2})
        tree->headerItem()->setTextAlignment(column, Qt::AlignRight | Qt::AlignVCenter);
    qint64 before = 0;
    qint64 after = 0;
    for (const ShrinkItem &item : items) {
        before += item.before;
        after += item.after;
        if (!item.changed())
            continue;
        auto *row = new QTreeWidgetItem(tree, {item.path, BlocksetSize::groupedBytes(item.before),
                                               BlocksetSize::groupedBytes(item.after), item.note});
        for (int column : {1, 2})
            row->setTextAlignment(column, Qt::AlignRight | Qt::AlignVCenter);
    }
    tree->resizeColumnToContents(0);
    auto *total = new QLabel(this);
    total->setObjectName(u"lblShrinkTotal"_s);
    total->setText(tree->topLevelItemCount() == 0
                       ? u"Every entry is already as small as Shrink makes it."_s
                       : u"Packed bytes: %1 before, %2 after (%3 saved). Every texture decodes to the same "
                         "pixels as before."_s.arg(BlocksetSize::groupedBytes(before),
                                                   BlocksetSize::groupedBytes(after),
                                                   BlocksetSize::groupedBytes(before - after)));
    total->setWordWrap(true);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(tree, 1);
    layout->addWidget(total);
    layout->addWidget(buttons);
    resize(640, 420);
}
