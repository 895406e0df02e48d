#include "app/DroppedFiles.h"

#include "app/BlocksetDocument.h"
#include "common/CommonFunctions.h"
#include "common/Prompts.h"
#include "items/AddItems.h"

using namespace Qt::StringLiterals;

namespace {

// The type of a dropped file: its extension, ignoring case as Windows and Rover do.
QString dropType(const QString &path)
{
    return getExtension(nativeFileName(path)).toLower();
}

} // namespace

bool isDroppableFile(const QString &path)
{
    static const QStringList types = {u"bset"_s, u"block"_s, u"jpg"_s, u"gif"_s, u"wav"_s};
    return types.contains(dropType(path));
}

DropOutcome dropFiles(BlocksetDocument &document, const QStringList &paths)
{
    for (const QString &path : paths) {
        if (dropType(path) == "bset"_L1) {
            document.letEventsRun();
            (void)document.openBlockset(path); // a failed open shows its own message
            return DropOutcome::OpenedBlockset;
        }
    }

    const bool anyItem = std::any_of(paths.cbegin(), paths.cend(), [](const QString &path) {
        return isItemFile(ItemKind::Block, path) || isItemFile(ItemKind::Texture, path)
               || isItemFile(ItemKind::Sound, path);
    });
    QStringList skipped;
    for (const QString &path : paths) {
        if (!isDroppableFile(path))
            skipped.append(u"\""_s + nativeFileName(path) + u'"');
    }
    if (!skipped.isEmpty()) {
        document.prompts().message(skipped.join(u", "_s)
                                       + u" cannot be added: a blockset takes block, texture and "
                                         "sound files (.block, .gif, .jpg, .wav)."_s,
                                   u"Dropped Files"_s, PromptButtons::Ok, PromptIcon::Exclamation);
    }
    if (!anyItem)
        return DropOutcome::Nothing;
    if (!document.blocksetOpen()) {
        document.prompts().message(u"There is no open blockset to add the dropped files to.\n"
                                   "Open a blockset or create a new one first."_s,
                                   u"Dropped Files"_s, PromptButtons::Ok, PromptIcon::Information);
        return DropOutcome::Nothing;
    }

    bool limitShown = false;
    for (const QString &path : paths) {
        if (!isItemFile(ItemKind::Block, path))
            continue;
        document.letEventsRun();
        if (blockLimitAllows(document)) {
            addBlockFile(document, path);
        } else if (!limitShown) {
            showBlockLimitMessage(document);
            limitShown = true;
        }
    }
    for (ItemKind kind : {ItemKind::Texture, ItemKind::Sound}) {
        for (const QString &path : paths) {
            if (isItemFile(kind, path))
                addItemFile(document, kind, path);
        }
    }
    return DropOutcome::AddedItems;
}
