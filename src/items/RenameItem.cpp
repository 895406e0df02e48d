#include "items/RenameItem.h"

#include "items/FileNameRules.h"

#include "common/CommonFunctions.h"
#include "common/Prompts.h"
#include "common/RegistryWrapper.h"
#include "storage/Cp1252.h"
#include "symbols/OperationHost.h"

#include <QFile>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace {

void refuse(OperationHost &host, const QString &text, const QString &title)
{
    host.prompts().message(text, title, PromptButtons::Ok, PromptIcon::Exclamation);
}

} // namespace

bool renameItem(OperationHost &host, ItemKind kind, int row, const QString &newName)
{
    const QStringList names = itemFileNames(host, kind);
    if (row < 0 || row >= names.size())
        return false;
    const QString &oldName = names[row];
    if (newName == oldName)
        return false;

    const QString title = u"Rename "_s + itemTitleNoun(kind);
    if (getExtension(newName) != getExtension(oldName)) {
        refuse(host, u"You are not allowed to change the file extension!"_s, title);
        return false;
    }
    if (newName.isEmpty() || getBaseName(newName).isEmpty()) {
        refuse(host, u"The file name must not be empty!"_s, title);
        return false;
    }
    for (qsizetype i = 0; i < names.size(); ++i) {
        if (i != row && sameFileName(names[i], newName)) {
            refuse(host, u"There is already a \""_s + names[i] + u"\" in the blockset!"_s, title);
            return false;
        }
    }
    if (const QString problem = fileNameProblem(newName); !problem.isEmpty()) {
        refuse(host, refusedNameText(newName, problem), title);
        return false;
    }

    if (host.settings().getBoolSetting(u"showWarnings"_s)) {
        const QString question = u"Are you sure to rename this "_s + itemNoun(kind) + u'?';
        if (host.prompts().message(question, title, PromptButtons::YesNo, PromptIcon::Question) != PromptAnswer::Yes)
            return false;
    }

    const QString folder = itemFolder(host, kind);
    const QString oldPath = folder + u'/' + oldName;
    const QString newPath = folder + u'/' + newName;
    // A name differing only in case is the same file on Windows: the rename goes
    // through a temporary name so it works on either kind of file system.
    bool renamed = false;
    if (oldName.compare(newName, Qt::CaseInsensitive) == 0) {
        const QString between = folder + u"/~rename~"_s + newName;
        renamed = QFile::rename(oldPath, between);
        if (renamed && !QFile::rename(between, newPath)) {
            QFile::rename(between, oldPath);
            renamed = false;
        }
    } else {
        renamed = !QFileInfo::exists(newPath) && QFile::rename(oldPath, newPath);
    }
    if (!renamed) {
        host.prompts().message(u"Unable to rename \""_s + oldName + u"\" to \""_s + newName + u"\"!"_s, u"File Error"_s,
                               PromptButtons::Ok, PromptIcon::Critical);
        return false;
    }

    setItemFileName(host, kind, row, newName);
    host.setBlocksetChanged();
    return true;
}
