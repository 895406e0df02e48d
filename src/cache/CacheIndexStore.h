#pragma once

#include "storage/Result.h"

#include <QByteArray>
#include <QString>

// The index file on disk. Rover overwrites it in place (not atomically) while
// it runs, so a read may meet a file that is being written.

// Reads the index at `path` as it is now, again for up to a second while it
// changes under the read or holds no end tag yet. `exists` tells whether there
// is an index at all; a missing file is no failure.
Result readCacheIndexFile(const QString &path, QByteArray &bytes, bool &exists);
// Replaces the index with `bytes`, the old one staying whole until the new one
// is complete on disk. A read-only index is not replaced, as Windows would
// refuse to: the failure names the file and the reason.
Result writeCacheIndexFile(const QString &path, const QByteArray &bytes);
