// The main window's controls as a user and the other windows find them: every
// command by name with caption, tooltip, icon and shortcut, the order of the
// menus and the toolbar, the tabs, lists and status panels, the state right
// after load, the about box, and screenshots for a visual check.
// Leaves out: what the commands do (test_interface_state_gui, test_unload).

#include "MainWindowFixture.h"

#include "app/ui/frmAbout.h"
#include "app/ui/frmNew.h"

#include <QApplication>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QStatusBar>
#include <QSysInfo>
#include <QTimer>

class TestMainWindowLayout : public MainWindowTest {
    Q_OBJECT

private slots:
    void commands_data()
    {
        // Row name: the command, whose toolbar key is "btn" and menu entry "mnu" before it.
        QTest::addColumn<QString>("tooltip"); // "" for a command only in the menu
        QTest::addColumn<QString>("caption");
        QTest::addColumn<QKeySequence>("keys");
        const QKeySequence none;
        QTest::newRow("New") << "New Blockset" << "&New Blockset" << QKeySequence("Ctrl+N");
        QTest::newRow("Open") << "Open Blockset..." << "&Open Blockset..." << QKeySequence("Ctrl+O");
        QTest::newRow("Close") << "Close Blockset" << "&Close Blockset" << QKeySequence("Ctrl+W");
        QTest::newRow("Save") << "Save Blockset" << "&Save Blockset" << QKeySequence("Ctrl+S");
        QTest::newRow("SaveAs") << "Save Blockset As..." << "Save Blockset &As..." << QKeySequence("Ctrl+Shift+S");
        QTest::newRow("AddItem") << "Add Item..." << "&Add Item..." << none;
        QTest::newRow("RemoveItem") << "Remove Item" << "&Remove Item" << none;
        QTest::newRow("ReplaceItem") << "Update/Replace Item" << "&Update/Replace Item" << none;
        QTest::newRow("EditItem") << "Edit Item..." << "&Edit Item..." << none;
        QTest::newRow("PreviewItem") << "Preview/Play Item" << "&Preview/Play Item" << none;
        QTest::newRow("AddBSP") << "Add BSP Trees" << "&Add BSP Trees..." << none;
        QTest::newRow("Manager") << "Cache Manager..." << "Cubrix &Cache Manager" << none;
        QTest::newRow("Options") << "" << "O&ptions..." << none;
        QTest::newRow("RemapSymbols") << "" << "&Remap Symbols..." << none;
        QTest::newRow("About") << "" << "&About Cubrix..." << none;
        QTest::newRow("Exit") << "" << "&Exit" << QKeySequence("Ctrl+Q");
    }

    void commands()
    {
        QFETCH(QString, tooltip);
        QFETCH(QString, caption);
        QFETCH(QKeySequence, keys);
        const QString command = QTest::currentDataTag();
        QAction *entry = fixture->action("mnu" + command);
        QVERIFY2(entry, "no menu entry");
        QCOMPARE(entry->text(), caption);
        if (!keys.isEmpty()) {
            QVERIFY2(entry->shortcuts().contains(keys), qPrintable(entry->shortcut().toString()));
            int owners = 0; // no two commands share a key
            for (QAction *other : fixture->window->findChildren<QAction *>())
                owners += other->shortcuts().contains(keys);
            QCOMPARE(owners, 1);
        }
        QAction *button = fixture->action("btn" + command);
        QCOMPARE(button != nullptr, !tooltip.isEmpty());
        if (button) {
            QCOMPARE(button->toolTip(), tooltip);
            QVERIFY2(!button->icon().isNull(), "every toolbar button has an icon");
        }
    }

    void contents_data()
    {
        QTest::addColumn<QString>("holder");
        QTest::addColumn<QString>("title"); // of a menu
        QTest::addColumn<QString>("entries");
        QTest::newRow("toolbar") << "Toolbar1" << ""
                                 << "btnNew btnOpen btnClose btnSave btnSaveAs btnAddItem btnRemoveItem btnReplaceItem "
                                    "btnEditItem btnPreviewItem btnAddBSP btnManager";
        QTest::newRow("file") << "mnuFile" << "&File"
                              << "mnuNew mnuOpen mnuClose mnuSave mnuSaveAs mnuSep1 mnuOptions mnuSep2 mnuExit";
        QTest::newRow("edit") << "mnuEdit" << "&Edit"
                              << "mnuAddItem mnuRemoveItem mnuReplaceItem mnuEditItem mnuPreviewItem";
        QTest::newRow("tools") << "mnuTools" << "&Tools" << "mnuRemapSymbols mnuAddBSP";
        QTest::newRow("window") << "mnuWindow" << "&Window" << "mnuManager";
        QTest::newRow("help") << "mnuHelp" << "&?" << "mnuAbout";
        QTest::newRow("tabs") << "SSTab1" << "" << "&Blocks &Textures &Sounds Setti&ngs &Version";
        QTest::newRow("block list") << "SSTab1/BlockList" << "" << "File Name Symbol Double Type BSP Size";
        QTest::newRow("texture list") << "SSTab1/TextureList" << "" << "File Size";
        QTest::newRow("sound list") << "SSTab1/SoundList" << "" << "File Size";
        QTest::newRow("status bar, left to right") << "StatusBar1" << ""
                                                   << "stbBlocks stbTextures stbSounds stbVersion stbProcess";
    }

    void contents()
    {
        QFETCH(QString, holder);
        QFETCH(QString, title);
        QVERIFY(fixture->show());
        QWidget *widget = fixture->control(holder);
        QVERIFY2(widget, qPrintable(holder));
        QStringList names;
        if (auto *tabs = qobject_cast<QTabWidget *>(widget)) {
            for (int i = 0; i < tabs->count(); ++i)
                names << tabs->tabText(i);
        } else if (auto *list = qobject_cast<QTreeWidget *>(widget)) {
            for (int column = 0; column < list->columnCount(); ++column)
                names << list->headerItem()->text(column);
        } else if (auto *bar = qobject_cast<QStatusBar *>(widget)) {
            QMap<int, QString> byPosition;
            for (QLabel *label : bar->findChildren<QLabel *>())
                byPosition.insert(label->mapTo(bar, QPoint()).x(), label->objectName());
            names = byPosition.values();
            // The process panel takes the rest of the bar.
            QVERIFY(bar->findChild<QLabel *>("stbProcess")->width() > bar->findChild<QLabel *>("stbVersion")->width());
        } else {
            if (auto *menu = qobject_cast<QMenu *>(widget))
                QCOMPARE(menu->title(), title);
            for (QAction *action : widget->actions()) {
                const QString name = action->objectName();
                if (!name.isEmpty())
                    names << name;
                QCOMPARE(action->isSeparator(), name.isEmpty() || name.startsWith("mnuSep"));
            }
        }
        QTEST(names.join(' '), "entries");
    }

    void loadState()
    {
        QCOMPARE(fixture->panel("stbProcess"), QString("Welcome to Cubrix 0.9 Beta 1!"));
        auto *prefixes = fixture->window->findChild<QComboBox *>("lstStrictPrefix");
        QVERIFY(prefixes);
        QCOMPARE(prefixes->count(), 90);
        QCOMPARE(prefixes->itemText(0) + prefixes->itemText(1) + prefixes->itemText(89), QString(".A~"));
    }

    void aboutBox()
    {
        QVERIFY(fixture->show());
        QStringList texts;
        QString systemInfo;
        QTimer::singleShot(0, this, [&] {
            QWidget *about = QApplication::activeModalWidget();
            for (QLabel *label : about ? about->findChildren<QLabel *>() : QList<QLabel *>())
                texts << label->text();
            QTimer::singleShot(0, this, [&] { // in the System Info window
                QWidget *info = QApplication::activeModalWidget();
                if (auto *text = info ? info->findChild<QPlainTextEdit *>("txtSystemInfo") : nullptr)
                    systemInfo = text->toPlainText();
                if (info)
                    info->close();
            });
            if (auto *button = about ? about->findChild<QPushButton *>("cmdSysInfo") : nullptr)
                button->click();
            if (about)
                about->close();
        });
        fixture->action("mnuAbout")->trigger();
        QVERIFY(texts.contains("Cubrix"));
        QVERIFY(texts.contains("Version 0.9 Beta 1"));
        const QStringList parts = {QSysInfo::prettyProductName(), QSysInfo::currentCpuArchitecture(), qVersion()};
        for (const QString &part : parts)
            QVERIFY2(systemInfo.contains(part), qPrintable("System Info... shows " + part));
    }
};

QTEST_MAIN(TestMainWindowLayout)
#include "test_main_window_layout.moc"
#include "moc_MainWindowFixture.cpp"
