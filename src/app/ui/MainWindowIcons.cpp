#include "app/ui/MainWindowIcons.h"

#include <QHash>
#include <QLatin1StringView>

using namespace Qt::StringLiterals;

namespace {

// A command's icon: the desktop theme's icon of that standard name, where one
// fits and the theme has it, else the program's own scalable drawing
// (":/icons/NAME.svg"), so the toolbar stays sharp at any scale.
struct CommandIcon {
    QLatin1StringView themeName;
    QLatin1StringView bundled;
};

const QHash<QString, CommandIcon> &commandIcons()
{
    static const QHash<QString, CommandIcon> icons{
        {u"btnNew"_s, {"document-new"_L1, "new"_L1}},
        {u"btnOpen"_s, {"document-open"_L1, "open"_L1}},
        {u"btnClose"_s, {{}, "close"_L1}},
        {u"btnSave"_s, {"document-save"_L1, "save"_L1}},
        {u"btnSaveAs"_s, {"document-save-as"_L1, "saveas"_L1}},
        {u"btnUndo"_s, {"edit-undo"_L1, "undo"_L1}},
        {u"btnRedo"_s, {"edit-redo"_L1, "redo"_L1}},
        {u"btnExportItem"_s, {"document-export"_L1, "export"_L1}},
        {u"btnAddItem"_s, {"list-add"_L1, "add"_L1}},
        {u"btnRemoveItem"_s, {"list-remove"_L1, "remove"_L1}},
        {u"btnReplaceItem"_s, {"view-refresh"_L1, "replace"_L1}},
        {u"btnEditItem"_s, {{}, "edit"_L1}},
        {u"btnPreviewItem"_s, {"media-playback-start"_L1, "preview"_L1}},
        {u"btnAddBSP"_s, {{}, "tree"_L1}},
        {u"btnManager"_s, {{}, "cubrix"_L1}},
    };
    return icons;
}

QIcon bundledIcon(QLatin1StringView name)
{
    return QIcon(u":/icons/"_s + name + u".svg"_s);
}

} // namespace

QIcon commandIcon(const QString &button)
{
    const auto found = commandIcons().constFind(button);
    if (found == commandIcons().constEnd())
        return QIcon();
    QIcon bundled = bundledIcon(found->bundled);
    if (found->themeName.isEmpty())
        return bundled;
    return QIcon::fromTheme(QString(found->themeName), bundled);
}

QIcon programIcon()
{
    return QIcon::fromTheme(u"com.quillmoor.Cubrix"_s, bundledIcon("cubrix"_L1));
}
