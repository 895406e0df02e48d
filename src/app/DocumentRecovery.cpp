// The crash-recovery side of BlocksetDocument: while the blockset is changed its
// unsaved state is written beside the working folder, and a later start can open
// that state again.
#include "app/BlocksetDocument.h"

#include "app/BlocksetReader.h"
#include "app/DocumentFiles.h"
#include "common/CommonFunctions.h"
#include "formats/Parser_Style.h"
#include "storage/WholeFile.h"
#include "storage/WorkingFolder.h"

#include <QFile>
#include <QFileInfo>

using namespace Qt::StringLiterals;

void BlocksetDocument::noteForRecovery()
{
    if (m_recoveryPath.isEmpty())
        return;
    if (!m_blocksetOpen || !isChanged()) {
        QFile::remove(m_recoveryPath);
        return;
    }
    RecoveryRecord record;
    record.blocksetPath = m_blocksetUntitled ? QString() : m_blocksetPath;
    record.blocksetFileName = m_blocksetFileName;
    record.untitled = m_blocksetUntitled;
    record.blocksetChanged = m_blocksetChanged;
    record.updateChanged = m_updateChanged;
    record.style = writeStyle(m_content.style, m_content.blocks);
    record.symbols = m_content.symbols;
    record.updateComment = m_updateComment;
    record.versionText = m_versionText;
    (void)record.write(m_recoveryPath); // best effort: the edit itself stands either way
}

Result BlocksetDocument::recoverBlockset(const RecoveryRecord &record)
{
    if (!record.untitled) {
        if (Result claimed = m_access.claim(record.blocksetPath); !claimed)
            return claimed;
    }
    // The style as it was in memory goes into the working folder, so the reader
    // finds the rows' names and symbols; the update comment comes from the record.
    const QString styleName = nativeBaseName(record.blocksetFileName) + u".style"_s;
    for (const QFileInfo &info : listFolderFiles(m_folder.workingFolder(), {u"*.style"_s}))
        QFile::remove(info.absoluteFilePath());
    if (Result written = writeWholeFile(m_folder.workingFolder() + u'/' + styleName, record.style); !written)
        return failOpen(written.reason());
    BlocksetRead read;
    BlocksetReader reader(m_prompts, m_settings, m_folder, [this](const QString &text) { showProcess(text); });
    if (Result readResult = reader.read(record.blocksetFileName, QString(), read); !readResult)
        return failOpen(readResult.reason());
    m_content = read.content;
    m_content.symbols = record.symbols;
    m_updateComment = record.updateComment;
    m_versionText = record.versionText;
    m_blocksetPath = record.blocksetPath;
    m_blocksetFileName = record.blocksetFileName;
    m_blocksetUntitled = record.untitled;
    m_blocksetChanged = record.blocksetChanged;
    m_updateChanged = record.updateChanged;
    m_blocksetOpen = true;
    m_onDisk = record.untitled ? DiskIdentity() : DiskIdentity::of(m_blocksetPath);
    m_askedAbout = m_onDisk;
    m_tab = TabBlocks;
    clearHistory(false);
    emit documentReset();
    checkInterface();
    showProcess(u"Recovered the unsaved changes of "_s + m_blocksetFileName + u'.');
    m_processMessageShown = true;
    noteForRecovery();
    return Result();
}
