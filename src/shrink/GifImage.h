#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QRect>
#include <QRgb>
#include <QSize>
#include <QString>

// A GIF as its frames: colour indices with the table they name, placed on the
// logical screen, with the graphic control of each frame.

struct GifFrame {
    QRect rect;            // on the logical screen
    QList<QRgb> colours;   // the table the indices name: the frame's own or the global one
    QByteArray pixels;     // rect.width() × rect.height() indices, rows top to bottom
    int transparent = -1;  // the transparent index, -1 without one
    int disposal = 0;      // what follows the frame (giflib's DISPOSAL_*)
    int delay = 0;         // hundredths of a second
    bool ownTable = false; // a local colour table
    bool interlaced = false;

    QRgb colourAt(int x, int y) const; // 0 (transparent black) for the transparent index
};

struct GifImage {
    QSize screen;
    QList<QRgb> globalColours; // empty without a global table
    int background = 0;        // index into the global table
    int loopCount = -1;        // from a NETSCAPE2.0 extension; -1 without one
    QList<GifFrame> frames;
};

// Decodes every frame (interlaced ones into plain row order) through giflib.
// False with *error set when the GIF is broken, a frame lies outside the
// screen, a pixel names a colour its table lacks, or it is too large to rewrite.
bool decodeGif(QByteArrayView bytes, GifImage *image, QString *error);

// A GIF89a with only the global table (globalColours, 2 to 256 entries, a power
// of two), the loop, and for each frame its position, delay, disposal and
// transparent index; no interlacing, comments or other extensions. Every
// frame's indices name the global table. Empty with *error set on failure.
QByteArray encodeGif(const GifImage &image, QString *error);
