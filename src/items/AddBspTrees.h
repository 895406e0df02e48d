#pragma once

#include <QList>
#include <QString>

class OperationHost;

// The Add BSP Trees command: builds the BSP tree of structural blocks (see
// BspBuilder) and writes it into their files in the working folder.

// What became of one block.
struct BspBlockReport {
    enum Outcome {
        Built,   // the file has its new tree
        HasTree, // it already had a valid tree and keeps it
        Skipped, // nothing to build (a sprite, nothing Rover draws)
        Failed,  // its file cannot be read or written, or the tree not built
    };
    QString file;
    Outcome outcome = Skipped;
    QString reason; // Skipped, Failed: why; Built: what was wrong with the old tree, if anything
    int polygonsBefore = 0;
    int polygonsAfter = 0;
    int splits = 0;
    int depth = 0;
};

struct BspTreesReport {
    QList<BspBlockReport> blocks; // in list order
    int built = 0;
    int splits = 0;
    bool allBlocks = false; // no row was given: every block was taken
};

// What happens to a block whose tree already holds Rover's rule.
enum class BspRebuild { Ask, Always, Never };

// For the block rows `rows`, or every block row when it is empty (sprites are
// then passed over without a word): builds a tree for each structural block
// without a valid one (a missing tree, one Rover's rule rejects, one with a
// reference out of range or a cycle), and for those with a valid one as
// `rebuild` says (Ask: one Yes/No question for all of them). Each built block's
// file is rewritten and its BSP column reads "yes"; the changed flag is set
// when one was built. Blocks that failed, and sprites that were asked for, are
// listed in one message. The status panel reads "BSP trees added to N blocks
// (M splits)", and says so when every structural block was taken.
BspTreesReport addBspTrees(OperationHost &host, QList<int> rows, BspRebuild rebuild);
