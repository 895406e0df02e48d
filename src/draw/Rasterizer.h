#pragma once

#include "draw/Camera.h"
#include "draw/DrawPolygon.h"
#include "draw/Lighting.h"
#include "draw/PolygonClipper.h"
#include "draw/TexturePool.h"
#include "draw/TriangleFiller.h"

#include <QImage>
#include <QList>
#include <QSize>

#include <vector>

class CameraProjection;

// How overlapping polygons hide each other.
enum class DrawOrder {
    // As Rover draws a block in software: the polygons come nearest first (a
    // BSP tree's order, or file order) and the polygon drawn first wins. What
    // is drawn later shows only through what earlier polygons leave
    // uncovered, so translucent parts and transparent texels blend front to back.
    Rover,
    // As with hardware acceleration: a depth test per pixel. Opaque polygons
    // first, in any order; then translucent ones (translucency, or a texture
    // whose alpha is neither 0 nor 255) blended from far to near, sorted by
    // the mean distance of their points along the view.
    Depth,
};

// Draws polygons into a picture on the CPU, without a display: a block
// preview, thumbnails, rendered pictures. The picture starts fully transparent
// (alpha 0); a pixel whose centre an opaque polygon covers becomes fully
// opaque, a transparent texel covers nothing, a translucent polygon blends.
// Texture coordinates and depth are interpolated with perspective.
//
// A rasterizer keeps its picture, its depth buffer and its converted textures
// between drawings, so drawing frame after frame allocates nothing. Each
// picture uses one order: clear(), then draw() once or several times.
class Rasterizer {
public:
    explicit Rasterizer(QSize size = QSize(256, 256));

    QSize size() const { return m_image.size(); }
    // Fully transparent picture, empty depth buffer.
    void clear();
    // Off unless set; see Lighting.
    void setLighting(const Lighting &lighting) { m_lighting = lighting; }
    void draw(const QList<DrawPolygon> &polygons, const Camera &camera, DrawOrder order);
    // Format_ARGB32_Premultiplied.
    const QImage &image() const { return m_image; }

private:
    enum class Pass { LayUnder, Opaque, Blended };
    void drawPolygon(const DrawPolygon &polygon, const CameraProjection &projection, PolygonClipper &clipper,
                     Pass pass);
    bool isBlended(const DrawPolygon &polygon);
    template <typename Source>
    void fillPolygon(const Source &source, Pass pass);
    template <typename Op>
    void fillFan(Op &op);

    QImage m_image;
    quint32 *m_pixels = nullptr;
    std::vector<float> m_depth; // 1/z of the nearest opaque pixel; 0 = nothing
    Lighting m_lighting;
    TexturePool m_textures;
    std::vector<ViewVertex> m_view;
    std::vector<ScreenVertex> m_screen;
    std::vector<std::pair<double, qsizetype>> m_blended; // distance, index
};

// One picture of polygons, without lighting.
QImage drawPolygons(const QList<DrawPolygon> &polygons, const Camera &camera, QSize size, DrawOrder order);
