#pragma once

#include "formats/BlocksetModel.h"
#include "formats/Parser.h"
#include "symbols/OperationHost.h"

#include <QList>
#include <QString>

class DocumentView;
class Prompts;
class RegistryWrapper;
class WorkingFolder;

// The one open blockset: its record, its items, its style values, its symbol
// settings and its changed flags, and the document commands (open, new, close,
// save, save as) that change them. The editor window renders this state after
// each command; cubrix-cli and the tests drive the same commands headlessly.
class BlocksetDocument : public OperationHost {
public:
    enum Tab { TabBlocks = 0, TabTextures = 1, TabSounds = 2, TabSettings = 3, TabVersion = 4 };

    BlocksetDocument(Prompts &prompts, RegistryWrapper &settings, WorkingFolder &folder);
    void setView(DocumentView *view) { m_view = view; }

    // Document commands.
    void openBlockset(const QString &file = QString());
    void newBlockset();
    void closeBlockset();
    // Saves into the blockset's archive; false when a step failed (its message was shown).
    bool saveBlockset();
    void saveBlocksetAs();
    // The Save command: Save As while the blockset is untitled.
    void saveCommand();
    // The unload question of the main window (asked only for a changed open blockset).
    void askSaveOnUnload();

    // Edits from the settings page.
    // Any style value: sets blocksetChanged (the version also becomes versionText).
    void editStyleValue(StyleField field, const QString &value);
    void editUpdateComment(const QString &comment);
    void setSymbolSettings(const SymbolSettings &symbols) { m_content.symbols = symbols; }
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
    RegistryWrapper &settings() override { return m_settings; }
    QString workingFolder() const override;
    void setBlocksetChanged() override { m_blocksetChanged = true; }
    void setBusy(bool busy) override;
    // Lets pending window messages run once (long commands call it between steps).
    void letEventsRun();
    WorkingFolder &folder() { return m_folder; }

    // Text for stbProcess after open and new, from the symbol check boxes.
    QString symbolModeText() const;

private:
    enum class SaveQuestion { Yes, No, Cancel };
    SaveQuestion askSave(const QString &text, const QString &title);
    void resetView();
    void fillLists();
    void failOpen(const QString &detail = QString());
    void checkInterface();

    Prompts &m_prompts;
    RegistryWrapper &m_settings;
    WorkingFolder &m_folder;
    DocumentView *m_view = nullptr;
    Parser m_parser;

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
};
