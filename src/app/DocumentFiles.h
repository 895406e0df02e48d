#pragma once

#include "storage/WholeFile.h"

#include <QByteArray>
#include <QFileInfoList>
#include <QString>
#include <QStringList>

// The files of the working folder as the document lists them.

// Files of `folder` matching `patterns` (ignoring case), in the order a sorted
// folder listing gives.
QFileInfoList listFolderFiles(const QString &folder, const QStringList &patterns);
