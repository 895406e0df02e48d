#pragma once

#include <QByteArray>
#include <QString>

#include <vector>

// How the names of a blockset's entries are stored and read back. Rover finds an
// entry by comparing the Windows-1252 bytes of a name from the style with the
// stored bytes (ignoring the case of ASCII letters) and knows nothing of the ZIP
// UTF-8 flag. So Cubrix stores names as Windows-1252 bytes without the flag, and
// reads a name without the flag as Windows-1252; names other tools flagged as
// UTF-8 still read as UTF-8.
namespace ArchiveEntryNames {

// The entry's name from its stored bytes.
QString decode(const QByteArray &stored, bool utf8Flag);
// The bytes to store for `name`; `utf8Flag` tells whether they are UTF-8 (a name
// Windows-1252 cannot hold, kept whole rather than lost).
QByteArray encode(const QString &name, bool &utf8Flag);

// Splits a name into the folder components it may be written to (file-system
// bytes). "\" is a separator too (old Windows tools wrote such names). False for
// a name that must not be written at all: absolute, with a drive letter, with a
// ".." component, a part the system reads as something else, or too deep.
bool split(const QByteArray &name, std::vector<QByteArray> &parts, bool &isFolder);

// Entry names deeper than this are not blockset content; they are skipped on
// extraction and refused on packing, which keeps every folder walk bounded.
constexpr int kMaxDepth = 64;

} // namespace ArchiveEntryNames
