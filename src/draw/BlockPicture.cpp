#include "draw/BlockPicture.h"

#include "draw/BlockTextures.h"
#include "rover/RoverBlockCheck.h"
#include "rover/RoverBlockReader.h"

#include <algorithm>
#include <cmath>
#include <numbers>

using namespace Qt::StringLiterals;

BlockScene readBlockScene(const BlocksetEntries &entries, const QString &blockFile, QStringList *textureEntries)
{
    const std::optional<QByteArray> bytes = entries(u"blocks/"_s + blockFile);
    if (!bytes)
        return BlockScene::unusable(u"Unable to open block file '%1'"_s.arg(blockFile));
    const auto texture = [&](const QString &value) {
        // A name Rover takes as a URL or a path outside the blockset finds nothing in it.
        if (value.startsWith(u'@') || isRoverAbsoluteName(value))
            return QImage();
        const QString entry = roverMediaEntry(u"textures/"_s, value);
        if (textureEntries)
            textureEntries->append(entry);
        const std::optional<QByteArray> file = entries(entry);
        return file ? roverTextureImage(*file) : QImage();
    };
    return BlockScene(readRoverBlock(*bytes), texture);
}

QImage drawBlockPicture(const BlockScene &scene, const Camera &camera, QSize size, DrawOrder order,
                        const Lighting &lighting, BlockScene::Sprites sprites)
{
    Rasterizer rasterizer(size);
    rasterizer.setLighting(lighting);
    rasterizer.draw(scene.polygons(camera.position, order, sprites), camera, order);
    return rasterizer.image();
}

Camera fittedCamera(const QList<DrawPolygon> &polygons)
{
    Camera camera;
    QVector3D low(1e9f, 1e9f, 1e9f), high(-1e9f, -1e9f, -1e9f);
    for (const DrawPolygon &polygon : polygons) {
        for (const QVector3D &p : polygon.points) {
            low = QVector3D(std::min(low.x(), p.x()), std::min(low.y(), p.y()), std::min(low.z(), p.z()));
            high = QVector3D(std::max(high.x(), p.x()), std::max(high.y(), p.y()), std::max(high.z(), p.z()));
        }
    }
    if (!(low.x() <= high.x()))
        return camera;
    // The sphere around the polygons' box fits the view at any turn.
    const QVector3D centre = (low + high) / 2;
    const double radius = std::max(1.0f, (high - low).length() / 2);
    const double distance = radius / std::sin(camera.fovDegrees * std::numbers::pi / 360.0);
    const QVector3D direction = (camera.position - camera.target).normalized();
    camera.target = centre;
    camera.position = centre + float(distance) * direction;
    return camera;
}
