#pragma once

#include <QStringList>

#include <cstdio>

// cubrix-cli render FILE.bset BLOCK OUT.png [--size WxH] [--camera X,Y,Z]
//                   [--target X,Y,Z] [--fov DEGREES] [--order rover|depth]
// cubrix-cli render FILE.bset --sheet OUT.png
// Draws one block of a blockset (BLOCK: its file name in any case, or its
// single symbol) into a PNG with a fully transparent background, with the
// editor's drawing code and no display; or every block the style lists on a
// labelled catalogue sheet. The archive is read directly: no working folder,
// no settings. `arguments` are those after "render".
namespace CliRender {

int run(const QStringList &arguments, std::FILE *out, std::FILE *err);

// Whether the command line asks for the sheet, whose labels need a
// QGuiApplication (the program then makes one on the offscreen platform).
bool writesText(const QStringList &arguments);

QString usageLines();
QString helpLines();

} // namespace CliRender
