#include "symbols/StrictPrefix.h"

#include "common/Prompts.h"
#include "common/RegistryWrapper.h"
#include "symbols/OperationHost.h"
#include "symbols/SymbolScheme.h"

using namespace Qt::StringLiterals;

bool doublesFollowSingles(const QList<BlockRow> &blocks)
{
    for (const BlockRow &row : blocks) {
        if (row.doubleSymbol.size() != 2 || row.doubleSymbol.front() != blocks.first().doubleSymbol.front()
            || QStringView(row.doubleSymbol).sliced(1) != row.symbol)
            return false;
    }
    return true;
}

void strictPrefixClicked(SymbolSettings &symbols, const QList<BlockRow> &blocks, bool checked, bool syncDoubleSetting)
{
    symbols.strictPrefixBoxChecked = checked;
    symbols.prefixListEnabled = checked;
    if (!checked) {
        // Sync double can never be on while strict prefix is off.
        symbols.syncDoubleBoxChecked = false;
        symbols.syncDoubleBoxEnabled = false;
        return;
    }
    if ((symbols.blocksetStrictPrefix && symbols.blocksetSyncDouble) || doublesFollowSingles(blocks)) {
        symbols.syncDoubleBoxEnabled = true;
        symbols.syncDoubleBoxChecked = syncDoubleSetting;
    }
}

int remapPrefix(OperationHost &host, std::optional<int> &remembered, int chosen)
{
    const int count = int(prefixAlphabet().size());
    SymbolSettings &symbols = host.content().symbols;
    if (chosen < 0 || chosen >= count)
        return symbols.prefixIndex;
    if (!remembered || *remembered == chosen || host.content().blocks.isEmpty()) {
        // Nothing to remap: the list simply shows the new entry.
        symbols.prefixIndex = chosen;
        return chosen;
    }

    if (host.settings().getBoolSetting(u"showWarnings"_s)
        && host.prompts().message(u"Do you want to remap all double character symbols to match the new prefix?"_s,
                                  u"Remap Prefix"_s, PromptButtons::YesNo, PromptIcon::Question)
               != PromptAnswer::Yes) {
        symbols.prefixIndex = *remembered;
        return *remembered;
    }

    const QString prefix = prefixAlphabet().mid(chosen, 1);
    for (BlockRow &row : host.content().blocks) {
        if (row.doubleSymbol.size() == 2)
            row.doubleSymbol = prefix + row.doubleSymbol.mid(1);
    }
    symbols.prefixIndex = chosen;
    remembered = chosen;
    host.setBlocksetChanged();
    return chosen;
}
