#pragma once

#include <QByteArray>
#include <QHash>

#include <vector>

// Where the entries of an archive land below the extraction folder, with names
// meeting as on Windows, where the format comes from: ignoring case. The entries
// of one folder written in several cases ("Blocks/", "blocks/") land in the one
// folder, named as first met; the item folders (blocks, textures, sounds) always
// in the lower case the editor lays them out in. File names keep their case; of
// two files whose names differ only in case, the later entry wins.
class ArchivePaths {
public:
    // Rewrites the folder components of `parts` (all of them when `isFolder`, else
    // all but the last) to the names in use. For a file, returns the name of an
    // earlier file of the same folder that differs from the last part only in
    // case, which the caller removes; else "".
    QByteArray place(std::vector<QByteArray> &parts, bool isFolder);

    // `name` without "./" components: "./blocks/./a.block" is "blocks/a.block".
    static QByteArray normalised(const QByteArray &name);
    // Whether `name`, a top-level folder, is one of the editor's item folders
    // whatever its case.
    static bool isItemFolder(const QByteArray &name);

private:
    QHash<QString, QByteArray> m_folders; // case-folded relative path -> its name in use
    QHash<QString, QByteArray> m_files;   // case-folded relative path -> the file's last name
};
