// Shrink's texture and sound rewrites on generated media: bytes before and
// after, and the time of each rewrite (best of several runs, wall clock).
// JPEG photos are a gradient with noise saved by Qt at quality 90, with an
// EXIF block (with a thumbnail-sized payload), an ICC profile and a comment
// inserted; GIFs are written with a full 256-colour table of which they use
// fewer; the sound is three seconds of stereo 16-bit 44.1 kHz in the
// extensible format.
//
// Usage: bench_shrink_media [runs]

#include "shrink/GifColours.h"
#include "shrink/GifImage.h"
#include "shrink/GifShrink.h"
#include "shrink/JpegShrink.h"
#include "shrink/SoundConvert.h"
#include "shrink/TextureScale.h"

#include <QBuffer>
#include <QElapsedTimer>
#include <QImage>
#include <QRandomGenerator>
#include <QtEndian>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <limits>

using namespace Qt::StringLiterals;

namespace {

QByteArray marker(char code, const QByteArray &body)
{
    return "\xFF" + QByteArray(1, code) + char((body.size() + 2) >> 8) + char((body.size() + 2) & 255) + body;
}

QByteArray photoJpeg(int side)
{
    QImage image(side, side, QImage::Format_RGB32);
    QRandomGenerator random(static_cast<quint32>(side));
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) {
            const int noise = int(random.bounded(24));
            image.setPixel(x, y, qRgb((x * 200 / side + noise) % 256, (y * 180 / side + noise) % 256, 90 + noise));
        }
    }
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "JPEG", 90);
    QByteArray bytes = buffer.data();
    QByteArray exif = "Exif" + QByteArray(2, '\0');
    for (int i = 0; exif.size() < 9000; ++i)
        exif += char(random.bounded(256));
    return bytes.insert(2, marker('\xE1', exif) + marker('\xE2', "ICC_PROFILE" + QByteArray(3100, '\x21'))
                               + marker('\xFE', "Created with a photo editor"));
}

QByteArray paletteGif(int side, int used, int frames)
{
    GifImage image;
    image.screen = QSize(side, side);
    for (int i = 0; i < 256; ++i)
        image.globalColours.append(qRgb(i, (i * 7) % 256, 255 - i));
    image.loopCount = frames > 1 ? 0 : -1;
    for (int f = 0; f < frames; ++f) {
        GifFrame frame;
        frame.rect = QRect(0, 0, side, side);
        frame.delay = 10;
        frame.colours = image.globalColours;
        frame.pixels.resize(qsizetype(side) * side);
        for (int y = 0; y < side; ++y)
            for (int x = 0; x < side; ++x)
                frame.pixels[y * side + x] = char(((x + f) / 4 + y / 8 + ((x ^ y) & 1)) % used);
        image.frames.append(frame);
    }
    QString error;
    return encodeGif(image, &error);
}

QByteArray chunk(const QByteArray &id, const QByteArray &body)
{
    QByteArray size(4, '\0');
    qToLittleEndian<quint32>(quint32(body.size()), size.data());
    return id + size + body;
}

QByteArray extensibleWav(double seconds)
{
    const int rate = 44100, frames = int(rate * seconds);
    QByteArray fmt(16, '\0');
    qToLittleEndian<quint16>(0xFFFE, fmt.data());
    qToLittleEndian<quint16>(2, fmt.data() + 2);
    qToLittleEndian<quint32>(rate, fmt.data() + 4);
    qToLittleEndian<quint32>(rate * 4, fmt.data() + 8);
    qToLittleEndian<quint16>(4, fmt.data() + 12);
    qToLittleEndian<quint16>(16, fmt.data() + 14);
    fmt += QByteArray("\x16\0\x10\0\x03\0\0\0\x01\0\0\0\0\0\x10\0\x80\0\0\xAA\0\x38\x9B\x71", 24);
    QByteArray data(qsizetype(frames) * 4, '\0');
    for (int i = 0; i < frames; ++i) {
        const double t = double(i) / rate;
        qToLittleEndian<qint16>(qint16(12000 * std::sin(2 * M_PI * 440 * t)), data.data() + 4 * i);
        qToLittleEndian<qint16>(qint16(9000 * std::sin(2 * M_PI * 660 * t)), data.data() + 4 * i + 2);
    }
    return chunk("RIFF", "WAVE" + chunk("fmt ", fmt) + chunk("data", data));
}

void measure(const char *what, const QByteArray &input, const std::function<ShrinkResult(const QByteArray &)> &rewrite,
             int runs)
{
    double best = std::numeric_limits<double>::max();
    ShrinkResult result;
    for (int run = 0; run < runs; ++run) {
        QElapsedTimer timer;
        timer.start();
        result = rewrite(input);
        best = std::min(best, double(timer.nsecsElapsed()) / 1e6);
    }
    std::printf("%-52s %9lld %9lld %6.1f%% %9.2f ms  %s\n", what, qint64(input.size()), result.after,
                100.0 * double(result.saved()) / double(input.size()), best,
                result.changed ? "" : qPrintable(u"kept: "_s + result.reason));
}

} // namespace

int main(int argc, char **argv)
{
    const int runs = argc > 1 ? std::max(1, std::atoi(argv[1])) : 3;
    std::printf("%-52s %9s %9s %7s %12s\n", "rewrite", "before", "after", "saved", "time");
    for (int side : {128, 256, 512}) {
        const QByteArray photo = photoJpeg(side);
        const QByteArray name = QByteArray::number(side) + "x" + QByteArray::number(side);
        measure(
            "optimizeJpeg photo " + name, photo, [](const QByteArray &b) { return optimizeJpeg(b); }, runs);
        measure(
            "reencodeJpeg q75 photo " + name, photo, [](const QByteArray &b) { return reencodeJpeg(b, 75); }, runs);
        if (side > 256)
            measure(
                "scaleTexture 256 photo " + name, photo, [](const QByteArray &b) { return scaleTexture(b); }, runs);
    }
    for (auto [side, used, frames] : {std::tuple{128, 16, 1}, std::tuple{256, 64, 1}, std::tuple{64, 8, 12}}) {
        const QByteArray gif = paletteGif(side, used, frames);
        const QByteArray name = QByteArray::number(side) + " px, " + QByteArray::number(used) + " of 256 colours, "
                                + QByteArray::number(frames) + " fr";
        measure(
            "optimizeGif " + name, gif, [](const QByteArray &b) { return optimizeGif(b); }, runs);
        measure(
            "reduceGifColours 8 " + name, gif, [](const QByteArray &b) { return reduceGifColours(b, 8); }, runs);
    }
    const QByteArray sound = extensibleWav(3);
    measure(
        "convertSound mono 22050 16-bit", sound,
        [](const QByteArray &b) {
            return convertSound(b, {true, 22050, 16});
        },
        runs);
    measure(
        "convertSound mono 11025 8-bit", sound,
        [](const QByteArray &b) {
            return convertSound(b, {true, 11025, 8});
        },
        runs);
    return 0;
}
