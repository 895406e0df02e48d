#pragma once

#include "storage/PlatformFile.h"

#include <QByteArray>
#include <QString>

// What the blockset file on disk was when this editor last read or wrote it: its
// stamp (size, times, inode) and a hash of its bytes, so that a change by another
// program is noticed even when it keeps the size and the time.
struct DiskIdentity {
    PlatformFile::FileStamp stamp;
    QByteArray hash;

    static DiskIdentity of(const QString &path);
    // Whether the file at `path` is still this one (the hash is read only when the stamp moved).
    bool matches(const QString &path) const;
    bool operator==(const DiskIdentity &) const = default;
};
