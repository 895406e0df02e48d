#include "rover/RoverBlockBsp.h"

#include "rover/RoverBlockGeometry.h"

#include <numeric>

namespace {

// Rover's tolerance of the side test, in world units.
constexpr double sideTolerance = -0.0001;

} // namespace

RoverBspTree roverBspTree(const RoverBlock &block)
{
    // Walked with an explicit stack: a tree may be as deep as the file is long.
    enum State : char { Unseen, OnPath, Done };
    struct Frame {
        int index;
        int stage; // 0: front subtree next, 1: rear subtree next, 2: done
    };
    const qsizetype count = block.polygons.size();
    QList<char> state(count, Unseen);
    QList<Frame> stack;
    RoverBspTree tree;
    // False when `ref` is where Rover stops. A polygon already walked whole is
    // not walked again: Rover would find nothing new in it.
    auto enter = [&](int ref) {
        if (ref == 0)
            return true;
        if (ref < 0 || ref > count) {
            tree.problem = RoverBspTree::OutOfRange;
            tree.ref = ref;
            return false;
        }
        const int index = ref - 1;
        if (state[index] == OnPath) {
            tree.problem = RoverBspTree::Cycle;
            tree.ref = ref;
            return false;
        }
        if (state[index] == Unseen) {
            state[index] = OnPath;
            tree.reached.append(index);
            stack.append({index, 0});
        }
        return true;
    };
    if (!enter(block.bspRoot))
        return tree;
    while (!stack.isEmpty()) {
        const Frame top = stack.last();
        const RoverBlockPolygon &polygon = block.polygons[top.index];
        if (top.stage < 2) {
            stack.last().stage = top.stage + 1;
            if (!enter(top.stage == 0 ? polygon.front : polygon.rear))
                return tree;
        } else {
            state[top.index] = Done;
            stack.removeLast();
        }
    }
    return tree;
}

QList<int> roverDrawOrder(const RoverBlock &block, const RoverPoint &camera)
{
    const qsizetype count = block.polygons.size();
    QList<int> order;
    if (block.bspRoot == 0) {
        order.resize(count);
        std::iota(order.begin(), order.end(), 0);
        return order;
    }
    const RoverPoint c{camera.x / roverTexelsPerUnit, camera.y / roverTexelsPerUnit, camera.z / roverTexelsPerUnit};
    struct Frame {
        int index;
        int stage; // 0: near subtree next, 1: the polygon and the far subtree next, 2: done
        bool inFront;
    };
    QList<char> seen(count, 0);
    QList<Frame> stack;
    auto enter = [&](int ref) {
        if (ref < 1 || ref > count || seen[ref - 1])
            return;
        seen[ref - 1] = 1;
        const RoverPlane p = roverPolygonPlane(block, block.polygons[ref - 1]);
        const double side = p.normal.x * c.x + p.normal.y * c.y + p.normal.z * c.z + p.d;
        stack.append({ref - 1, 0, side >= sideTolerance});
    };
    enter(block.bspRoot);
    while (!stack.isEmpty()) {
        const Frame top = stack.last();
        const RoverBlockPolygon &polygon = block.polygons[top.index];
        const int nearSide = top.inFront ? polygon.front : polygon.rear;
        const int farSide = top.inFront ? polygon.rear : polygon.front;
        if (top.stage == 0) {
            stack.last().stage = 1;
            enter(nearSide);
        } else if (top.stage == 1) {
            stack.last().stage = 2;
            order.append(top.index);
            enter(farSide);
        } else {
            stack.removeLast();
        }
    }
    return order;
}
