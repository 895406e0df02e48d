#include "cache/CacheAddress.h"

using namespace Qt::StringLiterals;

namespace {

// A folder or file name Windows can create.
bool isWindowsName(QStringView name)
{
    if (name.isEmpty() || name == u"."_s || name == u".."_s)
        return false;
    for (const QChar c : name) {
        if (c.unicode() < 0x20 || QStringView(u"<>:\"?*").contains(c))
            return false;
    }
    return true;
}

} // namespace

QString cacheKeyOfAddress(QStringView href)
{
    if (href.startsWith(u"http://"_s, Qt::CaseInsensitive))
        href = href.sliced(7);
    // A "\" already separates folders for Windows.
    QString path = href.toString();
    path.replace(u'\\', u'/').replace(u'|', u':');
    QString key;
    key.reserve(path.size());
    for (QStringView name : QStringView(path).tokenize(u'/')) {
        if (!isWindowsName(name))
            return {};
        if (!key.isEmpty())
            key += u'\\';
        key += name;
    }
    return key.toCaseFolded();
}

QString cacheKeyOfFile(const QString &path, const QString &fileName)
{
    return (path.isEmpty() ? fileName : path + u'\\' + fileName).toCaseFolded();
}

QString cacheKeyOfName(QStringView href)
{
    return href.sliced(href.lastIndexOf(u'/') + 1).toString().toCaseFolded();
}
