#include "items/RemoveItems.h"

#include "common/Prompts.h"
#include "common/RegistryWrapper.h"
#include "symbols/OperationHost.h"

#include <QFile>

#include <algorithm>

using namespace Qt::StringLiterals;

bool removeItems(OperationHost &host, ItemKind kind, ListSelection &selection)
{
    const int count = int(itemFileNames(host, kind).size());
    QList<int> rows;
    for (int row : std::as_const(selection.selected)) {
        if (row >= 0 && row < count && !rows.contains(row))
            rows.append(row);
    }
    std::sort(rows.begin(), rows.end());
    if (rows.isEmpty())
        return false;

    const qsizetype n = rows.size();
    if (host.settings().getBoolSetting(u"showWarnings"_s)) {
        const QString text = u"Are you sure to remove "_s + QString::number(n) + u' ' + itemNoun(kind)
                             + (n > 1 ? u"s"_s : QString()) + u'?';
        if (host.prompts().message(text, u"Remove "_s + itemTitleNoun(kind), PromptButtons::YesNo, PromptIcon::Question)
            != PromptAnswer::Yes)
            return false;
    }

    // Last to first, so the positions still to come stay valid. A file that
    // cannot be deleted is left behind in the working folder: the row goes all
    // the same, and the archive is rebuilt from the rows' files.
    const QString folder = itemFolder(host, kind);
    const QStringList names = itemFileNames(host, kind);
    for (qsizetype i = rows.size() - 1; i >= 0; --i) {
        QFile::remove(folder + u'/' + names[rows[i]]);
        removeItemRow(host, kind, rows[i]);
    }

    // The list's current row afterwards: the row that now stands where the
    // current one stood (its follower when it was removed), or the last row.
    const int remaining = count - int(n);
    int current = selection.current >= 0 ? selection.current : rows.first();
    const int removedBefore =
        int(std::count_if(rows.begin(), rows.end(), [current](int row) { return row < current; }));
    current -= removedBefore;
    current = std::min(current, remaining - 1);
    selection.current = remaining > 0 ? current : -1;
    selection.selected = remaining > 0 ? QList<int>{current} : QList<int>{};

    host.setBlocksetChanged();
    return true;
}
