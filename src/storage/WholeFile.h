#pragma once

#include "storage/Result.h"

#include <QByteArray>
#include <QString>

// Whole-file reads and writes with the system's reason on failure.

// Reads the regular file at `path`. A folder, a pipe or a device is refused at
// once and never read, so a named pipe cannot make a command hang.
Result readWholeFile(const QString &path, QByteArray &bytes);
// Written beside the target and renamed over it: the old file stays whole on failure.
Result writeWholeFile(const QString &path, const QByteArray &bytes);
