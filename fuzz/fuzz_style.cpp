// The style reader and the header reader, with rows the entries can name.
#include "FuzzSupport.h"
#include "formats/Parser.h"
#include "formats/Parser_Style.h"

CUBRIX_FUZZ_ENTRY(fuzzStyle)
{
    QList<BlockRow> rows(3);
    rows[0].file = QStringLiteral("wall.block");
    rows[1].file = QStringLiteral("gate.block");
    rows[2].file = QStringLiteral("wall.block");
    Parser parser;
    parser.setBuffer(fuzzBytes(data, size));
    StyleValues style;
    readStyle(parser, style, rows);
    parser.setBuffer(fuzzBytes(data, size));
    (void)readStyleHeader(parser);
    (void)writeStyle(style, rows);
    return 0;
}
