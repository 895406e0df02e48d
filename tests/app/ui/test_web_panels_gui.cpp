// What the window shows of a blockset Rover takes from the web: the saved size
// in stbSize, the Packed column and the marks on sounds Rover cannot play,
// sorting that keeps each row's item, and the check panel leading to an item.
// Leaves out: the sizes and findings themselves (test_web_check).

#include "MainWindowFixture.h"

#include "app/BlocksetSize.h"
#include "app/ui/ItemListPage.h"

#include <QDockWidget>
#include <QHeaderView>

class TestWebPanels : public MainWindowTest {
    Q_OBJECT

private slots:
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
};

QTEST_MAIN(TestWebPanels)
#include "moc_MainWindowFixture.cpp"
#include "test_web_panels_gui.moc"
