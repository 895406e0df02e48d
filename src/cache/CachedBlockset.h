#pragma once

#include "cache/CacheRow.h"

#include <QString>

// Reads what the manager shows of one cached blockset file at host path `path`:
// its items counted by extension from the archive's directory (".block" blocks,
// ".gif"/".jpg" textures, ".wav" sounds) and the five header values of the
// style entry named like the blockset. Only the directory and the style entry
// are read, and the file's size. A file that is no readable archive leaves
// `row.readable` false and its other columns unknown.
void readCachedBlockset(const QString &path, CacheRow &row);
