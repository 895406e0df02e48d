// Block pictures as the editor and cubrix-cli draw them, on generated blocks.
//
//   thumbnails: a 55-block blockset unpacked as in the working folder (30
//     boxes, 10 gateways, 10 towers, 5 sprites; 8 textures of 128x128 pixels):
//     the time request() takes on the calling thread, and the time until every
//     picture has come back (drawn on the thread pool), from a fresh cache.
//   preview: a 1,000-polygon textured ball with a BSP tree, drawn as the
//     preview panel draws it (grid, block, cube outline) at 600x600 from a
//     camera going round it, in both orders; the median frame.
//   render: one 512x512 picture of a tower from the packed blockset, reading
//     the archive, as cubrix-cli render does (in this process).
//
// Usage: bench_block_pictures [--bset FILE]   (--bset also writes the blockset
// packed, e.g. to time cubrix-cli render against cubrix-cli --version.)

#include "draw/BlockPicture.h"
#include "draw/BlockThumbnails.h"
#include "draw/OrbitCamera.h"
#include "draw/PreviewPainter.h"
#include "storage/ArchiveReader.h"
#include "storage/ArchiveWriter.h"

#include <QBuffer>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QGuiApplication>
#include <QImageWriter>
#include <QRandomGenerator>
#include <QTemporaryDir>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <numbers>
#include <vector>

namespace {

using V = QVector3D;

struct Writer {
    QString text;
    int vertices = 0;
    QStringList parts;

    // A quad with its Rover normal pointing out of `centre`; in the BSP chain every polygon's rear is the next.
    QString quad(V a, V b, V c, V d, V centre, int ref, int count)
    {
        if (V::dotProduct(V::crossProduct(c - b, a - b), a - centre) < 0)
            std::swap(a, d), std::swap(b, c);
        QString polygon = QStringLiteral("<POLYGON REF=\"%1\" VERTICES=\"%2,%3,%4,%5\" "
                                         "TEXCOORDS=\"(0,0),(1,0),(1,1),(0,1)\" REAR=\"%6\"/>\n")
                              .arg(ref)
                              .arg(vertices + 1)
                              .arg(vertices + 2)
                              .arg(vertices + 3)
                              .arg(vertices + 4)
                              .arg(ref < count ? ref + 1 : 0);
        for (const V &p : {a, b, c, d})
            text += QStringLiteral("<VERTEX REF=\"%1\" COORDS=\"(%2,%3,%4)\"/>\n")
                        .arg(++vertices)
                        .arg(double(p.x()))
                        .arg(double(p.y()))
                        .arg(double(p.z()));
        return polygon;
    }
};

// Boxes, each face a part of its own; one texture for the sides, one for top and bottom.
QByteArray boxesBlock(const QString &name, const QList<std::pair<V, V>> &boxes, const QString &side, const QString &top)
{
    Writer w;
    const int count = int(boxes.size()) * 6;
    QString parts;
    int ref = 0;
    for (const auto &[lo, hi] : boxes) {
        const V c = (lo + hi) / 2;
        const V corners[8] = {{lo.x(), lo.y(), lo.z()}, {hi.x(), lo.y(), lo.z()}, {hi.x(), hi.y(), lo.z()},
                              {lo.x(), hi.y(), lo.z()}, {lo.x(), lo.y(), hi.z()}, {hi.x(), lo.y(), hi.z()},
                              {hi.x(), hi.y(), hi.z()}, {lo.x(), hi.y(), hi.z()}};
        const int faces[6][4] = {{0, 1, 2, 3}, {4, 5, 6, 7}, {0, 3, 7, 4}, {1, 2, 6, 5}, {3, 2, 6, 7}, {0, 1, 5, 4}};
        for (int f = 0; f < 6; ++f) {
            const QString polygon = w.quad(corners[faces[f][0]], corners[faces[f][1]], corners[faces[f][2]],
                                           corners[faces[f][3]], c, ++ref, count);
            parts += QStringLiteral("<PART NAME=\"p%1\" TEXTURE=\"%2\" STYLE=\"tiled\">\n%3</PART>\n")
                         .arg(ref)
                         .arg(f >= 4 ? top : side, polygon);
        }
    }
    return QStringLiteral(
               "<BLOCK NAME=\"%1\">\n<VERTICES>\n%2</VERTICES>\n<PARTS>\n%3</PARTS>\n<BSP_TREE ROOT=\"1\"/>\n"
               "</BLOCK>\n")
        .arg(name, w.text, parts)
        .toLatin1();
}

// 25 bands of 40 quads between 75 degrees south and north: 1,000 polygons facing out.
QByteArray ballBlock()
{
    Writer w;
    const V centre(128, 128, 128);
    const auto at = [&](int band, int step) {
        const double lat = (-75.0 + 150.0 * band / 25) * std::numbers::pi / 180, lon = 2 * std::numbers::pi * step / 40;
        return centre
               + 120
                     * V(float(std::cos(lat) * std::cos(lon)), float(std::sin(lat)),
                         float(std::cos(lat) * std::sin(lon)));
    };
    QString polygons;
    int ref = 0;
    for (int band = 0; band < 25; ++band)
        for (int step = 0; step < 40; ++step)
            polygons += w.quad(at(band, step), at(band + 1, step), at(band + 1, step + 1), at(band, step + 1), centre,
                               ++ref, 1000);
    return QStringLiteral("<BLOCK NAME=\"ball\">\n<VERTICES>\n%1</VERTICES>\n<PARTS>\n<PART NAME=\"skin\" "
                          "TEXTURE=\"t0.jpg\">\n%2</PART>\n</PARTS>\n<BSP_TREE ROOT=\"1\"/>\n</BLOCK>\n")
        .arg(w.text, polygons)
        .toLatin1();
}

void write(const QString &path, const QByteArray &bytes)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        std::fprintf(stderr, "cannot write %s\n", qPrintable(path));
}

// The 55-block blockset, unpacked, and the 1,000-polygon ball; returns the block files.
QStringList makeBlockset(const QString &folder)
{
    QRandomGenerator random(5);
    for (int t = 0; t < 8; ++t) {
        QImage image(128, 128, QImage::Format_RGB32);
        for (int y = 0; y < 128; ++y)
            for (int x = 0; x < 128; ++x)
                image.setPixel(x, y, qRgb(40 + 20 * t + random.bounded(40), 90 + random.bounded(60), 60 + 10 * t));
        QByteArray jpeg;
        QBuffer buffer(&jpeg);
        image.save(&buffer, "JPG", 85);
        write(folder + QStringLiteral("/textures/t%1.jpg").arg(t), jpeg);
    }
    QStringList files;
    QString style = QStringLiteral("<style name=\"Bench55\">\n");
    const auto add = [&](const QString &file, const QByteArray &text) {
        write(folder + QStringLiteral("/blocks/") + file, text);
        style += QStringLiteral("<block symbol=\"%1\" file=\"%2\"/>\n").arg(QChar(char16_t(u'a' + files.size())), file);
        files.append(file);
    };
    const auto texture = [](int i) { return QStringLiteral("t%1.jpg").arg(i % 8); };
    for (int i = 0; i < 30; ++i)
        add(QStringLiteral("box%1.block").arg(i),
            boxesBlock(QStringLiteral("box%1").arg(i), {{V(0, 0, 0), V(256, float(32 + 7 * i), 256)}}, texture(i),
                       texture(i + 3)));
    for (int i = 0; i < 10; ++i)
        add(QStringLiteral("gate%1.block").arg(i),
            boxesBlock(
                QStringLiteral("gate%1").arg(i),
                {{V(0, 0, 0), V(64, 256, 256)}, {V(192, 0, 0), V(256, 256, 256)}, {V(64, 192, 0), V(192, 256, 256)}},
                texture(i), texture(i + 1)));
    for (int i = 0; i < 10; ++i) {
        QList<std::pair<V, V>> boxes{{V(32, 0, 32), V(224, 224, 224)}};
        for (float x : {32.0f, 160.0f})
            for (float z : {32.0f, 160.0f})
                boxes.append({V(x, 224, z), V(x + 64, 256, z + 64)});
        add(QStringLiteral("tower%1.block").arg(i),
            boxesBlock(QStringLiteral("tower%1").arg(i), boxes, texture(i), texture(i + 5)));
    }
    for (int i = 0; i < 5; ++i)
        add(QStringLiteral("sprite%1.block").arg(i),
            QStringLiteral("<BLOCK NAME=\"sprite%1\" TYPE=\"facing sprite\">\n<PART NAME=\"s\" TEXTURE=\"%2\"/>\n"
                           "<PARAM SIZE=\"(96,192)\"/>\n</BLOCK>\n")
                .arg(i)
                .arg(texture(i))
                .toLatin1());
    write(folder + QStringLiteral("/Bench55.style"), (style + QStringLiteral("</style>\n")).toLatin1());
    write(folder + QStringLiteral("/blocks/ball.block"), ballBlock());
    return files;
}

// Seconds of processor time of this thread: on a machine shared with others,
// wall time also counts the time others had the processor.
double threadSeconds()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return double(now.tv_sec) + double(now.tv_nsec) / 1e9;
}

double processSeconds()
{
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return double(now.tv_sec) + double(now.tv_nsec) / 1e9;
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

void thumbnails(const QString &folder, const QStringList &files)
{
    std::vector<double> calls, done, processor;
    for (int run = 0; run < 7; ++run) {
        BlockThumbnails pictures;
        pictures.setFolder(folder);
        qsizetype ready = 0;
        QEventLoop loop;
        QObject::connect(&pictures, &BlockThumbnails::pictureReady, [&] {
            if (++ready == files.size())
                loop.quit();
        });
        QElapsedTimer timer;
        timer.start();
        const double start = processSeconds();
        pictures.request(files);
        calls.push_back(double(timer.nsecsElapsed()) / 1e6);
        loop.exec();
        done.push_back(double(timer.nsecsElapsed()) / 1e6);
        processor.push_back((processSeconds() - start) * 1e3);
    }
    std::printf("thumbnails: %lld blocks, request() %.2f ms on the calling thread, all shown after %.1f ms wall, "
                "%.1f ms of processor time on %d threads (medians of %zu)\n",
                qlonglong(files.size()), median(calls), median(done), median(processor), QThread::idealThreadCount(),
                done.size());
}

void preview(const QString &folder)
{
    const BlockScene scene = readBlockScene(folderEntries(folder), QStringLiteral("ball.block"));
    for (DrawOrder order : {DrawOrder::Rover, DrawOrder::Depth}) {
        PreviewPainter painter;
        Rasterizer rasterizer(QSize(600, 600));
        OrbitCamera orbit;
        (void)painter.paint(scene, orbit.camera(), QSize(600, 600), order, Qt::white); // textures converted
        std::vector<double> wall, processor, blockOnly;
        for (int frame = 0; frame < 60; ++frame) {
            orbit.turn(6, frame % 20 < 10 ? 1.5 : -1.5);
            QElapsedTimer timer;
            timer.start();
            double start = threadSeconds();
            (void)painter.paint(scene, orbit.camera(), QSize(600, 600), order, Qt::white);
            processor.push_back(threadSeconds() - start);
            wall.push_back(double(timer.nsecsElapsed()) / 1e9);
            start = threadSeconds();
            rasterizer.clear();
            rasterizer.draw(scene.polygons(orbit.camera().position, order), orbit.camera(), order);
            blockOnly.push_back(threadSeconds() - start);
        }
        std::printf("preview: 1,000 polygons at 600x600, %s: %.1f frames/s of processor time (median frame %.2f ms, "
                    "the block alone %.2f ms); %.1f frames/s of wall time\n",
                    order == DrawOrder::Rover ? "as Rover draws" : "depth buffer", 1 / median(processor),
                    median(processor) * 1e3, median(blockOnly) * 1e3, 1 / median(wall));
    }
}

void render(const QString &bset)
{
    std::vector<double> times;
    for (int run = 0; run < 15; ++run) {
        const double start = threadSeconds();
        ArchiveReader archive;
        if (!archive.open(bset))
            return;
        const BlockScene scene = readBlockScene(archiveEntries(archive), QStringLiteral("tower3.block"));
        const QImage picture = drawBlockPicture(scene, Camera(), QSize(512, 512), DrawOrder::Rover);
        QByteArray png;
        QBuffer buffer(&png);
        QImageWriter writer(&buffer, "png");
        writer.setQuality(80); // as cubrix-cli render writes
        writer.write(picture);
        times.push_back((threadSeconds() - start) * 1e3);
    }
    std::printf(
        "render: one 512x512 tower from the archive into PNG bytes: %.2f ms of processor time (median of %zu)\n",
        median(times), times.size());
}

} // namespace

int main(int argc, char **argv)
{
    // The preview's letters need a GUI application; no display is needed.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    const QStringList arguments = app.arguments();
    QTemporaryDir dir;
    const QString folder = dir.filePath(QStringLiteral("unpacked"));
    const QStringList files = makeBlockset(folder);
    QString bset = dir.filePath(QStringLiteral("Bench55.bset"));
    if (const qsizetype at = arguments.indexOf(QStringLiteral("--bset")); at > 0 && at + 1 < arguments.size())
        bset = arguments[at + 1];
    ArchiveWriter writer(bset);
    if (!writer.addFolder(folder) || !writer.write())
        std::fprintf(stderr, "cannot write %s\n", qPrintable(bset));
    thumbnails(folder, files);
    preview(folder);
    render(bset);
    return 0;
}
