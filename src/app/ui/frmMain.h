#pragma once

#include "app/DocumentView.h"
#include "formats/BlocksetModel.h"

#include <QHash>
#include <QList>
#include <QMainWindow>
#include <QStringList>

#include <memory>
#include <optional>

class BlocksetDocument;
class GuiPrompts;
class ItemListPage;
class Prompts;
class QAction;
class QLabel;
class QSoundEffect;
class QTabWidget;
class QToolBar;
class Registry;
class RegistryWrapper;
class SettingsTab;
class VersionTab;
class WorkingFolder;

// The editor window. It owns the settings store, the working folder and the one
// open blockset (BlocksetDocument), turns toolbar buttons, menu entries, tab
// switches, settings-page edits and dropped files into document commands, and
// renders the document after each of them (checkInterface).
class frmMain : public QMainWindow, public DocumentView {
    Q_OBJECT

public:
    struct Options {
        // Where questions and file requests go; null: message boxes and file dialogs.
        Prompts *prompts = nullptr;
        // The settings store; null: a hive file at registryPath, or when that is
        // empty the store of this machine (createSettingsRegistry).
        Registry *registry = nullptr;
        QString registryPath;
    };

    explicit frmMain(QWidget *parent = nullptr);
    explicit frmMain(const Options &options, QWidget *parent = nullptr);
    ~frmMain() override;

    BlocksetDocument &document() { return *m_document; }
    RegistryWrapper &settings() { return *m_settings; }
    Prompts &prompts() { return *m_prompts; }
    WorkingFolder &workingFolder() { return *m_folder; }
    bool soundAvailable() const { return m_soundAvailable; }

    // The text stbProcess greets the user with at load: "Welcome to Cubrix 0.9 Beta 1!".
    static QString welcomeText();

    // Opens the blockset at `path` (the command line, a drop), or asks for one when it is empty.
    void openBlocksetFile(const QString &path);

    // DocumentView: called by the document while a command runs.
    void processShown(const QString &text) override;
    void setBusy(bool busy) override;
    void letEventsRun() override;
    void viewReset() override;
    void checkInterface() override;

    // The about box, also for the cache manager's Help menu.
    void showAbout();

signals:
    // The user asked for the cache manager window (menu or toolbar).
    void cacheManagerRequested();

protected:
    void closeEvent(QCloseEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private slots:
    // Commands that belong to later work (adding and replacing items, the cache
    // manager) answer through this one slot for now.

private:
    QAction *addCommand(const QString &name, const QString &text);
    void createActions();
    void createMenus();
    void createToolBar();
    void createTabs();
    void createStatusBar();
    void connectCommands();

    void load();
    void unload();

    // Runs a document command and brings the window in line with its outcome. The
    // document ends its commands with its own checkInterface and then shows a result
    // text, which has to stay until the next refresh; so no result text is cleared here.
    void runDocumentCommand(void (BlocksetDocument::*command)());
    void refreshInterface(bool clearResult);
    void renderDocument();
    void renderLists();
    void renderPages();
    void forgetRenderedPages();
    void tabChanged(int index);
    void focusTab(int index);
    void focusOpenedBlockset();

    void showOops();
    void showOptions();
    void addItem();
    void removeItem();
    void renameItemLabel(int tab, int row, const QString &newText);
    void remapSymbols();
    void strictPrefixClicked(bool checked);
    void prefixListChosen(int index);
    ItemListPage *itemPage(int tab) const;
    void replaceItem();
    void dropFiles(const QStringList &paths);
    void editItem();
    void previewItem();
    void addBSP();
    void previewTexture();
    void playSound();

    // Settings store, prompts and document, in the order they are made.
    std::unique_ptr<Registry> m_ownedRegistry;
    Registry *m_registry = nullptr;
    std::unique_ptr<RegistryWrapper> m_settings;
    std::unique_ptr<GuiPrompts> m_guiPrompts;
    Prompts *m_prompts = nullptr;
    std::unique_ptr<WorkingFolder> m_folder;
    std::unique_ptr<BlocksetDocument> m_document;

    bool m_soundAvailable = false;
    bool m_unloaded = false;
    bool m_busy = false;
    QSoundEffect *m_sound = nullptr;

    QHash<QString, QAction *> m_actions; // every command by object name
    QToolBar *m_toolbar = nullptr;
    QTabWidget *m_tabs = nullptr;
    ItemListPage *m_blockPage = nullptr;
    ItemListPage *m_texturePage = nullptr;
    ItemListPage *m_soundPage = nullptr;
    SettingsTab *m_settingsTab = nullptr;
    VersionTab *m_versionTab = nullptr;
    QLabel *m_stbBlocks = nullptr;
    QLabel *m_stbTextures = nullptr;
    QLabel *m_stbSounds = nullptr;
    QLabel *m_stbVersion = nullptr;
    QLabel *m_stbProcess = nullptr;

    // What the pages show, so that a refresh rewrites only what changed
    // (rewriting would lose the selection, or move the cursor of the field being typed in).
    std::optional<StyleValues> m_shownStyle;
    std::optional<SymbolSettings> m_shownSymbols;
    std::optional<QString> m_shownComment;
    std::optional<QStringList> m_shownTextureNames;
    // The lstStrictPrefix position when it last received the focus; positions the
    // program sets never come through the focus, so they ask nothing.
    std::optional<int> m_prefixRemembered;
};
