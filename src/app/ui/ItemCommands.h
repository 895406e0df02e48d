#pragma once

#include "items/ItemKind.h"

#include <QObject>

class BlocksetDocument;
class DocumentPresenter;
class QSoundEffect;
class QWidget;

// The item commands of the editor window (Add, Remove, Update/Replace, Edit,
// Preview/Play, Add BSP Trees, the label edit): each takes the selection from the
// shown list, runs the core operation through the document and puts the list's
// selection and focus where the author expects them.
class ItemCommands : public QObject {
    Q_OBJECT

public:
    ItemCommands(BlocksetDocument &document, DocumentPresenter &presenter, QWidget *window);

    void addItem();
    void removeItem();
    // `onlyBlocks`: the toolbar button acts on the Blocks tab only, the menu entry on any.
    void replaceItem(bool onlyBlocks);
    void editItem();
    void previewItem();
    void addBSP();
    void renameLabel(ItemKind kind, int row, const QString &newText);

    // Sounds can be played only when an audio output exists at start.
    bool soundAvailable() const { return m_soundAvailable; }

signals:
    // Preview on the Blocks tab: the block preview is to show the current block.
    void blockPreviewRequested();

private:
    void previewTexture();
    void playSound();
    void showOops();

    BlocksetDocument &m_document;
    DocumentPresenter &m_presenter;
    QWidget *m_window;
    QSoundEffect *m_sound = nullptr;
    bool m_soundAvailable = false;
};
