#include "draw/BlockScene.h"

#include "rover/RoverBlockBsp.h"
#include "rover/RoverBlockGeometry.h"

#include <QHash>

#include <algorithm>
#include <cmath>
#include <numbers>

using namespace Qt::StringLiterals;

namespace {

constexpr double blockSide = 256.0;
constexpr double centre = blockSide / 2;

DrawFaces facesOf(int faces)
{
    switch (faces) {
    case 0: return DrawFaces::Never;
    case 2: return DrawFaces::Both;
    default: return DrawFaces::Front;
    }
}

// A part's look on its polygons: its texture, else its colour (black without one).
DrawPolygon partLook(const RoverBlockPart &part, const QImage &texture)
{
    DrawPolygon look;
    look.texture = texture;
    if (part.colour)
        look.colour = QColor(part.colour->red, part.colour->green, part.colour->blue);
    look.opacity = 1.0 - std::clamp(part.translucency, 0.0, 100.0) / 100.0;
    look.faces = facesOf(part.faces);
    return look;
}

bool hasTransparentTexels(const QImage &image)
{
    if (image.isNull() || !image.hasAlphaChannel())
        return false;
    const QImage argb = image.convertToFormat(QImage::Format_ARGB32);
    for (int y = 0; y < argb.height(); ++y) {
        const auto *row = reinterpret_cast<const QRgb *>(argb.constScanLine(y));
        if (std::any_of(row, row + argb.width(), [](QRgb pixel) { return qAlpha(pixel) == 0; }))
            return true;
    }
    return false;
}

// Turns `p` about the vertical axis through the block's centre, as Rover
// turns about y: (x, z) becomes (x cos a + z sin a, z cos a - x sin a).
QVector3D turnedAboutCentre(const QVector3D &p, double degrees)
{
    const double a = degrees * std::numbers::pi / 180.0;
    const double c = std::cos(a), s = std::sin(a);
    const double x = p.x() - centre, z = p.z() - centre;
    return {float(centre + x * c + z * s), p.y(), float(centre + z * c - x * s)};
}

} // namespace

BlockScene BlockScene::unusable(const QString &problem)
{
    BlockScene scene;
    scene.m_problem = problem;
    return scene;
}

BlockScene::BlockScene(const RoverBlockFile &file, const Textures &textures) : m_block(file.block)
{
    for (const RoverFinding &finding : file.findings) {
        if (finding.severity == RoverFinding::Error) {
            m_problem = finding.line > 0 ? u"%1 (line %2)"_s.arg(finding.text).arg(finding.line) : finding.text;
            return;
        }
    }
    QHash<QString, QImage> images; // by the texture value as written
    const PartTexture textureOf = [&](const RoverBlockPart &part) {
        if (part.texture.isEmpty() || !textures)
            return QImage();
        const auto known = images.constFind(part.texture);
        if (known != images.cend())
            return *known;
        return *images.insert(part.texture, textures(part.texture));
    };
    if (m_block.isSprite())
        buildSprite(textureOf);
    else
        buildStructural(textureOf);
}

void BlockScene::buildSprite(const PartTexture &textureOf)
{
    if (m_block.parts.isEmpty())
        return;
    const RoverBlockPart &part = m_block.parts.first();
    DrawPolygon rectangle = partLook(part, textureOf(part));
    rectangle.faces = DrawFaces::Both;
    QSizeF size(blockSide, blockSide);
    if (m_block.spriteSize)
        size = QSizeF(*m_block.spriteSize);
    else if (!rectangle.texture.isNull())
        size = QSizeF(rectangle.texture.size()).boundedTo(QSizeF(blockSide, blockSide));
    double bottom = 0;
    if (m_block.align == RoverBlock::Top)
        bottom = blockSide - size.height();
    else if (m_block.align == RoverBlock::Centre)
        bottom = centre - size.height() / 2;
    const auto left = float(centre + size.width() / 2), right = float(centre - size.width() / 2);
    const auto low = float(bottom), high = float(bottom + size.height());
    const auto z = float(centre);
    // Seen from the north, its front: east is on the left.
    rectangle.points = {{left, high, z}, {right, high, z}, {right, low, z}, {left, low, z}};
    rectangle.uv = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
    m_polygons.append(rectangle);
    m_twoSidedWhenBlended.append(true);
}

void BlockScene::buildStructural(const PartTexture &textureOf)
{
    loadRoverBlock(m_block, [&](const RoverBlockPart &part) -> std::optional<QSize> {
        const QImage image = textureOf(part);
        return image.isNull() ? std::nullopt : std::optional<QSize>(image.size());
    });
    QList<DrawPolygon> looks;
    QList<bool> blended;
    for (const RoverBlockPart &part : m_block.parts) {
        looks.append(partLook(part, textureOf(part)));
        blended.append(looks.last().opacity < 1.0 || hasTransparentTexels(looks.last().texture));
    }
    m_polygons.reserve(m_block.polygons.size());
    for (const RoverBlockPolygon &polygon : m_block.polygons) {
        const bool hasPart = polygon.part >= 0 && polygon.part < looks.size();
        DrawPolygon drawn = hasPart ? looks[polygon.part] : DrawPolygon();
        for (qsizetype k = 0; k < polygon.vertices.size(); ++k) {
            const RoverPoint p = m_block.vertices.value(polygon.vertices[k] - 1);
            drawn.points.append(QVector3D(float(p.x), float(p.y), float(p.z)));
            const RoverTexCoord t = polygon.texCoords.value(k);
            drawn.uv.append(QPointF(t.u, t.v));
        }
        m_polygons.append(drawn);
        m_twoSidedWhenBlended.append(hasPart && blended[polygon.part]);
    }
}

DrawPolygon BlockScene::spriteRectangle(double turnDegrees) const
{
    DrawPolygon rectangle = m_polygons.first();
    if (turnDegrees != 0)
        for (QVector3D &point : rectangle.points)
            point = turnedAboutCentre(point, turnDegrees);
    return rectangle;
}

QList<DrawPolygon> BlockScene::polygons(const QVector3D &camera, DrawOrder order, Sprites sprites) const
{
    if (m_polygons.isEmpty())
        return {};
    if (m_block.isSprite()) {
        double turn = 0;
        if (m_block.type == RoverBlock::AngledSprite) {
            turn = m_block.spriteAngle;
        } else if (sprites == Sprites::TowardViewer
                   && (m_block.type == RoverBlock::FacingSprite || m_block.type == RoverBlock::MultifacetedSprite)) {
            // The turn that points the front (north at 0) at the camera.
            const double dx = camera.x() - centre, dz = camera.z() - centre;
            if (dx != 0 || dz != 0)
                turn = std::atan2(dx, dz) * 180.0 / std::numbers::pi;
        }
        return {spriteRectangle(turn)};
    }
    const QList<int> drawn = roverDrawOrder(m_block, {camera.x(), camera.y(), camera.z()});
    QList<DrawPolygon> out;
    out.reserve(drawn.size());
    for (int index : drawn) {
        out.append(m_polygons[index]);
        if (order == DrawOrder::Depth && m_twoSidedWhenBlended[index] && out.last().faces == DrawFaces::Front)
            out.last().faces = DrawFaces::Both;
    }
    return out;
}
