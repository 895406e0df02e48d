#include "cache/WinePath.h"

#include <QDir>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace {

// The entry of `folder` named `segment` ignoring case; an exact match wins.
QString matchEntry(const QString &folder, const QString &segment)
{
    if (QFileInfo::exists(folder + u'/' + segment))
        return segment;
    const QStringList entries =
        QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    for (const QString &entry : entries) {
        if (entry.compare(segment, Qt::CaseInsensitive) == 0)
            return entry;
    }
    return segment;
}

} // namespace

QString winePathToHost(const QString &prefix, const QString &windowsPath)
{
    if (windowsPath.size() < 2 || windowsPath.at(1) != u':' || !windowsPath.at(0).isLetter())
        return {};
    const QString drive = prefix + u"/dosdevices/"_s + windowsPath.at(0).toLower() + u':';
    const QFileInfo driveInfo(drive);
    if (!driveInfo.exists())
        return {};
    QString host = driveInfo.canonicalFilePath();
    if (host.isEmpty())
        return {};
    const QStringList segments = windowsPath.mid(2).split(u'\\', Qt::SkipEmptyParts);
    for (const QString &segment : segments) {
        if (segment == u"."_s)
            continue;
        if (segment == u".."_s) {
            host = QFileInfo(host).path();
            continue;
        }
        host += u'/' + matchEntry(host, segment);
    }
    return host;
}

QString winePrefix()
{
    const QString prefix = qEnvironmentVariable("WINEPREFIX");
    return prefix.isEmpty() ? QDir::homePath() + u"/.wine"_s : prefix;
}
