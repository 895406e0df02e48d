#pragma once

#include "items/ItemKind.h"

#include <QHash>
#include <QObject>
#include <QString>

class BlocksetDocument;
class ItemListPage;
class QAction;
class QLabel;
class QMainWindow;
class QTabWidget;
class RegistryWrapper;
class SettingsTab;
class VersionTab;

// Draws the open blockset into the editor window: the three lists, the settings
// and version pages, the shown tab, and (checkInterface) the enabled commands,
// the caption and the status panels. It follows the document's change signals,
// drawing only what changed, and keeps no copy of the document.
class DocumentPresenter : public QObject {
    Q_OBJECT

public:
    struct Views {
        QMainWindow *window = nullptr;
        QTabWidget *tabs = nullptr;
        ItemListPage *blocks = nullptr;
        ItemListPage *textures = nullptr;
        ItemListPage *sounds = nullptr;
        SettingsTab *settings = nullptr;
        VersionTab *version = nullptr;
        QLabel *blocksPanel = nullptr;
        QLabel *texturesPanel = nullptr;
        QLabel *soundsPanel = nullptr;
        QLabel *versionPanel = nullptr;
        QLabel *processPanel = nullptr;
        const QHash<QString, QAction *> *actions = nullptr; // every command by object name
    };

    DocumentPresenter(BlocksetDocument &document, RegistryWrapper &settings, const Views &views,
                      QObject *parent = nullptr);

    // checkInterface: enables exactly the commands the state allows, shows the
    // caption and the status panels; a shown result text goes when `clearResult`.
    void checkInterface(bool clearResult);
    void showProcess(const QString &text);

    // The list page of `kind`, or of the tab `tab` (null for the two pages).
    ItemListPage *page(ItemKind kind) const;
    ItemListPage *pageOfTab(int tab) const;
    // Gives the keyboard focus to the tab's list or first field.
    void focusTab(int tab);
    // Draws one list again as the document holds it (after a refused label edit).
    void showItems(ItemKind kind);

private:
    void showAll();
    void showStyle();
    void showSymbols();
    void showTab();

    BlocksetDocument &m_document;
    RegistryWrapper &m_settings;
    Views m_views;
};
