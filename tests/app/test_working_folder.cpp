#include "app/WorkingFolder.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <sys/stat.h>
#include <unistd.h>

namespace {

void writeFile(const QString &path, const QByteArray &data)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    QVERIFY2(file.open(QIODevice::WriteOnly), qPrintable(path));
    QCOMPARE(file.write(data), data.size());
}

QStringList entries(const QString &folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
}

// Every file, link and folder below `root` (links not followed), relative.
QStringList treeOf(const QString &root)
{
    QStringList paths;
    QDirIterator it(root, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    while (it.hasNext())
        paths.append(QDir(root).relativeFilePath(it.next()));
    paths.sort();
    return paths;
}

mode_t modeOf(const QString &path)
{
    struct stat st {};
    return lstat(QFile::encodeName(path).constData(), &st) == 0 ? (st.st_mode & 07777) : 0;
}

bool isRealFolder(const QString &path)
{
    const QFileInfo info(path);
    return info.isDir() && !info.isSymLink();
}

// Fills each of the four folders with a file and the working folder with a stray
// sub-folder, as a blockset unpacked from an archive may.
void populate(const WorkingFolder &folder)
{
    writeFile(folder.workingFolder() + "/Castle.style", "style");
    writeFile(folder.workingFolder() + "/readme.txt", "text");
    writeFile(folder.workingFolder() + "/extra/deep/x.bin", "stray");
    writeFile(folder.blocksFolder() + "/a.block", "block");
    writeFile(folder.blocksFolder() + "/sub/b.block", "nested block");
    writeFile(folder.texturesFolder() + "/t.gif", "gif");
    writeFile(folder.soundsFolder() + "/s.wav", "wav");
}

class ScopedEnv {
public:
    explicit ScopedEnv(const char *name) : m_name(name), m_set(qEnvironmentVariableIsSet(name)), m_value(qgetenv(name)) {}
    ~ScopedEnv()
    {
        if (m_set)
            qputenv(m_name, m_value);
        else
            qunsetenv(m_name);
    }

private:
    const char *m_name;
    bool m_set;
    QByteArray m_value;
};

} // namespace

class TestWorkingFolder : public QObject {
    Q_OBJECT

private slots:
    void tempRootFollowsEnvironment_data();
    void tempRootFollowsEnvironment();
    void createsOwnerOnlyFolders();
    void secondEditorGetsItsOwnFolder();
    void leftoverFolderIsReused();
    void foreignOrLinkedFolderIsNeverUsed_data();
    void foreignOrLinkedFolderIsNeverUsed();
    void clearRemovesFilesAndStrayFolders();
    void clearNeverFollowsLinks();
    void removeDeletesEverything();
    void operationsWithoutFolderDoNothing();
};

void TestWorkingFolder::tempRootFollowsEnvironment_data()
{
    QTest::addColumn<QByteArray>("temp");
    QTest::addColumn<QByteArray>("tmpdir");
    QTest::addColumn<QString>("expected");
    QTest::newRow("Temp wins") << QByteArray("/t/temp") << QByteArray("/t/tmpdir") << "/t/temp";
    QTest::newRow("TMPDIR without Temp") << QByteArray() << QByteArray("/t/tmpdir") << "/t/tmpdir";
    QTest::newRow("neither") << QByteArray() << QByteArray() << "/tmp";
}

void TestWorkingFolder::tempRootFollowsEnvironment()
{
    QFETCH(QByteArray, temp);
    QFETCH(QByteArray, tmpdir);
    QFETCH(QString, expected);
    ScopedEnv keepTemp("Temp");
    ScopedEnv keepTmpdir("TMPDIR");
    temp.isNull() ? qunsetenv("Temp") : qputenv("Temp", temp);
    tmpdir.isNull() ? qunsetenv("TMPDIR") : qputenv("TMPDIR", tmpdir);
    QCOMPARE(WorkingFolder::tempRoot(), expected);
    QCOMPARE(WorkingFolder().workingFolder(), expected + "/Cubrix");
}

void TestWorkingFolder::createsOwnerOnlyFolders()
{
    QTemporaryDir root;
    WorkingFolder folder(root.path());
    folder.createWorkingFolders();
    QCOMPARE(folder.workingFolder(), root.filePath("Cubrix"));
    QCOMPARE(folder.blocksFolder(), root.filePath("Cubrix/blocks"));
    QCOMPARE(folder.texturesFolder(), root.filePath("Cubrix/textures"));
    QCOMPARE(folder.soundsFolder(), root.filePath("Cubrix/sounds"));
    for (const QString &path : {folder.workingFolder(), folder.blocksFolder(), folder.texturesFolder(), folder.soundsFolder()}) {
        QVERIFY2(isRealFolder(path), qPrintable(path));
        QCOMPARE(modeOf(path), mode_t(0700));
    }
    // The lock lies beside the folder, so it is never packed with the blockset.
    QCOMPARE(entries(root.path()), QStringList({"Cubrix", "Cubrix.lock"}));
    QCOMPARE(entries(folder.workingFolder()), QStringList({"blocks", "sounds", "textures"}));
}

void TestWorkingFolder::secondEditorGetsItsOwnFolder()
{
    QTemporaryDir root;
    auto first = std::make_unique<WorkingFolder>(root.path());
    first->createWorkingFolders();
    populate(*first);
    const QStringList firstFiles = treeOf(first->workingFolder());

    {
        WorkingFolder second(root.path());
        second.createWorkingFolders();
        QCOMPARE(second.workingFolder(), root.filePath("Cubrix-2"));
        QVERIFY(isRealFolder(second.blocksFolder()));
        WorkingFolder third(root.path());
        third.createWorkingFolders();
        QCOMPARE(third.workingFolder(), root.filePath("Cubrix-3"));

        second.clearWorkingFolders();
        second.removeWorkingFolders();
        third.removeWorkingFolders();
        QCOMPARE(treeOf(first->workingFolder()), firstFiles);
    }

    // Once the first editor has gone, its folder is free for the next one.
    first.reset();
    WorkingFolder next(root.path());
    next.createWorkingFolders();
    QCOMPARE(next.workingFolder(), root.filePath("Cubrix"));
    QCOMPARE(entries(root.path()), QStringList({"Cubrix", "Cubrix.lock"}));
}

void TestWorkingFolder::leftoverFolderIsReused()
{
    // What a crashed earlier run leaves: the folder with its files and the lock file.
    QTemporaryDir root;
    writeFile(root.filePath("Cubrix/blocks/old.block"), "old");
    writeFile(root.filePath("Cubrix.lock"), QByteArray());
    QVERIFY(QFile::setPermissions(root.filePath("Cubrix"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner
                                                                | QFile::ReadGroup | QFile::ExeGroup | QFile::ReadOther | QFile::ExeOther));
    WorkingFolder folder(root.path());
    folder.createWorkingFolders();
    QCOMPARE(folder.workingFolder(), root.filePath("Cubrix"));
    QCOMPARE(modeOf(folder.workingFolder()), mode_t(0700));
    QVERIFY(isRealFolder(folder.soundsFolder()));
    folder.clearWorkingFolders();
    QCOMPARE(treeOf(folder.workingFolder()), QStringList({"blocks", "sounds", "textures"}));
}

void TestWorkingFolder::foreignOrLinkedFolderIsNeverUsed_data()
{
    QTest::addColumn<QString>("kind");
    QTest::newRow("folder is a link") << "link";
    QTest::newRow("folder is a dangling link") << "dangling";
    QTest::newRow("lock file is a link") << "locklink";
    QTest::newRow("folder is a file") << "file";
    QTest::newRow("folder owned by another user") << "foreign";
}

void TestWorkingFolder::foreignOrLinkedFolderIsNeverUsed()
{
    QFETCH(QString, kind);
    QTemporaryDir root;
    const QString cubrix = root.filePath("Cubrix");
    const QString elsewhere = root.filePath("elsewhere");
    writeFile(elsewhere + "/keep.txt", "keep");
    writeFile(elsewhere + "/blocks/keep.block", "keep");
    if (kind == "link") {
        QVERIFY(QFile::link(elsewhere, cubrix));
    } else if (kind == "dangling") {
        QVERIFY(QFile::link(root.filePath("nowhere"), cubrix));
    } else if (kind == "locklink") {
        QVERIFY(QFile::link(elsewhere + "/keep.txt", cubrix + ".lock"));
        writeFile(cubrix + "/blocks/keep.block", "keep");
    } else if (kind == "file") {
        writeFile(cubrix, "a file");
    } else if (kind == "foreign") {
        if (geteuid() != 0)
            QSKIP("only root can make a folder owned by another user");
        writeFile(cubrix + "/blocks/keep.block", "keep");
        for (const QString &path : {cubrix, cubrix + "/blocks", cubrix + "/blocks/keep.block"})
            QCOMPARE(lchown(QFile::encodeName(path).constData(), 65534, 65534), 0);
    }
    const QStringList before = treeOf(root.path());

    WorkingFolder folder(root.path());
    folder.createWorkingFolders();
    QCOMPARE(folder.workingFolder(), root.filePath("Cubrix-2"));
    QVERIFY(isRealFolder(folder.blocksFolder()));
    folder.clearWorkingFolders();
    folder.removeWorkingFolders();
    QCOMPARE(treeOf(root.path()), before);
}

void TestWorkingFolder::clearRemovesFilesAndStrayFolders()
{
    QTemporaryDir root;
    WorkingFolder folder(root.path());
    folder.createWorkingFolders();
    populate(folder);
    // Something else where an item folder belongs is replaced by the folder.
    QVERIFY(QDir(folder.soundsFolder()).removeRecursively());
    writeFile(folder.soundsFolder(), "not a folder");

    folder.clearWorkingFolders();
    QCOMPARE(treeOf(folder.workingFolder()), QStringList({"blocks", "sounds", "textures"}));
    QVERIFY(isRealFolder(folder.soundsFolder()));
    QCOMPARE(entries(root.path()), QStringList({"Cubrix", "Cubrix.lock"}));
}

void TestWorkingFolder::clearNeverFollowsLinks()
{
    QTemporaryDir root;
    WorkingFolder folder(root.path());
    folder.createWorkingFolders();
    const QString outside = root.filePath("outside");
    writeFile(outside + "/file.txt", "outside");
    writeFile(outside + "/sub/deep.txt", "outside");
    QVERIFY(QFile::link(outside, folder.workingFolder() + "/linkdir"));
    QVERIFY(QFile::link(outside + "/file.txt", folder.texturesFolder() + "/link.gif"));
    QVERIFY(QFile::link(outside + "/sub", folder.blocksFolder() + "/sub"));
    QVERIFY(QDir(folder.texturesFolder()).removeRecursively());
    QVERIFY(QFile::link(outside, folder.texturesFolder())); // an item folder that is a link

    folder.clearWorkingFolders();
    QCOMPARE(treeOf(folder.workingFolder()), QStringList({"blocks", "sounds", "textures"}));
    QVERIFY(isRealFolder(folder.texturesFolder()));
    QCOMPARE(treeOf(outside), QStringList({"file.txt", "sub", "sub/deep.txt"}));
}

void TestWorkingFolder::removeDeletesEverything()
{
    QTemporaryDir root;
    WorkingFolder folder(root.path());
    folder.createWorkingFolders();
    populate(folder);
    folder.removeWorkingFolders();
    QVERIFY(entries(root.path()).isEmpty());
    // Removing twice, or clearing afterwards, does nothing and does not crash.
    folder.removeWorkingFolders();
    folder.clearWorkingFolders();
    QVERIFY(entries(root.path()).isEmpty());
    // The editor can make its folder again (a later load).
    folder.createWorkingFolders();
    QVERIFY(isRealFolder(folder.blocksFolder()));
}

void TestWorkingFolder::operationsWithoutFolderDoNothing()
{
    QTemporaryDir root;
    WorkingFolder owner(root.path());
    owner.createWorkingFolders();
    populate(owner);
    const QStringList files = treeOf(root.path());
    // An editor that never made its folder must not clear one it does not hold.
    WorkingFolder idle(root.path());
    idle.clearWorkingFolders();
    idle.removeWorkingFolders();
    QCOMPARE(treeOf(root.path()), files);
    // A root that does not exist: nothing is made and nothing crashes.
    WorkingFolder missing(root.filePath("no/such/root"));
    missing.createWorkingFolders();
    missing.clearWorkingFolders();
    missing.removeWorkingFolders();
    QVERIFY(!QFileInfo::exists(root.filePath("no")));
}

QTEST_GUILESS_MAIN(TestWorkingFolder)
#include "test_working_folder.moc"
