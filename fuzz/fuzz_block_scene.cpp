// A block file drawn as the preview, the thumbnails and render draw it: the
// scene Rover's model gives, small pictures in both orders from outside and
// from inside the block, and the camera that frames the block.
#include "FuzzSupport.h"
#include "draw/BlockPicture.h"
#include "rover/RoverBlockReader.h"

CUBRIX_FUZZ_ENTRY(fuzzBlockScene)
{
    const BlockScene scene(readRoverBlock(fuzzBytes(data, size)), [](const QString &texture) {
        if (texture.size() % 3 == 0)
            return QImage();
        QImage image(int(texture.size() % 5) + 1, 3, QImage::Format_ARGB32);
        image.fill(qRgba(200, 100, 50, texture.size() % 2 ? 0 : 255));
        return image;
    });
    Camera inside;
    inside.position = QVector3D(100, 120, 140);
    for (const Camera &camera : {Camera(), inside, fittedCamera(scene.polygons(Camera().position, DrawOrder::Depth))})
        for (DrawOrder order : {DrawOrder::Rover, DrawOrder::Depth})
            (void)drawBlockPicture(scene, camera, QSize(24, 24), order, Lighting(), BlockScene::Sprites::TowardViewer);
    return 0;
}
