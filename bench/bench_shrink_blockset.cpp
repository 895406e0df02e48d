// Lossless Shrink against advzip -z -4 (AdvanceCOMP's zopfli recompression) on
// the example blockset and on generated ones, the time of check on a blockset
// of about 300 KB, and the time of a save after a small change of a large
// blockset with and without copying the unchanged entries' packed bytes.
//
// Usage: bench_shrink_blockset [--large FILE.bset]
//   FILE.bset: the large set, as `bench_open_save --make FILE.bset` writes it.
// advzip comes from the Debian package advancecomp (scripts/setup installs it).

#include "SilentPrompts.h"
#include "app/BlocksetCheck.h"
#include "app/BlocksetDocument.h"
#include "common/HiveRegistry.h"
#include "common/RegistryWrapper.h"
#include "shrink/GifColours.h"
#include "shrink/GifImage.h"
#include "shrink/ShrinkCommand.h"
#include "storage/ArchiveWriter.h"
#include "storage/WorkingFolder.h"
#include "symbols/SymbolPrompt.h"
#include "symbols/SymbolScheme.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QImage>
#include <QProcess>
#include <QRandomGenerator>
#include <QSaveFile>
#include <QTemporaryDir>

#include <cstdio>
#include <cstdlib>

#include <gif_lib.h>

using namespace Qt::StringLiterals;

namespace {

[[noreturn]] void fail(const QString &what)
{
    std::fprintf(stderr, "bench_shrink_blockset: %s\n", qPrintable(what));
    std::exit(1);
}

void writeFile(const QString &path, const QByteArray &bytes)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        fail(u"cannot write "_s + path);
}

// A photo as a camera's software saves it: smooth content with sensor noise,
// EXIF with a thumbnail, an ICC profile and a comment, standard Huffman tables.
QByteArray photoJpeg(int side, quint32 seed)
{
    QImage image(side, side, QImage::Format_RGB32);
    QRandomGenerator random(seed);
    for (int y = 0; y < side; ++y)
        for (int x = 0; x < side; ++x)
            image.setPixel(x, y,
                           qRgb((x * 255 / side + int(random.bounded(24))) % 256,
                                (y * 255 / side + int(random.bounded(24))) % 256,
                                int(128 + 100 * std::sin((x + y + int(seed)) / 17.0))));
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "JPEG", 92);
    const auto marker = [](char code, const QByteArray &body) {
        return "\xFF" + QByteArray(1, code) + char((body.size() + 2) >> 8) + char((body.size() + 2) & 255) + body;
    };
    QByteArray thumbnail;
    QBuffer thumb(&thumbnail);
    thumb.open(QIODevice::WriteOnly);
    image.scaled(64, 64).save(&thumb, "JPEG", 80);
    QByteArray bytes = buffer.data();
    return bytes.insert(2, marker('\xE1', QByteArray("Exif\0\0", 6) + thumbnail)
                               + marker('\xE2', "ICC_PROFILE" + QByteArray(3000, 'i'))
                               + marker('\xFE', "Created with a photo tool"));
}

// A GIF as an image editor leaves it: 256 colours chosen for the picture, the
// codes packed as giflib packs them, clearing the dictionary only when it is full.
QByteArray editorGif(int side, quint32 seed)
{
    QImage image(side, side, QImage::Format_ARGB32);
    QRandomGenerator random(seed);
    for (int y = 0; y < side; ++y)
        for (int x = 0; x < side; ++x)
            image.setPixel(x, y, qRgb((x / 8 * 37 + int(seed)) % 256, (y / 8 * 53) % 256, int(random.bounded(64))));
    QString error;
    GifImage quantised;
    if (!decodeGif(quantiseGif({{image}, {0}, {false}, -1}, 256, &error), &quantised, &error))
        fail(u"cannot make a GIF: "_s + error);
    QByteArray out;
    int code = 0;
    GifFileType *gif = EGifOpen(
        &out,
        [](GifFileType *g, const GifByteType *bytes, int n) {
            static_cast<QByteArray *>(g->UserData)->append(reinterpret_cast<const char *>(bytes), n);
            return n;
        },
        &code);
    ColorMapObject *map = GifMakeMapObject(256, nullptr);
    for (int i = 0; i < 256; ++i) {
        const QRgb rgb = quantised.globalColours.value(i);
        map->Colors[i] = {GifByteType(qRed(rgb)), GifByteType(qGreen(rgb)), GifByteType(qBlue(rgb))};
    }
    QByteArray pixels = quantised.frames.first().pixels;
    const bool ok = EGifPutScreenDesc(gif, side, side, 8, 0, map) == GIF_OK
                    && EGifPutImageDesc(gif, 0, 0, side, side, false, nullptr) == GIF_OK
                    && EGifPutLine(gif, reinterpret_cast<GifPixelType *>(pixels.data()), int(pixels.size())) == GIF_OK;
    GifFreeMapObject(map);
    if (EGifCloseFile(gif, &code) != GIF_OK || !ok)
        fail(u"cannot write a GIF"_s);
    return out;
}

QByteArray blockText(int index, int parts)
{
    QByteArray text = "<block name=\"Block " + QByteArray::number(index) + "\" type=\"structural\">\r\n<vertices>\r\n";
    for (int v = 1; v <= parts * 4; ++v)
        text += "  <vertex ref=\"" + QByteArray::number(v) + "\" coords=\"(" + QByteArray::number(v * 37 % 257) + ","
                + QByteArray::number(v * 91 % 257) + "," + QByteArray::number(v * 13 % 257) + ")\"/>\r\n";
    text += "</vertices>\r\n<parts>\r\n";
    for (int p = 0; p < parts; ++p)
        text += "  <part name=\"p" + QByteArray::number(p) + "\" texture=\"t" + QByteArray::number(p % 7)
                + ".gif\">\r\n    <polygon ref=\"" + QByteArray::number(p + 1) + "\" vertices=\""
                + QByteArray::number(p * 4 + 1) + "," + QByteArray::number(p * 4 + 2) + ","
                + QByteArray::number(p * 4 + 3) + "\"/>\r\n  </part>\r\n";
    return text + "</parts>\r\n</block>\r\n";
}

QByteArray wavNoise(int bytes, quint32 seed)
{
    QByteArray data(bytes, Qt::Uninitialized);
    QRandomGenerator random(seed);
    for (int i = 0; i < bytes; ++i)
        data[i] = char(128 + int(40 * std::sin(i / 9.0)) + int(random.bounded(16)));
    const auto le32 = [](int v) { return QByteArray(1, char(v)) + char(v >> 8) + char(v >> 16) + char(v >> 24); };
    return "RIFF" + le32(36 + bytes) + "WAVEfmt " + le32(16)
           + QByteArray("\x01\0\x01\0\x22\x56\0\0\x22\x56\0\0\x01\0\x08\0", 16) + "data" + le32(bytes) + data;
}

// A blockset folder of `photos` JPEGs, `gifs` GIFs, `blocks` block files and `sounds` WAVs.
void makeSet(const QString &folder, const QString &name, int photos, int gifs, int blocks, int sounds)
{
    QByteArray style = "<style version=\"1.0\" name=\"" + name.toLatin1() + "\">\r\n";
    const QString &alphabet = symbolAlphabet();
    for (int i = 0; i < blocks; ++i) {
        const QByteArray file = "b" + QByteArray::number(i) + ".block";
        writeFile(folder + u"/blocks/"_s + QString::fromLatin1(file), blockText(i, 6 + i % 20));
        style += "<block symbol=\"" + QString(alphabet.at(i % alphabet.size())).toLatin1() + "\" file=\"" + file
                 + "\"/>\r\n";
    }
    writeFile(folder + u'/' + name + u".style"_s, style + "</style>\r\n");
    for (int i = 0; i < photos; ++i)
        writeFile(folder + u"/textures/photo%1.jpg"_s.arg(i), photoJpeg(128 + 32 * (i % 5), quint32(i + 1)));
    for (int i = 0; i < gifs; ++i)
        writeFile(folder + u"/textures/t%1.gif"_s.arg(i), editorGif(64 + 32 * (i % 4), quint32(i + 1)));
    for (int i = 0; i < sounds; ++i)
        writeFile(folder + u"/sounds/s%1.wav"_s.arg(i), wavNoise(60000, quint32(i + 1)));
    QDir().mkpath(folder + u"/sounds"_s);
}

struct Editor {
    QTemporaryDir dir;
    HiveRegistry registry{dir.filePath(u"registry.reg"_s)};
    RegistryWrapper settings{registry};
    WorkingFolder folder{dir.path()};
    SilentPrompts prompts;
    BlocksetDocument document{prompts, prompts, settings, folder};
    Editor()
    {
        settings.loadSettings();
        settings.setBoolSetting(u"showWarnings"_s, false);
        if (!folder.createWorkingFolders())
            fail(u"cannot make the working folder"_s);
    }
    ~Editor() { folder.removeWorkingFolders(); }
};

double shrinkMs(Editor &editor, const QString &path)
{
    QElapsedTimer timer;
    timer.start();
    if (!editor.document.openBlockset(path))
        fail(u"cannot open "_s + path);
    if (!applyDocumentShrink(editor.document, planDocumentShrink(editor.document)) || !editor.document.saveBlockset())
        fail(u"shrink failed on "_s + path);
    return double(timer.nsecsElapsed()) / 1e6;
}

double advzipMs(const QString &path)
{
    QElapsedTimer timer;
    timer.start();
    QProcess advzip;
    advzip.start(u"advzip"_s, {u"-z"_s, u"-4"_s, u"-q"_s, path});
    if (!advzip.waitForFinished(-1) || advzip.exitCode() != 0)
        fail(u"advzip failed (install the package advancecomp)"_s);
    return double(timer.nsecsElapsed()) / 1e6;
}

void compareWithAdvzip(Editor &editor, const QString &label, const QString &source)
{
    const QString ours = editor.dir.filePath(u"ours-"_s + QFileInfo(source).fileName());
    const QString theirs = editor.dir.filePath(u"advzip-"_s + QFileInfo(source).fileName());
    QFile::remove(ours);
    QFile::remove(theirs);
    QFile::copy(source, ours);
    QFile::copy(source, theirs);
    const double oursMs = shrinkMs(editor, ours);
    const double theirsMs = advzipMs(theirs);
    const double oursSize = double(QFileInfo(ours).size()), theirsSize = double(QFileInfo(theirs).size());
    std::printf("%-30s %9lld %9.0f %9.0f %+7.2f %% %9.0f %9.0f %7.1fx\n", qPrintable(label), QFileInfo(source).size(),
                oursSize, theirsSize, 100.0 * (oursSize - theirsSize) / theirsSize, oursMs, theirsMs,
                theirsMs / oursMs);
}

QString packSet(const QString &folder, const QString &path)
{
    ArchiveWriter writer(path);
    if (!writer.addFolder(folder) || !writer.write())
        fail(u"cannot pack "_s + path);
    return path;
}

} // namespace

int main(int argc, char *argv[])
{
    QGuiApplication app(argc, argv); // the JPEG and GIF writers of the generated sets need QtGui
    const QStringList arguments = app.arguments();
    const QString large =
        arguments.indexOf(u"--large"_s) > 0 ? arguments.value(arguments.indexOf(u"--large"_s) + 1) : QString();
    Editor editor;
    QTemporaryDir sets;

    std::printf("Lossless Shrink against advzip -z -4 (bytes, ms)\n");
    std::printf("%-30s %9s %9s %9s %9s %9s %9s %8s\n", "blockset", "input", "Shrink", "advzip", "diff", "Shrink",
                "advzip", "speed");
    compareWithAdvzip(editor, u"examples/Castle.bset"_s, QStringLiteral(CUBRIX_EXAMPLES "/Castle.bset"));
    struct Generated {
        const char *name;
        int photos, gifs, blocks, sounds;
    };
    const Generated generated[] = {
        {"Photos", 8, 0, 4, 0}, {"Gifs", 0, 16, 4, 0}, {"Blocks", 0, 0, 60, 0}, {"Large", 24, 24, 80, 6}};
    QString medium;
    for (const Generated &set : generated) {
        const QString name = QString::fromLatin1(set.name);
        const QString folder = sets.filePath(name);
        makeSet(folder, name, set.photos, set.gifs, set.blocks, set.sounds);
        const QString path = packSet(folder, sets.filePath(name + u".bset"_s));
        compareWithAdvzip(editor, u"generated "_s + name, path);
        if (name == "Photos"_L1)
            medium = path;
    }

    // check on a blockset of about 300 KB.
    const QString checkFolder = sets.filePath(u"Check"_s);
    makeSet(checkFolder, u"Check"_s, 8, 8, 40, 1);
    writeFile(checkFolder + u"/textures/broken.gif"_s, "GIF89a" + QByteArray(100, 'x')); // makes check read every block
    const QString checked = packSet(checkFolder, sets.filePath(u"Check.bset"_s));
    if (!editor.document.openBlockset(checked))
        fail(u"cannot open the check set"_s);
    double best = 1e9;
    for (int run = 0; run < 10; ++run) {
        QElapsedTimer timer;
        timer.start();
        const BlocksetCheck check = checkBlockset(editor.document);
        best = std::min(best, double(timer.nsecsElapsed()) / 1e6);
    }
    std::printf("\ncheck of a %lld-byte blockset (%d textures, %d blocks): %.1f ms (best of 10; goal < 100 ms)\n",
                QFileInfo(checked).size(), editor.document.textureCount(), editor.document.blockCount(), best);
    Q_UNUSED(medium);

    if (large.isEmpty()) {
        std::printf("\n(no --large FILE.bset: the save of a large blockset after a small change is not measured)\n");
        return 0;
    }
    std::printf("\nSave of %s (%lld bytes) after one block file changed (best of 3)\n", qPrintable(large),
                QFileInfo(large).size());
    const QString copy = editor.dir.filePath(u"Large.bset"_s);
    for (bool rawCopy : {false, true}) {
        double bestSave = 1e9;
        for (int run = 0; run < 3; ++run) {
            QFile::remove(copy);
            QFile::copy(large, copy);
            if (!editor.document.openBlockset(copy))
                fail(u"cannot open "_s + large);
            QSaveFile block(editor.folder.blocksFolder() + u"/block000.block"_s);
            if (!block.open(QIODevice::WriteOnly) || block.write(blockText(1, 30)) < 0 || !block.commit())
                fail(u"cannot change a block"_s);
            if (!rawCopy)
                editor.document.packedEntries().clear(); // every entry packed again, as before the copy path
            editor.document.setBlocksetChanged();
            QElapsedTimer timer;
            timer.start();
            if (!editor.document.saveBlockset())
                fail(u"save failed"_s);
            bestSave = std::min(bestSave, double(timer.nsecsElapsed()) / 1e6);
        }
        std::printf("  %-44s %8.1f ms, %lld bytes\n",
                    rawCopy ? "unchanged entries copied as they are" : "every entry packed again", bestSave,
                    QFileInfo(copy).size());
    }
    return 0;
}
