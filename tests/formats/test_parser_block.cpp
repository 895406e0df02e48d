#include "formats/Parser.h"
#include "formats/Parser_Block.h"

#include <QtTest>

// The three facts the block list shows from a block file: name, type, BSP state.
class TestParserBlock : public QObject {
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

    // A block file as Rover's tools write it: indented, CR LF, a long middle.
    static QByteArray roverBlock(const QByteArray &header, const QByteArray &tree, int vertices)
    {
        QByteArray file = header + "\r\n\t<vertices>\r\n";
        for (int i = 1; i <= vertices; ++i)
            file += "\t\t<vertex ref=\"" + QByteArray::number(i) + "\" coords=\"(0.5,-1.25,3)\"/>\r\n";
        file += "\t</vertices>\r\n\t<parts>\r\n\t\t<part name=\"wall\" texture=\"brick.gif\">\r\n";
        for (int i = 1; i <= vertices / 4; ++i)
            file += "\t\t\t<polygon ref=\"" + QByteArray::number(i) + "\" vertices=\"1,2,3,4\" front=\"1\"/>\r\n";
        file += "\t\t</part>\r\n\t</parts>\r\n" + tree + "</block>\r\n";
        return file;
    }

private slots:
    void read_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("type");
        QTest::addColumn<QString>("bsp");

        QTest::newRow("structural with tree")
            << QByteArray("<block name=\"Wall\" type=\"Structural\">\r\n<vertices>\r\n</vertices>\r\n"
                          "<BSP_TREE root=\"5\">\r\n<node ref=\"5\"/>\r\n</BSP_TREE>\r\n</block>")
            << "Wall" << "structural" << "yes";
        QTest::newRow("empty tree") << QByteArray("<block name=\"Wall\" type=\"structural\"><parts><BSP_TREE root=\"0\">")
                                    << "Wall" << "structural" << "empty";
        QTest::newRow("root 00 is a tree") << QByteArray("<block name=\"W\"><parts><BSP_TREE root=\"00\">") << "W"
                                           << "structural" << "yes";
        QTest::newRow("no tree") << QByteArray("<block name=\"Wall\" type=\"structural\"><vertices></block>")
                                 << "Wall" << "structural" << "no";
        QTest::newRow("sprite with tree") << QByteArray("<block name=\"Tree\" type=\"sprite\"><parts><BSP_TREE root=\"5\">")
                                          << "Tree" << "sprite" << "n/a";
        QTest::newRow("type lower-cased") << QByteArray("<BLOCK NAME=\"Lamp\" TYPE=\"Multifaceted Sprite\">") << "Lamp"
                                          << "multifaceted sprite" << "n/a";
        QTest::newRow("tree tag in lower case not found")
            << QByteArray("<block name=\"W\"><parts><bsp_tree root=\"5\">") << "W" << "structural" << "no";
        QTest::newRow("tree before the block tag not seen")
            << QByteArray("<BSP_TREE root=\"5\"><block name=\"W\"><vertices>") << "W" << "structural" << "no";
        QTest::newRow("tree tag without root") << QByteArray("<block name=\"W\"><parts><BSP_TREE><node>") << "W"
                                               << "structural" << "no";
        QTest::newRow("comments and prologue skipped")
            << QByteArray("<?xml version=\"1.0\"?><!-- made by hand --><block name=\"W\"><!-- c --><vertices><BSP_TREE "
                          "root=\"2\">")
            << "W" << "structural" << "yes";
        QTest::newRow("only the first tree tag counts")
            << QByteArray("<block name=\"W\"><parts><BSP_TREE root=\"0\"><node><BSP_TREE root=\"9\">") << "W"
            << "structural" << "empty";
        QTest::newRow("root over two lines and with blanks")
            << QByteArray("<block name=\"W\">\r\n<parts>\r\n<BSP_TREE \r\n\troot = \"0\">") << "W" << "structural" << "empty";
        QTest::newRow("line break joins the tag name and the attribute")
            << QByteArray("<block name=\"W\">\r\n<parts>\r\n<BSP_TREE\r\n\troot=\"5\">") << "W" << "structural" << "no";
        QTest::newRow("tree right after the block tag")
            << QByteArray("<block name=\"W\" type=\"Structural\">\r\n<BSP_TREE root=\"5\">") << "W" << "structural"
            << "yes";
        QTest::newRow("lower-case tree right after the block tag")
            << QByteArray("<block name=\"W\"><bsp_tree root=\"5\">") << "W" << "structural" << "no";
        QTest::newRow("name kept as written") << QByteArray("<block name=\" Big  Wall \">") << " Big  Wall "
                                              << "structural" << "no";
        QTest::newRow("Windows-1252 name") << QByteArray("<block name=\"T\xfcr \x80\">") << "T\u00fcr \u20ac"
                                           << "structural" << "no";
        QTest::newRow("unterminated block tag") << QByteArray("<block name=\"W\"") << "before" << "structural"
                                                << "no";
        QTest::newRow("no block tag") << QByteArray("just text") << "before" << "structural" << "no";
        QTest::newRow("empty file") << QByteArray() << "before" << "structural" << "no";
        QTest::newRow("later tags do not count once the block was seen")
            << QByteArray("<block name=\"A\"><vertices><block name=\"B\" type=\"sprite\">") << "A" << "structural"
            << "no";
    }

    void read()
    {
        QFETCH(QByteArray, file);
        BlockRow before;
        before.name = "before";
        const BlockRow row = read(file, before);
        QTEST(row.name, "name");
        QTEST(row.type, "type");
        QTEST(row.bsp, "bsp");
    }

    void largeRoverFile_data()
    {
        QTest::addColumn<QByteArray>("tree");
        QTest::addColumn<QString>("bsp");
        QTest::newRow("tree") << QByteArray("\t<BSP_TREE root=\"5\">\r\n\t\t<node ref=\"5\" polygon=\"1\"/>\r\n"
                                            "\t</BSP_TREE>\r\n")
                              << "yes";
        QTest::newRow("empty tree") << QByteArray("\t<BSP_TREE root=\"0\">\r\n\t</BSP_TREE>\r\n") << "empty";
        QTest::newRow("none") << QByteArray() << "no";
    }

    void largeRoverFile()
    {
        QFETCH(QByteArray, tree);
        const QByteArray file =
            roverBlock("<block name=\"Tower \xc4\" type=\"structural\">", tree, 60000); // about 3 MB
        const BlockRow row = read(file);
        QCOMPARE(row.name, QString("Tower \u00c4"));
        QCOMPARE(row.type, QString("structural"));
        QTEST(row.bsp, "bsp");
    }

    // The reader only overwrites what it finds: what a caller left in the row
    // stays unless the file says otherwise or a default applies.
    void rowValuesBeforeReading()
    {
        BlockRow before;
        before.type = "sprite";
        before.bsp = "yes";
        before.file = "x.block";
        before.symbol = "x";
        BlockRow row = read("<block name=\"N\">", before);
        QCOMPARE(row.type, QString("sprite"));
        QCOMPARE(row.bsp, QString("n/a"));
        QCOMPARE(row.file, QString("x.block"));
        QCOMPARE(row.symbol, QString("x"));

        before.type.clear();
        row = read("<block name=\"N\">", before);
        QCOMPARE(row.type, QString("structural"));
        QCOMPARE(row.bsp, QString("yes"));
    }
};

QTEST_APPLESS_MAIN(TestParserBlock)
#include "test_parser_block.moc"
