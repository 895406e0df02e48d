#pragma once

#include <QtGlobal>

// Operations on premultiplied 0xAARRGGBB pixels, rounded so that a factor of
// 255 keeps a pixel and a fully opaque pixel stays exactly opaque.
namespace PixelBlend {

// Every channel times factor/255 (factor 0..255).
inline quint32 scale(quint32 pixel, quint32 factor)
{
    quint32 redBlue = (pixel & 0xff00ffu) * factor;
    redBlue = ((redBlue + ((redBlue >> 8) & 0xff00ffu) + 0x800080u) >> 8) & 0xff00ffu;
    quint32 alphaGreen = ((pixel >> 8) & 0xff00ffu) * factor;
    alphaGreen = (alphaGreen + ((alphaGreen >> 8) & 0xff00ffu) + 0x800080u) & 0xff00ff00u;
    return alphaGreen | redBlue;
}

// The colour channels times factor/255, alpha kept: a shade never changes coverage.
inline quint32 shade(quint32 pixel, quint32 factor)
{
    return (scale(pixel, factor) & 0x00ffffffu) | (pixel & 0xff000000u);
}

inline quint32 alpha(quint32 pixel)
{
    return pixel >> 24;
}

// front laid on behind: behind shows through the part front leaves
// uncovered. Drawing front to back lays what is there on the new pixel;
// drawing back to front lays the new pixel on what is there.
inline quint32 layOn(quint32 front, quint32 behind)
{
    return front + scale(behind, 255u - alpha(front));
}

} // namespace PixelBlend
