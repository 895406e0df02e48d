#pragma once

#include "app/Archive.h"
#include "formats/BlocksetModel.h"
#include "formats/Parser.h"

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
class BlocksetDocument {
public:
    enum Tab { BlocksTab = 0, TexturesTab = 1, SoundsTab = 2, SettingsTab = 3, VersionTab = 4 };

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
    void setSymbolSettings(const SymbolSettings &symbols) { m_symbols = symbols; }
    void setTab(int tab) { m_tab = tab; }

    // Status panel.
    void showProcess(const QString &text);
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
    int blockCount() const { return int(m_blocks.size()); }
    int textureCount() const { return int(m_textures.size()); }
    int soundCount() const { return int(m_sounds.size()); }

    const QList<BlockRow> &blocks() const { return m_blocks; }
    const QList<ItemRow> &textures() const { return m_textures; }
    const QList<ItemRow> &sounds() const { return m_sounds; }
    const StyleValues &style() const { return m_style; }
    const SymbolSettings &symbols() const { return m_symbols; }
    QString updateComment() const { return m_updateComment; }

    WorkingFolder &workingFolder() { return m_folder; }
    RegistryWrapper &settings() { return m_settings; }
    Prompts &prompts() { return m_prompts; }

    // "#,###,###" padded on the left with blanks to 10 characters; blank for 0.
    static QString sizeText(qint64 bytes);
    // Text for stbProcess after open and new, from the symbol check boxes.
    QString symbolModeText() const;

private:
    enum class SaveQuestion { Yes, No, Cancel };
    SaveQuestion askSave(const QString &text, const QString &title);
    void resetView();
    QString updateFilePath() const;
    void fillLists();
    void failOpen();
    void setBusy(bool busy);
    void letEventsRun();
    void checkInterface();

    Prompts &m_prompts;
    RegistryWrapper &m_settings;
    WorkingFolder &m_folder;
    DocumentView *m_view = nullptr;
    Archive m_archive;
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
    int m_tab = BlocksTab;

    QList<BlockRow> m_blocks;
    QList<ItemRow> m_textures;
    QList<ItemRow> m_sounds;
    StyleValues m_style;
    SymbolSettings m_symbols;
    QString m_updateComment;
};
