#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

class Prompts;

// After a save: runs Rover's rules over the style and update file just
// written and, when Rover would reject either, or refuse the archive of
// `archiveSize` bytes (`archiveName`) from a web address, tells the user in
// one message titled "Rover compatibility" (file, line, reason of every
// error). An empty file name means that file was not written by this save.
// `blockFiles` are the files of the blocks folder the style's entries must name.
void reportRoverCompatibility(Prompts &prompts, const QString &styleName, const QByteArray &style,
                              const QStringList &blockFiles, const QString &updateName, const QByteArray &update,
                              const QString &archiveName = QString(), qint64 archiveSize = 0);
