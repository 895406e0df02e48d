#include "cli/CliOutput.h"

using namespace Qt::StringLiterals;

namespace CliOutput {

void printBytes(std::FILE *stream, const QByteArray &bytes)
{
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stream);
    std::fflush(stream);
}

void print(std::FILE *stream, const QString &text)
{
    printBytes(stream, text.toUtf8());
}

void printMessages(std::FILE *stream, const QList<CliPrompts::Message> &messages, qsizetype first)
{
    for (qsizetype i = first; i < messages.size(); ++i) {
        print(stream, messages[i].title + u": "_s + messages[i].text + u'\n');
        if (!messages[i].detail.isEmpty())
            print(stream, messages[i].detail + u'\n');
    }
}

void printError(std::FILE *stream, const QString &text)
{
    print(stream, u"cubrix-cli: "_s + text + u'\n');
}

} // namespace CliOutput
