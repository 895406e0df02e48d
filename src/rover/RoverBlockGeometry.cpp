#include "rover/RoverBlockGeometry.h"

#include <QList>

#include <cmath>
#include <numbers>

namespace {

using RoverVector::cross;
using RoverVector::dot;
using RoverVector::minus;

RoverPoint inUnits(const RoverPoint &p)
{
    return {p.x / roverTexelsPerUnit, p.y / roverTexelsPerUnit, p.z / roverTexelsPerUnit};
}

// Rover's whole-degree sine table; quarter turns are exact.
double sinDegrees(int degrees)
{
    const int d = ((degrees % 360) + 360) % 360;
    switch (d) {
    case 0:
    case 180: return 0;
    case 90: return 1;
    case 270: return -1;
    default: return std::sin(d * std::numbers::pi / 180.0);
    }
}

double cosDegrees(int degrees)
{
    return sinDegrees(degrees % 360 + 90);
}

// An angle brought into 0..360 and cut down to a multiple of 90.
int quarterTurns(double degrees)
{
    double a = std::fmod(degrees, 360.0);
    if (a < 0)
        a += 360.0;
    return std::isfinite(a) ? int(a / 90.0) * 90 : 0;
}

enum class Axis { X, Y, Z };
struct Turn {
    Axis axis;
    int degrees;
};

RoverPoint turned(const RoverPoint &p, const Turn &t)
{
    const double c = cosDegrees(t.degrees), s = sinDegrees(t.degrees);
    switch (t.axis) {
    case Axis::X: return {p.x, p.y * c - p.z * s, p.z * c + p.y * s};
    case Axis::Y: return {p.x * c + p.z * s, p.y, p.z * c - p.x * s};
    case Axis::Z: return {p.x * c - p.y * s, p.y * c + p.x * s, p.z};
    }
    return p;
}

QList<Turn> turnsOf(const RoverOrientation &o)
{
    if (o.form == RoverOrientation::Angles)
        return {{Axis::Y, quarterTurns(o.y)}, {Axis::X, quarterTurns(o.x)}, {Axis::Z, -quarterTurns(o.z)}};
    if (o.form == RoverOrientation::None)
        return {};
    const int a = quarterTurns(o.angle);
    switch (o.direction) {
    case RoverDirection::Up: return {{Axis::Y, a}};
    case RoverDirection::Down: return {{Axis::X, 180}, {Axis::Y, -a}};
    case RoverDirection::North: return {{Axis::X, 90}, {Axis::Z, a}};
    case RoverDirection::South: return {{Axis::X, -90}, {Axis::Z, -a}};
    case RoverDirection::East: return {{Axis::Z, -90}, {Axis::X, a}};
    case RoverDirection::West: return {{Axis::Z, 90}, {Axis::X, -a}};
    }
    return {};
}

// The projection of a vertex onto the block face `face`, in texels across and
// down that face.
RoverTexCoord faceTexels(RoverDirection face, const RoverPoint &p)
{
    switch (face) {
    case RoverDirection::Up: return {p.x, 256 - p.z};
    case RoverDirection::Down: return {p.x, p.z};
    case RoverDirection::North: return {256 - p.x, 256 - p.y};
    case RoverDirection::South: return {p.x, 256 - p.y};
    case RoverDirection::East: return {p.z, 256 - p.y};
    case RoverDirection::West: return {256 - p.z, 256 - p.y};
    }
    return {};
}

void projectTexture(const RoverBlock &block, RoverBlockPolygon &polygon, QSizeF repeat)
{
    const RoverDirection face = roverDirection(roverPolygonPlane(block, polygon).normal);
    polygon.texCoords.clear();
    for (int ref : polygon.vertices) {
        const RoverPoint p = ref >= 1 && ref <= block.vertices.size() ? block.vertices[ref - 1] : RoverPoint{};
        const RoverTexCoord t = faceTexels(face, p);
        polygon.texCoords.append({t.u / repeat.width(), t.v / repeat.height()});
    }
}

void turnTexture(RoverBlockPolygon &polygon, double angle)
{
    const int a = std::isfinite(angle) ? int(angle) : 0; // whole degrees, truncated
    if (a == 0)
        return;
    const double c = cosDegrees(a), s = sinDegrees(a);
    for (RoverTexCoord &t : polygon.texCoords) {
        const double u = t.u - 0.5, v = t.v - 0.5;
        t = {0.5 + u * c + v * s, 0.5 + v * c - u * s};
    }
}

} // namespace

RoverPlane roverPolygonPlane(const RoverBlock &block, const RoverBlockPolygon &polygon)
{
    RoverPoint v[3];
    for (int k = 0; k < 3; ++k) {
        const int ref = polygon.vertices.value(k);
        if (ref < 1 || ref > block.vertices.size())
            return {};
        v[k] = inUnits(block.vertices[ref - 1]);
    }
    RoverPoint n = cross(minus(v[2], v[1]), minus(v[0], v[1]));
    const double length = std::sqrt(dot(n, n));
    if (length > 0)
        n = {n.x / length, n.y / length, n.z / length};
    else
        n = {};
    return {n, -dot(n, v[0])};
}

RoverDirection roverDirection(const RoverPoint &n)
{
    const double ax = std::abs(n.x), ay = std::abs(n.y), az = std::abs(n.z);
    if (az >= ay && az >= ax)
        return n.z >= 0 ? RoverDirection::North : RoverDirection::South;
    if (ay >= ax)
        return n.y >= 0 ? RoverDirection::Up : RoverDirection::Down;
    return n.x >= 0 ? RoverDirection::East : RoverDirection::West;
}

void loadRoverBlock(RoverBlock &block, const RoverTextureSize &textureSize)
{
    if (block.isSprite())
        return;
    QList<QSizeF> repeats(block.parts.size(), QSizeF(256, 256));
    for (qsizetype i = 0; i < block.parts.size(); ++i)
        if (block.parts[i].style == RoverBlockPart::Tiled && textureSize)
            if (const auto size = textureSize(block.parts[i]); size && !size->isEmpty())
                repeats[i] = QSizeF(*size);
    for (RoverBlockPolygon &polygon : block.polygons) {
        if (polygon.part < 0 || polygon.part >= block.parts.size())
            continue;
        const RoverBlockPart &part = block.parts[polygon.part];
        if (part.style != RoverBlockPart::Stretched)
            projectTexture(block, polygon, repeats[polygon.part]);
        turnTexture(polygon, part.angle);
    }
    const QList<Turn> turns = turnsOf(block.orientation);
    if (turns.isEmpty())
        return;
    const RoverPoint centre{128, 128, 128};
    for (RoverPoint &vertex : block.vertices) {
        RoverPoint p = minus(vertex, centre);
        for (const Turn &t : turns)
            p = turned(p, t);
        vertex = {p.x + centre.x, p.y + centre.y, p.z + centre.z};
    }
}
