// Closing the editor: every way out asks the save question for a changed
// blockset, Yes saves it, and the working folder is gone after the window
// closed. Also dropped files.
// Leaves out: the save itself (document tests).

#include "MainWindowFixture.h"

#include <QFileInfo>

class TestUnload : public MainWindowTest {
    Q_OBJECT

private slots:
    // Which blockset counts as changed is the document's rule; here: every way out
    // of the window asks, and a texture box's pending edit counts.
    void asksOnlyForChangedBlockset_data()
    {
        QTest::addColumn<QString>("edit");  // control typed into
        QTest::addColumn<QString>("leave"); // "window": its close button; or a command
        QTest::addColumn<QString>("title"); // of the save question
        QTest::newRow("style value edited") << "fldSynopsis"
                                            << "window"
                                            << "Blockset Changed";
        QTest::newRow("only update comment, Exit") << "fldUpdate"
                                                   << "mnuExit"
                                                   << "Blockset Changed";
        // A texture box reports its edit when it loses the focus; neither closing the
        // window nor a toolbar button moves the focus: the edit must count all the same.
        QTest::newRow("texture typed, box focused") << "lstPlaceholderTexture"
                                                    << "window"
                                                    << "Blockset Changed";
        QTest::newRow("texture typed, toolbar Close") << "lstPlaceholderTexture"
                                                      << "btnClose"
                                                      << "Close Blockset";
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

    void yesSavesBeforeClosing()
    {
        QVERIFY(fixture->openBlockset({.name = "Keep", .blocks = 1}));
        const QString archive = fixture->document().blocksetPath();
        fixture->typeInto("fldCopyright", "(c) 2026 Quillmoor");
        fixture->prompts.answers << PromptAnswer::Yes;
        QVERIFY(fixture->window->close());
        QCOMPARE(fixture->prompts.messages.size(), 1);
        // The update file is written beside the archive (updateFile is on by default).
        QVERIFY(QFileInfo::exists(fixture->dir.filePath("Keep.txt")));

        // The saved archive holds the edit.
        QVERIFY(MainWindowFixture::fileIn(archive, "Keep.style").contains("copyright=\"(c) 2026 Quillmoor\""));
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

    void dropOfFiveBlocksOntoEightySeven()
    {
        QVERIFY(fixture->openBlockset({.name = "Full", .blocks = 87}));
        QStringList blocks;
        for (int i = 0; i < 5; ++i) {
            blocks << fixture->dir.filePath(QString("extra%1.block").arg(i));
            writeFile(blocks.last(), QString("<BLOCK NAME=\"extra%1\">").arg(i).toLatin1());
        }
        for (int i = 0; i < 2; ++i)
            fixture->prompts.symbolAnswers << ScriptedPrompts::SymbolScript{};
        QVERIFY(fixture->drop(blocks));
        QCOMPARE(fixture->rows("BlockList"), 89);
        QCOMPARE(fixture->panel("stbBlocks"), QString("89 Blocks"));
        QCOMPARE(fixture->prompts.messageTexts(), QStringList{"The maximum of 89 block has been reached."});
        QCOMPARE(fixture->caption(), QString("Cubrix - Full.bset*"));
    }
};

QTEST_MAIN(TestUnload)
#include "moc_MainWindowFixture.cpp"
#include "test_unload.moc"
