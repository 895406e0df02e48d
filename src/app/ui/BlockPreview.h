#pragma once

#include "draw/BlockScene.h"

#include <QWidget>

class BlockView;
class QButtonGroup;
class QLabel;
class QStackedWidget;

// The block preview panel beside the block list: the block's name and file,
// the 3D view (drag to turn, wheel to zoom), the drawing order ("As Rover
// draws": Rover's BSP order, nearer polygons first, so its sorting errors
// show; "Depth buffer": as with hardware acceleration), a button that resets
// the view, and a line on what is drawn. A block Rover cannot load shows
// Rover's first error instead of a picture.
class BlockPreview : public QWidget {
    Q_OBJECT

public:
    explicit BlockPreview(QWidget *parent = nullptr);

    // Shows the block of `file`; the view keeps its camera.
    void showBlock(const QString &file, const BlockScene &scene);
    // Shows no block.
    void showNothing();

signals:
    // The panel's close button was pressed.
    void closeRequested();

private:
    QLabel *m_title = nullptr;
    QLabel *m_facts = nullptr;
    QLabel *m_problem = nullptr;
    QStackedWidget *m_pages = nullptr;
    BlockView *m_view = nullptr;
    QButtonGroup *m_orders = nullptr;
};
