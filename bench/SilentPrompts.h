#pragma once

#include "common/Prompts.h"
#include "symbols/SymbolPrompt.h"

// The benchmarks' prompts: every question is answered Yes (a message OK), Save As
// gets `target`, the symbol dialogs take what they offer first, and nothing else
// is chosen.
class SilentPrompts : public Prompts, public SymbolPrompt {
public:
    PromptAnswer message(const QString &, const QString &, PromptButtons buttons, PromptIcon) override
    {
        ++shown;
        return buttons == PromptButtons::Ok ? PromptAnswer::Ok : PromptAnswer::Yes;
    }
    int choose(const QString &, const QString &, const QString &, const QStringList &, PromptIcon) override
    {
        return -1;
    }
    QString openFile(const QString &, const QString &, const QString &) override { return {}; }
    QStringList openFiles(const QString &, const QString &, const QString &) override { return {}; }
    QString chooseFolder(const QString &, const QString &) override { return {}; }
    QString saveFile(const QString &, const QString &, const QString &, const QString &) override { return target; }
    NewBlocksetChoice newBlockset(bool, bool) override { return {}; }
    SymbolDialogAnswer symbolDialog(const SymbolDialogSetup &setup) override { return offeredSymbols(setup); }

    QString target;
    int shown = 0;
};
