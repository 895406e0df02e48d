#include "items/BlockNaming.h"

#include "common/CommonFunctions.h"
#include "common/Prompts.h"
#include "common/RegistryWrapper.h"
#include "formats/Parser.h"
#include "storage/Cp1252.h"
#include "symbols/OperationHost.h"

using namespace Qt::StringLiterals;

QString checkBlockname(const QString &name)
{
    QString clean = name;
    for (QChar &c : clean) {
        const char16_t code = c.unicode();
        const bool kept = (code >= u'0' && code <= u'9') || (code >= u'A' && code <= u'Z')
                          || (code >= u'a' && code <= u'z') || code == u'_';
        if (!kept)
            c = u'_';
    }
    return clean;
}

QString uniqueBlockName(OperationHost &host, int row, const QString &name)
{
    const QList<BlockRow> &blocks = host.content().blocks;
    const auto taken = [&](const QString &candidate) {
        for (qsizetype i = 0; i < blocks.size(); ++i) {
            if (i != row && blocks[i].name == candidate)
                return true;
        }
        return false;
    };
    QString candidate = name;
    for (int counter = 1; taken(candidate); ++counter)
        candidate = QString::number(counter) + u'_' + name;
    return candidate;
}

std::optional<QByteArray> settleBlockName(OperationHost &host, int row, const QByteArray &text)
{
    BlockRow &block = host.content().blocks[row];
    bool rewrite = false;
    const QString fileBase = getBaseName(block.file);
    if (host.settings().getBoolSetting(u"syncBlock"_s) && block.name != fileBase) {
        block.name = fileBase;
        rewrite = true;
    }

    const QString settled = uniqueBlockName(host, row, checkBlockname(block.name));
    if (settled != block.name) {
        block.name = settled;
        rewrite = true;
        if (host.settings().getBoolSetting(u"showWarnings"_s))
            host.prompts().message(u"The block name had to be changed to \""_s + settled + u"\"!"_s,
                                   u"Changed blockname"_s, PromptButtons::Ok, PromptIcon::Exclamation);
    }
    if (!rewrite)
        return text;
    const std::optional<QString> rewritten = setAttributeValue(fromCp1252(text), u"block"_s, u"name"_s, settled);
    if (!rewritten)
        return std::nullopt;
    return toCp1252(*rewritten);
}
