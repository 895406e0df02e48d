#pragma once

#include "rover/RoverBlock.h"

#include <QRandomGenerator>

// Structural blocks for the BSP tests, built from polygons' corners (clockwise
// seen from the front). Polygon i lies in part i % faces.size(), drawn with
// that many faces, and its texture coordinates follow a map of its own.

using Corners = QList<RoverPoint>;

// Polygon i's texture map: affine in the position, different for each polygon.
inline RoverTexCoord textureAt(int i, const RoverPoint &p)
{
    return {p.x / 256 + p.z / 512 + i * 0.1, p.y / 256 - p.x / 1024 + i * 0.01};
}

inline RoverBlock blockOf(const QList<Corners> &polygons, const QList<int> &faces = {1})
{
    RoverBlock block;
    block.name = QStringLiteral("test");
    for (int k = 0; k < faces.size(); ++k) {
        block.parts.append(RoverBlockPart());
        block.parts.last().name = QStringLiteral("p%1").arg(k);
        block.parts.last().faces = faces[k];
    }
    for (const Corners &corners : polygons) {
        RoverBlockPolygon polygon;
        polygon.ref = int(block.polygons.size() + 1);
        polygon.part = int(block.polygons.size() % faces.size());
        for (const RoverPoint &p : corners) {
            block.vertices.append(p);
            polygon.vertices.append(int(block.vertices.size()));
            polygon.texCoords.append(textureAt(polygon.ref - 1, p));
        }
        block.polygons.append(polygon);
    }
    return block;
}

// The six faces of the box from corner a to corner b, facing out.
inline QList<Corners> box(RoverPoint a, RoverPoint b)
{
    const auto p = [&](int i, int j, int k) { return RoverPoint{i ? b.x : a.x, j ? b.y : a.y, k ? b.z : a.z}; };
    return {{p(0, 1, 0), p(0, 1, 1), p(1, 1, 1), p(1, 1, 0)}, {p(0, 0, 0), p(1, 0, 0), p(1, 0, 1), p(0, 0, 1)},
            {p(0, 1, 1), p(0, 0, 1), p(1, 0, 1), p(1, 1, 1)}, {p(1, 1, 0), p(1, 0, 0), p(0, 0, 0), p(0, 1, 0)},
            {p(1, 1, 1), p(1, 0, 1), p(1, 0, 0), p(1, 1, 0)}, {p(0, 1, 0), p(0, 0, 0), p(0, 0, 1), p(0, 1, 1)}};
}

// Random triangles and parallelograms of up to a quarter of the block across;
// with `planes`, each lies in one of that many planes z = const, facing either way.
inline QList<Corners> soup(int count, quint32 seed, int planes = 0)
{
    QRandomGenerator random(seed);
    const auto any = [&](double size) { return random.bounded(2 * size) - size; };
    QList<Corners> out;
    for (int i = 0; i < count; ++i) {
        const RoverPoint a{random.bounded(256.0), random.bounded(256.0), random.bounded(256.0)};
        RoverPoint u{any(64), any(64), any(64)}, v{any(64), any(64), any(64)};
        double z = a.z;
        if (planes > 0) {
            u.z = v.z = 0;
            z = 256.0 * (1 + random.bounded(planes)) / (planes + 1);
        }
        const RoverPoint b{a.x + u.x, a.y + u.y, z + u.z}, c{a.x + v.x, a.y + v.y, z + v.z};
        if (i % 2)
            out.append({{a.x, a.y, z}, b, c});
        else
            out.append({{a.x, a.y, z}, b, {b.x + v.x, b.y + v.y, b.z + v.z}, c});
    }
    return out;
}

// The block as a file, each polygon a part of its own: CR LF, capitals, comments, a light.
inline QByteArray blockText(const RoverBlock &block)
{
    const auto n = [](double v) { return QByteArray::number(v, 'g', 17); };
    QByteArray text = "<!-- test -->\r\n<BLOCK NAME=\"test\">\r\n<VERTICES>\r\n";
    for (qsizetype i = 0; i < block.vertices.size(); ++i)
        text += "  <VERTEX REF=\"" + QByteArray::number(i + 1) + "\" COORDS=\"(" + n(block.vertices[i].x) + ','
                + n(block.vertices[i].y) + ',' + n(block.vertices[i].z) + ")\"/>\r\n";
    text += "</VERTICES>\r\n<PARTS>\r\n";
    for (const RoverBlockPolygon &polygon : block.polygons) {
        QByteArray refs, uv;
        for (qsizetype i = 0; i < polygon.vertices.size(); ++i) {
            refs += (i ? "," : "") + QByteArray::number(polygon.vertices[i]);
            uv += (i ? ",(" : "(") + n(polygon.texCoords[i].u) + ',' + n(polygon.texCoords[i].v) + ')';
        }
        const QByteArray ref = QByteArray::number(polygon.ref);
        text += "<PART NAME=\"p" + ref + "\" FACES=\"" + QByteArray::number(block.parts[polygon.part].faces)
                + "\">\r\n  <!-- polygon -->\r\n  <POLYGON REF=\"" + ref + "\" VERTICES=\"" + refs + "\" TEXCOORDS=\""
                + uv + "\"/>\r\n</PART>\r\n";
    }
    return text + "</PARTS>\r\n<LIGHT BRIGHTNESS=\"50%\"/>\r\n</BLOCK>\r\n";
}
