#include "symbols/RemapSymbols.h"

#include "common/Prompts.h"
#include "common/RegistryWrapper.h"
#include "symbols/OperationHost.h"
#include "symbols/RemapDialog.h"
#include "symbols/SymbolScheme.h"

using namespace Qt::StringLiterals;

namespace {

bool confirm(OperationHost &host, const QString &question)
{
    if (!host.settings().getBoolSetting(u"showWarnings"_s))
        return true;
    return host.prompts().message(question, u"Remap All Symbols"_s, PromptButtons::YesNo, PromptIcon::Question)
           == PromptAnswer::Yes;
}

QString prefixAt(int prefixIndex)
{
    const QString &prefixes = prefixAlphabet();
    return prefixes.mid(qBound(0, prefixIndex, int(prefixes.size()) - 1), 1);
}

// After either method the blockset is in strict prefix and sync double mode with
// the chosen prefix, and the settings page shows exactly that.
void enterSyncedMode(SymbolSettings &symbols, int prefixIndex)
{
    symbols.blocksetStrictPrefix = true;
    symbols.blocksetSyncDouble = true;
    symbols.prefixIndex = qBound(0, prefixIndex, int(prefixAlphabet().size()) - 1);
    symbols.strictPrefixBoxChecked = true;
    symbols.strictPrefixBoxEnabled = true;
    symbols.prefixListEnabled = true;
    symbols.syncDoubleBoxChecked = true;
    symbols.syncDoubleBoxEnabled = true;
}

} // namespace

bool remapAllSymbols(OperationHost &host, int prefixIndex)
{
    if (!confirm(host, u"Are you sure to remap all symbols?"_s))
        return false;

    const QString prefix = prefixAt(prefixIndex);
    const QString &alphabet = symbolAlphabet();
    bool overflow = false;
    QList<BlockRow> &blocks = host.content().blocks;
    for (qsizetype i = 0; i < blocks.size(); ++i) {
        if (i < alphabet.size()) {
            blocks[i].symbol = alphabet.mid(i, 1);
            blocks[i].doubleSymbol = prefix + blocks[i].symbol;
        } else {
            blocks[i].symbol.clear();
            blocks[i].doubleSymbol.clear();
            overflow = true;
        }
    }
    host.setBlocksetChanged();
    if (overflow) {
        host.prompts().message(u"There are more than "_s + QString::number(blockLimit())
                                   + u" blocks in the blockset!"_s,
                               u"Too many blocks"_s, PromptButtons::Ok, PromptIcon::Exclamation);
    }
    enterSyncedMode(host.content().symbols, prefixIndex);
    return true;
}

bool syncDoubleSymbols(OperationHost &host, int prefixIndex)
{
    if (!confirm(host, u"Are you sure to remap all double character symbols?"_s))
        return false;

    const QString prefix = prefixAt(prefixIndex);
    bool undefined = false;
    for (BlockRow &row : host.content().blocks) {
        if (row.symbol.isEmpty()) {
            undefined = true;
            continue;
        }
        row.doubleSymbol = prefix + row.symbol;
        host.setBlocksetChanged();
    }
    if (undefined) {
        // One carriage return between the sentences, as the message always had.
        host.prompts().message(
            u"There were undefined single character symbols!\rBe sure to correct those entries manually."_s,
            u"Undefined symbols"_s, PromptButtons::Ok, PromptIcon::Exclamation);
    }
    enterSyncedMode(host.content().symbols, prefixIndex);
    return true;
}

bool remapSymbolsCommand(OperationHost &host, RemapDialog &dialog)
{
    return dialog.run([&host](const RemapChoice &choice) {
        return choice.method == RemapChoice::RemapAll ? remapAllSymbols(host, choice.prefixIndex)
                                                      : syncDoubleSymbols(host, choice.prefixIndex);
    });
}
