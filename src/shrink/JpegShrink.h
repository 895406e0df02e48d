#pragma once

#include "shrink/ShrinkResult.h"

// Lossless: the smaller of a baseline and a progressive rewrite with optimal
// Huffman tables and no metadata markers, kept only when it is smaller and
// decodes to exactly the input's pixels; an arithmetic-coded JPEG, which Rover
// cannot read, is rewritten even when it grows. Four-channel JPEGs are left as
// they are.
ShrinkResult optimizeJpeg(QByteArrayView bytes);

// Lossy: decoded and encoded again at the given quality (1-100), keeping a
// greyscale JPEG grey, then rewritten losslessly as above. Kept when the
// result is not smaller.
ShrinkResult reencodeJpeg(QByteArrayView bytes, int quality);
