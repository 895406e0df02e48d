#pragma once

#include "formats/BlocksetModel.h"
#include "storage/FileStash.h"

#include <QList>
#include <QString>

// What an undoable step changes of the document besides its files.
struct DocumentState {
    BlocksetContent content;
    QString updateComment;
    QString versionText;
};

// One change the author can take back: the document before and after, the item
// files it added, removed or replaced (their versions kept aside in the
// FileStash), and which changed flag it set.
struct UndoStep {
    struct FileChange {
        QString path;   // relative to the working folder: "blocks/wall.block"
        QString before; // the kept version before the step, "" when there was no file
        QString after;  // the kept version after it, "" when the step removed it
    };
    QString name;     // "Remove Block": the menu says "Undo Remove Block"
    QString mergeKey; // steps of one key in a row are one (typing into one field)
    DocumentState before;
    DocumentState after;
    QList<FileChange> files;
    bool touchesBlockset = false; // sets blocksetChanged
    bool touchesComment = false;  // sets updateChanged
};

// The steps of the open blockset, the position in them, and the position of the
// state last saved, so that undoing back to it makes the blockset unchanged
// again. Keeps the newest `kLimit` steps; a step that can no longer be undone or
// redone gives its kept files up.
class UndoHistory {
public:
    static constexpr int kLimit = 200;

    explicit UndoHistory(FileStash &stash) : m_stash(stash) {}

    // Drops every step and everything kept aside; the state now counts as saved
    // when `clean`, else as changed (a blockset that opened changed).
    void clear(bool clean);
    // A new step after the current position; the steps that could be redone go.
    // A step with the mergeKey of the step before it (and nothing undone in
    // between) becomes part of that one.
    void push(UndoStep step);

    bool canUndo() const { return m_index > 0; }
    bool canRedo() const { return m_index < m_steps.size(); }
    QString undoName() const { return canUndo() ? m_steps[m_index - 1].name : QString(); }
    QString redoName() const { return canRedo() ? m_steps[m_index].name : QString(); }
    const UndoStep &stepToUndo() const { return m_steps[m_index - 1]; }
    const UndoStep &stepToRedo() const { return m_steps[m_index]; }
    // The position moved back (undo) or forward (redo) by one step.
    void moved(bool back) { m_index += back ? -1 : 1; }

    // The state now is the one on disk.
    void markSaved() { m_saved = m_index; }
    // The changed flags of the state now against the state last saved.
    void changedFlags(bool &blocksetChanged, bool &updateChanged) const;
    int size() const { return int(m_steps.size()); }

private:
    void giveUp(const UndoStep &step, bool keepBefore, bool keepAfter);

    FileStash &m_stash;
    QList<UndoStep> m_steps;
    qsizetype m_index = 0; // steps before it are done
    qsizetype m_saved = 0; // -1: the saved state is no longer in the steps
};
