// The .bset archive read and written: packing and unpacking a working folder,
// hostile entry names, links in the way, and broken archives.

#include "ArchiveFixtures.h"
#include "storage/WindowsNames.h"
#include "support/DataRows.h"

#include <unistd.h>

class TestArchive : public QObject {
    Q_OBJECT

private slots:
private slots:
    // Several style files, top-level unknown files and nested folders come back
    // byte for byte, through our reader and the system's unzip alike; links in
    // the packed folder are not followed.
    void roundTripKeepsEveryFile()
    {
        QTemporaryDir tmp;
        const QString source = tmp.filePath("source");
        makeTree(source, blocksetTree());
        writeBytes(tmp.filePath("outside/secret.txt"), "secret");
        QVERIFY(QFile::link(tmp.filePath("outside/secret.txt"), source + "/secret.txt"));
        QVERIFY(QFile::link(tmp.filePath("outside"), source + "/textures/linked"));
        const QString target = tmp.filePath("Castle.bset");
        writeRawArchive(target, {{"stale.txt", "old"}}); // replaced whole: none of its entries stay

        QVERIFY(pack(source, target));
        QCOMPARE(folderEntries(tmp.path()), QStringList({"Castle.bset", "outside", "source"}));
        // Images are stored as they are (deflate cannot shrink them), text is deflated.
        zip_t *za = zip_open(QFile::encodeName(target).constData(), ZIP_RDONLY, nullptr);
        QVERIFY(za);
        zip_stat_t image, text;
        QVERIFY(zip_stat(za, "textures/wall.gif", 0, &image) == 0 && zip_stat(za, "blocks/Wall.block", 0, &text) == 0);
        zip_discard(za);
        QCOMPARE(QList<int>({image.comp_method, text.comp_method}), QList<int>({ZIP_CM_STORE, ZIP_CM_DEFLATE}));
        ArchiveReader archive;
        QVERIFY(archive.open(target));
        QStringList names = archive.entryNames();
        names.sort();
        QCOMPARE(names, QStringList(blocksetTree().keys())); // "/" separated
        const QString dest = tmp.filePath("dest");
        QDir().mkpath(dest);
        const Result extracted = archive.extractAll(dest);
        QVERIFY2(extracted, qPrintable(extracted.reason()));
        QCOMPARE(treeOf(dest), blocksetTree());
        // Unpacking again over changed files restores them whole.
        writeBytes(dest + "/Castle.style", QByteArray(100000, 'x'));
        QVERIFY(archive.extractAll(dest).ok());
        QCOMPARE(treeOf(dest), blocksetTree());

        if (QStandardPaths::findExecutable("unzip").isEmpty())
            QSKIP("the system's unzip is not installed");
        QVERIFY(runQuietly("unzip", {"-t", "-q", target}));
        // unzip reads names stored without the UTF-8 flag (Windows-1252 bytes, as
        // Rover compares them) in its own code page: the ASCII names are compared.
        QVERIFY(runQuietly("unzip", {"-q", target, "-x", "blocks/Caf*", "-d", tmp.filePath("unzipped")}));
        Tree ascii = blocksetTree();
        ascii.remove(QString::fromUtf8("blocks/Caf\xc3\xa9.block"));
        QCOMPARE(treeOf(tmp.filePath("unzipped")), ascii);
    }

    void hostileEntryNames_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<QString>("landsAt"); // "" when the entry must be skipped

        addRow("parent folder", QByteArray("../evil"), "");
        addRow("parent folder after a folder", QByteArray("blocks/../../evil"), "");
        addRow("parent folder with backslashes", QByteArray("a\\..\\..\\evil"), "");
        addRow("absolute path into a writable folder", QByteArray("@OUTSIDE@/evil"), "");
        addRow("absolute Windows path", QByteArray("\\evil"), "");
        addRow("drive letter", QByteArray("C:\\evil"), "");
        addRow("backslash separator", QByteArray("textures\\x.gif"), "textures/x.gif");
        // Rover compares the style's Windows-1252 bytes with names stored without the UTF-8 flag.
        addRow("name without the UTF-8 flag", QByteArray("textures/caf\xe9.gif"), "textures/caf\u00e9.gif");
    }

    void hostileEntryNames()
    {
        QFETCH(QByteArray, name);
        QFETCH(QString, landsAt);
        QTemporaryDir tmp;
        QVERIFY(QDir().mkpath(tmp.filePath("outside")));
        const QString archivePath = tmp.filePath("hostile.bset");
        writeRawArchive(
            archivePath,
            {{name.replace("@OUTSIDE@", QFile::encodeName(tmp.filePath("outside"))), "payload"}, {"good.txt", "good"}});

        QVERIFY(unpack(archivePath, tmp.filePath("work/dest")));
        Tree expected{{"hostile.bset", readBytes(archivePath)}, {"work/dest/good.txt", "good"}};
        if (!landsAt.isEmpty())
            expected.insert("work/dest/" + landsAt, "payload");
        QCOMPARE(treeOf(tmp.path()), expected);
    }

    // Names Windows reads as something else (a data stream, a device, a name
    // without its trailing dot), which extraction on Windows refuses.
    void windowsReservedNames()
    {
        const QList<std::pair<QByteArray, bool>> plain = {
            {"wall.block", true}, {"a:b.gif", false},    {"x.gif.", false},        {"x ", false},
            {"CON", false},       {"nul.gif", false},    {"com1.wav", false},      {"LPT\xC2\xB9.gif", false},
            {"COM10.gif", true},  {"console.gif", true}, {"tab\there.gif", false}, {"", true}};
        for (const auto &[name, expected] : plain)
            QVERIFY2(isWindowsPlainName(name) == expected, name.constData());
    }

    // Names meet ignoring case, as on Windows; duplicated names and "./" open too.
    void namesAsWindowsHasThem_data()
    {
        QTest::addColumn<QStringList>("entries"); // "name=content", in archive order
        QTest::addColumn<Tree>("landsAs");

        addRow("item folders in any case",
               QStringList{"Blocks/wall.block=w", "TEXTURES/T.GIF=t", "sounds/drip.WAV=d", "BLOCKS/door.block=x"},
               Tree{{"blocks/wall.block", "w"},
                    {"blocks/door.block", "x"},
                    {"textures/T.GIF", "t"},
                    {"sounds/drip.WAV", "d"}});
        addRow("other folders keep the first case", QStringList{"Extra/a=1", "EXTRA/Sub/b=2", "extra/sub/c=3"},
               Tree{{"Extra/a", "1"}, {"Extra/Sub/b", "2"}, {"Extra/Sub/c", "3"}});
        addRow("names differing in case: the later wins",
               QStringList{"blocks/Wall.block=old", "Blocks/wall.block=new", "a.style=s"},
               Tree{{"blocks/wall.block", "new"}, {"a.style", "s"}});
        addRow("one name twice: the later wins", QStringList{"a.style=old", "blocks/w.block=w", "a.style=new"},
               Tree{{"a.style", "new"}, {"blocks/w.block", "w"}});
        addRow("dot folders dropped", QStringList{"./a.style=s", "./blocks/./w.block=w"},
               Tree{{"a.style", "s"}, {"blocks/w.block", "w"}});
    }

    void namesAsWindowsHasThem()
    {
        QFETCH(QStringList, entries);
        QFETCH(Tree, landsAs);
        QTemporaryDir tmp;
        QList<RawEntry> raw;
        for (const QString &entry : entries)
            raw.append({entry.section(u'=', 0, 0).toUtf8(), entry.section(u'=', 1).toUtf8()});
        writeRawArchive(tmp.filePath("x.bset"), raw);

        QVERIFY(unpack(tmp.filePath("x.bset"), tmp.filePath("dest")));
        QCOMPARE(treeOf(tmp.filePath("dest")), landsAs);
        // Entry names as the cache reads them: normalised, the later of two winning.
        ArchiveReader archive;
        QVERIFY(archive.open(tmp.filePath("x.bset")));
        QByteArray data;
        for (const QString &name : archive.entryNames()) {
            QVERIFY2(!name.startsWith("./") && !name.contains("/./"), qPrintable(name));
            QVERIFY(archive.readEntry(name, data).ok());
            if (landsAs.contains(name))
                QCOMPARE(data, landsAs[name]);
        }
    }

    void linksInTargetAreRefused_data()
    {
        QTest::addColumn<QByteArray>("entry"); // "@LINK@": a link entry pointing outside
        QTest::addColumn<QString>("linkName"); // what in the target is a link; "@HARD@": a hard link

        addRow("linked folder in the target", QByteArray("blocks/a.block"), "blocks");
        addRow("linked file in the target", QByteArray("a.style"), "a.style");
        addRow("hard link in the target", QByteArray("a.style"), "@HARD@");
        addRow("link entry in the archive", QByteArray("@LINK@"), "");
    }

    void linksInTargetAreRefused()
    {
        QFETCH(QByteArray, entry);
        QFETCH(QString, linkName);
        QTemporaryDir tmp;
        const QString kept = tmp.filePath("outside/kept.txt");
        writeBytes(kept, "kept");
        const QString dest = tmp.filePath("dest");
        QVERIFY(QDir().mkpath(dest));
        if (linkName == "@HARD@")
            QCOMPARE(::link(QFile::encodeName(kept).constData(), QFile::encodeName(dest + "/a.style").constData()), 0);
        else if (!linkName.isEmpty())
            QVERIFY(QFile::link(linkName == "blocks" ? tmp.filePath("outside") : kept, dest + u'/' + linkName));
        const QString archivePath = tmp.filePath("x.bset");
        if (entry == "@LINK@")
            writeRawArchive(archivePath, {{"link", QFile::encodeName(kept), true}});
        else
            writeRawArchive(archivePath, {{entry, "payload"}});

        // A link entry is skipped (no link created); a link in the target fails the unpack.
        QCOMPARE(unpack(archivePath, dest), entry == "@LINK@");
        QCOMPARE(treeOf(tmp.filePath("outside")), Tree({{"kept.txt", "kept"}}));
        if (entry == "@LINK@")
            QVERIFY(folderEntries(dest).isEmpty());
    }

    // A stored entry: its bytes reach the file unchecked unless the CRC is verified.
    void corruptDataFailsExtraction()
    {
        QTemporaryDir tmp;
        const QString archivePath = tmp.filePath("x.bset");
        writeRawArchive(archivePath,
                        {{"a.style", "style"}, {"blocks/a.block", randomBytes(100 * 1024, 7), false, true}});
        // Flip one byte in the middle of the second entry's data.
        QByteArray bytes = readBytes(archivePath);
        const qsizetype second = bytes.indexOf("PK\x03\x04", 4);
        const auto u16 = [&](qsizetype at) { return quint8(bytes[at]) | quint8(bytes[at + 1]) << 8; };
        const qsizetype dataStart = second + 30 + u16(second + 26) + u16(second + 28);
        const qsizetype flip = (dataStart + bytes.indexOf("PK\x01\x02")) / 2;
        QVERIFY(second > 0 && flip > dataStart + 50);
        bytes[flip] = char(bytes[flip] ^ 0x5a);
        writeBytes(archivePath, bytes);

        ArchiveReader archive;
        QVERIFY(archive.open(archivePath)); // the directory itself is fine
        const Result extracted = archive.extractAll(tmp.filePath("dest"));
        QVERIFY(!extracted && !extracted.reason().isEmpty());
        QVERIFY(!QFile::exists(tmp.filePath("dest/blocks/a.block"))); // not left half-written
    }

    void brokenFilesDoNotOpen_data()
    {
        QTest::addColumn<QString>("kind");
        for (const char *kind : {"missing", "empty", "text", "last byte cut", "folder", "named pipe"})
            addRow(kind, kind);
    }

    void brokenFilesDoNotOpen()
    {
        QFETCH(QString, kind);
        QTemporaryDir tmp;
        const QString path = tmp.filePath("broken.bset");
        const QString good = tmp.filePath("good.bset");
        writeRawArchive(good, {{"a.style", "style"}, {"blocks/a.block", randomBytes(8192, 9)}});
        const QByteArray goodBytes = readBytes(good);
        const QMap<QString, QByteArray> contents{{"empty", QByteArray()},
                                                 {"text", "<style>\r\nnot a zip archive\r\n</style>\r\n"},
                                                 {"last byte cut", goodBytes.chopped(1)}};
        if (contents.contains(kind))
            writeBytes(path, contents[kind]);
        else if (kind == "folder")
            QVERIFY(QDir().mkpath(path));
        else if (kind == "named pipe") // must not hang
            QCOMPARE(mkfifo(QFile::encodeName(path).constData(), 0600), 0);

        ArchiveReader archive;
        const Result opened = archive.open(path);
        QVERIFY(!opened && !opened.reason().isEmpty());
        QVERIFY(archive.entryNames().isEmpty());
        QVERIFY(!archive.extractAll(tmp.path()));
        // The same object still opens a good archive afterwards.
        QVERIFY(archive.open(good));
        QCOMPARE(archive.entryNames().size(), 2);
    }
};

QTEST_GUILESS_MAIN(TestArchive)
#include "test_archive.moc"
