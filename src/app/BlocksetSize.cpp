#include "app/BlocksetSize.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace BlocksetSize {

QString groupedBytes(qint64 bytes)
{
    QString digits = QString::number(bytes < 0 ? -bytes : bytes);
    for (qsizetype i = digits.size() - 3; i > 0; i -= 3)
        digits.insert(i, u',');
    return bytes < 0 ? u'-' + digits : digits;
}

QString webLimitFinding(qint64 bytes)
{
    return u"Rover refuses this blockset from a web address: %1 bytes, at most %2 (a spot that names it by a "
           "file:// address still loads it)"_s.arg(groupedBytes(bytes), groupedBytes(kWebLimit));
}

QString shareOfLimit(qint64 bytes)
{
    // Rounded up, so that a blockset one byte over the limit never reads "300 KB".
    return u"%1 KB of %2 KB"_s.arg((bytes + 1023) / 1024).arg(kWebLimit / 1024);
}

double percentOfLimit(qint64 bytes)
{
    return 100.0 * double(bytes) / double(kWebLimit);
}

QString ruleText(qint64 bytes)
{
    return u"Saved, this blockset takes %1 bytes, %2 % of the 307,200 bytes (300 KB) that Rover accepts.\n"
           "Rover refuses a larger blockset when a spot names it by a web (http://) address; only a "
           "blockset named by a file:// address may be larger."_s.arg(groupedBytes(bytes))
               .arg(percentOfLimit(bytes), 0, 'f', 1);
}

} // namespace BlocksetSize

qint64 SavedSize::bytesOf(Kind kind) const
{
    qint64 sum = 0;
    for (const Entry &entry : entries) {
        if (entry.kind == kind)
            sum += entry.total;
    }
    return sum;
}

QList<SavedSize::Entry> SavedSize::largest(int count) const
{
    QList<Entry> sorted = entries;
    std::stable_sort(sorted.begin(), sorted.end(), [](const Entry &a, const Entry &b) { return a.total > b.total; });
    if (sorted.size() > count)
        sorted.resize(count);
    return sorted;
}

QString SavedSize::kindName(Kind kind)
{
    switch (kind) {
    case Blocks: return u"Blocks"_s;
    case Textures: return u"Textures"_s;
    case Sounds: return u"Sounds"_s;
    case Style: return u"Style"_s;
    case Other: break;
    }
    return u"Other files"_s;
}

SavedSize::Kind SavedSize::kindOf(const QString &path, const QString &styleName)
{
    if (path.compare(styleName, Qt::CaseInsensitive) == 0)
        return Style;
    const QString folder = path.section(u'/', 0, 0).toLower();
    if (!path.contains(u'/'))
        return Other;
    if (folder == "blocks"_L1)
        return Blocks;
    if (folder == "textures"_L1)
        return Textures;
    if (folder == "sounds"_L1)
        return Sounds;
    return Other;
}
