#pragma once

#include "app/DiskIdentity.h"
#include "app/EditAccess.h"
#include "app/RecoveryRecord.h"
#include "app/UndoHistory.h"
#include "formats/BlocksetModel.h"
#include "items/ItemKind.h"
#include "storage/PackedEntries.h"
#include "storage/Result.h"
#include "symbols/OperationHost.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <QString>

#include <type_traits>

class DocumentView;
class Prompts;
class RegistryWrapper;
class SymbolPrompt;
class WorkingFolder;

// The one open blockset: its record, its items, its style values, its symbol
// settings and its changed flags, and the document commands (open, new, close,
// save, save as) that change them. It announces every change (the signals
// below), so the editor window redraws what changed; cubrix-cli and the tests
// drive the same commands headlessly.
class BlocksetDocument : public QObject, public OperationHost {
    Q_OBJECT

public:
    enum Tab { TabBlocks = 0, TabTextures = 1, TabSounds = 2, TabSettings = 3, TabVersion = 4 };

    BlocksetDocument(Prompts &prompts, SymbolPrompt &symbolPrompt, RegistryWrapper &settings, WorkingFolder &folder);
    ~BlocksetDocument() override; // gives up what undo kept aside
    void setView(DocumentView *view) { m_view = view; }

    // Document commands. Each shows its own messages; the result says whether it
    // was done, cancelled by the user, or failed and why.
    Result openBlockset(const QString &file = QString());
    Result newBlockset();
    Result closeBlockset();
    // Saves into the blockset's archive (and the update file beside it).
    Result saveBlockset();
    Result saveBlocksetAs();
    // The Save command: Save As while the blockset is untitled.
    Result saveCommand();
    // The unload question of the main window (asked only for a changed open
    // blockset): false when the user cancelled, or a save the user asked for did
    // not happen, so the window stays open and nothing is lost.
    bool askSaveOnUnload();

    // How opens claim the file (the editor asks when another editor has it; the
    // command line waits, then refuses; info and check open read-only), and which
    // files must never be changed (Rover's cache).
    void setOpenPolicy(const EditAccess::Policy &policy) { m_access.setPolicy(policy); }
    void setReadOnlyRule(EditAccess::ReadOnlyRule rule) { m_access.setReadOnlyRule(std::move(rule)); }
    bool readOnly() const { return m_blocksetOpen && m_access.readOnly(); }
    QString readOnlyReason() const { return m_access.reason(); }

    // Whether another program changed the archive since this editor opened or saved it.
    bool changedOnDisk() const;
    // Asks "The blockset was changed on disk since you opened it." with Reload,
    // Overwrite and Save As (Cancel by Escape). Overwrite lets the next Save replace
    // the file. When `onlyOnce`, a change already asked about is not asked again.
    Result askAboutDiskChange(bool onlyOnce);

    // Keeps the record that brings a changed blockset back after a crash at
    // `path` (beside the working folder); "" keeps none (the command line).
    void setRecoveryPath(const QString &path) { m_recoveryPath = path; }
    // Opens what a Cubrix that ended without closing left in the working folder,
    // as the changed, unsaved blockset it was.
    Result recoverBlockset(const RecoveryRecord &record);

    // Runs an edit of the open blockset (an item or symbol operation) as one
    // undoable step named `name` ("Remove Block") and announces what it changed.
    template <typename Operation>
    std::invoke_result_t<Operation> edit(const QString &name, Operation &&operation)
    {
        const EditStart start = beginEdit();
        if constexpr (std::is_void_v<std::invoke_result_t<Operation>>) {
            operation();
            endEdit(start, name, QString());
        } else {
            auto result = operation();
            endEdit(start, name, QString());
            return result;
        }
    }
    template <typename Operation>
    std::invoke_result_t<Operation> edit(Operation &&operation)
    {
        return edit(QStringLiteral("Change"), std::forward<Operation>(operation));
    }

    // Undo and redo of the edits since the blockset was opened or made. The
    // changed flags follow: undoing back to the state last saved makes the
    // blockset unchanged again.
    bool canUndo() const { return m_history.canUndo(); }
    bool canRedo() const { return m_history.canRedo(); }
    QString undoName() const { return m_history.undoName(); }
    QString redoName() const { return m_history.redoName(); }
    void undo();
    void redo();

    // Edits from the settings and version pages.
    // Any style value: sets blocksetChanged (the version also becomes versionText).
    void editStyleValue(StyleField field, const QString &value);
    void editUpdateComment(const QString &comment);
    void setSymbolSettings(const SymbolSettings &symbols);
    void setTab(int tab) { m_tab = tab; }

    // Status panel.
    void showProcess(const QString &text) override;
    void clearProcess();
    QString processText() const { return m_processText; }
    bool processMessageShown() const { return m_processMessageShown; }

    // Record and flags.
    bool blocksetOpen() const { return m_blocksetOpen; }
    bool blocksetChanged() const { return m_blocksetChanged; }
    bool updateChanged() const { return m_updateChanged; }
    bool isChanged() const { return m_blocksetChanged || m_updateChanged; }
    bool blocksetUntitled() const { return m_blocksetUntitled; }
    QString blocksetPath() const { return m_blocksetPath; }
    QString blocksetFileName() const { return m_blocksetFileName; }
    QString versionText() const { return m_versionText; }
    int tab() const { return m_tab; }
    int blockCount() const { return int(m_content.blocks.size()); }
    int textureCount() const { return int(m_content.textures.size()); }
    int soundCount() const { return int(m_content.sounds.size()); }

    const QList<BlockRow> &blocks() const { return m_content.blocks; }
    const QList<ItemRow> &textures() const { return m_content.textures; }
    const QList<ItemRow> &sounds() const { return m_content.sounds; }
    const StyleValues &style() const { return m_content.style; }
    const SymbolSettings &symbols() const { return m_content.symbols; }
    QString updateComment() const { return m_updateComment; }
    // The update file beside the archive: its folder, its base name, ".txt".
    QString updateFilePath() const;

    // What the item and symbol operations work on.
    BlocksetContent &content() override { return m_content; }
    Prompts &prompts() override { return m_prompts; }
    SymbolPrompt &symbolPrompt() override { return m_symbolPrompt; }
    RegistryWrapper &settings() override { return m_settings; }
    QString workingFolder() const override;
    void setBlocksetChanged() override;
    void setBusy(bool busy) override;
    // Lets pending window messages run once (long commands call it between steps).
    void letEventsRun();
    WorkingFolder &folder() { return m_folder; }
    // The packed forms of the working folder's files that a save can copy as they are.
    PackedEntries &packedEntries() { return m_packed; }

    // Text for stbProcess after open and new, from the symbol check boxes.
    QString symbolModeText() const;

signals:
    // A blockset was opened for editing or saved at `path`: one for the recent files.
    void fileUsed(const QString &path);
    // What Undo and Redo would do changed.
    void undoStateChanged();
    // Everything shown is to be drawn again: a blockset was opened, made or closed.
    void documentReset();
    // The rows of one item list changed (added, removed, renamed, new symbols).
    void itemsChanged(ItemKind kind);
    void styleChanged();
    void symbolsChanged();
    void updateCommentChanged();
    // The record or a changed flag changed (caption, status panels).
    void stateChanged();

private:
    struct Snapshot {
        DocumentState state;
        bool blocksetChanged = false;
        bool updateChanged = false;
    };
    Snapshot snapshot() const
    {
        return {{m_content, m_updateComment, m_versionText}, m_blocksetChanged, m_updateChanged};
    }
    void announceChanges(const Snapshot &before);
    struct EditStart {
        Snapshot before;
        FileStash::FolderState files;
        QHash<QString, QString> kept; // each file's version before the edit
        bool outermost = false;
        bool capturedFiles = false;
        quint64 generation = 0; // a blockset opened, made or closed during the edit ends it without a step
    };
    EditStart beginEdit(bool captureFiles = true);
    void endEdit(const EditStart &start, const QString &name, const QString &mergeKey);
    void applyStep(const UndoStep &step, bool back);
    void clearHistory(bool clean);
    // Writes the recovery record while the blockset is changed, removes it when it is not.
    void noteForRecovery();

    enum class SaveQuestion { Yes, No, Cancel };
    SaveQuestion askSave(const QString &text, const QString &title);
    void resetView();
    Result failOpen(const QString &reason);
    Result failSave(const QString &text, const Result &cause);
    void checkInterface();

    Prompts &m_prompts;
    SymbolPrompt &m_symbolPrompt;
    EditAccess m_access{m_prompts};
    DiskIdentity m_onDisk;     // the archive as this editor last read or wrote it
    DiskIdentity m_askedAbout; // the outside change last asked about
    RegistryWrapper &m_settings;
    WorkingFolder &m_folder;
    DocumentView *m_view = nullptr;

    bool m_blocksetOpen = false;
    bool m_blocksetChanged = false;
    bool m_updateChanged = false;
    bool m_blocksetUntitled = false;
    QString m_blocksetPath;
    QString m_blocksetFileName;
    QString m_versionText;
    QString m_processText;
    bool m_processMessageShown = false;
    int m_tab = TabBlocks;

    BlocksetContent m_content;
    QString m_updateComment;
    QString m_recoveryPath;
    FileStash m_stash;
    UndoHistory m_history{m_stash};
    int m_editDepth = 0;
    quint64 m_generation = 0;      // counts the blocksets opened, made and closed
    bool m_stepSetChanged = false; // setBlocksetChanged was called during the edit
    PackedEntries m_packed;
};
