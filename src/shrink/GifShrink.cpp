#include "shrink/GifShrink.h"

#include "rover/RoverMedia.h"
#include "shrink/GifImage.h"

#include <QHash>

#include <gif_lib.h>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

// A colour for the transparent index that no visible pixel has, so that a
// reader keying transparency by colour cannot hide a visible pixel.
QRgb unusedColour(QRgb preferred, const QHash<QRgb, int> &used)
{
    if (!used.contains(preferred))
        return preferred;
    for (uint candidate = 0xFF00FF;; candidate = (candidate + 0x010203) & 0xFFFFFF) {
        if (!used.contains(qRgb(qRed(candidate), qGreen(candidate), qBlue(candidate))))
            return qRgb(qRed(candidate), qGreen(candidate), qBlue(candidate));
    }
}

bool usesBackground(const GifImage &image)
{
    return std::any_of(image.frames.cbegin(), image.frames.cend(),
                       [](const GifFrame &frame) { return frame.disposal == DISPOSE_BACKGROUND; });
}

// One global table for all frames, or false when they need more than 256 colours.
bool mergeTables(const GifImage &input, GifImage *output)
{
    QHash<QRgb, int> index;
    QList<QRgb> palette;
    const auto add = [&](QRgb colour) {
        if (!index.contains(colour)) {
            index.insert(colour, int(palette.size()));
            palette.append(colour);
        }
    };
    const bool background = usesBackground(input) && input.background < input.globalColours.size();
    if (background)
        add(input.globalColours[input.background]);
    int transparentSlot = -1;
    QRgb transparentColour = qRgb(255, 0, 255);
    for (const GifFrame &frame : input.frames) {
        QList<bool> seen(256, false);
        for (char pixel : frame.pixels)
            seen[uchar(pixel)] = true;
        for (int i = 0; i < frame.colours.size(); ++i) {
            if (seen[i] && i != frame.transparent)
                add(frame.colours[i]);
        }
        if (frame.transparent >= 0 && transparentSlot < 0) {
            transparentSlot = 0; // placed after the visible colours
            if (frame.transparent < frame.colours.size())
                transparentColour = frame.colours[frame.transparent];
        }
    }
    if (transparentSlot >= 0) {
        transparentSlot = int(palette.size());
        palette.append(unusedColour(transparentColour, index));
    }
    if (palette.size() > 256)
        return false;
    int size = 2;
    while (size < palette.size())
        size *= 2;
    *output = input;
    output->globalColours = palette;
    output->globalColours.resize(size, qRgb(0, 0, 0));
    output->background = 0; // the background colour, when a disposal shows it, was added first
    for (GifFrame &frame : output->frames) {
        QList<uchar> map(256, 0);
        for (int i = 0; i < frame.colours.size(); ++i)
            map[i] = uchar(index.value(frame.colours[i], 0));
        if (frame.transparent >= 0 && frame.transparent < 256)
            map[frame.transparent] = uchar(transparentSlot);
        for (char &pixel : frame.pixels)
            pixel = char(map[uchar(pixel)]);
        frame.transparent = frame.transparent >= 0 ? transparentSlot : -1;
        frame.colours = output->globalColours;
        frame.ownTable = frame.interlaced = false;
    }
    return true;
}

// Whether a viewer shows the same: the same loop, and every frame at the same
// place with the same delay, disposal, transparency and colour at each pixel.
bool samePictures(const GifImage &a, const GifImage &b)
{
    if (a.screen != b.screen || a.loopCount != b.loopCount || a.frames.size() != b.frames.size())
        return false;
    if (usesBackground(a) && a.globalColours.value(a.background, 0) != b.globalColours.value(b.background, 0))
        return false;
    for (qsizetype f = 0; f < a.frames.size(); ++f) {
        const GifFrame &x = a.frames[f], &y = b.frames[f];
        if (x.rect != y.rect || x.delay != y.delay || x.disposal != y.disposal
            || (x.transparent >= 0) != (y.transparent >= 0))
            return false;
        for (int row = 0; row < x.rect.height(); ++row) {
            for (int column = 0; column < x.rect.width(); ++column) {
                if (x.colourAt(column, row) != y.colourAt(column, row))
                    return false;
            }
        }
    }
    return true;
}

} // namespace

ShrinkResult optimizeGif(QByteArrayView bytes)
{
    GifImage input;
    QString error;
    if (!decodeGif(bytes, &input, &error))
        return ShrinkResult::kept(bytes, error);
    GifImage merged;
    if (!mergeTables(input, &merged))
        return ShrinkResult::kept(bytes, u"the frames together use more than 256 colours"_s);
    const QByteArray output = encodeGif(merged, &error);
    if (output.isEmpty())
        return ShrinkResult::kept(bytes, error);
    GifImage check;
    if (!decodeGif(output, &check, &error) || !samePictures(input, check))
        return ShrinkResult::kept(bytes, u"the rewritten GIF does not show the same pictures"_s);
    const bool repaired = roverTextureInfo(bytes).status == RoverTextureInfo::NotGifOrJpeg
                          && roverTextureInfo(output).status != RoverTextureInfo::NotGifOrJpeg;
    if (output.size() >= bytes.size() && !repaired)
        return ShrinkResult::kept(bytes, u"the GIF is already as small as a lossless rewrite makes it"_s);
    return ShrinkResult::replaced(bytes, output);
}
