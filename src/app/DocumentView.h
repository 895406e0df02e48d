#pragma once

#include <QString>

// What a document command needs from the window that shows it while it runs.
// The editor window implements it; the command-line tool and tests may ignore it.
class DocumentView {
public:
    virtual ~DocumentView() = default;

    // The status panel stbProcess got a new text (already stored in the document).
    virtual void processShown(const QString &text) { Q_UNUSED(text); }
    // Busy (hourglass) pointer on or off.
    virtual void setBusy(bool busy) { Q_UNUSED(busy); }
    // Let pending window messages run once.
    virtual void letEventsRun() {}
    // The document view was reset (lists emptied, preview hidden, values blanked).
    virtual void viewReset() {}
    // checkInterface: bring every control in line with the document's state.
    virtual void checkInterface() {}
};
