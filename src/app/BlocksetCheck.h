#pragma once

#include "rover/RoverFinding.h"

#include <QList>
#include <QString>

class BlocksetDocument;

// What Rover will do with an opened blockset: its style and update file as
// Rover's readers take them, and what else in the blockset Rover cannot use.
struct BlocksetCheck {
    struct Finding {
        RoverFinding::Severity severity = RoverFinding::Error;
        QString file; // the file the finding is about ("" for the blockset)
        int line = 0; // 0: the file as a whole
        QString text;
    };
    QList<Finding> findings;
    bool roverLoadsBlockset = false;
    bool roverSeesUpdate = false;
    bool updateFileExists = false;
};

// Checks the blockset `document` has open (its working folder and the update
// file beside the archive). Changes nothing.
BlocksetCheck checkBlockset(BlocksetDocument &document);
