#include "app/ui/MainCommands.h"

#include "app/ui/MainWindowIcons.h"

#include <QAction>
#include <QKeySequence>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QToolBar>

using namespace Qt::StringLiterals;

namespace {

// Toolbar key, tooltip, menu entry and its caption. The toolbar shows the first
// eleven rows in this order and then btnManager.
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
    {u"btnUndo", u"Undo", u"mnuUndo", u"&Undo"},
    {u"btnRedo", u"Redo", u"mnuRedo", u"&Redo"},
    {u"btnAddItem", u"Add Item...", u"mnuAddItem", u"&Add Item..."},
    {u"btnRemoveItem", u"Remove Item", u"mnuRemoveItem", u"Re&move Item"},
    {u"btnReplaceItem", u"Update/Replace Item", u"mnuReplaceItem", u"Update/Rep&lace Item"},
    {u"btnEditItem", u"Edit Item...", u"mnuEditItem", u"&Edit Item..."},
    {u"btnPreviewItem", u"Preview/Play Item", u"mnuPreviewItem", u"&Preview/Play Item"},
    {nullptr, nullptr, u"mnuExportItem", u"E&xport..."},
    {u"btnAddBSP", u"Add BSP Trees", u"mnuAddBSP", u"&Add BSP Trees..."},
    {u"btnManager", u"Cache Manager...", u"mnuManager", u"Cubrix &Cache Manager"},
    {nullptr, nullptr, u"mnuOptions", u"O&ptions..."},
    {nullptr, nullptr, u"mnuRemapSymbols", u"&Remap Symbols..."},
    {nullptr, nullptr, u"mnuBlocksetSize", u"Blockset &Size..."},
    {nullptr, nullptr, u"mnuShrinkBlockset", u"&Shrink Blockset..."},
    {nullptr, nullptr, u"mnuFitBlockset", u"&Fit Blockset for the Web..."},
    {nullptr, nullptr, u"mnuCheckBlockset", u"&Check Blockset"},
    {nullptr, nullptr, u"mnuAbout", u"&About Cubrix..."},
    {nullptr, nullptr, u"mnuExit", u"&Exit"},
};

struct Menu {
    const char16_t *name;
    const char16_t *title;
    QList<const char16_t *> entries; // "mnuSep..." is a separator
};

const Menu kMenus[] = {
    {u"mnuFile",
     u"&File",
     {u"mnuNew", u"mnuOpen", u"mnuClose", u"mnuSave", u"mnuSaveAs", u"mnuSep1", u"mnuOptions", u"mnuSep2", u"mnuExit"}},
    {u"mnuEdit",
     u"&Edit",
     {u"mnuUndo", u"mnuRedo", u"mnuSep3", u"mnuAddItem", u"mnuRemoveItem", u"mnuReplaceItem", u"mnuEditItem",
      u"mnuPreviewItem", u"mnuSep4", u"mnuExportItem"}},
    {u"mnuView", u"V&iew", {u"mnuBlocksetSize"}},
    {u"mnuTools",
     u"T&ools",
     {u"mnuRemapSymbols", u"mnuAddBSP", u"mnuSep5", u"mnuShrinkBlockset", u"mnuFitBlockset", u"mnuCheckBlockset"}},
    {u"mnuWindow", u"&Window", {u"mnuManager"}},
    {u"mnuHelp", u"&?", {u"mnuAbout"}},
};

// Toolbar keys in order; nullptr is a separator.
const char16_t *const kToolbar[] = {
    u"btnNew",      u"btnOpen",        u"btnClose", u"btnSave",    u"btnSaveAs",     nullptr,
    u"btnUndo",     u"btnRedo",        nullptr,     u"btnAddItem", u"btnRemoveItem", u"btnReplaceItem",
    u"btnEditItem", u"btnPreviewItem", nullptr,     u"btnAddBSP",  nullptr,          u"btnManager"};

QString str(const char16_t *text)
{
    return text ? QString::fromUtf16(text) : QString();
}

} // namespace

QHash<QString, QAction *> createMainCommands(QMainWindow *window)
{
    QHash<QString, QAction *> actions;
    const auto add = [&](const QString &name, const QString &text) {
        auto *action = new QAction(text, window);
        action->setObjectName(name);
        actions.insert(name, action);
        return action;
    };
    for (const Command &command : kCommands) {
        QAction *menuAction = add(str(command.menu), str(command.caption));
        if (!command.button)
            continue;
        const QString button = str(command.button);
        QAction *buttonAction = add(button, str(command.tooltip));
        buttonAction->setToolTip(str(command.tooltip));
        const QIcon icon = commandIcon(button);
        buttonAction->setIcon(icon);
        menuAction->setIcon(icon);
    }
    actions.value(u"mnuNew"_s)->setShortcut(QKeySequence::New);
    actions.value(u"mnuOpen"_s)->setShortcut(QKeySequence::Open);
    actions.value(u"mnuClose"_s)->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_W));
    actions.value(u"mnuSave"_s)->setShortcut(QKeySequence::Save);
    actions.value(u"mnuSaveAs"_s)->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_S));
    actions.value(u"mnuExit"_s)->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));
    actions.value(u"mnuUndo"_s)->setShortcut(QKeySequence::Undo);
    actions.value(u"mnuRedo"_s)
        ->setShortcuts({QKeySequence(Qt::CTRL | Qt::Key_Y), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z)});
    // Delete and Space act on the item list that has the focus (the window adds
    // these actions to the lists), never on a text field.
    actions.value(u"mnuRemoveItem"_s)->setShortcut(QKeySequence::Delete);
    actions.value(u"mnuPreviewItem"_s)->setShortcut(QKeySequence(Qt::Key_Space));
    for (const QString &name : {u"mnuRemoveItem"_s, u"mnuPreviewItem"_s})
        actions.value(name)->setShortcutContext(Qt::WidgetShortcut);

    for (const Menu &entry : kMenus) {
        QMenu *menu = window->menuBar()->addMenu(str(entry.title));
        menu->setObjectName(str(entry.name));
        menu->menuAction()->setObjectName(str(entry.name));
        for (const char16_t *item : entry.entries) {
            const QString name = str(item);
            if (name.startsWith(u"mnuSep"_s))
                menu->addSeparator()->setObjectName(name);
            else
                menu->addAction(actions.value(name));
        }
    }

    QToolBar *toolbar = window->addToolBar(u"Toolbar"_s);
    toolbar->setObjectName(u"Toolbar1"_s);
    toolbar->setMovable(false);
    toolbar->setIconSize(QSize(24, 24));
    toolbar->setToolButtonStyle(Qt::ToolButtonIconOnly);
    for (const char16_t *key : kToolbar) {
        if (key)
            toolbar->addAction(actions.value(str(key)));
        else
            toolbar->addSeparator();
    }
    return actions;
}
