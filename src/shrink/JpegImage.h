#pragma once

#include <QByteArrayView>
#include <QImage>
#include <QString>

// JPEG to pixels and back through TurboJPEG, with the accurate DCT both ways
// so that two decodings of the same coefficients give the same pixels.

struct JpegHeader {
    int width = 0;
    int height = 0;
    int subsampling = -1; // TurboJPEG's TJSAMP_*, -1 when unknown
    bool grey = false;
    bool fourChannel = false; // CMYK or YCCK
};

// The header, or false with *error set when the bytes are no JPEG TurboJPEG reads.
bool readJpegHeader(QByteArrayView bytes, JpegHeader *header, QString *error);

// RGB888 pixels (Grayscale8 for a greyscale JPEG), or a null image with
// *error set: broken data (a warning counts), four channels, or more pixels
// than a texture rewrite handles.
QImage decodeJpegImage(QByteArrayView bytes, QString *error);

// A baseline JPEG of the image at the given quality (1-100); a greyscale image
// gives a greyscale JPEG. Empty with *error set on failure.
QByteArray encodeJpegImage(const QImage &image, int quality, int subsampling, QString *error);
