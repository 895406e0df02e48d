#include "app/MediaFilesCheck.h"

#include "items/MediaVerdict.h"
#include "rover/RoverBlockCheck.h"
#include "rover/RoverBlockReader.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QHash>

using namespace Qt::StringLiterals;

namespace {

// Files below `folder`/`sub`, by their path in the archive ("textures/a/b.gif"), sorted.
QStringList filesBelow(const QString &folder, const QString &sub)
{
    QStringList paths;
    QDirIterator it(folder + u'/' + sub, QDir::Files | QDir::Hidden | QDir::NoSymLinks, QDirIterator::Subdirectories);
    const QDir root(folder);
    while (it.hasNext())
        paths.append(root.relativeFilePath(it.next()));
    paths.sort();
    return paths;
}

QByteArray readAll(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Entry names meet ignoring ASCII case, as in Rover's archive look-up.
QString key(const QString &entry)
{
    QString lower = entry;
    for (QChar &c : lower) {
        if (c.unicode() < 0x80)
            c = c.toLower();
    }
    return lower;
}

// Who names each texture and sound: textures by part, sounds by block.
QHash<QString, QStringList> usersOfMedia(const QString &folder)
{
    QHash<QString, QStringList> users;
    for (const QString &path : filesBelow(folder, u"blocks"_s)) {
        const QString blockFile = path.mid(int(qstrlen("blocks/")));
        const RoverBlockFile read = readRoverBlock(readAll(folder + u'/' + path));
        for (const RoverBlockPart &part : read.block.parts) {
            if (part.texture.isEmpty())
                continue;
            const QString user = part.name.isEmpty() ? blockFile + u", a part without a name"_s
                                                     : blockFile + u", part \""_s + part.name + u'"';
            QStringList &list = users[key(roverMediaEntry(u"textures/"_s, part.texture))];
            if (!list.contains(user))
                list.append(user);
        }
        if (read.block.sound.present && !read.block.sound.file.isEmpty()) {
            QStringList &list = users[key(roverMediaEntry(u"sounds/"_s, read.block.sound.file))];
            if (!list.contains(blockFile))
                list.append(blockFile);
        }
    }
    return users;
}

} // namespace

QString MediaProblem::text() const
{
    const QString used = users.join(u"; "_s);
    if (sound) {
        return u"Rover plays nothing for this sound (%1); "_s.arg(reason)
               + (users.isEmpty() ? u"no block uses it yet"_s : u"used by "_s + used);
    }
    if (error) {
        return u"Rover cannot use this texture (%1): what it does with it is undefined; "_s.arg(reason)
               + (users.isEmpty() ? u"no part uses it yet"_s : u"used by "_s + used);
    }
    return u"Rover cannot use this texture (%1)"_s.arg(reason)
           + (users.isEmpty() ? u"; no part uses it yet"_s : u": it draws these parts untextured: "_s + used);
}

QList<MediaProblem> findMediaProblems(const QString &folder)
{
    QList<MediaProblem> problems;
    QHash<QString, QStringList> users;
    bool usersRead = false;
    for (const QString &sub : {u"textures"_s, u"sounds"_s}) {
        for (const QString &path : filesBelow(folder, sub)) {
            const MediaVerdict verdict = entryVerdict(path, readAll(folder + u'/' + path));
            if (verdict.usable)
                continue;
            if (!usersRead) {
                users = usersOfMedia(folder);
                usersRead = true;
            }
            problems.append({path, verdict.undefined, sub == "sounds"_L1, verdict.reason, users.value(key(path))});
        }
    }
    return problems;
}
