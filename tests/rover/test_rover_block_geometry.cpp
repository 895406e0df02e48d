// What Rover changes in full.block at load time (texture projection and turn,
// orientation) and how it walks and orders the cube's BSP tree.
#include "RoverTestBlocks.h"
#include "rover/RoverBlockBsp.h"
#include "rover/RoverBlockGeometry.h"
#include "rover/RoverBlockReader.h"
#include "support/DataRows.h"

#include <QTest>

using namespace Qt::StringLiterals;

class TestRoverBlockGeometry : public QObject {
    Q_OBJECT
private slots:
    void load_data();
    void load();
    void bsp_data();
    void bsp();
};

namespace {

QString refs(const QList<int> &indices)
{
    QStringList out;
    for (int i : indices)
        out << QString::number(i + 1);
    return out.join(u' ');
}

} // namespace

void TestRoverBlockGeometry::load_data()
{
    addColumns<QString, QString>("pattern", "replacement");
    QTest::addColumn<int>("polygon");       // 1-based
    QTest::addColumn<QString>("texCoords"); // after loading
    QTest::addColumn<RoverDirection>("facing");

    const QString scaled = uR"(TEXTURE="cement.gif" STYLE="scaled">)"_s;
    const QString top = uR"(NAME="top" TEXTURE="cement.gif")"_s;
    const QString asRead = u"0,0 0,1 1,1 1,0"_s;
    const QString param = u"<BSP_TREE ROOT=\"1\"/>"_s;
    auto row = [](const char *name, const QString &pattern, const QString &replacement, int polygon,
                  const QString &coords,
                  RoverDirection facing) { addRow(name, pattern, replacement, polygon, coords, facing); };
    row("scaled up", u"TEXTURE=\"cement.gif\">"_s, scaled, 1, u"0,1 0,0 1,0 1,1"_s, RoverDirection::Up);
    row("scaled down", u"TEXTURE=\"cement.gif\">"_s, scaled, 2, u"0,0 1,0 1,1 0,1"_s, RoverDirection::Down);
    row("scaled north", u"TEXTURE=\"cement.gif\">"_s, scaled, 3, u"1,0 1,1 0,1 0,0"_s, RoverDirection::North);
    row("scaled south", u"TEXTURE=\"cement.gif\">"_s, scaled, 4, u"1,0 1,1 0,1 0,0"_s, RoverDirection::South);
    row("scaled east", u"TEXTURE=\"cement.gif\">"_s, scaled, 5, u"1,0 1,1 0,1 0,0"_s, RoverDirection::East);
    row("scaled west", u"TEXTURE=\"cement.gif\">"_s, scaled, 6, u"1,0 1,1 0,1 0,0"_s, RoverDirection::West);
    row("tiled 64x128", top, top + uR"( STYLE="tiled")"_s, 1, u"0,2 0,0 4,0 4,2"_s, RoverDirection::Up);
    row("angle 90.9", top, top + uR"( ANGLE="90.9")"_s, 1, u"0,1 1,1 1,0 0,0"_s, RoverDirection::Up);
    row("angle -270 after scaling", top, top + uR"( STYLE="scaled" ANGLE="-270")"_s, 1, u"1,1 0,1 0,0 1,0"_s,
        RoverDirection::Up);
    row("north", param, param + uR"(<PARAM ORIENTATION="north"/>)"_s, 1, asRead, RoverDirection::North);
    row("down", param, param + uR"(<PARAM ORIENTATION="down"/>)"_s, 1, asRead, RoverDirection::Down);
    row("up,90 turns north to east", param, param + uR"(<PARAM ORIENTATION="up, 90"/>)"_s, 3, asRead,
        RoverDirection::East);
    row("west,90", param, param + uR"(<PARAM ORIENTATION="west,90"/>)"_s, 3, asRead, RoverDirection::Up);
    row("angles 95 cut to 90", param, param + uR"(<PARAM ORIENT="95"/>)"_s, 3, asRead, RoverDirection::East);
    row("angles 0,90", param, param + uR"(<PARAM ORIENTATION="0,90"/>)"_s, 1, asRead, RoverDirection::North);
    row("angles 0,0,90", param, param + uR"(<PARAM ORIENTATION="0,0,90"/>)"_s, 1, asRead, RoverDirection::East);
    row("angles 359 cut to 270", param, param + uR"(<PARAM ORIENTATION="359"/>)"_s, 3, asRead, RoverDirection::West);
}

void TestRoverBlockGeometry::load()
{
    QFETCH(QString, pattern);
    QFETCH(QString, replacement);
    QFETCH(int, polygon);
    QFETCH(QString, texCoords);
    QFETCH(RoverDirection, facing);
    const RoverBlockFile file = readRoverBlock(changedBlock(fullBlock, pattern, replacement));
    QVERIFY(file.findings.isEmpty());
    RoverBlock block = file.block;
    loadRoverBlock(block, [](const RoverBlockPart &) { return QSize(64, 128); });
    const RoverBlockPolygon &p = block.polygons[polygon - 1];
    QStringList coords;
    for (const RoverTexCoord &t : p.texCoords)
        coords << u"%1,%2"_s.arg(qRound(t.u * 1000) / 1000.0).arg(qRound(t.v * 1000) / 1000.0);
    QCOMPARE(coords.join(u' '), texCoords);
    QCOMPARE(roverDirection(roverPolygonPlane(block, p).normal), facing);
}

void TestRoverBlockGeometry::bsp_data()
{
    addColumns<QString, QString>("pattern", "replacement");
    QTest::addColumn<RoverPoint>("camera"); // texels
    QTest::addColumn<QString>("reached");
    QTest::addColumn<int>("problem"); // RoverBspTree::Problem
    addColumns<int, QString>("problemRef", "order");

    const QString chain = u"1 2 3 4 5 6"_s;
    const RoverPoint aboveNorth{128, 400, 400}, inside{128, 128, 128};
    auto row = [](const char *name, const QString &pattern, const QString &replacement, RoverPoint camera,
                  const QString &reached, int problem, int ref,
                  const QString &order) { addRow(name, pattern, replacement, camera, reached, problem, ref, order); };
    row("above north", {}, {}, aboveNorth, chain, RoverBspTree::None, 0, u"1 3 6 5 4 2"_s);
    row("inside", {}, {}, inside, chain, RoverBspTree::None, 0, u"6 5 4 3 2 1"_s);
    // Rover's side test allows 0.0001 world units (0.008 texels) behind a plane.
    row("on top within tolerance", {}, {}, {128, 255.995, 128}, chain, RoverBspTree::None, 0, u"1 6 5 4 3 2"_s);
    row("below top beyond tolerance", {}, {}, {128, 255.99, 128}, chain, RoverBspTree::None, 0, u"6 5 4 3 2 1"_s);
    row("no tree: file order", uR"(ROOT="1")"_s, uR"(ROOT="0")"_s, aboveNorth, {}, RoverBspTree::None, 0, chain);
    row("cycle", uR"(REF="6" VERTICES)"_s, uR"(REF="6" REAR="1" VERTICES)"_s, inside, chain, RoverBspTree::Cycle, 1,
        u"6 5 4 3 2 1"_s);
    row("out of range", uR"(REAR="3")"_s, uR"(REAR="9")"_s, aboveNorth, u"1 2"_s, RoverBspTree::OutOfRange, 9,
        u"1 2"_s);
    row("shared subtree once", uR"(REF="1" VERTICES)"_s, uR"(REF="1" FRONT="6" VERTICES)"_s, aboveNorth,
        u"1 6 2 3 4 5"_s, RoverBspTree::None, 0, u"6 1 3 5 4 2"_s);
}

void TestRoverBlockGeometry::bsp()
{
    QFETCH(QString, pattern);
    QFETCH(QString, replacement);
    QFETCH(RoverPoint, camera);
    QFETCH(QString, reached);
    QFETCH(int, problem);
    QFETCH(int, problemRef);
    QFETCH(QString, order);
    // The reader reports a tree's problem at </BLOCK>, with every polygon read.
    const RoverBlock block = readRoverBlock(changedBlock(fullBlock, pattern, replacement)).block;
    QCOMPARE(block.polygons.size(), 6);
    const RoverBspTree tree = roverBspTree(block);
    QCOMPARE(refs(tree.reached), reached);
    QCOMPARE(int(tree.problem), problem);
    QCOMPARE(tree.ref, problemRef);
    QCOMPARE(refs(roverDrawOrder(block, camera)), order);
}

QTEST_GUILESS_MAIN(TestRoverBlockGeometry)
#include "test_rover_block_geometry.moc"
