// The block preview beside the block list and the pictures in the list, in the
// real window: Preview Block opens the panel, it follows the current row and
// shows Rover's first error for a block Rover cannot load; the list's pictures
// come after it is filled. The window is grabbed into $CUBRIX_SCREENSHOTS.

#include "MainWindowFixture.h"
#include "rover/RoverTestBlocks.h"
#include "support/DataRows.h"
#include "support/Screenshot.h"

#include <QRadioButton>
#include <QStackedWidget>

class TestBlockPreviewGui : public MainWindowTest {
    Q_OBJECT

    // A cube of four JPEG textures, the cube with an unreadable vertex list, and a sprite.
    QString makeBlocks()
    {
        FileMap files;
        const QColor colours[] = {Qt::darkRed, Qt::darkGreen, Qt::darkBlue, Qt::darkYellow};
        for (int i = 0; i < 4; ++i) {
            QImage image(32, 32, QImage::Format_RGB32);
            image.fill(colours[i]);
            QBuffer jpeg(&files[QString("textures/t%1.jpg").arg(i)]);
            image.save(&jpeg, "JPG");
        }
        QByteArray cube = fullBlock;
        for (int face = 0; face < 6; ++face) // top, bottom, north, south, east, west
            cube.replace(cube.indexOf("cement.gif"), 10, "t" + QByteArray::number(face % 4) + ".jpg");
        files["blocks/cube.block"] = cube;
        files["blocks/broken.block"] = changedBlock(fullBlock, "VERTICES=\"1,2,3,4\"", "VERTICES=\"1 2 3 4\"");
        files["blocks/sprite.block"] = changedBlock(spriteBlock, "logo.gif", "t1.jpg");
        QList<BlockRow> rows;
        for (const char *file : {"broken.block", "cube.block", "sprite.block"})
            rows.append({.file = file, .symbol = QString(QChar(file[0]))});
        StyleValues style;
        style.name = "Preview";
        files["Preview.style"] = writeStyle(style, rows);
        const QString path = fixture->dir.filePath("Preview.bset");
        return writeBset(path, files) ? path : QString();
    }

private slots:
    void previewFollowsTheList_data()
    {
        QTest::addColumn<int>("row");
        QTest::addColumn<QString>("shown"); // the widget the panel shows
        QTest::addColumn<QString>("text");  // in the title, or the error shown
        addRow("cube", 1, "BlockView", "full  (cube.block)");
        addRow("broken block", 0, "BlockPreviewProblem",
               "Expected a list of vertex reference numbers as the value of parameter "
               "'vertices' (line 14)");
        addRow("sprite", 2, "BlockView", "sprite  (sprite.block)");
    }

    void previewFollowsTheList()
    {
        QFETCH(int, row);
        QFETCH(QString, shown);
        QFETCH(QString, text);
        fixture->window->resize(980, 620);
        QVERIFY(fixture->show());
        fixture->window->openBlocksetFile(makeBlocks());
        QTreeWidget *list = fixture->list("BlockList");
        QCOMPARE(list->topLevelItemCount(), 3);
        auto *panel = fixture->window->findChild<QWidget *>("BlockPreview");
        QVERIFY(panel && panel->isHidden());

        // Space in the list opens the panel; it then follows the current row.
        list->setFocus();
        QTest::keyClick(list, Qt::Key_Space);
        QVERIFY(panel->isVisible());
        list->setCurrentItem(list->topLevelItem(row));
        const auto *pages = panel->findChild<QStackedWidget *>();
        QCOMPARE(pages->currentWidget()->objectName(), shown);
        QVERIFY(fixture->panel(shown == "BlockView" ? "BlockPreviewTitle" : "BlockPreviewProblem").contains(text));

        // Every row gets its picture without the list waiting: a drawn one, or a warning with Rover's error.
        QTRY_VERIFY(list->topLevelItem(0)->toolTip(0).contains("vertex reference numbers"));
        QTRY_VERIFY(qAlpha(list->topLevelItem(1)->icon(0).pixmap(32).toImage().pixel(16, 16)) == 255);
        panel->findChild<QRadioButton *>("optDepthOrder")->click();
        QVERIFY(saveScreenshot(*fixture->window, QString("block_preview_") + QTest::currentDataTag()));

        // The panel closes; Preview Block opens it again on the same block.
        panel->findChild<QAbstractButton *>("BlockPreviewClose")->click();
        QVERIFY(panel->isHidden());
        fixture->action("btnPreviewItem")->trigger();
        QVERIFY(panel->isVisible() && pages->currentWidget()->objectName() == shown);
        QCOMPARE(fixture->prompts.messages.size(), 0);
    }
};

QTEST_MAIN(TestBlockPreviewGui)
#include "moc_MainWindowFixture.cpp"
#include "test_block_preview_gui.moc"
