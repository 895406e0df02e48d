// The editor's private working folder: where it lies, who may use it, and what
// clearing and removing it leave behind.

#include "storage/WorkingFolder.h"
#include "support/DataRows.h"
#include "support/TestFiles.h"

#include <QtTest>

#include <sys/stat.h>
#include <unistd.h>

namespace {

QStringList entries(const QString &folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
}

// Every file, link and folder below `root` (links not followed), relative, sorted.
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
    return QFileInfo(path).isDir() && !QFileInfo(path).isSymLink();
}

const QStringList kItemFolders = {"blocks", "sounds", "textures"};

// Fills each of the four folders with a file and the working folder with a stray
// sub-folder, as a blockset unpacked from an archive may.
void populate(const WorkingFolder &folder)
{
    writeBytes(folder.workingFolder() + "/Castle.style", "style");
    writeBytes(folder.workingFolder() + "/extra/deep/x.bin", "stray");
    writeBytes(folder.blocksFolder() + "/a.block", "block");
    writeBytes(folder.blocksFolder() + "/sub/b.block", "nested block");
    writeBytes(folder.texturesFolder() + "/t.gif", "gif");
    writeBytes(folder.soundsFolder() + "/s.wav", "wav");
}

} // namespace

class TestWorkingFolder : public QObject {
    Q_OBJECT

private slots:
    void createAndClear_data()
    {
        QTest::addColumn<bool>("leftover");
        addRow("fresh", false);
        // What a crashed earlier run leaves: the folder, open to all, with its files and the lock file.
        addRow("leftover of an earlier run is reused", true);
    }

    void createAndClear()
    {
        QFETCH(bool, leftover);
        QTemporaryDir root;
        if (leftover) {
            writeBytes(root.filePath("Cubrix/blocks/old.block"), "old");
            writeBytes(root.filePath("Cubrix.lock"), QByteArray());
            QVERIFY(QFile::setPermissions(root.filePath("Cubrix"), QFileDevice::Permissions(0x7055))); // rwxr-xr-x
        }
        WorkingFolder folder(root.path());
        (void)folder.createWorkingFolders();
        QCOMPARE(folder.workingFolder(), root.filePath("Cubrix"));
        QCOMPARE(QStringList({folder.blocksFolder(), folder.texturesFolder(), folder.soundsFolder()}),
                 QStringList({root.filePath("Cubrix/blocks"), root.filePath("Cubrix/textures"),
                              root.filePath("Cubrix/sounds")}));
        for (const QString &path :
             {folder.workingFolder(), folder.blocksFolder(), folder.texturesFolder(), folder.soundsFolder()}) {
            QVERIFY2(isRealFolder(path), qPrintable(path));
            if (!leftover || path == folder.workingFolder()) // a leftover's inner folders are closed off by it
                QCOMPARE(modeOf(path), mode_t(0700));
        }
        // The lock lies beside the folder, so it is never packed with the blockset.
        QCOMPARE(entries(root.path()), QStringList({"Cubrix", "Cubrix.lock"}));

        // Clearing deletes every file and stray folder, keeps the three item folders
        // (replacing whatever else stands where one belongs) and never follows a link.
        populate(folder);
        const QString outside = root.filePath("outside");
        writeBytes(outside + "/file.txt", "outside");
        writeBytes(outside + "/sub/deep.txt", "outside");
        QVERIFY(QFile::link(outside, folder.workingFolder() + "/linkdir"));
        QVERIFY(QFile::link(outside + "/sub", folder.blocksFolder() + "/linksub"));
        QVERIFY(QDir(folder.soundsFolder()).removeRecursively());
        writeBytes(folder.soundsFolder(), "not a folder");
        QVERIFY(QDir(folder.texturesFolder()).removeRecursively() && QFile::link(outside, folder.texturesFolder()));
        folder.clearWorkingFolders();
        QCOMPARE(treeOf(folder.workingFolder()), kItemFolders);
        QVERIFY(isRealFolder(folder.soundsFolder()) && isRealFolder(folder.texturesFolder()));
        QCOMPARE(treeOf(outside), QStringList({"file.txt", "sub", "sub/deep.txt"}));
        QCOMPARE(entries(root.path()), QStringList({"Cubrix", "Cubrix.lock", "outside"}));
    }

    void secondEditorGetsItsOwnFolder()
    {
        QTemporaryDir root;
        auto first = std::make_unique<WorkingFolder>(root.path());
        (void)first->createWorkingFolders();
        populate(*first);
        const QStringList firstFiles = treeOf(first->workingFolder());
        {
            WorkingFolder second(root.path());
            (void)second.createWorkingFolders();
            QCOMPARE(second.workingFolder(), root.filePath("Cubrix-2"));
            QVERIFY(isRealFolder(second.blocksFolder()));
            second.clearWorkingFolders();
            second.removeWorkingFolders();
            // An editor that never made its folder must not clear one it does not hold.
            WorkingFolder idle(root.path());
            idle.clearWorkingFolders();
            idle.removeWorkingFolders();
            QCOMPARE(treeOf(first->workingFolder()), firstFiles);
        }
        // Once the first editor has gone, its folder is free for the next one.
        first.reset();
        WorkingFolder next(root.path());
        (void)next.createWorkingFolders();
        QCOMPARE(next.workingFolder(), root.filePath("Cubrix"));
        QCOMPARE(entries(root.path()), QStringList({"Cubrix", "Cubrix.lock"}));
    }

    void foreignOrLinkedFolderIsNeverUsed_data()
    {
        QTest::addColumn<QString>("kind");
        addRow("folder is a link", "link");
        addRow("folder is a dangling link", "dangling");
        addRow("lock file is a link", "locklink");
        addRow("folder is a file", "file");
        addRow("folder owned by another user", "foreign");
    }

    void foreignOrLinkedFolderIsNeverUsed()
    {
        QFETCH(QString, kind);
        QTemporaryDir root;
        const QString cubrix = root.filePath("Cubrix");
        const QString elsewhere = root.filePath("elsewhere");
        writeBytes(elsewhere + "/keep.txt", "keep");
        writeBytes(elsewhere + "/blocks/keep.block", "keep");
        if (kind == "link" || kind == "dangling")
            QVERIFY(QFile::link(kind == "link" ? elsewhere : root.filePath("nowhere"), cubrix));
        else if (kind == "file")
            writeBytes(cubrix, "a file");
        else
            writeBytes(cubrix + "/blocks/keep.block", "keep");
        if (kind == "locklink")
            QVERIFY(QFile::link(elsewhere + "/keep.txt", cubrix + ".lock"));
        if (kind == "foreign") {
            if (geteuid() != 0)
                QSKIP("only root can make a folder owned by another user");
            for (const QString &path : {cubrix, cubrix + "/blocks", cubrix + "/blocks/keep.block"})
                QCOMPARE(lchown(QFile::encodeName(path).constData(), 65534, 65534), 0);
        }
        const QStringList before = treeOf(root.path());

        WorkingFolder folder(root.path());
        (void)folder.createWorkingFolders();
        QCOMPARE(folder.workingFolder(), root.filePath("Cubrix-2"));
        QVERIFY(isRealFolder(folder.blocksFolder()));
        folder.clearWorkingFolders();
        folder.removeWorkingFolders();
        QCOMPARE(treeOf(root.path()), before);
    }

    void removeDeletesEverything()
    {
        QTemporaryDir root;
        WorkingFolder folder(root.path());
        (void)folder.createWorkingFolders();
        populate(folder);
        folder.removeWorkingFolders();
        QVERIFY(entries(root.path()).isEmpty()); // the lock file too
        // Removing twice, or clearing afterwards, does nothing and does not crash.
        folder.removeWorkingFolders();
        folder.clearWorkingFolders();
        QVERIFY(entries(root.path()).isEmpty());
        // The editor can make its folder again (a later load).
        (void)folder.createWorkingFolders();
        QVERIFY(isRealFolder(folder.blocksFolder()));
        // A root that does not exist: nothing is made and nothing crashes.
        WorkingFolder missing(root.filePath("no/such/root"));
        (void)missing.createWorkingFolders();
        missing.clearWorkingFolders();
        missing.removeWorkingFolders();
        QVERIFY(!QFileInfo::exists(root.filePath("no")));
    }
};

QTEST_GUILESS_MAIN(TestWorkingFolder)
#include "test_working_folder.moc"
