// Opening a blockset end to end: real archives in a temporary folder, the
// document driven through scripted prompts.

#include "DocumentFixture.h"

#include <QtTest>

Q_DECLARE_METATYPE(PromptAnswer)

namespace {

const QString kOpenTitle = QStringLiteral("Open Blockset");
const QString kSaveFirst = QStringLiteral("The current blockset has been changed. Do you want to save it first?");
const QString kNoStyle =
    QStringLiteral("Unable to load style file!\nYou will have to define all block symbols manually.");
const QString kBothModes = QStringLiteral("Strict Prefix & Sync Double Mode activated.");
const QString kStrictMode = QStringLiteral("Strict Prefix Mode activated.");

QByteArray styleWithBlocks(const QString &name, const QStringList &entries)
{
    QString text = QStringLiteral("<style name=\"%1\">\n").arg(name);
    for (const QString &entry : entries)
        text += entry + QLatin1Char('\n');
    text += QStringLiteral("</style>\n");
    return dosText(text);
}

// Flips the stored CRC of every entry, in the local headers and the central
// directory alike, so the entries still inflate but fail their check.
QByteArray withBadCrcs(QByteArray zip)
{
    const QByteArray local("PK\x03\x04", 4);
    const QByteArray central("PK\x01\x02", 4);
    for (qsizetype at = zip.indexOf(local); at >= 0; at = zip.indexOf(local, at + 4))
        zip[at + 14] = char(zip[at + 14] ^ 0x5a);
    for (qsizetype at = zip.indexOf(central); at >= 0; at = zip.indexOf(central, at + 4))
        zip[at + 16] = char(zip[at + 16] ^ 0x5a);
    return zip;
}

} // namespace

class TestDocumentOpen : public QObject {
    Q_OBJECT

private slots:
    void fullOpen();
    void blockRows_data();
    void blockRows();
    void sizeTexts_data();
    void sizeTexts();
    void longSizeTextIsNotCut();
    void tabChoice_data();
    void tabChoice();
    void resultText_data();
    void resultText();
    void differingStyle_data();
    void differingStyle();
    void noStyleFile_data();
    void noStyleFile();
    void styleNamedAfterArchiveWins_data();
    void styleNamedAfterArchiveWins();
    void fileNameWithoutExtension();
    void pathSettingOnlyFromDialog_data();
    void pathSettingOnlyFromDialog();
    void cancelledDialog_data();
    void cancelledDialog();
    void saveQuestion_data();
    void saveQuestion();
    void saveQuestionFailedSaveStops();
    void brokenArchive_data();
    void brokenArchive();
    void statusTextsInOrder();
    void previousBlocksetLeavesNothingBehind();
};

void TestDocumentOpen::fullOpen()
{
    DocumentEnv env;
    const QString path = env.addSet(QStringLiteral("Castle.bset"), castleFiles());
    writeFile(env.setPath(QStringLiteral("Castle.txt")),
              dosText(QStringLiteral("<version id=\"1.2\" size=\"99\">\nAdded two gates.\n</version>\n")));
    env.prompts.fileAnswers = {path};

    env.document.openBlockset();

    QVERIFY2(env.prompts.unexpected.isEmpty(), qPrintable(env.prompts.unexpected.join(u'\n')));
    QVERIFY2(env.prompts.messages.isEmpty(), qPrintable(env.prompts.messageTexts().join(u'\n')));
    QCOMPARE(env.prompts.fileRequests.size(), 1);
    QCOMPARE(env.prompts.fileRequests[0].kind, QStringLiteral("open"));
    QCOMPARE(env.prompts.fileRequests[0].title, kOpenTitle);
    QCOMPARE(env.prompts.fileRequests[0].filter, QStringLiteral("Blocksets (*.bset),*.bset"));
    QCOMPARE(env.prompts.fileRequests[0].folder, QString());

    const BlocksetDocument &doc = env.document;
    QVERIFY(doc.blocksetOpen());
    QVERIFY(!doc.blocksetChanged());
    QVERIFY(!doc.updateChanged());
    QVERIFY(!doc.blocksetUntitled());
    QCOMPARE(doc.blocksetPath(), path);
    QCOMPARE(doc.blocksetFileName(), QStringLiteral("Castle.bset"));
    QCOMPARE(doc.versionText(), QStringLiteral("1.2"));

    QCOMPARE(fileColumn(doc.blocks()),
             QStringList({QStringLiteral("door.block"), QStringLiteral("tree.block"), QStringLiteral("wall.block")}));
    QCOMPARE(fileColumn(doc.textures()), QStringList({QStringLiteral("brick.gif"), QStringLiteral("clouds.jpg")}));
    QCOMPARE(fileColumn(doc.sounds()), QStringList({QStringLiteral("wind.wav")}));
    QCOMPARE(doc.blockCount(), 3);
    QCOMPARE(doc.textureCount(), 2);
    QCOMPARE(doc.soundCount(), 1);

    const StyleValues &style = doc.style();
    QCOMPARE(style.version, QStringLiteral("1.2"));
    QCOMPARE(style.name, QStringLiteral("Castle"));
    QCOMPARE(style.synopsis, QStringLiteral("Stone walls"));
    QCOMPARE(style.author, QStringLiteral("A. Builder"));
    QCOMPARE(style.copyright, QStringLiteral("free"));
    QCOMPARE(style.placeholderTexture, QStringLiteral("brick.gif"));
    QCOMPARE(style.skyTexture, QStringLiteral("clouds.jpg"));
    QCOMPARE(style.skyColor, QStringLiteral("(0,0,255)"));
    QCOMPARE(style.skyBrightness, QStringLiteral("80%"));
    QCOMPARE(style.groundTexture, QStringLiteral("brick.gif"));
    QCOMPARE(style.groundColor, QStringLiteral("(0,128,0)"));
    QCOMPARE(style.orbTexture, QStringLiteral("clouds.jpg"));
    QCOMPARE(style.orbColor, QStringLiteral("(255,255,255)"));
    QCOMPARE(style.orbBrightness, QStringLiteral("100%"));
    QCOMPARE(style.orbPosition, QStringLiteral("(45,30)"));
    QCOMPARE(style.orbHref, QStringLiteral("index.3dml"));
    QCOMPARE(style.orbTarget, QStringLiteral("_self"));
    QCOMPARE(style.orbText, QStringLiteral("Home"));
    QCOMPARE(doc.updateComment(), QStringLiteral("Added two gates."));

    QCOMPARE(doc.tab(), int(BlocksetDocument::BlocksTab));
    QCOMPARE(doc.processText(), kBothModes);
    QVERIFY(doc.processMessageShown());
    QCOMPARE(env.pathSetting(), env.sets);

    // Everything of the archive lies unpacked in the working folder.
    QCOMPARE(filesBelow(env.folder.workingFolder()), castleFiles());
}

void TestDocumentOpen::blockRows_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("symbol");
    QTest::addColumn<QString>("doubleSymbol");
    QTest::addColumn<QString>("type");
    QTest::addColumn<QString>("bsp");

    QTest::newRow("structural, BSP tree") << "wall.block" << "Wall" << "a" << ".a" << "structural" << "yes";
    QTest::newRow("no type, empty tree") << "door.block" << "Door" << "b" << ".b" << "structural" << "empty";
    QTest::newRow("sprite with tree") << "tree.block" << "Tree" << "t" << ".t" << "sprite" << "n/a";
    QTest::newRow("no tree, no style entry") << "plain.block" << "Plain" << "" << "" << "structural" << "no";
}

void TestDocumentOpen::blockRows()
{
    QFETCH(QString, file);
    QFETCH(QString, name);
    QFETCH(QString, symbol);
    QFETCH(QString, doubleSymbol);
    QFETCH(QString, type);
    QFETCH(QString, bsp);

    DocumentEnv env;
    FileMap files = castleFiles();
    files.insert(QStringLiteral("blocks/plain.block"), blockFile(QStringLiteral("Plain")));
    env.open(env.addSet(QStringLiteral("Castle.bset"), files));
    QVERIFY(env.document.blocksetOpen());

    const QList<BlockRow> &rows = env.document.blocks();
    const qsizetype index = fileColumn(rows).indexOf(file);
    QVERIFY2(index >= 0, qPrintable(file));
    const BlockRow &row = rows[index];
    QCOMPARE(row.name, name);
    QCOMPARE(row.symbol, symbol);
    QCOMPARE(row.doubleSymbol, doubleSymbol);
    QCOMPARE(row.type, type);
    QCOMPARE(row.bsp, bsp);
    const qint64 bytes = files.value(QStringLiteral("blocks/") + file).size();
    QCOMPARE(row.size, bytes);
    QCOMPARE(row.sizeText, QString::number(bytes).rightJustified(10, u' '));
}

void TestDocumentOpen::sizeTexts_data()
{
    QTest::addColumn<int>("bytes");
    QTest::addColumn<QString>("text");

    QTest::newRow("empty file is blank") << 0 << "          ";
    QTest::newRow("one byte") << 1 << "         1";
    QTest::newRow("three digits") << 999 << "       999";
    QTest::newRow("first separator") << 1000 << "     1,000";
    QTest::newRow("five digits") << 65536 << "    65,536";
    QTest::newRow("seven digits fill the width") << 1234567 << " 1,234,567";
}

void TestDocumentOpen::sizeTexts()
{
    QFETCH(int, bytes);
    QFETCH(QString, text);

    DocumentEnv env;
    FileMap files;
    files.insert(QStringLiteral("Sizes.style"), dosText(QStringLiteral("<style name=\"Sizes\">\n</style>\n")));
    files.insert(QStringLiteral("textures/t.gif"), QByteArray(bytes, 'x'));
    files.insert(QStringLiteral("sounds/s.wav"), QByteArray(bytes, 'y'));
    files.insert(QStringLiteral("blocks/b.block"), blockFile(QStringLiteral("B")) + QByteArray(bytes, ' '));
    env.open(env.addSet(QStringLiteral("Sizes.bset"), files));
    QVERIFY(env.document.blocksetOpen());

    QCOMPARE(env.document.textures().size(), 1);
    QCOMPARE(env.document.textures()[0].sizeText, text);
    QCOMPARE(env.document.sounds()[0].sizeText, text);
    QCOMPARE(env.document.sounds()[0].size, qint64(bytes));
    // The block file is longer by its text; its size is formatted the same way.
    const qint64 blockBytes = files.value(QStringLiteral("blocks/b.block")).size();
    QCOMPARE(env.document.blocks()[0].sizeText, BlocksetDocument::sizeText(blockBytes));
}

void TestDocumentOpen::longSizeTextIsNotCut()
{
    QCOMPARE(BlocksetDocument::sizeText(1234567890), QStringLiteral("1,234,567,890"));
    QCOMPARE(BlocksetDocument::sizeText(12345678), QStringLiteral("12,345,678"));
}

void TestDocumentOpen::tabChoice_data()
{
    QTest::addColumn<int>("blocks");
    QTest::addColumn<int>("textures");
    QTest::addColumn<int>("sounds");
    QTest::addColumn<int>("tab");

    QTest::newRow("blocks first") << 1 << 1 << 1 << int(BlocksetDocument::BlocksTab);
    QTest::newRow("textures only") << 0 << 2 << 0 << int(BlocksetDocument::TexturesTab);
    QTest::newRow("textures and sounds") << 0 << 1 << 1 << int(BlocksetDocument::TexturesTab);
    QTest::newRow("sounds only") << 0 << 0 << 1 << int(BlocksetDocument::SoundsTab);
    QTest::newRow("nothing") << 0 << 0 << 0 << int(BlocksetDocument::SettingsTab);
}

void TestDocumentOpen::tabChoice()
{
    QFETCH(int, blocks);
    QFETCH(int, textures);
    QFETCH(int, sounds);
    QFETCH(int, tab);

    DocumentEnv env;
    FileMap files;
    files.insert(QStringLiteral("Tabs.style"), dosText(QStringLiteral("<style name=\"Tabs\">\n</style>\n")));
    for (int i = 0; i < blocks; ++i)
        files.insert(QStringLiteral("blocks/b%1.block").arg(i), blockFile(QStringLiteral("B")));
    for (int i = 0; i < textures; ++i)
        files.insert(QStringLiteral("textures/t%1.jpg").arg(i), QByteArray("jpeg"));
    for (int i = 0; i < sounds; ++i)
        files.insert(QStringLiteral("sounds/s%1.wav").arg(i), QByteArray("wave"));
    // A settings-page tab left from before does not survive the open.
    env.document.setTab(BlocksetDocument::VersionTab);

    env.open(env.addSet(QStringLiteral("Tabs.bset"), files));
    QVERIFY(env.document.blocksetOpen());
    QCOMPARE(env.document.tab(), tab);
}

void TestDocumentOpen::resultText_data()
{
    QTest::addColumn<bool>("strictPrefix");
    QTest::addColumn<bool>("syncDouble");
    QTest::addColumn<QStringList>("entries");
    QTest::addColumn<QString>("text");

    const QStringList synced = {QStringLiteral("<block symbol=\"a\" double=\".a\" file=\"a.block\"/>"),
                                QStringLiteral("<block symbol=\"b\" double=\".b\" file=\"b.block\"/>")};
    const QStringList unsynced = {QStringLiteral("<block symbol=\"a\" double=\".x\" file=\"a.block\"/>"),
                                  QStringLiteral("<block symbol=\"b\" double=\".b\" file=\"b.block\"/>")};
    const QStringList missingDouble = {QStringLiteral("<block symbol=\"a\" double=\".a\" file=\"a.block\"/>"),
                                       QStringLiteral("<block symbol=\"b\" file=\"b.block\"/>")};
    const QStringList twoPrefixes = {QStringLiteral("<block symbol=\"a\" double=\".a\" file=\"a.block\"/>"),
                                     QStringLiteral("<block symbol=\"b\" double=\"Xb\" file=\"b.block\"/>")};

    QTest::newRow("both settings, synced doubles") << true << true << synced << kBothModes;
    QTest::newRow("sync double setting off") << true << false << synced << kStrictMode;
    QTest::newRow("strict prefix setting off") << false << true << synced << QString();
    QTest::newRow("doubles not synced") << true << true << unsynced << kStrictMode;
    QTest::newRow("a block without double") << true << true << missingDouble << QString();
    QTest::newRow("two prefixes") << true << true << twoPrefixes << QString();
}

void TestDocumentOpen::resultText()
{
    QFETCH(bool, strictPrefix);
    QFETCH(bool, syncDouble);
    QFETCH(QStringList, entries);
    QFETCH(QString, text);

    DocumentEnv env;
    env.setOption("strictPrefix", strictPrefix);
    env.setOption("syncDouble", syncDouble);
    FileMap files;
    files.insert(QStringLiteral("Modes.style"), styleWithBlocks(QStringLiteral("Modes"), entries));
    files.insert(QStringLiteral("blocks/a.block"), blockFile(QStringLiteral("A")));
    files.insert(QStringLiteral("blocks/b.block"), blockFile(QStringLiteral("B")));

    env.open(env.addSet(QStringLiteral("Modes.bset"), files));
    QVERIFY(env.document.blocksetOpen());
    QCOMPARE(env.document.processText(), text);
    QVERIFY(env.document.processMessageShown());
    QCOMPARE(env.document.symbolModeText(), text);
}

void TestDocumentOpen::differingStyle_data()
{
    QTest::addColumn<PromptAnswer>("answer");
    QTest::addColumn<bool>("syncBlockset");

    QTest::newRow("yes") << PromptAnswer::Yes << true;
    QTest::newRow("no, name synchronised") << PromptAnswer::No << true;
    QTest::newRow("no, name not synchronised") << PromptAnswer::No << false;
}

void TestDocumentOpen::differingStyle()
{
    QFETCH(PromptAnswer, answer);
    QFETCH(bool, syncBlockset);

    DocumentEnv env;
    env.setOption("syncBlockset", syncBlockset);
    const FileMap files = castleFiles(QStringLiteral("Red.style"));
    const QString path = env.addSet(QStringLiteral("Blue.bset"), files);
    env.prompts.answers = {answer};

    env.open(path);

    QVERIFY2(env.prompts.unexpected.isEmpty(), qPrintable(env.prompts.unexpected.join(u'\n')));
    QVERIFY(env.document.blocksetOpen());
    QVERIFY(!env.prompts.messages.isEmpty());
    const ScriptedPrompts::Message &question = env.prompts.messages[0];
    QCOMPARE(question.text,
             QStringLiteral("Found differing style file \"Red.style\". Do you want this file to be renamed and parsed?"));
    QCOMPARE(question.title, kOpenTitle);
    QCOMPARE(question.buttons, PromptButtons::YesNo);
    QCOMPARE(question.icon, PromptIcon::Question);

    if (answer == PromptAnswer::Yes) {
        QCOMPARE(env.prompts.messages.size(), 1);
        QVERIFY(!QFile::exists(env.working(QStringLiteral("Red.style"))));
        QCOMPARE(readFile(env.working(QStringLiteral("Blue.style"))), files.value(QStringLiteral("Red.style")));
        QCOMPARE(env.document.style().name, QStringLiteral("Castle"));
        QCOMPARE(env.document.style().skyColor, QStringLiteral("(0,0,255)"));
        QCOMPARE(env.document.blocks()[2].symbol, QStringLiteral("a"));
        QVERIFY(env.document.blocksetChanged());
        QVERIFY(env.document.isChanged());
        QVERIFY(!env.document.updateChanged());
    } else {
        QCOMPARE(env.prompts.messages.size(), 2);
        const ScriptedPrompts::Message &warning = env.prompts.messages[1];
        QCOMPARE(warning.text, kNoStyle);
        QCOMPARE(warning.title, kOpenTitle);
        QCOMPARE(warning.buttons, PromptButtons::Ok);
        QCOMPARE(warning.icon, PromptIcon::Exclamation);
        // The declined file stays where it was; nothing of it was read.
        QVERIFY(QFile::exists(env.working(QStringLiteral("Red.style"))));
        QVERIFY(!QFile::exists(env.working(QStringLiteral("Blue.style"))));
        QCOMPARE(env.document.style().name, syncBlockset ? QStringLiteral("Blue") : QString());
        QCOMPARE(env.document.style().skyColor, QString());
        QCOMPARE(env.document.style().version, QString());
        for (const BlockRow &row : env.document.blocks())
            QCOMPARE(row.symbol, QString());
        QVERIFY(!env.document.isChanged());
    }
}

void TestDocumentOpen::noStyleFile_data()
{
    QTest::addColumn<bool>("syncBlockset");
    QTest::addColumn<bool>("strictPrefix");
    QTest::addColumn<QString>("text");

    QTest::newRow("name synchronised") << true << true << kBothModes;
    QTest::newRow("name not synchronised") << false << true << kBothModes;
    QTest::newRow("strict prefix setting off") << true << false << QString();
}

// No style file at all is no failure: the blockset opens with default style
// data after one warning.
void TestDocumentOpen::noStyleFile()
{
    QFETCH(bool, syncBlockset);
    QFETCH(bool, strictPrefix);
    QFETCH(QString, text);

    DocumentEnv env;
    env.setOption("syncBlockset", syncBlockset);
    env.setOption("strictPrefix", strictPrefix);
    FileMap files = castleFiles();
    files.remove(QStringLiteral("Castle.style"));
    env.prompts.newAnswers = {NewBlocksetChoice()};
    env.document.newBlockset(); // switches the blockset's symbol modes on
    QVERIFY(env.document.symbols().strictPrefixMode);

    env.open(env.addSet(QStringLiteral("Castle.bset"), files));

    QCOMPARE(env.prompts.messages.size(), 1);
    QCOMPARE(env.prompts.messages[0].text, kNoStyle);
    QCOMPARE(env.prompts.messages[0].title, kOpenTitle);
    QCOMPARE(env.prompts.messages[0].buttons, PromptButtons::Ok);
    QCOMPARE(env.prompts.messages[0].icon, PromptIcon::Exclamation);
    QVERIFY(env.document.blocksetOpen());
    QVERIFY(!env.document.isChanged());
    QCOMPARE(env.document.blockCount(), 3);
    QCOMPARE(env.document.blocks()[2].name, QStringLiteral("Wall"));
    StyleValues expected;
    if (syncBlockset)
        expected.name = QStringLiteral("Castle");
    QCOMPARE(env.document.style(), expected);
    QVERIFY(!env.document.symbols().strictPrefixMode);
    QVERIFY(!env.document.symbols().syncDoubleMode);
    QCOMPARE(env.document.processText(), text);
    QVERIFY(!env.view.processTexts.contains(QStringLiteral("Parsing Blockset...")));
}

void TestDocumentOpen::styleNamedAfterArchiveWins_data()
{
    QTest::addColumn<QString>("archive");
    QTest::addColumn<QStringList>("styles");
    QTest::addColumn<QString>("readName");
    QTest::addColumn<bool>("asks");

    QTest::newRow("own style listed first") << "Blue.bset" << QStringList{"Blue", "Red"} << "Blue" << false;
    QTest::newRow("own style listed last") << "Zed.bset" << QStringList{"Alpha", "Zed"} << "Zed" << false;
    QTest::newRow("case differs: asks") << "Blue.bset" << QStringList{"blue"} << "blue" << true;
    QTest::newRow("dots in the name") << "my.old.set.bset" << QStringList{"my.old", "my.old.set"} << "my.old.set"
                                      << false;
}

void TestDocumentOpen::styleNamedAfterArchiveWins()
{
    QFETCH(QString, archive);
    QFETCH(QStringList, styles);
    QFETCH(QString, readName);
    QFETCH(bool, asks);

    DocumentEnv env;
    FileMap files;
    for (const QString &style : styles)
        files.insert(style + QStringLiteral(".style"),
                     dosText(QStringLiteral("<style name=\"%1\">\n</style>\n").arg(style)));
    if (asks)
        env.prompts.answers = {PromptAnswer::Yes};

    env.open(env.addSet(archive, files));

    QVERIFY2(env.prompts.unexpected.isEmpty(), qPrintable(env.prompts.unexpected.join(u'\n')));
    QCOMPARE(env.prompts.messages.size(), asks ? 1 : 0);
    QVERIFY(env.document.blocksetOpen());
    QCOMPARE(env.document.style().name, readName);
    QCOMPARE(env.document.blocksetChanged(), asks);
    // Every style file that came out of the archive lies in the working folder.
    QCOMPARE(QDir(env.folder.workingFolder()).entryList({QStringLiteral("*.style")}, QDir::Files).size(),
             styles.size());
}

void TestDocumentOpen::fileNameWithoutExtension()
{
    DocumentEnv env;
    FileMap files;
    files.insert(QStringLiteral("Plain.style"), dosText(QStringLiteral("<style name=\"Plain\" version=\"7\">\n</style>\n")));
    files.insert(QStringLiteral("blocks/a.block"), blockFile(QStringLiteral("A")));
    const QString path = env.addSet(QStringLiteral("Plain"), files);
    writeFile(env.setPath(QStringLiteral("Plain.txt")),
              dosText(QStringLiteral("<version id=\"7\" size=\"1\">\nNo dot here\n</version>\n")));

    env.open(path);

    QVERIFY2(env.prompts.messages.isEmpty(), qPrintable(env.prompts.messageTexts().join(u'\n')));
    QVERIFY(env.document.blocksetOpen());
    QCOMPARE(env.document.blocksetFileName(), QStringLiteral("Plain"));
    QCOMPARE(env.document.style().version, QStringLiteral("7"));
    QCOMPARE(env.document.updateComment(), QStringLiteral("No dot here"));
}

void TestDocumentOpen::pathSettingOnlyFromDialog_data()
{
    QTest::addColumn<bool>("fromDialog");
    QTest::newRow("chosen in the dialog") << true;
    QTest::newRow("handed in by a caller") << false;
}

void TestDocumentOpen::pathSettingOnlyFromDialog()
{
    QFETCH(bool, fromDialog);

    DocumentEnv env;
    env.settings.setStringSetting(QStringLiteral("pathBlockset"), QStringLiteral("/earlier/folder"));
    makeFolder(env.sets + QStringLiteral("/deeper"));
    const QString path = env.addSet(QStringLiteral("deeper/Castle.bset"), castleFiles());

    if (fromDialog) {
        env.prompts.fileAnswers = {path};
        env.document.openBlockset();
        QCOMPARE(env.prompts.fileRequests.size(), 1);
        QCOMPARE(env.prompts.fileRequests[0].folder, QStringLiteral("/earlier/folder"));
    } else {
        env.open(path);
        QVERIFY(env.prompts.fileRequests.isEmpty());
    }

    QVERIFY(env.document.blocksetOpen());
    QCOMPARE(env.document.blocksetPath(), path);
    QCOMPARE(env.pathSetting(), fromDialog ? env.sets + QStringLiteral("/deeper") : QStringLiteral("/earlier/folder"));
}

void TestDocumentOpen::cancelledDialog_data()
{
    QTest::addColumn<bool>("blocksetOpenBefore");
    QTest::newRow("nothing open") << false;
    QTest::newRow("blockset open") << true;
}

void TestDocumentOpen::cancelledDialog()
{
    QFETCH(bool, blocksetOpenBefore);

    DocumentEnv env;
    const QString path = env.addSet(QStringLiteral("Castle.bset"), castleFiles());
    if (blocksetOpenBefore)
        env.open(path);
    const FileMap unpacked = filesBelow(env.folder.workingFolder());
    env.prompts.fileAnswers = {QString()};
    env.view.clear();

    env.document.openBlockset();

    QCOMPARE(env.prompts.fileRequests.size(), 1);
    QCOMPARE(env.document.blocksetOpen(), blocksetOpenBefore);
    QCOMPARE(env.document.blockCount(), blocksetOpenBefore ? 3 : 0);
    QCOMPARE(env.document.blocksetPath(), blocksetOpenBefore ? path : QString());
    QCOMPARE(filesBelow(env.folder.workingFolder()), unpacked);
    QCOMPARE(env.document.processText(), QString());
    QVERIFY(!env.document.processMessageShown());
    QCOMPARE(env.pathSetting(), QString());
    QCOMPARE(env.view.resets, 0);
}

void TestDocumentOpen::saveQuestion_data()
{
    QTest::addColumn<PromptAnswer>("answer");
    QTest::addColumn<bool>("onlyUpdateComment");

    QTest::newRow("cancel") << PromptAnswer::Cancel << false;
    QTest::newRow("no") << PromptAnswer::No << false;
    QTest::newRow("yes") << PromptAnswer::Yes << false;
    QTest::newRow("cancel, only the update comment edited") << PromptAnswer::Cancel << true;
    QTest::newRow("yes, only the update comment edited") << PromptAnswer::Yes << true;
}

void TestDocumentOpen::saveQuestion()
{
    QFETCH(PromptAnswer, answer);
    QFETCH(bool, onlyUpdateComment);

    DocumentEnv env;
    const QString castle = env.addSet(QStringLiteral("Castle.bset"), castleFiles());
    FileMap other;
    other.insert(QStringLiteral("Other.style"), dosText(QStringLiteral("<style name=\"Other\">\n</style>\n")));
    other.insert(QStringLiteral("sounds/a.wav"), QByteArray("wave"));
    const QString otherPath = env.addSet(QStringLiteral("Other.bset"), other);

    env.open(castle);
    if (onlyUpdateComment)
        env.document.editUpdateComment(QStringLiteral("New towers"));
    else
        env.document.editStyleValue(StyleField::Name, QStringLiteral("Fortress"));
    const QByteArray castleBefore = readFile(castle);
    const FileMap unpacked = filesBelow(env.folder.workingFolder());
    env.prompts.answers = {answer};
    env.prompts.fileAnswers = {otherPath};

    env.document.openBlockset();

    QCOMPARE(env.prompts.messages.size(), 1);
    QCOMPARE(env.prompts.messages[0].text, kSaveFirst);
    QCOMPARE(env.prompts.messages[0].title, kOpenTitle);
    QCOMPARE(env.prompts.messages[0].buttons, PromptButtons::YesNoCancel);
    QCOMPARE(env.prompts.messages[0].icon, PromptIcon::None);

    if (answer == PromptAnswer::Cancel) {
        QVERIFY(env.prompts.fileRequests.isEmpty());
        QVERIFY(env.document.blocksetOpen());
        QCOMPARE(env.document.blocksetPath(), castle);
        QVERIFY(env.document.isChanged());
        QCOMPARE(env.document.style().name, onlyUpdateComment ? QStringLiteral("Castle") : QStringLiteral("Fortress"));
        QCOMPARE(env.document.blockCount(), 3);
        QCOMPARE(filesBelow(env.folder.workingFolder()), unpacked);
        QCOMPARE(readFile(castle), castleBefore);
        QCOMPARE(env.document.processText(), QString());
        return;
    }

    QCOMPARE(env.prompts.fileRequests.size(), 1);
    QVERIFY(env.document.blocksetOpen());
    QCOMPARE(env.document.blocksetPath(), otherPath);
    QCOMPARE(env.document.style().name, QStringLiteral("Other"));
    QVERIFY(!env.document.isChanged());
    const bool saved = answer == PromptAnswer::Yes;
    if (onlyUpdateComment) {
        QCOMPARE(readFile(castle), castleBefore);
        QCOMPARE(QFile::exists(env.setPath(QStringLiteral("Castle.txt"))), saved);
    } else {
        QCOMPARE(readFile(castle) != castleBefore, saved);
        QCOMPARE(readBset(castle).value(QStringLiteral("Castle.style")).contains("name=\"Fortress\""), saved);
    }
}

// A Yes whose save fails stops the open like Cancel: the edits are still there.
void TestDocumentOpen::saveQuestionFailedSaveStops()
{
    DocumentEnv env;
    makeFolder(env.sets + QStringLiteral("/gone"));
    const QString castle = env.addSet(QStringLiteral("gone/Castle.bset"), castleFiles());
    const QString other = env.addSet(QStringLiteral("Other.bset"), castleFiles(QStringLiteral("Other.style")));
    env.open(castle);
    env.document.editStyleValue(StyleField::Author, QStringLiteral("Someone else"));
    QVERIFY(QDir(env.sets + QStringLiteral("/gone")).removeRecursively());
    env.prompts.answers = {PromptAnswer::Yes};
    env.prompts.fileAnswers = {other};

    env.document.openBlockset();

    QCOMPARE(env.prompts.messageTexts(), QStringList({kSaveFirst, QStringLiteral("Unable to save blockset!")}));
    QVERIFY(env.prompts.fileRequests.isEmpty());
    QVERIFY(env.document.blocksetOpen());
    QCOMPARE(env.document.blocksetPath(), castle);
    QVERIFY(env.document.blocksetChanged());
    QCOMPARE(env.document.style().author, QStringLiteral("Someone else"));
    QCOMPARE(env.document.blockCount(), 3);
    QVERIFY(QFile::exists(env.working(QStringLiteral("blocks/wall.block"))));
    QCOMPARE(env.document.processText(), QString());
}

void TestDocumentOpen::brokenArchive_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<bool>("openBefore");

    QTest::newRow("missing") << "missing" << false;
    QTest::newRow("empty file") << "empty" << false;
    QTest::newRow("not a zip") << "text" << false;
    QTest::newRow("truncated to half") << "half" << false;
    QTest::newRow("end record cut off") << "tail" << false;
    QTest::newRow("bad CRC") << "crc" << false;
    QTest::newRow("a folder") << "folder" << false;
    QTest::newRow("bad CRC, a blockset was open") << "crc" << true;
    QTest::newRow("not a zip, a blockset was open") << "text" << true;
}

void TestDocumentOpen::brokenArchive()
{
    QFETCH(QString, kind);
    QFETCH(bool, openBefore);

    DocumentEnv env;
    const QString good = env.addSet(QStringLiteral("Good.bset"), castleFiles(QStringLiteral("Good.style")));
    const QByteArray zip = readFile(good);
    QVERIFY(zip.size() > 100);
    const QString broken = env.setPath(QStringLiteral("Broken.bset"));
    if (kind == QLatin1String("empty"))
        QVERIFY(writeFile(broken, QByteArray()));
    else if (kind == QLatin1String("text"))
        QVERIFY(writeFile(broken, dosText(QStringLiteral("<style name=\"not an archive\">\n</style>\n"))));
    else if (kind == QLatin1String("half"))
        QVERIFY(writeFile(broken, zip.left(zip.size() / 2)));
    else if (kind == QLatin1String("tail"))
        QVERIFY(writeFile(broken, zip.left(zip.size() - 10)));
    else if (kind == QLatin1String("crc"))
        QVERIFY(writeFile(broken, withBadCrcs(zip)));
    else if (kind == QLatin1String("folder"))
        QVERIFY(QDir().mkpath(broken + QStringLiteral("/blocks")));
    if (openBefore)
        env.open(good);
    env.view.clear();

    env.open(broken);

    QCOMPARE(env.prompts.messages.size(), 1);
    QCOMPARE(env.prompts.messages[0].text, QStringLiteral("Failed to open Blockset File."));
    QCOMPARE(env.prompts.messages[0].title, QStringLiteral("File Error"));
    QCOMPARE(env.prompts.messages[0].buttons, PromptButtons::Ok);
    QCOMPARE(env.prompts.messages[0].icon, PromptIcon::Critical);
    QVERIFY(!env.document.blocksetOpen());
    QCOMPARE(env.document.blockCount(), 0);
    QCOMPARE(env.document.textureCount(), 0);
    QCOMPARE(env.document.soundCount(), 0);
    QCOMPARE(env.document.style(), StyleValues());
    QCOMPARE(env.document.processText(), QString());
    QVERIFY(!env.document.processMessageShown());
    QVERIFY(!env.view.busyCalls.isEmpty());
    QCOMPARE(env.view.busyCalls.last(), false);
    const InterfaceState state = computeInterfaceState(env.document, true);
    QCOMPARE(state.caption, QStringLiteral("Cubrix"));
    QVERIFY(!state.enabled.value(QStringLiteral("btnSave")));

    // The editor is still usable: the good archive opens afterwards.
    env.prompts.messages.clear();
    env.open(good);
    QVERIFY(env.document.blocksetOpen());
    QCOMPARE(env.document.blockCount(), 3);
    QVERIFY(env.prompts.messages.isEmpty());
}

void TestDocumentOpen::statusTextsInOrder()
{
    DocumentEnv env;
    const QString path = env.addSet(QStringLiteral("Castle.bset"), castleFiles());

    env.open(path);

    QCOMPARE(env.view.processTexts,
             QStringList({QStringLiteral("Open Blockset..."), QStringLiteral("Parsing Blockset..."),
                          QStringLiteral("Parsing door.block"), QStringLiteral("Parsing tree.block"),
                          QStringLiteral("Parsing wall.block"), kBothModes}));
    QCOMPARE(env.view.busyCalls, QList<bool>({true, false}));
    QCOMPARE(env.view.resets, 1);
    QVERIFY(env.view.checkInterfaceCalls >= 2);
}

// Nothing of a blockset opened before, and nothing left in the working folder
// by an earlier run, shows up in the next one.
void TestDocumentOpen::previousBlocksetLeavesNothingBehind()
{
    DocumentEnv env;
    writeFile(env.working(QStringLiteral("blocks/stale.block")), blockFile(QStringLiteral("Stale")));
    writeFile(env.working(QStringLiteral("textures/stale.gif")), QByteArray("gif"));
    writeFile(env.working(QStringLiteral("Stale.style")), QByteArray("<style name=\"Stale\"></style>"));
    const QString castle = env.addSet(QStringLiteral("Castle.bset"), castleFiles());
    writeFile(env.setPath(QStringLiteral("Castle.txt")),
              dosText(QStringLiteral("<version id=\"1\" size=\"2\">\nCastle comment\n</version>\n")));
    FileMap bare;
    bare.insert(QStringLiteral("Bare.style"), dosText(QStringLiteral("<style name=\"Bare\">\n</style>\n")));
    bare.insert(QStringLiteral("sounds/a.wav"), QByteArray("wave"));
    const QString barePath = env.addSet(QStringLiteral("Bare.bset"), bare);

    env.open(castle);
    QCOMPARE(env.prompts.messages.size(), 0);
    QCOMPARE(fileColumn(env.document.blocks()).contains(QStringLiteral("stale.block")), false);
    QCOMPARE(fileColumn(env.document.textures()).contains(QStringLiteral("stale.gif")), false);
    QCOMPARE(env.document.updateComment(), QStringLiteral("Castle comment"));

    env.open(barePath);
    QVERIFY(env.document.blocksetOpen());
    QCOMPARE(env.document.blockCount(), 0);
    QCOMPARE(env.document.textureCount(), 0);
    QCOMPARE(env.document.soundCount(), 1);
    StyleValues expected;
    expected.name = QStringLiteral("Bare");
    QCOMPARE(env.document.style(), expected);
    QCOMPARE(env.document.versionText(), QString());
    QCOMPARE(env.document.updateComment(), QString());
    QCOMPARE(filesBelow(env.folder.workingFolder()), bare);
}

QTEST_GUILESS_MAIN(TestDocumentOpen)
#include "test_document_open.moc"
