// Whole document commands run from the real window's toolbar buttons and menu
// entries: Open (from the command and from the command line), edit-save-reopen,
// New with the New Blockset dialog's answers, Save on an untitled blockset,
// Close with each answer to its save question, and archives that cannot be
// opened. Also the start decision for a command line (chooseStart).
// Leaves out: the document's own rules in detail (tests/app), the enabled states
// per tab (test_interface_state_gui) and closing the window (test_unload).

#include "MainWindowFixture.h"

#include "app/ui/MainSub.h"

#include <QCheckBox>
#include <QFileInfo>
#include <QTreeWidget>

Q_DECLARE_METATYPE(PromptAnswer)

namespace {

constexpr int kSettingsTab = 3;
constexpr int kVersionTab = 4;

const QString kChangedQuestion = "The blockset has been changed. Do you want to save it first?";
const QString kBlocksetFilter = "Blocksets (*.bset),*.bset";
const QStringList kItemCommands = {"AddItem", "RemoveItem", "ReplaceItem", "EditItem", "PreviewItem"};

// The style file an archive holds, as text.
QString styleIn(const QString &archivePath, const QString &styleName)
{
    QTemporaryDir target;
    Archive archive;
    if (!archive.openArchive(archivePath) || !archive.extractAll(target.path()))
        return "<cannot unpack " + archivePath + ">";
    return QString::fromLatin1(MainWindowFixture::readFile(target.filePath(styleName)));
}

quint16 le16(const QByteArray &bytes, qsizetype at)
{
    return quint16(quint8(bytes.at(at)) | quint8(bytes.at(at + 1)) << 8);
}

quint32 le32(const QByteArray &bytes, qsizetype at)
{
    return quint32(le16(bytes, at)) | quint32(le16(bytes, at + 2)) << 16;
}

} // namespace

class TestDocumentCommandsGui : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        fixture = std::make_unique<MainWindowFixture>();
        fixture->open();
    }
    void cleanup()
    {
        QVERIFY2(fixture->prompts.unexpected.isEmpty(), qPrintable(fixture->prompts.unexpected.join("; ")));
        fixture.reset();
    }

    void startChoice_data();
    void startChoice();
    void commandLineFileOpensInWindow();
    void openFromCommand_data();
    void openFromCommand();
    void openCancelledKeepsBlockset();
    void differingStyleFile_data();
    void differingStyleFile();
    void editSaveReopen_data();
    void editSaveReopen();
    void newBlockset_data();
    void newBlockset();
    void newAfterChangedBlockset();
    void saveUntitledAsksForName_data();
    void saveUntitledAsksForName();
    void closeChangedBlockset_data();
    void closeChangedBlockset();
    void brokenArchive_data();
    void brokenArchive();

private:
    frmMain &window() { return *fixture->window; }
    QTreeWidget *list(const char *name) { return window().findChild<QTreeWidget *>(name); }
    int rows(const char *name) { return list(name) ? list(name)->topLevelItemCount() : -1; }

    // The window as it is with no blockset: every document command but New and
    // Open unusable, no caption name, empty lists, panels and fields.
    void verifyNoBlockset()
    {
        QVERIFY(!window().document().blocksetOpen());
        QCOMPARE(window().windowTitle(), QString("Cubrix"));
        QStringList off = {"Close", "Save", "SaveAs", "AddBSP"};
        off += kItemCommands;
        for (const QString &command : off)
            for (const QString &prefix : {"btn", "mnu"})
                QVERIFY2(!fixture->enabled(prefix + command), qPrintable(prefix + command));
        QVERIFY(!fixture->enabled("mnuRemapSymbols"));
        QVERIFY(fixture->enabled("btnOpen"));
        QVERIFY(fixture->enabled("btnNew"));
        QCOMPARE(rows("BlockList"), 0);
        QCOMPARE(rows("TextureList"), 0);
        QCOMPARE(rows("SoundList"), 0);
        for (const char *panel : {"stbBlocks", "stbTextures", "stbSounds", "stbVersion", "stbProcess"})
            QCOMPARE(fixture->panel(panel), QString());
        for (const char *field : {"fldVersion", "fldBlocksetName", "fldUpdate", "rgbSky", "lstSkyTexture"})
            QCOMPARE(fixture->shownText(field), QString());
    }

    // Writes an update file beside the archive, as a save would.
    static void writeUpdateFile(const QString &archive, const QString &comment)
    {
        const QString path = QFileInfo(archive).absolutePath() + '/' + QFileInfo(archive).completeBaseName() + ".txt";
        MainWindowFixture::writeFile(path, "<version id=\"1.0\" size=\"1\">\r\n" + comment.toLatin1() + "\r\n</version>\r\n");
    }

    std::unique_ptr<MainWindowFixture> fixture;
};

// ---------------------------------------------------------------------------
// Start-up

void TestDocumentCommandsGui::startChoice_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<bool>("roverKnown");
    QTest::addColumn<bool>("manager");
    QTest::addColumn<QString>("file"); // relative to the start folder, "" for none
    QTest::addColumn<int>("lookups");  // times Rover's registration was asked for

    QTest::newRow("/c without Rover") << QStringList{"/c"} << false << false << "" << 1;
    QTest::newRow("/c with Rover") << QStringList{"/c"} << true << true << "" << 1;
    QTest::newRow("nothing") << QStringList{} << true << false << "" << 0;
    QTest::newRow("empty argument") << QStringList{""} << true << false << "" << 0;
    QTest::newRow("relative file") << QStringList{"Castle.bset"} << true << false << "Castle.bset" << 0;
    QTest::newRow("relative file in a folder") << QStringList{"sets/My Castle.bset"} << false << false
                                               << "sets/My Castle.bset" << 0;
    QTest::newRow("two files") << QStringList{"Castle.bset", "Tower.bset"} << true << false << "" << 0;
    QTest::newRow("switch and file") << QStringList{"/c", "Castle.bset"} << true << false << "" << 0;
    QTest::newRow("capital switch") << QStringList{"/C"} << true << false << "" << 0;
    QTest::newRow("switch with trailing blank") << QStringList{"/c "} << true << false << "" << 0;
}

void TestDocumentCommandsGui::startChoice()
{
    QFETCH(QStringList, arguments);
    QFETCH(bool, roverKnown);
    QFETCH(bool, manager);
    QFETCH(QString, file);
    QFETCH(int, lookups);
    const QString start = fixture->dir.filePath("worlds");
    int asked = 0;
    const StartChoice choice = chooseStart(arguments, start, [&] {
        ++asked;
        return roverKnown;
    });
    QCOMPARE(choice.cacheManager, manager);
    QCOMPARE(choice.file, file.isEmpty() ? QString() : start + '/' + file);
    QCOMPARE(asked, lookups);

    // An absolute name stays as it is, whatever the start folder.
    if (!file.isEmpty()) {
        const QString absolute = fixture->dir.filePath("elsewhere/" + file);
        QCOMPARE(chooseStart({absolute}, start, nullptr).file, absolute);
    }
}

void TestDocumentCommandsGui::commandLineFileOpensInWindow()
{
    // `cubrix Castle.bset` started in the archive's folder: the window gets the full
    // path, finds the update file beside the archive, and a save goes back there
    // even though the program's own current folder is somewhere else.
    BlocksetRecipe recipe;
    recipe.name = "Castle";
    recipe.blocks = 2;
    const QString archive = fixture->makeBlockset(recipe);
    writeUpdateFile(archive, "Gate added");
    window().settings().setStringSetting("pathBlockset", "/nowhere");

    const StartChoice choice = chooseStart({"Castle.bset"}, fixture->dir.path(), nullptr);
    QVERIFY(!choice.cacheManager);
    QCOMPARE(QFileInfo(choice.file).canonicalFilePath(), QFileInfo(archive).canonicalFilePath());
    window().openBlocksetFile(choice.file);

    QVERIFY(window().document().blocksetOpen());
    QCOMPARE(window().windowTitle(), QString("Cubrix - Castle.bset"));
    QCOMPARE(fixture->shownText("fldUpdate"), QString("Gate added"));
    QCOMPARE(rows("BlockList"), 2);
    // A file handed in from outside leaves the folder of the Open dialog alone.
    QCOMPARE(window().settings().getStringSetting("pathBlockset"), QString("/nowhere"));
    QVERIFY(fixture->prompts.fileRequests.isEmpty());

    // The user puts the cursor behind the comment and types on.
    QTest::keyClick(fixture->typeInto(kVersionTab, "fldUpdate", QString()), Qt::Key_End, Qt::ControlModifier);
    fixture->typeInto(kVersionTab, "fldUpdate", ", tower too");
    fixture->action("btnSave")->trigger();
    QCOMPARE(fixture->panel("stbProcess"), QString("Update file saved."));
    QVERIFY(MainWindowFixture::readFile(fixture->dir.filePath("Castle.txt")).contains("Gate added, tower too"));
}

// ---------------------------------------------------------------------------
// Open

void TestDocumentCommandsGui::openFromCommand_data()
{
    QTest::addColumn<QString>("command");
    QTest::newRow("toolbar") << "btnOpen";
    QTest::newRow("menu") << "mnuOpen";
}

void TestDocumentCommandsGui::openFromCommand()
{
    QFETCH(QString, command);
    BlocksetRecipe tower;
    tower.name = "Tower";
    tower.blocks = 3;
    tower.textures = 2;
    tower.sounds = 1;
    tower.version = "2.1";
    const QString towerPath = fixture->makeBlockset(tower);
    writeUpdateFile(towerPath, "Higher walls");

    fixture->prompts.fileAnswers << towerPath;
    fixture->action(command)->trigger();

    QCOMPARE(fixture->prompts.fileRequests.size(), 1);
    const ScriptedPrompts::FileRequest request = fixture->prompts.fileRequests.first();
    QCOMPARE(request.kind, QString("open"));
    QCOMPARE(request.title, QString("Open Blockset"));
    QCOMPARE(request.filter, kBlocksetFilter);
    QCOMPARE(request.folder, QString()); // nothing chosen before

    QVERIFY(window().document().blocksetOpen());
    QCOMPARE(window().windowTitle(), QString("Cubrix - Tower.bset"));
    QCOMPARE(rows("BlockList"), 3);
    QCOMPARE(rows("TextureList"), 2);
    QCOMPARE(rows("SoundList"), 1);
    QCOMPARE(fixture->panel("stbBlocks"), QString("3 Blocks"));
    QCOMPARE(fixture->panel("stbVersion"), QString("2.1"));
    QCOMPARE(fixture->shownText("fldVersion"), QString("2.1"));
    QCOMPARE(fixture->shownText("fldBlocksetName"), QString("Tower"));
    QCOMPARE(fixture->shownText("fldUpdate"), QString("Higher walls"));
    QCOMPARE(fixture->tabs()->currentIndex(), 0);
    QVERIFY(fixture->enabled("btnClose"));
    QVERIFY(fixture->enabled("mnuSaveAs"));
    QVERIFY(!fixture->enabled("btnSave"));
    QVERIFY(!fixture->enabled("mnuSave"));
    QVERIFY(fixture->prompts.messages.isEmpty());
    // The chosen file's folder is where the next Open dialog starts.
    const QString folder = QDir::toNativeSeparators(QFileInfo(towerPath).absolutePath());
    QCOMPARE(window().settings().getStringSetting("pathBlockset"), folder);

    // A second open from the command replaces the first blockset.
    BlocksetRecipe hut;
    hut.name = "Hut";
    hut.blocks = 1;
    fixture->prompts.fileAnswers << fixture->makeBlockset(hut);
    fixture->action(command)->trigger();
    QCOMPARE(fixture->prompts.fileRequests.size(), 2);
    QCOMPARE(fixture->prompts.fileRequests.last().folder, folder);
    QCOMPARE(window().windowTitle(), QString("Cubrix - Hut.bset"));
    QCOMPARE(rows("BlockList"), 1);
    QCOMPARE(rows("TextureList"), 0);
    QCOMPARE(fixture->shownText("fldUpdate"), QString()); // Hut has no update file
}

void TestDocumentCommandsGui::openCancelledKeepsBlockset()
{
    BlocksetRecipe recipe;
    recipe.name = "Kept";
    recipe.blocks = 2;
    QVERIFY(fixture->openBlockset(recipe));
    fixture->typeInto(kVersionTab, "fldAuthor", "Me");

    // The save question answered No, then the file dialog cancelled: nothing changes.
    fixture->prompts.answers << PromptAnswer::No;
    fixture->prompts.fileAnswers << QString();
    fixture->action("btnOpen")->trigger();
    QCOMPARE(fixture->prompts.messages.size(), 1);
    QCOMPARE(fixture->prompts.messages.first().text,
             QString("The current blockset has been changed. Do you want to save it first?"));
    QCOMPARE(fixture->prompts.messages.first().title, QString("Open Blockset"));
    QVERIFY(window().document().blocksetOpen());
    QCOMPARE(window().windowTitle(), QString("Cubrix - Kept.bset*"));
    QCOMPARE(rows("BlockList"), 2);
    QCOMPARE(fixture->shownText("fldAuthor"), QString("Me"));
    QCOMPARE(fixture->panel("stbProcess"), QString());
    QVERIFY(fixture->enabled("btnSave"));
}

void TestDocumentCommandsGui::differingStyleFile_data()
{
    QTest::addColumn<PromptAnswer>("answer");
    QTest::newRow("renamed") << PromptAnswer::Yes;
    QTest::newRow("declined") << PromptAnswer::No;
}

void TestDocumentCommandsGui::differingStyleFile()
{
    // Blue.bset holding Red.style: renaming it makes the opened blockset changed
    // at once, and the window must show that without any edit.
    QFETCH(PromptAnswer, answer);
    BlocksetRecipe recipe;
    recipe.name = "Red";
    recipe.blocks = 1;
    recipe.values = {{StyleField::OrbText, "Red sun"}};
    const QString blue = fixture->dir.filePath("Blue.bset");
    QVERIFY(QFile::rename(fixture->makeBlockset(recipe), blue));

    fixture->prompts.answers << answer;
    fixture->prompts.fileAnswers << blue;
    fixture->action("btnOpen")->trigger();

    const bool renamed = answer == PromptAnswer::Yes;
    QCOMPARE(fixture->prompts.messages.first().text,
             QString("Found differing style file \"Red.style\". Do you want this file to be renamed and parsed?"));
    QCOMPARE(fixture->prompts.messages.size(), renamed ? 1 : 2);
    QVERIFY(window().document().blocksetOpen());
    QCOMPARE(window().windowTitle(), QString(renamed ? "Cubrix - Blue.bset*" : "Cubrix - Blue.bset"));
    QCOMPARE(fixture->enabled("btnSave"), renamed);
    QCOMPARE(fixture->enabled("mnuSave"), renamed);
    QCOMPARE(fixture->shownText("fldOrbText"), QString(renamed ? "Red sun" : ""));
    // Declined: default values, and syncBlockset names the blockset after its file.
    QCOMPARE(fixture->shownText("fldBlocksetName"), QString(renamed ? "Red" : "Blue"));
    if (!renamed)
        QCOMPARE(fixture->prompts.messages.last().title, QString("Open Blockset"));
}

// ---------------------------------------------------------------------------
// Edit, save and open again

void TestDocumentCommandsGui::editSaveReopen_data()
{
    QTest::addColumn<int>("tab");
    QTest::addColumn<QString>("control"); // where the keys go
    QTest::addColumn<QString>("keys");
    QTest::addColumn<QString>("value"); // the control that shows the value
    QTest::addColumn<QString>("saved");

    QTest::newRow("version") << kVersionTab << "fldVersion" << "b" << "fldVersion" << "1.0b";
    QTest::newRow("copyright sign") << kVersionTab << "fldCopyright" << QString::fromUtf8("\xc2\xa9 Me")
                                    << "fldCopyright" << QString::fromUtf8("\xc2\xa9 Me");
    QTest::newRow("orb text") << kSettingsTab << "fldOrbText" << "Sun" << "fldOrbText" << "Sun";
    QTest::newRow("sky colour") << kSettingsTab << "rgbSky/txtG" << "5" << "rgbSky" << "(10,205,30)";
    QTest::newRow("orb tilt") << kSettingsTab << "posOrb/txtTilt" << "\b\b-9" << "posOrb" << "(90,-9)";
    QTest::newRow("sky texture") << kSettingsTab << "lstSkyTexture" << "\b\b\bgif" << "lstSkyTexture"
                                 << "texture0.gif";
}

void TestDocumentCommandsGui::editSaveReopen()
{
    QFETCH(int, tab);
    QFETCH(QString, control);
    QFETCH(QString, keys);
    QFETCH(QString, value);
    QFETCH(QString, saved);

    window().show();
    window().activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&window()));
    BlocksetRecipe recipe;
    recipe.name = "Round";
    recipe.blocks = 2;
    recipe.textures = 1;
    recipe.values = {{StyleField::SkyColor, "(10,20,30)"},
                     {StyleField::OrbPosition, "(90,45)"},
                     {StyleField::SkyTexture, "texture0.jpg"}};
    QVERIFY(fixture->openBlockset(recipe));
    const QString archive = window().document().blocksetPath();
    const QByteArray before = MainWindowFixture::readFile(archive);

    fixture->typeInto(tab, control, keys);
    // A texture box counts its edit once the focus has left it.
    fixture->control("fldOrbHREF")->setFocus();
    QCOMPARE(fixture->shownText(value), saved);
    QCOMPARE(window().windowTitle(), QString("Cubrix - Round.bset*"));
    QVERIFY(fixture->enabled("btnSave"));
    QVERIFY(fixture->enabled("mnuSave"));

    fixture->action("btnSave")->trigger();
    QCOMPARE(fixture->panel("stbProcess"), QString("Blockset and update file saved."));
    QCOMPARE(window().windowTitle(), QString("Cubrix - Round.bset"));
    QVERIFY(!fixture->enabled("btnSave"));
    QVERIFY(MainWindowFixture::readFile(archive) != before);
    QVERIFY(fixture->prompts.messages.isEmpty());

    // A fresh window finds the value where it was typed.
    fixture->window.reset();
    fixture->open();
    window().openBlocksetFile(archive);
    QVERIFY(window().document().blocksetOpen());
    QCOMPARE(fixture->shownText(value), saved);
    QVERIFY(!window().document().isChanged());
    // The other values came through the save unchanged.
    QCOMPARE(fixture->shownText("fldBlocksetName"), QString("Round"));
    QCOMPARE(rows("BlockList"), 2);
    QCOMPARE(list("BlockList")->topLevelItem(1)->text(2), symbolAlphabet().mid(1, 1));
    if (value != "rgbSky")
        QCOMPARE(fixture->shownText("rgbSky"), QString("(10,20,30)"));
}

// ---------------------------------------------------------------------------
// New

void TestDocumentCommandsGui::newBlockset_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("version");
    QTest::addColumn<bool>("syncBlockset");
    QTest::addColumn<bool>("strictPrefix");
    QTest::addColumn<bool>("syncDouble");
    QTest::addColumn<int>("prefixIndex");
    QTest::addColumn<QString>("caption");
    QTest::addColumn<QString>("versionPanel");
    QTest::addColumn<bool>("syncDoubleChecked");
    QTest::addColumn<QString>("result");

    QTest::newRow("named, file name kept apart") << "Keep" << "2.0" << false << true << true << 3
                                                 << "Cubrix - Untitled" << "2.0" << true
                                                 << "Strict Prefix & Sync Double Mode activated.";
    QTest::newRow("named after the blockset") << "Keep" << "" << true << true << false << 0 << "Cubrix - Keep"
                                              << "No Version" << false << "Strict Prefix Mode activated.";
    QTest::newRow("no name") << "" << "1.0" << true << false << false << 0 << "Cubrix - Untitled" << "1.0" << false
                             << "";
    // Sync double cannot be chosen without strict prefix.
    QTest::newRow("sync double alone") << "Solo" << "0.1" << true << false << true << 0 << "Cubrix - Solo" << "0.1"
                                       << false << "";
}

void TestDocumentCommandsGui::newBlockset()
{
    QFETCH(QString, name);
    QFETCH(QString, version);
    QFETCH(bool, syncBlockset);
    QFETCH(bool, strictPrefix);
    QFETCH(bool, syncDouble);
    QFETCH(int, prefixIndex);
    QFETCH(QString, caption);
    QFETCH(QString, versionPanel);
    QFETCH(bool, syncDoubleChecked);
    QFETCH(QString, result);

    window().settings().setBoolSetting("syncBlockset", syncBlockset);
    NewBlocksetChoice choice;
    choice.name = name;
    choice.version = version;
    choice.strictPrefix = strictPrefix;
    choice.syncDouble = syncDouble;
    choice.prefixIndex = prefixIndex;
    fixture->prompts.newAnswers << choice;
    fixture->action("mnuNew")->trigger();
    QVERIFY(fixture->prompts.newAnswers.isEmpty());

    QVERIFY(window().document().blocksetOpen());
    QVERIFY(window().document().blocksetUntitled());
    QCOMPARE(window().windowTitle(), caption);
    QCOMPARE(fixture->shownText("fldBlocksetName"), name);
    QCOMPARE(fixture->shownText("fldVersion"), version);
    QCOMPARE(fixture->panel("stbVersion"), versionPanel);
    QCOMPARE(fixture->panel("stbBlocks"), QString("No Blocks"));
    QCOMPARE(fixture->panel("stbProcess"), result);
    QCOMPARE(fixture->tabs()->currentIndex(), 0);

    auto *strict = window().findChild<QCheckBox *>("cbxStrictPrefix");
    auto *sync = window().findChild<QCheckBox *>("cbxSyncDouble");
    auto *prefixes = window().findChild<QComboBox *>("lstStrictPrefix");
    QVERIFY(strict && sync && prefixes);
    QCOMPARE(strict->isChecked(), strictPrefix);
    QCOMPARE(sync->isChecked(), syncDoubleChecked);
    QCOMPARE(sync->isEnabled(), strictPrefix);
    QCOMPARE(prefixes->isEnabled(), strictPrefix);
    QCOMPARE(prefixes->currentText(), prefixAlphabet().mid(prefixIndex, 1));

    // A new blockset is unchanged: only an edit makes Save usable.
    QVERIFY(!fixture->enabled("btnSave"));
    QVERIFY(fixture->enabled("btnSaveAs"));
    QVERIFY(fixture->enabled("mnuClose"));
    QVERIFY(!fixture->enabled("btnAddBSP"));
    QVERIFY(fixture->prompts.messages.isEmpty());
}

void TestDocumentCommandsGui::newAfterChangedBlockset()
{
    BlocksetRecipe recipe;
    recipe.name = "Old";
    recipe.blocks = 2;
    recipe.textures = 1;
    recipe.values = {{StyleField::SkyColor, "(1,2,3)"}, {StyleField::SkyTexture, "texture0.jpg"}};
    QVERIFY(fixture->openBlockset(recipe));
    QCOMPARE(fixture->shownText("rgbSky"), QString("(1,2,3)"));
    const QByteArray before = MainWindowFixture::readFile(window().document().blocksetPath());
    fixture->typeInto(kVersionTab, "fldAuthor", "Me");

    fixture->prompts.answers << PromptAnswer::No;
    NewBlocksetChoice choice;
    choice.name = "Fresh";
    fixture->prompts.newAnswers << choice;
    fixture->action("btnNew")->trigger();

    QCOMPARE(fixture->prompts.messageTexts(),
             QStringList{"The current blockset has been changed. Do you want to save it first?"});
    QCOMPARE(fixture->prompts.messages.first().title, QString("New Blockset"));
    QCOMPARE(fixture->prompts.messages.first().buttons, PromptButtons::YesNoCancel);
    QCOMPARE(window().windowTitle(), QString("Cubrix - Fresh"));
    QCOMPARE(rows("BlockList"), 0);
    QCOMPARE(rows("TextureList"), 0);
    QCOMPARE(fixture->shownText("fldAuthor"), QString());
    QCOMPARE(fixture->shownText("rgbSky"), QString());
    QCOMPARE(fixture->shownText("lstSkyTexture"), QString());
    QCOMPARE(window().findChild<QComboBox *>("lstSkyTexture")->count(), 0);
    QCOMPARE(fixture->shownText("fldBlocksetName"), QString("Fresh"));
    // No was the answer: the old archive is as it was.
    QCOMPARE(MainWindowFixture::readFile(fixture->dir.filePath("Old.bset")), before);
}

// ---------------------------------------------------------------------------
// Save on an untitled blockset

void TestDocumentCommandsGui::saveUntitledAsksForName_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<bool>("cancel");
    QTest::newRow("toolbar") << "btnSave" << false;
    QTest::newRow("menu") << "mnuSave" << false;
    QTest::newRow("toolbar, dialog cancelled") << "btnSave" << true;
    QTest::newRow("menu, dialog cancelled") << "mnuSave" << true;
}

void TestDocumentCommandsGui::saveUntitledAsksForName()
{
    QFETCH(QString, command);
    QFETCH(bool, cancel);
    NewBlocksetChoice choice;
    choice.name = "Draft";
    fixture->prompts.newAnswers << choice;
    fixture->action("btnNew")->trigger();
    QCOMPARE(window().windowTitle(), QString("Cubrix - Draft"));
    fixture->typeInto(kVersionTab, "fldAuthor", "Me");
    QCOMPARE(window().windowTitle(), QString("Cubrix - Draft*"));
    QVERIFY(fixture->enabled(command));

    const QString target = fixture->dir.filePath("Fresh.bset");
    fixture->prompts.fileAnswers << (cancel ? QString() : target);
    fixture->action(command)->trigger();

    QCOMPARE(fixture->prompts.fileRequests.size(), 1);
    const ScriptedPrompts::FileRequest request = fixture->prompts.fileRequests.first();
    QCOMPARE(request.kind, QString("save"));
    QCOMPARE(request.title, QString("Save Blockset As"));
    QCOMPARE(request.filter, kBlocksetFilter);
    QCOMPARE(request.defaultExt, QString("bset"));
    QVERIFY(fixture->prompts.messages.isEmpty());

    if (cancel) {
        QVERIFY(!QFileInfo::exists(target));
        QVERIFY(window().document().blocksetUntitled());
        QCOMPARE(window().windowTitle(), QString("Cubrix - Draft*"));
        QVERIFY(fixture->enabled(command));
        QCOMPARE(fixture->panel("stbProcess"), QString());
        return;
    }
    QVERIFY(QFileInfo::exists(target));
    QVERIFY(!window().document().blocksetUntitled());
    QCOMPARE(window().windowTitle(), QString("Cubrix - Fresh.bset"));
    QCOMPARE(fixture->panel("stbProcess"), QString("Blockset and update file saved."));
    QVERIFY(!fixture->enabled("btnSave"));
    // syncBlockset is on: the blockset took its file's name.
    QCOMPARE(fixture->shownText("fldBlocksetName"), QString("Fresh"));
    const QString style = styleIn(target, "Fresh.style");
    QVERIFY2(style.contains("name=\"Fresh\"") && style.contains("author=\"Me\""), qPrintable(style));
    QVERIFY(QFileInfo::exists(fixture->dir.filePath("Fresh.txt")));

    // The next Save writes to that file without asking.
    fixture->typeInto(kVersionTab, "fldAuthor", "2");
    fixture->action(command)->trigger();
    QCOMPARE(fixture->prompts.fileRequests.size(), 1);
    QVERIFY(styleIn(target, "Fresh.style").contains("author=\"Me2\""));
}

// ---------------------------------------------------------------------------
// Close

void TestDocumentCommandsGui::closeChangedBlockset_data()
{
    QTest::addColumn<PromptAnswer>("answer");
    QTest::addColumn<bool>("closed");
    QTest::addColumn<bool>("saved");
    QTest::newRow("cancel") << PromptAnswer::Cancel << false << false;
    QTest::newRow("no") << PromptAnswer::No << true << false;
    QTest::newRow("yes") << PromptAnswer::Yes << true << true;
}

void TestDocumentCommandsGui::closeChangedBlockset()
{
    QFETCH(PromptAnswer, answer);
    QFETCH(bool, closed);
    QFETCH(bool, saved);
    BlocksetRecipe recipe;
    recipe.name = "Shut";
    recipe.blocks = 3;
    recipe.textures = 1;
    recipe.sounds = 1;
    QVERIFY(fixture->openBlockset(recipe));
    const QString archive = window().document().blocksetPath();
    const QByteArray before = MainWindowFixture::readFile(archive);
    fixture->typeInto(kVersionTab, "fldAuthor", "Me");

    fixture->prompts.answers << answer;
    fixture->action("mnuClose")->trigger();

    QCOMPARE(fixture->prompts.messages.size(), 1);
    const ScriptedPrompts::Message question = fixture->prompts.messages.first();
    QCOMPARE(question.text, kChangedQuestion);
    QCOMPARE(question.title, QString("Close Blockset"));
    QCOMPARE(question.buttons, PromptButtons::YesNoCancel);
    QCOMPARE(question.icon, PromptIcon::None);
    QCOMPARE(MainWindowFixture::readFile(archive) != before, saved);
    if (saved)
        QVERIFY(styleIn(archive, "Shut.style").contains("author=\"Me\""));

    if (!closed) {
        QVERIFY(window().document().blocksetOpen());
        QVERIFY(window().document().blocksetChanged());
        QCOMPARE(window().windowTitle(), QString("Cubrix - Shut.bset*"));
        QCOMPARE(fixture->panel("stbProcess"), QString()); // not "Close Blockset..."
        QCOMPARE(rows("BlockList"), 3);
        QCOMPARE(fixture->shownText("fldAuthor"), QString("Me"));
        QVERIFY(fixture->enabled("btnSave"));
        QCOMPARE(QDir(window().workingFolder().blocksFolder()).entryList(QDir::Files).size(), 3);
        return;
    }
    verifyNoBlockset();
    QCOMPARE(fixture->tabs()->currentIndex(), 0);
    QVERIFY(QDir(window().workingFolder().blocksFolder()).entryList(QDir::Files).isEmpty());
}

// ---------------------------------------------------------------------------
// Archives that cannot be opened

void TestDocumentCommandsGui::brokenArchive_data()
{
    QTest::addColumn<QString>("damage");
    QTest::newRow("not an archive") << "text";
    QTest::newRow("empty file") << "empty";
    QTest::newRow("cut in half") << "truncated";
    QTest::newRow("damaged entry") << "entry";
    QTest::newRow("missing file") << "missing";
    QTest::newRow("folder") << "folder";
}

void TestDocumentCommandsGui::brokenArchive()
{
    QFETCH(QString, damage);
    // A blockset is open and changed first: the failed open must not leave its
    // view, flags or files behind.
    BlocksetRecipe open;
    open.name = "Before";
    open.blocks = 2;
    open.textures = 1;
    QVERIFY(fixture->openBlockset(open));
    fixture->typeInto(kVersionTab, "fldAuthor", "Me");

    BlocksetRecipe good;
    good.name = "Broken";
    good.blocks = 2;
    good.textures = 1;
    const QString path = fixture->makeBlockset(good);
    QByteArray bytes = MainWindowFixture::readFile(path);
    QVERIFY(!bytes.isEmpty());
    QFile::remove(path);
    if (damage == "text") {
        MainWindowFixture::writeFile(path, "<style version=\"1.0\">\r\nnot a zip archive\r\n");
    } else if (damage == "empty") {
        MainWindowFixture::writeFile(path, QByteArray());
    } else if (damage == "truncated") {
        MainWindowFixture::writeFile(path, bytes.left(bytes.size() / 2));
    } else if (damage == "entry") {
        // Overwrite the middle of the texture's stored data: the archive's
        // directory is whole, the entry's check sum no longer fits.
        const qsizetype name = bytes.indexOf("textures/texture0.jpg");
        QVERIFY(name >= 30);
        const qsizetype header = name - 30;
        QCOMPARE(le32(bytes, header), quint32(0x04034b50));
        const quint32 compressed = le32(bytes, header + 18);
        const qsizetype data = name + le16(bytes, header + 26) + le16(bytes, header + 28);
        QVERIFY(compressed > 8);
        for (qsizetype i = 0; i < 4; ++i)
            bytes[data + compressed / 2 + i] = char(~bytes.at(data + compressed / 2 + i));
        MainWindowFixture::writeFile(path, bytes);
    } else if (damage == "folder") {
        QVERIFY(QDir().mkpath(path));
    }

    fixture->prompts.answers << PromptAnswer::No;
    fixture->prompts.fileAnswers << path;
    fixture->action("btnOpen")->trigger();

    QCOMPARE(fixture->prompts.messages.size(), 2);
    const ScriptedPrompts::Message failure = fixture->prompts.messages.last();
    QCOMPARE(failure.text, QString("Failed to open Blockset File."));
    QCOMPARE(failure.title, QString("File Error"));
    QCOMPARE(failure.buttons, PromptButtons::Ok);
    QCOMPARE(failure.icon, PromptIcon::Critical);
    verifyNoBlockset();

    // The window is usable afterwards: a good archive opens as usual, unchanged.
    fixture->prompts.fileAnswers << fixture->makeBlockset(open);
    fixture->action("mnuOpen")->trigger();
    QCOMPARE(window().windowTitle(), QString("Cubrix - Before.bset"));
    QCOMPARE(rows("BlockList"), 2);
}

QTEST_MAIN(TestDocumentCommandsGui)
#include "test_document_commands_gui.moc"
