#pragma once

#include <QByteArray>
#include <QString>

#include <functional>
#include <optional>

class ArchiveReader;

// Reads one entry of a blockset by its archive name ("blocks/wall.block",
// "textures/Stone.gif"), with names compared ignoring ASCII case as Rover's
// look-up does on Windows; nothing when the blockset has no such entry or it
// cannot be read.
using BlocksetEntries = std::function<std::optional<QByteArray>(const QString &entry)>;

// The entries of a blockset unpacked in `folder` (the editor's working
// folder). The folder's listings are read once per returned function, so one
// function serves one thread at a time.
BlocksetEntries folderEntries(const QString &folder);

// The entries of an open archive, which must stay open while the function is used.
BlocksetEntries archiveEntries(ArchiveReader &archive);
