// checkInterface as the user sees it on the real window: which toolbar buttons
// and menu entries are usable per tab and state, the caption, the status panels,
// result texts that vanish at the next refresh, the options dialog's effect on
// the update group, and the window's own item commands (preview, "Oops...").
// Leaves out: the rules' own unit tests (core) and unload (test_unload).

#include "MainWindowFixture.h"

#include "formats/ui/VersionTab.h"

#include <QApplication>
#include <QCheckBox>
#include <QGroupBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QTimer>
#include <QTreeWidget>

namespace {

// The commands checkInterface governs, toolbar and menu.
const QStringList kItemCommands = {"AddItem", "RemoveItem", "ReplaceItem", "EditItem", "PreviewItem"};

QStringList bothNames(const QString &command)
{
    return {"btn" + command, "mnu" + command};
}

} // namespace

class TestInterfaceStateGui : public QObject {
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

    void noBlockset();
    void fullBlocksetPerTab_data();
    void fullBlocksetPerTab();
    void emptyBlocksetOpensOnSettings();
    void alwaysEnabledCommands();
    void captionMarksChanges_data();
    void captionMarksChanges();
    void resultTextClearedAtNextRefresh();
    void optionsTurnUpdateGroupOff();
    void tabSwitchMovesFocus_data();
    void tabSwitchMovesFocus();
    void oopsCommands_data();
    void oopsCommands();
    void previewTexture();

private:
    QTabWidget *tabs() const { return fixture->window->findChild<QTabWidget *>("SSTab1"); }
    std::unique_ptr<MainWindowFixture> fixture;
};

void TestInterfaceStateGui::noBlockset()
{
    for (const QString &command : {"New", "Open"})
        for (const QString &name : bothNames(command))
            QVERIFY2(fixture->enabled(name), qPrintable(name));
    QStringList disabled = {"Close", "Save", "SaveAs", "AddBSP"};
    disabled += kItemCommands;
    for (const QString &command : disabled)
        for (const QString &name : bothNames(command))
            QVERIFY2(!fixture->enabled(name), qPrintable(name));
    QVERIFY(!fixture->enabled("mnuRemapSymbols"));
    QCOMPARE(fixture->window->windowTitle(), QString("Cubrix"));
}

void TestInterfaceStateGui::fullBlocksetPerTab_data()
{
    // 89 blocks: the block limit is reached, so Add is off on the Blocks tab only.
    QTest::addColumn<int>("tab");
    QTest::addColumn<bool>("add");
    QTest::addColumn<bool>("removePreview");
    QTest::addColumn<bool>("replaceEdit");
    QTest::newRow("blocks") << 0 << false << true << true;
    QTest::newRow("textures") << 1 << true << true << false;
    QTest::newRow("sounds") << 2 << true << true << false;
    QTest::newRow("settings") << 3 << false << false << false;
}

void TestInterfaceStateGui::fullBlocksetPerTab()
{
    QFETCH(int, tab);
    QFETCH(bool, add);
    QFETCH(bool, removePreview);
    QFETCH(bool, replaceEdit);

    BlocksetRecipe recipe;
    recipe.name = "Full";
    recipe.blocks = 89;
    recipe.textures = 2;
    recipe.sounds = 1;
    QVERIFY(fixture->openBlockset(recipe));
    QCOMPARE(fixture->window->windowTitle(), QString("Cubrix - Full.bset"));
    QCOMPARE(fixture->panel("stbBlocks"), QString("89 Blocks"));
    QCOMPARE(fixture->panel("stbTextures"), QString("2 Textures"));
    QCOMPARE(fixture->panel("stbSounds"), QString("1 Sound"));
    QCOMPARE(fixture->panel("stbVersion"), QString("1.0"));
    QCOMPARE(fixture->window->findChild<QTreeWidget *>("BlockList")->topLevelItemCount(), 89);

    tabs()->setCurrentIndex(tab);
    QCOMPARE(fixture->window->document().tab(), tab);
    for (const QString &name : bothNames("AddItem"))
        QCOMPARE(fixture->enabled(name), add);
    for (const QString &command : {"RemoveItem", "PreviewItem"})
        for (const QString &name : bothNames(command))
            QCOMPARE(fixture->enabled(name), removePreview);
    for (const QString &command : {"ReplaceItem", "EditItem"})
        for (const QString &name : bothNames(command))
            QCOMPARE(fixture->enabled(name), replaceEdit);
    // Independent of the tab with blocks present.
    QVERIFY(fixture->enabled("btnAddBSP"));
    QVERIFY(fixture->enabled("mnuAddBSP"));
    QVERIFY(fixture->enabled("mnuRemapSymbols"));
    QVERIFY(fixture->enabled("btnClose"));
    QVERIFY(fixture->enabled("mnuSaveAs"));
    QVERIFY(!fixture->enabled("btnSave"));
    QVERIFY(!fixture->enabled("mnuSave"));
}

void TestInterfaceStateGui::emptyBlocksetOpensOnSettings()
{
    BlocksetRecipe recipe;
    recipe.name = "Bare";
    QVERIFY(fixture->openBlockset(recipe));
    QCOMPARE(tabs()->currentIndex(), 3);
    QCOMPARE(fixture->panel("stbBlocks"), QString("No Blocks"));
    QCOMPARE(fixture->panel("stbTextures"), QString("No Textures"));
    QCOMPARE(fixture->panel("stbSounds"), QString("No Sounds"));
    for (const QString &command : kItemCommands)
        for (const QString &name : bothNames(command))
            QVERIFY2(!fixture->enabled(name), qPrintable(name));
    QVERIFY(!fixture->enabled("btnAddBSP"));
    QVERIFY(!fixture->enabled("mnuAddBSP"));
    QVERIFY(!fixture->enabled("mnuRemapSymbols"));

    // Textures only: it opens on the Textures tab, where Add is usable.
    BlocksetRecipe textures;
    textures.name = "Pictures";
    textures.textures = 1;
    QVERIFY(fixture->openBlockset(textures));
    QCOMPARE(tabs()->currentIndex(), 1);
    QVERIFY(fixture->enabled("btnAddItem"));
    QVERIFY(fixture->enabled("btnPreviewItem"));
    QVERIFY(!fixture->enabled("btnEditItem"));
}

void TestInterfaceStateGui::alwaysEnabledCommands()
{
    // Commands checkInterface never touches stay usable in every state.
    const QStringList always = {"btnManager", "mnuManager", "mnuOptions", "mnuAbout", "mnuExit"};
    for (const QString &name : always)
        QVERIFY2(fixture->enabled(name), qPrintable(name));
    BlocksetRecipe recipe;
    recipe.blocks = 3;
    QVERIFY(fixture->openBlockset(recipe));
    tabs()->setCurrentIndex(4);
    for (const QString &name : always)
        QVERIFY2(fixture->enabled(name), qPrintable(name));
}

void TestInterfaceStateGui::captionMarksChanges_data()
{
    QTest::addColumn<QString>("field");
    QTest::addColumn<bool>("blocksetChanged");
    QTest::addColumn<bool>("updateChanged");
    QTest::newRow("update comment only") << "fldUpdate" << false << true;
    QTest::newRow("blockset name") << "fldBlocksetName" << true << false;
    QTest::newRow("version") << "fldVersion" << true << false;
}

void TestInterfaceStateGui::captionMarksChanges()
{
    QFETCH(QString, field);
    QFETCH(bool, blocksetChanged);
    QFETCH(bool, updateChanged);

    BlocksetRecipe recipe;
    recipe.name = "Marked";
    recipe.blocks = 2;
    QVERIFY(fixture->openBlockset(recipe));
    QCOMPARE(fixture->window->windowTitle(), QString("Cubrix - Marked.bset"));
    QVERIFY(!fixture->enabled("btnSave"));

    tabs()->setCurrentIndex(4);
    QWidget *widget = fixture->window->findChild<QWidget *>(field);
    QVERIFY2(widget, qPrintable(field));
    widget->setFocus();
    QTest::keyClicks(widget, "7");

    QCOMPARE(fixture->window->windowTitle(), QString("Cubrix - Marked.bset*"));
    QVERIFY(fixture->enabled("btnSave"));
    QVERIFY(fixture->enabled("mnuSave"));
    QCOMPARE(fixture->window->document().blocksetChanged(), blocksetChanged);
    QCOMPARE(fixture->window->document().updateChanged(), updateChanged);
    if (field == "fldVersion")
        QCOMPARE(fixture->panel("stbVersion"), QString("1.07"));

    // Typing on keeps the cursor where the user types (the field is not rewritten).
    QTest::keyClicks(widget, "89");
    if (auto *line = qobject_cast<QLineEdit *>(widget))
        QVERIFY(line->text().endsWith("789"));
    else
        QVERIFY(qobject_cast<QPlainTextEdit *>(widget)->toPlainText().endsWith("789"));
}

void TestInterfaceStateGui::resultTextClearedAtNextRefresh()
{
    // The open's result text stays visible after the command ...
    fixture->window->settings().setBoolSetting("strictPrefix", true);
    fixture->window->settings().setBoolSetting("syncDouble", false);
    BlocksetRecipe recipe;
    recipe.blocks = 2;
    recipe.textures = 1;
    QVERIFY(fixture->openBlockset(recipe));
    const QString result = fixture->panel("stbProcess");
    QCOMPARE(result, fixture->window->document().symbolModeText());
    QVERIFY2(!result.isEmpty(), "an open with strict prefix reports its mode");

    // ... and is gone at the first later checkInterface (here: a tab switch).
    tabs()->setCurrentIndex(1);
    QCOMPARE(fixture->panel("stbProcess"), QString());
    QVERIFY(!fixture->window->document().processMessageShown());

    // A text that is no result (a progress text) is not cleared by a refresh.
    fixture->window->document().showProcess("Working...");
    tabs()->setCurrentIndex(0);
    QCOMPARE(fixture->panel("stbProcess"), QString("Working..."));
}

void TestInterfaceStateGui::optionsTurnUpdateGroupOff()
{
    BlocksetRecipe recipe;
    recipe.blocks = 1;
    QVERIFY(fixture->openBlockset(recipe));
    auto *group = fixture->window->findChild<QGroupBox *>("grpUpdate");
    auto *comment = fixture->window->findChild<QPlainTextEdit *>("fldUpdate");
    QVERIFY(group && comment);
    QVERIFY(group->isEnabled());

    bool sawDialog = false;
    QTimer::singleShot(0, this, [&sawDialog] {
        QWidget *dialog = QApplication::activeModalWidget();
        if (!dialog)
            return;
        auto *box = dialog->findChild<QCheckBox *>("cbxUpdateFile");
        auto *ok = dialog->findChild<QPushButton *>("cmdOK");
        if (!box || !ok) {
            dialog->close();
            return;
        }
        sawDialog = true;
        QVERIFY(box->isChecked());
        box->click();
        ok->click();
    });
    fixture->action("mnuOptions")->trigger();
    QVERIFY2(sawDialog, "the options dialog was shown with cbxUpdateFile and cmdOK");

    QVERIFY(!fixture->window->settings().getBoolSetting("updateFile"));
    QVERIFY(!group->isEnabled());
    QVERIFY(!comment->isEnabled());
    QVERIFY(!fixture->window->findChild<QWidget *>("lblUpdate")->isEnabled());
    QVERIFY(!fixture->window->findChild<QWidget *>("lblUpdateComment")->isEnabled());
    // The blockset itself is untouched by the options.
    QVERIFY(!fixture->window->document().isChanged());
}

void TestInterfaceStateGui::tabSwitchMovesFocus_data()
{
    QTest::addColumn<int>("tab");
    QTest::addColumn<QString>("focus");
    QTest::newRow("textures") << 1 << "TextureList";
    QTest::newRow("sounds") << 2 << "SoundList";
    QTest::newRow("settings") << 3 << "lstPlaceholderTexture";
    QTest::newRow("version") << 4 << "fldVersion";
    QTest::newRow("blocks") << 0 << "BlockList";
}

void TestInterfaceStateGui::tabSwitchMovesFocus()
{
    QFETCH(int, tab);
    QFETCH(QString, focus);
    BlocksetRecipe recipe;
    recipe.blocks = 1;
    recipe.textures = 1;
    recipe.sounds = 1;
    QVERIFY(fixture->openBlockset(recipe));
    fixture->window->show();
    QVERIFY(QTest::qWaitForWindowExposed(fixture->window.get()));
    if (tab == 0)
        tabs()->setCurrentIndex(4);
    tabs()->setCurrentIndex(tab);
    QWidget *focused = fixture->window->focusWidget();
    QVERIFY(focused);
    QCOMPARE(focused->objectName(), focus);
}

void TestInterfaceStateGui::oopsCommands_data()
{
    // Commands that answer "Yet not implemented in this version" on a tab, or stay silent.
    QTest::addColumn<int>("tab");
    QTest::addColumn<QString>("command");
    QTest::addColumn<bool>("oops");
    QTest::newRow("add bsp toolbar") << 0 << "btnAddBSP" << true;
    QTest::newRow("add bsp menu") << 1 << "mnuAddBSP" << true;
    QTest::newRow("preview block") << 0 << "btnPreviewItem" << true;
    QTest::newRow("edit block") << 0 << "mnuEditItem" << true;
    QTest::newRow("edit on textures") << 1 << "mnuEditItem" << false;
    QTest::newRow("edit on sounds") << 2 << "btnEditItem" << false;
    QTest::newRow("replace toolbar on textures") << 1 << "btnReplaceItem" << false;
    QTest::newRow("replace menu on textures") << 1 << "mnuReplaceItem" << true;
    QTest::newRow("replace toolbar on blocks") << 0 << "btnReplaceItem" << true;
    QTest::newRow("play sound") << 2 << "btnPreviewItem" << false;
}

void TestInterfaceStateGui::oopsCommands()
{
    QFETCH(int, tab);
    QFETCH(QString, command);
    QFETCH(bool, oops);
    BlocksetRecipe recipe;
    recipe.blocks = 2;
    recipe.textures = 1;
    recipe.sounds = 1;
    QVERIFY(fixture->openBlockset(recipe));
    tabs()->setCurrentIndex(tab);
    fixture->prompts.messages.clear();
    // Menu entries run even where the toolbar button would be disabled.
    QAction *action = fixture->action(command);
    QVERIFY(action);
    action->setEnabled(true);
    action->trigger();
    if (!oops) {
        QVERIFY2(fixture->prompts.messages.isEmpty(), qPrintable(fixture->prompts.messageTexts().join("; ")));
        return;
    }
    QCOMPARE(fixture->prompts.messages.size(), 1);
    const ScriptedPrompts::Message &m = fixture->prompts.messages.first();
    QCOMPARE(m.text, QString("Yet not implemented in this version"));
    QCOMPARE(m.title, QString("Oops..."));
    QCOMPARE(m.buttons, PromptButtons::Ok);
    QCOMPARE(m.icon, PromptIcon::None);
    // The command ended with checkInterface: the state is still that of the tab.
    QCOMPARE(fixture->enabled("btnEditItem"), tab == 0);
}

void TestInterfaceStateGui::previewTexture()
{
    BlocksetRecipe recipe;
    recipe.textures = 3; // 16x8, 17x8, 18x8 pixels
    QVERIFY(fixture->openBlockset(recipe));
    QCOMPARE(tabs()->currentIndex(), 1);
    auto *list = fixture->window->findChild<QTreeWidget *>("TextureList");
    auto *preview = fixture->window->findChild<QLabel *>("TexturePreview");
    QVERIFY(list && preview);
    QVERIFY(preview->isHidden());

    list->setCurrentItem(list->topLevelItem(2));
    fixture->action("btnPreviewItem")->trigger();
    QVERIFY(!preview->isHidden());
    QCOMPARE(fixture->panel("TextureName"), QString("texture2.jpg"));
    QCOMPARE(fixture->panel("TextureSize"), QString("18 x 8"));
    QCOMPARE(preview->pixmap().size(), QSize(18, 8));

    // A texture that is no picture leaves the preview as it was.
    MainWindowFixture::writeFile(fixture->window->workingFolder().texturesFolder() + "/texture0.jpg", "not a jpeg");
    list->setCurrentItem(list->topLevelItem(0));
    fixture->action("mnuPreviewItem")->trigger();
    QCOMPARE(fixture->panel("TextureName"), QString("texture2.jpg"));
    QCOMPARE(fixture->panel("TextureSize"), QString("18 x 8"));

    // Closing the blockset hides and empties the preview.
    fixture->action("btnClose")->trigger();
    QVERIFY(preview->isHidden());
    QCOMPARE(fixture->panel("TextureName"), QString());
    QCOMPARE(fixture->panel("TextureSize"), QString());
    QCOMPARE(list->topLevelItemCount(), 0);
    QCOMPARE(fixture->window->windowTitle(), QString("Cubrix"));
}

QTEST_MAIN(TestInterfaceStateGui)
#include "test_interface_state_gui.moc"
