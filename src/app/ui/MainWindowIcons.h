#pragma once

#include <QIcon>
#include <QString>

// The toolbar icon of a main-window command, by its toolbar key ("btnNew" ...):
// the desktop theme's icon where a standard name fits, else the program's own
// SVG drawing.
QIcon commandIcon(const QString &button);

// The program's own icon (three stacked cubes): "com.quillmoor.Cubrix" from the theme, as
// installed with the program, else the bundled drawing.
QIcon programIcon();
