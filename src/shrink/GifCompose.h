#pragma once

#include "shrink/GifImage.h"

#include <QImage>
#include <QList>

// The frames as a viewer shows them: each drawn over what the disposal of the
// frame before left on the screen, as screen-sized ARGB32 images, transparent
// where nothing is drawn. Empty when all frames together would hold more
// pixels than a rewrite handles.
QList<QImage> composeGifFrames(const GifImage &image);
