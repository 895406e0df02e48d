#pragma once

#include "shrink/ShrinkResult.h"

// Lossless: the GIF written again with one global colour table cut to the
// colours its frames use (local tables merged into it), no interlacing, no
// comment or application extensions but the NETSCAPE2.0 loop; frames, their
// positions, delays, disposal and transparency kept. Kept only when it decodes
// to the same colours and transparency in every frame, and when it is smaller
// or turns a GIF Rover refuses into one it reads. Left as it is when the frames
// together use more than 256 colours.
ShrinkResult optimizeGif(QByteArrayView bytes);
