#include "cli/CliShrink.h"

#include "app/BlocksetDocument.h"
#include "app/BlocksetSize.h"
#include "cli/CliOutput.h"
#include "cli/CliPrompts.h"
#include "shrink/FitCommand.h"
#include "shrink/ShrinkCommand.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace {

struct Range {
    QLatin1String option;
    int low;
    int high;
};

const Range kRanges[] = {
    {"--jpeg-quality"_L1, 1, 100},
    {"--gif-colours"_L1, 2, 256},
    {"--max-texture"_L1, 2, 256},
    {"--sound-rate"_L1, 4000, 48000},
};

QString optionValue(const QStringList &options, QLatin1String name)
{
    const qsizetype at = options.indexOf(name);
    return at >= 0 ? options.value(at + 1) : QString();
}

FitOptions fitOptions(const QStringList &options)
{
    FitOptions fit;
    if (const QString q = optionValue(options, "--jpeg-quality"_L1); !q.isEmpty())
        fit.jpegQualities = {q.toInt()};
    if (const QString n = optionValue(options, "--gif-colours"_L1); !n.isEmpty())
        fit.gifColours = {n.toInt()};
    if (const QString px = optionValue(options, "--max-texture"_L1); !px.isEmpty())
        fit.maxTexture = px.toInt();
    // Naming any sound step makes those the only sound steps Fit may choose.
    const QString rate = optionValue(options, "--sound-rate"_L1);
    if (!rate.isEmpty() || options.contains(u"--sound-mono"_s) || options.contains(u"--sound-8bit"_s)) {
        fit.soundMono = options.contains(u"--sound-mono"_s);
        fit.sound8Bit = options.contains(u"--sound-8bit"_s);
        fit.soundRates = rate.isEmpty() ? QList<int>() : QList<int>{rate.toInt()};
    }
    return fit;
}

QJsonArray itemsJson(const QList<ShrinkItem> &items)
{
    QJsonArray array;
    for (const ShrinkItem &item : items) {
        if (item.changed())
            array.append(QJsonObject{
                {u"file"_s, item.path}, {u"before"_s, item.before}, {u"after"_s, item.after}, {u"note"_s, item.note}});
    }
    return array;
}

QString fitText(const FitPlan &plan)
{
    QString text;
    for (const FitStep &step : plan.steps) {
        text += u"%1 %2: %3 (%4 bytes saved)\n"_s.arg(step.chosen ? u"[x]"_s : u"[ ]"_s, step.path, step.text,
                                                      BlocksetSize::groupedBytes(step.saved));
    }
    text += u"With the chosen steps: %1 bytes; Rover's limit: %2 bytes.\n"_s.arg(
        BlocksetSize::groupedBytes(plan.sizeAfter()), BlocksetSize::groupedBytes(plan.limit));
    return text;
}

QJsonObject fitJson(const FitPlan &plan)
{
    QJsonArray steps;
    for (const FitStep &step : plan.steps) {
        steps.append(QJsonObject{
            {u"file"_s, step.path}, {u"step"_s, step.text}, {u"saved"_s, step.saved}, {u"chosen"_s, step.chosen}});
    }
    return QJsonObject{{u"sizeBefore"_s, plan.sizeBefore},
                       {u"sizeAfter"_s, plan.sizeAfter()},
                       {u"fits"_s, plan.fits()},
                       {u"steps"_s, steps}};
}

} // namespace

bool CliShrink::isOption(const QString &argument)
{
    return argument == "--fit"_L1 || argument == "--apply"_L1 || argument == "--sound-mono"_L1
           || argument == "--sound-8bit"_L1 || takesValue(argument);
}

bool CliShrink::takesValue(const QString &argument)
{
    return std::any_of(std::begin(kRanges), std::end(kRanges),
                       [&](const Range &range) { return argument == range.option; });
}

QString CliShrink::check(const QStringList &files, const QStringList &options)
{
    if (files.size() != 1)
        return u"shrink takes one file"_s;
    const bool fit = options.contains(u"--fit"_s);
    for (const Range &range : kRanges) {
        const qsizetype at = options.indexOf(range.option);
        if (at < 0)
            continue;
        bool ok = false;
        const int value = options.value(at + 1).toInt(&ok);
        if (!ok || value < range.low || value > range.high)
            return u"%1 takes a number from %2 to %3"_s.arg(range.option).arg(range.low).arg(range.high);
    }
    for (const QString &option : options) {
        if (option.startsWith(u"--"_s) && option != "--fit"_L1 && !fit)
            return option + u" is an option of shrink --fit"_s;
    }
    return QString();
}

QString CliShrink::usageLines()
{
    return u"       cubrix-cli shrink FILE.bset [--json]\n"
           "       cubrix-cli shrink FILE.bset --fit [--apply] [--jpeg-quality Q] [--gif-colours N]\n"
           "                  [--max-texture PX] [--sound-rate HZ] [--sound-mono] [--sound-8bit] [--json]\n"_s;
}

QString CliShrink::helpLines()
{
    return u"  shrink FILE.bset   Shrink Blockset without losing a pixel: JPEGs and GIFs\n"
           "                     rewritten losslessly (each checked to decode to the same\n"
           "                     pixels), every entry packed with the strongest Deflate\n"
           "                     (libdeflate, level 12; text also zopfli, in blocks) or\n"
           "                     stored where that does not pay;\n"
           "                     then saved with Save. Lists each changed item's packed\n"
           "                     bytes before and after, and the total.\n"
           "  shrink FILE.bset --fit\n"
           "                     Also proposes the lossy steps that bring the blockset\n"
           "                     under Rover's 307,200 bytes, least lossy first: textures\n"
           "                     over 256 pixels scaled down, JPEG quality, GIF colours,\n"
           "                     sounds made plain PCM, mono, resampled or 8-bit. Nothing\n"
           "                     is changed unless --apply is given. --jpeg-quality Q,\n"
           "                     --gif-colours N, --max-texture PX set those steps; naming\n"
           "                     --sound-rate HZ, --sound-mono or --sound-8bit makes those\n"
           "                     the only sound steps. Exit 1 when the blockset does not\n"
           "                     fit with the chosen steps.\n"_s;
}

int CliShrink::save(BlocksetDocument &document, CliPrompts &prompts, qsizetype firstMessage)
{
    if (!document.isChanged())
        return Success;
    const Result saved = document.saveBlockset();
    CliOutput::printMessages(m_err, prompts.messages(), firstMessage);
    if (!saved) {
        CliOutput::printError(m_err, u"the blockset was not saved: "_s + saved.reason());
        return Failed;
    }
    return Success;
}

int CliShrink::run(const QStringList &files, const QStringList &options, bool json, BlocksetDocument &document,
                   CliPrompts &prompts)
{
    const QString path = QFileInfo(files.first()).absoluteFilePath();
    if (!document.openBlockset(path)) {
        CliOutput::printMessages(m_err, prompts.messages());
        return Failed;
    }
    const qsizetype first = prompts.messageCount();
    const qint64 fileBefore = QFileInfo(path).size();
    const bool fit = options.contains(u"--fit"_s);
    const bool apply = options.contains(u"--apply"_s);

    QList<ShrinkItem> items;
    FitPlan fitPlan;
    Result applied;
    if (fit) {
        const DocumentFit plan = planDocumentFit(document, fitOptions(options));
        items = plan.shrink.items();
        fitPlan = plan.fit;
        if (apply)
            applied = applyDocumentFit(document, plan);
    } else {
        const ShrinkPlan plan = planDocumentShrink(document);
        items = plan.items();
        applied = applyDocumentShrink(document, plan);
    }
    if (!applied) {
        CliOutput::printError(m_err, applied.reason());
        return Failed;
    }
    const bool writes = !fit || apply;
    int code = writes ? save(document, prompts, first) : Success;
    const qint64 fileAfter = QFileInfo(path).size();
    if (code == Success && fit && (apply ? !BlocksetSize::fitsWeb(fileAfter) : !fitPlan.fits()))
        code = Failed;

    if (json) {
        QJsonObject report{{u"file"_s, files.first()},
                           {u"before"_s, fileBefore},
                           {u"after"_s, fileAfter},
                           {u"saved"_s, writes && code != Failed},
                           {u"items"_s, itemsJson(items)}};
        if (fit)
            report.insert(u"fit"_s, fitJson(fitPlan));
        CliOutput::printBytes(m_out, QJsonDocument(report).toJson());
        return code;
    }
    QString text = shrinkReportText(items);
    if (fit)
        text += fitText(fitPlan);
    if (writes)
        text += u"%1: %2 bytes before, %3 bytes after.\n"_s.arg(
            QFileInfo(path).fileName(), BlocksetSize::groupedBytes(fileBefore), BlocksetSize::groupedBytes(fileAfter));
    CliOutput::print(m_out, text);
    return code;
}
