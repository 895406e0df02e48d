#include "formats/Parser.h"
#include "formats/Parser_Style.h"

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
        BlockRow r;
        r.file = file;
        r.symbol = symbol;
        r.doubleSymbol = doubleSymbol;
        return r;
    }

    static StyleReadResult read(const QByteArray &file, StyleValues &style, QList<BlockRow> &rows,
                                SymbolSettings &symbols, bool strictSetting = true, bool syncSetting = true)
    {
        Parser parser;
        parser.setBuffer(file);
        return readStyle(parser, style, rows, symbols, strictSetting, syncSetting);
    }

    static StyleValues castle()
    {
        StyleValues s;
        s.version = "1.2";
        s.name = "Castle";
        s.synopsis = "Stone walls and gates";
        s.author = "A. Builder";
        s.copyright = "free to use";
        s.placeholderTexture = "brick.gif";
        s.skyTexture = "clouds.jpg";
        s.skyColor = "(0,0,255)";
        s.skyBrightness = "80%";
        s.groundTexture = "grass.gif";
        s.groundColor = "(0,128,0)";
        s.orbTexture = "sun.gif";
        s.orbColor = "(255,255,255)";
        s.orbBrightness = "100%";
        s.orbPosition = "(45,30)";
        s.orbHref = "index.3dml";
        s.orbTarget = "_self";
        s.orbText = "Home";
        return s;
    }

    static QByteArray castleFile()
    {
        return "<style version=\"1.2\" name=\"Castle\" synopsis=\"Stone walls and gates\" author=\"A. Builder\" "
               "copyright=\"free to use\">\r\n"
               "<generator app=\"Cubrix\" version=\"0.9 Beta 1\"/>\r\n"
               "\r\n"
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
    void writesTheDocumentedFile()
    {
        const QList<BlockRow> rows{row("wall.block", "a", ".a"), row("door.block", "b")};
        QCOMPARE(writeStyle(castle(), rows), castleFile());
    }

    void write_data()
    {
        QTest::addColumn<StyleValues>("style");
        QTest::addColumn<QList<BlockRow>>("rows");
        QTest::addColumn<QByteArray>("expected");

        QTest::newRow("nothing set, no blocks")
            << StyleValues() << QList<BlockRow>()
            << QByteArray("<style>\r\n<generator app=\"Cubrix\" version=\"0.9 Beta 1\"/>\r\n\r\n\r\n</style>\r\n");

        StyleValues header;
        header.name = "Only name";
        BlockRow named = row("x.block");
        named.name = "Not written";
        QTest::newRow("all scene values empty, block without symbols")
            << header << QList<BlockRow>{named, row("y.block", "y", "-y")}
            << QByteArray("<style name=\"Only name\">\r\n<generator app=\"Cubrix\" version=\"0.9 Beta 1\"/>\r\n\r\n"
                          "<block symbol=\"\" file=\"x.block\"/>\r\n"
                          "<block symbol=\"y\" double=\"-y\" file=\"y.block\"/>\r\n\r\n</style>\r\n");

        StyleValues partial;
        partial.skyBrightness = "5%";
        partial.groundColor = "(1,2,3)";
        partial.orbText = "t";
        QTest::newRow("each element only with its set values")
            << partial << QList<BlockRow>()
            << QByteArray("<style>\r\n<generator app=\"Cubrix\" version=\"0.9 Beta 1\"/>\r\n\r\n"
                          "<sky brightness=\"5%\"/>\r\n<ground color=\"(1,2,3)\"/>\r\n<orb text=\"t\"/>\r\n"
                          "\r\n</style>\r\n");

        StyleValues quoted;
        quoted.synopsis = "say \"hi\"";
        QTest::newRow("values are not escaped")
            << quoted << QList<BlockRow>()
            << QByteArray("<style synopsis=\"say \"hi\"\">\r\n<generator app=\"Cubrix\" version=\"0.9 Beta 1\"/>"
                          "\r\n\r\n\r\n</style>\r\n");
    }

    void write()
    {
        QFETCH(StyleValues, style);
        QFETCH(QList<BlockRow>, rows);
        QFETCH(QByteArray, expected);
        QCOMPARE(writeStyle(style, rows), expected);
    }

    void readsTheDocumentedFile()
    {
        StyleValues style;
        QList<BlockRow> rows{row("wall.block"), row("door.block"), row("gate.block", "g", ".g")};
        SymbolSettings symbols;
        const StyleReadResult result = read(castleFile(), style, rows, symbols);
        QCOMPARE(style, castle());
        QCOMPARE(rows[0].symbol, QString("a"));
        QCOMPARE(rows[0].doubleSymbol, QString(".a"));
        QCOMPARE(rows[1].symbol, QString("b"));
        QCOMPARE(rows[1].doubleSymbol, QString());
        // A row no element names keeps what it had.
        QCOMPARE(rows[2].symbol, QString("g"));
        QCOMPARE(rows[2].doubleSymbol, QString(".g"));
        QCOMPARE(result.strictPrefixConsistent, false);
        QCOMPARE(result.commonPrefix, QString("."));
    }

    // Every value comes back as written: write, read into empty values, compare.
    void roundTrip_data()
    {
        QTest::addColumn<StyleValues>("style");
        QTest::newRow("every value") << castle();
        QTest::newRow("nothing") << StyleValues();
        StyleValues s;
        s.version = "2";
        s.skyColor = "(1,2,3)";
        s.orbPosition = "(0,-90)";
        s.orbBrightness = "50%";
        QTest::newRow("some values") << s;
        s = StyleValues();
        s.name = "  blanks  kept  ";
        s.synopsis = "a & b; c's d=e";
        s.author = "M\u00fcller & S\u00f6hne \u20ac";
        s.orbHref = "http://x.example/a?b=c";
        QTest::newRow("awkward text") << s;
    }

    void roundTrip()
    {
        QFETCH(StyleValues, style);
        const QList<BlockRow> written{row("a.block", "a", ".a"), row("b.block", "b"), row("c.block", "", "xc"),
                                      row("d.block", "~", "~~")};
        const QByteArray file = writeStyle(style, written);

        StyleValues readBack;
        QList<BlockRow> rows{row("a.block"), row("b.block"), row("c.block"), row("d.block")};
        SymbolSettings symbols;
        read(file, readBack, rows, symbols);
        QCOMPARE(readBack, style);
        for (int i = 0; i < rows.size(); ++i) {
            QCOMPARE(rows[i].symbol, written[i].symbol);
            QCOMPARE(rows[i].doubleSymbol, written[i].doubleSymbol);
        }
    }

    // Bytes 0x80..0xFF (including the five the code page leaves undefined)
    // come through reading and writing unchanged.
    void highBytesSurvive()
    {
        const QByteArray file =
            "<style version=\"\xa9 1.0\" name=\"Caf\xe9 \x80\" synopsis=\"\x81\x8d\x8f\x90\x9d\" "
            "author=\"\xc4\xd6\xdc\xdf\" copyright=\"\x96\x97\x99\xff\">\r\n"
            "<generator app=\"Cubrix\" version=\"0.9 Beta 1\"/>\r\n\r\n"
            "<placeholder texture=\"\xe4.gif\"/>\r\n"
            "<orb href=\"\x93q\x94\" text=\"\xbf\xa1\"/>\r\n"
            "<block symbol=\"a\" double=\".a\" file=\"m\xe4uer.block\"/>\r\n\r\n</style>\r\n";
        StyleValues style;
        QList<BlockRow> rows{row("m\u00e4uer.block")};
        SymbolSettings symbols;
        read(file, style, rows, symbols);
        QCOMPARE(style.name, QString("Caf\u00e9 \u20ac"));
        QCOMPARE(rows[0].symbol, QString("a"));
        QCOMPARE(writeStyle(style, rows), file);

        // Every byte from 0x80 to 0xFF in one value.
        QByteArray high;
        for (int b = 0x80; b <= 0xff; ++b)
            high += char(b);
        const QByteArray all = "<style synopsis=\"" + high + "\">\r\n<generator app=\"Cubrix\" version=\"0.9 Beta 1\"/>\r\n"
                               "\r\n\r\n</style>\r\n";
        StyleValues allStyle;
        QList<BlockRow> noRows;
        read(all, allStyle, noRows, symbols);
        QCOMPARE(allStyle.synopsis.size(), 128);
        QCOMPARE(writeStyle(allStyle, noRows), all);
    }

    void refusedValuesKeepTheFormerValue_data()
    {
        QTest::addColumn<QByteArray>("element");
        QTest::addColumn<int>("field");
        QTest::addColumn<QString>("expected");
        const auto add = [](const char *name, const char *element, StyleField field, const char *expected) {
            QTest::newRow(name) << QByteArray(element) << int(field) << QString(expected);
        };
        add("colour accepted, blanks trimmed", "<sky color=\" (10,20,30) \">", StyleField::SkyColor, "(10,20,30)");
        add("colour shown without leading zeros", "<ground color=\"(010,20,30)\">", StyleField::GroundColor,
            "(10,20,30)");
        add("colour with two parts", "<sky color=\"(10,20)\">", StyleField::SkyColor, "former");
        add("colour out of range", "<orb color=\"(10,20,300)\">", StyleField::OrbColor, "former");
        add("colour without parentheses", "<orb color=\"10,20,30\">", StyleField::OrbColor, "former");
        add("percentage", "<sky brightness=\"100%\">", StyleField::SkyBrightness, "100%");
        add("percentage too short", "<sky brightness=\"5%\">", StyleField::SkyBrightness, "former");
        add("percentage with a leading zero", "<orb brightness=\"05%\">", StyleField::OrbBrightness, "5%");
        add("percentage above 100", "<orb brightness=\"101%\">", StyleField::OrbBrightness, "former");
        add("position", "<orb position=\"(45,-10)\">", StyleField::OrbPosition, "(45,-10)");
        add("position turn too big", "<orb position=\"(361,0)\">", StyleField::OrbPosition, "former");
        add("position tilt too low", "<orb position=\"(0,-91)\">", StyleField::OrbPosition, "former");
        add("free text taken as is", "<orb target=\" _top \">", StyleField::OrbTarget, " _top ");
        add("empty free text overwrites", "<style name=\"\">", StyleField::Name, "");
        add("empty colour refused", "<sky color=\"\">", StyleField::SkyColor, "former");
        add("later element overwrites", "<sky texture=\"a\"><sky texture=\"b\">", StyleField::SkyTexture, "b");
        add("attribute of another element not taken", "<ground brightness=\"50%\">", StyleField::SkyBrightness,
            "former");
        add("blanks around equals inside a value closed up", "<style name=\"a = b\">", StyleField::Name, "a=b");
        add("single-digit percentage as the editor shows it", "<sky brightness=\"0%\">", StyleField::SkyBrightness,
            "former");
        add("capitals", "<ORB HREF=\"Index.3dml\">", StyleField::OrbHref, "Index.3dml");
        add("blanks around equals", "<placeholder texture = \"p.gif\">", StyleField::PlaceholderTexture, "p.gif");
        add("after the end of the style", "</style><sky texture=\"late\">", StyleField::SkyTexture, "former");
        add("unknown element", "<skies texture=\"x\">", StyleField::SkyTexture, "former");
        add("unterminated tag", "<sky texture=\"x\"", StyleField::SkyTexture, "former");
    }

    void refusedValuesKeepTheFormerValue()
    {
        QFETCH(QByteArray, element);
        QFETCH(int, field);
        QFETCH(QString, expected);
        StyleValues style;
        styleValue(style, StyleField(field)) = "former";
        QList<BlockRow> rows;
        SymbolSettings symbols;
        read(element, style, rows, symbols);
        QCOMPARE(styleValue(style, StyleField(field)), expected);
    }

    void blocks_data()
    {
        QTest::addColumn<QByteArray>("elements");
        QTest::addColumn<QStringList>("files");    // the rows before reading
        QTest::addColumn<QStringList>("expected"); // per row: "name|symbol|double"
        QTest::addColumn<bool>("strict");
        QTest::addColumn<bool>("sync");
        QTest::addColumn<QString>("prefix");

        QTest::newRow("shared prefix, synchronised")
            << QByteArray("<block symbol=\"a\" double=\".a\" file=\"a.block\"/>"
                          "<block symbol=\"b\" double=\".b\" file=\"b.block\"/>"
                          "<block symbol=\"c\" double=\".c\" file=\"c.block\"/>")
            << QStringList{"a.block", "b.block", "c.block"} << QStringList{"|a|.a", "|b|.b", "|c|.c"} << true << true
            << ".";
        QTest::newRow("one entry without double")
            << QByteArray("<block symbol=\"a\" double=\".a\" file=\"a.block\"/><block symbol=\"b\" file=\"b.block\"/>")
            << QStringList{"a.block", "b.block"} << QStringList{"|a|.a", "|b|"} << false << false << ".";
        QTest::newRow("double not prefix plus symbol")
            << QByteArray("<block symbol=\"x\" double=\".y\" file=\"x.block\"/>") << QStringList{"x.block"}
            << QStringList{"|x|.y"} << true << false << ".";
        QTest::newRow("different prefixes")
            << QByteArray("<block symbol=\"a\" double=\".a\" file=\"a.block\"/>"
                          "<block symbol=\"b\" double=\"-b\" file=\"b.block\"/>")
            << QStringList{"a.block", "b.block"} << QStringList{"|a|.a", "|b|-b"} << false << true << ".";
        QTest::newRow("length rules drop symbols")
            << QByteArray("<block symbol=\"ab\" double=\"a\" file=\"a.block\"/>") << QStringList{"a.block"}
            << QStringList{"||"} << false << true << "";
        QTest::newRow("three-character double dropped")
            << QByteArray("<block symbol=\"a\" double=\".ab\" file=\"a.block\"/>") << QStringList{"a.block"}
            << QStringList{"|a|"} << false << false << "";
        QTest::newRow("file matched case-sensitively")
            << QByteArray("<block symbol=\"a\" double=\".a\" file=\"Wall.block\"/>") << QStringList{"wall.block"}
            << QStringList{"|old|.o"} << true << true << "";
        QTest::newRow("file and name trimmed")
            << QByteArray("<block name=\"  Big wall \" symbol=\"a\" double=\".a\" file=\"  wall.block  \"/>")
            << QStringList{"wall.block"} << QStringList{"Big wall|a|.a"} << true << true << ".";
        QTest::newRow("every row of the file")
            << QByteArray("<block symbol=\"a\" double=\"-a\" file=\"w.block\"/>") << QStringList{"w.block", "w.block"}
            << QStringList{"|a|-a", "|a|-a"} << true << true << "-";
        QTest::newRow("element without file ignored")
            << QByteArray("<block symbol=\"a\" file=\"  \"/><block symbol=\"b\"/>") << QStringList{"w.block"}
            << QStringList{"|old|.o"} << true << true << "";
        QTest::newRow("capitals")
            << QByteArray("<BLOCK SYMBOL=\"a\" Double=\".a\" FILE=\"w.block\"/>") << QStringList{"w.block"}
            << QStringList{"|a|.a"} << true << true << ".";
        QTest::newRow("unquoted symbol ends the scan before the file")
            << QByteArray("<block symbol=a file=\"w.block\"/>") << QStringList{"w.block"} << QStringList{"|old|.o"}
            << true << true << "";
        QTest::newRow("nothing after the end of the style")
            << QByteArray("</style><block symbol=\"a\" double=\".a\" file=\"w.block\"/>") << QStringList{"w.block"}
            << QStringList{"|old|.o"} << true << true << "";
        QTest::newRow("comment skipped")
            << QByteArray("<!-- <block symbol=\"z\" file=\"w.block\"/> --><block symbol=\"a\" double=\"ba\" "
                          "file=\"w.block\"/>")
            << QStringList{"w.block"} << QStringList{"|a|ba"} << true << true << "b";
        QTest::newRow("no double anywhere and symbol empty")
            << QByteArray("<block symbol=\"\" file=\"w.block\"/>") << QStringList{"w.block"} << QStringList{"||"}
            << false << true << "";
    }

    void blocks()
    {
        QFETCH(QByteArray, elements);
        QFETCH(QStringList, files);
        QFETCH(QStringList, expected);
        QList<BlockRow> rows;
        for (const QString &file : files) {
            BlockRow r = row(file, "old", ".o");
            r.name = QString();
            rows << r;
        }
        StyleValues style;
        SymbolSettings symbols;
        const StyleReadResult result = read("<style>" + elements + "</style>", style, rows, symbols);
        QStringList got;
        for (const BlockRow &r : rows)
            got << r.name + '|' + r.symbol + '|' + r.doubleSymbol;
        QCOMPARE(got, expected);
        QTEST(result.strictPrefixConsistent, "strict");
        QTEST(result.syncDoubleConsistent, "sync");
        QTEST(result.commonPrefix, "prefix");
    }

    // The reader hands its findings and the user settings to the symbol settings.
    void symbolSettingsAfterReading()
    {
        const QByteArray file = "<block symbol=\"a\" double=\"Za\" file=\"a.block\"/>"
                                "<block symbol=\"b\" double=\"Zb\" file=\"b.block\"/>";
        QList<BlockRow> rows{row("a.block"), row("b.block")};
        StyleValues style;
        SymbolSettings symbols;
        read(file, style, rows, symbols, true, true);
        QVERIFY(symbols.strictPrefixChecked);
        QVERIFY(symbols.syncDoubleChecked);
        QVERIFY(symbols.prefixListEnabled);
        QCOMPARE(symbols.prefixIndex, 26); // "Z" in the prefix list

        SymbolSettings off;
        read(file, style, rows, off, false, true);
        QVERIFY(off.strictPrefixEnabled);
        QVERIFY(!off.strictPrefixChecked);
        QVERIFY(!off.syncDoubleEnabled);
    }

    void header_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QStringList>("header"); // version, name, synopsis, author, copyright
        QTest::newRow("documented file") << castleFile()
                                         << QStringList{"1.2", "Castle", "Stone walls and gates", "A. Builder",
                                                        "free to use"};
        QTest::newRow("after comments and other tags, capitals")
            << QByteArray("<!-- x --><generator app=\"y\"><STYLE NAME=\"N\" Version=\"2\" other=\"o\">")
            << QStringList{"2", "N", "", "", ""};
        QTest::newRow("only the first style tag")
            << QByteArray("<style name=\"first\"><style name=\"second\" author=\"a\">")
            << QStringList{"", "first", "", "", ""};
        QTest::newRow("no style tag") << QByteArray("<block name=\"x\">") << QStringList{"", "", "", "", ""};
        QTest::newRow("empty file") << QByteArray() << QStringList{"", "", "", "", ""};
        QTest::newRow("high bytes") << QByteArray("<style name=\"\xc4\x80\">")
                                    << QStringList{"", "\u00c4\u20ac", "", "", ""};
    }

    void header()
    {
        QFETCH(QByteArray, file);
        QFETCH(QStringList, header);
        Parser parser;
        parser.setBuffer(file);
        const StyleHeader got = readStyleHeader(parser);
        QCOMPARE((QStringList{got.version, got.name, got.synopsis, got.author, got.copyright}), header);
    }

    void embeddedQuoteReadsBackCut()
    {
        StyleValues style;
        style.synopsis = "say \"hi\" now";
        QList<BlockRow> rows;
        SymbolSettings symbols;
        StyleValues readBack;
        read(writeStyle(style, rows), readBack, rows, symbols);
        QCOMPARE(readBack.synopsis, QString("say "));
    }
};

QTEST_APPLESS_MAIN(TestParserStyle)
#include "test_parser_style.moc"
