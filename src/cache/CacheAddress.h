#pragma once

#include <QString>
#include <QStringView>

// Where Rover keeps a downloaded blockset: its cache folder + the address
// without "http://", every "/" turned into "\" and "|" into ":", nothing decoded
// ("http://www.a.example/sets/Castle.bset" is "www.a.example\sets\Castle.bset").
// Keys compare such relative paths as Rover's file system does: ignoring case.

// The key of the file Rover keeps for `href`; "" when the address maps to no
// file Windows could hold (a port, a "file:" address, an empty folder name).
QString cacheKeyOfAddress(QStringView href);
// The key of the file `fileName` in the folder `path` ("www.a.example\sets", ""
// for the cache folder itself).
QString cacheKeyOfFile(const QString &path, const QString &fileName);
// The key of the address's last "/" part, for matching by file name alone.
QString cacheKeyOfName(QStringView href);
