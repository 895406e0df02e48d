#pragma once

#include <QDateTime>
#include <QString>

// Path, file and date helpers. Windows-style paths split at "\"; none of them
// fails: "" is the "nothing" result.

QString getFileName(const QString &path);   // text after the last "\"
QString getUrlFileName(const QString &url); // text after the last "/"
QString getExtension(const QString &path);  // text after the last "."
QString getFolder(const QString &path);     // text before the last "\"
QString getBaseName(const QString &path);   // getFileName cut before its last "."
// True when a regular file matches; "*" and "?" may stand in the last part of
// the path (matched as a Windows listing does, see FileFilter::matches). A folder
// path is false, and so is every error.
bool fileExists(const QString &path);
// Dates count in local time without any zone or daylight offset: the date's
// own fields are taken as they stand, and 1/1/1970 00:00:00 is second 0.
// Results beyond the 32-bit range are clamped; an invalid date gives 0.
qint32 dateToUnixTime(const QDateTime &date); // local-time seconds since 1/1/1970
// A local date-time; a time the local clock skips (daylight saving) keeps its
// fields as a UTC date-time, so it still shows and converts back unchanged.
QDateTime unixTimeToDate(qint32 seconds);

// The same splits for the platform's own paths (separator "/" here, and also "\" on Windows).
QString nativeFileName(const QString &path);
// Text before the last separator, without it (as getFolder: "/castle.bset" gives "").
QString nativeFolder(const QString &path);
QString nativeBaseName(const QString &path); // file name cut before its last "."
