#include "app/RoverCompatibility.h"

#include "app/BlocksetSize.h"
#include "common/Prompts.h"
#include "rover/RoverStyleRules.h"
#include "rover/RoverUpdateRules.h"

#include <QStringList>

using namespace Qt::StringLiterals;

namespace {

void listErrors(QStringList &lines, const QString &fileName, const RoverFindings &findings)
{
    for (const RoverFinding &f : findings)
        if (f.severity == RoverFinding::Error)
            lines.append(u"%1, line %2: %3"_s.arg(fileName).arg(f.line).arg(f.text));
}

} // namespace

void reportRoverCompatibility(Prompts &prompts, const QString &styleName, const QByteArray &style,
                              const QStringList &blockFiles, const QString &updateName, const QByteArray &update,
                              const QString &archiveName, qint64 archiveSize)
{
    QStringList lines;
    if (!archiveName.isEmpty() && !BlocksetSize::fitsWeb(archiveSize))
        lines.append(archiveName + u": "_s + BlocksetSize::webLimitFinding(archiveSize));
    if (!styleName.isEmpty())
        listErrors(lines, styleName, checkRoverStyle(style, &blockFiles));
    if (!updateName.isEmpty())
        listErrors(lines, updateName, checkRoverUpdate(update));
    if (lines.isEmpty())
        return;
    prompts.message(u"Rover will not accept what was saved:\n"_s + lines.join(u'\n'), u"Rover compatibility"_s,
                    PromptButtons::Ok, PromptIcon::Exclamation);
}
