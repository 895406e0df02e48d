#pragma once

// Textures and sounds as the tools authors use write them, for the Shrink
// tests: JPEGs with metadata (and from libjpeg directly: arithmetic-coded,
// CMYK), GIFs through giflib with local tables, interlacing, transparency and
// a loop, WAVs of a tone; and the frames Qt's own readers show.

#include <QBuffer>
#include <QDataStream>
#include <QImage>
#include <QImageReader>
#include <QRandomGenerator>
#include <QtEndian>

#include <cmath>
#include <cstdio> // jpeglib.h needs FILE
#include <gif_lib.h>
#include <jpeglib.h>

inline QImage photo(int width, int height, QImage::Format format = QImage::Format_RGB32)
{
    QImage image(width, height, QImage::Format_RGB32);
    QRandomGenerator random(7);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            image.setPixel(x, y, qRgb(x * 255 / width, y * 255 / height, int(random.bounded(40)) + 100));
    return image.convertToFormat(format);
}

// A JPEG as Qt writes it (standard Huffman tables), with EXIF, ICC and comment markers after SOI.
inline QByteArray jpeg(const QImage &image, int quality = 90)
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

// A 32×32 JPEG that libjpeg writes from samples of the given colour space, arithmetic-coded when asked.
inline QByteArray libjpeg(J_COLOR_SPACE space, int components, bool arithmeticCoding)
{
    jpeg_compress_struct out{};
    jpeg_error_mgr errors{};
    out.err = jpeg_std_error(&errors);
    jpeg_create_compress(&out);
    uchar *buffer = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&out, &buffer, &size);
    out.image_width = out.image_height = 32;
    out.input_components = components;
    out.in_color_space = space;
    jpeg_set_defaults(&out);
    out.arith_code = arithmeticCoding;
    jpeg_start_compress(&out, TRUE);
    for (QByteArray row(32 * components, '\0'); out.next_scanline < 32;) {
        for (int i = 0; i < row.size(); ++i)
            row[i] = char(i * 7 + int(out.next_scanline) * 3);
        JSAMPROW line = reinterpret_cast<JSAMPROW>(row.data());
        jpeg_write_scanlines(&out, &line, 1);
    }
    jpeg_finish_compress(&out);
    jpeg_destroy_compress(&out);
    const QByteArray bytes(reinterpret_cast<char *>(buffer), qsizetype(size));
    std::free(buffer);
    return bytes;
}

struct Frame {
    QRect rect;
    int table = 0; // 0: the global table; n: a local table of n colours
    int transparent = -1, delay = 0;
    bool interlaced = false;
    bool noisy = false; // every pixel a scattered index out of 256
};

// A GIF through giflib with a 256-colour global table and a comment; frame f's
// pixel (x, y) is index (x + 3y + f) % 4 (noisy: scattered over all 256); local
// tables hold colours of their own.
inline QByteArray gif(QSize screen, const QList<Frame> &frames, int loop = -1)
{
    QByteArray out;
    int error = 0;
    const auto write = [](GifFileType *g, const GifByteType *b, int n) {
        static_cast<QByteArray *>(g->UserData)->append(reinterpret_cast<const char *>(b), n);
        return n;
    };
    GifFileType *file = EGifOpen(&out, write, &error);
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
    const GifByteType count[] = {1, GifByteType(loop), 0};
    if (loop >= 0 && EGifPutExtensionLeader(file, APPLICATION_EXT_FUNC_CODE) == GIF_OK
        && EGifPutExtensionBlock(file, 11, "NETSCAPE2.0") == GIF_OK && EGifPutExtensionBlock(file, 3, count) == GIF_OK)
        EGifPutExtensionTrailer(file);
    for (qsizetype f = 0; f < frames.size(); ++f) {
        const Frame &frame = frames[f];
        GifByteType extension[4];
        const GraphicsControlBlock control{DISPOSE_DO_NOT, false, frame.delay, frame.transparent};
        EGifGCBToExtension(&control, extension);
        EGifPutExtension(file, GRAPHICS_EXT_FUNC_CODE, 4, extension);
        ColorMapObject *local = frame.table ? table(frame.table, int(f) + 2) : nullptr;
        const QRect r = frame.rect;
        EGifPutImageDesc(file, r.x(), r.y(), r.width(), r.height(), frame.interlaced, local);
        GifFreeMapObject(local);
        static constexpr int start[] = {0, 4, 2, 1}, step[] = {8, 8, 4, 2};
        for (int pass = 0; pass < (frame.interlaced ? 4 : 1); ++pass) {
            for (int y = frame.interlaced ? start[pass] : 0; y < r.height(); y += frame.interlaced ? step[pass] : 1) {
                QByteArray line(r.width(), '\0');
                for (int x = 0; x < r.width(); ++x)
                    line[x] = char(frame.noisy ? (x / 8 * 37 + int(quint32(x * y) * 2654435761U >> 13) % 40) % 256
                                               : (x + 3 * y + f) % 4);
                EGifPutLine(file, reinterpret_cast<GifPixelType *>(line.data()), r.width());
            }
        }
    }
    EGifCloseFile(file, &error);
    GifFreeMapObject(global);
    return out;
}

// Every frame as Qt's own reader shows it with its delay, and the loop count last.
inline QList<std::pair<QImage, int>> shown(const QByteArray &bytes)
{
    QBuffer buffer;
    buffer.setData(bytes);
    QImageReader reader(&buffer);
    QList<std::pair<QImage, int>> frames;
    for (QImage image; reader.read(&image);)
        frames.append({image.convertToFormat(QImage::Format_ARGB32), reader.nextImageDelay()});
    frames.append({QImage(), reader.loopCount()});
    return frames;
}

// A 1 kHz tone at half amplitude, 16-bit, with white noise of up to `hiss` added
// (recordings do not pack as well as a pure tone).
inline QByteArray wav(int tag, int channels, int rate, double seconds, int hiss = 0)
{
    QRandomGenerator random(5);
    QByteArray fmt, data, riff;
    QDataStream format(&fmt, QIODevice::WriteOnly), samples(&data, QIODevice::WriteOnly);
    format.setByteOrder(QDataStream::LittleEndian);
    samples.setByteOrder(QDataStream::LittleEndian);
    format << quint16(tag) << quint16(channels) << quint32(rate) << quint32(rate * channels * 2)
           << quint16(channels * 2) << quint16(16);
    if (tag == 0xFFFE) // size 22, valid bits, channel mask, PCM sub-format
        fmt += QByteArray("\x16\0\x10\0\x03\0\0\0\x01\0\0\0\0\0\x10\0\x80\0\0\xAA\0\x38\x9B\x71", 24);
    for (int i = 0; i < int(rate * seconds) * channels; ++i)
        samples << qint16(std::lround(16383 * std::sin(2 * M_PI * 1000 * (i / channels) / rate))
                          + (hiss ? int(random.bounded(hiss)) : 0));
    const auto chunk = [](const QByteArray &id, const QByteArray &body) {
        QByteArray size(4, '\0');
        qToLittleEndian<quint32>(quint32(body.size()), size.data());
        return id + size + body;
    };
    return chunk("RIFF", "WAVE" + chunk("fmt ", fmt) + chunk("LIST", "INFOISFT") + chunk("data", data));
}
