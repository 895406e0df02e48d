#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>

// The text rules of Wine's registry files: blanks, Wine's string escapes, hex
// data lists, and how key and value names compare (ignoring case).
namespace HiveText {

bool isBlank(char c);
int hexDigit(char c);
// Reads a Wine-escaped string from `line` at `pos` up to the unescaped `endChar`.
// Returns the position after `endChar`, or -1 when the line ends first.
qsizetype parseEscaped(const QByteArray &line, qsizetype pos, char endChar, QString &out);
// Escapes text the way Wine writes it: "\" and the characters of `special` get a
// backslash, control characters C escapes or octal, characters above 127 "\x".
QByteArray escape(const QString &text, const char *special);
qsizetype skipBlanks(const QByteArray &line, qsizetype pos);
bool onlyBlanksFrom(const QByteArray &line, qsizetype pos);
// "01,02,ff" (blanks allowed around the bytes) into bytes; false when malformed.
bool parseHexBytes(const QByteArray &text, QByteArray &bytes);
// Names compare ignoring case, as the registry's do.
QString foldName(const QString &name);
// A key path given by a caller: names separated by "\", none of them empty.
std::optional<QStringList> splitKeyPath(const QString &path);

} // namespace HiveText
