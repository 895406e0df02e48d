// The main window's controls as a user and the other windows find them: every
// command by name with caption, tooltip, order and shortcut, the tabs, lists and
// status panels, the load-time state, and a screenshot for a visual check.
// Leaves out: what the commands do (test_interface_state_gui, test_unload).

#include "MainWindowFixture.h"

#include "formats/ui/SettingsTab.h"
#include "symbols/SymbolScheme.h"

#include "app/ui/frmAbout.h"
#include "app/ui/frmNew.h"

#include <QApplication>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSysInfo>
#include <QTimer>
#include <QComboBox>
#include <QHeaderView>
#include <QMenu>
#include <QMenuBar>
#include <QStatusBar>
#include <QTabWidget>
#include <QToolBar>
#include <QTreeWidget>

class TestMainWindowLayout : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        fixture = std::make_unique<MainWindowFixture>();
        fixture->open();
    }
    void cleanup() { fixture.reset(); }

    void toolbarButtons_data();
    void toolbarButtons();
    void toolbarOrder();
    void menuEntries_data();
    void menuEntries();
    void menuTree_data();
    void menuTree();
    void shortcuts_data();
    void shortcuts();
    void tabsAndLists();
    void statusPanels();
    void loadState();
    void aboutBox();
    void screenshots();

private:
    std::unique_ptr<MainWindowFixture> fixture;
};

void TestMainWindowLayout::toolbarButtons_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("tooltip");
    QTest::newRow("new") << "btnNew" << "New Blockset";
    QTest::newRow("open") << "btnOpen" << "Open Blockset...";
    QTest::newRow("close") << "btnClose" << "Close Blockset";
    QTest::newRow("save") << "btnSave" << "Save Blockset";
    QTest::newRow("save as") << "btnSaveAs" << "Save Blockset As...";
    QTest::newRow("add") << "btnAddItem" << "Add Item...";
    QTest::newRow("remove") << "btnRemoveItem" << "Remove Item";
    QTest::newRow("replace") << "btnReplaceItem" << "Update/Replace Item";
    QTest::newRow("edit") << "btnEditItem" << "Edit Item...";
    QTest::newRow("preview") << "btnPreviewItem" << "Preview/Play Item";
    QTest::newRow("bsp") << "btnAddBSP" << "Add BSP Trees";
    QTest::newRow("manager") << "btnManager" << "Cache Manager...";
}

void TestMainWindowLayout::toolbarButtons()
{
    QFETCH(QString, name);
    QFETCH(QString, tooltip);
    QAction *action = fixture->action(name);
    QVERIFY2(action, qPrintable(name));
    QCOMPARE(action->toolTip(), tooltip);
    QVERIFY2(!action->icon().isNull(), "every toolbar button has an icon");
    auto *toolbar = fixture->window->findChild<QToolBar *>("Toolbar1");
    QVERIFY(toolbar);
    QVERIFY(toolbar->actions().contains(action));
}

void TestMainWindowLayout::toolbarOrder()
{
    auto *toolbar = fixture->window->findChild<QToolBar *>("Toolbar1");
    QVERIFY(toolbar);
    QStringList order;
    for (QAction *action : toolbar->actions()) {
        if (!action->isSeparator())
            order << action->objectName();
    }
    const QStringList expected = {"btnNew",        "btnOpen",        "btnClose",     "btnSave",
                                  "btnSaveAs",     "btnAddItem",     "btnRemoveItem", "btnReplaceItem",
                                  "btnEditItem",   "btnPreviewItem", "btnAddBSP",    "btnManager"};
    QCOMPARE(order, expected);
}

void TestMainWindowLayout::menuEntries_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("caption");
    QTest::newRow("new") << "mnuNew" << "&New Blockset";
    QTest::newRow("open") << "mnuOpen" << "&Open Blockset...";
    QTest::newRow("close") << "mnuClose" << "&Close Blockset";
    QTest::newRow("save") << "mnuSave" << "&Save Blockset";
    QTest::newRow("save as") << "mnuSaveAs" << "Save Blockset &As...";
    QTest::newRow("options") << "mnuOptions" << "O&ptions...";
    QTest::newRow("exit") << "mnuExit" << "&Exit";
    QTest::newRow("add") << "mnuAddItem" << "&Add Item...";
    QTest::newRow("remove") << "mnuRemoveItem" << "&Remove Item";
    QTest::newRow("replace") << "mnuReplaceItem" << "&Update/Replace Item";
    QTest::newRow("edit") << "mnuEditItem" << "&Edit Item...";
    QTest::newRow("preview") << "mnuPreviewItem" << "&Preview/Play Item";
    QTest::newRow("remap") << "mnuRemapSymbols" << "&Remap Symbols...";
    QTest::newRow("bsp") << "mnuAddBSP" << "&Add BSP Trees...";
    QTest::newRow("manager") << "mnuManager" << "Cubrix &Cache Manager";
    QTest::newRow("about") << "mnuAbout" << "&About Cubrix...";
}

void TestMainWindowLayout::menuEntries()
{
    QFETCH(QString, name);
    QFETCH(QString, caption);
    QAction *action = fixture->action(name);
    QVERIFY2(action, qPrintable(name));
    QCOMPARE(action->text(), caption);
}

void TestMainWindowLayout::menuTree_data()
{
    QTest::addColumn<QString>("menu");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QStringList>("entries");
    QTest::newRow("file") << "mnuFile" << "&File"
                          << QStringList{"mnuNew",  "mnuOpen",    "mnuClose", "mnuSave", "mnuSaveAs",
                                         "mnuSep1", "mnuOptions", "mnuSep2",  "mnuExit"};
    QTest::newRow("edit") << "mnuEdit" << "&Edit"
                          << QStringList{"mnuAddItem", "mnuRemoveItem", "mnuReplaceItem", "mnuEditItem",
                                         "mnuPreviewItem"};
    QTest::newRow("tools") << "mnuTools" << "&Tools" << QStringList{"mnuRemapSymbols", "mnuAddBSP"};
    QTest::newRow("window") << "mnuWindow" << "&Window" << QStringList{"mnuManager"};
    QTest::newRow("help") << "mnuHelp" << "&?" << QStringList{"mnuAbout"};
}

void TestMainWindowLayout::menuTree()
{
    QFETCH(QString, menu);
    QFETCH(QString, title);
    QFETCH(QStringList, entries);
    auto *m = fixture->window->findChild<QMenu *>(menu);
    QVERIFY2(m, qPrintable(menu));
    QCOMPARE(m->title(), title);
    QStringList names;
    for (QAction *action : m->actions()) {
        names << action->objectName();
        if (action->objectName().startsWith("mnuSep"))
            QVERIFY(action->isSeparator());
    }
    QCOMPARE(names, entries);
}

void TestMainWindowLayout::shortcuts_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QKeySequence>("keys");
    QTest::newRow("new") << "mnuNew" << QKeySequence(Qt::CTRL | Qt::Key_N);
    QTest::newRow("open") << "mnuOpen" << QKeySequence(Qt::CTRL | Qt::Key_O);
    QTest::newRow("save") << "mnuSave" << QKeySequence(Qt::CTRL | Qt::Key_S);
    QTest::newRow("save as") << "mnuSaveAs" << QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_S);
    QTest::newRow("close") << "mnuClose" << QKeySequence(Qt::CTRL | Qt::Key_W);
    QTest::newRow("exit") << "mnuExit" << QKeySequence(Qt::CTRL | Qt::Key_Q);
}

void TestMainWindowLayout::shortcuts()
{
    QFETCH(QString, name);
    QFETCH(QKeySequence, keys);
    QAction *action = fixture->action(name);
    QVERIFY(action);
    QVERIFY2(action->shortcuts().contains(keys),
             qPrintable(name + " has " + action->shortcut().toString() + ", wanted " + keys.toString()));
    // No two commands share a key.
    int owners = 0;
    for (QAction *other : fixture->window->findChildren<QAction *>()) {
        if (other->shortcuts().contains(keys))
            ++owners;
    }
    QCOMPARE(owners, 1);
}

void TestMainWindowLayout::tabsAndLists()
{
    auto *tabs = fixture->window->findChild<QTabWidget *>("SSTab1");
    QVERIFY(tabs);
    QCOMPARE(tabs->count(), 5);
    const QStringList captions = {"&Blocks", "&Textures", "&Sounds", "Setti&ngs", "&Version"};
    for (int i = 0; i < 5; ++i)
        QCOMPARE(tabs->tabText(i), captions.at(i));
    QVERIFY(tabs->widget(3)->findChild<QWidget *>("lstPlaceholderTexture"));
    QVERIFY(tabs->widget(4)->findChild<QWidget *>("fldVersion"));

    const auto headers = [](QTreeWidget *list) {
        QStringList texts;
        for (int i = 0; i < list->columnCount(); ++i)
            texts << list->headerItem()->text(i);
        return texts;
    };
    auto *blocks = tabs->widget(0)->findChild<QTreeWidget *>("BlockList");
    auto *textures = tabs->widget(1)->findChild<QTreeWidget *>("TextureList");
    auto *sounds = tabs->widget(2)->findChild<QTreeWidget *>("SoundList");
    QVERIFY(blocks && textures && sounds);
    QCOMPARE(headers(blocks), QStringList({"File", "Name", "Symbol", "Double", "Type", "BSP", "Size"}));
    QCOMPARE(headers(textures), QStringList({"File", "Size"}));
    QCOMPARE(headers(sounds), QStringList({"File", "Size"}));

    auto *preview = tabs->widget(1)->findChild<QLabel *>("TexturePreview");
    QVERIFY(preview);
    QVERIFY(preview->isHidden());
    QVERIFY(tabs->widget(1)->findChild<QLabel *>("TextureName"));
    QVERIFY(tabs->widget(1)->findChild<QLabel *>("TextureSize"));
}

void TestMainWindowLayout::statusPanels()
{
    fixture->window->show();
    QVERIFY(QTest::qWaitForWindowExposed(fixture->window.get()));
    auto *bar = fixture->window->findChild<QStatusBar *>("StatusBar1");
    QVERIFY(bar);
    const QStringList names = {"stbBlocks", "stbTextures", "stbSounds", "stbVersion", "stbProcess"};
    int lastX = -1;
    for (const QString &name : names) {
        auto *label = bar->findChild<QLabel *>(name);
        QVERIFY2(label, qPrintable(name));
        const int x = label->mapTo(bar, QPoint(0, 0)).x();
        QVERIFY2(x > lastX, qPrintable(name + " stands left to right"));
        lastX = x;
    }
    // The process panel takes the rest of the bar.
    auto *process = bar->findChild<QLabel *>("stbProcess");
    QVERIFY(process->width() > bar->findChild<QLabel *>("stbVersion")->width());
}

void TestMainWindowLayout::loadState()
{
    // Welcome text, caption and the strict-prefix list are there right after load.
    QCOMPARE(fixture->panel("stbProcess"), QString("Welcome to Cubrix 0.9 Beta 1!"));
    QCOMPARE(frmMain::welcomeText(), QString("Welcome to Cubrix 0.9 Beta 1!"));
    QCOMPARE(fixture->window->windowTitle(), QString("Cubrix"));
    for (const char *panel : {"stbBlocks", "stbTextures", "stbSounds", "stbVersion"})
        QCOMPARE(fixture->panel(panel), QString());

    auto *prefixes = fixture->window->findChild<QComboBox *>("lstStrictPrefix");
    QVERIFY(prefixes);
    QCOMPARE(prefixes->count(), 90);
    QCOMPARE(prefixes->itemText(0), QString("."));
    QCOMPARE(prefixes->itemText(1), QString("A"));
    QCOMPARE(prefixes->itemText(89), QString("~"));

    // Settings were initialised in the hive: the defaults are readable at once.
    QVERIFY(fixture->window->settings().getBoolSetting("updateFile"));
    QVERIFY(fixture->window->settings().getBoolSetting("showWarnings"));
    QVERIFY(!fixture->window->settings().getBoolSetting("skipEdit"));
    QVERIFY(fixture->prompts.messages.isEmpty());
}

void TestMainWindowLayout::aboutBox()
{
    fixture->window->show();
    QVERIFY(QTest::qWaitForWindowExposed(fixture->window.get()));
    QStringList aboutTexts;
    QString systemInfo;
    bool systemInfoShown = false;
    QTimer::singleShot(0, this, [&] {
        QWidget *about = QApplication::activeModalWidget();
        if (!about)
            return;
        for (QLabel *label : about->findChildren<QLabel *>())
            aboutTexts << label->text();
        auto *sysInfo = about->findChild<QPushButton *>("cmdSysInfo");
        if (sysInfo) {
            QTimer::singleShot(0, this, [&] {
                QWidget *info = QApplication::activeModalWidget();
                if (!info)
                    return;
                if (auto *text = info->findChild<QPlainTextEdit *>("txtSystemInfo")) {
                    systemInfoShown = true;
                    systemInfo = text->toPlainText();
                }
                info->close();
            });
            sysInfo->click();
        }
        about->close();
    });
    fixture->action("mnuAbout")->trigger();

    QVERIFY(aboutTexts.contains("Cubrix"));
    QVERIFY(aboutTexts.contains("Version 0.9 Beta 1"));
    QVERIFY2(systemInfoShown, "System Info... shows the system's information");
    QVERIFY(systemInfo.contains(QSysInfo::prettyProductName()));
    QVERIFY(systemInfo.contains(QSysInfo::currentCpuArchitecture()));
    QVERIFY(systemInfo.contains(qVersion()));
    // The about box changes nothing and the window is as before.
    QCOMPARE(fixture->window->windowTitle(), QString("Cubrix"));
    QVERIFY(fixture->prompts.messages.isEmpty());
}

void TestMainWindowLayout::screenshots()
{
    const QString folder = qEnvironmentVariable("CUBRIX_SCREENSHOTS");
    if (folder.isEmpty())
        QSKIP("CUBRIX_SCREENSHOTS is not set");
    QDir().mkpath(folder);

    frmMain &window = *fixture->window;
    window.resize(900, 600);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QVERIFY(window.grab().save(folder + "/main_window_empty.png"));

    BlocksetRecipe recipe;
    recipe.name = "Castle";
    recipe.blocks = 12;
    recipe.textures = 3;
    recipe.sounds = 2;
    recipe.version = "1.2";
    QVERIFY(fixture->openBlockset(recipe));
    QCoreApplication::processEvents();
    const QPixmap shot = window.grab();
    QVERIFY(!shot.isNull());
    QVERIFY(shot.save(folder + "/main_window.png"));

    auto *tabs = window.findChild<QTabWidget *>("SSTab1");
    tabs->setCurrentIndex(3);
    QCoreApplication::processEvents();
    QVERIFY(window.grab().save(folder + "/main_window_settings.png"));
    tabs->setCurrentIndex(4);
    QCoreApplication::processEvents();
    QVERIFY(window.grab().save(folder + "/main_window_version.png"));
    tabs->setCurrentIndex(1);
    fixture->action("btnPreviewItem")->trigger();
    QCoreApplication::processEvents();
    QVERIFY(window.grab().save(folder + "/main_window_textures.png"));

    frmNew newDialog(true, true);
    newDialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&newDialog));
    QVERIFY(newDialog.grab().save(folder + "/frmNew.png"));
    newDialog.findChild<QPushButton *>("OKButton")->click();
    frmAbout about(&window);
    about.show();
    QVERIFY(QTest::qWaitForWindowExposed(&about));
    QVERIFY(about.grab().save(folder + "/frmAbout.png"));
}

QTEST_MAIN(TestMainWindowLayout)
#include "test_main_window_layout.moc"
