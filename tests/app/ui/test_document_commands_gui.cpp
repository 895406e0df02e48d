// Whole document commands run from the real window's toolbar buttons and menu
// entries: Open (from the command and from the command line), edit-save-reopen,
// New with the New Blockset dialog's answers, Save on an untitled blockset,
// the save question of Close, Open and New with its answers, and archives that
// cannot be opened. Also the start decision for a command line (chooseStart).
// Leaves out: the document's own rules in detail (tests/app), the enabled states
// per tab (test_interface_state_gui) and closing the window (test_unload).

#include "MainWindowFixture.h"

#include "app/ui/MainSub.h"

#include <QFileInfo>

Q_DECLARE_METATYPE(PromptAnswer)
Q_DECLARE_METATYPE(NewBlocksetChoice)

namespace {

const QString kChangedQuestion = "The blockset has been changed. Do you want to save it first?";
const QString kCurrentChangedQuestion = "The current blockset has been changed. Do you want to save it first?";
const QString kBlocksetFilter = "Blocksets (*.bset),*.bset";

// A file dialog request in one line.
QString describe(const ScriptedPrompts::FileRequest &request)
{
    return QStringList{request.kind, request.title, request.filter, request.defaultExt, request.folder}.join(" | ");
}

// Writes an update file beside the archive, as a save would.
void writeUpdateFile(const QString &archive, const QByteArray &comment)
{
    const QFileInfo info(archive);
    MainWindowFixture::writeFile(info.absolutePath() + '/' + info.completeBaseName() + ".txt",
                                 "<version id=\"1.0\" size=\"1\">\r\n" + comment + "\r\n</version>\r\n");
}

} // namespace

class TestDocumentCommandsGui : public MainWindowTest {
    Q_OBJECT

private slots:
    void startChoice_data()
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

    void startChoice()
    {
        QFETCH(QStringList, arguments);
        QFETCH(bool, roverKnown);
        QFETCH(QString, file);
        const QString start = fixture->dir.filePath("worlds");
        int asked = 0;
        const StartChoice choice = chooseStart(arguments, start, [&] { ++asked; return roverKnown; });
        QTEST(choice.cacheManager, "manager");
        QCOMPARE(choice.file, file.isEmpty() ? QString() : start + '/' + file);
        QTEST(asked, "lookups");
        // An absolute name stays as it is, whatever the start folder.
        if (!file.isEmpty()) {
            const QString absolute = fixture->dir.filePath("elsewhere/" + file);
            QCOMPARE(chooseStart({absolute}, start, nullptr).file, absolute);
        }
    }

    void open_data()
    {
        QTest::addColumn<QString>("how"); // a command, or the command line
        QTest::newRow("toolbar") << "btnOpen";
        QTest::newRow("menu") << "mnuOpen";
        QTest::newRow("command line") << "";
    }

    void open()
    {
        QFETCH(QString, how);
        const QString tower =
            fixture->makeBlockset({.name = "Tower", .blocks = 3, .textures = 2, .sounds = 1, .version = "2.1"});
        writeUpdateFile(tower, "Higher walls");
        fixture->window->settings().setStringSetting("pathBlockset", "/nowhere");
        if (how.isEmpty()) {
            // `cubrix Tower.bset` started in the archive's folder: the window gets the full path.
            fixture->window->openBlocksetFile(chooseStart({"Tower.bset"}, fixture->dir.path(), nullptr).file);
        } else {
            fixture->prompts.fileAnswers << tower;
            fixture->action(how)->trigger();
            QCOMPARE(fixture->prompts.fileRequests.size(), 1);
            QCOMPARE(describe(fixture->prompts.fileRequests.first()),
                     "open | Open Blockset | " + kBlocksetFilter + " |  | /nowhere");
        }
        QCOMPARE(fixture->caption(), QString("Cubrix - Tower.bset"));
        QCOMPARE(QList<int>({fixture->rows("BlockList"), fixture->rows("TextureList"), fixture->rows("SoundList")}),
                 QList<int>({3, 2, 1}));
        QCOMPARE(fixture->panel("stbVersion"), QString("2.1"));
        QCOMPARE(fixture->shownText("fldBlocksetName") + ", " + fixture->shownText("fldUpdate"),
                 QString("Tower, Higher walls"));
        QVERIFY(!fixture->enabled("btnSave"));
        QVERIFY(fixture->prompts.messages.isEmpty());
        // The folder of a file chosen in the dialog is where the next Open dialog
        // starts; a file handed in from outside leaves it alone.
        QCOMPARE(fixture->window->settings().getStringSetting("pathBlockset"),
                 how.isEmpty() ? QString("/nowhere") : QDir::toNativeSeparators(fixture->dir.path()));

        // The user puts the cursor behind the comment, types on and saves: the
        // update file beside the archive gets it, wherever the program was started.
        QTest::keyClick(fixture->typeInto("fldUpdate", ""), Qt::Key_End, Qt::ControlModifier);
        fixture->typeInto("fldUpdate", ", tower too");
        fixture->action("btnSave")->trigger();
        QCOMPARE(fixture->panel("stbProcess"), QString("Update file saved."));
        QVERIFY(MainWindowFixture::readFile(fixture->dir.filePath("Tower.txt")).contains("Higher walls, tower too"));
    }

    void differingStyleFile()
    {
        // Blue.bset holding Red.style, renamed on Yes: the opened blockset is changed
        // at once, and the window must show that without any edit.
        const QString blue = fixture->dir.filePath("Blue.bset");
        QVERIFY(QFile::rename(
            fixture->makeBlockset({.name = "Red", .blocks = 1, .values = {{StyleField::OrbText, "Red sun"}}}), blue));
        fixture->prompts.answers << PromptAnswer::Yes;
        fixture->prompts.fileAnswers << blue;
        fixture->action("btnOpen")->trigger();
        QCOMPARE(fixture->prompts.messageTexts(), QStringList{"Found differing style file \"Red.style\". "
                                                              "Do you want this file to be renamed and parsed?"});
        QCOMPARE(fixture->caption(), QString("Cubrix - Blue.bset*"));
        QVERIFY(fixture->enabled("btnSave"));
        QCOMPARE(fixture->shownText("fldOrbText"), QString("Red sun"));
    }

    void editSaveReopen_data()
    {
        QTest::addColumn<QString>("control"); // where the keys go; its value control is the part before "/"
        QTest::addColumn<QString>("keys");
        QTest::addColumn<QString>("saved");
        QTest::newRow("version") << "fldVersion" << "b2" << "1.0b2";
        QTest::newRow("copyright sign") << "fldCopyright" << QString::fromUtf8("\xc2\xa9 Me")
                                        << QString::fromUtf8("\xc2\xa9 Me");
        QTest::newRow("sky colour") << "rgbSky/txtG" << "5" << "(10,205,30)";
        QTest::newRow("orb tilt") << "posOrb/txtTilt" << "\b\b-9" << "(90,-9)";
        QTest::newRow("sky texture") << "lstSkyTexture" << "\b\b\bgif" << "texture0.gif";
    }

    void editSaveReopen()
    {
        QFETCH(QString, control);
        QFETCH(QString, keys);
        QFETCH(QString, saved);
        fixture->window->show();
        fixture->window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(fixture->window.get()));
        QVERIFY(fixture->openBlockset({.name = "Round", .blocks = 2, .textures = 1,
                                       .values = {{StyleField::SkyColor, "(10,20,30)"},
                                                  {StyleField::OrbPosition, "(90,45)"},
                                                  {StyleField::SkyTexture, "texture0.jpg"}}}));
        const QString archive = fixture->document().blocksetPath();
        const QString value = control.section('/', 0, 0);

        fixture->typeInto(control, keys);
        fixture->control("fldOrbHREF")->setFocus(); // a texture box counts its edit once the focus left it
        QCOMPARE(fixture->shownText(value), saved);
        QCOMPARE(fixture->caption(), QString("Cubrix - Round.bset*"));
        fixture->action("btnSave")->trigger();
        QCOMPARE(fixture->panel("stbProcess"), QString("Blockset and update file saved."));
        QCOMPARE(fixture->caption(), QString("Cubrix - Round.bset"));
        QVERIFY(fixture->prompts.messages.isEmpty());

        // A fresh window finds the value where it was typed, and the others as they were.
        fixture->window.reset();
        fixture->open().openBlocksetFile(archive);
        QVERIFY(fixture->document().blocksetOpen());
        QCOMPARE(fixture->shownText(value), saved);
        QVERIFY(!fixture->document().isChanged());
        QCOMPARE(fixture->shownText("fldBlocksetName"), QString("Round"));
        QCOMPARE(fixture->list("BlockList")->topLevelItem(1)->text(2), symbolAlphabet().mid(1, 1));
        if (value != "rgbSky")
            QCOMPARE(fixture->shownText("rgbSky"), QString("(10,20,30)"));
    }

    void newBlockset_data()
    {
        QTest::addColumn<bool>("syncBlockset");
        QTest::addColumn<NewBlocksetChoice>("choice"); // name, version, strict prefix, sync double, prefix
        QTest::addColumn<QString>("shown");            // caption, stbVersion and stbProcess
        QTest::addColumn<bool>("syncDoubleBoxChecked");
        QTest::newRow("named, file name kept apart")
            << false << NewBlocksetChoice{"Keep", "2.0", true, true, 3}
            << "Cubrix - Untitled | 2.0 | Strict Prefix & Sync Double Mode activated." << true;
        QTest::newRow("named after the blockset")
            << true << NewBlocksetChoice{"Keep", "", true, false, 0}
            << "Cubrix - Keep | No Version | Strict Prefix Mode activated." << false;
        QTest::newRow("no name") << true << NewBlocksetChoice{"", "1.0", false, false, 0}
                                 << "Cubrix - Untitled | 1.0 | " << false;
        // Sync double cannot be chosen without strict prefix.
        QTest::newRow("sync double alone") << true << NewBlocksetChoice{"Solo", "0.1", false, true, 0}
                                           << "Cubrix - Solo | 0.1 | " << false;
    }

    void newBlockset()
    {
        QFETCH(bool, syncBlockset);
        QFETCH(NewBlocksetChoice, choice);
        fixture->window->settings().setBoolSetting("syncBlockset", syncBlockset);
        fixture->prompts.newAnswers << choice;
        fixture->action("mnuNew")->trigger();

        QVERIFY(fixture->document().blocksetUntitled());
        QTEST(QStringList({fixture->caption(), fixture->panel("stbVersion"), fixture->panel("stbProcess")}).join(" | "),
              "shown");
        QCOMPARE(fixture->shownText("fldBlocksetName") + '/' + fixture->shownText("fldVersion"),
                 choice.name + '/' + choice.version);
        QCOMPARE(fixture->control("cbxStrictPrefix")->property("checked").toBool(), choice.strictPrefix);
        QTEST(fixture->control("cbxSyncDouble")->property("checked").toBool(), "syncDoubleBoxChecked");
        QCOMPARE(fixture->control("cbxSyncDouble")->isEnabled(), choice.strictPrefix);
        QCOMPARE(fixture->control("lstStrictPrefix")->isEnabled(), choice.strictPrefix);
        QCOMPARE(fixture->shownText("lstStrictPrefix"), prefixAlphabet().mid(choice.prefixIndex, 1));
        QVERIFY(!fixture->enabled("btnSave")); // a new blockset is unchanged
    }

    void saveUntitledAsksForName_data()
    {
        QTest::addColumn<QString>("command");
        QTest::addColumn<bool>("cancel");
        QTest::newRow("toolbar") << "btnSave" << false;
        QTest::newRow("menu") << "mnuSave" << false;
        QTest::newRow("menu, dialog cancelled") << "mnuSave" << true;
    }

    void saveUntitledAsksForName()
    {
        QFETCH(QString, command);
        QFETCH(bool, cancel);
        fixture->prompts.newAnswers << NewBlocksetChoice{"Draft", "", false, false, 0};
        fixture->action("btnNew")->trigger();
        fixture->typeInto("fldAuthor", "Me");
        QCOMPARE(fixture->caption(), QString("Cubrix - Draft*"));

        const QString target = fixture->dir.filePath("Fresh.bset");
        fixture->prompts.fileAnswers << (cancel ? QString() : target);
        fixture->action(command)->trigger();
        QCOMPARE(fixture->prompts.fileRequests.size(), 1);
        QCOMPARE(describe(fixture->prompts.fileRequests.first()),
                 "save | Save Blockset As | " + kBlocksetFilter + " | bset | ");
        if (cancel) {
            QVERIFY(!QFileInfo::exists(target));
            QVERIFY(fixture->document().blocksetUntitled());
            QCOMPARE(fixture->caption(), QString("Cubrix - Draft*"));
            QCOMPARE(fixture->panel("stbProcess"), QString());
            return;
        }
        QCOMPARE(fixture->caption(), QString("Cubrix - Fresh.bset"));
        QCOMPARE(fixture->panel("stbProcess"), QString("Blockset and update file saved."));
        // syncBlockset is on: the blockset took its file's name.
        QCOMPARE(fixture->shownText("fldBlocksetName"), QString("Fresh"));
        const QString style = MainWindowFixture::fileIn(target, "Fresh.style");
        QVERIFY2(style.contains("name=\"Fresh\"") && style.contains("author=\"Me\""), qPrintable(style));
        QVERIFY(QFileInfo::exists(fixture->dir.filePath("Fresh.txt")));

        // The next Save writes to that file without asking.
        fixture->typeInto("fldAuthor", "2");
        fixture->action(command)->trigger();
        QCOMPARE(fixture->prompts.fileRequests.size(), 1);
        QVERIFY(MainWindowFixture::fileIn(target, "Fresh.style").contains("author=\"Me2\""));
    }

    void saveQuestion_data()
    {
        // A command on a changed blockset asks to save it first: each answer, and
        // what the command leaves on the window afterwards.
        QTest::addColumn<QString>("command");
        QTest::addColumn<PromptAnswer>("answer");
        QTest::addColumn<QString>("question");
        QTest::addColumn<QString>("caption");
        const auto question = [](const QString &text, const QString &title) {
            return MainWindowFixture::message(text, title, PromptButtons::YesNoCancel, PromptIcon::None);
        };
        const QString close = question(kChangedQuestion, "Close Blockset");
        QTest::newRow("close, Cancel") << "mnuClose" << PromptAnswer::Cancel << close << "Cubrix - Shut.bset*";
        QTest::newRow("close, No") << "mnuClose" << PromptAnswer::No << close << "Cubrix";
        QTest::newRow("close, Yes") << "mnuClose" << PromptAnswer::Yes << close << "Cubrix";
        QTest::newRow("open, No, file dialog cancelled") << "btnOpen" << PromptAnswer::No
                                                         << question(kCurrentChangedQuestion, "Open Blockset")
                                                         << "Cubrix - Shut.bset*";
        QTest::newRow("new, No") << "btnNew" << PromptAnswer::No << question(kCurrentChangedQuestion, "New Blockset")
                                 << "Cubrix - Fresh";
    }

    void saveQuestion()
    {
        QFETCH(QString, command);
        QFETCH(PromptAnswer, answer);
        QVERIFY(fixture->openBlockset({.name = "Shut", .blocks = 3, .textures = 1, .sounds = 1,
                                       .values = {{StyleField::SkyColor, "(1,2,3)"},
                                                  {StyleField::SkyTexture, "texture0.jpg"}}}));
        const QString archive = fixture->document().blocksetPath();
        const QByteArray before = MainWindowFixture::readFile(archive);
        fixture->typeInto("fldAuthor", "Me");
        fixture->prompts.answers << answer;
        if (command == "btnOpen")
            fixture->prompts.fileAnswers << QString();
        if (command == "btnNew")
            fixture->prompts.newAnswers << NewBlocksetChoice{"Fresh", "", false, false, 0};
        fixture->action(command)->trigger();

        QCOMPARE(fixture->prompts.messages.size(), 1);
        QTEST(fixture->message(0), "question");
        QTEST(fixture->caption(), "caption");
        // Only Yes writes the archive, with the edit in it.
        QCOMPARE(MainWindowFixture::readFile(archive) != before, answer == PromptAnswer::Yes);
        if (answer == PromptAnswer::Yes)
            QVERIFY(MainWindowFixture::fileIn(archive, "Shut.style").contains("author=\"Me\""));
        const QDir blocks(fixture->window->workingFolder().blocksFolder());
        if (fixture->caption().endsWith('*')) {
            // Nothing changed, and the status panel is cleared (not "Close Blockset...").
            QCOMPARE(fixture->panel("stbProcess"), QString());
            QCOMPARE(fixture->rows("BlockList"), 3);
            QCOMPARE(fixture->shownText("fldAuthor") + ' ' + fixture->shownText("rgbSky"), QString("Me (1,2,3)"));
            QVERIFY(fixture->enabled("btnSave"));
            QCOMPARE(blocks.entryList(QDir::Files).size(), 3);
            return;
        }
        // The old blockset is gone from the pages and from the working folder.
        verifyEmptyPages();
        QVERIFY(blocks.isEmpty());
        if (command == "mnuClose")
            verifyNoBlockset();
    }

    void brokenArchive_data()
    {
        QTest::addColumn<QString>("damage");
        QTest::newRow("not an archive") << "text";
        QTest::newRow("cut in half") << "truncated";
        QTest::newRow("missing file") << "missing";
        QTest::newRow("folder") << "folder";
    }

    void brokenArchive()
    {
        QFETCH(QString, damage);
        // A blockset is open and changed first: the failed open must not leave its
        // view, flags or files behind.
        const BlocksetRecipe before = {.name = "Before", .blocks = 2, .textures = 1};
        QVERIFY(fixture->openBlockset(before));
        fixture->typeInto("fldAuthor", "Me");

        const QString path = fixture->dir.filePath("Broken.bset");
        if (damage == "truncated") {
            const QByteArray good = MainWindowFixture::readFile(fixture->makeBlockset({.name = "Broken", .blocks = 2}));
            QVERIFY(MainWindowFixture::writeFile(path, good.left(good.size() / 2)));
        } else if (damage == "text") {
            QVERIFY(MainWindowFixture::writeFile(path, "<style version=\"1.0\">\r\nnot a zip archive\r\n"));
        } else if (damage == "folder") {
            QVERIFY(QDir().mkpath(path));
        }

        fixture->prompts.answers << PromptAnswer::No;
        fixture->prompts.fileAnswers << path;
        fixture->action("btnOpen")->trigger();
        QCOMPARE(fixture->prompts.messages.size(), 2);
        QCOMPARE(fixture->message(1), MainWindowFixture::message("Failed to open Blockset File.", "File Error",
                                                                 PromptButtons::Ok, PromptIcon::Critical));
        verifyNoBlockset();

        // The window is usable afterwards: a good archive opens as usual, unchanged.
        fixture->prompts.fileAnswers << fixture->makeBlockset(before);
        fixture->action("mnuOpen")->trigger();
        QCOMPARE(fixture->caption(), QString("Cubrix - Before.bset"));
        QCOMPARE(fixture->rows("BlockList"), 2);
    }

private:
    // Lists and value fields with nothing of a blockset in them.
    void verifyEmptyPages()
    {
        for (const char *name : {"BlockList", "TextureList", "SoundList"})
            QVERIFY2(fixture->rows(name) == 0, name);
        for (const char *name : {"fldVersion", "fldAuthor", "fldUpdate", "rgbSky", "lstSkyTexture"})
            QVERIFY2(fixture->shownText(name).isEmpty(), name);
        QCOMPARE(qobject_cast<QComboBox *>(fixture->control("lstSkyTexture"))->count(), 0);
    }

    // The window as it is with no blockset: empty pages, no name in the caption,
    // empty panels, and no command that needs a blockset.
    void verifyNoBlockset()
    {
        verifyEmptyPages();
        QVERIFY(!fixture->document().blocksetOpen());
        QCOMPARE(fixture->caption(), QString("Cubrix"));
        QVERIFY(fixture->shownText("fldBlocksetName").isEmpty());
        for (const char *name : {"stbBlocks", "stbTextures", "stbSounds", "stbVersion", "stbProcess"})
            QVERIFY2(fixture->panel(name).isEmpty(), name);
        for (const char *name : {"btnClose", "mnuSave", "btnSaveAs", "mnuAddItem", "btnAddBSP", "mnuRemapSymbols"})
            QVERIFY2(!fixture->enabled(name), name);
    }
};

QTEST_MAIN(TestDocumentCommandsGui)
#include "test_document_commands_gui.moc"
#include "moc_MainWindowFixture.cpp"
