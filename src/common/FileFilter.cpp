#include "common/FileFilter.h"

using namespace Qt::StringLiterals;

// How the entries reach QFileDialog: QFileDialog takes the patterns of a name
// filter from its last parenthesised group, separated by blanks, so the label
// "All supported Images (*.gif;*.jpg)" alone would give it the single pattern
// "*.gif;*.jpg", which matches no file. Each entry therefore becomes its label
// followed by a group of its own with the patterns separated by blanks,
// "All supported Images (*.gif;*.jpg) (*.gif *.jpg)", and the dialog is run with
// HideNameFilterDetails, which strips exactly that last group from what it
// shows: the user sees the label as written and the dialog filters by the
// entry's real patterns. "*.*" becomes "*": on Windows it matches every file,
// in QFileDialog only names with a dot. A pattern holding a blank or a character
// QFileDialog does not accept in a group cannot be passed this way; the
// program's filters have none.

namespace {

QString qtPattern(const QString &pattern)
{
    return pattern == u"*.*"_s ? u"*"_s : pattern;
}

// "*" any run of characters, "?" exactly one, letters compared without case.
// Greedy matching that backs up to the last "*": never worse than pattern
// length times name length.
bool wildcardMatch(const QString &p, const QString &fileName)
{
    qsizetype pi = 0;
    qsizetype ni = 0;
    qsizetype starAt = -1;
    qsizetype starName = 0;
    while (ni < fileName.size()) {
        if (pi < p.size() && p[pi] == u'*') {
            starAt = pi++;
            starName = ni;
        } else if (pi < p.size() && (p[pi] == u'?' || p[pi].toCaseFolded() == fileName[ni].toCaseFolded())) {
            ++pi;
            ++ni;
        } else if (starAt >= 0) {
            pi = starAt + 1;
            ni = ++starName;
        } else {
            return false;
        }
    }
    while (pi < p.size() && p[pi] == u'*')
        ++pi;
    return pi == p.size();
}

} // namespace

QList<FileFilterEntry> FileFilter::parse(const QString &filter)
{
    QList<FileFilterEntry> entries;
    const QStringList fields = filter.split(u',');
    // The platform dialog reads the fields as NUL-terminated strings, and an
    // empty one ends the list; a label without its patterns is not an entry.
    for (qsizetype i = 0; i + 1 < fields.size(); i += 2) {
        const QString &label = fields[i];
        const QString &patterns = fields[i + 1];
        if (label.isEmpty() || patterns.isEmpty())
            break;
        FileFilterEntry entry;
        entry.label = label;
        for (const QString &pattern : patterns.split(u';')) {
            const QString trimmed = pattern.trimmed();
            if (!trimmed.isEmpty())
                entry.patterns.append(trimmed);
        }
        if (entry.patterns.isEmpty())
            break;
        entries.append(entry);
    }
    return entries;
}

QStringList FileFilter::qtNameFilters(const QList<FileFilterEntry> &entries)
{
    QStringList filters;
    for (const FileFilterEntry &entry : entries) {
        QStringList patterns;
        for (const QString &pattern : entry.patterns)
            patterns.append(qtPattern(pattern));
        filters.append(entry.label + u" ("_s + patterns.join(u' ') + u')');
    }
    return filters;
}

bool FileFilter::matches(const QString &pattern, const QString &fileName)
{
    // As in a Windows listing, a pattern ending in ".*" also takes names that
    // have no dot there: "*.*" is every name, "readme.*" takes "readme".
    if (pattern.endsWith(u".*"_s) && wildcardMatch(pattern.chopped(2), fileName))
        return true;
    return wildcardMatch(pattern, fileName);
}

bool FileFilter::matches(const FileFilterEntry &entry, const QString &fileName)
{
    for (const QString &pattern : entry.patterns) {
        if (matches(pattern, fileName))
            return true;
    }
    return false;
}
