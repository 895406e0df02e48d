#pragma once

#include <QList>
#include <QString>

class QHeaderView;
class QWidget;
class RegistryWrapper;

// A window's size, position and maximised state, and the column widths and sort
// order of its lists, kept in the settings store between sessions (values
// "<name>Geometry" and "<list>Columns", base64 of Qt's own state blobs). A window
// whose screen is gone comes back on one that exists (Qt moves it).
namespace WindowMemory {

// False when nothing was stored yet (the window keeps its first size).
bool restoreWindow(QWidget *window, RegistryWrapper &settings, const QString &name);
void saveWindow(const QWidget *window, RegistryWrapper &settings, const QString &name);
// The header's widths and sort indicator; false when nothing was stored.
bool restoreColumns(QHeaderView *header, RegistryWrapper &settings, const QString &name);
void saveColumns(const QHeaderView *header, RegistryWrapper &settings, const QString &name);

} // namespace WindowMemory
