// The item and symbol commands as only the window shows them: a label edited in
// the list renames the item (or springs back), Remove keeps a selection on the
// list, and the strict prefix box and list drive the symbols on the settings page.
// Leaves out: the rules themselves (tests/symbols) and the remap dialog alone.

#include "MainWindowFixture.h"
#include "rover/RoverTestBlocks.h"

#include <QCheckBox>
#include <QLineEdit>

class TestItemCommandsGui : public MainWindowTest {
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
    void labelEditRenames_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("label");
        QTest::addColumn<QString>("message");
        QTest::newRow("renamed") << "keep.block"
                                 << "keep.block"
                                 << "Are you sure to rename this block?";
        QTest::newRow("extension refused") << "keep.gif"
                                           << "block001.block"
                                           << "You are not allowed to change the file extension!";
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

    void removeKeepsSelection()
    {
        QVERIFY(fixture->openBlockset({.name = "Remove", .blocks = 3}) && fixture->show());
        QTreeWidget *list = fixture->list("BlockList");
        list->setCurrentItem(list->topLevelItem(1));
        fixture->prompts.answers = {PromptAnswer::Yes};
        fixture->action("mnuRemoveItem")->trigger();
        QCOMPARE(fixture->rows("BlockList"), 2);
        QCOMPARE(list->currentItem()->text(0), QString("block002.block"));
        QCOMPARE(list->selectedItems(), QList<QTreeWidgetItem *>{list->currentItem()});
    }

    // Add BSP Trees on the selected block: its file gets a tree, its BSP cell
    // says so, the blockset counts as changed.
    void addBspTree()
    {
        QVERIFY(fixture->openBlockset({.name = "Trees", .blocks = 2}) && fixture->show());
        const QString file = fixture->document().workingFolder() + "/blocks/block001.block";
        QVERIFY(writeFile(file, QByteArray(fullBlock).replace("<BSP_TREE ROOT=\"1\"/>\r\n", "")));
        QTreeWidget *list = fixture->list("BlockList");
        list->setCurrentItem(list->topLevelItem(1));
        fixture->action("mnuAddBSP")->trigger();
        QCOMPARE(list->topLevelItem(1)->text(5), QString("yes"));
        QCOMPARE(fixture->panel("stbProcess"), QString("BSP trees added to 1 blocks (0 splits)"));
        QVERIFY(fixture->caption().endsWith('*'));
        QVERIFY(readBytes(file).contains("<BSP_TREE ROOT=\"1\"/>"));
    }

    void strictPrefixControls()
    {
        QVERIFY(fixture->openBlockset({.name = "Prefix", .blocks = 2}) && fixture->show());
        fixture->tabs()->setCurrentIndex(BlocksetDocument::TabSettings);
        auto *prefixList = qobject_cast<QComboBox *>(fixture->control("lstStrictPrefix"));
        prefixList->setFocus();
        fixture->prompts.answers = {PromptAnswer::Yes};
        QTest::keyClick(prefixList, Qt::Key_Down); // "." -> "A"
        QCOMPARE(fixture->document().blocks()[1].doubleSymbol, QString("AB"));
        QVERIFY(fixture->caption().endsWith('*'));

        qobject_cast<QCheckBox *>(fixture->control("cbxStrictPrefix"))->click();
        QVERIFY(!prefixList->isEnabled() && !fixture->control("cbxSyncDouble")->isEnabled());
    }
};

QTEST_MAIN(TestItemCommandsGui)
#include "moc_MainWindowFixture.cpp"
#include "test_item_commands_gui.moc"
