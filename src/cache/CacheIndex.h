#pragma once

#include "cache/CacheRow.h"

#include <QByteArray>
#include <QList>
#include <QString>

// Rover's cache index "cache.txt": <CACHE>, one <BLOCKSET .../> per downloaded
// blockset, </CACHE>; Windows-1252 text with CR LF.

// Applies the index `bytes` to `rows`: every row's Last Updated becomes "not
// listed", then each blockset element whose href ends in a row's File Name
// (exact comparison) sets that row's time and fills its Version, Name and
// Synopsis where the archive left them unknown. Tolerant: whatever cannot be
// read simply matches nothing.
void readCacheIndex(const QByteArray &bytes, QList<CacheRow> &rows);
// Every row: "nothing known" (there is no index at all).
void markNoCacheIndex(QList<CacheRow> &rows);

// The index for `rows` in list order; rows the old index did not list are left
// out. SIZE is the byte count in digits only and UPDATED the seconds as read (or
// "0" for a forced download), so Rover's strict reader always accepts the file.
// False when a row has no known time (there was no index to take it from).
bool cacheIndexBytes(const QList<CacheRow> &rows, QByteArray &bytes);
// Writes the index to `file`, replacing it only once the new one is whole on disk.
bool writeCacheIndexFile(const QString &file, const QList<CacheRow> &rows);
