#include "items/MediaVerdict.h"

#include "common/Prompts.h"
#include "common/RegistryWrapper.h"
#include "rover/RoverMedia.h"
#include "symbols/OperationHost.h"

using namespace Qt::StringLiterals;

MediaVerdict mediaVerdict(ItemKind kind, QByteArrayView bytes)
{
    MediaVerdict verdict;
    if (kind == ItemKind::Texture) {
        const RoverTextureInfo info = roverTextureInfo(bytes);
        verdict.usable = info.status == RoverTextureInfo::Usable;
        verdict.undefined = info.status == RoverTextureInfo::Undefined;
        verdict.reason = info.reason;
    } else if (kind == ItemKind::Sound) {
        const RoverSoundInfo info = roverSoundInfo(bytes);
        verdict.usable = info.usable;
        verdict.reason = info.reason;
    }
    return verdict;
}

MediaVerdict entryVerdict(const QString &entryPath, QByteArrayView bytes)
{
    if (entryPath.startsWith(u"textures/"_s, Qt::CaseInsensitive))
        return mediaVerdict(ItemKind::Texture, bytes);
    if (entryPath.startsWith(u"sounds/"_s, Qt::CaseInsensitive))
        return mediaVerdict(ItemKind::Sound, bytes);
    return MediaVerdict();
}

QString mediaVerdictLine(ItemKind kind, const MediaVerdict &verdict)
{
    if (verdict.usable)
        return QString();
    return (kind == ItemKind::Sound ? u"Rover cannot play this sound: "_s : u"Rover cannot use this texture: "_s)
           + verdict.reason;
}

void warnUnusableMedia(OperationHost &host, ItemKind kind, const QString &file, QByteArrayView bytes)
{
    const MediaVerdict verdict = mediaVerdict(kind, bytes);
    if (verdict.usable || !host.settings().getBoolSetting(u"showWarnings"_s))
        return;
    QString text;
    if (kind == ItemKind::Sound)
        text = u"Rover cannot play the sound \"%1\": %2.\nIt is added, but Rover plays nothing for it."_s;
    else if (verdict.undefined)
        text = u"Rover cannot use the texture \"%1\": %2.\nIt is added, but what Rover does with it is "
               "undefined: save it as an RGB or greyscale JPEG."_s;
    else
        text = u"Rover cannot use the texture \"%1\": %2.\nIt is added, but Rover draws the parts that use it "
               "untextured."_s;
    host.prompts().message(text.arg(file, verdict.reason), u"Add "_s + itemTitleNoun(kind), PromptButtons::Ok,
                           PromptIcon::Exclamation);
}
