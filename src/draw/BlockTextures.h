#pragma once

#include <QByteArrayView>
#include <QImage>

// The picture Rover draws a part's texture with, from the texture file's
// bytes: the first frame of a GIF (its transparent colour with alpha 0) or a
// JPEG. A null image when Rover has no texture for the part, which it then
// draws untextured: whatever Rover's own readers refuse (roverTextureInfo:
// neither GIF nor JPEG by content, wider or taller than 256 pixels, ...), or
// what does not decode.
QImage roverTextureImage(QByteArrayView bytes);
