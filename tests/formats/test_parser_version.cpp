#include "formats/Parser.h"
#include "formats/Parser_Version.h"

#include <QtTest>

// The update file beside the archive: written with the comment's own line
// breaks, read back as one normalised line.
class TestParserVersion : public QObject {
    Q_OBJECT

private slots:
    void write_data()
    {
        QTest::addColumn<QString>("version");
        QTest::addColumn<QString>("comment");
        QTest::addColumn<int>("size");
        QTest::addColumn<QByteArray>("expected");
        QTest::newRow("documented file") << "1.2" << "Added two gates and a tower." << 48213
                                         << QByteArray("<version id=\"1.2\" size=\"48213\">\r\n"
                                                       "Added two gates and a tower.\r\n</version>\r\n");
        QTest::newRow("comment kept as it stands") << "1.2" << "Fixed a = b" << 48213
                                                   << QByteArray("<version id=\"1.2\" size=\"48213\">\r\nFixed a = b\r\n"
                                                                 "</version>\r\n");
        QTest::newRow("several lines with LF") << "2" << "one\ntwo\n\nfour" << 7
                                               << QByteArray("<version id=\"2\" size=\"7\">\r\none\r\ntwo\r\n\r\nfour"
                                                             "\r\n</version>\r\n");
        QTest::newRow("several lines with CR LF") << "2" << "one\r\ntwo" << 7
                                                  << QByteArray("<version id=\"2\" size=\"7\">\r\none\r\ntwo\r\n"
                                                                "</version>\r\n");
        QTest::newRow("empty values") << "" << "" << 0
                                      << QByteArray("<version id=\"\" size=\"0\">\r\n\r\n</version>\r\n");
        QTest::newRow("no escaping, Windows-1252")
            << "\"x\"" << "Gr\u00f6\u00dfer \u20ac" << 2147483647
            << QByteArray("<version id=\"\"x\"\" size=\"2147483647\">\r\nGr\xf6\xdf" "er \x80\r\n</version>\r\n");
    }

    void write()
    {
        QFETCH(QString, version);
        QFETCH(QString, comment);
        QFETCH(int, size);
        QFETCH(QByteArray, expected);
        QCOMPARE(writeUpdate(version, comment, size), expected);
    }

    void read_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QString>("comment");
        QTest::newRow("documented file") << QByteArray("<version id=\"1.2\" size=\"48213\">\r\n"
                                                       "Added two gates and a tower.\r\n</version>\r\n")
                                         << "Added two gates and a tower.";
        QTest::newRow("blanks around equals closed up")
            << QByteArray("<version id=\"1.2\" size=\"48213\">\r\nFixed a = b\r\n</version>\r\n") << "Fixed a=b";
        QTest::newRow("lines joined without separator")
            << QByteArray("<version id=\"1\" size=\"1\">\r\none\r\ntwo\r\n</version>\r\n") << "onetwo";
        QTest::newRow("tabs lost") << QByteArray("<version>\ta\tb\t</version>") << "ab";
        QTest::newRow("blanks kept untrimmed") << QByteArray("<version>  a  b  </version>") << "  a  b  ";
        QTest::newRow("cut at the first </") << QByteArray("<version>use </b> here</version>") << "use ";
        QTest::newRow("missing end tag keeps the rest") << QByteArray("<version>all of it\r\n") << "all of it";
        QTest::newRow("capitals and comments")
            << QByteArray("<!-- note --><VERSION ID=\"3\">new</VERSION>") << "new";
        QTest::newRow("no version tag") << QByteArray("<other>text</other>") << "";
        QTest::newRow("no tags at all") << QByteArray("plain text") << "plain text";
        QTest::newRow("unclosed tag stops the loop") << QByteArray("<other>x<broken") << "x<broken";
        QTest::newRow("empty file") << QByteArray() << "";
        QTest::newRow("Windows-1252") << QByteArray("<version>Gr\xf6\xdf" "er \x80\x81</version>")
                                      << "Gr\u00f6\u00dfer \u20ac\u0081";
    }

    void read()
    {
        QFETCH(QByteArray, file);
        Parser parser;
        parser.setBuffer(file);
        QTEST(readUpdate(parser), "comment");
        QVERIFY(parser.isEmpty());
    }

    void roundTrip_data()
    {
        QTest::addColumn<QString>("comment");
        QTest::addColumn<QString>("readBack");
        QTest::newRow("one line") << "Added two gates." << "Added two gates.";
        QTest::newRow("high characters") << "\u00e9t\u00e9 \u2122 \u0178" << "\u00e9t\u00e9 \u2122 \u0178";
        QTest::newRow("two lines") << "one\ntwo" << "onetwo";
        QTest::newRow("comment containing </") << "a </b> c" << "a ";
        QTest::newRow("empty") << "" << "";
    }

    void roundTrip()
    {
        QFETCH(QString, comment);
        Parser parser;
        parser.setBuffer(writeUpdate("1.0", comment, 100));
        QTEST(readUpdate(parser), "readBack");
    }
};

QTEST_APPLESS_MAIN(TestParserVersion)
#include "test_parser_version.moc"
