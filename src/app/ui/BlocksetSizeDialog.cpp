#include "app/ui/BlocksetSizeDialog.h"

#include "app/BlocksetSize.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QTreeWidget>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

QString share(qint64 bytes)
{
    return u"%1 %"_s.arg(BlocksetSize::percentOfLimit(bytes), 0, 'f', 1);
}

QTreeWidget *table(const QString &name, const QString &first, QWidget *parent)
{
    auto *tree = new QTreeWidget(parent);
    tree->setObjectName(name);
    tree->setRootIsDecorated(false);
    tree->setHeaderLabels({first, u"Bytes"_s, u"Share of 300 KB"_s});
    tree->header()->setStretchLastSection(false);
    tree->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    for (int column : {1, 2})
        tree->headerItem()->setTextAlignment(column, Qt::AlignRight | Qt::AlignVCenter);
    return tree;
}

void addRow(QTreeWidget *tree, const QString &name, qint64 bytes)
{
    auto *item = new QTreeWidgetItem(tree, {name, BlocksetSize::groupedBytes(bytes), share(bytes)});
    for (int column : {1, 2})
        item->setTextAlignment(column, Qt::AlignRight | Qt::AlignVCenter);
}

} // namespace

BlocksetSizeDialog::BlocksetSizeDialog(const SavedSize &size, QWidget *parent) : QDialog(parent)
{
    setObjectName(u"frmBlocksetSize"_s);
    setWindowTitle(u"Blockset Size"_s);
    auto *summary = new QLabel(this);
    summary->setObjectName(u"lblSavedSize"_s);
    summary->setWordWrap(true);
    summary->setText(u"Saved, the blockset takes %1 bytes: %2 (%3).\n%4"_s.arg(
        BlocksetSize::groupedBytes(size.total), BlocksetSize::shareOfLimit(size.total), share(size.total),
        BlocksetSize::fitsWeb(size.total) ? u"Rover accepts it from a web address."_s
                                          : u"Rover refuses it from a web address."_s));

    QTreeWidget *kinds = table(u"SizeByKind"_s, u"Kind"_s, this);
    for (SavedSize::Kind kind :
         {SavedSize::Blocks, SavedSize::Textures, SavedSize::Sounds, SavedSize::Style, SavedSize::Other})
        addRow(kinds, SavedSize::kindName(kind), size.bytesOf(kind));
    QTreeWidget *largest = table(u"LargestItems"_s, u"Item"_s, this);
    for (const SavedSize::Entry &entry : size.largest(10))
        addRow(largest, entry.path, entry.total);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(summary);
    layout->addWidget(new QLabel(u"Bytes by kind (with each entry's headers):"_s, this));
    layout->addWidget(kinds);
    layout->addWidget(new QLabel(u"The ten largest items:"_s, this));
    layout->addWidget(largest, 1);
    layout->addWidget(buttons);
    resize(520, 480);
}
