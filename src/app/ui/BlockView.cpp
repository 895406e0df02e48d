#include "app/ui/BlockView.h"

#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>

#include <cmath>

namespace {

// Degrees the camera turns per pixel dragged.
constexpr double degreesPerPixel = 0.5;
// Distance factor per wheel step (120 units of angle).
constexpr double zoomPerStep = 1.15;

} // namespace

BlockView::BlockView(QWidget *parent) : QWidget(parent)
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    setFocusPolicy(Qt::ClickFocus);
    setCursor(Qt::OpenHandCursor);
}

void BlockView::setScene(const BlockScene &scene)
{
    m_scene = scene;
    changed();
}

void BlockView::setOrder(DrawOrder order)
{
    m_order = order;
    changed();
}

void BlockView::resetCamera()
{
    m_orbit.reset();
    changed();
}

void BlockView::changed()
{
    m_frameValid = false;
    update();
}

void BlockView::paintEvent(QPaintEvent *)
{
    const qreal ratio = devicePixelRatioF();
    const QSize pixels = (QSizeF(size()) * ratio).toSize();
    if (!m_frameValid || m_frameSize != pixels) {
        m_painter.paint(m_scene, m_orbit.camera(), pixels, m_order, palette().color(QPalette::Base), ratio);
        m_frameSize = pixels;
        m_frameValid = true;
    }
    QPainter painter(this);
    const QImage &frame = m_painter.frame();
    if (frame.isNull())
        painter.fillRect(rect(), palette().color(QPalette::Base));
    else // one frame pixel per screen pixel
        painter.drawImage(QRectF(rect()), frame);
}

void BlockView::mousePressEvent(QMouseEvent *event)
{
    m_dragging = true;
    m_lastPoint = event->position().toPoint();
    setCursor(Qt::ClosedHandCursor);
}

void BlockView::mouseMoveEvent(QMouseEvent *event)
{
    if (!m_dragging)
        return;
    const QPoint point = event->position().toPoint();
    const QPoint moved = point - m_lastPoint;
    m_lastPoint = point;
    // Dragging right carries the block's near side to the right; dragging down looks from higher up.
    m_orbit.turn(-moved.x() * degreesPerPixel, moved.y() * degreesPerPixel);
    changed();
}

void BlockView::mouseReleaseEvent(QMouseEvent *)
{
    m_dragging = false;
    setCursor(Qt::OpenHandCursor);
}

void BlockView::wheelEvent(QWheelEvent *event)
{
    const double steps = event->angleDelta().y() / 120.0;
    if (steps == 0)
        return;
    m_orbit.zoom(std::pow(zoomPerStep, -steps));
    changed();
    event->accept();
}
