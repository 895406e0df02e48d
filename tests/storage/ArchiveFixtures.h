#pragma once

// Archives for the storage tests: folders as trees of files, and archives
// written entry by entry, hostile names included.

#include "storage/ArchiveReader.h"
#include "storage/ArchiveWriter.h"
#include "support/TestFiles.h"

#include <QDirIterator>
#include <QMap>
#include <QProcess>
#include <QRandomGenerator>
#include <QSet>
#include <QtTest>

#include <zip.h>

#include <sys/stat.h>

using namespace Qt::StringLiterals;

using Tree = QMap<QString, QByteArray>; // relative path -> content

inline QByteArray randomBytes(qsizetype size, quint32 seed)
{
    QByteArray data(size, Qt::Uninitialized);
    QRandomGenerator(seed).fillRange(reinterpret_cast<quint32 *>(data.data()), size / 4);
    return data;
}

inline void makeTree(const QString &root, const Tree &tree)
{
    for (auto it = tree.begin(); it != tree.end(); ++it)
        writeBytes(root + u'/' + it.key(), it.value());
}

// Every file and link below `root` (links not followed), with its content.
inline Tree treeOf(const QString &root)
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

inline QStringList folderEntries(const QString &folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
}

inline bool pack(const QString &folder, const QString &target)
{
    ArchiveWriter archive(target);
    return archive.addFolder(folder) && archive.write();
}

inline bool unpack(const QString &archivePath, const QString &folder)
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
inline void writeRawArchive(const QString &path, const QList<RawEntry> &entries)
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
inline Tree blocksetTree()
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

inline bool runQuietly(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.start(program, arguments);
    return process.waitForFinished(30000) && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}
