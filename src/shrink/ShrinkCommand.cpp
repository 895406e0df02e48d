#include "shrink/ShrinkCommand.h"

#include "app/BlocksetDocument.h"
#include "app/BlocksetSize.h"
#include "common/CommonFunctions.h"
#include "formats/Parser_Style.h"
#include "formats/ValueFormats.h"

#include <QFileInfo>

using namespace Qt::StringLiterals;

QString savedStyleName(const BlocksetDocument &document)
{
    return nativeBaseName(document.blocksetFileName()) + u".style"_s;
}

QByteArray savedStyle(const BlocksetDocument &document)
{
    return writeStyle(document.style(), document.blocks());
}

ShrinkPlan planDocumentShrink(BlocksetDocument &document)
{
    return planShrink(document.workingFolder(), document.packedEntries(), savedStyleName(document),
                      savedStyle(document));
}

void refreshItemSizes(BlocksetDocument &document, const QStringList &paths)
{
    BlocksetContent &content = document.content();
    const auto update = [&](auto &rows, const QString &folder, const QString &path) {
        if (!path.startsWith(folder) || path.indexOf(u'/', folder.size()) >= 0)
            return;
        const QString file = path.mid(folder.size());
        for (auto &row : rows) {
            if (row.file == file) {
                row.size = QFileInfo(document.workingFolder() + u'/' + path).size();
                row.sizeText = itemSizeText(row.size);
            }
        }
    };
    for (const QString &path : paths) {
        update(content.blocks, u"blocks/"_s, path);
        update(content.textures, u"textures/"_s, path);
        update(content.sounds, u"sounds/"_s, path);
    }
}

Result applyDocumentShrink(BlocksetDocument &document, const ShrinkPlan &plan)
{
    if (!plan.changesAnything())
        return Result();
    return document.edit(u"Shrink Blockset"_s, [&] {
        Result applied = applyShrink(plan, document.workingFolder(), document.packedEntries());
        QStringList rewritten;
        for (const ShrinkPlan::Step &step : plan.steps) {
            if (step.rewrite)
                rewritten.append(step.item.path);
        }
        refreshItemSizes(document, rewritten);
        document.setBlocksetChanged();
        return applied;
    });
}

QString shrinkReportText(const QList<ShrinkItem> &items)
{
    QString text;
    qint64 before = 0;
    qint64 after = 0;
    int width = 0;
    for (const ShrinkItem &item : items)
        width = std::max(width, int(item.path.size()));
    for (const ShrinkItem &item : items) {
        before += item.before;
        after += item.after;
        if (!item.changed())
            continue;
        text += u"%1  %2 -> %3  %4\n"_s.arg(item.path.leftJustified(width), BlocksetSize::groupedBytes(item.before),
                                            BlocksetSize::groupedBytes(item.after), item.note);
    }
    const qint64 saved = before - after;
    text += u"Packed bytes: %1 -> %2 (%3 saved)\n"_s.arg(
        BlocksetSize::groupedBytes(before), BlocksetSize::groupedBytes(after), BlocksetSize::groupedBytes(saved));
    return text;
}
