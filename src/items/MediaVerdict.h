#pragma once

#include "items/ItemKind.h"

#include <QByteArrayView>
#include <QString>

class OperationHost;

// Whether Rover can use a texture or a sound file of the blockset, from its
// bytes (roverTextureInfo, roverSoundInfo), in the words the lists, Add and
// `check` use alike.
struct MediaVerdict {
    bool usable = true;
    bool undefined = false; // a four-channel JPEG: what Rover does with it is undefined
    QString reason;         // why not, "" when usable

    bool operator==(const MediaVerdict &) const = default;
};

// The verdict for a file of the list `kind` (textures and sounds; a block is always usable).
MediaVerdict mediaVerdict(ItemKind kind, QByteArrayView bytes);
// For an entry of the archive by its folder ("textures/...", "sounds/..."); other entries are usable.
MediaVerdict entryVerdict(const QString &entryPath, QByteArrayView bytes);
// One line for a list row's tooltip: "Rover cannot use this texture: ...".
QString mediaVerdictLine(ItemKind kind, const MediaVerdict &verdict);

// Add's warning (with showWarnings on) about a file it added that Rover cannot use.
void warnUnusableMedia(OperationHost &host, ItemKind kind, const QString &file, QByteArrayView bytes);
