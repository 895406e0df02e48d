#include "shrink/JpegShrink.h"

#include "rover/RoverMedia.h"

#include "shrink/JpegImage.h"
#include "shrink/JpegTranscode.h"

using namespace Qt::StringLiterals;

ShrinkResult optimizeJpeg(QByteArrayView bytes)
{
    QString error;
    const QImage pixels = decodeJpegImage(bytes, &error);
    if (pixels.isNull())
        return ShrinkResult::kept(bytes, error);
    const QByteArray output = smallestJpegRewrite(bytes, &error);
    if (output.isEmpty())
        return ShrinkResult::kept(bytes, error);
    // An arithmetic-coded JPEG, which Rover cannot read, is worth its rewrite even when it grows.
    const bool repaired = roverTextureInfo(bytes).status == RoverTextureInfo::NotGifOrJpeg;
    if (output.size() >= bytes.size() && !repaired)
        return ShrinkResult::kept(bytes, u"the JPEG is already as small as a lossless rewrite makes it"_s);
    const QImage rewritten = decodeJpegImage(output, &error);
    if (rewritten != pixels)
        return ShrinkResult::kept(bytes, u"the rewritten JPEG does not decode to the same pixels"_s);
    return ShrinkResult::replaced(bytes, output);
}

ShrinkResult reencodeJpeg(QByteArrayView bytes, int quality)
{
    QString error;
    JpegHeader header;
    if (!readJpegHeader(bytes, &header, &error))
        return ShrinkResult::kept(bytes, error);
    const QImage pixels = decodeJpegImage(bytes, &error);
    if (pixels.isNull())
        return ShrinkResult::kept(bytes, error);
    const QByteArray encoded = encodeJpegImage(pixels, quality, header.subsampling, &error);
    if (encoded.isEmpty())
        return ShrinkResult::kept(bytes, error);
    const QByteArray output = smallestJpegRewrite(encoded, &error);
    const QByteArray &best = output.isEmpty() || output.size() > encoded.size() ? encoded : output;
    if (best.size() >= bytes.size())
        return ShrinkResult::kept(bytes, u"at quality %1 the JPEG does not get smaller"_s.arg(quality));
    return ShrinkResult::replaced(bytes, best);
}
