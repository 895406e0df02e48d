// Runs the real cubrix-cli program on blocksets built here and on a copy of the
// Castle example (floor, gate, torch, tower, wall with a..e), with its settings
// in a hive file and its working folder under a temporary "Temp", and checks
// what it prints, the files it writes and its exit status.

#include "CliRun.h"
#include "support/BlocksetFiles.h"
#include "support/BspTestBlocks.h"
#include "support/DataRows.h"

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

    QTemporaryDir m_dir;

    QPair<int, QJsonObject> cli(const QStringList &arguments)
    {
        const CliResult result = runCli(m_dir, arguments + QStringList{u"--json"_s});
        const QJsonObject report = QJsonDocument::fromJson(result.out).object();
        // What a command saved passes Rover's readers: the save would have said otherwise.
        for (const QJsonValue &message : report.value(u"messages"_s).toArray()) {
            if (message.toObject().value(u"title"_s) == u"Rover compatibility"_s)
                QTest::qFail(qPrintable(message.toObject().value(u"text"_s).toString()), __FILE__, __LINE__);
        }
        return {result.exitCode, report};
    }

    // The values of `key` in the blocks, sorted, or the style value `key`.
    static QStringList values(const QJsonObject &info, const QString &key)
    {
        if (info.value(u"style"_s).toObject().contains(key))
            return {info.value(u"style"_s).toObject().value(key).toString()};
        QStringList found;
        for (const QJsonValue &row : info.value(u"blocks"_s).toArray())
            found.append(row.toObject().value(key).toString());
        return found.sort(), found;
    }

private slots:
    void infoReportsEverything()
    {
        QTemporaryDir dir;
        QVERIFY(writeBset(dir.filePath(u"Castle.bset"_s), castle()));
        QVERIFY(writeFile(dir.filePath(u"Castle.txt"_s), updateFileText(u"1.2"_s, u"Added two gates."_s, 100)));

        // The path is reported as given, here relative to the working directory.
        const QJsonObject json = infoJson(dir, u"Castle.bset"_s);
        QCOMPARE(json[u"file"_s].toString(), u"Castle.bset"_s);
        QCOMPARE(json[u"tab"_s].toInt(-1), 0);
        QCOMPARE(json[u"changed"_s].toBool(true), false);
        QCOMPARE(json[u"update"_s].toString(), u"Added two gates."_s);
        QCOMPARE(json[u"messages"_s].toArray().size(), 0);

        // Every style value by its key; Windows-1252 in, UTF-8 out.
        const QJsonObject style = json[u"style"_s].toObject();
        QCOMPARE(QStringList({style[u"copyright"_s].toString(), style[u"skyBrightness"_s].toString(),
                              style[u"orbPosition"_s].toString(), style[u"orbText"_s].toString()}),
                 QStringList({u"\u00a9 2024 Quillmoor"_s, u"80%"_s, u"(45,30)"_s, u"Home"_s}));
        QCOMPARE(json[u"symbols"_s][u"prefix"_s].toString(), u"."_s);

        // The keys are the JSON schemas' test (cli_json_schemas); the rows are the open's own tests.
        const QJsonObject door = json[u"blocks"_s].toArray().first().toObject();
        QCOMPARE(door[u"size"_s].toInteger(), castleFiles()[u"blocks/door.block"_s].size());
        QCOMPARE(json[u"sounds"_s].toArray().first()[u"size"_s].toInteger(), 1234567);
        // The working folder is the CLI's own and gone when it exits.
        QVERIFY(!QFileInfo::exists(dir.filePath(u"temp/Cubrix/blocks"_s)));
    }

    void failures_data()
    {
        addColumns<QByteArray, QString>("archiveBytes", "command");
        addRow("info: not a ZIP archive", QByteArray("This is plain text, not an archive.\r\n"), "info");
        addRow("save: not a ZIP archive", QByteArray("PK\x03\x04 broken"), "save");
    }

    void failures()
    {
        QFETCH(QByteArray, archiveBytes);
        QFETCH(QString, command);
        QTemporaryDir dir;
        const QString bset = dir.filePath(u"Broken.bset"_s);
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
        addColumns<QStringList, int>("arguments", "exitCode");
        addRow("nothing", QStringList(), 2);
        addRow("unknown command", QStringList{"open", "a.bset"}, 2);
        addRow("--help after a command", QStringList{"info", "a.bset", "--help"}, 0);
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
        // printed: stdout when it succeeds, else stderr.
        addColumns<QStringList, int, QString>("arguments", "exitCode", "printed");
        addRow("unique file name", QStringList{"url", "unique.BSET"}, 0, "http://b.example/Unique.bset\n");
        addRow("path as listed", QStringList{"url", "a.example\\sets\\Castle.bset"}, 0,
               "http://a.example/sets/Castle.bset\n");
        addRow("address", QStringList{"url", "HTTP://B.example/castle.bset"}, 0, "http://b.example/Castle.bset\n");
        addRow("name of two", QStringList{"url", "Castle.bset"}, 2,
               "cubrix-cli: several cached blocksets \"Castle.bset\"; name it by its path\n");
        addRow("no such name", QStringList{"url", "b.example/Tower.bset"}, 2,
               "cubrix-cli: no cached blockset \"b.example/Tower.bset\"\n");
        addRow("no Rover for Netscape", QStringList{"--browser", "netscape"}, 1,
               "cubrix-cli: Rover is not installed for Netscape\n");
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

    // Items out of an archive, named in any case; a file there is kept unless --overwrite.
    void extract()
    {
        QTemporaryDir dir;
        const QString in = dir.filePath(u"Castle.bset"_s);
        QVERIFY(writeBset(in, castle()));
        const FileMap files = readBset(in);
        QVERIFY(writeFile(dir.filePath(u"wall.block"_s), "mine"));
        CliResult result = runCli(dir, {u"extract"_s, in, u"WALL.BLOCK"_s, u"brick.gif"_s, u"--to"_s, dir.path()});
        QCOMPARE(result.exitCode, 1);
        QVERIFY(result.err.contains("wall.block exists; --overwrite replaces it"));
        QVERIFY(!QFileInfo::exists(dir.filePath(u"brick.gif"_s)));
        result = runCli(
            dir, {u"extract"_s, in, u"WALL.BLOCK"_s, u"textures/brick.gif"_s, u"--to"_s, dir.path(), u"--overwrite"_s});
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(readBytes(dir.filePath(u"wall.block"_s)), files.value(u"blocks/wall.block"_s));
        QCOMPARE(readBytes(dir.filePath(u"brick.gif"_s)), files.value(u"textures/brick.gif"_s));
        QCOMPARE(runCli(dir, {u"extract"_s, in, u"Castle.style"_s, u"--to"_s, dir.path()}).exitCode, 1);
        QCOMPARE(runCli(dir, {u"extract"_s, in, u"wall.block"_s}).exitCode, 2);
    }

    void initTestCase()
    {
        // Files to add from, outside any blockset.
        for (const char *name : {"new wall.block", "sky.gif", "notes.txt"}) {
            QFile file(m_dir.filePath(QString::fromLatin1(name)));
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write("<BLOCK NAME=\"new wall\" TYPE=\"structural\">\r\n</BLOCK>\r\n");
        }
    }

    void commands_data()
    {
        addColumns<QStringList, int, QString, QStringList>("arguments", "exitCode", "key", "saved");
        const QStringList files{"floor.block", "gate.block", "torch.block", "tower.block", "wall.block"};
        const QString newWall = m_dir.filePath(u"new wall.block"_s);
        addRow("add", QStringList{"add", m_dir.filePath(u"sky.gif"_s), newWall}, 0, "symbol",
               QStringList{"A", "a", "b", "c", "d", "e"});
        addRow("add a file of no kind", QStringList{"add", m_dir.filePath(u"notes.txt"_s)}, 2, "file", files);
        addRow("replace, the source asked for", QStringList{"replace", "wall.block", "--from", newWall}, 0, "file",
               QStringList{"floor.block", "gate.block", "new wall.block", "torch.block", "tower.block"});
        addRow("symbols", QStringList{"symbols", "wall.block", "Z", ".Z"}, 0, "symbol",
               QStringList{"Z", "a", "b", "c", "d"});
        addRow("symbols not offered", QStringList{"symbols", "wall.block", "a", ".a"}, 1, "symbol",
               QStringList{"a", "b", "c", "d", "e"});
        addRow("remove", QStringList{"remove", "GATE.block", "bell.wav", "wall.block"}, 0, "file",
               QStringList{"floor.block", "torch.block", "tower.block"});
        addRow("remove unknown", QStringList{"remove", "moat.block"}, 2, "file", files);
        addRow("rename", QStringList{"rename", "wall.block", "keep.block"}, 0, "file",
               QStringList{"floor.block", "gate.block", "keep.block", "torch.block", "tower.block"});
        addRow("remap all", QStringList{"remap", "--all", "--prefix", "!"}, 0, "double",
               QStringList{"!A", "!B", "!C", "!D", "!E"});
        addRow("prefix", QStringList{"prefix", "x"}, 0, "double", QStringList{"xa", "xb", "xc", "xd", "xe"});
        addRow("set colour", QStringList{"set", "skyColor", "(1,2,3)"}, 0, "skyColor", QStringList{"(1,2,3)"});
        addRow("set a quote", QStringList{"set", "synopsis", "The \"Stone\" castle"}, 1, "synopsis",
               QStringList{"Stone walls, a gate, a tower and a torch"});
    }

    void commands()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, key);
        QFETCH(QStringList, saved);
        const QString file = m_dir.filePath(u"Castle.bset"_s);
        QFile::remove(file);
        QVERIFY(QFile::copy(QStringLiteral(CUBRIX_EXAMPLES) + u"/Castle.bset"_s, file));
        QFile(file).setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
        arguments.insert(1, file);

        const auto [exitCode, report] = cli(arguments);
        QTEST(exitCode, "exitCode");
        if (exitCode == 0) // the command's own report: what it left in memory, plus its status texts
            QVERIFY(values(report, key) == saved && report.value(u"results"_s).isArray());
        const auto [infoCode, info] = cli({u"info"_s, file});
        QCOMPARE(infoCode, 0);
        QCOMPARE(values(info, key), saved);
    }

    void check()
    {
        const QString castle = m_dir.filePath(u"Castle.bset"_s);
        QFile::remove(castle);
        QVERIFY(QFile::copy(QStringLiteral(CUBRIX_EXAMPLES) + u"/Castle.bset"_s, castle));
        QVERIFY(writeFile(m_dir.filePath(u"Castle.txt"_s), updateFileText(u"1.0"_s, u"First"_s, 1)));
        auto [code, report] = cli({u"check"_s, castle});
        QCOMPARE(code, 0);
        QVERIFY(report.value(u"roverLoadsBlockset"_s).toBool() && report.value(u"roverSeesUpdate"_s).toBool());

        // A style entry without a symbol and one naming a missing file; an update id Rover cannot read.
        const QString broken = m_dir.filePath(u"Broken.bset"_s);
        QVERIFY(
            writeBset(broken, {{u"Broken.style"_s, styleFile(u"B"_s, u"<block symbol=\"\" file=\"a.block\"/>\n"
                                                                     "<block symbol=\"b\" file=\"gone.block\"/>\n"_s)},
                               {u"blocks/a.block"_s, blockFile(u"a"_s)}}));
        QVERIFY(writeFile(m_dir.filePath(u"Broken.txt"_s), updateFileText(u"2.5a"_s, u"Second"_s, 1)));
        std::tie(code, report) = cli({u"check"_s, broken});
        QCOMPARE(code, 1);
        QVERIFY(!report.value(u"roverLoadsBlockset"_s).toBool() && !report.value(u"roverSeesUpdate"_s).toBool());
        QStringList errors;
        for (const QJsonValue &finding : report.value(u"findings"_s).toArray()) {
            const QJsonObject f = finding.toObject();
            if (f.value(u"severity"_s) == u"error"_s)
                errors << f.value(u"file"_s).toString() + u':' + QString::number(f.value(u"line"_s).toInt());
        }
        QCOMPARE(errors,
                 QStringList({u"Broken.style:2"_s, u"Broken.style:3"_s, u"blocks/a.block:5"_s, u"Broken.txt:1"_s}));
    }

    // bsp builds a tree once, keeps it the next time, and passes a sprite by.
    void bsp()
    {
        const QString file = m_dir.filePath(u"Trees.bset"_s);
        const QByteArray walls =
            blockText(blockOf(box({0, 0, 120}, {256, 256, 136}) + box({120, 0, 0}, {136, 256, 256})));
        QVERIFY(
            writeBset(file, {{u"Trees.style"_s, dosText(u"<style name=\"T\" version=\"1.0\">\n"
                                                        "<block symbol=\"a\" file=\"walls.block\"/>\n"
                                                        "<block symbol=\"b\" file=\"torch.block\"/>\n</style>\n"_s)},
                             {u"blocks/walls.block"_s, walls},
                             {u"blocks/torch.block"_s, blockFile(u"torch"_s, u"facing sprite"_s)}}));
        for (const QString &outcome : {u"built"_s, u"kept"_s}) {
            const auto [code, report] = cli({u"bsp"_s, file});
            QCOMPARE(code, 0);
            const QJsonObject built = report.value(u"bsp"_s).toObject().value(u"walls.block"_s).toObject();
            QCOMPARE(built.value(u"outcome"_s).toString(), outcome);
            QCOMPARE(built.value(u"splits"_s).toInt() > 0, outcome == u"built"_s);
            QCOMPARE(report.value(u"bsp"_s).toObject().value(u"torch.block"_s).toObject().value(u"outcome"_s),
                     u"skipped"_s);
            QCOMPARE(values(report, u"bsp"_s), QStringList({u"n/a"_s, u"yes"_s}));
        }
    }
};

QTEST_GUILESS_MAIN(TestCli)
#include "test_cli.moc"
