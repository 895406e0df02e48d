#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

// The JPEG's own DCT coefficients written anew through libjpeg: Huffman tables
// computed for this image, no metadata markers (EXIF, ICC, comments,
// thumbnails), never arithmetic coding; baseline or progressive. The pixels
// cannot change, since the coefficients are copied as they are. Empty with
// *error set when libjpeg refuses the input.
QByteArray transcodeJpeg(QByteArrayView bytes, bool progressive, QString *error);

// The smaller of the baseline and the progressive rewrite; empty with *error
// set when neither works.
QByteArray smallestJpegRewrite(QByteArrayView bytes, QString *error);
