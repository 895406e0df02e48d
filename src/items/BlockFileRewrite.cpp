#include "items/BlockFileRewrite.h"

#include "items/BlockFileLayout.h"
#include "rover/RoverBlockReader.h"
#include "rover/RoverBspRule.h"

#include <algorithm>
#include <charconv>
#include <cmath>

using namespace Qt::StringLiterals;

namespace {

struct Edit {
    qsizetype begin;
    qsizetype end;
    QByteArray text;
};

// The shortest text that reads back as the same double.
QByteArray number(double value)
{
    value += 0.0; // no "-0"
    char buffer[400];
    const bool plain = value == 0 || std::abs(value) >= 1e-6;
    const auto result = plain ? std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed)
                              : std::to_chars(buffer, buffer + sizeof buffer, value);
    return QByteArray(buffer, result.ptr - buffer);
}

bool isLower(const QByteArray &written)
{
    return written == written.toLower();
}

QByteArray attribute(const char *name, bool lower, const QByteArray &value)
{
    const QByteArray n(name);
    return ' ' + (lower ? n.toLower() : n) + "=\"" + value + '"';
}

QByteArray vertexTag(const QByteArray &written, int ref, const RoverPoint &p)
{
    const bool lower = isLower(written);
    return '<' + written + attribute("REF", lower, QByteArray::number(ref))
           + attribute("COORDS", lower, '(' + number(p.x) + ',' + number(p.y) + ',' + number(p.z) + ')') + "/>";
}

QByteArray polygonTag(const QByteArray &written, const RoverBlockPolygon &polygon)
{
    const bool lower = isLower(written);
    QByteArray vertices, texCoords;
    for (qsizetype i = 0; i < polygon.vertices.size(); ++i) {
        const QByteArray comma = i == 0 ? QByteArray() : QByteArray(",");
        vertices += comma + QByteArray::number(polygon.vertices[i]);
        const RoverTexCoord t = polygon.texCoords.value(i);
        texCoords += comma + '(' + number(t.u) + ',' + number(t.v) + ')';
    }
    QByteArray tag = '<' + written + attribute("REF", lower, QByteArray::number(polygon.ref))
                     + attribute("VERTICES", lower, vertices) + attribute("TEXCOORDS", lower, texCoords);
    if (polygon.front != 0)
        tag += attribute("FRONT", lower, QByteArray::number(polygon.front));
    if (polygon.rear != 0)
        tag += attribute("REAR", lower, QByteArray::number(polygon.rear));
    return tag + "/>";
}

QByteArray bspTreeTag(int root)
{
    return "<BSP_TREE ROOT=\"" + QByteArray::number(root) + "\"/>";
}

// New vertices go on lines of their own before </VERTICES>, indented like
// the last vertex.
Edit newVertices(QByteArrayView bytes, const BlockFileLayout &layout, const BspBuild &build, qsizetype count)
{
    const qsizetype at = layout.verticesEnd.begin;
    const QByteArray endIndent = BlockFileLayout::indentOf(bytes, at);
    const bool ownLine = at - endIndent.size() == 0 || bytes[at - endIndent.size() - 1] == '\n'
                         || bytes[at - endIndent.size() - 1] == '\r';
    const QByteArray indent =
        layout.lastVertex.isValid() ? BlockFileLayout::indentOf(bytes, layout.lastVertex.begin) : endIndent;
    const QByteArray name = layout.vertexTagName.isEmpty() ? QByteArray("VERTEX") : layout.vertexTagName;
    QByteArray text;
    for (qsizetype i = count; i < build.block.vertices.size(); ++i) {
        const QByteArray tag = indent + vertexTag(name, int(i + 1), build.block.vertices[i]);
        text += ownLine ? tag + layout.lineEnd : layout.lineEnd + tag;
    }
    if (ownLine)
        return {at - endIndent.size(), at - endIndent.size(), text};
    return {at, at, text + layout.lineEnd};
}

// Whether `read` is exactly what was built.
bool sameBlock(const RoverBlock &read, const RoverBlock &built)
{
    if (read.vertices != built.vertices || read.polygons.size() != built.polygons.size()
        || read.bspRoot != built.bspRoot)
        return false;
    for (qsizetype i = 0; i < read.polygons.size(); ++i) {
        const RoverBlockPolygon &a = read.polygons[i], &b = built.polygons[i];
        if (a.vertices != b.vertices || a.texCoords != b.texCoords || a.front != b.front || a.rear != b.rear
            || a.part != b.part)
            return false;
    }
    return true;
}

QByteArray applied(QByteArrayView bytes, QList<Edit> edits)
{
    std::sort(edits.begin(), edits.end(), [](const Edit &a, const Edit &b) { return a.begin < b.begin; });
    QByteArray out;
    qsizetype at = 0;
    for (const Edit &edit : std::as_const(edits)) {
        out += bytes.sliced(at, edit.begin - at);
        out += edit.text;
        at = edit.end;
    }
    out += bytes.sliced(at);
    return out;
}

} // namespace

std::optional<QByteArray> writeBspTree(QByteArrayView bytes, const BspBuild &build, QString &problem)
{
    const std::optional<BlockFileLayout> layout = blockFileLayout(bytes);
    const qsizetype polygonCount = build.firstOf.size() - 1;
    if (!layout || layout->polygons.size() != polygonCount) {
        problem = u"Cubrix does not understand the layout of its file"_s;
        return std::nullopt;
    }
    QList<Edit> edits;
    if (build.block.vertices.size() > build.verticesBefore)
        edits.append(newVertices(bytes, *layout, build, build.verticesBefore));
    for (qsizetype i = 0; i < polygonCount; ++i) {
        const BlockFileLayout::Range &range = layout->polygons[i];
        const QByteArray indent = BlockFileLayout::indentOf(bytes, range.begin);
        QByteArray text;
        for (qsizetype k = build.firstOf[i]; k < build.firstOf[i + 1]; ++k)
            text += (k == build.firstOf[i] ? QByteArray() : layout->lineEnd + indent)
                    + polygonTag(layout->polygonTagNames[i], build.block.polygons[k]);
        edits.append({range.begin, range.end, text});
    }
    if (layout->bspTree.isValid())
        edits.append({layout->bspTree.begin, layout->bspTree.end, bspTreeTag(build.block.bspRoot)});
    else
        edits.append({layout->partsEnd.end, layout->partsEnd.end,
                      layout->lineEnd + BlockFileLayout::indentOf(bytes, layout->partsEnd.begin)
                          + bspTreeTag(build.block.bspRoot)});
    QByteArray out = applied(bytes, edits);

    const RoverBlockFile read = readRoverBlock(out);
    if (hasRoverError(read.findings) || !sameBlock(read.block, build.block)) {
        problem = u"its rewritten file does not read back as built"_s;
        return std::nullopt;
    }
    if (const RoverBspRuleCheck rule = checkRoverBspRule(read.block); !rule.holds()) {
        problem = rule.text();
        return std::nullopt;
    }
    return out;
}

std::optional<QByteArray> withoutBspTree(QByteArrayView bytes)
{
    const std::optional<BlockFileLayout> layout = blockFileLayout(bytes);
    if (!layout || !layout->bspTree.isValid())
        return std::nullopt;
    return applied(bytes, {{layout->bspTree.begin, layout->bspTree.end, bspTreeTag(0)}});
}
