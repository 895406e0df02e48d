// Rover's cache index as the cache manager reads it.
#include "FuzzSupport.h"
#include "cache/CacheIndex.h"

CUBRIX_FUZZ_ENTRY(fuzzCacheIndex)
{
    QList<CacheRow> rows(2);
    rows[0].fileName = QStringLiteral("castle.bset");
    rows[1].fileName = QStringLiteral("a.bset");
    readCacheIndex(fuzzBytes(data, size), rows);
    QByteArray written;
    (void)cacheIndexBytes(rows, written);
    return 0;
}
