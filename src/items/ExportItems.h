#pragma once

#include "storage/Result.h"

#include <QString>
#include <QStringList>

#include <functional>

// Copies item files out of a blockset into a folder the author chose. A file of
// the same name there is replaced only when `mayReplace(name)` says so; the
// copy is written aside and renamed over it, so a failed export leaves the old
// file as it was.
struct ExportOutcome {
    QStringList written;
    QStringList skipped; // the author kept the file that was there
    QString failure;     // "" when every file was written or skipped; stops the export
};

enum class ReplaceAnswer { Replace, Keep, Stop };

// `files`: the items' file names; `read(name, bytes)` supplies each one's bytes.
ExportOutcome exportItemFiles(const QStringList &files, const QString &folder,
                              const std::function<Result(const QString &, QByteArray &)> &read,
                              const std::function<ReplaceAnswer(const QString &)> &mayReplace);
