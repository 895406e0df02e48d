#include "app/ui/DocumentPresenter.h"

#include "app/BlocksetDocument.h"
#include "app/InterfaceState.h"
#include "app/ui/ItemListPage.h"
#include "app/ui/SettingsTab.h"
#include "app/ui/VersionTab.h"
#include "common/RegistryWrapper.h"

#include <QAction>
#include <QLabel>
#include <QMainWindow>
#include <QSignalBlocker>
#include <QTabWidget>
#include <QTreeWidget>

using namespace Qt::StringLiterals;

namespace {

QList<QStringList> itemCells(const QList<ItemRow> &rows)
{
    QList<QStringList> cells;
    cells.reserve(rows.size());
    for (const ItemRow &row : rows)
        cells.append({row.file, row.sizeText});
    return cells;
}

QStringList textureNames(const BlocksetDocument &document)
{
    QStringList names;
    for (const ItemRow &row : document.textures())
        names.append(row.file);
    return names;
}

} // namespace

DocumentPresenter::DocumentPresenter(BlocksetDocument &document, RegistryWrapper &settings, const Views &views,
                                     QObject *parent)
    : QObject(parent),
      m_document(document),
      m_settings(settings),
      m_views(views)
{
    connect(&document, &BlocksetDocument::documentReset, this, &DocumentPresenter::showAll);
    connect(&document, &BlocksetDocument::itemsChanged, this, &DocumentPresenter::showItems);
    connect(&document, &BlocksetDocument::styleChanged, this, &DocumentPresenter::showStyle);
    connect(&document, &BlocksetDocument::updateCommentChanged, this, &DocumentPresenter::showStyle);
    connect(&document, &BlocksetDocument::symbolsChanged, this, &DocumentPresenter::showSymbols);
}

ItemListPage *DocumentPresenter::page(ItemKind kind) const
{
    switch (kind) {
    case ItemKind::Block: return m_views.blocks;
    case ItemKind::Texture: return m_views.textures;
    case ItemKind::Sound: return m_views.sounds;
    }
    return nullptr;
}

ItemListPage *DocumentPresenter::pageOfTab(int tab) const
{
    switch (tab) {
    case BlocksetDocument::TabBlocks: return m_views.blocks;
    case BlocksetDocument::TabTextures: return m_views.textures;
    case BlocksetDocument::TabSounds: return m_views.sounds;
    default: return nullptr;
    }
}

void DocumentPresenter::showAll()
{
    m_views.textures->clearPreview();
    {
        const QSignalBlocker settingsBlocker(m_views.settings);
        const QSignalBlocker versionBlocker(m_views.version);
        m_views.settings->resetValues();
        m_views.version->resetValues();
    }
    for (ItemKind kind : {ItemKind::Block, ItemKind::Texture, ItemKind::Sound})
        showItems(kind);
    showStyle();
    showSymbols();
    showTab();
}

void DocumentPresenter::showItems(ItemKind kind)
{
    if (kind == ItemKind::Block) {
        QList<QStringList> cells;
        for (const BlockRow &row : m_document.blocks())
            cells.append({row.file, row.name, row.symbol, row.doubleSymbol, row.type, row.bsp, row.sizeText});
        m_views.blocks->showRows(cells);
        return;
    }
    if (kind == ItemKind::Sound) {
        m_views.sounds->showRows(itemCells(m_document.sounds()));
        return;
    }
    m_views.textures->showRows(itemCells(m_document.textures()));
    const QSignalBlocker blocker(m_views.settings);
    m_views.settings->setTextureNames(textureNames(m_document));
}

void DocumentPresenter::showStyle()
{
    // Showing a value is no edit; the pages write only the controls that differ,
    // so the field being typed in keeps its cursor.
    const QSignalBlocker settingsBlocker(m_views.settings);
    const QSignalBlocker versionBlocker(m_views.version);
    m_views.settings->showValues(m_document.style(), textureNames(m_document));
    m_views.version->showValues(m_document.style(), m_document.updateComment());
}

void DocumentPresenter::showSymbols()
{
    const QSignalBlocker blocker(m_views.settings);
    m_views.settings->showSymbols(m_document.symbols());
}

void DocumentPresenter::showTab()
{
    const int tab = m_document.tab();
    if (m_views.tabs->currentIndex() == tab)
        return;
    const QSignalBlocker blocker(m_views.tabs);
    m_views.tabs->setCurrentIndex(tab);
    focusTab(tab);
}

void DocumentPresenter::focusTab(int tab)
{
    QWidget *target = nullptr;
    if (ItemListPage *list = pageOfTab(tab))
        target = list->list();
    else if (tab == BlocksetDocument::TabSettings)
        target = m_views.settings->firstField();
    else if (tab == BlocksetDocument::TabVersion)
        target = m_views.version->firstField();
    if (target && target->isEnabled())
        target->setFocus(Qt::TabFocusReason);
}

void DocumentPresenter::showProcess(const QString &text)
{
    m_views.processPanel->setText(text);
    m_views.processPanel->setToolTip(text); // the whole text where a narrow window cuts it
    m_views.processPanel->repaint();
}

void DocumentPresenter::checkInterface(bool clearResult)
{
    showTab();
    const InterfaceState state =
        computeInterfaceState(interfaceFacts(m_document, m_settings.getBoolSetting(u"updateFile"_s)));
    for (auto it = state.enabled.cbegin(); it != state.enabled.cend(); ++it) {
        if (QAction *action = m_views.actions->value(it.key()))
            action->setEnabled(it.value());
    }
    m_views.window->setWindowTitle(state.caption);
    for (const auto &[name, text] : {std::pair{u"Undo"_s, state.undoText}, std::pair{u"Redo"_s, state.redoText}}) {
        QString plain = text;
        plain.remove(u'&');
        m_views.actions->value(u"mnu"_s + name)->setText(text);
        m_views.actions->value(u"btn"_s + name)->setToolTip(plain);
    }
    m_views.blocksPanel->setText(state.blocksPanel);
    m_views.texturesPanel->setText(state.texturesPanel);
    m_views.soundsPanel->setText(state.soundsPanel);
    m_views.versionPanel->setText(state.versionPanel);
    m_views.version->setUpdateEnabled(state.updateGroupEnabled);
    // A result text stays only until the next refresh of the interface.
    if (clearResult && m_document.processMessageShown())
        m_document.clearProcess();
    m_views.processPanel->setText(m_document.processText());
    m_views.processPanel->setToolTip(m_document.processText());
}
