#include "symbols/RenameItem.h"

#include "common/CommonFunctions.h"
#include "storage/Cp1252.h"
#include "common/Prompts.h"
#include "common/RegistryWrapper.h"
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

bool isPortableFileName(const QString &name)
{
    if (name.isEmpty() || name == "."_L1 || name == ".."_L1)
        return false;
    for (QChar c : name) {
        if (c.unicode() < 32 || u"\\/:*?\"<>|"_s.contains(c))
            return false;
    }
    if (name.endsWith(u' ') || name.endsWith(u'.'))
        return false;
    if (fromCp1252(toCp1252(name)) != name)
        return false;
    static const QStringList reserved{u"CON"_s,  u"PRN"_s,  u"AUX"_s,  u"NUL"_s,  u"COM1"_s, u"COM2"_s,
                                      u"COM3"_s, u"COM4"_s, u"COM5"_s, u"COM6"_s, u"COM7"_s, u"COM8"_s,
                                      u"COM9"_s, u"LPT1"_s, u"LPT2"_s, u"LPT3"_s, u"LPT4"_s, u"LPT5"_s,
                                      u"LPT6"_s, u"LPT7"_s, u"LPT8"_s, u"LPT9"_s};
    const QString stem = name.section(u'.', 0, 0).trimmed();
    return !reserved.contains(stem, Qt::CaseInsensitive);
}

bool renameItem(OperationHost &host, ItemKind kind, int row, const QString &newName)
{
    const QStringList names = itemFileNames(host, kind);
    if (row < 0 || row >= names.size())
        return false;
    const QString oldName = names[row];
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
        if (i != row && names[i].compare(newName, Qt::CaseInsensitive) == 0) {
            refuse(host, u"There is already a \""_s + names[i] + u"\" in the blockset!"_s, title);
            return false;
        }
    }
    if (!isPortableFileName(newName)) {
        refuse(host, u"\""_s + newName + u"\" cannot be used as a file name!"_s, title);
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
