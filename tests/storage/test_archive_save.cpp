// Saving over a .bset: saves that fail or are killed midway keep the old
// archive, the replaced file keeps its rights and links, and saves copy the
// packed bytes of unchanged entries.

#include "ArchiveFixtures.h"
#include "storage/ArchiveSink.h"
#include "storage/PackedEntries.h"
#include "support/DataRows.h"

#include <QSaveFile>
#include <QStandardPaths>

#include <csignal>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <unistd.h>

namespace {

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

class TestArchiveSave : public QObject {
    Q_OBJECT

private slots:
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
    TestArchiveSave test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}

#include "test_archive_save.moc"
