#pragma once

#include <QString>
#include <QStringList>

#include <functional>

// What the program shows first for its command line (Main_Sub).
struct StartChoice {
    // Only the cache manager window, not the editor.
    bool cacheManager = false;
    // Full path of the blockset the editor opens once it is shown; empty: none.
    QString file;
};

// Decides the start for `arguments` (the command line without the program name):
// - exactly "/c" shows the cache manager alone when `roverPluginKnown` says that
//   Rover's plug-in folder is known for Internet Explorer or Netscape Navigator
//   (asked only then), otherwise the editor;
// - one other argument that is not a switch ("/" and a letter, such as "/C" or
//   "/c ") is a blockset for the editor to open; a relative name is taken from
//   `startFolder`, so that the update file is found beside the archive and saving
//   goes back to the same file;
// - anything else (no argument, a switch, several arguments) shows the editor alone.
StartChoice chooseStart(const QStringList &arguments, const QString &startFolder,
                        const std::function<bool()> &roverPluginKnown);
