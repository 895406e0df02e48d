#pragma once

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QString>

// Fit: the lossy steps that bring a blockset under Rover's 307,200 bytes, for
// the author to choose. Each texture and sound has a ladder of steps, from the
// least lossy on; a step's bytes are its item after it and every step before
// it on the ladder. Steps Rover needs anyway (a texture larger than 256
// pixels, which Rover refuses; a sound Rover cannot play, made plain PCM) are
// proposed always; the others as long as the blockset does not fit, least
// lossy first and, among equally lossy ones, the largest saving first.

struct FitOptions {
    int maxTexture = 256;
    QList<int> jpegQualities{75, 50}; // one step per quality
    QList<int> gifColours{64, 16};
    bool soundMono = true;
    QList<int> soundRates{22050, 11025};
    bool sound8Bit = true;
    int limit = 307200;
};

struct FitStep {
    enum Kind { ScaleTexture, PlainPcm, JpegQuality, GifColours, SoundMono, SoundRate, Sound8Bit };
    QString path; // in the archive
    Kind kind = ScaleTexture;
    QString text; // "scaled from 512×512 to 256×256 pixels"
    int rank = 0; // 0: Rover needs it; higher: lossier
    QByteArray content;
    qint64 packed = 0; // the entry's bytes after the step
    qint64 saved = 0;  // over the step before it on the item's ladder (or the item as it is)
    int previous = -1; // the step before it on the ladder
    bool chosen = false;
};

struct FitItem {
    QString path;
    QByteArray content; // as it is now
    qint64 packed = 0;  // its bytes in the archive now
};

struct FitPlan {
    qint64 sizeBefore = 0; // the archive's bytes before any step
    int limit = 307200;
    QList<FitStep> steps;

    // The archive's bytes with the chosen steps.
    qint64 sizeAfter() const;
    bool fits() const { return sizeAfter() <= limit; }
    // Chooses a step with the steps before it, or drops it with the steps after it.
    void choose(int index, bool chosen);
    // The new bytes of every item a chosen step changes.
    QMap<QString, QByteArray> chosenContents() const;
};

// `items` are the blockset's textures and sounds, `archiveSize` its bytes as
// the next save writes them.
FitPlan planFit(const QList<FitItem> &items, qint64 archiveSize, const FitOptions &options);
