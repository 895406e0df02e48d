// Saving and Save As end to end: what lands in the archive and the update
// file, the status texts, the failures and a full round trip. For the web:
// check reports a file over 307,200 bytes and every texture or sound Rover's
// readers refuse (with its users), Add warns about such a file, a save over the
// limit says so, and the size the window shows is the size the save then writes.

#include "DocumentFixture.h"
#include "app/BlocksetCheck.h"
#include "app/BlocksetSize.h"
#include "app/BlocksetSizeMonitor.h"
#include "items/AddItems.h"
#include "storage/PlatformFile.h"
#include "support/DataRows.h"
#include "support/MediaBytes.h"

#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace {

// A mono 16-bit WAV of 100 data bytes in the format `tag`.
QByteArray wav(int tag)
{
    return riffWave(wavFormat(tag, 1, 22050, 16) + riffChunk("data", QByteArray(100, '\0')));
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

class TestDocumentSave : public QObject {
    Q_OBJECT

private slots:
    void saveResult_data()
    {
        addColumns<bool, bool, bool, QString>("editUpdate", "editStyle", "updateFile", "status");
        addRow("nothing changed", false, false, true, "saved.");
        addRow("only the update comment", true, false, true, "Update file saved.");
        addRow("style value", false, true, true, "Blockset and update file saved.");
        addRow("both, update file off", true, true, false, "Blockset saved.");
    }

    void saveResult()
    {
        QFETCH(bool, editUpdate);
        QFETCH(bool, editStyle);
        QFETCH(bool, updateFile);
        QFETCH(QString, status);
        DocumentEnv env;
        env.setOption("updateFile", updateFile);
        const QString castle = env.addSet(QStringLiteral("Castle.bset"), castleFiles());
        const QString txt = env.setPath(QStringLiteral("Castle.txt"));
        const QByteArray oldUpdate = updateFileText(QStringLiteral("1.0"), QStringLiteral("old"), 1);
        QVERIFY(writeFile(txt, oldUpdate));
        env.open(castle);
        // A save that leaves the archive alone keeps its file (inode and times).
        const PlatformFile::FileStamp stamp = PlatformFile::fileStamp(PlatformFile::encodeName(castle));
        if (editUpdate)
            env.document.editUpdateComment(QStringLiteral("Two new gates"));
        if (editStyle)
            env.document.editStyleValue(StyleField::Synopsis, QStringLiteral("Walls of stone"));
        env.view.clear();

        QVERIFY(env.document.saveBlockset());

        QVERIFY2(env.prompts.messages.isEmpty(), qPrintable(env.prompts.messageTexts().join(u'\n')));
        const bool updateWritten = updateFile && (editStyle || editUpdate);
        QStringList shown;
        if (editStyle)
            shown << QStringLiteral("Saving blockset...");
        if (updateWritten && !editStyle) // with the archive, the pair is saved in one step
            shown << QStringLiteral("Saving update file...");
        QCOMPARE(env.view.processTexts, shown << status);
        QCOMPARE(env.document.processText(), status);
        QVERIFY(env.document.processMessageShown() && !env.document.isChanged());
        QCOMPARE(env.view.busyCalls, QList<bool>({true, false}));
        QVERIFY(env.view.checkInterfaceCalls >= 1);
        const QByteArray archive = readBytes(castle);
        QCOMPARE(PlatformFile::fileStamp(PlatformFile::encodeName(castle)) != stamp, editStyle);
        if (editStyle) {
            const FileMap packed = readBset(castle);
            QVERIFY(packed.value(QStringLiteral("Castle.style")).contains("synopsis=\"Walls of stone\""));
            QCOMPARE(packed.value(QStringLiteral("sounds/wind.wav")),
                     castleFiles().value(QStringLiteral("sounds/wind.wav")));
        }
        // The update file carries the size of the archive on disk; off, it is never written or deleted.
        const QString comment = editUpdate ? QStringLiteral("Two new gates") : QStringLiteral("old");
        QCOMPARE(readBytes(txt),
                 updateWritten ? updateFileText(QStringLiteral("1.2"), comment, archive.size()) : oldUpdate);
    }

    void saveFailure_data()
    {
        addColumns<QString, QString>("fault", "message");
        addRow("style file cannot be written", "style", "Unable to write style file!");
        addRow("archive folder gone", "folder", "Unable to save blockset!");
        addRow("update file cannot be written", "update",
               "Unable to save update information!\nThe blockset was not saved: it stays on disk as it was.");
        addRow("archive missing for the update size", "nosize", "Unable to save update information!");
    }

    void saveFailure()
    {
        QFETCH(QString, fault);
        QFETCH(QString, message);
        DocumentEnv env;
        const QString castle = env.addSet(QStringLiteral("sub/Castle.bset"), castleFiles());
        env.open(castle);
        const QByteArray before = readBytes(castle);
        if (fault != "nosize")
            env.document.editStyleValue(StyleField::Author, QStringLiteral("B. Builder"));
        env.document.editUpdateComment(QStringLiteral("comment"));
        if (fault == "style")
            QVERIFY(QFile::remove(env.working("Castle.style")) && QDir().mkdir(env.working("Castle.style")));
        else if (fault == "folder")
            QVERIFY(QDir(env.setPath("sub")).removeRecursively());
        else if (fault == "update")
            QVERIFY(QDir().mkdir(env.setPath("sub/Castle.txt")));
        else
            QVERIFY(QFile::remove(castle));
        const bool gone = fault == "folder" || fault == "nosize";
        if (gone)
            env.prompts.choices << 1; // the archive is gone from disk: Overwrite
        env.view.clear();

        QVERIFY(!env.document.saveBlockset());

        QCOMPARE(env.prompts.messages.size(), gone ? 2 : 1);
        verifyMessage(env.prompts, gone ? 1 : 0, message, "Error", PromptButtons::Ok, PromptIcon::Critical);
        // The blockset still counts as changed; no "saved." text.
        QVERIFY(env.document.updateChanged());
        QCOMPARE(env.document.blocksetChanged(), fault != "nosize");
        QVERIFY(!env.document.processText().endsWith(QStringLiteral("saved.")));
        QCOMPARE(env.view.busyCalls.value(env.view.busyCalls.size() - 1, true), false);
        // Neither file of the pair changed: the archive is the old one.
        if (fault == "style" || fault == "update")
            QCOMPARE(readBytes(castle), before);
    }

    void saveAs_data()
    {
        QTest::addColumn<bool>("sync"); // the settings syncBlockset and updateFile
        addColumns<QString, QString, QString>("newName", "blocksetName", "status");
        addRow("name follows the file", true, "Keep.v2.bset", "Keep.v2", "Blockset and update file saved.");
        addRow("name kept, no update file", false, "Keep.bset", "Castle", "Blockset saved.");
        addRow("dialog cancelled", true, "", "Castle", "");
    }

    void saveAs()
    {
        QFETCH(bool, sync);
        QFETCH(QString, newName);
        QFETCH(QString, blocksetName);
        DocumentEnv env;
        env.setOption("syncBlockset", sync);
        env.setOption("updateFile", sync);
        FileMap files = castleFiles();
        files.insert(QStringLiteral("Spare.style"), styleFile(QStringLiteral("Spare")));
        const QString castle = env.addSet(QStringLiteral("Castle.bset"), files);
        const QString oldTxt = env.setPath(QStringLiteral("Castle.txt"));
        const QByteArray oldUpdate = updateFileText(QStringLiteral("1.2"), QStringLiteral("old"), 7);
        QVERIFY(writeFile(oldTxt, oldUpdate));
        const QByteArray castleBytes = readBytes(castle);
        env.prompts.fileAnswers = {castle};
        (void)env.document.openBlockset(); // sets pathBlockset to the blocksets folder
        const QString target = newName.isEmpty() ? QString() : makeFolder(env.setPath("copies")) + u'/' + newName;
        const QString base = newName.left(newName.lastIndexOf(u'.'));
        env.prompts.fileAnswers = {target};
        env.view.clear();

        (void)env.document.saveBlocksetAs();

        if (target.isEmpty()) { // nothing changes, no style file is deleted
            QCOMPARE(env.document.blocksetPath(), castle);
            QVERIFY(!env.document.isChanged());
            QCOMPARE(env.document.processText(), QString());
            QCOMPARE(filesBelow(env.folder.workingFolder()), files);
            QCOMPARE(env.pathSetting(), env.sets);
            return;
        }
        QVERIFY2(env.prompts.messages.isEmpty(), qPrintable(env.prompts.messageTexts().join(u'\n')));
        QCOMPARE(env.prompts.fileRequests.size(), 2);
        const ScriptedPrompts::FileRequest &request = env.prompts.fileRequests[1];
        QCOMPARE(QStringList({request.kind, request.title, request.filter, request.defaultExt, request.folder}),
                 QStringList({"save", "Save Blockset As", "Blocksets (*.bset),*.bset", "bset", env.sets}));
        QCOMPARE(env.view.processTexts.first(), QStringLiteral("Save Blockset As..."));
        QCOMPARE(env.pathSetting(), env.setPath("copies"));
        QCOMPARE(env.document.blocksetPath(), target);
        QCOMPARE(env.document.blocksetFileName(), newName);
        QCOMPARE(env.document.style().name, blocksetName);
        QVERIFY(!env.document.isChanged() && !env.document.blocksetUntitled());
        QTEST(env.document.processText(), "status");
        // The working folder and the new archive hold one style file, named after the new file.
        const QString styleName = base + QStringLiteral(".style");
        QCOMPARE(QDir(env.folder.workingFolder()).entryList({QStringLiteral("*.style")}, QDir::Files),
                 QStringList({styleName}));
        FileMap expected = castleFiles();
        expected.remove(QStringLiteral("Castle.style"));
        FileMap packed = readBset(target);
        QVERIFY(packed.take(styleName).startsWith(
            toCp1252(QStringLiteral("<style version=\"1.2\" name=\"%1\" synopsis=").arg(blocksetName))));
        QCOMPARE(packed, expected);
        // The old archive and its update file are left as they were.
        QCOMPARE(readBytes(castle), castleBytes);
        QCOMPARE(readBytes(oldTxt), oldUpdate);
        const QString newTxt = env.setPath("copies/" + base + ".txt");
        QCOMPARE(readBytes(newTxt),
                 sync ? updateFileText(QStringLiteral("1.2"), QStringLiteral("old"), QFileInfo(target).size())
                      : QByteArray());
        // Reopening finds what was saved.
        env.open(target);
        QVERIFY(env.prompts.messages.isEmpty());
        QCOMPARE(env.document.style().name, blocksetName);
        QCOMPARE(env.document.blocks()[2].doubleSymbol, QStringLiteral(".a"));
    }

    // Every style value, edited, saved, closed and opened again; several style files
    // and files nobody lists survive the cycle unchanged.
    void roundTrip()
    {
        const QList<QPair<StyleField, QString>> edits = {
            {StyleField::Version, "2.0 beta"},
            {StyleField::Name, "Fortress"},
            {StyleField::Synopsis, "Gates, towers & moats"},
            {StyleField::Author, QString::fromUtf8("Jos\u00e9 M\u00fcller")},
            {StyleField::Copyright, "(c) 2003"},
            {StyleField::PlaceholderTexture, "clouds.jpg"},
            {StyleField::SkyTexture, ""},
            {StyleField::SkyColor, "(1,2,3)"},
            {StyleField::SkyBrightness, "50%"},
            {StyleField::GroundTexture, "clouds.jpg"},
            {StyleField::GroundColor, "(255,0,255)"},
            {StyleField::OrbTexture, "brick.gif"},
            {StyleField::OrbColor, "(9,9,9)"},
            {StyleField::OrbBrightness, "75%"},
            {StyleField::OrbPosition, "(360,-90)"},
            {StyleField::OrbHref, "http://example.org/a.3dml"},
            {StyleField::OrbTarget, "_blank"},
            {StyleField::OrbText, "Go home"}};
        DocumentEnv env;
        FileMap files = castleFiles();
        files.insert(QStringLiteral("Other.style"), styleFile(QStringLiteral("Other")));
        files.insert(QStringLiteral("Zed.style"), QByteArray("<style name=\"Zed\"></style>"));
        files.insert(QStringLiteral("readme.txt"), QByteArray("\x01\x02 binary \xff bytes\r\n", 19));
        files.insert(QStringLiteral("blocks/notes.doc"), QByteArray("not a block"));
        const QString castle = env.addSet(QStringLiteral("Castle.bset"), files);
        env.open(castle);
        QVERIFY(env.prompts.messages.isEmpty());
        StyleValues expected = env.document.style();
        const QList<BlockRow> blocks = env.document.blocks();
        const SymbolSettings symbols = env.document.symbols();
        for (const auto &[field, value] : edits) {
            env.document.editStyleValue(field, value);
            styleValue(expected, field) = value;
        }
        env.document.editUpdateComment(QStringLiteral("Round trip"));
        QCOMPARE(env.document.versionText(), QStringLiteral("2.0 beta"));
        env.prompts.answers << PromptAnswer::Ok;
        env.prompts.roverRejectionExpected = true;
        QVERIFY(env.document.saveBlockset());
        // "2.0 beta" is kept as typed, but Rover cannot read it as the update's version.
        QCOMPARE(env.prompts.messages.size(), 1);
        QVERIFY(env.prompts.messages.takeFirst().text.contains(QStringLiteral("Castle.txt, line 1")));
        (void)env.document.closeBlockset();
        FileMap packed = readBset(castle);
        QVERIFY(packed.take(QStringLiteral("Castle.style")).contains("synopsis=\"Gates, towers & moats\""));
        files.remove(QStringLiteral("Castle.style"));
        QCOMPARE(packed, files);

        env.open(castle);
        QVERIFY(env.prompts.messages.isEmpty());
        QCOMPARE(env.document.style(), expected);
        QCOMPARE(env.document.versionText(), expected.version);
        QCOMPARE(env.document.updateComment(), QStringLiteral("Round trip"));
        QCOMPARE(env.document.blockCount(), blocks.size());
        for (qsizetype i = 0; i < blocks.size(); ++i) {
            const BlockRow &row = env.document.blocks()[i];
            QCOMPARE(
                QStringList({row.file, row.name, row.symbol, row.doubleSymbol, row.bsp}),
                QStringList({blocks[i].file, blocks[i].name, blocks[i].symbol, blocks[i].doubleSymbol, blocks[i].bsp}));
        }
        QCOMPARE(env.document.symbols(), symbols);
        QCOMPARE(env.document.processText(), QStringLiteral("Strict Prefix & Sync Double Mode activated."));
    }

    // A style file stored as "Castle.STYLE" is the blockset's own; saving must not leave
    // it beside the new "Castle.style", where the next open could take the stale one.
    void styleExtensionInCapitals()
    {
        DocumentEnv env;
        const QString castle = env.addSet(QStringLiteral("Castle.bset"), castleFiles(QStringLiteral("Castle.STYLE")));
        env.open(castle);
        QVERIFY(env.prompts.messages.isEmpty());
        QCOMPARE(env.document.style().name, QStringLiteral("Castle"));

        env.document.editStyleValue(StyleField::Name, QStringLiteral("Fortress"));
        QVERIFY(env.document.saveBlockset());

        const QRegularExpression style(QStringLiteral("\\.style$"), QRegularExpression::CaseInsensitiveOption);
        QCOMPARE(readBset(castle).keys().filter(style), QStringList({QStringLiteral("Castle.style")}));
        (void)env.document.closeBlockset();
        env.open(castle);
        QCOMPARE(env.document.style().name, QStringLiteral("Fortress"));
    }

    void sizeLimit_data()
    {
        QTest::addColumn<qint64>("size");
        addRow("exactly at the limit", qint64(307200));
        addRow("one byte over", qint64(307201));
    }

    void sizeLimit()
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
        const bool told =
            !env.prompts.messages.isEmpty() && env.prompts.messages.last().title == "Rover compatibility"_L1;
        QCOMPARE(told, saved > BlocksetSize::kWebLimit);
        if (told)
            QVERIFY(env.prompts.messages.last().text.contains(BlocksetSize::webLimitFinding(saved)));
    }

    void mediaFiles_data()
    {
        addColumns<QString, QByteArray, QString, QString>("file", "bytes", "finding", "addWarning");
        const QString untextured = u": it draws these parts untextured: lamp.block, part \"glow\""_s;
        addRow("clean GIF", u"textures/t.gif"_s, gif(8, 8, true, {GifFrame{}}), QString(), QString());
        addRow("GIF with a local colour table", u"textures/t.gif"_s, gif(8, 8, true, {GifFrame{.localTable = true}}),
               u"warning: Rover cannot use this texture (a frame has a colour table of its own)"_s + untextured,
               u"Rover cannot use the texture \"t.gif\": a frame has a colour table of its own."_s);
        addRow("extensible WAV", u"sounds/hum.wav"_s, wav(0xFFFE),
               u"warning: Rover plays nothing for this sound (not plain PCM: extensible format (format tag 0xFFFE)); "
               "used by lamp.block"_s,
               u"Rover cannot play the sound \"hum.wav\": not plain PCM: extensible format (format tag 0xFFFE)."_s);
    }

    void mediaFiles()
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

    void savedSizeEstimate_data()
    {
        QTest::addColumn<QStringList>("added");
        addRow("as opened", QStringList());
        addRow("a sound and a texture added", QStringList{u"noise.wav"_s, u"big.jpg"_s});
    }

    void savedSizeEstimate()
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
            env.document.edit([&] {
                addItemFile(env.document, name.endsWith(u".jpg"_s) ? ItemKind::Texture : ItemKind::Sound, source);
            });
        }
        monitor.settle();
        QVERIFY(monitor.size().complete);
        const qint64 estimate = monitor.size().total;
        env.document.setBlocksetChanged();
        QVERIFY(env.document.saveBlockset());
        // The save writes exactly what the estimate counted, the new items packed by the worker.
        QCOMPARE(estimate, QFileInfo(path).size());
    }
};

QTEST_GUILESS_MAIN(TestDocumentSave)
#include "test_document_save.moc"
