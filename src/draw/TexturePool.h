#pragma once

#include <QImage>

#include <memory>
#include <unordered_map>

// A texture in the one pixel format the rasterizer reads (premultiplied
// 0xAARRGGBB), with what its alpha holds.
struct PreparedTexture {
    QImage image;
    const quint32 *texels = nullptr;
    int width = 0;
    int height = 0;
    qsizetype stride = 0; // texels per row
    // Some texel neither transparent nor opaque: drawn blended, like a translucent part.
    bool hasPartialAlpha = false;
};

// The textures of the last drawing, converted once and kept while drawings
// use them (a block's parts share few images, a turning preview draws the
// same ones every frame). Entries are found by the image's cache key, which
// changes whenever the image does.
class TexturePool {
public:
    // Marks the start of a drawing: what the drawing does not ask for again is
    // dropped at finishDrawing().
    void startDrawing();
    void finishDrawing();
    // Null for a null image. The pointer stays valid until finishDrawing().
    const PreparedTexture *find(const QImage &texture);

private:
    struct Entry {
        std::unique_ptr<PreparedTexture> texture;
        bool used = false;
    };
    std::unordered_map<qint64, Entry> m_entries;
};
