#include "draw/TexturePool.h"

namespace {

std::unique_ptr<PreparedTexture> prepare(const QImage &source)
{
    auto prepared = std::make_unique<PreparedTexture>();
    prepared->image = source.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    const QImage &image = prepared->image;
    prepared->texels = reinterpret_cast<const quint32 *>(image.constBits());
    prepared->width = image.width();
    prepared->height = image.height();
    prepared->stride = image.bytesPerLine() / 4;
    if (image.hasAlphaChannel()) {
        for (int y = 0; y < image.height() && !prepared->hasPartialAlpha; ++y) {
            const quint32 *row = prepared->texels + y * prepared->stride;
            for (int x = 0; x < image.width(); ++x) {
                const quint32 alpha = row[x] >> 24;
                if (alpha != 0 && alpha != 255) {
                    prepared->hasPartialAlpha = true;
                    break;
                }
            }
        }
    }
    return prepared;
}

} // namespace

void TexturePool::startDrawing()
{
    for (auto &entry : m_entries)
        entry.second.used = false;
}

void TexturePool::finishDrawing()
{
    std::erase_if(m_entries, [](const auto &entry) { return !entry.second.used; });
}

const PreparedTexture *TexturePool::find(const QImage &texture)
{
    if (texture.isNull())
        return nullptr;
    Entry &entry = m_entries[texture.cacheKey()];
    if (!entry.texture) {
        entry.texture = prepare(texture);
        if (entry.texture->image.isNull()) // out of memory: drawn as the colour
            entry.texture.reset();
    }
    entry.used = true;
    return entry.texture.get();
}
