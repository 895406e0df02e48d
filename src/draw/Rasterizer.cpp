#include "draw/Rasterizer.h"

#include "draw/CameraProjection.h"
#include "draw/FragmentSource.h"
#include "draw/PixelBlend.h"

#include <algorithm>
#include <cmath>

namespace {

// Nothing nearer than one texel to the camera is drawn.
constexpr double nearZ = 1.0;
// Nor anything farther than 10^7 texels (125,000 of Rover's world units).
constexpr double farZ = 1e7;
// How far beyond the picture's border polygons are cut, in pixels.
constexpr double clipMargin = 4.0;
// Rover's world unit is 80 texels; its front test is made in world units.
constexpr double texelsPerWorldUnit = 80.0;
constexpr double frontTolerance = -0.0001;

quint32 factor255(double value)
{
    if (!std::isfinite(value))
        return 255;
    return quint32(std::lround(255.0 * std::clamp(value, 0.0, 1.0)));
}

bool isFinite(const ViewVertex &v)
{
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z) && std::isfinite(v.u) && std::isfinite(v.v);
}

template <typename Source>
struct LayUnder {
    quint32 *pixels;
    Source source;
    void operator()(qsizetype index, double invZ, double uOverZ, double vOverZ)
    {
        quint32 &pixel = pixels[index];
        if (PixelBlend::alpha(pixel) != 255)
            pixel = PixelBlend::layOn(pixel, source.fetch(invZ, uOverZ, vOverZ));
    }
};

template <typename Source>
struct DrawOpaque {
    quint32 *pixels;
    float *depths;
    Source source;
    void operator()(qsizetype index, double invZ, double uOverZ, double vOverZ)
    {
        const auto depth = float(invZ);
        if (!(depth > depths[index]))
            return;
        const quint32 fragment = source.fetch(invZ, uOverZ, vOverZ);
        if (PixelBlend::alpha(fragment) == 0)
            return;
        pixels[index] = fragment;
        depths[index] = depth;
    }
};

template <typename Source>
struct LayOver {
    quint32 *pixels;
    const float *depths;
    Source source;
    void operator()(qsizetype index, double invZ, double uOverZ, double vOverZ)
    {
        if (float(invZ) > depths[index])
            pixels[index] = PixelBlend::layOn(source.fetch(invZ, uOverZ, vOverZ), pixels[index]);
    }
};

} // namespace

Rasterizer::Rasterizer(QSize size) : m_image(size, QImage::Format_ARGB32_Premultiplied)
{
    clear();
}

void Rasterizer::clear()
{
    if (!m_image.isNull())
        m_image.fill(0);
    std::fill(m_depth.begin(), m_depth.end(), 0.0f);
}

void Rasterizer::draw(const QList<DrawPolygon> &polygons, const Camera &camera, DrawOrder order)
{
    if (m_image.isNull())
        return;
    m_pixels = reinterpret_cast<quint32 *>(m_image.bits());
    const CameraProjection projection(camera, size());
    PolygonClipper clipper(projection.focalLength(), projection.halfWidth(), projection.halfHeight(), nearZ, farZ,
                           clipMargin);
    m_textures.startDrawing();
    if (order == DrawOrder::Rover) {
        for (const DrawPolygon &polygon : polygons)
            drawPolygon(polygon, projection, clipper, Pass::LayUnder);
    } else {
        m_depth.resize(size_t(m_image.width()) * size_t(m_image.height()), 0.0f);
        m_blended.clear();
        for (qsizetype i = 0; i < polygons.size(); ++i) {
            const DrawPolygon &polygon = polygons[i];
            if (!isBlended(polygon)) {
                drawPolygon(polygon, projection, clipper, Pass::Opaque);
                continue;
            }
            double distance = 0;
            for (const QVector3D &point : polygon.points)
                distance += projection.toView(point).z;
            m_blended.emplace_back(distance / double(std::max<qsizetype>(1, polygon.points.size())), i);
        }
        std::stable_sort(m_blended.begin(), m_blended.end(),
                         [](const auto &a, const auto &b) { return a.first > b.first; });
        for (const auto &blended : m_blended)
            drawPolygon(polygons[blended.second], projection, clipper, Pass::Blended);
    }
    m_textures.finishDrawing();
}

bool Rasterizer::isBlended(const DrawPolygon &polygon)
{
    if (factor255(polygon.opacity) < 255)
        return true;
    if (const PreparedTexture *texture = m_textures.find(polygon.texture))
        return texture->hasPartialAlpha;
    return polygon.colour.alpha() < 255;
}

void Rasterizer::drawPolygon(const DrawPolygon &polygon, const CameraProjection &projection, PolygonClipper &clipper,
                             Pass pass)
{
    if (polygon.faces == DrawFaces::Never || polygon.points.size() < 3)
        return;
    const quint32 opacity = factor255(polygon.opacity);
    if (opacity == 0)
        return;
    QVector3D normal = polygon.frontNormal();
    const double side = QVector3D::dotProduct(polygon.points[0] - projection.position(), normal) / texelsPerWorldUnit;
    if (polygon.faces == DrawFaces::Front && !(side < frontTolerance))
        return;
    if (side > 0) // seen from behind: lit as its visible side
        normal = -normal;

    // Texture coordinates moved by whole repeats next to 0, which changes
    // nothing drawn but keeps them exact.
    double shiftU = 0, shiftV = 0;
    if (!polygon.uv.isEmpty() && std::isfinite(polygon.uv[0].x()) && std::isfinite(polygon.uv[0].y())) {
        shiftU = std::floor(polygon.uv[0].x());
        shiftV = std::floor(polygon.uv[0].y());
    }
    m_view.clear();
    for (qsizetype k = 0; k < polygon.points.size(); ++k) {
        const ViewPoint point = projection.toView(polygon.points[k]);
        const QPointF uv = k < polygon.uv.size() ? polygon.uv[k] : QPointF();
        m_view.push_back({point.x, point.y, point.z, uv.x() - shiftU, uv.y() - shiftV});
        if (!isFinite(m_view.back()))
            return;
    }
    clipper.clip(m_view);
    if (m_view.size() < 3)
        return;
    m_screen.clear();
    for (const ViewVertex &v : m_view) {
        if (!(v.z > nearZ / 2)) // a cut lost to rounding (points around 1e30 texels): nothing sensible to draw
            return;
        const double invZ = 1.0 / v.z;
        m_screen.push_back({projection.halfWidth() + v.x * invZ * projection.focalLength(),
                            projection.halfHeight() - v.y * invZ * projection.focalLength(), invZ, v.u * invZ,
                            v.v * invZ});
    }

    const quint32 shade = m_lighting.shade255(normal);
    if (const PreparedTexture *texture = m_textures.find(polygon.texture)) {
        fillPolygon(TexturedFragment(*texture, shade, opacity), pass);
    } else {
        const quint32 colour = qPremultiply(polygon.colour.rgba());
        fillPolygon(SolidFragment{PixelBlend::scale(PixelBlend::shade(colour, shade), opacity)}, pass);
    }
}

template <typename Source>
void Rasterizer::fillPolygon(const Source &source, Pass pass)
{
    switch (pass) {
    case Pass::LayUnder: {
        LayUnder<Source> op{m_pixels, source};
        fillFan(op);
        break;
    }
    case Pass::Opaque: {
        DrawOpaque<Source> op{m_pixels, m_depth.data(), source};
        fillFan(op);
        break;
    }
    case Pass::Blended: {
        LayOver<Source> op{m_pixels, m_depth.data(), source};
        fillFan(op);
        break;
    }
    }
}

template <typename Op>
void Rasterizer::fillFan(Op &op)
{
    for (size_t k = 1; k + 1 < m_screen.size(); ++k)
        TriangleFiller::fill(m_image.width(), m_image.height(), m_screen[0], m_screen[k], m_screen[k + 1], op);
}

QImage drawPolygons(const QList<DrawPolygon> &polygons, const Camera &camera, QSize size, DrawOrder order)
{
    Rasterizer rasterizer(size);
    rasterizer.draw(polygons, camera, order);
    return rasterizer.image();
}
