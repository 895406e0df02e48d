#include "storage/ArchivePaths.h"

#include <QString>

namespace {

QString folded(const QByteArray &part)
{
    return QString::fromUtf8(part).toCaseFolded();
}

} // namespace

bool ArchivePaths::isItemFolder(const QByteArray &name)
{
    const QByteArray lower = name.toLower();
    return lower == "blocks" || lower == "textures" || lower == "sounds";
}

QByteArray ArchivePaths::normalised(const QByteArray &name)
{
    if (!name.startsWith("./") && !name.contains("/./"))
        return name;
    QByteArray result;
    const QList<QByteArray> parts = name.split('/');
    for (qsizetype i = 0; i < parts.size(); ++i) {
        if (parts[i] == "." && i + 1 < parts.size())
            continue;
        if (!result.isEmpty())
            result += '/';
        result += parts[i];
    }
    if (name.endsWith('/') && !result.endsWith('/'))
        result += '/';
    return result;
}

QByteArray ArchivePaths::place(std::vector<QByteArray> &parts, bool isFolder)
{
    const size_t folders = isFolder ? parts.size() : parts.size() - 1;
    QString key;
    for (size_t i = 0; i < folders; ++i) {
        key += folded(parts[i]);
        key += u'/';
        const auto known = m_folders.constFind(key);
        if (known != m_folders.constEnd()) {
            parts[i] = known.value();
            continue;
        }
        if (i == 0 && isItemFolder(parts[i]))
            parts[i] = parts[i].toLower();
        m_folders.insert(key, parts[i]);
    }
    if (isFolder)
        return QByteArray();
    key += folded(parts.back());
    QByteArray &last = m_files[key];
    QByteArray earlier = last != parts.back() ? last : QByteArray();
    last = parts.back();
    return earlier;
}
