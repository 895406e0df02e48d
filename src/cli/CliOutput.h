#pragma once

#include "cli/CliPrompts.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <cstdio>

// How cubrix-cli writes: UTF-8 text, flushed at once, so the lines of stdout and
// stderr keep their order when both go to one terminal.
namespace CliOutput {

void print(std::FILE *stream, const QString &text);
void printBytes(std::FILE *stream, const QByteArray &bytes);
// The messages from `first` on, one "title: text" line each, the detail (why a
// file could not be read) on the line below.
void printMessages(std::FILE *stream, const QList<CliPrompts::Message> &messages, qsizetype first = 0);
// "cubrix-cli: " followed by `text`.
void printError(std::FILE *stream, const QString &text);

} // namespace CliOutput
