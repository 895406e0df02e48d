#pragma once

#include "app/DocumentView.h"
#include "storage/Result.h"

#include <QHash>
#include <QMainWindow>

#include <memory>

class BlocksetDocument;
class DocumentPresenter;
class GuiPrompts;
class ItemCommands;
class ItemListPage;
class Prompts;
class QAction;
class QLabel;
class QTabWidget;
class Registry;
class RecentFiles;
class RegistryWrapper;
class SettingsTab;
class SymbolCommands;
class SymbolPrompt;
class VersionTab;
class WebCommands;
class WorkingFolder;

// The editor window. It owns the settings store, the working folder and the one
// open blockset (BlocksetDocument), builds its controls from the command table,
// and routes toolbar buttons, menu entries, tab switches, page edits and dropped
// files to the document and to the command classes; the DocumentPresenter draws
// what the document announces.
class frmMain : public QMainWindow, public DocumentView {
    Q_OBJECT

public:
    struct Options {
        // Where questions and file requests go; null: message boxes and file dialogs.
        Prompts *prompts = nullptr;
        // Where the symbol dialogs go; null: the dialogs themselves.
        SymbolPrompt *symbolPrompt = nullptr;
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

    // The text stbProcess greets the user with at load: "Welcome to Cubrix 0.9 Beta 1!".
    static QString welcomeText();

    // Opens the blockset at `path` (the command line, a drop), or asks for one when it is empty.
    void openBlocksetFile(const QString &path);
    void createRecentMenu();
    void restoreWindowState();

    // DocumentView: called by the document while a command runs.
    void processShown(const QString &text) override;
    void setBusy(bool busy) override;
    void letEventsRun() override;
    void checkInterface() override;

    // The about box, also for the cache manager's Help menu.
    void showAbout();

signals:
    // The user asked for the cache manager window (menu or toolbar).
    void cacheManagerRequested();

protected:
    void closeEvent(QCloseEvent *event) override;
    // Back in the window: a change another program made to the blockset on disk is asked about.
    void changeEvent(QEvent *event) override;

private:
    void createTabs();
    void createStatusBar();
    void connectCommands();
    void connectPages();

    void load();
    // Offers back what a Cubrix that ended without closing left unsaved.
    void offerRecovery();
    bool unload();

    // Runs a document command and brings the window in line with its outcome. The
    // document ends its commands with its own checkInterface and then shows a result
    // text, which has to stay until the next refresh; so no result text is cleared here.
    void runDocumentCommand(Result (BlocksetDocument::*command)());
    void tabChanged(int index);
    void focusOpenedBlockset();
    void dropFiles(const QStringList &paths);
    void showOptions();

    // Settings store, prompts and document, in the order they are made.
    std::unique_ptr<Registry> m_ownedRegistry;
    Registry *m_registry = nullptr;
    std::unique_ptr<RegistryWrapper> m_settings;
    std::unique_ptr<RecentFiles> m_recent;
    std::unique_ptr<GuiPrompts> m_guiPrompts;
    Prompts *m_prompts = nullptr;
    std::unique_ptr<SymbolPrompt> m_ownedSymbolPrompt;
    SymbolPrompt *m_symbolPrompt = nullptr;
    std::unique_ptr<WorkingFolder> m_folder;
    std::unique_ptr<BlocksetDocument> m_document;

    bool m_unloaded = false;
    bool m_askingAboutDisk = false;
    bool m_busy = false;

    QHash<QString, QAction *> m_actions; // every command by object name
    QTabWidget *m_tabs = nullptr;
    ItemListPage *m_blockPage = nullptr;
    ItemListPage *m_texturePage = nullptr;
    ItemListPage *m_soundPage = nullptr;
    SettingsTab *m_settingsTab = nullptr;
    VersionTab *m_versionTab = nullptr;
    QHash<QString, QLabel *> m_panels; // the status panels by object name

    DocumentPresenter *m_presenter = nullptr;
    ItemCommands *m_itemCommands = nullptr;
    SymbolCommands *m_symbolCommands = nullptr;
    WebCommands *m_webCommands = nullptr;
};
