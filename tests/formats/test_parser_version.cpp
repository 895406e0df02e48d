#include "formats/Parser.h"
#include "formats/Parser_Version.h"
#include "support/DataRows.h"

#include <QtTest>

// The update file beside the archive: written with the comment's own line
// breaks, read back as one normalised line.
class TestParserVersion : public QObject {
    Q_OBJECT

private slots:
    void write_data()
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
        addColumns<QByteArray, QString>("file", "comment");
        const auto written = [](const char *name, const QString &comment, const QString &readBack) {
            QTest::newRow(name) << writeUpdate("1.2", comment, 48213) << readBack;
        };
        written("one line", "Added two gates.", "Added two gates.");
        written("blanks around equals closed up", "Fixed a = b", "Fixed a=b");
        written("lines joined without separator", "one\ntwo", "onetwo");
        written("cut at the first </", "a </b> c", "a ");
        written("Windows-1252", "Gr\u00f6\u00dfer \u20ac \u0081", "Gr\u00f6\u00dfer \u20ac \u0081");
        QTest::newRow("tabs lost, blanks kept untrimmed") << QByteArray("<version>  a\tb  </version>") << "  ab  ";
        QTest::newRow("missing end tag keeps the rest") << QByteArray("<version>all of it\r\n") << "all of it";
        QTest::newRow("capitals and comments") << QByteArray("<!-- note --><VERSION ID=\"3\">new</VERSION>") << "new";
        QTest::newRow("no version tag") << QByteArray("<other>text</other>") << "";
        QTest::newRow("no tags at all") << QByteArray("plain text") << "plain text";
    }

    void read()
    {
        QFETCH(QByteArray, file);
        Parser parser;
        parser.setBuffer(file);
        QTEST(readUpdate(parser), "comment");
        QVERIFY(parser.isEmpty());
    }
};

QTEST_APPLESS_MAIN(TestParserVersion)
#include "test_parser_version.moc"
