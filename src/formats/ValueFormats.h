#pragma once

#include <QString>
#include <array>
#include <optional>

// The value texts of the style file and the settings page:
// colour "(r,g,b)" each 0..255, percentage "n%" 0..100, position "(turn,tilt)"
// turn 0..360, tilt -90..90. The parse functions apply the rules the value
// controls use when their text property is set; a refused value is nullopt.
std::optional<std::array<int, 3>> parseColor(const QString &text);
std::optional<int> parsePercentage(const QString &text);
std::optional<std::array<int, 2>> parsePosition(const QString &text);

QString formatColor(int red, int green, int blue);
QString formatPercentage(int percent);
QString formatPosition(int turn, int tilt);

// The text a control shows after being set to `text`, or nullopt when the
// control refuses it and keeps its former value.
std::optional<QString> acceptColor(const QString &text);
std::optional<QString> acceptPercentage(const QString &text);
std::optional<QString> acceptPosition(const QString &text);

// Whether `text` can be written as a quoted attribute value that Rover reads
// back whole: its values have no escaping, so a '"' would end the value early.
bool isAcceptableAttributeValue(const QString &text);

// The size cell of an item list: "#,###,###" padded on the left with blanks to
// 10 characters, so sizes line up on the right; blank for 0 bytes.
QString itemSizeText(qint64 bytes);
