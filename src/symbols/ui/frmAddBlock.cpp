#include "symbols/ui/frmAddBlock.h"

using namespace Qt::StringLiterals;

frmAddBlock::frmAddBlock(const SymbolDialogSetup &setup, QWidget *parent) : SymbolDialog(setup, parent)
{
    setObjectName(u"frmAddBlock"_s);
}
