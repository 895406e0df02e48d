// The sample blockset that ships with the program (examples/Castle.bset with its
// update file), opened in the real window: what it shows, that nothing is marked
// changed by opening it, and that every tab is laid out without clipped labels,
// squeezed controls or list cells cut off at the window's starting size. Each
// tab is grabbed into $CUBRIX_SCREENSHOTS for a look by eye.
// Leaves out: editing and saving (test_settings_edits_gui, test_document_commands_gui).

#include "MainWindowFixture.h"

#include <QAbstractButton>
#include <QGroupBox>
#include <QHeaderView>
#include <QStyle>

class TestSampleBlocksetGui : public MainWindowTest {
    Q_OBJECT

private slots:
    void opensUnchanged_data()
    {
        QTest::addColumn<QString>("control");
        QTest::addColumn<QString>("shown");
        QTest::newRow("name") << "fldBlocksetName" << "Castle";
        // Byte 0xA9 of the Windows-1252 style file.
        QTest::newRow("copyright sign") << "fldCopyright" << QString::fromUtf8("\xc2\xa9 2024 Quillmoor, free to use");
        QTest::newRow("orb target") << "fldOrbTarget" << "_self";
        QTest::newRow("placeholder") << "lstPlaceholderTexture" << "brick.gif";
        QTest::newRow("sky colour") << "rgbSky" << "(96,160,255)";
        QTest::newRow("sky brightness") << "prcSky" << "90%";
        QTest::newRow("orb position") << "posOrb" << "(45,30)";
        // Read from Castle.txt beside the archive.
        QTest::newRow("update comment") << "fldUpdate" << "First release: walls, a gate, a tower and a torch.";
    }

    void opensUnchanged()
    {
        QFETCH(QString, control);
        openSample();
        QTEST(fixture->shownText(control), "shown");
        QCOMPARE(fixture->caption(), QString("Cubrix - Castle.bset"));
        QStringList panels;
        for (const char *panel : {"stbBlocks", "stbTextures", "stbSounds", "stbVersion"})
            panels << fixture->panel(panel);
        QCOMPARE(panels.join(", "), QString("5 Blocks, 6 Textures, 1 Sound, 1.0"));
        // Rows in folder order, with the symbols from the style file beside them.
        const auto block = [this](int row) {
            const QTreeWidgetItem *item = fixture->list("BlockList")->topLevelItem(row);
            return item ? item->text(0) + ' ' + item->text(2) + ' ' + item->text(3) : QString("<no row>");
        };
        QCOMPARE(block(0) + ", " + block(4), QString("floor.block a .a, wall.block e .e"));
        // Showing the values is no edit, and nothing was reported.
        QVERIFY(!fixture->document().isChanged());
        QVERIFY(!fixture->enabled("btnSave"));
        QVERIFY(fixture->prompts.messages.isEmpty());
    }

    void tabsFitTheWindow_data()
    {
        QTest::addColumn<int>("tab"); // the row name is the screenshot's
        QTest::newRow("castle_blocks") << 0;
        QTest::newRow("castle_textures") << 1;
        QTest::newRow("castle_sounds") << 2;
        QTest::newRow("castle_settings") << 3;
        QTest::newRow("castle_version") << 4;
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

        const QString folder = qEnvironmentVariable("CUBRIX_SCREENSHOTS");
        if (!folder.isEmpty()) {
            QDir().mkpath(folder);
            QVERIFY(window.grab().save(folder + '/' + QTest::currentDataTag() + ".png"));
        }
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
#include "test_sample_blockset_gui.moc"
#include "moc_MainWindowFixture.cpp"
