#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

// The update file's bytes (Windows-1252, CR LF): version line, comment, "</version>".
QByteArray writeUpdate(const QString &version, const QString &comment, qint32 size);
// The update comment of an update file, as writeUpdate was given it: its line
// breaks (as "\n"), tabs and blanks kept. A file an earlier version wrote with the
// comment joined on one line simply gives that line.
QString readUpdate(QByteArrayView bytes);
