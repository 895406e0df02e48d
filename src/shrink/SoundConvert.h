#pragma once

#include "shrink/ShrinkResult.h"

// What a converted sound becomes. Rover plays 8- and 16-bit PCM at 11,025,
// 22,050 or 44,100 Hz safely.
struct SoundTarget {
    bool mono = true;       // channels mixed down to one
    int sampleRate = 22050; // 0 keeps the sound's own rate
    int bitsPerSample = 8;  // 8 or 16
};

// Lossy: a WAV of plain or extensible PCM (8, 16, 24 or 32 bits) or 32/64-bit
// floating point, mixed down and resampled (libsoxr) and written as a plain
// PCM WAV (format tag 1) with only its fmt and data chunks, which Rover plays.
// The result replaces the input even when it is not smaller, since it can make
// an unplayable sound playable; kept only when the input cannot be read.
ShrinkResult convertSound(QByteArrayView bytes, const SoundTarget &target = {});
