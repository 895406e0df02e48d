#include "cli/CliRender.h"

#include "cli/CliOutput.h"
#include "draw/BlockPicture.h"
#include "draw/BlockSheet.h"
#include "rover/RoverStyleRules.h"
#include "storage/ArchiveReader.h"
#include "storage/FolderEntries.h"

#include <QFileInfo>
#include <QImageWriter>
#include <QRegularExpression>

#include <cmath>

using namespace Qt::StringLiterals;

namespace CliRender {

namespace {

enum ExitCode { Success = 0, Failed = 1, UsageError = 2 };

constexpr int largestSide = 8192;

struct Options {
    QString blockset;
    QString block;
    QString output;
    bool sheet = false;
    QSize size{256, 256};
    Camera camera;
    DrawOrder order = DrawOrder::Rover;
};

std::optional<QVector3D> point(const QString &text)
{
    const QStringList parts = text.split(u',');
    if (parts.size() != 3)
        return std::nullopt;
    float values[3];
    for (int i = 0; i < 3; ++i) {
        bool ok = false;
        values[i] = parts[i].trimmed().toFloat(&ok);
        if (!ok || !std::isfinite(values[i]))
            return std::nullopt;
    }
    return QVector3D(values[0], values[1], values[2]);
}

// Empty when the arguments are fine, else what is wrong with them.
QString parse(const QStringList &arguments, Options &options)
{
    QStringList positional;
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        const QString &argument = arguments[i];
        if (!argument.startsWith(u"--"_s)) {
            positional.append(argument);
            continue;
        }
        if (argument == "--sheet"_L1) {
            options.sheet = true;
            continue;
        }
        if (i + 1 >= arguments.size())
            return argument + u" needs a value"_s;
        const QString &value = arguments[++i];
        if (argument == "--size"_L1) {
            const auto match = QRegularExpression(u"^(\\d{1,5})x(\\d{1,5})$"_s).match(value);
            options.size = QSize(match.captured(1).toInt(), match.captured(2).toInt());
            if (!match.hasMatch() || options.size.isEmpty() || options.size.width() > largestSide
                || options.size.height() > largestSide)
                return u"--size takes WIDTHxHEIGHT, each 1 to %1 pixels"_s.arg(largestSide);
        } else if (argument == "--camera"_L1 || argument == "--target"_L1) {
            const std::optional<QVector3D> p = point(value);
            if (!p)
                return argument + u" takes X,Y,Z in texels"_s;
            (argument == "--camera"_L1 ? options.camera.position : options.camera.target) = *p;
        } else if (argument == "--fov"_L1) {
            bool ok = false;
            options.camera.fovDegrees = value.toDouble(&ok);
            if (!ok || !(options.camera.fovDegrees > 0 && options.camera.fovDegrees < 180))
                return u"--fov takes an angle between 0 and 180 degrees"_s;
        } else if (argument == "--order"_L1) {
            if (value != "rover"_L1 && value != "depth"_L1)
                return u"--order takes rover or depth"_s;
            options.order = value == "rover"_L1 ? DrawOrder::Rover : DrawOrder::Depth;
        } else {
            return u"unknown option \""_s + argument + u'"';
        }
    }
    if (positional.size() != (options.sheet ? 2 : 3))
        return options.sheet ? u"render --sheet takes FILE.bset and OUT.png"_s
                             : u"render takes FILE.bset, BLOCK and OUT.png"_s;
    options.blockset = positional.takeFirst();
    options.output = positional.takeLast();
    options.block = positional.value(0);
    for (const QString &file : {options.blockset, options.output})
        if (file.isEmpty())
            return u"empty file name"_s;
    return QString();
}

// The style's block whose file name matches `block` ignoring case, else the one
// whose single symbol it is.
const RoverStyleBlock *findBlock(const QList<RoverStyleBlock> &blocks, const QString &block)
{
    const QString folded = FolderEntries::foldedCase(block);
    for (const RoverStyleBlock &entry : blocks)
        if (FolderEntries::foldedCase(entry.file) == folded)
            return &entry;
    for (const RoverStyleBlock &entry : blocks)
        if (entry.symbol == block)
            return &entry;
    return nullptr;
}

bool save(const QImage &image, const QString &path, std::FILE *err)
{
    QImageWriter writer(path, "png");
    // Qt's PNG quality 80 is zlib's fastest level: block pictures, mostly flat
    // or transparent, come out hardly larger, at a third of the time.
    writer.setQuality(80);
    if (writer.write(image))
        return true;
    CliOutput::printError(err, u"cannot write \"%1\": %2"_s.arg(path, writer.errorString()));
    return false;
}

} // namespace

bool writesText(const QStringList &arguments)
{
    return arguments.value(0) == "render"_L1 && arguments.contains(u"--sheet"_s);
}

QString usageLines()
{
    return u"       cubrix-cli render FILE.bset BLOCK OUT.png [--size WxH] [--camera X,Y,Z]\n"
           "                         [--target X,Y,Z] [--fov DEGREES] [--order rover|depth]\n"
           "       cubrix-cli render FILE.bset --sheet OUT.png\n"_s;
}

QString helpLines()
{
    return u"  render FILE.bset BLOCK OUT.png\n"
           "                     Draws one block (BLOCK: its file name in any case, or its\n"
           "                     single symbol) as Rover draws it into a PNG picture with a\n"
           "                     transparent background; no display is needed. Camera and\n"
           "                     target are in texels (a block is 0..256 on each axis, x\n"
           "                     east, y up, z north); defaults: --size 256x256, --camera\n"
           "                     -250,500,-350, --target 128,128,128, --fov 40 (vertical,\n"
           "                     degrees), --order rover (Rover's BSP order, nearer polygons\n"
           "                     first; depth: a depth buffer, as hardware acceleration).\n"
           "  render FILE.bset --sheet OUT.png\n"
           "                     Draws every block the style lists on one catalogue page,\n"
           "                     with its symbol and name under each.\n"_s;
}

int run(const QStringList &arguments, std::FILE *out, std::FILE *err)
{
    Options options;
    if (const QString problem = parse(arguments, options); !problem.isEmpty()) {
        CliOutput::printError(err, problem);
        CliOutput::print(err, u"Usage: "_s + usageLines().mid(7)); // its first line's indent is "Usage: "
        return UsageError;
    }
    ArchiveReader archive;
    if (const Result opened = archive.open(options.blockset); !opened) {
        CliOutput::printError(err, opened.reason());
        return Failed;
    }
    const BlocksetEntries entries = archiveEntries(archive);
    // Rover reads the style named like the blockset's own file.
    const QString styleName = QFileInfo(options.blockset).completeBaseName() + u".style"_s;
    QList<RoverStyleBlock> blocks;
    if (const std::optional<QByteArray> style = entries(styleName))
        (void)checkRoverStyle(*style, nullptr, &blocks);

    if (options.sheet) {
        QList<SheetBlock> sheet;
        for (const RoverStyleBlock &entry : blocks) {
            BlockScene scene = readBlockScene(entries, entry.file);
            const QString name = entry.name.isEmpty() ? scene.block().name : entry.name;
            sheet.append({entry.symbol, name, entry.file, std::move(scene)});
        }
        const QString title = QFileInfo(options.blockset).fileName()
                              + u": %1 block%2"_s.arg(blocks.size()).arg(blocks.size() == 1 ? QString() : u"s"_s);
        if (!save(drawBlockSheet(title, sheet), options.output, err))
            return Failed;
        CliOutput::print(out, u"%1 blocks drawn into %2\n"_s.arg(blocks.size()).arg(options.output));
        return Success;
    }

    const RoverStyleBlock *entry = findBlock(blocks, options.block);
    // A block file the style does not list is still drawn when it is named.
    const QString file = entry ? entry->file : options.block;
    const BlockScene scene = readBlockScene(entries, file);
    if (!scene.isDrawable()) {
        if (!entry && !entries(u"blocks/"_s + file))
            CliOutput::printError(err,
                                  u"\"%1\" is no block file or symbol of %2"_s.arg(options.block, options.blockset));
        else
            CliOutput::printError(err, u"Rover cannot load blocks/%1: %2"_s.arg(file, scene.problem()));
        return Failed;
    }
    if (!save(drawBlockPicture(scene, options.camera, options.size, options.order), options.output, err))
        return Failed;
    return Success;
}

} // namespace CliRender
