#pragma once

#include "rover/RoverBlock.h"

#include <QString>

// Whether a block's BSP tree makes Rover draw it near to far from every camera
// outside it. Rover draws a node's near subtree, the node, then its far
// subtree, so the tree is right when, for every node, each polygon of its
// front subtree lies on its front side and each polygon of its rear subtree on
// its rear side (every vertex, within `tolerance` texels; a polygon in the
// node's plane may go either way), every polygon in the tree is reached exactly
// once, and no reference is out of range or cyclic. A node whose first three
// vertices are in line has no rear side: Rover finds every point in front of it.

// Rover's own side test allows 0.0001 world units (0.008 texels).
constexpr double roverBspTolerance = 0.01; // texels

struct RoverBspRuleCheck {
    enum Problem {
        None,
        NoTree,       // BSP_TREE missing or ROOT="0"
        OutOfRange,   // `ref` is the reference
        Cycle,        // polygon `ref` is reached from itself
        ReachedTwice, // polygon `ref` is reached by two references
        WrongSide,    // polygon `ref` lies on the wrong side of node `node`
    };
    Problem problem = None;
    int ref = 0;
    int node = 0;

    bool holds() const { return problem == None; }
    // What is wrong, in a sentence; empty when the rule holds.
    QString text() const;
};

// Walks the tree from its root with an explicit stack; each reached polygon is
// compared with the nodes above it, so the cost is the sum of the polygons'
// depths times their vertices. Stops at the first problem.
RoverBspRuleCheck checkRoverBspRule(const RoverBlock &block, double tolerance = roverBspTolerance);
