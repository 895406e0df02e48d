#include "app/ui/WebCommands.h"

#include "app/BlocksetCheck.h"
#include "app/BlocksetDocument.h"
#include "app/BlocksetSizeMonitor.h"
#include "app/ui/BlocksetSizeDialog.h"
#include "app/ui/CheckPanel.h"
#include "app/ui/DocumentPresenter.h"
#include "app/ui/FitDialog.h"
#include "app/ui/ItemListPage.h"
#include "app/ui/ShrinkDialog.h"
#include "app/ui/SizePanel.h"
#include "common/CommonFunctions.h"
#include "common/Prompts.h"
#include "formats/ValueFormats.h"
#include "shrink/FitCommand.h"
#include "shrink/ShrinkCommand.h"

#include <QAction>
#include <QFile>
#include <QMainWindow>
#include <QStatusBar>
#include <QTreeWidget>

using namespace Qt::StringLiterals;

namespace {

const ItemKind kKinds[] = {ItemKind::Block, ItemKind::Texture, ItemKind::Sound};

QStringList fileNames(const BlocksetDocument &document, ItemKind kind)
{
    QStringList names;
    if (kind == ItemKind::Block) {
        for (const BlockRow &row : document.blocks())
            names.append(row.file);
    } else {
        for (const ItemRow &row : kind == ItemKind::Texture ? document.textures() : document.sounds())
            names.append(row.file);
    }
    return names;
}

} // namespace

WebCommands::WebCommands(BlocksetDocument &document, DocumentPresenter &presenter,
                         const QHash<QString, QAction *> &actions, QMainWindow *window)
    : QObject(window),
      m_document(document),
      m_presenter(presenter),
      m_window(window),
      m_actions(actions)
{
    m_monitor = new BlocksetSizeMonitor(document, this);
    m_sizePanel = new SizePanel(*m_monitor, window->statusBar());
    window->statusBar()->addPermanentWidget(m_sizePanel);
    m_checkPanel = new CheckPanel(window);
    window->addDockWidget(Qt::BottomDockWidgetArea, m_checkPanel);
    m_checkPanel->hide();
    for (ItemKind kind : kKinds)
        m_packedColumn[int(kind)] = presenter.page(kind)->addColumn(u"Packed"_s, 80);

    connect(m_monitor, &BlocksetSizeMonitor::sizeChanged, this, &WebCommands::showPackedColumns);
    connect(&document, &BlocksetDocument::itemsChanged, this, &WebCommands::showPackedColumns);
    connect(&document, &BlocksetDocument::documentReset, this, &WebCommands::documentStateChanged);
    connect(&document, &BlocksetDocument::stateChanged, this, &WebCommands::documentStateChanged);
    connect(m_checkPanel, &CheckPanel::fileActivated, this, &WebCommands::selectFile);
    const auto on = [&](const QString &name, void (WebCommands::*slot)()) {
        if (QAction *action = m_actions.value(name))
            connect(action, &QAction::triggered, this, slot);
    };
    on(u"mnuBlocksetSize"_s, &WebCommands::showSize);
    on(u"mnuShrinkBlockset"_s, &WebCommands::shrink);
    on(u"mnuFitBlockset"_s, &WebCommands::fit);
    on(u"mnuCheckBlockset"_s, &WebCommands::check);
    enableCommands();
}

void WebCommands::enableCommands()
{
    for (const QString &name :
         {u"mnuBlocksetSize"_s, u"mnuShrinkBlockset"_s, u"mnuFitBlockset"_s, u"mnuCheckBlockset"_s}) {
        if (QAction *action = m_actions.value(name))
            action->setEnabled(m_document.blocksetOpen());
    }
}

void WebCommands::documentStateChanged()
{
    enableCommands();
    if (!m_checkPanel->isVisible())
        return;
    // After a save (nothing left unsaved) the panel shows what Rover makes of the file now.
    if (!m_document.blocksetOpen())
        m_checkPanel->clearFindings();
    else if (!m_document.isChanged())
        runCheck();
}

void WebCommands::showPackedColumns()
{
    for (ItemKind kind : kKinds) {
        QStringList packed;
        QStringList warnings;
        for (const QString &file : fileNames(m_document, kind)) {
            const qint64 bytes = m_monitor->packedSize(kind, file);
            packed.append(bytes < 0 ? u"…"_s : itemSizeText(bytes));
            warnings.append(mediaVerdictLine(kind, m_monitor->verdict(kind, file)));
        }
        ItemListPage *page = m_presenter.page(kind);
        page->setColumnCells(m_packedColumn[int(kind)], packed);
        if (kind != ItemKind::Block) // a block's mark is its picture's (BlockPictures)
            page->setRowWarnings(warnings);
    }
}

void WebCommands::showSize()
{
    m_monitor->settle();
    BlocksetSizeDialog dialog(m_monitor->size(), m_window);
    dialog.exec();
    m_presenter.checkInterface(true);
}

void WebCommands::shrink()
{
    m_document.showProcess(u"Shrinking blockset..."_s);
    m_document.setBusy(true);
    m_document.letEventsRun();
    const ShrinkPlan plan = planDocumentShrink(m_document);
    const Result applied = applyDocumentShrink(m_document, plan);
    m_document.setBusy(false);
    if (!applied) {
        m_document.prompts().message(u"Unable to shrink the blockset!"_s, u"Shrink Blockset"_s, applied.reason(),
                                     PromptButtons::Ok, PromptIcon::Critical);
    }
    m_document.showProcess(u"Blockset shrunk: %1 bytes saved."_s.arg(plan.before() - plan.after()));
    m_presenter.checkInterface(false);
    ShrinkDialog dialog(plan.items(), m_window);
    dialog.exec();
}

void WebCommands::fit()
{
    m_document.showProcess(u"Planning the fit..."_s);
    m_document.setBusy(true);
    m_document.letEventsRun();
    DocumentFit plan = planDocumentFit(m_document, FitOptions());
    m_document.setBusy(false);
    m_document.showProcess(QString());
    if (plan.fit.steps.isEmpty()) {
        m_document.prompts().message(u"No texture or sound of this blockset can be made smaller."_s, u"Fit Blockset"_s,
                                     PromptButtons::Ok, PromptIcon::Information);
        return;
    }
    const QString folder = m_document.workingFolder();
    const auto itemBytes = [&plan, folder](const QString &path) {
        for (const ShrinkPlan::Step &step : std::as_const(plan.shrink.steps)) {
            if (step.item.path == path && step.rewrite)
                return step.content;
        }
        QFile file(folder + u'/' + path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    };
    FitDialog dialog(plan.fit, itemBytes, m_window);
    if (dialog.exec() != QDialog::Accepted)
        return;
    m_document.setBusy(true);
    const Result applied = applyDocumentFit(m_document, plan);
    m_document.setBusy(false);
    if (!applied) {
        m_document.prompts().message(u"Unable to fit the blockset!"_s, u"Fit Blockset"_s, applied.reason(),
                                     PromptButtons::Ok, PromptIcon::Critical);
    }
    m_document.showProcess(u"Blockset fitted: about %1 bytes when saved."_s.arg(plan.fit.sizeAfter()));
    m_presenter.checkInterface(false);
}

void WebCommands::check()
{
    m_checkPanel->show();
    m_checkPanel->raise();
    runCheck();
}

void WebCommands::runCheck()
{
    if (m_document.blocksetOpen())
        m_checkPanel->showCheck(checkBlockset(m_document));
    else
        m_checkPanel->clearFindings();
}

void WebCommands::selectFile(const QString &file)
{
    if (file.isEmpty())
        return;
    const QString name = file.section(u'/', -1);
    if (name.compare(nativeBaseName(m_document.blocksetFileName()) + u".style"_s, Qt::CaseInsensitive) == 0) {
        m_document.setTab(BlocksetDocument::TabSettings);
        m_presenter.checkInterface(true);
        return;
    }
    for (ItemKind kind : kKinds) {
        const qsizetype row = fileNames(m_document, kind).indexOf(name);
        if (row < 0)
            continue;
        m_document.setTab(kind == ItemKind::Block     ? BlocksetDocument::TabBlocks
                          : kind == ItemKind::Texture ? BlocksetDocument::TabTextures
                                                      : BlocksetDocument::TabSounds);
        m_presenter.checkInterface(true);
        m_presenter.page(kind)->selectRow(int(row));
        m_presenter.page(kind)->list()->setFocus();
        return;
    }
}
