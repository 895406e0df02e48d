#pragma once

#include <vector>

// A polygon point in the camera's frame (x right, y up, z forward, in texels)
// with its texture coordinates.
struct ViewVertex {
    double x = 0;
    double y = 0;
    double z = 0;
    double u = 0;
    double v = 0;
};

// Cuts a convex polygon down to what a picture can show: the part between the
// near and far planes (nearZ <= z <= farZ) and inside the view pyramid widened by a margin
// of a few pixels on each side. The margin keeps every cut edge off the
// picture, so cutting never changes which pixels a polygon covers, and it
// bounds the screen coordinates the rasterizer sees.
//
// A point where an edge crosses a plane is computed from the edge's inside end,
// so two polygons sharing an edge get the same cut point and meet without gap.
class PolygonClipper {
public:
    // focal, halfWidth, halfHeight as in CameraProjection; margin in pixels.
    PolygonClipper(double focal, double halfWidth, double halfHeight, double nearZ, double farZ, double margin);

    // Replaces polygon by its visible part; fewer than three points are left
    // when nothing is visible.
    void clip(std::vector<ViewVertex> &polygon);

private:
    struct Plane {
        double a, b, c, d; // inside when a*x + b*y + c*z + d >= 0
    };
    void clipAgainst(const Plane &plane, const std::vector<ViewVertex> &in, std::vector<ViewVertex> &out) const;

    Plane m_planes[6];
    std::vector<ViewVertex> m_scratch;
};
