#pragma once

#include <QObject>

class QMenu;
class RecentFiles;
class Prompts;

// File > Open Recent: the recent blocksets as "&1 name" entries with the full path
// in their tooltips, then Clear Recent. A chosen file that is gone is said and
// leaves the list.
class RecentMenu : public QObject {
    Q_OBJECT

public:
    RecentMenu(QMenu *menu, RecentFiles &recent, Prompts &prompts);

signals:
    void openRequested(const QString &path);

private:
    void fill();
    void choose(const QString &path);

    QMenu *m_menu;
    RecentFiles &m_recent;
    Prompts &m_prompts;
};
