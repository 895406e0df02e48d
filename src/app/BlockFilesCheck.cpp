#include "app/BlockFilesCheck.h"

#include "rover/RoverBlockCheck.h"
#include "rover/RoverBlockReader.h"
#include "rover/RoverMedia.h"
#include "rover/RoverStyleRules.h"
#include "storage/FolderEntries.h"

#include <QFile>
#include <QHash>

using namespace Qt::StringLiterals;

namespace {

std::optional<QByteArray> readFile(const QString &path)
{
    QFile file(path);
    if (path.isEmpty() || !file.open(QIODevice::ReadOnly))
        return std::nullopt;
    return file.readAll();
}

} // namespace

void checkBlockFiles(BlocksetCheck &check, const QString &folder, QByteArrayView styleBytes)
{
    QList<RoverStyleBlock> blocks;
    (void)checkRoverStyle(styleBytes, nullptr, &blocks);
    FolderEntries entries(folder);
    // Blocks share textures: each file is judged once.
    QHash<QString, std::optional<RoverTextureInfo>> textures;
    const RoverTextureLookup texture = [&](const QString &entry) {
        const QString key = FolderEntries::foldedCase(entry);
        if (const auto known = textures.constFind(key); known != textures.cend())
            return *known;
        const std::optional<QByteArray> bytes = readFile(entries.path(entry));
        return *textures.insert(key, bytes ? std::optional(roverTextureInfo(*bytes)) : std::nullopt);
    };
    const RoverSoundLookup sound = [&](const QString &entry) {
        const std::optional<QByteArray> bytes = readFile(entries.path(entry));
        if (!bytes)
            return RoverSoundEntry{false, u"not in the blockset"_s};
        const RoverSoundInfo info = roverSoundInfo(*bytes);
        return RoverSoundEntry{info.usable, info.reason};
    };
    // Rover names a block by the style's name, else by its file's; a name taken
    // before (ignoring ASCII case) drops the block after its file was read.
    struct Named {
        QString file;
        bool byStyle = false;
    };
    QHash<QString, Named> names;
    for (const RoverStyleBlock &block : blocks) {
        const QString entry = u"blocks/"_s + block.file;
        const std::optional<QByteArray> bytes = readFile(entries.path(entry));
        if (!bytes)
            continue;
        const RoverFindings findings = checkRoverBlock(*bytes, block.file, texture, sound);
        for (const RoverFinding &f : findings)
            check.findings.append({f.severity, entry, f.line, f.text});
        if (hasRoverError(findings)) {
            check.roverLoadsBlockset = false;
            continue;
        }
        const RoverBlock read = readRoverBlock(*bytes).block;
        const QString name = block.name.isEmpty() ? read.name : block.name;
        const QString key = FolderEntries::foldedCase(name);
        const auto earlier = names.constFind(key);
        if (earlier == names.cend()) {
            names.insert(key, {entry, !block.name.isEmpty()});
        } else if (block.name.isEmpty() || !earlier->byStyle) { // two style names: the style check says so
            check.findings.append(
                {RoverFinding::Warning, entry, read.line,
                 u"Block defined with a duplicate name ('%1', as %2): Rover leaves this block out"_s.arg(
                     name, earlier->file)});
        }
    }
}
