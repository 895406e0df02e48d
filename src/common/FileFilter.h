#pragma once

#include <QList>
#include <QString>
#include <QStringList>

// One entry of a file dialog's filter: the label the user sees and the name
// patterns it selects ("*.gif", "*.jpg").
struct FileFilterEntry {
    QString label;
    QStringList patterns;
    bool operator==(const FileFilterEntry &) const = default;
};

// The program's compact filter texts: label and patterns alternate, separated
// by commas; several patterns of one entry are separated by semicolons, e.g.
// "All supported Images (*.gif;*.jpg),*.gif;*.jpg,GIF images (*.gif),*.gif".
class FileFilter {
public:
    // The entries in order; the first is the one a dialog preselects. "" gives none;
    // a trailing label without patterns is dropped.
    static QList<FileFilterEntry> parse(const QString &filter);

    // Name filters for QFileDialog, one per entry, in the same order (see the .cpp
    // for how labels and patterns are kept apart). Use them with the dialog
    // option QFileDialog::HideNameFilterDetails so the dialog shows the labels
    // exactly as written.
    static QStringList qtNameFilters(const QList<FileFilterEntry> &entries);

    // Whether a file name matches a pattern as a Windows file dialog or directory
    // listing matches it: "*" any run of characters, "?" one character, letters
    // compared without case, and a final ".*" also taking names without a dot
    // there ("*.*" matches every name).
    static bool matches(const QString &pattern, const QString &fileName);
    static bool matches(const FileFilterEntry &entry, const QString &fileName);
};
