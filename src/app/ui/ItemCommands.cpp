#include "app/ui/ItemCommands.h"

#include "app/BlocksetDocument.h"
#include "app/ui/DocumentPresenter.h"
#include "app/ui/ItemListPage.h"
#include "common/Prompts.h"
#include "common/RegistryWrapper.h"
#include "items/AddBspTrees.h"
#include "items/AddItems.h"
#include "items/ExportItems.h"
#include "items/RemoveItems.h"
#include "items/RenameItem.h"
#include "items/ReplaceBlocks.h"
#include "storage/WholeFile.h"
#include "storage/WorkingFolder.h"
#include "symbols/SymbolDialogs.h"

#include <QAudioDevice>
#include <QDir>
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
    // The texture preview follows the current row.
    connect(m_presenter.page(ItemKind::Texture)->list(), &QTreeWidget::currentItemChanged, this,
            &ItemCommands::previewTexture);
    connect(m_presenter.page(ItemKind::Texture), &ItemListPage::rowsShown, this, &ItemCommands::previewTexture);
    for (ItemKind kind : {ItemKind::Block, ItemKind::Texture, ItemKind::Sound})
        connect(m_presenter.page(kind), &ItemListPage::openRequested, this, [this, kind] { openItem(kind); });
}

void ItemCommands::openItem(ItemKind kind)
{
    switch (kind) {
    case ItemKind::Block: editItem(); break;
    case ItemKind::Texture: previewTexture(); break;
    case ItemKind::Sound: playSound(); break;
    }
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
    const ItemKind kind = ItemKind(m_document.tab());
    const QStringList before = itemFileNames(m_document, kind);
    m_document.edit(u"Add "_s + itemTitleNoun(kind), [&] { return addItems(m_document, kind); });
    m_presenter.checkInterface(false);
    // The new rows are the selection.
    const QStringList after = itemFileNames(m_document, kind);
    QList<int> added;
    for (int row = 0; row < after.size(); ++row) {
        if (!before.contains(after.at(row)))
            added.append(row);
    }
    page->selectRows(added);
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
    const bool removed = m_document.edit(u"Remove "_s + itemTitleNoun(ItemKind(tab)),
                                         [&] { return removeItems(m_document, ItemKind(tab), selection); });
    m_presenter.checkInterface(true);
    if (removed) {
        page->list()->setFocus();
        page->selectRow(selection.current);
    }
}

void ItemCommands::renameLabel(ItemKind kind, int row, const QString &newText)
{
    // A refused edit puts the old label back.
    if (!m_document.edit(u"Rename "_s + itemTitleNoun(kind),
                         [&] { return renameItem(m_document, kind, row, newText); })) {
        m_presenter.page(kind)->forgetShownRows();
        m_presenter.showItems(kind);
    }
    m_presenter.checkInterface(true);
    ItemListPage *page = m_presenter.page(kind);
    page->selectRow(row);
    // The editor closes after this: the list takes the focus back then.
    QMetaObject::invokeMethod(page->list(), qOverload<>(&QWidget::setFocus), Qt::QueuedConnection);
}

void ItemCommands::replaceItem(bool onlyBlocks)
{
    if (onlyBlocks && m_document.tab() != BlocksetDocument::TabBlocks) {
        m_presenter.checkInterface(true);
        return;
    }
    m_presenter.checkInterface(true);
    const QList<int> rows = m_presenter.page(ItemKind::Block)->selectedRows();
    m_document.edit(u"Replace Block"_s, [&] { return replaceBlocks(m_document, rows); });
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
            m_document.edit(u"Edit Symbols"_s, [&] { return editSymbols(m_document, row); });
        }
    }
    m_presenter.checkInterface(true);
}

void ItemCommands::exportItems()
{
    ItemListPage *page = m_presenter.pageOfTab(m_document.tab());
    if (!page)
        return;
    const ItemKind kind = ItemKind(m_document.tab());
    const QStringList names = itemFileNames(m_document, kind);
    QStringList files;
    for (int row : page->selectedRows())
        files.append(names.value(row));
    Prompts &prompts = m_document.prompts();
    const QString folder = files.isEmpty() ? QString() : prompts.chooseFolder(u"Export"_s, QString());
    if (folder.isEmpty())
        return;
    const QString source = itemFolder(m_document, kind) + u'/';
    const ExportOutcome outcome = exportItemFiles(
        files, folder, [&](const QString &file, QByteArray &bytes) { return readWholeFile(source + file, bytes); },
        [&](const QString &file) {
            switch (prompts.message(file + u" already exists in this folder. Do you want to replace it?"_s, u"Export"_s,
                                    PromptButtons::YesNoCancel, PromptIcon::Question)) {
            case PromptAnswer::Yes: return ReplaceAnswer::Replace;
            case PromptAnswer::No: return ReplaceAnswer::Keep;
            default: return ReplaceAnswer::Stop;
            }
        });
    if (!outcome.failure.isEmpty())
        prompts.message(u"Unable to export the files!"_s, u"Export"_s, outcome.failure, PromptButtons::Ok,
                        PromptIcon::Critical);
    m_document.showProcess(QString::number(outcome.written.size()) + u" files exported to "_s
                           + QDir::toNativeSeparators(folder) + u'.');
    m_presenter.checkInterface(false);
}

void ItemCommands::previewItem()
{
    switch (m_document.tab()) {
    case BlocksetDocument::TabBlocks: emit blockPreviewRequested(); break;
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
    m_document.edit(u"Add BSP Trees"_s, [&] { addBspTrees(m_document, rows, BspRebuild::Ask); });
    m_presenter.checkInterface(false);
}

void ItemCommands::previewTexture()
{
    ItemListPage *page = m_presenter.page(ItemKind::Texture);
    const QString file = page->selectedFile();
    // A file that is no readable picture says why in place of the picture.
    if (file.isEmpty())
        page->clearPreview();
    else
        (void)page->showPicture(m_document.folder().texturesFolder() + u'/' + file, file);
}

void ItemCommands::playSound()
{
    const QString file = m_presenter.page(ItemKind::Sound)->selectedFile();
    if (file.isEmpty())
        return;
    if (!m_soundAvailable) {
        m_document.showProcess(u"No sound device: cannot play "_s + file);
        return;
    }
    if (!m_sound)
        m_sound = new QSoundEffect(this);
    // A later play replaces the running one.
    m_sound->stop();
    m_sound->setSource(QUrl::fromLocalFile(m_document.folder().soundsFolder() + u'/' + file));
    m_sound->play();
}
