#include "app/ui/ItemCommands.h"

#include "app/BlocksetDocument.h"
#include "app/ui/DocumentPresenter.h"
#include "app/ui/ItemListPage.h"
#include "common/Prompts.h"
#include "common/RegistryWrapper.h"
#include "items/AddBspTrees.h"
#include "items/AddItems.h"
#include "items/RemoveItems.h"
#include "items/RenameItem.h"
#include "items/ReplaceBlocks.h"
#include "storage/WorkingFolder.h"
#include "symbols/SymbolDialogs.h"

#include <QAudioDevice>
#include <QMediaDevices>
#include <QSoundEffect>
#include <QTreeWidget>
#include <QUrl>

using namespace Qt::StringLiterals;

ItemCommands::ItemCommands(BlocksetDocument &document, DocumentPresenter &presenter, QWidget *window)
    : QObject(window),
      m_document(document),
      m_presenter(presenter),
      m_window(window),
      m_soundAvailable(!QMediaDevices::audioOutputs().isEmpty())
{
}

void ItemCommands::showOops()
{
    m_document.prompts().message(u"Yet not implemented in this version"_s, u"Oops..."_s, PromptButtons::Ok,
                                 PromptIcon::None);
}

void ItemCommands::addItem()
{
    ItemListPage *page = m_presenter.pageOfTab(m_document.tab());
    // The summary ("2 blocks added.") stays after the refresh that follows.
    m_presenter.checkInterface(true);
    if (!page)
        return;
    m_document.edit([&] { return addItems(m_document, ItemKind(m_document.tab())); });
    m_presenter.checkInterface(false);
    page->list()->setFocus();
}

// The tab order of the three lists is the order of ItemKind.
void ItemCommands::removeItem()
{
    const int tab = m_document.tab();
    ItemListPage *page = m_presenter.pageOfTab(tab);
    if (!page) {
        m_presenter.checkInterface(true);
        return;
    }
    ListSelection selection{page->selectedRows(), page->currentRow()};
    const bool removed = m_document.edit([&] { return removeItems(m_document, ItemKind(tab), selection); });
    m_presenter.checkInterface(true);
    if (removed) {
        page->list()->setFocus();
        page->selectRow(selection.current);
    }
}

void ItemCommands::renameLabel(ItemKind kind, int row, const QString &newText)
{
    // A refused edit puts the old label back.
    if (!m_document.edit([&] { return renameItem(m_document, kind, row, newText); })) {
        m_presenter.page(kind)->forgetShownRows();
        m_presenter.showItems(kind);
    }
    m_presenter.checkInterface(true);
    m_presenter.page(kind)->selectRow(row);
}

void ItemCommands::replaceItem(bool onlyBlocks)
{
    if (onlyBlocks && m_document.tab() != BlocksetDocument::TabBlocks) {
        m_presenter.checkInterface(true);
        return;
    }
    m_presenter.checkInterface(true);
    const QList<int> rows = m_presenter.page(ItemKind::Block)->selectedRows();
    m_document.edit([&] { return replaceBlocks(m_document, rows); });
    m_presenter.checkInterface(false);
}

void ItemCommands::editItem()
{
    if (m_document.tab() == BlocksetDocument::TabBlocks) {
        // skipEdit switches the symbol dialog off; the command then has nothing to do.
        if (m_document.settings().getBoolSetting(u"skipEdit"_s)) {
            showOops();
        } else {
            const int row = m_presenter.page(ItemKind::Block)->currentRow();
            m_document.edit([&] { return editSymbols(m_document, row); });
        }
    }
    m_presenter.checkInterface(true);
}

void ItemCommands::previewItem()
{
    switch (m_document.tab()) {
    case BlocksetDocument::TabBlocks: showOops(); break;
    case BlocksetDocument::TabTextures: previewTexture(); break;
    case BlocksetDocument::TabSounds: playSound(); break;
    default: break;
    }
    m_presenter.checkInterface(true);
}

void ItemCommands::addBSP()
{
    // The selected blocks, or all of them when none is selected.
    m_presenter.checkInterface(true);
    const QList<int> rows = m_presenter.page(ItemKind::Block)->selectedRows();
    m_document.edit([&] { addBspTrees(m_document, rows, BspRebuild::Ask); });
    m_presenter.checkInterface(false);
}

void ItemCommands::previewTexture()
{
    ItemListPage *page = m_presenter.page(ItemKind::Texture);
    const QString file = page->selectedFile();
    // A file that is no readable picture leaves the preview as it was.
    if (!file.isEmpty())
        page->showPicture(m_document.folder().texturesFolder() + u'/' + file, file);
}

void ItemCommands::playSound()
{
    const QString file = m_presenter.page(ItemKind::Sound)->selectedFile();
    if (file.isEmpty() || !m_soundAvailable)
        return;
    if (!m_sound)
        m_sound = new QSoundEffect(this);
    // A later play replaces the running one.
    m_sound->stop();
    m_sound->setSource(QUrl::fromLocalFile(m_document.folder().soundsFolder() + u'/' + file));
    m_sound->play();
}
