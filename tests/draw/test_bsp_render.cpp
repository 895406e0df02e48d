// A block with a built tree looks the same in Rover's order and with a depth
// buffer from cameras all around it. Each block polygon (and its pieces) has a
// colour of its own; pixels along an edge, where either neighbour may win, pass.
#include "draw/Rasterizer.h"
#include "items/BspBuilder.h"
#include "rover/RoverBlockBsp.h"
#include "support/BspTestBlocks.h"
#include "support/DataRows.h"

#include <QTest>

namespace {

// The polygons Rover draws, in its order for `camera`, coloured by the block
// polygon they come from.
QList<DrawPolygon> drawn(const RoverBlock &block, const QList<qsizetype> &firstOf, const QVector3D &camera)
{
    QList<DrawPolygon> out;
    for (int index : roverDrawOrder(block, {camera.x(), camera.y(), camera.z()})) {
        const auto source = int(std::upper_bound(firstOf.begin(), firstOf.end(), index) - firstOf.begin());
        DrawPolygon p;
        p.colour = QColor::fromRgb(QRgb(0xff000000u | (quint32(source) * 0x9E3779B1u >> 8)));
        const int faces = block.parts[block.polygons[index].part].faces;
        p.faces = faces == 0 ? DrawFaces::Never : faces == 1 ? DrawFaces::Front : DrawFaces::Both;
        for (int ref : block.polygons[index].vertices) {
            const RoverPoint &v = block.vertices[ref - 1];
            p.points.append(QVector3D(float(v.x), float(v.y), float(v.z)));
        }
        out.append(p);
    }
    return out;
}

// Pixels of `rover` whose colour the depth picture has nowhere around them.
int wrongPixels(const QImage &rover, const QImage &depth)
{
    int wrong = 0;
    for (int y = 1; y + 1 < rover.height(); ++y)
        for (int x = 1; x + 1 < rover.width(); ++x) {
            bool near = false;
            for (int dy = -1; dy <= 1; ++dy)
                for (int dx = -1; dx <= 1; ++dx)
                    near = near || depth.pixel(x + dx, y + dy) == rover.pixel(x, y);
            wrong += near ? 0 : 1;
        }
    return wrong;
}

} // namespace

class TestBspRender : public QObject {
    Q_OBJECT

private slots:
    void sameInBothOrders_data()
    {
        QTest::addColumn<QList<Corners>>("polygons");
        addRow("crossing walls", box({0, 0, 120}, {256, 256, 136}) + box({120, 0, 0}, {136, 256, 256}));
        addRow("stairs",
               box({0, 0, 0}, {256, 64, 96}) + box({4, 8, 64}, {252, 128, 160}) + box({8, 16, 128}, {248, 192, 224}));
        addRow("random soup", soup(40, 7));
    }

    void sameInBothOrders()
    {
        QFETCH(QList<Corners>, polygons);
        const RoverBlock block = blockOf(polygons, {1, 2});
        const BspBuild build = buildBspTree(block);
        QVERIFY(build.built());
        QList<qsizetype> fileOrder;
        for (qsizetype i = 0; i <= block.polygons.size(); ++i)
            fileOrder.append(i);
        int wrongWithoutTree = 0;
        for (int corner = 0; corner < 8; ++corner) {
            const Camera camera{QVector3D(corner & 1 ? 700 : -450, corner & 2 ? 600 : -350, corner & 4 ? 650 : -400),
                                QVector3D(128, 128, 128), 50};
            const QList<DrawPolygon> tree = drawn(build.block, build.firstOf, camera.position);
            const QImage rover = drawPolygons(tree, camera, QSize(96, 96), DrawOrder::Rover);
            QCOMPARE(wrongPixels(rover, drawPolygons(tree, camera, QSize(96, 96), DrawOrder::Depth)), 0);
            const QList<DrawPolygon> plain = drawn(block, fileOrder, camera.position);
            wrongWithoutTree += wrongPixels(drawPolygons(plain, camera, QSize(96, 96), DrawOrder::Rover),
                                            drawPolygons(plain, camera, QSize(96, 96), DrawOrder::Depth));
        }
        // The comparison sees the sorting errors of the same block drawn in file order.
        QVERIFY(wrongWithoutTree > 0);
    }
};

QTEST_GUILESS_MAIN(TestBspRender)
#include "test_bsp_render.moc"
