#pragma once

#include "rover/RoverBlock.h"

#include <QSize>

#include <functional>
#include <optional>

// Rover's geometry of a block: polygon planes, the way a polygon faces, and
// what Rover changes once a structural block file has been read.

// Rover divides block coordinates (texels) by this to get world units.
constexpr double roverTexelsPerUnit = 80.0;

// Vector arithmetic on block points, shared by the geometry and the BSP builder.
namespace RoverVector {
inline RoverPoint minus(const RoverPoint &a, const RoverPoint &b)
{
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}
inline RoverPoint cross(const RoverPoint &a, const RoverPoint &b)
{
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
inline double dot(const RoverPoint &a, const RoverPoint &b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}
} // namespace RoverVector

// A polygon's plane from its first three vertices v1, v2, v3 only: normal
// (v3 - v2) x (v1 - v2) made unit length (zero when they are in line), offset
// d = -normal . v1 with v1 in world units. The front is the side the normal
// points to.
struct RoverPlane {
    RoverPoint normal;
    double d = 0;
};
RoverPlane roverPolygonPlane(const RoverBlock &block, const RoverBlockPolygon &polygon);

// The axis of the normal's largest component and its sign; ties go to
// north/south over up/down over east/west.
RoverDirection roverDirection(const RoverPoint &normal);

// The pixel size of a part's texture, nothing when Rover has none for it.
using RoverTextureSize = std::function<std::optional<QSize>(const RoverBlockPart &part)>;

// What Rover does to a structural block after reading it, in its order:
// scaled and tiled parts get texture coordinates projected onto the face their
// polygon looks at most toward (tiled ones at the texture's own size, 1 pixel =
// 1 texel; 256 when the size is unknown), every part's `angle` turns its (u,v)
// about (0.5,0.5) by whole degrees, then PARAM orientation turns the vertices
// about the block's centre in quarter turns (planes follow the vertices; the
// texture coordinates stay). Sprites are left as they are.
void loadRoverBlock(RoverBlock &block, const RoverTextureSize &textureSize);
