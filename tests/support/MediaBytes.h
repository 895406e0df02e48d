#pragma once

#include <QByteArray>
#include <QList>

// The bytes of GIF, JPEG and WAV files built field by field, for the tests of
// what Rover's readers make of them. The image data is two bytes and a JPEG
// stops after its first scan: enough for readers that do not decode.

inline QByteArray le16(qint64 v)
{
    return QByteArray(1, char(v & 255)) + char(v >> 8 & 255);
}
inline QByteArray le32(qint64 v)
{
    return le16(v & 0xFFFF) + le16(v >> 16 & 0xFFFF);
}
inline QByteArray be16(qint64 v)
{
    return QByteArray(1, char(v >> 8 & 255)) + char(v & 255);
}

struct GifFrame {
    int left = 0, top = 0, width = 8, height = 8;
    bool localTable = false, transparent = false;
};

// A GIF with a NETSCAPE loop and a comment.
inline QByteArray gif(int width, int height, bool globalTable, const QList<GifFrame> &frames)
{
    QByteArray b = "GIF89a" + le16(width) + le16(height) + char(globalTable ? 0x80 : 0) + '\0' + '\0';
    if (globalTable)
        b += QByteArray(6, '\x10');
    b += QByteArray("\x21\xFF\x0BNETSCAPE2.0\x03\x01\0\0\0", 19) + QByteArray("\x21\xFE\x02hi\0", 6);
    for (const GifFrame &f : frames) {
        if (f.transparent)
            b += QByteArray("\x21\xF9\x04\x01\x0A\0\x01\0", 8);
        b += '\x2C' + le16(f.left) + le16(f.top) + le16(f.width) + le16(f.height) + char(f.localTable ? 0x80 : 0);
        if (f.localTable)
            b += QByteArray(6, '\x20');
        b += QByteArray("\x02\x02\x44\x01\0", 5);
    }
    return b + ';';
}

inline QByteArray jpegSegment(int marker, const QByteArray &body)
{
    return "\xFF" + QByteArray(1, char(marker)) + be16(body.size() + 2) + body;
}

// A JPEG header up to its first scan: quantisation table 0, Huffman tables
// 0/0 (DC and AC), a frame of the given kind and a scan over every component.
inline QByteArray jpeg(int sof, int precision, int width, int height, int components, bool huffman = true)
{
    QByteArray frame = char(precision) + be16(height) + be16(width) + char(components);
    QByteArray scan(1, char(components));
    for (int c = 1; c <= components; ++c) {
        frame += QByteArray(1, char(c)) + '\x11' + '\0';
        scan += QByteArray(1, char(c)) + '\0';
    }
    scan += QByteArray("\0\x3F\0", 3);
    const QByteArray table = QByteArray(1, '\x01') + QByteArray(15, '\0') + '\0';
    QByteArray b =
        "\xFF\xD8" + jpegSegment(0xE1, "Exif\0\0") + jpegSegment(0xDB, QByteArray(1, '\0') + QByteArray(64, '\x01'));
    if (huffman)
        b += jpegSegment(0xC4, '\x00' + table + '\x10' + table);
    return b + jpegSegment(sof, frame) + jpegSegment(0xDA, scan) + QByteArray("\x12\x34\xFF\x00\xFF\xD9", 6);
}

inline QByteArray riffChunk(const QByteArray &id, const QByteArray &body)
{
    return id + le32(body.size()) + body + (body.size() % 2 ? QByteArray(1, '\0') : QByteArray());
}

inline QByteArray wavFormat(int tag, int channels, int rate, int bits)
{
    return riffChunk("fmt ", le16(tag) + le16(channels) + le32(rate) + le32(qint64(rate) * channels * bits / 8)
                                 + le16(channels * bits / 8) + le16(bits));
}

inline QByteArray riffWave(const QByteArray &chunks)
{
    return "RIFF" + le32(chunks.size() + 4) + "WAVE" + chunks;
}
