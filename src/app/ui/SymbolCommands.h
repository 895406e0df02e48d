#pragma once

#include <QObject>

#include <optional>

class BlocksetDocument;
class DocumentPresenter;
class SettingsTab;
class QWidget;

// The symbol commands of the editor window: the Remap Symbols dialog and the
// symbol synchronization controls of the settings page.
class SymbolCommands : public QObject {
    Q_OBJECT

public:
    SymbolCommands(BlocksetDocument &document, DocumentPresenter &presenter, SettingsTab &page, QWidget *window);

    void remapSymbols();
    void strictPrefixClicked(bool checked);
    void prefixListFocused();
    void prefixListChosen(int index);
    void symbolControlsEdited();

private:
    BlocksetDocument &m_document;
    DocumentPresenter &m_presenter;
    SettingsTab &m_page;
    QWidget *m_window;
    // The lstStrictPrefix position when it last received the focus; positions the
    // program sets never come through the focus, so they ask nothing.
    std::optional<int> m_prefixRemembered;
};
