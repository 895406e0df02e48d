#include "items/PolygonSplit.h"

#include "rover/RoverBlockGeometry.h"

#include <algorithm>
#include <cmath>

namespace {

using RoverVector::cross;
using RoverVector::dot;
using RoverVector::minus;

// Rover's unnormalised normal of the corner v1, v2, v3.
RoverPoint cornerNormal(const RoverPoint &v1, const RoverPoint &v2, const RoverPoint &v3)
{
    return cross(minus(v3, v2), minus(v1, v2));
}

struct Corner {
    int vertex;
    RoverTexCoord texCoord;
};

// A piece as it is cut: rotated to start at its steadiest corner facing
// `facing`, then made a polygon. Fewer than three corners make no piece.
BspPolygon piece(const BspVertexPool &pool, QList<Corner> corners, const RoverPoint &facing, int source)
{
    // A cut point can round onto the vertex next to it.
    for (qsizetype i = 0; i < corners.size() && corners.size() > 1;) {
        if (corners[i].vertex == corners[(i + 1) % corners.size()].vertex)
            corners.removeAt(i);
        else
            ++i;
    }
    const qsizetype n = corners.size();
    if (n < 3)
        return {};
    qsizetype best = 0;
    double bestArea = -1;
    for (qsizetype i = 0; i < n; ++i) {
        const RoverPoint normal = cornerNormal(pool.at(corners[i].vertex), pool.at(corners[(i + 1) % n].vertex),
                                               pool.at(corners[(i + 2) % n].vertex));
        const double area = dot(normal, facing);
        if (area > bestArea) {
            bestArea = area;
            best = i;
        }
    }
    QList<int> vertices;
    QList<RoverTexCoord> texCoords;
    for (qsizetype k = 0; k < n; ++k) {
        const Corner &c = corners[(best + k) % n];
        vertices.append(c.vertex);
        texCoords.append(c.texCoord);
    }
    return bspPolygon(pool, vertices, texCoords, source);
}

} // namespace

BspPlane bspPlane(const RoverPoint &v1, const RoverPoint &v2, const RoverPoint &v3)
{
    // In world units and in Rover's order of operations, as roverPolygonPlane
    // computes it, so that a nearly straight corner gives the very same plane.
    const auto units = [](const RoverPoint &p) {
        return RoverPoint{p.x / roverTexelsPerUnit, p.y / roverTexelsPerUnit, p.z / roverTexelsPerUnit};
    };
    const RoverPoint w1 = units(v1);
    RoverPoint n = cornerNormal(w1, units(v2), units(v3));
    const double length = std::sqrt(dot(n, n));
    if (!(length > 0))
        return {};
    n = {n.x / length, n.y / length, n.z / length};
    return {n, -dot(n, w1) * roverTexelsPerUnit, false};
}

BspPolygon bspPolygon(const BspVertexPool &pool, QList<int> vertices, QList<RoverTexCoord> texCoords, int source)
{
    BspPolygon polygon;
    polygon.vertices = std::move(vertices);
    polygon.texCoords = std::move(texCoords);
    polygon.source = source;
    if (polygon.vertices.size() >= 3) {
        const RoverPoint &v1 = pool.at(polygon.vertices[0]), &v2 = pool.at(polygon.vertices[1]),
                         &v3 = pool.at(polygon.vertices[2]);
        polygon.plane = bspPlane(v1, v2, v3);
        const RoverPoint n = cornerNormal(v1, v2, v3);
        polygon.area2 = std::sqrt(dot(n, n));
    }
    if (polygon.vertices.isEmpty())
        return polygon;
    RoverPoint low = pool.at(polygon.vertices.first()), high = low;
    for (int v : polygon.vertices) {
        const RoverPoint &p = pool.at(v);
        low = {std::min(low.x, p.x), std::min(low.y, p.y), std::min(low.z, p.z)};
        high = {std::max(high.x, p.x), std::max(high.y, p.y), std::max(high.z, p.z)};
    }
    polygon.centre = {(low.x + high.x) / 2, (low.y + high.y) / 2, (low.z + high.z) / 2};
    const RoverPoint half = minus(high, polygon.centre);
    polygon.radius = std::sqrt(dot(half, half)) * (1 + 1e-12);
    return polygon;
}

BspSide bspSide(const BspPolygon &polygon, const BspPlane &plane, const BspVertexPool &pool, double epsilon)
{
    // Most polygons lie far from the plane: their sphere tells.
    const double centre = plane.distance(polygon.centre);
    if (centre - polygon.radius > epsilon)
        return BspSide::Front;
    if (centre + polygon.radius < -epsilon)
        return BspSide::Rear;
    bool front = false, rear = false;
    for (int v : polygon.vertices) {
        const double distance = plane.distance(pool.at(v));
        front = front || distance > epsilon;
        rear = rear || distance < -epsilon;
    }
    if (front && rear)
        return BspSide::Across;
    return front ? BspSide::Front : rear ? BspSide::Rear : BspSide::InPlane;
}

BspSplit splitBspPolygon(const BspPolygon &polygon, const BspPlane &plane, BspVertexPool &pool, double epsilon)
{
    const qsizetype n = polygon.vertices.size();
    QList<double> distance(n);
    QList<int> side(n);
    for (qsizetype i = 0; i < n; ++i) {
        distance[i] = plane.distance(pool.at(polygon.vertices[i]));
        side[i] = distance[i] > epsilon ? 1 : distance[i] < -epsilon ? -1 : 0;
    }
    QList<Corner> front, rear;
    for (qsizetype i = 0; i < n; ++i) {
        const Corner corner{polygon.vertices[i], polygon.texCoords.value(i)};
        if (side[i] >= 0)
            front.append(corner);
        if (side[i] <= 0)
            rear.append(corner);
        const qsizetype j = (i + 1) % n;
        if (side[i] * side[j] >= 0)
            continue;
        // From the edge's end with the lower pool index, so that both polygons
        // of a shared edge find the same point.
        const bool forward = polygon.vertices[i] < polygon.vertices[j];
        const qsizetype a = forward ? i : j, b = forward ? j : i;
        const double t = distance[a] / (distance[a] - distance[b]);
        const RoverPoint &pa = pool.at(polygon.vertices[a]), &pb = pool.at(polygon.vertices[b]);
        const RoverTexCoord ta = polygon.texCoords.value(a), tb = polygon.texCoords.value(b);
        const int cut = pool.add({pa.x + t * (pb.x - pa.x), pa.y + t * (pb.y - pa.y), pa.z + t * (pb.z - pa.z)});
        const RoverTexCoord texCoord{BspVertexPool::rounded(ta.u + t * (tb.u - ta.u)),
                                     BspVertexPool::rounded(ta.v + t * (tb.v - ta.v))};
        front.append({cut, texCoord});
        rear.append({cut, texCoord});
    }
    const RoverPoint &facing = polygon.plane.normal;
    return {piece(pool, front, facing, polygon.source), piece(pool, rear, facing, polygon.source)};
}
