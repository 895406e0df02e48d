#include "rover/RoverMedia.h"

#include <QSet>

using namespace Qt::StringLiterals;

// Each reader walks the file's structure once, front to back, and never looks
// at a byte twice: a truncated or hostile file ends the walk with a reason.

namespace {

// Little- or big-endian fields read from a bounded view; every read past the
// end fails and leaves the position at the end.
class ByteWalker {
public:
    explicit ByteWalker(QByteArrayView bytes) : m_bytes(bytes) {}

    qsizetype left() const { return m_bytes.size() - m_pos; }
    qsizetype pos() const { return m_pos; }
    bool atEnd() const { return m_pos >= m_bytes.size(); }
    bool has(qsizetype count) const { return count >= 0 && left() >= count; }

    bool u8(uint &value)
    {
        if (!has(1))
            return fail();
        value = uchar(m_bytes[m_pos++]);
        return true;
    }
    bool u16le(uint &value) { return multi(2, false, value); }
    bool u16be(uint &value) { return multi(2, true, value); }
    bool u32le(uint &value) { return multi(4, false, value); }
    bool skip(qsizetype count)
    {
        if (!has(count))
            return fail();
        m_pos += count;
        return true;
    }
    QByteArrayView take(qsizetype count)
    {
        if (!has(count)) {
            fail();
            return {};
        }
        const QByteArrayView part = m_bytes.sliced(m_pos, count);
        m_pos += count;
        return part;
    }

private:
    bool fail()
    {
        m_pos = m_bytes.size();
        return false;
    }
    bool multi(int count, bool bigEndian, uint &value)
    {
        if (!has(count))
            return fail();
        value = 0;
        for (int i = 0; i < count; ++i) {
            const uint byte = uchar(m_bytes[m_pos + i]);
            value |= bigEndian ? byte << (8 * (count - 1 - i)) : byte << (8 * i);
        }
        m_pos += count;
        return true;
    }

    QByteArrayView m_bytes;
    qsizetype m_pos = 0;
};

constexpr int maxTextureSide = 256;
constexpr int maxGifFrames = 256;

// "0x0A", "0xFFFE": a byte or a format tag as its documentation writes it.
QString hex(uint value, int digits)
{
    return u"0x"_s + QString::number(value, 16).toUpper().rightJustified(digits, u'0');
}

RoverTextureInfo refused(const QString &reason, RoverTextureInfo::Format format = RoverTextureInfo::None)
{
    RoverTextureInfo info;
    info.format = format;
    info.reason = reason;
    return info;
}

// Skips GIF data sub-blocks up to and including the zero-length terminator.
bool skipGifSubBlocks(ByteWalker &walker)
{
    uint length = 0;
    while (walker.u8(length)) {
        if (length == 0)
            return true;
        if (!walker.skip(length))
            return false;
    }
    return false;
}

RoverTextureInfo readGif(QByteArrayView bytes)
{
    const auto broken = [](const QString &reason) { return refused(reason, RoverTextureInfo::Gif); };
    const QString cut = u"the GIF data is cut short"_s;
    ByteWalker walker(bytes);
    walker.skip(6); // signature and version, checked by the caller
    uint width = 0, height = 0, packed = 0;
    if (!walker.u16le(width) || !walker.u16le(height) || !walker.u8(packed) || !walker.skip(2))
        return broken(cut);
    if (!(packed & 0x80))
        return broken(u"no global colour table"_s);
    if (!walker.skip(3 * (qsizetype(2) << (packed & 7))))
        return broken(cut);
    if (width == 0 || height == 0)
        return broken(u"the logical screen has no pixels"_s);

    RoverTextureInfo info;
    info.format = RoverTextureInfo::Gif;
    bool transparentNext = false;
    bool ended = false;
    uint introducer = 0;
    while (!ended && walker.u8(introducer)) {
        if (introducer == 0x3B) { // trailer
            ended = true;
        } else if (introducer == 0x21) { // extension
            uint label = 0;
            if (!walker.u8(label))
                return broken(cut);
            if (label == 0xF9) {
                uint size = 0, flags = 0;
                if (!walker.u8(size))
                    return broken(cut);
                const QByteArrayView block = walker.take(size);
                if (block.size() != qsizetype(size))
                    return broken(cut);
                flags = size >= 1 ? uchar(block[0]) : 0u;
                transparentNext = size >= 4 && (flags & 1);
            }
            if (!skipGifSubBlocks(walker))
                return broken(cut);
        } else if (introducer == 0x2C) { // image descriptor
            uint left = 0, top = 0, frameWidth = 0, frameHeight = 0, flags = 0;
            if (!walker.u16le(left) || !walker.u16le(top) || !walker.u16le(frameWidth) || !walker.u16le(frameHeight)
                || !walker.u8(flags))
                return broken(cut);
            if (flags & 0x80)
                return broken(u"a frame has a colour table of its own"_s);
            if (left + frameWidth > width || top + frameHeight > height)
                return broken(u"a frame lies outside the logical screen"_s);
            if (++info.frames > maxGifFrames)
                return broken(u"more than %1 frames"_s.arg(maxGifFrames));
            info.transparent = info.transparent || transparentNext;
            transparentNext = false;
            if (!walker.skip(1) || !skipGifSubBlocks(walker)) // LZW code size, then the image data
                return broken(cut);
        } else {
            return broken(u"an unknown block (%1) in the GIF data"_s.arg(hex(introducer, 2)));
        }
    }
    if (info.frames == 0)
        return broken(u"the GIF has no frames"_s);
    info.width = int(width);
    info.height = int(height);
    info.status = RoverTextureInfo::Usable;
    return info;
}

// The kinds of JPEG frame (SOFn) and whether the IJG 6a reader decodes them.
QString jpegFrameRefusal(uint marker)
{
    switch (marker) {
    case 0xC0:
    case 0xC1:
    case 0xC2: return {};
    case 0xC3: return u"a lossless JPEG"_s;
    case 0xC5:
    case 0xC6:
    case 0xC7: return u"a hierarchical JPEG"_s;
    case 0xCB: return u"a lossless arithmetic-coded JPEG"_s;
    case 0xC9:
    case 0xCA:
    case 0xCD:
    case 0xCE:
    case 0xCF: return u"an arithmetic-coded JPEG"_s;
    default: return u"an unknown kind of JPEG (marker %1)"_s.arg(hex(marker, 2));
    }
}

struct JpegTables {
    QSet<uint> quant;   // table ids 0-3
    QSet<uint> huffman; // class << 4 | id
    QList<uint> componentIds;
    QList<uint> componentQuant;
};

// The first scan header: every table the scan needs must have been defined,
// as IJG 6a checks when the scan starts.
QString checkFirstScan(QByteArrayView segment, const JpegTables &tables, bool progressive)
{
    ByteWalker walker(segment);
    uint count = 0;
    if (!walker.u8(count) || count < 1 || count > 4 || !walker.has(2 * qsizetype(count) + 3))
        return u"a broken JPEG scan header"_s;
    QList<uint> selectors;
    for (uint i = 0; i < count; ++i) {
        uint id = 0, sel = 0;
        walker.u8(id);
        walker.u8(sel);
        const qsizetype index = tables.componentIds.indexOf(id);
        if (index < 0)
            return u"a JPEG scan names a component the frame does not have"_s;
        if (!tables.quant.contains(tables.componentQuant[index]))
            return u"a JPEG quantisation table is missing"_s;
        selectors.append(sel);
    }
    uint spectralStart = 0, spectralEnd = 0, approximation = 0;
    walker.u8(spectralStart);
    walker.u8(spectralEnd);
    walker.u8(approximation);
    const bool needDc = !progressive || (spectralStart == 0 && (approximation >> 4) == 0);
    const bool needAc = !progressive || spectralStart != 0;
    for (uint sel : selectors) {
        if ((needDc && !tables.huffman.contains(sel >> 4)) || (needAc && !tables.huffman.contains(0x10 | (sel & 15))))
            return u"a JPEG Huffman table is missing"_s;
    }
    return {};
}

RoverTextureInfo readJpeg(QByteArrayView bytes)
{
    const auto broken = [](const QString &reason) { return refused(reason, RoverTextureInfo::Jpeg); };
    const QString cut = u"the JPEG data is cut short"_s;
    ByteWalker walker(bytes);
    walker.skip(2); // SOI, checked by the caller
    JpegTables tables;
    RoverTextureInfo info;
    info.format = RoverTextureInfo::Jpeg;
    bool haveFrame = false, progressive = false;
    uint marker = 0, fill = 0;
    for (;;) {
        if (!walker.u8(fill))
            return broken(cut);
        if (fill != 0xFF)
            return broken(u"a JPEG marker is missing where one must be"_s);
        do {
            if (!walker.u8(marker))
                return broken(cut);
        } while (marker == 0xFF);
        if (marker == 0x01 || (marker >= 0xD0 && marker <= 0xD7))
            continue; // markers without a length
        if (marker == 0xD8 || marker == 0xD9 || marker == 0x00)
            return broken(u"the JPEG ends before its image data"_s);
        uint length = 0;
        if (!walker.u16be(length))
            return broken(cut);
        if (length < 2)
            return broken(u"a JPEG marker has a broken length"_s);
        const QByteArrayView segment = walker.take(length - 2);
        if (segment.size() != qsizetype(length) - 2)
            return broken(cut);
        ByteWalker field(segment);
        if (marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC) {
            if (haveFrame)
                return broken(u"a JPEG with two frame headers"_s);
            const QString refusal = jpegFrameRefusal(marker);
            if (!refusal.isEmpty())
                return broken(refusal);
            uint precision = 0, height = 0, width = 0, components = 0;
            if (!field.u8(precision) || !field.u16be(height) || !field.u16be(width) || !field.u8(components)
                || segment.size() != 6 + 3 * qsizetype(components))
                return broken(u"a broken JPEG frame header"_s);
            if (precision != 8)
                return broken(u"a %1-bit JPEG (only 8-bit samples are read)"_s.arg(precision));
            if (width == 0 || height == 0 || components == 0)
                return broken(u"a JPEG without pixels"_s);
            for (uint i = 0; i < components; ++i) {
                uint id = 0, sampling = 0, quant = 0;
                field.u8(id);
                field.u8(sampling);
                field.u8(quant);
                if ((sampling >> 4) < 1 || (sampling >> 4) > 4 || (sampling & 15) < 1 || (sampling & 15) > 4
                    || quant > 3)
                    return broken(u"a broken JPEG frame header"_s);
                tables.componentIds.append(id);
                tables.componentQuant.append(quant);
            }
            haveFrame = true;
            progressive = marker == 0xC2;
            info.width = int(width);
            info.height = int(height);
            info.frames = 1;
        } else if (marker == 0xDB) {
            uint pq = 0;
            while (field.u8(pq)) {
                if ((pq & 15) > 3 || !field.skip((pq >> 4) ? 128 : 64))
                    return broken(u"a broken JPEG quantisation table"_s);
                tables.quant.insert(pq & 15);
            }
        } else if (marker == 0xC4) {
            uint tc = 0;
            while (field.u8(tc)) {
                const QByteArrayView counts = field.take(16);
                if (counts.size() != 16 || (tc >> 4) > 1 || (tc & 15) > 3)
                    return broken(u"a broken JPEG Huffman table"_s);
                qsizetype symbols = 0;
                for (char count : counts)
                    symbols += uchar(count);
                if (symbols > 256 || !field.skip(symbols))
                    return broken(u"a broken JPEG Huffman table"_s);
                tables.huffman.insert(tc);
            }
        } else if (marker == 0xDA) {
            if (!haveFrame)
                return broken(u"a JPEG scan comes before the frame header"_s);
            const QString scanProblem = checkFirstScan(segment, tables, progressive);
            if (!scanProblem.isEmpty())
                return broken(scanProblem);
            break; // the header is read: the rest is image data
        }
    }
    const int components = int(tables.componentIds.size());
    if (components == 4) {
        info.status = RoverTextureInfo::Undefined;
        info.reason = u"a four-channel (CMYK or YCCK) JPEG overruns Rover's line buffer"_s;
    } else if (components != 1 && components != 3) {
        info.status = RoverTextureInfo::Undefined;
        info.reason = u"a JPEG with %1 colour channels (Rover expects 1 or 3)"_s.arg(components);
    } else {
        info.status = RoverTextureInfo::Usable;
    }
    return info;
}

} // namespace

RoverTextureInfo roverTextureInfo(QByteArrayView bytes)
{
    // Rover tries the GIF reader first and the JPEG reader after it; a broken
    // GIF fails as a JPEG too, so its reason is the GIF rule it broke.
    RoverTextureInfo info;
    if (bytes.startsWith("GIF87a") || bytes.startsWith("GIF89a"))
        info = readGif(bytes);
    else if (bytes.startsWith("\xFF\xD8"))
        info = readJpeg(bytes);
    else
        return refused(u"neither a GIF nor a JPEG image"_s);
    if (info.status == RoverTextureInfo::Usable && (info.width > maxTextureSide || info.height > maxTextureSide)) {
        info.status = RoverTextureInfo::TooLarge;
        info.reason = u"%1×%2 pixels: wider or taller than %3"_s.arg(info.width).arg(info.height).arg(maxTextureSide);
    }
    return info;
}

namespace {

QString soundFormatName(uint tag)
{
    switch (tag) {
    case 0x0002: return u"Microsoft ADPCM"_s;
    case 0x0003: return u"floating point"_s;
    case 0x0006: return u"A-law"_s;
    case 0x0007: return u"µ-law"_s;
    case 0x0011: return u"IMA ADPCM"_s;
    case 0x0050: return u"MPEG"_s;
    case 0x0055: return u"MP3"_s;
    case 0xFFFE: return u"extensible format"_s;
    default: return u"an unknown format"_s;
    }
}

RoverSoundInfo soundRefused(const QString &reason)
{
    RoverSoundInfo info;
    info.reason = reason;
    return info;
}

} // namespace

RoverSoundInfo roverSoundInfo(QByteArrayView bytes)
{
    ByteWalker walker(bytes);
    const QByteArrayView riff = walker.take(4);
    walker.skip(4); // the RIFF size, often wrong in files that play well: the chunks are walked instead
    const QByteArrayView wave = walker.take(4);
    if (riff != "RIFF" || wave != "WAVE")
        return soundRefused(u"not a WAV file (no RIFF WAVE header)"_s);
    RoverSoundInfo info;
    bool haveFormat = false, haveData = false;
    while (walker.has(8) && !(haveFormat && haveData)) {
        const QByteArrayView id = walker.take(4);
        uint size = 0;
        walker.u32le(size);
        if (id == "fmt " && !haveFormat) {
            const QByteArrayView chunk = walker.take(size);
            ByteWalker field(chunk);
            uint tag = 0, channels = 0, rate = 0, bytesPerSecond = 0, align = 0, bits = 0;
            if (chunk.size() < 16 || !field.u16le(tag) || !field.u16le(channels) || !field.u32le(rate)
                || !field.u32le(bytesPerSecond) || !field.u16le(align) || !field.u16le(bits))
                return soundRefused(u"the fmt chunk is cut short"_s);
            if (tag != 1)
                return soundRefused(u"not plain PCM: %1 (format tag %2)"_s.arg(soundFormatName(tag), hex(tag, 4)));
            if (channels == 0 || rate == 0 || bits == 0)
                return soundRefused(u"the fmt chunk names no channels, rate or sample size"_s);
            info.channels = int(channels);
            info.sampleRate = int(rate);
            info.bitsPerSample = int(bits);
            haveFormat = true;
        } else if (id == "data" && !haveData) {
            if (!walker.has(size))
                return soundRefused(u"the data chunk is cut short"_s);
            info.dataBytes = size;
            haveData = true;
            walker.skip(size);
        } else if (!walker.skip(size)) {
            break; // a trailing chunk cut short: what came before still counts
        }
        if (size & 1)
            walker.skip(1); // chunks are padded to an even length
    }
    if (!haveFormat)
        return soundRefused(u"no fmt chunk"_s);
    if (!haveData)
        return soundRefused(u"no data chunk"_s);
    info.usable = true;
    return info;
}
