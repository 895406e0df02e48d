#include "cli/CliExtract.h"

#include "cli/CliOutput.h"
#include "items/ExportItems.h"
#include "storage/ArchiveReader.h"

#include <QDir>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace CliExtract {

namespace {

enum ExitCode { Success = 0, Failed = 1, UsageError = 2 };

const QStringList kItemFolders = {u"blocks/"_s, u"textures/"_s, u"sounds/"_s};

// The archive entry an author's NAME means, or "" when none does.
QString entryFor(const QStringList &entries, const QString &name)
{
    for (const QString &entry : entries) {
        const qsizetype slash = entry.indexOf(u'/');
        const bool item = slash > 0 && kItemFolders.contains(entry.left(slash + 1), Qt::CaseInsensitive)
                          && entry.indexOf(u'/', slash + 1) < 0;
        if (item
            && (entry.compare(name, Qt::CaseInsensitive) == 0
                || entry.mid(slash + 1).compare(name, Qt::CaseInsensitive) == 0))
            return entry;
    }
    return QString();
}

} // namespace

QString usageLines()
{
    return u"       cubrix-cli extract FILE.bset NAME... --to DIR [--overwrite]\n"_s;
}

QString helpLines()
{
    return u"  extract FILE.bset NAME... --to DIR [--overwrite]\n"
           "      copy blocks, textures or sounds (file name in any case) out of the blockset;\n"
           "      a file already in DIR is replaced only with --overwrite\n"_s;
}

int run(const QStringList &arguments, std::FILE *out, std::FILE *err)
{
    QStringList positional;
    QString folder;
    bool overwrite = false;
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        if (arguments[i] == "--to"_L1 && i + 1 < arguments.size())
            folder = arguments[++i];
        else if (arguments[i] == "--overwrite"_L1)
            overwrite = true;
        else if (arguments[i].startsWith(u"--"_s)) {
            CliOutput::print(err,
                             u"cubrix-cli: "_s + arguments[i] + u" is not an option of extract\n"_s + usageLines());
            return UsageError;
        } else
            positional.append(arguments[i]);
    }
    if (positional.size() < 2 || folder.isEmpty()) {
        CliOutput::print(err,
                         u"cubrix-cli: extract takes a blockset, one or more names and --to DIR\n"_s + usageLines());
        return UsageError;
    }
    ArchiveReader archive;
    if (Result opened = archive.open(positional.first()); !opened) {
        CliOutput::printError(err, opened.reason());
        return Failed;
    }
    const QStringList entries = archive.entryNames();
    QStringList files;
    QHash<QString, QString> entryOfFile;
    for (const QString &name : positional.mid(1)) {
        const QString entry = entryFor(entries, name);
        if (entry.isEmpty()) {
            CliOutput::printError(err, positional.first() + u" has no block, texture or sound named "_s + name);
            return Failed;
        }
        const QString file = entry.mid(entry.indexOf(u'/') + 1);
        if (!overwrite && QFileInfo::exists(QDir(folder).filePath(file))) {
            CliOutput::printError(err, QDir(folder).filePath(file) + u" exists; --overwrite replaces it"_s);
            return Failed;
        }
        files.append(file);
        entryOfFile.insert(file, entry);
    }
    const ExportOutcome outcome = exportItemFiles(
        files, folder,
        [&](const QString &file, QByteArray &bytes) { return archive.readEntry(entryOfFile.value(file), bytes); },
        [](const QString &) { return ReplaceAnswer::Replace; });
    for (const QString &file : outcome.written)
        CliOutput::print(out, u"extracted "_s + QDir(folder).filePath(file) + u'\n');
    if (!outcome.failure.isEmpty()) {
        CliOutput::printError(err, outcome.failure);
        return Failed;
    }
    return Success;
}

} // namespace CliExtract
