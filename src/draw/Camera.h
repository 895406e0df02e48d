#pragma once

#include <QVector3D>

// Where a picture of a block is taken from, in texels (a block is the cube
// 0..256 on each axis; x east, y up, z north). The camera looks at the target
// with the world's up (0,1,0) as its up; fovDegrees is the vertical field of
// view. The defaults show a block from above its south-west corner.
struct Camera {
    QVector3D position{-250.0f, 500.0f, -350.0f};
    QVector3D target{128.0f, 128.0f, 128.0f};
    double fovDegrees = 40.0;
};
