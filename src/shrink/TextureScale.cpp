#include "shrink/TextureScale.h"

#include "shrink/GifColours.h"
#include "shrink/GifImage.h"
#include "shrink/JpegImage.h"
#include "shrink/JpegTranscode.h"

using namespace Qt::StringLiterals;

namespace {

QSize fitted(QSize size, int maxSide)
{
    return size.scaled(QSize(maxSide, maxSide), Qt::KeepAspectRatio).expandedTo(QSize(1, 1));
}

ShrinkResult scaleJpeg(QByteArrayView bytes, int maxSide, int quality)
{
    QString error;
    JpegHeader header;
    if (!readJpegHeader(bytes, &header, &error))
        return ShrinkResult::kept(bytes, error);
    if (header.width <= maxSide && header.height <= maxSide)
        return ShrinkResult::kept(bytes, u"the JPEG already fits in %1×%1 pixels"_s.arg(maxSide));
    const QImage pixels = decodeJpegImage(bytes, &error);
    if (pixels.isNull())
        return ShrinkResult::kept(bytes, error);
    QImage scaled = pixels.scaled(fitted(pixels.size(), maxSide), Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    if (header.grey)
        scaled = scaled.convertToFormat(QImage::Format_Grayscale8);
    const QByteArray encoded = encodeJpegImage(scaled, quality, header.subsampling, &error);
    if (encoded.isEmpty())
        return ShrinkResult::kept(bytes, error);
    const QByteArray optimised = smallestJpegRewrite(encoded, &error);
    return ShrinkResult::replaced(bytes,
                                  optimised.isEmpty() || optimised.size() > encoded.size() ? encoded : optimised);
}

ShrinkResult scaleGif(QByteArrayView bytes, int maxSide)
{
    GifImage image;
    QString error;
    if (!decodeGif(bytes, &image, &error))
        return ShrinkResult::kept(bytes, error);
    if (image.screen.width() <= maxSide && image.screen.height() <= maxSide)
        return ShrinkResult::kept(bytes, u"the GIF already fits in %1×%1 pixels"_s.arg(maxSide));
    GifFrames frames = shownGifFrames(image);
    const QSize size = fitted(image.screen, maxSide);
    for (QImage &frame : frames.images) {
        // Scaled with premultiplied alpha, so that transparent pixels lend no colour to their neighbours.
        frame = frame.convertToFormat(QImage::Format_ARGB32_Premultiplied)
                    .scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    }
    const QByteArray output = quantiseGif(frames, 256, &error);
    if (output.isEmpty())
        return ShrinkResult::kept(bytes, error);
    return ShrinkResult::replaced(bytes, output);
}

} // namespace

ShrinkResult scaleTexture(QByteArrayView bytes, int maxSide, int jpegQuality)
{
    if (maxSide < 1)
        return ShrinkResult::kept(bytes, u"no size to scale to"_s);
    if (bytes.startsWith("GIF8"))
        return scaleGif(bytes, maxSide);
    if (bytes.startsWith("\xFF\xD8"))
        return scaleJpeg(bytes, maxSide, jpegQuality);
    return ShrinkResult::kept(bytes, u"neither a GIF nor a JPEG image"_s);
}
