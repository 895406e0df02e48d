#pragma once

#include <QVector3D>

// A simple flat shade that makes the sides of a block tell apart: each
// polygon's colour is multiplied by ambient + (1 - ambient) * max(0, n . l),
// with n the normal turned toward the viewer and l the unit direction toward
// a fixed light (by default from above, the south and a little from the west,
// the side the default camera stands on). Off by default: pictures then show
// the plain texture and colour. Alpha is never changed, so what a polygon
// covers does not depend on the light.
struct Lighting {
    bool enabled = false;
    QVector3D towardLight{-0.35f, 1.0f, -0.6f};
    double ambient = 0.45;

    // The factor for a polygon with this (viewer-facing, unit) normal, 0..255.
    quint32 shade255(const QVector3D &normal) const;
};
