#pragma once

// Shared set-up of the blockset document tests: settings in a hive file, a
// working folder under a temporary root, scripted prompts, a view that records
// what the document shows, and fixture archives written with the project's
// own Archive class.

#include "app/Archive.h"
#include "app/BlocksetDocument.h"
#include "app/DocumentView.h"
#include "app/InterfaceState.h"
#include "app/WorkingFolder.h"
#include "common/Cp1252.h"
#include "common/HiveRegistry.h"
#include "common/RegistryWrapper.h"
#include "support/ScriptedPrompts.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QTemporaryDir>
#include <QTest>

// Relative path inside a blockset ("blocks/wall.block") → file bytes.
using FileMap = QMap<QString, QByteArray>;

// Text as a blockset file holds it: Windows-1252 with CR LF line ends.
inline QByteArray dosText(const QString &text)
{
    QString out = text;
    out.replace(QStringLiteral("\n"), QStringLiteral("\r\n"));
    return toCp1252(out);
}

inline QByteArray blockFile(const QString &name, const QString &type = QString(), const QString &bspRoot = QString())
{
    QString text = QStringLiteral("<block name=\"%1\"").arg(name);
    if (!type.isEmpty())
        text += QStringLiteral(" type=\"%1\"").arg(type);
    text += QStringLiteral(">\n<vertices>\n<vertex ref=\"1\" coords=\"(0,0,0)\"/>\n</vertices>\n");
    if (!bspRoot.isEmpty())
        text += QStringLiteral("<BSP_TREE root=\"%1\">\n<node polygon=\"1\"/>\n</BSP_TREE>\n").arg(bspRoot);
    text += QStringLiteral("</block>\n");
    return dosText(text);
}

inline bool writeFile(const QString &path, const QByteArray &bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return false;
    return file.write(bytes) == bytes.size();
}

inline QByteArray readFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QByteArray();
    return file.readAll();
}

// Every file below `folder`, by "/"-separated relative path.
inline FileMap filesBelow(const QString &folder)
{
    FileMap files;
    const QDir base(folder);
    QDirIterator it(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        files.insert(base.relativeFilePath(path), readFile(path));
    }
    return files;
}

// Packs `files` into the archive `archivePath` the way the editor packs a
// working folder.
inline bool writeBset(const QString &archivePath, const FileMap &files)
{
    QTemporaryDir staging;
    if (!staging.isValid())
        return false;
    for (auto it = files.cbegin(); it != files.cend(); ++it) {
        if (!writeFile(staging.filePath(it.key()), it.value()))
            return false;
    }
    Archive archive;
    return archive.newArchive(archivePath) && archive.addFiles(staging.path(), true) && archive.writeArchive();
}

// What an archive holds, unpacked with the project's Archive class.
inline FileMap readBset(const QString &archivePath)
{
    QTemporaryDir target;
    Archive archive;
    if (!target.isValid() || !archive.openArchive(archivePath) || !archive.extractAll(target.path()))
        return FileMap();
    return filesBelow(target.path());
}

// Records what the document shows while a command runs.
class RecordingView : public DocumentView {
public:
    void processShown(const QString &text) override { processTexts.append(text); }
    void setBusy(bool busy) override { busyCalls.append(busy); }
    void viewReset() override { ++resets; }
    void checkInterface() override { ++checkInterfaceCalls; }

    void clear()
    {
        processTexts.clear();
        busyCalls.clear();
        resets = 0;
        checkInterfaceCalls = 0;
    }

    QStringList processTexts;
    QList<bool> busyCalls;
    int resets = 0;
    int checkInterfaceCalls = 0;
};

inline QString makeFolder(const QString &path)
{
    QDir().mkpath(path);
    return path;
}

// One editor's worth of document: settings with their defaults, a working
// folder below a private temporary root, scripted prompts and a recording view.
struct DocumentEnv {
    QTemporaryDir dir;
    HiveRegistry registry{dir.filePath(QStringLiteral("registry.reg"))};
    RegistryWrapper settings{registry};
    WorkingFolder folder{makeFolder(dir.filePath(QStringLiteral("temp")))};
    ScriptedPrompts prompts;
    RecordingView view;
    BlocksetDocument document{prompts, settings, folder};
    QString sets = makeFolder(dir.filePath(QStringLiteral("sets")));

    DocumentEnv()
    {
        settings.loadSettings();
        folder.createWorkingFolders();
        document.setView(&view);
    }

    QString setPath(const QString &fileName) const { return sets + QLatin1Char('/') + fileName; }

    // Writes an archive into the blocksets folder and returns its path.
    QString addSet(const QString &fileName, const FileMap &files) const
    {
        const QString path = setPath(fileName);
        if (!writeBset(path, files))
            qWarning("could not write fixture archive %s", qPrintable(path));
        return path;
    }

    QString working(const QString &relative) const { return folder.workingFolder() + QLatin1Char('/') + relative; }

    // Opens `path` as a file handed in by a caller (no dialog).
    void open(const QString &path) { document.openBlockset(path); }

    void setOption(const char *name, bool on) { settings.setBoolSetting(QString::fromLatin1(name), on); }
    bool option(const char *name) { return settings.getBoolSetting(QString::fromLatin1(name)); }
    QString pathSetting() { return settings.getStringSetting(QStringLiteral("pathBlockset")); }
};

// A small, complete blockset: three blocks, two textures, one sound, a style
// file with every value, and nothing else.
inline FileMap castleFiles(const QString &styleName = QStringLiteral("Castle.style"))
{
    FileMap files;
    files.insert(styleName,
                 dosText(QStringLiteral(
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
                     "</style>\n")));
    files.insert(QStringLiteral("blocks/wall.block"), blockFile(QStringLiteral("Wall"), QStringLiteral("Structural"),
                                                                QStringLiteral("5")));
    files.insert(QStringLiteral("blocks/door.block"), blockFile(QStringLiteral("Door"), QString(), QStringLiteral("0")));
    files.insert(QStringLiteral("blocks/tree.block"), blockFile(QStringLiteral("Tree"), QStringLiteral("sprite"),
                                                                QStringLiteral("3")));
    files.insert(QStringLiteral("textures/brick.gif"), QByteArray(1234, 'g'));
    files.insert(QStringLiteral("textures/clouds.jpg"), QByteArray(20, 'j'));
    files.insert(QStringLiteral("sounds/wind.wav"), QByteArray(1234567, 'w'));
    return files;
}

inline QStringList fileColumn(const QList<BlockRow> &rows)
{
    QStringList names;
    for (const BlockRow &row : rows)
        names.append(row.file);
    return names;
}

inline QStringList fileColumn(const QList<ItemRow> &rows)
{
    QStringList names;
    for (const ItemRow &row : rows)
        names.append(row.file);
    return names;
}
