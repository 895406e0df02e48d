#pragma once

#include "shrink/GifImage.h"
#include "shrink/ShrinkResult.h"

#include <QImage>
#include <QList>

// Full-screen frames (alpha below one half is transparent) as a GIF with one
// palette of at most `colours` colours that libimagequant chooses for all
// frames together. A frame gets a transparent index when it has transparent
// pixels or when `transparent` says so (Rover draws a texture with a
// transparent colour from both sides). Empty with *error set on failure.
struct GifFrames {
    QList<QImage> images;
    QList<int> delays;       // hundredths of a second
    QList<bool> transparent; // a transparent index even without transparent pixels
    int loopCount = -1;
};
QByteArray quantiseGif(const GifFrames &frames, int colours, QString *error);

// Lossy: the GIF's frames as shown, with at most `colours` colours (2-256).
// Kept when the result is not smaller.
ShrinkResult reduceGifColours(QByteArrayView bytes, int colours);

// The frames of a decoded GIF as shown, with their delays and transparency.
GifFrames shownGifFrames(const GifImage &image);
