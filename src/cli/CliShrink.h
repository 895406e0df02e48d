#pragma once

#include <QString>
#include <QStringList>

#include <cstdio>

class BlocksetDocument;
class CliPrompts;

// cubrix-cli shrink FILE.bset [--json]
// cubrix-cli shrink FILE.bset --fit [--apply] [--jpeg-quality Q] [--gif-colours N]
//     [--max-texture PX] [--sound-rate HZ] [--sound-mono] [--sound-8bit] [--json]
// Shrink without losing a pixel, then Save as every edit command saves; with
// --fit, the lossy steps that bring the blockset under Rover's 307,200 bytes,
// applied only with --apply.
class CliShrink {
public:
    enum ExitCode { Success = 0, Failed = 1, UsageError = 2 };

    CliShrink(std::FILE *out, std::FILE *err) : m_out(out), m_err(err) {}

    // Whether an option (with its value, when it takes one) belongs to shrink.
    static bool isOption(const QString &argument);
    static bool takesValue(const QString &argument);
    // Empty when the files and options suit shrink, else what is wrong.
    static QString check(const QStringList &files, const QStringList &options);
    static QString usageLines();
    static QString helpLines();

    int run(const QStringList &files, const QStringList &options, bool json, BlocksetDocument &document,
            CliPrompts &prompts);

private:
    int save(BlocksetDocument &document, CliPrompts &prompts, qsizetype firstMessage);

    std::FILE *m_out;
    std::FILE *m_err;
};
