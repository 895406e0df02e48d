#include "app/Archive.h"

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QMap>
#include <QProcess>
#include <QRandomGenerator>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

#include <zip.h>

#include <csignal>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using Tree = QMap<QString, QByteArray>; // relative path -> content

void writeFile(const QString &path, const QByteArray &data)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    QVERIFY2(file.open(QIODevice::WriteOnly), qPrintable(path));
    QCOMPARE(file.write(data), data.size());
}

QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QByteArray randomBytes(qsizetype size, quint32 seed)
{
    QRandomGenerator generator(seed);
    QByteArray data(size, Qt::Uninitialized);
    generator.fillRange(reinterpret_cast<quint32 *>(data.data()), size / 4);
    return data;
}

void makeTree(const QString &root, const Tree &tree)
{
    for (auto it = tree.begin(); it != tree.end(); ++it)
        writeFile(root + u'/' + it.key(), it.value());
}

// Every file and link below `root` (links not followed), with its content.
Tree treeOf(const QString &root)
{
    Tree tree;
    QDirIterator it(root, QDir::Files | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        tree.insert(QDir(root).relativeFilePath(path), QFileInfo(path).isSymLink() ? QByteArray("<link>") : readFile(path));
    }
    return tree;
}

QStringList folderEntries(const QString &folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
}

bool pack(const QString &folder, const QString &target, QString *error = nullptr)
{
    Archive archive;
    const bool ok = archive.newArchive(target) && archive.addFiles(folder, true) && archive.writeArchive();
    if (error)
        *error = archive.lastError();
    archive.newArchive(QString());
    return ok;
}

bool unpack(const QString &archivePath, const QString &folder, QString *error = nullptr)
{
    QDir().mkpath(folder);
    Archive archive;
    const bool ok = archive.openArchive(archivePath) && archive.extractAll(folder);
    if (error)
        *error = archive.lastError();
    return ok;
}

struct RawEntry {
    QByteArray name;
    QByteArray data;
    bool link = false;
    bool store = false;
};

// Writes an archive holding exactly these entries under exactly these names;
// libzip stores names unchanged, so hostile names can be built as well.
void writeRawArchive(const QString &path, const QList<RawEntry> &entries)
{
    int error = 0;
    zip_t *za = zip_open(QFile::encodeName(path).constData(), ZIP_CREATE | ZIP_TRUNCATE, &error);
    QVERIFY(za);
    for (const RawEntry &entry : entries) {
        zip_int64_t index = -1;
        if (entry.name.endsWith('/') && entry.data.isEmpty()) {
            index = zip_dir_add(za, entry.name.constData(), ZIP_FL_ENC_GUESS);
        } else {
            zip_source_t *source = zip_source_buffer(za, entry.data.constData(), zip_uint64_t(entry.data.size()), 0);
            QVERIFY(source);
            index = zip_file_add(za, entry.name.constData(), source, ZIP_FL_ENC_GUESS);
        }
        QVERIFY2(index >= 0, zip_strerror(za));
        if (entry.link)
            QCOMPARE(zip_file_set_external_attributes(za, zip_uint64_t(index), 0, ZIP_OPSYS_UNIX, (S_IFLNK | 0777u) << 16), 0);
        if (entry.store)
            QCOMPARE(zip_set_file_compression(za, zip_uint64_t(index), ZIP_CM_STORE, 0), 0);
    }
    QVERIFY2(zip_close(za) == 0, zip_strerror(za));
}

// The folder a typical blockset unpacks to, with what the user never sees in a list.
Tree blocksetTree()
{
    return {
        {"Castle.style", "<style>\r\n<block symbol=\"a\" file=\"Wall.block\"/>\r\n</style>\r\n"},
        {"Old.style", "<style name=\"old\"/>\r\n"},
        {"Backup.style", "<style name=\"backup\"/>\r\n"},
        {"readme.txt", "made by hand\r\n"},
        {".hidden", "dot file"},
        {"blocks/Wall.block", QByteArray("<block name=\"wall\">\r\n").repeated(200)},
        {"blocks/Caf\xc3\xa9.block", "<block name=\"cafe\"/>"},
        {"textures/wall.gif", randomBytes(300 * 1024, 1)},
        {"textures/floor.jpg", randomBytes(20 * 1024, 2)},
        {"sounds/bell.wav", randomBytes(900 * 1024, 3)},
        {"sounds/empty.wav", QByteArray()},
        {"extra/deep/nested/notes.bin", randomBytes(4096, 4)},
    };
}

bool canWrite(const QString &folder)
{
    QFile probe(folder + "/probe");
    const bool ok = probe.open(QIODevice::WriteOnly);
    if (ok)
        probe.remove();
    return ok;
}

bool runQuietly(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.start(program, arguments);
    return process.waitForFinished(30000) && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}

} // namespace

class TestArchive : public QObject {
    Q_OBJECT

private slots:
    void roundTripKeepsEveryFile();
    void roundTripWithSystemZip_data();
    void roundTripWithSystemZip();
    void packingSkipsLinksAndKeepsEmptyFolders();
    void emptyFolderGivesEmptyArchive();
    void hostileEntryNames_data();
    void hostileEntryNames();
    void linksInTargetAreRefused_data();
    void linksInTargetAreRefused();
    void corruptDataFailsExtraction_data();
    void corruptDataFailsExtraction();
    void brokenFilesDoNotOpen_data();
    void brokenFilesDoNotOpen();
    void readEntryReadsStyleHeader();
    void misuseFails();
    void writeIntoReadOnlyFolderKeepsOldArchive();
    void writeErrorMidwayKeepsOldArchive();
    void killedSaveKeepsOldArchive_data();
    void killedSaveKeepsOldArchive();
    void namedTemporaryFileReplacesArchive_data();
    void namedTemporaryFileReplacesArchive();
    void linkedTargetReplacesTheFileItPointsTo();
    void staleTempFilesOfDeadSavesAreRemoved();
};

void TestArchive::roundTripKeepsEveryFile()
{
    QTemporaryDir tmp;
    const QString source = tmp.filePath("source");
    makeTree(source, blocksetTree());
    const QString target = tmp.filePath("Castle.bset");
    // An older archive at the target is replaced whole: none of its entries stay.
    writeRawArchive(target, {{"stale.txt", "old"}});

    QString error;
    QVERIFY2(pack(source, target, &error), qPrintable(error));
    QCOMPARE(folderEntries(tmp.path()), QStringList({"Castle.bset", "source"}));

    Archive archive;
    QVERIFY(archive.openArchive(target));
    QStringList names = archive.entryNames();
    // Top-level files first, then each folder with its contents, "/" separated.
    QCOMPARE(names.first(), QStringLiteral(".hidden"));
    names.sort();
    QStringList expected = blocksetTree().keys();
    expected.sort();
    QCOMPARE(names, expected);

    const QString dest = tmp.filePath("dest");
    QDir().mkpath(dest);
    QVERIFY2(archive.extractAll(dest), qPrintable(archive.lastError()));
    QCOMPARE(treeOf(dest), blocksetTree());

    // Unpacking again over changed files restores them whole.
    writeFile(dest + "/Castle.style", QByteArray(100000, 'x'));
    QVERIFY(archive.extractAll(dest));
    QCOMPARE(treeOf(dest), blocksetTree());
}

void TestArchive::roundTripWithSystemZip_data()
{
    QTest::addColumn<QString>("direction");
    QTest::newRow("ours packed, unzip lists and unpacks") << "unzip";
    QTest::newRow("zip -r packed, ours unpacks") << "zip";
}

void TestArchive::roundTripWithSystemZip()
{
    QFETCH(QString, direction);
    const QString tool = QStandardPaths::findExecutable(direction);
    if (tool.isEmpty())
        QSKIP("the system's zip tools are not installed");
    QTemporaryDir tmp;
    const QString source = tmp.filePath("source");
    makeTree(source, blocksetTree());
    const QString target = tmp.filePath("Castle.bset");
    const QString dest = tmp.filePath("dest");

    if (direction == "unzip") {
        QVERIFY(pack(source, target));
        QProcess list;
        list.start(tool, {"-Z1", target});
        QVERIFY(list.waitForFinished(30000));
        QStringList listed = QString::fromUtf8(list.readAllStandardOutput()).split('\n', Qt::SkipEmptyParts);
        listed.sort();
        QStringList expected = blocksetTree().keys();
        expected.sort();
        QCOMPARE(listed, expected);
        QVERIFY(runQuietly(tool, {"-t", "-q", target}));
        QVERIFY(runQuietly(tool, {"-q", target, "-d", dest}));
    } else {
        QProcess zip;
        zip.setWorkingDirectory(source);
        zip.start(tool, {"-q", "-r", "-6", target, "."});
        QVERIFY(zip.waitForFinished(30000) && zip.exitCode() == 0);
        QString error;
        QVERIFY2(unpack(target, dest, &error), qPrintable(error));
    }
    QCOMPARE(treeOf(dest), blocksetTree());
}

void TestArchive::packingSkipsLinksAndKeepsEmptyFolders()
{
    QTemporaryDir tmp;
    const QString source = tmp.filePath("source");
    makeTree(source, {{"a.style", "style"}, {"blocks/b.block", "block"}});
    writeFile(tmp.filePath("outside/secret.txt"), "secret");
    QVERIFY(QFile::link(tmp.filePath("outside/secret.txt"), source + "/secret.txt"));
    QVERIFY(QFile::link(tmp.filePath("outside"), source + "/textures"));
    QVERIFY(QDir().mkpath(source + "/sounds"));

    const QString target = tmp.filePath("x.bset");
    QVERIFY(pack(source, target));
    Archive archive;
    QVERIFY(archive.openArchive(target));
    QStringList names = archive.entryNames();
    names.sort();
    QCOMPARE(names, QStringList({"a.style", "blocks/b.block", "sounds/"}));

    const QString dest = tmp.filePath("dest");
    QVERIFY(unpack(target, dest));
    QVERIFY(QFileInfo(dest + "/sounds").isDir());
    QCOMPARE(treeOf(dest), Tree({{"a.style", "style"}, {"blocks/b.block", "block"}}));
}

void TestArchive::emptyFolderGivesEmptyArchive()
{
    QTemporaryDir tmp;
    QDir().mkpath(tmp.filePath("source"));
    const QString target = tmp.filePath("empty.bset");
    QVERIFY(pack(tmp.filePath("source"), target));
    Archive archive;
    QVERIFY2(archive.openArchive(target), qPrintable(archive.lastError()));
    QVERIFY(archive.entryNames().isEmpty());
    QVERIFY(archive.extractAll(tmp.filePath("source")));
    const QString unzip = QStandardPaths::findExecutable("unzip");
    if (!unzip.isEmpty()) {
        QProcess list;
        list.start(unzip, {"-l", target});
        QVERIFY(list.waitForFinished(30000));
        QVERIFY2(list.exitCode() <= 1, list.readAll().constData()); // 1: warning "zipfile is empty"
    }
}

void TestArchive::hostileEntryNames_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QString>("landsAt"); // "" when the entry must be skipped

    QTest::newRow("parent folder") << QByteArray("../evil") << "";
    QTest::newRow("parent folder after a folder") << QByteArray("blocks/../../evil") << "";
    QTest::newRow("parent folder with backslashes") << QByteArray("a\\..\\..\\evil") << "";
    QTest::newRow("absolute path") << QByteArray("/abs/evil") << "";
    QTest::newRow("absolute path into a writable folder") << QByteArray("@OUTSIDE@/evil") << "";
    QTest::newRow("absolute Windows path") << QByteArray("\\evil") << "";
    QTest::newRow("drive letter") << QByteArray("C:\\evil") << "";
    QTest::newRow("drive-relative") << QByteArray("c:evil") << "";
    QTest::newRow("backslash separator") << QByteArray("textures\\x.gif") << "textures/x.gif";
    QTest::newRow("current folder component") << QByteArray("./blocks/./w.block") << "blocks/w.block";
    QTest::newRow("doubled separator") << QByteArray("sounds//s.wav") << "sounds/s.wav";
    QTest::newRow("dots inside a name") << QByteArray("a..b/..c") << "a..b/..c";
    QTest::newRow("UTF-8 name") << QByteArray("textures/caf\xc3\xa9.gif") << "textures/caf\u00e9.gif";
    QTest::newRow("code page 437 name") << QByteArray("textures/caf\x82.gif") << "textures/caf\u00e9.gif";
}

void TestArchive::hostileEntryNames()
{
    QFETCH(QByteArray, name);
    QFETCH(QString, landsAt);
    QTemporaryDir tmp;
    QVERIFY(QDir().mkpath(tmp.filePath("outside")));
    name.replace("@OUTSIDE@", QFile::encodeName(tmp.filePath("outside")));
    const QString archivePath = tmp.filePath("hostile.bset");
    writeRawArchive(archivePath, {{name, "payload"}, {"good.txt", "good"}});

    Archive archive;
    QVERIFY(archive.openArchive(archivePath));
    const QStringList names = archive.entryNames();
    QCOMPARE(names.size(), 2);
    QCOMPARE(names.last(), QStringLiteral("good.txt"));
    if (QByteArrayView(name).isValidUtf8())
        QCOMPARE(names.first(), QString::fromUtf8(name)); // stored as given
    const QString dest = tmp.filePath("work/dest");
    QVERIFY(QDir().mkpath(dest));
    QVERIFY2(archive.extractAll(dest), qPrintable(archive.lastError()));

    Tree expected{{"hostile.bset", readFile(archivePath)}, {"work/dest/good.txt", "good"}};
    if (!landsAt.isEmpty())
        expected.insert("work/dest/" + landsAt, "payload");
    QCOMPARE(treeOf(tmp.path()), expected);
    QVERIFY(!QFile::exists("/abs/evil"));
}

void TestArchive::linksInTargetAreRefused_data()
{
    QTest::addColumn<QByteArray>("entry");
    QTest::addColumn<QString>("linkName");
    QTest::addColumn<bool>("extracts");

    QTest::newRow("linked folder in the target") << QByteArray("blocks/a.block") << "blocks" << false;
    QTest::newRow("linked file in the target") << QByteArray("a.style") << "a.style" << false;
    QTest::newRow("hard link in the target") << QByteArray("a.style") << "@HARD@" << false;
    QTest::newRow("link entry in the archive") << QByteArray("@LINK@") << "" << true;
}

void TestArchive::linksInTargetAreRefused()
{
    QFETCH(QByteArray, entry);
    QFETCH(QString, linkName);
    QFETCH(bool, extracts);
    QTemporaryDir tmp;
    writeFile(tmp.filePath("outside/kept.txt"), "kept");
    const QString dest = tmp.filePath("dest");
    QVERIFY(QDir().mkpath(dest));
    const QString archivePath = tmp.filePath("x.bset");
    if (entry == "@LINK@") {
        writeRawArchive(archivePath, {{"link", QFile::encodeName(tmp.filePath("outside/kept.txt")), true}});
    } else if (linkName == "@HARD@") {
        QCOMPARE(::link(QFile::encodeName(tmp.filePath("outside/kept.txt")).constData(),
                        QFile::encodeName(dest + "/a.style").constData()), 0);
        writeRawArchive(archivePath, {{entry, "payload"}});
    } else {
        const QString linkTarget = linkName == "blocks" ? tmp.filePath("outside") : tmp.filePath("outside/kept.txt");
        QVERIFY(QFile::link(linkTarget, dest + u'/' + linkName));
        writeRawArchive(archivePath, {{entry, "payload"}});
    }

    Archive archive;
    QVERIFY(archive.openArchive(archivePath));
    QCOMPARE(archive.extractAll(dest), extracts);
    QCOMPARE(treeOf(tmp.filePath("outside")), Tree({{"kept.txt", "kept"}}));
    if (entry == "@LINK@")
        QVERIFY(folderEntries(dest).isEmpty()); // no link created
    else
        QVERIFY(!archive.lastError().isEmpty());
}

void TestArchive::corruptDataFailsExtraction_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<bool>("store");
    QTest::newRow("stored entry") << randomBytes(100 * 1024, 7) << true;
    QTest::newRow("deflated entry") << QByteArray("<block name=\"wall\" type=\"sprite\"/>\r\n").repeated(3000) << false;
    QTest::newRow("deflated incompressible entry") << randomBytes(100 * 1024, 8) << false;
}

void TestArchive::corruptDataFailsExtraction()
{
    QFETCH(QByteArray, content);
    QFETCH(bool, store);
    QTemporaryDir tmp;
    const QString archivePath = tmp.filePath("x.bset");
    writeRawArchive(archivePath, {{"a.style", "style"}, {"blocks/a.block", content, false, store}});

    // Flip one byte in the middle of the second entry's data.
    QByteArray bytes = readFile(archivePath);
    const qsizetype second = bytes.indexOf("PK\x03\x04", 4);
    QVERIFY(second > 0);
    const auto u16 = [&](qsizetype at) { return quint8(bytes[at]) | quint8(bytes[at + 1]) << 8; };
    const qsizetype dataStart = second + 30 + u16(second + 26) + u16(second + 28);
    const qsizetype centralDirectory = bytes.indexOf("PK\x01\x02");
    QVERIFY(centralDirectory > dataStart + 100);
    const qsizetype flip = (dataStart + centralDirectory) / 2;
    bytes[flip] = char(bytes[flip] ^ 0x5a);
    writeFile(archivePath, bytes);

    Archive archive;
    QVERIFY(archive.openArchive(archivePath)); // the directory itself is fine
    const QString dest = tmp.filePath("dest");
    QVERIFY(QDir().mkpath(dest));
    QVERIFY(!archive.extractAll(dest));
    QVERIFY(!archive.lastError().isEmpty());
    // The broken entry is not left half-written.
    QVERIFY(!QFile::exists(dest + "/blocks/a.block"));
}

void TestArchive::brokenFilesDoNotOpen_data()
{
    QTest::addColumn<QString>("kind");
    QTest::newRow("missing file") << "missing";
    QTest::newRow("empty file") << "empty";
    QTest::newRow("text file") << "text";
    QTest::newRow("text with an end-record signature") << "signature";
    QTest::newRow("cut in half") << "half";
    QTest::newRow("last byte cut") << "lastbyte";
    QTest::newRow("folder") << "folder";
    QTest::newRow("named pipe") << "pipe";
    QTest::newRow("many end records") << "manyends";
}

void TestArchive::brokenFilesDoNotOpen()
{
    QFETCH(QString, kind);
    QTemporaryDir tmp;
    const QString path = tmp.filePath("broken.bset");
    const QString good = tmp.filePath("good.bset");
    writeRawArchive(good, {{"a.style", "style"}, {"blocks/a.block", randomBytes(8192, 9)}});
    const QByteArray goodBytes = readFile(good);

    if (kind == "empty")
        writeFile(path, QByteArray());
    else if (kind == "text")
        writeFile(path, "<style>\r\nnot a zip archive\r\n</style>\r\n");
    else if (kind == "signature")
        writeFile(path, QByteArray("just text PK\x05\x06 and more text that is long enough").append(QByteArray(40, 'x')));
    else if (kind == "half")
        writeFile(path, goodBytes.left(goodBytes.size() / 2));
    else if (kind == "lastbyte")
        writeFile(path, goodBytes.chopped(1));
    else if (kind == "folder")
        QVERIFY(QDir().mkpath(path));
    else if (kind == "pipe")
        QCOMPARE(mkfifo(QFile::encodeName(path).constData(), 0600), 0);
    else if (kind == "manyends")
        writeFile(path, QByteArray("PK\x05\x06", 4).append(QByteArray(18, '\0')).repeated(100));

    Archive archive;
    QVERIFY(!archive.openArchive(path));
    QVERIFY(!archive.lastError().isEmpty());
    QVERIFY(archive.entryNames().isEmpty());
    QVERIFY(!archive.extractAll(tmp.path()));
    // The same object still opens a good archive afterwards.
    QVERIFY(archive.openArchive(good));
    QCOMPARE(archive.entryNames().size(), 2);
}

void TestArchive::readEntryReadsStyleHeader()
{
    QTemporaryDir tmp;
    const QString source = tmp.filePath("source");
    makeTree(source, blocksetTree());
    const QString target = tmp.filePath("Castle.bset");
    QVERIFY(pack(source, target));
    Archive archive;
    QVERIFY(archive.openArchive(target));
    QByteArray data;
    QVERIFY(archive.readEntry("Castle.style", data));
    QCOMPARE(data, blocksetTree().value("Castle.style"));
    QVERIFY(archive.readEntry("sounds/empty.wav", data));
    QVERIFY(data.isEmpty());
    QVERIFY(!archive.readEntry("sounds/bell.wav", data, 1024)); // larger than allowed
    QVERIFY(!archive.readEntry("missing.style", data));
}

void TestArchive::misuseFails()
{
    QTemporaryDir tmp;
    Archive archive;
    QVERIFY(!archive.extractAll(tmp.path())); // nothing opened
    QVERIFY(!archive.addFiles(tmp.path(), true)); // nothing started
    QVERIFY(!archive.writeArchive());
    QVERIFY(archive.newArchive(tmp.filePath("x.bset")));
    QVERIFY(!archive.addFiles(tmp.filePath("missing"), true));
    QVERIFY(archive.newArchive(QString()));
    QVERIFY(!archive.writeArchive()); // dropped
    QVERIFY(archive.newArchive(tmp.filePath("missing/x.bset")));
    QVERIFY(archive.addFiles(tmp.path(), true));
    QVERIFY(!archive.writeArchive()); // its folder does not exist
    QVERIFY(folderEntries(tmp.path()).isEmpty());
}

void TestArchive::writeIntoReadOnlyFolderKeepsOldArchive()
{
    QTemporaryDir tmp;
    const QString folder = tmp.filePath("archives");
    const QString target = folder + "/Castle.bset";
    makeTree(tmp.filePath("old"), {{"old.style", "old"}});
    makeTree(tmp.filePath("new"), blocksetTree());
    QVERIFY(QDir().mkpath(folder));
    QVERIFY(pack(tmp.filePath("old"), target));
    const QByteArray before = readFile(target);

    QVERIFY(QFile::setPermissions(folder, QFile::ReadOwner | QFile::ExeOwner));
    const bool immutable = geteuid() == 0 && runQuietly("chattr", {"+i", folder});
    const auto restore = qScopeGuard([&] {
        if (immutable)
            runQuietly("chattr", {"-i", folder});
        QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    });
    if (canWrite(folder))
        QSKIP("this user can write into read-only folders");

    QString error;
    QVERIFY(!pack(tmp.filePath("new"), target, &error));
    QVERIFY(!error.isEmpty());
    QCOMPARE(readFile(target), before);
    QCOMPARE(folderEntries(folder), QStringList({"Castle.bset"}));
}

void TestArchive::writeErrorMidwayKeepsOldArchive()
{
    // A file size limit makes the writes fail in the middle, as a full disk does.
    QTemporaryDir tmp;
    const QString folder = tmp.filePath("archives");
    const QString target = folder + "/Castle.bset";
    makeTree(tmp.filePath("old"), {{"old.style", "old"}});
    makeTree(tmp.filePath("new"), blocksetTree());
    QVERIFY(QDir().mkpath(folder));
    QVERIFY(pack(tmp.filePath("old"), target));
    const QByteArray before = readFile(target);

    rlimit saved{};
    QCOMPARE(getrlimit(RLIMIT_FSIZE, &saved), 0);
    const auto previous = std::signal(SIGXFSZ, SIG_IGN);
    rlimit limited = saved;
    limited.rlim_cur = 512 * 1024;
    QCOMPARE(setrlimit(RLIMIT_FSIZE, &limited), 0);
    QString error;
    const bool packed = pack(tmp.filePath("new"), target, &error);
    setrlimit(RLIMIT_FSIZE, &saved);
    std::signal(SIGXFSZ, previous);

    QVERIFY(!packed);
    QVERIFY(!error.isEmpty());
    QCOMPARE(readFile(target), before);
    QCOMPARE(folderEntries(folder), QStringList({"Castle.bset"}));
}

void TestArchive::killedSaveKeepsOldArchive_data()
{
    QTest::addColumn<QByteArray>("mode");
    QTest::addColumn<int>("leftovers"); // files beside the archive right after the kill
    QTest::newRow("unnamed temporary file") << QByteArray("stall") << 0;
    QTest::newRow("named temporary file") << QByteArray("stall named") << 1;
}

void TestArchive::killedSaveKeepsOldArchive()
{
    QFETCH(QByteArray, mode);
    QFETCH(int, leftovers);
    QTemporaryDir tmp;
    const QString folder = tmp.filePath("archives");
    const QString target = folder + "/Castle.bset";
    const Tree oldTree{{"Castle.style", "old style"}, {"blocks/a.block", "old block"}};
    makeTree(tmp.filePath("old"), oldTree);
    Tree bigTree;
    for (int i = 0; i < 6; ++i)
        bigTree.insert(QString("textures/t%1.gif").arg(i), randomBytes(1024 * 1024, quint32(20 + i)));
    makeTree(tmp.filePath("big"), bigTree);
    QVERIFY(QDir().mkpath(folder));
    QVERIFY(pack(tmp.filePath("old"), target));

    QProcess child;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("CUBRIX_TEST_ARCHIVE_WRITE", QString::fromLatin1(mode));
    child.setProcessEnvironment(environment);
    child.setProcessChannelMode(QProcess::MergedChannels);
    child.start(QCoreApplication::applicationFilePath(), {"--pack", tmp.filePath("big"), target});
    QVERIFY(child.waitForStarted());
    QByteArray output;
    while (!output.contains("archive write stalled") && child.waitForReadyRead(30000))
        output += child.readAll();
    QVERIFY2(output.contains("archive write stalled"), output.constData());
    child.kill();
    QVERIFY(child.waitForFinished(30000));
    QCOMPARE(child.exitStatus(), QProcess::CrashExit);

    QCOMPARE(folderEntries(folder).size(), 1 + leftovers);
    const QString dest = tmp.filePath("dest");
    QString error;
    QVERIFY2(unpack(target, dest, &error), qPrintable(error));
    QCOMPARE(treeOf(dest), oldTree);

    // The next save replaces the archive and clears what the killed one left.
    QVERIFY(pack(tmp.filePath("big"), target, &error));
    QCOMPARE(folderEntries(folder), QStringList({"Castle.bset"}));
    QVERIFY(unpack(target, tmp.filePath("dest2")));
    QCOMPARE(treeOf(tmp.filePath("dest2")), bigTree);
}

void TestArchive::namedTemporaryFileReplacesArchive_data()
{
    QTest::addColumn<bool>("folderWritable");
    QTest::newRow("save") << true;
    QTest::newRow("read-only folder") << false;
}

void TestArchive::namedTemporaryFileReplacesArchive()
{
    // Where O_TMPFILE is missing, a hidden named file takes its place.
    QFETCH(bool, folderWritable);
    QTemporaryDir tmp;
    const QString folder = tmp.filePath("archives");
    const QString target = folder + "/Castle.bset";
    makeTree(tmp.filePath("old"), {{"old.style", "old"}});
    makeTree(tmp.filePath("new"), blocksetTree());
    QVERIFY(QDir().mkpath(folder));
    QVERIFY(pack(tmp.filePath("old"), target));
    const QByteArray before = readFile(target);
    QVERIFY(QFile::setPermissions(target, QFile::ReadOwner | QFile::ReadGroup));

    bool immutable = false;
    if (!folderWritable) {
        QVERIFY(QFile::setPermissions(folder, QFile::ReadOwner | QFile::ExeOwner));
        immutable = geteuid() == 0 && runQuietly("chattr", {"+i", folder});
    }
    const auto restore = qScopeGuard([&] {
        qunsetenv("CUBRIX_TEST_ARCHIVE_WRITE");
        if (immutable)
            runQuietly("chattr", {"-i", folder});
        QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    });
    if (!folderWritable && canWrite(folder))
        QSKIP("this user can write into read-only folders");
    qputenv("CUBRIX_TEST_ARCHIVE_WRITE", "named");
    QCOMPARE(pack(tmp.filePath("new"), target), folderWritable);
    qunsetenv("CUBRIX_TEST_ARCHIVE_WRITE");

    QCOMPARE(folderEntries(folder), QStringList({"Castle.bset"}));
    if (folderWritable) {
        QVERIFY(unpack(target, tmp.filePath("dest")));
        QCOMPARE(treeOf(tmp.filePath("dest")), blocksetTree());
        // The new archive keeps the rights the old one had.
        struct stat st {};
        QCOMPARE(stat(QFile::encodeName(target).constData(), &st), 0);
        QCOMPARE(st.st_mode & 0777, mode_t(0440));
    } else {
        QCOMPARE(readFile(target), before);
    }
}

void TestArchive::linkedTargetReplacesTheFileItPointsTo()
{
    QTemporaryDir tmp;
    makeTree(tmp.filePath("old"), {{"old.style", "old"}});
    makeTree(tmp.filePath("new"), {{"new.style", "new"}});
    QVERIFY(QDir().mkpath(tmp.filePath("real")));
    QVERIFY(pack(tmp.filePath("old"), tmp.filePath("real/Castle.bset")));
    QVERIFY(QFile::link(tmp.filePath("real/Castle.bset"), tmp.filePath("Castle.bset")));

    QVERIFY(pack(tmp.filePath("new"), tmp.filePath("Castle.bset")));
    QVERIFY(QFileInfo(tmp.filePath("Castle.bset")).isSymLink());
    QCOMPARE(folderEntries(tmp.filePath("real")), QStringList({"Castle.bset"}));
    QVERIFY(unpack(tmp.filePath("Castle.bset"), tmp.filePath("dest")));
    QCOMPARE(treeOf(tmp.filePath("dest")), Tree({{"new.style", "new"}}));
}

void TestArchive::staleTempFilesOfDeadSavesAreRemoved()
{
    QTemporaryDir tmp;
    makeTree(tmp.filePath("source"), {{"a.style", "style"}});
    const QString folder = tmp.filePath("archives");
    const Tree others{{"other.txt", "mine"},
                      {".Castle.bset.cubrix-notmine", "not a temporary name"},
                      {".Other.bset.cubrix-0000abcd", "another archive's save"},
                      {".Castle.bset.cubrix-1234abcd", "busy"}};
    makeTree(folder, others);
    writeFile(folder + "/.Castle.bset.cubrix-deadbeef", "left by a killed save");
    // A save in progress holds its file locked; that one stays.
    const int busy = ::open(QFile::encodeName(folder + "/.Castle.bset.cubrix-1234abcd").constData(), O_RDONLY);
    QVERIFY(busy >= 0);
    QCOMPARE(flock(busy, LOCK_EX), 0);

    QVERIFY(pack(tmp.filePath("source"), folder + "/Castle.bset"));
    close(busy);
    Tree expected = others;
    expected.insert("Castle.bset", readFile(folder + "/Castle.bset"));
    QCOMPARE(treeOf(folder), expected);
}

int main(int argc, char **argv)
{
    // Helper mode for killedSaveKeepsOldArchive: pack a folder in a process of its own.
    if (argc == 4 && qstrcmp(argv[1], "--pack") == 0)
        return pack(QString::fromLocal8Bit(argv[2]), QString::fromLocal8Bit(argv[3])) ? 0 : 1;
    QCoreApplication app(argc, argv);
    TestArchive test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}

#include "test_archive.moc"
