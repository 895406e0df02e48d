#pragma once

#include "storage/Result.h"

#include <QByteArray>
#include <QFileInfoList>
#include <QString>
#include <QStringList>

// Whole-file reads and writes of the document, with the system's reason on failure.

// Files of `folder` matching `patterns` (ignoring case), in the order a sorted
// folder listing gives.
QFileInfoList listFolderFiles(const QString &folder, const QStringList &patterns);
Result readWholeFile(const QString &path, QByteArray &bytes);
// Written beside the target and renamed over it: the old file stays whole on failure.
Result writeWholeFile(const QString &path, const QByteArray &bytes);
