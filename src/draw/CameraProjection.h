#pragma once

#include "draw/Camera.h"

#include <QPointF>
#include <QSize>
#include <QVector3D>

// A point in the camera's frame: along its right, up and forward axes, in texels.
struct ViewPoint {
    double x = 0;
    double y = 0;
    double z = 0;
};

// The camera model of every block picture. With f = normalize(target - position),
// r = normalize((0,1,0) x f) and u = f x r, a point P with d = P - position is
// seen at
//   x = W/2 + (d.r)/(d.f) * focal,  y = H/2 - (d.u)/(d.f) * focal,
//   focal = (H/2) / tan(fov/2),
// so pixel (i, j) shows what lies under its centre (i+0.5, j+0.5). In this
// left-handed space, looking north puts east on the right.
//
// Degenerate cameras still give a picture: a camera on its target looks north,
// a camera looking straight up or down keeps east as its right, and a field of
// view outside 1..179 degrees (or not a number) is brought into that range
// (40 when not a number).
class CameraProjection {
public:
    CameraProjection(const Camera &camera, QSize size);

    ViewPoint toView(const QVector3D &point) const;
    // Only for points in front of the camera (z > 0).
    QPointF toScreen(const ViewPoint &point) const;
    QPointF project(const QVector3D &point) const { return toScreen(toView(point)); }

    double focalLength() const { return m_focal; }
    double halfWidth() const { return m_halfWidth; }
    double halfHeight() const { return m_halfHeight; }
    QVector3D position() const { return m_position; }

private:
    QVector3D m_position;
    double m_right[3] = {};
    double m_up[3] = {};
    double m_forward[3] = {};
    double m_focal = 1;
    double m_halfWidth = 0;
    double m_halfHeight = 0;
};
