#include "app/InterfaceState.h"

#include "app/BlocksetDocument.h"
#include "symbols/SymbolScheme.h"

using namespace Qt::StringLiterals;

namespace {

QString countText(int count, const QString &none, const QString &one, const QString &many)
{
    if (count == 0)
        return none;
    if (count == 1)
        return one;
    return QString::number(count) + many;
}

void setPair(InterfaceState &state, const QString &command, bool enabled)
{
    state.enabled.insert(u"btn"_s + command, enabled);
    state.enabled.insert(u"mnu"_s + command, enabled);
}

} // namespace

InterfaceFacts interfaceFacts(const BlocksetDocument &document, bool updateFileSetting)
{
    InterfaceFacts facts;
    facts.blocksetOpen = document.blocksetOpen();
    facts.tab = document.tab();
    facts.blocks = document.blockCount();
    facts.textures = document.textureCount();
    facts.sounds = document.soundCount();
    facts.changed = document.isChanged();
    facts.readOnly = document.readOnly();
    facts.fileName = document.blocksetFileName();
    facts.versionText = document.versionText();
    facts.updateFileSetting = updateFileSetting;
    return facts;
}

InterfaceState computeInterfaceState(const InterfaceFacts &facts)
{
    InterfaceState state;
    state.updateGroupEnabled = facts.updateFileSetting;

    if (!facts.blocksetOpen) {
        setPair(state, u"New"_s, true);
        setPair(state, u"Open"_s, true);
        for (const QString &command : {u"Close"_s, u"Save"_s, u"SaveAs"_s, u"AddItem"_s, u"RemoveItem"_s,
                                       u"ReplaceItem"_s, u"EditItem"_s, u"PreviewItem"_s, u"AddBSP"_s})
            setPair(state, command, false);
        state.enabled.insert(u"mnuRemapSymbols"_s, false);
        state.caption = u"Cubrix"_s;
        return state;
    }

    const int tab = facts.tab;
    const int blocks = facts.blocks;
    const bool onBlocks = tab == BlocksetDocument::TabBlocks;
    const bool onTextures = tab == BlocksetDocument::TabTextures;
    const bool onSounds = tab == BlocksetDocument::TabSounds;

    for (const QString &command : {u"New"_s, u"Open"_s, u"Close"_s, u"SaveAs"_s})
        setPair(state, command, true);
    setPair(state, u"AddBSP"_s, blocks >= 1);
    state.enabled.insert(u"mnuRemapSymbols"_s, blocks >= 1);
    setPair(state, u"Save"_s, facts.changed && !facts.readOnly);
    setPair(state, u"AddItem"_s, (onBlocks && blocks < blockLimit()) || onTextures || onSounds);
    const bool hasItems =
        (onBlocks && blocks >= 1) || (onTextures && facts.textures >= 1) || (onSounds && facts.sounds >= 1);
    setPair(state, u"RemoveItem"_s, hasItems);
    setPair(state, u"PreviewItem"_s, hasItems);
    setPair(state, u"ReplaceItem"_s, onBlocks && blocks >= 1);
    setPair(state, u"EditItem"_s, onBlocks && blocks >= 1);

    state.caption = u"Cubrix - "_s + facts.fileName + (facts.changed ? u"*"_s : QString())
                    + (facts.readOnly ? u" (read-only)"_s : QString());
    state.blocksPanel = countText(blocks, u"No Blocks"_s, u"1 Block"_s, u" Blocks"_s);
    state.texturesPanel = countText(facts.textures, u"No Textures"_s, u"1 Texture"_s, u" Textures"_s);
    state.soundsPanel = countText(facts.sounds, u"No Sounds"_s, u"1 Sound"_s, u" Sounds"_s);
    state.versionPanel = facts.versionText.isEmpty() ? u"No Version"_s : facts.versionText;
    return state;
}
