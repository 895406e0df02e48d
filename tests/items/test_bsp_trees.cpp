#include "items/AddBspTrees.h"
#include "items/BlockFileRewrite.h"
#include "items/BspBuilder.h"
#include "rover/RoverBlockBsp.h"
#include "rover/RoverBlockCheck.h"
#include "rover/RoverBlockGeometry.h"
#include "rover/RoverBlockReader.h"
#include "rover/RoverBspRule.h"
#include "rover/RoverTestBlocks.h"
#include "support/BspTestBlocks.h"
#include "support/DataRows.h"
#include "support/FakeHost.h"
#include "support/TestFiles.h"

#include <QtTest>

using namespace Qt::StringLiterals;

namespace {

double area(const RoverBlock &block, const RoverBlockPolygon &polygon)
{
    RoverPoint s; // Newell's sum
    for (qsizetype i = 0; i < polygon.vertices.size(); ++i) {
        const RoverPoint &a = block.vertices[polygon.vertices[i] - 1];
        const RoverPoint &b = block.vertices[polygon.vertices[(i + 1) % polygon.vertices.size()] - 1];
        s = {s.x + a.y * b.z - a.z * b.y, s.y + a.z * b.x - a.x * b.z, s.z + a.x * b.y - a.y * b.x};
    }
    return std::sqrt(s.x * s.x + s.y * s.y + s.z * s.z) / 2;
}

bool warnsOfSorting(const QByteArray &bytes)
{
    const RoverFindings findings = checkRoverBlock(bytes, u"x.block"_s, {}, {});
    return std::any_of(findings.begin(), findings.end(),
                       [](const RoverFinding &f) { return f.text.contains(u"sorting errors"_s); });
}

// The lines of a file that hold no tag a tree rewrites.
QList<QByteArray> otherLines(const QByteArray &text)
{
    QList<QByteArray> lines;
    for (const QByteArray &line : text.split('\n'))
        if (!line.toLower().contains("<polygon") && !line.toLower().contains("<vertex ")
            && !line.toLower().contains("<bsp_tree"))
            lines.append(line);
    return lines;
}

const QByteArray crossingWalls =
    blockText(blockOf(box({0, 0, 120}, {256, 256, 136}) + box({120, 0, 0}, {136, 256, 256})));

} // namespace

class TestBspTrees : public QObject {
    Q_OBJECT

private slots:
    void soups_data()
    {
        addColumns<int, int, QList<int>>("count", "planes", "faces");
        addRow("40 polygons", 40, 0, QList<int>{1});
        addRow("200 polygons, one- and two-sided", 200, 0, QList<int>{1, 2});
        addRow("120 polygons in three planes", 120, 3, QList<int>{1});
        addRow("in line and invisible ones", 60, 0, QList<int>{1, 0, 2});
    }

    // Rover's rule holds; every polygon Rover draws is in the tree whole or in
    // pieces of the same area whose texture coordinates follow its map; a cut
    // polygon stays outside the tree whole; those never drawn stay outside.
    void soups()
    {
        QFETCH(int, count);
        QFETCH(int, planes);
        QFETCH(QList<int>, faces);
        QList<Corners> polygons = soup(count, quint32(count + planes), planes);
        for (double y : {40.0, 90.0, 140.0}) // first three vertices in line
            polygons.append({{10, y, 10}, {70, y, 70}, {130, y, 130}, {10, y + 30, 130}});
        const RoverBlock block = blockOf(polygons, faces);
        const BspBuild build = buildBspTree(block);
        QVERIFY2(build.built(), qPrintable(build.problem));
        const RoverBspRuleCheck rule = checkRoverBspRule(build.block);
        QVERIFY2(rule.holds(), qPrintable(rule.text()));
        QList<bool> inTree(build.block.polygons.size(), false);
        const QList<int> reached = roverBspTree(build.block).reached;
        for (int index : reached)
            inTree[index] = true;
        int drawn = 0;
        for (int i = 0; i < block.polygons.size(); ++i) {
            const RoverBlockPolygon &in = block.polygons[i];
            const int f = block.parts[in.part].faces;
            const bool shown = f == 2 || (f == 1 && roverPolygonPlane(block, in).normal != RoverPoint{});
            drawn += shown;
            double covered = 0;
            for (qsizetype k = build.firstOf[i]; k < build.firstOf[i + 1]; ++k) {
                const RoverBlockPolygon &out = build.block.polygons[k];
                QCOMPARE(out.part, in.part);
                if (!inTree[k]) {
                    QCOMPARE(out.vertices, in.vertices);
                    continue;
                }
                covered += area(build.block, out);
                for (qsizetype j = 0; j < out.vertices.size(); ++j) {
                    const RoverTexCoord want = textureAt(i, build.block.vertices[out.vertices[j] - 1]);
                    QVERIFY(qAbs(out.texCoords[j].u - want.u) < 1e-5 && qAbs(out.texCoords[j].v - want.v) < 1e-5);
                }
            }
            QVERIFY2(qAbs(covered - (shown ? area(block, in) : 0)) < 1e-3, qPrintable(QString::number(i)));
        }
        // Each cut adds one polygon to the tree.
        QCOMPARE(reached.size(), drawn + build.splits);
    }

    void files_data()
    {
        addColumns<QByteArray, bool>("text", "cut");
        QByteArray lower = QByteArray(crossingWalls).replace("\r\n", "\n").toLower();
        lower.insert(lower.indexOf("<vertices>"), "<bsp_tree root=\"0\"/> <!-- none yet -->\n");
        addRow("crossing walls", crossingWalls, true);
        addRow("lower case, LF, empty tree first", lower, true);
        addRow("stairs",
               blockText(blockOf(box({0, 0, 0}, {256, 64, 96}) + box({0, 0, 64}, {256, 128, 160})
                                 + box({0, 0, 128}, {256, 192, 224}))),
               true);
        addRow("Rover's cube without its tree", QByteArray(fullBlock).replace("<BSP_TREE ROOT=\"1\"/>\r\n", ""), false);
    }

    // Read, build, write: Rover reads the result without error and draws it
    // through a tree that holds its rule; every line without a tree's tag is kept.
    void files()
    {
        QFETCH(QByteArray, text);
        QVERIFY(warnsOfSorting(text));
        const BspBuild build = buildBspTree(readRoverBlock(text).block);
        QString problem;
        const std::optional<QByteArray> out = writeBspTree(text, build, problem);
        QVERIFY2(out, qPrintable(problem));
        QTEST(build.splits > 0, "cut");
        const RoverBlockFile read = readRoverBlock(*out);
        QVERIFY(!hasRoverError(read.findings));
        QVERIFY(checkRoverBspRule(read.block).holds());
        QVERIFY(!warnsOfSorting(*out));
        QCOMPARE(otherLines(*out), otherLines(text));
        QCOMPARE(out->count('\r'), text.contains('\r') ? out->count('\n') : 0);
    }

    void command_data()
    {
        addColumns<QList<int>, QList<PromptAnswer>, QStringList>("rows", "answers", "built");
        QTest::addColumn<QString>("message"); // besides the question
        const QString sprite = u"No BSP tree was added to these blocks:\nsprite.block: a sprite has no polygons of "
                               "its own: Rover makes its picture itself"_s;
        addRow("all, valid tree kept", QList<int>{}, QList<PromptAnswer>{PromptAnswer::No},
               QStringList{u"walls.block"_s, u"broken.block"_s}, QString());
        addRow("all, valid tree rebuilt", QList<int>{}, QList<PromptAnswer>{PromptAnswer::Yes},
               QStringList{u"walls.block"_s, u"full.block"_s, u"broken.block"_s}, QString());
        addRow("sprite and walls", QList<int>{3, 0}, QList<PromptAnswer>{}, QStringList{u"walls.block"_s}, sprite);
    }

    void command()
    {
        QFETCH(QList<int>, rows);
        QFETCH(QList<PromptAnswer>, answers);
        QFETCH(QStringList, built);
        QFETCH(QString, message);
        FakeHost host;
        const QString folder = host.workingFolder() + u"/blocks/"_s;
        const QList<std::pair<QString, QByteArray>> files{
            {u"walls.block"_s, crossingWalls},
            {u"full.block"_s, fullBlock},
            {u"broken.block"_s, QByteArray(fullBlock).replace("ROOT=\"1\"", "ROOT=\"7\"")},
            {u"sprite.block"_s, spriteBlock}};
        for (const auto &[file, bytes] : files) {
            writeBytes(folder + file, bytes);
            BlockRow row;
            row.file = row.name = file;
            row.bsp = u"no"_s;
            host.blockset.blocks.append(row);
        }
        host.scripted.answers = answers;

        addBspTrees(host, rows, BspRebuild::Ask);
        QStringList messages = answers.isEmpty() ? QStringList()
                                                 : QStringList{u"\"full.block\" already has a "
                                                               "valid BSP tree. Build it again?"_s};
        if (!message.isEmpty())
            messages.append(message);
        QCOMPARE(host.scripted.messageTexts(), messages);
        int splits = 0;
        for (int i = 0; i < files.size(); ++i) {
            const QByteArray now = readBytes(folder + files[i].first);
            const bool isBuilt = built.contains(files[i].first);
            QCOMPARE(host.blockset.blocks[i].bsp, isBuilt ? u"yes"_s : u"no"_s);
            QVERIFY(isBuilt || now == files[i].second);
            const RoverBlock after = readRoverBlock(now).block;
            QVERIFY(!isBuilt || (!warnsOfSorting(now) && checkRoverBspRule(after).holds()));
            if (isBuilt)
                splits +=
                    int(roverBspTree(after).reached.size() - readRoverBlock(files[i].second).block.polygons.size());
        }
        QCOMPARE(
            host.processTexts.last(),
            u"BSP trees added to %1 blocks (%2 splits)"_s.arg(built.size()).arg(splits)
                + (rows.isEmpty() ? u"; no block was selected, so all structural blocks were taken"_s : QString()));
        QCOMPARE(host.changed, !built.isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestBspTrees)
#include "test_bsp_trees.moc"
