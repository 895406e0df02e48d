#pragma once

#include "symbols/ui/SymbolDialog.h"

// "Add Block": the symbols of a block file about to be added. Cancel leaves the
// block out.
class frmAddBlock : public SymbolDialog {
    Q_OBJECT

public:
    frmAddBlock(const SymbolDialogSetup &setup, QWidget *parent = nullptr);
};
