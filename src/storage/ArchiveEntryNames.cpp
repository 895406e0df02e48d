#include "storage/ArchiveEntryNames.h"

#include "storage/Cp1252.h"
#include "storage/PlatformFile.h"

#include <QByteArrayView>

namespace ArchiveEntryNames {

QString decode(const QByteArray &stored, bool utf8Flag)
{
    return utf8Flag ? QString::fromUtf8(stored) : fromCp1252(stored);
}

QByteArray encode(const QString &name, bool &utf8Flag)
{
    utf8Flag = !isCp1252(name);
    return utf8Flag ? name.toUtf8() : toCp1252(name);
}

bool split(const QByteArray &name, std::vector<QByteArray> &parts, bool &isFolder)
{
    parts.clear();
    if (name.isEmpty())
        return false;
    const char first = name.at(0);
    if (first == '/' || first == '\\')
        return false;
    if (name.size() >= 2 && name.at(1) == ':' && ((first >= 'A' && first <= 'Z') || (first >= 'a' && first <= 'z')))
        return false;
    const char last = name.at(name.size() - 1);
    isFolder = last == '/' || last == '\\';
    qsizetype start = 0;
    for (qsizetype i = 0; i <= name.size(); ++i) {
        if (i < name.size() && name.at(i) != '/' && name.at(i) != '\\')
            continue;
        const QByteArrayView part(name.constData() + start, i - start);
        start = i + 1;
        if (part.isEmpty() || part == ".")
            continue;
        if (part == "..")
            return false;
        if (!PlatformFile::isPlainName(part))
            return false;
        parts.push_back(part.toByteArray());
        if (int(parts.size()) > kMaxDepth)
            return false;
    }
    return !parts.empty();
}

} // namespace ArchiveEntryNames
