#pragma once

#include "rover/RoverFinding.h"
#include "rover/RoverMedia.h"

#include <QByteArrayView>
#include <QString>

#include <functional>
#include <optional>

// The archive entry Rover opens for a part's texture or a sound file:
// `folder` ("textures/" or "sounds/") followed by the value as written, or the
// value alone when it starts like an absolute path or a URL (`/`, `\`, a drive
// letter and `:`, `http:`, `file:`, ...), which no archive entry matches.
QString roverMediaEntry(const QString &folder, const QString &value);
// True for the values roverMediaEntry takes whole.
bool isRoverAbsoluteName(const QString &value);

// What the blockset holds under a texture entry name, nothing when it has no
// such entry. Entry names compare ignoring ASCII case, as Rover's archive
// look-up does on Windows.
using RoverTextureLookup = std::function<std::optional<RoverTextureInfo>(const QString &entry)>;

// Whether a sound entry is there and Rover can play it; when not, why
// ("not in the blockset", "not plain PCM ...").
struct RoverSoundEntry {
    bool usable = false;
    QString reason;
};
using RoverSoundLookup = std::function<RoverSoundEntry(const QString &entry)>;

// Everything that can be said about one block file of a blockset, as Rover
// would meet it with its sound on: the reader's errors and warnings; then, when
// Rover would load the block, its textures (missing, not GIF or JPEG, too large,
// `@` names, and a four-channel JPEG, which is an error: Rover's behaviour is
// undefined), its sound (`@` names, missing or unplayable, rolloff), a part
// with a stream but no texture, and a structural block that Rover draws without
// a BSP tree. `fileName` is the block file's name in the archive.
RoverFindings checkRoverBlock(QByteArrayView bytes, const QString &fileName, const RoverTextureLookup &textures,
                              const RoverSoundLookup &sounds);
