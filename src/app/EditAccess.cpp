#include "app/EditAccess.h"

#include "common/CommonFunctions.h"
#include "common/Prompts.h"

#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace {

QString heldText(const QString &path, const LockHolder &holder)
{
    return nativeFileName(path) + u" is open in Cubrix ("_s + holder.description() + u')';
}

} // namespace

bool EditAccess::nobodyElseHolds(const QString &path) const
{
    if (m_lock->isHeld() && QFileInfo(m_lock->lockedPath()) == QFileInfo(path))
        return true;
    return !EditLock::holderOf(path).has_value();
}

Result EditAccess::claim(const QString &path)
{
    release();
    m_reason = m_rule ? m_rule(path) : QString();
    m_readOnly = m_policy.readOnly || !m_reason.isEmpty();
    if (m_readOnly)
        return Result();
    switch (m_lock->take(path, m_policy.lockWaitMs)) {
    case EditLock::Outcome::Taken: return Result();
    case EditLock::Outcome::Failed:
        m_readOnly = true;
        m_reason = m_lock->reason();
        return Result();
    case EditLock::Outcome::Held: break;
    }
    return handleHeld(path);
}

Result EditAccess::handleHeld(const QString &path)
{
    const LockHolder holder = m_lock->holder();
    const QString text = heldText(path, holder);
    if (m_policy.breakLock && m_lock->breakAndTake(path) == EditLock::Outcome::Taken)
        return Result();
    if (!m_policy.askWhenLocked)
        return Result::failure(text);
    QStringList buttons{u"Open Read-Only"_s};
    if (holder.otherHost)
        buttons << u"Break Lock"_s;
    const int chosen = m_prompts.choose(text + u"."_s, u"Open Blockset"_s,
                                        u"Only one Cubrix edits a blockset at a time, so that neither loses the "
                                        "other's changes. Read-only, it can be saved under another name."_s,
                                        buttons, PromptIcon::Exclamation);
    if (chosen == 0) {
        m_readOnly = true;
        m_reason = text;
        return Result();
    }
    if (chosen == 1
        && m_prompts.message(u"Break the lock of "_s + holder.description()
                                 + u"? If that Cubrix still runs, one of the two will lose its changes."_s,
                             u"Open Blockset"_s, PromptButtons::YesNo, PromptIcon::Question)
               == PromptAnswer::Yes
        && m_lock->breakAndTake(path) == EditLock::Outcome::Taken)
        return Result();
    return Result::cancelled();
}

Result EditAccess::claimTarget(const QString &path)
{
    if (m_lock->isHeld() && QFileInfo(m_lock->lockedPath()) == QFileInfo(path))
        return Result();
    if (const std::optional<LockHolder> holder = EditLock::holderOf(path))
        return Result::failure(heldText(path, *holder));
    if (const QString reason = m_rule ? m_rule(path) : QString(); !reason.isEmpty())
        return Result::failure(reason);
    auto next = std::make_unique<EditLock>();
    if (next->take(path) == EditLock::Outcome::Held)
        return Result::failure(heldText(path, next->holder()));
    // The new file's lock replaces the old one (where no lock can be made, the
    // save itself says why it cannot write there).
    m_lock = std::move(next);
    m_readOnly = false;
    m_reason.clear();
    return Result();
}

void EditAccess::release()
{
    m_lock->release();
    m_readOnly = false;
    m_reason.clear();
}
