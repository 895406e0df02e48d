#include "items/AddBspTrees.h"

#include "common/Prompts.h"
#include "formats/ValueFormats.h"
#include "items/BlockFileRewrite.h"
#include "items/BspBuilder.h"
#include "items/ItemKind.h"
#include "rover/RoverBlockReader.h"
#include "rover/RoverBspRule.h"
#include "symbols/OperationHost.h"

#include <QFile>
#include <QSaveFile>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

const QString kTitle = u"Add BSP Trees"_s;

struct Candidate {
    int row;
    RoverBlock block;
    QByteArray bytes;
    BspBlockReport report;
    bool hasValidTree = false;
};

QString firstError(const RoverFindings &findings)
{
    for (const RoverFinding &finding : findings)
        if (finding.severity == RoverFinding::Error)
            return u"line %1: %2"_s.arg(finding.line).arg(finding.text);
    return QString();
}

// Reads the block as Rover does. A file whose only fault is its tree (a
// reference out of range, a cycle) is read without it, for a new one.
Candidate readCandidate(OperationHost &host, int row)
{
    Candidate c{row, {}, {}, {}, false};
    c.report.file = host.content().blocks[row].file;
    QFile file(itemFolder(host, ItemKind::Block) + u'/' + c.report.file);
    if (!file.open(QIODevice::ReadOnly)) {
        c.report.outcome = BspBlockReport::Failed;
        c.report.reason = u"Unable to read the file: "_s + file.errorString();
        return c;
    }
    c.bytes = file.readAll();
    RoverBlockFile read = readRoverBlock(c.bytes);
    // A sprite is passed by whatever else is wrong with it.
    if (read.block.isSprite()) {
        c.report.reason = u"a sprite has no polygons of its own: Rover makes its picture itself"_s;
        return c;
    }
    if (hasRoverError(read.findings)) {
        const std::optional<QByteArray> untreed = withoutBspTree(c.bytes);
        const RoverBlockFile again = untreed ? readRoverBlock(*untreed) : RoverBlockFile{};
        if (!untreed || hasRoverError(again.findings)) {
            c.report.outcome = BspBlockReport::Failed;
            c.report.reason = u"Rover cannot read it: "_s + firstError(read.findings);
            return c;
        }
        c.report.reason = u"its BSP tree was broken: "_s + firstError(read.findings);
        read.block = again.block;
    }
    c.block = read.block;
    c.report.polygonsBefore = c.report.polygonsAfter = int(c.block.polygons.size());
    c.report.outcome = BspBlockReport::Built;
    if (c.block.bspRoot != 0) {
        const RoverBspRuleCheck rule = checkRoverBspRule(c.block);
        c.hasValidTree = rule.holds();
        if (!rule.holds())
            c.report.reason = u"its BSP tree was wrong: "_s + rule.text();
    }
    return c;
}

bool askRebuild(OperationHost &host, const QList<Candidate> &candidates)
{
    QStringList files;
    for (const Candidate &c : candidates)
        if (c.hasValidTree && c.report.outcome == BspBlockReport::Built)
            files.append(c.report.file);
    if (files.isEmpty())
        return false;
    const QString text = files.size() == 1
                             ? u"\"%1\" already has a valid BSP tree. Build it again?"_s.arg(files.first())
                             : u"%1 blocks already have a valid BSP tree. Build them again?"_s.arg(files.size());
    return host.prompts().message(text, kTitle, PromptButtons::YesNo, PromptIcon::Question) == PromptAnswer::Yes;
}

// Builds, writes and updates the row; the report says how it went.
void buildInto(OperationHost &host, Candidate &c)
{
    BspBlockReport &report = c.report;
    const BspBuild build = buildBspTree(c.block);
    if (!build.built()) {
        report.outcome = build.nothingDrawn ? BspBlockReport::Skipped : BspBlockReport::Failed;
        report.reason = build.problem;
        return;
    }
    QString problem;
    const std::optional<QByteArray> text = writeBspTree(c.bytes, build, problem);
    QSaveFile file(itemFolder(host, ItemKind::Block) + u'/' + report.file);
    if (!text || !file.open(QIODevice::WriteOnly) || file.write(*text) != text->size() || !file.commit()) {
        report.outcome = BspBlockReport::Failed;
        report.reason = text ? u"Unable to write the file: "_s + file.errorString() : problem;
        return;
    }
    BlockRow &row = host.content().blocks[c.row];
    row.bsp = u"yes"_s;
    row.size = text->size();
    row.sizeText = itemSizeText(row.size);
    report.polygonsAfter = build.polygonsAfter;
    report.splits = build.splits;
    report.depth = build.depth;
}

void showProblems(OperationHost &host, const BspTreesReport &result)
{
    QStringList lines;
    bool failed = false;
    for (const BspBlockReport &block : result.blocks) {
        const bool sprite = block.outcome == BspBlockReport::Skipped && !result.allBlocks;
        if (block.outcome == BspBlockReport::Failed || sprite)
            lines.append(block.file + u": "_s + block.reason);
        failed = failed || block.outcome == BspBlockReport::Failed;
    }
    if (lines.isEmpty())
        return;
    host.prompts().message(u"No BSP tree was added to these blocks:\n"_s + lines.join(u'\n'), kTitle, PromptButtons::Ok,
                           failed ? PromptIcon::Exclamation : PromptIcon::Information);
}

} // namespace

BspTreesReport addBspTrees(OperationHost &host, QList<int> rows, BspRebuild rebuild)
{
    BspTreesReport result;
    const int count = int(host.content().blocks.size());
    result.allBlocks = rows.isEmpty();
    if (result.allBlocks) {
        for (int row = 0; row < count; ++row)
            rows.append(row);
    }
    std::sort(rows.begin(), rows.end());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    host.setBusy(true);
    host.showProcess(result.allBlocks ? u"Adding BSP trees to all structural blocks..."_s : u"Adding BSP trees..."_s);

    QList<Candidate> candidates;
    for (int row : std::as_const(rows))
        if (row >= 0 && row < count)
            candidates.append(readCandidate(host, row));
    const bool again = rebuild == BspRebuild::Always || (rebuild == BspRebuild::Ask && askRebuild(host, candidates));
    for (Candidate &c : candidates) {
        if (c.report.outcome != BspBlockReport::Built)
            continue;
        if (c.hasValidTree && !again) {
            c.report.outcome = BspBlockReport::HasTree;
            continue;
        }
        buildInto(host, c);
        if (c.report.outcome == BspBlockReport::Built) {
            ++result.built;
            result.splits += c.report.splits;
        }
    }
    for (const Candidate &c : std::as_const(candidates))
        result.blocks.append(c.report);

    if (result.built > 0)
        host.setBlocksetChanged();
    host.setBusy(false);
    showProblems(host, result);
    host.showProcess(
        u"BSP trees added to %1 blocks (%2 splits)"_s.arg(result.built).arg(result.splits)
        + (result.allBlocks ? u"; no block was selected, so all structural blocks were taken"_s : QString()));
    return result;
}
