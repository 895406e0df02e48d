#pragma once

#include "cache/CacheRow.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

class CacheIndexFile;

// Finds the row of the cached file an index element stands for: by the whole
// address (host and folders mapped to the row's folder, ignoring case); only an
// address that maps to no folder falls back to the file name, and then only when
// exactly one row has that name.
class CacheRowLookup {
public:
    // `rows` must outlive the lookup.
    explicit CacheRowLookup(const QList<CacheRow> &rows);
    // The row's position; -1 when no row holds the blockset of `href`.
    int find(const QString &href) const;

private:
    const QList<CacheRow> &m_rows;
    QHash<QString, int> m_byKey;
    mutable QHash<QString, int> m_byName; // -1: several rows have the name
};

// Every row: "nothing known" (there is no index Rover can use).
void markNoCacheIndex(QList<CacheRow> &rows);
// Sets each row's Last Updated from the elements of `index` that stand for it
// ("not listed" when none does; a later element wins) and fills its Version,
// Name and Synopsis where the archive left them unknown (the first element wins).
void applyCacheIndex(const CacheIndexFile &index, QList<CacheRow> &rows);
// What the manager says of the parts of `index` Rover would reject.
QStringList cacheIndexNotes(const CacheIndexFile &index);

// One change the user asks for.
enum class CacheIndexChange { Remove, ForceDownload };
struct CacheIndexEdit {
    QByteArray bytes; // the new index
    int changed = 0;  // elements of the chosen file removed or marked
    int rejected = 0; // parts Rover would reject, left out
    int missing = 0;  // elements whose file is not among the files, left out
    // What the user is told of the parts left out ("" when none).
    QString droppedText() const;
};
// The index with the change made to the elements of the file `key` (see
// cacheKeyOfFile); every element whose file is not among `files` (the cache as it
// is on disk) and every part Rover would reject is left out; everything else stays
// exactly as it was.
CacheIndexEdit editCacheIndex(const CacheIndexFile &index, const QList<CacheRow> &files, const QString &key,
                              CacheIndexChange change);
