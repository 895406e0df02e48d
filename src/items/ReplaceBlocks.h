#pragma once

#include <QList>

class OperationHost;

// The Update/Replace Blocks command for the block rows `rows` (list order): a
// row whose source file still exists is refreshed from it without a question;
// one whose source is unknown or gone asks for a file ("Replace wall.block").
// The row keeps its place and its symbols and takes the new file's name, size,
// source and block name (made unique as when adding). Shows the summary
// ("2 blocks updated/replaced."); returns the number of rows updated.
int replaceBlocks(OperationHost &host, QList<int> rows);
