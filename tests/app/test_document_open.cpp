// Opening a blockset end to end: real archives in a temporary folder, the
// document driven through scripted prompts.

#include "DocumentFixture.h"
#include "app/RecentFiles.h"
#include "formats/ValueFormats.h"
#include "support/DataRows.h"

namespace {

const QString kOpenTitle = QStringLiteral("Open Blockset");
const QString kNoStyle =
    QStringLiteral("Unable to load style file!\nYou will have to define all block symbols manually.");
const QString kBothModes = QStringLiteral("Strict Prefix & Sync Double Mode activated.");

// Castle with a fourth block that has no BSP tree and no style entry, and an empty texture.
FileMap castlePlus()
{
    FileMap files = castleFiles();
    files.insert(QStringLiteral("blocks/plain.block"), blockFile(QStringLiteral("Plain")));
    files.insert(QStringLiteral("textures/empty.gif"), QByteArray());
    return files;
}

} // namespace

class TestDocumentOpen : public QObject {
    Q_OBJECT

private slots:
    // The recent blocksets: the last opened first, once each, ten at most.
    void recentFiles()
    {
        DocumentEnv env;
        RecentFiles recent(env.settings);
        QObject::connect(&env.document, &BlocksetDocument::fileUsed, [&](const QString &path) { recent.add(path); });
        QStringList sets;
        for (int i = 0; i < 11; ++i)
            sets << env.addSet(QStringLiteral("Set%1.bset").arg(i), castleFiles());
        env.open(sets[1]);
        env.open(sets[0]);
        QCOMPARE(recent.paths(), QStringList({sets[0], sets[1]}));
        for (const QString &set : sets)
            recent.add(set);
        QCOMPARE(recent.paths().size(), RecentFiles::kLimit);
        QCOMPARE(recent.paths().first(), sets.last());
        recent.remove(sets.last());
        QVERIFY(!recent.paths().contains(sets.last()));

        // The desktop's list gets each one too, beside other programs' entries; a list
        // that cannot be read is left as it is.
        qputenv("XDG_DATA_HOME", QFile::encodeName(env.setPath(QStringLiteral("share"))));
        const QString xbel = env.setPath(QStringLiteral("share/recently-used.xbel"));
        const QByteArray other =
            "<bookmark href=\"file:///home/a/notes.txt\" added=\"2026-01-01T00:00:00Z\" "
            "modified=\"2026-01-01T00:00:00Z\" "
            "visited=\"2026-01-01T00:00:00Z\"><info><metadata owner=\"http://freedesktop.org\"><bookmark:applications>"
            "<bookmark:application name=\"gedit\" exec=\"'gedit %u'\" modified=\"2026-01-01T00:00:00Z\" count=\"1\"/>"
            "</bookmark:applications></metadata></info></bookmark>";
        writeFile(xbel, "<?xml version=\"1.0\"?>\n<xbel version=\"1.0\" "
                        "xmlns:bookmark=\"http://www.freedesktop.org/standards/desktop-bookmarks\">"
                            + other + "</xbel>");
        recent.add(sets[2]);
        const QByteArray listed = readBytes(xbel);
        QVERIFY2(listed.contains("file:///home/a/notes.txt")
                     && listed.contains(QUrl::fromLocalFile(sets[2]).toEncoded())
                     && listed.contains("application/vnd.quillmoor.blockset") && listed.contains("Cubrix"),
                 listed.constData());
        writeFile(xbel, "<xbel version=\"1.0\">" + other);
        recent.add(sets[3]);
        QCOMPARE(readBytes(xbel), "<xbel version=\"1.0\">" + other);
    }

    void fullOpen()
    {
        DocumentEnv env;
        // Files an earlier run left in the working folder do not show up.
        writeFile(env.working(QStringLiteral("blocks/stale.block")), blockFile(QStringLiteral("Stale")));
        writeFile(env.working(QStringLiteral("Stale.style")), styleFile(QStringLiteral("Stale")));
        const FileMap files = castlePlus();
        const QString path = env.addSet(QStringLiteral("Castle.bset"), files);
        writeFile(env.setPath(QStringLiteral("Castle.txt")),
                  updateFileText(QStringLiteral("1.2"), QStringLiteral("Added two gates."), 99));
        env.prompts.fileAnswers = {path};

        (void)env.document.openBlockset();

        QVERIFY2(env.prompts.messages.isEmpty(), qPrintable(env.prompts.messageTexts().join(u'\n')));
        QCOMPARE(env.prompts.fileRequests.size(), 1);
        QCOMPARE(env.prompts.fileRequests[0].title, kOpenTitle);
        QCOMPARE(env.prompts.fileRequests[0].filter, QStringLiteral("Blocksets (*.bset),*.bset"));
        const BlocksetDocument &doc = env.document;
        QVERIFY(doc.blocksetOpen() && !doc.isChanged() && !doc.blocksetUntitled());
        QCOMPARE(doc.blocksetPath(), path);
        QCOMPARE(doc.blocksetFileName(), QStringLiteral("Castle.bset"));
        QCOMPARE(doc.versionText(), QStringLiteral("1.2"));
        QCOMPARE(env.pathSetting(), env.sets);

        // Block rows in list order: file, name, symbol, double, type, BSP state, and the size text.
        const QList<QStringList> blockRows = {{"door.block", "Door", "b", ".b", "structural", "empty"},
                                              {"plain.block", "Plain", "", "", "structural", "no"},
                                              {"tree.block", "Tree", "t", ".t", "sprite", "n/a"},
                                              {"wall.block", "Wall", "a", ".a", "structural", "yes"}};
        QCOMPARE(doc.blockCount(), blockRows.size());
        for (int i = 0; i < blockRows.size(); ++i) {
            const BlockRow &row = doc.blocks()[i];
            QCOMPARE(QStringList({row.file, row.name, row.symbol, row.doubleSymbol, row.type, row.bsp}), blockRows[i]);
            QCOMPARE(row.sizeText, QString::number(files.value("blocks/" + row.file).size()).rightJustified(10, u' '));
        }
        // Size texts: "#,###,###" padded to 10 characters, blank for 0, never cut.
        QStringList items;
        for (const ItemRow &row : doc.textures() + doc.sounds())
            items << row.file + '|' + row.sizeText;
        QCOMPARE(items, QStringList({"brick.gif|     1,234", "clouds.jpg|        20", "empty.gif|          ",
                                     "wind.wav| 1,234,567"}));

        // The style reader's own tests cover every value; here: it ran on the right file.
        const StyleValues &style = doc.style();
        QCOMPARE(
            QStringList({style.version, style.name, style.author, style.skyColor, style.orbPosition, style.orbText}),
            QStringList({"1.2", "Castle", "A. Builder", "(0,0,255)", "(45,30)", "Home"}));
        QCOMPARE(doc.updateComment(), QStringLiteral("Added two gates."));

        QCOMPARE(doc.tab(), int(BlocksetDocument::TabBlocks));
        QCOMPARE(doc.processText(), kBothModes);
        QVERIFY(doc.processMessageShown());
        QCOMPARE(env.view.processTexts,
                 QStringList({"Open Blockset...", "Parsing Blockset...", "Parsing door.block", "Parsing plain.block",
                              "Parsing tree.block", "Parsing wall.block", kBothModes}));
        QCOMPARE(env.view.busyCalls, QList<bool>({true, false}));
        QVERIFY(env.view.checkInterfaceCalls >= 2); // after the reset and at the end
        // Everything of the archive, and nothing else, lies unpacked in the working folder.
        QCOMPARE(filesBelow(env.folder.workingFolder()), files);
    }

    void tabChoice_data()
    {
        QTest::addColumn<QList<int>>("counts"); // blocks, textures, sounds
        QTest::addColumn<int>("tab");
        addRow("blocks first", QList<int>{1, 1, 1}, int(BlocksetDocument::TabBlocks));
        addRow("textures before sounds", QList<int>{0, 1, 1}, int(BlocksetDocument::TabTextures));
        addRow("sounds only", QList<int>{0, 0, 1}, int(BlocksetDocument::TabSounds));
        addRow("nothing", QList<int>{0, 0, 0}, int(BlocksetDocument::TabSettings));
    }

    void tabChoice()
    {
        QFETCH(QList<int>, counts);
        DocumentEnv env;
        FileMap files{{QStringLiteral("Tabs.style"), styleFile(QStringLiteral("Tabs"))}};
        for (int i = 0; i < counts[0]; ++i)
            files.insert(QStringLiteral("blocks/b%1.block").arg(i), blockFile(QStringLiteral("B")));
        for (int i = 0; i < counts[1]; ++i)
            files.insert(QStringLiteral("textures/t%1.jpg").arg(i), QByteArray("jpeg"));
        for (int i = 0; i < counts[2]; ++i)
            files.insert(QStringLiteral("sounds/s%1.wav").arg(i), QByteArray("wave"));
        env.document.setTab(BlocksetDocument::TabVersion); // a tab left from before does not survive

        env.open(env.addSet(QStringLiteral("Tabs.bset"), files));
        QVERIFY(env.document.blocksetOpen());
        QTEST(env.document.tab(), "tab");
    }

    void styleFileChoice_data()
    {
        QTest::addColumn<QString>("styleFile");   // "" = the archive holds none
        QTest::addColumn<PromptAnswer>("answer"); // to the rename question
        QTest::addColumn<bool>("settings");       // syncBlockset and strictPrefix
        addColumns<QString, QString>("name", "text");
        addRow("differing, renamed", "Red.style", PromptAnswer::Yes, true, "Castle", kBothModes);
        addRow("differing, declined", "Red.style", PromptAnswer::No, true, "Blue", kBothModes);
        addRow("none, settings off", "", PromptAnswer::Ok, false, "", "");
    }

    // A style file named after another archive is read only after the user agrees
    // to rename it; without one the blockset opens with default style data after a warning.
    void styleFileChoice()
    {
        QFETCH(QString, styleFile);
        QFETCH(PromptAnswer, answer);
        QFETCH(bool, settings);
        DocumentEnv env;
        env.setOption("syncBlockset", settings);
        env.setOption("strictPrefix", settings);
        FileMap files = castleFiles(styleFile.isEmpty() ? QStringLiteral("Castle.style") : styleFile);
        if (styleFile.isEmpty())
            files.remove(QStringLiteral("Castle.style"));
        env.prompts.newAnswers = {NewBlocksetChoice()};
        (void)env.document.newBlockset(); // switches the blockset's symbol modes on
        if (answer != PromptAnswer::Ok)
            env.prompts.answers = {answer};

        env.open(env.addSet(QStringLiteral("Blue.bset"), files));

        const bool renamed = answer == PromptAnswer::Yes;
        QCOMPARE(env.prompts.messages.size(), int(!styleFile.isEmpty()) + int(!renamed));
        if (!styleFile.isEmpty())
            verifyMessage(env.prompts, 0,
                          "Found differing style file \"Red.style\". Do you want this file to be renamed and parsed?",
                          kOpenTitle, PromptButtons::YesNo, PromptIcon::Question);
        if (!renamed)
            verifyMessage(env.prompts, static_cast<int>(env.prompts.messages.size() - 1), kNoStyle, kOpenTitle,
                          PromptButtons::Ok, PromptIcon::Exclamation);
        QVERIFY(env.document.blocksetOpen() && !env.document.updateChanged());
        QCOMPARE(env.document.blocks()[2].name, QStringLiteral("Wall"));
        QCOMPARE(env.document.blocksetChanged(), renamed);
        QCOMPARE(QFile::exists(env.working(QStringLiteral("Blue.style"))), renamed);
        QCOMPARE(QFile::exists(env.working(QStringLiteral("Red.style"))), answer == PromptAnswer::No);
        QTEST(env.document.processText(), "text");
        if (renamed) {
            QCOMPARE(readBytes(env.working(QStringLiteral("Blue.style"))), files.value(QStringLiteral("Red.style")));
            QCOMPARE(env.document.style().skyColor, QStringLiteral("(0,0,255)"));
            QCOMPARE(env.document.blocks()[2].symbol, QStringLiteral("a"));
            QTEST(env.document.style().name, "name");
            return;
        }
        // Nothing of a declined file is read; the symbol modes follow the settings.
        StyleValues expected;
        QFETCH(QString, name);
        expected.name = name;
        QCOMPARE(env.document.style(), expected);
        QCOMPARE(env.document.blocks()[2].symbol, QString());
        QVERIFY(!env.document.symbols().blocksetStrictPrefix && !env.document.symbols().blocksetSyncDouble);
        QVERIFY(!env.view.processTexts.contains(QStringLiteral("Parsing Blockset...")));
    }

    void styleNamedAfterArchive_data()
    {
        addColumns<QString, QStringList>("archive", "styles");
        QTest::addColumn<QString>("stem"); // the archive's name without extension
        QTest::addColumn<QString>("readName");
        addRow("own style beside another", "Blue.bset", QStringList{"Blue", "Red"}, "Blue", "Blue");
        addRow("dotted name, listed after others", "my.old.set.bset", QStringList{"a", "my", "my.old.set"},
               "my.old.set", "my.old.set");
        addRow("case differs: asks", "Blue.bset", QStringList{"blue"}, "Blue", "blue");
    }

    void styleNamedAfterArchive()
    {
        QFETCH(QString, archive);
        QFETCH(QStringList, styles);
        QFETCH(QString, stem);
        DocumentEnv env;
        FileMap files;
        for (const QString &style : styles)
            files.insert(style + QStringLiteral(".style"), styleFile(style));
        writeFile(env.setPath(stem + QStringLiteral(".txt")),
                  updateFileText(QStringLiteral("7"), QStringLiteral("note"), 1));
        const bool asks = !styles.contains(stem);
        if (asks)
            env.prompts.answers = {PromptAnswer::Yes};

        env.open(env.addSet(archive, files));

        QVERIFY2(env.prompts.unexpected.isEmpty(), qPrintable(env.prompts.unexpected.join(u'\n')));
        QCOMPARE(env.prompts.messages.size(), asks ? 1 : 0);
        QCOMPARE(env.document.blocksetFileName(), archive);
        QTEST(env.document.style().name, "readName");
        QCOMPARE(env.document.blocksetChanged(), asks);
        QCOMPARE(env.document.updateComment(), QStringLiteral("note"));
        // Every style file that came out of the archive lies in the working folder.
        QCOMPARE(QDir(env.folder.workingFolder()).entryList({QStringLiteral("*.style")}, QDir::Files).size(),
                 styles.size());
    }

    // Windows tools write the item folders in any case; every item opens and Save
    // keeps every symbol, in the lower-case layout, once.
    void foldersInAnyCase()
    {
        DocumentEnv env;
        const QString path =
            env.addSet(QStringLiteral("Mixed.bset"),
                       {{"Mixed.style", styleFile("Mixed", "<block symbol=\"a\" file=\"wall.block\"/>\n")},
                        {"Blocks/wall.block", blockFile("Wall")},
                        {"TEXTURES/T.GIF", "gif"},
                        {"sounds/drip.WAV", "wav"}});
        env.open(path);
        QCOMPARE(env.document.blockCount(), 1);
        QCOMPARE(env.document.blocks()[0].symbol, QStringLiteral("a"));
        QCOMPARE(env.document.textureCount() + env.document.soundCount(), 2);

        QVERIFY(env.document.saveBlockset());
        const FileMap saved = readBset(path);
        QCOMPARE(saved.keys(), QStringList({"Mixed.style", "blocks/wall.block", "sounds/drip.WAV", "textures/T.GIF"}));
        QVERIFY(saved["Mixed.style"].contains("<block symbol=\"a\""));
    }

    void brokenArchive_data()
    {
        addColumns<QString, bool>("kind", "openBefore");
        addRow("missing", "missing", false);
        addRow("not a zip", "text", false);
        addRow("bad CRC, a blockset was open", "crc", true);
        addRow("bad CRC in the last entry only", "last crc", false);
    }

    void brokenArchive()
    {
        QFETCH(QString, kind);
        DocumentEnv env;
        const QString good = env.addSet(QStringLiteral("Good.bset"), castleFiles(QStringLiteral("Good.style")));
        QByteArray zip = readBytes(good);
        // A bad CRC: the stored CRC of every entry flipped, in the local headers and the central directory.
        for (qsizetype at = zip.indexOf("PK\x03\x04"); kind == "crc" && at >= 0; at = zip.indexOf("PK\x03\x04", at + 4))
            zip[at + 14] = char(zip[at + 14] ^ 0x5a);
        for (qsizetype at = zip.indexOf("PK\x01\x02"); kind == "crc" && at >= 0; at = zip.indexOf("PK\x01\x02", at + 4))
            zip[at + 16] = char(zip[at + 16] ^ 0x5a);
        if (kind == "last crc") { // the entries before it unpack fine first
            const qsizetype local = zip.lastIndexOf("PK\x03\x04"), central = zip.lastIndexOf("PK\x01\x02");
            zip[local + 14] = char(zip[local + 14] ^ 0x5a);
            zip[central + 16] = char(zip[central + 16] ^ 0x5a);
        }
        const QString broken = env.setPath(QStringLiteral("Broken.bset"));
        if (kind != "missing")
            QVERIFY(writeFile(broken, kind == "text" ? styleFile("not an archive") : zip));
        QFETCH(bool, openBefore);
        if (openBefore)
            env.open(good);
        env.view.clear();

        env.open(broken);

        QCOMPARE(env.prompts.messages.size(), 1);
        verifyMessage(env.prompts, 0, "Failed to open Blockset File.", "File Error", PromptButtons::Ok,
                      PromptIcon::Critical);
        QVERIFY(!env.document.blocksetOpen());
        QCOMPARE(env.document.blockCount() + env.document.textureCount() + env.document.soundCount(), 0);
        QCOMPARE(env.document.style(), StyleValues());
        QCOMPARE(filesBelow(env.folder.workingFolder()), FileMap()); // nothing half-extracted
        QCOMPARE(env.document.processText(), QString());
        QVERIFY(!env.document.processMessageShown());
        QCOMPARE(env.view.busyCalls.value(env.view.busyCalls.size() - 1, true), false);
        const InterfaceState state = computeInterfaceState(interfaceFacts(env.document, true));
        QVERIFY(state.caption == "Cubrix" && !state.enabled.value("btnSave"));
        // The editor is still usable: the good archive opens afterwards.
        env.prompts.messages.clear();
        env.open(good);
        QCOMPARE(env.document.blockCount(), 3);
        QVERIFY(env.prompts.messages.isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestDocumentOpen)
#include "test_document_open.moc"
