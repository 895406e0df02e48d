// The sample blockset that ships with the program (examples/Castle.bset with its
// update file), opened in the real window: every tab is laid out without clipped labels,
// squeezed controls or list cells cut off at the window's starting size. Each
// tab is grabbed into $CUBRIX_SCREENSHOTS for a look by eye.
// Leaves out: editing and saving (test_settings_edits_gui, test_document_commands_gui).

#include "MainWindowFixture.h"
#include "support/Screenshot.h"

#include <QAbstractButton>
#include <QGroupBox>
#include <QHeaderView>
#include <QStyle>

class TestSampleBlocksetGui : public MainWindowTest {
    Q_OBJECT

private slots:
    void tabsFitTheWindow_data()
    {
        QTest::addColumn<int>("tab"); // the row name is the screenshot's
        int tab = 0;
        for (const char *name :
             {"castle_blocks", "castle_textures", "castle_sounds", "castle_settings", "castle_version"})
            addRow(name, tab++);
    }

    void tabsFitTheWindow()
    {
        QFETCH(int, tab);
        openSample();
        frmMain &window = *fixture->window;
        fixture->tabs()->setCurrentIndex(tab);
        if (tab == 1) // the first texture previewed, as a user would look at it
            fixture->action("btnPreviewItem")->trigger();
        QCoreApplication::processEvents();

        // The window opens large enough for what every page needs.
        const QSize needed = window.minimumSizeHint();
        QVERIFY(needed.width() <= window.width() && needed.height() <= window.height());

        QStringList faults;
        QWidget *page = fixture->tabs()->currentWidget();
        for (QWidget *child : page->findChildren<QWidget *>()) {
            // The halves of an up-down are drawn smaller than a button on purpose.
            if (!child->isVisibleTo(page) || child->objectName().isEmpty() || child->parentWidget()->inherits("UpDown"))
                continue;
            // No control narrower or lower than it needs to show its content.
            const QSize minimum = child->minimumSizeHint();
            if (minimum.isValid() && (child->width() < minimum.width() || child->height() < minimum.height()))
                faults << child->objectName() + " is smaller than it needs";
            // Captions of labels, check boxes and groups are not cut off.
            QString caption;
            int room = child->width();
            if (auto *label = qobject_cast<QLabel *>(child); label && !label->wordWrap())
                caption = label->text();
            else if (auto *button = qobject_cast<QAbstractButton *>(child))
                caption = button->text(), room -= button->iconSize().width() + 8;
            else if (auto *group = qobject_cast<QGroupBox *>(child))
                caption = group->title(), room -= 8;
            if (!caption.isEmpty() && child->fontMetrics().horizontalAdvance(caption.remove('&')) > room)
                faults << "\"" + caption + "\" of " + child->objectName() + " is cut off";
        }

        // Every list cell fits its column, and the sizes stay beside their rows
        // instead of running off to the window's edge.
        if (auto *view = page->findChild<QTreeWidget *>()) {
            QVERIFY(view->topLevelItemCount() > 0);
            const int margins = 2 * (view->style()->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, view) + 1);
            const QFontMetrics metrics = view->fontMetrics();
            for (int column = 0; column < view->columnCount(); ++column) {
                int widest = metrics.horizontalAdvance(view->headerItem()->text(column));
                for (int row = 0; row < view->topLevelItemCount(); ++row)
                    widest = std::max(widest, metrics.horizontalAdvance(view->topLevelItem(row)->text(column)));
                const int width = view->header()->sectionSize(column);
                const bool last = column == view->columnCount() - 1;
                if (widest + margins > width || (last && width > 2 * (widest + margins) && width > 100))
                    faults << QString("column %1 is %2 pixels for cells of %3").arg(column).arg(width).arg(widest);
            }
        }
        QVERIFY2(faults.isEmpty(), qPrintable(faults.join("\n")));

        QVERIFY(saveScreenshot(window, QTest::currentDataTag()));
    }

private:
    // Opens a copy, so that nothing a test does can touch the shipped sample.
    void openSample()
    {
        for (const char *file : {"/Castle.bset", "/Castle.txt"})
            QVERIFY(QFile::copy(CUBRIX_EXAMPLES + QString(file), fixture->dir.path() + file));
        QVERIFY(fixture->show());
        fixture->window->openBlocksetFile(fixture->dir.filePath("Castle.bset"));
        QVERIFY(fixture->document().blocksetOpen());
        QCoreApplication::processEvents();
    }
};

QTEST_MAIN(TestSampleBlocksetGui)
#include "moc_MainWindowFixture.cpp"
#include "test_sample_blockset_gui.moc"
