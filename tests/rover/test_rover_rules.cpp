// Rover's readers judged on good and bad files: every row names the file kind,
// its bytes and what Rover does with it (nothing to say, a warning, an error)
// on which line.
#include "rover/RoverCacheRules.h"
#include "rover/RoverStyleRules.h"
#include "rover/RoverUpdateRules.h"
#include "support/DataRows.h"

#include <QTest>

class TestRoverRules : public QObject {
    Q_OBJECT
private slots:
    void findings_data();
    void findings();
    void blockFileMustBeInArchive();
};

namespace {
QByteArray style(const QByteArray &inner)
{
    return "<style name=\"S\" version=\"1.0\">\r\n" + inner + "\r\n</style>\r\n";
}
} // namespace

void TestRoverRules::findings_data()
{
    addColumns<QString, QByteArray>("kind", "bytes");
    QTest::addColumn<QString>("expected"); // "" = clean, else "E<line>" / "W<line>" of the first finding

    const QString S = QStringLiteral("style"), U = QStringLiteral("update"), C = QStringLiteral("cache");
    addRow("style clean", S,
           style("<block symbol=\"a\" double=\"aa\" name=\"Wall_1\" "
                 "file=\"w.block\"/>\r\n<sky colour=\"(1,2,3)\" brightness=\"50%\"/>"),
           "");
    addRow("style LF and color", S, QByteArray("<STYLE>\n<Ground COLOR=\" ( 0 , 0 , 255 ) \"/>\n</style>"), "");
    addRow("symbol empty", S, style("<block symbol=\"\" file=\"w.block\"/>"), "E2");
    addRow("symbol two bytes", S, style("<block symbol=\"ab\" file=\"w.block\"/>"), "E2");
    addRow("symbol trimmed", S, style("<block symbol=\" x \" file=\"w.block\"/>"), "");
    addRow("file missing", S, style("<block symbol=\"a\"/>"), "E2");
    addRow("double single", S, style("<block symbol=\"a\" double=\"A\" file=\"w\"/>"), "W2");
    addRow("name blank", S, style("<block symbol=\"a\" name=\"my sound\" file=\"w\"/>"), "W2");
    addRow("duplicate symbol", S, style("<block symbol=\"a\" file=\"w\"/>\r\n<block symbol=\"a\" file=\"v\"/>"), "W3");
    addRow("duplicate name case", S,
           style("<block symbol=\"a\" name=\"X\" file=\"w\"/>\r\n<block symbol=\"b\" name=\"x\" file=\"v\"/>"), "W3");
    addRow("version 2", S, QByteArray("<style version=\"2\">\r\n</style>"), "W1");
    addRow("version beta ok", S, QByteArray("<style version=\"1.2.3B7\">\r\n</style>"), "");
    addRow("rgb no parens", S, style("<sky colour=\"10,20,30\"/>"), "W2");
    addRow("percent 101", S, style("<sky brightness=\"101%\"/>"), "W2");
    addRow("direction ok", S, style("<orb position=\"(-1.5, 20)\"/>"), "");
    addRow("placeholder no texture", S, style("<placeholder/>"), "E2");
    addRow("tag not self closed", S, style("<block symbol=\"a\" file=\"w\">"), "E2");
    addRow("quote not closed", S, QByteArray("<style name=\"S\r\n\">\r\n</style>"), "E1");
    addRow("quote in text", S, style("it's"), "E2");
    addRow("unquoted value", S, QByteArray("<style name=S>\r\n</style>"), "E1");
    addRow("eof in comment", S, QByteArray("<style>\r\n<!-- open\r\n"), "E3");
    addRow("no end tag", S, QByteArray("<style>\r\n<sky/>\r\n"), "E3");
    addRow("unknown tag skipped", S, style("<extra>\r\n<block symbol=\"\"/>\r\n</extra>"), "");
    addRow("NUL ends line", S, QByteArray("<style name=\"S\"/>\0 \"open\r\n", 26), "");

    addRow("update clean", U, QByteArray("<version id=\"1.1\" size=\"12 kb\">\r\nNew blocks.\r\n</version>\r\n"), "");
    addRow("update empty", U, QByteArray(), "E0");
    addRow("update no size", U, QByteArray("<version id=\"1.1\">\r\n</version>"), "E1");
    addRow("update bad id", U, QByteArray("<version id=\"2\" size=\"1\">\r\n</version>"), "E1");
    addRow("update message starts lt", U,
           QByteArray("<version id=\"1.1\" size=\"1\">\r\nok\r\n  <b>new</b>\r\n</version>"), "E3");
    addRow("update no end", U, QByteArray("<version id=\"1.1\" size=\"1\">\r\nmessage\r\n"), "E3");

    QTest::newRow("cache clean") << C
                                 << QByteArray("<CACHE>\r\n<BLOCKSET href=\"http://x/a.bset\" size=\"10\" "
                                               "updated=\"-5\" version=\"1.0\"/>\r\n</CACHE>\r\n")
                                 << "";
    addRow("cache size commas", C,
           QByteArray("<CACHE>\r\n<BLOCKSET href=\"h\" size=\"1,234,567\" updated=\"1\"/>\r\n</CACHE>"), "E2");
    addRow("cache no href", C, QByteArray("<CACHE>\r\n<BLOCKSET size=\"1\" updated=\"1\"/>\r\n</CACHE>"), "E2");
    addRow("cache bad version", C,
           QByteArray("<CACHE>\r\n<BLOCKSET href=\"h\" size=\"1\" updated=\"1\" version=\"x\"/>\r\n</CACHE>"), "W2");
    addRow("cache quote in name", C,
           QByteArray("<CACHE>\r\n<BLOCKSET href=\"h\" size=\"1\" updated=\"1\" name=\"a\"b\"/>\r\n</CACHE>"), "E2");
}

void TestRoverRules::findings()
{
    QFETCH(QString, kind);
    QFETCH(QByteArray, bytes);
    QFETCH(QString, expected);
    const RoverFindings found = kind == QLatin1String("style")    ? checkRoverStyle(bytes)
                                : kind == QLatin1String("update") ? checkRoverUpdate(bytes)
                                                                  : checkRoverCache(bytes);
    QString first;
    if (!found.isEmpty())
        first = (found.first().severity == RoverFinding::Error ? QLatin1Char('E') : QLatin1Char('W'))
                + QString::number(found.first().line);
    QVERIFY2(first == expected, qPrintable(found.isEmpty() ? first : first + QLatin1Char(' ') + found.first().text));
    QCOMPARE(hasRoverError(found), expected.startsWith(QLatin1Char('E')));
}

// Block files are matched against the archive's blocks/ folder ignoring case.
void TestRoverRules::blockFileMustBeInArchive()
{
    const QByteArray bytes =
        style("<block symbol=\"a\" file=\"Wall.BLOCK\"/>\r\n<block symbol=\"b\" file=\"gone.block\"/>");
    const QStringList files{QStringLiteral("wall.block")};
    const RoverFindings found = checkRoverStyle(bytes, &files);
    QCOMPARE(found.size(), 1);
    QCOMPARE(found.first().line, 3);
    QVERIFY(found.first().text.contains(QLatin1String("gone.block")));
}

QTEST_GUILESS_MAIN(TestRoverRules)
#include "test_rover_rules.moc"
