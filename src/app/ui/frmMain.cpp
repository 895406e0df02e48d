#include "app/ui/frmMain.h"

#include "app/BlocksetDocument.h"
#include "app/DroppedFiles.h"
#include "app/RecentFiles.h"
#include "app/RecoveryRecord.h"
#include "app/ui/BlockPictures.h"
#include "app/ui/DocumentPresenter.h"
#include "app/ui/FileDrops.h"
#include "app/ui/ItemCommands.h"
#include "app/ui/ItemListPage.h"
#include "app/ui/MainCommands.h"
#include "app/ui/MainWindowIcons.h"
#include "app/ui/RecentMenu.h"
#include "app/ui/SettingsTab.h"
#include "app/ui/SymbolCommands.h"
#include "app/ui/VersionTab.h"
#include "app/ui/WebCommands.h"
#include "app/ui/frmAbout.h"
#include "app/ui/frmNew.h"
#include "common/HiveRegistry.h"
#include "common/ProgramVersion.h"
#include "common/Registry.h"
#include "common/RegistryWrapper.h"
#include "common/ui/GuiPrompts.h"
#include "common/ui/WindowMemory.h"
#include "common/ui/frmOptions.h"
#include "storage/WorkingFolder.h"
#include "symbols/SymbolScheme.h"
#include "symbols/ui/SymbolDialog.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QFile>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QStatusBar>
#include <QTabWidget>
#include <QTreeWidget>

using namespace Qt::StringLiterals;

frmMain::frmMain(QWidget *parent) : frmMain(Options(), parent) {}

frmMain::frmMain(const Options &options, QWidget *parent) : QMainWindow(parent)
{
    setObjectName(u"frmMain"_s);
    setWindowTitle(u"Cubrix"_s);

    if (options.registry) {
        m_registry = options.registry;
    } else {
        m_ownedRegistry = options.registryPath.isEmpty() ? createSettingsRegistry()
                                                         : std::make_unique<HiveRegistry>(options.registryPath);
        m_registry = m_ownedRegistry.get();
    }
    m_settings = std::make_unique<RegistryWrapper>(*m_registry);
    if (options.prompts) {
        m_prompts = options.prompts;
    } else {
        m_guiPrompts = std::make_unique<GuiPrompts>(this);
        m_guiPrompts->newBlocksetDialog = &frmNew::ask;
        m_prompts = m_guiPrompts.get();
    }
    if (options.symbolPrompt) {
        m_symbolPrompt = options.symbolPrompt;
    } else {
        m_ownedSymbolPrompt = std::make_unique<SymbolDialogPrompt>(*m_prompts, this);
        m_symbolPrompt = m_ownedSymbolPrompt.get();
    }

    m_actions = createMainCommands(this);
    setWindowIcon(programIcon());
    createTabs();
    createStatusBar();
    new FileDrops(this, [this](const QStringList &paths) { dropFiles(paths); });
    // Wide enough for the longest status text beside the other panels.
    resize(900, 600);

    load();
    connectCommands();
    connectPages();
}

frmMain::~frmMain()
{
    // The pages and tabs outlive the document by a moment while the window is torn
    // down: nothing they report may reach it any more.
    for (QObject *source : std::initializer_list<QObject *>{m_settingsTab, m_versionTab, m_tabs, m_blockPage,
                                                            m_texturePage, m_soundPage}) {
        if (source)
            source->disconnect();
    }
    if (m_document) {
        m_document->setView(nullptr);
        m_document->disconnect();
    }
    // A window destroyed without being closed still leaves no files behind.
    if (!m_unloaded && m_folder) {
        m_folder->removeWorkingFolders();
        QFile::remove(m_folder->sessionPath());
    }
    if (m_busy)
        QApplication::restoreOverrideCursor();
}

QString frmMain::welcomeText()
{
    return u"Welcome to Cubrix "_s + programVersion() + u'!';
}

// ---------------------------------------------------------------------------
// Building the window

void frmMain::createTabs()
{
    m_tabs = new QTabWidget(this);
    m_tabs->setObjectName(u"SSTab1"_s);
    m_tabs->setDocumentMode(false);

    m_blockPage = new ItemListPage(u"BlockList"_s,
                                   {u"File"_s, u"Name"_s, u"Symbol"_s, u"Double"_s, u"Type"_s, u"BSP"_s, u"Size"_s},
                                   {170, 170, 60, 60, 100, 60, 80}, ItemListPage::Preview::None, m_tabs);
    m_tabs->addTab(m_blockPage, u"&Blocks"_s);
    m_texturePage =
        new ItemListPage(u"TextureList"_s, {u"File"_s, u"Size"_s}, {220, 80}, ItemListPage::Preview::Picture, m_tabs);
    m_tabs->addTab(m_texturePage, u"&Textures"_s);
    m_soundPage =
        new ItemListPage(u"SoundList"_s, {u"File"_s, u"Size"_s}, {220, 80}, ItemListPage::Preview::None, m_tabs);
    m_tabs->addTab(m_soundPage, u"&Sounds"_s);

    // Style values and update comment
    m_settingsTab = new SettingsTab(m_tabs);
    m_tabs->addTab(m_settingsTab, u"Setti&ngs"_s);
    m_versionTab = new VersionTab(m_tabs);
    m_tabs->addTab(m_versionTab, u"&Version"_s);

    setCentralWidget(m_tabs);
}

void frmMain::createStatusBar()
{
    QStatusBar *bar = statusBar();
    bar->setObjectName(u"StatusBar1"_s);
    const std::pair<const char16_t *, int> panels[] = {
        {u"stbBlocks", 90}, {u"stbTextures", 100}, {u"stbSounds", 90}, {u"stbVersion", 100}, {u"stbProcess", 0}};
    for (const auto &[name, width] : panels) {
        auto *panel = new QLabel(bar);
        panel->setObjectName(QString::fromUtf16(name));
        panel->setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);
        panel->setContentsMargins(4, 0, 4, 0);
        panel->setMinimumWidth(width);
        bar->addWidget(panel, width == 0 ? 1 : 0);
        m_panels.insert(panel->objectName(), panel);
    }
}

void frmMain::connectCommands()
{
    // A toolbar button takes no focus, so a texture box may still hold an edit that
    // its focus loss would report: every command reports it first.
    for (QAction *action : std::as_const(m_actions))
        connect(action, &QAction::triggered, m_settingsTab, &SettingsTab::commitTextureEdit);

    const auto on = [this](const QString &name, auto slot) {
        connect(m_actions.value(name), &QAction::triggered, this, slot);
    };
    ItemCommands *items = m_itemCommands;
    for (const QString &prefix : {u"btn"_s, u"mnu"_s}) {
        on(prefix + u"New"_s, [this] {
            runDocumentCommand(&BlocksetDocument::newBlockset);
            focusOpenedBlockset();
        });
        on(prefix + u"Open"_s, [this] { openBlocksetFile(QString()); });
        on(prefix + u"Close"_s, [this] { runDocumentCommand(&BlocksetDocument::closeBlockset); });
        on(prefix + u"Save"_s, [this] { runDocumentCommand(&BlocksetDocument::saveCommand); });
        on(prefix + u"SaveAs"_s, [this] { runDocumentCommand(&BlocksetDocument::saveBlocksetAs); });
        on(prefix + u"Undo"_s, [this] {
            m_document->undo();
            m_presenter->checkInterface(false);
        });
        on(prefix + u"Redo"_s, [this] {
            m_document->redo();
            m_presenter->checkInterface(false);
        });
        on(prefix + u"AddItem"_s, [items] { items->addItem(); });
        on(prefix + u"RemoveItem"_s, [items] { items->removeItem(); });
        on(prefix + u"EditItem"_s, [items] { items->editItem(); });
        on(prefix + u"PreviewItem"_s, [items] { items->previewItem(); });
        on(prefix + u"AddBSP"_s, [items] { items->addBSP(); });
        on(prefix + u"Manager"_s, &frmMain::cacheManagerRequested);
    }
    on(u"btnReplaceItem"_s, [items] { items->replaceItem(true); });
    on(u"mnuReplaceItem"_s, [items] { items->replaceItem(false); });
    on(u"mnuExportItem"_s, [items] { items->exportItems(); });
    on(u"mnuRemapSymbols"_s, [this] { m_symbolCommands->remapSymbols(); });
    on(u"mnuOptions"_s, &frmMain::showOptions);
    on(u"mnuAbout"_s, &frmMain::showAbout);
    on(u"mnuExit"_s, &frmMain::close);
}

void frmMain::connectPages()
{
    for (ItemKind kind : {ItemKind::Block, ItemKind::Texture, ItemKind::Sound}) {
        ItemListPage *page = m_presenter->page(kind);
        page->setLabelsEditable(true);
        // The list's context menu holds the item commands; Delete and Space work in the list.
        page->list()->addActions({m_actions.value(u"mnuEditItem"_s), m_actions.value(u"mnuPreviewItem"_s),
                                  m_actions.value(u"mnuRemoveItem"_s), m_actions.value(u"mnuExportItem"_s)});
        page->list()->setContextMenuPolicy(Qt::ActionsContextMenu);
        page->setDragFolder([this, kind] { return itemFolder(*m_document, kind); });
        connect(page, &ItemListPage::labelEdited, this, [this, kind](int row, const QString &, const QString &text) {
            m_itemCommands->renameLabel(kind, row, text);
        });
    }
    connect(m_tabs, &QTabWidget::currentChanged, this, &frmMain::tabChanged);
    const auto styleEdited = [this](StyleField field, const QString &value) {
        m_document->editStyleValue(field, value);
        checkInterface();
    };
    connect(m_settingsTab, &SettingsTab::styleValueEdited, this, styleEdited);
    connect(m_versionTab, &VersionTab::styleValueEdited, this, styleEdited);
    connect(m_versionTab, &VersionTab::updateCommentEdited, this, [this](const QString &comment) {
        m_document->editUpdateComment(comment);
        checkInterface();
    });
    SymbolCommands *symbols = m_symbolCommands;
    connect(m_settingsTab, &SettingsTab::strictPrefixClicked, symbols, &SymbolCommands::strictPrefixClicked);
    connect(m_settingsTab, &SettingsTab::prefixListFocused, symbols, &SymbolCommands::prefixListFocused);
    connect(m_settingsTab, &SettingsTab::prefixListChosen, symbols, &SymbolCommands::prefixListChosen);
    connect(m_settingsTab, &SettingsTab::symbolControlsEdited, symbols, &SymbolCommands::symbolControlsEdited);
}

// ---------------------------------------------------------------------------
// Load and unload

void frmMain::load()
{
    // The working folder object only names the folders until they are created below.
    m_folder = std::make_unique<WorkingFolder>();
    m_document = std::make_unique<BlocksetDocument>(*m_prompts, *m_symbolPrompt, *m_settings, *m_folder);
    m_document->setView(this);
    DocumentPresenter::Views views;
    views.window = this;
    views.tabs = m_tabs;
    views.blocks = m_blockPage;
    views.textures = m_texturePage;
    views.sounds = m_soundPage;
    views.settings = m_settingsTab;
    views.version = m_versionTab;
    views.blocksPanel = m_panels.value(u"stbBlocks"_s);
    views.texturesPanel = m_panels.value(u"stbTextures"_s);
    views.soundsPanel = m_panels.value(u"stbSounds"_s);
    views.versionPanel = m_panels.value(u"stbVersion"_s);
    views.processPanel = m_panels.value(u"stbProcess"_s);
    views.actions = &m_actions;
    m_presenter = new DocumentPresenter(*m_document, *m_settings, views, this);
    m_itemCommands = new ItemCommands(*m_document, *m_presenter, this);
    auto *blockPictures = new BlockPictures(*m_document, *m_blockPage, this);
    connect(m_itemCommands, &ItemCommands::blockPreviewRequested, blockPictures, &BlockPictures::openPreview);
    m_symbolCommands = new SymbolCommands(*m_document, *m_presenter, *m_settingsTab, this);
    createRecentMenu();
    m_webCommands = new WebCommands(*m_document, *m_presenter, m_actions, this);
    // The settings key, with defaults where values are missing (in memory, when
    // the store cannot be used).
    QStringList problems;
    if (!m_settings->loadSettings())
        problems << m_settings->problem();
    // The working folder and its blocks, textures and sounds folders.
    if (const Result made = m_folder->createWorkingFolders(); !made)
        problems << u"No blockset can be opened: "_s + made.reason() + u'.';
    restoreWindowState();
    // Nothing is open yet: only the commands that need no blockset.
    checkInterface();
    // The strict-prefix list holds the prefix alphabet, "." first, so that its
    // positions agree with the prefix lists of the dialogs.
    m_settingsTab->fillPrefixList(prefixAlphabet());
    // The status bar greets the user, or says once what cannot work.
    m_document->showProcess(problems.isEmpty() ? welcomeText() : problems.join(u' '));
    offerRecovery();
}

void frmMain::offerRecovery()
{
    const QString sessionPath = m_folder->sessionPath();
    const std::optional<RecoveryRecord> record = RecoveryRecord::read(sessionPath);
    m_document->setRecoveryPath(sessionPath);
    if (!m_folder->hadLeftover())
        return;
    // What a Cubrix that ended without closing left behind: offered back when it
    // held unsaved changes, else cleared without a word.
    if (record && (record->blocksetChanged || record->updateChanged)) {
        const int chosen = m_prompts->choose(
            u"Cubrix ended without saving "_s + record->blocksetFileName + u". Recover the unsaved changes?"_s,
            u"Cubrix"_s, QString(), {u"Recover"_s, u"Discard"_s}, PromptIcon::Question);
        // Only Discard throws the changes away; Escape keeps them.
        if (chosen != 1 && m_document->recoverBlockset(*record)) {
            m_presenter->checkInterface(false);
            return;
        }
    }
    m_folder->clearWorkingFolders();
    QFile::remove(sessionPath);
}

bool frmMain::unload()
{
    if (m_unloaded)
        return true;
    // A texture typed into a box that still has the focus counts as an edit.
    m_settingsTab->commitTextureEdit();
    if (!m_document->askSaveOnUnload()) {
        checkInterface();
        return false;
    }
    m_unloaded = true;
    m_folder->removeWorkingFolders();
    QFile::remove(m_folder->sessionPath());
    return true;
}

void frmMain::closeEvent(QCloseEvent *event)
{
    // Cancel (or Escape, or a save that did not happen) keeps the window and the edits.
    if (!unload()) {
        event->ignore();
        return;
    }
    WindowMemory::saveWindow(this, *m_settings, u"editor"_s);
    for (ItemKind kind : {ItemKind::Block, ItemKind::Texture, ItemKind::Sound}) {
        const QTreeWidget *list = m_presenter->page(kind)->list();
        WindowMemory::saveColumns(list->header(), *m_settings, list->objectName());
    }
    (void)m_settings->setStringSetting(u"lastTab"_s, QString::number(m_tabs->currentIndex()));
    event->accept();
}

void frmMain::changeEvent(QEvent *event)
{
    QMainWindow::changeEvent(event);
    if (event->type() != QEvent::ActivationChange || !isActiveWindow() || m_askingAboutDisk || !m_document)
        return;
    // Asked once per outside change; the question's own box must not ask again.
    m_askingAboutDisk = true;
    (void)m_document->askAboutDiskChange(true);
    m_askingAboutDisk = false;
    m_presenter->checkInterface(false);
}

// ---------------------------------------------------------------------------
// DocumentView

void frmMain::processShown(const QString &text)
{
    m_presenter->showProcess(text);
}

void frmMain::setBusy(bool busy)
{
    if (busy == m_busy)
        return;
    m_busy = busy;
    if (busy)
        QApplication::setOverrideCursor(Qt::WaitCursor);
    else
        QApplication::restoreOverrideCursor();
}

void frmMain::letEventsRun()
{
    QCoreApplication::processEvents();
}

void frmMain::checkInterface()
{
    m_presenter->checkInterface(true);
}

// ---------------------------------------------------------------------------
// Commands of the window

void frmMain::runDocumentCommand(Result (BlocksetDocument::*command)())
{
    (void)(m_document.get()->*command)();
    m_presenter->checkInterface(false);
}

void frmMain::tabChanged(int index)
{
    m_document->setTab(index);
    m_presenter->focusTab(index);
    checkInterface();
}

void frmMain::showOptions()
{
    frmOptions dialog(*m_settings, this);
    dialog.exec();
    checkInterface();
}

void frmMain::showAbout()
{
    frmAbout dialog(this);
    dialog.exec();
    checkInterface();
}

void frmMain::restoreWindowState()
{
    WindowMemory::restoreWindow(this, *m_settings, u"editor"_s);
    for (ItemKind kind : {ItemKind::Block, ItemKind::Texture, ItemKind::Sound}) {
        ItemListPage *page = m_presenter->page(kind);
        QHeaderView *header = page->list()->header();
        if (WindowMemory::restoreColumns(header, *m_settings, page->list()->objectName())
            && header->isSortIndicatorShown())
            page->sortBy(header->sortIndicatorSection(), header->sortIndicatorOrder());
    }
    bool ok = false;
    const int tab = m_settings->getStringSetting(u"lastTab"_s).toInt(&ok);
    if (ok && tab >= 0 && tab < m_tabs->count())
        m_document->setTab(tab);
}

void frmMain::createRecentMenu()
{
    m_recent = std::make_unique<RecentFiles>(*m_settings);
    connect(m_document.get(), &BlocksetDocument::fileUsed, this, [this](const QString &path) { m_recent->add(path); });
    auto *menu = new QMenu(u"Open &Recent"_s, this);
    menu->setObjectName(u"mnuRecent"_s);
    findChild<QMenu *>(u"mnuFile"_s)->insertMenu(m_actions.value(u"mnuClose"_s), menu);
    connect(new RecentMenu(menu, *m_recent, *m_prompts), &RecentMenu::openRequested, this, &frmMain::openBlocksetFile);
}

void frmMain::openBlocksetFile(const QString &path)
{
    (void)m_document->openBlockset(path);
    m_presenter->checkInterface(false);
    focusOpenedBlockset();
}

void frmMain::focusOpenedBlockset()
{
    // A blockset that was just opened or made shows its first tab with items, and
    // that tab's list (or the placeholder texture choice) takes the focus.
    if (m_document->blocksetOpen())
        m_presenter->focusTab(m_document->tab());
}

void frmMain::dropFiles(const QStringList &paths)
{
    if (m_document->edit(u"Add Dropped Files"_s, [&] { return ::dropFiles(*m_document, paths); })
        == DropOutcome::OpenedBlockset) {
        m_presenter->checkInterface(false);
        focusOpenedBlockset();
    } else {
        checkInterface();
    }
}
