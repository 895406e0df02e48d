#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

// The most pixels a rewrite decodes (all frames of a GIF together): larger
// images are refused before any buffer is allocated, so that a hostile header
// cannot make a rewrite take gigabytes.
constexpr qint64 maxRewritePixels = qint64(16) * 1024 * 1024;

// What one rewrite of a texture or sound gives: the bytes to store (the new
// ones, or the input unchanged), the sizes before and after, and when the
// input was kept, why.
struct ShrinkResult {
    QByteArray bytes;
    qint64 before = 0;
    qint64 after = 0;
    bool changed = false;
    QString reason; // why the input was kept ("a frame uses more than 256 colours"); "" when changed

    qint64 saved() const { return before - after; }

    // The input, kept for the given reason.
    static ShrinkResult kept(QByteArrayView input, const QString &reason);
    // The rewritten bytes in place of the input.
    static ShrinkResult replaced(QByteArrayView input, const QByteArray &output);
};
