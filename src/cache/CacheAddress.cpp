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

// The character as keys compare it: without case (ASCII, the common case,
// without a table look-up).
QChar folded(QChar c)
{
    if (c.unicode() < 0x80)
        return c.unicode() >= 'A' && c.unicode() <= 'Z' ? QChar(char16_t(c.unicode() + 32)) : c;
    return QChar::isSurrogate(c.unicode()) ? c : QChar(char16_t(QChar::toCaseFolded(char32_t(c.unicode()))));
}

// Appends `text` folded at `to`.
QChar *appendFolded(QChar *to, QStringView text)
{
    for (const QChar c : text)
        *to++ = folded(c);
    return to;
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
            *to++ = folded(c);
        }
    }
    key.truncate(to - key.constData());
    return key;
}

QString cacheKeyOfFile(const QString &path, const QString &fileName)
{
    QString key(path.size() + 1 + fileName.size(), Qt::Uninitialized);
    QChar *to = appendFolded(key.data(), path);
    if (!path.isEmpty())
        *to++ = u'\\';
    to = appendFolded(to, fileName);
    key.truncate(to - key.constData());
    return key;
}

QString cacheKeyOfName(QStringView href)
{
    const QStringView name = href.sliced(href.lastIndexOf(u'/') + 1);
    QString key(name.size(), Qt::Uninitialized);
    appendFolded(key.data(), name);
    return key;
}
