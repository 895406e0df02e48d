// Runs the real cubrix-cli program on blocksets built here, with its settings in
// a hive file and its working folder under a temporary "Temp", and checks what
// it prints, the files it writes and its exit status.

#include "common/HiveRegistry.h"
#include "common/RegistryWrapper.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

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
    QByteArray text = "<block name=\"" + name + "\"";
    if (!type.isEmpty())
        text += " type=\"" + type + "\"";
    text += ">\r\n"
            "  <vertices>\r\n"
            "    <vertex ref=\"1\" coords=\"(0,0,0)\"/>\r\n"
            "    <vertex ref=\"2\" coords=\"(256,0,0)\"/>\r\n"
            "    <vertex ref=\"3\" coords=\"(256,256,0)\"/>\r\n"
            "    <vertex ref=\"4\" coords=\"(0,256,0)\"/>\r\n"
            "  </vertices>\r\n"
            "  <parts>\r\n"
            "    <part name=\"s\" texture=\"brick.gif\">\r\n"
            "      <polygon ref=\"1\" vertices=\"1,4,3,2\"/>\r\n"
            "    </part>\r\n"
            "  </parts>\r\n";
    if (!bspRoot.isEmpty())
        text += "  <BSP_TREE root=\"" + bspRoot + "\">\r\n"
                "    <node polygon=\"1\" front=\"0\" rear=\"0\"/>\r\n"
                "  </BSP_TREE>\r\n";
    return text + "</block>\r\n";
}

QByteArray styleText(const QByteArray &header, const QList<QByteArray> &blockLines)
{
    QByteArray text = header + "\r\n<generator app=\"Cubrix\" version=\"0.9 Beta 1\"/>\r\n\r\n";
    for (const QByteArray &line : blockLines)
        text += line + "\r\n";
    return text + "\r\n</style>\r\n";
}

// Bytes that look like a GIF or JPEG of about the given size.
QByteArray imageBytes(const QByteArray &magic, int size)
{
    QByteArray bytes = magic;
    for (int i = 0; bytes.size() < size; ++i)
        bytes.append(char((i * 7919 + 13) & 0xff));
    return bytes;
}

bool writeFile(const QString &path, const QByteArray &bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Packs `entries` with the zip tool into `<dir>/<fileName>` and returns its path.
QString makeBlockset(const QTemporaryDir &dir, const QString &fileName, const Entries &entries)
{
    const QString out = dir.filePath(fileName);
    QFile::remove(out);
    if (entries.isEmpty()) {
        // An archive with no entries: only the end-of-directory record.
        writeFile(out, QByteArray("PK\x05\x06", 4) + QByteArray(18, '\0'));
        return out;
    }
    const QString stage = dir.filePath(u"stage-"_s + fileName);
    QDir(stage).removeRecursively();
    for (const auto &entry : entries)
        if (!writeFile(stage + u'/' + entry.first, entry.second))
            return QString();
    QProcess zip;
    zip.setWorkingDirectory(stage);
    zip.start(u"zip"_s, {u"-r"_s, u"-X"_s, u"-q"_s, out, u"."_s});
    if (!zip.waitForFinished(60000) || zip.exitCode() != 0)
        return QString();
    QDir(stage).removeRecursively();
    return out;
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
    QDir().mkpath(dir.filePath(u"temp"_s));
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(u"CUBRIX_REGISTRY"_s, dir.filePath(u"registry.reg"_s));
    env.insert(u"Temp"_s, dir.filePath(u"temp"_s));
    QProcess process;
    process.setProcessEnvironment(env);
    process.setWorkingDirectory(dir.path());
    process.start(QStringLiteral(CUBRIX_CLI_PATH), arguments);
    CliResult result;
    if (!process.waitForFinished(120000)) {
        process.kill();
        process.waitForFinished();
        return result;
    }
    result.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    result.out = process.readAllStandardOutput();
    result.err = process.readAllStandardError();
    return result;
}

QJsonObject infoJson(const QTemporaryDir &dir, const QString &file, const QStringList &extra = {})
{
    const CliResult result = runCli(dir, QStringList{u"info"_s, file, u"--json"_s} + extra);
    if (result.exitCode != 0) {
        qWarning("cubrix-cli exit %d: %s", result.exitCode, result.err.constData());
        return QJsonObject();
    }
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(result.out, &error);
    if (error.error != QJsonParseError::NoError)
        qWarning("not JSON: %s", result.out.constData());
    return document.object();
}

QStringList sortedKeys(const QJsonObject &object)
{
    QStringList keys = object.keys();
    keys.sort();
    return keys;
}

QStringList sorted(QStringList list)
{
    list.sort();
    return list;
}

// File entries (not folder entries) that `unzip -Z1` lists for an archive.
QStringList archiveFiles(const QString &archive)
{
    QProcess unzip;
    unzip.start(u"unzip"_s, {u"-Z1"_s, archive});
    if (!unzip.waitForFinished(60000) || unzip.exitCode() != 0)
        return {u"<unzip failed>"_s};
    QStringList files;
    for (const QByteArray &line : unzip.readAllStandardOutput().split('\n')) {
        const QString name = QString::fromUtf8(line.trimmed());
        if (!name.isEmpty() && !name.endsWith(u'/'))
            files.append(name);
    }
    files.sort();
    return files;
}

const QByteArray kFullHeader =
    "<style version=\"1.2\" name=\"Castle\" synopsis=\"Stone walls\" author=\"A. Builder\" "
    "copyright=\"\xa9 2024 Quillmoor\">";
const QByteArray kSceneLines =
    "<placeholder texture=\"brick.gif\"/>\r\n"
    "<sky texture=\"clouds.jpg\" color=\"(0,0,255)\" brightness=\"80%\"/>\r\n"
    "<ground texture=\"grass.gif\" color=\"(0,128,0)\"/>\r\n"
    "<orb texture=\"sun.gif\" color=\"(255,255,255)\" brightness=\"100%\" position=\"(45,30)\" "
    "href=\"index.3dml\" target=\"_self\" text=\"Home\"/>";

// The castle fixture: two blocks, three textures, one sound, a full style and an update file.
Entries castleEntries(const QString &styleName)
{
    return {
        {styleName, styleText(kFullHeader, {kSceneLines,
                                            "<block symbol=\"a\" double=\".a\" file=\"gate.block\"/>",
                                            "<block symbol=\"b\" double=\".b\" file=\"wall.block\"/>"})},
        {u"blocks/wall.block"_s, blockText("Wall", "structural", "5")},
        {u"blocks/gate.block"_s, blockText("Gate", "Structural", "0")},
        {u"textures/brick.gif"_s, imageBytes("GIF89a", 3000)},
        {u"textures/clouds.jpg"_s, imageBytes("\xff\xd8\xff\xe0", 5000)},
        {u"textures/grass.gif"_s, imageBytes("GIF89a", 700)},
        {u"sounds/bell.wav"_s, imageBytes("RIFF", 9000)},
        {u"readme.txt"_s, "Not part of any list.\r\n"},
    };
}

} // namespace

class TestCli : public QObject {
    Q_OBJECT

private slots:
    void infoReportsEverything();
    void infoPlainText();
    void infoTab_data();
    void infoTab();
    void infoBlocks_data();
    void infoBlocks();
    void infoSymbols_data();
    void infoSymbols();
    void infoStyleFile_data();
    void infoStyleFile();
    void failures_data();
    void failures();
    void usage_data();
    void usage();
    void saveAs_data();
    void saveAs();
    void saveFailures_data();
    void saveFailures();
    void sampleBlockset();
};

void TestCli::infoReportsEverything()
{
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    const QString bset = makeBlockset(dir, u"Castle.bset"_s, castleEntries(u"Castle.style"_s));
    QVERIFY(!bset.isEmpty());
    QVERIFY(writeFile(dir.filePath(u"Castle.txt"_s),
                      "<version id=\"1.2\" size=\"100\">\r\nAdded two gates and a tower.\r\n</version>\r\n"));

    // The path is reported as given, here relative to the working directory.
    const QJsonObject json = infoJson(dir, u"Castle.bset"_s);
    QCOMPARE(sortedKeys(json), sorted({u"file"_s, u"tab"_s, u"changed"_s, u"style"_s, u"symbols"_s, u"blocks"_s,
                                       u"textures"_s, u"sounds"_s, u"update"_s, u"messages"_s}));
    QCOMPARE(json[u"file"_s].toString(), u"Castle.bset"_s);
    QCOMPARE(json[u"tab"_s].toInt(-1), 0);
    QCOMPARE(json[u"changed"_s].toBool(true), false);
    QCOMPARE(json[u"update"_s].toString(), u"Added two gates and a tower."_s);
    QCOMPARE(json[u"messages"_s].toArray().size(), 0);

    const QJsonObject style = json[u"style"_s].toObject();
    const QMap<QString, QString> expectedStyle{
        {u"version"_s, u"1.2"_s},
        {u"name"_s, u"Castle"_s},
        {u"synopsis"_s, u"Stone walls"_s},
        {u"author"_s, u"A. Builder"_s},
        {u"copyright"_s, u"\u00a9 2024 Quillmoor"_s}, // Windows-1252 in the file, UTF-8 out
        {u"placeholderTexture"_s, u"brick.gif"_s},
        {u"skyTexture"_s, u"clouds.jpg"_s},
        {u"skyColor"_s, u"(0,0,255)"_s},
        {u"skyBrightness"_s, u"80%"_s},
        {u"groundTexture"_s, u"grass.gif"_s},
        {u"groundColor"_s, u"(0,128,0)"_s},
        {u"orbTexture"_s, u"sun.gif"_s},
        {u"orbColor"_s, u"(255,255,255)"_s},
        {u"orbBrightness"_s, u"100%"_s},
        {u"orbPosition"_s, u"(45,30)"_s},
        {u"orbHref"_s, u"index.3dml"_s},
        {u"orbTarget"_s, u"_self"_s},
        {u"orbText"_s, u"Home"_s},
    };
    QCOMPARE(sortedKeys(style), sorted(expectedStyle.keys()));
    for (auto it = expectedStyle.begin(); it != expectedStyle.end(); ++it)
        QCOMPARE(style[it.key()].toString(u"<not a text>"_s), it.value());

    const QJsonObject symbols = json[u"symbols"_s].toObject();
    QCOMPARE(sortedKeys(symbols), sorted({u"strictPrefix"_s, u"strictPrefixEnabled"_s, u"syncDouble"_s,
                                          u"syncDoubleEnabled"_s, u"prefix"_s}));
    QCOMPARE(symbols[u"prefix"_s].toString(), u"."_s);

    // Blocks in list order (sorted by file name), with what the block files say.
    const QJsonArray blocks = json[u"blocks"_s].toArray();
    QCOMPARE(blocks.size(), 2);
    const QJsonObject gate = blocks[0].toObject();
    QCOMPARE(sortedKeys(gate), sorted({u"file"_s, u"name"_s, u"symbol"_s, u"double"_s, u"type"_s, u"bsp"_s,
                                       u"size"_s}));
    QCOMPARE(gate[u"file"_s].toString(), u"gate.block"_s);
    QCOMPARE(gate[u"name"_s].toString(), u"Gate"_s);
    QCOMPARE(gate[u"symbol"_s].toString(), u"a"_s);
    QCOMPARE(gate[u"double"_s].toString(), u".a"_s);
    QCOMPARE(gate[u"type"_s].toString(), u"structural"_s);
    QCOMPARE(gate[u"bsp"_s].toString(), u"empty"_s);
    QCOMPARE(gate[u"size"_s].toInteger(), blockText("Gate", "Structural", "0").size());
    const QJsonObject wall = blocks[1].toObject();
    QCOMPARE(wall[u"file"_s].toString(), u"wall.block"_s);
    QCOMPARE(wall[u"symbol"_s].toString(), u"b"_s);
    QCOMPARE(wall[u"double"_s].toString(), u".b"_s);
    QCOMPARE(wall[u"bsp"_s].toString(), u"yes"_s);

    const QJsonArray textures = json[u"textures"_s].toArray();
    QCOMPARE(textures.size(), 3);
    const QList<QPair<QString, int>> expectedTextures{
        {u"brick.gif"_s, 3000}, {u"clouds.jpg"_s, 5000}, {u"grass.gif"_s, 700}};
    for (int i = 0; i < textures.size(); ++i) {
        const QJsonObject texture = textures[i].toObject();
        QCOMPARE(sortedKeys(texture), sorted({u"file"_s, u"size"_s}));
        QCOMPARE(texture[u"file"_s].toString(), expectedTextures[i].first);
        QCOMPARE(texture[u"size"_s].toInteger(), expectedTextures[i].second);
    }
    const QJsonArray sounds = json[u"sounds"_s].toArray();
    QCOMPARE(sounds.size(), 1);
    QCOMPARE(sounds[0].toObject()[u"file"_s].toString(), u"bell.wav"_s);
    QCOMPARE(sounds[0].toObject()[u"size"_s].toInteger(), 9000);

    // The working folder is the CLI's own and gone when it exits.
    QVERIFY(!QFileInfo::exists(dir.filePath(u"temp/Cubrix/blocks"_s)));
}

void TestCli::infoPlainText()
{
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    const QString bset = makeBlockset(dir, u"Castle.bset"_s, castleEntries(u"Castle.style"_s));
    QVERIFY(!bset.isEmpty());
    const CliResult result = runCli(dir, {u"info"_s, bset});
    QCOMPARE(result.exitCode, 0);
    const QString text = QString::fromUtf8(result.out);
    for (const QString &expected : {u"gate.block"_s, u"Gate"_s, u"wall.block"_s, u"clouds.jpg"_s, u"bell.wav"_s,
                                    u"(0,0,255)"_s, u"\u00a9 2024 Quillmoor"_s, u"5,000"_s,
                                    u"Strict Prefix & Sync Double Mode activated."_s})
        QVERIFY2(text.contains(expected), qPrintable(expected + u" missing in:\n"_s + text));
    QVERIFY(result.out.trimmed().startsWith("Blockset:"));
}

void TestCli::infoTab_data()
{
    QTest::addColumn<Entries>("entries");
    QTest::addColumn<int>("tab");

    const QByteArray style = styleText("<style version=\"1\">", {});
    const QPair<QString, QByteArray> styleEntry{u"Items.style"_s, style};
    const QPair<QString, QByteArray> block{u"blocks/a.block"_s, blockText("A", "structural")};
    const QPair<QString, QByteArray> texture{u"textures/t.jpg"_s, imageBytes("\xff\xd8\xff", 100)};
    const QPair<QString, QByteArray> sound{u"sounds/s.wav"_s, imageBytes("RIFF", 100)};

    QTest::newRow("blocks, textures and sounds") << Entries{styleEntry, block, texture, sound} << 0;
    QTest::newRow("textures and sounds") << Entries{styleEntry, texture, sound} << 1;
    QTest::newRow("sounds only") << Entries{styleEntry, sound} << 2;
    QTest::newRow("style only") << Entries{styleEntry} << 3;
    // Files of other kinds in the item folders are not items.
    QTest::newRow("no item files") << Entries{styleEntry, {u"textures/notes.txt"_s, "x"}, {u"blocks/a.blk"_s, "x"}}
                                   << 3;
}

void TestCli::infoTab()
{
    QFETCH(Entries, entries);
    QFETCH(int, tab);
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    const QString bset = makeBlockset(dir, u"Items.bset"_s, entries);
    QVERIFY(!bset.isEmpty());
    const QJsonObject json = infoJson(dir, bset);
    QCOMPARE(json[u"tab"_s].toInt(-1), tab);
    QCOMPARE(json[u"messages"_s].toArray().size(), 0);
}

void TestCli::infoBlocks_data()
{
    QTest::addColumn<QByteArray>("block");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("type");
    QTest::addColumn<QString>("bsp");

    QTest::newRow("structural with tree") << blockText("Wall", "Structural", "5") << "Wall" << "structural" << "yes";
    QTest::newRow("empty tree") << blockText("Wall", "structural", "0") << "Wall" << "structural" << "empty";
    QTest::newRow("no tree") << blockText("Floor", "structural") << "Floor" << "structural" << "no";
    QTest::newRow("no type") << blockText("Plain", QByteArray(), "1") << "Plain" << "structural" << "yes";
    QTest::newRow("sprite with tree") << blockText("Tree", "sprite", "3") << "Tree" << "sprite" << "n/a";
    QTest::newRow("lower-case tree is not seen")
        << QByteArray("<block name=\"Low\" type=\"structural\">\r\n<bsp_tree root=\"5\">\r\n</bsp_tree>\r\n</block>\r\n")
        << "Low" << "structural" << "no";
    QTest::newRow("no block tag") << QByteArray("just text, no tags\r\n") << "" << "structural" << "no";
    QTest::newRow("cut off inside a tag") << QByteArray("<block name=\"Cut\" type=\"spr") << "" << "structural"
                                          << "no";
}

void TestCli::infoBlocks()
{
    QFETCH(QByteArray, block);
    QFETCH(QString, name);
    QFETCH(QString, type);
    QFETCH(QString, bsp);
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    const QString bset = makeBlockset(
        dir, u"One.bset"_s,
        {{u"One.style"_s, styleText("<style name=\"One\">", {"<block symbol=\"q\" double=\".q\" file=\"x.block\"/>"})},
         {u"blocks/x.block"_s, block}});
    QVERIFY(!bset.isEmpty());
    const QJsonArray blocks = infoJson(dir, bset)[u"blocks"_s].toArray();
    QCOMPARE(blocks.size(), 1);
    const QJsonObject row = blocks[0].toObject();
    QCOMPARE(row[u"file"_s].toString(), u"x.block"_s);
    QCOMPARE(row[u"name"_s].toString(), name);
    QCOMPARE(row[u"type"_s].toString(), type);
    QCOMPARE(row[u"bsp"_s].toString(), bsp);
    QCOMPARE(row[u"symbol"_s].toString(), u"q"_s);
    QCOMPARE(row[u"double"_s].toString(), u".q"_s);
    QCOMPARE(row[u"size"_s].toInteger(), block.size());
}

void TestCli::infoSymbols_data()
{
    QTest::addColumn<QList<QByteArray>>("blockLines");
    QTest::addColumn<Settings>("settings");
    QTest::addColumn<bool>("strictPrefix");
    QTest::addColumn<bool>("strictPrefixEnabled");
    QTest::addColumn<bool>("syncDouble");
    QTest::addColumn<bool>("syncDoubleEnabled");
    QTest::addColumn<QString>("prefix");

    const QList<QByteArray> consistent{"<block symbol=\"a\" double=\".a\" file=\"a.block\"/>",
                                       "<block symbol=\"b\" double=\".b\" file=\"b.block\"/>"};
    QTest::newRow("consistent, settings on") << consistent << Settings{} << true << true << true << true << ".";
    QTest::newRow("consistent, strict prefix setting off")
        << consistent << Settings{{u"strictPrefix"_s, false}} << false << true << false << false << ".";
    QTest::newRow("consistent, sync double setting off")
        << consistent << Settings{{u"syncDouble"_s, false}} << true << true << false << true << ".";
    QTest::newRow("other common prefix")
        << QList<QByteArray>{"<block symbol=\"a\" double=\"#a\" file=\"a.block\"/>",
                             "<block symbol=\"b\" double=\"#b\" file=\"b.block\"/>"}
        << Settings{} << true << true << true << true << "#";
    QTest::newRow("one block without double")
        << QList<QByteArray>{"<block symbol=\"a\" double=\".a\" file=\"a.block\"/>",
                             "<block symbol=\"b\" file=\"b.block\"/>"}
        << Settings{} << false << false << false << false << ".";
    QTest::newRow("doubles out of step with symbols")
        << QList<QByteArray>{"<block symbol=\"a\" double=\".a\" file=\"a.block\"/>",
                             "<block symbol=\"x\" double=\".y\" file=\"b.block\"/>"}
        << Settings{} << true << true << false << false << ".";
    QTest::newRow("two prefixes")
        << QList<QByteArray>{"<block symbol=\"a\" double=\".a\" file=\"a.block\"/>",
                             "<block symbol=\"b\" double=\"!b\" file=\"b.block\"/>"}
        << Settings{} << false << false << false << false << ".";
}

void TestCli::infoSymbols()
{
    QFETCH(QList<QByteArray>, blockLines);
    QFETCH(Settings, settings);
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    writeSettings(dir, settings);
    const QString bset =
        makeBlockset(dir, u"Sym.bset"_s,
                     {{u"Sym.style"_s, styleText("<style name=\"Sym\">", blockLines)},
                      {u"blocks/a.block"_s, blockText("A", "structural")},
                      {u"blocks/b.block"_s, blockText("B", "structural")}});
    QVERIFY(!bset.isEmpty());
    const QJsonObject symbols = infoJson(dir, bset)[u"symbols"_s].toObject();
    QTEST(symbols[u"strictPrefix"_s].toBool(), "strictPrefix");
    QTEST(symbols[u"strictPrefixEnabled"_s].toBool(), "strictPrefixEnabled");
    QTEST(symbols[u"syncDouble"_s].toBool(), "syncDouble");
    QTEST(symbols[u"syncDoubleEnabled"_s].toBool(), "syncDoubleEnabled");
    QTEST(symbols[u"prefix"_s].toString(), "prefix");
}

void TestCli::infoStyleFile_data()
{
    QTest::addColumn<Entries>("entries");
    QTest::addColumn<QStringList>("extraArguments");
    QTest::addColumn<Settings>("settings");
    QTest::addColumn<QStringList>("messages"); // "title|text" each
    QTest::addColumn<bool>("changed");
    QTest::addColumn<QString>("version");
    QTest::addColumn<QString>("name");

    const QString warning = u"Open Blockset|Unable to load style file!\n"
                            "You will have to define all block symbols manually."_s;
    const QString question = u"Open Blockset|Found differing style file \"Red.style\". "
                             "Do you want this file to be renamed and parsed?"_s;
    const QByteArray redStyle = styleText("<style version=\"7\" name=\"Red\">", {});
    const QByteArray blueStyle = styleText("<style version=\"8\" name=\"Blue\">", {});

    QTest::newRow("no style file") << Entries{{u"textures/t.gif"_s, imageBytes("GIF89a", 50)}} << QStringList()
                                   << Settings{} << QStringList{warning} << false << "" << "Blue";
    QTest::newRow("no style file, name not synchronised")
        << Entries{{u"textures/t.gif"_s, imageBytes("GIF89a", 50)}} << QStringList()
        << Settings{{u"syncBlockset"_s, false}} << QStringList{warning} << false << "" << "";
    QTest::newRow("empty archive") << Entries{} << QStringList() << Settings{} << QStringList{warning} << false << ""
                                   << "Blue";
    QTest::newRow("differing style renamed") << Entries{{u"Red.style"_s, redStyle}} << QStringList() << Settings{}
                                             << QStringList{question} << true << "7" << "Red";
    QTest::newRow("differing style declined with --no")
        << Entries{{u"Red.style"_s, redStyle}} << QStringList{u"--no"_s} << Settings{}
        << QStringList{question, warning} << false << "" << "Blue";
    QTest::newRow("own style beside another") << Entries{{u"Red.style"_s, redStyle}, {u"Blue.style"_s, blueStyle}}
                                              << QStringList() << Settings{} << QStringList() << false << "8"
                                              << "Blue";
    QTest::newRow("style name differs in case only")
        << Entries{{u"blue.style"_s, redStyle}} << QStringList{u"--no"_s} << Settings{}
        << QStringList{u"Open Blockset|Found differing style file \"blue.style\". "
                       "Do you want this file to be renamed and parsed?"_s,
                       warning}
        << false << "" << "Blue";
}

void TestCli::infoStyleFile()
{
    QFETCH(Entries, entries);
    QFETCH(QStringList, extraArguments);
    QFETCH(Settings, settings);
    QFETCH(QStringList, messages);
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    writeSettings(dir, settings);
    const QString bset = makeBlockset(dir, u"Blue.bset"_s, entries);
    QVERIFY(!bset.isEmpty());

    const QJsonObject json = infoJson(dir, bset, extraArguments);
    QVERIFY(!json.isEmpty());
    QStringList shown;
    for (const QJsonValue &message : json[u"messages"_s].toArray()) {
        const QJsonObject object = message.toObject();
        QCOMPARE(sortedKeys(object), sorted({u"title"_s, u"text"_s}));
        // The line break inside a message may be written either way.
        shown.append(object[u"title"_s].toString() + u'|'
                     + object[u"text"_s].toString().replace(u"\r\n"_s, u"\n"_s));
    }
    QCOMPARE(shown, messages);
    QTEST(json[u"changed"_s].toBool(), "changed");
    QTEST(json[u"style"_s].toObject()[u"version"_s].toString(), "version");
    QTEST(json[u"style"_s].toObject()[u"name"_s].toString(), "name");
    // The open never touches the archive itself: a rename happens in the working folder.
    if (!entries.isEmpty()) {
        QStringList names;
        for (const auto &entry : entries)
            names.append(entry.first);
        QCOMPARE(archiveFiles(bset), sorted(names));
    }
}

void TestCli::failures_data()
{
    QTest::addColumn<QByteArray>("archiveBytes"); // empty: no file at all
    QTest::addColumn<QString>("command");
    QTest::addColumn<QString>("message");

    QByteArray truncated;
    {
        QTemporaryDir dir;
        const QString bset = makeBlockset(dir, u"T.bset"_s, castleEntries(u"T.style"_s));
        truncated = readFile(bset);
        truncated.chop(truncated.size() / 2);
    }
    QByteArray corrupt;
    {
        // A stored entry whose data no longer matches its CRC.
        QTemporaryDir dir;
        const QString stage = dir.filePath(u"s"_s);
        writeFile(stage + u"/blocks/a.block"_s, blockText("A", "structural"));
        QProcess zip;
        zip.setWorkingDirectory(stage);
        zip.start(u"zip"_s, {u"-r"_s, u"-X"_s, u"-q"_s, u"-0"_s, dir.filePath(u"c.bset"_s), u"."_s});
        zip.waitForFinished(60000);
        corrupt = readFile(dir.filePath(u"c.bset"_s));
        const qsizetype at = corrupt.indexOf("<block name");
        if (at >= 0)
            corrupt[at + 1] = 'B';
    }
    const QString failedOpen = u"Failed to open Blockset File."_s;

    QTest::newRow("info: missing file") << QByteArray() << "info" << failedOpen;
    QTest::newRow("info: not a ZIP archive") << QByteArray("This is plain text, not an archive.\r\n") << "info"
                                             << failedOpen;
    QTest::newRow("info: truncated archive") << truncated << "info" << failedOpen;
    QTest::newRow("info: CRC error") << corrupt << "info" << failedOpen;
    QTest::newRow("save: not a ZIP archive") << QByteArray("PK\x03\x04 broken") << "save" << failedOpen;
    QTest::newRow("save: missing file") << QByteArray() << "save" << failedOpen;
}

void TestCli::failures()
{
    QFETCH(QByteArray, archiveBytes);
    QFETCH(QString, command);
    QFETCH(QString, message);
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    const QString bset = dir.filePath(u"Broken.bset"_s);
    if (!archiveBytes.isEmpty())
        QVERIFY(writeFile(bset, archiveBytes));

    QStringList arguments{command, bset};
    if (command == "save"_L1)
        arguments.append(dir.filePath(u"Out.bset"_s));
    else
        arguments.append(u"--json"_s);
    const CliResult result = runCli(dir, arguments);
    QCOMPARE(result.exitCode, 1);
    QVERIFY2(QString::fromUtf8(result.err).contains(message), result.err.constData());
    QVERIFY(result.out.isEmpty());
    QVERIFY(!QFileInfo::exists(dir.filePath(u"Out.bset"_s)));
    QVERIFY(!QFileInfo::exists(dir.filePath(u"temp/Cubrix/blocks"_s)));
}

void TestCli::usage_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("exitCode");

    QTest::newRow("nothing") << QStringList() << 2;
    QTest::newRow("unknown command") << QStringList{u"open"_s, u"a.bset"_s} << 2;
    QTest::newRow("unknown option") << QStringList{u"info"_s, u"a.bset"_s, u"--yes"_s} << 2;
    QTest::newRow("info without file") << QStringList{u"info"_s} << 2;
    QTest::newRow("info with two files") << QStringList{u"info"_s, u"a.bset"_s, u"b.bset"_s} << 2;
    QTest::newRow("save with one file") << QStringList{u"save"_s, u"a.bset"_s} << 2;
    QTest::newRow("save with three files") << QStringList{u"save"_s, u"a.bset"_s, u"b.bset"_s, u"c.bset"_s} << 2;
    QTest::newRow("save with --json") << QStringList{u"save"_s, u"a.bset"_s, u"b.bset"_s, u"--json"_s} << 2;
    QTest::newRow("--help") << QStringList{u"--help"_s} << 0;
    QTest::newRow("-h") << QStringList{u"-h"_s} << 0;
    QTest::newRow("--help after a command") << QStringList{u"info"_s, u"a.bset"_s, u"--help"_s} << 0;
}

void TestCli::usage()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, exitCode);
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    const CliResult result = runCli(dir, arguments);
    QCOMPARE(result.exitCode, exitCode);
    if (exitCode == 2) {
        QVERIFY(result.out.isEmpty());
        QVERIFY2(result.err.contains("Usage: cubrix-cli info FILE.bset"), result.err.constData());
    } else {
        QVERIFY(result.err.isEmpty());
        for (const char *expected : {"Usage: cubrix-cli info FILE.bset", "save IN.bset OUT.bset", "--json", "--no",
                                     "CUBRIX_REGISTRY", "Exit status"})
            QVERIFY2(result.out.contains(expected), expected);
    }
    // Neither help nor a usage error touches the settings store.
    QVERIFY(!QFileInfo::exists(dir.filePath(u"registry.reg"_s)));
}

void TestCli::saveAs_data()
{
    QTest::addColumn<QString>("inStyle");
    QTest::addColumn<Settings>("settings");
    QTest::addColumn<QString>("status");

    QTest::newRow("own style, update file on") << "Castle.style" << Settings{}
                                               << "Blockset and update file saved.";
    QTest::newRow("differing style renamed on open") << "Old.style" << Settings{}
                                                     << "Blockset and update file saved.";
    QTest::newRow("update file off") << "Castle.style" << Settings{{u"updateFile"_s, false}} << "Blockset saved.";
    QTest::newRow("name not synchronised") << "Castle.style" << Settings{{u"syncBlockset"_s, false}}
                                           << "Blockset and update file saved.";
}

void TestCli::saveAs()
{
    QFETCH(QString, inStyle);
    QFETCH(Settings, settings);
    QFETCH(QString, status);
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    writeSettings(dir, settings);
    const QString in = makeBlockset(dir, u"Castle.bset"_s, castleEntries(inStyle));
    QVERIFY(!in.isEmpty());
    const QByteArray inUpdate = "<version id=\"1.2\" size=\"1\">\r\nAdded two gates.\r\n</version>\r\n";
    QVERIFY(writeFile(dir.filePath(u"Castle.txt"_s), inUpdate));
    const QByteArray inBytes = readFile(in);
    QVERIFY(QDir().mkpath(dir.filePath(u"out"_s)));

    const CliResult result = runCli(dir, {u"save"_s, in, u"out/Keep.bset"_s});
    QVERIFY2(result.exitCode == 0, result.err.constData());
    QCOMPARE(QString::fromUtf8(result.out).trimmed(), status);

    const QString out = dir.filePath(u"out/Keep.bset"_s);
    QVERIFY(QFileInfo(out).isFile());
    // The archive holds what IN held, with the style file named after OUT.
    QStringList expected = archiveFiles(in);
    expected.removeAll(inStyle);
    expected.append(u"Keep.style"_s);
    expected.sort();
    QCOMPARE(archiveFiles(out), expected);
    // IN and its update file stay as they were.
    QCOMPARE(readFile(in), inBytes);
    QCOMPARE(readFile(dir.filePath(u"Castle.txt"_s)), inUpdate);

    const bool updateFile = settings.value(u"updateFile"_s, true);
    const QString outUpdate = dir.filePath(u"out/Keep.txt"_s);
    QCOMPARE(QFileInfo::exists(outUpdate), updateFile);
    if (updateFile) {
        const QByteArray expectedUpdate = "<version id=\"1.2\" size=\"" + QByteArray::number(QFileInfo(out).size())
                                          + "\">\r\nAdded two gates.\r\n</version>\r\n";
        QCOMPARE(readFile(outUpdate), expectedUpdate);
    }

    // Opening OUT shows the same blockset, unchanged, under its new name when synchronised.
    const QJsonObject reopened = infoJson(dir, out);
    QCOMPARE(reopened[u"changed"_s].toBool(true), false);
    QCOMPARE(reopened[u"messages"_s].toArray().size(), 0);
    const QJsonObject style = reopened[u"style"_s].toObject();
    const bool syncName = settings.value(u"syncBlockset"_s, true);
    QCOMPARE(style[u"name"_s].toString(), syncName ? u"Keep"_s : u"Castle"_s);
    QCOMPARE(style[u"orbText"_s].toString(), u"Home"_s);
    QCOMPARE(style[u"copyright"_s].toString(), u"\u00a9 2024 Quillmoor"_s);
    const QJsonArray blocks = reopened[u"blocks"_s].toArray();
    QCOMPARE(blocks.size(), 2);
    QCOMPARE(blocks[1].toObject()[u"double"_s].toString(), u".b"_s);
    QCOMPARE(reopened[u"textures"_s].toArray().size(), 3);
    QVERIFY(!QFileInfo::exists(dir.filePath(u"temp/Cubrix/blocks"_s)));
}

void TestCli::saveFailures_data()
{
    QTest::addColumn<QString>("target");
    QTest::addColumn<QString>("inTheWay"); // a folder created where a file is to go
    QTest::addColumn<QString>("message");
    QTest::addColumn<bool>("archiveWritten");

    QTest::newRow("target folder missing") << "missing/Out.bset" << "" << "Error: Unable to save blockset!" << false;
    QTest::newRow("target is a folder") << "Out.bset" << "Out.bset" << "Error: Unable to save blockset!" << false;
    QTest::newRow("update file is a folder") << "Out.bset" << "Out.txt" << "Error: Unable to save update information!"
                                             << true;
}

void TestCli::saveFailures()
{
    QFETCH(QString, target);
    QFETCH(QString, inTheWay);
    QFETCH(QString, message);
    QFETCH(bool, archiveWritten);
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    const QString in = makeBlockset(dir, u"Castle.bset"_s, castleEntries(u"Castle.style"_s));
    QVERIFY(!in.isEmpty());
    if (!inTheWay.isEmpty())
        QVERIFY(QDir().mkpath(dir.filePath(inTheWay)));

    const CliResult result = runCli(dir, {u"save"_s, in, target});
    QCOMPARE(result.exitCode, 1);
    QVERIFY2(QString::fromUtf8(result.err).contains(message), result.err.constData());
    QVERIFY(result.out.isEmpty());
    QCOMPARE(QFileInfo(dir.filePath(target)).isFile(), archiveWritten);
    QVERIFY(!QFileInfo::exists(dir.filePath(u"temp/Cubrix/blocks"_s)));
}

// The sample that ships in examples/ opens cleanly and is in step with its sources.
void TestCli::sampleBlockset()
{
    const QString examples = QStringLiteral(CUBRIX_EXAMPLES);
    const QString bset = QDir(examples).absoluteFilePath(u"Castle.bset"_s);
    QVERIFY2(QFileInfo(bset).isFile(), qPrintable(bset));
    QTemporaryDir dir;
    QVERIFY(dir.isValid());

    const QJsonObject json = infoJson(dir, bset);
    QCOMPARE(json[u"messages"_s].toArray().size(), 0);
    QCOMPARE(json[u"changed"_s].toBool(true), false);
    QCOMPARE(json[u"tab"_s].toInt(-1), 0);
    const QJsonObject style = json[u"style"_s].toObject();
    QCOMPARE(style.size(), 18);
    for (auto it = style.begin(); it != style.end(); ++it)
        QVERIFY2(!it.value().toString().isEmpty(), qPrintable(it.key()));
    const QJsonObject symbols = json[u"symbols"_s].toObject();
    QVERIFY(symbols[u"strictPrefix"_s].toBool());
    QVERIFY(symbols[u"syncDouble"_s].toBool());

    QStringList types;
    QStringList bsp;
    const QJsonArray blocks = json[u"blocks"_s].toArray();
    for (const QJsonValue &value : blocks) {
        const QJsonObject block = value.toObject();
        QVERIFY(!block[u"name"_s].toString().isEmpty());
        QCOMPARE(block[u"double"_s].toString(), u'.' + block[u"symbol"_s].toString());
        types.append(block[u"type"_s].toString());
        bsp.append(block[u"bsp"_s].toString());
    }
    QVERIFY(blocks.size() >= 4 && blocks.size() <= 6);
    QVERIFY(types.contains(u"sprite"_s));
    QVERIFY(bsp.contains(u"yes"_s));
    QVERIFY(json[u"textures"_s].toArray().size() >= 2);
    QCOMPARE(json[u"sounds"_s].toArray().size(), 1);
    QVERIFY(!json[u"update"_s].toString().isEmpty());

    // The update file names the archive's real size.
    const QByteArray update = readFile(examples + u"/Castle.txt"_s);
    QVERIFY(update.startsWith("<version id=\"" + style[u"version"_s].toString().toLatin1() + "\" size=\""
                              + QByteArray::number(QFileInfo(bset).size()) + "\">\r\n"));

    // The archive holds exactly the unpacked sources.
    QStringList sources;
    const QString folder = examples + u"/Castle"_s;
    QDirIterator it(folder, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext())
        sources.append(QDir(folder).relativeFilePath(it.next()));
    sources.sort();
    QCOMPARE(archiveFiles(bset), sources);
    for (const QString &file : std::as_const(sources)) {
        if (file.endsWith(u".style"_s) || file.endsWith(u".block"_s))
            QVERIFY2(readFile(folder + u'/' + file).contains("\r\n")
                         && !readFile(folder + u'/' + file).replace("\r\n", "").contains('\n'),
                     qPrintable(file + u": not CR LF"_s));
    }
}

QTEST_GUILESS_MAIN(TestCli)
#include "test_cli.moc"
