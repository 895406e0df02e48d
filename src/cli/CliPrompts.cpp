#include "cli/CliPrompts.h"

PromptAnswer CliPrompts::message(const QString &text, const QString &title, PromptButtons buttons,
                                 PromptIcon icon)
{
    return message(text, title, QString(), buttons, icon);
}

PromptAnswer CliPrompts::message(const QString &text, const QString &title, const QString &detail,
                                 PromptButtons buttons, PromptIcon icon)
{
    m_messages.append({text, title, buttons, icon, detail});
    switch (buttons) {
    case PromptButtons::Ok:
        return PromptAnswer::Ok;
    case PromptButtons::YesNo:
    case PromptButtons::YesNoCancel:
        return m_answerNo ? PromptAnswer::No : PromptAnswer::Yes;
    }
    return PromptAnswer::Ok;
}

QString CliPrompts::openFile(const QString &title, const QString &filter, const QString &folder)
{
    Q_UNUSED(title);
    Q_UNUSED(filter);
    Q_UNUSED(folder);
    return QString();
}

QStringList CliPrompts::openFiles(const QString &title, const QString &filter, const QString &folder)
{
    Q_UNUSED(title);
    Q_UNUSED(filter);
    Q_UNUSED(folder);
    return QStringList();
}

QString CliPrompts::saveFile(const QString &title, const QString &filter, const QString &defaultExt,
                             const QString &folder)
{
    Q_UNUSED(title);
    Q_UNUSED(filter);
    Q_UNUSED(defaultExt);
    Q_UNUSED(folder);
    return m_saveTarget;
}

NewBlocksetChoice CliPrompts::newBlockset(bool strictPrefixSetting, bool syncDoubleSetting)
{
    NewBlocksetChoice choice;
    choice.strictPrefix = strictPrefixSetting;
    choice.syncDouble = strictPrefixSetting && syncDoubleSetting;
    choice.prefixIndex = 0;
    return choice;
}
