// Shrink's rewrites of textures and sounds: lossless ones show the same
// pictures (judged by Qt's own GIF and JPEG readers) in fewer bytes, lossy ones
// fit Rover's limits, and every output is one Rover reads.
#include "MediaSamples.h"
#include "rover/RoverMedia.h"
#include "shrink/GifColours.h"
#include "shrink/GifShrink.h"
#include "shrink/JpegShrink.h"
#include "shrink/JpegTranscode.h"
#include "shrink/SoundConvert.h"
#include "shrink/TextureScale.h"
#include "support/DataRows.h"

#include <QSet>
#include <QTest>

using namespace Qt::StringLiterals;

Q_DECLARE_METATYPE(SoundTarget)

class TestShrinkMedia : public QObject {
    Q_OBJECT
private slots:
    void lossless_data();
    void lossless();
    void lossy_data();
    void lossy();
    void sounds_data();
    void sounds();
};

void TestShrinkMedia::lossless_data()
{
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<QString>("kept"); // a part of the reason the input is kept; "" = rewritten
    QImage flat(16, 16, QImage::Format_RGB32);
    flat.fill(Qt::darkCyan);
    addRow("jpeg photo with metadata", jpeg(photo(200, 150)), "");
    addRow("jpeg small flat", jpeg(flat), "");
    addRow("jpeg greyscale", jpeg(photo(64, 64, QImage::Format_Grayscale8)), "");
    addRow("jpeg arithmetic", libjpeg(JCS_RGB, 3, true), "");
    addRow("jpeg already rewritten", optimizeJpeg(jpeg(photo(64, 64))).bytes, "already as small");
    addRow("jpeg cmyk", libjpeg(JCS_CMYK, 4, false), "four-channel");
    addRow("jpeg cut short", jpeg(photo(64, 64)).chopped(300), "does not decode cleanly");
    const QRect all(0, 0, 16, 16);
    addRow("gif local tables", gif({16, 16}, {{all, 32}, {QRect(4, 4, 8, 8), 64}}), "");
    addRow("gif animated loop", gif({16, 16}, {{all, 0, -1, 10}, {all, 0, -1, 20}, {all, 0, -1, 30}}, 0), "");
    addRow("gif transparent", gif({16, 16}, {{all, 0, 1}}), "");
    addRow("gif interlaced", gif({16, 20}, {{QRect(0, 0, 16, 20), 0, -1, 0, true}}), "");
    addRow("gif noisy", gif({128, 128}, {{QRect(0, 0, 128, 128), 0, -1, 0, false, true}}), "");
    addRow("gif more than 256 colours", gif({2, 2}, QList<Frame>(200, Frame{QRect(0, 0, 2, 2), 4})),
           "more than 256 colours");
    addRow("png", QByteArray("\x89PNG\r\n\x1A\n", 8), "cannot be read");
}

void TestShrinkMedia::lossless()
{
    QFETCH(QByteArray, input);
    QFETCH(QString, kept);
    const bool isGif = input.startsWith("GIF") || input.startsWith("\x89PNG");
    const ShrinkResult result = isGif ? optimizeGif(input) : optimizeJpeg(input);
    QVERIFY2(result.reason.contains(kept), qPrintable(result.reason));
    QCOMPARE(result.changed, kept.isEmpty());
    QCOMPARE(result.bytes == input, !result.changed);
    if (!result.changed)
        return;
    const RoverTextureInfo before = roverTextureInfo(input), after = roverTextureInfo(result.bytes);
    QVERIFY(result.after < result.before || before.status != RoverTextureInfo::Usable);
    if (QByteArrayView(QTest::currentDataTag()) == "gif noisy") // packed with a smaller dictionary: 10 % less
        QVERIFY(result.after * 10 < result.before * 9);
    QCOMPARE(result.after, result.bytes.size());
    QVERIFY(shown(result.bytes) == shown(input));
    QCOMPARE(after.status, RoverTextureInfo::Usable);
    QCOMPARE(after.transparent, before.transparent);
    QVERIFY(!result.bytes.contains("Exif") && !result.bytes.contains("ICC_PROFILE") && !result.bytes.contains("camera")
            && !result.bytes.contains("costs bytes"));
    QString error;
    if (!isGif) // the smaller of the baseline and the progressive rewrite
        QCOMPARE(result.after,
                 std::min(transcodeJpeg(input, false, &error).size(), transcodeJpeg(input, true, &error).size()));
}

void TestShrinkMedia::lossy_data()
{
    addColumns<QByteArray, QSize>("output", "size");
    QTest::addColumn<int>("colours"); // at most, for a GIF, whose top right pixel stays transparent
    const QByteArray bigGif = gif({400, 200}, {{QRect(0, 0, 300, 200), 0, 2}, {QRect(10, 10, 50, 50), 0, -1, 5}}, 0);
    addRow("scale jpeg", scaleTexture(jpeg(photo(512, 512))).bytes, QSize(256, 256), 0);
    addRow("scale grey jpeg", scaleTexture(jpeg(photo(300, 600, QImage::Format_Grayscale8)), 128).bytes, QSize(64, 128),
           0);
    addRow("scale gif", scaleTexture(bigGif).bytes, QSize(256, 128), 256);
    addRow("reencode jpeg", reencodeJpeg(jpeg(photo(256, 256), 98), 40).bytes, QSize(256, 256), 0);
    addRow("reduce colours", reduceGifColours(gif({64, 64}, {{QRect(0, 0, 64, 64), 0, 3}}), 2).bytes, QSize(64, 64), 2);
}

void TestShrinkMedia::lossy()
{
    QFETCH(QByteArray, output);
    QFETCH(QSize, size);
    QFETCH(int, colours);
    const RoverTextureInfo info = roverTextureInfo(output);
    QCOMPARE(info.status, RoverTextureInfo::Usable);
    QCOMPARE(QSize(info.width, info.height), size);
    QCOMPARE(info.format, colours ? RoverTextureInfo::Gif : RoverTextureInfo::Jpeg);
    QCOMPARE(info.transparent, colours > 0);
    QSet<QRgb> visible;
    for (const auto &[frame, delay] : shown(output).sliced(0, colours ? 1 : 0)) {
        QCOMPARE(qAlpha(frame.pixel(frame.width() - 1, 0)), 0);
        for (int y = 0; y < frame.height(); ++y)
            for (int x = 0; x < frame.width(); ++x)
                visible.insert(qAlpha(frame.pixel(x, y)) ? frame.pixel(x, y) : 0);
    }
    QVERIFY(visible.size() <= colours + 1);
}

void TestShrinkMedia::sounds_data()
{
    addColumns<QByteArray, SoundTarget>("input", "target");
    QTest::addColumn<double>("ratio"); // output bytes / input bytes; 0 = kept
    addRow("extensible stereo to mono 22k", wav(0xFFFE, 2, 44100, 1), SoundTarget{true, 22050, 16}, 0.25);
    addRow("pcm to 8-bit 11k", wav(1, 1, 22050, 1), SoundTarget{true, 11025, 8}, 0.25);
    addRow("same rate", wav(1, 2, 22050, 1), SoundTarget{false, 0, 16}, 1.0);
    addRow("adpcm", wav(2, 1, 22050, 0.1), SoundTarget{}, 0.0);
}

void TestShrinkMedia::sounds()
{
    QFETCH(QByteArray, input);
    QFETCH(SoundTarget, target);
    QFETCH(double, ratio);
    const ShrinkResult result = convertSound(input, target);
    QCOMPARE(result.reason,
             ratio > 0 ? QString() : u"a sound format that cannot be converted (format tag 0x0002, 16 bits)"_s);
    if (!result.changed)
        return;
    const RoverSoundInfo info = roverSoundInfo(result.bytes);
    QVERIFY2(info.usable, qPrintable(info.reason));
    QCOMPARE(QList<int>({info.channels, info.sampleRate, info.bitsPerSample}),
             QList<int>({target.mono ? 1 : 2, target.sampleRate ? target.sampleRate : 22050, target.bitsPerSample}));
    QVERIFY(std::abs(double(result.after) / double(result.before) - ratio) < 0.01);
    // The tone survives: its level and its zero crossings.
    const QByteArrayView data = QByteArrayView(result.bytes).sliced(44);
    const int width = info.bitsPerSample / 8;
    double sum = 0, count = 0, crossings = 0, previous = 0;
    for (qsizetype at = 0; at + width <= data.size(); at += width * info.channels, ++count) {
        const double v =
            width == 1 ? (uchar(data[at]) - 128) / 128.0 : qFromLittleEndian<qint16>(data.data() + at) / 32768.0;
        sum += v * v;
        crossings += (v >= 0) != (previous >= 0);
        previous = v;
    }
    QVERIFY(std::abs(std::sqrt(sum / count) - 0.5 / std::sqrt(2.0)) < 0.02 && std::abs(crossings - 2000) < 20);
}

QTEST_MAIN(TestShrinkMedia)
#include "test_shrink_media.moc"
