#include "cli/CliReport.h"

#include "app/BlocksetDocument.h"
#include "symbols/SymbolScheme.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace {

// The style values in the order the settings page shows them, with their JSON keys
// and the labels of the plain-text listing.
struct StyleEntry {
    StyleField field;
    QLatin1String key;
    QLatin1String label;
};

const StyleEntry kStyleEntries[] = {
    {StyleField::Version, "version"_L1, "Version"_L1},
    {StyleField::Name, "name"_L1, "Blockset name"_L1},
    {StyleField::Synopsis, "synopsis"_L1, "Synopsis"_L1},
    {StyleField::Author, "author"_L1, "Author"_L1},
    {StyleField::Copyright, "copyright"_L1, "Copyright"_L1},
    {StyleField::PlaceholderTexture, "placeholderTexture"_L1, "Placeholder texture"_L1},
    {StyleField::SkyTexture, "skyTexture"_L1, "Sky texture"_L1},
    {StyleField::SkyColor, "skyColor"_L1, "Sky colour"_L1},
    {StyleField::SkyBrightness, "skyBrightness"_L1, "Sky brightness"_L1},
    {StyleField::GroundTexture, "groundTexture"_L1, "Ground texture"_L1},
    {StyleField::GroundColor, "groundColor"_L1, "Ground colour"_L1},
    {StyleField::OrbTexture, "orbTexture"_L1, "Orb texture"_L1},
    {StyleField::OrbColor, "orbColor"_L1, "Orb colour"_L1},
    {StyleField::OrbBrightness, "orbBrightness"_L1, "Orb brightness"_L1},
    {StyleField::OrbPosition, "orbPosition"_L1, "Orb position"_L1},
    {StyleField::OrbHref, "orbHref"_L1, "Orb link"_L1},
    {StyleField::OrbTarget, "orbTarget"_L1, "Orb link target"_L1},
    {StyleField::OrbText, "orbText"_L1, "Orb text"_L1},
};

QString tabName(int tab)
{
    switch (tab) {
    case BlocksetDocument::TabBlocks: return u"Blocks"_s;
    case BlocksetDocument::TabTextures: return u"Textures"_s;
    case BlocksetDocument::TabSounds: return u"Sounds"_s;
    case BlocksetDocument::TabSettings: return u"Settings"_s;
    case BlocksetDocument::TabVersion: return u"Version"_s;
    }
    return QString::number(tab);
}

QJsonArray itemsJson(const QList<ItemRow> &items)
{
    QJsonArray array;
    for (const ItemRow &row : items)
        array.append(QJsonObject{{u"file"_s, row.file}, {u"size"_s, double(row.size)}});
    return array;
}

QString checkState(bool checked, bool enabled)
{
    return (checked ? u"on"_s : u"off"_s) + (enabled ? QString() : u" (disabled)"_s);
}

// Pads `text` to `width` characters, so columns line up.
QString cell(const QString &text, qsizetype width)
{
    return text.leftJustified(width, u' ');
}

// A table with one header line; columns as wide as their widest cell.
QString table(const QStringList &header, const QList<QStringList> &rows)
{
    QList<qsizetype> widths;
    for (const QString &title : header)
        widths.append(title.size());
    for (const QStringList &row : rows)
        for (qsizetype i = 0; i < row.size() && i < widths.size(); ++i)
            widths[i] = qMax(widths[i], row[i].size());
    const auto line = [&widths](const QStringList &cells) {
        QString text = u"  "_s;
        for (qsizetype i = 0; i < cells.size(); ++i)
            text += i + 1 < cells.size() ? cell(cells[i], widths[i]) + u"  "_s : cells[i];
        return text + u'\n';
    };
    QString text = line(header);
    for (const QStringList &row : rows)
        text += line(row);
    return text;
}

} // namespace

QString CliReport::prefixCharacter(int prefixIndex)
{
    const QString &alphabet = prefixAlphabet();
    if (prefixIndex < 0 || prefixIndex >= alphabet.size())
        return QString();
    return alphabet.mid(prefixIndex, 1);
}

QByteArray CliReport::infoJson(const QString &file, const BlocksetDocument &document,
                               const QList<CliPrompts::Message> &messages)
{
    QJsonObject style;
    for (const StyleEntry &entry : kStyleEntries)
        style.insert(entry.key, styleValue(document.style(), entry.field));

    const SymbolSettings &symbolSettings = document.symbols();
    const QJsonObject symbols{
        {u"strictPrefix"_s, symbolSettings.strictPrefixBoxChecked},
        {u"strictPrefixEnabled"_s, symbolSettings.strictPrefixBoxEnabled},
        {u"syncDouble"_s, symbolSettings.syncDoubleBoxChecked},
        {u"syncDoubleEnabled"_s, symbolSettings.syncDoubleBoxEnabled},
        {u"prefix"_s, prefixCharacter(symbolSettings.prefixIndex)},
    };

    QJsonArray blocks;
    for (const BlockRow &row : document.blocks()) {
        blocks.append(QJsonObject{
            {u"file"_s, row.file},
            {u"name"_s, row.name},
            {u"symbol"_s, row.symbol},
            {u"double"_s, row.doubleSymbol},
            {u"type"_s, row.type},
            {u"bsp"_s, row.bsp},
            {u"size"_s, double(row.size)},
        });
    }

    QJsonArray shown;
    for (const CliPrompts::Message &message : messages)
        shown.append(QJsonObject{{u"title"_s, message.title}, {u"text"_s, message.text}});

    const QJsonObject root{
        {u"file"_s, file},
        {u"tab"_s, document.tab()},
        {u"changed"_s, document.blocksetChanged() || document.updateChanged()},
        {u"style"_s, style},
        {u"symbols"_s, symbols},
        {u"blocks"_s, blocks},
        {u"textures"_s, itemsJson(document.textures())},
        {u"sounds"_s, itemsJson(document.sounds())},
        {u"update"_s, document.updateComment()},
        {u"messages"_s, shown},
    };
    return QJsonDocument(root).toJson(QJsonDocument::Indented);
}

QString CliReport::infoText(const QString &file, const BlocksetDocument &document,
                            const QList<CliPrompts::Message> &messages)
{
    QString text;
    text += u"Blockset:  "_s + file + u'\n';
    text += u"Tab:       "_s + tabName(document.tab()) + u'\n';
    text += u"Changed:   "_s + (document.isChanged() ? u"yes"_s : u"no"_s) + u'\n';
    text += u"Version:   "_s + document.versionText() + u'\n';
    text += u"Status:    "_s + document.processText() + u'\n';

    text += u"\nSettings\n"_s;
    for (const StyleEntry &entry : kStyleEntries)
        text += u"  "_s + cell(entry.label + u':', 22) + styleValue(document.style(), entry.field) + u'\n';
    const SymbolSettings &symbols = document.symbols();
    text += u"  "_s + cell(u"Strict prefix:"_s, 22)
            + checkState(symbols.strictPrefixBoxChecked, symbols.strictPrefixBoxEnabled) + u'\n';
    text += u"  "_s + cell(u"Prefix:"_s, 22) + prefixCharacter(symbols.prefixIndex) + u'\n';
    text += u"  "_s + cell(u"Sync double:"_s, 22)
            + checkState(symbols.syncDoubleBoxChecked, symbols.syncDoubleBoxEnabled) + u'\n';

    QList<QStringList> blockRows;
    for (const BlockRow &row : document.blocks())
        blockRows.append({row.file, row.name, row.symbol, row.doubleSymbol, row.type, row.bsp, row.sizeText});
    text += u"\nBlocks: "_s + QString::number(document.blockCount()) + u'\n';
    if (!blockRows.isEmpty())
        text += table({u"File"_s, u"Name"_s, u"Symbol"_s, u"Double"_s, u"Type"_s, u"BSP"_s, u"Size"_s}, blockRows);

    const auto items = [](const QString &title, const QList<ItemRow> &list) {
        QList<QStringList> rows;
        for (const ItemRow &row : list)
            rows.append({row.file, row.sizeText});
        QString part = u'\n' + title + u": "_s + QString::number(list.size()) + u'\n';
        if (!rows.isEmpty())
            part += table({u"File"_s, u"Size"_s}, rows);
        return part;
    };
    text += items(u"Textures"_s, document.textures());
    text += items(u"Sounds"_s, document.sounds());

    text += u"\nUpdate comment: "_s + document.updateComment() + u'\n';

    if (!messages.isEmpty()) {
        text += u"\nMessages\n"_s;
        for (const CliPrompts::Message &message : messages)
            text += u"  "_s + message.title + u": "_s + QString(message.text).replace(u'\n', u' ') + u'\n';
    }
    return text;
}
