#pragma once

#include "draw/BlockScene.h"
#include "draw/OrbitCamera.h"
#include "draw/PreviewPainter.h"

#include <QPoint>
#include <QWidget>

// The 3D view of the block preview: draws the block with the preview painter
// (ground grid, block, cube outline) from a camera going round the block's
// centre. Dragging with a mouse button turns the camera, the wheel moves it
// nearer or farther. The camera stays where it is when another block is shown.
class BlockView : public QWidget {
    Q_OBJECT

public:
    explicit BlockView(QWidget *parent = nullptr);

    void setScene(const BlockScene &scene);
    void setOrder(DrawOrder order);
    DrawOrder order() const { return m_order; }
    void resetCamera();
    const OrbitCamera &orbit() const { return m_orbit; }

    QSize sizeHint() const override { return QSize(360, 360); }
    QSize minimumSizeHint() const override { return QSize(160, 160); }

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

private:
    void changed();

    BlockScene m_scene;
    OrbitCamera m_orbit;
    DrawOrder m_order = DrawOrder::Rover;
    PreviewPainter m_painter;
    QSize m_frameSize;
    bool m_frameValid = false;
    bool m_dragging = false;
    QPoint m_lastPoint;
};
