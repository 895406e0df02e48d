#pragma once

#include <QString>

// What a document command needs from the window that shows it while it runs.
// The editor window implements it; the command-line tool and tests may ignore it.
// (What the document holds the window learns from the document's signals.)
class DocumentView {
public:
    virtual ~DocumentView() = default;

    // The status panel stbProcess got a new text (already stored in the document).
    virtual void processShown(const QString &text) { Q_UNUSED(text); }
    // Busy (hourglass) pointer on or off.
    virtual void setBusy(bool busy) { Q_UNUSED(busy); }
    // Let pending window messages run once.
    virtual void letEventsRun() {}
    // checkInterface: bring every command, the caption and the status panels in
    // line with the document's state.
    virtual void checkInterface() {}
};
