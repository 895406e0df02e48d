#pragma once

#include "items/BspVertexPool.h"
#include "rover/RoverBlock.h"

#include <QList>

// Polygons of a block while its BSP tree is built, and how a plane cuts them.
// Distances are in texels.

// A plane as Rover computes it for a polygon: normal (v3 - v2) x (v1 - v2) of
// the first three vertices, made unit length (zero when they are in line,
// `degenerate`), through v1.
struct BspPlane {
    RoverPoint normal;
    double d = 0;
    bool degenerate = true;

    double distance(const RoverPoint &p) const { return normal.x * p.x + normal.y * p.y + normal.z * p.z + d; }
};
BspPlane bspPlane(const RoverPoint &v1, const RoverPoint &v2, const RoverPoint &v3);

// A polygon of the block, or a piece of one.
struct BspPolygon {
    QList<int> vertices; // indices into the vertex pool
    QList<RoverTexCoord> texCoords;
    int source = 0;    // index of the block's polygon it is, or comes from
    BspPlane plane;    // from its first three vertices
    double area2 = 0;  // twice the area of the triangle of its first three vertices
    RoverPoint centre; // of the vertices' bounding box
    double radius = 0; // of the sphere about `centre` that holds every vertex
};
BspPolygon bspPolygon(const BspVertexPool &pool, QList<int> vertices, QList<RoverTexCoord> texCoords, int source);

enum class BspSide { Front, Rear, InPlane, Across };

// Where the polygon lies: every vertex within `epsilon` of the plane is in it;
// Across when vertices lie farther than that on both sides.
BspSide bspSide(const BspPolygon &polygon, const BspPlane &plane, const BspVertexPool &pool, double epsilon);

// The two pieces of a polygon that lies across `plane`. Each keeps the
// polygon's winding and starts at the vertex that gives it the steadiest plane
// (the largest triangle of three consecutive vertices facing the polygon's own
// way), so its plane and front are the polygon's. New vertices are the cut
// points of the edges, with texture coordinates interpolated along the edge;
// an edge is always cut from its lower pool index, so two polygons sharing it
// get the same point.
struct BspSplit {
    BspPolygon front;
    BspPolygon rear;
};
BspSplit splitBspPolygon(const BspPolygon &polygon, const BspPlane &plane, BspVertexPool &pool, double epsilon);
