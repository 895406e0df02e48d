#include "support/ScriptedPrompts.h"

#include <QTest>

PromptAnswer ScriptedPrompts::message(const QString &text, const QString &title, PromptButtons buttons, PromptIcon icon)
{
    return message(text, title, QString(), buttons, icon);
}

PromptAnswer ScriptedPrompts::message(const QString &text, const QString &title, const QString &detail,
                                      PromptButtons buttons, PromptIcon icon)
{
    messages.append({text, title, buttons, icon, detail, {}});
    // Every save checks what it wrote against Rover's readers and reports here:
    // a file Rover would reject fails the running test unless it expects that.
    if (title == QStringLiteral("Rover compatibility") && !roverRejectionExpected)
        QTest::qFail(qPrintable(QStringLiteral("Rover rejects a written file: ") + text), __FILE__, __LINE__);
    if (answers.isEmpty()) {
        if (buttons == PromptButtons::Ok)
            return PromptAnswer::Ok;
        unexpected.append(QStringLiteral("message: ") + text);
        return PromptAnswer::Cancel;
    }
    return answers.takeFirst();
}

int ScriptedPrompts::choose(const QString &text, const QString &title, const QString &detail,
                            const QStringList &buttons, PromptIcon icon)
{
    messages.append({text, title, PromptButtons::Ok, icon, detail, buttons});
    if (choices.isEmpty()) {
        unexpected.append(QStringLiteral("choose: ") + text);
        return -1;
    }
    return choices.takeFirst();
}

QString ScriptedPrompts::openFile(const QString &title, const QString &filter, const QString &folder)
{
    fileRequests.append({QStringLiteral("open"), title, filter, QString(), folder});
    if (fileAnswers.isEmpty()) {
        unexpected.append(QStringLiteral("openFile: ") + title);
        return QString();
    }
    return fileAnswers.takeFirst();
}

QStringList ScriptedPrompts::openFiles(const QString &title, const QString &filter, const QString &folder)
{
    fileRequests.append({QStringLiteral("openMulti"), title, filter, QString(), folder});
    if (multiAnswers.isEmpty()) {
        unexpected.append(QStringLiteral("openFiles: ") + title);
        return {};
    }
    return multiAnswers.takeFirst();
}

QString ScriptedPrompts::saveFile(const QString &title, const QString &filter, const QString &defaultExt,
                                  const QString &folder)
{
    fileRequests.append({QStringLiteral("save"), title, filter, defaultExt, folder});
    if (fileAnswers.isEmpty()) {
        unexpected.append(QStringLiteral("saveFile: ") + title);
        return QString();
    }
    return fileAnswers.takeFirst();
}

NewBlocksetChoice ScriptedPrompts::newBlockset(bool strictPrefixSetting, bool syncDoubleSetting)
{
    if (newAnswers.isEmpty()) {
        unexpected.append(QStringLiteral("newBlockset"));
        NewBlocksetChoice choice;
        choice.strictPrefix = strictPrefixSetting;
        choice.syncDouble = strictPrefixSetting && syncDoubleSetting;
        return choice;
    }
    return newAnswers.takeFirst();
}

SymbolDialogAnswer ScriptedPrompts::symbolDialog(const SymbolDialogSetup &setup)
{
    symbolRequests.append(setup);
    while (!symbolAnswers.isEmpty()) {
        const SymbolScript script = symbolAnswers.takeFirst();
        if (script.action == SymbolScript::Cancel)
            return {};
        if (script.action == SymbolScript::Offered)
            return offeredSymbols(setup);
        if (setup.strictPrefix || setup.acceptDouble(script.doubleSymbol))
            return {true, script.single, script.doubleSymbol};
    }
    unexpected.append(QStringLiteral("symbolDialog: ") + setup.caption);
    return {};
}

QStringList ScriptedPrompts::messageTexts() const
{
    QStringList texts;
    for (const Message &m : messages)
        texts.append(m.text);
    return texts;
}
