#include "cache/CacheIndexStore.h"

#include "storage/PlatformFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QThread>

using namespace Qt::StringLiterals;

namespace {

constexpr int kTries = 20;
constexpr unsigned long kPauseMs = 50;

QString failure(const QString &path, const QString &reason)
{
    return QDir::toNativeSeparators(path) + u": "_s + reason;
}

// Whether the text holds its end tag </CACHE> (in any case).
bool looksWhole(const QByteArray &bytes)
{
    for (qsizetype at = bytes.indexOf("</"); at >= 0; at = bytes.indexOf("</", at + 2)) {
        if (qstrnicmp(bytes.constData() + at, "</cache>", 8) == 0)
            return true;
    }
    return false;
}

} // namespace

Result readCacheIndexFile(const QString &path, QByteArray &bytes, bool &exists)
{
    const QByteArray name = PlatformFile::encodeName(path);
    QString reason;
    for (int attempt = 0; attempt < kTries; ++attempt) {
        if (attempt > 0)
            QThread::msleep(kPauseMs);
        const PlatformFile::FileStamp before = PlatformFile::fileStamp(name);
        exists = !before.missing;
        if (before.missing)
            return {};
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly)) {
            reason = file.errorString();
            continue;
        }
        bytes = file.readAll();
        if (file.error() != QFileDevice::NoError) {
            reason = file.errorString();
            continue;
        }
        reason.clear();
        if (PlatformFile::fileStamp(name) == before && looksWhole(bytes))
            return {};
    }
    return reason.isEmpty() ? Result() : Result::failure(failure(path, reason));
}

Result writeCacheIndexFile(const QString &path, const QByteArray &bytes)
{
    const QFileInfo old(path);
    if (old.exists() && !(old.permissions() & (QFile::WriteOwner | QFile::WriteGroup | QFile::WriteOther)))
        return Result::failure(failure(path, u"the file is read-only"_s));
    QSaveFile out(path);
    if (!out.open(QIODevice::WriteOnly))
        return Result::failure(failure(path, out.errorString()));
    if (out.write(bytes) != bytes.size()) {
        const QString reason = out.errorString();
        out.cancelWriting();
        return Result::failure(failure(path, reason));
    }
    if (!out.commit())
        return Result::failure(failure(path, out.errorString()));
    return {};
}
