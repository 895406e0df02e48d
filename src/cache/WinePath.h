#pragma once

#include <QString>

// Turns a Windows path ("c:\program files\rover\flatland") into the host path
// Wine uses for it inside the prefix `prefix`: the drive letter goes through the
// prefix's "dosdevices/<letter>:" link, and every following segment is matched
// case-insensitively against the folder's entries, as Wine does. A segment that
// does not exist (yet) is kept as written. "" when the path cannot be mapped: no
// drive letter (a UNC or relative path) or no such drive in the prefix.
QString winePathToHost(const QString &prefix, const QString &windowsPath);

// The Wine prefix of this user: $WINEPREFIX, else ~/.wine.
QString winePrefix();
