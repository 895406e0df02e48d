#pragma once

#include "draw/BlockScene.h"
#include "draw/Camera.h"
#include "draw/Rasterizer.h"

#include <QColor>
#include <QImage>
#include <QSize>

// The picture of a block preview, frame after frame: a ground grid for scale
// (y = 0, a line every 32 texels across three blocks, the block's own square
// stronger, N and E at the north and east ends of its middle lines) under the
// block, then the block as its scene gives it, lit, then the outline of the
// block's 256-texel cube over it, faint, so that the block shows through.
// The rasterizer and its converted textures are kept between frames.
class PreviewPainter {
public:
    PreviewPainter();

    // `pixelRatio` scales the lines and letters for screens with dense pixels.
    // The frame stays the painter's: it is drawn again in place by the next paint.
    const QImage &paint(const BlockScene &scene, const Camera &camera, QSize size, DrawOrder order,
                        const QColor &background, qreal pixelRatio = 1.0);

    // The last frame painted.
    const QImage &frame() const { return m_picture; }

private:
    Rasterizer m_rasterizer;
    QImage m_picture;
};
