#pragma once

#include <QList>
#include <QString>

// One thing Rover's reader reports about a file: an error makes Rover reject
// the whole file, a warning is only logged (Rover takes a default or skips the
// one item). Lines count from 1; 0 means the file as a whole.
struct RoverFinding {
    enum Severity { Error, Warning };
    Severity severity = Error;
    int line = 0;
    QString text;

    bool operator==(const RoverFinding &) const = default;
};

using RoverFindings = QList<RoverFinding>;

// True when any finding is an error, i.e. Rover would not use the file.
bool hasRoverError(const RoverFindings &findings);
