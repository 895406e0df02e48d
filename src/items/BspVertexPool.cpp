#include "items/BspVertexPool.h"

#include <cmath>

namespace {

constexpr double steps = 1e6; // per texel

} // namespace

BspVertexPool::BspVertexPool(const QList<RoverPoint> &vertices) : m_points(vertices)
{
    // Only block vertices that lie on the grid can meet a new point.
    for (qsizetype i = 0; i < m_points.size(); ++i) {
        const RoverPoint &p = m_points[i];
        if (rounded(p.x) == p.x && rounded(p.y) == p.y && rounded(p.z) == p.z)
            m_index.insert(keyOf(p), int(i));
    }
}

double BspVertexPool::rounded(double value)
{
    // Adding zero turns -0 into 0, which is written without a sign.
    return std::round(value * steps) / steps + 0.0;
}

BspVertexPool::Key BspVertexPool::keyOf(const RoverPoint &point)
{
    return {qint64(std::llround(point.x * steps)), qint64(std::llround(point.y * steps)),
            qint64(std::llround(point.z * steps))};
}

int BspVertexPool::add(const RoverPoint &point)
{
    const RoverPoint p{rounded(point.x), rounded(point.y), rounded(point.z)};
    const Key key = keyOf(p);
    const auto found = m_index.constFind(key);
    if (found != m_index.cend())
        return *found;
    m_points.append(p);
    const int index = int(m_points.size() - 1);
    m_index.insert(key, index);
    return index;
}
