// Rover's readers judged on good and bad files: every row names the file kind,
// its bytes and what Rover does with it (nothing to say, a warning, an error)
// on which line.
#include "rover/RoverCacheRules.h"
#include "rover/RoverStyleRules.h"
#include "rover/RoverUpdateRules.h"

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
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("expected"); // "" = clean, else "E<line>" / "W<line>" of the first finding

    const QString S = QStringLiteral("style"), U = QStringLiteral("update"), C = QStringLiteral("cache");
    QTest::newRow("style clean") << S
                                 << style("<block symbol=\"a\" double=\"aa\" name=\"Wall_1\" "
                                          "file=\"w.block\"/>\r\n<sky colour=\"(1,2,3)\" brightness=\"50%\"/>")
                                 << "";
    QTest::newRow("style LF and color") << S << QByteArray("<STYLE>\n<Ground COLOR=\" ( 0 , 0 , 255 ) \"/>\n</style>")
                                        << "";
    QTest::newRow("symbol empty") << S << style("<block symbol=\"\" file=\"w.block\"/>") << "E2";
    QTest::newRow("symbol two bytes") << S << style("<block symbol=\"ab\" file=\"w.block\"/>") << "E2";
    QTest::newRow("symbol trimmed") << S << style("<block symbol=\" x \" file=\"w.block\"/>") << "";
    QTest::newRow("file missing") << S << style("<block symbol=\"a\"/>") << "E2";
    QTest::newRow("double single") << S << style("<block symbol=\"a\" double=\"A\" file=\"w\"/>") << "W2";
    QTest::newRow("name blank") << S << style("<block symbol=\"a\" name=\"my sound\" file=\"w\"/>") << "W2";
    QTest::newRow("duplicate symbol") << S
                                      << style("<block symbol=\"a\" file=\"w\"/>\r\n<block symbol=\"a\" file=\"v\"/>")
                                      << "W3";
    QTest::newRow("duplicate name case")
        << S << style("<block symbol=\"a\" name=\"X\" file=\"w\"/>\r\n<block symbol=\"b\" name=\"x\" file=\"v\"/>")
        << "W3";
    QTest::newRow("version 2") << S << QByteArray("<style version=\"2\">\r\n</style>") << "W1";
    QTest::newRow("version beta ok") << S << QByteArray("<style version=\"1.2.3B7\">\r\n</style>") << "";
    QTest::newRow("rgb no parens") << S << style("<sky colour=\"10,20,30\"/>") << "W2";
    QTest::newRow("percent 101") << S << style("<sky brightness=\"101%\"/>") << "W2";
    QTest::newRow("direction ok") << S << style("<orb position=\"(-1.5, 20)\"/>") << "";
    QTest::newRow("placeholder no texture") << S << style("<placeholder/>") << "E2";
    QTest::newRow("tag not self closed") << S << style("<block symbol=\"a\" file=\"w\">") << "E2";
    QTest::newRow("quote not closed") << S << QByteArray("<style name=\"S\r\n\">\r\n</style>") << "E1";
    QTest::newRow("quote in text") << S << style("it's") << "E2";
    QTest::newRow("unquoted value") << S << QByteArray("<style name=S>\r\n</style>") << "E1";
    QTest::newRow("eof in comment") << S << QByteArray("<style>\r\n<!-- open\r\n") << "E3";
    QTest::newRow("no end tag") << S << QByteArray("<style>\r\n<sky/>\r\n") << "E3";
    QTest::newRow("unknown tag skipped") << S << style("<extra>\r\n<block symbol=\"\"/>\r\n</extra>") << "";
    QTest::newRow("NUL ends line") << S << QByteArray("<style name=\"S\"/>\0 \"open\r\n", 26) << "";

    QTest::newRow("update clean") << U
                                  << QByteArray("<version id=\"1.1\" size=\"12 kb\">\r\nNew blocks.\r\n</version>\r\n")
                                  << "";
    QTest::newRow("update empty") << U << QByteArray() << "E0";
    QTest::newRow("update no size") << U << QByteArray("<version id=\"1.1\">\r\n</version>") << "E1";
    QTest::newRow("update bad id") << U << QByteArray("<version id=\"2\" size=\"1\">\r\n</version>") << "E1";
    QTest::newRow("update message starts lt")
        << U << QByteArray("<version id=\"1.1\" size=\"1\">\r\nok\r\n  <b>new</b>\r\n</version>") << "E3";
    QTest::newRow("update no end") << U << QByteArray("<version id=\"1.1\" size=\"1\">\r\nmessage\r\n") << "E3";

    QTest::newRow("cache clean") << C
                                 << QByteArray("<CACHE>\r\n<BLOCKSET href=\"http://x/a.bset\" size=\"10\" "
                                               "updated=\"-5\" version=\"1.0\"/>\r\n</CACHE>\r\n")
                                 << "";
    QTest::newRow("cache size commas")
        << C << QByteArray("<CACHE>\r\n<BLOCKSET href=\"h\" size=\"1,234,567\" updated=\"1\"/>\r\n</CACHE>") << "E2";
    QTest::newRow("cache no href") << C << QByteArray("<CACHE>\r\n<BLOCKSET size=\"1\" updated=\"1\"/>\r\n</CACHE>")
                                   << "E2";
    QTest::newRow("cache bad version")
        << C << QByteArray("<CACHE>\r\n<BLOCKSET href=\"h\" size=\"1\" updated=\"1\" version=\"x\"/>\r\n</CACHE>")
        << "W2";
    QTest::newRow("cache quote in name")
        << C << QByteArray("<CACHE>\r\n<BLOCKSET href=\"h\" size=\"1\" updated=\"1\" name=\"a\"b\"/>\r\n</CACHE>")
        << "E2";
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
