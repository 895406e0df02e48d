#pragma once

#include "cache/CacheManager.h"

#include <QHash>
#include <QMainWindow>

#include <memory>

class GuiPrompts;
class QAction;
class QLabel;
class QTreeWidget;
class Prompts;
class RegistryWrapper;
class RoverMachine;

// The cache manager window: Rover's cached blocksets in a list with commands on
// the selected one. The editor-related entries are signals; the program's entry
// and the editor window connect them. Remove and Force Download are off while
// Rover runs (looked at again whenever the window becomes active); the columns
// fit their content after each fill until the user sets a width.
class frmManager : public QMainWindow {
    Q_OBJECT

public:
    // Looks Rover up and fills the list at once.
    frmManager(RoverMachine &machine, Prompts &prompts, RegistryWrapper &settings, QWidget *parent = nullptr);
    // The same on this machine's registry and Wine prefix, with message boxes
    // and questions of its own.
    explicit frmManager(RegistryWrapper &settings, QWidget *parent = nullptr);
    ~frmManager() override;

    CacheManager &manager() { return m_manager; }

signals:
    // "Cubrix Editor": bring up the editor window.
    void editorRequested();
    // "Open Blockset in Editor": the host path of the selected file.
    void openRequested(const QString &path);

protected:
    void closeEvent(QCloseEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    // `machine` and `prompts`, or when null ones of its own.
    frmManager(RoverMachine *machine, Prompts *prompts, RegistryWrapper &settings, QWidget *parent);
    void buildCommands();
    void addCommand(const QString &key, const QString &caption, const QString &menuCaption, void (frmManager::*slot)());
    void refresh();
    // The rows again, in the order the user chose.
    void showSorted();
    void showRows();
    void fitColumns();
    void updateState();
    int selectedRow() const;
    void copyToClipboard(const QString &text);

    void openSelected();
    void removeSelected();
    void showProperties();
    void forceDownloadSelected();
    void copyTag();
    void copyUrl();
    void sortByColumn(int column);

    std::unique_ptr<RoverMachine> m_ownMachine;
    std::unique_ptr<GuiPrompts> m_ownPrompts;
    CacheManager m_manager;
    RegistryWrapper &m_settings;
    QTreeWidget *BlocksetList = nullptr;
    QLabel *stbBlocksets = nullptr;
    QLabel *stbSize = nullptr;
    QLabel *stbProcess = nullptr;
    QAction *mnuIE = nullptr;
    QAction *mnuNS = nullptr;
    QHash<QString, QAction *> m_buttons; // btnX
    QHash<QString, QAction *> m_menus;   // mnuX
    int m_sortColumn = -1;
    bool m_sortAscending = true;
    QList<bool> m_widthSet; // per column: the user has set its width
    bool m_fitting = false;
};
