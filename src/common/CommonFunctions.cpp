#include "common/CommonFunctions.h"

#include "common/FileFilter.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>

#include <algorithm>
#include <limits>

using namespace Qt::StringLiterals;

namespace {

// The platform's own separators: "/" everywhere, and "\" as well on Windows.
qsizetype lastNativeSeparator(const QString &path)
{
#ifdef Q_OS_WIN
    return std::max(path.lastIndexOf(u'/'), path.lastIndexOf(u'\\'));
#else
    return path.lastIndexOf(u'/');
#endif
}

QString cutAtLastDot(const QString &fileName)
{
    const qsizetype dot = fileName.lastIndexOf(u'.');
    return dot < 0 ? fileName : fileName.left(dot);
}

bool hasWildcards(const QString &text)
{
    return text.contains(u'*') || text.contains(u'?');
}

} // namespace

QString getFileName(const QString &path)
{
    return path.mid(path.lastIndexOf(u'\\') + 1);
}

QString getUrlFileName(const QString &url)
{
    return url.mid(url.lastIndexOf(u'/') + 1);
}

QString getExtension(const QString &path)
{
    // The whole path is searched, so a dot in a folder name counts as well.
    const qsizetype dot = path.lastIndexOf(u'.');
    return dot < 0 ? QString() : path.mid(dot + 1);
}

QString getFolder(const QString &path)
{
    const qsizetype slash = path.lastIndexOf(u'\\');
    return slash < 0 ? QString() : path.left(slash);
}

QString getBaseName(const QString &path)
{
    return cutAtLastDot(getFileName(path));
}

bool fileExists(const QString &path)
{
    if (path.isEmpty() || path.contains(QChar(0)))
        return false;
    const qsizetype separator = lastNativeSeparator(path);
    const QString pattern = path.mid(separator + 1);
    if (pattern.isEmpty())
        return false; // a folder path names no file
    if (!hasWildcards(pattern))
        return QFileInfo(path).isFile();

    // A pattern in the last part: any regular file of the folder that matches it.
    // Wildcards elsewhere are taken literally, as a directory listing does.
    QString folder = separator < 0 ? QDir::currentPath() : path.left(separator);
    if (separator == 0)
        folder = u"/"_s;
    if (!QFileInfo(folder).isDir())
        return false;
    QDirIterator it(folder, QDir::Files | QDir::Hidden | QDir::NoDotAndDotDot);
    while (it.hasNext()) {
        it.next();
        if (FileFilter::matches(pattern, it.fileName()) && it.fileInfo().isFile())
            return true;
    }
    return false;
}

qint32 dateToUnixTime(const QDateTime &date)
{
    if (!date.date().isValid())
        return 0;
    // The date's own fields are counted as they stand: the epoch is midnight of
    // 1/1/1970 in the same (local) reckoning, with no zone or daylight offset.
    const QDateTime fields(date.date(), date.time().isValid() ? date.time() : QTime(0, 0), Qt::UTC);
    const qint64 seconds = fields.toSecsSinceEpoch();
    return qint32(std::clamp<qint64>(seconds, std::numeric_limits<qint32>::min(), std::numeric_limits<qint32>::max()));
}

QDateTime unixTimeToDate(qint32 seconds)
{
    const QDateTime fields = QDateTime::fromSecsSinceEpoch(seconds, Qt::UTC);
    QDateTime local(fields.date(), fields.time());
    // A time that the local clock skipped (the hour lost to daylight saving)
    // cannot be a local date-time; it keeps its fields as a UTC date-time, so it
    // still shows the same date and time and converts back to the same seconds.
    if (!local.isValid() || local.time() != fields.time() || local.date() != fields.date())
        return QDateTime(fields.date(), fields.time(), Qt::UTC);
    return local;
}

QString nativeFileName(const QString &path)
{
    return path.mid(lastNativeSeparator(path) + 1);
}

QString nativeFolder(const QString &path)
{
    const qsizetype separator = lastNativeSeparator(path);
    return separator < 0 ? QString() : path.left(separator);
}

QString nativeBaseName(const QString &path)
{
    return cutAtLastDot(nativeFileName(path));
}
