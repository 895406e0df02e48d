#pragma once

#include <QByteArray>
#include <QString>

class Prompts;

// After a save: runs Rover's rules over the style and update file just
// written and, when Rover would reject either, tells the user in one message
// titled "Rover compatibility" (file, line, reason of every error). An empty
// file name means that file was not written by this save.
void reportRoverCompatibility(Prompts &prompts, const QString &styleName, const QByteArray &style,
                              const QString &updateName, const QByteArray &update);
