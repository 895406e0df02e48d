// The real main window as the user sees it. Document commands from the toolbar,
// the menu and the command line: Open, and the start decision for a command
// line (chooseStart). checkInterface on the window: result texts that vanish at
// the next refresh, the options dialog's effect on the update group, the focus
// on a tab switch, the window's own item commands (texture preview, "Oops..."),
// and the toolbar icons. A label edited in the list renames the item (or
// springs back); the keys, Undo and the place kept in a long list. Closing: every way out asks the
// save question for a changed blockset, and the working folder is gone after the
// window closed; a dropped archive opens. For the web: the saved size in
// stbSize, the Packed column and the marks on sounds Rover cannot play, sorting
// that keeps each row's item, and the check panel leading to an item. Edits on
// the Settings and Version pages mark the blockset (caption "*", Save usable)
// and reach the document; the update comment marks only the update file.
// Leaves out: the rules themselves and which commands are usable (the document,
// interface-state, symbol and dropped-files tests), the answers' effects, the
// sizes and findings themselves (test_document_save).

#include "MainWindowFixture.h"

#include "app/BlocksetSize.h"
#include "app/ui/ItemListPage.h"
#include "app/ui/MainSub.h"
#include "app/ui/MainWindowIcons.h"

#include <QApplication>
#include <QCheckBox>
#include <QDockWidget>
#include <QFileInfo>
#include <QHeaderView>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTimer>

namespace {

// Writes an update file beside the archive, as a save would.
void writeUpdateFile(const QString &archive, const QByteArray &comment)
{
    const QFileInfo info(archive);
    writeFile(info.absolutePath() + '/' + info.completeBaseName() + ".txt",
              "<version id=\"1.0\" size=\"1\">\r\n" + comment + "\r\n</version>\r\n");
}

} // namespace

class TestMainWindowGui : public MainWindowTest {
    Q_OBJECT

    // Edits the label of the block list's row `row` as a user does: F2, type, Return.
    void editLabel(int row, const QString &text)
    {
        QTreeWidget *list = fixture->list("BlockList");
        list->setFocus();
        list->setCurrentItem(list->topLevelItem(row));
        QTest::keyClick(list, Qt::Key_F2);
        auto *editor = list->findChild<QLineEdit *>();
        QVERIFY(editor);
        editor->selectAll();
        QTest::keyClicks(editor, text);
        QTest::keyClick(editor, Qt::Key_Return);
        QCoreApplication::processEvents(); // the delegate commits the edit from the event loop
    }

private slots:
    void startChoice_data()
    {
        // file: relative to the start folder, "" for none; lookups: times Rover's registration was asked for.
        addColumns<QStringList, bool, bool, QString, int>("arguments", "roverKnown", "manager", "file", "lookups");
        addRow("/c without Rover", QStringList{"/c"}, false, false, "", 1);
        addRow("/c with Rover", QStringList{"/c"}, true, true, "", 1);
        addRow("nothing", QStringList{}, true, false, "", 0);
        addRow("relative file", QStringList{"Castle.bset"}, true, false, "Castle.bset", 0);
        addRow("two files", QStringList{"Castle.bset", "Tower.bset"}, true, false, "", 0);
        addRow("switch and file", QStringList{"/c", "Castle.bset"}, true, false, "", 0);
        addRow("capital switch", QStringList{"/C"}, true, false, "", 0);
    }

    void startChoice()
    {
        QFETCH(QStringList, arguments);
        QFETCH(bool, roverKnown);
        QFETCH(QString, file);
        const QString start = fixture->dir.filePath("worlds");
        int asked = 0;
        const StartChoice choice = chooseStart(arguments, start, [&] {
            ++asked;
            return roverKnown;
        });
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
        addRow("toolbar", "btnOpen");
        addRow("command line", "");
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
            const ScriptedPrompts::FileRequest &asked = fixture->prompts.fileRequests.first();
            QCOMPARE(QStringList({asked.kind, asked.title, asked.filter, asked.folder}).join(" | "),
                     "open | Open Blockset | Blocksets (*.bset),*.bset | /nowhere");
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
        addColumns<int, QString, bool, bool>("tab", "command", "oops", "skipEdit");
        addRow("edit block, skipEdit on", 0, "mnuEditItem", true, true);
        addRow("edit block: the symbol dialog", 0, "mnuEditItem", false, false);
        addRow("edit on sounds", 2, "btnEditItem", false, false);
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
        QVERIFY(preview);

        list->setCurrentItem(list->topLevelItem(2)); // the preview follows the current row
        QVERIFY(!preview->isHidden());
        QCOMPARE(preview->pixmap().size(), QSize(18, 8));
        QVERIFY((fixture->panel("TextureName") + ", " + fixture->panel("TextureSize"))
                    .startsWith("texture2.jpg, 18 x 8 pixels, "));

        // A file that is no picture says so instead of showing the last picture.
        QFile broken(fixture->document().folder().texturesFolder() + "/texture1.jpg");
        QVERIFY(broken.open(QIODevice::WriteOnly) && broken.write("\xff\xd8 not a picture") > 0);
        broken.close();
        list->setCurrentItem(list->topLevelItem(1));
        QVERIFY(preview->text().startsWith("Cannot show this picture: "));
        QCOMPARE(fixture->panel("TextureName"), QString("texture1.jpg"));

        // Closing the blockset hides and empties the preview.
        fixture->action("btnClose")->trigger();
        QVERIFY(preview->isHidden());
        QCOMPARE(fixture->panel("TextureName") + fixture->panel("TextureSize"), QString());
    }

    // Every toolbar command and the program itself have an icon that draws at a
    // high-density size: a missing or unlinked SVG leaves a blank toolbar button.
    void iconsDrawSharp_data()
    {
        QTest::addColumn<QString>("button");
        for (const char *button :
             {"btnNew", "btnOpen", "btnClose", "btnSave", "btnSaveAs", "btnAddItem", "btnRemoveItem", "btnReplaceItem",
              "btnEditItem", "btnPreviewItem", "btnAddBSP", "btnManager", ""})
            addRow(*button ? button : "program", QString::fromLatin1(button));
    }

    void iconsDrawSharp()
    {
        QFETCH(QString, button);
        const QIcon icon = button.isEmpty() ? programIcon() : commandIcon(button);
        // A missing or unreadable SVG gives no picture, a bitmap icon one of its own smaller size.
        QCOMPARE(icon.pixmap(QSize(64, 64)).size(), QSize(64, 64));
    }

    void labelEditRenames_data()
    {
        addColumns<QString, QString, QString>("typed", "label", "message");
        addRow("renamed", "keep.block", "keep.block", "Are you sure to rename this block?");
        addRow("extension refused", "keep.gif", "block001.block", "You are not allowed to change the file extension!");
    }

    void labelEditRenames()
    {
        QFETCH(QString, typed);
        QFETCH(QString, label);
        QVERIFY(fixture->openBlockset({.name = "Labels", .blocks = 2}) && fixture->show());
        fixture->prompts.answers = {PromptAnswer::Yes};
        editLabel(1, typed);
        QCOMPARE(fixture->list("BlockList")->topLevelItem(1)->text(0), label);
        QCOMPARE(fixture->document().blocks()[1].file, label);
        QCOMPARE(fixture->caption().endsWith('*'), label == typed);
        QTEST(fixture->prompts.messageTexts().join('|'), "message");
        fixture->prompts.answers.clear();
    }

    // The keys of a list, Undo in the Edit menu and the place kept in a long list.
    void keysUndoAndPlace()
    {
        QVERIFY(fixture->openBlockset({.name = "Keys", .blocks = 40}) && fixture->show());
        QTreeWidget *list = fixture->list("BlockList");
        list->setFocus();
        fixture->list("BlockList")->setCurrentItem(list->topLevelItem(30));
        const int scroll = list->verticalScrollBar()->value();
        fixture->prompts.answers = {PromptAnswer::Yes};
        QTest::keyClick(list, Qt::Key_Delete);
        QCOMPARE(fixture->rows("BlockList"), 39);
        QCOMPARE(fixture->action("mnuUndo")->text(), QString("&Undo Remove Block"));
        QTest::keyClick(list, Qt::Key_Z, Qt::ControlModifier);
        QCOMPARE(fixture->rows("BlockList"), 40);
        QVERIFY(!fixture->caption().endsWith('*'));
        // The list keeps its row, scroll position and the keyboard focus.
        QCOMPARE(list->currentItem(), list->topLevelItem(30));
        QCOMPARE(list->verticalScrollBar()->value(), scroll);
        QVERIFY(list->hasFocus());
        QTest::keyClick(list, Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(fixture->rows("BlockList"), 39);

        // A click inside a multi-selection selects the row and renames nothing.
        list->topLevelItem(5)->setSelected(true);
        list->scrollToItem(list->topLevelItem(5));
        const QRect cell = list->visualItemRect(list->topLevelItem(5));
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, cell.center());
        QTest::qWait(QApplication::doubleClickInterval() + 50);
        QCOMPARE(QApplication::focusWidget(), list); // no label editor took it
        QCOMPARE(list->selectedItems().size(), 1);
    }

    // The window comes back with its size, column widths and sort order.
    void windowComesBack()
    {
        QVERIFY(fixture->show());
        fixture->window->resize(900, 640);
        QHeaderView *header = fixture->list("BlockList")->header();
        header->resizeSection(1, 123);
        QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, QPoint(header->sectionViewportPosition(2) + 5, 5));
        QVERIFY(fixture->window->close());
        fixture->open();
        QVERIFY(fixture->show());
        header = fixture->list("BlockList")->header();
        QCOMPARE(fixture->window->size(), QSize(900, 640));
        QCOMPARE(header->sectionSize(1), 123);
        QVERIFY(header->isSortIndicatorShown() && header->sortIndicatorSection() == 2);
    }

    // Which blockset counts as changed is the document's rule; here: every way out
    // of the window asks, and a texture box's pending edit counts.
    void asksOnlyForChangedBlockset_data()
    {
        // edit: the control typed into; leave: "window" (its close button) or a
        // command; title: of the save question.
        addColumns<QString, QString, QString>("edit", "leave", "title");
        addRow("style value edited", "fldSynopsis", "window", "Blockset Changed");
        addRow("only update comment, Exit", "fldUpdate", "mnuExit", "Blockset Changed");
        // A texture box reports its edit when it loses the focus; neither closing the
        // window nor a toolbar button moves the focus: the edit must count all the same.
        addRow("texture typed, box focused", "lstPlaceholderTexture", "window", "Blockset Changed");
        addRow("texture typed, toolbar Close", "lstPlaceholderTexture", "btnClose", "Close Blockset");
    }

    void asksOnlyForChangedBlockset()
    {
        QFETCH(QString, edit);
        QFETCH(QString, leave);
        QFETCH(QString, title);
        QVERIFY(fixture->show());
        QVERIFY(fixture->openBlockset({.name = "Tower", .blocks = 2, .textures = 1}));
        QVERIFY(fixture->typeInto(edit, edit.startsWith("lst") ? "texture0.jpg" : "x")->hasFocus());
        fixture->prompts.answers << PromptAnswer::No;

        if (leave == "window")
            QVERIFY(fixture->window->close());
        else
            fixture->action(leave)->trigger();

        QCOMPARE(fixture->prompts.messages.size(), 1);
        const bool unload = title == "Blockset Changed";
        QCOMPARE(fixture->message(0),
                 MainWindowFixture::message("The blockset has been changed. Do you want to save it first?", title,
                                            PromptButtons::YesNoCancel, PromptIcon::None));
        // No was answered: the window closed all the same and took its folder with it.
        if (unload) {
            QVERIFY(!fixture->window->isVisible());
            QVERIFY(!QFileInfo::exists(fixture->window->workingFolder().workingFolder()));
        }
    }

    void droppedArchiveIsOpened()
    {
        const QString first = fixture->makeBlockset({.name = "First", .blocks = 4});
        const QString second = fixture->makeBlockset({.name = "Second", .blocks = 2});
        const QString block = fixture->dir.filePath("loose.block");
        writeFile(block, "<BLOCK NAME=\"loose\">");

        // The first archive of the drop is opened; the block and the second archive are ignored.
        QVERIFY(fixture->drop({block, first, second}));
        QCOMPARE(fixture->caption(), QString("Cubrix - First.bset"));
        QCOMPARE(fixture->panel("stbBlocks"), QString("4 Blocks"));

        // Extensions ignore case, as on Windows: a capital blockset opens too.
        const QString shouting = fixture->dir.filePath("LOUD.BSET");
        QVERIFY(QFile::copy(second, shouting));
        fixture->prompts.answers << PromptAnswer::No; // its style file is named after "Second"
        QVERIFY(fixture->drop({shouting}));
        QCOMPARE(fixture->caption(), QString("Cubrix - LOUD.BSET"));
    }

    void sizeAndPackedColumn()
    {
        QVERIFY(fixture->openBlockset({.name = "Web", .blocks = 2, .textures = 3, .sounds = 2}));
        QTRY_VERIFY(fixture->panel("stbSize").endsWith("of 300 KB") && !fixture->panel("stbSize").startsWith('~'));
        const QString shown = fixture->panel("stbSize");
        fixture->document().setBlocksetChanged();
        QVERIFY(fixture->document().saveBlockset());
        QCOMPARE(shown, BlocksetSize::shareOfLimit(QFileInfo(fixture->document().blocksetPath()).size()));
        QVERIFY(fixture->window->findChild<QLabel *>("stbSize")->toolTip().contains("307,200"));

        // The sounds (44 zero bytes) are no WAV files: marked; the JPEG textures are not.
        QTreeWidget *sounds = fixture->list("SoundList");
        QTreeWidget *textures = fixture->list("TextureList");
        QTRY_COMPARE(sounds->topLevelItem(0)->toolTip(0),
                     "Rover cannot play this sound: not a WAV file (no RIFF WAVE header)");
        QCOMPARE(textures->topLevelItem(0)->toolTip(0), QString());
        QCOMPARE(textures->headerItem()->text(2), "Packed");
        QVERIFY(textures->topLevelItem(0)->text(2).trimmed().toInt() > 0);

        // Sorted by name, last first: the current row is still the item's own.
        auto *page = qobject_cast<ItemListPage *>(textures->parentWidget());
        QVERIFY(page);
        emit textures->header()->sectionClicked(0);
        emit textures->header()->sectionClicked(0);
        page->selectRow(0);
        QCOMPARE(page->currentRow(), 0);
        QCOMPARE(page->selectedFile(), "texture0.jpg");
        QCOMPARE(textures->topLevelItem(2)->text(0), "texture0.jpg");
    }

    void checkPanel()
    {
        QVERIFY(fixture->show());
        QVERIFY(fixture->openBlockset({.name = "Web", .blocks = 1, .sounds = 2}));
        fixture->action("mnuCheckBlockset")->trigger();
        auto *panel = fixture->window->findChild<QDockWidget *>("CheckPanel");
        QVERIFY(panel && panel->isVisible());
        QTreeWidget *findings = fixture->window->findChild<QTreeWidget *>("CheckFindings");
        QTreeWidgetItem *sound = nullptr;
        for (int i = 0; i < findings->topLevelItemCount(); ++i) {
            if (findings->topLevelItem(i)->text(1) == "sounds/sound1.wav")
                sound = findings->topLevelItem(i);
        }
        QVERIFY(sound);
        QCOMPARE(sound->text(0), "Warning");
        emit findings->itemDoubleClicked(sound, 0);
        QCOMPARE(fixture->tabs()->currentIndex(), int(BlocksetDocument::TabSounds));
        QCOMPARE(fixture->list("SoundList")->currentItem()->text(0), "sound1.wav");

        // A save refreshes the panel: the removed sound's finding goes.
        fixture->prompts.answers << PromptAnswer::Yes;
        fixture->action("mnuRemoveItem")->trigger();
        fixture->action("mnuSave")->trigger();
        QVERIFY(findings->findItems("sounds/sound1.wav", Qt::MatchExactly, 1).isEmpty());
        fixture->prompts.unexpected.clear(); // the removal's question is not this test's matter
    }

    // Edits on the Settings and Version pages, typed as a user types them.
    // A brightness the style file writes with a leading zero: the control must show
    // what the document took from it, or a later save writes something the user never saw.
    void openedValueMatchesTheDocument()
    {
        QVERIFY(fixture->openBlockset({.blocks = 1, .values = {{StyleField::OrbBrightness, "07%"}}}));
        QCOMPARE(fixture->document().style().orbBrightness, QString("7%"));
        QCOMPARE(fixture->shownText("prcOrb"), QString("7%"));
        QVERIFY(!fixture->document().isChanged());
    }

    void editMarksBlockset_data()
    {
        // control: where the keys go; its value control is the part before "/".
        addColumns<QString, QString, StyleField, QString>("control", "keys", "field", "expected");
        // The version goes to stbVersion too; typed away entirely, "No Version" stands there.
        addRow("version emptied", "fldVersion", "\b\b\b", StyleField::Version, "");
        addRow("sky colour", "rgbSky/txtG", "5", StyleField::SkyColor, "(10,205,30)");
    }

    void editMarksBlockset()
    {
        QFETCH(QString, control);
        QFETCH(QString, keys);
        QFETCH(StyleField, field);
        QFETCH(QString, expected);
        openStyledBlockset();
        QVERIFY2(fixture->typeInto(control, keys), qPrintable(control));
        verifyMarked(true);
        QVERIFY(!fixture->document().updateChanged());
        // The control shows the edited value and the document holds the same text.
        QCOMPARE(fixture->shownText(control.section('/', 0, 0)), expected);
        QCOMPARE(styleValue(fixture->document().style(), field), expected);
        if (field == StyleField::Version)
            QCOMPARE(fixture->panel("stbVersion"), expected.isEmpty() ? QString("No Version") : expected);
    }

    // A comment typed over two lines marks only the update file, yet the caption
    // and Save show it; Save writes the update file alone, with the comment's
    // line break as CR LF.
    void updateCommentSaveWritesOnlyUpdateFile()
    {
        openStyledBlockset();
        const QByteArray before = readBytes(fixture->document().blocksetPath());
        fixture->typeInto("fldUpdate", "one\ntwo");
        QVERIFY(fixture->document().updateChanged() && !fixture->document().blocksetChanged());
        QCOMPARE(fixture->caption(), QString("Cubrix - Styled.bset*"));
        QVERIFY(fixture->enabled("btnSave") && fixture->enabled("mnuSave"));

        fixture->action("btnSave")->trigger();
        QCOMPARE(readBytes(fixture->document().blocksetPath()), before);
        QVERIFY(readBytes(fixture->dir.filePath("Styled.txt")).contains("\">\r\none\r\ntwo\r\n</version>"));
        verifyMarked(false);
        QVERIFY(!fixture->document().updateChanged());
    }

private:
    // An open, unchanged blockset whose style sets every value control: showing
    // them must not count as an edit.
    void openStyledBlockset()
    {
        QVERIFY(fixture->openBlockset({.name = "Styled",
                                       .blocks = 2,
                                       .textures = 3,
                                       .values = {{StyleField::SkyTexture, "texture0.jpg"},
                                                  {StyleField::SkyColor, "(10,20,30)"},
                                                  {StyleField::SkyBrightness, "50%"},
                                                  {StyleField::GroundColor, "(1,2,3)"},
                                                  {StyleField::OrbColor, "(200,201,202)"},
                                                  {StyleField::OrbBrightness, "10%"},
                                                  {StyleField::OrbPosition, "(90,-4)"},
                                                  {StyleField::OrbHref, "index.3dml"}}}));
        verifyMarked(false);
    }

    // The caption, Save and the flag of the document show whether the style was edited.
    void verifyMarked(bool marked)
    {
        QCOMPARE(fixture->caption(), QString(marked ? "Cubrix - Styled.bset*" : "Cubrix - Styled.bset"));
        QCOMPARE(fixture->enabled("btnSave"), marked);
        QCOMPARE(fixture->enabled("mnuSave"), marked);
        QCOMPARE(fixture->document().blocksetChanged(), marked);
    }
};

QTEST_MAIN(TestMainWindowGui)
#include "moc_MainWindowFixture.cpp"
#include "test_main_window_gui.moc"
