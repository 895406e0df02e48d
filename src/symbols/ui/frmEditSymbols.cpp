#include "symbols/ui/frmEditSymbols.h"

#include <QPushButton>

using namespace Qt::StringLiterals;

frmEditSymbols::frmEditSymbols(const SymbolDialogSetup &setup, Prompts &prompts, QWidget *parent)
    : SymbolDialog(setup, parent)
{
    setObjectName(u"frmEditSymbols"_s);
    btnEditBlock = new QPushButton(u"&Edit Block..."_s, this);
    btnEditBlock->setObjectName(u"btnEditBlock"_s);
    btnEditBlock->setAutoDefault(false);
    connect(btnEditBlock, &QPushButton::clicked, this, [&prompts] {
        prompts.message(u"Yet not implemented in this version"_s, u"Oops..."_s, PromptButtons::Ok, PromptIcon::None);
    });
    addButton(btnEditBlock);
}
