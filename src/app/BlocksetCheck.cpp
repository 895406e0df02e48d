#include "app/BlocksetCheck.h"

#include "app/BlockFilesCheck.h"
#include "app/BlocksetDocument.h"
#include "app/BlocksetSize.h"
#include "app/MediaFilesCheck.h"
#include "common/CommonFunctions.h"
#include "common/RegistryWrapper.h"
#include "rover/RoverStyleRules.h"
#include "rover/RoverUpdateRules.h"
#include "storage/WorkingFolder.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>

using namespace Qt::StringLiterals;

namespace {

bool readFile(const QString &path, QByteArray &bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    bytes = file.readAll();
    return true;
}

void addFindings(BlocksetCheck &check, const QString &file, const RoverFindings &findings)
{
    for (const RoverFinding &f : findings)
        check.findings.append({f.severity, file, f.line, f.text});
}

void warn(BlocksetCheck &check, const QString &text)
{
    check.findings.append({RoverFinding::Warning, QString(), 0, text});
}

void checkRows(BlocksetCheck &check, const BlocksetDocument &document)
{
    QHash<QString, QString> names; // lower-cased block name -> file
    for (const BlockRow &row : document.blocks()) {
        if (row.symbol.isEmpty())
            warn(check, u"Rover will not use block \""_s + row.file + u"\": it has no single symbol"_s);
        if (row.name.isEmpty())
            continue;
        const QString key = row.name.toLower();
        if (names.contains(key))
            warn(check, u"Blocks \""_s + names.value(key) + u"\" and \""_s + row.file + u"\" have the same name \""_s
                            + row.name + u"\" (names compare ignoring case)"_s);
        else
            names.insert(key, row.file);
    }
}

void checkTextures(BlocksetCheck &check, const BlocksetDocument &document)
{
    QStringList held;
    for (const ItemRow &row : document.textures())
        held.append(row.file);
    const StyleValues &style = document.style();
    const std::pair<QString, QString> named[] = {{u"placeholder"_s, style.placeholderTexture},
                                                 {u"sky"_s, style.skyTexture},
                                                 {u"ground"_s, style.groundTexture},
                                                 {u"orb"_s, style.orbTexture}};
    for (const auto &[what, texture] : named) {
        if (!texture.isEmpty() && !held.contains(texture, Qt::CaseInsensitive))
            warn(check, u"The "_s + what + u" texture \""_s + texture + u"\" is not in the blockset"_s);
    }
}

} // namespace

BlocksetCheck checkBlockset(BlocksetDocument &document)
{
    BlocksetCheck check;
    const QString styleName = nativeBaseName(document.blocksetFileName()) + u".style"_s;
    QByteArray bytes;
    if (readFile(document.workingFolder() + u'/' + styleName, bytes)) {
        const QStringList blockFiles = QDir(document.folder().blocksFolder()).entryList(QDir::Files);
        const RoverFindings findings = checkRoverStyle(bytes, &blockFiles);
        addFindings(check, styleName, findings);
        check.roverLoadsBlockset = !hasRoverError(findings);
        checkBlockFiles(check, document.workingFolder(), bytes);
    } else {
        check.findings.append({RoverFinding::Error, styleName, 0, u"The blockset has no style file"_s});
    }
    checkRows(check, document);
    checkTextures(check, document);
    for (const MediaProblem &problem : findMediaProblems(document.workingFolder()))
        check.findings.append(
            {problem.error ? RoverFinding::Error : RoverFinding::Warning, problem.file, 0, problem.text()});
    // Blocksets are published on the web, where Rover refuses a larger file.
    if (const qint64 size = QFileInfo(document.blocksetPath()).size(); !BlocksetSize::fitsWeb(size)) {
        check.findings.append(
            {RoverFinding::Error, nativeFileName(document.blocksetPath()), 0, BlocksetSize::webLimitFinding(size)});
        check.roverLoadsBlockset = false;
    }

    const QString updatePath = document.updateFilePath();
    const QString updateName = nativeFileName(updatePath);
    check.updateFileExists = QFileInfo(updatePath).isFile();
    if (check.updateFileExists && readFile(updatePath, bytes)) {
        const RoverFindings findings = checkRoverUpdate(bytes);
        addFindings(check, updateName, findings);
        check.roverSeesUpdate = !hasRoverError(findings);
    } else if (!check.updateFileExists && document.settings().getBoolSetting(u"updateFile"_s)) {
        check.findings.append({RoverFinding::Warning, updateName, 0,
                               u"The update file is missing: Rover sees no update of this blockset"_s});
    } else if (check.updateFileExists) {
        check.findings.append({RoverFinding::Error, updateName, 0, u"The update file cannot be read"_s});
    }
    return check;
}
