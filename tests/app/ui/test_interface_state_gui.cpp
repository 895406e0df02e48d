// checkInterface as the user sees it on the real window: which toolbar buttons
// and menu entries are usable per tab and state, the caption and status panels,
// result texts that vanish at the next refresh, the options dialog's effect on
// the update group, the focus on a tab switch, and the window's own item
// commands (texture preview, "Oops...").
// Leaves out: the rules' own unit tests (core), edits marking the caption
// (test_settings_edits_gui) and unload (test_unload).

#include "MainWindowFixture.h"

#include <QApplication>
#include <QCheckBox>
#include <QPushButton>
#include <QTimer>

namespace {

const QStringList kCommands = {"New",     "Open",    "Close",       "Save",   "SaveAs",       "AddItem",
                               "RemoveItem", "ReplaceItem", "EditItem", "PreviewItem", "AddBSP", "RemapSymbols",
                               "Manager", "Options", "About",       "Exit"};

// The commands whose menu entry is usable, in the order of kCommands; a toolbar
// button that disagrees with its menu entry is listed as a fault.
QStringList usableCommands(const MainWindowFixture &fixture)
{
    QStringList usable;
    for (const QString &command : kCommands) {
        const bool on = fixture.enabled("mnu" + command);
        if (fixture.action("btn" + command) && fixture.enabled("btn" + command) != on)
            usable << "btn" + command + " differs from mnu" + command;
        if (on)
            usable << command;
    }
    return usable;
}

} // namespace

class TestInterfaceStateGui : public MainWindowTest {
    Q_OBJECT

private slots:
    void enabledCommands_data()
    {
        QTest::addColumn<int>("blocks"); // -1: no blockset open
        QTest::addColumn<int>("textures");
        QTest::addColumn<int>("sounds");
        QTest::addColumn<int>("tab");
        QTest::addColumn<bool>("switched"); // the test shows the tab; else opening chose it
        QTest::addColumn<QString>("status"); // caption and the four count panels
        QTest::addColumn<QString>("usable"); // in the order of kCommands; Manager, Options, About, Exit always
        const QString full = "Cubrix - Sample.bset | 89 Blocks | 2 Textures | 1 Sound | 1.0";
        const QString open = "New Open Close SaveAs", fileItems = " AddItem RemoveItem PreviewItem",
                      withBlocks = " AddBSP RemapSymbols";
        QTest::newRow("no blockset") << -1 << 0 << 0 << 0 << false << "Cubrix |  |  |  | " << "New Open";
        // 89 blocks: the block limit is reached, so Add is off on the Blocks tab only.
        QTest::newRow("89 blocks, Blocks") << 89 << 2 << 1 << 0 << true << full
                                           << open + " RemoveItem ReplaceItem EditItem PreviewItem" + withBlocks;
        QTest::newRow("89 blocks, Textures") << 89 << 2 << 1 << 1 << true << full << open + fileItems + withBlocks;
        QTest::newRow("89 blocks, Settings") << 89 << 2 << 1 << 3 << true << full << open + withBlocks;
        // No blocks: no Remap Symbols, no Add BSP Trees.
        QTest::newRow("textures only") << 0 << 1 << 0 << 1 << false
                                       << "Cubrix - Sample.bset | No Blocks | 1 Texture | No Sounds | 1.0"
                                       << open + fileItems;
        QTest::newRow("no items") << 0 << 0 << 0 << 3 << false
                                  << "Cubrix - Sample.bset | No Blocks | No Textures | No Sounds | 1.0" << open;
    }

    void enabledCommands()
    {
        QFETCH(int, blocks);
        QFETCH(int, textures);
        QFETCH(int, sounds);
        QFETCH(int, tab);
        QFETCH(bool, switched);
        QFETCH(QString, usable);
        if (blocks >= 0)
            QVERIFY(fixture->openBlockset({.blocks = blocks, .textures = textures, .sounds = sounds}));
        if (switched)
            fixture->tabs()->setCurrentIndex(tab);
        QCOMPARE(fixture->tabs()->currentIndex(), tab);
        QStringList shown = {fixture->caption()};
        for (const char *panel : {"stbBlocks", "stbTextures", "stbSounds", "stbVersion"})
            shown << fixture->panel(panel);
        QTEST(shown.join(" | "), "status");
        QCOMPARE(usableCommands(*fixture), (usable + " Manager Options About Exit").split(' '));
    }

    void optionsTurnUpdateGroupOff()
    {
        QVERIFY(fixture->openBlockset({.blocks = 1}));
        const QStringList group = {"grpUpdate", "fldUpdate", "lblUpdate", "lblUpdateComment"};
        for (const QString &name : group)
            QVERIFY2(fixture->control(name) && fixture->control(name)->isEnabled(), qPrintable(name));

        bool sawDialog = false;
        QTimer::singleShot(0, this, [&sawDialog] {
            QWidget *dialog = QApplication::activeModalWidget();
            auto *box = dialog ? dialog->findChild<QCheckBox *>("cbxUpdateFile") : nullptr;
            sawDialog = box && box->isChecked();
            if (sawDialog)
                box->click();
            if (auto *ok = dialog ? dialog->findChild<QPushButton *>("cmdOK") : nullptr)
                ok->click();
            else if (dialog)
                dialog->close();
        });
        fixture->action("mnuOptions")->trigger();
        QVERIFY2(sawDialog, "the options dialog was shown with cbxUpdateFile checked and cmdOK");

        for (const QString &name : group)
            QVERIFY2(!fixture->control(name)->isEnabled(), qPrintable(name));
        QVERIFY(!fixture->document().isChanged()); // the blockset itself is untouched
    }

    void tabSwitchMovesFocusAndClearsResult()
    {
        QVERIFY(fixture->show());
        fixture->window->settings().setBoolSetting("strictPrefix", true);
        fixture->window->settings().setBoolSetting("syncDouble", false);
        QVERIFY(fixture->openBlockset({.blocks = 1, .textures = 1, .sounds = 1}));
        // The open's result text stays visible after the command, and is gone at
        // the first later checkInterface: here the tab switch.
        QCOMPARE(fixture->panel("stbProcess"), QString("Strict Prefix Mode activated."));
        const QStringList focus = {"BlockList", "TextureList", "SoundList", "lstPlaceholderTexture", "fldVersion"};
        for (int tab : {1, 2, 3, 4, 0}) {
            fixture->tabs()->setCurrentIndex(tab);
            QCOMPARE(fixture->panel("stbProcess"), QString());
            QVERIFY(fixture->window->focusWidget());
            QCOMPARE(fixture->window->focusWidget()->objectName(), focus.at(tab));
        }
    }

    void oopsCommands_data()
    {
        // Commands that answer "Yet not implemented in this version" on a tab, or stay silent.
        QTest::addColumn<int>("tab");
        QTest::addColumn<QString>("command");
        QTest::addColumn<bool>("oops");
        QTest::newRow("add bsp menu") << 1 << "mnuAddBSP" << true;
        QTest::newRow("preview block") << 0 << "btnPreviewItem" << true;
        QTest::newRow("edit block") << 0 << "mnuEditItem" << true;
        QTest::newRow("edit on textures") << 1 << "mnuEditItem" << false;
        QTest::newRow("edit on sounds") << 2 << "btnEditItem" << false;
        QTest::newRow("replace toolbar on textures") << 1 << "btnReplaceItem" << false;
        QTest::newRow("replace menu on textures") << 1 << "mnuReplaceItem" << true;
        QTest::newRow("play sound") << 2 << "btnPreviewItem" << false;
    }

    void oopsCommands()
    {
        QFETCH(int, tab);
        QFETCH(QString, command);
        QFETCH(bool, oops);
        QVERIFY(fixture->openBlockset({.blocks = 2, .textures = 1, .sounds = 1}));
        fixture->tabs()->setCurrentIndex(tab);
        fixture->prompts.messages.clear();
        // Menu entries run even where the toolbar button would be disabled.
        fixture->action(command)->setEnabled(true);
        fixture->action(command)->trigger();
        QCOMPARE(fixture->prompts.messages.size(), oops ? 1 : 0);
        if (oops)
            QCOMPARE(fixture->message(0), MainWindowFixture::message("Yet not implemented in this version", "Oops...",
                                                                     PromptButtons::Ok, PromptIcon::None));
        // The command ended with checkInterface: the state is that of the tab again.
        QCOMPARE(fixture->enabled("btnReplaceItem"), tab == 0);
    }

    void previewTexture()
    {
        QVERIFY(fixture->openBlockset({.textures = 3})); // 16x8, 17x8, 18x8 pixels
        QTreeWidget *list = fixture->list("TextureList");
        auto *preview = fixture->window->findChild<QLabel *>("TexturePreview");
        QVERIFY(preview && preview->isHidden());

        list->setCurrentItem(list->topLevelItem(2));
        fixture->action("btnPreviewItem")->trigger();
        QVERIFY(!preview->isHidden());
        QCOMPARE(preview->pixmap().size(), QSize(18, 8));
        QCOMPARE(fixture->panel("TextureName") + ", " + fixture->panel("TextureSize"), QString("texture2.jpg, 18 x 8"));

        // Closing the blockset hides and empties the preview.
        fixture->action("btnClose")->trigger();
        QVERIFY(preview->isHidden());
        QCOMPARE(fixture->panel("TextureName") + fixture->panel("TextureSize"), QString());
    }
};

QTEST_MAIN(TestInterfaceStateGui)
#include "test_interface_state_gui.moc"
#include "moc_MainWindowFixture.cpp"
