// Shrink and Fit over whole blocksets, as the window and cubrix-cli run them:
// after Shrink and a save every texture shows the same pixels (judged by Qt's
// own readers), Rover reads every texture, check passes and a later save keeps
// the gains; Fit brings large blocksets under Rover's 307,200 bytes.

#include "MediaSamples.h"
#include "app/BlocksetCheck.h"
#include "app/DocumentFixture.h"
#include "rover/RoverMedia.h"
#include "shrink/FitCommand.h"
#include "shrink/GifColours.h"
#include "shrink/JpegTranscode.h"
#include "shrink/ShrinkCommand.h"
#include "shrink/TextDeflate.h"
#include "support/DataRows.h"

using namespace Qt::StringLiterals;

namespace {

FileMap blocksetWith(const FileMap &media)
{
    FileMap files{{u"Set.style"_s, styleFile(u"Set"_s, u"<block symbol=\"a\" file=\"lamp.block\"/>\n"_s)},
                  {u"blocks/lamp.block"_s, dosText(u"<block name=\"lamp\" type=\"angled sprite\">\n"
                                                   "<part name=\"glow\" texture=\"t.gif\"/>\n</block>\n"_s)}};
    files.insert(media);
    return files;
}

QImage noise(int side)
{
    QImage image(side, side, QImage::Format_RGB32);
    QRandomGenerator random(11);
    for (int y = 0; y < side; ++y)
        for (int x = 0; x < side; ++x)
            image.setPixel(x, y, random.generate() | 0xFF000000);
    return image;
}

QByteArray noisyGif(int side)
{
    QString error;
    return quantiseGif({{noise(side)}, {0}, {false}, -1}, 256, &error);
}

// Each entry's bytes as stored.
QList<QByteArray> packedEntries(const QString &path)
{
    QList<QByteArray> entries;
    ArchiveReader reader;
    PackedEntry entry;
    for (quint64 i = 0; reader.isOpen() || reader.open(path); ++i) {
        if (!reader.readPacked(i, entry))
            break;
        entries.append(entry.packed);
    }
    return entries;
}

// The errors check reports.
QStringList errors(BlocksetDocument &document)
{
    QStringList found;
    for (const BlocksetCheck::Finding &f : checkBlockset(document).findings) {
        if (f.severity == RoverFinding::Error)
            found.append(f.file + u": "_s + f.text);
    }
    return found;
}

} // namespace

class TestShrinkBlockset : public QObject {
    Q_OBJECT
private slots:
    void lossless_data();
    void lossless();
    void fit_data();
    void fit();
    void textInBlocks();
};

void TestShrinkBlockset::lossless_data()
{
    addColumns<QString, QByteArray>("file", "bytes");
    const QRect screen(0, 0, 24, 16);
    QString error;
    const QByteArray photoJpeg = jpeg(photo(200, 150));
    addRow("JPEG with EXIF, ICC and a comment", u"textures/photo.jpg"_s, photoJpeg);
    addRow("progressive JPEG", u"textures/photo.jpg"_s, transcodeJpeg(photoJpeg, true, &error));
    addRow("greyscale JPEG", u"textures/grey.jpg"_s, jpeg(photo(64, 64, QImage::Format_Grayscale8)));
    addRow("arithmetic-coded JPEG", u"textures/arith.jpg"_s, libjpeg(JCS_RGB, 3, true));
    addRow("interlaced GIF with a local table", u"textures/t.gif"_s,
           gif(screen.size(), {Frame{screen, 4, -1, 0, true}}));
    addRow("animated GIF with a loop", u"textures/t.gif"_s,
           gif(screen.size(), {Frame{screen, 0, -1, 20}, Frame{QRect(4, 4, 8, 8), 8, 1, 30}}, 0));
    addRow("transparent GIF", u"textures/t.gif"_s, gif(screen.size(), {Frame{screen, 0, 2, 0}}));
}

void TestShrinkBlockset::lossless()
{
    QFETCH(QString, file);
    QFETCH(QByteArray, bytes);
    DocumentEnv env;
    env.setOption("updateFile", false);
    const QString path = env.addSet(u"Set.bset"_s, blocksetWith({{file, bytes}}));
    env.open(path);
    const ShrinkPlan plan = planDocumentShrink(env.document);
    QVERIFY(applyDocumentShrink(env.document, plan));
    QVERIFY(env.document.blocksetChanged());
    QVERIFY(env.document.saveBlockset());
    const QByteArray shrunk = readBytes(path);
    const QList<QByteArray> shrunkEntries = packedEntries(path);
    QVERIFY(shrunkEntries.size() >= 3);
    // Smaller, unless a texture Rover could not read had to grow to become readable.
    if (roverTextureInfo(bytes).status == RoverTextureInfo::Usable)
        QVERIFY(shrunk.size() <= readBytes(env.addSet(u"Plain.bset"_s, blocksetWith({{file, bytes}}))).size());

    // A second save neither undoes Shrink nor packs anything anew.
    env.document.setBlocksetChanged();
    QVERIFY(env.document.saveBlockset());
    QCOMPARE(packedEntries(path), shrunkEntries);

    const QByteArray after = readBset(path).value(file);
    QCOMPARE(shown(after), shown(bytes));
    const RoverTextureInfo info = roverTextureInfo(after);
    QVERIFY2(info.status == RoverTextureInfo::Usable, qPrintable(info.reason));
    env.open(path);
    QCOMPARE(errors(env.document), QStringList());
}

void TestShrinkBlockset::fit_data()
{
    QTest::addColumn<FileMap>("media");
    addRow("a 512×512 JPEG and large GIFs", FileMap{{u"textures/photo.jpg"_s, jpeg(noise(512), 95)},
                                                    {u"textures/t.gif"_s, noisyGif(300)},
                                                    {u"textures/wall.gif"_s, noisyGif(260)}});
    addRow("a 44.1 kHz stereo sound", FileMap{{u"sounds/voice.wav"_s, wav(1, 2, 44100, 3.0, 2000)}});
    addRow("an extensible WAV", FileMap{{u"sounds/voice.wav"_s, wav(0xFFFE, 2, 44100, 3.0, 2000)}});
}

void TestShrinkBlockset::fit()
{
    QFETCH(FileMap, media);
    DocumentEnv env;
    env.setOption("updateFile", false);
    env.setOption("showWarnings", false);
    const QString path = env.addSet(u"Set.bset"_s, blocksetWith(media));
    QVERIFY(QFileInfo(path).size() > 307200);
    env.open(path);
    const DocumentFit plan = planDocumentFit(env.document, FitOptions());
    QVERIFY(plan.fit.fits());
    QVERIFY(applyDocumentFit(env.document, plan));
    QVERIFY(env.document.saveBlockset());
    // What the plan promised is what the save wrote.
    QCOMPARE(QFileInfo(path).size(), plan.fit.sizeAfter());

    const FileMap saved = readBset(path);
    for (auto it = saved.cbegin(); it != saved.cend(); ++it) {
        if (it.key().startsWith(u"textures/"_s)) {
            const RoverTextureInfo info = roverTextureInfo(it.value());
            QVERIFY2(info.status == RoverTextureInfo::Usable, qPrintable(it.key() + info.reason));
        } else if (it.key().startsWith(u"sounds/"_s)) {
            QVERIFY2(roverSoundInfo(it.value()).usable, qPrintable(it.key()));
        }
    }
    env.open(path);
    QCOMPARE(errors(env.document), QStringList());
}

// A block file as modellers write it: Deflate blocks of its own for the first
// line and the vertices beat libdeflate's strongest level by 2 % at least (one
// zopfli block alone does not), and inflate back.
void TestShrinkBlockset::textInBlocks()
{
    QByteArray text = "<block name=\"Tower\" type=\"structural\">\r\n<vertices>\r\n";
    for (int v = 1; v <= 120; ++v)
        text += "  <vertex ref=\"" + QByteArray::number(v) + "\" coords=\"(" + QByteArray::number(v * 37 % 257) + ","
                + QByteArray::number(v * 91 % 257) + ",0)\"/>\r\n";
    text += "</vertices>\r\n</block>\r\n";
    const QByteArray packed = deflateInBlocks(text);
    const PackedEntry entry{{PackedForm::Deflated, EntryPacking::crc32(text), text.size(), packed.size()}, packed};
    QByteArray back;
    QVERIFY(EntryPacking::unpack(entry, back));
    QCOMPARE(back, text);
    QVERIFY(packed.size() * 100 < EntryPacking::pack(text, EntryPacking::kStrongestLevel).form.packedSize * 98);
}

QTEST_MAIN(TestShrinkBlockset)
#include "test_shrink_blockset.moc"
