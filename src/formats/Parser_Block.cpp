#include "formats/Parser_Block.h"

#include "formats/Parser.h"
#include "storage/Cp1252.h"

using namespace Qt::StringLiterals;

// Reads only what the block list shows: the block element's name and type, and
// whether a BSP tree with a non-zero root follows. The block element comes
// first in a block file; the BSP tree is searched in what follows it, so the
// (often large) vertex and polygon lists in between are skipped unparsed.
void readBlock(Parser &parser, BlockRow &row)
{
    parser.normaliseBuffer();

    QByteArrayView tag;
    QByteArrayView word;
    QByteArrayView name;
    QByteArrayView value;

    bool blockSeen = false;
    for (qsizetype tagStart = parser.position(); parser.getNextTagView(tag); tagStart = parser.position()) {
        if (!getNextWordView(tag, word))
            continue; // a comment
        if (!nameEquals(word, "block"_L1)) {
            if (blockSeen) {
                // The tag that ends the scan stays in what is searched for the
                // tree, so a tree right after the block tag is found.
                parser.rewind(tagStart);
                break;
            }
            continue;
        }
        blockSeen = true;
        while (getNextAttributeView(tag, name, value)) {
            if (nameEquals(name, "name"_L1))
                row.name = fromCp1252(value);
            else if (nameEquals(name, "type"_L1))
                row.type = fromCp1252(value).toLower();
        }
    }

    // Rover writes the tree's tag in capitals; the search is exact on purpose.
    if (parser.skipTo("<BSP_TREE")) {
        bool treeSeen = false;
        while (parser.getNextTagView(tag)) {
            if (!getNextWordView(tag, word))
                continue;
            if (!nameEquals(word, "bsp_tree"_L1)) {
                if (treeSeen)
                    break;
                continue;
            }
            treeSeen = true;
            while (getNextAttributeView(tag, name, value)) {
                if (nameEquals(name, "root"_L1))
                    row.bsp = value == "0" ? u"empty"_s : u"yes"_s;
            }
        }
    }

    if (row.type.isEmpty())
        row.type = u"structural"_s;
    if (row.type == "structural"_L1) {
        if (row.bsp.isEmpty())
            row.bsp = u"no"_s;
    } else {
        row.bsp = u"n/a"_s;
    }
}
