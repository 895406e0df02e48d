// bench_bsp: how long building BSP trees takes. Generated structural blocks
// (stairs, arches, crossing walls, concave prisms, tori, random polygon soups)
// go through buildBspTree; then 55 block files, most of them shapes and a few
// soups, go through what Add BSP Trees does with each file in memory: read as
// Rover reads it, build, write the tree into the file and read that back.
//
//   bench_bsp                print the figures
//   bench_bsp --make DIR     also write the 55 block files into DIR
#include "items/BlockFileRewrite.h"
#include "items/BspBuilder.h"
#include "rover/RoverBlockReader.h"
#include "rover/RoverBspRule.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QRandomGenerator>

#include <cmath>
#include <cstdio>
#include <functional>
#include <numbers>

namespace {

using Quad = QList<RoverPoint>;

// A block of one part from polygons given by their corners (clockwise from
// the front), texture coordinates from the corners' x and y.
RoverBlock blockOf(const QList<Quad> &polygons)
{
    RoverBlock block;
    block.name = QStringLiteral("shape");
    block.parts.append(RoverBlockPart{QStringLiteral("p"), {}, {}, {}, 0, RoverBlockPart::Stretched, 1, 0, 0});
    for (const Quad &corners : polygons) {
        RoverBlockPolygon polygon;
        for (const RoverPoint &p : corners) {
            block.vertices.append(p);
            polygon.vertices.append(int(block.vertices.size()));
            polygon.texCoords.append({p.x / 256, 1 - p.y / 256});
        }
        polygon.ref = int(block.polygons.size() + 1);
        block.polygons.append(polygon);
    }
    return block;
}

// The six faces of a box, facing out.
QList<Quad> box(RoverPoint a, RoverPoint b)
{
    const auto p = [&](int i, int j, int k) { return RoverPoint{i ? b.x : a.x, j ? b.y : a.y, k ? b.z : a.z}; };
    return {{p(0, 1, 0), p(0, 1, 1), p(1, 1, 1), p(1, 1, 0)}, {p(0, 0, 0), p(1, 0, 0), p(1, 0, 1), p(0, 0, 1)},
            {p(0, 1, 1), p(0, 0, 1), p(1, 0, 1), p(1, 1, 1)}, {p(1, 1, 0), p(1, 0, 0), p(0, 0, 0), p(0, 1, 0)},
            {p(1, 1, 1), p(1, 0, 1), p(1, 0, 0), p(1, 1, 0)}, {p(0, 1, 0), p(0, 0, 0), p(0, 0, 1), p(0, 1, 1)}};
}

QList<Quad> stairs(int steps)
{
    QList<Quad> out;
    const double h = 256.0 / steps;
    for (int i = 0; i < steps; ++i)
        out += box({0, 0, i * h}, {256, (i + 1) * h, (i + 1) * h + h / 2}); // each step overlaps the next
    return out;
}

// Rings of quads around the z axis: an arch (half a ring) or a torus.
QList<Quad> ring(int around, int across, double turn, double r1, double r2)
{
    QList<Quad> out;
    const auto at = [&](int i, int j) {
        const double a = turn * i / around, b = 2 * std::numbers::pi * j / across;
        const double r = r1 + r2 * std::cos(b);
        return RoverPoint{128 + r * std::cos(a), 128 + r * std::sin(a), 128 + r2 * std::sin(b)};
    };
    for (int i = 0; i < around; ++i)
        for (int j = 0; j < across; ++j)
            out.append({at(i, j), at(i, j + 1), at(i + 1, j + 1), at(i + 1, j)});
    return out;
}

QList<Quad> crossingWalls(int walls)
{
    QList<Quad> out;
    for (int i = 0; i < walls; ++i) {
        const double a = std::numbers::pi * i / walls, c = std::cos(a) * 120, s = std::sin(a) * 120;
        const double dx = -std::sin(a) * 8, dz = std::cos(a) * 8;
        const RoverPoint p0{128 - c - dx, 0, 128 - s - dz}, p1{128 + c - dx, 0, 128 + s - dz};
        const RoverPoint q0{128 - c + dx, 0, 128 - s + dz}, q1{128 + c + dx, 0, 128 + s + dz};
        const auto up = [](RoverPoint p) { return RoverPoint{p.x, 256, p.z}; };
        out.append({up(p0), p0, p1, up(p1)});
        out.append({up(q1), q1, q0, up(q0)});
        out.append({up(p1), p1, q1, up(q1)});
        out.append({up(q0), q0, p0, up(p0)});
    }
    return out;
}

// A U-shaped prism cut into strips: concave, so its inner walls cut the others.
QList<Quad> concave(int strips)
{
    QList<Quad> out = box({0, 0, 0}, {64, 256, 256}) + box({192, 0, 0}, {256, 256, 256});
    const double w = 128.0 / strips;
    for (int i = 0; i < strips; ++i)
        out += box({64 + i * w, 0, 0}, {64 + (i + 1) * w, 64, 256});
    return out;
}

QList<Quad> soup(int count, quint32 seed)
{
    QRandomGenerator random(seed);
    const auto point = [&] { return RoverPoint{random.bounded(256.0), random.bounded(256.0), random.bounded(256.0)}; };
    QList<Quad> out;
    for (int i = 0; i < count; ++i) {
        const RoverPoint a = point(), d1 = point(), d2 = point();
        const auto near = [&](const RoverPoint &p) {
            return RoverPoint{a.x + (p.x - a.x) / 8, a.y + (p.y - a.y) / 8, a.z + (p.z - a.z) / 8};
        };
        out.append({a, near(d1), near(d2)});
    }
    return out;
}

QByteArray number(double v)
{
    return QByteArray::number(v, 'f', 3);
}

// The block as a file, with comments and a light the rewrite must keep.
QByteArray fileOf(const RoverBlock &block)
{
    QByteArray text = "<!-- generated -->\r\n<BLOCK NAME=\"" + block.name.toLatin1() + "\">\r\n<VERTICES>\r\n";
    for (qsizetype i = 0; i < block.vertices.size(); ++i) {
        const RoverPoint &p = block.vertices[i];
        text += "  <VERTEX REF=\"" + QByteArray::number(i + 1) + "\" COORDS=\"(" + number(p.x) + ',' + number(p.y) + ','
                + number(p.z) + ")\"/>\r\n";
    }
    text += "</VERTICES>\r\n<PARTS>\r\n  <PART NAME=\"p\" TEXTURE=\"stone.gif\">\r\n";
    for (const RoverBlockPolygon &polygon : block.polygons) {
        QByteArray refs, coords;
        for (qsizetype i = 0; i < polygon.vertices.size(); ++i) {
            refs += (i ? "," : "") + QByteArray::number(polygon.vertices[i]);
            coords += (i ? ",(" : "(") + number(polygon.texCoords[i].u) + ',' + number(polygon.texCoords[i].v) + ')';
        }
        text += "    <POLYGON REF=\"" + QByteArray::number(polygon.ref) + "\" VERTICES=\"" + refs + "\" TEXCOORDS=\""
                + coords + "\"/>\r\n";
    }
    return text + "  </PART>\r\n</PARTS>\r\n<LIGHT BRIGHTNESS=\"50%\"/>\r\n</BLOCK>\r\n";
}

double milliseconds(const std::function<void()> &work, int runs)
{
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < runs; ++i)
        work();
    return double(timer.nsecsElapsed()) / 1e6 / runs;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    struct Shape {
        const char *name;
        QList<Quad> polygons;
    };
    const QList<Shape> shapes{
        {"stairs (16 steps)", stairs(16)},          {"arch (24 x 8)", ring(24, 8, std::numbers::pi, 100, 20)},
        {"crossing walls (6)", crossingWalls(6)},   {"concave prism (40 strips)", concave(40)},
        {"stairs (167 steps)", stairs(167)},        {"torus (40 x 25)", ring(40, 25, 2 * std::numbers::pi, 90, 30)},
        {"crossing walls (12)", crossingWalls(12)}, {"random soup (200)", soup(200, 1)},
        {"random soup (1000)", soup(1000, 2)},
    };
    std::printf("%-28s %8s %8s %8s %6s %10s %s\n", "block", "before", "after", "splits", "depth", "ms", "rule");
    for (const Shape &shape : shapes) {
        const RoverBlock block = blockOf(shape.polygons);
        BspBuild build;
        const double ms = milliseconds([&] { build = buildBspTree(block); }, 5);
        std::printf("%-28s %8d %8d %8d %6d %10.2f %s\n", shape.name, build.polygonsBefore, build.polygonsAfter,
                    build.splits, build.depth, ms, qPrintable(checkRoverBspRule(build.block).text()));
    }

    // A blockset's worth: 55 blocks of a few dozen to a few hundred polygons.
    QList<QByteArray> files;
    for (int i = 0; i < 55; ++i) {
        const QList<QList<Quad>> kinds{stairs(4 + i % 12), ring(8 + i % 16, 6, std::numbers::pi, 100, 20),
                                       crossingWalls(2 + i % 5), concave(2 + i % 10), soup(20 + 4 * i, quint32(i))};
        RoverBlock block = blockOf(kinds[i % kinds.size()]);
        block.name = QStringLiteral("b%1").arg(i);
        files.append(fileOf(block));
    }
    int polygons = 0, failed = 0;
    const double total = milliseconds(
        [&] {
            polygons = failed = 0;
            for (const QByteArray &bytes : std::as_const(files)) {
                const BspBuild build = buildBspTree(readRoverBlock(bytes).block);
                QString problem;
                failed += build.built() && writeBspTree(bytes, build, problem) ? 0 : 1;
                polygons += build.polygonsBefore;
            }
        },
        3);
    std::printf("55 block files, %d polygons: read, build, write and check in %.1f ms (%d failed)\n", polygons, total,
                failed);
    if (argc == 3 && QByteArray(argv[1]) == "--make") {
        QDir().mkpath(QString::fromLocal8Bit(argv[2]));
        for (qsizetype i = 0; i < files.size(); ++i) {
            QFile out(QString::fromLocal8Bit(argv[2]) + QStringLiteral("/b%1.block").arg(i));
            if (!out.open(QIODevice::WriteOnly) || out.write(files[i]) != files[i].size())
                return 1;
        }
    }
    return failed == 0 ? 0 : 1;
}
