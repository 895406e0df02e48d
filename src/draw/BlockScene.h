#pragma once

#include "draw/DrawPolygon.h"
#include "draw/Rasterizer.h"
#include "rover/RoverBlock.h"

#include <QImage>
#include <QList>
#include <QString>
#include <QVector3D>

#include <functional>

// A block file as Rover draws it, as polygons for the rasterizer. Built from
// what Rover read (readRoverBlock) and changed at load time (loadRoverBlock:
// projected and turned texture coordinates, PARAM orientation):
// - each part's polygons carry its texture, or its colour when Rover has no
//   texture for it (black without a colour); faces 0, 1, 2 as the part says;
//   translucency p% as opacity 1 - p/100;
// - a sprite is the upright rectangle Rover builds: its size from PARAM size,
//   else the texture's pixel size, else 256 x 256; standing on the bottom of
//   the block (a player sprite at its centre, or as `align` says); through
//   the block's centre, facing north, an angled sprite turned by its angle;
//   seen from both sides.
class BlockScene {
public:
    // What Rover has for the texture a part names (the value as written): its
    // picture, or a null image when Rover draws the part untextured.
    using Textures = std::function<QImage(const QString &texture)>;

    // Sprites that Rover turns toward the viewer (facing and multifaceted):
    // as Rover places them before turning (facing north), or turned toward the
    // camera as Rover shows them.
    enum class Sprites { AsPlaced, TowardViewer };

    BlockScene() = default; // nothing to draw
    BlockScene(const RoverBlockFile &file, const Textures &textures);
    // A block that cannot be drawn, and why.
    static BlockScene unusable(const QString &problem);

    // Why Rover draws nothing of this block (its first error, with the block
    // file's line), else "".
    const QString &problem() const { return m_problem; }
    bool isDrawable() const { return m_problem.isEmpty(); }
    // The block as Rover loaded it.
    const RoverBlock &block() const { return m_block; }

    // The polygons Rover draws, for a camera at `camera` (texels, the block's
    // frame). DrawOrder::Rover: with a BSP tree, the polygons it reaches, near
    // to far as Rover walks it (what the tree does not reach is never drawn);
    // without one, every polygon in file order. DrawOrder::Depth: the same
    // polygons as hardware acceleration draws them, where translucent parts
    // and textures with a transparent colour are seen from both sides.
    QList<DrawPolygon> polygons(const QVector3D &camera, DrawOrder order, Sprites sprites = Sprites::AsPlaced) const;

private:
    using PartTexture = std::function<QImage(const RoverBlockPart &part)>;
    void buildSprite(const PartTexture &textureOf);
    void buildStructural(const PartTexture &textureOf);
    DrawPolygon spriteRectangle(double turnDegrees) const;

    QString m_problem;
    RoverBlock m_block;
    QList<DrawPolygon> m_polygons;     // one per block polygon; a sprite's rectangle facing north
    QList<bool> m_twoSidedWhenBlended; // drawn from both sides with hardware acceleration
};
