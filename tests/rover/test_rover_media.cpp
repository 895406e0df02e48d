// What Rover's GIF, JPEG and WAV readers make of a file: each row builds the
// bytes of one file and names Rover's verdict and the reason it gives.
#include "rover/RoverMedia.h"

#include <QTest>

using namespace Qt::StringLiterals;

class TestRoverMedia : public QObject {
    Q_OBJECT
private slots:
    void textures_data();
    void textures();
    void sounds_data();
    void sounds();
};

namespace {

QByteArray le16(int v)
{
    return QByteArray(1, char(v & 255)) + char(v >> 8 & 255);
}
QByteArray le32(qint64 v)
{
    return le16(int(v & 0xFFFF)) + le16(int(v >> 16 & 0xFFFF));
}
QByteArray be16(int v)
{
    return QByteArray(1, char(v >> 8 & 255)) + char(v & 255);
}

struct Frame {
    int left = 0, top = 0, width = 8, height = 8;
    bool localTable = false, transparent = false;
};

// A GIF with a NETSCAPE loop and a comment; the image data is two bytes, which
// is enough for a reader that does not decode.
QByteArray gif(int width, int height, bool globalTable, const QList<Frame> &frames)
{
    QByteArray b = "GIF89a" + le16(width) + le16(height) + char(globalTable ? 0x80 : 0) + '\0' + '\0';
    if (globalTable)
        b += QByteArray(6, '\x10');
    b += QByteArray("\x21\xFF\x0BNETSCAPE2.0\x03\x01\0\0\0", 19) + QByteArray("\x21\xFE\x02hi\0", 6);
    for (const Frame &f : frames) {
        if (f.transparent)
            b += QByteArray("\x21\xF9\x04\x01\x0A\0\x01\0", 8);
        b += '\x2C' + le16(f.left) + le16(f.top) + le16(f.width) + le16(f.height) + char(f.localTable ? 0x80 : 0);
        if (f.localTable)
            b += QByteArray(6, '\x20');
        b += QByteArray("\x02\x02\x44\x01\0", 5);
    }
    return b + ';';
}

QByteArray segment(int marker, const QByteArray &body)
{
    return "\xFF" + QByteArray(1, char(marker)) + be16(int(body.size()) + 2) + body;
}

// A JPEG header up to its first scan: quantisation table 0, Huffman tables
// 0/0 (DC and AC), a frame of the given kind and a scan over every component.
QByteArray jpeg(int sof, int precision, int width, int height, int components, bool huffman = true)
{
    QByteArray frame = char(precision) + be16(height) + be16(width) + char(components);
    QByteArray scan(1, char(components));
    for (int c = 1; c <= components; ++c) {
        frame += QByteArray(1, char(c)) + '\x11' + '\0';
        scan += QByteArray(1, char(c)) + '\0';
    }
    scan += QByteArray("\0\x3F\0", 3);
    const QByteArray table = QByteArray(1, '\x01') + QByteArray(15, '\0') + '\0';
    QByteArray b = "\xFF\xD8" + segment(0xE1, "Exif\0\0") + segment(0xDB, QByteArray(1, '\0') + QByteArray(64, '\x01'));
    if (huffman)
        b += segment(0xC4, '\x00' + table + '\x10' + table);
    return b + segment(sof, frame) + segment(0xDA, scan) + QByteArray("\x12\x34\xFF\x00\xFF\xD9", 6);
}

QByteArray chunk(const QByteArray &id, const QByteArray &body)
{
    return id + le32(body.size()) + body + (body.size() % 2 ? QByteArray(1, '\0') : QByteArray());
}

QByteArray fmt(int tag, int channels, int rate, int bits)
{
    return chunk("fmt ", le16(tag) + le16(channels) + le32(rate) + le32(qint64(rate) * channels * bits / 8)
                             + le16(channels * bits / 8) + le16(bits));
}

QByteArray riff(const QByteArray &chunks)
{
    return "RIFF" + le32(chunks.size() + 4) + "WAVE" + chunks;
}

} // namespace

void TestRoverMedia::textures_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("status");
    QTest::addColumn<int>("format");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<int>("frames");
    QTest::addColumn<bool>("transparent");
    QTest::addColumn<QString>("reason"); // a part of the reason; "" = none

    using T = RoverTextureInfo;
    const QList<Frame> one{Frame{}};
    QList<Frame> many(256);
    QTest::newRow("gif") << gif(16, 12, true, one) << int(T::Usable) << int(T::Gif) << QSize(16, 12) << 1 << false
                         << "";
    QTest::newRow("gif transparent second frame") << gif(8, 8, true, {Frame{}, Frame{.transparent = true}})
                                                  << int(T::Usable) << int(T::Gif) << QSize(8, 8) << 2 << true << "";
    QTest::newRow("gif 256 frames") << gif(8, 8, true, many) << int(T::Usable) << int(T::Gif) << QSize(8, 8) << 256
                                    << false << "";
    many.append(Frame{});
    QTest::newRow("gif 257 frames") << gif(8, 8, true, many) << int(T::NotGifOrJpeg) << int(T::Gif) << QSize() << 0
                                    << false << "more than 256 frames";
    QTest::newRow("gif no global table") << gif(8, 8, false, one) << int(T::NotGifOrJpeg) << int(T::Gif) << QSize() << 0
                                         << false << "no global colour table";
    QTest::newRow("gif local table") << gif(8, 8, true, {Frame{}, Frame{.localTable = true}}) << int(T::NotGifOrJpeg)
                                     << int(T::Gif) << QSize() << 0 << false << "a frame has a colour table of its own";
    QTest::newRow("gif frame outside") << gif(8, 8, true, {Frame{.left = 4, .width = 5}}) << int(T::NotGifOrJpeg)
                                       << int(T::Gif) << QSize() << 0 << false << "outside the logical screen";
    QTest::newRow("gif no frames") << gif(8, 8, true, {}) << int(T::NotGifOrJpeg) << int(T::Gif) << QSize() << 0
                                   << false << "no frames";
    QTest::newRow("gif cut in a frame") << gif(8, 8, true, one).chopped(3) << int(T::NotGifOrJpeg) << int(T::Gif)
                                        << QSize() << 0 << false << "cut short";
    QTest::newRow("gif without trailer") << gif(8, 8, true, one).chopped(1) << int(T::Usable) << int(T::Gif)
                                         << QSize(8, 8) << 1 << false << "";
    QTest::newRow("gif 257x10") << gif(257, 10, true, one) << int(T::TooLarge) << int(T::Gif) << QSize(257, 10) << 1
                                << false << "wider or taller";

    QTest::newRow("jpeg baseline") << jpeg(0xC0, 8, 64, 32, 3) << int(T::Usable) << int(T::Jpeg) << QSize(64, 32) << 1
                                   << false << "";
    QTest::newRow("jpeg extended grey") << jpeg(0xC1, 8, 256, 256, 1) << int(T::Usable) << int(T::Jpeg)
                                        << QSize(256, 256) << 1 << false << "";
    QTest::newRow("jpeg progressive") << jpeg(0xC2, 8, 10, 20, 3) << int(T::Usable) << int(T::Jpeg) << QSize(10, 20)
                                      << 1 << false << "";
    QTest::newRow("jpeg arithmetic") << jpeg(0xC9, 8, 10, 10, 3) << int(T::NotGifOrJpeg) << int(T::Jpeg) << QSize() << 0
                                     << false << "arithmetic-coded";
    QTest::newRow("jpeg arithmetic progressive") << jpeg(0xCA, 8, 10, 10, 3) << int(T::NotGifOrJpeg) << int(T::Jpeg)
                                                 << QSize() << 0 << false << "arithmetic-coded";
    QTest::newRow("jpeg lossless") << jpeg(0xC3, 8, 10, 10, 3) << int(T::NotGifOrJpeg) << int(T::Jpeg) << QSize() << 0
                                   << false << "lossless";
    QTest::newRow("jpeg 12-bit") << jpeg(0xC1, 12, 10, 10, 3) << int(T::NotGifOrJpeg) << int(T::Jpeg) << QSize() << 0
                                 << false << "12-bit";
    QTest::newRow("jpeg cmyk") << jpeg(0xC0, 8, 10, 10, 4) << int(T::Undefined) << int(T::Jpeg) << QSize(10, 10) << 1
                               << false << "four-channel";
    QTest::newRow("jpeg no huffman table") << jpeg(0xC0, 8, 10, 10, 3, false) << int(T::NotGifOrJpeg) << int(T::Jpeg)
                                           << QSize() << 0 << false << "Huffman table is missing";
    QTest::newRow("jpeg cut before scan") << jpeg(0xC0, 8, 10, 10, 3).first(120) << int(T::NotGifOrJpeg) << int(T::Jpeg)
                                          << QSize() << 0 << false << "cut short";
    QTest::newRow("jpeg 257x10") << jpeg(0xC0, 8, 257, 10, 3) << int(T::TooLarge) << int(T::Jpeg) << QSize(257, 10) << 1
                                 << false << "wider or taller";
    QTest::newRow("png") << QByteArray("\x89PNG\r\n\x1A\n\0\0\0\rIHDR", 16) << int(T::NotGifOrJpeg) << int(T::None)
                         << QSize() << 0 << false << "neither a GIF nor a JPEG";
    QTest::newRow("empty") << QByteArray() << int(T::NotGifOrJpeg) << int(T::None) << QSize() << 0 << false
                           << "neither";
}

void TestRoverMedia::textures()
{
    QFETCH(QByteArray, bytes);
    QFETCH(int, status);
    QFETCH(int, format);
    QFETCH(QSize, size);
    QFETCH(int, frames);
    QFETCH(bool, transparent);
    QFETCH(QString, reason);
    const RoverTextureInfo info = roverTextureInfo(bytes);
    QCOMPARE(int(info.status), status);
    QCOMPARE(int(info.format), format);
    if (size.isValid())
        QCOMPARE(QSize(info.width, info.height), size);
    if (status != RoverTextureInfo::NotGifOrJpeg)
        QCOMPARE(info.frames, frames);
    QCOMPARE(info.transparent, transparent);
    if (reason.isEmpty())
        QCOMPARE(info.reason, QString());
    else
        QVERIFY2(info.reason.contains(reason), qPrintable(info.reason));
}

void TestRoverMedia::sounds_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("reason");       // a part of the reason; "" = usable
    QTest::addColumn<QList<qint64>>("format"); // channels, rate, bits, data bytes when usable

    const QByteArray data = chunk("data", QByteArray(100, '\x80'));
    QTest::newRow("pcm") << riff(fmt(1, 1, 22050, 8) + data) << "" << QList<qint64>{1, 22050, 8, 100};
    QTest::newRow("pcm after odd LIST") << riff(chunk("LIST", "INFOx") + fmt(1, 2, 44100, 16) + data) << ""
                                        << QList<qint64>{2, 44100, 16, 100};
    QTest::newRow("extensible") << riff(fmt(0xFFFE, 2, 44100, 24) + data) << "extensible format (format tag 0xFFFE)"
                                << QList<qint64>{};
    QTest::newRow("adpcm") << riff(fmt(2, 1, 22050, 4) + data) << "ADPCM" << QList<qint64>{};
    QTest::newRow("float") << riff(fmt(3, 1, 22050, 32) + data) << "floating point" << QList<qint64>{};
    QTest::newRow("mu-law") << riff(fmt(7, 1, 8000, 8) + data) << u"µ-law"_s << QList<qint64>{};
    QTest::newRow("mp3") << riff(fmt(0x55, 1, 8000, 0) + data) << "MP3" << QList<qint64>{};
    QTest::newRow("no data chunk") << riff(fmt(1, 1, 22050, 8)) << "no data chunk" << QList<qint64>{};
    QTest::newRow("no fmt chunk") << riff(data) << "no fmt chunk" << QList<qint64>{};
    QTest::newRow("data cut short") << riff(fmt(1, 1, 22050, 8) + data).chopped(10) << "cut short" << QList<qint64>{};
    QTest::newRow("not riff") << QByteArray("ID3\x03\0\0\0\0\0\0", 10) << "not a WAV" << QList<qint64>{};
}

void TestRoverMedia::sounds()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, reason);
    QFETCH(QList<qint64>, format);
    const RoverSoundInfo info = roverSoundInfo(bytes);
    QVERIFY2(info.reason.contains(reason), qPrintable(info.reason));
    QCOMPARE(info.usable, reason.isEmpty());
    if (info.usable)
        QCOMPARE((QList<qint64>{info.channels, info.sampleRate, info.bitsPerSample, info.dataBytes}), format);
}

QTEST_GUILESS_MAIN(TestRoverMedia)
#include "test_rover_media.moc"
