// The .bset archive: packing and unpacking a working folder, hostile and broken
// archives, saves that fail or are killed midway, and saves that copy the
// packed bytes of unchanged entries.

#include "storage/ArchiveReader.h"
#include "storage/ArchiveSink.h"
#include "storage/ArchiveWriter.h"
#include "storage/PackedEntries.h"
#include "storage/WindowsNames.h"
#include "support/DataRows.h"
#include "support/TestFiles.h"

#include <QRandomGenerator>
#include <QSaveFile>
#include <QStandardPaths>
#include <QtTest>

#include <zip.h>

#include <csignal>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

using Tree = QMap<QString, QByteArray>; // relative path -> content

QByteArray randomBytes(qsizetype size, quint32 seed)
{
    QByteArray data(size, Qt::Uninitialized);
    QRandomGenerator(seed).fillRange(reinterpret_cast<quint32 *>(data.data()), size / 4);
    return data;
}

void makeTree(const QString &root, const Tree &tree)
{
    for (auto it = tree.begin(); it != tree.end(); ++it)
        writeBytes(root + u'/' + it.key(), it.value());
}

// Every file and link below `root` (links not followed), with its content.
Tree treeOf(const QString &root)
{
    Tree tree;
    QDirIterator it(root, QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        tree.insert(QDir(root).relativeFilePath(path),
                    QFileInfo(path).isSymLink() ? QByteArray("<link>") : readBytes(path));
    }
    return tree;
}

QStringList folderEntries(const QString &folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
}

bool pack(const QString &folder, const QString &target)
{
    ArchiveWriter archive(target);
    return archive.addFolder(folder) && archive.write();
}

bool unpack(const QString &archivePath, const QString &folder)
{
    QDir().mkpath(folder);
    ArchiveReader archive;
    return archive.open(archivePath) && archive.extractAll(folder);
}

struct RawEntry {
    QByteArray name;
    QByteArray data;
    bool link = false;
    bool store = false;
    int level = 0; // of deflate; 0: libzip's default
};

// Writes an archive holding exactly these entries under exactly these names;
// libzip stores names unchanged, so hostile names can be built as well.
// A name given twice is written under a stand-in of the same length first (libzip
// refuses duplicates) and patched to the real name afterwards.
void writeRawArchive(const QString &path, const QList<RawEntry> &entries)
{
    int error = 0;
    zip_t *za = zip_open(QFile::encodeName(path).constData(), ZIP_CREATE | ZIP_TRUNCATE, &error);
    QVERIFY(za);
    QList<QPair<QByteArray, QByteArray>> standIns;
    QSet<QByteArray> seen;
    for (const RawEntry &entry : entries) {
        QByteArray name = entry.name;
        if (seen.contains(name)) {
            name[0] = char('0' + standIns.size());
            standIns.append({name, entry.name});
        }
        seen.insert(entry.name);
        zip_source_t *source = zip_source_buffer(za, entry.data.constData(), zip_uint64_t(entry.data.size()), 0);
        const zip_int64_t index = zip_file_add(za, name.constData(), source, ZIP_FL_ENC_GUESS);
        QVERIFY2(index >= 0, zip_strerror(za));
        if (entry.link)
            QCOMPARE(
                zip_file_set_external_attributes(za, zip_uint64_t(index), 0, ZIP_OPSYS_UNIX, (S_IFLNK | 0777u) << 16),
                0);
        if (entry.store || entry.level)
            QCOMPARE(zip_set_file_compression(za, zip_uint64_t(index), entry.store ? ZIP_CM_STORE : ZIP_CM_DEFLATE,
                                              zip_uint32_t(entry.level)),
                     0);
    }
    QVERIFY2(zip_close(za) == 0, zip_strerror(za));
    if (standIns.isEmpty())
        return;
    QByteArray bytes = readBytes(path);
    for (const auto &[standIn, real] : standIns)
        bytes.replace(standIn, real);
    writeBytes(path, bytes);
}

// The folder a typical blockset unpacks to, with what the user never sees in a list.
Tree blocksetTree()
{
    return {{"Castle.style", "<style>\r\n<block symbol=\"a\" file=\"Wall.block\"/>\r\n</style>\r\n"},
            {"Old.style", "<style name=\"old\"/>\r\n"},
            {"Backup.style", "<style name=\"backup\"/>\r\n"},
            {"readme.txt", "made by hand\r\n"},
            {".hidden", "dot file"},
            {"blocks/Wall.block", QByteArray("<block name=\"wall\">\r\n").repeated(200)},
            {"blocks/Caf\xc3\xa9.block", "<block name=\"cafe\"/>"},
            {"textures/wall.gif", randomBytes(300 * 1024, 1)},
            {"sounds/bell.wav", randomBytes(900 * 1024, 3)},
            {"sounds/empty.wav", QByteArray()},
            {"extra/deep/nested/notes.bin", randomBytes(4096, 4)}};
}

bool runQuietly(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.start(program, arguments);
    return process.waitForFinished(30000) && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}

// "archives/Castle.bset" packed from {"old.style": "old"}, and "new" holding a
// whole blockset to be saved over it. Returns the archive's path.
QString prepareOldArchive(const QTemporaryDir &tmp)
{
    makeTree(tmp.filePath("old"), {{"old.style", "old"}});
    makeTree(tmp.filePath("new"), blocksetTree());
    QDir().mkpath(tmp.filePath("archives"));
    if (!pack(tmp.filePath("old"), tmp.filePath("archives/Castle.bset")))
        qWarning("could not write the old archive");
    return tmp.filePath("archives/Castle.bset");
}

// Takes the write right on `folder` away (for root too, where chattr works) or
// gives it back. Returns whether the folder can be written now.
bool setWritable(const QString &folder, bool writable)
{
    if (geteuid() == 0)
        runQuietly("chattr", {writable ? "-i" : "+i", folder});
    QFile::setPermissions(folder,
                          QFile::ReadOwner | QFile::ExeOwner | (writable ? QFile::WriteOwner : QFile::Permissions()));
    QFile probe(folder + "/probe");
    return probe.open(QIODevice::WriteOnly) && probe.remove();
}

const QMap<QString, QByteArray> kPackedFiles{
    {u"Set.style"_s, QByteArray("<style name=\"Set\">\r\n").repeated(20)},
    {u"blocks/wall.block"_s, QByteArray("<vertex ref=\"1\" coords=\"(0,0,0)\"/>\r\n").repeated(200)},
    {u"sounds/bell.wav"_s, QByteArray("RIFF....WAVEfmt data").repeated(500)},
    {u"textures/sky.gif"_s, QByteArray("GIF89a") + QByteArray(3000, 'x')},
};

// The archive as another tool writes it: every entry deflated at level 1, which
// Cubrix's own packing (level 6, or stored for images) never gives.
void writeFastArchive(const QString &path)
{
    QList<RawEntry> entries;
    for (auto it = kPackedFiles.cbegin(); it != kPackedFiles.cend(); ++it)
        entries.append({it.key().toUtf8(), it.value(), false, false, 1});
    writeRawArchive(path, entries);
}

// Each entry's stored bytes by name.
QMap<QString, QByteArray> packedBytes(const QString &archivePath)
{
    QMap<QString, QByteArray> entries;
    ArchiveReader reader;
    if (!reader.open(archivePath))
        return entries;
    const QStringList names = reader.entryNames();
    for (qsizetype i = 0; i < names.size(); ++i) {
        PackedEntry entry;
        if (reader.readPacked(quint64(i), entry))
            entries.insert(names[i], entry.packed);
    }
    return entries;
}

void replaceFile(const QString &path, const QByteArray &bytes)
{
    QSaveFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(bytes);
    QVERIFY(file.commit());
}

} // namespace

class TestArchive : public QObject {
    Q_OBJECT

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

    void failedWriteKeepsOldArchive_data()
    {
        QTest::addColumn<bool>("diskFull"); // else the folder is read-only
        addRow("read-only folder", false);
        addRow("disk full midway", true);
    }

    void failedWriteKeepsOldArchive()
    {
        QFETCH(bool, diskFull);
        QTemporaryDir tmp;
        const QString target = prepareOldArchive(tmp);
        const QString folder = QFileInfo(target).path();
        const QByteArray before = readBytes(target);
        rlimit saved{};
        QCOMPARE(getrlimit(RLIMIT_FSIZE, &saved), 0);
        const auto previous = std::signal(SIGXFSZ, SIG_IGN);
        const auto restore = qScopeGuard([&] {
            setrlimit(RLIMIT_FSIZE, &saved);
            std::signal(SIGXFSZ, previous);
            setWritable(folder, true);
        });
        if (!diskFull && setWritable(folder, false))
            QSKIP("this user can write into read-only folders");
        // A file size limit makes the writes fail in the middle, as a full disk does.
        rlimit limited = saved;
        limited.rlim_cur = 512 * 1024;
        QVERIFY(!diskFull || setrlimit(RLIMIT_FSIZE, &limited) == 0);

        const bool packed = pack(tmp.filePath("new"), target);
        setrlimit(RLIMIT_FSIZE, &saved);
        QVERIFY(!packed);
        QCOMPARE(readBytes(target), before);
        QCOMPARE(folderEntries(folder), QStringList({"Castle.bset"}));
    }

    void killedSaveKeepsOldArchive()
    {
        QTemporaryDir tmp;
        const QString target = prepareOldArchive(tmp);
        const QString folder = QFileInfo(target).path();
        Tree bigTree;
        for (int i = 0; i < 6; ++i)
            bigTree.insert(QString("textures/t%1.gif").arg(i), randomBytes(1024 * 1024, quint32(20 + i)));
        makeTree(tmp.filePath("big"), bigTree);

        // A save that has written megabytes is killed before it commits.
        QProcess child;
        child.setProcessChannelMode(QProcess::MergedChannels);
        child.start(QCoreApplication::applicationFilePath(), {"--write-and-wait", target});
        QByteArray output;
        while (!output.contains("written") && child.waitForReadyRead(30000))
            output += child.readAll();
        QVERIFY2(output.contains("written"), output.constData());
        child.kill();
        QVERIFY(child.waitForFinished(30000));

        // The old archive still opens whole and nothing is left beside it.
        QCOMPARE(folderEntries(folder), QStringList({"Castle.bset"}));
        QVERIFY(unpack(target, tmp.filePath("dest")));
        QCOMPARE(treeOf(tmp.filePath("dest")), Tree({{"old.style", "old"}}));
        QVERIFY(pack(tmp.filePath("big"), target));
        QVERIFY(unpack(target, tmp.filePath("dest2")));
        QCOMPARE(treeOf(tmp.filePath("dest2")), bigTree);
    }

    void replaceKeepsRightsAndLinks_data()
    {
        QTest::addColumn<bool>("linked"); // the archive's path is a link to the real file
        addRow("plain file", false);
        addRow("through a link", true);
    }

    void replaceKeepsRightsAndLinks()
    {
        QFETCH(bool, linked);
        QTemporaryDir tmp;
        const QString target = prepareOldArchive(tmp);
        const QString real = tmp.filePath("real/Castle.bset");
        if (linked)
            QVERIFY(QDir().mkpath(tmp.filePath("real")) && QFile::rename(target, real) && QFile::link(real, target));
        QVERIFY(QFile::setPermissions(target, QFile::ReadOwner | QFile::ReadGroup));
        QVERIFY(pack(tmp.filePath("new"), target));
        QCOMPARE(folderEntries(QFileInfo(target).path()), QStringList({"Castle.bset"}));
        QCOMPARE(QFileInfo(target).isSymLink(), linked);
        QCOMPARE(folderEntries(tmp.filePath("real")), linked ? QStringList({"Castle.bset"}) : QStringList());
        QVERIFY(unpack(target, tmp.filePath("dest")));
        QCOMPARE(treeOf(tmp.filePath("dest")), blocksetTree());
        struct stat st {};
        QCOMPARE(stat(QFile::encodeName(target).constData(), &st), 0);
        QCOMPARE(st.st_mode & 0777, mode_t(0440));
    }

    // Temporary files that killed saves of this archive left are removed; those
    // of other archives, of a save still running, and other files stay.
    void staleTempFilesOfDeadSavesAreRemoved()
    {
        QTemporaryDir tmp;
        makeTree(tmp.filePath("source"), {{"a.style", "style"}});
        const QString folder = tmp.filePath("archives");
        const Tree others{{"other.txt", "mine"},
                          {".Castle.bset.cubrix-notmine", "not a temporary name"},
                          {".Other.bset.cubrix-0000abcd", "another archive's save"},
                          {".Castle.bset.cubrix-1234abcd", "busy"}};
        makeTree(folder, others);
        writeBytes(folder + "/.Castle.bset.cubrix-deadbeef", "left by a killed save");
        const int busy = ::open(QFile::encodeName(folder + "/.Castle.bset.cubrix-1234abcd").constData(), O_RDONLY);
        QVERIFY(busy >= 0 && flock(busy, LOCK_EX) == 0);

        QVERIFY(pack(tmp.filePath("source"), folder + "/Castle.bset"));
        close(busy);
        Tree expected = others;
        expected.insert("Castle.bset", readBytes(folder + "/Castle.bset"));
        QCOMPARE(treeOf(folder), expected);
    }

    // Saving copies what did not change: an entry whose file is unchanged since the
    // archive was read (or whose packed form Shrink made) keeps its compressed
    // bytes, a changed one is packed anew, and an archive changed behind the
    // editor's back is never copied from.
    void packedSave_data()
    {
        // What happens between the open and the save; which entries must keep the source's bytes.
        addColumns<QString, QStringList>("change", "kept");
        const QStringList all = kPackedFiles.keys();
        addRow("nothing", u"nothing"_s, all);
        addRow("one block edited", u"edit"_s, QStringList{u"Set.style"_s, u"sounds/bell.wav"_s, u"textures/sky.gif"_s});
        addRow("a file written anew with the same bytes", u"same"_s, all);
        addRow("a form Shrink made", u"shrink"_s,
               QStringList{u"Set.style"_s, u"sounds/bell.wav"_s, u"textures/sky.gif"_s});
        addRow("the archive replaced by another program", u"replaced"_s, QStringList());
    }

    void packedSave()
    {
        QFETCH(QString, change);
        QFETCH(QStringList, kept);
        QTemporaryDir dir;
        const QString source = dir.filePath(u"Set.bset"_s);
        const QString folder = dir.filePath(u"work"_s);
        QVERIFY(QDir().mkpath(folder));
        writeFastArchive(source);
        const QMap<QString, QByteArray> before = packedBytes(source);

        ArchiveReader reader;
        std::vector<ArchiveEntryOrigin> origins;
        QVERIFY(reader.open(source) && reader.extractAll(folder, &origins));
        PackedEntries packed;
        packed.adoptArchive(source, folder, origins);

        const QString wall = u"blocks/wall.block"_s;
        const QByteArray edited = kPackedFiles[wall] + "<!-- edited -->";
        QByteArray strongest;
        if (change == "edit"_L1)
            replaceFile(folder + u'/' + wall, edited);
        if (change == "same"_L1)
            replaceFile(folder + u'/' + wall, kPackedFiles[wall]);
        if (change == "shrink"_L1) {
            const PackedEntry entry = EntryPacking::pack(kPackedFiles[wall], EntryPacking::kStrongestLevel);
            strongest = entry.packed;
            packed.remember(wall, PlatformFile::fileStamp(QFile::encodeName(folder + u'/' + wall)), entry);
        }
        if (change == "replaced"_L1) {
            QVERIFY(QFile::remove(source));
            ArchiveWriter other(source);
            QVERIFY(other.addFolder(folder) && other.write());
        }

        // Saved twice: the second save copies from the first one's archive.
        const QString target = dir.filePath(u"Saved.bset"_s);
        for (int save = 0; save < 2; ++save) {
            ArchiveWriter writer(target, &packed);
            QVERIFY(writer.addFolder(folder));
            QVERIFY(writer.write());
        }
        const QMap<QString, QByteArray> after = packedBytes(target);
        QCOMPARE(after.keys(), kPackedFiles.keys());
        for (const QString &name : kPackedFiles.keys())
            QCOMPARE(after[name] == before[name], kept.contains(name));
        if (!strongest.isEmpty())
            QCOMPARE(after[wall], strongest);

        // Whatever was copied, the archive holds the files as they are now.
        QTemporaryDir check;
        ArchiveReader saved;
        QVERIFY(saved.open(target) && saved.extractAll(check.path()));
        for (const QString &name : kPackedFiles.keys())
            QCOMPARE(readBytes(check.filePath(name)),
                     name == wall && change == "edit"_L1 ? edited : kPackedFiles[name]);
    }
};

// Helper mode for killedSaveKeepsOldArchive: a process of its own writes 4 MiB
// of a save to `target` and waits, uncommitted, to be killed.
int writeAndWait(const QString &target)
{
    PlatformFile::Folder dir;
    int err = 0;
    if (!PlatformFile::openFolder(QFile::encodeName(QFileInfo(target).path()), false, dir, err))
        return 1;
    ArchiveSink sink(dir, QFile::encodeName(QFileInfo(target).fileName()));
    const QByteArray data = randomBytes(64 * 1024, 5);
    if (!sink.begin())
        return 1;
    for (int i = 0; i < 64; ++i) {
        if (!sink.write(data.constData(), size_t(data.size())))
            return 1;
    }
    std::fputs("written\n", stdout);
    std::fflush(stdout);
    QThread::sleep(60);
    return 0;
}

int main(int argc, char **argv)
{
    if (argc == 3 && qstrcmp(argv[1], "--write-and-wait") == 0)
        return writeAndWait(QString::fromLocal8Bit(argv[2]));
    QCoreApplication app(argc, argv);
    TestArchive test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}

#include "test_archive.moc"
