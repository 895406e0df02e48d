#include "items/AddItems.h"

#include "common/CommonFunctions.h"
#include "common/Prompts.h"
#include "common/RegistryWrapper.h"
#include "formats/Parser.h"
#include "formats/Parser_Block.h"
#include "formats/ValueFormats.h"
#include "items/BlockNaming.h"
#include "items/FileNameRules.h"
#include "items/MediaVerdict.h"
#include "storage/WholeFile.h"
#include "symbols/OperationHost.h"
#include "symbols/SymbolDialogs.h"
#include "symbols/SymbolScheme.h"

#include <QSaveFile>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

struct AddCommand {
    QString title; // "Add Block"
    QString filter;
    QStringList extensions;
    QString folderSetting;
    QString plural; // "blocks"
};

AddCommand addCommand(ItemKind kind)
{
    switch (kind) {
    case ItemKind::Block:
        return {u"Add Block"_s,
                u"Block files (*.block),*.block,All files (*.*),*.*"_s,
                {u"block"_s},
                u"pathBlocks"_s,
                u"blocks"_s};
    case ItemKind::Texture:
        return {u"Add Texture"_s,
                u"All supported Images (*.gif;*.jpg),*.gif;*.jpg,GIF images (*.gif),*.gif,"
                "JPG images (*.jpg),*.jpg,All files (*.*),*.*"_s,
                {u"gif"_s, u"jpg"_s},
                u"pathTextures"_s,
                u"textures"_s};
    case ItemKind::Sound:
        return {
            u"Add Sound"_s, u"WAV files (*.wav),*.wav,All files (*.*),*.*"_s, {u"wav"_s}, u"pathSounds"_s, u"sounds"_s};
    }
    return {};
}

QString summary(ItemKind kind, int count)
{
    const QString noun = itemNoun(kind);
    if (count == 0)
        return u"No "_s + noun + u"s added."_s;
    if (count == 1)
        return u"1 "_s + noun + u" added."_s;
    return QString::number(count) + u' ' + noun + u"s added."_s;
}

// Whether a row of the list already has this file name, ignoring case: to
// Windows and to Rover "Wall.block" and "wall.block" are one file, so the
// second would overwrite the first in the archive.
bool isDuplicate(OperationHost &host, ItemKind kind, const QString &file)
{
    for (const QString &name : itemFileNames(host, kind)) {
        if (!sameFileName(name, file))
            continue;
        const QString what = kind == ItemKind::Block ? QString() : itemNoun(kind) + u' ';
        host.prompts().message(u"There is already a "_s + what + u'"' + name + u"\" in the blockset!"_s,
                               u"Unable to add "_s + itemNoun(kind), PromptButtons::Ok, PromptIcon::Exclamation);
        return true;
    }
    return false;
}

// A name Windows or Windows-1252 cannot hold, or Rover cannot find, is refused with its reason.
bool isRefusedName(OperationHost &host, ItemKind kind, const QString &file)
{
    const QString problem = fileNameProblem(file);
    if (problem.isEmpty())
        return false;
    host.prompts().message(refusedNameText(file, problem), u"Unable to add "_s + itemNoun(kind), PromptButtons::Ok,
                           PromptIcon::Exclamation);
    return true;
}

// A folder, a pipe, a device, a missing or unreadable file is refused with its reason.
bool readSource(OperationHost &host, ItemKind kind, const QString &path, QByteArray &bytes)
{
    const Result read = readWholeFile(path, bytes);
    if (read)
        return true;
    host.prompts().message(u"Unable to read \""_s + path + u"\"!"_s, u"Unable to add "_s + itemNoun(kind),
                           read.reason(), PromptButtons::Ok, PromptIcon::Critical);
    return false;
}

// Writes the copy whole or not at all: a full disk or a folder without rights
// leaves no half-written file behind.
bool writeCopy(OperationHost &host, ItemKind kind, const QString &file, const QByteArray &bytes)
{
    QSaveFile copy(itemFolder(host, kind) + u'/' + file);
    if (copy.open(QIODevice::WriteOnly) && copy.write(bytes) == bytes.size() && copy.commit())
        return true;
    host.prompts().message(u"Unable to copy \""_s + file + u"\" into the blockset!"_s,
                           u"Unable to add "_s + itemNoun(kind), copy.errorString(), PromptButtons::Ok,
                           PromptIcon::Critical);
    return false;
}

} // namespace

bool isItemFile(ItemKind kind, const QString &path)
{
    return addCommand(kind).extensions.contains(getExtension(nativeFileName(path)).toLower());
}

QString itemExtensionsText(ItemKind kind)
{
    return u"."_s + addCommand(kind).extensions.join(u", ."_s);
}

bool blockLimitAllows(OperationHost &host)
{
    return host.content().blocks.size() < blockLimit();
}

void showBlockLimitMessage(OperationHost &host)
{
    host.prompts().message(u"The maximum of "_s + QString::number(blockLimit()) + u" block has been reached."_s,
                           u"Too many blocks"_s, PromptButtons::Ok, PromptIcon::Exclamation);
}

bool addBlockFile(OperationHost &host, const QString &path)
{
    const QString file = nativeFileName(path);
    QByteArray bytes;
    if (isDuplicate(host, ItemKind::Block, file) || isRefusedName(host, ItemKind::Block, file)
        || !readSource(host, ItemKind::Block, path, bytes))
        return false;

    BlocksetContent &content = host.content();
    const SymbolDialogAnswer symbols = host.symbolPrompt().symbolDialog(addBlockSetup(host.prompts(), content, file));
    if (!symbols.accepted)
        return false;

    BlockRow row;
    row.file = file;
    row.symbol = symbols.single;
    row.doubleSymbol = symbols.doubleSymbol;
    row.source = path;
    Parser parser;
    parser.setBuffer(bytes);
    readBlock(parser, row);
    content.blocks.append(row);
    const int at = int(content.blocks.size()) - 1;

    const std::optional<QByteArray> text = settleBlockName(host, at, bytes);
    if (!text) {
        host.prompts().message(u"The block name inside \""_s + file + u"\" could not be changed!"_s,
                               u"Unable to add block"_s, PromptButtons::Ok, PromptIcon::Critical);
    }
    if (!text || !writeCopy(host, ItemKind::Block, file, *text)) {
        content.blocks.removeAt(at);
        return false;
    }
    BlockRow &added = content.blocks[at];
    added.size = text->size();
    added.sizeText = itemSizeText(added.size);
    host.setBlocksetChanged();
    return true;
}

namespace {

bool addPlainFile(OperationHost &host, ItemKind kind, const QString &path)
{
    const QString file = nativeFileName(path);
    QByteArray bytes;
    if (isDuplicate(host, kind, file) || isRefusedName(host, kind, file) || !readSource(host, kind, path, bytes)
        || !writeCopy(host, kind, file, bytes))
        return false;
    ItemRow row;
    row.file = file;
    row.size = bytes.size();
    row.sizeText = itemSizeText(row.size);
    row.source = path;
    BlocksetContent &content = host.content();
    (kind == ItemKind::Texture ? content.textures : content.sounds).append(row);
    host.setBlocksetChanged();
    warnUnusableMedia(host, kind, file, bytes);
    return true;
}

} // namespace

bool addTextureFile(OperationHost &host, const QString &path)
{
    return addPlainFile(host, ItemKind::Texture, path);
}

bool addSoundFile(OperationHost &host, const QString &path)
{
    return addPlainFile(host, ItemKind::Sound, path);
}

bool addItemFile(OperationHost &host, ItemKind kind, const QString &path)
{
    return kind == ItemKind::Block ? addBlockFile(host, path) : addPlainFile(host, kind, path);
}

int addItems(OperationHost &host, ItemKind kind)
{
    const AddCommand command = addCommand(kind);
    host.showProcess(command.title + u"..."_s);
    RegistryWrapper &settings = host.settings();
    QStringList paths =
        host.prompts().openFiles(command.title, command.filter, settings.getStringSetting(command.folderSetting));
    if (paths.isEmpty()) {
        host.showProcess(QString());
        return 0;
    }
    // Ascending by character code, capitals before small letters; equal paths keep their order.
    if (kind == ItemKind::Block)
        std::stable_sort(paths.begin(), paths.end());

    int added = 0;
    for (const QString &path : std::as_const(paths)) {
        if (!isItemFile(kind, path)) {
            host.prompts().message(u"\""_s + path + u"\" is not a "_s + itemNoun(kind) + u" file ("_s
                                       + itemExtensionsText(kind) + u")!"_s,
                                   command.title, PromptButtons::Ok, PromptIcon::Exclamation);
            continue;
        }
        if (kind == ItemKind::Block && !blockLimitAllows(host)) {
            showBlockLimitMessage(host);
            break;
        }
        if (addItemFile(host, kind, path)) {
            settings.setStringSetting(command.folderSetting, nativeFolder(path));
            ++added;
        }
    }
    host.showProcess(summary(kind, added));
    return added;
}
