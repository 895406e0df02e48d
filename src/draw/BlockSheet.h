#pragma once

#include "draw/BlockScene.h"

#include <QImage>
#include <QList>
#include <QString>

// One block on a catalogue sheet.
struct SheetBlock {
    QString symbol;
    QString name; // the style's name, else the block file's
    QString file;
    BlockScene scene;
};

// A catalogue page of a blockset: a title, then every block in a grid, each
// drawn from the default camera in Rover's order, lit, with its symbol and
// name under it (its file name below, smaller); a block Rover cannot load
// shows why instead. Writing text needs a QGuiApplication (any platform,
// offscreen too).
QImage drawBlockSheet(const QString &title, const QList<SheetBlock> &blocks);
