#include "app/ui/BlockPictures.h"

#include "app/ui/ItemListPage.h"
#include "draw/BlockPicture.h"
#include "draw/BlockThumbnails.h"
#include "storage/WorkingFolder.h"

#include <QApplication>
#include <QKeyEvent>
#include <QPixmap>
#include <QSplitter>
#include <QStyle>
#include <QTreeWidget>

using namespace Qt::StringLiterals;

namespace {

constexpr int iconSide = 32;

// Keeps the file name where the picture will be until it comes.
QIcon blankIcon()
{
    QPixmap blank(iconSide, iconSide);
    blank.fill(Qt::transparent);
    return QIcon(blank);
}

} // namespace

BlockPictures::BlockPictures(BlocksetDocument &document, ItemListPage &blockPage, QObject *parent)
    : QObject(parent),
      m_document(&document),
      m_page(blockPage)
{
    m_preview = new BlockPreview;
    m_preview->hide();
    m_page.setSidePanel(m_preview);
    m_thumbnails = new BlockThumbnails(QSize(2 * iconSide, 2 * iconSide), this);
    QTreeWidget *list = m_page.list();
    m_list = list;
    list->setIconSize(QSize(iconSide, iconSide));

    connect(m_preview, &BlockPreview::closeRequested, this, &BlockPictures::closePreview);
    connect(list, &QTreeWidget::currentItemChanged, this, &BlockPictures::showCurrentBlock);
    list->installEventFilter(this);
    connect(&m_page, &ItemListPage::rowsShown, this, &BlockPictures::listShown);
    connect(&document, &BlocksetDocument::itemsChanged, this, &BlockPictures::itemsChanged);
    connect(&document, &BlocksetDocument::documentReset, this, [this] {
        m_thumbnails->setFolder(m_document->folder().workingFolder());
        listShown();
    });
    connect(m_thumbnails, &BlockThumbnails::pictureReady, this, &BlockPictures::pictureReady);
    m_thumbnails->setFolder(m_document->folder().workingFolder());
}

bool BlockPictures::eventFilter(QObject *watched, QEvent *event)
{
    // Space in the block list previews the current block (it would only select it again).
    // Only the list's own address is compared: the filter also sees the events
    // of a list whose page is being taken down.
    if (event->type() == QEvent::KeyPress && watched == m_list) {
        const auto *key = static_cast<QKeyEvent *>(event);
        if (key->key() == Qt::Key_Space && key->modifiers() == Qt::NoModifier) {
            openPreview();
            return true;
        }
    }
    return QObject::eventFilter(watched, event);
}

void BlockPictures::openPreview()
{
    if (m_preview->isHidden()) {
        m_preview->show();
        auto *splitter = qobject_cast<QSplitter *>(m_preview->parentWidget());
        if (splitter && splitter->width() > 0)
            splitter->setSizes({splitter->width() * 11 / 20, splitter->width() * 9 / 20});
    }
    showCurrentBlock();
}

void BlockPictures::closePreview()
{
    m_preview->hide();
    m_page.list()->setFocus();
}

void BlockPictures::showCurrentBlock()
{
    if (!m_preview || !m_document || m_preview->isHidden())
        return;
    const int row = m_page.currentRow();
    const QString file = row >= 0 ? m_page.list()->topLevelItem(row)->text(0) : QString();
    if (file.isEmpty() || !m_document->blocksetOpen()) {
        m_preview->showNothing();
        return;
    }
    m_preview->showBlock(file, readBlockScene(folderEntries(m_document->folder().workingFolder()), file));
}

void BlockPictures::listShown()
{
    // The list was written again: the pictures drawn so far go back at once.
    QTreeWidget *list = m_page.list();
    for (int row = 0; row < list->topLevelItemCount(); ++row) {
        const QString file = list->topLevelItem(row)->text(0);
        const QImage picture = m_thumbnails->picture(file);
        const QString problem = m_thumbnails->problem(file);
        if (!picture.isNull())
            m_page.setIcon(row, QIcon(QPixmap::fromImage(picture)));
        else if (!problem.isEmpty())
            m_page.setIcon(row, QApplication::style()->standardIcon(QStyle::SP_MessageBoxWarning), problem);
        else
            m_page.setIcon(row, blankIcon());
    }
    requestThumbnails();
    showCurrentBlock();
}

void BlockPictures::itemsChanged(ItemKind kind)
{
    // A list of the same rows is not written again, yet a block may have been
    // replaced or a texture added: the pictures and the preview are checked.
    if (kind == ItemKind::Sound)
        return;
    requestThumbnails();
    showCurrentBlock();
}

void BlockPictures::requestThumbnails()
{
    if (!m_document || !m_document->blocksetOpen())
        return;
    QStringList files;
    for (const BlockRow &row : m_document->blocks())
        files.append(row.file);
    m_thumbnails->request(files);
}

void BlockPictures::pictureReady(const QString &blockFile, const QImage &picture, const QString &problem)
{
    QTreeWidget *list = m_page.list();
    for (int row = 0; row < list->topLevelItemCount(); ++row) {
        if (list->topLevelItem(row)->text(0) != blockFile)
            continue;
        if (picture.isNull())
            m_page.setIcon(row, QApplication::style()->standardIcon(QStyle::SP_MessageBoxWarning), problem);
        else
            m_page.setIcon(row, QIcon(QPixmap::fromImage(picture)));
    }
}
