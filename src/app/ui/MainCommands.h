#pragma once

#include <QHash>
#include <QString>

class QAction;
class QMainWindow;

// The editor window's command table: every toolbar button and menu entry as a
// QAction named as the window's design names it (btnNew, mnuNew, ...), with its
// caption, tooltip, icon and shortcut, placed in the menu bar and the toolbar.
// Returns the actions by object name.
QHash<QString, QAction *> createMainCommands(QMainWindow *window);
