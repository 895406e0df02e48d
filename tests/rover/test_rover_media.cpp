// What Rover's GIF, JPEG and WAV readers make of a file: each row builds the
// bytes of one file and names Rover's verdict and the reason it gives.
#include "rover/RoverMedia.h"
#include "support/DataRows.h"
#include "support/MediaBytes.h"

#include <QTest>

using namespace Qt::StringLiterals;

class TestRoverMedia : public QObject {
    Q_OBJECT
private slots:
    void decisions_data();
    void decisions();
};

namespace {

// One line for everything Rover's decision says, so that a row names it whole.
QString describe(const RoverTextureInfo &info)
{
    static const char *const status[] = {"usable", "not GIF or JPEG", "too large", "undefined"};
    static const char *const format[] = {"-", "gif", "jpeg"};
    return u"%1 %2 %3x%4 %5%6 %7"_s.arg(QLatin1StringView(status[info.status]), QLatin1StringView(format[info.format]))
        .arg(info.width)
        .arg(info.height)
        .arg(info.frames)
        .arg(info.transparent ? u" transparent"_s : QString(), info.reason)
        .trimmed();
}

QString describe(const RoverSoundInfo &info)
{
    if (!info.usable)
        return info.reason;
    return u"%1 ch %2 Hz %3 bit %4 bytes"_s.arg(info.channels)
        .arg(info.sampleRate)
        .arg(info.bitsPerSample)
        .arg(info.dataBytes);
}
} // namespace

void TestRoverMedia::decisions_data()
{
    addColumns<QByteArray, QString>("bytes", "expected");

    const QList<GifFrame> one{GifFrame{}};
    QList<GifFrame> many(256);
    const QString no = u"not GIF or JPEG gif 0x0 0 "_s, noJpeg = u"not GIF or JPEG jpeg 0x0 0 "_s;
    addRow("gif", gif(16, 12, true, one), u"usable gif 16x12 1"_s);
    addRow("gif transparent second frame", gif(8, 8, true, {GifFrame{}, GifFrame{.transparent = true}}),
           u"usable gif 8x8 2 transparent"_s);
    addRow("gif 256 frames", gif(8, 8, true, many), u"usable gif 8x8 256"_s);
    many.append(GifFrame{});
    addRow("gif 257 frames", gif(8, 8, true, many), no + u"more than 256 frames"_s);
    addRow("gif no global table", gif(8, 8, false, one), no + u"no global colour table"_s);
    addRow("gif local table", gif(8, 8, true, {GifFrame{}, GifFrame{.localTable = true}}),
           no + u"a frame has a colour table of its own"_s);
    addRow("gif frame outside", gif(8, 8, true, {GifFrame{.left = 4, .width = 5}}),
           no + u"a frame lies outside the logical screen"_s);
    addRow("gif no frames", gif(8, 8, true, {}), no + u"the GIF has no frames"_s);
    addRow("gif cut in a frame", gif(8, 8, true, one).chopped(3), no + u"the GIF data is cut short"_s);
    addRow("gif without trailer", gif(8, 8, true, one).chopped(1), u"usable gif 8x8 1"_s);
    addRow("gif 257x10", gif(257, 10, true, one), u"too large gif 257x10 1 257×10 pixels: wider or taller than 256"_s);
    addRow("jpeg baseline", jpeg(0xC0, 8, 64, 32, 3), u"usable jpeg 64x32 1"_s);
    addRow("jpeg extended grey", jpeg(0xC1, 8, 256, 256, 1), u"usable jpeg 256x256 1"_s);
    addRow("jpeg progressive", jpeg(0xC2, 8, 10, 20, 3), u"usable jpeg 10x20 1"_s);
    addRow("jpeg arithmetic", jpeg(0xC9, 8, 10, 10, 3), noJpeg + u"an arithmetic-coded JPEG"_s);
    addRow("jpeg lossless", jpeg(0xC3, 8, 10, 10, 3), noJpeg + u"a lossless JPEG"_s);
    addRow("jpeg 12-bit", jpeg(0xC1, 12, 10, 10, 3), noJpeg + u"a 12-bit JPEG (only 8-bit samples are read)"_s);
    addRow("jpeg cmyk", jpeg(0xC0, 8, 10, 10, 4),
           u"undefined jpeg 10x10 1 a four-channel (CMYK or YCCK) JPEG overruns Rover's line buffer"_s);
    addRow("jpeg no huffman table", jpeg(0xC0, 8, 10, 10, 3, false), noJpeg + u"a JPEG Huffman table is missing"_s);
    addRow("jpeg cut before scan", jpeg(0xC0, 8, 10, 10, 3).first(120), noJpeg + u"the JPEG data is cut short"_s);
    addRow("jpeg 257x10", jpeg(0xC0, 8, 257, 10, 3),
           u"too large jpeg 257x10 1 257×10 pixels: wider or taller than 256"_s);
    addRow("png", QByteArray("\x89PNG\r\n\x1A\n\0\0\0\rIHDR", 16),
           u"not GIF or JPEG - 0x0 0 neither a GIF nor a JPEG image"_s);
    addRow("empty", QByteArray(), u"not GIF or JPEG - 0x0 0 neither a GIF nor a JPEG image"_s);

    const QByteArray data = riffChunk("data", QByteArray(100, '\x80'));
    addRow("pcm", riffWave(wavFormat(1, 1, 22050, 8) + data), u"1 ch 22050 Hz 8 bit 100 bytes"_s);
    addRow("pcm after odd LIST", riffWave(riffChunk("LIST", "INFOx") + wavFormat(1, 2, 44100, 16) + data),
           u"2 ch 44100 Hz 16 bit 100 bytes"_s);
    addRow("extensible", riffWave(wavFormat(0xFFFE, 2, 44100, 24) + data),
           u"not plain PCM: extensible format (format tag 0xFFFE)"_s);
    addRow("adpcm", riffWave(wavFormat(2, 1, 22050, 4) + data),
           u"not plain PCM: Microsoft ADPCM (format tag 0x0002)"_s);
    addRow("no data chunk", riffWave(wavFormat(1, 1, 22050, 8)), u"no data chunk"_s);
    addRow("no fmt chunk", riffWave(data), u"no fmt chunk"_s);
    addRow("data cut short", riffWave(wavFormat(1, 1, 22050, 8) + data).chopped(10), u"the data chunk is cut short"_s);
    addRow("not riff", QByteArray("ID3\x03\0\0\0\0\0\0", 10), u"not a WAV file (no RIFF WAVE header)"_s);
}

void TestRoverMedia::decisions()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, expected);
    const bool sound = bytes.startsWith("RIFF") || bytes.startsWith("ID3");
    QCOMPARE(sound ? describe(roverSoundInfo(bytes)) : describe(roverTextureInfo(bytes)), expected);
}

QTEST_GUILESS_MAIN(TestRoverMedia)
#include "test_rover_media.moc"
