#pragma once

#include "storage/PackedEntry.h"
#include "storage/PlatformFile.h"
#include "storage/Result.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

class PackedEntries;

// Shrink without losing a pixel, over an unpacked blockset: every JPEG and GIF
// rewritten losslessly where that makes it smaller (or makes Rover read it;
// optimizeJpeg and optimizeGif keep any texture whose pixels would change),
// then every entry packed with libdeflate's strongest level, or stored where
// deflating does not pay. An entry that would not get smaller keeps the
// bytes the next save writes for it now.

struct ShrinkItem {
    QString path;          // in the archive
    qint64 sizeBefore = 0; // the file's bytes
    qint64 sizeAfter = 0;
    qint64 before = 0; // its bytes in the archive as the next save writes them now
    qint64 after = 0;  // ... after Shrink
    QString note;      // what was done, or why the entry is kept

    bool changed() const { return after != before || sizeAfter != sizeBefore; }
};

struct ShrinkPlan {
    struct Step {
        ShrinkItem item;
        PlatformFile::FileStamp stamp; // the file the step was worked out from
        bool rewrite = false;          // the file's bytes become `content`
        bool byContent = false;        // the style, which the next save writes anew
        QByteArray content;
        PackedEntry packed; // the entry after Shrink
    };
    QList<Step> steps;
    QStringList emptyFolders; // folder entries of the archive

    QList<ShrinkItem> items() const;
    qint64 before() const;
    qint64 after() const;
    bool changesAnything() const;
    // The archive's bytes, headers and directory included, now and after Shrink.
    qint64 archiveBefore() const;
    qint64 archiveAfter() const;
};

// Works Shrink out for the files below `folder`, changing nothing. `styleName`
// and `style` are the style file the next save writes, in place of a file of
// that name (ignoring case).
ShrinkPlan planShrink(const QString &folder, PackedEntries &packed, const QString &styleName, const QByteArray &style);
// Writes the rewritten files (each whole, a new file renamed over the old one)
// and gives `packed` the new entries. Stops at a file that cannot be written,
// with the files before it done.
Result applyShrink(const ShrinkPlan &plan, const QString &folder, PackedEntries &packed);
