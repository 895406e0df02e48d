#include "items/ItemKind.h"

#include "symbols/OperationHost.h"

using namespace Qt::StringLiterals;

QString itemNoun(ItemKind kind)
{
    switch (kind) {
    case ItemKind::Block: return u"block"_s;
    case ItemKind::Texture: return u"texture"_s;
    case ItemKind::Sound: return u"sound"_s;
    }
    return QString();
}

QString itemTitleNoun(ItemKind kind)
{
    const QString noun = itemNoun(kind);
    return noun.left(1).toUpper() + noun.mid(1);
}

QString itemFolder(const OperationHost &host, ItemKind kind)
{
    return host.workingFolder() + u'/' + itemNoun(kind) + u's';
}

QStringList itemFileNames(OperationHost &host, ItemKind kind)
{
    QStringList names;
    BlocksetContent &content = host.content();
    if (kind == ItemKind::Block) {
        for (const BlockRow &row : std::as_const(content.blocks))
            names.append(row.file);
    } else {
        for (const ItemRow &row : std::as_const(kind == ItemKind::Texture ? content.textures : content.sounds))
            names.append(row.file);
    }
    return names;
}

void removeItemRow(OperationHost &host, ItemKind kind, int row)
{
    BlocksetContent &content = host.content();
    switch (kind) {
    case ItemKind::Block: content.blocks.removeAt(row); break;
    case ItemKind::Texture: content.textures.removeAt(row); break;
    case ItemKind::Sound: content.sounds.removeAt(row); break;
    }
}

void setItemFileName(OperationHost &host, ItemKind kind, int row, const QString &file)
{
    BlocksetContent &content = host.content();
    switch (kind) {
    case ItemKind::Block: content.blocks[row].file = file; break;
    case ItemKind::Texture: content.textures[row].file = file; break;
    case ItemKind::Sound: content.sounds[row].file = file; break;
    }
}
