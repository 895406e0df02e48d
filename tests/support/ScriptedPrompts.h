#pragma once

#include "common/Prompts.h"
#include "symbols/SymbolPrompt.h"

#include <QList>
#include <QString>
#include <QStringList>

// Prompts for tests: records every message and dialog and answers from queues
// the test fills beforehand. A prompt with no queued answer fails the test
// (it is recorded in `unexpected`, and QVERIFY(prompts.unexpected.isEmpty())
// in the test reports it) and answers Cancel / "nothing".
class ScriptedPrompts : public Prompts, public SymbolPrompt {
public:
    struct Message {
        QString text;
        QString title;
        PromptButtons buttons;
        PromptIcon icon;
        QString detail;
        QStringList choices; // the buttons of a choose() question
    };
    struct FileRequest {
        QString kind; // "open", "openMulti", "save"
        QString title;
        QString filter;
        QString defaultExt;
        QString folder;
    };

    PromptAnswer message(const QString &text, const QString &title, PromptButtons buttons, PromptIcon icon) override;
    PromptAnswer message(const QString &text, const QString &title, const QString &detail, PromptButtons buttons,
                         PromptIcon icon) override;
    // Answers from `choices` (-1 = Cancel).
    int choose(const QString &text, const QString &title, const QString &detail, const QStringList &buttons,
               PromptIcon icon) override;
    QString openFile(const QString &title, const QString &filter, const QString &folder) override;
    QStringList openFiles(const QString &title, const QString &filter, const QString &folder) override;
    QString saveFile(const QString &title, const QString &filter, const QString &defaultExt,
                     const QString &folder) override;
    NewBlocksetChoice newBlockset(bool strictPrefixSetting, bool syncDoubleSetting) override;
    // Answers from symbolAnswers; a chosen double the dialog's OK check refuses
    // keeps the dialog open and the next answer is taken.
    SymbolDialogAnswer symbolDialog(const SymbolDialogSetup &setup) override;

    struct SymbolScript {
        enum Action { Offered, Choose, Cancel };
        Action action = Offered;
        QString single;
        QString doubleSymbol;
    };

    // Queues.
    QList<PromptAnswer> answers;
    QList<int> choices;
    QStringList fileAnswers;         // for openFile and saveFile ("" = cancel)
    QList<QStringList> multiAnswers; // for openFiles
    QList<NewBlocksetChoice> newAnswers;
    QList<SymbolScript> symbolAnswers;
    // A "Rover compatibility" message (a saved file Rover would reject) fails the
    // test unless this is set.
    bool roverRejectionExpected = false;

    // Records.
    QList<Message> messages;
    QList<FileRequest> fileRequests;
    QList<SymbolDialogSetup> symbolRequests;
    QStringList unexpected;

    QStringList messageTexts() const;
};
