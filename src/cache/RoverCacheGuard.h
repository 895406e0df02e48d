#pragma once

#include <QString>

// Rover owns the blocksets in its cache and the index beside them: Cubrix opens
// them read-only, however they are opened (from the cache manager, File > Open,
// a drop or the command line), so nothing there changes behind Rover's back.

// Why the file at `path` must not be changed: "" when it lies in no cache folder
// of Rover that this machine's registrations name.
QString roverCacheReason(const QString &path);
