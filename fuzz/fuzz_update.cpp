// The update file reader.
#include "FuzzSupport.h"
#include "formats/Parser_Version.h"

CUBRIX_FUZZ_ENTRY(fuzzUpdate)
{
    (void)readUpdate(fuzzBytes(data, size));
    return 0;
}
