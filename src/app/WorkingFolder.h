#pragma once

#include <QString>

// The editor's private folder in which the open blockset lies unpacked, with its
// blocks, textures and sounds sub-folders. Created owner-only; a folder owned by
// someone else, or a link, is never used or cleared. A lock file beside it keeps a
// second running editor from clearing the first one's files: that one gets a
// folder of its own.
class WorkingFolder {
public:
    // $Temp if set, else $TMPDIR, else /tmp.
    static QString tempRoot();

    explicit WorkingFolder(const QString &root = tempRoot());
    ~WorkingFolder(); // releases the lock, leaves the folder

    // createWorkingFolders: makes the four folders (failures ignored) and takes the lock.
    void createWorkingFolders();
    // Deletes every file in blocks, textures, sounds, then the working folder itself.
    void clearWorkingFolders();
    // clearWorkingFolders, then removes the four folders; releases the lock.
    void removeWorkingFolders();

    QString workingFolder() const;
    QString blocksFolder() const;
    QString texturesFolder() const;
    QString soundsFolder() const;

private:
    QString m_root;
    QString m_folder;
    int m_lockFd = -1;
};
