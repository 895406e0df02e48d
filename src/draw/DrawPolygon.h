#pragma once

#include <QColor>
#include <QImage>
#include <QList>
#include <QPointF>
#include <QVector3D>

// Which sides of a polygon are drawn, as a part's `faces` says.
enum class DrawFaces {
    Never, // solid but invisible
    Front, // only while the camera is strictly on the side the normal points to
    Both,  // from either side
};

// One flat polygon to draw, in block texels (x east, y up, z north).
//
// The points are taken as a planar polygon, convex as Rover's are in practice:
// it is cut into a fan of triangles from its first point, which is exact for
// convex polygons and for any polygon every point of which its first point sees.
//
// Seen from the front, the points run clockwise and the normal points at the
// viewer. A one-sided polygon is drawn when (first point - camera) . normal,
// in Rover's world units (texels / 80), is below -0.0001. Rover with hardware
// acceleration shows translucent parts and textures with a transparent colour
// from both sides: whoever builds the polygons of a block says so in faces.
struct DrawPolygon {
    QList<QVector3D> points;
    // Texture coordinates, one per point: u left to right, v top to bottom,
    // (0,0) the texture's top-left corner; values outside 0..1 repeat the
    // texture. Missing coordinates count as (0,0).
    QList<QPointF> uv;
    // Drawn with nearest-texel sampling. Pixels with alpha 0 (a GIF's
    // transparent colour) cover nothing. A null image draws the colour.
    QImage texture;
    QColor colour{0, 0, 0};
    // 1 - translucency/100: 1 is opaque, 0 draws nothing.
    double opacity = 1.0;
    DrawFaces faces = DrawFaces::Front;
    // The plane's normal; a zero vector takes planeNormal(points).
    QVector3D normal;

    // Rover's normal from the first three points v1, v2, v3:
    // normalize((v3 - v2) x (v1 - v2)); zero when they are in line or missing.
    static QVector3D planeNormal(const QList<QVector3D> &points);
    // The given normal made unit length, else planeNormal(points).
    QVector3D frontNormal() const;
};
