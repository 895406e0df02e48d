// The update file reader.
#include "FuzzSupport.h"
#include "formats/Parser.h"
#include "formats/Parser_Version.h"

CUBRIX_FUZZ_ENTRY(fuzzUpdate)
{
    Parser parser;
    parser.setBuffer(fuzzBytes(data, size));
    (void)readUpdate(parser);
    return 0;
}
