#include "formats/Parser.h"
#include "formats/Parser_Block.h"
#include "formats/Parser_Version.h"
#include "storage/Cp1252.h"
#include "support/DataRows.h"

#include <QtTest>

// Block files: the three facts the block list shows (name, type, BSP state).
// The update file beside the archive: written with the comment's own line
// breaks, read back as it was written.
class TestParserBlockUpdate : public QObject {
    Q_OBJECT

private:
    static BlockRow read(const QByteArray &file, const BlockRow &before = BlockRow())
    {
        Parser parser;
        parser.setBuffer(file);
        BlockRow row = before;
        readBlock(parser, row);
        return row;
    }

private slots:
    void blockFacts_data()
    {
        addColumns<QByteArray, QString, QString, QString>("file", "name", "type", "bsp");
        const auto add = [](const char *row, const char *file, const char *name, const char *type, const char *bsp) {
            addRow(row, QByteArray(file).replace('\'', '"'), fromCp1252(name), QString(type), QString(bsp));
        };
        add("structural with tree",
            "<block name='Wall' type='Structural'>\r\n<vertices>\r\n</vertices>\r\n"
            "<BSP_TREE root='5'>\r\n<node ref='5'/>\r\n</BSP_TREE>\r\n</block>",
            "Wall", "structural", "yes");
        add("empty tree", "<block name='Wall' type='structural'><parts><BSP_TREE root='0'>", "Wall", "structural",
            "empty");
        add("root 00 is a tree", "<block name='W'><parts><BSP_TREE root='00'>", "W", "structural", "yes");
        add("no tree", "<block name='Wall' type='structural'><vertices></block>", "Wall", "structural", "no");
        add("sprite with tree", "<block name='Tree' type='sprite'><parts><BSP_TREE root='5'>", "Tree", "sprite", "n/a");
        add("capitals, type lower-cased", "<BLOCK NAME='Lamp' TYPE='Multifaceted Sprite'>", "Lamp",
            "multifaceted sprite", "n/a");
        add("tree tag in lower case not found", "<block name='W'><parts><bsp_tree root='5'>", "W", "structural", "no");
        add("tree before the block tag not seen", "<BSP_TREE root='5'><block name='W'><vertices>", "W", "structural",
            "no");
        // A regression: the tag that ends the scan for the block tag must stay
        // in what is searched for the tree.
        add("tree right after the block tag", "<block name='W' type='Structural'>\r\n<BSP_TREE root='5'>", "W",
            "structural", "yes");
        add("comments and prologue skipped",
            "<?xml version='1.0'?><!-- made by hand --><block name='W'><!-- c --><vertices><BSP_TREE root='2'>", "W",
            "structural", "yes");
        add("Windows-1252 name kept as written", "<block name=' T\xfcr \x80 '>", " T\xfcr \x80 ", "structural", "no");
        add("unterminated block tag", "<block name='W'", "before", "structural", "no");
        add("no block tag", "just text", "before", "structural", "no");
        add("later tags do not count once the block was seen",
            "<block name='A'><vertices><block name='B' type='sprite'>", "A", "structural", "no");
    }

    void blockFacts()
    {
        QFETCH(QByteArray, file);
        BlockRow before;
        before.name = "before";
        const BlockRow row = read(file, before);
        QTEST(row.name, "name");
        QTEST(row.type, "type");
        QTEST(row.bsp, "bsp");
    }

    // A block file as Rover's tools write it (indented, CR LF), about 3 MB:
    // the tree after the long body is found.
    void largeRoverFile()
    {
        QByteArray file = "<block name=\"Tower\" type=\"structural\">\r\n\t<vertices>\r\n";
        for (int i = 1; i <= 60000; ++i)
            file += "\t\t<vertex ref=\"" + QByteArray::number(i) + "\" coords=\"(0.5,-1.25,3)\"/>\r\n";
        file += "\t</vertices>\r\n\t<BSP_TREE root=\"5\">\r\n\t\t<node ref=\"5\"/>\r\n\t</BSP_TREE>\r\n</block>\r\n";
        const BlockRow row = read(file);
        QCOMPARE(row.name + u'|' + row.type + u'|' + row.bsp, QString("Tower|structural|yes"));
    }

    // The reader only overwrites what it finds: a type the caller left stays
    // when the file gives none, and then decides the BSP state.
    void rowValuesBeforeReading()
    {
        BlockRow before;
        before.type = "sprite";
        before.bsp = "yes";
        before.symbol = "x";
        BlockRow row = read("<block name=\"N\">", before);
        QCOMPARE(row.type + u'|' + row.bsp + u'|' + row.symbol, QString("sprite|n/a|x"));
        before.type.clear();
        row = read("<block name=\"N\">", before);
        QCOMPARE(row.type + u'|' + row.bsp, QString("structural|yes"));
    }

    void updateWritten_data()
    {
        addColumns<QString, QString, int, QByteArray>("version", "comment", "size", "expected");
        addRow("documented file", "1.2", "Added two gates and a tower.", 48213,
               QByteArray("<version id=\"1.2\" size=\"48213\">\r\nAdded two gates and a tower.\r\n</version>\r\n"));
        addRow("comment kept as it stands", "1.2", "Fixed a = b", 48213,
               QByteArray("<version id=\"1.2\" size=\"48213\">\r\nFixed a = b\r\n</version>\r\n"));
        addRow("several lines with LF", "2", "one\ntwo\n\nfour", 7,
               QByteArray("<version id=\"2\" size=\"7\">\r\none\r\ntwo\r\n\r\nfour\r\n</version>\r\n"));
        addRow("several lines with CR LF", "2", "one\r\ntwo", 7,
               QByteArray("<version id=\"2\" size=\"7\">\r\none\r\ntwo\r\n</version>\r\n"));
        addRow("no escaping, Windows-1252", "\"x\"", "Gr\u00f6\u00df \u20ac", 2147483647,
               QByteArray("<version id=\"\"x\"\" size=\"2147483647\">\r\nGr\xf6\xdf \x80\r\n</version>\r\n"));
    }

    void updateWritten()
    {
        QFETCH(QString, version);
        QFETCH(QString, comment);
        QFETCH(int, size);
        QTEST(writeUpdate(version, comment, size), "expected");
    }

    // Files as written above, and by hand.
    void updateRead_data()
    {
        addColumns<QByteArray, QString>("file", "comment");
        const auto written = [](const char *name, const QString &comment, const QString &readBack) {
            addRow(name, writeUpdate("1.2", comment, 48213), readBack);
        };
        // What the text box held comes back byte for byte through the file.
        written("one line", "Added two gates.", "Added two gates.");
        written("blanks, tabs and lines kept", "Fixed a = b\n\tand c\n", "Fixed a = b\n\tand c\n");
        written("a line that is only a closing tag's start", "a </b> c", "a </b> c");
        written("empty", "", "");
        written("Windows-1252", "Gr\u00f6\u00dfer \u20ac \u0081", "Gr\u00f6\u00dfer \u20ac \u0081");
        addRow("missing end tag keeps the rest", QByteArray("<version>\r\nall of it\r\n"), "all of it");
        addRow("capitals, LF only", QByteArray("<VERSION ID=\"3\">\nnew\n</VERSION>\n"), "new");
    }

    void updateRead()
    {
        QFETCH(QByteArray, file);
        QTEST(readUpdate(file), "comment");
    }
};

QTEST_APPLESS_MAIN(TestParserBlockUpdate)
#include "test_parser_block_update.moc"
