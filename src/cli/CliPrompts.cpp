#include "cli/CliPrompts.h"

#include "symbols/SymbolScheme.h"

using namespace Qt::StringLiterals;

PromptAnswer CliPrompts::message(const QString &text, const QString &title, PromptButtons buttons, PromptIcon icon)
{
    return message(text, title, QString(), buttons, icon);
}

PromptAnswer CliPrompts::message(const QString &text, const QString &title, const QString &detail,
                                 PromptButtons buttons, PromptIcon icon)
{
    m_messages.append({text, title, buttons, icon, detail});
    switch (buttons) {
    case PromptButtons::Ok: return PromptAnswer::Ok;
    case PromptButtons::YesNo:
    case PromptButtons::YesNoCancel: return m_answerNo ? PromptAnswer::No : PromptAnswer::Yes;
    }
    return PromptAnswer::Ok;
}

int CliPrompts::choose(const QString &text, const QString &title, const QString &detail, const QStringList &buttons,
                       PromptIcon icon)
{
    Q_UNUSED(buttons);
    m_messages.append({text, title, PromptButtons::Ok, icon, detail});
    return -1;
}

QString CliPrompts::openFile(const QString &title, const QString &filter, const QString &folder)
{
    Q_UNUSED(title);
    Q_UNUSED(filter);
    Q_UNUSED(folder);
    return m_openAnswers.isEmpty() ? QString() : m_openAnswers.takeFirst();
}

QStringList CliPrompts::openFiles(const QString &title, const QString &filter, const QString &folder)
{
    Q_UNUSED(title);
    Q_UNUSED(filter);
    Q_UNUSED(folder);
    return m_multiOpenAnswers.isEmpty() ? QStringList() : m_multiOpenAnswers.takeFirst();
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

void CliPrompts::chooseSymbols(const QString &single, const QString &doubleSymbol)
{
    m_symbolsChosen = true;
    m_chosenSingle = single;
    m_chosenDouble = doubleSymbol;
}

namespace {

// Why the dialog does not offer `symbol`: it is no symbol at all, or another block has it.
QString whyNotOffered(const QString &symbol)
{
    if (symbol.size() != 1 || !symbolAlphabet().contains(symbol))
        return u"it is not one of the "_s + QString::number(symbolAlphabet().size()) + u" symbol characters"_s;
    return u"it is used by another block"_s;
}

} // namespace

SymbolDialogAnswer CliPrompts::symbolDialog(const SymbolDialogSetup &setup)
{
    if (!m_symbolsChosen)
        return offeredSymbols(setup);
    const auto refuse = [this](const QString &why) {
        m_symbolError = why;
        return SymbolDialogAnswer();
    };
    const int single = int(setup.singles.indexOf(m_chosenSingle));
    if (single < 0 && !(setup.singles.isEmpty() && m_chosenSingle.isEmpty()))
        return refuse(u"the single symbol \""_s + m_chosenSingle + u"\" is not offered ("_s
                      + whyNotOffered(m_chosenSingle) + u')');
    if (!setup.strictPrefix) {
        if (!setup.acceptDouble(m_chosenDouble))
            return refuse(u"the dialog refused the double symbol \""_s + m_chosenDouble + u'"');
        return {true, m_chosenSingle, m_chosenDouble};
    }
    if (setup.syncDouble) {
        const QString following = strictDoubleSymbol(setup, single);
        if (m_chosenDouble != following)
            return refuse(u"with synchronized double symbols the double symbol follows the single one: \""_s + following
                          + u'"');
        return {true, m_chosenSingle, following};
    }
    if (m_chosenDouble.size() != 2 || m_chosenDouble.left(1) != setup.prefix)
        return refuse(u"with a strict prefix the double symbol is \""_s + setup.prefix
                      + u"\" followed by one character"_s);
    if (!setup.doubleChars.contains(m_chosenDouble.right(1)))
        return refuse(u"the double symbol character \""_s + m_chosenDouble.right(1) + u"\" is not offered ("_s
                      + whyNotOffered(m_chosenDouble.right(1)) + u')');
    return {true, m_chosenSingle, m_chosenDouble};
}
