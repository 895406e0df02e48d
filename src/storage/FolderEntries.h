#pragma once

#include <QHash>
#include <QString>

// Finds the files of an unpacked blockset by their archive entry names
// ("textures/Stone.GIF", "blocks/sub/wall.block"), comparing every name
// ignoring the case of ASCII letters as Rover's archive look-up does on
// Windows, where blocksets come from; an exact name is taken first. "\" counts
// as a folder separator, as on extraction. Each folder is listed once, when a
// name in it is first asked for; make a new object to see later changes.
class FolderEntries {
public:
    explicit FolderEntries(QString folder);

    // The file's path, or "" when the folder holds no file of that entry name.
    QString path(const QString &entry);

    // `name` with ASCII letters in lower case, nothing else changed.
    static QString foldedCase(const QString &name);

private:
    // Lower-cased name -> the name on disk, for the files and folders of one folder.
    using Listing = QHash<QString, QString>;
    const Listing &listing(const QString &folder);

    QString m_folder;
    QHash<QString, Listing> m_listings; // folder path on disk -> its listing
};
