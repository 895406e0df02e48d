// Runs the real cubrix-cli program on blocksets built here, with its settings in
// a hive file and its working folder under a temporary "Temp", and checks what
// it prints, the files it writes and its exit status.

#include "CliRun.h"
#include "support/BlocksetFiles.h"

#include <QtTest>

using namespace Qt::StringLiterals;

namespace {

QJsonObject infoJson(const QTemporaryDir &dir, const QString &file)
{
    const CliResult result = runCli(dir, QStringList{u"info"_s, file, u"--json"_s});
    if (result.exitCode != 0)
        qWarning("cubrix-cli exit %d: %s", result.exitCode, result.err.constData());
    return QJsonDocument::fromJson(result.out).object();
}

QStringList sorted(QStringList list)
{
    return list.sort(), list;
}

QStringList keysOf(const QJsonValue &value)
{
    return sorted(value.toObject().keys());
}

// The castle fixture with a Windows-1252 copyright sign and a file no list shows.
FileMap castle(const QString &styleName = u"Castle.style"_s)
{
    FileMap files = castleFiles(styleName);
    files[styleName].replace("copyright=\"free\"", "copyright=\"\xa9 2024 Quillmoor\"");
    files.insert(u"readme.txt"_s, "Not part of any list.\r\n");
    return files;
}

} // namespace

class TestCli : public QObject {
    Q_OBJECT

private slots:
    void infoReportsEverything()
    {
        QTemporaryDir dir;
        QVERIFY(writeBset(dir.filePath(u"Castle.bset"_s), castle()));
        QVERIFY(writeFile(dir.filePath(u"Castle.txt"_s), updateFileText(u"1.2"_s, u"Added two gates."_s, 100)));

        // The path is reported as given, here relative to the working directory.
        const QJsonObject json = infoJson(dir, u"Castle.bset"_s);
        QCOMPARE(keysOf(json), sorted({u"file"_s, u"tab"_s, u"changed"_s, u"style"_s, u"symbols"_s, u"blocks"_s,
                                       u"textures"_s, u"sounds"_s, u"update"_s, u"messages"_s}));
        QCOMPARE(json[u"file"_s].toString(), u"Castle.bset"_s);
        QCOMPARE(json[u"tab"_s].toInt(-1), 0);
        QCOMPARE(json[u"changed"_s].toBool(true), false);
        QCOMPARE(json[u"update"_s].toString(), u"Added two gates."_s);
        QCOMPARE(json[u"messages"_s].toArray().size(), 0);

        // Every style value by its key; Windows-1252 in, UTF-8 out.
        const QJsonObject style = json[u"style"_s].toObject();
        QCOMPARE(style.size(), 18);
        QCOMPARE(QStringList({style[u"copyright"_s].toString(), style[u"skyBrightness"_s].toString(),
                              style[u"orbPosition"_s].toString(), style[u"orbText"_s].toString()}),
                 QStringList({u"\u00a9 2024 Quillmoor"_s, u"80%"_s, u"(45,30)"_s, u"Home"_s}));
        QCOMPARE(keysOf(json[u"symbols"_s]), sorted({u"strictPrefix"_s, u"strictPrefixEnabled"_s, u"syncDouble"_s,
                                                     u"syncDoubleEnabled"_s, u"prefix"_s}));
        QCOMPARE(json[u"symbols"_s][u"prefix"_s].toString(), u"."_s);

        // One block row with every key; the rows themselves are the open's own tests.
        const QJsonObject door = json[u"blocks"_s].toArray().first().toObject();
        QCOMPARE(keysOf(door),
                 sorted({u"file"_s, u"name"_s, u"symbol"_s, u"double"_s, u"type"_s, u"bsp"_s, u"size"_s}));
        QCOMPARE(door[u"size"_s].toInteger(), castleFiles()[u"blocks/door.block"_s].size());
        QCOMPARE(json[u"sounds"_s].toArray().first()[u"size"_s].toInteger(), 1234567);
        // The working folder is the CLI's own and gone when it exits.
        QVERIFY(!QFileInfo::exists(dir.filePath(u"temp/Cubrix/blocks"_s)));
    }

    void failures_data()
    {
        QTest::addColumn<QByteArray>("archiveBytes"); // empty: no file at all
        QTest::addColumn<QString>("command");

        QTest::newRow("info: not a ZIP archive") << QByteArray("This is plain text, not an archive.\r\n") << "info";
        QTest::newRow("save: not a ZIP archive") << QByteArray("PK\x03\x04 broken") << "save";
    }

    void failures()
    {
        QFETCH(QByteArray, archiveBytes);
        QFETCH(QString, command);
        QTemporaryDir dir;
        const QString bset = dir.filePath(u"Broken.bset"_s);
        if (!archiveBytes.isEmpty())
            QVERIFY(writeFile(bset, archiveBytes));

        const QString last = command == "save"_L1 ? dir.filePath(u"Out.bset"_s) : u"--json"_s;
        const CliResult result = runCli(dir, {command, bset, last});
        QCOMPARE(result.exitCode, 1);
        QVERIFY2(result.err.contains("Failed to open Blockset File."), result.err.constData());
        QVERIFY(result.out.isEmpty());
        QVERIFY(!QFileInfo::exists(dir.filePath(u"Out.bset"_s)));
        QVERIFY(!QFileInfo::exists(dir.filePath(u"temp/Cubrix/blocks"_s)));
    }

    void usage_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("exitCode");

        QTest::newRow("nothing") << QStringList() << 2;
        QTest::newRow("unknown command") << QStringList{u"open"_s, u"a.bset"_s} << 2;
        QTest::newRow("--help after a command") << QStringList{u"info"_s, u"a.bset"_s, u"--help"_s} << 0;
        QTest::newRow("--help after cache") << QStringList{u"cache"_s, u"--browser"_s, u"ie"_s, u"--help"_s} << 0;
        QTest::newRow("--help after render") << QStringList{u"render"_s, u"a.bset"_s, u"-h"_s} << 0;
    }

    void usage()
    {
        QFETCH(QStringList, arguments);
        QFETCH(int, exitCode);
        QTemporaryDir dir;
        const CliResult result = runCli(dir, arguments);
        QCOMPARE(result.exitCode, exitCode);
        // A usage error goes to stderr, help to stdout.
        QCOMPARE(result.out.isEmpty(), exitCode == 2);
        QCOMPARE(result.err.isEmpty(), exitCode == 0);
        QVERIFY((result.out + result.err).contains("Usage: cubrix-cli info FILE.bset"));
        // Neither help nor a usage error touches the settings store.
        QVERIFY(!QFileInfo::exists(dir.filePath(u"registry.reg"_s)));
    }

    // The three ways to name a cached blockset, and a browser without Rover.
    void cacheNames_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QString>("printed"); // stdout when it succeeds, else stderr

        const QString url = u"url"_s;
        QTest::newRow("unique file name")
            << QStringList{url, u"unique.BSET"_s} << 0 << u"http://b.example/Unique.bset\n"_s;
        QTest::newRow("path as listed") << QStringList{url, u"a.example\\sets\\Castle.bset"_s} << 0
                                        << u"http://a.example/sets/Castle.bset\n"_s;
        QTest::newRow("address") << QStringList{url, u"HTTP://B.example/castle.bset"_s} << 0
                                 << u"http://b.example/Castle.bset\n"_s;
        QTest::newRow("name of two") << QStringList{
            url,
            u"Castle.bset"_s} << 2 << u"cubrix-cli: several cached blocksets \"Castle.bset\"; name it by its path\n"_s;
        QTest::newRow("no such name") << QStringList{url, u"b.example/Tower.bset"_s} << 2
                                      << u"cubrix-cli: no cached blockset \"b.example/Tower.bset\"\n"_s;
        QTest::newRow("no Rover for Netscape") << QStringList{u"--browser"_s, u"netscape"_s} << 1
                                               << u"cubrix-cli: Rover is not installed for Netscape\n"_s;
    }

    void cacheNames()
    {
        QFETCH(QStringList, arguments);
        QFETCH(int, exitCode);
        QTemporaryDir dir;
        const QString prefix = dir.filePath(u"prefix"_s);
        const QString cache = prefix + u"/drive_c/Rover/flatland"_s;
        for (const QString &file :
             {u"a.example/sets/Castle.bset"_s, u"b.example/Castle.bset"_s, u"b.example/Unique.bset"_s})
            QVERIFY(QDir().mkpath(QFileInfo(cache + u'/' + file).path()) && writeFile(cache + u'/' + file, "x"));
        QVERIFY(QDir().mkpath(prefix + u"/dosdevices"_s));
        QVERIFY(QFile::link(u"../drive_c"_s, prefix + u"/dosdevices/c:"_s));
        QVERIFY(writeFile(prefix + u"/system.reg"_s,
                          "WINE REGISTRY Version 2\n\n[Software\\\\Microsoft\\\\Internet Explorer\\\\"
                          "Plugins\\\\Extension\\\\.3dml] 1\n\"Location\"=\"C:\\\\Rover\\\\np.dll\"\n"));
        qputenv("WINEPREFIX", QFile::encodeName(prefix));
        const CliResult result = runCli(dir, QStringList{u"cache"_s} + arguments);
        QCOMPARE(result.exitCode, exitCode);
        QTEST(QString::fromUtf8(exitCode == 0 ? result.out : result.err), "printed");
    }

    // The command runs the editor's Save As (whose rules are the document's tests):
    // OUT gets the blockset with a style of its own name, IN stays as it was.
    void saveAs()
    {
        QTemporaryDir dir;
        const QString in = dir.filePath(u"Castle.bset"_s);
        QVERIFY(writeBset(in, castle(u"Old.style"_s)));
        const QByteArray inBytes = readBytes(in);
        QVERIFY(QDir().mkpath(dir.filePath(u"out"_s)));

        const CliResult result = runCli(dir, {u"save"_s, in, u"out/Keep.bset"_s});
        QVERIFY2(result.exitCode == 0, result.err.constData());
        QCOMPARE(QString::fromUtf8(result.out).trimmed(), u"Blockset and update file saved."_s);
        QStringList expected = readBset(in).keys();
        expected.replace(expected.indexOf(u"Old.style"_s), u"Keep.style"_s);
        QCOMPARE(readBset(dir.filePath(u"out/Keep.bset"_s)).keys(), sorted(expected));
        QVERIFY(QFileInfo::exists(dir.filePath(u"out/Keep.txt"_s)));
        QCOMPARE(readBytes(in), inBytes);
        const QJsonObject reopened = infoJson(dir, dir.filePath(u"out/Keep.bset"_s));
        QCOMPARE(reopened[u"changed"_s].toBool(true), false);
        QCOMPARE(reopened[u"style"_s][u"copyright"_s].toString(), u"\u00a9 2024 Quillmoor"_s);
    }
};

QTEST_GUILESS_MAIN(TestCli)
#include "test_cli.moc"
