#include "cache/CacheAddress.h"

using namespace Qt::StringLiterals;

namespace {

// A character Windows allows in a folder or file name; Rover turns "|" into
// ":", which none may hold.
bool isNameChar(QChar c)
{
    switch (c.unicode()) {
    case '|':
    case '<':
    case '>':
    case ':':
    case '"':
    case '?':
    case '*': return false;
    default: return c.unicode() >= 0x20;
    }
}

} // namespace

QString cacheKeyOfAddress(QStringView href)
{
    if (href.startsWith(u"http://"_s, Qt::CaseInsensitive))
        href = href.sliced(7);
    // A "\" already separates folders for Windows.
    QString key(href.size(), Qt::Uninitialized);
    QChar *to = key.data();
    qsizetype nameStart = 0;
    for (qsizetype i = 0; i <= href.size(); ++i) {
        const QChar c = i < href.size() ? href[i] : QChar(u'/');
        if (c == u'/' || c == u'\\') {
            const QStringView name = href.sliced(nameStart, i - nameStart);
            if (name.isEmpty() || name == u"."_s || name == u".."_s)
                return {};
            if (i < href.size())
                *to++ = u'\\';
            nameStart = i + 1;
        } else if (!isNameChar(c)) {
            return {};
        } else {
            *to++ = c;
        }
    }
    key.truncate(to - key.constData());
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
