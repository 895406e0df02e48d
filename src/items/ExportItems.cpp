#include "items/ExportItems.h"

#include "storage/WholeFile.h"

#include <QDir>
#include <QFileInfo>

using namespace Qt::StringLiterals;

ExportOutcome exportItemFiles(const QStringList &files, const QString &folder,
                              const std::function<Result(const QString &, QByteArray &)> &read,
                              const std::function<ReplaceAnswer(const QString &)> &mayReplace)
{
    ExportOutcome outcome;
    if (!QFileInfo(folder).isDir()) {
        outcome.failure = folder + u" is no folder"_s;
        return outcome;
    }
    for (const QString &file : files) {
        const QString target = QDir(folder).filePath(file);
        if (QFileInfo::exists(target)) {
            const ReplaceAnswer answer = mayReplace(file);
            if (answer == ReplaceAnswer::Stop)
                break;
            if (answer == ReplaceAnswer::Keep) {
                outcome.skipped.append(file);
                continue;
            }
        }
        QByteArray bytes;
        Result done = read(file, bytes);
        if (done)
            done = writeWholeFile(target, bytes);
        if (!done) {
            outcome.failure = file + u": "_s + done.reason();
            break;
        }
        outcome.written.append(file);
    }
    return outcome;
}
