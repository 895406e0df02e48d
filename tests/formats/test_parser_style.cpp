#include "formats/Parser.h"
#include "formats/Parser_Style.h"
#include "support/DataRows.h"

#include <QtTest>

Q_DECLARE_METATYPE(StyleValues)
Q_DECLARE_METATYPE(BlockRow)

// Reading a style file into the style values and block rows, reading its
// header, and writing it back byte for byte.
class TestParserStyle : public QObject {
    Q_OBJECT

private:
    static BlockRow row(const QString &file, const QString &symbol = {}, const QString &doubleSymbol = {})
    {
        return {file, {}, symbol, doubleSymbol};
    }

    static StyleReadResult read(const QByteArray &file, StyleValues &style, QList<BlockRow> &rows)
    {
        Parser parser;
        parser.setBuffer(file);
        return readStyle(parser, style, rows);
    }

    static StyleValues castle()
    {
        return {"1.2",           "Castle",      "Stone walls and gates",
                "A. Builder",    "free to use", "brick.gif",
                "clouds.jpg",    "(0,0,255)",   "80%",
                "grass.gif",     "(0,128,0)",   "sun.gif",
                "(255,255,255)", "100%",        "(45,30)",
                "index.3dml",    "_self",       "Home"};
    }

    // Single quotes stand for double quotes, to keep the tables readable.
    static QByteArray quoted(const char *text) { return QByteArray(text).replace('\'', '"'); }

    static QByteArray generatorLine() { return "<generator app=\"Cubrix\" version=\"0.9 Beta 1\"/>\r\n"; }

    static QByteArray castleFile()
    {
        return "<style version=\"1.2\" name=\"Castle\" synopsis=\"Stone walls and gates\" author=\"A. Builder\" "
               "copyright=\"free to use\">\r\n"
               + generatorLine()
               + "\r\n"
                 "<placeholder texture=\"brick.gif\"/>\r\n"
                 "<sky texture=\"clouds.jpg\" color=\"(0,0,255)\" brightness=\"80%\"/>\r\n"
                 "<ground texture=\"grass.gif\" color=\"(0,128,0)\"/>\r\n"
                 "<orb texture=\"sun.gif\" color=\"(255,255,255)\" brightness=\"100%\" position=\"(45,30)\" "
                 "href=\"index.3dml\" target=\"_self\" text=\"Home\"/>\r\n"
                 "<block symbol=\"a\" double=\".a\" file=\"wall.block\"/>\r\n"
                 "<block symbol=\"b\" file=\"door.block\"/>\r\n"
                 "\r\n"
                 "</style>\r\n";
    }

private slots:
    void write_data()
    {
        addColumns<StyleValues, QList<BlockRow>, QByteArray>("style", "rows", "expected");
        addRow("documented file", castle(), QList<BlockRow>{row("wall.block", "a", ".a"), row("door.block", "b")},
               castleFile());
        StyleValues header;
        header.name = "Only name";
        BlockRow named = row("x.block");
        named.name = "Not written";
        addRow("all scene values empty, blocks without a single symbol not listed", header,
               QList<BlockRow>{named, row("y.block", "y", "-y"), row("z.block", "", "zz")},
               "<style name=\"Only name\">\r\n" + generatorLine()
                   + "\r\n"
                     "<block symbol=\"y\" double=\"-y\" file=\"y.block\"/>\r\n\r\n</style>\r\n");
        StyleValues partial;
        partial.skyBrightness = "5%";
        partial.groundColor = "(1,2,3)";
        partial.orbText = "t";
        addRow("each element only with its set values", partial, QList<BlockRow>(),
               "<style>\r\n" + generatorLine()
                   + "\r\n<sky brightness=\"5%\"/>\r\n<ground color=\"(1,2,3)\"/>\r\n"
                     "<orb text=\"t\"/>\r\n\r\n</style>\r\n");
    }

    void write()
    {
        QFETCH(StyleValues, style);
        QFETCH(QList<BlockRow>, rows);
        QTEST(writeStyle(style, rows), "expected");
    }

    // Every value comes back as written: write, read into empty values, compare.
    void roundTrip_data()
    {
        QTest::addColumn<StyleValues>("style");
        addRow("every value, as in the documented file", castle());
        StyleValues s;
        s.name = "  blanks  kept  ";
        s.synopsis = "a & b; c's d=e";
        s.author = "M\u00fcller & S\u00f6hne \u20ac";
        s.orbHref = "http://x.example/a?b=c";
        s.skyColor = "(0,0,0)";
        s.orbPosition = "(0,-90)";
        addRow("awkward text and lowest values", s);
    }

    void roundTrip()
    {
        QFETCH(StyleValues, style);
        const QList<BlockRow> written{row("a.block", "a", ".a"), row("b.block", "b"), row("c.block"),
                                      row("d.block", "~", "~~")};
        StyleValues readBack;
        QList<BlockRow> rows{row("a.block"), row("b.block"), row("c.block"), row("d.block")};
        read(writeStyle(style, written), readBack, rows);
        QCOMPARE(readBack, style);
        for (int i = 0; i < rows.size(); ++i)
            QCOMPARE(rows[i].symbol + u'|' + rows[i].doubleSymbol, written[i].symbol + u'|' + written[i].doubleSymbol);
    }

    // Bytes 0x80..0xFF (including the five the code page leaves undefined)
    // come through reading and writing unchanged, in values and file names.
    void highBytesSurvive()
    {
        QByteArray high;
        for (int b = 0x80; b <= 0xff; ++b)
            high += char(b);
        const QByteArray file = "<style name=\"Caf\xe9 \x80\" synopsis=\"" + high + "\">\r\n" + generatorLine()
                                + "\r\n<orb href=\"\x93q\x94\"/>\r\n"
                                  "<block symbol=\"a\" double=\".a\" file=\"m\xe4uer.block\"/>\r\n\r\n</style>\r\n";
        StyleValues style;
        QList<BlockRow> rows{row("m\u00e4uer.block")};
        read(file, style, rows);
        QCOMPARE(style.name, QString("Caf\u00e9 \u20ac"));
        QCOMPARE(style.synopsis.size(), 128);
        QCOMPARE(rows[0].symbol, QString("a"));
        QCOMPARE(writeStyle(style, rows), file);
    }

    void embeddedQuoteWrittenAsIsAndReadBackCut()
    {
        StyleValues style, readBack;
        style.synopsis = "say \"hi\" now";
        QList<BlockRow> rows;
        const QByteArray file = writeStyle(style, rows);
        QVERIFY(file.startsWith("<style synopsis=\"say \"hi\" now\">\r\n"));
        read(file, readBack, rows);
        QCOMPARE(readBack.synopsis, QString("say "));
    }

    void refusedValuesKeepTheFormerValue_data()
    {
        addColumns<QByteArray, int, QString>("element", "field", "expected");
        const auto add = [](const char *name, const char *element, StyleField field, const char *expected) {
            addRow(name, quoted(element), int(field), QString(expected));
        };
        add("colour accepted, blanks trimmed", "<sky color=' (10,20,30) '>", StyleField::SkyColor, "(10,20,30)");
        add("colour with two parts", "<sky color='(10,20)'>", StyleField::SkyColor, "former");
        add("percentage too short", "<sky brightness='5%'>", StyleField::SkyBrightness, "former");
        add("position turn too big", "<orb position='(361,0)'>", StyleField::OrbPosition, "former");
        add("free text taken as is", "<orb target=' _top '>", StyleField::OrbTarget, " _top ");
        add("later element overwrites", "<sky texture='a'><sky texture='b'>", StyleField::SkyTexture, "b");
        add("after the end of the style", "</style><sky texture='late'>", StyleField::SkyTexture, "former");
        add("unterminated tag", "<sky texture='x'", StyleField::SkyTexture, "former");
    }

    void refusedValuesKeepTheFormerValue()
    {
        QFETCH(QByteArray, element);
        QFETCH(int, field);
        StyleValues style;
        styleValue(style, StyleField(field)) = "former";
        QList<BlockRow> rows;
        read(element, style, rows);
        QTEST(styleValue(style, StyleField(field)), "expected");
    }

    void blocks_data()
    {
        // files: the rows before reading; expected per row: "name|symbol|double".
        addColumns<QByteArray, QStringList, QStringList, bool, bool, QString>("elements", "files", "expected", "strict",
                                                                              "sync", "prefix");
        const auto add = [](const char *name, const char *elements, const QStringList &files,
                            const QStringList &expected, bool strict, bool sync, const char *prefix) {
            addRow(name, quoted(elements), files, expected, strict, sync, QString(prefix));
        };
        add("shared prefix, synchronised",
            "<block symbol='a' double='.a' file='a'/><block symbol='b' double='.b' file='b'/>"
            "<block symbol='c' double='.c' file='c'/>",
            {"a", "b", "c"}, {"|a|.a", "|b|.b", "|c|.c"}, true, true, ".");
        add("one entry without double", "<block symbol='a' double='.a' file='a'/><block symbol='b' file='b'/>",
            {"a", "b"}, {"|a|.a", "|b|"}, false, false, ".");
        add("double not prefix plus symbol", "<block symbol='x' double='.y' file='x'/>", {"x"}, {"|x|.y"}, true, false,
            ".");
        add("different prefixes", "<block symbol='a' double='.a' file='a'/><block symbol='b' double='-b' file='b'/>",
            {"a", "b"}, {"|a|.a", "|b|-b"}, false, true, ".");
        add("length rules drop symbols", "<block symbol='ab' double='a' file='a'/>", {"a"}, {"||"}, false, true, "");
        add("file matched case-sensitively, a row not named keeps its own", "<block symbol='a' double='.a' file='W'/>",
            {"w"}, {"|old|.o"}, true, true, "");
        add("file and name trimmed, every row of the file",
            "<block name='  Big wall ' symbol='a' double='-a' file='  w  '/>", {"w", "w"},
            {"Big wall|a|-a", "Big wall|a|-a"}, true, true, "-");
        add("element without file ignored", "<block symbol='a' file='  '/><block symbol='b'/>", {"w"}, {"|old|.o"},
            true, true, "");
        add("capitals", "<BLOCK SYMBOL='a' Double='.a' FILE='w'/>", {"w"}, {"|a|.a"}, true, true, ".");
    }

    void blocks()
    {
        QFETCH(QByteArray, elements);
        QFETCH(QStringList, files);
        QList<BlockRow> rows;
        for (const QString &file : files)
            rows << row(file, "old", ".o");
        StyleValues style;
        const StyleReadResult result = read("<style>" + elements + "</style>", style, rows);
        QStringList got;
        for (const BlockRow &r : rows)
            got << r.name + '|' + r.symbol + '|' + r.doubleSymbol;
        QTEST(got, "expected");
        QTEST(result.strictPrefixConsistent, "strict");
        QTEST(result.syncDoubleConsistent, "sync");
        QTEST(result.commonPrefix, "prefix");
    }

    void header_data()
    {
        // header: version, name, synopsis, author, copyright, separated by "|".
        addColumns<QByteArray, QString>("file", "header");
        addRow("documented file", castleFile(), "1.2|Castle|Stone walls and gates|A. Builder|free to use");
        addRow("after comments and other tags, capitals",
               quoted("<!-- x --><generator app='y'><STYLE NAME='N' Version='2' other='o'>"), "2|N|||");
        addRow("only the first style tag", quoted("<style name='first'><style name='second' author='a'>"), "|first|||");
        addRow("no style tag", quoted("<block name='x'>"), "||||");
    }

    void header()
    {
        QFETCH(QByteArray, file);
        Parser parser;
        parser.setBuffer(file);
        const StyleHeader got = readStyleHeader(parser);
        QTEST(QStringList({got.version, got.name, got.synopsis, got.author, got.copyright}).join(u'|'), "header");
    }
};

QTEST_APPLESS_MAIN(TestParserStyle)
#include "test_parser_style.moc"
