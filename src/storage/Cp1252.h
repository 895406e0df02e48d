#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

// Windows-1252, the single-byte code page of every blockset text file and of
// Rover's cache index. Every byte maps to one character and back, including the
// five bytes the code page leaves undefined (they map to U+0081 and friends), so
// a file read and written unchanged round-trips byte for byte.
QString fromCp1252(QByteArrayView bytes);
// Characters outside the code page become "?".
QByteArray toCp1252(const QString &text);
// Whether every character of `text` has a byte in the code page.
bool isCp1252(const QString &text);
