#pragma once

#include "cache/CacheIndex.h"
#include "cache/CacheRow.h"
#include "storage/PlatformFile.h"

#include <QList>
#include <QString>

#include <functional>

class Prompts;
class RegistryWrapper;
class RoverMachine;

// The cache manager's state and commands without a window: the browser choice,
// the cache folder, the list of cached blocksets and what the status bar says.
// The window (frmManager) and cubrix-cli cache both drive it.
class CacheManager {
public:
    enum class Browser { None, InternetExplorer, Netscape };
    // List columns, in the window's order.
    enum Column {
        FileName,
        Path,
        Version,
        Size,
        LastUpdated,
        Name,
        Synopsis,
        Author,
        Copyright,
        Blocks,
        Textures,
        Sounds,
        ColumnCount
    };

    CacheManager(RoverMachine &machine, Prompts &prompts, RegistryWrapper &settings);

    // Looks Rover up: Netscape first, then Internet Explorer, which wins when both
    // are found; then fills the list.
    void load();
    // Switches to the browser's cache and fills the list again; nothing when it
    // is already chosen.
    void chooseBrowser(Browser browser);
    Browser browser() const { return m_browser; }
    bool ieFound() const { return !m_ieFolder.isEmpty(); }
    bool netscapeFound() const { return !m_netscapeFolder.isEmpty(); }
    // The cache folder as a host path; "" when Rover was not found.
    QString cacheFolder() const { return m_cacheFolder; }

    // Walks the cache folder for "*.bset" files, reads each archive's directory
    // and style, then the index, and looks whether Rover runs. `checking` hears
    // each folder as it is walked.
    void fill();
    void setProgress(std::function<void(const QString &)> checking) { m_checking = std::move(checking); }

    const QList<CacheRow> &rows() const { return m_rows; }
    // The text of a list cell.
    static QString cellText(const CacheRow &row, int column);
    // Sorts by a column: texts ignoring case, sizes, counts and times by value.
    void sort(int column, bool ascending);

    // Host path of the row's file.
    QString fullPath(int row) const;
    // Asks (when showWarnings is on), takes the file's elements out of the index
    // as it is on disk now, then deletes the file (putting the index back when
    // that fails), and fills the list again. False when nothing was removed.
    bool remove(int row);
    // Sets UPDATED to 0 in the file's elements of the index as it is on disk now,
    // so that Rover checks the blockset for an update at its next use, and fills
    // the list again.
    bool forceDownload(int row);
    // Neither changes anything while Rover runs: it would write its own list
    // over the change.

    // Looks again whether a program with Rover's plug-in loaded runs (the
    // plug-in of the chosen browser's registration).
    void checkRover();
    // That program's name ("iexplore.exe"); "" when Rover does not run.
    QString roverProgram() const { return m_roverProgram; }
    // What the manager says of parts of the index Rover would reject.
    const QStringList &indexNotes() const { return m_indexNotes; }

    // Status bar panels.
    QString blocksetsText() const;
    QString sizeText() const;
    QString selectedSizeText(int row) const;
    QString processText() const { return m_process; }
    static QString sizeInUnits(qint64 bytes);

private:
    // The "*.bset" files below `folder` (only their names); `progress`: the
    // checking callback hears each folder.
    void walk(const QString &folder, const QString &relative, bool progress, QList<CacheRow> &rows);
    void walk(const PlatformFile::Folder &dir, const QString &folder, const QString &relative, bool progress,
              QList<CacheRow> &rows);
    // Each row's size and what its archive tells.
    void readArchives();
    void sortByFolder();
    void updateProcessText();
    bool refuseWhileRoverRuns();
    // Makes the change to the index on disk; `before` keeps the old index when
    // it was written over. False (after saying why) when it could not be written.
    bool changeIndex(const CacheRow &target, CacheIndexChange change, QByteArray &before);
    QString indexPath() const;

    RoverMachine &m_machine;
    Prompts &m_prompts;
    RegistryWrapper &m_settings;
    std::function<void(const QString &)> m_checking;
    Browser m_browser = Browser::None;
    QString m_ieFolder; // the lookups' Windows paths
    QString m_netscapeFolder;
    QString m_cacheFolder;
    QString m_pluginFile; // host path
    QString m_roverProgram;
    QString m_process;
    QStringList m_indexNotes;
    QList<CacheRow> m_rows;
};
