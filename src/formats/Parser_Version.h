#pragma once

#include <QByteArray>
#include <QString>

class Parser;

// The update file's bytes (Windows-1252, CR LF): version line, comment, "</version>".
QByteArray writeUpdate(const QString &version, const QString &comment, qint32 size);
// The update comment from the update file in the parser's buffer; empties the buffer.
QString readUpdate(Parser &parser);
