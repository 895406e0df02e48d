#include "symbols/SymbolPrompt.h"

QString strictDoubleSymbol(const SymbolDialogSetup &setup, int doubleIndex)
{
    if (doubleIndex < 0 || doubleIndex >= setup.doubleChars.size() || setup.doubleChars[doubleIndex].isEmpty())
        return QString();
    return setup.prefix + setup.doubleChars[doubleIndex];
}

SymbolDialogAnswer offeredSymbols(const SymbolDialogSetup &setup)
{
    SymbolDialogAnswer answer;
    answer.accepted = true;
    answer.single = setup.singles.value(setup.singleIndex);
    answer.doubleSymbol = setup.strictPrefix ? strictDoubleSymbol(setup, setup.doubleIndex) : setup.doubleText;
    return answer;
}
