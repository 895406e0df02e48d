// checkInterface as the user sees it on the real window: result texts that
// vanish at the next refresh, the options dialog's effect on the update group,
// the focus on a tab switch, and the window's own item commands (texture
// preview, "Oops..."). Which commands are usable is decided in the core.
// Leaves out: the rules' own unit tests (core), edits marking the caption
// (test_settings_edits_gui) and unload (test_unload).

#include "MainWindowFixture.h"

#include <QApplication>
#include <QCheckBox>
#include <QPushButton>
#include <QTimer>

class TestInterfaceStateGui : public MainWindowTest {
    Q_OBJECT

private slots:
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
        QTest::addColumn<bool>("skipEdit");
        QTest::newRow("preview block") << 0 << "btnPreviewItem" << true << false;
        QTest::newRow("edit block, skipEdit on") << 0 << "mnuEditItem" << true << true;
        QTest::newRow("edit block: the symbol dialog") << 0 << "mnuEditItem" << false << false;
        QTest::newRow("edit on sounds") << 2 << "btnEditItem" << false << false;
    }

    void oopsCommands()
    {
        QFETCH(int, tab);
        QFETCH(QString, command);
        QFETCH(bool, oops);
        QFETCH(bool, skipEdit);
        fixture->window->settings().setBoolSetting("skipEdit", skipEdit);
        QVERIFY(fixture->openBlockset({.blocks = 2, .textures = 1, .sounds = 1}));
        fixture->prompts.symbolAnswers << ScriptedPrompts::SymbolScript{ScriptedPrompts::SymbolScript::Cancel};
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
#include "moc_MainWindowFixture.cpp"
#include "test_interface_state_gui.moc"
