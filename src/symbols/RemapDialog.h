#pragma once

#include <functional>

// The Remap Symbols dialog as the core sees it: which method (the tab showing
// when OK was pressed) and which prefix entry the user chose. The editor shows
// frmRemapSymbols; cubrix-cli and the tests answer from their own choice.
struct RemapChoice {
    enum Method { RemapAll, SyncDouble };
    Method method = RemapAll;
    int prefixIndex = 0; // entry of the tab's prefix list (position in the prefix alphabet)
};

class RemapDialog {
public:
    virtual ~RemapDialog() = default;

    // Shows the dialog modally. Each OK hands the choice to `accept`, which runs
    // the method and returns whether the dialog may close (false after a No to
    // its question: the dialog stays open). Returns false when cancelled.
    virtual bool run(const std::function<bool(const RemapChoice &)> &accept) = 0;
};
