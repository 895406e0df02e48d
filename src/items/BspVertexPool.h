#pragma once

#include "rover/RoverBlock.h"

#include <QHash>
#include <QList>

// The vertices of a block while its BSP tree is built: the block's own, in
// their order, then the points where splits cut polygon edges. A new point is
// rounded to the millionth of a texel that the block file is written with, so
// the tree is built on the very coordinates Rover will read; a point that is
// already there (an edge two polygons share, cut by the same plane) is reused.
class BspVertexPool {
public:
    explicit BspVertexPool(const QList<RoverPoint> &vertices);

    // The index of `point` once rounded, added when new.
    int add(const RoverPoint &point);
    const RoverPoint &at(int index) const { return m_points[index]; }
    const QList<RoverPoint> &points() const { return m_points; }
    qsizetype size() const { return m_points.size(); }

    // `value` rounded to the written precision.
    static double rounded(double value);

private:
    struct Key {
        qint64 x, y, z;
        bool operator==(const Key &) const = default;
    };
    friend size_t qHash(const Key &key, size_t seed) { return qHashMulti(seed, key.x, key.y, key.z); }
    static Key keyOf(const RoverPoint &point);

    QList<RoverPoint> m_points;
    QHash<Key, int> m_index;
};
