#include "draw/PreviewPainter.h"

#include "draw/CameraProjection.h"

#include <QPainter>
#include <QPen>

#include <optional>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

// Lines closer to the camera than this (texels) are cut off.
constexpr double nearCut = 1.0;
constexpr float gridStep = 32.0f, gridLow = -256.0f, gridHigh = 512.0f;

// The part of the segment a-b in front of the camera, on the screen.
std::optional<std::pair<QPointF, QPointF>> screenSegment(const CameraProjection &projection, const QVector3D &a,
                                                         const QVector3D &b)
{
    ViewPoint p = projection.toView(a), q = projection.toView(b);
    if (p.z < nearCut && q.z < nearCut)
        return std::nullopt;
    const auto cut = [](ViewPoint &behind, const ViewPoint &front) {
        const double t = (nearCut - behind.z) / (front.z - behind.z);
        behind = {behind.x + t * (front.x - behind.x), behind.y + t * (front.y - behind.y), nearCut};
    };
    if (p.z < nearCut)
        cut(p, q);
    else if (q.z < nearCut)
        cut(q, p);
    return std::pair(projection.toScreen(p), projection.toScreen(q));
}

void drawLine(QPainter &painter, const CameraProjection &projection, const QVector3D &a, const QVector3D &b)
{
    if (const auto segment = screenSegment(projection, a, b))
        painter.drawLine(segment->first, segment->second);
}

void drawGrid(QPainter &painter, const CameraProjection &projection, const QColor &background, qreal ratio)
{
    const bool dark = background.lightnessF() < 0.5;
    const QColor faint = dark ? QColor(255, 255, 255, 40) : QColor(0, 0, 0, 40);
    const QColor strong = dark ? QColor(255, 255, 255, 110) : QColor(0, 0, 0, 110);
    for (float at = gridLow; at <= gridHigh; at += gridStep) {
        const bool square = at == 0.0f || at == 256.0f;
        painter.setPen(QPen(square ? strong : faint, ratio));
        drawLine(painter, projection, {at, 0, square ? 0.0f : gridLow}, {at, 0, square ? 256.0f : gridHigh});
        drawLine(painter, projection, {square ? 0.0f : gridLow, 0, at}, {square ? 256.0f : gridHigh, 0, at});
    }
    QFont font = painter.font();
    font.setPixelSize(int(12 * ratio));
    font.setBold(true);
    painter.setFont(font);
    painter.setPen(strong);
    const std::pair<QVector3D, QString> marks[] = {{{128, 0, gridHigh + 24}, u"N"_s},
                                                   {{gridHigh + 24, 0, 128}, u"E"_s}};
    for (const auto &[where, letter] : marks) {
        const ViewPoint view = projection.toView(where);
        if (view.z > nearCut) {
            const QPointF at = projection.toScreen(view);
            painter.drawText(QRectF(at.x() - 20 * ratio, at.y() - 10 * ratio, 40 * ratio, 20 * ratio), Qt::AlignCenter,
                             letter);
        }
    }
}

void drawCubeOutline(QPainter &painter, const CameraProjection &projection, const QColor &background, qreal ratio)
{
    const bool dark = background.lightnessF() < 0.5;
    painter.setPen(QPen(dark ? QColor(255, 220, 120, 150) : QColor(40, 90, 200, 150), ratio, Qt::DashLine));
    for (int edge = 0; edge < 12; ++edge) {
        // Four edges along each axis: the other two coordinates at 0 or 256.
        const int axis = edge / 4;
        const float s = (edge & 1) ? 256.0f : 0.0f, t = (edge & 2) ? 256.0f : 0.0f;
        QVector3D a, b;
        switch (axis) {
        case 0: a = {0, s, t}, b = {256, s, t}; break;
        case 1: a = {s, 0, t}, b = {s, 256, t}; break;
        default: a = {s, t, 0}, b = {s, t, 256}; break;
        }
        drawLine(painter, projection, a, b);
    }
}

} // namespace

PreviewPainter::PreviewPainter() : m_rasterizer(QSize(1, 1)) {}

const QImage &PreviewPainter::paint(const BlockScene &scene, const Camera &camera, QSize size, DrawOrder order,
                                    const QColor &background, qreal pixelRatio)
{
    if (size.isEmpty()) {
        m_picture = QImage();
        return m_picture;
    }
    if (m_rasterizer.size() != size)
        m_rasterizer = Rasterizer(size);
    Lighting lighting;
    lighting.enabled = true;
    m_rasterizer.setLighting(lighting);
    m_rasterizer.clear();
    m_rasterizer.draw(scene.polygons(camera.position, order, BlockScene::Sprites::TowardViewer), camera, order);

    // The frame is kept: no new picture to allocate and clear each time. It is
    // opaque, which is the fastest surface to lay the block's picture on.
    if (m_picture.size() != size)
        m_picture = QImage(size, QImage::Format_RGB32);
    m_picture.fill(background);
    const CameraProjection projection(camera, size);
    QPainter painter(&m_picture);
    painter.setRenderHint(QPainter::Antialiasing);
    drawGrid(painter, projection, background, pixelRatio);
    painter.drawImage(0, 0, m_rasterizer.image());
    drawCubeOutline(painter, projection, background, pixelRatio);
    painter.end();
    return m_picture;
}
