// Times opening and saving a large blockset with the editor's own document
// commands against the plain zip tools on the same data:
//   open  = BlocksetDocument::openBlockset   vs  unzip -q -o ARCHIVE -d DIR
//   save  = BlocksetDocument::saveBlocksetAs vs  zip -r -6 -q OUT.bset .
//                                            and zip -r -6 -n .gif:.jpg -q OUT.bset .
// and breaks both commands down into their phases, so that a miss of the goal
// (within 1.3 times the tool) shows where the time goes.
//
// Usage: bench_open_save [RUNS]   (best of RUNS, default 5)
//        bench_open_save --make FILE.bset   (only writes the benchmark's blockset)

#include "SilentPrompts.h"
#include "app/BlocksetDocument.h"
#include "common/HiveRegistry.h"
#include "common/RegistryWrapper.h"
#include "formats/Parser.h"
#include "formats/Parser_Block.h"
#include "formats/Parser_Style.h"
#include "storage/ArchiveReader.h"
#include "storage/ArchiveWriter.h"
#include "storage/WorkingFolder.h"
#include "symbols/SymbolPrompt.h"
#include "symbols/SymbolScheme.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <limits>
#include <random>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

constexpr int kBlocks = 89;
constexpr int kTextures = 300;
constexpr int kSounds = 20;

[[noreturn]] void fail(const QString &what)
{
    std::fprintf(stderr, "bench_open_save: %s\n", qPrintable(what));
    std::exit(1);
}

void writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        fail(u"cannot write "_s + path);
}

// A 3DML block of about `targetSize` bytes: vertices, parts with polygons and a BSP tree.
QByteArray blockText(int index, int targetSize, std::mt19937 &random)
{
    std::uniform_int_distribution<int> coord(0, 256);
    const bool sprite = index % 11 == 10;
    QByteArray text = "<!-- Block " + QByteArray::number(index) + " of the benchmark set -->\r\n";
    text += "<block name=\"Block " + QByteArray::number(index) + "\" type=\""
            + (sprite ? QByteArray("sprite") : QByteArray("structural")) + "\">\r\n";
    // Roughly: a vertex line 45 bytes, a polygon line 55, a node line 50.
    const int groups = std::max(1, targetSize / (4 * 45 + 55 + 50));
    text += "  <vertices>\r\n";
    for (int v = 1; v <= groups * 4; ++v)
        text += "    <vertex ref=\"" + QByteArray::number(v) + "\" coords=\"(" + QByteArray::number(coord(random)) + ","
                + QByteArray::number(coord(random)) + "," + QByteArray::number(coord(random)) + ")\"/>\r\n";
    text += "  </vertices>\r\n  <parts>\r\n";
    const char *parts[] = {"n", "s", "e", "w", "top", "bottom"};
    for (int p = 0; p < 6; ++p) {
        text += "    <part name=\"" + QByteArray(parts[p]) + "\" texture=\"tex" + QByteArray::number(p * 7 + index % 7)
                + ".jpg\">\r\n";
        for (int g = p; g < groups; g += 6) {
            const int v = g * 4 + 1;
            text += "      <polygon ref=\"" + QByteArray::number(g + 1) + "\" vertices=\"" + QByteArray::number(v) + ","
                    + QByteArray::number(v + 1) + "," + QByteArray::number(v + 2) + "," + QByteArray::number(v + 3)
                    + "\"/>\r\n";
        }
        text += "    </part>\r\n";
    }
    text += "  </parts>\r\n  <BSP_TREE root=\"1\">\r\n";
    for (int g = 1; g <= groups; ++g)
        text += "    <node polygon=\"" + QByteArray::number(g) + "\" front=\""
                + QByteArray::number(g < groups ? g + 1 : 0) + "\" rear=\"0\"/>\r\n";
    text += "  </BSP_TREE>\r\n</block>\r\n";
    return text;
}

// Incompressible bytes behind an image or sound header, like real JPEG/GIF/WAV data.
QByteArray noise(const QByteArray &header, int size, std::mt19937 &random)
{
    QByteArray bytes = header;
    bytes.resize(size);
    for (qsizetype i = header.size(); i + 4 <= bytes.size(); i += 4) {
        const quint32 word = static_cast<quint32>(random());
        std::memcpy(bytes.data() + i, &word, 4);
    }
    return bytes;
}

QByteArray wavHeader(int dataSize)
{
    QByteArray h("RIFF");
    const auto le32 = [&h](quint32 v) {
        for (int i = 0; i < 4; ++i)
            h.append(char((v >> (8 * i)) & 0xff));
    };
    const auto le16 = [&h](quint16 v) {
        h.append(char(v & 0xff));
        h.append(char(v >> 8));
    };
    le32(quint32(36 + dataSize));
    h += "WAVEfmt ";
    le32(16);
    le16(1);
    le16(1);
    le32(22050);
    le32(44100);
    le16(2);
    le16(16);
    h += "data";
    le32(quint32(dataSize));
    return h;
}

qint64 folderBytes(const QString &folder)
{
    qint64 total = 0;
    const QFileInfoList entries =
        QDir(folder).entryInfoList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot | QDir::Hidden);
    for (const QFileInfo &info : entries)
        total += info.isDir() ? folderBytes(info.absoluteFilePath()) : info.size();
    return total;
}

void makeBlocksetFolder(const QString &folder)
{
    std::mt19937 random(20240601);
    for (const char *sub : {"blocks", "textures", "sounds"})
        if (!QDir().mkpath(folder + u'/' + QLatin1String(sub)))
            fail(u"cannot create "_s + folder);

    QByteArray style = "<style version=\"2.0\" name=\"Bench\" synopsis=\"A large blockset\" author=\"Bench\">\r\n"
                       "<generator app=\"Cubrix\" version=\"0.9 Beta 1\"/>\r\n\r\n"
                       "<placeholder texture=\"tex0.jpg\"/>\r\n"
                       "<sky texture=\"tex1.jpg\" color=\"(0,0,255)\" brightness=\"80%\"/>\r\n";
    std::uniform_int_distribution<int> blockSize(20 * 1024, 40 * 1024);
    const QString &alphabet = symbolAlphabet();
    for (int i = 0; i < kBlocks; ++i) {
        const QString name = u"block%1.block"_s.arg(i, 3, 10, QLatin1Char('0'));
        writeFile(folder + u"/blocks/"_s + name, blockText(i, blockSize(random), random));
        const QByteArray symbol = QString(alphabet.at(i % alphabet.size())).toLatin1();
        style += "<block symbol=\"" + symbol + "\" double=\"." + symbol + "\" file=\"" + name.toLatin1() + "\"/>\r\n";
    }
    style += "\r\n</style>\r\n";
    writeFile(folder + u"/Bench.style"_s, style);

    std::uniform_int_distribution<int> textureSize(45 * 1024, 55 * 1024);
    for (int i = 0; i < kTextures; ++i) {
        const bool gif = i % 3 == 0;
        const QByteArray header =
            gif ? QByteArray("GIF89a\x40\x00\x40\x00", 10) : QByteArray("\xff\xd8\xff\xe0\x00\x10JFIF\x00", 11);
        writeFile(folder + u"/textures/tex%1.%2"_s.arg(i).arg(gif ? u"gif"_s : u"jpg"_s),
                  noise(header, textureSize(random), random));
    }
    for (int i = 0; i < kSounds; ++i) {
        const int size = 100 * 1024;
        writeFile(folder + u"/sounds/sound%1.wav"_s.arg(i, 2, 10, QLatin1Char('0')),
                  noise(wavHeader(size - 44), size, random));
    }
}

void runTool(const QString &program, const QStringList &arguments, const QString &workingFolder)
{
    QProcess process;
    process.setWorkingDirectory(workingFolder);
    process.setProcessChannelMode(QProcess::ForwardedChannels);
    process.start(program, arguments);
    if (!process.waitForFinished(600000) || process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0)
        fail(program + u" "_s + arguments.join(u' ') + u" failed"_s);
}

// One timed operation: `prepare` runs untimed before each run of `work`.
struct Timed {
    std::function<void()> prepare;
    std::function<void()> work;
    double bestMs = std::numeric_limits<double>::max();
};

// Runs every operation `runs` times, taking turns, and keeps each one's best
// (smallest) wall time: taking turns lets a busy machine slow all of them alike.
void measure(int runs, const std::vector<Timed *> &operations)
{
    for (int i = 0; i < runs; ++i) {
        for (Timed *operation : operations) {
            if (operation->prepare)
                operation->prepare();
            QElapsedTimer timer;
            timer.start();
            operation->work();
            operation->bestMs = std::min(operation->bestMs, double(timer.nsecsElapsed()) / 1e6);
        }
    }
}

void freshFolder(const QString &path)
{
    QDir(path).removeRecursively();
    if (!QDir().mkpath(path))
        fail(u"cannot create "_s + path);
}

void report(const char *label, double ms)
{
    std::printf("  %-52s %9.1f ms\n", label, ms);
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const bool makeOnly = argc > 2 && std::strcmp(argv[1], "--make") == 0;
    const int runs = argc > 1 && !makeOnly ? std::max(1, std::atoi(argv[1])) : 5;

    QTemporaryDir temp;
    if (!temp.isValid())
        fail(u"no temporary folder"_s);
    const QString source = temp.filePath(u"source"_s);
    const QString archive =
        makeOnly ? QFileInfo(QString::fromLocal8Bit(argv[2])).absoluteFilePath() : temp.filePath(u"Bench.bset"_s);
    makeBlocksetFolder(source);
    QFile::rename(source + u"/Bench.style"_s, source + u'/' + QFileInfo(archive).completeBaseName() + u".style"_s);
    runTool(u"zip"_s, {u"-r"_s, u"-6"_s, u"-q"_s, archive, u"."_s}, source);
    if (makeOnly)
        return 0;
    std::printf("Blockset: %d blocks, %d textures, %d sounds; %.1f MB unpacked, %.1f MB packed; best of %d runs\n",
                kBlocks, kTextures, kSounds, double(folderBytes(source)) / 1e6, double(QFileInfo(archive).size()) / 1e6,
                runs);

    HiveRegistry registry(temp.filePath(u"registry.reg"_s));
    RegistryWrapper settings(registry);
    if (!settings.loadSettings())
        fail(u"cannot create the settings store"_s);
    QDir().mkpath(temp.filePath(u"root"_s));
    WorkingFolder folder(temp.filePath(u"root"_s));
    (void)folder.createWorkingFolders();
    SilentPrompts prompts;
    BlocksetDocument document(prompts, prompts, settings, folder);

    // (a) open, and its phases each on its own.
    const QString unzipTarget = temp.filePath(u"unzipped"_s);
    Timed unzip{[&] { freshFolder(unzipTarget); },
                [&] {
                    runTool(u"unzip"_s, {u"-q"_s, u"-o"_s, archive, u"-d"_s, unzipTarget}, temp.path());
                }};
    Timed open{nullptr, [&] {
                   (void)document.openBlockset(archive);
                   if (!document.blocksetOpen() || document.blockCount() != kBlocks
                       || document.textureCount() != kTextures || document.soundCount() != kSounds)
                       fail(u"the open did not give the whole blockset"_s);
               }};
    Timed clear{[&] { (void)document.openBlockset(archive); }, [&] { folder.clearWorkingFolders(); }};
    const QString extractTarget = temp.filePath(u"extracted"_s);
    double archiveOpenMs = std::numeric_limits<double>::max();
    Timed extract{[&] { freshFolder(extractTarget); },
                  [&] {
                      ArchiveReader unpacker;
                      QElapsedTimer timer;
                      timer.start();
                      if (!unpacker.open(archive))
                          fail(u"open failed"_s);
                      archiveOpenMs = std::min(archiveOpenMs, double(timer.nsecsElapsed()) / 1e6);
                      if (const Result extracted = unpacker.extractAll(extractTarget); !extracted)
                          fail(u"extractAll failed: "_s + extracted.reason());
                  }};
    Timed parse{nullptr, [&] {
                    Parser parser;
                    QList<BlockRow> rows;
                    QFile styleFile(extractTarget + u"/Bench.style"_s);
                    if (!styleFile.open(QIODevice::ReadOnly))
                        fail(u"no style file"_s);
                    const QStringList blocks =
                        QDir(extractTarget + u"/blocks"_s).entryList({u"*.block"_s}, QDir::Files, QDir::Name);
                    for (const QString &name : blocks) {
                        BlockRow row;
                        row.file = name;
                        rows.append(row);
                    }
                    StyleValues style;
                    parser.setBuffer(styleFile.readAll());
                    readStyle(parser, style, rows);
                    for (BlockRow &row : rows) {
                        QFile file(extractTarget + u"/blocks/"_s + row.file);
                        if (!file.open(QIODevice::ReadOnly))
                            fail(u"cannot read "_s + row.file);
                        parser.setBuffer(file.readAll());
                        readBlock(parser, row);
                    }
                }};
    measure(runs, {&unzip, &open, &clear, &extract, &parse});

    // (b) save: Save As writes the whole archive; zip packs the same working folder.
    const QString saveTarget = temp.filePath(u"Saved.bset"_s);
    Timed save{[&] {
                   (void)document.openBlockset(archive);
                   QFile::remove(saveTarget);
                   prompts.target = saveTarget;
               },
               [&] {
                   (void)document.saveBlocksetAs();
                   if (document.isChanged())
                       fail(u"Save As failed"_s);
               }};
    const QString zipTarget = temp.filePath(u"Zipped.bset"_s);
    Timed zip{[&] { QFile::remove(zipTarget); },
              [&] {
                  runTool(u"zip"_s, {u"-r"_s, u"-6"_s, u"-q"_s, zipTarget, u"."_s}, folder.workingFolder());
              }};
    const QString zipStoreTarget = temp.filePath(u"ZippedStore.bset"_s);
    Timed zipStore{[&] { QFile::remove(zipStoreTarget); },
                   [&] {
                       runTool(u"zip"_s, {u"-r"_s, u"-6"_s, u"-n"_s, u".gif:.jpg"_s, u"-q"_s, zipStoreTarget, u"."_s},
                               folder.workingFolder());
                   }};
    const QString packTarget = temp.filePath(u"Packed.bset"_s);
    double addMs = std::numeric_limits<double>::max();
    Timed pack{[&] { QFile::remove(packTarget); },
               [&] {
                   ArchiveWriter packer(packTarget);
                   QElapsedTimer timer;
                   timer.start();
                   if (const Result added = packer.addFolder(folder.workingFolder()); !added)
                       fail(u"adding files failed: "_s + added.reason());
                   addMs = std::min(addMs, double(timer.nsecsElapsed()) / 1e6);
                   if (const Result written = packer.write(); !written)
                       fail(u"write failed: "_s + written.reason());
               }};
    measure(runs, {&save, &zip, &zipStore, &pack});
    const double unzipMs = unzip.bestMs, openMs = open.bestMs, clearMs = clear.bestMs, extractMs = extract.bestMs,
                 parseMs = parse.bestMs, saveMs = save.bestMs, zipMs = zip.bestMs, packMs = pack.bestMs;

    std::printf("\nOpen\n");
    report("unzip -q -o ARCHIVE -d DIR", unzipMs);
    report("BlocksetDocument::openBlockset", openMs);
    report("  phase: clearWorkingFolders (full folder)", clearMs);
    report("  phase: ArchiveReader::open", archiveOpenMs);
    report("  phase: ArchiveReader open + extractAll", extractMs);
    report("  phase: read style + 89 block files", parseMs);
    std::printf("  open/unzip = %.2f (goal <= 1.30)\n", openMs / unzipMs);

    std::printf("\nSave\n");
    report("zip -r -6 -q OUT.bset .", zipMs);
    report("zip -r -6 -n .gif:.jpg -q OUT.bset .", zipStore.bestMs);
    report("BlocksetDocument::saveBlocksetAs", saveMs);
    report("  phase: ArchiveWriter addFolder", addMs);
    report("  phase: ArchiveWriter addFolder + write", packMs);
    const double zipSize = double(QFileInfo(zipTarget).size()), saveSize = double(QFileInfo(saveTarget).size());
    std::printf("  save/zip = %.2f (goal <= 0.50), save/zip -n = %.2f\n", saveMs / zipMs, saveMs / zipStore.bestMs);
    std::printf(
        "  archive sizes: zip %.3f MB, zip -n %.3f MB, saveBlocksetAs %.3f MB (%+.2f %% of zip; goal within 2 %%)\n",
        zipSize / 1e6, double(QFileInfo(zipStoreTarget).size()) / 1e6, saveSize / 1e6,
        100.0 * (saveSize - zipSize) / zipSize);

    (void)document.closeBlockset();
    folder.removeWorkingFolders();
    return 0;
}
