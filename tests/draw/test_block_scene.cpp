// Rover's standard cube and sprite as BlockScene draws them: textures, colours
// and black by part, faces, translucency seen from inside in both orders, the
// polygons the BSP tree reaches, and the sprite's rectangle by type and size.
#include "draw/BlockPicture.h"
#include "rover/RoverBlockReader.h"
#include "rover/RoverTestBlocks.h"
#include "support/DataRows.h"

#include <QTest>

using namespace Qt::StringLiterals;
using V = QVector3D;

Q_DECLARE_METATYPE(DrawOrder)

namespace {

// Every texture the blocks name is a plain red 4 x 4 picture, except missing "gone.gif".
BlockScene scene(const QByteArray &text)
{
    return BlockScene(readRoverBlock(text), [](const QString &texture) {
        if (texture == "gone.gif"_L1)
            return QImage();
        QImage image(4, 4, QImage::Format_ARGB32);
        image.fill(Qt::red);
        return image;
    });
}

} // namespace

class TestBlockScene : public QObject {
    Q_OBJECT

private slots:
    void centrePixel_data()
    {
        QTest::addColumn<QString>("top"); // the top part's attributes after its name
        QTest::addColumn<bool>("inside"); // the camera inside the cube looking up, else above it looking down
        QTest::addColumn<DrawOrder>("order");
        QTest::addColumn<QRgb>("pixel"); // unpremultiplied
        const QRgb red = qRgb(255, 0, 0), none = 0, halfRed = qRgba(255, 0, 0, 128);
        addRow("textured", "TEXTURE=\"cement.gif\"", false, DrawOrder::Rover, red);
        addRow("colour", "COLOUR=\"(0,0,255)\"", false, DrawOrder::Rover, qRgb(0, 0, 255));
        addRow("no texture: the colour", "TEXTURE=\"gone.gif\" COLOUR=\"(0,255,0)\"", false, DrawOrder::Depth,
               qRgb(0, 255, 0));
        addRow("no texture, no colour: black", "TEXTURE=\"gone.gif\"", false, DrawOrder::Rover, qRgb(0, 0, 0));
        addRow("faces 0", "TEXTURE=\"cement.gif\" FACES=\"0\"", false, DrawOrder::Depth, none);
        addRow("translucent", "TEXTURE=\"cement.gif\" TRANSLUCENCY=\"50%\"", false, DrawOrder::Rover, halfRed);
        addRow("inside: one-sided", "TEXTURE=\"cement.gif\"", true, DrawOrder::Depth, none);
        addRow("inside: faces 2", "TEXTURE=\"cement.gif\" FACES=\"2\"", true, DrawOrder::Rover, red);
        addRow("inside, translucent, Rover's order: one-sided", "TEXTURE=\"cement.gif\" TRANSLUCENCY=\"50%\"", true,
               DrawOrder::Rover, none);
        addRow("inside, translucent, depth buffer: two-sided", "TEXTURE=\"cement.gif\" TRANSLUCENCY=\"50%\"", true,
               DrawOrder::Depth, halfRed);
    }

    void centrePixel()
    {
        QFETCH(QString, top);
        QFETCH(bool, inside);
        QFETCH(DrawOrder, order);
        const QByteArray block =
            changedBlock(fullBlock, u"NAME=\"top\" TEXTURE=\"cement.gif\""_s, u"NAME=\"top\" "_s + top);
        Camera camera;
        camera.position = inside ? V(128, 100, 128) : V(128, 700, 128);
        camera.target = inside ? V(128, 300, 128) : V(128, 128, 128);
        const QImage picture =
            drawBlockPicture(scene(block), camera, QSize(64, 64), order).convertToFormat(QImage::Format_ARGB32);
        const QRgb shown = picture.pixel(32, 32);
        QFETCH(QRgb, pixel);
        QVERIFY2(qAbs(qAlpha(shown) - qAlpha(pixel)) <= 1
                     && (qAlpha(pixel) == 0 || (shown & 0xffffff) == (pixel & 0xffffff)),
                 qPrintable(QString::number(shown, 16)));
    }

    void treeReach_data()
    {
        addColumns<QString, QString, int, QString>("pattern", "replacement", "drawn", "problem");
        addRow("the whole tree", "", "", 6, "");
        addRow("no tree: file order", "<BSP_TREE ROOT=\"1\"/>", "", 6, "");
        addRow("root 0: no tree", "ROOT=\"1\"", "ROOT=\"0\"", 6, "");
        addRow("three reached", "REAR=\"4\"", "", 3, "");
        addRow("root out of range", "ROOT=\"1\"", "ROOT=\"7\"", 0,
               "Polygon reference number 7 is out of range (line 33)");
    }

    void treeReach()
    {
        QFETCH(QString, pattern);
        QFETCH(QString, replacement);
        const BlockScene drawn = scene(changedBlock(fullBlock, pattern, replacement));
        QTEST(int(drawn.polygons(Camera().position, DrawOrder::Rover).size()), "drawn");
        QTEST(int(drawn.polygons(Camera().position, DrawOrder::Depth).size()), "drawn");
        QTEST(drawn.problem(), "problem");
    }

    void sprite_data()
    {
        QTest::addColumn<QString>("header"); // the BLOCK tag's attributes after its name
        QTest::addColumn<QString>("part");   // the PART tag's attributes after its name
        QTest::addColumn<QString>("param");
        QTest::addColumn<QList<float>>("box"); // x, y, z from and to
        addRow("texture size, bottom", "TYPE=\"facing sprite\"", "TEXTURE=\"logo.gif\"", "",
               QList<float>{126, 130, 0, 4, 128, 128});
        addRow("no texture: 256", "TYPE=\"revolving sprite\"", "TEXTURE=\"gone.gif\"", "",
               QList<float>{0, 256, 0, 256, 128, 128});
        addRow("size, top", "TYPE=\"facing sprite\"", "TEXTURE=\"logo.gif\"",
               "<PARAM SIZE=\"(64,128)\" ALIGN=\"top\"/>", QList<float>{96, 160, 128, 256, 128, 128});
        addRow("player: centre", "TYPE=\"player sprite\"", "", "<PARAM SIZE=\"(64,128)\"/>",
               QList<float>{96, 160, 64, 192, 128, 128});
        addRow("angled by 90", "TYPE=\"angled sprite\"", "", "<PARAM SIZE=\"(64,32)\" ANGLE=\"90\"/>",
               QList<float>{128, 128, 0, 32, 96, 160});
    }

    void sprite()
    {
        QFETCH(QString, header);
        QFETCH(QString, part);
        QFETCH(QString, param);
        const QByteArray text =
            u"<BLOCK NAME=\"s\" %1>\n<PART NAME=\"p\" %2/>\n%3\n</BLOCK>\n"_s.arg(header, part, param).toLatin1();
        const QList<DrawPolygon> polygons = scene(text).polygons(Camera().position, DrawOrder::Depth);
        QCOMPARE(polygons.size(), 1);
        QCOMPARE(polygons[0].faces, DrawFaces::Both);
        QList<float> box{1e9f, -1e9f, 1e9f, -1e9f, 1e9f, -1e9f};
        for (const V &p : polygons[0].points)
            for (int axis = 0; axis < 3; ++axis)
                box[2 * axis] = std::min(box[2 * axis], p[axis]),
                        box[2 * axis + 1] = std::max(box[2 * axis + 1], p[axis]);
        for (float &value : box)
            value = std::round(value * 1000) / 1000 + 0.0f; // -0 and rounding of turned points
        QTEST(box, "box");
    }
};

QTEST_GUILESS_MAIN(TestBlockScene)
#include "test_block_scene.moc"
