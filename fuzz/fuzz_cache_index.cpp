// Rover's cache index as the cache manager reads it, and the index it writes
// back after a change, which Rover must accept whatever the old one held and
// which must still hold every other element it read.
#include "FuzzSupport.h"
#include "cache/CacheIndexFile.h"
#include "rover/RoverCacheRules.h"

CUBRIX_FUZZ_ENTRY(fuzzCacheIndex)
{
    const CacheIndexFile index(fuzzBytes(data, size));
    if (!index.usable())
        return 0;
    QList<int> all;
    for (int i = 0; i < index.elements().size(); ++i)
        all.append(i);
    const QList<int> first = all.mid(0, 1);
    const struct {
        QByteArray bytes;
        qsizetype elements;
    } written[] = {{index.rewritten({}, all), all.size()}, {index.rewritten(first, {}), all.size() - first.size()}};
    for (const auto &[bytes, elements] : written) {
        const CacheIndexFile again(bytes);
        if (hasRoverError(checkRoverCache(bytes)) || again.elements().size() != elements
            || !again.rejected().isEmpty()) {
            std::fprintf(stderr, "The written index is refused or lost elements:\n%s\n", bytes.constData());
            std::abort();
        }
    }
    return 0;
}
