#pragma once

#include "items/BspBuilder.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <optional>

// Writes a built BSP tree into the block file it was built from. Only three
// things change: new VERTEX tags before </VERTICES>, each POLYGON tag replaced
// by the polygons it became (in its place, with its indentation and the case of
// its tag), and the BSP_TREE tag that counts (added after </PARTS> when there
// is none; written in capitals, as the block list looks for it). Every other
// byte, comments and line ends included, stays as it was.
//
// The result is read again as Rover reads it; unless that gives exactly
// build.block with a tree that holds Rover's rule and no error, nothing is
// returned and `problem` says why, so a file is never replaced by a worse one.
std::optional<QByteArray> writeBspTree(QByteArrayView bytes, const BspBuild &build, QString &problem);

// The file with ROOT="0" in the BSP_TREE tag that counts: the block as Rover
// would read it without its tree. Nothing when it has no such tag.
std::optional<QByteArray> withoutBspTree(QByteArrayView bytes);
