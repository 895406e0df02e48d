// Rover's block reader, what Rover changes at load time, the BSP walks and the
// block check, with textures and sounds that are there or not by their names.
#include "FuzzSupport.h"
#include "rover/RoverBlockBsp.h"
#include "rover/RoverBlockCheck.h"
#include "rover/RoverBlockGeometry.h"
#include "rover/RoverBlockReader.h"

CUBRIX_FUZZ_ENTRY(fuzzRoverBlock)
{
    const QByteArray bytes = fuzzBytes(data, size);
    RoverBlock block = readRoverBlock(bytes).block;
    loadRoverBlock(block, [](const RoverBlockPart &part) -> std::optional<QSize> {
        if (part.texture.size() % 3 == 0)
            return std::nullopt;
        return QSize(int(part.texture.size()), 5);
    });
    (void)roverBspTree(block);
    (void)roverDrawOrder(block, {128, 400, 400});
    (void)roverDrawOrder(block, {128, 128, 128});
    const auto texture = [](const QString &entry) -> std::optional<RoverTextureInfo> {
        if (entry.size() % 5 == 0)
            return std::nullopt;
        RoverTextureInfo info;
        info.status = RoverTextureInfo::Status(entry.size() % 4);
        return info;
    };
    const auto sound = [](const QString &entry) { return RoverSoundEntry{entry.size() % 2 == 0, QString()}; };
    (void)checkRoverBlock(bytes, QStringLiteral("fuzz.block"), texture, sound);
    return 0;
}
