#include "cache/RoverCacheGuard.h"

#include "cache/CacheLocation.h"

#include <QDir>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace {

// Whether `path` lies below `folder`, compared as the file system of the cache
// (Windows, through Wine) compares names: ignoring case.
bool liesBelow(const QString &path, const QString &folder)
{
    if (folder.isEmpty())
        return false;
    const QString file = QDir::cleanPath(QFileInfo(path).absoluteFilePath());
    QString root = QDir::cleanPath(QFileInfo(folder).absoluteFilePath());
    if (!root.endsWith(u'/'))
        root += u'/';
    return file.startsWith(root, Qt::CaseInsensitive);
}

} // namespace

QString roverCacheReason(const QString &path)
{
    RoverMachine machine;
    for (const QString &folder : {machine.cacheFolderIE(), machine.cacheFolderNetscape()}) {
        if (liesBelow(path, folder)
            || liesBelow(QFileInfo(path).canonicalFilePath(), QFileInfo(folder).canonicalFilePath()))
            return u"it lies in Rover's blockset cache (\"%1\"), which Rover keeps"_s.arg(folder);
    }
    return QString();
}
