// Saving and Save As end to end: what lands in the archive and the update
// file, the status texts, the failures and a full round trip.

#include "DocumentFixture.h"

#include <QtTest>

#include <unistd.h>

Q_DECLARE_METATYPE(StyleField)

namespace {

const QString kUpdateText = QStringLiteral("Unable to save update information!");

QByteArray updateFileText(const QString &version, const QString &comment, qint64 size)
{
    return dosText(QStringLiteral("<version id=\"%1\" size=\"%2\">\n%3\n</version>\n").arg(version).arg(size).arg(comment));
}

} // namespace

class TestDocumentSave : public QObject {
    Q_OBJECT

private slots:
    void saveResult_data();
    void saveResult();
    void saveFailure_data();
    void saveFailure();
    void saveAs_data();
    void saveAs();
    void saveAsCancelled();
    void saveAsFailureThenSave();
    void roundTrip_data();
    void roundTrip();
    void unseenFilesSurvive();
    void relativePathKeepsUpdateFileBeside();
    void styleExtensionInCapitals();
};

void TestDocumentSave::saveResult_data()
{
    QTest::addColumn<QString>("edit"); // "none", "update", "style", "both"
    QTest::addColumn<bool>("updateFile");
    QTest::addColumn<QString>("status");
    QTest::addColumn<bool>("archiveWritten");
    QTest::addColumn<bool>("updateWritten");

    QTest::newRow("nothing changed") << "none" << true << "saved." << false << false;
    QTest::newRow("only the update comment") << "update" << true << "Update file saved." << false << true;
    QTest::newRow("only the update comment, update file off") << "update" << false << "saved." << false << false;
    QTest::newRow("style value") << "style" << true << "Blockset and update file saved." << true << true;
    QTest::newRow("style value, update file off") << "style" << false << "Blockset saved." << true << false;
    QTest::newRow("both") << "both" << true << "Blockset and update file saved." << true << true;
}

void TestDocumentSave::saveResult()
{
    QFETCH(QString, edit);
    QFETCH(bool, updateFile);
    QFETCH(QString, status);
    QFETCH(bool, archiveWritten);
    QFETCH(bool, updateWritten);

    DocumentEnv env;
    env.setOption("updateFile", updateFile);
    const QString castle = env.addSet(QStringLiteral("Castle.bset"), castleFiles());
    const QString txt = env.setPath(QStringLiteral("Castle.txt"));
    const QByteArray oldUpdate = updateFileText(QStringLiteral("1.0"), QStringLiteral("old"), 1);
    QVERIFY(writeFile(txt, oldUpdate));
    env.open(castle);
    QVERIFY(env.document.blocksetOpen());

    // Put a different archive in place: one that the save leaves alone keeps these bytes.
    const QByteArray marker = readFile(env.addSet(QStringLiteral("Marker.bset"), {{QStringLiteral("m.txt"), "m"}}));
    QVERIFY(writeFile(castle, marker));

    if (edit == QLatin1String("update") || edit == QLatin1String("both"))
        env.document.editUpdateComment(QStringLiteral("Two new gates"));
    if (edit == QLatin1String("style") || edit == QLatin1String("both"))
        env.document.editStyleValue(StyleField::Synopsis, QStringLiteral("Walls of stone"));
    env.view.clear();

    QVERIFY(env.document.saveBlockset());

    QVERIFY2(env.prompts.messages.isEmpty(), qPrintable(env.prompts.messageTexts().join(u'\n')));
    QStringList shown;
    if (archiveWritten)
        shown << QStringLiteral("Saving blockset...");
    if (updateWritten)
        shown << QStringLiteral("Saving update file...");
    shown << status;
    QCOMPARE(env.view.processTexts, shown);
    QCOMPARE(env.document.processText(), status);
    QVERIFY(env.document.processMessageShown());
    QVERIFY(!env.document.blocksetChanged());
    QVERIFY(!env.document.updateChanged());
    QVERIFY(env.document.blocksetOpen());
    QCOMPARE(env.view.busyCalls.first(), true);
    QCOMPARE(env.view.busyCalls.last(), false);
    QVERIFY(env.view.checkInterfaceCalls >= 1);

    const QByteArray archive = readFile(castle);
    QCOMPARE(archive != marker, archiveWritten);
    if (archiveWritten) {
        const FileMap packed = readBset(castle);
        QVERIFY(packed.value(QStringLiteral("Castle.style")).contains("synopsis=\"Walls of stone\""));
        QCOMPARE(packed.value(QStringLiteral("sounds/wind.wav")), castleFiles().value(QStringLiteral("sounds/wind.wav")));
    }

    if (updateWritten) {
        const QString comment = edit == QLatin1String("style") ? QStringLiteral("old") : QStringLiteral("Two new gates");
        QCOMPARE(readFile(txt), updateFileText(QStringLiteral("1.2"), comment, archive.size()));
    } else {
        // Never written, never deleted.
        QCOMPARE(readFile(txt), oldUpdate);
    }
}

void TestDocumentSave::saveFailure_data()
{
    QTest::addColumn<QString>("fault");
    QTest::addColumn<QString>("message");

    QTest::newRow("style file cannot be written") << "style" << "Unable to write style file!";
    QTest::newRow("archive folder gone") << "folder" << "Unable to save blockset!";
    QTest::newRow("archive folder read-only") << "readonly" << "Unable to save blockset!";
    QTest::newRow("update file cannot be written") << "update" << kUpdateText;
    QTest::newRow("archive missing for the update size") << "nosize" << kUpdateText;
}

void TestDocumentSave::saveFailure()
{
    QFETCH(QString, fault);
    QFETCH(QString, message);

    if (fault == QLatin1String("readonly") && ::geteuid() == 0)
        QSKIP("root writes into read-only folders");

    DocumentEnv env;
    const QString folder = makeFolder(env.sets + QStringLiteral("/sub"));
    const QString castle = env.addSet(QStringLiteral("sub/Castle.bset"), castleFiles());
    env.open(castle);
    QVERIFY(env.document.blocksetOpen());
    const QByteArray before = readFile(castle);

    if (fault == QLatin1String("nosize")) {
        env.document.editUpdateComment(QStringLiteral("comment"));
    } else {
        env.document.editStyleValue(StyleField::Author, QStringLiteral("B. Builder"));
        env.document.editUpdateComment(QStringLiteral("comment"));
    }

    if (fault == QLatin1String("style")) {
        QVERIFY(QFile::remove(env.working(QStringLiteral("Castle.style"))));
        QVERIFY(QDir().mkdir(env.working(QStringLiteral("Castle.style"))));
    } else if (fault == QLatin1String("folder")) {
        QVERIFY(QDir(folder).removeRecursively());
    } else if (fault == QLatin1String("readonly")) {
        QVERIFY(QFile::setPermissions(folder, QFileDevice::ReadOwner | QFileDevice::ExeOwner));
    } else if (fault == QLatin1String("update")) {
        QVERIFY(QDir().mkdir(folder + QStringLiteral("/Castle.txt")));
    } else if (fault == QLatin1String("nosize")) {
        QVERIFY(QFile::remove(castle));
    }
    env.view.clear();

    const bool saved = env.document.saveBlockset();
    QFile::setPermissions(folder, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);

    QVERIFY(!saved);
    QCOMPARE(env.prompts.messages.size(), 1);
    QCOMPARE(env.prompts.messages[0].text, message);
    QCOMPARE(env.prompts.messages[0].title, QStringLiteral("Error"));
    QCOMPARE(env.prompts.messages[0].buttons, PromptButtons::Ok);
    QCOMPARE(env.prompts.messages[0].icon, PromptIcon::Critical);
    // The blockset still counts as changed; no "saved." text.
    QVERIFY(env.document.updateChanged());
    QCOMPARE(env.document.blocksetChanged(), fault != QLatin1String("nosize"));
    QVERIFY(!env.document.processText().endsWith(QStringLiteral("saved.")));
    QVERIFY(!env.view.busyCalls.isEmpty());
    QCOMPARE(env.view.busyCalls.last(), false);
    if (fault == QLatin1String("style") || fault == QLatin1String("readonly"))
        QCOMPARE(readFile(castle), before);
    QVERIFY(env.document.blocksetOpen());
}

void TestDocumentSave::saveAs_data()
{
    QTest::addColumn<bool>("syncBlockset");
    QTest::addColumn<bool>("updateFile");
    QTest::addColumn<QString>("newName");
    QTest::addColumn<QString>("blocksetName");
    QTest::addColumn<QString>("status");

    QTest::newRow("name follows the file") << true << true << "Keep.bset" << "Keep" << "Blockset and update file saved.";
    QTest::newRow("name kept") << false << true << "Keep.bset" << "Castle" << "Blockset and update file saved.";
    QTest::newRow("no update file") << true << false << "Keep.bset" << "Keep" << "Blockset saved.";
    QTest::newRow("dotted name") << true << true << "keep.v2.bset" << "keep.v2" << "Blockset and update file saved.";
}

void TestDocumentSave::saveAs()
{
    QFETCH(bool, syncBlockset);
    QFETCH(bool, updateFile);
    QFETCH(QString, newName);
    QFETCH(QString, blocksetName);
    QFETCH(QString, status);

    DocumentEnv env;
    env.setOption("syncBlockset", syncBlockset);
    env.setOption("updateFile", updateFile);
    FileMap files = castleFiles();
    files.insert(QStringLiteral("Spare.style"), QByteArray("<style name=\"Spare\"></style>"));
    const QString castle = env.addSet(QStringLiteral("Castle.bset"), files);
    const QString oldTxt = env.setPath(QStringLiteral("Castle.txt"));
    QVERIFY(writeFile(oldTxt, updateFileText(QStringLiteral("1.2"), QStringLiteral("old"), 7)));
    const QByteArray castleBytes = readFile(castle);
    env.prompts.fileAnswers = {castle};
    env.document.openBlockset(); // sets pathBlockset to the blocksets folder
    QVERIFY(env.document.blocksetOpen());
    QVERIFY(!env.document.isChanged());

    const QString target = makeFolder(env.sets + QStringLiteral("/copies")) + u'/' + newName;
    const QString base = newName.left(newName.lastIndexOf(u'.'));
    env.prompts.fileAnswers = {target};
    env.view.clear();

    env.document.saveBlocksetAs();

    QVERIFY2(env.prompts.unexpected.isEmpty(), qPrintable(env.prompts.unexpected.join(u'\n')));
    QVERIFY2(env.prompts.messages.isEmpty(), qPrintable(env.prompts.messageTexts().join(u'\n')));
    QCOMPARE(env.prompts.fileRequests.size(), 2);
    const ScriptedPrompts::FileRequest &request = env.prompts.fileRequests[1];
    QCOMPARE(request.kind, QStringLiteral("save"));
    QCOMPARE(request.title, QStringLiteral("Save Blockset As"));
    QCOMPARE(request.filter, QStringLiteral("Blocksets (*.bset),*.bset"));
    QCOMPARE(request.defaultExt, QStringLiteral("bset"));
    QCOMPARE(request.folder, env.sets);
    QCOMPARE(env.view.processTexts.first(), QStringLiteral("Save Blockset As..."));

    QCOMPARE(env.pathSetting(), env.sets + QStringLiteral("/copies"));
    QCOMPARE(env.document.blocksetPath(), target);
    QCOMPARE(env.document.blocksetFileName(), newName);
    QCOMPARE(env.document.style().name, blocksetName);
    QVERIFY(!env.document.isChanged());
    QVERIFY(!env.document.blocksetUntitled());
    QCOMPARE(env.document.processText(), status);

    // The working folder and the new archive hold one style file, named after the new file.
    const QString styleName = base + QStringLiteral(".style");
    QCOMPARE(QDir(env.folder.workingFolder()).entryList({QStringLiteral("*.style")}, QDir::Files),
             QStringList({styleName}));
    const FileMap packed = readBset(target);
    FileMap expected = castleFiles();
    expected.remove(QStringLiteral("Castle.style"));
    for (auto it = expected.cbegin(); it != expected.cend(); ++it)
        QCOMPARE(packed.value(it.key()), it.value());
    QCOMPARE(packed.size(), expected.size() + 1);
    QVERIFY(packed.value(styleName).startsWith(
        toCp1252(QStringLiteral("<style version=\"1.2\" name=\"%1\" synopsis=").arg(blocksetName))));

    // The old archive and its update file are left as they were.
    QCOMPARE(readFile(castle), castleBytes);
    QCOMPARE(readFile(oldTxt), updateFileText(QStringLiteral("1.2"), QStringLiteral("old"), 7));
    const QString newTxt = env.sets + QStringLiteral("/copies/") + base + QStringLiteral(".txt");
    if (updateFile)
        QCOMPARE(readFile(newTxt), updateFileText(QStringLiteral("1.2"), QStringLiteral("old"), QFileInfo(target).size()));
    else
        QVERIFY(!QFile::exists(newTxt));

    // Reopening finds what was saved.
    env.open(target);
    QVERIFY(env.document.blocksetOpen());
    QVERIFY(env.prompts.messages.isEmpty());
    QCOMPARE(env.document.style().name, blocksetName);
    QCOMPARE(env.document.blocks()[2].doubleSymbol, QStringLiteral(".a"));
}

void TestDocumentSave::saveAsCancelled()
{
    DocumentEnv env;
    const QString castle = env.addSet(QStringLiteral("Castle.bset"), castleFiles());
    env.open(castle);
    env.document.editUpdateComment(QStringLiteral("pending"));
    const FileMap unpacked = filesBelow(env.folder.workingFolder());
    env.prompts.fileAnswers = {QString()};

    env.document.saveBlocksetAs();

    QCOMPARE(env.prompts.fileRequests.size(), 1);
    QCOMPARE(env.document.blocksetPath(), castle);
    QCOMPARE(env.document.blocksetFileName(), QStringLiteral("Castle.bset"));
    QVERIFY(!env.document.blocksetChanged());
    QVERIFY(env.document.updateChanged());
    QCOMPARE(env.document.processText(), QString());
    QCOMPARE(filesBelow(env.folder.workingFolder()), unpacked);
    QCOMPARE(env.pathSetting(), QString());
}

// A Save As whose archive step fails stays on the new name: the next Save
// writes there.
void TestDocumentSave::saveAsFailureThenSave()
{
    DocumentEnv env;
    const QString castle = env.addSet(QStringLiteral("Castle.bset"), castleFiles());
    env.open(castle);
    const QString target = env.sets + QStringLiteral("/later/Moved.bset");
    env.prompts.fileAnswers = {target};

    env.document.saveBlocksetAs();

    QCOMPARE(env.prompts.messageTexts(), QStringList({QStringLiteral("Unable to save blockset!")}));
    QCOMPARE(env.document.blocksetPath(), target);
    QCOMPARE(env.document.blocksetFileName(), QStringLiteral("Moved.bset"));
    QVERIFY(env.document.blocksetChanged());
    QVERIFY(env.document.updateChanged());
    QVERIFY(!QFile::exists(env.working(QStringLiteral("Castle.style"))));
    QVERIFY(QFile::exists(env.working(QStringLiteral("Moved.style"))));

    makeFolder(env.sets + QStringLiteral("/later"));
    env.prompts.messages.clear();
    env.document.saveCommand();

    QVERIFY(env.prompts.messages.isEmpty());
    QCOMPARE(env.prompts.fileRequests.size(), 1); // no second dialog
    QVERIFY(!env.document.isChanged());
    QVERIFY(readBset(target).contains(QStringLiteral("Moved.style")));
    QVERIFY(QFile::exists(env.sets + QStringLiteral("/later/Moved.txt")));
}

void TestDocumentSave::roundTrip_data()
{
    QTest::addColumn<StyleField>("field");
    QTest::addColumn<QString>("value");

    QTest::newRow("version") << StyleField::Version << "2.0 beta";
    QTest::newRow("name") << StyleField::Name << "Fortress";
    QTest::newRow("synopsis") << StyleField::Synopsis << "Gates, towers & moats";
    QTest::newRow("author") << StyleField::Author << QString::fromUtf8("Jos\u00e9 M\u00fcller");
    QTest::newRow("copyright") << StyleField::Copyright << "(c) 2003";
    QTest::newRow("placeholder texture") << StyleField::PlaceholderTexture << "clouds.jpg";
    QTest::newRow("sky texture") << StyleField::SkyTexture << "brick.gif";
    QTest::newRow("sky colour") << StyleField::SkyColor << "(1,2,3)";
    QTest::newRow("sky brightness") << StyleField::SkyBrightness << "50%";
    QTest::newRow("ground texture") << StyleField::GroundTexture << "clouds.jpg";
    QTest::newRow("ground colour") << StyleField::GroundColor << "(255,0,255)";
    QTest::newRow("orb texture") << StyleField::OrbTexture << "brick.gif";
    QTest::newRow("orb colour") << StyleField::OrbColor << "(9,9,9)";
    QTest::newRow("orb brightness") << StyleField::OrbBrightness << "75%";
    QTest::newRow("orb position") << StyleField::OrbPosition << "(360,-90)";
    QTest::newRow("orb link") << StyleField::OrbHref << "http://example.org/a.3dml";
    QTest::newRow("orb target") << StyleField::OrbTarget << "_blank";
    QTest::newRow("orb text") << StyleField::OrbText << "Go home";
    QTest::newRow("emptied value") << StyleField::SkyTexture << "";
}

void TestDocumentSave::roundTrip()
{
    QFETCH(StyleField, field);
    QFETCH(QString, value);

    DocumentEnv env;
    const QString castle = env.addSet(QStringLiteral("Castle.bset"), castleFiles());
    env.open(castle);
    QVERIFY(env.document.blocksetOpen());
    StyleValues expected = env.document.style();
    styleValue(expected, field) = value;
    const QList<BlockRow> blocks = env.document.blocks();
    const SymbolSettings symbols = env.document.symbols();

    env.document.editStyleValue(field, value);
    env.document.editUpdateComment(QStringLiteral("Round trip"));
    QVERIFY(env.document.isChanged());
    if (field == StyleField::Version)
        QCOMPARE(env.document.versionText(), value);
    QVERIFY(env.document.saveBlockset());
    env.document.closeBlockset();
    QVERIFY(!env.document.blocksetOpen());

    env.open(castle);
    QVERIFY(env.prompts.messages.isEmpty());
    QVERIFY(env.document.blocksetOpen());
    QCOMPARE(env.document.style(), expected);
    QCOMPARE(env.document.versionText(), expected.version);
    QCOMPARE(env.document.updateComment(), QStringLiteral("Round trip"));
    QCOMPARE(env.document.blockCount(), blocks.size());
    for (qsizetype i = 0; i < blocks.size(); ++i) {
        QCOMPARE(env.document.blocks()[i].file, blocks[i].file);
        QCOMPARE(env.document.blocks()[i].name, blocks[i].name);
        QCOMPARE(env.document.blocks()[i].symbol, blocks[i].symbol);
        QCOMPARE(env.document.blocks()[i].doubleSymbol, blocks[i].doubleSymbol);
        QCOMPARE(env.document.blocks()[i].bsp, blocks[i].bsp);
    }
    QCOMPARE(env.document.symbols(), symbols);
    QCOMPARE(env.document.processText(), QStringLiteral("Strict Prefix & Sync Double Mode activated."));
}

// Several style files and a top-level file nobody lists survive open and save.
void TestDocumentSave::unseenFilesSurvive()
{
    DocumentEnv env;
    FileMap files = castleFiles();
    files.insert(QStringLiteral("Other.style"), QByteArray("<style name=\"Other\">\r\n</style>\r\n"));
    files.insert(QStringLiteral("Zed.style"), QByteArray("<style name=\"Zed\"></style>"));
    files.insert(QStringLiteral("readme.txt"), QByteArray("\x01\x02 binary \xff bytes\r\n", 19));
    files.insert(QStringLiteral("blocks/notes.doc"), QByteArray("not a block"));
    const QString castle = env.addSet(QStringLiteral("Castle.bset"), files);
    env.open(castle);
    QVERIFY(env.prompts.messages.isEmpty());
    QCOMPARE(env.document.blockCount(), 3);

    env.document.editStyleValue(StyleField::Copyright, QStringLiteral("none"));
    QVERIFY(env.document.saveBlockset());

    const FileMap packed = readBset(castle);
    QCOMPARE(packed.keys(), files.keys());
    for (auto it = files.cbegin(); it != files.cend(); ++it) {
        if (it.key() != QLatin1String("Castle.style"))
            QCOMPARE(packed.value(it.key()), it.value());
    }
    QVERIFY(packed.value(QStringLiteral("Castle.style")).contains("copyright=\"none\""));
}

// A blockset handed in by a bare file name keeps its update file beside it in
// the current folder.
void TestDocumentSave::relativePathKeepsUpdateFileBeside()
{
    DocumentEnv env;
    env.addSet(QStringLiteral("Castle.bset"), castleFiles());
    QVERIFY(writeFile(env.setPath(QStringLiteral("Castle.txt")), updateFileText(QStringLiteral("1"), QStringLiteral("before"), 1)));
    const QString previous = QDir::currentPath();
    QVERIFY(QDir::setCurrent(env.sets));

    env.open(QStringLiteral("Castle.bset"));
    const QString comment = env.document.updateComment();
    env.document.editUpdateComment(QStringLiteral("after"));
    const bool saved = env.document.saveBlockset();
    QDir::setCurrent(previous);

    QVERIFY(env.document.blocksetOpen());
    QCOMPARE(comment, QStringLiteral("before"));
    QVERIFY(saved);
    QCOMPARE(readFile(env.setPath(QStringLiteral("Castle.txt"))),
             updateFileText(QStringLiteral("1.2"), QStringLiteral("after"), QFileInfo(env.setPath(QStringLiteral("Castle.bset"))).size()));
}

// A style file stored as "Castle.STYLE" is the blockset's own; saving must not
// leave the old one beside the new "Castle.style", where the next open could
// take the stale one.
void TestDocumentSave::styleExtensionInCapitals()
{
    DocumentEnv env;
    FileMap files = castleFiles(QStringLiteral("Castle.STYLE"));
    const QString castle = env.addSet(QStringLiteral("Castle.bset"), files);
    env.open(castle);
    QVERIFY(env.prompts.messages.isEmpty());
    QCOMPARE(env.document.style().name, QStringLiteral("Castle"));

    env.document.editStyleValue(StyleField::Name, QStringLiteral("Fortress"));
    QVERIFY(env.document.saveBlockset());

    QStringList styles;
    for (const QString &name : readBset(castle).keys()) {
        if (name.endsWith(QStringLiteral(".style"), Qt::CaseInsensitive))
            styles.append(name);
    }
    QCOMPARE(styles, QStringList({QStringLiteral("Castle.style")}));
    env.document.closeBlockset();
    env.open(castle);
    QCOMPARE(env.document.style().name, QStringLiteral("Fortress"));
}

QTEST_GUILESS_MAIN(TestDocumentSave)
#include "test_document_save.moc"
