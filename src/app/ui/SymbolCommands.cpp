#include "app/ui/SymbolCommands.h"

#include "app/BlocksetDocument.h"
#include "app/ui/DocumentPresenter.h"
#include "app/ui/SettingsTab.h"
#include "common/RegistryWrapper.h"
#include "symbols/RemapSymbols.h"
#include "symbols/StrictPrefix.h"
#include "symbols/ui/frmRemapSymbols.h"

using namespace Qt::StringLiterals;

SymbolCommands::SymbolCommands(BlocksetDocument &document, DocumentPresenter &presenter, SettingsTab &page,
                               QWidget *window)
    : QObject(window),
      m_document(document),
      m_presenter(presenter),
      m_page(page),
      m_window(window)
{
}

void SymbolCommands::remapSymbols()
{
    frmRemapSymbols dialog(m_window);
    m_document.edit(u"Remap Symbols"_s, [&] { return remapSymbolsCommand(m_document, dialog); });
    m_presenter.checkInterface(true);
}

void SymbolCommands::strictPrefixClicked(bool checked)
{
    SymbolSettings symbols = m_document.symbols();
    ::strictPrefixClicked(symbols, m_document.content().blocks, checked,
                          m_document.settings().getBoolSetting(u"syncDouble"_s));
    m_document.setSymbolSettings(symbols);
    m_presenter.checkInterface(true);
}

void SymbolCommands::prefixListFocused()
{
    m_prefixRemembered = m_document.symbols().prefixIndex;
}

void SymbolCommands::prefixListChosen(int index)
{
    m_document.edit(u"Change Prefix"_s, [&] { return remapPrefix(m_document, m_prefixRemembered, index); });
    // The list shows what the document holds, also after a No.
    m_page.showSymbols(m_document.symbols());
    m_presenter.checkInterface(true);
}

void SymbolCommands::symbolControlsEdited()
{
    m_document.setSymbolSettings(m_page.shownSymbols());
    m_presenter.checkInterface(true);
}
