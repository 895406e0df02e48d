#include "app/ui/MainSub.h"

#include <QDir>

using namespace Qt::StringLiterals;

namespace {

// "/c", "/C", "/x  ": a Windows-style switch, never a file name. A path on this
// system may begin with "/", but not one naming a single letter at the root.
bool isSwitch(const QString &argument)
{
    const QString text = argument.trimmed();
    return text.size() == 2 && text.at(0) == u'/' && text.at(1).isLetter();
}

} // namespace

StartChoice chooseStart(const QStringList &arguments, const QString &startFolder,
                        const std::function<bool()> &roverPluginKnown)
{
    StartChoice choice;
    // The whole command line is compared: a capital letter, a trailing blank or
    // anything behind the switch starts the editor.
    if (arguments.join(u' ') == u"/c"_s) {
        choice.cacheManager = roverPluginKnown && roverPluginKnown();
        return choice;
    }
    if (arguments.size() == 1 && !arguments.first().isEmpty() && !isSwitch(arguments.first()))
        choice.file = QDir(startFolder).absoluteFilePath(arguments.first());
    return choice;
}
