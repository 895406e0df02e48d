#pragma once

#include "storage/EditLock.h"
#include "storage/Result.h"

#include <QString>

#include <functional>
#include <memory>

class Prompts;

// Whether the open blockset may be edited here: one editor per file (the edit
// lock beside it), files Cubrix must never change (the read-only rule: Rover's
// cache), and the author's choice when another Cubrix has the file open.
class EditAccess {
public:
    struct Policy {
        bool readOnly = false;     // open without a lock (info, check, the source of a copy)
        int lockWaitMs = 0;        // how long an edit waits for another editor to finish
        bool askWhenLocked = true; // the window offers read-only; the command line refuses
        bool breakLock = false;    // take the lock of another host without a question
    };
    // A reason the file at a path must not be changed ("" when it may be).
    using ReadOnlyRule = std::function<QString(const QString &path)>;

    explicit EditAccess(Prompts &prompts) : m_prompts(prompts) {}

    void setPolicy(const Policy &policy) { m_policy = policy; }
    void setReadOnlyRule(ReadOnlyRule rule) { m_rule = std::move(rule); }

    // Before `path` is opened: takes its lock, or decides it opens read-only (with
    // the reason), or the author cancelled, or (command line) another editor has it.
    Result claim(const QString &path);
    // Before Save As writes `path`: refused, naming the holder, when another
    // editor has it; else its lock replaces the old one.
    Result claimTarget(const QString &path);
    void release();

    bool readOnly() const { return m_readOnly; }
    QString reason() const { return m_reason; }
    // Whether no other editor is saving the file now (so a half-done save may be finished).
    bool nobodyElseHolds(const QString &path) const;

private:
    Result handleHeld(const QString &path);

    Prompts &m_prompts;
    Policy m_policy;
    ReadOnlyRule m_rule;
    std::unique_ptr<EditLock> m_lock = std::make_unique<EditLock>();
    bool m_readOnly = false;
    QString m_reason;
};
