// The interface state computed from the document: which commands are usable
// on which tab, the caption and the status bar panels, for blocksets opened
// from real archives.

#include "DocumentFixture.h"

namespace {

// Commands governed by checkInterface, without their btn/mnu prefix.
const QStringList kPairs = {"New", "Open", "Close", "Save", "SaveAs", "AddItem", "RemoveItem", "ReplaceItem",
                            "EditItem", "PreviewItem", "AddBSP"};

// The enabled commands, sorted; a command the state leaves unset, or whose
// button and menu entry differ, shows up as a mismatch.
QStringList enabledCommands(const InterfaceState &state)
{
    QStringList names;
    for (const QString &pair : kPairs + QStringList{"RemapSymbols"}) {
        const QString button = (pair == "RemapSymbols" ? "mnu" : "btn") + pair;
        const QString menu = "mnu" + pair;
        if (!state.enabled.contains(button) || !state.enabled.contains(menu) || state.enabled[button] != state.enabled[menu])
            names.append("mismatch:" + pair);
        else if (state.enabled[button])
            names.append(pair);
    }
    if (state.enabled.size() != 2 * kPairs.size() + 1) // manager, options, about and exit are never touched
        names.append("unexpected commands");
    names.sort();
    return names;
}

} // namespace

class TestInterfaceState : public QObject {
    Q_OBJECT

private slots:
    void initTestCase()
    {
        const auto make = [this](const QString &name, int blocks, int textures, int sounds, const QString &version) {
            FileMap files{{name + ".style", dosText(QStringLiteral("<style name=\"%1\" version=\"%2\">\n</style>\n").arg(name, version))}};
            for (int i = 0; i < blocks; ++i)
                files.insert(QStringLiteral("blocks/b%1.block").arg(i, 2, 10, QLatin1Char('0')), blockFile(QStringLiteral("Block %1").arg(i)));
            for (int i = 0; i < textures; ++i)
                files.insert(QStringLiteral("textures/t%1.gif").arg(i), QByteArray("GIF89a"));
            for (int i = 0; i < sounds; ++i)
                files.insert(QStringLiteral("sounds/s%1.wav").arg(i), QByteArray("RIFF"));
            QVERIFY(writeBset(m_fixtures.filePath(name + ".bset"), files));
        };
        make("Full", 89, 1, 1, QString());
        make("AlmostFull", 88, 0, 2, QString());
        make("One", 1, 2, 0, "0.5 beta");
        make("Empty", 0, 0, 0, QString());
    }

    void commands_data()
    {
        QTest::addColumn<QString>("scenario");
        QTest::addColumn<int>("tab");
        QTest::addColumn<QString>("edit"); // "", "style" or "update"
        QTest::addColumn<QStringList>("enabled");
        QTest::addColumn<QString>("caption");

        const QStringList always = {"New", "Open", "Close", "SaveAs"};
        const QStringList withBlocks = always + QStringList{"AddBSP", "RemapSymbols"};
        const QStringList blockItems = {"RemoveItem", "ReplaceItem", "EditItem", "PreviewItem"};
        const int blocksTab = BlocksetDocument::TabBlocks;
        const int texturesTab = BlocksetDocument::TabTextures;

        QTest::newRow("no blockset") << "" << blocksTab << "" << QStringList{"New", "Open"} << "Cubrix";
        QTest::newRow("89 blocks, blocks tab: add disabled") << "Full" << blocksTab << "" << withBlocks + blockItems
                                                            << "Cubrix - Full.bset";
        QTest::newRow("89 blocks, textures tab: add enabled")
            << "Full" << texturesTab << "" << withBlocks + QStringList{"AddItem", "RemoveItem", "PreviewItem"} << "Cubrix - Full.bset";
        QTest::newRow("89 blocks, settings tab: no item command")
            << "Full" << int(BlocksetDocument::TabSettings) << "" << withBlocks << "Cubrix - Full.bset";
        QTest::newRow("88 blocks, style edited") << "AlmostFull" << blocksTab << "style"
                                                 << withBlocks + blockItems + QStringList{"AddItem", "Save"} << "Cubrix - AlmostFull.bset*";
        QTest::newRow("no textures, textures tab") << "AlmostFull" << texturesTab << "" << withBlocks + QStringList{"AddItem"}
                                                   << "Cubrix - AlmostFull.bset";
        QTest::newRow("no sounds, sounds tab, only the update comment edited")
            << "One" << int(BlocksetDocument::TabSounds) << "update" << withBlocks + QStringList{"AddItem", "Save"} << "Cubrix - One.bset*";
        QTest::newRow("no blocks, blocks tab") << "Empty" << blocksTab << "" << always + QStringList{"AddItem"} << "Cubrix - Empty.bset";
    }

    void commands()
    {
        QFETCH(QString, scenario);
        QFETCH(QString, edit);
        QFETCH(QStringList, enabled);
        DocumentEnv env;
        openScenario(env, scenario);
        if (edit == "style")
            env.document.editStyleValue(StyleField::Copyright, QStringLiteral("mine"));
        else if (edit == "update")
            env.document.editUpdateComment(QStringLiteral("note"));
        QFETCH(int, tab);
        env.document.setTab(tab);

        const InterfaceState state = computeInterfaceState(env.document, true);
        enabled.sort();
        QCOMPARE(enabledCommands(state), enabled);
        QTEST(state.caption, "caption");
    }

    void panels_data()
    {
        QTest::addColumn<QString>("scenario");
        QTest::addColumn<QStringList>("panels"); // blocks, textures, sounds, version
        QTest::newRow("nothing open") << "" << QStringList{"", "", "", ""};
        QTest::newRow("89 blocks") << "Full" << QStringList{"89 Blocks", "1 Texture", "1 Sound", "No Version"};
        QTest::newRow("one block") << "One" << QStringList{"1 Block", "2 Textures", "No Sounds", "0.5 beta"};
        QTest::newRow("no items") << "Empty" << QStringList{"No Blocks", "No Textures", "No Sounds", "No Version"};
    }

    void panels()
    {
        QFETCH(QString, scenario);
        DocumentEnv env;
        openScenario(env, scenario);
        const InterfaceState state = computeInterfaceState(env.document, true);
        QTEST(QStringList({state.blocksPanel, state.texturesPanel, state.soundsPanel, state.versionPanel}), "panels");
        // The update group follows the setting alone, blockset open or not.
        QVERIFY(state.updateGroupEnabled && !computeInterfaceState(env.document, false).updateGroupEnabled);
        if (scenario.isEmpty())
            return;
        // An edited version shows at once; emptied, the panel says so.
        env.document.editStyleValue(StyleField::Version, QStringLiteral("3.1"));
        QCOMPARE(computeInterfaceState(env.document, true).versionPanel, QStringLiteral("3.1"));
        env.document.editStyleValue(StyleField::Version, QString());
        QCOMPARE(computeInterfaceState(env.document, true).versionPanel, QStringLiteral("No Version"));
    }

private:
    // Opens the named fixture ("" = nothing open).
    void openScenario(DocumentEnv &env, const QString &scenario)
    {
        if (scenario.isEmpty())
            return;
        env.open(m_fixtures.filePath(scenario + ".bset"));
        QVERIFY2(env.document.blocksetOpen(), qPrintable(scenario));
    }

    QTemporaryDir m_fixtures;
};

QTEST_GUILESS_MAIN(TestInterfaceState)
#include "test_interface_state.moc"
