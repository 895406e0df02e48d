#pragma once

#include <QByteArrayView>

// Whether Windows reads `part`, one component of a path (UTF-8), as the file it
// names. It reads more into some: "a:b" names a data stream of "a", trailing dots
// and spaces are dropped, and device names (CON, NUL, COM1, LPT¹, ...) with any
// extension reach devices.
bool isWindowsPlainName(QByteArrayView part);
