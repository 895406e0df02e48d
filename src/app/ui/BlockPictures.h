#pragma once

#include "app/BlocksetDocument.h"
#include "app/ui/BlockPreview.h"
#include "items/ItemKind.h"

#include <QObject>
#include <QPointer>

class BlockThumbnails;
class ItemListPage;
class QImage;
class QString;

// The pictures of the Blocks tab: the preview panel beside the block list
// (opened by Preview Block and by Space in the list, it follows the list's
// current row until it is closed) and a small picture of each block before
// its file name, drawn in the background after the list is filled and again
// when the block or a texture it names is added, replaced or removed.
class BlockPictures : public QObject {
    Q_OBJECT

public:
    BlockPictures(BlocksetDocument &document, ItemListPage &blockPage, QObject *parent = nullptr);

    // Shows the preview panel with the current block.
    void openPreview();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void closePreview();
    void showCurrentBlock();
    void listShown();
    void itemsChanged(ItemKind kind);
    void requestThumbnails();
    void pictureReady(const QString &blockFile, const QImage &picture, const QString &problem);

    // The window takes the document down before its widgets: a list that
    // reports a change while it goes finds neither.
    QPointer<BlocksetDocument> m_document;
    ItemListPage &m_page;
    const QObject *m_list = nullptr; // the block list, watched for Space
    QPointer<BlockPreview> m_preview;
    BlockThumbnails *m_thumbnails = nullptr;
};
