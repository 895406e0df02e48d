#include "app/RecentFiles.h"

#include "common/RegistryWrapper.h"
#include "storage/PlatformFile.h"

#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace {

const QString kValue = u"recentFiles"_s;

bool sameFile(const QString &a, const QString &b)
{
    return QFileInfo(a).absoluteFilePath() == QFileInfo(b).absoluteFilePath();
}

} // namespace

QStringList RecentFiles::paths() const
{
    return m_settings.getStringSetting(kValue).split(u'|', Qt::SkipEmptyParts).mid(0, kLimit);
}

void RecentFiles::add(const QString &path)
{
    QStringList list = paths();
    list.removeIf([&](const QString &known) { return sameFile(known, path); });
    list.prepend(QFileInfo(path).absoluteFilePath());
    store(list.mid(0, kLimit));
    PlatformFile::addRecentDocument(path, u"application/vnd.quillmoor.blockset"_s);
}

void RecentFiles::remove(const QString &path)
{
    QStringList list = paths();
    list.removeIf([&](const QString &known) { return sameFile(known, path); });
    store(list);
}

void RecentFiles::clear()
{
    store({});
}

void RecentFiles::store(const QStringList &paths)
{
    (void)m_settings.setStringSetting(kValue, paths.join(u'|')); // best effort, as every setting
}
