#include "draw/BlockThumbnails.h"

#include "draw/BlockPicture.h"
#include "storage/FolderEntries.h"

#include <QDateTime>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace {

// Drawn at twice the size and scaled down smoothly: the edges are not jagged.
constexpr int oversampling = 2;

QString stampOf(const QString &path)
{
    const QFileInfo info(path);
    if (path.isEmpty() || !info.isFile())
        return QString();
    return QString::number(info.size()) + u'/' + QString::number(info.lastModified().toMSecsSinceEpoch()) + u'/'
           + QString::number(info.metadataChangeTime().toMSecsSinceEpoch());
}

// The stamps of the block file and of the texture entries, as the folder holds them now.
QHash<QString, QString> stampsOf(FolderEntries &entries, const QString &blockFile, const QStringList &textureEntries)
{
    QHash<QString, QString> stamps;
    const QString blockEntry = u"blocks/"_s + blockFile;
    stamps.insert(blockEntry, stampOf(entries.path(blockEntry)));
    for (const QString &entry : textureEntries)
        stamps.insert(FolderEntries::foldedCase(entry), stampOf(entries.path(entry)));
    return stamps;
}

} // namespace

BlockThumbnails::BlockThumbnails(QSize size, QObject *parent) : QObject(parent), m_size(size) {}

BlockThumbnails::~BlockThumbnails()
{
    m_pool.clear();
    m_pool.waitForDone();
}

void BlockThumbnails::setFolder(const QString &folder)
{
    m_pool.clear();
    ++m_generation;
    m_folder = folder;
    m_pictures.clear();
    m_running.clear();
    m_askedAgain.clear();
}

void BlockThumbnails::request(const QStringList &blockFiles)
{
    FolderEntries entries(m_folder);
    for (const QString &file : blockFiles) {
        if (m_running.contains(file)) {
            m_askedAgain.insert(file);
            continue;
        }
        const auto drawn = m_pictures.constFind(file);
        if (drawn == m_pictures.cend() || drawn->stamps != stampsOf(entries, file, drawn->textureEntries))
            start(file);
    }
}

void BlockThumbnails::start(const QString &blockFile)
{
    m_running.insert(blockFile);
    const int generation = m_generation;
    const QString folder = m_folder;
    const QSize size = m_size;
    m_pool.start([this, generation, folder, blockFile, size] {
        Drawn drawn;
        FolderEntries entries(folder);
        // Stamped before reading: a file changed while it is read is seen as changed later.
        const Stamps blockStamp = stampsOf(entries, blockFile, {});
        const BlockScene scene = readBlockScene(folderEntries(folder), blockFile, &drawn.textureEntries);
        drawn.stamps = stampsOf(entries, blockFile, drawn.textureEntries);
        drawn.stamps.insert(blockStamp);
        drawn.problem = scene.problem();
        if (scene.isDrawable()) {
            Lighting lighting;
            lighting.enabled = true;
            // Filled by the block, whatever its size: a small block must be recognisable too.
            const Camera camera = fittedCamera(scene.polygons(Camera().position, DrawOrder::Depth));
            drawn.picture = drawBlockPicture(scene, camera, size * oversampling, DrawOrder::Depth, lighting,
                                             BlockScene::Sprites::TowardViewer)
                                .scaled(size, Qt::KeepAspectRatio, Qt::SmoothTransformation);
        }
        QMetaObject::invokeMethod(
            this, [this, generation, blockFile, drawn] { finished(generation, blockFile, drawn); },
            Qt::QueuedConnection);
    });
}

void BlockThumbnails::finished(int generation, const QString &blockFile, const Drawn &drawn)
{
    if (generation != m_generation)
        return;
    m_running.remove(blockFile);
    m_pictures.insert(blockFile, drawn);
    emit pictureReady(blockFile, drawn.picture, drawn.problem);
    if (m_askedAgain.remove(blockFile))
        request({blockFile});
}
