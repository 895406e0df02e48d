#pragma once

#include "storage/PlatformFile.h"
#include "storage/Result.h"

#include <QString>

// The editor's private folder in which the open blockset lies unpacked, with its
// blocks, textures and sounds sub-folders. Created owner-only; a folder owned by
// someone else, or a link, is never used or cleared. A lock file beside it keeps a
// second running editor from clearing the first one's files: that one gets a
// folder of its own (PlatformFile::Lock, which ends with the process that holds it).
class WorkingFolder {
public:
    // $Temp if set, else $TMPDIR, else /tmp (on Windows the system's temporary folder).
    static QString tempRoot();

    explicit WorkingFolder(const QString &root = tempRoot());
    ~WorkingFolder(); // releases the lock, leaves the folder
    WorkingFolder(const WorkingFolder &) = delete;
    WorkingFolder &operator=(const WorkingFolder &) = delete;

    // createWorkingFolders: makes the four folders and takes the lock; fails,
    // naming the folder for temporary files, when no working folder can be made.
    Result createWorkingFolders();
    // Deletes every file in blocks, textures, sounds, then in the working folder
    // itself, and every other sub-folder, so nothing of one blockset leaks into the
    // next one's archive. Links are removed, never followed.
    void clearWorkingFolders();
    // clearWorkingFolders, then removes the four folders; releases the lock.
    void removeWorkingFolders();

    QString workingFolder() const;
    // Beside the working folder (never inside: everything inside is packed): the
    // record of the open blockset's unsaved state, for recovery after a crash.
    QString sessionPath() const;
    // Whether the folder held files when this editor took it: what a Cubrix that
    // ended without closing left behind.
    bool hadLeftover() const { return m_leftover; }
    QString blocksFolder() const;
    QString texturesFolder() const;
    QString soundsFolder() const;

private:
    bool claim(const QString &folder);
    bool takeLock(const QString &lockPath);
    void dropLock(bool removeFile);
    bool holdsLock() const;
    bool openFolder(PlatformFile::Folder &folder) const;
    void makeItemFolders(const PlatformFile::Folder &folder) const;

    QString m_root;
    QString m_folder;
    QString m_lockPath;
    PlatformFile::Lock m_lock;
    bool m_leftover = false;
};
