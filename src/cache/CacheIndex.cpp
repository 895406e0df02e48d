#include "cache/CacheIndex.h"

#include "common/CommonFunctions.h"
#include "storage/Cp1252.h"
#include "formats/Parser.h"

#include <QHash>
#include <QSaveFile>

#include <algorithm>
#include <limits>

using namespace Qt::StringLiterals;

namespace {

struct IndexEntry {
    QString href, version, name, synopsis, updated;
};

void fillUnknown(QString &column, const QString &value)
{
    if (!value.isEmpty() && (column.isEmpty() || column == u"?"_s))
        column = value;
}

qint32 toSeconds(const QString &text)
{
    bool ok = false;
    const qlonglong value = text.trimmed().toLongLong(&ok);
    if (!ok)
        return 0;
    return qint32(std::clamp<qlonglong>(value, std::numeric_limits<qint32>::min(), std::numeric_limits<qint32>::max()));
}

void apply(const IndexEntry &entry, QList<CacheRow> &rows, const QHash<QString, QList<int>> &byName)
{
    if (entry.href.isEmpty())
        return;
    const auto found = byName.constFind(getUrlFileName(entry.href));
    if (found == byName.cend())
        return;
    for (int index : *found) {
        CacheRow &row = rows[index];
        if (entry.updated == u"0"_s) {
            row.updated = CacheRow::Updated::ForceDownload;
        } else {
            row.updated = CacheRow::Updated::Date;
            row.updatedTime = toSeconds(entry.updated);
        }
        fillUnknown(row.version, entry.version);
        fillUnknown(row.name, entry.name);
        fillUnknown(row.synopsis, entry.synopsis);
    }
}

void appendAttribute(QString &line, QLatin1StringView name, const QString &value)
{
    // Rover's strings have no escape: a double quote inside would end the value early.
    QString clean = value;
    clean.replace(u'"', u'\'');
    // Rover reads the index line by line and cuts a line at a NUL: a value keeps
    // to its line and holds no NUL, or the whole index would be refused.
    clean.remove(QChar(0)).remove(u'\r').remove(u'\n');
    line += u' ' + name + u"=\""_s + clean + u'"';
}

} // namespace

void markNoCacheIndex(QList<CacheRow> &rows)
{
    for (CacheRow &row : rows)
        row.updated = CacheRow::Updated::NoIndex;
}

void readCacheIndex(const QByteArray &bytes, QList<CacheRow> &rows)
{
    QHash<QString, QList<int>> byName;
    for (int i = 0; i < rows.size(); ++i) {
        rows[i].updated = CacheRow::Updated::NotListed;
        byName[rows[i].fileName].append(i);
    }
    Parser parser;
    parser.setBuffer(bytes);
    parser.normaliseBuffer();
    QByteArrayView tag;
    while (parser.getNextTagView(tag)) {
        QByteArrayView word;
        if (!getNextWordView(tag, word))
            continue; // a comment
        if (nameEquals(word, "/cache"_L1))
            break;
        if (!nameEquals(word, "blockset"_L1))
            continue;
        IndexEntry entry;
        QByteArrayView name, value;
        while (getNextAttributeView(tag, name, value)) {
            QString *target = nameEquals(name, "href"_L1)       ? &entry.href
                              : nameEquals(name, "version"_L1)  ? &entry.version
                              : nameEquals(name, "name"_L1)     ? &entry.name
                              : nameEquals(name, "synopsis"_L1) ? &entry.synopsis
                              : nameEquals(name, "updated"_L1)  ? &entry.updated
                                                                : nullptr;
            if (target)
                *target = fromCp1252(value);
        }
        apply(entry, rows, byName);
    }
}

bool cacheIndexBytes(const QList<CacheRow> &rows, QByteArray &bytes)
{
    QString text = u"<CACHE>\r\n"_s;
    for (const CacheRow &row : rows) {
        if (row.updated == CacheRow::Updated::NotListed)
            continue;
        if (row.updated == CacheRow::Updated::NoIndex)
            return false;
        QString line = u"\t<BLOCKSET"_s;
        appendAttribute(line, "HREF"_L1, row.url());
        appendAttribute(line, "SIZE"_L1, QString::number(row.size));
        appendAttribute(line, "UPDATED"_L1,
                        row.updated == CacheRow::Updated::ForceDownload ? u"0"_s : QString::number(row.updatedTime));
        if (row.name != u"?"_s)
            appendAttribute(line, "NAME"_L1, row.name);
        if (row.synopsis != u"?"_s)
            appendAttribute(line, "SYNOPSIS"_L1, row.synopsis);
        if (row.version != u"?"_s)
            appendAttribute(line, "VERSION"_L1, row.version);
        text += line + u"/>\r\n"_s;
    }
    text += u"</CACHE>\r\n"_s;
    bytes = toCp1252(text);
    return true;
}

bool writeCacheIndexFile(const QString &file, const QList<CacheRow> &rows)
{
    QByteArray bytes;
    if (!cacheIndexBytes(rows, bytes))
        return false;
    QSaveFile out(file);
    if (!out.open(QIODevice::WriteOnly))
        return false;
    if (out.write(bytes) != bytes.size()) {
        out.cancelWriting();
        return false;
    }
    return out.commit();
}
