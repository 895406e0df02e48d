// Shrink's rewrites of textures and sounds: lossless ones show the same
// pictures (judged by Qt's own GIF and JPEG readers) in fewer bytes, lossy ones
// fit Rover's limits, and every output is one Rover reads.
#include "rover/RoverMedia.h"
#include "shrink/GifColours.h"
#include "shrink/GifShrink.h"
#include "shrink/JpegShrink.h"
#include "shrink/JpegTranscode.h"
#include "shrink/SoundConvert.h"
#include "shrink/TextureScale.h"

#include <QBuffer>
#include <QImageReader>
#include <QRandomGenerator>
#include <QSet>
#include <QTest>
#include <QtEndian>

#include <gif_lib.h>
#include <turbojpeg.h>

#include <cmath>

using namespace Qt::StringLiterals;

Q_DECLARE_METATYPE(SoundTarget)

class TestShrinkMedia : public QObject {
    Q_OBJECT
private slots:
    void jpegLossless_data();
    void jpegLossless();
    void gifLossless_data();
    void gifLossless();
    void lossy_data();
    void lossy();
    void sounds_data();
    void sounds();
};

namespace {

QImage photo(int width, int height, QImage::Format format = QImage::Format_RGB32)
{
    QImage image(width, height, QImage::Format_RGB32);
    QRandomGenerator random(7);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            image.setPixel(x, y, qRgb(x * 255 / width, y * 255 / height, int(random.bounded(40)) + 100));
    return image.convertToFormat(format);
}

// A JPEG as Qt writes it (standard Huffman tables), with EXIF, ICC and comment markers after SOI.
QByteArray jpeg(const QImage &image, int quality = 90)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "JPEG", quality);
    QByteArray bytes = buffer.data();
    const auto marker = [](char code, const QByteArray &body) {
        return "\xFF" + QByteArray(1, code) + char((body.size() + 2) >> 8) + char((body.size() + 2) & 255) + body;
    };
    return bytes.insert(2, marker('\xE1', "Exif" + QByteArray(900, 'e'))
                               + marker('\xE2', "ICC_PROFILE" + QByteArray(600, 'i'))
                               + marker('\xFE', "made by a camera"));
}

QByteArray cmykJpeg()
{
    tjhandle handle = tjInitCompress();
    QByteArray pixels(32 * 32 * 4, '\x40');
    unsigned char *out = nullptr;
    unsigned long size = 0;
    tjCompress2(handle, reinterpret_cast<uchar *>(pixels.data()), 32, 0, 32, TJPF_CMYK, &out, &size, TJSAMP_444, 90, 0);
    const QByteArray bytes(reinterpret_cast<char *>(out), qsizetype(size));
    tjFree(out);
    tjDestroy(handle);
    return bytes;
}

struct Frame {
    QRect rect;
    int table = 0; // 0: the global table; n: a local table of n colours
    int transparent = -1, delay = 0;
    bool interlaced = false;
};

// A GIF through giflib with a 256-colour global table (colour i = grey i) and a
// comment; frame f's pixel (x, y) is index (x + 3y + f) % 4, local tables
// hold colours of their own.
QByteArray gif(QSize screen, const QList<Frame> &frames, int loop = -1)
{
    QByteArray out;
    int error = 0;
    GifFileType *file = EGifOpen(
        &out,
        [](GifFileType *g, const GifByteType *b, int n) {
            static_cast<QByteArray *>(g->UserData)->append(reinterpret_cast<const char *>(b), n);
            return n;
        },
        &error);
    const auto table = [](int count, int seed) {
        ColorMapObject *map = GifMakeMapObject(count, nullptr);
        for (int i = 0; i < count; ++i)
            map->Colors[i] = {GifByteType(i * seed), GifByteType(255 - i), GifByteType(seed * 40)};
        return map;
    };
    ColorMapObject *global = table(256, 1);
    EGifSetGifVersion(file, true);
    EGifPutScreenDesc(file, screen.width(), screen.height(), 8, 0, global);
    EGifPutComment(file, "a comment that costs bytes");
    if (loop >= 0) {
        EGifPutExtensionLeader(file, APPLICATION_EXT_FUNC_CODE);
        EGifPutExtensionBlock(file, 11, "NETSCAPE2.0");
        const GifByteType count[] = {1, GifByteType(loop), 0};
        EGifPutExtensionBlock(file, 3, count);
        EGifPutExtensionTrailer(file);
    }
    for (qsizetype f = 0; f < frames.size(); ++f) {
        const Frame &frame = frames[f];
        const GraphicsControlBlock control{DISPOSE_DO_NOT, false, frame.delay, frame.transparent};
        GifByteType extension[4];
        EGifGCBToExtension(&control, extension);
        EGifPutExtension(file, GRAPHICS_EXT_FUNC_CODE, 4, extension);
        ColorMapObject *local = frame.table ? table(frame.table, int(f) + 2) : nullptr;
        const QRect r = frame.rect;
        EGifPutImageDesc(file, r.x(), r.y(), r.width(), r.height(), frame.interlaced, local);
        GifFreeMapObject(local);
        QList<int> rows;
        for (int pass = 0; pass < (frame.interlaced ? 4 : 1); ++pass)
            for (int y = frame.interlaced ? (pass ? 4 >> (pass - 1) : 0) : 0; y < r.height();
                 y += frame.interlaced ? (pass < 2 ? 8 : 8 >> (pass - 1)) : 1)
                rows.append(y);
        for (int y : rows) {
            QByteArray line(r.width(), '\0');
            for (int x = 0; x < r.width(); ++x)
                line[x] = char((x + 3 * y + f) % 4);
            EGifPutLine(file, reinterpret_cast<GifPixelType *>(line.data()), r.width());
        }
    }
    EGifCloseFile(file, &error);
    GifFreeMapObject(global);
    return out;
}

// Every frame as Qt's own reader shows it.
QList<QImage> shown(const QByteArray &bytes)
{
    QBuffer buffer;
    buffer.setData(bytes);
    QImageReader reader(&buffer);
    QList<QImage> frames;
    for (QImage image; reader.read(&image);)
        frames.append(image.convertToFormat(QImage::Format_ARGB32));
    return frames;
}

QByteArray wav(int tag, int channels, int rate, int bits, double seconds)
{
    const int frames = int(rate * seconds), width = bits / 8;
    QByteArray data(qsizetype(frames) * channels * width, '\0');
    for (int i = 0; i < frames * channels; ++i) {
        const double v = 0.5 * std::sin(2 * M_PI * 1000 * (i / channels) / rate);
        qToLittleEndian<qint16>(qint16(std::lround(v * 32767)), data.data() + i * width);
    }
    QByteArray fmt = QByteArray(16, '\0');
    qToLittleEndian<quint16>(quint16(tag), fmt.data());
    qToLittleEndian<quint16>(quint16(channels), fmt.data() + 2);
    qToLittleEndian<quint32>(quint32(rate), fmt.data() + 4);
    qToLittleEndian<quint32>(quint32(rate * channels * width), fmt.data() + 8);
    qToLittleEndian<quint16>(quint16(channels * width), fmt.data() + 12);
    qToLittleEndian<quint16>(quint16(bits), fmt.data() + 14);
    if (tag == 0xFFFE) // extensible: size 22, valid bits, channel mask, PCM sub-format
        fmt += QByteArray("\x16\0\x10\0\x03\0\0\0\x01\0\0\0\0\0\x10\0\x80\0\0\xAA\0\x38\x9B\x71", 24);
    const auto chunk = [](const QByteArray &id, const QByteArray &body) {
        QByteArray size(4, '\0');
        qToLittleEndian<quint32>(quint32(body.size()), size.data());
        return id + size + body;
    };
    const QByteArray body = "WAVE" + chunk("fmt ", fmt) + chunk("LIST", "INFOISFT") + chunk("data", data);
    return chunk("RIFF", body);
}

} // namespace

void TestShrinkMedia::jpegLossless_data()
{
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<QString>("kept"); // a part of the reason the input is kept; "" = rewritten
    QTest::newRow("photo with metadata") << jpeg(photo(200, 150)) << "";
    QImage flat(16, 16, QImage::Format_RGB32);
    flat.fill(Qt::darkCyan);
    QTest::newRow("small flat") << jpeg(flat) << "";
    QTest::newRow("greyscale") << jpeg(photo(64, 64, QImage::Format_Grayscale8)) << "";
    QTest::newRow("already rewritten") << optimizeJpeg(jpeg(photo(64, 64))).bytes << "already as small";
    QTest::newRow("cmyk") << cmykJpeg() << "four-channel";
    QTest::newRow("cut short") << jpeg(photo(64, 64)).chopped(300) << "does not decode cleanly";
}

void TestShrinkMedia::jpegLossless()
{
    QFETCH(QByteArray, input);
    QFETCH(QString, kept);
    const ShrinkResult result = optimizeJpeg(input);
    QVERIFY2(result.reason.contains(kept), qPrintable(result.reason));
    QCOMPARE(result.changed, kept.isEmpty());
    QCOMPARE(result.bytes == input, !result.changed);
    if (!result.changed)
        return;
    QVERIFY(result.after < result.before && result.after == result.bytes.size());
    QCOMPARE(QImage::fromData(result.bytes), QImage::fromData(input));
    QVERIFY(!result.bytes.contains("Exif") && !result.bytes.contains("ICC_PROFILE")
            && !result.bytes.contains("camera"));
    QString error;
    const qsizetype baseline = transcodeJpeg(input, false, &error).size();
    QCOMPARE(result.after, std::min(baseline, transcodeJpeg(input, true, &error).size()));
    QCOMPARE(roverTextureInfo(result.bytes).status, RoverTextureInfo::Usable);
}

void TestShrinkMedia::gifLossless_data()
{
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<QString>("kept");
    const QRect all(0, 0, 16, 16);
    QTest::newRow("local tables") << gif({16, 16}, {{all, 32}, {QRect(4, 4, 8, 8), 64}}) << "";
    QTest::newRow("animated loop") << gif({16, 16}, {{all, 0, -1, 10}, {all, 0, -1, 20}, {all, 0, -1, 30}}, 0) << "";
    QTest::newRow("transparent") << gif({16, 16}, {{all, 0, 1}}) << "";
    QTest::newRow("interlaced") << gif({16, 20}, {{QRect(0, 0, 16, 20), 0, -1, 0, true}}) << "";
    QList<Frame> many;
    for (int f = 0; f < 200; ++f)
        many.append({QRect(0, 0, 2, 2), 4});
    QTest::newRow("more than 256 colours") << gif({2, 2}, many) << "more than 256 colours";
    QTest::newRow("png") << QByteArray("\x89PNG\r\n\x1A\n", 8) << "cannot be read";
}

void TestShrinkMedia::gifLossless()
{
    QFETCH(QByteArray, input);
    QFETCH(QString, kept);
    const ShrinkResult result = optimizeGif(input);
    QVERIFY2(result.reason.contains(kept), qPrintable(result.reason));
    QCOMPARE(result.changed, kept.isEmpty());
    QCOMPARE(result.bytes == input, !result.changed);
    if (!result.changed)
        return;
    QVERIFY(result.after < result.before);
    QCOMPARE(shown(result.bytes), shown(input));
    GifImage before, after;
    QString error;
    QVERIFY(decodeGif(input, &before, &error) && decodeGif(result.bytes, &after, &error));
    QCOMPARE(after.loopCount, before.loopCount);
    for (qsizetype f = 0; f < after.frames.size(); ++f) {
        QVERIFY(!after.frames[f].ownTable && !after.frames[f].interlaced);
        QCOMPARE(after.frames[f].delay, before.frames[f].delay);
        QCOMPARE(after.frames[f].transparent >= 0, before.frames[f].transparent >= 0);
    }
    QCOMPARE(roverTextureInfo(result.bytes).status, RoverTextureInfo::Usable);
}

void TestShrinkMedia::lossy_data()
{
    QTest::addColumn<QByteArray>("output");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<int>("colours");  // at most, for a GIF
    QTest::addColumn<QPoint>("clear"); // a pixel that stays transparent, for a GIF
    const QByteArray bigGif = gif({400, 200}, {{QRect(0, 0, 300, 200), 0, 2}, {QRect(10, 10, 50, 50), 0, -1, 5}}, 0);
    QTest::newRow("scale jpeg") << scaleTexture(jpeg(photo(512, 512))).bytes << QSize(256, 256) << 0 << QPoint();
    QTest::newRow("scale grey jpeg") << scaleTexture(jpeg(photo(300, 600, QImage::Format_Grayscale8)), 128).bytes
                                     << QSize(64, 128) << 0 << QPoint();
    QTest::newRow("scale gif") << scaleTexture(bigGif).bytes << QSize(256, 128) << 256 << QPoint(255, 127);
    QTest::newRow("reencode jpeg") << reencodeJpeg(jpeg(photo(256, 256), 98), 40).bytes << QSize(256, 256) << 0
                                   << QPoint();
    QTest::newRow("reduce colours") << reduceGifColours(gif({64, 64}, {{QRect(0, 0, 64, 64), 0, 3}}), 2).bytes
                                    << QSize(64, 64) << 2 << QPoint(3, 0);
}

void TestShrinkMedia::lossy()
{
    QFETCH(QByteArray, output);
    QFETCH(QSize, size);
    QFETCH(int, colours);
    QFETCH(QPoint, clear);
    const RoverTextureInfo info = roverTextureInfo(output);
    QCOMPARE(info.status, RoverTextureInfo::Usable);
    QCOMPARE(QSize(info.width, info.height), size);
    QCOMPARE(info.format, colours ? RoverTextureInfo::Gif : RoverTextureInfo::Jpeg);
    if (!colours)
        return;
    QVERIFY(info.transparent);
    QSet<QRgb> visible;
    for (const QImage &frame : shown(output)) {
        QCOMPARE(qAlpha(frame.pixel(clear)), 0);
        for (int y = 0; y < frame.height(); ++y)
            for (int x = 0; x < frame.width(); ++x)
                if (qAlpha(frame.pixel(x, y)))
                    visible.insert(frame.pixel(x, y));
    }
    QVERIFY(visible.size() <= colours);
}

void TestShrinkMedia::sounds_data()
{
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<SoundTarget>("target");
    QTest::addColumn<double>("ratio"); // output bytes / input bytes; 0 = kept
    QTest::newRow("extensible stereo to mono 22k")
        << wav(0xFFFE, 2, 44100, 16, 1) << SoundTarget{true, 22050, 16} << 0.25;
    QTest::newRow("pcm to 8-bit 11k") << wav(1, 1, 22050, 16, 1) << SoundTarget{true, 11025, 8} << 0.25;
    QTest::newRow("same rate") << wav(1, 2, 22050, 16, 1) << SoundTarget{false, 0, 16} << 1.0;
    QTest::newRow("adpcm") << wav(2, 1, 22050, 16, 0.1) << SoundTarget{} << 0.0;
}

void TestShrinkMedia::sounds()
{
    QFETCH(QByteArray, input);
    QFETCH(SoundTarget, target);
    QFETCH(double, ratio);
    const ShrinkResult result = convertSound(input, target);
    QCOMPARE(result.changed, ratio > 0);
    if (!result.changed) {
        QVERIFY(result.reason.contains(u"format tag 0x0002"_s));
        return;
    }
    const RoverSoundInfo info = roverSoundInfo(result.bytes);
    QVERIFY2(info.usable, qPrintable(info.reason));
    QCOMPARE(info.channels, target.mono ? 1 : 2);
    QCOMPARE(info.sampleRate, target.sampleRate ? target.sampleRate : 22050);
    QCOMPARE(info.bitsPerSample, target.bitsPerSample);
    QVERIFY2(std::abs(double(result.after) / double(result.before) - ratio) < 0.01,
             qPrintable(QString::number(result.after)));
    // The 1 kHz tone at half amplitude survives: its level and its zero crossings.
    const QByteArrayView data = QByteArrayView(result.bytes).sliced(44);
    const int width = info.bitsPerSample / 8, step = width * info.channels;
    double sum = 0;
    int crossings = 0, count = 0;
    for (qsizetype at = 0, previous = 0; at + width <= data.size(); at += step, ++count) {
        const double v =
            width == 1 ? (uchar(data[at]) - 128) / 128.0 : qFromLittleEndian<qint16>(data.data() + at) / 32768.0;
        sum += v * v;
        crossings += (v >= 0) != (previous >= 0);
        previous = v >= 0 ? 1 : -1;
    }
    QVERIFY2(std::abs(std::sqrt(sum / count) - 0.5 / std::sqrt(2.0)) < 0.02, qPrintable(QString::number(sum / count)));
    QVERIFY2(std::abs(crossings - 2000) < 20, qPrintable(QString::number(crossings)));
}

QTEST_MAIN(TestShrinkMedia)
#include "test_shrink_media.moc"
