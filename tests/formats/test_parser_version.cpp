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
        QTest::newRow("documented file") << "1.2"
                                         << "Added two gates and a tower." << 48213
                                         << QByteArray("<version id=\"1.2\" size=\"48213\">\r\n"
                                                       "Added two gates and a tower.\r\n</version>\r\n");
        QTest::newRow("comment kept as it stands")
            << "1.2"
            << "Fixed a = b" << 48213
            << QByteArray("<version id=\"1.2\" size=\"48213\">\r\nFixed a = b\r\n"
                          "</version>\r\n");
        QTest::newRow("several lines with LF") << "2"
                                               << "one\ntwo\n\nfour" << 7
                                               << QByteArray("<version id=\"2\" size=\"7\">\r\none\r\ntwo\r\n\r\nfour"
                                                             "\r\n</version>\r\n");
        QTest::newRow("several lines with CR LF") << "2"
                                                  << "one\r\ntwo" << 7
                                                  << QByteArray("<version id=\"2\" size=\"7\">\r\none\r\ntwo\r\n"
                                                                "</version>\r\n");
        QTest::newRow("no escaping, Windows-1252")
            << "\"x\""
            << "Gr\u00f6\u00dfer \u20ac" << 2147483647
            << QByteArray("<version id=\"\"x\"\" size=\"2147483647\">\r\nGr\xf6\xdf"
                          "er \x80\r\n</version>\r\n");
    }

    void write()
    {
        QFETCH(QString, version);
        QFETCH(QString, comment);
        QFETCH(int, size);
        QTEST(writeUpdate(version, comment, size), "expected");
    }

    // Files as written above, and by hand.
    void read_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QString>("comment");
        const auto written = [](const char *name, const QString &comment, const QString &readBack) {
            QTest::newRow(name) << writeUpdate("1.2", comment, 48213) << readBack;
        };
        // What the text box held comes back byte for byte through the file.
        written("one line", "Added two gates.", "Added two gates.");
        written("blanks, tabs and lines kept", "Fixed a = b\n\tand c\n", "Fixed a = b\n\tand c\n");
        written("a line that is only a closing tag's start", "a </b> c", "a </b> c");
        written("empty", "", "");
        written("Windows-1252", "Gr\u00f6\u00dfer \u20ac \u0081", "Gr\u00f6\u00dfer \u20ac \u0081");
        QTest::newRow("missing end tag keeps the rest") << QByteArray("<version>\r\nall of it\r\n") << "all of it";
        QTest::newRow("capitals, LF only") << QByteArray("<VERSION ID=\"3\">\nnew\n</VERSION>\n") << "new";
    }

    void read()
    {
        QFETCH(QByteArray, file);
        QTEST(readUpdate(file), "comment");
    }
};
QTEST_APPLESS_MAIN(TestParserVersion)
#include "test_parser_version.moc"
