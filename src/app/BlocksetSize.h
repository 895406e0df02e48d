#pragma once

#include <QList>
#include <QString>

// Rover refuses a blockset served from a web address when its file is larger
// than 307,200 bytes; only a blockset named by a file:// address may be larger.
// This holds that rule, its texts, and the breakdown of a blockset's size as
// it will be saved.
namespace BlocksetSize {

constexpr qint64 kWebLimit = 307200;

inline bool fitsWeb(qint64 bytes)
{
    return bytes <= kWebLimit;
}
// "307,200"
QString groupedBytes(qint64 bytes);
// The finding of `check` and of the message after a save: "Rover refuses this
// blockset from a web address: 421,845 bytes, at most 307,200; ...".
QString webLimitFinding(qint64 bytes);
// The status bar's text: "212 KB of 300 KB".
QString shareOfLimit(qint64 bytes);
// Rover's rule, with the blockset's size: the status bar's tooltip.
QString ruleText(qint64 bytes);
// The share of the limit in percent.
double percentOfLimit(qint64 bytes);

} // namespace BlocksetSize

// What each entry of the archive takes, as the next save will write it.
struct SavedSize {
    enum Kind { Blocks, Textures, Sounds, Style, Other };
    struct Entry {
        QString path; // in the archive ("textures/sky.gif")
        Kind kind = Other;
        qint64 size = 0;   // the file's bytes
        qint64 packed = 0; // its bytes in the archive (data only)
        qint64 total = 0;  // with its headers
        bool known = true; // false while its packed size is being worked out (the file's size stands in)
    };
    QList<Entry> entries;
    qint64 total = 0; // the archive's bytes
    bool complete = true;

    qint64 bytesOf(Kind kind) const;
    // The `count` entries taking most bytes, largest first.
    QList<Entry> largest(int count) const;
    static QString kindName(Kind kind); // "Blocks", "Textures", ...
    // The kind of an entry; `styleName` is the blockset's style file.
    static Kind kindOf(const QString &path, const QString &styleName);
};
