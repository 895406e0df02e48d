// The block file reader.
#include "FuzzSupport.h"
#include "formats/Parser.h"
#include "formats/Parser_Block.h"

CUBRIX_FUZZ_ENTRY(fuzzBlock)
{
    Parser parser;
    parser.setBuffer(fuzzBytes(data, size));
    BlockRow row;
    readBlock(parser, row);
    return 0;
}
