#include "app/DiskIdentity.h"

#include <QCryptographicHash>

namespace {

// The hash of a regular file's bytes; a pipe or a device is never read.
QByteArray hashOf(const QString &path)
{
    qint64 size = 0;
    int err = 0;
    const PlatformFile::FileHandle file = PlatformFile::openToRead(PlatformFile::encodeName(path), size, err);
    if (!file.isOpen())
        return QByteArray();
    QCryptographicHash hash(QCryptographicHash::Sha1);
    QByteArray chunk(qsizetype(qMin<qint64>(size, 1 << 20)), '\0');
    for (qint64 at = 0; at < size;) {
        const qint64 length = qMin<qint64>(chunk.size(), size - at);
        if (!PlatformFile::readAt(file.get(), chunk.data(), length, at))
            return QByteArray();
        hash.addData(QByteArrayView(chunk.constData(), length));
        at += length;
    }
    return hash.result();
}

} // namespace

DiskIdentity DiskIdentity::of(const QString &path)
{
    DiskIdentity identity;
    identity.stamp = PlatformFile::fileStamp(PlatformFile::encodeName(path));
    if (identity.stamp.exists)
        identity.hash = hashOf(path);
    return identity;
}

bool DiskIdentity::matches(const QString &path) const
{
    const PlatformFile::FileStamp now = PlatformFile::fileStamp(PlatformFile::encodeName(path));
    if (now == stamp)
        return true;
    return now.exists == stamp.exists && hashOf(path) == hash;
}
