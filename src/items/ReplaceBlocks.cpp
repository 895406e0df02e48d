#include "items/ReplaceBlocks.h"

#include "common/CommonFunctions.h"
#include "common/Prompts.h"
#include "common/RegistryWrapper.h"
#include "formats/Parser.h"
#include "formats/Parser_Block.h"
#include "formats/ValueFormats.h"
#include "items/BlockNaming.h"
#include "items/FileNameRules.h"
#include "items/ItemKind.h"
#include "storage/WholeFile.h"
#include "symbols/OperationHost.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

const QString kTitle = u"Unable to replace block"_s;

QString summary(int count)
{
    if (count == 0)
        return u"No blocks updated/replaced."_s;
    if (count == 1)
        return u"1 block updated/replaced."_s;
    return QString::number(count) + u" blocks updated/replaced."_s;
}

// The source to take for the row: its own while it exists, else one the user picks.
QString sourceFor(OperationHost &host, BlockRow &row)
{
    if (!row.source.isEmpty() && !QFileInfo(row.source).isFile())
        row.source.clear();
    if (!row.source.isEmpty())
        return row.source;
    return host.prompts().openFile(u"Replace "_s + row.file, u"Block files (*.block),*.block,All files (*.*),*.*"_s,
                                   host.settings().getStringSetting(u"pathBlocks"_s));
}

// The file name of another row that is the same file as `file` (ignoring case), or "".
QString nameTakenByOtherRow(OperationHost &host, int row, const QString &file)
{
    const QList<BlockRow> &blocks = host.content().blocks;
    for (qsizetype i = 0; i < blocks.size(); ++i) {
        if (i != row && sameFileName(blocks[i].file, file))
            return blocks[i].file;
    }
    return QString();
}

// Replaces the row's file by `bytes` from `source`; false (row and files as they
// were) when the file cannot be read into the row or written.
bool replaceRow(OperationHost &host, int at, const QString &source, const QByteArray &bytes)
{
    BlockRow &row = host.content().blocks[at];
    const BlockRow before = row;
    row.file = nativeFileName(source);
    row.source = source;
    row.name.clear();
    row.type.clear();
    row.bsp.clear();
    Parser parser;
    parser.setBuffer(bytes);
    readBlock(parser, row);

    const std::optional<QByteArray> text = settleBlockName(host, at, bytes);
    const QString folder = itemFolder(host, ItemKind::Block);
    QSaveFile copy(folder + u'/' + row.file);
    if (!text || !copy.open(QIODevice::WriteOnly) || copy.write(*text) != text->size() || !copy.commit()) {
        host.prompts().message(u"Unable to replace \""_s + before.file + u"\" by \""_s + source + u"\"!"_s, kTitle,
                               copy.errorString(), PromptButtons::Ok, PromptIcon::Critical);
        host.content().blocks[at] = before;
        return false;
    }
    // The old file goes once the new one is in place; a name differing only in
    // case is the same file where names ignore case.
    if (before.file != row.file && QDir(folder).entryList(QDir::Files).contains(before.file))
        QFile::remove(folder + u'/' + before.file);
    row.size = text->size();
    row.sizeText = itemSizeText(row.size);
    return true;
}

} // namespace

int replaceBlocks(OperationHost &host, QList<int> rows)
{
    host.showProcess(u"Updating/Replacing Blocks..."_s);
    std::sort(rows.begin(), rows.end());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());

    int updated = 0;
    for (int at : std::as_const(rows)) {
        if (at < 0 || at >= host.content().blocks.size())
            continue;
        const QString source = sourceFor(host, host.content().blocks[at]);
        if (source.isEmpty())
            continue;
        const QString file = nativeFileName(source);
        if (const QString taken = nameTakenByOtherRow(host, at, file); !taken.isEmpty()) {
            host.prompts().message(u"There is already a \""_s + taken + u"\" in the blockset!"_s, kTitle,
                                   PromptButtons::Ok, PromptIcon::Exclamation);
            continue;
        }
        if (const QString problem = fileNameProblem(file); !problem.isEmpty()) {
            host.prompts().message(refusedNameText(file, problem), kTitle, PromptButtons::Ok, PromptIcon::Exclamation);
            continue;
        }
        // A folder, a pipe or a device is refused at once, never read.
        QByteArray bytes;
        if (const Result read = readWholeFile(source, bytes); !read) {
            host.prompts().message(u"Unable to read \""_s + source + u"\"!"_s, kTitle, read.reason(), PromptButtons::Ok,
                                   PromptIcon::Critical);
            continue;
        }
        if (replaceRow(host, at, source, bytes))
            ++updated;
    }
    host.setBlocksetChanged();
    host.showProcess(summary(updated));
    return updated;
}
