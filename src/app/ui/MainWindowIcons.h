#pragma once

#include <QIcon>
#include <QString>

class QStyle;

// The toolbar icon of a main-window command, by its toolbar key ("btnNew" ...):
// the desktop theme's icon where a standard name fits, else a standard icon of
// `style` or a drawn one. Drawn icons are painted at the size asked for, so they
// stay sharp at any screen scale.
QIcon commandIcon(const QString &button, QStyle *style);

// The program's own icon: "com.quillmoor.Cubrix" of the icon theme (installed with the
// program), else three stacked cubes drawn.
QIcon programIcon();
