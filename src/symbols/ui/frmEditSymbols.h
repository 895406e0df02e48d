#pragma once

#include "symbols/ui/SymbolDialog.h"

class Prompts;

// "Edit Symbols": the symbols of the selected block, its own offered and selected
// so that OK without a change keeps them. "Edit Block..." has nothing to do yet.
class frmEditSymbols : public SymbolDialog {
    Q_OBJECT

public:
    frmEditSymbols(const SymbolDialogSetup &setup, Prompts &prompts, QWidget *parent = nullptr);

private:
    QPushButton *btnEditBlock;
};
