#include "app/UndoHistory.h"

#include <QSet>

void UndoHistory::giveUp(const UndoStep &step, bool keepBefore, bool keepAfter)
{
    for (const UndoStep::FileChange &change : step.files) {
        if (!keepBefore)
            m_stash.drop(change.before);
        if (!keepAfter)
            m_stash.drop(change.after);
    }
}

void UndoHistory::clear(bool clean)
{
    m_steps.clear();
    m_stash.clear();
    m_index = 0;
    m_saved = clean ? 0 : -1;
}

void UndoHistory::push(UndoStep step)
{
    // The steps that could be redone go with what they keep aside.
    while (m_steps.size() > m_index) {
        giveUp(m_steps.last(), false, false);
        m_steps.removeLast();
    }
    if (m_saved > m_index)
        m_saved = -1;
    if (!step.mergeKey.isEmpty() && m_index > 0 && m_saved != m_index && m_steps.last().mergeKey == step.mergeKey
        && step.files.isEmpty() && m_steps.last().files.isEmpty()) {
        UndoStep &last = m_steps.last();
        last.after = step.after;
        last.touchesBlockset = last.touchesBlockset || step.touchesBlockset;
        last.touchesComment = last.touchesComment || step.touchesComment;
        return;
    }
    m_steps.append(std::move(step));
    ++m_index;
    // The oldest step no longer fits: what it kept aside goes.
    while (m_steps.size() > kLimit) {
        giveUp(m_steps.first(), false, false);
        m_steps.removeFirst();
        --m_index;
        m_saved = m_saved > 0 ? m_saved - 1 : -1;
    }
}

void UndoHistory::changedFlags(bool &blocksetChanged, bool &updateChanged) const
{
    if (m_saved < 0) {
        blocksetChanged = true;
        updateChanged = true;
        return;
    }
    blocksetChanged = false;
    updateChanged = false;
    for (qsizetype i = qMin(m_index, m_saved); i < qMax(m_index, m_saved); ++i) {
        blocksetChanged = blocksetChanged || m_steps[i].touchesBlockset;
        updateChanged = updateChanged || m_steps[i].touchesComment;
    }
}
