#pragma once

#include "cli/CliPrompts.h"

#include <QByteArray>
#include <QList>
#include <QString>

class BlocksetDocument;

// What `cubrix-cli info` prints about an open blockset: the state the editor's
// window would show after the open, as one JSON object or as plain text.
namespace CliReport {

// `file` is the path as the user gave it; `messages` every message the open showed.
QByteArray infoJson(const QString &file, const BlocksetDocument &document, const QList<CliPrompts::Message> &messages);
QString infoText(const QString &file, const BlocksetDocument &document, const QList<CliPrompts::Message> &messages);

// The selected entry of the prefix list as a one-character text ("" when out of range).
QString prefixCharacter(int prefixIndex);

} // namespace CliReport
