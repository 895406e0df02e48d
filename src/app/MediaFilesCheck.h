#pragma once

#include <QList>
#include <QString>
#include <QStringList>

// Every texture and sound of an unpacked blockset that Rover's readers cannot
// use, once per file, with the reason and who uses it: the parts (for a
// texture) or the blocks (for a sound) whose files name it, whether or not
// any block uses it yet.
struct MediaProblem {
    QString file;       // in the archive: "textures/sky.gif"
    bool error = false; // a four-channel JPEG: undefined in Rover; else a warning
    bool sound = false;
    QString reason;
    QStringList users; // "wall.block, part \"north\"" or, for a sound, "bell.block"

    // The finding's text.
    QString text() const;
};

// `folder` is the working folder holding blocks/, textures/ and sounds/.
QList<MediaProblem> findMediaProblems(const QString &folder);
