#include "cache/CacheIndex.h"

#include "cache/CacheAddress.h"
#include "cache/CacheIndexFile.h"

using namespace Qt::StringLiterals;

namespace {

void fillUnknown(QString &column, const QString &value)
{
    if (!value.isEmpty() && (column.isEmpty() || column == u"?"_s))
        column = value;
}

QString elements(int count)
{
    return count == 1 ? u"1 element"_s : QString::number(count) + u" elements"_s;
}

} // namespace

CacheRowLookup::CacheRowLookup(const QList<CacheRow> &rows) : m_rows(rows)
{
    m_byKey.reserve(rows.size());
    for (int i = 0; i < rows.size(); ++i)
        m_byKey.insert(cacheKeyOfFile(rows[i].path, rows[i].fileName), i);
}

int CacheRowLookup::find(const QString &href) const
{
    const QString key = cacheKeyOfAddress(href);
    if (!key.isEmpty())
        return m_byKey.value(key, -1);
    if (m_byName.isEmpty()) {
        // Only an address of no folder needs the names: made at the first.
        for (int i = 0; i < m_rows.size(); ++i) {
            const QString name = cacheKeyOfFile({}, m_rows[i].fileName);
            m_byName.insert(name, m_byName.contains(name) ? -1 : i);
        }
    }
    return m_byName.value(cacheKeyOfName(href), -1);
}

void markNoCacheIndex(QList<CacheRow> &rows)
{
    for (CacheRow &row : rows)
        row.updated = CacheRow::Updated::NoIndex;
}

void applyCacheIndex(const CacheIndexFile &index, QList<CacheRow> &rows)
{
    for (CacheRow &row : rows)
        row.updated = CacheRow::Updated::NotListed;
    const CacheRowLookup lookup(rows);
    for (const CacheIndexFile::Element &element : index.elements()) {
        const int found = lookup.find(element.href);
        if (found < 0)
            continue;
        CacheRow &row = rows[found];
        row.updated = element.updated == 0 ? CacheRow::Updated::ForceDownload : CacheRow::Updated::Date;
        row.updatedTime = element.updated;
        fillUnknown(row.version, element.version);
        fillUnknown(row.name, element.name);
        fillUnknown(row.synopsis, element.synopsis);
    }
}

QStringList cacheIndexNotes(const CacheIndexFile &index)
{
    QStringList notes;
    if (!index.usable())
        return {u"cache.txt: "_s + index.problem() + u". Rover discards it and builds a new index from the files."_s};
    for (const CacheIndexFile::Rejected &part : index.rejected()) {
        notes.append(u"cache.txt line %1: %2. Rover would discard the whole index for it; the next change here "
                     "leaves it out."_s.arg(part.line)
                         .arg(part.reason));
    }
    if (index.endMissing())
        notes.append(u"cache.txt ends before </CACHE>. Rover would discard the whole index; the next change here "
                     "adds the end."_s);
    return notes;
}

QString CacheIndexEdit::droppedText() const
{
    QStringList parts;
    if (rejected > 0)
        parts.append(elements(rejected) + u" Rover would reject (for any one of them it discards the whole index)"_s);
    if (missing > 0)
        parts.append(elements(missing)
                     + u" whose blockset file is not in the cache (Rover would fail to load that blockset and never "
                       "download it again)"_s);
    return parts.isEmpty() ? QString() : u"Left out of cache.txt: "_s + parts.join(u" and "_s) + u'.';
}

CacheIndexEdit editCacheIndex(const CacheIndexFile &index, const QList<CacheRow> &files, const QString &key,
                              CacheIndexChange change)
{
    CacheIndexEdit edit;
    edit.rejected = int(index.rejected().size());
    const CacheRowLookup lookup(files);
    QList<int> dropped, forced;
    for (int i = 0; i < index.elements().size(); ++i) {
        const int found = lookup.find(index.elements()[i].href);
        if (found < 0) {
            ++edit.missing;
            dropped.append(i);
        } else if (cacheKeyOfFile(files[found].path, files[found].fileName) == key) {
            ++edit.changed;
            (change == CacheIndexChange::Remove ? dropped : forced).append(i);
        }
    }
    edit.bytes = index.rewritten(dropped, forced);
    return edit;
}
