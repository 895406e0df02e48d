#pragma once

#include "rover/RoverBlock.h"

#include <QList>
#include <QString>

// Builds the BSP tree of a structural block as Rover reads it (file
// coordinates, before PARAM orientation: quarter turns keep every side).
//
// Which polygons the tree holds: those Rover draws. A block without a tree
// gives every polygon except those never drawn (parts with faces="0", and
// one-sided polygons whose first three vertices are in line); a block whose
// tree is rebuilt gives only the polygons its tree reaches, so whatever was
// left outside stays outside. The rest are kept as they are, outside the tree.
//
// Splitting planes are chosen among the polygons by the classic cost, splits
// times 8 plus the difference between the polygons in front and behind, over
// all polygons of a subtree or, when there are many, an even sample of 24 of
// them. A polygon lying across the chosen plane is cut in two (see
// splitBspPolygon); the pieces go into the tree and the whole polygon stays in
// the file, outside the tree, where Rover still uses it for collisions, as
// Rover's own blocks do. A polygon whose first three vertices are in line is
// never cut: as a node it has everything else in front, as Rover sees it.
//
// The result is Rover's form: each block polygon in its place in file order,
// followed by its pieces when it was cut, all renumbered 1, 2, 3 ..., with
// FRONT and REAR naming the subtree roots; the new vertices follow the block's
// own. Parts, texture coordinates and everything else stay as they were.
struct BspBuild {
    RoverBlock block;
    // The polygons of `block` that block polygon i became are firstOf[i] up to
    // firstOf[i + 1] - 1.
    QList<qsizetype> firstOf;
    int verticesBefore = 0; // vertices of `block` from this index on are new
    int polygonsBefore = 0;
    int polygonsAfter = 0;
    int splits = 0;
    int depth = 0;             // nodes on the longest path from the root
    QString problem;           // why no tree was built; empty when one was
    bool nothingDrawn = false; // no tree since Rover draws none of the polygons

    bool built() const { return problem.isEmpty(); }
};

BspBuild buildBspTree(const RoverBlock &block);
