#pragma once

#include <QString>
#include <QStringList>

#include <cstdio>

class BlocksetDocument;
class CliPrompts;

// cubrix-cli: runs the editor's document commands without a window.
//   info FILE.bset [--json] [--no]   open the file and print what the editor shows
//   save IN.bset OUT.bset [--no]     open IN, then Save As to OUT
//   remove, rename, remap, prefix, set  the item and symbol commands (CliEditCommands)
// Questions are answered Yes (No with --no); settings come from the same store
// as the editor's ($CUBRIX_REGISTRY honoured); the working folder is the CLI's own
// and is removed before it exits.
class CliApp {
public:
    enum ExitCode { Success = 0, Failed = 1, UsageError = 2 };

    explicit CliApp(std::FILE *out = stdout, std::FILE *err = stderr) : m_out(out), m_err(err) {}

    // `arguments` as QCoreApplication::arguments() gives them (program first).
    int run(const QStringList &arguments);

    static QString usageText();
    static QString helpText();

private:
    struct Options {
        QString command;
        QStringList files;
        QStringList commandOptions; // --all, --sync-double, --prefix C (remap)
        bool json = false;
        bool answerNo = false;
        bool breakLock = false;
        bool help = false;
    };

    // Empty when the arguments are fine, else what is wrong with them.
    static QString parse(const QStringList &arguments, Options &options);
    int runCommand(const Options &options);
    int info(const Options &options, BlocksetDocument &document, CliPrompts &prompts);
    int save(const Options &options, BlocksetDocument &document, CliPrompts &prompts);
    int check(const Options &options, BlocksetDocument &document, CliPrompts &prompts);

    std::FILE *m_out;
    std::FILE *m_err;
};
