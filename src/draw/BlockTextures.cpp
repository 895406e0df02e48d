#include "draw/BlockTextures.h"

#include <QBuffer>
#include <QByteArray>
#include <QImageReader>

namespace {

// Rover's largest texture side, in pixels.
constexpr int largestSide = 256;

} // namespace

QImage roverTextureImage(QByteArrayView bytes)
{
    QByteArray data = bytes.toByteArray();
    QBuffer buffer(&data);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    reader.setDecideFormatFromContent(true);
    const QByteArray format = reader.format();
    if (format != "gif" && format != "jpeg")
        return QImage();
    const QSize size = reader.size();
    if (!size.isValid() || size.width() > largestSide || size.height() > largestSide)
        return QImage();
    QImage image = reader.read();
    if (image.width() > largestSide || image.height() > largestSide)
        return QImage();
    return image;
}
