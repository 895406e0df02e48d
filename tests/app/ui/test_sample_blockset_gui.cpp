// The sample blockset that ships with the program (examples/Castle.bset with its
// update file), opened in the real window: what each tab shows, that nothing is
// marked changed by opening it, and that every tab is laid out without clipped
// labels or squeezed controls at the window's starting size. Each tab is grabbed
// into $CUBRIX_SCREENSHOTS for a look by eye.
// Leaves out: editing and saving (test_settings_edits_gui, test_document_commands_gui).

#include "MainWindowFixture.h"

#include <QAbstractButton>
#include <QGroupBox>
#include <QHeaderView>
#include <QStyle>
#include <QTreeWidget>

class TestSampleBlocksetGui : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        fixture = std::make_unique<MainWindowFixture>();
        fixture->open();
        // A copy, so that nothing a test does can touch the shipped sample.
        const QString examples = QStringLiteral(CUBRIX_TEST_DATA "/../../examples/");
        samplePath = fixture->dir.filePath("Castle.bset");
        QVERIFY(QFile::copy(examples + "Castle.bset", samplePath));
        QVERIFY(QFile::copy(examples + "Castle.txt", fixture->dir.filePath("Castle.txt")));
    }
    void cleanup()
    {
        QVERIFY2(fixture->prompts.unexpected.isEmpty(), qPrintable(fixture->prompts.unexpected.join("; ")));
        fixture.reset();
    }

    void opensUnchanged();
    void showsStyleValues_data();
    void showsStyleValues();
    void listColumnsShowTheirCells_data();
    void listColumnsShowTheirCells();
    void tabsFitTheWindow_data();
    void tabsFitTheWindow();

private:
    void openSample()
    {
        frmMain &window = *fixture->window;
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        window.openBlocksetFile(samplePath);
        QVERIFY(window.document().blocksetOpen());
        QCoreApplication::processEvents();
    }

    std::unique_ptr<MainWindowFixture> fixture;
    QString samplePath;
};

void TestSampleBlocksetGui::opensUnchanged()
{
    openSample();
    frmMain &window = *fixture->window;
    QCOMPARE(window.windowTitle(), QString("Cubrix - Castle.bset"));
    QCOMPARE(fixture->panel("stbBlocks"), QString("5 Blocks"));
    QCOMPARE(fixture->panel("stbTextures"), QString("6 Textures"));
    QCOMPARE(fixture->panel("stbSounds"), QString("1 Sound"));
    QCOMPARE(fixture->panel("stbVersion"), QString("1.0"));
    QVERIFY(!window.document().isChanged());
    QVERIFY(!fixture->enabled("btnSave"));
    QVERIFY(fixture->prompts.messages.isEmpty());

    auto *blocks = window.findChild<QTreeWidget *>("BlockList");
    QCOMPARE(blocks->topLevelItemCount(), 5);
    // Rows in folder order, with the symbols from the style file beside them.
    QCOMPARE(blocks->topLevelItem(0)->text(0), QString("floor.block"));
    QCOMPARE(blocks->topLevelItem(0)->text(2), QString("a"));
    QCOMPARE(blocks->topLevelItem(0)->text(3), QString(".a"));
    QCOMPARE(blocks->topLevelItem(4)->text(0), QString("wall.block"));
    QCOMPARE(blocks->topLevelItem(4)->text(2), QString("e"));
    QCOMPARE(window.findChild<QTreeWidget *>("SoundList")->topLevelItem(0)->text(0), QString("bell.wav"));
}

void TestSampleBlocksetGui::showsStyleValues_data()
{
    QTest::addColumn<QString>("control");
    QTest::addColumn<QString>("shown");
    QTest::newRow("version") << "fldVersion" << "1.0";
    QTest::newRow("name") << "fldBlocksetName" << "Castle";
    QTest::newRow("synopsis") << "fldSynopsis" << "Stone walls, a gate, a tower and a torch";
    QTest::newRow("author") << "fldAuthor" << "Quillmoor";
    // Byte 0xA9 of the Windows-1252 style file.
    QTest::newRow("copyright sign") << "fldCopyright" << QString::fromUtf8("\xc2\xa9 2024 Quillmoor, free to use");
    QTest::newRow("orb link") << "fldOrbHREF" << "index.3dml";
    QTest::newRow("orb target") << "fldOrbTarget" << "_self";
    QTest::newRow("orb text") << "fldOrbText" << "Castle Home";
    QTest::newRow("placeholder") << "lstPlaceholderTexture" << "brick.gif";
    QTest::newRow("sky texture") << "lstSkyTexture" << "clouds.jpg";
    QTest::newRow("ground texture") << "lstGroundTexture" << "grass.gif";
    QTest::newRow("orb texture") << "lstOrbTexture" << "sun.gif";
    QTest::newRow("sky colour") << "rgbSky" << "(96,160,255)";
    QTest::newRow("sky brightness") << "prcSky" << "90%";
    QTest::newRow("ground colour") << "rgbGround" << "(0,128,0)";
    QTest::newRow("orb colour") << "rgbOrb" << "(255,255,224)";
    QTest::newRow("orb brightness") << "prcOrb" << "100%";
    QTest::newRow("orb position") << "posOrb" << "(45,30)";
    // Read from Castle.txt beside the archive.
    QTest::newRow("update comment") << "fldUpdate" << "First release: walls, a gate, a tower and a torch.";
}

void TestSampleBlocksetGui::showsStyleValues()
{
    QFETCH(QString, control);
    QFETCH(QString, shown);
    openSample();
    QCOMPARE(fixture->shownText(control), shown);
    // Showing the values is no edit.
    QVERIFY(!fixture->window->document().isChanged());
}

void TestSampleBlocksetGui::listColumnsShowTheirCells_data()
{
    QTest::addColumn<int>("tab");
    QTest::addColumn<QString>("list");
    QTest::newRow("blocks") << 0 << "BlockList";
    QTest::newRow("textures") << 1 << "TextureList";
    QTest::newRow("sounds") << 2 << "SoundList";
}

void TestSampleBlocksetGui::listColumnsShowTheirCells()
{
    QFETCH(int, tab);
    QFETCH(QString, list);
    openSample();
    fixture->tabs()->setCurrentIndex(tab);
    QCoreApplication::processEvents();
    auto *view = fixture->window->findChild<QTreeWidget *>(list);
    QVERIFY(view);
    QVERIFY(view->topLevelItemCount() > 0);
    QHeaderView *header = view->header();
    const QFontMetrics metrics = view->fontMetrics();
    // Room a cell needs besides its text: the item margins on both sides.
    const int margins = 2 * (view->style()->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, view) + 1);
    QStringList cut;
    for (int column = 0; column < view->columnCount(); ++column) {
        int widest = metrics.horizontalAdvance(view->headerItem()->text(column));
        for (int row = 0; row < view->topLevelItemCount(); ++row)
            widest = std::max(widest, metrics.horizontalAdvance(view->topLevelItem(row)->text(column)));
        const int width = header->sectionSize(column);
        if (widest + margins > width)
            cut << QString("column %1 is %2 pixels, its cells need %3").arg(column).arg(width).arg(widest + margins);
        // The sizes stay beside their rows instead of running off to the window's edge.
        if (column == view->columnCount() - 1 && width > 2 * (widest + margins) && width > 100)
            cut << QString("size column is %1 pixels for cells of %2").arg(width).arg(widest);
    }
    QVERIFY2(cut.isEmpty(), qPrintable(cut.join("\n")));
}

void TestSampleBlocksetGui::tabsFitTheWindow_data()
{
    QTest::addColumn<int>("tab");
    QTest::addColumn<QString>("shot");
    QTest::newRow("blocks") << 0 << "castle_blocks.png";
    QTest::newRow("textures") << 1 << "castle_textures.png";
    QTest::newRow("sounds") << 2 << "castle_sounds.png";
    QTest::newRow("settings") << 3 << "castle_settings.png";
    QTest::newRow("version") << 4 << "castle_version.png";
}

void TestSampleBlocksetGui::tabsFitTheWindow()
{
    QFETCH(int, tab);
    QFETCH(QString, shot);
    openSample();
    frmMain &window = *fixture->window;
    fixture->tabs()->setCurrentIndex(tab);
    if (tab == 1) {
        // The first texture previewed, as a user would look at it.
        fixture->action("btnPreviewItem")->trigger();
    }
    QCoreApplication::processEvents();

    // The window opens large enough for what every page needs.
    const QSize needed = window.minimumSizeHint();
    QVERIFY2(needed.width() <= window.width() && needed.height() <= window.height(),
             qPrintable(QString("window %1x%2, needs %3x%4")
                            .arg(window.width())
                            .arg(window.height())
                            .arg(needed.width())
                            .arg(needed.height())));

    QWidget *page = fixture->tabs()->currentWidget();
    QStringList faults;
    for (QWidget *child : page->findChildren<QWidget *>()) {
        // The halves of an up-down are drawn smaller than a button on purpose.
        if (!child->isVisibleTo(page) || child->objectName().isEmpty() || child->parentWidget()->inherits("UpDown"))
            continue;
        const QString name = child->objectName();
        // No control narrower or lower than it needs to show its content.
        const QSize minimum = child->minimumSizeHint();
        if (minimum.isValid() && (child->width() < minimum.width() || child->height() < minimum.height()))
            faults << QString("%1 is %2x%3, needs %4x%5")
                          .arg(name)
                          .arg(child->width())
                          .arg(child->height())
                          .arg(minimum.width())
                          .arg(minimum.height());
        // Captions of labels, check boxes and groups are not cut off.
        QString caption;
        int room = child->width();
        if (auto *label = qobject_cast<QLabel *>(child); label && !label->wordWrap())
            caption = label->text();
        else if (auto *button = qobject_cast<QAbstractButton *>(child))
            caption = button->text(), room -= button->iconSize().width() + 8;
        else if (auto *group = qobject_cast<QGroupBox *>(child))
            caption = group->title(), room -= 8;
        caption.remove('&');
        const int width = child->fontMetrics().horizontalAdvance(caption);
        if (!caption.isEmpty() && width > room)
            faults << QString("\"%1\" of %2 needs %3 pixels, has %4").arg(caption, name).arg(width).arg(room);
    }
    QVERIFY2(faults.isEmpty(), qPrintable(faults.join("\n")));

    const QString folder = qEnvironmentVariable("CUBRIX_SCREENSHOTS");
    if (!folder.isEmpty()) {
        QDir().mkpath(folder);
        QVERIFY(window.grab().save(folder + '/' + shot));
    }
}

QTEST_MAIN(TestSampleBlocksetGui)
#include "test_sample_blockset_gui.moc"
