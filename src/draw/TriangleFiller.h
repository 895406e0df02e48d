#pragma once

#include <QtGlobal>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>

// A triangle corner on the picture: pixel coordinates (x right, y down; pixel
// (i, j) has its centre at (i+0.5, j+0.5)) and the values that change linearly
// across the picture under perspective: 1/z and the texture coordinates over z.
struct ScreenVertex {
    double x = 0;
    double y = 0;
    double invZ = 0;
    double uOverZ = 0;
    double vOverZ = 0;
};

namespace TriangleFiller {

// Corners are snapped to 1/256 pixel and the edge tests are exact integers:
// two triangles sharing an edge never both cover, nor both miss, a pixel centre.
constexpr int64_t subpixels = 256;
// Larger coordinates would overflow the edge tests; the clipper keeps
// everything within a few pixels of the picture.
constexpr double coordinateLimit = double(1 << 20);

inline int64_t floorDiv(int64_t a, int64_t b) // b > 0
{
    const int64_t q = a / b;
    return (a % b != 0 && a < 0) ? q - 1 : q;
}

inline int64_t ceilDiv(int64_t a, int64_t b) // b > 0
{
    return -floorDiv(-a, b);
}

// Calls pixel(index, invZ, uOverZ, vOverZ) for every pixel of a width x height
// picture whose centre lies in the triangle (index = row * width + column),
// row by row from the top, left to right. A centre on an edge belongs to the
// triangle when the edge is a top edge (horizontal, triangle below) or a left
// edge, so that triangles sharing an edge cover each pixel once. Either
// winding is accepted; a triangle without area covers nothing.
template <typename PixelOp>
void fill(int width, int height, const ScreenVertex &c0, const ScreenVertex &c1, const ScreenVertex &c2, PixelOp &pixel)
{
    const ScreenVertex *corner[3] = {&c0, &c1, &c2};
    int64_t x[3], y[3];
    for (int k = 0; k < 3; ++k) {
        if (!(std::abs(corner[k]->x) < coordinateLimit && std::abs(corner[k]->y) < coordinateLimit))
            return;
        x[k] = std::llround(corner[k]->x * double(subpixels));
        y[k] = std::llround(corner[k]->y * double(subpixels));
    }
    int64_t area = (x[1] - x[0]) * (y[2] - y[0]) - (y[1] - y[0]) * (x[2] - x[0]);
    if (area == 0)
        return;
    if (area < 0) {
        std::swap(corner[1], corner[2]);
        std::swap(x[1], x[2]);
        std::swap(y[1], y[2]);
        area = -area;
    }

    // Edge a->b: E(P) = dx * (P.y - a.y) - dy * (P.x - a.x), positive inside.
    struct Edge {
        int64_t dx, dy, ax, ay, bias;
    };
    Edge edges[3];
    for (int k = 0; k < 3; ++k) {
        const int next = (k + 1) % 3;
        const int64_t dx = x[next] - x[k];
        const int64_t dy = y[next] - y[k];
        const bool topOrLeft = dy < 0 || (dy == 0 && dx > 0);
        edges[k] = {dx, dy, x[k], y[k], topOrLeft ? 0 : -1};
    }

    const int64_t half = subpixels / 2;
    const int64_t firstRow = std::max<int64_t>(0, ceilDiv(std::min({y[0], y[1], y[2]}) - half, subpixels));
    const int64_t lastRow = std::min<int64_t>(height - 1, floorDiv(std::max({y[0], y[1], y[2]}) - half, subpixels));
    const int64_t firstColumn = std::max<int64_t>(0, ceilDiv(std::min({x[0], x[1], x[2]}) - half, subpixels));
    const int64_t lastColumn = std::min<int64_t>(width - 1, floorDiv(std::max({x[0], x[1], x[2]}) - half, subpixels));

    // The interpolated values as planes over the picture, from the snapped corners.
    const double px0 = double(x[0]) / subpixels, py0 = double(y[0]) / subpixels;
    const double ex1 = double(x[1] - x[0]) / subpixels, ey1 = double(y[1] - y[0]) / subpixels;
    const double ex2 = double(x[2] - x[0]) / subpixels, ey2 = double(y[2] - y[0]) / subpixels;
    const double det = ex1 * ey2 - ex2 * ey1;
    const auto slopes = [&](double a0, double a1, double a2) {
        return std::pair{((a1 - a0) * ey2 - (a2 - a0) * ey1) / det, ((a2 - a0) * ex1 - (a1 - a0) * ex2) / det};
    };
    const auto [izX, izY] = slopes(corner[0]->invZ, corner[1]->invZ, corner[2]->invZ);
    const auto [uzX, uzY] = slopes(corner[0]->uOverZ, corner[1]->uOverZ, corner[2]->uOverZ);
    const auto [vzX, vzY] = slopes(corner[0]->vOverZ, corner[1]->vOverZ, corner[2]->vOverZ);

    for (int64_t row = firstRow; row <= lastRow; ++row) {
        const int64_t centreY = row * subpixels + half;
        int64_t first = firstColumn, last = lastColumn;
        for (const Edge &edge : edges) {
            // E at column i is start + step * i.
            const int64_t start = edge.dx * (centreY - edge.ay) - edge.dy * (half - edge.ax) + edge.bias;
            const int64_t step = -edge.dy * subpixels;
            if (step > 0)
                first = std::max(first, ceilDiv(-start, step));
            else if (step < 0)
                last = std::min(last, floorDiv(start, -step));
            else if (start < 0)
                last = first - 1;
        }
        if (first > last)
            continue;
        const double dx = double(first) + 0.5 - px0, dy = double(row) + 0.5 - py0;
        double invZ = corner[0]->invZ + izX * dx + izY * dy;
        double uOverZ = corner[0]->uOverZ + uzX * dx + uzY * dy;
        double vOverZ = corner[0]->vOverZ + vzX * dx + vzY * dy;
        qsizetype index = qsizetype(row) * width + qsizetype(first);
        for (int64_t column = first; column <= last; ++column, ++index) {
            pixel(index, invZ, uOverZ, vOverZ);
            invZ += izX;
            uOverZ += uzX;
            vOverZ += vzX;
        }
    }
}

} // namespace TriangleFiller
