#pragma once

#include "storage/Result.h"

#include <QByteArray>
#include <QString>

// Puts a new archive and its update file in place together: both or neither.
//
// Both new files are written and put on disk beside their targets first (under
// hidden names). A journal beside the archive then records the switch, the old
// archive gets a second name (kept until the switch is done), and the two new
// files are renamed over their targets. When the update file cannot be renamed,
// the old archive goes back. A process killed at any moment leaves a journal that
// the next open completes or rolls back (recover), so the pair on disk is always
// the old one or the new one.
namespace PairSwitch {

// Writes `bytes` beside `path` under a hidden name (returned), on disk.
Result writeAside(const QString &path, const QByteArray &bytes, QByteArray &asideName);
// Switches to the new pair: `archivePath` and `updatePath` lie in one folder,
// `newArchive` and `newUpdate` are the hidden names of the written files there.
Result switchPair(const QString &archivePath, const QByteArray &newArchive, const QString &updatePath,
                  const QByteArray &newUpdate);
// Drops a hidden file written for a switch that is not going to happen.
void dropAside(const QString &besidePath, const QByteArray &asideName);
// Completes or rolls back a switch a killed save left half done; nothing when
// there is no journal beside `archivePath`.
Result recover(const QString &archivePath);

} // namespace PairSwitch
