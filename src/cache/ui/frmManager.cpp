#include "cache/ui/frmManager.h"

#include "app/ui/frmAbout.h"
#include "cache/CacheLocation.h"
#include "cache/ui/frmBlocksetInfo.h"
#include "common/RegistryWrapper.h"
#include "common/ui/GuiPrompts.h"
#include "common/ui/WindowMemory.h"
#include "common/ui/frmOptions.h"

#include <QApplication>
#include <QClipboard>
#include <QCloseEvent>
#include <QEvent>
#include <QHeaderView>
#include <QLabel>
#include <QMenuBar>
#include <QStatusBar>
#include <QToolBar>
#include <QTreeWidget>

using namespace Qt::StringLiterals;

namespace {

const QStringList kCaptions = {u"File Name"_s,    u"Path"_s, u"Version"_s,  u"Size"_s,
                               u"Last Updated"_s, u"Name"_s, u"Synopsis"_s, u"Author"_s,
                               u"Copyright"_s,    u"B"_s,    u"T"_s,        u"S"_s};
// Commands that need a row; the ones that change Rover's cache also need Rover closed.
const QStringList kRowCommands = {u"Open"_s, u"Properties"_s, u"CopyTag"_s, u"CopyURL"_s};
const QStringList kChangeCommands = {u"Remove"_s, u"ForceDownload"_s};

} // namespace

frmManager::frmManager(RoverMachine &machine, Prompts &prompts, RegistryWrapper &settings, QWidget *parent)
    : frmManager(&machine, &prompts, settings, parent)
{
}

frmManager::frmManager(RegistryWrapper &settings, QWidget *parent) : frmManager(nullptr, nullptr, settings, parent) {}

frmManager::frmManager(RoverMachine *machine, Prompts *prompts, RegistryWrapper &settings, QWidget *parent)
    : QMainWindow(parent),
      m_ownMachine(machine ? nullptr : std::make_unique<RoverMachine>()),
      m_ownPrompts(prompts ? nullptr : std::make_unique<GuiPrompts>(this)),
      m_manager(machine ? *machine : *m_ownMachine, prompts ? *prompts : *m_ownPrompts, settings),
      m_settings(settings),
      m_widthSet(CacheManager::ColumnCount, false)
{
    setObjectName(u"frmManager"_s);
    setWindowTitle(u"Cubrix Cache Manager"_s);

    BlocksetList = new QTreeWidget(this);
    BlocksetList->setObjectName(u"BlocksetList"_s);
    BlocksetList->setRootIsDecorated(false);
    BlocksetList->setUniformRowHeights(true);
    BlocksetList->setSelectionMode(QAbstractItemView::SingleSelection);
    BlocksetList->setHeaderLabels(kCaptions);
    BlocksetList->header()->setSectionsClickable(true);
    BlocksetList->header()->setStretchLastSection(false);
    for (int column : {CacheManager::Size, CacheManager::Blocks, CacheManager::Textures, CacheManager::Sounds})
        BlocksetList->headerItem()->setTextAlignment(column, Qt::AlignRight | Qt::AlignVCenter);
    setCentralWidget(BlocksetList);
    connect(BlocksetList->header(), &QHeaderView::sectionClicked, this, &frmManager::sortByColumn);
    connect(BlocksetList->header(), &QHeaderView::sectionResized, this, [this](int column) {
        if (!m_fitting)
            m_widthSet[column] = true;
    });
    connect(BlocksetList, &QTreeWidget::itemSelectionChanged, this, &frmManager::updateState);
    connect(BlocksetList, &QTreeWidget::itemDoubleClicked, this, &frmManager::showProperties);

    const auto panel = [this](const QString &name, int stretch) {
        auto *label = new QLabel(this);
        label->setObjectName(name);
        statusBar()->addWidget(label, stretch);
        return label;
    };
    stbBlocksets = panel(u"stbBlocksets"_s, 0);
    stbSize = panel(u"stbSize"_s, 0);
    stbProcess = panel(u"stbProcess"_s, 1);
    stbBlocksets->setMinimumWidth(100);
    stbSize->setMinimumWidth(120);

    buildCommands();
    m_manager.setProgress([this](const QString &text) {
        stbProcess->setText(text);
        stbProcess->repaint();
    });
    resize(1180, 460);

    m_manager.load();
    mnuIE->setEnabled(m_manager.ieFound());
    mnuNS->setEnabled(m_manager.netscapeFound());
    // As the user left it: size, place, column widths and sort order.
    WindowMemory::restoreWindow(this, m_settings, u"manager"_s);
    QHeaderView *header = BlocksetList->header();
    if (WindowMemory::restoreColumns(header, m_settings, BlocksetList->objectName())) {
        m_widthSet.fill(true);
        if (header->isSortIndicatorShown()) {
            m_sortColumn = header->sortIndicatorSection();
            m_sortAscending = header->sortIndicatorOrder() == Qt::AscendingOrder;
            m_manager.sort(m_sortColumn, m_sortAscending);
        }
    }
    showRows();
}

void frmManager::closeEvent(QCloseEvent *event)
{
    WindowMemory::saveWindow(this, m_settings, u"manager"_s);
    WindowMemory::saveColumns(BlocksetList->header(), m_settings, BlocksetList->objectName());
    QMainWindow::closeEvent(event);
}

frmManager::~frmManager() = default;

void frmManager::addCommand(const QString &key, const QString &caption, const QString &menuCaption,
                            void (frmManager::*slot)())
{
    auto *button = new QAction(caption, this);
    button->setObjectName(u"btn"_s + key);
    button->setToolTip(caption);
    auto *entry = new QAction(menuCaption, this);
    entry->setObjectName(u"mnu"_s + key);
    connect(button, &QAction::triggered, this, slot);
    connect(entry, &QAction::triggered, this, slot);
    m_buttons.insert(key, button);
    m_menus.insert(key, entry);
}

void frmManager::buildCommands()
{
    addCommand(u"Open"_s, u"Open Blockset in Editor"_s, u"&Open Blockset in Editor"_s, &frmManager::openSelected);
    addCommand(u"Remove"_s, u"Remove Blockset from Cache"_s, u"&Remove Blockset from Cache"_s,
               &frmManager::removeSelected);
    addCommand(u"Properties"_s, u"Blockset Properties"_s, u"Blockset &Properties"_s, &frmManager::showProperties);
    addCommand(u"ForceDownload"_s, u"Force Download"_s, u"&Force Download"_s, &frmManager::forceDownloadSelected);
    addCommand(u"CopyTag"_s, u"Copy Blockset Tag to Clipboard"_s, u"Copy Blockset &Tag to Clipboard"_s,
               &frmManager::copyTag);
    addCommand(u"CopyURL"_s, u"Copy Blockset URL to Clipboard"_s, u"Copy Blockset &URL to Clipboard"_s,
               &frmManager::copyUrl);
    addCommand(u"Refresh"_s, u"Refresh Window"_s, u"Re&fresh Window"_s, &frmManager::refresh);

    auto *toolbar = addToolBar(u"Commands"_s);
    toolbar->setObjectName(u"tbrManager"_s);
    toolbar->setToolButtonStyle(Qt::ToolButtonTextOnly);
    toolbar->setMovable(false);
    const QStringList order = {u"Open"_s,    u"Remove"_s,  u"Properties"_s, u"ForceDownload"_s,
                               u"CopyTag"_s, u"CopyURL"_s, u"Refresh"_s};
    for (const QString &key : order)
        toolbar->addAction(m_buttons.value(key));

    QMenu *file = menuBar()->addMenu(u"&File"_s);
    file->setObjectName(u"mnuFile"_s);
    for (const QString &key : order) {
        if (key == u"Refresh"_s || key == u"CopyTag"_s)
            file->addSeparator();
        file->addAction(m_menus.value(key));
    }
    file->addSeparator();
    QAction *exit = file->addAction(u"E&xit"_s, this, &QWidget::close);
    exit->setObjectName(u"mnuExit"_s);

    QMenu *browser = menuBar()->addMenu(u"&Browser"_s);
    browser->setObjectName(u"mnuBrowser"_s);
    mnuIE = browser->addAction(u"&Internet Explorer"_s);
    mnuIE->setObjectName(u"mnuIE"_s);
    mnuNS = browser->addAction(u"&Netscape Navigator"_s);
    mnuNS->setObjectName(u"mnuNS"_s);
    for (QAction *entry : {mnuIE, mnuNS}) {
        entry->setCheckable(true);
        entry->setEnabled(false);
    }
    connect(mnuIE, &QAction::triggered, this, [this] {
        m_manager.chooseBrowser(CacheManager::Browser::InternetExplorer);
        showRows();
    });
    connect(mnuNS, &QAction::triggered, this, [this] {
        m_manager.chooseBrowser(CacheManager::Browser::Netscape);
        showRows();
    });

    QMenu *tools = menuBar()->addMenu(u"&Tools"_s);
    tools->setObjectName(u"mnuTools"_s);
    QAction *cubrix = tools->addAction(u"&Cubrix Editor"_s, this, &frmManager::editorRequested);
    cubrix->setObjectName(u"mnuCubrix"_s);
    QAction *options = tools->addAction(u"&Options..."_s, this, [this] {
        frmOptions dialog(m_settings, this);
        dialog.exec();
    });
    options->setObjectName(u"mnuOptions"_s);

    QMenu *help = menuBar()->addMenu(u"&Help"_s);
    help->setObjectName(u"mnuHelp"_s);
    QAction *about = help->addAction(u"&About..."_s, this, [this] {
        frmAbout dialog(this);
        dialog.exec();
    });
    about->setObjectName(u"mnuAbout"_s);
}

void frmManager::refresh()
{
    m_manager.fill();
    showSorted();
}

void frmManager::showSorted()
{
    if (m_sortColumn >= 0)
        m_manager.sort(m_sortColumn, m_sortAscending);
    showRows();
}

void frmManager::showRows()
{
    BlocksetList->clear();
    QList<QTreeWidgetItem *> items;
    items.reserve(m_manager.rows().size());
    for (const CacheRow &row : m_manager.rows()) {
        auto *item = new QTreeWidgetItem;
        for (int column = 0; column < CacheManager::ColumnCount; ++column) {
            item->setText(column, CacheManager::cellText(row, column));
            if (column == CacheManager::Size || column >= CacheManager::Blocks)
                item->setTextAlignment(column, Qt::AlignRight | Qt::AlignVCenter);
        }
        items.append(item);
    }
    BlocksetList->addTopLevelItems(items);
    fitColumns();
    mnuIE->setChecked(m_manager.browser() == CacheManager::Browser::InternetExplorer);
    mnuNS->setChecked(m_manager.browser() == CacheManager::Browser::Netscape);
    stbProcess->setText(m_manager.processText());
    updateState();
}

void frmManager::fitColumns()
{
    m_fitting = true;
    for (int column = 0; column < CacheManager::ColumnCount; ++column) {
        if (!m_widthSet[column])
            BlocksetList->resizeColumnToContents(column);
    }
    m_fitting = false;
}

void frmManager::changeEvent(QEvent *event)
{
    QMainWindow::changeEvent(event);
    if (event->type() != QEvent::ActivationChange || !isActiveWindow())
        return;
    m_manager.checkRover();
    stbProcess->setText(m_manager.processText());
    updateState();
}

void frmManager::updateState()
{
    const bool hasRows = !m_manager.rows().isEmpty();
    for (const QString &key : kRowCommands) {
        m_buttons.value(key)->setEnabled(hasRows);
        m_menus.value(key)->setEnabled(hasRows);
    }
    const bool canChange = hasRows && m_manager.roverProgram().isEmpty();
    for (const QString &key : kChangeCommands) {
        m_buttons.value(key)->setEnabled(canChange);
        m_menus.value(key)->setEnabled(canChange);
    }
    const bool folder = !m_manager.cacheFolder().isEmpty();
    m_buttons.value(u"Refresh"_s)->setEnabled(folder);
    m_menus.value(u"Refresh"_s)->setEnabled(folder);
    stbBlocksets->setText(m_manager.blocksetsText());
    const int row = selectedRow();
    stbSize->setText(row >= 0 ? m_manager.selectedSizeText(row) : m_manager.sizeText());
}

int frmManager::selectedRow() const
{
    const QList<QTreeWidgetItem *> selected = BlocksetList->selectedItems();
    return selected.isEmpty() ? -1 : BlocksetList->indexOfTopLevelItem(selected.first());
}

void frmManager::openSelected()
{
    const int row = selectedRow();
    if (row >= 0)
        emit openRequested(m_manager.fullPath(row));
}

void frmManager::removeSelected()
{
    const int row = selectedRow();
    if (row < 0)
        return;
    // The list is filled again from disk whatever happened.
    m_manager.remove(row);
    showSorted();
}

void frmManager::showProperties()
{
    const int row = selectedRow();
    if (row < 0)
        return;
    frmBlocksetInfo dialog(m_manager.rows().at(row), this);
    dialog.exec();
}

void frmManager::forceDownloadSelected()
{
    const int row = selectedRow();
    if (row < 0)
        return;
    const QString key = m_manager.rows().at(row).path + u'\\' + m_manager.rows().at(row).fileName;
    m_manager.forceDownload(row);
    showSorted();
    // The same file stays selected.
    for (int i = 0; i < m_manager.rows().size(); ++i) {
        if (m_manager.rows().at(i).path + u'\\' + m_manager.rows().at(i).fileName == key)
            BlocksetList->topLevelItem(i)->setSelected(true);
    }
}

void frmManager::copyToClipboard(const QString &text)
{
    QClipboard *clipboard = QApplication::clipboard();
    clipboard->clear();
    clipboard->setText(text);
}

void frmManager::copyTag()
{
    const int row = selectedRow();
    if (row >= 0)
        copyToClipboard(m_manager.rows().at(row).tag());
}

void frmManager::copyUrl()
{
    const int row = selectedRow();
    if (row >= 0)
        copyToClipboard(m_manager.rows().at(row).url());
}

void frmManager::sortByColumn(int column)
{
    m_sortAscending = column == m_sortColumn ? !m_sortAscending : true;
    m_sortColumn = column;
    m_manager.sort(column, m_sortAscending);
    BlocksetList->header()->setSortIndicatorShown(true);
    BlocksetList->header()->setSortIndicator(column, m_sortAscending ? Qt::AscendingOrder : Qt::DescendingOrder);
    showRows();
}
