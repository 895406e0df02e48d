#include "rover/RoverBspRule.h"

#include "rover/RoverBlockGeometry.h"

#include <QList>

using namespace Qt::StringLiterals;

namespace {

struct Frame {
    int index;
    int stage;        // 0: front subtree next, 1: rear subtree next, 2: done
    bool inFront;     // the side of this node that the walk is below now
    RoverPlane plane; // normal and offset in texels
};

bool isZero(const RoverPoint &n)
{
    return n.x == 0 && n.y == 0 && n.z == 0;
}

// Whether every vertex of `polygon` lies on the side of each node on the path
// that the walk went down; the first node it does not, else -1.
int wrongSideOf(const RoverBlock &block, const RoverBlockPolygon &polygon, const QList<Frame> &path, double tolerance)
{
    for (const Frame &node : path) {
        const RoverPoint &n = node.plane.normal;
        if (!node.inFront && isZero(n))
            return node.index;
        for (int ref : polygon.vertices) {
            if (ref < 1 || ref > block.vertices.size())
                continue; // the reader refuses such a polygon
            const RoverPoint &p = block.vertices[ref - 1];
            const double distance = n.x * p.x + n.y * p.y + n.z * p.z + node.plane.d;
            if (node.inFront ? distance < -tolerance : distance > tolerance)
                return node.index;
        }
    }
    return -1;
}

} // namespace

QString RoverBspRuleCheck::text() const
{
    switch (problem) {
    case None: return QString();
    case NoTree: return u"The block has no BSP tree"_s;
    case OutOfRange: return u"Polygon reference number %1 is out of range"_s.arg(ref);
    case Cycle: return u"Polygon %1 is reached from itself in the BSP tree"_s.arg(ref);
    case ReachedTwice: return u"Polygon %1 is reached twice in the BSP tree"_s.arg(ref);
    case WrongSide: return u"Polygon %1 lies on the wrong side of polygon %2 in the BSP tree"_s.arg(ref).arg(node);
    }
    return QString();
}

RoverBspRuleCheck checkRoverBspRule(const RoverBlock &block, double tolerance)
{
    RoverBspRuleCheck check;
    if (block.bspRoot == 0) {
        check.problem = RoverBspRuleCheck::NoTree;
        return check;
    }
    enum State : char { Unseen, OnPath, Done };
    const qsizetype count = block.polygons.size();
    QList<char> state(count, Unseen);
    QList<Frame> path;
    const auto fail = [&check](RoverBspRuleCheck::Problem problem, int ref, int node = 0) {
        check.problem = problem;
        check.ref = ref;
        check.node = node;
        return false;
    };
    const auto enter = [&](int ref) {
        if (ref == 0)
            return true;
        if (ref < 0 || ref > count)
            return fail(RoverBspRuleCheck::OutOfRange, ref);
        const int index = ref - 1;
        if (state[index] != Unseen)
            return fail(state[index] == OnPath ? RoverBspRuleCheck::Cycle : RoverBspRuleCheck::ReachedTwice, ref);
        const RoverBlockPolygon &polygon = block.polygons[index];
        if (const int node = wrongSideOf(block, polygon, path, tolerance); node >= 0)
            return fail(RoverBspRuleCheck::WrongSide, ref, node + 1);
        RoverPlane plane = roverPolygonPlane(block, polygon);
        plane.d *= roverTexelsPerUnit;
        state[index] = OnPath;
        path.append({index, 0, true, plane});
        return true;
    };
    if (!enter(block.bspRoot))
        return check;
    while (!path.isEmpty()) {
        Frame &top = path.last();
        if (top.stage == 2) {
            state[top.index] = Done;
            path.removeLast();
            continue;
        }
        const RoverBlockPolygon &polygon = block.polygons[top.index];
        top.inFront = top.stage == 0;
        const int child = top.inFront ? polygon.front : polygon.rear;
        ++top.stage;
        if (!enter(child))
            return check;
    }
    return check;
}
