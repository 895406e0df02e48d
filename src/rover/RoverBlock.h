#pragma once

#include "rover/RoverFinding.h"

#include <QList>
#include <QSize>
#include <QString>

#include <optional>

// What Rover takes from a block file: plain data, as read (readRoverBlock) and,
// for structural blocks, as changed at load time (loadRoverBlock). Space is
// Rover's: x east, y up, z north; a block fills 0..256 texels on each axis.

struct RoverPoint {
    double x = 0;
    double y = 0;
    double z = 0;

    bool operator==(const RoverPoint &) const = default;
};

struct RoverTexCoord {
    double u = 0; // 0 = left edge of the image, 1 = right edge
    double v = 0; // 0 = top edge, 1 = bottom edge

    bool operator==(const RoverTexCoord &) const = default;
};

struct RoverRgb {
    int red = 0;
    int green = 0;
    int blue = 0;

    bool operator==(const RoverRgb &) const = default;
};

// The six faces of the block's cube, and the way a polygon or the block's top faces.
enum class RoverDirection { Up, Down, North, South, East, West };

// PARAM orientation as written: a compass word with an angle, or up to three
// angles (about y, then x, then z). Angles in degrees as read.
struct RoverOrientation {
    enum Form { None, Compass, Angles };

    Form form = None;
    RoverDirection direction = RoverDirection::Up; // Compass form
    double angle = 0;                              // Compass form
    double y = 0;                                  // Angles form
    double x = 0;
    double z = 0;
};

struct RoverBlockPart {
    enum Style { Stretched, Scaled, Tiled };

    QString name;
    QString texture; // as written; empty when not given
    QString stream;
    std::optional<RoverRgb> colour;
    double translucency = 0; // percent
    Style style = Stretched;
    int faces = 1;    // 0, 1 or 2; always 2 for a sprite
    double angle = 0; // texture turn in degrees, 0 <= angle < 360
    int line = 0;     // the PART tag's line
};

struct RoverBlockPolygon {
    int ref = 0;         // 1, 2, 3 ... in file order: polygons[i].ref == i + 1
    QList<int> vertices; // vertex refs, 1-based
    QList<RoverTexCoord> texCoords;
    int front = 0; // polygon refs of the BSP subtrees, 0 = none
    int rear = 0;
    int part = 0; // index into RoverBlock::parts
    int line = 0; // the POLYGON tag's line
};

// The first light tag of either kind.
struct RoverBlockLight {
    enum Kind { None, Point, Spot };
    Kind kind = None;
    std::optional<double> speed;
    int line = 0;
};

// The first SOUND tag.
struct RoverBlockSound {
    bool present = false;
    QString file; // as written; empty when not given
    std::optional<double> rolloff;
    int line = 0;
};

// The first EXIT tag.
struct RoverBlockExit {
    bool present = false;
    QString href;
    QString target;
    int line = 0;
};

struct RoverBlock {
    enum Type { Structural, MultifacetedSprite, AngledSprite, RevolvingSprite, FacingSprite, PlayerSprite };
    enum Align { Top, Centre, Bottom };

    QString name;
    Type type = Structural;
    bool entrance = false;
    int line = 0; // the BLOCK tag's line

    QList<RoverPoint> vertices; // texels; vertices[i] has ref i + 1
    QList<RoverBlockPart> parts;
    QList<RoverBlockPolygon> polygons;
    int bspRoot = 0; // polygon ref of the tree's root, 0 = no tree

    RoverOrientation orientation;
    bool solid = true;
    bool movable = false;

    // Sprites: parts holds the one PART.
    double spriteAngle = 0; // degrees, 0 <= angle < 360
    double spriteSpeed = 0; // turns per second
    Align align = Bottom;   // a player sprite's default is Centre
    std::optional<QSize> spriteSize;

    RoverBlockLight light;
    RoverBlockSound sound;
    RoverBlockExit exit;

    bool isSprite() const { return type != Structural; }
};

// A block file as Rover reads it: the model, and what Rover reports. After an
// error the model holds what was read up to it.
struct RoverBlockFile {
    RoverBlock block;
    RoverFindings findings;
};
