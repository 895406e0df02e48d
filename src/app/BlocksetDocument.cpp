#include "app/BlocksetDocument.h"

#include "app/DocumentView.h"
#include "app/RoverCompatibility.h"
#include "storage/ArchiveReader.h"
#include "storage/ArchiveWriter.h"
#include "storage/WorkingFolder.h"
#include "common/CommonFunctions.h"
#include "common/Prompts.h"
#include "common/RegistryWrapper.h"
#include "formats/Parser_Block.h"
#include "formats/Parser_Style.h"
#include "formats/Parser_Version.h"
#include "formats/ValueFormats.h"
#include "symbols/SymbolScheme.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QSaveFile>

#include <limits>

using namespace Qt::StringLiterals;

namespace {

const QString kBlocksetFilter = u"Blocksets (*.bset),*.bset"_s;

bool readWholeFile(const QString &path, QByteArray &bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    bytes = file.readAll();
    return file.error() == QFileDevice::NoError;
}

bool writeWholeFile(const QString &path, const QByteArray &bytes)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    if (file.write(bytes) != bytes.size())
        return false;
    return file.commit();
}

// Files of `folder` matching `patterns`, in the order a sorted folder listing gives.
QFileInfoList listFiles(const QString &folder, const QStringList &patterns)
{
    QDir dir(folder);
    return dir.entryInfoList(patterns, QDir::Files | QDir::Hidden | QDir::System, QDir::Name | QDir::IgnoreCase);
}

} // namespace

BlocksetDocument::BlocksetDocument(Prompts &prompts, RegistryWrapper &settings, WorkingFolder &folder)
    : m_prompts(prompts),
      m_settings(settings),
      m_folder(folder)
{
}

QString BlocksetDocument::symbolModeText() const
{
    if (!m_content.symbols.strictPrefixBoxChecked)
        return QString();
    return m_content.symbols.syncDoubleBoxChecked ? u"Strict Prefix & Sync Double Mode activated."_s
                                                  : u"Strict Prefix Mode activated."_s;
}

void BlocksetDocument::showProcess(const QString &text)
{
    m_processText = text;
    if (m_view)
        m_view->processShown(text);
}

void BlocksetDocument::clearProcess()
{
    m_processMessageShown = false;
    showProcess(QString());
}

void BlocksetDocument::setBusy(bool busy)
{
    if (m_view)
        m_view->setBusy(busy);
}

QString BlocksetDocument::workingFolder() const
{
    return m_folder.workingFolder();
}

void BlocksetDocument::letEventsRun()
{
    if (m_view)
        m_view->letEventsRun();
}

void BlocksetDocument::checkInterface()
{
    if (m_view)
        m_view->checkInterface();
}

BlocksetDocument::SaveQuestion BlocksetDocument::askSave(const QString &text, const QString &title)
{
    const PromptAnswer answer = m_prompts.message(text, title, PromptButtons::YesNoCancel, PromptIcon::None);
    if (answer == PromptAnswer::Cancel) {
        clearProcess();
        return SaveQuestion::Cancel;
    }
    if (answer != PromptAnswer::Yes)
        return SaveQuestion::No;
    // A blockset without a file yet is saved under a name the user chooses. When
    // that save fails or is cancelled the command stops, so the edits survive.
    if (m_blocksetUntitled)
        saveBlocksetAs();
    else
        saveBlockset();
    if (isChanged()) {
        // Not saved: end the command as Cancel would, without a stale status text.
        clearProcess();
        return SaveQuestion::Cancel;
    }
    return SaveQuestion::Yes;
}

void BlocksetDocument::resetView()
{
    m_content.blocks.clear();
    m_content.textures.clear();
    m_content.sounds.clear();
    m_content.style = StyleValues();
    m_updateComment.clear();
    m_versionText.clear();
    if (m_view)
        m_view->viewReset();
}

void BlocksetDocument::fillLists()
{
    for (const QFileInfo &info : listFiles(m_folder.blocksFolder(), {u"*.block"_s})) {
        BlockRow row;
        row.file = info.fileName();
        row.size = info.size();
        row.sizeText = itemSizeText(row.size);
        m_content.blocks.append(row);
    }
    const auto fillItems = [](QList<ItemRow> &items, const QString &folder, const QStringList &patterns) {
        for (const QFileInfo &info : listFiles(folder, patterns)) {
            ItemRow row;
            row.file = info.fileName();
            row.size = info.size();
            row.sizeText = itemSizeText(row.size);
            items.append(row);
        }
    };
    fillItems(m_content.textures, m_folder.texturesFolder(), {u"*.gif"_s, u"*.jpg"_s});
    fillItems(m_content.sounds, m_folder.soundsFolder(), {u"*.wav"_s});
}

void BlocksetDocument::failOpen(const QString &detail)
{
    m_folder.clearWorkingFolders(); // what a broken archive let through is no blockset
    m_prompts.message(u"Failed to open Blockset File."_s, u"File Error"_s, detail, PromptButtons::Ok,
                      PromptIcon::Critical);
    resetView();
    m_blocksetOpen = false;
    clearProcess();
    setBusy(false);
    checkInterface();
}

void BlocksetDocument::openBlockset(const QString &file)
{
    showProcess(u"Open Blockset..."_s);
    if (m_blocksetOpen && isChanged()) {
        if (askSave(u"The current blockset has been changed. Do you want to save it first?"_s, u"Open Blockset"_s)
            == SaveQuestion::Cancel)
            return;
    }

    QString path = file;
    const bool fromDialog = path.isEmpty();
    if (fromDialog)
        path = m_prompts.openFile(u"Open Blockset"_s, kBlocksetFilter, m_settings.getStringSetting(u"pathBlockset"_s));
    if (path.isEmpty()) {
        clearProcess();
        return;
    }
    if (fromDialog)
        m_settings.setStringSetting(u"pathBlockset"_s, nativeFolder(path));

    m_blocksetPath = path;
    m_folder.clearWorkingFolders();
    resetView();
    m_blocksetOpen = false;
    checkInterface();

    setBusy(true);
    letEventsRun();
    {
        ArchiveReader archive;
        Result read = archive.open(m_blocksetPath);
        if (read)
            read = archive.extractAll(m_folder.workingFolder());
        if (!read) {
            failOpen(read.reason());
            return;
        }
    }
    m_blocksetFileName = nativeFileName(m_blocksetPath);
    const QString baseName = nativeBaseName(m_blocksetFileName);
    fillLists();

    // The style file: the one named after the archive, else the first one found
    // once the user agreed to give it the archive's name.
    QString styleFile;
    bool renamed = false;
    const QFileInfoList styles = listFiles(m_folder.workingFolder(), {u"*.style"_s});
    for (const QFileInfo &info : styles) {
        if (nativeBaseName(info.fileName()) == baseName) {
            styleFile = info.absoluteFilePath();
            break;
        }
    }
    if (styleFile.isEmpty() && !styles.isEmpty()) {
        const QFileInfo &first = styles.first();
        const PromptAnswer answer = m_prompts.message(u"Found differing style file \""_s + first.fileName()
                                                          + u"\". Do you want this file to be renamed and parsed?"_s,
                                                      u"Open Blockset"_s, PromptButtons::YesNo, PromptIcon::Question);
        if (answer == PromptAnswer::Yes) {
            const QString target = m_folder.workingFolder() + u'/' + baseName + u".style"_s;
            if (!QFile::rename(first.absoluteFilePath(), target)) {
                failOpen();
                return;
            }
            styleFile = target;
            renamed = true;
        }
    }

    const bool strictPrefixSetting = m_settings.getBoolSetting(u"strictPrefix"_s);
    const bool syncDoubleSetting = m_settings.getBoolSetting(u"syncDouble"_s);
    if (!styleFile.isEmpty()) {
        QByteArray bytes;
        if (!readWholeFile(styleFile, bytes)) {
            failOpen();
            return;
        }
        m_parser.setBuffer(bytes);
        showProcess(u"Parsing Blockset..."_s);
        const StyleReadResult read = readStyle(m_parser, m_content.style, m_content.blocks);
        refreshSymbolSettings(m_content.symbols, read.strictPrefixConsistent, read.syncDoubleConsistent,
                              read.commonPrefix, strictPrefixSetting, syncDoubleSetting);
        m_versionText = m_content.style.version;
    } else {
        m_prompts.message(u"Unable to load style file!\nYou will have to define all block symbols manually."_s,
                          u"Open Blockset"_s, PromptButtons::Ok, PromptIcon::Exclamation);
        m_content.symbols.blocksetStrictPrefix = false;
        m_content.symbols.blocksetSyncDouble = false;
        // What reading a style without block entries leaves: the user settings decide.
        refreshSymbolSettings(m_content.symbols, true, true, QString(), strictPrefixSetting, syncDoubleSetting);
        if (m_settings.getBoolSetting(u"syncBlockset"_s))
            m_content.style.name = baseName;
    }

    for (BlockRow &row : m_content.blocks) {
        QByteArray bytes;
        if (!readWholeFile(m_folder.blocksFolder() + u'/' + row.file, bytes)) {
            failOpen();
            return;
        }
        m_parser.setBuffer(bytes);
        showProcess(u"Parsing "_s + row.file);
        readBlock(m_parser, row);
    }

    const QString updatePath = updateFilePath();
    if (QFileInfo(updatePath).isFile()) {
        QByteArray bytes;
        if (!readWholeFile(updatePath, bytes)) {
            failOpen();
            return;
        }
        m_parser.setBuffer(bytes);
        m_updateComment = readUpdate(m_parser);
    }
    m_parser.clear();

    m_blocksetOpen = true;
    m_blocksetChanged = renamed;
    m_updateChanged = false;
    m_blocksetUntitled = false;
    if (!m_content.blocks.isEmpty())
        m_tab = TabBlocks;
    else if (!m_content.textures.isEmpty())
        m_tab = TabTextures;
    else if (!m_content.sounds.isEmpty())
        m_tab = TabSounds;
    else
        m_tab = TabSettings;
    checkInterface();

    showProcess(symbolModeText());
    m_processMessageShown = true;
    setBusy(false);
}

QString BlocksetDocument::updateFilePath() const
{
    // The folder of a path handed in without one is the current folder, not the
    // file system's root.
    return QFileInfo(m_blocksetPath).absolutePath() + u'/' + nativeBaseName(m_blocksetFileName) + u".txt"_s;
}

void BlocksetDocument::newBlockset()
{
    showProcess(u"New Blockset..."_s);
    if (m_blocksetOpen && isChanged()) {
        if (askSave(u"The current blockset has been changed. Do you want to save it first?"_s, u"New Blockset"_s)
            == SaveQuestion::Cancel)
            return;
    }
    m_folder.clearWorkingFolders();
    resetView();
    m_blocksetOpen = false;
    checkInterface();

    const NewBlocksetChoice choice =
        m_prompts.newBlockset(m_settings.getBoolSetting(u"strictPrefix"_s), m_settings.getBoolSetting(u"syncDouble"_s));
    m_blocksetFileName = u"Untitled"_s;
    if (!choice.name.isEmpty()) {
        m_content.style.name = choice.name;
        if (m_settings.getBoolSetting(u"syncBlockset"_s))
            m_blocksetFileName = m_content.style.name;
    }
    if (!choice.version.isEmpty()) {
        m_content.style.version = choice.version;
        m_versionText = choice.version;
    } else {
        m_versionText = u"No Version"_s;
    }
    m_content.symbols.strictPrefixBoxChecked = choice.strictPrefix;
    m_content.symbols.strictPrefixBoxEnabled = true;
    m_content.symbols.prefixListEnabled = choice.strictPrefix;
    m_content.symbols.prefixIndex = qBound(0, choice.prefixIndex, int(prefixAlphabet().size()) - 1);
    m_content.symbols.syncDoubleBoxChecked = choice.strictPrefix && choice.syncDouble;
    m_content.symbols.syncDoubleBoxEnabled = choice.strictPrefix;

    m_blocksetPath.clear();
    m_blocksetOpen = true;
    m_blocksetUntitled = true;
    m_blocksetChanged = false;
    m_updateChanged = false;
    m_content.symbols.blocksetStrictPrefix = true;
    m_content.symbols.blocksetSyncDouble = true;
    m_tab = TabBlocks;
    checkInterface();

    showProcess(symbolModeText());
    m_processMessageShown = true;
}

void BlocksetDocument::closeBlockset()
{
    showProcess(u"Close Blockset..."_s);
    if (isChanged()) {
        if (askSave(u"The blockset has been changed. Do you want to save it first?"_s, u"Close Blockset"_s)
            == SaveQuestion::Cancel)
            return;
    }
    m_folder.clearWorkingFolders();
    resetView();
    m_versionText.clear();
    m_blocksetOpen = false;
    m_blocksetChanged = false;
    m_tab = TabBlocks;
    m_blocksetFileName.clear();
    checkInterface();
    clearProcess();
}

bool BlocksetDocument::saveBlockset()
{
    setBusy(true);
    letEventsRun();
    const auto fail = [this](const QString &text) {
        m_prompts.message(text, u"Error"_s, PromptButtons::Ok, PromptIcon::Critical);
        setBusy(false);
        return false;
    };

    QString result;
    QString styleName;
    QString updateName;
    QByteArray styleBytes;
    QByteArray updateBytes;
    if (m_blocksetChanged) {
        showProcess(u"Saving blockset..."_s);
        styleName = nativeBaseName(m_blocksetFileName) + u".style"_s;
        styleBytes = writeStyle(m_content.style, m_content.blocks);
        if (!writeWholeFile(m_folder.workingFolder() + u'/' + styleName, styleBytes))
            return fail(u"Unable to write style file!"_s);
        // Where file names tell case apart, a style file unpacked as "Castle.STYLE"
        // is still the blockset's own: drop it so only the one just written is packed.
        for (const QFileInfo &info : listFiles(m_folder.workingFolder(), {u"*.style"_s})) {
            if (info.fileName() != styleName && info.fileName().compare(styleName, Qt::CaseInsensitive) == 0)
                QFile::remove(info.absoluteFilePath());
        }
        ArchiveWriter archive(m_blocksetPath);
        const bool packed = !m_blocksetPath.isEmpty() && archive.addFolder(m_folder.workingFolder()) && archive.write();
        if (!packed)
            return fail(u"Unable to save blockset!"_s);
        result = u"Blockset "_s;
    }

    if (m_settings.getBoolSetting(u"updateFile"_s) && (m_updateChanged || m_blocksetChanged)) {
        showProcess(u"Saving update file..."_s);
        const QFileInfo archiveInfo(m_blocksetPath);
        if (m_blocksetPath.isEmpty() || !archiveInfo.isFile()
            || archiveInfo.size() > std::numeric_limits<qint32>::max())
            return fail(u"Unable to save update information!"_s);
        updateBytes = writeUpdate(m_content.style.version, m_updateComment, qint32(archiveInfo.size()));
        updateName = QFileInfo(updateFilePath()).fileName();
        if (!writeWholeFile(updateFilePath(), updateBytes))
            return fail(u"Unable to save update information!"_s);
        result = result.isEmpty() ? u"Update file "_s : result + u"and update file "_s;
    }

    m_blocksetChanged = false;
    m_updateChanged = false;
    m_blocksetUntitled = false;
    checkInterface();
    showProcess(result + u"saved."_s);
    m_processMessageShown = true;
    setBusy(false);
    if (m_settings.getBoolSetting(u"showWarnings"_s))
        reportRoverCompatibility(m_prompts, styleName, styleBytes, QDir(m_folder.blocksFolder()).entryList(QDir::Files),
                                 updateName, updateBytes);
    return true;
}

void BlocksetDocument::saveBlocksetAs()
{
    showProcess(u"Save Blockset As..."_s);
    const QString path = m_prompts.saveFile(u"Save Blockset As"_s, kBlocksetFilter, u"bset"_s,
                                            m_settings.getStringSetting(u"pathBlockset"_s));
    if (path.isEmpty()) {
        clearProcess();
        return;
    }
    m_settings.setStringSetting(u"pathBlockset"_s, nativeFolder(path));
    m_blocksetPath = path;
    m_blocksetFileName = nativeFileName(path);
    m_blocksetChanged = true;
    m_updateChanged = true;
    if (m_settings.getBoolSetting(u"syncBlockset"_s))
        m_content.style.name = nativeBaseName(m_blocksetFileName);
    // The save writes the style file afresh under the new name.
    for (const QFileInfo &info : listFiles(m_folder.workingFolder(), {u"*.style"_s}))
        QFile::remove(info.absoluteFilePath());
    saveBlockset();
}

void BlocksetDocument::saveCommand()
{
    if (m_blocksetUntitled)
        saveBlocksetAs();
    else
        saveBlockset();
}

void BlocksetDocument::askSaveOnUnload()
{
    if (!m_blocksetOpen || !isChanged())
        return;
    const PromptAnswer answer = m_prompts.message(u"The blockset has been changed. Do you want to save it first?"_s,
                                                  u"Blockset Changed"_s, PromptButtons::YesNo, PromptIcon::Question);
    if (answer != PromptAnswer::Yes)
        return;
    // An untitled blockset has no archive yet: ask for a name rather than fail.
    if (m_blocksetUntitled || m_blocksetPath.isEmpty())
        saveBlocksetAs();
    else
        saveBlockset();
}

void BlocksetDocument::editStyleValue(StyleField field, const QString &value)
{
    styleValue(m_content.style, field) = value;
    if (field == StyleField::Version)
        m_versionText = value;
    m_blocksetChanged = true;
}

void BlocksetDocument::editUpdateComment(const QString &comment)
{
    m_updateComment = comment;
    m_updateChanged = true;
}
