#include "shrink/JpegImage.h"

#include "shrink/ShrinkResult.h"

#include <turbojpeg.h>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

struct HandleCloser {
    void operator()(void *handle) const { tjDestroy(handle); }
};
using Handle = std::unique_ptr<void, HandleCloser>;

QString lastError(tjhandle handle)
{
    return QString::fromLocal8Bit(tjGetErrorStr2(handle));
}

const unsigned char *data(QByteArrayView bytes)
{
    return reinterpret_cast<const unsigned char *>(bytes.data());
}

} // namespace

bool readJpegHeader(QByteArrayView bytes, JpegHeader *header, QString *error)
{
    const Handle handle(tjInitDecompress());
    int width = 0, height = 0, subsampling = -1, colourspace = -1;
    if (!handle || bytes.isEmpty()
        || tjDecompressHeader3(handle.get(), data(bytes), static_cast<unsigned long>(bytes.size()), &width, &height,
                               &subsampling, &colourspace)
               != 0) {
        *error = handle ? u"the JPEG header cannot be read: %1"_s.arg(lastError(handle.get()))
                        : u"the JPEG decoder cannot start"_s;
        return false;
    }
    header->width = width;
    header->height = height;
    header->subsampling = subsampling;
    header->grey = colourspace == TJCS_GRAY;
    header->fourChannel = colourspace == TJCS_CMYK || colourspace == TJCS_YCCK;
    return true;
}

QImage decodeJpegImage(QByteArrayView bytes, QString *error)
{
    JpegHeader header;
    if (!readJpegHeader(bytes, &header, error))
        return {};
    if (header.fourChannel) {
        *error = u"a four-channel (CMYK or YCCK) JPEG"_s;
        return {};
    }
    if (qint64(header.width) * header.height > maxRewritePixels) {
        *error = u"too many pixels to rewrite (%1×%2)"_s.arg(header.width).arg(header.height);
        return {};
    }
    QImage image(header.width, header.height, header.grey ? QImage::Format_Grayscale8 : QImage::Format_RGB888);
    const Handle handle(tjInitDecompress());
    if (image.isNull() || !handle) {
        *error = u"not enough memory to decode the JPEG"_s;
        return {};
    }
    // A warning (damaged or truncated data) fails too: the rewrite is only
    // judged on images that decode cleanly.
    if (tjDecompress2(handle.get(), data(bytes), static_cast<unsigned long>(bytes.size()), image.bits(), header.width,
                      int(image.bytesPerLine()), header.height, header.grey ? TJPF_GRAY : TJPF_RGB,
                      TJFLAG_ACCURATEDCT | TJFLAG_STOPONWARNING)
        != 0) {
        *error = u"the JPEG does not decode cleanly: %1"_s.arg(lastError(handle.get()));
        return {};
    }
    return image;
}

QByteArray encodeJpegImage(const QImage &image, int quality, int subsampling, QString *error)
{
    const bool grey = image.format() == QImage::Format_Grayscale8;
    const QImage pixels = grey ? image : image.convertToFormat(QImage::Format_RGB888);
    const Handle handle(tjInitCompress());
    if (pixels.isNull() || !handle) {
        *error = u"the JPEG encoder cannot start"_s;
        return {};
    }
    if (grey)
        subsampling = TJSAMP_GRAY;
    else if (subsampling < 0 || subsampling == TJSAMP_GRAY)
        subsampling = TJSAMP_420;
    unsigned char *output = nullptr;
    unsigned long size = 0;
    const int status = tjCompress2(handle.get(), pixels.constBits(), pixels.width(), int(pixels.bytesPerLine()),
                                   pixels.height(), grey ? TJPF_GRAY : TJPF_RGB, &output, &size, subsampling,
                                   qBound(1, quality, 100), TJFLAG_ACCURATEDCT);
    QByteArray bytes;
    if (status == 0)
        bytes = QByteArray(reinterpret_cast<const char *>(output), qsizetype(size));
    else
        *error = u"the JPEG cannot be encoded: %1"_s.arg(lastError(handle.get()));
    tjFree(output);
    return bytes;
}
