#include "shrink/GifCompose.h"

#include "shrink/ShrinkResult.h"

#include <gif_lib.h>

QList<QImage> composeGifFrames(const GifImage &image)
{
    QList<QImage> composed;
    if (qint64(image.screen.width()) * image.screen.height() * image.frames.size() > maxRewritePixels)
        return composed;
    QImage screen(image.screen, QImage::Format_ARGB32);
    screen.fill(Qt::transparent);
    for (const GifFrame &frame : image.frames) {
        const QImage before = frame.disposal == DISPOSE_PREVIOUS ? screen.copy() : QImage();
        for (int y = 0; y < frame.rect.height(); ++y) {
            auto *line = reinterpret_cast<QRgb *>(screen.scanLine(frame.rect.top() + y)) + frame.rect.left();
            for (int x = 0; x < frame.rect.width(); ++x) {
                if (const QRgb colour = frame.colourAt(x, y))
                    line[x] = colour;
            }
        }
        composed.append(screen.copy());
        if (frame.disposal == DISPOSE_BACKGROUND) {
            for (int y = frame.rect.top(); y <= frame.rect.bottom(); ++y)
                std::fill_n(reinterpret_cast<QRgb *>(screen.scanLine(y)) + frame.rect.left(), frame.rect.width(), 0u);
        } else if (frame.disposal == DISPOSE_PREVIOUS) {
            screen = before;
        }
    }
    return composed;
}
