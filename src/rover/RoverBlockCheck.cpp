#include "rover/RoverBlockCheck.h"

#include "rover/RoverBlockReader.h"

#include <QHash>

using namespace Qt::StringLiterals;

namespace {

QString lowerAscii(const QString &s)
{
    QString out = s;
    for (QChar &c : out)
        if (c >= u'A' && c <= u'Z')
            c = QChar(c.unicode() + (u'a' - u'A'));
    return out;
}

class BlockCheck {
public:
    BlockCheck(const RoverTextureLookup &textures, const RoverSoundLookup &sounds)
        : m_textures(textures),
          m_sounds(sounds)
    {
    }
    void checkPart(const RoverBlockPart &part);
    void checkSound(const RoverBlockSound &sound);
    RoverFindings findings;

private:
    std::optional<RoverTextureInfo> texture(const QString &entry);
    void warn(int line, const QString &text) { findings.append({RoverFinding::Warning, line, text}); }

    const RoverTextureLookup &m_textures;
    const RoverSoundLookup &m_sounds;
    // Each entry is looked at once, however many parts name it.
    QHash<QString, std::optional<RoverTextureInfo>> m_seen;
};

std::optional<RoverTextureInfo> BlockCheck::texture(const QString &entry)
{
    if (isRoverAbsoluteName(entry) || !m_textures)
        return std::nullopt;
    const QString key = lowerAscii(entry);
    const auto seen = m_seen.constFind(key);
    if (seen != m_seen.cend())
        return *seen;
    return *m_seen.insert(key, m_textures(entry));
}

void BlockCheck::checkPart(const RoverBlockPart &part)
{
    if (part.texture.isEmpty()) {
        if (!part.stream.isEmpty())
            warn(part.line, u"Part '%1' has a stream but no texture: Rover then draws with a texture it never "
                            "loaded, with unpredictable results"_s.arg(part.name));
        return;
    }
    if (part.texture.startsWith(u'@')) {
        warn(part.line, u"Invalid texture URL %1"_s.arg(part.texture));
        return;
    }
    const QString entry = roverMediaEntry(u"textures/"_s, part.texture);
    const std::optional<RoverTextureInfo> info = texture(entry);
    if (!info) {
        warn(part.line, u"Unable to load image file %1: File not found (part '%2')"_s.arg(entry, part.name));
        return;
    }
    switch (info->status) {
    case RoverTextureInfo::Usable: break;
    case RoverTextureInfo::NotGifOrJpeg:
        warn(part.line, u"File %1 is not a GIF or JPEG image"_s.arg(entry)
                            + (info->reason.isEmpty() ? QString() : u" (%1)"_s.arg(info->reason)));
        break;
    case RoverTextureInfo::TooLarge:
        warn(part.line,
             u"Unable to load image file %1: Image has a width or height greater than 256 pixels"_s.arg(entry));
        break;
    case RoverTextureInfo::Undefined:
        findings.append(
            {RoverFinding::Error, part.line,
             u"Rover cannot read %1: a four-channel (CMYK or YCCK) JPEG overruns its line buffer"_s.arg(entry)});
        break;
    }
}

void BlockCheck::checkSound(const RoverBlockSound &sound)
{
    if (!sound.present || sound.file.isEmpty())
        return; // Rover ignores a SOUND without a file
    RoverSoundEntry entry;
    if (sound.file.startsWith(u'@'))
        warn(sound.line, u"Invalid wave URL %1"_s.arg(sound.file));
    else if (!isRoverAbsoluteName(sound.file) && m_sounds)
        entry = m_sounds(roverMediaEntry(u"sounds/"_s, sound.file));
    if (!entry.usable) {
        warn(sound.line, u"Unable to download wave file from %1"_s.arg(sound.file)
                             + (entry.reason.isEmpty() ? QString() : u" (%1)"_s.arg(entry.reason)));
        return;
    }
    if (sound.rolloff && *sound.rolloff < 0)
        warn(sound.line, u"Sound rolloff must be greater than zero; using default rolloff of 1.0"_s);
}

} // namespace

bool isRoverAbsoluteName(const QString &value)
{
    if (value.startsWith(u'/') || value.startsWith(u'\\'))
        return true;
    if (value.size() >= 2 && value[1] == u':' && value[0].isLetter() && value[0].unicode() < 128)
        return true;
    for (const QString &scheme : {u"http:"_s, u"file:"_s, u"javascript:"_s, u"mailto:"_s, u"telnet:"_s, u"ftp:"_s})
        if (value.startsWith(scheme, Qt::CaseInsensitive))
            return true;
    return false;
}

QString roverMediaEntry(const QString &folder, const QString &value)
{
    return isRoverAbsoluteName(value) ? value : folder + value;
}

RoverFindings checkRoverBlock(QByteArrayView bytes, const QString &fileName, const RoverTextureLookup &textures,
                              const RoverSoundLookup &sounds)
{
    RoverBlockFile file = readRoverBlock(bytes);
    if (hasRoverError(file.findings))
        return file.findings;
    const RoverBlock &block = file.block;
    BlockCheck check(textures, sounds);
    check.findings = std::move(file.findings);
    for (const RoverBlockPart &part : block.parts)
        check.checkPart(part);
    check.checkSound(block.sound);
    // Movable blocks are depth-sorted, and one polygon cannot be out of order.
    if (!block.isSprite() && block.bspRoot == 0 && !block.movable && block.polygons.size() > 1)
        check.findings.append({RoverFinding::Warning, block.line,
                               u"Rover draws %1 with sorting errors: it has no BSP tree"_s.arg(
                                   block.name.isEmpty() ? fileName : block.name)});
    return check.findings;
}
