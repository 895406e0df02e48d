#include "app/BlocksetReader.h"

#include "app/DocumentFiles.h"
#include "common/CommonFunctions.h"
#include "common/Prompts.h"
#include "common/RegistryWrapper.h"
#include "formats/Parser.h"
#include "formats/Parser_Block.h"
#include "formats/Parser_Style.h"
#include "formats/Parser_Version.h"
#include "formats/ValueFormats.h"
#include "storage/WorkingFolder.h"
#include "symbols/SymbolScheme.h"

#include <QFile>
#include <QFileInfo>

using namespace Qt::StringLiterals;

BlocksetReader::BlocksetReader(Prompts &prompts, RegistryWrapper &settings, const WorkingFolder &folder,
                               std::function<void(const QString &)> progress)
    : m_prompts(prompts),
      m_settings(settings),
      m_folder(folder),
      m_progress(std::move(progress))
{
}

void BlocksetReader::fillLists(BlocksetContent &content) const
{
    for (const QFileInfo &info : listFolderFiles(m_folder.blocksFolder(), {u"*.block"_s})) {
        BlockRow row;
        row.file = info.fileName();
        row.size = info.size();
        row.sizeText = itemSizeText(row.size);
        content.blocks.append(row);
    }
    const auto fillItems = [](QList<ItemRow> &items, const QString &folder, const QStringList &patterns) {
        for (const QFileInfo &info : listFolderFiles(folder, patterns)) {
            ItemRow row;
            row.file = info.fileName();
            row.size = info.size();
            row.sizeText = itemSizeText(row.size);
            items.append(row);
        }
    };
    fillItems(content.textures, m_folder.texturesFolder(), {u"*.gif"_s, u"*.jpg"_s});
    fillItems(content.sounds, m_folder.soundsFolder(), {u"*.wav"_s});
}

// The style file: the one named after the archive, else the first one found once
// the user agreed to give it the archive's name. None is no failure.
Result BlocksetReader::findStyle(const QString &baseName, QString &styleFile, bool &renamed)
{
    const QFileInfoList styles = listFolderFiles(m_folder.workingFolder(), {u"*.style"_s});
    for (const QFileInfo &info : styles) {
        if (nativeBaseName(info.fileName()) == baseName) {
            styleFile = info.absoluteFilePath();
            return Result();
        }
    }
    if (styles.isEmpty())
        return Result();
    const QFileInfo &first = styles.first();
    const PromptAnswer answer = m_prompts.message(u"Found differing style file \""_s + first.fileName()
                                                      + u"\". Do you want this file to be renamed and parsed?"_s,
                                                  u"Open Blockset"_s, PromptButtons::YesNo, PromptIcon::Question);
    if (answer != PromptAnswer::Yes)
        return Result();
    const QString target = m_folder.workingFolder() + u'/' + baseName + u".style"_s;
    QFile file(first.absoluteFilePath());
    if (!file.rename(target))
        return Result::failure(u"cannot rename \"%1\": %2"_s.arg(first.fileName(), file.errorString()));
    styleFile = target;
    renamed = true;
    return Result();
}

Result BlocksetReader::readStyleFile(const QString &styleFile, const QString &baseName, BlocksetContent &content)
{
    const bool strictPrefixSetting = m_settings.getBoolSetting(u"strictPrefix"_s);
    const bool syncDoubleSetting = m_settings.getBoolSetting(u"syncDouble"_s);
    if (styleFile.isEmpty()) {
        m_prompts.message(u"Unable to load style file!\nYou will have to define all block symbols manually."_s,
                          u"Open Blockset"_s, PromptButtons::Ok, PromptIcon::Exclamation);
        content.symbols.blocksetStrictPrefix = false;
        content.symbols.blocksetSyncDouble = false;
        // What reading a style without block entries leaves: the user settings decide.
        refreshSymbolSettings(content.symbols, true, true, QString(), strictPrefixSetting, syncDoubleSetting);
        if (m_settings.getBoolSetting(u"syncBlockset"_s))
            content.style.name = baseName;
        return Result();
    }
    QByteArray bytes;
    if (Result read = readWholeFile(styleFile, bytes); !read)
        return read;
    Parser parser;
    parser.setBuffer(bytes);
    m_progress(u"Parsing Blockset..."_s);
    const StyleReadResult style = readStyle(parser, content.style, content.blocks);
    refreshSymbolSettings(content.symbols, style.strictPrefixConsistent, style.syncDoubleConsistent, style.commonPrefix,
                          strictPrefixSetting, syncDoubleSetting);
    return Result();
}

Result BlocksetReader::readBlocks(BlocksetContent &content)
{
    Parser parser;
    for (BlockRow &row : content.blocks) {
        QByteArray bytes;
        if (Result read = readWholeFile(m_folder.blocksFolder() + u'/' + row.file, bytes); !read)
            return read;
        parser.setBuffer(bytes);
        m_progress(u"Parsing "_s + row.file);
        readBlock(parser, row);
    }
    return Result();
}

Result BlocksetReader::read(const QString &archivePath, const QString &updatePath, BlocksetRead &read)
{
    const QString baseName = nativeBaseName(nativeFileName(archivePath));
    fillLists(read.content);
    QString styleFile;
    if (Result found = findStyle(baseName, styleFile, read.styleRenamed); !found)
        return found;
    if (Result style = readStyleFile(styleFile, baseName, read.content); !style)
        return style;
    if (Result blocks = readBlocks(read.content); !blocks)
        return blocks;
    if (QFileInfo(updatePath).isFile()) {
        QByteArray bytes;
        if (Result update = readWholeFile(updatePath, bytes); !update)
            return update;
        read.updateComment = readUpdate(bytes);
    }
    return Result();
}
