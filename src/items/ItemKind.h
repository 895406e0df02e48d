#pragma once

#include "formats/BlocksetModel.h"

#include <QList>
#include <QString>

class OperationHost;

// The three item lists of the editor: which rows, which sub-folder of the
// working folder holds their files, and the word their messages use.
enum class ItemKind { Block, Texture, Sound };

// "block", "texture" or "sound".
QString itemNoun(ItemKind kind);
// "Block", "Texture" or "Sound", for message titles.
QString itemTitleNoun(ItemKind kind);
// The working folder's sub-folder holding the list's files.
QString itemFolder(const OperationHost &host, ItemKind kind);
// The file names of the list's rows, in list order.
QStringList itemFileNames(OperationHost &host, ItemKind kind);
// Removes the row at `row` from the list.
void removeItemRow(OperationHost &host, ItemKind kind, int row);
// Sets the file name of the row at `row`.
void setItemFileName(OperationHost &host, ItemKind kind, int row, const QString &file);

// The selection of a list as plain values: the selected rows and the row that
// has the keyboard focus (-1 when none), so operations run without a widget.
struct ListSelection {
    QList<int> selected;
    int current = -1;

    bool operator==(const ListSelection &) const = default;
};
