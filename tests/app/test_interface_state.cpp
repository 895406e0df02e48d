// The interface state computed from the document: which commands are usable
// on which tab, the caption and the status bar panels, for blocksets opened
// from real archives.

#include "DocumentFixture.h"

#include <QtTest>

namespace {

// Commands governed by checkInterface, without their btn/mnu prefix.
const QStringList kPairs = {
    QStringLiteral("New"),        QStringLiteral("Open"),        QStringLiteral("Close"),
    QStringLiteral("Save"),       QStringLiteral("SaveAs"),      QStringLiteral("AddItem"),
    QStringLiteral("RemoveItem"), QStringLiteral("ReplaceItem"), QStringLiteral("EditItem"),
    QStringLiteral("PreviewItem"), QStringLiteral("AddBSP"),
};

QStringList enabledCommands(const InterfaceState &state)
{
    QStringList names;
    for (const QString &pair : kPairs) {
        const bool button = state.enabled.value(QStringLiteral("btn") + pair, false);
        const bool menu = state.enabled.value(QStringLiteral("mnu") + pair, false);
        if (button != menu)
            names.append(QStringLiteral("mismatch:") + pair);
        else if (button)
            names.append(pair);
    }
    if (state.enabled.value(QStringLiteral("mnuRemapSymbols"), false))
        names.append(QStringLiteral("RemapSymbols"));
    return names;
}

} // namespace

class TestInterfaceState : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void commands_data();
    void commands();
    void everyGovernedCommandIsSet_data();
    void everyGovernedCommandIsSet();
    void caption_data();
    void caption();
    void panels_data();
    void panels();
    void updateGroup_data();
    void updateGroup();

private:
    // Opens the named fixture ("" = nothing open) and shows `tab`.
    void openScenario(DocumentEnv &env, const QString &scenario, int tab = -1);

    QTemporaryDir m_fixtures;
    QMap<QString, QString> m_archives;
};

void TestInterfaceState::initTestCase()
{
    QVERIFY(m_fixtures.isValid());
    const auto make = [this](const QString &name, int blocks, int textures, int sounds, const QString &version) {
        FileMap files;
        QString style = QStringLiteral("<style name=\"%1\"").arg(name);
        if (!version.isEmpty())
            style += QStringLiteral(" version=\"%1\"").arg(version);
        files.insert(name + QStringLiteral(".style"), dosText(style + QStringLiteral(">\n</style>\n")));
        for (int i = 0; i < blocks; ++i)
            files.insert(QStringLiteral("blocks/b%1.block").arg(i, 2, 10, QLatin1Char('0')),
                         blockFile(QStringLiteral("Block %1").arg(i)));
        for (int i = 0; i < textures; ++i)
            files.insert(QStringLiteral("textures/t%1.gif").arg(i), QByteArray("GIF89a"));
        for (int i = 0; i < sounds; ++i)
            files.insert(QStringLiteral("sounds/s%1.wav").arg(i), QByteArray("RIFF"));
        const QString path = m_fixtures.filePath(name + QStringLiteral(".bset"));
        QVERIFY(writeBset(path, files));
        m_archives.insert(name, path);
    };
    make(QStringLiteral("Full"), 89, 1, 1, QString());
    make(QStringLiteral("AlmostFull"), 88, 0, 2, QString());
    make(QStringLiteral("One"), 1, 2, 0, QStringLiteral("0.5 beta"));
    make(QStringLiteral("NoBlocks"), 0, 1, 1, QString());
    make(QStringLiteral("Empty"), 0, 0, 0, QString());
}

void TestInterfaceState::openScenario(DocumentEnv &env, const QString &scenario, int tab)
{
    if (scenario.isEmpty())
        return;
    env.open(m_archives.value(scenario));
    QVERIFY2(env.document.blocksetOpen(), qPrintable(scenario));
    if (tab >= 0)
        env.document.setTab(tab);
}

void TestInterfaceState::commands_data()
{
    QTest::addColumn<QString>("scenario");
    QTest::addColumn<int>("tab");
    QTest::addColumn<bool>("changed");
    QTest::addColumn<QStringList>("enabled");

    const QStringList always = {"New", "Open", "Close", "SaveAs"};
    const QStringList withBlocks = always + QStringList{"AddBSP", "RemapSymbols"};
    const int blocksTab = BlocksetDocument::BlocksTab;
    const int texturesTab = BlocksetDocument::TexturesTab;
    const int soundsTab = BlocksetDocument::SoundsTab;
    const int settingsTab = BlocksetDocument::SettingsTab;

    QTest::newRow("no blockset") << "" << blocksTab << false << QStringList{"New", "Open"};
    QTest::newRow("no blockset, settings tab") << "" << settingsTab << false << QStringList{"New", "Open"};
    QTest::newRow("89 blocks, blocks tab: add disabled")
        << "Full" << blocksTab << false
        << withBlocks + QStringList{"RemoveItem", "ReplaceItem", "EditItem", "PreviewItem"};
    QTest::newRow("89 blocks, textures tab: add enabled")
        << "Full" << texturesTab << false << withBlocks + QStringList{"AddItem", "RemoveItem", "PreviewItem"};
    QTest::newRow("89 blocks, sounds tab: add enabled")
        << "Full" << soundsTab << false << withBlocks + QStringList{"AddItem", "RemoveItem", "PreviewItem"};
    QTest::newRow("89 blocks, settings tab: no item command") << "Full" << settingsTab << false << withBlocks;
    QTest::newRow("89 blocks, changed") << "Full" << blocksTab << true
                                        << withBlocks
                                               + QStringList{"Save", "RemoveItem", "ReplaceItem", "EditItem",
                                                             "PreviewItem"};
    QTest::newRow("88 blocks, blocks tab: add enabled")
        << "AlmostFull" << blocksTab << false
        << withBlocks + QStringList{"AddItem", "RemoveItem", "ReplaceItem", "EditItem", "PreviewItem"};
    QTest::newRow("no textures, textures tab") << "AlmostFull" << texturesTab << false
                                               << withBlocks + QStringList{"AddItem"};
    QTest::newRow("no sounds, sounds tab") << "One" << soundsTab << false << withBlocks + QStringList{"AddItem"};
    QTest::newRow("1 block, textures tab") << "One" << texturesTab << false
                                           << withBlocks + QStringList{"AddItem", "RemoveItem", "PreviewItem"};
    QTest::newRow("no blocks, blocks tab") << "NoBlocks" << blocksTab << false << always + QStringList{"AddItem"};
    QTest::newRow("no blocks, sounds tab") << "NoBlocks" << soundsTab << false
                                           << always + QStringList{"AddItem", "RemoveItem", "PreviewItem"};
    QTest::newRow("no items, settings tab") << "Empty" << settingsTab << false << always;
    QTest::newRow("no items, changed") << "Empty" << settingsTab << true << always + QStringList{"Save"};
}

void TestInterfaceState::commands()
{
    QFETCH(QString, scenario);
    QFETCH(int, tab);
    QFETCH(bool, changed);
    QFETCH(QStringList, enabled);

    DocumentEnv env;
    openScenario(env, scenario, tab);
    if (changed)
        env.document.editStyleValue(StyleField::Copyright, QStringLiteral("mine"));
    env.document.setTab(tab);

    QStringList actual = enabledCommands(computeInterfaceState(env.document, true));
    actual.sort();
    enabled.sort();
    QCOMPARE(actual, enabled);
}

void TestInterfaceState::everyGovernedCommandIsSet_data()
{
    QTest::addColumn<QString>("scenario");
    QTest::newRow("no blockset") << "";
    QTest::newRow("blockset open") << "One";
}

// The window applies the state to exactly these commands; a missing one would
// keep a stale enabled state, and the manager, options, about and exit
// commands are never touched.
void TestInterfaceState::everyGovernedCommandIsSet()
{
    QFETCH(QString, scenario);

    DocumentEnv env;
    openScenario(env, scenario);
    const InterfaceState state = computeInterfaceState(env.document, false);

    QStringList expected;
    for (const QString &pair : kPairs)
        expected << QStringLiteral("btn") + pair << QStringLiteral("mnu") + pair;
    expected << QStringLiteral("mnuRemapSymbols");
    expected.sort();
    QStringList keys = state.enabled.keys();
    keys.sort();
    QCOMPARE(keys, expected);
}

void TestInterfaceState::caption_data()
{
    QTest::addColumn<QString>("steps");
    QTest::addColumn<QString>("caption");

    QTest::newRow("nothing open") << "" << "Cubrix";
    QTest::newRow("opened") << "open" << "Cubrix - One.bset";
    QTest::newRow("style edited") << "open,style" << "Cubrix - One.bset*";
    QTest::newRow("only update comment edited") << "open,update" << "Cubrix - One.bset*";
    QTest::newRow("saved again") << "open,style,save" << "Cubrix - One.bset";
    QTest::newRow("new blockset") << "new" << "Cubrix - Untitled";
    QTest::newRow("closed") << "open,close" << "Cubrix";
}

void TestInterfaceState::caption()
{
    QFETCH(QString, steps);
    QFETCH(QString, caption);

    DocumentEnv env;
    QTemporaryDir copy;
    const QString path = copy.filePath(QStringLiteral("One.bset"));
    QVERIFY(QFile::copy(m_archives.value(QStringLiteral("One")), path));
    for (const QString &step : steps.split(u',', Qt::SkipEmptyParts)) {
        if (step == QLatin1String("open")) {
            env.open(path);
        } else if (step == QLatin1String("style")) {
            env.document.editStyleValue(StyleField::Name, QStringLiteral("Other"));
        } else if (step == QLatin1String("update")) {
            env.document.editUpdateComment(QStringLiteral("note"));
        } else if (step == QLatin1String("save")) {
            QVERIFY(env.document.saveBlockset());
        } else if (step == QLatin1String("new")) {
            env.prompts.newAnswers = {NewBlocksetChoice()};
            env.document.newBlockset();
        } else if (step == QLatin1String("close")) {
            env.document.closeBlockset();
        }
    }
    QVERIFY(env.prompts.messages.isEmpty());
    QCOMPARE(computeInterfaceState(env.document, true).caption, caption);
}

void TestInterfaceState::panels_data()
{
    QTest::addColumn<QString>("scenario");
    QTest::addColumn<QString>("blocks");
    QTest::addColumn<QString>("textures");
    QTest::addColumn<QString>("sounds");
    QTest::addColumn<QString>("version");

    QTest::newRow("nothing open") << "" << "" << "" << "" << "";
    QTest::newRow("89 blocks") << "Full" << "89 Blocks" << "1 Texture" << "1 Sound" << "No Version";
    QTest::newRow("88 blocks") << "AlmostFull" << "88 Blocks" << "No Textures" << "2 Sounds" << "No Version";
    QTest::newRow("one block") << "One" << "1 Block" << "2 Textures" << "No Sounds" << "0.5 beta";
    QTest::newRow("no blocks") << "NoBlocks" << "No Blocks" << "1 Texture" << "1 Sound" << "No Version";
    QTest::newRow("no items") << "Empty" << "No Blocks" << "No Textures" << "No Sounds" << "No Version";
}

void TestInterfaceState::panels()
{
    QFETCH(QString, scenario);
    QFETCH(QString, blocks);
    QFETCH(QString, textures);
    QFETCH(QString, sounds);
    QFETCH(QString, version);

    DocumentEnv env;
    openScenario(env, scenario);
    const InterfaceState state = computeInterfaceState(env.document, true);
    QCOMPARE(state.blocksPanel, blocks);
    QCOMPARE(state.texturesPanel, textures);
    QCOMPARE(state.soundsPanel, sounds);
    QCOMPARE(state.versionPanel, version);

    if (!scenario.isEmpty()) {
        // An edited version shows at once; emptied, the panel says so.
        env.document.editStyleValue(StyleField::Version, QStringLiteral("3.1"));
        QCOMPARE(computeInterfaceState(env.document, true).versionPanel, QStringLiteral("3.1"));
        env.document.editStyleValue(StyleField::Version, QString());
        QCOMPARE(computeInterfaceState(env.document, true).versionPanel, QStringLiteral("No Version"));
    }
}

void TestInterfaceState::updateGroup_data()
{
    QTest::addColumn<QString>("scenario");
    QTest::addColumn<bool>("updateFile");

    QTest::newRow("open, setting on") << "One" << true;
    QTest::newRow("open, setting off") << "One" << false;
    QTest::newRow("nothing open, setting on") << "" << true;
    QTest::newRow("nothing open, setting off") << "" << false;
}

void TestInterfaceState::updateGroup()
{
    QFETCH(QString, scenario);
    QFETCH(bool, updateFile);

    DocumentEnv env;
    openScenario(env, scenario);
    QCOMPARE(computeInterfaceState(env.document, updateFile).updateGroupEnabled, updateFile);
}

QTEST_GUILESS_MAIN(TestInterfaceState)
#include "test_interface_state.moc"
