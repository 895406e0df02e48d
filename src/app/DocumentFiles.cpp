#include "app/DocumentFiles.h"

#include <QDir>

using namespace Qt::StringLiterals;

QFileInfoList listFolderFiles(const QString &folder, const QStringList &patterns)
{
    const QDir dir(folder);
    return dir.entryInfoList(patterns, QDir::Files | QDir::Hidden | QDir::System, QDir::Name | QDir::IgnoreCase);
}
