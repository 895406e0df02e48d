// cubrix-cli render and check on block files: a rendered mask against an
// independent ray test of the block, the two drawing orders on two overlapping
// quads, and check on one broken block inside an otherwise clean blockset: an
// error, a warning that needs the blockset's textures, and one that needs the
// other blocks (the findings themselves are the Rover block tests').

#include "CliRun.h"
#include "rover/RoverTestBlocks.h"
#include "support/BlocksetFiles.h"
#include "support/DataRows.h"

#include <QtTest>

#include <cmath>
#include <numbers>

using namespace Qt::StringLiterals;
using V = QVector3D;

namespace {

// Whether the ray through the centre of pixel (i, j) of a W x H picture meets the
// cube 0..256, by the camera model of the command's help: forward f, right
// r = up x f, up u = f x r, focal length (H/2) / tan(fov/2).
bool rayMeetsCube(V eye, V target, double fov, int w, int h, int i, int j)
{
    const V f = (target - eye).normalized(), r = V::crossProduct(V(0, 1, 0), f).normalized();
    const V u = V::crossProduct(f, r);
    const double focal = h / 2.0 / std::tan(fov * std::numbers::pi / 360.0);
    const V ray = f + r * float((i + 0.5 - w / 2.0) / focal) - u * float((j + 0.5 - h / 2.0) / focal);
    double near = 0, far = 1e30;
    for (int axis = 0; axis < 3; ++axis) {
        const double o = eye[axis], d = ray[axis];
        double t1 = (0 - o) / d, t2 = (256 - o) / d;
        if (t1 > t2)
            std::swap(t1, t2);
        near = std::max(near, t1), far = std::min(far, t2);
    }
    return near <= far;
}

// Two coloured quads facing the default camera, the farther one listed first; no BSP tree.
const QByteArray twoQuads = "<BLOCK NAME=\"two\">\n<VERTICES>\n"
                            "<VERTEX REF=\"1\" COORDS=\"(0,0,200)\"/><VERTEX REF=\"2\" COORDS=\"(256,0,200)\"/>\n"
                            "<VERTEX REF=\"3\" COORDS=\"(256,256,200)\"/><VERTEX REF=\"4\" COORDS=\"(0,256,200)\"/>\n"
                            "<VERTEX REF=\"5\" COORDS=\"(0,0,60)\"/><VERTEX REF=\"6\" COORDS=\"(256,0,60)\"/>\n"
                            "<VERTEX REF=\"7\" COORDS=\"(256,256,60)\"/><VERTEX REF=\"8\" COORDS=\"(0,256,60)\"/>\n"
                            "</VERTICES>\n<PARTS>\n<PART NAME=\"far\" COLOUR=\"(255,0,0)\" FACES=\"2\">\n"
                            "<POLYGON REF=\"1\" VERTICES=\"1,2,3,4\" TEXCOORDS=\"(0,0),(1,0),(1,1),(0,1)\"/>\n</PART>\n"
                            "<PART NAME=\"near\" COLOUR=\"(0,0,255)\" FACES=\"2\">\n"
                            "<POLYGON REF=\"2\" VERTICES=\"5,6,7,8\" TEXCOORDS=\"(0,0),(1,0),(1,1),(0,1)\"/>\n</PART>\n"
                            "</PARTS>\n</BLOCK>\n";

} // namespace

class TestCliBlocks : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;

    // A blockset with the standard cube (its texture a JPEG under a GIF name,
    // which Rover reads) as block a, and `second` as block b.
    QString blockset(const QString &name, const QByteArray &second)
    {
        QImage image(8, 8, QImage::Format_RGB32);
        image.fill(Qt::gray);
        FileMap files{{u"blocks/full.block"_s, fullBlock}};
        QBuffer jpeg(&files[u"textures/cement.gif"_s]);
        image.save(&jpeg, "JPG");
        QString entries = u"<block symbol=\"a\" file=\"full.block\"/>\n"_s;
        if (!second.isEmpty()) {
            files.insert(u"blocks/second.block"_s, second);
            entries += u"<block symbol=\"b\" file=\"second.block\"/>\n"_s;
        }
        files.insert(name + u".style"_s, styleFile(name, entries));
        const QString path = m_dir.filePath(name + u".bset"_s);
        return writeBset(path, files) ? path : QString();
    }

private slots:
    // The camera options reach the camera model (the drawing itself is the rasterizer's test).
    void renderMask()
    {
        QStringList options{u"--camera"_s, u"500,180,-90"_s, u"--target"_s, u"100,60,140"_s,
                            u"--fov"_s,    u"65"_s,          u"--size"_s,   u"240x130"_s};
        const QString out = m_dir.filePath(u"mask.png"_s);
        const CliResult result =
            runCli(m_dir, QStringList{u"render"_s, blockset(u"Masks"_s, twoQuads), u"a"_s, out} + options);
        QVERIFY2(result.exitCode == 0, result.err.constData());
        const QImage picture(out);
        V eye(-250, 500, -350), target(128, 128, 128);
        double fov = 40;
        for (qsizetype i = 0; i + 1 < options.size(); i += 2) {
            const QStringList v = options[i + 1].split(u',');
            if (options[i] == "--camera"_L1 || options[i] == "--target"_L1)
                (options[i] == "--camera"_L1 ? eye : target) = V(v[0].toFloat(), v[1].toFloat(), v[2].toFloat());
            else if (options[i] == "--fov"_L1)
                fov = v[0].toDouble();
        }
        int differ = 0;
        for (int j = 0; j < picture.height(); ++j)
            for (int i = 0; i < picture.width(); ++i) {
                const int alpha = qAlpha(picture.pixel(i, j));
                QVERIFY(alpha == 0 || alpha == 255);
                differ += (alpha == 255) != rayMeetsCube(eye, target, fov, picture.width(), picture.height(), i, j);
            }
        QVERIFY2(differ * 200 < picture.width() * picture.height(), qPrintable(QString::number(differ)));
    }

    void drawingOrder_data()
    {
        addColumns<QString, QRgb>("order", "shown");
        addRow("rover: the first listed, farther, wins", u"rover"_s, qRgb(255, 0, 0));
        addRow("depth: the nearer", u"depth"_s, qRgb(0, 0, 255));
    }

    void drawingOrder()
    {
        QFETCH(QString, order);
        const QString out = m_dir.filePath(u"order.png"_s);
        const CliResult result =
            runCli(m_dir, {u"render"_s, blockset(u"Order"_s, twoQuads), u"Second.BLOCK"_s, out, u"--order"_s, order});
        QCOMPARE(result.exitCode, 0);
        QTEST(QImage(out).pixel(128, 128), "shown");
    }

    void checkBlockFiles_data()
    {
        addColumns<QString, QString, int>("pattern", "replacement", "exitCode");
        QTest::addColumn<QString>("finding"); // the broken block's first: severity, line, text
        addRow("clean", u""_s, u""_s, 0, u""_s);
        addRow("vertices not a list", u"VERTICES=\"1,2,3,4\""_s, u"VERTICES=\"1 2 3 4\""_s, 1,
               u"error 14 Expected a list of vertex reference numbers as the value of parameter 'vertices'"_s);
        addRow("texture missing", u"\"top\" TEXTURE=\"cement.gif\""_s, u"\"top\" TEXTURE=\"Stone.GIF\""_s, 0,
               u"warning 13 Unable to load image file textures/Stone.GIF: File not found (part 'top')"_s);
        addRow("a name another block has", u"NAME=\"full\""_s, u"NAME=\"FULL\""_s, 0,
               u"warning 1 Block defined with a duplicate name ('FULL', as "
               "blocks/full.block): Rover leaves this block out"_s);
    }

    void checkBlockFiles()
    {
        QFETCH(QString, pattern);
        QFETCH(QString, replacement);
        const QString name = u"Check%1"_s.arg(QTest::currentDataTag()).remove(u' ').remove(u':');
        const QString file =
            blockset(name, pattern.isEmpty() ? QByteArray() : changedBlock(fullBlock, pattern, replacement));
        const CliResult result = runCli(m_dir, {u"check"_s, file, u"--json"_s});
        QTEST(result.exitCode, "exitCode");
        const QJsonObject report = QJsonDocument::fromJson(result.out).object();
        QString first;
        for (const QJsonValue &value : report.value(u"findings"_s).toArray()) {
            const QJsonObject f = value.toObject();
            const QString where = f.value(u"file"_s).toString();
            QVERIFY2(where == u"blocks/second.block"_s || !where.startsWith(u"blocks/"_s), qPrintable(where));
            if (first.isEmpty() && f.value(u"file"_s) == u"blocks/second.block"_s)
                first = u"%1 %2 %3"_s.arg(f.value(u"severity"_s).toString())
                            .arg(f.value(u"line"_s).toInt())
                            .arg(f.value(u"text"_s).toString());
        }
        QTEST(first, "finding");
        QCOMPARE(report.value(u"roverLoadsBlockset"_s).toBool(), result.exitCode == 0);
    }
};

QTEST_GUILESS_MAIN(TestCliBlocks)
#include "test_cli_blocks.moc"
