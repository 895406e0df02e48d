#include "shrink/GifColours.h"

#include "shrink/GifCompose.h"
#include "shrink/GifImage.h"

#include <gif_lib.h>
#include <libimagequant.h>

#include <algorithm>
#include <memory>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

template <typename T, void (*destroy)(T *)>
struct Destroyer {
    void operator()(T *object) const { destroy(object); }
};
using Attributes = std::unique_ptr<liq_attr, Destroyer<liq_attr, liq_attr_destroy>>;
using Histogram = std::unique_ptr<liq_histogram, Destroyer<liq_histogram, liq_histogram_destroy>>;
using Image = std::unique_ptr<liq_image, Destroyer<liq_image, liq_image_destroy>>;
using QuantisedColours = std::unique_ptr<liq_result, Destroyer<liq_result, liq_result_destroy>>;

// RGBA bytes with every pixel either opaque or fully transparent, as GIF has it.
QImage binaryAlpha(const QImage &image)
{
    QImage rgba = image.convertToFormat(QImage::Format_RGBA8888);
    for (int y = 0; y < rgba.height(); ++y) {
        uchar *pixel = rgba.scanLine(y);
        for (int x = 0; x < rgba.width(); ++x, pixel += 4) {
            if (pixel[3] < 128)
                pixel[0] = pixel[1] = pixel[2] = pixel[3] = 0;
            else
                pixel[3] = 255;
        }
    }
    return rgba;
}

} // namespace

GifFrames shownGifFrames(const GifImage &image)
{
    GifFrames frames;
    frames.images = composeGifFrames(image);
    frames.loopCount = image.loopCount;
    for (const GifFrame &frame : image.frames) {
        frames.delays.append(frame.delay);
        frames.transparent.append(frame.transparent >= 0);
    }
    return frames;
}

QByteArray quantiseGif(const GifFrames &frames, int colours, QString *error)
{
    if (frames.images.isEmpty()) {
        *error = u"too many pixels to rewrite"_s;
        return {};
    }
    const QSize size = frames.images.first().size();
    // Above 2048×2048 pixels libimagequant 2.17 works row by row and leaks its
    // row buffers; a texture never needs that many (Rover's limit is 256×256).
    if (qint64(size.width()) * size.height() > 2048 * 2048) {
        *error = u"too many pixels to reduce the colours of (%1×%2)"_s.arg(size.width()).arg(size.height());
        return {};
    }
    const Attributes attributes(liq_attr_create());
    const Histogram histogram(attributes ? liq_histogram_create(attributes.get()) : nullptr);
    // A transparent index that the quantiser does not choose is added after its colours.
    const bool transparent =
        std::find(frames.transparent.cbegin(), frames.transparent.cend(), true) != frames.transparent.cend();
    if (!histogram || liq_set_max_colors(attributes.get(), qBound(2, colours, transparent ? 255 : 256)) != LIQ_OK) {
        *error = u"the colour quantiser cannot start"_s;
        return {};
    }
    QList<QImage> pixels;
    std::vector<Image> images;
    for (const QImage &frame : frames.images) {
        pixels.append(binaryAlpha(frame.size() == size ? frame : frame.scaled(size)));
        images.emplace_back(
            liq_image_create_rgba(attributes.get(), pixels.last().constBits(), size.width(), size.height(), 0));
        if (!images.back()
            || liq_histogram_add_image(histogram.get(), attributes.get(), images.back().get()) != LIQ_OK) {
            *error = u"the colour quantiser cannot read a frame"_s;
            return {};
        }
    }
    liq_result *quantised = nullptr;
    if (liq_histogram_quantize(histogram.get(), attributes.get(), &quantised) != LIQ_OK) {
        *error = u"the colours cannot be reduced"_s;
        return {};
    }
    const QuantisedColours result(quantised);
    GifImage gif;
    gif.screen = size;
    gif.loopCount = frames.loopCount;
    for (qsizetype i = 0; i < qsizetype(images.size()); ++i) {
        GifFrame frame;
        frame.rect = QRect(QPoint(), size);
        frame.pixels = QByteArray(qsizetype(size.width()) * size.height(), '\0');
        if (liq_write_remapped_image(result.get(), images[size_t(i)].get(), frame.pixels.data(),
                                     size_t(frame.pixels.size()))
            != LIQ_OK) {
            *error = u"the colours cannot be reduced"_s;
            return {};
        }
        frame.delay = frames.delays.value(i);
        frame.transparent = frames.transparent.value(i) ? 0 : -1; // the index is set below
        gif.frames.append(frame);
    }
    // The palette is final only after remapping. Transparent entries become one.
    const liq_palette *palette = liq_get_palette(result.get());
    QList<uchar> map(256, 0);
    int transparentIndex = -1;
    for (uint i = 0; i < palette->count; ++i) {
        const liq_color &c = palette->entries[i];
        if (c.a < 128 && transparentIndex >= 0) {
            map[i] = uchar(transparentIndex);
            continue;
        }
        if (c.a < 128)
            transparentIndex = int(gif.globalColours.size());
        map[i] = uchar(gif.globalColours.size());
        gif.globalColours.append(qRgb(c.r, c.g, c.b));
    }
    if (transparentIndex < 0 && transparent) {
        transparentIndex = int(gif.globalColours.size());
        gif.globalColours.append(qRgb(255, 0, 255));
    }
    int tableSize = 2;
    while (tableSize < gif.globalColours.size())
        tableSize *= 2;
    gif.globalColours.resize(tableSize, qRgb(0, 0, 0));
    const bool animated = gif.frames.size() > 1;
    for (GifFrame &frame : gif.frames) {
        bool hasTransparent = false;
        for (char &pixel : frame.pixels) {
            pixel = char(map[uchar(pixel)]);
            hasTransparent = hasTransparent || uchar(pixel) == transparentIndex;
        }
        frame.transparent = frame.transparent >= 0 || hasTransparent ? transparentIndex : -1;
        frame.colours = gif.globalColours;
        // Each frame is the whole picture: the one before must not show through.
        frame.disposal = animated ? (transparentIndex >= 0 ? DISPOSE_BACKGROUND : DISPOSE_DO_NOT) : 0;
    }
    return encodeGif(gif, error);
}

ShrinkResult reduceGifColours(QByteArrayView bytes, int colours)
{
    GifImage image;
    QString error;
    if (!decodeGif(bytes, &image, &error))
        return ShrinkResult::kept(bytes, error);
    const QByteArray output = quantiseGif(shownGifFrames(image), colours, &error);
    if (output.isEmpty())
        return ShrinkResult::kept(bytes, error);
    if (output.size() >= bytes.size())
        return ShrinkResult::kept(bytes, u"with %1 colours the GIF does not get smaller"_s.arg(colours));
    return ShrinkResult::replaced(bytes, output);
}
