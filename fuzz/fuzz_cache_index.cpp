// Rover's cache index as the cache manager reads it, and the index it writes
// back, which Rover must accept whatever the old one held.
#include "FuzzSupport.h"
#include "cache/CacheIndex.h"
#include "rover/RoverCacheRules.h"

CUBRIX_FUZZ_ENTRY(fuzzCacheIndex)
{
    QList<CacheRow> rows(2);
    rows[0].fileName = QStringLiteral("castle.bset");
    rows[1].fileName = QStringLiteral("a.bset");
    readCacheIndex(fuzzBytes(data, size), rows);
    QByteArray written;
    if (cacheIndexBytes(rows, written) && hasRoverError(checkRoverCache(written))) {
        std::fprintf(stderr, "Rover refuses the written index:\n%s\n", written.constData());
        std::abort();
    }
    return 0;
}
