// Which commands are usable on which tab, the caption and the status bar
// panels, computed from plain facts about the open blockset.

#include "app/BlocksetDocument.h"
#include "app/InterfaceState.h"
#include "support/DataRows.h"

#include <QtTest>

namespace {

// Commands governed by checkInterface, without their btn/mnu prefix.
const QStringList kPairs = {"New",         "Open",     "Close",       "Save",   "SaveAs", "AddItem", "RemoveItem",
                            "ReplaceItem", "EditItem", "PreviewItem", "AddBSP", "Undo",   "Redo"};
// Commands of the menu alone.
const QStringList kMenuOnly = {"RemapSymbols", "ExportItem"};

// The enabled commands, sorted; a command the state leaves unset, or whose
// button and menu entry differ, shows up as a mismatch.
QStringList enabledCommands(const InterfaceState &state)
{
    QStringList names;
    for (const QString &pair : kPairs + kMenuOnly) {
        const QString button = (kMenuOnly.contains(pair) ? "mnu" : "btn") + pair;
        const QString menu = "mnu" + pair;
        if (!state.enabled.contains(button) || !state.enabled.contains(menu)
            || state.enabled[button] != state.enabled[menu])
            names.append("mismatch:" + pair);
        else if (state.enabled[button])
            names.append(pair);
    }
    if (state.enabled.size()
        != 2 * kPairs.size() + kMenuOnly.size()) // manager, options, about and exit are never touched
        names.append("unexpected commands");
    names.sort();
    return names;
}

InterfaceFacts openFacts(int blocks, int textures, int sounds, int tab, bool changed, const QString &version = {})
{
    InterfaceFacts facts;
    facts.blocksetOpen = true;
    facts.tab = tab;
    facts.blocks = blocks;
    facts.textures = textures;
    facts.sounds = sounds;
    facts.changed = changed;
    facts.fileName = QStringLiteral("World.bset");
    facts.versionText = version;
    facts.updateFileSetting = true;
    return facts;
}

} // namespace

Q_DECLARE_METATYPE(InterfaceFacts)

class TestInterfaceState : public QObject {
    Q_OBJECT

private slots:
    void commands_data()
    {
        addColumns<InterfaceFacts, QStringList, QString>("facts", "enabled", "caption");

        const QStringList always = {"New", "Open", "Close", "SaveAs"};
        const QStringList withBlocks = always + QStringList{"AddBSP", "RemapSymbols"};
        const QStringList blockItems = {"RemoveItem", "ReplaceItem", "EditItem", "PreviewItem", "ExportItem"};
        const int blocksTab = BlocksetDocument::TabBlocks;
        const int texturesTab = BlocksetDocument::TabTextures;
        const QString clean = "Cubrix - World.bset";
        const QString edited = "Cubrix - World.bset*";

        addRow("no blockset", InterfaceFacts{}, QStringList{"New", "Open"}, "Cubrix");
        addRow("89 blocks, blocks tab: add disabled", openFacts(89, 1, 1, blocksTab, false), withBlocks + blockItems,
               clean);
        addRow("89 blocks, textures tab: add enabled", openFacts(89, 1, 1, texturesTab, false),
               withBlocks + QStringList{"AddItem", "RemoveItem", "PreviewItem", "ExportItem"}, clean);
        addRow("89 blocks, settings tab: no item command", openFacts(89, 1, 1, BlocksetDocument::TabSettings, false),
               withBlocks, clean);
        addRow("88 blocks, changed", openFacts(88, 0, 2, blocksTab, true),
               withBlocks + blockItems + QStringList{"AddItem", "Save"}, edited);
        addRow("no sounds, sounds tab, changed", openFacts(1, 2, 0, BlocksetDocument::TabSounds, true),
               withBlocks + QStringList{"AddItem", "Save"}, edited);
        InterfaceFacts undone = openFacts(0, 0, 0, blocksTab, false);
        undone.redoName = "Remove Block";
        addRow("a step undone: redo only", undone, always + QStringList{"AddItem", "Redo"}, clean);
        addRow("no blocks, blocks tab", openFacts(0, 0, 0, blocksTab, false), always + QStringList{"AddItem"}, clean);
    }

    void commands()
    {
        QFETCH(InterfaceFacts, facts);
        QFETCH(QStringList, enabled);
        const InterfaceState state = computeInterfaceState(facts);
        enabled.sort();
        QCOMPARE(enabledCommands(state), enabled);
        QTEST(state.caption, "caption");
        QCOMPARE(state.redoText, facts.redoName.isEmpty() ? "&Redo" : "&Redo " + facts.redoName);
    }

    void panels_data()
    {
        QTest::addColumn<InterfaceFacts>("facts");
        QTest::addColumn<QStringList>("panels"); // blocks, textures, sounds, version
        const int tab = BlocksetDocument::TabBlocks;
        addRow("nothing open", InterfaceFacts{}, QStringList{"", "", "", ""});
        addRow("89 blocks", openFacts(89, 1, 1, tab, false),
               QStringList{"89 Blocks", "1 Texture", "1 Sound", "No Version"});
        addRow("one block", openFacts(1, 2, 0, tab, false, "0.5 beta"),
               QStringList{"1 Block", "2 Textures", "No Sounds", "0.5 beta"});
        addRow("no items", openFacts(0, 0, 0, tab, false),
               QStringList{"No Blocks", "No Textures", "No Sounds", "No Version"});
    }

    void panels()
    {
        QFETCH(InterfaceFacts, facts);
        facts.updateFileSetting = true;
        const InterfaceState state = computeInterfaceState(facts);
        QTEST(QStringList({state.blocksPanel, state.texturesPanel, state.soundsPanel, state.versionPanel}), "panels");
        // The update group follows the setting alone, blockset open or not.
        facts.updateFileSetting = false;
        QVERIFY(state.updateGroupEnabled && !computeInterfaceState(facts).updateGroupEnabled);
    }
};

QTEST_GUILESS_MAIN(TestInterfaceState)
#include "test_interface_state.moc"
