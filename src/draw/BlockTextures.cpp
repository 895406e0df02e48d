#include "draw/BlockTextures.h"

#include "rover/RoverMedia.h"

#include <QBuffer>
#include <QByteArray>
#include <QImageReader>

QImage roverTextureImage(QByteArrayView bytes)
{
    const RoverTextureInfo info = roverTextureInfo(bytes);
    if (info.status != RoverTextureInfo::Usable)
        return QImage();
    QByteArray data = bytes.toByteArray();
    QBuffer buffer(&data);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer, info.format == RoverTextureInfo::Gif ? "gif" : "jpeg");
    return reader.read(); // the first frame of an animation; null when Qt cannot decode it
}
