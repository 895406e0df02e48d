// Runs the real cubrix-cli program on blocksets built here, with its settings in
// a hive file and its working folder under a temporary "Temp", and checks what
// it prints, the files it writes and its exit status.

#include "common/HiveRegistry.h"
#include "support/TestFiles.h"
#include "common/RegistryWrapper.h"

#include <QtTest>

using namespace Qt::StringLiterals;

namespace {

using Entries = QList<QPair<QString, QByteArray>>;
using Settings = QMap<QString, bool>;

struct CliResult {
    int exitCode = -1;
    QByteArray out;
    QByteArray err;
};

// A block file as 3DML writes it; `bspRoot` empty means no BSP tree at all.
QByteArray blockText(const QByteArray &name, const QByteArray &type, const QByteArray &bspRoot = QByteArray())
{
    return "<block name=\"" + name + "\"" + (type.isEmpty() ? QByteArray() : " type=\"" + type + "\"")
           + ">\r\n<vertices>\r\n<vertex ref=\"1\" coords=\"(0,0,0)\"/>\r\n</vertices>\r\n"
           + (bspRoot.isEmpty() ? QByteArray() : "<BSP_TREE root=\"" + bspRoot + "\">\r\n<node polygon=\"1\"/>\r\n</BSP_TREE>\r\n")
           + "</block>\r\n";
}

QByteArray styleText(const QByteArray &header, const QList<QByteArray> &lines = {})
{
    QByteArray text = header + "\r\n<generator app=\"Cubrix\" version=\"0.9 Beta 1\"/>\r\n\r\n";
    for (const QByteArray &line : lines)
        text += line + "\r\n";
    return text + "\r\n</style>\r\n";
}

// Bytes that start like a GIF, JPEG or WAV file, `size` long.
QByteArray fileBytes(const QByteArray &magic, int size)
{
    return magic + QByteArray(size - magic.size(), 'x');
}

// Packs `entries` with the zip tool into `<dir>/<fileName>` and returns its path.
QString makeBlockset(const QTemporaryDir &dir, const QString &fileName, const Entries &entries)
{
    const QString out = dir.filePath(fileName);
    if (entries.isEmpty()) { // an archive with no entries: only the end-of-directory record
        writeBytes(out, QByteArray("PK\x05\x06", 4) + QByteArray(18, '\0'));
        return out;
    }
    const QString stage = dir.filePath(u"stage-"_s + fileName);
    for (const auto &entry : entries) {
        QDir().mkpath(QFileInfo(stage + u'/' + entry.first).absolutePath());
        writeBytes(stage + u'/' + entry.first, entry.second);
    }
    QProcess zip;
    zip.setWorkingDirectory(stage);
    zip.start(u"zip"_s, {u"-r"_s, u"-X"_s, u"-q"_s, out, u"."_s});
    const bool ok = zip.waitForFinished(60000) && zip.exitCode() == 0;
    QDir(stage).removeRecursively();
    return ok ? out : QString();
}

// Writes the settings store the program will read: defaults, then `changes`.
void writeSettings(const QTemporaryDir &dir, const Settings &changes)
{
    HiveRegistry registry(dir.filePath(u"registry.reg"_s));
    RegistryWrapper settings(registry);
    QVERIFY(settings.loadSettings());
    for (auto it = changes.begin(); it != changes.end(); ++it)
        QVERIFY(settings.setBoolSetting(it.key(), it.value()));
}

CliResult runCli(const QTemporaryDir &dir, const QStringList &arguments)
{
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(u"CUBRIX_REGISTRY"_s, dir.filePath(u"registry.reg"_s));
    env.insert(u"Temp"_s, dir.filePath(u"temp"_s));
    QDir().mkpath(dir.filePath(u"temp"_s));
    QProcess process;
    process.setProcessEnvironment(env);
    process.setWorkingDirectory(dir.path());
    process.start(QStringLiteral(CUBRIX_CLI_PATH), arguments);
    if (!process.waitForFinished(120000) || process.exitStatus() != QProcess::NormalExit)
        return CliResult(); // killed when `process` goes
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

QJsonObject infoJson(const QTemporaryDir &dir, const QString &file, const QStringList &extra = {})
{
    const CliResult result = runCli(dir, QStringList{u"info"_s, file, u"--json"_s} + extra);
    if (result.exitCode != 0)
        qWarning("cubrix-cli exit %d: %s", result.exitCode, result.err.constData());
    return QJsonDocument::fromJson(result.out).object();
}

QStringList sorted(QStringList list)
{
    return list.sort(), list;
}

QStringList keysOf(const QJsonValue &value) { return sorted(value.toObject().keys()); }

// File entries (not folder entries) that `unzip -Z1` lists for an archive, sorted.
QStringList archiveFiles(const QString &archive)
{
    QProcess unzip;
    unzip.start(u"unzip"_s, {u"-Z1"_s, archive});
    if (!unzip.waitForFinished(60000) || unzip.exitCode() != 0)
        return {u"<unzip failed>"_s};
    QStringList files = QString::fromUtf8(unzip.readAllStandardOutput()).split(u'\n', Qt::SkipEmptyParts);
    files.removeIf([](const QString &name) { return name.endsWith(u'/'); });
    return sorted(files);
}

// The castle fixture: two blocks, three textures, one sound, a full style and a
// file no list shows.
Entries castleEntries(const QString &styleName)
{
    const QByteArray header = "<style version=\"1.2\" name=\"Castle\" synopsis=\"Stone walls\" author=\"A. Builder\" "
                              "copyright=\"\xa9 2024 Quillmoor\">";
    return {{styleName, styleText(header, {"<placeholder texture=\"brick.gif\"/>",
                                           "<sky texture=\"clouds.jpg\" color=\"(0,0,255)\" brightness=\"80%\"/>",
                                           "<ground texture=\"grass.gif\" color=\"(0,128,0)\"/>",
                                           "<orb texture=\"sun.gif\" color=\"(255,255,255)\" brightness=\"100%\" "
                                           "position=\"(45,30)\" href=\"index.3dml\" target=\"_self\" text=\"Home\"/>",
                                           "<block symbol=\"a\" double=\".a\" file=\"gate.block\"/>",
                                           "<block symbol=\"b\" double=\".b\" file=\"wall.block\"/>"})},
            {u"blocks/wall.block"_s, blockText("Wall", "structural", "5")},
            {u"blocks/gate.block"_s, blockText("Gate", "Structural", "0")},
            {u"textures/brick.gif"_s, fileBytes("GIF89a", 3000)},
            {u"textures/clouds.jpg"_s, fileBytes("\xff\xd8\xff\xe0", 5000)},
            {u"textures/grass.gif"_s, fileBytes("GIF89a", 700)},
            {u"sounds/bell.wav"_s, fileBytes("RIFF", 9000)},
            {u"readme.txt"_s, "Not part of any list.\r\n"}};
}

} // namespace

class TestCli : public QObject {
    Q_OBJECT

private slots:
    void infoReportsEverything()
    {
        QTemporaryDir dir;
        QVERIFY(!makeBlockset(dir, u"Castle.bset"_s, castleEntries(u"Castle.style"_s)).isEmpty());
        writeBytes(dir.filePath(u"Castle.txt"_s),
                          "<version id=\"1.2\" size=\"100\">\r\nAdded two gates and a tower.\r\n</version>\r\n");

        // The path is reported as given, here relative to the working directory.
        const QJsonObject json = infoJson(dir, u"Castle.bset"_s);
        QCOMPARE(keysOf(json), sorted({u"file"_s, u"tab"_s, u"changed"_s, u"style"_s, u"symbols"_s, u"blocks"_s,
                                       u"textures"_s, u"sounds"_s, u"update"_s, u"messages"_s}));
        QCOMPARE(json[u"file"_s].toString(), u"Castle.bset"_s);
        QCOMPARE(json[u"tab"_s].toInt(-1), 0);
        QCOMPARE(json[u"changed"_s].toBool(true), false);
        QCOMPARE(json[u"update"_s].toString(), u"Added two gates and a tower."_s);
        QCOMPARE(json[u"messages"_s].toArray().size(), 0);

        const QMap<QString, QString> expectedStyle{
            {u"version"_s, u"1.2"_s}, {u"name"_s, u"Castle"_s}, {u"synopsis"_s, u"Stone walls"_s},
            {u"author"_s, u"A. Builder"_s}, {u"copyright"_s, u"\u00a9 2024 Quillmoor"_s}, // Windows-1252 in, UTF-8 out
            {u"placeholderTexture"_s, u"brick.gif"_s}, {u"skyTexture"_s, u"clouds.jpg"_s}, {u"skyColor"_s, u"(0,0,255)"_s},
            {u"skyBrightness"_s, u"80%"_s}, {u"groundTexture"_s, u"grass.gif"_s}, {u"groundColor"_s, u"(0,128,0)"_s},
            {u"orbTexture"_s, u"sun.gif"_s}, {u"orbColor"_s, u"(255,255,255)"_s}, {u"orbBrightness"_s, u"100%"_s},
            {u"orbPosition"_s, u"(45,30)"_s}, {u"orbHref"_s, u"index.3dml"_s}, {u"orbTarget"_s, u"_self"_s},
            {u"orbText"_s, u"Home"_s}};
        QMap<QString, QString> style;
        const QJsonObject styleObject = json[u"style"_s].toObject();
        for (auto it = styleObject.begin(); it != styleObject.end(); ++it)
            style.insert(it.key(), it.value().toString(u"<not a text>"_s));
        QCOMPARE(style, expectedStyle);
        QCOMPARE(keysOf(json[u"symbols"_s]),
                 sorted({u"strictPrefix"_s, u"strictPrefixBoxEnabled"_s, u"syncDouble"_s, u"syncDoubleBoxEnabled"_s, u"prefix"_s}));
        QCOMPARE(json[u"symbols"_s][u"prefix"_s].toString(), u"."_s);
        QVERIFY(json[u"symbols"_s][u"strictPrefix"_s].toBool() && json[u"symbols"_s][u"syncDouble"_s].toBool());

        // Blocks in list order (sorted by file name), with what the block files say.
        const QJsonArray blocks = json[u"blocks"_s].toArray();
        QCOMPARE(blocks.size(), 2);
        QCOMPARE(keysOf(blocks[0]), sorted({u"file"_s, u"name"_s, u"symbol"_s, u"double"_s, u"type"_s, u"bsp"_s, u"size"_s}));
        const auto blockRow = [](const QJsonValue &block) {
            QStringList row;
            for (const QString &key : {u"file"_s, u"name"_s, u"symbol"_s, u"double"_s, u"type"_s, u"bsp"_s})
                row.append(block[key].toString());
            return row << QString::number(block[u"size"_s].toInteger());
        };
        QCOMPARE(blockRow(blocks[0]), QStringList({u"gate.block"_s, u"Gate"_s, u"a"_s, u".a"_s, u"structural"_s, u"empty"_s,
                                                   QString::number(blockText("Gate", "Structural", "0").size())}));
        QCOMPARE(blockRow(blocks[1]), QStringList({u"wall.block"_s, u"Wall"_s, u"b"_s, u".b"_s, u"structural"_s, u"yes"_s,
                                                   QString::number(blockText("Wall", "structural", "5").size())}));
        QStringList items;
        for (const QString &list : {u"textures"_s, u"sounds"_s}) {
            for (const QJsonValue &item : json[list].toArray()) {
                QCOMPARE(keysOf(item), sorted({u"file"_s, u"size"_s}));
                items.append(item[u"file"_s].toString() + u' ' + QString::number(item[u"size"_s].toInteger()));
            }
        }
        QCOMPARE(items, QStringList({u"brick.gif 3000"_s, u"clouds.jpg 5000"_s, u"grass.gif 700"_s, u"bell.wav 9000"_s}));
        // The working folder is the CLI's own and gone when it exits.
        QVERIFY(!QFileInfo::exists(dir.filePath(u"temp/Cubrix/blocks"_s)));
    }

    void failures_data()
    {
        QTest::addColumn<QByteArray>("archiveBytes"); // empty: no file at all
        QTest::addColumn<QString>("command");

        QTest::newRow("info: missing file") << QByteArray() << "info";
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
            writeBytes(bset, archiveBytes);

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
        QTest::newRow("unknown option") << QStringList{u"info"_s, u"a.bset"_s, u"--yes"_s} << 2;
        QTest::newRow("save with one file") << QStringList{u"save"_s, u"a.bset"_s} << 2;
        QTest::newRow("--help after a command") << QStringList{u"info"_s, u"a.bset"_s, u"--help"_s} << 0;
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
        if (exitCode == 0) {
            for (const char *expected : {"save IN.bset OUT.bset", "--json", "--no", "CUBRIX_REGISTRY", "Exit status"})
                QVERIFY2(result.out.contains(expected), expected);
        }
        // Neither help nor a usage error touches the settings store.
        QVERIFY(!QFileInfo::exists(dir.filePath(u"registry.reg"_s)));
    }

    void saveAs_data()
    {
        QTest::addColumn<QString>("inStyle");
        QTest::addColumn<bool>("sync"); // the settings updateFile and syncBlockset
        QTest::addColumn<QString>("status");

        QTest::newRow("own style, defaults") << "Castle.style" << true << "Blockset and update file saved.";
        QTest::newRow("differing style renamed on open, no update file, name kept")
            << "Old.style" << false << "Blockset saved.";
    }

    void saveAs()
    {
        QFETCH(QString, inStyle);
        QFETCH(bool, sync);
        QTemporaryDir dir;
        writeSettings(dir, {{u"updateFile"_s, sync}, {u"syncBlockset"_s, sync}});
        const QString in = makeBlockset(dir, u"Castle.bset"_s, castleEntries(inStyle));
        QVERIFY(!in.isEmpty());
        const QByteArray inUpdate = "<version id=\"1.2\" size=\"1\">\r\nAdded two gates.\r\n</version>\r\n";
        writeBytes(dir.filePath(u"Castle.txt"_s), inUpdate);
        const QByteArray inBytes = readBytes(in);
        QVERIFY(QDir().mkpath(dir.filePath(u"out"_s)));

        const CliResult result = runCli(dir, {u"save"_s, in, u"out/Keep.bset"_s});
        QVERIFY2(result.exitCode == 0, result.err.constData());
        QTEST(QString::fromUtf8(result.out).trimmed(), "status");

        // The archive holds what IN held, with the style file named after OUT.
        const QString out = dir.filePath(u"out/Keep.bset"_s);
        QStringList expected = archiveFiles(in);
        expected.removeAll(inStyle);
        QCOMPARE(archiveFiles(out), sorted(expected << u"Keep.style"_s));
        // IN and its update file stay as they were; OUT's update file names OUT's size.
        QCOMPARE(readBytes(in), inBytes);
        QCOMPARE(readBytes(dir.filePath(u"Castle.txt"_s)), inUpdate);
        QCOMPARE(QFileInfo::exists(dir.filePath(u"out/Keep.txt"_s)), sync);
        if (sync)
            QCOMPARE(readBytes(dir.filePath(u"out/Keep.txt"_s)), "<version id=\"1.2\" size=\"" + QByteArray::number(QFileInfo(out).size())
                                                                  + "\">\r\nAdded two gates.\r\n</version>\r\n");

        // Opening OUT shows the same blockset, unchanged, under its new name when synchronised.
        const QJsonObject reopened = infoJson(dir, out);
        QCOMPARE(reopened[u"changed"_s].toBool(true), false);
        QCOMPARE(reopened[u"messages"_s].toArray().size(), 0);
        QCOMPARE(reopened[u"style"_s][u"name"_s].toString(), sync ? u"Keep"_s : u"Castle"_s);
        QCOMPARE(reopened[u"style"_s][u"copyright"_s].toString(), u"\u00a9 2024 Quillmoor"_s);
        QCOMPARE(reopened[u"blocks"_s].toArray()[1][u"double"_s].toString(), u".b"_s);
    }

};

QTEST_GUILESS_MAIN(TestCli)
#include "test_cli.moc"
