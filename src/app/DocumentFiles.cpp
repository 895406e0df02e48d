#include "app/DocumentFiles.h"

#include <QDir>
#include <QFile>
#include <QSaveFile>

using namespace Qt::StringLiterals;

QFileInfoList listFolderFiles(const QString &folder, const QStringList &patterns)
{
    const QDir dir(folder);
    return dir.entryInfoList(patterns, QDir::Files | QDir::Hidden | QDir::System, QDir::Name | QDir::IgnoreCase);
}

Result readWholeFile(const QString &path, QByteArray &bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return Result::failure(u"cannot read \"%1\": %2"_s.arg(path, file.errorString()));
    bytes = file.readAll();
    if (file.error() != QFileDevice::NoError)
        return Result::failure(u"cannot read \"%1\": %2"_s.arg(path, file.errorString()));
    return Result();
}

Result writeWholeFile(const QString &path, const QByteArray &bytes)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit())
        return Result::failure(u"cannot write \"%1\": %2"_s.arg(path, file.errorString()));
    return Result();
}
