#include "app/BlocksetDocument.h"

#include "app/BlocksetReader.h"
#include "app/BlocksetWriter.h"
#include "app/DocumentFiles.h"
#include "app/DocumentView.h"
#include "app/RoverCompatibility.h"
#include "common/CommonFunctions.h"
#include "common/Prompts.h"
#include "common/RegistryWrapper.h"
#include "formats/Parser_Style.h"
#include "storage/ArchiveReader.h"
#include "storage/PairSwitch.h"
#include "storage/WorkingFolder.h"
#include "symbols/SymbolScheme.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace {

const QString kBlocksetFilter = u"Blocksets (*.bset),*.bset"_s;

} // namespace

BlocksetDocument::BlocksetDocument(Prompts &prompts, SymbolPrompt &symbolPrompt, RegistryWrapper &settings,
                                   WorkingFolder &folder)
    : m_prompts(prompts),
      m_symbolPrompt(symbolPrompt),
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

void BlocksetDocument::setBlocksetChanged()
{
    m_stepSetChanged = true;
    if (m_blocksetChanged)
        return;
    m_blocksetChanged = true;
    emit stateChanged();
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

void BlocksetDocument::announceChanges(const Snapshot &before)
{
    const BlocksetContent &was = before.state.content;
    if (was.blocks != m_content.blocks)
        emit itemsChanged(ItemKind::Block);
    if (was.textures != m_content.textures)
        emit itemsChanged(ItemKind::Texture);
    if (was.sounds != m_content.sounds)
        emit itemsChanged(ItemKind::Sound);
    if (was.style.version != m_content.style.version)
        m_versionText = m_content.style.version;
    if (was.style != m_content.style || before.state.versionText != m_versionText)
        emit styleChanged();
    if (was.symbols != m_content.symbols)
        emit symbolsChanged();
    if (before.state.updateComment != m_updateComment)
        emit updateCommentChanged();
    if (before.blocksetChanged != m_blocksetChanged || before.updateChanged != m_updateChanged)
        emit stateChanged();
    noteForRecovery();
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
    (void)saveCommand();
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
    emit documentReset();
}

Result BlocksetDocument::failOpen(const QString &reason)
{
    m_folder.clearWorkingFolders(); // what a broken archive let through is no blockset
    clearHistory(true);
    m_access.release();
    m_prompts.message(u"Failed to open Blockset File."_s, u"File Error"_s, reason, PromptButtons::Ok,
                      PromptIcon::Critical);
    resetView();
    m_blocksetOpen = false;
    clearProcess();
    setBusy(false);
    checkInterface();
    return Result::failure(reason);
}

Result BlocksetDocument::openBlockset(const QString &file)
{
    showProcess(u"Open Blockset..."_s);
    if (m_blocksetOpen && isChanged()) {
        if (askSave(u"The current blockset has been changed. Do you want to save it first?"_s, u"Open Blockset"_s)
            == SaveQuestion::Cancel)
            return Result::cancelled();
    }

    QString path = file;
    const bool fromDialog = path.isEmpty();
    if (fromDialog)
        path = m_prompts.openFile(u"Open Blockset"_s, kBlocksetFilter, m_settings.getStringSetting(u"pathBlockset"_s));
    if (path.isEmpty()) {
        clearProcess();
        return Result::cancelled();
    }
    if (fromDialog)
        m_settings.setStringSetting(u"pathBlockset"_s, nativeFolder(path));

    // One editor per file: the lock is claimed before anything is cleared.
    if (Result claimed = m_access.claim(path); !claimed) {
        clearProcess();
        return claimed;
    }
    m_blocksetPath = path;
    m_packed.clear();
    m_folder.clearWorkingFolders();
    clearHistory(true);
    resetView();
    m_blocksetOpen = false;
    checkInterface();

    setBusy(true);
    letEventsRun();
    // A save killed halfway left a journal beside the archive: finish or undo it
    // first (unless another editor holds the file: its save may still be running).
    if (m_access.nobodyElseHolds(m_blocksetPath)) {
        if (Result recovered = PairSwitch::recover(m_blocksetPath); !recovered)
            return failOpen(recovered.reason());
    }
    {
        ArchiveReader archive;
        std::vector<ArchiveEntryOrigin> origins;
        Result read = archive.open(m_blocksetPath);
        if (read)
            read = archive.extractAll(m_folder.workingFolder(), &origins);
        if (!read)
            return failOpen(read.reason());
        m_packed.adoptArchive(m_blocksetPath, m_folder.workingFolder(), origins);
    }
    m_blocksetFileName = nativeFileName(m_blocksetPath);
    BlocksetRead read;
    BlocksetReader reader(m_prompts, m_settings, m_folder, [this](const QString &text) { showProcess(text); });
    if (Result readResult = reader.read(m_blocksetPath, updateFilePath(), read); !readResult)
        return failOpen(readResult.reason());
    m_content = read.content;
    m_updateComment = read.updateComment;
    m_versionText = m_content.style.version;
    m_onDisk = DiskIdentity::of(m_blocksetPath);
    m_askedAbout = m_onDisk;

    m_blocksetOpen = true;
    m_blocksetChanged = read.styleRenamed;
    m_updateChanged = false;
    m_blocksetUntitled = false;
    clearHistory(!read.styleRenamed);
    if (!m_content.blocks.isEmpty())
        m_tab = TabBlocks;
    else if (!m_content.textures.isEmpty())
        m_tab = TabTextures;
    else if (!m_content.sounds.isEmpty())
        m_tab = TabSounds;
    else
        m_tab = TabSettings;
    emit documentReset();
    checkInterface();

    noteForRecovery();
    // Opened read-only, the status panel says why, in place of the symbol modes.
    const QString reason = readOnlyReason();
    showProcess(!readOnly()        ? symbolModeText()
                : reason.isEmpty() ? u"Opened read-only."_s
                                   : u"Opened read-only: "_s + reason);
    if (!readOnly())
        emit fileUsed(m_blocksetPath);
    m_processMessageShown = true;
    setBusy(false);
    return Result();
}

bool BlocksetDocument::changedOnDisk() const
{
    return m_blocksetOpen && !m_blocksetUntitled && !m_blocksetPath.isEmpty() && !m_onDisk.matches(m_blocksetPath);
}

Result BlocksetDocument::askAboutDiskChange(bool onlyOnce)
{
    if (!changedOnDisk())
        return Result();
    const DiskIdentity now = DiskIdentity::of(m_blocksetPath);
    if (onlyOnce && now == m_askedAbout)
        return Result::cancelled();
    m_askedAbout = now;
    const int chosen = m_prompts.choose(u"The blockset was changed on disk since you opened it."_s, m_blocksetFileName,
                                        u"Reload opens the blockset as it is on disk now; Overwrite lets the next Save "
                                        "replace it with this one; Save As keeps both."_s,
                                        {u"Reload"_s, u"Overwrite"_s, u"Save As"_s}, PromptIcon::Exclamation);
    switch (chosen) {
    case 0: {
        // The edits here would be lost: asked about as Close does (saving goes
        // elsewhere, since the file on disk is the newer one).
        if (isChanged()) {
            const PromptAnswer answer =
                m_prompts.message(u"The blockset has been changed. Do you want to save it first?"_s,
                                  u"Reload Blockset"_s, PromptButtons::YesNoCancel, PromptIcon::None);
            if (answer == PromptAnswer::Cancel || (answer == PromptAnswer::Yes && !saveBlocksetAs()))
                return Result::cancelled();
        }
        const QString path = m_blocksetPath;
        m_blocksetChanged = m_updateChanged = false;
        (void)openBlockset(path);
        return Result::cancelled(); // the command that asked does not go on
    }
    case 1: m_onDisk = now; return Result();
    case 2: (void)saveBlocksetAs(); return Result::cancelled();
    default: return Result::cancelled();
    }
}

QString BlocksetDocument::updateFilePath() const
{
    // The folder of a path handed in without one is the current folder, not the
    // file system's root.
    return QFileInfo(m_blocksetPath).absolutePath() + u'/' + nativeBaseName(m_blocksetFileName) + u".txt"_s;
}

Result BlocksetDocument::newBlockset()
{
    showProcess(u"New Blockset..."_s);
    if (m_blocksetOpen && isChanged()) {
        if (askSave(u"The current blockset has been changed. Do you want to save it first?"_s, u"New Blockset"_s)
            == SaveQuestion::Cancel)
            return Result::cancelled();
    }
    m_folder.clearWorkingFolders();
    clearHistory(true);
    m_access.release();
    m_packed.clear();
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
    SymbolSettings &symbols = m_content.symbols;
    symbols.strictPrefixBoxChecked = choice.strictPrefix;
    symbols.strictPrefixBoxEnabled = true;
    symbols.prefixListEnabled = choice.strictPrefix;
    symbols.prefixIndex = qBound(0, choice.prefixIndex, int(prefixAlphabet().size()) - 1);
    symbols.syncDoubleBoxChecked = choice.strictPrefix && choice.syncDouble;
    symbols.syncDoubleBoxEnabled = choice.strictPrefix;
    symbols.blocksetStrictPrefix = true;
    symbols.blocksetSyncDouble = true;

    m_blocksetPath.clear();
    m_blocksetOpen = true;
    m_blocksetUntitled = true;
    m_blocksetChanged = false;
    m_updateChanged = false;
    m_tab = TabBlocks;
    emit documentReset();
    checkInterface();

    showProcess(symbolModeText());
    m_processMessageShown = true;
    return Result();
}

Result BlocksetDocument::closeBlockset()
{
    showProcess(u"Close Blockset..."_s);
    if (isChanged()) {
        if (askSave(u"The blockset has been changed. Do you want to save it first?"_s, u"Close Blockset"_s)
            == SaveQuestion::Cancel)
            return Result::cancelled();
    }
    m_folder.clearWorkingFolders();
    clearHistory(true);
    m_access.release();
    m_packed.clear();
    resetView();
    m_versionText.clear();
    m_blocksetOpen = false;
    m_blocksetChanged = false;
    m_tab = TabBlocks;
    m_blocksetFileName.clear();
    noteForRecovery();
    emit stateChanged();
    checkInterface();
    clearProcess();
    return Result();
}

Result BlocksetDocument::failSave(const QString &text, const Result &cause)
{
    m_prompts.message(text, u"Error"_s, cause.reason(), PromptButtons::Ok, PromptIcon::Critical);
    setBusy(false);
    return cause;
}

Result BlocksetDocument::saveBlockset()
{
    if (readOnly()) {
        m_prompts.message(u"The blockset is open read-only: "_s + readOnlyReason()
                              + u".\nUse Save As to save it under another name."_s,
                          u"Save Blockset"_s, PromptButtons::Ok, PromptIcon::Exclamation);
        return Result::failure(readOnlyReason());
    }
    // Nothing is overwritten silently: a change by another program is asked about first.
    if (Result asked = askAboutDiskChange(false); !asked)
        return asked;
    setBusy(true);
    letEventsRun();
    BlocksetWriter writer(m_folder);
    QString result;
    QString styleName;
    QString updateName;
    QByteArray styleBytes;
    QByteArray updateBytes;
    const bool writeUpdate = m_settings.getBoolSetting(u"updateFile"_s) && (m_updateChanged || m_blocksetChanged);
    if (m_blocksetChanged) {
        showProcess(u"Saving blockset..."_s);
        styleName = nativeBaseName(m_blocksetFileName) + u".style"_s;
        if (Result written = writer.writeStyle(styleName, m_content, styleBytes); !written)
            return failSave(u"Unable to write style file!"_s, written);
        if (writeUpdate) {
            // The archive and its update file go in place together, or neither does.
            bool updateFailed = false;
            if (Result packed = writer.packPair(m_blocksetPath, m_packed, updateFilePath(), m_content.style.version,
                                                m_updateComment, updateBytes, updateFailed);
                !packed)
                return failSave(updateFailed ? u"Unable to save update information!\nThe blockset was not saved: it "
                                               "stays on disk as it was."_s
                                             : u"Unable to save blockset!"_s,
                                packed);
            updateName = QFileInfo(updateFilePath()).fileName();
            result = u"Blockset and update file "_s;
        } else {
            if (Result packed = writer.packArchive(m_blocksetPath, m_packed); !packed)
                return failSave(u"Unable to save blockset!"_s, packed);
            result = u"Blockset "_s;
        }
    } else if (writeUpdate) {
        showProcess(u"Saving update file..."_s);
        if (Result written = BlocksetWriter::writeUpdateFile(updateFilePath(), m_blocksetPath, m_content.style.version,
                                                             m_updateComment, updateBytes);
            !written)
            return failSave(u"Unable to save update information!"_s, written);
        updateName = QFileInfo(updateFilePath()).fileName();
        result = u"Update file "_s;
    }

    m_blocksetChanged = false;
    m_updateChanged = false;
    m_blocksetUntitled = false;
    m_history.markSaved();
    emit fileUsed(m_blocksetPath);
    m_onDisk = DiskIdentity::of(m_blocksetPath);
    m_askedAbout = m_onDisk;
    noteForRecovery();
    emit stateChanged();
    checkInterface();
    showProcess(result + u"saved."_s);
    m_processMessageShown = true;
    setBusy(false);
    if (m_settings.getBoolSetting(u"showWarnings"_s))
        reportRoverCompatibility(m_prompts, styleName, styleBytes, QDir(m_folder.blocksFolder()).entryList(QDir::Files),
                                 updateName, updateBytes, m_blocksetFileName, QFileInfo(m_blocksetPath).size());
    return Result();
}

Result BlocksetDocument::saveBlocksetAs()
{
    showProcess(u"Save Blockset As..."_s);
    const QString path = m_prompts.saveFile(u"Save Blockset As"_s, kBlocksetFilter, u"bset"_s,
                                            m_settings.getStringSetting(u"pathBlockset"_s));
    if (path.isEmpty()) {
        clearProcess();
        return Result::cancelled();
    }
    m_settings.setStringSetting(u"pathBlockset"_s, nativeFolder(path));
    // A file another editor has open is not written over.
    if (Result claimed = m_access.claimTarget(path); !claimed) {
        m_prompts.message(claimed.reason() + u'.', u"Save Blockset As"_s, PromptButtons::Ok, PromptIcon::Exclamation);
        clearProcess();
        return claimed;
    }
    m_blocksetPath = path;
    m_blocksetFileName = nativeFileName(path);
    m_onDisk = DiskIdentity::of(path);
    m_blocksetChanged = true;
    m_updateChanged = true;
    if (m_settings.getBoolSetting(u"syncBlockset"_s) && m_content.style.name != nativeBaseName(m_blocksetFileName)) {
        m_content.style.name = nativeBaseName(m_blocksetFileName);
        emit styleChanged();
    }
    emit stateChanged();
    // The save writes the style file afresh under the new name.
    for (const QFileInfo &info : listFolderFiles(m_folder.workingFolder(), {u"*.style"_s}))
        QFile::remove(info.absoluteFilePath());
    return saveBlockset();
}

Result BlocksetDocument::saveCommand()
{
    return m_blocksetUntitled ? saveBlocksetAs() : saveBlockset();
}

bool BlocksetDocument::askSaveOnUnload()
{
    if (!m_blocksetOpen || !isChanged())
        return true;
    return askSave(u"The blockset has been changed. Do you want to save it first?"_s, u"Blockset Changed"_s)
           != SaveQuestion::Cancel;
}

void BlocksetDocument::editStyleValue(StyleField field, const QString &value)
{
    if (styleValue(m_content.style, field) == value)
        return;
    // Typing into one field is one step until another edit comes between.
    const EditStart start = beginEdit(false);
    styleValue(m_content.style, field) = value;
    m_blocksetChanged = true;
    m_stepSetChanged = true;
    endEdit(start, field == StyleField::Version ? u"Edit Version"_s : u"Edit Settings"_s,
            u"style:"_s + QString::number(int(field)));
}

void BlocksetDocument::editUpdateComment(const QString &comment)
{
    if (m_updateComment == comment)
        return;
    const EditStart start = beginEdit(false);
    m_updateComment = comment;
    m_updateChanged = true;
    endEdit(start, u"Edit Update Comment"_s, u"comment"_s);
}

void BlocksetDocument::setSymbolSettings(const SymbolSettings &symbols)
{
    if (m_content.symbols == symbols)
        return;
    const QString name = symbols.strictPrefixBoxChecked != m_content.symbols.strictPrefixBoxChecked ? u"Strict Prefix"_s
                         : symbols.syncDoubleBoxChecked != m_content.symbols.syncDoubleBoxChecked
                             ? u"Sync Double Mode"_s
                             : u"Symbol Settings"_s;
    const EditStart start = beginEdit(false);
    m_content.symbols = symbols;
    endEdit(start, name, QString());
}
