#pragma once

#include "draw/BlockScene.h"
#include "draw/BlocksetEntries.h"
#include "draw/Camera.h"
#include "draw/Lighting.h"

#include <QImage>
#include <QSize>
#include <QStringList>

// Reads the block file blocks/`blockFile` of a blockset with the textures its
// parts name, as Rover loads them. A missing block file gives a scene that
// says so. `textureEntries`, when given, receives the texture entries the
// block names (found or not), so that a picture can be drawn again when one
// of them changes.
BlockScene readBlockScene(const BlocksetEntries &entries, const QString &blockFile,
                          QStringList *textureEntries = nullptr);

// The default camera's direction and field of view, moved so that these
// polygons fill the picture (the default camera when there are none).
Camera fittedCamera(const QList<DrawPolygon> &polygons);

// One picture of a block: transparent background, polygons as the scene gives
// them for the camera, in the order asked for.
QImage drawBlockPicture(const BlockScene &scene, const Camera &camera, QSize size, DrawOrder order,
                        const Lighting &lighting = Lighting(),
                        BlockScene::Sprites sprites = BlockScene::Sprites::AsPlaced);
