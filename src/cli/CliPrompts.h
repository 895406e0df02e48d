#pragma once

#include "common/Prompts.h"
#include "symbols/SymbolPrompt.h"

#include <QList>
#include <QString>

// The prompts of cubrix-cli: no one sits at a terminal to answer, so every
// question is answered from the command line (Yes, or No with --no), every
// message is recorded in the order it was shown, and the file dialogs return
// the files named on the command line.
class CliPrompts : public Prompts, public SymbolPrompt {
public:
    struct Message {
        QString text;
        QString title;
        PromptButtons buttons = PromptButtons::Ok;
        PromptIcon icon = PromptIcon::None;
        QString detail;
    };

    explicit CliPrompts(bool answerNo = false) : m_answerNo(answerNo) {}

    PromptAnswer message(const QString &text, const QString &title, PromptButtons buttons, PromptIcon icon) override;
    PromptAnswer message(const QString &text, const QString &title, const QString &detail, PromptButtons buttons,
                         PromptIcon icon) override;
    // The command line has no such buttons: Cancel, recorded as a message.
    int choose(const QString &text, const QString &title, const QString &detail, const QStringList &buttons,
               PromptIcon icon) override;
    // The next of the paths set with setOpenAnswers, or "" (cancelled) when none is left.
    QString openFile(const QString &title, const QString &filter, const QString &folder) override;
    // The next of the lists set with setMultiOpenAnswers, or none (cancelled).
    QStringList openFiles(const QString &title, const QString &filter, const QString &folder) override;
    // The target given on the command line (see setSaveTarget).
    QString saveFile(const QString &title, const QString &filter, const QString &defaultExt,
                     const QString &folder) override;
    // The New Blockset dialog as it first shows: empty name and version, the
    // symbol boxes from the user settings, the first prefix entry.
    NewBlocksetChoice newBlockset(bool strictPrefixSetting, bool syncDoubleSetting) override;
    // OK with the symbols the dialog offers first, or with the choice set by
    // chooseSymbols when the dialog offers it; otherwise the dialog is cancelled
    // and symbolError() says why.
    SymbolDialogAnswer symbolDialog(const SymbolDialogSetup &setup) override;

    void setSaveTarget(const QString &path) { m_saveTarget = path; }
    void setOpenAnswers(const QStringList &paths) { m_openAnswers = paths; }
    void setMultiOpenAnswers(const QList<QStringList> &lists) { m_multiOpenAnswers = lists; }
    void chooseSymbols(const QString &single, const QString &doubleSymbol);
    QString symbolError() const { return m_symbolError; }

    const QList<Message> &messages() const { return m_messages; }
    // Number of messages shown so far; messages from `first` on are the ones a
    // command showed after that point.
    qsizetype messageCount() const { return m_messages.size(); }

private:
    bool m_answerNo;
    QString m_saveTarget;
    QStringList m_openAnswers;
    QList<QStringList> m_multiOpenAnswers;
    bool m_symbolsChosen = false;
    QString m_chosenSingle;
    QString m_chosenDouble;
    QString m_symbolError;
    QList<Message> m_messages;
};
