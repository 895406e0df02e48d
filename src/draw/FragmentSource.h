#pragma once

#include "draw/PixelBlend.h"
#include "draw/TexturePool.h"

#include <cstdint>

// What a polygon puts on a pixel, premultiplied, given the interpolated 1/z,
// u/z and v/z at the pixel's centre.

// A polygon without texture: one colour, already shaded and made translucent.
struct SolidFragment {
    quint32 colour;
    quint32 fetch(double, double, double) const { return colour; }
};

// A textured polygon: the nearest texel to the perspective-correct (u,v),
// repeated outside 0..1, then shaded and made translucent (factors 0..255).
class TexturedFragment {
public:
    TexturedFragment(const PreparedTexture &texture, quint32 shade, quint32 opacity)
        : m_texels(texture.texels),
          m_stride(texture.stride),
          m_width(texture.width),
          m_height(texture.height),
          m_widthMask(isPowerOfTwo(texture.width) ? texture.width - 1 : -1),
          m_heightMask(isPowerOfTwo(texture.height) ? texture.height - 1 : -1),
          m_shade(shade),
          m_opacity(opacity)
    {
    }

    quint32 fetch(double invZ, double uOverZ, double vOverZ) const
    {
        const double z = 1.0 / invZ;
        const int64_t column = wrap(uOverZ * z * m_width, m_width, m_widthMask);
        const int64_t row = wrap(vOverZ * z * m_height, m_height, m_heightMask);
        quint32 texel = m_texels[row * m_stride + column];
        if (m_shade != 255)
            texel = PixelBlend::shade(texel, m_shade);
        if (m_opacity != 255)
            texel = PixelBlend::scale(texel, m_opacity);
        return texel;
    }

private:
    static bool isPowerOfTwo(int n) { return n > 0 && (n & (n - 1)) == 0; }

    // The texel index of a coordinate in texels, repeated over size. Far
    // repeats (and a coordinate that is not a number) are held to 2^20 so the
    // index stays an exact integer.
    static int64_t wrap(double texels, int size, int mask)
    {
        constexpr double repeats = double(1 << 20);
        const double limit = repeats * size;
        const double held = texels > -limit ? (texels < limit ? texels : limit) : -limit;
        const auto index = int64_t(held + limit);
        return mask >= 0 ? (index & mask) : index % size;
    }

    const quint32 *m_texels;
    qsizetype m_stride;
    int m_width;
    int m_height;
    int m_widthMask;
    int m_heightMask;
    quint32 m_shade;
    quint32 m_opacity;
};
