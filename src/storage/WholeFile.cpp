#include "storage/WholeFile.h"

#include "storage/PlatformFile.h"

#include <QFileInfo>
#include <QSaveFile>

using namespace Qt::StringLiterals;

Result readWholeFile(const QString &path, QByteArray &bytes)
{
    bytes.clear();
    qint64 size = 0;
    int err = 0;
    const PlatformFile::FileHandle file = PlatformFile::openToRead(PlatformFile::encodeName(path), size, err);
    if (!file.isOpen()) {
        if (err != 0)
            return Result::failure(u"cannot read \"%1\": %2"_s.arg(path, PlatformFile::errorText(err)));
        return Result::failure(QFileInfo(path).isDir() ? u"\"%1\" is a folder"_s.arg(path)
                                                       : u"\"%1\" is not a regular file"_s.arg(path));
    }
    bytes.resize(qsizetype(size));
    if (size > 0 && !PlatformFile::readAt(file.get(), bytes.data(), size, 0)) {
        bytes.clear();
        return Result::failure(u"cannot read \"%1\""_s.arg(path));
    }
    return Result();
}

Result writeWholeFile(const QString &path, const QByteArray &bytes)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit())
        return Result::failure(u"cannot write \"%1\": %2"_s.arg(path, file.errorString()));
    return Result();
}
