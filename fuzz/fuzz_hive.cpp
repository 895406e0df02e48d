// The settings hive (Wine's text registry format): read, then written back.
#include "FuzzSupport.h"
#include "common/HiveRegistry.h"
#include "common/RegistryWrapper.h"

CUBRIX_FUZZ_ENTRY(fuzzHive)
{
    static const QString folder = fuzzFolder("hive");
    const QString path = folder + QStringLiteral("/registry.reg");
    fuzzWrite(path, fuzzBytes(data, size));
    HiveRegistry hive(path);
    RegistryWrapper settings(hive);
    (void)settings.getStringSetting(QStringLiteral("pathBlocks"));
    (void)settings.getBoolSetting(QStringLiteral("showWarnings"));
    (void)settings.setStringSetting(QStringLiteral("pathTextures"), QStringLiteral("C:\\Textures"));
    return 0;
}
