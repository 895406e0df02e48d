#pragma once

#include "rover/RoverBlock.h"

#include <QByteArrayView>
#include <QList>

#include <optional>

// The value types of block file attributes, judged on the trimmed value as
// Rover's block reader judges them.
enum class RoverBlockValue {
    Integer,
    Float,
    Degrees,
    String,
    Name,
    Boolean,
    BlockType,
    Coordinates,
    Rgb,
    Percentage,
    PercentageRange,
    TextureStyle,
    Orientation,
    VerticalAlignment,
    SpriteSize,
    Radius,
    DirectionRange,
    DelayRange,
    Playback,
    PointLightStyle,
    SpotLightStyle,
    ExitTrigger,
};

bool isRoverBlockValue(RoverBlockValue type, QByteArrayView value);
// The type's DESCRIPTION in "Expected DESCRIPTION as the value for attribute
// 'NAME'", exactly as Rover prints it (three of them belong to other types).
const char *roverBlockValueDescription(RoverBlockValue type);

// Typed readers; nothing when the value fails its type.
std::optional<int> roverInteger(QByteArrayView value);
std::optional<double> roverFloat(QByteArrayView value);
// A float brought into 0 <= degrees < 360.
std::optional<double> roverDegrees(QByteArrayView value);
std::optional<RoverPoint> roverCoordinates(QByteArrayView value);
std::optional<RoverRgb> roverRgb(QByteArrayView value);
std::optional<double> roverPercentage(QByteArrayView value);
std::optional<QSize> roverSpriteSize(QByteArrayView value);
std::optional<RoverOrientation> roverOrientation(QByteArrayView value);
// The index of the matching keyword of a keyword type (Boolean: 0 = yes, 1 = no;
// BlockType: RoverBlock::Type; TextureStyle: tiled, scaled, stretched;
// VerticalAlignment: top, center, centre, bottom).
std::optional<int> roverKeyword(RoverBlockValue type, QByteArrayView value);

// A POLYGON's `vertices` list: integers separated by commas.
std::optional<QList<int>> roverVertexList(QByteArrayView value);

// A POLYGON's `texcoords` list read against the polygon's vertex count.
struct RoverTexCoordList {
    enum Outcome { Ok, TooMany, TooFew, NotAList };
    Outcome outcome = Ok;
    QList<RoverTexCoord> coords;
};
RoverTexCoordList roverTexCoordList(QByteArrayView value, qsizetype vertexCount);
