#pragma once

#include "rover/RoverBlock.h"

#include <QList>

// A block's BSP tree as Rover walks it: from BSP_TREE ROOT through each
// polygon's FRONT and REAR, node first, then the front subtree, then the rear
// one. Polygon refs are 1-based (polygons[i].ref == i + 1), 0 means none.

struct RoverBspTree {
    enum Problem {
        None,
        OutOfRange, // a reference outside 0..number of polygons: Rover's error at </BLOCK>
        Cycle,      // a polygon reached from itself: Rover recurses without end and crashes
    };
    QList<int> reached; // polygon indices, each once, in the order Rover first reaches them
    Problem problem = None;
    int ref = 0; // the reference out of range, or the ref of the polygon reached again
};

// Walks the tree up to its first problem, which is where Rover stops or
// crashes; polygons not in `reached` are never drawn. Linear in the polygons.
RoverBspTree roverBspTree(const RoverBlock &block);

// The polygon indices in Rover's drawing order for a camera at `camera`
// (texels, relative to the block's corner): with a tree, near to far through
// the tree (a node's polygon counts as facing the camera when n.c + D >=
// -0.0001 in world units); without one, every polygon in file order. A polygon
// the tree reaches twice comes once, where Rover first draws it (later draws
// fill nothing: Rover draws near to far); references out of range and cycles
// are passed over.
QList<int> roverDrawOrder(const RoverBlock &block, const RoverPoint &camera);
