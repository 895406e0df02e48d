#pragma once

#include <QString>
#include <QStringList>

class RegistryWrapper;

// The blocksets last opened or saved, most recent first, kept in the settings
// store (value "recentFiles": the full paths separated by "|", a character no
// Windows file name holds). Each one also goes on the desktop's list of recently
// used documents.
class RecentFiles {
public:
    static constexpr int kLimit = 10;

    explicit RecentFiles(RegistryWrapper &settings) : m_settings(settings) {}

    QStringList paths() const;
    // `path` goes first (once: an entry naming the same file goes).
    void add(const QString &path);
    void remove(const QString &path);
    void clear();

private:
    void store(const QStringList &paths);

    RegistryWrapper &m_settings;
};
