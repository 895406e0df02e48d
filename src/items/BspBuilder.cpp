#include "items/BspBuilder.h"

#include "items/PolygonSplit.h"
#include "rover/RoverBlockBsp.h"

#include <cmath>
#include <cstdlib>
#include <limits>

using namespace Qt::StringLiterals;

namespace {

// Half the tolerance of the tree's rule, so that cut points rounded to the
// written precision still lie well within it.
constexpr double epsilon = 0.005; // texels
constexpr int splitWeight = 8;
constexpr qsizetype candidateSample = 24;
// Polygons whose first three vertices make a smaller triangle give a plane
// that Rover's single precision may tilt; they split only when nothing else can.
constexpr double steadyArea2 = 1.0; // texels squared, twice the area
// Coordinates beyond this are no block Rover can show.
constexpr double farthest = 1e7; // texels

double dot(const RoverPoint &a, const RoverPoint &b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

bool isDrawable(const RoverBlock &block, const RoverBlockPolygon &polygon, const BspPolygon &piece)
{
    const int faces = block.parts.value(polygon.part).faces;
    return faces == 2 || (faces == 1 && !piece.plane.degenerate);
}

bool hasSaneCoordinates(const RoverBlock &block)
{
    for (const RoverPoint &p : block.vertices)
        if (!(std::abs(p.x) <= farthest && std::abs(p.y) <= farthest && std::abs(p.z) <= farthest))
            return false;
    for (const RoverBlockPolygon &polygon : block.polygons)
        for (const RoverTexCoord &t : polygon.texCoords)
            if (!std::isfinite(t.u) || !std::isfinite(t.v))
                return false;
    return true;
}

class Builder {
public:
    explicit Builder(const RoverBlock &block) : m_block(block), m_pool(block.vertices) {}
    BspBuild run();

private:
    struct Task {
        QList<int> set; // piece ids
        int parent;     // -1: the root
        bool front;
        int depth;
    };
    int chooseNode(const QList<int> &set) const;
    qint64 cost(int candidate, const QList<int> &set, qint64 bound) const;
    bool partition(const Task &task, int node, QList<int> &front, QList<int> &rear);
    void assemble(BspBuild &build, const QList<int> &pieceOfPolygon, int root) const;

    const RoverBlock &m_block;
    BspVertexPool m_pool;
    QList<BspPolygon> m_pieces;
    QList<int> m_front, m_rear; // per piece: the piece at the root of each subtree, -1 none
    QList<bool> m_isNode;
    qsizetype m_maxPieces = 0;
    int m_splits = 0;
};

int Builder::chooseNode(const QList<int> &set) const
{
    for (int id : set)
        if (m_pieces[id].plane.degenerate)
            return id;
    QList<int> candidates;
    for (int id : set)
        if (m_pieces[id].area2 >= steadyArea2)
            candidates.append(id);
    if (candidates.isEmpty())
        candidates = set;
    if (candidates.size() > candidateSample) {
        QList<int> sample;
        for (qsizetype k = 0; k < candidateSample; ++k)
            sample.append(candidates[k * candidates.size() / candidateSample]);
        candidates = sample;
    }
    int best = candidates.first();
    qint64 bestCost = std::numeric_limits<qint64>::max();
    for (int candidate : std::as_const(candidates)) {
        const qint64 c = cost(candidate, set, bestCost);
        if (c < bestCost) {
            bestCost = c;
            best = candidate;
        }
    }
    return best;
}

// Splits times the weight plus the imbalance; stops counting at `bound`.
qint64 Builder::cost(int candidate, const QList<int> &set, qint64 bound) const
{
    const BspPlane &plane = m_pieces[candidate].plane;
    qint64 front = 0, rear = 0, splits = 0;
    for (int id : set) {
        if (id == candidate)
            continue;
        switch (bspSide(m_pieces[id], plane, m_pool, epsilon)) {
        case BspSide::Front: ++front; break;
        case BspSide::Rear: ++rear; break;
        case BspSide::InPlane: ++(dot(m_pieces[id].plane.normal, plane.normal) > 0 ? front : rear); break;
        case BspSide::Across:
            ++splits;
            if (splits * splitWeight >= bound)
                return bound;
            break;
        }
    }
    return splits * splitWeight + std::abs(front - rear);
}

// False when the pieces would outgrow every sensible tree.
bool Builder::partition(const Task &task, int node, QList<int> &front, QList<int> &rear)
{
    const BspPlane plane = m_pieces[node].plane;
    const auto add = [this](BspPolygon &&piece, QList<int> &side) {
        if (piece.vertices.isEmpty())
            return;
        m_pieces.append(std::move(piece));
        m_front.append(-1);
        m_rear.append(-1);
        m_isNode.append(false);
        side.append(int(m_pieces.size() - 1));
    };
    for (int id : task.set) {
        if (id == node)
            continue;
        // A node in line has everything in front of it.
        const BspSide side = plane.degenerate ? BspSide::Front : bspSide(m_pieces[id], plane, m_pool, epsilon);
        switch (side) {
        case BspSide::Front: front.append(id); break;
        case BspSide::Rear: rear.append(id); break;
        case BspSide::InPlane: (dot(m_pieces[id].plane.normal, plane.normal) > 0 ? front : rear).append(id); break;
        case BspSide::Across: {
            BspSplit split = splitBspPolygon(m_pieces[id], plane, m_pool, epsilon);
            ++m_splits;
            add(std::move(split.front), front);
            add(std::move(split.rear), rear);
            if (m_pieces.size() > m_maxPieces)
                return false;
            break;
        }
        }
    }
    return true;
}

BspBuild Builder::run()
{
    BspBuild build;
    build.polygonsBefore = int(m_block.polygons.size());
    build.verticesBefore = int(m_block.vertices.size());
    if (m_block.isSprite()) {
        build.problem = u"a sprite has no polygons of its own: Rover makes its picture itself"_s;
        return build;
    }
    if (!hasSaneCoordinates(m_block)) {
        build.problem = u"its coordinates are too large for Rover"_s;
        return build;
    }
    // Rebuilding keeps what the old tree left out, as Rover draws it now.
    const RoverBspTree old = roverBspTree(m_block);
    const bool fromTree = m_block.bspRoot != 0 && old.problem == RoverBspTree::None;
    QList<bool> reached(m_block.polygons.size(), !fromTree);
    for (int index : old.reached)
        reached[index] = true;

    QList<int> pieceOfPolygon(m_block.polygons.size(), -1);
    Task root{{}, -1, true, 1};
    for (qsizetype i = 0; i < m_block.polygons.size(); ++i) {
        const RoverBlockPolygon &polygon = m_block.polygons[i];
        QList<int> vertices;
        for (int ref : polygon.vertices)
            vertices.append(ref - 1);
        BspPolygon piece = bspPolygon(m_pool, vertices, polygon.texCoords, int(i));
        if (!reached[i] || !isDrawable(m_block, polygon, piece))
            continue;
        pieceOfPolygon[i] = int(m_pieces.size());
        root.set.append(int(m_pieces.size()));
        m_pieces.append(std::move(piece));
    }
    if (root.set.isEmpty()) {
        build.problem = u"Rover draws none of its polygons"_s;
        build.nothingDrawn = true;
        return build;
    }
    m_front = m_rear = QList<int>(m_pieces.size(), -1);
    m_isNode = QList<bool>(m_pieces.size(), false);
    m_maxPieces = 64 * m_pieces.size() + 4096;

    int rootPiece = -1;
    QList<Task> tasks{root};
    while (!tasks.isEmpty()) {
        const Task task = tasks.takeLast();
        const int node = chooseNode(task.set);
        m_isNode[node] = true;
        build.depth = std::max(build.depth, task.depth);
        if (task.parent < 0)
            rootPiece = node;
        else
            (task.front ? m_front : m_rear)[task.parent] = node;
        QList<int> front, rear;
        if (!partition(task, node, front, rear)) {
            build.problem = u"its polygons cut each other into more than %1 pieces"_s.arg(m_maxPieces);
            return build;
        }
        if (!front.isEmpty())
            tasks.append({front, node, true, task.depth + 1});
        if (!rear.isEmpty())
            tasks.append({rear, node, false, task.depth + 1});
    }
    build.splits = m_splits;
    assemble(build, pieceOfPolygon, rootPiece);
    return build;
}

void Builder::assemble(BspBuild &build, const QList<int> &pieceOfPolygon, int root) const
{
    QList<QList<int>> nodesOf(m_block.polygons.size());
    for (qsizetype id = 0; id < m_pieces.size(); ++id)
        if (m_isNode[id])
            nodesOf[m_pieces[id].source].append(int(id));
    QList<int> outIndex(m_pieces.size(), -1);
    QList<RoverBlockPolygon> out;
    const auto append = [&out](RoverBlockPolygon polygon) {
        polygon.ref = int(out.size() + 1);
        out.append(polygon);
    };
    for (qsizetype i = 0; i < m_block.polygons.size(); ++i) {
        build.firstOf.append(out.size());
        RoverBlockPolygon whole = m_block.polygons[i];
        whole.front = whole.rear = 0;
        const QList<int> &nodes = nodesOf[i];
        if (nodes.size() == 1 && nodes.first() == pieceOfPolygon[i]) {
            outIndex[nodes.first()] = int(out.size());
            append(whole);
            continue;
        }
        append(whole); // outside the tree: never drawn, still solid
        for (int id : nodes) {
            RoverBlockPolygon piece = whole;
            piece.vertices.clear();
            for (int v : m_pieces[id].vertices)
                piece.vertices.append(v + 1);
            piece.texCoords = m_pieces[id].texCoords;
            outIndex[id] = int(out.size());
            append(piece);
        }
    }
    build.firstOf.append(out.size());
    for (qsizetype id = 0; id < m_pieces.size(); ++id) {
        if (!m_isNode[id])
            continue;
        RoverBlockPolygon &polygon = out[outIndex[id]];
        polygon.front = m_front[id] < 0 ? 0 : outIndex[m_front[id]] + 1;
        polygon.rear = m_rear[id] < 0 ? 0 : outIndex[m_rear[id]] + 1;
    }
    build.block = m_block;
    build.block.vertices = m_pool.points();
    build.block.polygons = out;
    build.block.bspRoot = outIndex[root] + 1;
    build.polygonsAfter = int(out.size());
}

} // namespace

BspBuild buildBspTree(const RoverBlock &block)
{
    return Builder(block).run();
}
