#pragma once

#include <QString>

// The names of a blockset's items, as Windows (where blocksets come from) and
// Rover (which looks them up) see them.

// Why `name` cannot be the file name of an item, in words that follow "cannot be
// used as a file name: "; "" when it can. Refused: an empty stem, a blank at the
// start or end (Rover trims the value that names the file, so it never finds it),
// a character Windows-1252 cannot write (the style holds Windows-1252 bytes),
// path separators and the characters Windows forbids, a trailing full stop, a
// reserved device name.
QString fileNameProblem(const QString &name);
bool isPortableFileName(const QString &name);
// Whether two names are the same file to Windows and to Rover: ignoring the case
// of every letter.
bool sameFileName(const QString &a, const QString &b);
// The message of a refused name: "x" cannot be used as a file name: REASON!
QString refusedNameText(const QString &name, const QString &problem);
// The character of `text` that Windows-1252 cannot write, or "" when there is none.
QString firstCharacterOutsideCp1252(const QString &text);
