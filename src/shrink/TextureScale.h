#pragma once

#include "shrink/ShrinkResult.h"

// Lossy: a texture wider or taller than maxSide scaled down to fit, its shape
// kept, in its own format: a JPEG encoded again at jpegQuality (then rewritten
// with optimal Huffman tables), a GIF composed frame by frame, scaled and
// quantised again to at most 256 colours with its transparency. Kept when it
// already fits.
ShrinkResult scaleTexture(QByteArrayView bytes, int maxSide = 256, int jpegQuality = 85);
