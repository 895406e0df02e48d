#pragma once

#include <QString>
#include <QStringList>

#include <cstdio>

class BlocksetDocument;
class CliPrompts;

// The item and symbol commands of cubrix-cli: add, remove, rename, replace,
// symbols, remap, prefix and set. Each runs on a blockset the editor's open has loaded, as the window would
// run it, then saves with Save when the blockset changed.
class CliEditCommands {
public:
    enum ExitCode { Success = 0, Failed = 1, UsageError = 2 };

    CliEditCommands(std::FILE *out, std::FILE *err) : m_out(out), m_err(err) {}

    static bool handles(const QString &command);
    // Empty when `arguments` (after the command; the file first) and `options`
    // (--all, --sync-double, --prefix C, --from PATH) suit `command`, else what is wrong.
    static QString check(const QString &command, const QStringList &arguments, const QStringList &options);
    static QString usageLines();
    static QString helpLines();

    // Opens `arguments[0]`, runs the command and saves; returns the exit code.
    int run(const QString &command, const QStringList &arguments, const QStringList &options, bool json,
            BlocksetDocument &document, CliPrompts &prompts);

private:
    // Each returns an exit code; `error` receives why a command failed and
    // `results` the status texts of commands that show more than one.
    int add(const QStringList &paths, BlocksetDocument &document, CliPrompts &prompts, QStringList &results);
    int replace(const QStringList &names, const QStringList &options, BlocksetDocument &document, CliPrompts &prompts,
                QString &error);
    int symbols(const QStringList &arguments, BlocksetDocument &document, CliPrompts &prompts, QString &error);
    int remove(const QStringList &names, BlocksetDocument &document, QString &error);
    int rename(const QString &oldName, const QString &newName, BlocksetDocument &document, QString &error);
    int remap(const QStringList &options, BlocksetDocument &document);
    int prefix(const QString &character, BlocksetDocument &document, QString &error);
    int set(const QString &field, const QString &value, BlocksetDocument &document, QString &error);

    std::FILE *m_out;
    std::FILE *m_err;
};
