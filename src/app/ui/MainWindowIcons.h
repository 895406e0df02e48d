#pragma once

#include <QIcon>
#include <QString>

class QStyle;

// The toolbar icon of a main-window command, by its toolbar key ("btnNew" ...):
// a standard icon of `style` where one fits, else a simple drawn one.
QIcon commandIcon(const QString &button, QStyle *style);

// The program's own icon: three stacked cubes.
QIcon programIcon();
