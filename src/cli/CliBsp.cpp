#include "cli/CliBsp.h"

#include "app/BlocksetDocument.h"
#include "items/AddBspTrees.h"

using namespace Qt::StringLiterals;

namespace {

// The block row a name means: a file name first, then a block name, either
// ignoring case.
int blockRow(const QList<BlockRow> &blocks, const QString &name)
{
    for (qsizetype i = 0; i < blocks.size(); ++i)
        if (blocks[i].file.compare(name, Qt::CaseInsensitive) == 0)
            return int(i);
    for (qsizetype i = 0; i < blocks.size(); ++i)
        if (blocks[i].name.compare(name, Qt::CaseInsensitive) == 0)
            return int(i);
    return -1;
}

QString outcomeName(BspBlockReport::Outcome outcome)
{
    switch (outcome) {
    case BspBlockReport::Built: return u"built"_s;
    case BspBlockReport::HasTree: return u"kept"_s;
    case BspBlockReport::Skipped: return u"skipped"_s;
    case BspBlockReport::Failed: return u"failed"_s;
    }
    return QString();
}

QString line(const BspBlockReport &block)
{
    switch (block.outcome) {
    case BspBlockReport::Built:
        return u"%1: %2 polygons before, %3 after, %4 splits, depth %5"_s.arg(block.file)
                   .arg(block.polygonsBefore)
                   .arg(block.polygonsAfter)
                   .arg(block.splits)
                   .arg(block.depth)
               + (block.reason.isEmpty() ? QString() : u" (%1)"_s.arg(block.reason));
    case BspBlockReport::HasTree:
        return u"%1: %2 polygons, its valid BSP tree kept (--rebuild builds it again)"_s.arg(block.file)
            .arg(block.polygonsBefore);
    case BspBlockReport::Skipped: return block.file + u": skipped: "_s + block.reason;
    case BspBlockReport::Failed: return block.file + u": failed: "_s + block.reason;
    }
    return QString();
}

QJsonObject json(const BspBlockReport &block)
{
    QJsonObject o{{u"outcome"_s, outcomeName(block.outcome)}};
    if (block.outcome == BspBlockReport::Built || block.outcome == BspBlockReport::HasTree) {
        o.insert(u"polygonsBefore"_s, block.polygonsBefore);
        o.insert(u"polygonsAfter"_s, block.polygonsAfter);
    }
    if (block.outcome == BspBlockReport::Built) {
        o.insert(u"splits"_s, block.splits);
        o.insert(u"depth"_s, block.depth);
    }
    if (!block.reason.isEmpty())
        o.insert(u"reason"_s, block.reason);
    return o;
}

} // namespace

QString CliBsp::check(const QStringList &arguments, const QStringList &options)
{
    if (arguments.isEmpty())
        return u"bsp takes a file and any number of blocks"_s;
    for (const QString &option : options)
        if (option != "--rebuild"_L1)
            return option + u" is not an option of bsp"_s;
    return QString();
}

QString CliBsp::usageLine()
{
    return u"       cubrix-cli bsp FILE.bset [BLOCK...] [--rebuild] [--json] [--no]\n"_s;
}

QString CliBsp::helpLines()
{
    return u"  bsp FILE.bset [BLOCK...] [--rebuild]\n"
           "                     Add BSP Trees on the named blocks (file or block names),\n"
           "                     or on every structural block: prints per block the\n"
           "                     polygons before and after, the splits and the depth. A\n"
           "                     block whose tree is already valid keeps it unless\n"
           "                     --rebuild is given.\n"_s;
}

int CliBsp::run(const QStringList &names, const QStringList &options, BlocksetDocument &document, QStringList &results,
                QJsonObject &report, QString &error)
{
    QList<int> rows;
    for (const QString &name : names) {
        const int row = blockRow(document.blocks(), name);
        if (row < 0) {
            error = u"\""_s + name + u"\" is in no block list"_s;
            return 2;
        }
        rows.append(row);
    }
    const BspTreesReport done =
        addBspTrees(document, rows, options.contains(u"--rebuild"_s) ? BspRebuild::Always : BspRebuild::Never);
    QJsonObject blocks;
    bool failed = false;
    for (const BspBlockReport &block : done.blocks) {
        results.append(line(block));
        blocks.insert(block.file, json(block));
        failed = failed || block.outcome == BspBlockReport::Failed;
    }
    results.append(document.processText());
    report.insert(u"bsp"_s, blocks);
    return failed ? 1 : 0;
}
