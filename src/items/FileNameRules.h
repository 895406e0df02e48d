#pragma once

#include <QString>

// Whether `name` can be a file name in a blockset on every system that reads it:
// no path separator, no character Windows forbids or Windows-1252 cannot write,
// no trailing blank or full stop, not a reserved device name.
bool isPortableFileName(const QString &name);
