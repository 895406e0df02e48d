// The undoable steps of BlocksetDocument: each edit records the document's state
// and the item files it changed before and after, and Undo and Redo put one or the
// other back.
#include "app/BlocksetDocument.h"

#include "common/Prompts.h"
#include "storage/WorkingFolder.h"

#include <QSet>

using namespace Qt::StringLiterals;

namespace {

const QStringList kItemFolders = {u"blocks"_s, u"textures"_s, u"sounds"_s};

bool sameItems(const BlocksetContent &a, const BlocksetContent &b)
{
    return a.blocks == b.blocks && a.textures == b.textures && a.sounds == b.sounds && a.style == b.style;
}

} // namespace

BlocksetDocument::~BlocksetDocument()
{
    m_history.clear(true);
}

BlocksetDocument::EditStart BlocksetDocument::beginEdit(bool captureFiles)
{
    EditStart start;
    start.before = snapshot();
    start.outermost = m_editDepth++ == 0;
    start.generation = m_generation;
    if (!start.outermost)
        return start;
    m_stepSetChanged = false;
    if (!captureFiles || !m_blocksetOpen)
        return start;
    m_stash.setFolders(m_folder.workingFolder(), m_folder.workingFolder() + u".undo"_s);
    // Every item file gets a second name now; the step keeps only those of the
    // files the edit replaced or removed.
    start.capturedFiles = true;
    start.files = m_stash.capture(kItemFolders);
    for (auto it = start.files.cbegin(); it != start.files.cend(); ++it)
        start.kept.insert(it.key(), m_stash.keep(it.key()));
    return start;
}

void BlocksetDocument::endEdit(const EditStart &start, const QString &name, const QString &mergeKey)
{
    --m_editDepth;
    if (!start.outermost)
        return;
    if (start.generation != m_generation) {
        // A blockset was opened or made: that is no step, and what was kept
        // aside for the old one went with its history.
        return;
    }
    UndoStep step;
    step.name = name;
    step.mergeKey = mergeKey;
    step.before = start.before.state;
    step.after = snapshot().state;
    const FileStash::FolderState now =
        m_blocksetOpen && start.capturedFiles ? m_stash.capture(kItemFolders) : FileStash::FolderState();
    for (auto it = start.files.cbegin(); it != start.files.cend(); ++it) {
        const auto after = now.constFind(it.key());
        const QString kept = start.kept.value(it.key());
        if (after != now.cend() && *after == *it) {
            m_stash.drop(kept);
            continue;
        }
        step.files.append({it.key(), kept, after == now.cend() ? QString() : m_stash.keep(it.key())});
    }
    for (auto it = now.cbegin(); it != now.cend(); ++it) {
        if (!start.files.contains(it.key()))
            step.files.append({it.key(), QString(), m_stash.keep(it.key())});
    }
    const bool contentChanged = !sameItems(step.before.content, step.after.content);
    const bool symbolsChanged = step.before.content.symbols != step.after.content.symbols;
    const bool commentChanged = step.before.updateComment != step.after.updateComment;
    step.touchesBlockset = m_stepSetChanged || contentChanged;
    step.touchesComment = commentChanged;
    if (contentChanged || symbolsChanged || commentChanged || !step.files.isEmpty()
        || step.before.versionText != step.after.versionText) {
        m_history.push(std::move(step));
        emit undoStateChanged();
    }
    announceChanges(start.before);
}

void BlocksetDocument::clearHistory(bool clean)
{
    ++m_generation;
    m_stash.setFolders(m_folder.workingFolder(), m_folder.workingFolder() + u".undo"_s);
    m_history.clear(clean);
    emit undoStateChanged();
}

void BlocksetDocument::undo()
{
    if (m_editDepth == 0 && m_history.canUndo())
        applyStep(m_history.stepToUndo(), true);
}

void BlocksetDocument::redo()
{
    if (m_editDepth == 0 && m_history.canRedo())
        applyStep(m_history.stepToRedo(), false);
}

void BlocksetDocument::applyStep(const UndoStep &step, bool back)
{
    const Snapshot before = snapshot();
    // Removals first: on a file system that ignores case, "Wall.block" put back
    // and "wall.block" removed are one file.
    QStringList failed;
    QSet<QString> folders;
    for (int pass = 0; pass < 2; ++pass) {
        for (const UndoStep::FileChange &change : step.files) {
            const QString &version = back ? change.before : change.after;
            if (version.isEmpty() != (pass == 0))
                continue;
            folders.insert(change.path.section(u'/', 0, 0));
            if (!m_stash.put(version, change.path))
                failed.append(change.path);
        }
    }
    const DocumentState &state = back ? step.before : step.after;
    m_content = state.content;
    m_updateComment = state.updateComment;
    m_versionText = state.versionText;
    const QString undone = step.name;
    m_history.moved(back);
    m_history.changedFlags(m_blocksetChanged, m_updateChanged);
    // A file replaced under the same row still changes what its list shows.
    if (folders.contains(u"blocks"_s) && before.state.content.blocks == m_content.blocks)
        emit itemsChanged(ItemKind::Block);
    if (folders.contains(u"textures"_s) && before.state.content.textures == m_content.textures)
        emit itemsChanged(ItemKind::Texture);
    if (folders.contains(u"sounds"_s) && before.state.content.sounds == m_content.sounds)
        emit itemsChanged(ItemKind::Sound);
    announceChanges(before);
    emit undoStateChanged();
    checkInterface();
    if (!failed.isEmpty()) {
        m_blocksetChanged = true;
        emit stateChanged();
        m_prompts.message((back ? u"Undo "_s : u"Redo "_s) + undone + u" could not put back "_s + failed.join(u", "_s)
                              + u'.',
                          back ? u"Undo"_s : u"Redo"_s, PromptButtons::Ok, PromptIcon::Exclamation);
        return;
    }
    showProcess((back ? u"Undone: "_s : u"Redone: "_s) + undone + u'.');
}
