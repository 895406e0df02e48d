#include "app/ui/frmMain.h"

#include "app/BlocksetDocument.h"
#include "app/DroppedFiles.h"
#include "app/InterfaceState.h"
#include "storage/WorkingFolder.h"
#include "app/ui/ItemListPage.h"
#include "app/ui/MainWindowIcons.h"
#include "app/ui/frmAbout.h"
#include "app/ui/frmNew.h"
#include "common/HiveRegistry.h"
#include "common/ProgramVersion.h"
#include "common/Prompts.h"
#include "common/Registry.h"
#include "common/RegistryWrapper.h"
#include "common/ui/GuiPrompts.h"
#include "common/ui/frmOptions.h"
#include "formats/ui/SettingsTab.h"
#include "formats/ui/VersionTab.h"
#include "symbols/AddItems.h"
#include "symbols/RemapSymbols.h"
#include "symbols/RemoveItems.h"
#include "symbols/RenameItem.h"
#include "symbols/ReplaceBlocks.h"
#include "symbols/StrictPrefix.h"
#include "symbols/SymbolDialogs.h"
#include "symbols/SymbolScheme.h"
#include "symbols/ui/SymbolDialog.h"
#include "symbols/ui/frmRemapSymbols.h"

#include <QAction>
#include <QApplication>
#include <QAudioDevice>
#include <QCloseEvent>
#include <QComboBox>
#include <QCoreApplication>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QKeySequence>
#include <QLabel>
#include <QLineEdit>
#include <QMediaDevices>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QSignalBlocker>
#include <QSoundEffect>
#include <QStatusBar>
#include <QStyle>
#include <QTabWidget>
#include <QToolBar>
#include <QTreeWidget>
#include <QUrl>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

const QString kOopsText = u"Yet not implemented in this version"_s;
const QString kOopsTitle = u"Oops..."_s;

// The command table: toolbar key, tooltip, menu entry and its caption. The toolbar
// shows the first eleven rows in this order and then btnManager.
struct Command {
    const char16_t *button; // toolbar key, or nullptr
    const char16_t *tooltip;
    const char16_t *menu;
    const char16_t *caption;
};

const Command kCommands[] = {
    {u"btnNew", u"New Blockset", u"mnuNew", u"&New Blockset"},
    {u"btnOpen", u"Open Blockset...", u"mnuOpen", u"&Open Blockset..."},
    {u"btnClose", u"Close Blockset", u"mnuClose", u"&Close Blockset"},
    {u"btnSave", u"Save Blockset", u"mnuSave", u"&Save Blockset"},
    {u"btnSaveAs", u"Save Blockset As...", u"mnuSaveAs", u"Save Blockset &As..."},
    {u"btnAddItem", u"Add Item...", u"mnuAddItem", u"&Add Item..."},
    {u"btnRemoveItem", u"Remove Item", u"mnuRemoveItem", u"&Remove Item"},
    {u"btnReplaceItem", u"Update/Replace Item", u"mnuReplaceItem", u"&Update/Replace Item"},
    {u"btnEditItem", u"Edit Item...", u"mnuEditItem", u"&Edit Item..."},
    {u"btnPreviewItem", u"Preview/Play Item", u"mnuPreviewItem", u"&Preview/Play Item"},
    {u"btnAddBSP", u"Add BSP Trees", u"mnuAddBSP", u"&Add BSP Trees..."},
    {u"btnManager", u"Cache Manager...", u"mnuManager", u"Cubrix &Cache Manager"},
    {nullptr, nullptr, u"mnuOptions", u"O&ptions..."},
    {nullptr, nullptr, u"mnuRemapSymbols", u"&Remap Symbols..."},
    {nullptr, nullptr, u"mnuAbout", u"&About Cubrix..."},
    {nullptr, nullptr, u"mnuExit", u"&Exit"},
};

QString str(const char16_t *text)
{
    return text ? QString::fromUtf16(text) : QString();
}

QLabel *makePanel(const QString &name, QWidget *parent)
{
    auto *panel = new QLabel(parent);
    panel->setObjectName(name);
    panel->setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);
    panel->setContentsMargins(4, 0, 4, 0);
    return panel;
}

} // namespace

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
        m_guiPrompts->symbolDialogRunner = [this](const SymbolDialogSetup &setup) {
            return SymbolDialog::ask(setup, *m_guiPrompts, this);
        };
        m_prompts = m_guiPrompts.get();
    }

    createActions();
    setWindowIcon(programIcon());
    createMenus();
    createToolBar();
    createTabs();
    createStatusBar();
    setAcceptDrops(true);
    resize(820, 560);

    load();
    connectCommands();
}

frmMain::~frmMain()
{
    // The pages and tabs outlive the document by a moment while the window is torn
    // down: nothing they report may reach it any more.
    if (m_settingsTab)
        m_settingsTab->disconnect(this);
    if (m_versionTab)
        m_versionTab->disconnect(this);
    if (m_tabs)
        m_tabs->disconnect(this);
    for (ItemListPage *page : {m_blockPage, m_texturePage, m_soundPage}) {
        if (page)
            page->disconnect(this);
    }
    if (m_document)
        m_document->setView(nullptr);
    // A window destroyed without being closed still leaves no files behind.
    if (!m_unloaded && m_folder)
        m_folder->removeWorkingFolders();
    if (m_busy)
        QApplication::restoreOverrideCursor();
}

QString frmMain::welcomeText()
{
    return u"Welcome to Cubrix "_s + programVersion() + u'!';
}

// ---------------------------------------------------------------------------
// Building the window

QAction *frmMain::addCommand(const QString &name, const QString &text)
{
    auto *action = new QAction(text, this);
    action->setObjectName(name);
    m_actions.insert(name, action);
    return action;
}

void frmMain::createActions()
{
    for (const Command &command : kCommands) {
        QAction *menuAction = addCommand(str(command.menu), str(command.caption));
        if (!command.button)
            continue;
        const QString button = str(command.button);
        QAction *buttonAction = addCommand(button, str(command.tooltip));
        buttonAction->setToolTip(str(command.tooltip));
        const QIcon icon = commandIcon(button);
        buttonAction->setIcon(icon);
        menuAction->setIcon(icon);
    }
    m_actions.value(u"mnuNew"_s)->setShortcut(QKeySequence::New);
    m_actions.value(u"mnuOpen"_s)->setShortcut(QKeySequence::Open);
    m_actions.value(u"mnuClose"_s)->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_W));
    m_actions.value(u"mnuSave"_s)->setShortcut(QKeySequence::Save);
    m_actions.value(u"mnuSaveAs"_s)->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_S));
    m_actions.value(u"mnuExit"_s)->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));
}

void frmMain::createMenus()
{
    const auto addMenu = [this](const QString &name, const QString &title, const QStringList &entries) {
        QMenu *menu = menuBar()->addMenu(title);
        menu->setObjectName(name);
        menu->menuAction()->setObjectName(name);
        for (const QString &entry : entries) {
            if (entry.startsWith(u"mnuSep"_s)) {
                QAction *separator = menu->addSeparator();
                separator->setObjectName(entry);
            } else {
                menu->addAction(m_actions.value(entry));
            }
        }
    };
    addMenu(u"mnuFile"_s, u"&File"_s,
            {u"mnuNew"_s, u"mnuOpen"_s, u"mnuClose"_s, u"mnuSave"_s, u"mnuSaveAs"_s, u"mnuSep1"_s, u"mnuOptions"_s,
             u"mnuSep2"_s, u"mnuExit"_s});
    addMenu(u"mnuEdit"_s, u"&Edit"_s,
            {u"mnuAddItem"_s, u"mnuRemoveItem"_s, u"mnuReplaceItem"_s, u"mnuEditItem"_s, u"mnuPreviewItem"_s});
    addMenu(u"mnuTools"_s, u"&Tools"_s, {u"mnuRemapSymbols"_s, u"mnuAddBSP"_s});
    addMenu(u"mnuWindow"_s, u"&Window"_s, {u"mnuManager"_s});
    addMenu(u"mnuHelp"_s, u"&?"_s, {u"mnuAbout"_s});
}

void frmMain::createToolBar()
{
    m_toolbar = addToolBar(u"Toolbar"_s);
    m_toolbar->setObjectName(u"Toolbar1"_s);
    m_toolbar->setMovable(false);
    m_toolbar->setIconSize(QSize(24, 24));
    m_toolbar->setToolButtonStyle(Qt::ToolButtonIconOnly);
    const auto add = [this](const QStringList &names) {
        for (const QString &name : names)
            m_toolbar->addAction(m_actions.value(name));
    };
    add({u"btnNew"_s, u"btnOpen"_s, u"btnClose"_s, u"btnSave"_s, u"btnSaveAs"_s});
    m_toolbar->addSeparator();
    add({u"btnAddItem"_s, u"btnRemoveItem"_s, u"btnReplaceItem"_s, u"btnEditItem"_s, u"btnPreviewItem"_s});
    m_toolbar->addSeparator();
    add({u"btnAddBSP"_s});
    m_toolbar->addSeparator();
    add({u"btnManager"_s});
}

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
    m_stbBlocks = makePanel(u"stbBlocks"_s, bar);
    m_stbTextures = makePanel(u"stbTextures"_s, bar);
    m_stbSounds = makePanel(u"stbSounds"_s, bar);
    m_stbVersion = makePanel(u"stbVersion"_s, bar);
    m_stbProcess = makePanel(u"stbProcess"_s, bar);
    m_stbBlocks->setMinimumWidth(90);
    m_stbTextures->setMinimumWidth(100);
    m_stbSounds->setMinimumWidth(90);
    m_stbVersion->setMinimumWidth(100);
    bar->addWidget(m_stbBlocks);
    bar->addWidget(m_stbTextures);
    bar->addWidget(m_stbSounds);
    bar->addWidget(m_stbVersion);
    bar->addWidget(m_stbProcess, 1);
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
    for (const QString &prefix : {u"btn"_s, u"mnu"_s}) {
        on(prefix + u"New"_s, [this] {
            runDocumentCommand(&BlocksetDocument::newBlockset);
            focusOpenedBlockset();
        });
        on(prefix + u"Open"_s, [this] { openBlocksetFile(QString()); });
        on(prefix + u"Close"_s, [this] { runDocumentCommand(&BlocksetDocument::closeBlockset); });
        on(prefix + u"Save"_s, [this] { runDocumentCommand(&BlocksetDocument::saveCommand); });
        on(prefix + u"SaveAs"_s, [this] { runDocumentCommand(&BlocksetDocument::saveBlocksetAs); });
        on(prefix + u"AddItem"_s, &frmMain::addItem);
        on(prefix + u"RemoveItem"_s, &frmMain::removeItem);
        on(prefix + u"EditItem"_s, &frmMain::editItem);
        on(prefix + u"PreviewItem"_s, &frmMain::previewItem);
        on(prefix + u"AddBSP"_s, &frmMain::addBSP);
        on(prefix + u"Manager"_s, &frmMain::cacheManagerRequested);
    }
    // Update/Replace: the toolbar button acts on the Blocks tab only, the menu entry on any tab.
    on(u"btnReplaceItem"_s, [this] {
        if (m_document->tab() == BlocksetDocument::TabBlocks)
            replaceItem();
        else
            checkInterface();
    });
    on(u"mnuReplaceItem"_s, &frmMain::replaceItem);
    on(u"mnuRemapSymbols"_s, &frmMain::remapSymbols);
    for (int tab : {BlocksetDocument::TabBlocks, BlocksetDocument::TabTextures, BlocksetDocument::TabSounds}) {
        itemPage(tab)->setLabelsEditable(true);
        connect(itemPage(tab), &ItemListPage::labelEdited, this,
                [this, tab](int row, const QString &, const QString &newText) { renameItemLabel(tab, row, newText); });
    }
    on(u"mnuOptions"_s, &frmMain::showOptions);
    on(u"mnuAbout"_s, &frmMain::showAbout);
    on(u"mnuExit"_s, &frmMain::close);

    connect(m_tabs, &QTabWidget::currentChanged, this, &frmMain::tabChanged);
    connect(m_settingsTab, &SettingsTab::styleValueEdited, this, [this](StyleField field, const QString &value) {
        m_document->editStyleValue(field, value);
        // The control already shows the value: keep it from being written back.
        if (m_shownStyle)
            styleValue(*m_shownStyle, field) = value;
        checkInterface();
    });
    connect(m_versionTab, &VersionTab::styleValueEdited, this, [this](StyleField field, const QString &value) {
        m_document->editStyleValue(field, value);
        if (m_shownStyle)
            styleValue(*m_shownStyle, field) = value;
        checkInterface();
    });
    connect(m_versionTab, &VersionTab::updateCommentEdited, this, [this](const QString &comment) {
        m_document->editUpdateComment(comment);
        m_shownComment = comment;
        checkInterface();
    });
    connect(m_settingsTab, &SettingsTab::strictPrefixClicked, this, &frmMain::strictPrefixClicked);
    connect(m_settingsTab, &SettingsTab::prefixListFocused, this,
            [this] { m_prefixRemembered = m_document->symbols().prefixIndex; });
    connect(m_settingsTab, &SettingsTab::prefixListChosen, this, &frmMain::prefixListChosen);
    connect(m_settingsTab, &SettingsTab::symbolControlsEdited, this, [this] {
        m_document->setSymbolSettings(m_settingsTab->shownSymbols());
        m_shownSymbols = m_document->symbols();
        checkInterface();
    });
}

// ---------------------------------------------------------------------------
// Load and unload

void frmMain::load()
{
    // The document holds the blockset's archive for the window's whole life; the
    // working folder object only names the folders until they are created below.
    m_folder = std::make_unique<WorkingFolder>();
    m_document = std::make_unique<BlocksetDocument>(*m_prompts, *m_settings, *m_folder);
    m_document->setView(this);
    // Sounds can be previewed only when an audio output exists at start.
    m_soundAvailable = !QMediaDevices::audioOutputs().isEmpty();
    // The settings key, with defaults where values are missing.
    m_settings->loadSettings();
    // The working folder and its blocks, textures and sounds folders.
    m_folder->createWorkingFolders();
    // Nothing is open yet: only the commands that need no blockset.
    checkInterface();
    // The strict-prefix list holds the prefix alphabet, "." first, so that its
    // positions agree with the prefix lists of the dialogs.
    m_settingsTab->fillPrefixList(prefixAlphabet());
    // The status bar greets the user.
    m_document->showProcess(welcomeText());
}

void frmMain::unload()
{
    if (m_unloaded)
        return;
    m_unloaded = true;
    // A texture typed into a box that still has the focus counts as an edit.
    m_settingsTab->commitTextureEdit();
    m_document->askSaveOnUnload();
    m_folder->removeWorkingFolders();
}

void frmMain::closeEvent(QCloseEvent *event)
{
    // Closing cannot be stopped: the save question has Yes and No only.
    unload();
    event->accept();
}

// ---------------------------------------------------------------------------
// DocumentView

void frmMain::processShown(const QString &text)
{
    m_stbProcess->setText(text);
    m_stbProcess->repaint();
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

void frmMain::viewReset()
{
    m_texturePage->clearPreview();
    {
        const QSignalBlocker settingsBlocker(m_settingsTab);
        const QSignalBlocker versionBlocker(m_versionTab);
        m_settingsTab->resetValues();
        m_versionTab->resetValues();
    }
    forgetRenderedPages();
    renderDocument();
}

void frmMain::checkInterface()
{
    refreshInterface(true);
}

// ---------------------------------------------------------------------------
// Rendering

void frmMain::runDocumentCommand(void (BlocksetDocument::*command)())
{
    (m_document.get()->*command)();
    refreshInterface(false);
}

void frmMain::refreshInterface(bool clearResult)
{
    renderDocument();
    const InterfaceState state =
        computeInterfaceState(interfaceFacts(*m_document, m_settings->getBoolSetting(u"updateFile"_s)));
    for (auto it = state.enabled.cbegin(); it != state.enabled.cend(); ++it) {
        if (QAction *action = m_actions.value(it.key()))
            action->setEnabled(it.value());
    }
    setWindowTitle(state.caption);
    m_stbBlocks->setText(state.blocksPanel);
    m_stbTextures->setText(state.texturesPanel);
    m_stbSounds->setText(state.soundsPanel);
    m_stbVersion->setText(state.versionPanel);
    m_versionTab->setUpdateEnabled(state.updateGroupEnabled);
    // A result text stays only until the next refresh of the interface.
    if (clearResult && m_document->processMessageShown())
        m_document->clearProcess();
    m_stbProcess->setText(m_document->processText());
}

void frmMain::renderDocument()
{
    renderLists();
    renderPages();
    const int tab = m_document->tab();
    if (m_tabs->currentIndex() != tab) {
        const QSignalBlocker blocker(m_tabs);
        m_tabs->setCurrentIndex(tab);
        focusTab(tab);
    }
}

void frmMain::renderLists()
{
    QList<QStringList> blocks;
    for (const BlockRow &row : m_document->blocks())
        blocks.append({row.file, row.name, row.symbol, row.doubleSymbol, row.type, row.bsp, row.sizeText});
    m_blockPage->showRows(blocks);
    const auto itemCells = [](const QList<ItemRow> &rows) {
        QList<QStringList> cells;
        for (const ItemRow &row : rows)
            cells.append({row.file, row.sizeText});
        return cells;
    };
    m_texturePage->showRows(itemCells(m_document->textures()));
    m_soundPage->showRows(itemCells(m_document->sounds()));
}

void frmMain::renderPages()
{
    // The pages are written with their signals blocked: showing a value is no edit.
    const QSignalBlocker settingsBlocker(m_settingsTab);
    const QSignalBlocker versionBlocker(m_versionTab);
    QStringList textureNames;
    for (const ItemRow &row : m_document->textures())
        textureNames.append(row.file);
    const bool styleChanged = m_shownStyle != m_document->style();
    if (styleChanged) {
        m_settingsTab->showValues(m_document->style(), textureNames);
        m_shownTextureNames = textureNames;
    } else if (m_shownTextureNames != textureNames) {
        m_settingsTab->setTextureNames(textureNames);
        m_shownTextureNames = textureNames;
    }
    if (styleChanged || m_shownComment != m_document->updateComment()) {
        m_versionTab->showValues(m_document->style(), m_document->updateComment());
        m_shownComment = m_document->updateComment();
    }
    m_shownStyle = m_document->style();
    if (m_shownSymbols != m_document->symbols()) {
        m_settingsTab->showSymbols(m_document->symbols());
        m_shownSymbols = m_document->symbols();
    }
}

void frmMain::forgetRenderedPages()
{
    m_shownStyle.reset();
    m_shownSymbols.reset();
    m_shownComment.reset();
    m_shownTextureNames.reset();
}

void frmMain::tabChanged(int index)
{
    m_document->setTab(index);
    focusTab(index);
    checkInterface();
}

void frmMain::focusTab(int index)
{
    QWidget *target = nullptr;
    switch (index) {
    case BlocksetDocument::TabBlocks: target = m_blockPage->list(); break;
    case BlocksetDocument::TabTextures: target = m_texturePage->list(); break;
    case BlocksetDocument::TabSounds: target = m_soundPage->list(); break;
    case BlocksetDocument::TabSettings: target = m_settingsTab->firstField(); break;
    case BlocksetDocument::TabVersion: target = m_versionTab->firstField(); break;
    default: break;
    }
    if (target && target->isEnabled())
        target->setFocus(Qt::TabFocusReason);
}

// ---------------------------------------------------------------------------
// Commands of the window

void frmMain::showOops()
{
    m_prompts->message(kOopsText, kOopsTitle, PromptButtons::Ok, PromptIcon::None);
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

void frmMain::addItem()
{
    const int tab = m_document->tab();
    if (ItemListPage *page = itemPage(tab)) {
        // The summary ("2 blocks added.") stays after the refresh that follows.
        checkInterface();
        addItems(*m_document, ItemKind(tab));
        refreshInterface(false);
        page->list()->setFocus();
    } else {
        checkInterface();
    }
}

ItemListPage *frmMain::itemPage(int tab) const
{
    switch (tab) {
    case BlocksetDocument::TabBlocks: return m_blockPage;
    case BlocksetDocument::TabTextures: return m_texturePage;
    case BlocksetDocument::TabSounds: return m_soundPage;
    default: return nullptr;
    }
}

// The tab order of the three lists is the order of ItemKind.
void frmMain::removeItem()
{
    const int tab = m_document->tab();
    ItemListPage *page = itemPage(tab);
    if (!page) {
        checkInterface();
        return;
    }
    ListSelection selection{page->selectedRows(), page->currentRow()};
    const bool removed = removeItems(*m_document, ItemKind(tab), selection);
    checkInterface();
    if (removed) {
        page->list()->setFocus();
        page->selectRow(selection.current);
    }
}

void frmMain::renameItemLabel(int tab, int row, const QString &newText)
{
    // A refused edit puts the old label back at the refresh.
    if (!renameItem(*m_document, ItemKind(tab), row, newText))
        itemPage(tab)->forgetShownRows();
    checkInterface();
    itemPage(tab)->selectRow(row);
}

void frmMain::remapSymbols()
{
    frmRemapSymbols dialog(this);
    remapSymbolsCommand(*m_document, dialog);
    checkInterface();
}

void frmMain::strictPrefixClicked(bool checked)
{
    SymbolSettings symbols = m_document->symbols();
    ::strictPrefixClicked(symbols, checked, m_settings->getBoolSetting(u"syncDouble"_s));
    m_document->setSymbolSettings(symbols);
    checkInterface();
}

void frmMain::prefixListChosen(int index)
{
    remapPrefix(*m_document, m_prefixRemembered, index);
    // The list shows what the document holds, also after a No.
    m_shownSymbols.reset();
    checkInterface();
}

void frmMain::replaceItem()
{
    checkInterface();
    replaceBlocks(*m_document, m_blockPage->selectedRows());
    refreshInterface(false);
}

void frmMain::editItem()
{
    if (m_document->tab() == BlocksetDocument::TabBlocks) {
        // skipEdit switches the symbol dialog off; the command then has nothing to do.
        if (m_settings->getBoolSetting(u"skipEdit"_s))
            showOops();
        else
            editSymbols(*m_document, m_blockPage->currentRow());
    }
    checkInterface();
}

void frmMain::previewItem()
{
    switch (m_document->tab()) {
    case BlocksetDocument::TabBlocks: showOops(); break;
    case BlocksetDocument::TabTextures: previewTexture(); break;
    case BlocksetDocument::TabSounds: playSound(); break;
    default: break;
    }
    checkInterface();
}

void frmMain::addBSP()
{
    // The command exists but does nothing else in this version, deliberately.
    showOops();
    checkInterface();
}

void frmMain::previewTexture()
{
    const QString file = m_texturePage->selectedFile();
    // A file that is no readable picture leaves the preview as it was.
    if (!file.isEmpty())
        m_texturePage->showPicture(m_folder->texturesFolder() + u'/' + file, file);
}

void frmMain::playSound()
{
    const QString file = m_soundPage->selectedFile();
    if (file.isEmpty() || !m_soundAvailable)
        return;
    if (!m_sound)
        m_sound = new QSoundEffect(this);
    // A later play replaces the running one.
    m_sound->stop();
    m_sound->setSource(QUrl::fromLocalFile(m_folder->soundsFolder() + u'/' + file));
    m_sound->play();
}

// ---------------------------------------------------------------------------
// Dropped files

void frmMain::openBlocksetFile(const QString &path)
{
    m_document->openBlockset(path);
    refreshInterface(false);
    focusOpenedBlockset();
}

void frmMain::focusOpenedBlockset()
{
    // A blockset that was just opened or made shows its first tab with items, and
    // that tab's list (or the placeholder texture choice) takes the focus.
    if (m_document->blocksetOpen())
        focusTab(m_document->tab());
}

void frmMain::dropFiles(const QStringList &paths)
{
    if (::dropFiles(*m_document, paths) == DropOutcome::OpenedBlockset) {
        refreshInterface(false);
        focusOpenedBlockset();
    } else {
        checkInterface();
    }
}

namespace {

QStringList droppedPaths(const QMimeData *mime)
{
    QStringList paths;
    if (!mime || !mime->hasUrls())
        return paths;
    for (const QUrl &url : mime->urls()) {
        if (url.isLocalFile())
            paths.append(url.toLocalFile());
    }
    return paths;
}

bool acceptsDrop(const QMimeData *mime)
{
    const QStringList paths = droppedPaths(mime);
    return std::any_of(paths.cbegin(), paths.cend(), [](const QString &path) { return isDroppableFile(path); });
}

} // namespace

void frmMain::dragEnterEvent(QDragEnterEvent *event)
{
    if (acceptsDrop(event->mimeData()))
        event->acceptProposedAction();
}

void frmMain::dragMoveEvent(QDragMoveEvent *event)
{
    if (acceptsDrop(event->mimeData()))
        event->acceptProposedAction();
}

void frmMain::dropEvent(QDropEvent *event)
{
    const QStringList paths = droppedPaths(event->mimeData());
    if (paths.isEmpty())
        return;
    event->acceptProposedAction();
    dropFiles(paths);
}
