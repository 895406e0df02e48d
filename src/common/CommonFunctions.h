#pragma once

#include <QDateTime>
#include <QString>

// Path, file and date helpers. Windows-style paths split at "\"; none of them
// fails: "" is the "nothing" result.

QString getFileName(const QString &path);      // text after the last "\"
QString getUrlFileName(const QString &url);    // text after the last "/"
QString getExtension(const QString &path);     // text after the last "."
QString getFolder(const QString &path);        // text before the last "\"
QString getBaseName(const QString &path);      // getFileName cut before its last "."
bool fileExists(const QString &path);          // a regular file matches (wildcards allowed)
qint32 dateToUnixTime(const QDateTime &date);  // local-time seconds since 1/1/1970
QDateTime unixTimeToDate(qint32 seconds);

// The same splits for the platform's own paths (separator "/" here, and also "\" on Windows).
QString nativeFileName(const QString &path);
QString nativeFolder(const QString &path);
QString nativeBaseName(const QString &path);  // file name cut before its last "."
