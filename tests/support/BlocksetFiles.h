#pragma once

// Blockset files for tests: texts as a blockset holds them (Windows-1252, CR LF),
// whole-file writes, and archives packed and unpacked with the
// project's own Archive class. Tests that include this link the app core.

#include "storage/ArchiveReader.h"
#include "storage/ArchiveWriter.h"
#include "storage/Cp1252.h"
#include "support/TestFiles.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QTemporaryDir>

// Relative path inside a blockset ("blocks/wall.block") → file bytes.
using FileMap = QMap<QString, QByteArray>;

// Text as a blockset file holds it: Windows-1252 with CR LF line ends.
inline QByteArray dosText(QString text)
{
    return toCp1252(text.replace(QStringLiteral("\n"), QStringLiteral("\r\n")));
}

inline QByteArray styleFile(const QString &name, const QString &body = QString())
{
    return dosText(QStringLiteral("<style name=\"%1\">\n%2</style>\n").arg(name, body));
}

inline QByteArray updateFileText(const QString &version, const QString &comment, qint64 size)
{
    return dosText(
        QStringLiteral("<version id=\"%1\" size=\"%2\">\n%3\n</version>\n").arg(version).arg(size).arg(comment));
}

inline QByteArray blockFile(const QString &name, const QString &type = QString(), const QString &bspRoot = QString())
{
    QString text = QStringLiteral("<block name=\"%1\"").arg(name);
    if (!type.isEmpty())
        text += QStringLiteral(" type=\"%1\"").arg(type);
    text += QStringLiteral(">\n<vertices>\n<vertex ref=\"1\" coords=\"(0,0,0)\"/>\n</vertices>\n");
    if (!bspRoot.isEmpty())
        text += QStringLiteral("<BSP_TREE root=\"%1\">\n<node polygon=\"1\"/>\n</BSP_TREE>\n").arg(bspRoot);
    return dosText(text + QStringLiteral("</block>\n"));
}

inline bool writeFile(const QString &path, const QByteArray &bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(bytes) == bytes.size();
}

// Every file below `folder`, by "/"-separated relative path.
inline FileMap filesBelow(const QString &folder)
{
    FileMap files;
    QDirIterator it(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        files.insert(QDir(folder).relativeFilePath(path), readBytes(path));
    }
    return files;
}

// Packs `files` into `archivePath` the way the editor packs a working folder.
inline bool writeBset(const QString &archivePath, const FileMap &files)
{
    QTemporaryDir staging;
    for (auto it = files.cbegin(); it != files.cend(); ++it) {
        if (!writeFile(staging.filePath(it.key()), it.value()))
            return false;
    }
    ArchiveWriter archive(archivePath);
    return archive.addFolder(staging.path()) && archive.write();
}

// What an archive holds, unpacked with the project's Archive class.
inline FileMap readBset(const QString &archivePath)
{
    QTemporaryDir target;
    ArchiveReader archive;
    if (!archive.open(archivePath) || !archive.extractAll(target.path()))
        return FileMap();
    return filesBelow(target.path());
}

// A small, complete blockset: three blocks, two textures, one sound, a style
// file with every value, and nothing else.
inline FileMap castleFiles(const QString &styleName = QStringLiteral("Castle.style"))
{
    return {
        {styleName, dosText(QStringLiteral(
                        "<style version=\"1.2\" name=\"Castle\" synopsis=\"Stone walls\" author=\"A. Builder\" "
                        "copyright=\"free\">\n"
                        "<generator app=\"Cubrix\" version=\"0.9 Beta 1\"/>\n\n"
                        "<placeholder texture=\"brick.gif\"/>\n"
                        "<sky texture=\"clouds.jpg\" color=\"(0,0,255)\" brightness=\"80%\"/>\n"
                        "<ground texture=\"brick.gif\" color=\"(0,128,0)\"/>\n"
                        "<orb texture=\"clouds.jpg\" color=\"(255,255,255)\" brightness=\"100%\" position=\"(45,30)\" "
                        "href=\"index.3dml\" target=\"_self\" text=\"Home\"/>\n"
                        "<block symbol=\"a\" double=\".a\" file=\"wall.block\"/>\n"
                        "<block symbol=\"b\" double=\".b\" file=\"door.block\"/>\n"
                        "<block symbol=\"t\" double=\".t\" file=\"tree.block\"/>\n\n"
                        "</style>\n"))},
        {QStringLiteral("blocks/wall.block"),
         blockFile(QStringLiteral("Wall"), QStringLiteral("Structural"), QStringLiteral("5"))},
        {QStringLiteral("blocks/door.block"), blockFile(QStringLiteral("Door"), QString(), QStringLiteral("0"))},
        {QStringLiteral("blocks/tree.block"),
         blockFile(QStringLiteral("Tree"), QStringLiteral("sprite"), QStringLiteral("3"))},
        {QStringLiteral("textures/brick.gif"), QByteArray(1234, 'g')},
        {QStringLiteral("textures/clouds.jpg"), QByteArray(20, 'j')},
        {QStringLiteral("sounds/wind.wav"), QByteArray(1234567, 'w')},
    };
}
