// Closing the editor: the save question is asked only for a changed open
// blockset, Yes saves it, and the working folder with its sub-folders exists
// while the window lives and is gone after it closed. Also the start-up side:
// the working folder appears at load, and dropped archives are opened.
// Leaves out: the save itself (document tests).

#include "MainWindowFixture.h"

#include "app/WorkingFolder.h"

#include <QComboBox>
#include <QDir>
#include <QFileInfo>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTabWidget>

namespace {

enum class Setup { NoBlockset, Unchanged, StyleEdited, UpdateCommentOnly, ClosedAfterEdit, ClosedAfterCommentEdit, SavedAfterEdit };

} // namespace

Q_DECLARE_METATYPE(Setup)

class TestUnload : public QObject {
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

    void workingFoldersLiveWithTheWindow();
    void asksOnlyForChangedBlockset_data();
    void asksOnlyForChangedBlockset();
    void yesSavesBeforeClosing();
    void exitMenuUnloads();
    void pendingTextureEditCounts_data();
    void pendingTextureEditCounts();
    void droppedArchiveIsOpened();
    void dropAcceptsKnownTypesOnly_data();
    void dropAcceptsKnownTypesOnly();

private:
    void typeInto(const QString &name, const QString &text)
    {
        auto *tabs = fixture->window->findChild<QTabWidget *>("SSTab1");
        tabs->setCurrentIndex(4);
        QWidget *field = fixture->window->findChild<QWidget *>(name);
        QVERIFY2(field, qPrintable(name));
        field->setFocus();
        QTest::keyClicks(field, text);
    }

    std::unique_ptr<MainWindowFixture> fixture;
};

void TestUnload::workingFoldersLiveWithTheWindow()
{
    WorkingFolder &folder = fixture->window->workingFolder();
    const QStringList folders = {folder.workingFolder(), folder.blocksFolder(), folder.texturesFolder(),
                                 folder.soundsFolder()};
    const QString temp = QDir(fixture->dir.path()).filePath("temp");
    for (const QString &path : folders) {
        QVERIFY2(QFileInfo(path).isDir(), qPrintable(path + " exists while the editor runs"));
        QVERIFY2(QDir::cleanPath(path).startsWith(QDir::cleanPath(temp)), qPrintable(path + " lies below $Temp"));
    }
    QVERIFY(folders.at(0).contains("Cubrix"));

    // With a blockset unpacked into it, closing still removes everything.
    BlocksetRecipe recipe;
    recipe.blocks = 3;
    recipe.textures = 1;
    recipe.sounds = 1;
    QVERIFY(fixture->openBlockset(recipe));
    QVERIFY(!QDir(folder.blocksFolder()).isEmpty());

    QVERIFY(fixture->window->close());
    for (const QString &path : folders)
        QVERIFY2(!QFileInfo::exists(path), qPrintable(path + " is gone after close"));
    QVERIFY(fixture->prompts.messages.isEmpty());
}

void TestUnload::asksOnlyForChangedBlockset_data()
{
    QTest::addColumn<Setup>("setup");
    QTest::addColumn<bool>("asks");
    QTest::newRow("no blockset") << Setup::NoBlockset << false;
    QTest::newRow("unchanged blockset") << Setup::Unchanged << false;
    QTest::newRow("style value edited") << Setup::StyleEdited << true;
    QTest::newRow("only update comment edited") << Setup::UpdateCommentOnly << true;
    QTest::newRow("closed after an edit") << Setup::ClosedAfterEdit << false;
    // Close leaves updateChanged set, but with no blockset open there is nothing to save.
    QTest::newRow("closed after a comment edit") << Setup::ClosedAfterCommentEdit << false;
    QTest::newRow("saved after an edit") << Setup::SavedAfterEdit << false;
}

void TestUnload::asksOnlyForChangedBlockset()
{
    QFETCH(Setup, setup);
    QFETCH(bool, asks);

    if (setup != Setup::NoBlockset) {
        BlocksetRecipe recipe;
        recipe.name = "Tower";
        recipe.blocks = 2;
        QVERIFY(fixture->openBlockset(recipe));
    }
    switch (setup) {
    case Setup::StyleEdited:
        typeInto("fldSynopsis", "A tall tower");
        break;
    case Setup::UpdateCommentOnly:
        typeInto("fldUpdate", "Fixed the roof");
        QVERIFY(!fixture->window->document().blocksetChanged());
        QVERIFY(fixture->window->document().updateChanged());
        break;
    case Setup::ClosedAfterEdit:
        typeInto("fldAuthor", "Me");
        fixture->prompts.answers << PromptAnswer::No; // the close's own save question
        fixture->action("mnuClose")->trigger();
        QVERIFY(!fixture->window->document().blocksetOpen());
        break;
    case Setup::ClosedAfterCommentEdit:
        typeInto("fldUpdate", "Note");
        fixture->prompts.answers << PromptAnswer::No;
        fixture->action("btnClose")->trigger();
        QVERIFY(fixture->window->document().updateChanged());
        QVERIFY(!fixture->window->document().blocksetOpen());
        break;
    case Setup::SavedAfterEdit:
        typeInto("fldAuthor", "Me");
        fixture->action("btnSave")->trigger();
        QVERIFY(!fixture->window->document().isChanged());
        break;
    default:
        break;
    }
    fixture->prompts.messages.clear();
    if (asks)
        fixture->prompts.answers << PromptAnswer::No;

    QVERIFY(fixture->window->close());

    if (!asks) {
        QVERIFY2(fixture->prompts.messages.isEmpty(), qPrintable(fixture->prompts.messageTexts().join("; ")));
        return;
    }
    QCOMPARE(fixture->prompts.messages.size(), 1);
    const ScriptedPrompts::Message &m = fixture->prompts.messages.first();
    QCOMPARE(m.text, QString("The blockset has been changed. Do you want to save it first?"));
    QCOMPARE(m.title, QString("Blockset Changed"));
    QCOMPARE(m.buttons, PromptButtons::YesNo);
    QCOMPARE(m.icon, PromptIcon::Question);
    // No was answered: the archive on disk is as it was, and the window closed all the same.
    QVERIFY(!fixture->window->isVisible());
    QVERIFY(!QFileInfo::exists(fixture->window->workingFolder().workingFolder()));
}

void TestUnload::yesSavesBeforeClosing()
{
    BlocksetRecipe recipe;
    recipe.name = "Keep";
    recipe.blocks = 1;
    QVERIFY(fixture->openBlockset(recipe));
    const QString archive = fixture->window->document().blocksetPath();
    const QDateTime before = QFileInfo(archive).lastModified();
    const qint64 sizeBefore = QFileInfo(archive).size();
    typeInto("fldCopyright", "(c) 2026 Quillmoor and friends of the tower");

    fixture->prompts.answers << PromptAnswer::Yes;
    QVERIFY(fixture->window->close());
    QCOMPARE(fixture->prompts.messages.size(), 1);
    QVERIFY(QFileInfo(archive).size() != sizeBefore || QFileInfo(archive).lastModified() != before);
    // The update file is written beside the archive (updateFile is on by default).
    QVERIFY(QFileInfo::exists(QFileInfo(archive).path() + "/Keep.txt"));

    // The saved archive holds the edit: opening it again shows the copyright.
    MainWindowFixture second;
    frmMain &again = second.open();
    again.openBlocksetFile(archive);
    QVERIFY(again.document().blocksetOpen());
    QCOMPARE(again.document().style().copyright, QString("(c) 2026 Quillmoor and friends of the tower"));
}

void TestUnload::exitMenuUnloads()
{
    fixture->window->show();
    BlocksetRecipe recipe;
    recipe.blocks = 1;
    QVERIFY(fixture->openBlockset(recipe));
    typeInto("fldUpdate", "x");
    fixture->prompts.answers << PromptAnswer::No;
    fixture->action("mnuExit")->trigger();
    QVERIFY(!fixture->window->isVisible());
    QCOMPARE(fixture->prompts.messageTexts(),
             QStringList{"The blockset has been changed. Do you want to save it first?"});
    QVERIFY(!QFileInfo::exists(fixture->window->workingFolder().workingFolder()));
}

void TestUnload::pendingTextureEditCounts_data()
{
    // A texture box reports its edit when it loses the focus; a toolbar button takes
    // no focus, and closing the window moves none: the edit must count all the same.
    QTest::addColumn<QString>("how");
    QTest::newRow("close button of the window") << "window";
    QTest::newRow("toolbar Close") << "btnClose";
}

void TestUnload::pendingTextureEditCounts()
{
    QFETCH(QString, how);
    fixture->window->show();
    QVERIFY(QTest::qWaitForWindowExposed(fixture->window.get()));
    BlocksetRecipe recipe;
    recipe.blocks = 1;
    recipe.textures = 1;
    QVERIFY(fixture->openBlockset(recipe));
    fixture->window->findChild<QTabWidget *>("SSTab1")->setCurrentIndex(3);
    auto *box = fixture->window->findChild<QComboBox *>("lstPlaceholderTexture");
    QVERIFY(box);
    box->setFocus();
    QTest::keyClicks(box, "texture0.jpg");
    QVERIFY(box->hasFocus());

    fixture->prompts.answers << PromptAnswer::No;
    if (how == "window")
        QVERIFY(fixture->window->close());
    else
        fixture->action(how)->trigger();
    QCOMPARE(fixture->prompts.messages.size(), 1);
    QCOMPARE(fixture->prompts.messages.first().text,
             QString("The blockset has been changed. Do you want to save it first?"));
}

void TestUnload::droppedArchiveIsOpened()
{
    BlocksetRecipe first;
    first.name = "First";
    first.blocks = 4;
    BlocksetRecipe second;
    second.name = "Second";
    second.blocks = 2;
    const QString firstPath = fixture->makeBlockset(first);
    const QString secondPath = fixture->makeBlockset(second);
    const QString block = QDir(fixture->dir.path()).filePath("loose.block");
    MainWindowFixture::writeFile(block, "<BLOCK NAME=\"loose\">");

    // The first archive of the drop is opened; the block and the second archive are ignored.
    fixture->window->dropFiles({block, firstPath, secondPath});
    QVERIFY(fixture->window->document().blocksetOpen());
    QCOMPARE(fixture->window->document().blocksetFileName(), QString("First.bset"));
    QCOMPARE(fixture->window->document().blockCount(), 4);
    QCOMPARE(fixture->window->windowTitle(), QString("Cubrix - First.bset"));
    QCOMPARE(fixture->panel("stbBlocks"), QString("4 Blocks"));

    // An archive whose extension is written in capitals is no archive for the dispatcher.
    const QString shouting = QDir(fixture->dir.path()).filePath("LOUD.BSET");
    QVERIFY(QFile::copy(secondPath, shouting));
    fixture->window->dropFiles({shouting});
    QCOMPARE(fixture->window->document().blocksetFileName(), QString("First.bset"));
}

void TestUnload::dropAcceptsKnownTypesOnly_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("accepted");
    QTest::newRow("archive") << "/x/a.bset" << true;
    QTest::newRow("block") << "/x/a.block" << true;
    QTest::newRow("jpg") << "/x/a.jpg" << true;
    QTest::newRow("gif") << "/x/a.gif" << true;
    QTest::newRow("wav") << "/x/a.wav" << true;
    QTest::newRow("capital JPG") << "/x/photo.JPG" << false;
    QTest::newRow("png") << "/x/a.png" << false;
    QTest::newRow("no extension") << "/x/readme" << false;
    QTest::newRow("dot in folder only") << "/x.bset/file" << false;
}

void TestUnload::dropAcceptsKnownTypesOnly()
{
    QFETCH(QString, path);
    QFETCH(bool, accepted);
    QCOMPARE(frmMain::isDroppableFile(path), accepted);
}

QTEST_MAIN(TestUnload)
#include "test_unload.moc"
