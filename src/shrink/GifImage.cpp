#include "shrink/GifImage.h"

#include "shrink/GifLzw.h"
#include "shrink/ShrinkResult.h"

#include <gif_lib.h>

#include <algorithm>
#include <cstring>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

struct Source {
    QByteArrayView bytes;
    qsizetype pos = 0;
};

int readSource(GifFileType *gif, GifByteType *buffer, int count)
{
    auto *source = static_cast<Source *>(gif->UserData);
    const qsizetype n = std::clamp<qsizetype>(count, 0, source->bytes.size() - source->pos);
    std::memcpy(buffer, source->bytes.data() + source->pos, size_t(n));
    source->pos += n;
    return int(n);
}

int writeTarget(GifFileType *gif, const GifByteType *buffer, int count)
{
    static_cast<QByteArray *>(gif->UserData)->append(reinterpret_cast<const char *>(buffer), count);
    return count;
}

// The frame's packed codes in sub-blocks of at most 255 bytes, after the
// minimum code size that giflib writes with the image descriptor.
bool putCodes(GifFileType *gif, const QByteArray &codes)
{
    GifByteType block[256];
    for (qsizetype at = 0; at < codes.size(); at += 255) {
        const qsizetype length = std::min<qsizetype>(255, codes.size() - at);
        block[0] = GifByteType(length);
        std::memcpy(block + 1, codes.constData() + at, size_t(length));
        if ((at == 0 ? EGifPutCode(gif, 0, block) : EGifPutCodeNext(gif, block)) != GIF_OK)
            return false;
    }
    return EGifPutCodeNext(gif, nullptr) == GIF_OK;
}

struct DecoderCloser {
    void operator()(GifFileType *gif) const
    {
        int ignored = 0;
        DGifCloseFile(gif, &ignored);
    }
};

QList<QRgb> colourList(const ColorMapObject *map)
{
    QList<QRgb> colours;
    if (map) {
        for (int i = 0; i < map->ColorCount; ++i)
            colours.append(qRgb(map->Colors[i].Red, map->Colors[i].Green, map->Colors[i].Blue));
    }
    return colours;
}

QString giflibError(GifFileType *gif)
{
    return QString::fromLatin1(GifErrorString(gif->Error));
}

// Reads the frame's rows, the passes of an interlaced frame put in place.
bool readRows(GifFileType *gif, GifFrame &frame)
{
    const int width = frame.rect.width(), height = frame.rect.height();
    auto *pixels = reinterpret_cast<GifPixelType *>(frame.pixels.data());
    static constexpr int start[] = {0, 4, 2, 1}, step[] = {8, 8, 4, 2};
    for (int pass = 0; pass < (frame.interlaced ? 4 : 1); ++pass) {
        for (int y = frame.interlaced ? start[pass] : 0; y < height; y += frame.interlaced ? step[pass] : 1) {
            if (DGifGetLine(gif, pixels + qsizetype(y) * width, width) == GIF_ERROR)
                return false;
        }
    }
    return true;
}

bool readExtension(GifFileType *gif, GifImage *image, GraphicsControlBlock *control, bool *haveControl)
{
    int code = 0;
    GifByteType *block = nullptr;
    if (DGifGetExtension(gif, &code, &block) == GIF_ERROR)
        return false;
    bool loopNext = false;
    if (block && code == GRAPHICS_EXT_FUNC_CODE && block[0] >= 4) {
        *haveControl = DGifExtensionToGCB(block[0], block + 1, control) == GIF_OK;
    } else if (block && code == APPLICATION_EXT_FUNC_CODE && block[0] == 11) {
        loopNext = std::memcmp(block + 1, "NETSCAPE2.0", 11) == 0;
    }
    while (block) {
        if (DGifGetExtensionNext(gif, &block) == GIF_ERROR)
            return false;
        if (block && loopNext && block[0] >= 3 && block[1] == 1)
            image->loopCount = block[2] | block[3] << 8;
        loopNext = false;
    }
    return true;
}

} // namespace

QRgb GifFrame::colourAt(int x, int y) const
{
    const int index = uchar(pixels[qsizetype(y) * rect.width() + x]);
    return index == transparent ? 0 : colours[index];
}

bool decodeGif(QByteArrayView bytes, GifImage *image, QString *error)
{
    Source source{bytes};
    int code = 0;
    const std::unique_ptr<GifFileType, DecoderCloser> gif(DGifOpen(&source, readSource, &code));
    if (!gif) {
        *error = u"the GIF cannot be read: %1"_s.arg(QString::fromLatin1(GifErrorString(code)));
        return false;
    }
    *image = GifImage{};
    image->screen = QSize(gif->SWidth, gif->SHeight);
    image->globalColours = colourList(gif->SColorMap);
    image->background = gif->SBackGroundColor;
    if (qint64(gif->SWidth) * gif->SHeight > maxRewritePixels) {
        *error = u"too many pixels to rewrite (%1×%2)"_s.arg(gif->SWidth).arg(gif->SHeight);
        return false;
    }
    GraphicsControlBlock control{};
    bool haveControl = false;
    qint64 pixelsRead = 0;
    for (;;) {
        GifRecordType type = UNDEFINED_RECORD_TYPE;
        if (DGifGetRecordType(gif.get(), &type) == GIF_ERROR) {
            if (source.pos >= bytes.size() && !image->frames.isEmpty())
                return true; // no trailer after the last frame: what came before is whole
            *error = u"the GIF data is damaged: %1"_s.arg(giflibError(gif.get()));
            return false;
        }
        if (type == TERMINATE_RECORD_TYPE) {
            if (image->frames.isEmpty())
                *error = u"the GIF has no frames"_s;
            return !image->frames.isEmpty();
        }
        if (type == EXTENSION_RECORD_TYPE) {
            if (!readExtension(gif.get(), image, &control, &haveControl)) {
                *error = u"the GIF data is damaged: %1"_s.arg(giflibError(gif.get()));
                return false;
            }
            continue;
        }
        if (type != IMAGE_DESC_RECORD_TYPE || DGifGetImageDesc(gif.get()) == GIF_ERROR) {
            *error = u"the GIF data is damaged: %1"_s.arg(giflibError(gif.get()));
            return false;
        }
        const GifImageDesc &desc = gif->Image;
        GifFrame frame;
        frame.rect = QRect(desc.Left, desc.Top, desc.Width, desc.Height);
        frame.interlaced = desc.Interlace;
        frame.ownTable = desc.ColorMap != nullptr;
        frame.colours = frame.ownTable ? colourList(desc.ColorMap) : image->globalColours;
        if (frame.rect.isEmpty() || !QRect(QPoint(), image->screen).contains(frame.rect)) {
            *error = u"a frame lies outside the logical screen"_s;
            return false;
        }
        if (frame.colours.isEmpty()) {
            *error = u"a frame has no colour table"_s;
            return false;
        }
        pixelsRead += qint64(desc.Width) * desc.Height;
        if (pixelsRead > maxRewritePixels) {
            *error = u"too many pixels to rewrite"_s;
            return false;
        }
        frame.pixels = QByteArray(qsizetype(desc.Width) * desc.Height, '\0');
        if (!readRows(gif.get(), frame)) {
            *error = u"the GIF data is damaged: %1"_s.arg(giflibError(gif.get()));
            return false;
        }
        if (haveControl) {
            frame.transparent = control.TransparentColor;
            frame.disposal = control.DisposalMode;
            frame.delay = control.DelayTime;
        }
        haveControl = false;
        for (char index : std::as_const(frame.pixels)) {
            if (uchar(index) >= frame.colours.size() && uchar(index) != frame.transparent) {
                *error = u"a pixel names a colour its table does not have"_s;
                return false;
            }
        }
        image->frames.append(frame);
    }
}

QByteArray encodeGif(const GifImage &image, QString *error)
{
    QByteArray output;
    int code = 0;
    GifFileType *gif = EGifOpen(&output, writeTarget, &code);
    if (!gif) {
        *error = u"the GIF encoder cannot start: %1"_s.arg(QString::fromLatin1(GifErrorString(code)));
        return {};
    }
    EGifSetGifVersion(gif, true);
    QList<GifColorType> colours;
    for (QRgb rgb : image.globalColours)
        colours.append(GifColorType{GifByteType(qRed(rgb)), GifByteType(qGreen(rgb)), GifByteType(qBlue(rgb))});
    ColorMapObject *map = GifMakeMapObject(int(colours.size()), colours.constData());
    bool ok =
        map && EGifPutScreenDesc(gif, image.screen.width(), image.screen.height(), 8, image.background, map) == GIF_OK;
    GifFreeMapObject(map);
    if (ok && image.loopCount >= 0) {
        const GifByteType loop[] = {1, GifByteType(image.loopCount & 255), GifByteType(image.loopCount >> 8 & 255)};
        ok = EGifPutExtensionLeader(gif, APPLICATION_EXT_FUNC_CODE) == GIF_OK
             && EGifPutExtensionBlock(gif, 11, "NETSCAPE2.0") == GIF_OK && EGifPutExtensionBlock(gif, 3, loop) == GIF_OK
             && EGifPutExtensionTrailer(gif) == GIF_OK;
    }
    for (const GifFrame &frame : image.frames) {
        if (!ok)
            break;
        if (frame.transparent >= 0 || frame.delay != 0 || frame.disposal != 0) {
            const GraphicsControlBlock control{frame.disposal, false, frame.delay, frame.transparent};
            GifByteType extension[4];
            EGifGCBToExtension(&control, extension);
            ok = EGifPutExtension(gif, GRAPHICS_EXT_FUNC_CODE, 4, extension) == GIF_OK;
        }
        ok = ok
             && EGifPutImageDesc(gif, frame.rect.x(), frame.rect.y(), frame.rect.width(), frame.rect.height(), false,
                                 nullptr)
                    == GIF_OK
             && putCodes(gif, packGifCodes(frame.pixels, std::max(2, gif->SColorMap->BitsPerPixel)));
    }
    if (!ok)
        *error = u"the GIF cannot be written: %1"_s.arg(giflibError(gif));
    if (EGifCloseFile(gif, &code) == GIF_ERROR && ok) {
        ok = false;
        *error = u"the GIF cannot be written: %1"_s.arg(QString::fromLatin1(GifErrorString(code)));
    }
    return ok ? output : QByteArray();
}
