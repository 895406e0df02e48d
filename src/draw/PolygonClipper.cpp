#include "draw/PolygonClipper.h"

#include <cstddef>
#include <utility>

PolygonClipper::PolygonClipper(double focal, double halfWidth, double halfHeight, double nearZ, double farZ,
                               double margin)
{
    const double wide = halfWidth + margin;
    const double tall = halfHeight + margin;
    m_planes[0] = {0, 0, 1, -nearZ};    // in front of the camera
    m_planes[1] = {focal, 0, wide, 0};  // screen x >= -margin
    m_planes[2] = {-focal, 0, wide, 0}; // screen x <= width + margin
    m_planes[3] = {0, -focal, tall, 0}; // screen y >= -margin
    m_planes[4] = {0, focal, tall, 0};  // screen y <= height + margin
    m_planes[5] = {0, 0, -1, farZ};     // not so far that 1/z loses its precision
}

void PolygonClipper::clip(std::vector<ViewVertex> &polygon)
{
    for (const Plane &plane : m_planes) {
        if (polygon.size() < 3)
            return;
        clipAgainst(plane, polygon, m_scratch);
        std::swap(polygon, m_scratch);
    }
}

void PolygonClipper::clipAgainst(const Plane &plane, const std::vector<ViewVertex> &in,
                                 std::vector<ViewVertex> &out) const
{
    out.clear();
    const auto distance = [&plane](const ViewVertex &p) {
        return plane.a * p.x + plane.b * p.y + plane.c * p.z + plane.d;
    };
    const auto cut = [](const ViewVertex &inside, double dIn, const ViewVertex &outside, double dOut) {
        const double t = dIn / (dIn - dOut);
        return ViewVertex{inside.x + t * (outside.x - inside.x), inside.y + t * (outside.y - inside.y),
                          inside.z + t * (outside.z - inside.z), inside.u + t * (outside.u - inside.u),
                          inside.v + t * (outside.v - inside.v)};
    };
    const std::size_t count = in.size();
    for (std::size_t i = 0; i < count; ++i) {
        const ViewVertex &current = in[i];
        const ViewVertex &next = in[(i + 1) % count];
        const double dCurrent = distance(current);
        const double dNext = distance(next);
        const bool currentIn = dCurrent >= 0;
        const bool nextIn = dNext >= 0;
        if (currentIn)
            out.push_back(current);
        if (currentIn && !nextIn)
            out.push_back(cut(current, dCurrent, next, dNext));
        else if (!currentIn && nextIn)
            out.push_back(cut(next, dNext, current, dCurrent));
    }
}
