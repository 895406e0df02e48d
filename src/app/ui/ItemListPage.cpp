#include "app/ui/ItemListPage.h"

#include <QApplication>
#include <QDrag>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QIcon>
#include <QImageReader>
#include <QKeyEvent>
#include <QLabel>
#include <QMimeData>
#include <QMouseEvent>
#include <QPixmap>
#include <QScrollArea>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QSplitter>
#include <QStyle>
#include <QTreeWidget>
#include <QUrl>
#include <QVBoxLayout>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

// The row's place in the document's list, whatever the sorting shows.
constexpr int kRowRole = Qt::UserRole + 1;

// Sizes are right-justified digits, so comparing texts compares numbers too;
// names compare ignoring case.
class ListItem : public QTreeWidgetItem {
public:
    using QTreeWidgetItem::QTreeWidgetItem;
    bool operator<(const QTreeWidgetItem &other) const override
    {
        const int column = treeWidget() ? treeWidget()->sortColumn() : 0;
        return text(column).compare(other.text(column), Qt::CaseInsensitive) < 0;
    }
};

} // namespace

ItemListPage::ItemListPage(const QString &listName, const QStringList &columns, const QList<int> &widths,
                           Preview preview, QWidget *parent)
    : QWidget(parent)
{
    m_list = new QTreeWidget(this);
    m_list->setObjectName(listName);
    m_list->setColumnCount(int(columns.size()));
    m_list->setHeaderLabels(columns);
    m_list->setRootIsDecorated(false);
    m_list->setUniformRowHeights(true);
    m_list->setAlternatingRowColors(true);
    m_list->setAllColumnsShowFocus(true);
    m_list->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_list->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_list->setEditTriggers(QAbstractItemView::NoEditTriggers);
    for (int i = 0; i < widths.size(); ++i)
        m_list->setColumnWidth(i, widths.at(i));
    // Columns keep their widths when the window grows, as in a report-style list:
    // a stretched last column would push the sizes far away from their names.
    m_list->header()->setStretchLastSection(false);
    // The size column is the last one: its numbers line up on the right.
    m_list->headerItem()->setTextAlignment(int(columns.size()) - 1, Qt::AlignRight | Qt::AlignVCenter);
    connect(m_list, &QTreeWidget::itemChanged, this, &ItemListPage::itemChanged);
    m_list->installEventFilter(this);
    m_list->viewport()->installEventFilter(this);
    m_renameTimer.setSingleShot(true);
    connect(&m_renameTimer, &QTimer::timeout, this, &ItemListPage::editCurrentLabel);
    m_list->header()->setSectionsClickable(true);
    connect(m_list->header(), &QHeaderView::sectionClicked, this, &ItemListPage::sortByColumn);

    if (preview == Preview::None) {
        auto *layout = new QVBoxLayout(this);
        layout->addWidget(m_list);
        return;
    }
    m_picture = new QLabel(this);
    m_picture->setObjectName(u"TexturePreview"_s);
    m_picture->setAlignment(Qt::AlignCenter);
    m_pictureArea = new QScrollArea(this);
    m_pictureArea->setObjectName(u"TexturePreviewArea"_s);
    m_pictureArea->setWidget(m_picture);
    m_pictureArea->setWidgetResizable(true);
    m_pictureArea->setAlignment(Qt::AlignCenter);
    m_pictureArea->setMinimumSize(220, 220);
    m_picture->hide(); // hidden until a texture is previewed
    m_pictureName = new QLabel(this);
    m_pictureName->setObjectName(u"TextureName"_s);
    m_pictureName->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_pictureSize = new QLabel(this);
    m_pictureSize->setObjectName(u"TextureSize"_s);
    auto *previewLayout = new QVBoxLayout;
    previewLayout->addWidget(m_pictureArea, 1);
    previewLayout->addWidget(m_pictureName);
    previewLayout->addWidget(m_pictureSize);
    auto *layout = new QHBoxLayout(this);
    layout->addWidget(m_list, 3);
    layout->addLayout(previewLayout, 2);
}

void ItemListPage::showRows(const QList<QStringList> &rows)
{
    if (m_shownValid && rows == m_shownRows)
        return;
    const bool wasEmpty = m_list->topLevelItemCount() == 0;
    const int scroll = m_list->verticalScrollBar()->value();
    const int current = currentRow();
    const QList<int> selected = selectedRows();
    m_shownRows = rows;
    m_shownValid = true;
    m_filling = true;
    fillRows(rows);
    applyExtras();
    if (m_sortColumn >= 0)
        m_list->sortItems(m_sortColumn, m_sortOrder);
    if (!rows.isEmpty() && (wasEmpty || current < 0)) {
        // As in a report-style list, the first row is the selected one after filling.
        m_list->setCurrentItem(m_list->topLevelItem(0));
    } else if (!rows.isEmpty()) {
        const int last = int(rows.size()) - 1;
        m_list->setCurrentItem(itemOfRow(qMin(current, last)), 0, QItemSelectionModel::NoUpdate);
        m_list->clearSelection();
        for (int row : selected) {
            if (row <= last)
                itemOfRow(row)->setSelected(true);
        }
        if (m_list->selectedItems().isEmpty())
            m_list->currentItem()->setSelected(true);
        m_list->verticalScrollBar()->setValue(scroll);
    }
    m_filling = false;
    emit rowsShown();
}

void ItemListPage::fillRows(const QList<QStringList> &rows)
{
    // The rows the list has keep their items (and an open editor): only texts
    // change. The current row is set after the fill, so nothing follows the rows
    // removed on the way.
    const QSignalBlocker blocker(m_list);
    if (rows.isEmpty())
        m_list->clear();
    for (int i = m_list->topLevelItemCount() - 1; i >= 0; --i) {
        QTreeWidgetItem *item = m_list->topLevelItem(i);
        const int row = rowOf(item);
        if (row >= rows.size()) {
            delete m_list->takeTopLevelItem(i);
            continue;
        }
        const QStringList &cells = rows.at(row);
        if (item->text(0) != cells.value(0)) { // another file: its mark goes
            item->setIcon(0, QIcon());
            item->setToolTip(0, QString());
        }
        for (int column = 0; column < cells.size(); ++column) {
            if (item->text(column) != cells.at(column))
                item->setText(column, cells.at(column));
        }
    }
    QList<QTreeWidgetItem *> items;
    for (qsizetype row = m_list->topLevelItemCount(); row < rows.size(); ++row) {
        auto *item = new ListItem(rows.at(row));
        item->setData(0, kRowRole, int(row));
        item->setTextAlignment(int(rows.at(row).size()) - 1, Qt::AlignRight | Qt::AlignVCenter);
        if (m_editable)
            item->setFlags(item->flags() | Qt::ItemIsEditable);
        items.append(item);
    }
    m_list->addTopLevelItems(items);
}

bool ItemListPage::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_list && event->type() == QEvent::KeyPress && m_list->hasFocus()) {
        const auto *key = static_cast<QKeyEvent *>(event);
        if ((key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) && m_list->currentItem()) {
            emit openRequested();
            return true;
        }
    }
    if (watched != m_list->viewport())
        return QWidget::eventFilter(watched, event);
    switch (event->type()) {
    case QEvent::MouseButtonPress: {
        const auto *mouse = static_cast<QMouseEvent *>(event);
        QTreeWidgetItem *item = m_list->itemAt(mouse->position().toPoint());
        const QList<QTreeWidgetItem *> selected = m_list->selectedItems();
        m_clickMayRename = m_editable && mouse->button() == Qt::LeftButton && mouse->modifiers() == Qt::NoModifier
                           && item && item == m_list->currentItem() && selected.size() == 1 && selected.first() == item;
        m_renameTimer.stop();
        m_pressPos =
            item && item->isSelected() && mouse->button() == Qt::LeftButton ? mouse->position().toPoint() : QPoint();
        break;
    }
    case QEvent::MouseMove: {
        const auto *mouse = static_cast<QMouseEvent *>(event);
        if (m_pressPos.isNull() || !(mouse->buttons() & Qt::LeftButton)
            || (mouse->position().toPoint() - m_pressPos).manhattanLength() < QApplication::startDragDistance())
            break;
        m_pressPos = QPoint();
        m_clickMayRename = false;
        dragSelectedFiles();
        return true;
    }
    case QEvent::MouseButtonRelease: {
        const auto *mouse = static_cast<QMouseEvent *>(event);
        if (m_clickMayRename && m_list->itemAt(mouse->position().toPoint()) == m_list->currentItem())
            m_renameTimer.start(QApplication::doubleClickInterval());
        m_clickMayRename = false;
        break;
    }
    case QEvent::MouseButtonDblClick:
        m_renameTimer.stop();
        m_clickMayRename = false;
        if (m_list->itemAt(static_cast<QMouseEvent *>(event)->position().toPoint())) {
            emit openRequested();
            return true;
        }
        break;
    default: break;
    }
    return QWidget::eventFilter(watched, event);
}

void ItemListPage::dragSelectedFiles()
{
    if (!m_dragFolder)
        return;
    const QString folder = m_dragFolder();
    QList<QUrl> urls;
    for (int row : selectedRows())
        urls.append(QUrl::fromLocalFile(folder + u'/' + itemOfRow(row)->text(0)));
    if (urls.isEmpty())
        return;
    auto *mime = new QMimeData;
    mime->setUrls(urls);
    auto *drag = new QDrag(m_list);
    drag->setMimeData(mime);
    drag->exec(Qt::CopyAction);
}

int ItemListPage::addColumn(const QString &title, int width)
{
    const int column = m_list->columnCount();
    m_list->setColumnCount(column + 1);
    m_list->headerItem()->setText(column, title);
    m_list->setColumnWidth(column, width);
    return column;
}

void ItemListPage::setColumnCells(int column, const QStringList &cells)
{
    m_list->headerItem()->setTextAlignment(column, Qt::AlignRight | Qt::AlignVCenter);
    m_columnCells.insert(column, cells);
    applyExtras();
    if (m_sortColumn == column)
        m_list->sortItems(m_sortColumn, m_sortOrder);
}

void ItemListPage::setRowWarnings(const QStringList &warnings)
{
    m_warnings = warnings;
    m_showsWarnings = true;
    applyExtras();
}

void ItemListPage::applyExtras()
{
    const QSignalBlocker blocker(m_list);
    const QIcon warning = QApplication::style()->standardIcon(QStyle::SP_MessageBoxWarning);
    for (int i = 0; i < m_list->topLevelItemCount(); ++i) {
        QTreeWidgetItem *item = m_list->topLevelItem(i);
        const int row = rowOf(item);
        for (auto it = m_columnCells.cbegin(); it != m_columnCells.cend(); ++it) {
            item->setText(it.key(), it.value().value(row));
            item->setTextAlignment(it.key(), Qt::AlignRight | Qt::AlignVCenter);
        }
        if (!m_showsWarnings)
            continue;
        const QString text = m_warnings.value(row);
        item->setIcon(0, text.isEmpty() ? QIcon() : warning);
        item->setToolTip(0, text);
    }
}

void ItemListPage::sortByColumn(int column)
{
    sortBy(column,
           column == m_sortColumn && m_sortOrder == Qt::AscendingOrder ? Qt::DescendingOrder : Qt::AscendingOrder);
}

void ItemListPage::sortBy(int column, Qt::SortOrder order)
{
    m_sortOrder = order;
    m_sortColumn = column;
    m_list->header()->setSortIndicatorShown(true);
    m_list->header()->setSortIndicator(column, m_sortOrder);
    m_list->sortItems(column, m_sortOrder);
}

int ItemListPage::rowOf(const QTreeWidgetItem *item) const
{
    return item ? item->data(0, kRowRole).toInt() : -1;
}

QTreeWidgetItem *ItemListPage::itemOfRow(int row) const
{
    for (int i = 0; i < m_list->topLevelItemCount(); ++i) {
        if (rowOf(m_list->topLevelItem(i)) == row)
            return m_list->topLevelItem(i);
    }
    return nullptr;
}

QList<int> ItemListPage::selectedRows() const
{
    QList<int> rows;
    for (QTreeWidgetItem *item : m_list->selectedItems())
        rows.append(rowOf(item));
    std::sort(rows.begin(), rows.end());
    return rows;
}

int ItemListPage::currentRow() const
{
    return rowOf(m_list->currentItem());
}

QString ItemListPage::selectedFile() const
{
    QTreeWidgetItem *item = m_list->currentItem();
    if (!item) {
        const QList<QTreeWidgetItem *> selected = m_list->selectedItems();
        if (!selected.isEmpty())
            item = selected.first();
    }
    return item ? item->text(0) : QString();
}

void ItemListPage::selectRows(const QList<int> &rows)
{
    QTreeWidgetItem *first = rows.isEmpty() ? nullptr : itemOfRow(rows.first());
    if (!first)
        return;
    m_list->clearSelection();
    m_list->setCurrentItem(first);
    for (int row : rows) {
        if (QTreeWidgetItem *item = itemOfRow(row))
            item->setSelected(true);
    }
    m_list->scrollToItem(first);
}

void ItemListPage::selectRow(int row)
{
    QTreeWidgetItem *item = itemOfRow(row);
    if (!item)
        return;
    m_list->clearSelection();
    m_list->setCurrentItem(item);
    item->setSelected(true);
}

void ItemListPage::setLabelsEditable(bool editable)
{
    m_editable = editable;
    m_list->setEditTriggers(editable ? QAbstractItemView::EditKeyPressed : QAbstractItemView::NoEditTriggers);
    forgetShownRows();
}

void ItemListPage::editCurrentLabel()
{
    if (QTreeWidgetItem *item = m_list->currentItem(); item && m_editable)
        m_list->editItem(item, 0);
}

void ItemListPage::itemChanged(QTreeWidgetItem *item, int column)
{
    const int row = rowOf(item);
    if (m_filling || row < 0 || row >= m_shownRows.size())
        return;
    if (m_columnCells.contains(column))
        return;
    if (column != 0) { // only the file name is a label; other cells show the document
        const QSignalBlocker blocker(m_list);
        item->setText(column, m_shownRows.at(row).value(column));
        return;
    }
    const QString oldText = m_shownRows.at(row).value(0);
    if (item->text(0) != oldText)
        emit labelEdited(row, oldText, item->text(0));
}

void ItemListPage::setSidePanel(QWidget *panel)
{
    auto *splitter = new QSplitter(Qt::Horizontal, this);
    splitter->setObjectName(m_list->objectName() + u"Splitter"_s);
    splitter->setChildrenCollapsible(false);
    delete layout()->replaceWidget(m_list, splitter);
    splitter->addWidget(m_list);
    splitter->addWidget(panel);
    splitter->setStretchFactor(0, 3);
    splitter->setStretchFactor(1, 2);
}

void ItemListPage::setIcon(int row, const QIcon &icon, const QString &toolTip)
{
    if (QTreeWidgetItem *item = itemOfRow(row)) {
        const QSignalBlocker blocker(m_list); // no edit of the label
        item->setIcon(0, icon);
        item->setToolTip(0, toolTip);
    }
}

bool ItemListPage::showPicture(const QString &path, const QString &file)
{
    if (!m_picture)
        return false;
    QImageReader reader(path);
    const QImage picture = reader.read();
    m_pictureName->setText(file);
    if (picture.isNull()) {
        m_picture->clear();
        m_picture->setText(u"Cannot show this picture: "_s + reader.errorString());
        m_picture->setWordWrap(true);
        m_picture->show();
        m_pictureSize->clear();
        return false;
    }
    m_picture->setPixmap(QPixmap::fromImage(picture));
    m_picture->show();
    m_pictureSize->setText(QString::number(picture.width()) + u" x "_s + QString::number(picture.height())
                           + u" pixels, "_s + QString::number(QFileInfo(path).size()) + u" bytes"_s);
    return true;
}

void ItemListPage::clearPreview()
{
    if (!m_picture)
        return;
    m_picture->clear();
    m_picture->hide();
    m_pictureName->clear();
    m_pictureSize->clear();
}
