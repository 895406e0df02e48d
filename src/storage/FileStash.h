#pragma once

#include <QHash>
#include <QString>
#include <QStringList>

// Versions of the working folder's item files kept aside for undo and redo, in a
// folder beside the working folder (never inside it: everything inside is packed).
// A version is a second name of the file (a hard link), so keeping one costs no
// copy; where the file system has no hard links it is a copy. The editor's item
// operations never change a file in place (they write a new file and rename it
// over the old one), so a kept version stays as it was.
class FileStash {
public:
    // What identifies a file's content without reading it: a new file (a write and
    // rename, a copy) gets a new identity.
    struct Identity {
        quint64 inode = 0;
        qint64 size = -1;
        qint64 mtimeNs = 0;
        bool operator==(const Identity &) const = default;
    };
    using FolderState = QHash<QString, Identity>; // "blocks/wall.block" -> identity

    FileStash() = default;
    void setFolders(const QString &workingFolder, const QString &stashFolder);

    // The files below `subfolders` of the working folder now.
    FolderState capture(const QStringList &subfolders) const;
    // Keeps the file at `relative` aside; its name in the stash, or "" when it
    // could not be kept.
    QString keep(const QString &relative);
    // Puts the kept version `stashed` at `relative` (replacing what is there), or
    // removes the file at `relative` when `stashed` is "".
    bool put(const QString &stashed, const QString &relative) const;
    void drop(const QString &stashed) const;
    // Removes everything kept.
    void clear();

private:
    QString m_working;
    QString m_stash;
    quint64 m_next = 0;
};
