#include "symbols/SymbolDialogs.h"

#include "symbols/OperationHost.h"
#include "symbols/SymbolScheme.h"

#include <QSet>

using namespace Qt::StringLiterals;

namespace {

// The symbol characters in alphabet order that no row other than `editedRow` uses
// (a row's symbol as `used` takes it), plus `own`, which is always offered.
QStringList freeCharacters(const QList<BlockRow> &blocks, int editedRow, const QString &own,
                           QString (*used)(const BlockRow &))
{
    QSet<QChar> taken;
    for (qsizetype i = 0; i < blocks.size(); ++i) {
        const QString symbol = used(blocks[i]);
        if (i != editedRow && !symbol.isEmpty())
            taken.insert(symbol.back());
    }
    QStringList free;
    for (QChar c : symbolAlphabet()) {
        if (!taken.contains(c) || own == QString(c))
            free.append(QString(c));
    }
    // A symbol read from a file may lie outside the alphabet; it is still the row's own.
    if (!own.isEmpty() && !free.contains(own))
        free.prepend(own);
    return free;
}

QString singleOf(const BlockRow &row)
{
    return row.symbol.size() == 1 ? row.symbol : QString();
}

// A character used behind any prefix is no longer offered behind another.
QString doubleCharOf(const BlockRow &row)
{
    return row.doubleSymbol.size() == 2 ? row.doubleSymbol.right(1) : QString();
}

SymbolDialogSetup setupFor(Prompts &prompts, const BlocksetContent &content, int editedRow)
{
    const QList<BlockRow> &blocks = content.blocks;
    const BlockRow own = editedRow >= 0 ? blocks[editedRow] : BlockRow();
    SymbolDialogSetup setup;

    setup.singles = freeCharacters(blocks, editedRow, singleOf(own), singleOf);
    if (editedRow >= 0 && singleOf(own).isEmpty())
        setup.singles.prepend(QString()); // OK without a change keeps "no symbol"
    setup.singleIndex = setup.singles.isEmpty() ? -1 : int(qMax<qsizetype>(0, setup.singles.indexOf(singleOf(own))));

    const SymbolSettings &symbols = content.symbols;
    setup.strictPrefix = symbols.strictPrefixBoxChecked;
    setup.prefixIndex = qBound(0, symbols.prefixIndex, int(prefixAlphabet().size()) - 1);
    setup.prefix = prefixAlphabet().at(setup.prefixIndex);
    setup.syncDouble = setup.strictPrefix && symbols.syncDoubleBoxChecked;
    if (setup.syncDouble) {
        setup.doubleChars = setup.singles;
        setup.doubleIndex = setup.singleIndex;
    } else if (setup.strictPrefix) {
        setup.doubleChars = freeCharacters(blocks, editedRow, doubleCharOf(own), doubleCharOf);
        setup.doubleIndex =
            setup.doubleChars.isEmpty() ? -1 : int(qMax<qsizetype>(0, setup.doubleChars.indexOf(doubleCharOf(own))));
    } else {
        setup.doubleText = own.doubleSymbol;
    }

    const QList<BlockRow> *rows = &blocks;
    Prompts *asker = &prompts;
    setup.acceptDouble = [asker, rows, editedRow](const QString &text) {
        return checkTypedDouble(*asker, *rows, text, editedRow);
    };
    return setup;
}

} // namespace

SymbolDialogSetup addBlockSetup(Prompts &prompts, const BlocksetContent &content, const QString &fileName)
{
    SymbolDialogSetup setup = setupFor(prompts, content, -1);
    setup.kind = SymbolDialogSetup::AddBlock;
    setup.caption = u"Add symbols for "_s + fileName;
    return setup;
}

SymbolDialogSetup editSymbolsSetup(Prompts &prompts, const BlocksetContent &content, int row)
{
    SymbolDialogSetup setup = setupFor(prompts, content, row);
    setup.kind = SymbolDialogSetup::EditSymbols;
    setup.caption = u"Edit symbols for "_s + content.blocks[row].file;
    return setup;
}

bool checkTypedDouble(Prompts &prompts, const QList<BlockRow> &blocks, const QString &text, int editedRow)
{
    if (!isValidDoubleSymbol(text)) {
        prompts.message(u"Incorrect double character symbol!"_s, u"Incorrect Symbol"_s, PromptButtons::Ok,
                        PromptIcon::Exclamation);
        return false;
    }
    if (isDoubleSymbolUsed(blocks, text, editedRow)) {
        prompts.message(u"The double character symbol is already used!"_s, u"Duplicate Symbol"_s, PromptButtons::Ok,
                        PromptIcon::Exclamation);
        return false;
    }
    return true;
}

bool editSymbols(OperationHost &host, int row)
{
    BlocksetContent &content = host.content();
    if (row < 0 || row >= content.blocks.size())
        return false;
    const SymbolDialogAnswer answer = host.symbolPrompt().symbolDialog(editSymbolsSetup(host.prompts(), content, row));
    if (!answer.accepted)
        return false;
    BlockRow &block = content.blocks[row];
    bool changed = false;
    if (answer.single != block.symbol) {
        block.symbol = answer.single;
        changed = true;
    }
    if (answer.doubleSymbol != block.doubleSymbol) {
        block.doubleSymbol = answer.doubleSymbol;
        changed = true;
    }
    if (changed)
        host.setBlocksetChanged();
    return changed;
}
