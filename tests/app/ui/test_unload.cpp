// Closing the editor: every way out asks the save question for a changed
// blockset, and the working folder is gone after the window closed. Also a
// dropped archive.
// Leaves out: the save itself and the answers' effects (document tests), the
// items a drop adds (tests/app/test_dropped_files.cpp).

#include "MainWindowFixture.h"

#include <QFileInfo>

class TestUnload : public MainWindowTest {
    Q_OBJECT

private slots:
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
                                            unload ? PromptButtons::YesNo : PromptButtons::YesNoCancel,
                                            unload ? PromptIcon::Question : PromptIcon::None));
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

        // A drag of files of no known type (a capital extension is none) is refused.
        const QString shouting = fixture->dir.filePath("LOUD.BSET");
        QVERIFY(QFile::copy(second, shouting));
        QVERIFY(!fixture->drop({shouting, fixture->dir.filePath("photo.JPG")}));
        QCOMPARE(fixture->caption(), QString("Cubrix - First.bset"));
    }
};

QTEST_MAIN(TestUnload)
#include "moc_MainWindowFixture.cpp"
#include "test_unload.moc"
