// Rover's strict readers, as the save check and cubrix-cli check run them.
#include "FuzzSupport.h"
#include "rover/RoverCacheRules.h"
#include "rover/RoverStyleRules.h"
#include "rover/RoverUpdateRules.h"

CUBRIX_FUZZ_ENTRY(fuzzRover)
{
    const QByteArray bytes = fuzzBytes(data, size);
    const QStringList blocks{QStringLiteral("wall.block")};
    (void)checkRoverStyle(bytes, &blocks);
    (void)checkRoverUpdate(bytes);
    (void)checkRoverCache(bytes);
    return 0;
}
