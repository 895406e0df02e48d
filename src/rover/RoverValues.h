#pragma once

#include <QByteArrayView>

// The value types of Rover's readers, judged on the trimmed attribute value.
enum class RoverType { String, Integer, Version, Rgb, Percentage, Direction, Name, SingleSymbol, DoubleSymbol };

bool isRoverValue(RoverType type, QByteArrayView value);
// The type's name as a message shows it ("version", "RGB" ...).
const char *roverTypeName(RoverType type);
