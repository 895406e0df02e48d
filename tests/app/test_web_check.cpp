// A blockset Rover takes from the web: check reports a file over 307,200 bytes
// and every texture or sound Rover's readers refuse (with its users), Add warns
// about such a file, a save over the limit says so, and the size the window
// shows is the size the save then writes.

#include "DocumentFixture.h"

#include "app/BlocksetCheck.h"
#include "app/BlocksetSize.h"
#include "app/BlocksetSizeMonitor.h"
#include "items/AddItems.h"

using namespace Qt::StringLiterals;

namespace {

QByteArray le16(int v)
{
    return QByteArray(1, char(v & 255)) + char(v >> 8 & 255);
}

// A GIF's structure (two bytes of image data are enough for Rover's reader).
QByteArray gif(int width, bool localTable)
{
    QByteArray b = "GIF89a" + le16(width) + le16(8) + '\x80' + '\0' + '\0' + QByteArray(6, '\x10');
    b += '\x2C' + le16(0) + le16(0) + le16(width) + le16(8) + char(localTable ? 0x80 : 0);
    if (localTable)
        b += QByteArray(6, '\x20');
    return b + QByteArray("\x02\x02\x44\x01\0;", 6);
}

// A JPEG header up to its first scan with `components` channels.
QByteArray jpeg(int components)
{
    const auto segment = [](int marker, const QByteArray &body) {
        return "\xFF" + QByteArray(1, char(marker)) + char((body.size() + 2) >> 8) + char(body.size() + 2) + body;
    };
    QByteArray frame = QByteArray("\x08\0\x10\0\x10", 5) + char(components), scan(1, char(components));
    for (int c = 1; c <= components; ++c) {
        frame += QByteArray(1, char(c)) + '\x11' + '\0';
        scan += QByteArray(1, char(c)) + '\0';
    }
    const QByteArray table = QByteArray(1, '\x01') + QByteArray(16, '\0');
    return "\xFF\xD8" + segment(0xDB, '\0' + QByteArray(64, '\x01')) + segment(0xC4, '\0' + table + '\x10' + table)
           + segment(0xC0, frame) + segment(0xDA, scan + QByteArray("\0\x3F\0", 3)) + "\x12\x34\xFF\xD9";
}

QByteArray wav(int formatTag)
{
    const QByteArray fmt =
        le16(formatTag) + le16(1) + le16(22050) + le16(0) + le16(44100) + le16(0) + le16(2) + le16(16);
    const QByteArray chunks = "fmt " + le16(16) + le16(0) + fmt + "data" + le16(100) + le16(0) + QByteArray(100, 0);
    return "RIFF" + le16(int(chunks.size()) + 4) + le16(0) + "WAVE" + chunks;
}

const QByteArray kBlock = "<BLOCK NAME=\"lamp\" TYPE=\"angled sprite\">\r\n<PART NAME=\"glow\" TEXTURE=\"t.gif\"/>\r\n"
                          "<SOUND FILE=\"hum.wav\"/>\r\n</BLOCK>\r\n";

QStringList findingsAbout(const BlocksetCheck &check, const QString &file)
{
    QStringList found;
    for (const BlocksetCheck::Finding &f : check.findings) {
        if (f.file == file)
            found.append((f.severity == RoverFinding::Error ? u"error: "_s : u"warning: "_s) + f.text);
    }
    return found;
}

} // namespace

class TestWebCheck : public QObject {
    Q_OBJECT
private slots:
    void sizeLimit_data();
    void sizeLimit();
    void mediaFiles_data();
    void mediaFiles();
    void savedSizeEstimate_data();
    void savedSizeEstimate();
};

void TestWebCheck::sizeLimit_data()
{
    QTest::addColumn<qint64>("size");
    QTest::newRow("exactly at the limit") << qint64(307200);
    QTest::newRow("one byte over") << qint64(307201);
    QTest::newRow("far over") << qint64(420000);
}

void TestWebCheck::sizeLimit()
{
    QFETCH(qint64, size);
    DocumentEnv env;
    // A stored padding entry outside the item folders sets the archive's size to the byte.
    FileMap files{{u"Big.style"_s, styleFile(u"Big"_s)}, {u"extra/pad.jpg"_s, QByteArray(1000, 'p')}};
    const QString path = env.addSet(u"Big.bset"_s, files);
    files[u"extra/pad.jpg"_s] = QByteArray(1000 + size - QFileInfo(path).size(), 'p');
    env.addSet(u"Big.bset"_s, files);
    QCOMPARE(QFileInfo(path).size(), size);

    env.open(path);
    const BlocksetCheck check = checkBlockset(env.document);
    const bool over = size > BlocksetSize::kWebLimit;
    const QStringList expected{
        u"error: Rover refuses this blockset from a web address: %1 bytes, at most 307,200 "
        "(a spot that names it by a file:// address still loads it)"_s.arg(BlocksetSize::groupedBytes(size))};
    QCOMPARE(findingsAbout(check, u"Big.bset"_s), over ? expected : QStringList());
    QCOMPARE(check.roverLoadsBlockset, !over);

    // A save says the same of the file it wrote.
    env.prompts.roverRejectionExpected = true;
    env.document.setBlocksetChanged();
    QVERIFY(env.document.saveBlockset());
    const qint64 saved = QFileInfo(path).size();
    const bool told = !env.prompts.messages.isEmpty() && env.prompts.messages.last().title == "Rover compatibility"_L1;
    QCOMPARE(told, saved > BlocksetSize::kWebLimit);
    if (told)
        QVERIFY(env.prompts.messages.last().text.contains(BlocksetSize::webLimitFinding(saved)));
}

void TestWebCheck::mediaFiles_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("finding");
    QTest::addColumn<QString>("addWarning");
    const QString untextured = u": it draws these parts untextured: lamp.block, part \"glow\""_s;
    QTest::newRow("clean GIF") << u"textures/t.gif"_s << gif(8, false) << QString() << QString();
    QTest::newRow("GIF with a local colour table")
        << u"textures/t.gif"_s << gif(8, true)
        << u"warning: Rover cannot use this texture (a frame has a colour table of its own)"_s + untextured
        << u"Rover cannot use the texture \"t.gif\": a frame has a colour table of its own."_s;
    QTest::newRow("GIF 300 pixels wide")
        << u"textures/t.gif"_s << gif(300, false)
        << u"warning: Rover cannot use this texture (300×8 pixels: wider or taller than 256)"_s + untextured
        << u"Rover cannot use the texture \"t.gif\": 300×8 pixels: wider or taller than 256."_s;
    QTest::newRow("CMYK JPEG unused")
        << u"textures/print.jpg"_s << jpeg(4)
        << u"error: Rover cannot use this texture (a four-channel (CMYK or YCCK) JPEG overruns Rover's line buffer): "
           "what it does with it is undefined; no part uses it yet"_s
        << u"Rover cannot use the texture \"print.jpg\": a four-channel (CMYK or YCCK) JPEG overruns Rover's line "
           "buffer."_s;
    QTest::newRow("extensible WAV")
        << u"sounds/hum.wav"_s << wav(0xFFFE)
        << u"warning: Rover plays nothing for this sound (not plain PCM: extensible format (format tag 0xFFFE)); "
           "used by lamp.block"_s
        << u"Rover cannot play the sound \"hum.wav\": not plain PCM: extensible format (format tag 0xFFFE)."_s;
    QTest::newRow("plain PCM WAV") << u"sounds/hum.wav"_s << wav(1) << QString() << QString();
}

void TestWebCheck::mediaFiles()
{
    QFETCH(QString, file);
    QFETCH(QByteArray, bytes);
    QFETCH(QString, finding);
    QFETCH(QString, addWarning);
    DocumentEnv env;
    env.setOption("updateFile", false);
    const FileMap files{{u"Lamp.style"_s, styleFile(u"Lamp"_s, u"<block symbol=\"a\" file=\"lamp.block\"/>\n"_s)},
                        {u"blocks/lamp.block"_s, kBlock},
                        {file, bytes}};
    env.open(env.addSet(u"Lamp.bset"_s, files));
    QCOMPARE(findingsAbout(checkBlockset(env.document), file),
             finding.isEmpty() ? QStringList() : QStringList{finding});

    // Add takes the same file with a warning of the same reason.
    const QString source = env.setPath(u"new-"_s + file.section(u'/', -1));
    writeBytes(source, bytes);
    const ItemKind kind = file.startsWith(u"sounds/"_s) ? ItemKind::Sound : ItemKind::Texture;
    QVERIFY(env.document.edit([&] { return addItemFile(env.document, kind, source); }));
    const QStringList texts = env.prompts.messageTexts();
    QCOMPARE(texts.size(), addWarning.isEmpty() ? 0 : 1);
    if (!addWarning.isEmpty())
        QVERIFY2(texts.first().startsWith(
                     addWarning.replace(u'"' + file.section(u'/', -1), u"\"new-"_s + file.section(u'/', -1))),
                 qPrintable(texts.first()));
}

void TestWebCheck::savedSizeEstimate_data()
{
    QTest::addColumn<QStringList>("added");
    QTest::newRow("as opened") << QStringList();
    QTest::newRow("a sound and a texture added") << QStringList{u"noise.wav"_s, u"big.jpg"_s};
}

void TestWebCheck::savedSizeEstimate()
{
    QFETCH(QStringList, added);
    DocumentEnv env;
    const QString path = env.addSet(u"Castle.bset"_s, castleFiles());
    env.open(path);
    BlocksetSizeMonitor monitor(env.document);
    QRandomGenerator random(3);
    for (const QString &name : added) {
        QByteArray bytes(60000, Qt::Uninitialized);
        for (char &c : bytes)
            c = char(random.bounded(name.endsWith(u".wav"_s) ? 16 : 256)); // noise that packs a little
        const QString source = env.setPath(name);
        writeBytes(source, name.endsWith(u".jpg"_s) ? "\xFF\xD8" + bytes : "RIFF" + bytes);
        env.prompts.answers.append(PromptAnswer::Ok); // Add's warning: not a JPEG or WAV Rover reads
        env.document.edit(
            [&] { addItemFile(env.document, name.endsWith(u".jpg"_s) ? ItemKind::Texture : ItemKind::Sound, source); });
    }
    monitor.settle();
    QVERIFY(monitor.size().complete);
    const qint64 estimate = monitor.size().total;
    env.document.setBlocksetChanged();
    QVERIFY(env.document.saveBlockset());
    // The save writes exactly what the estimate counted, the new items packed by the worker.
    QCOMPARE(estimate, QFileInfo(path).size());
}

QTEST_GUILESS_MAIN(TestWebCheck)
#include "test_web_check.moc"
