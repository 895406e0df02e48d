#include "formats/Parser_Style.h"

#include "common/ProgramVersion.h"
#include "formats/Parser.h"
#include "formats/ValueFormats.h"
#include "storage/Cp1252.h"

#include <QHash>

#include <span>

using namespace Qt::StringLiterals;

namespace {

// How a value control takes a text: free text as it is; colour, percentage and
// position only in their format (shown normalised), anything else is refused
// and the former value stays.
enum class Kind { Text, Color, Percentage, Position };

struct Target {
    QLatin1StringView attribute;
    StyleField field;
    Kind kind;
};

constexpr Target kStyleTargets[] = {
    {"version"_L1, StyleField::Version, Kind::Text},     {"name"_L1, StyleField::Name, Kind::Text},
    {"synopsis"_L1, StyleField::Synopsis, Kind::Text},   {"author"_L1, StyleField::Author, Kind::Text},
    {"copyright"_L1, StyleField::Copyright, Kind::Text},
};

constexpr Target kPlaceholderTargets[] = {
    {"texture"_L1, StyleField::PlaceholderTexture, Kind::Text},
};

constexpr Target kSkyTargets[] = {
    {"texture"_L1, StyleField::SkyTexture, Kind::Text},
    {"color"_L1, StyleField::SkyColor, Kind::Color},
    {"brightness"_L1, StyleField::SkyBrightness, Kind::Percentage},
};

constexpr Target kGroundTargets[] = {
    {"texture"_L1, StyleField::GroundTexture, Kind::Text},
    {"color"_L1, StyleField::GroundColor, Kind::Color},
};

constexpr Target kOrbTargets[] = {
    {"texture"_L1, StyleField::OrbTexture, Kind::Text},
    {"color"_L1, StyleField::OrbColor, Kind::Color},
    {"brightness"_L1, StyleField::OrbBrightness, Kind::Percentage},
    {"position"_L1, StyleField::OrbPosition, Kind::Position},
    {"href"_L1, StyleField::OrbHref, Kind::Text},
    {"target"_L1, StyleField::OrbTarget, Kind::Text},
    {"text"_L1, StyleField::OrbText, Kind::Text},
};

void setValue(StyleValues &style, const Target &target, const QString &value)
{
    std::optional<QString> shown;
    switch (target.kind) {
    case Kind::Text: shown = value; break;
    case Kind::Color: shown = acceptColor(value); break;
    case Kind::Percentage: shown = acceptPercentage(value); break;
    case Kind::Position: shown = acceptPosition(value); break;
    }
    if (shown)
        styleValue(style, target.field) = *shown;
}

void readValues(QByteArrayView attributes, StyleValues &style, std::span<const Target> targets)
{
    QByteArrayView name;
    QByteArrayView value;
    while (getNextAttributeView(attributes, name, value)) {
        for (const Target &target : targets) {
            if (nameEquals(name, target.attribute)) {
                setValue(style, target, fromCp1252(value));
                break;
            }
        }
    }
}

// The rows of each block file name (exact), so that an entry finds its rows
// without a scan of the list: a style with many entries reads in linear time.
using RowsByFile = QHash<QString, QList<qsizetype>>;

RowsByFile rowsByFile(const QList<BlockRow> &rows)
{
    RowsByFile index;
    index.reserve(rows.size());
    for (qsizetype i = 0; i < rows.size(); ++i)
        index[rows[i].file].append(i);
    return index;
}

// One block element: its symbols and name go to every row of the named file.
void readBlockEntry(QByteArrayView attributes, QList<BlockRow> &rows, const RowsByFile &index, StyleReadResult &result)
{
    QString symbol;
    QString doubleSymbol;
    QString file;
    QString name;
    QByteArrayView attribute;
    QByteArrayView value;
    while (getNextAttributeView(attributes, attribute, value)) {
        if (nameEquals(attribute, "symbol"_L1)) {
            if (value.size() == 1)
                symbol = fromCp1252(value);
        } else if (nameEquals(attribute, "double"_L1)) {
            if (value.size() == 2)
                doubleSymbol = fromCp1252(value);
        } else if (nameEquals(attribute, "file"_L1)) {
            file = trimSpaces(fromCp1252(value));
        } else if (nameEquals(attribute, "name"_L1)) {
            name = trimSpaces(fromCp1252(value));
        }
    }
    if (file.isEmpty())
        return;

    for (qsizetype at : index.value(file)) {
        BlockRow &row = rows[at];
        row.name = name;
        row.symbol = symbol;
        row.doubleSymbol = doubleSymbol;
        if (result.commonPrefix.isEmpty())
            result.commonPrefix = doubleSymbol.left(1);
        if (doubleSymbol.isEmpty() || doubleSymbol.left(1) != result.commonPrefix)
            result.strictPrefixConsistent = false;
        if (doubleSymbol.right(1) != symbol)
            result.syncDoubleConsistent = false;
    }
}

void appendAttribute(QString &line, QLatin1StringView attribute, const QString &value)
{
    if (value.isEmpty())
        return;
    line += u' ';
    line += attribute;
    line += u"=\""_s;
    line += value;
    line += u'"';
}

QString generatorVersion()
{
    return programVersion();
}

} // namespace

StyleReadResult readStyle(Parser &parser, StyleValues &style, QList<BlockRow> &rows)
{
    parser.normaliseBuffer();
    StyleReadResult result;
    const RowsByFile index = rowsByFile(rows);

    QByteArrayView tag;
    QByteArrayView word;
    while (parser.getNextTagView(tag)) {
        if (!getNextWordView(tag, word))
            continue; // a comment
        if (nameEquals(word, "style"_L1))
            readValues(tag, style, kStyleTargets);
        else if (nameEquals(word, "placeholder"_L1))
            readValues(tag, style, kPlaceholderTargets);
        else if (nameEquals(word, "sky"_L1))
            readValues(tag, style, kSkyTargets);
        else if (nameEquals(word, "ground"_L1))
            readValues(tag, style, kGroundTargets);
        else if (nameEquals(word, "orb"_L1))
            readValues(tag, style, kOrbTargets);
        else if (nameEquals(word, "block"_L1))
            readBlockEntry(tag, rows, index, result);
        else if (nameEquals(word, "/style"_L1))
            break;
    }

    return result;
}

StyleHeader readStyleHeader(Parser &parser)
{
    parser.normaliseBuffer();
    StyleHeader header;

    QByteArrayView tag;
    QByteArrayView word;
    while (parser.getNextTagView(tag)) {
        if (!getNextWordView(tag, word) || !nameEquals(word, "style"_L1))
            continue;
        QByteArrayView name;
        QByteArrayView value;
        while (getNextAttributeView(tag, name, value)) {
            if (nameEquals(name, "version"_L1))
                header.version = fromCp1252(value);
            else if (nameEquals(name, "name"_L1))
                header.name = fromCp1252(value);
            else if (nameEquals(name, "synopsis"_L1))
                header.synopsis = fromCp1252(value);
            else if (nameEquals(name, "author"_L1))
                header.author = fromCp1252(value);
            else if (nameEquals(name, "copyright"_L1))
                header.copyright = fromCp1252(value);
        }
        break; // nothing after the style tag is read
    }
    return header;
}

QByteArray writeStyle(const StyleValues &style, const QList<BlockRow> &rows)
{
    const QString crlf = u"\r\n"_s;
    QString text;

    QString line = u"<style"_s;
    appendAttribute(line, "version"_L1, style.version);
    appendAttribute(line, "name"_L1, style.name);
    appendAttribute(line, "synopsis"_L1, style.synopsis);
    appendAttribute(line, "author"_L1, style.author);
    appendAttribute(line, "copyright"_L1, style.copyright);
    text += line + u'>' + crlf;

    text += u"<generator app=\"Cubrix\" version=\""_s + generatorVersion() + u"\"/>"_s + crlf;
    text += crlf;

    if (!style.placeholderTexture.isEmpty())
        text += u"<placeholder texture=\""_s + style.placeholderTexture + u"\"/>"_s + crlf;

    if (!style.skyTexture.isEmpty() || !style.skyColor.isEmpty() || !style.skyBrightness.isEmpty()) {
        line = u"<sky"_s;
        appendAttribute(line, "texture"_L1, style.skyTexture);
        appendAttribute(line, "color"_L1, style.skyColor);
        appendAttribute(line, "brightness"_L1, style.skyBrightness);
        text += line + u"/>"_s + crlf;
    }

    if (!style.groundTexture.isEmpty() || !style.groundColor.isEmpty()) {
        line = u"<ground"_s;
        appendAttribute(line, "texture"_L1, style.groundTexture);
        appendAttribute(line, "color"_L1, style.groundColor);
        text += line + u"/>"_s + crlf;
    }

    line = u"<orb"_s;
    appendAttribute(line, "texture"_L1, style.orbTexture);
    appendAttribute(line, "color"_L1, style.orbColor);
    appendAttribute(line, "brightness"_L1, style.orbBrightness);
    appendAttribute(line, "position"_L1, style.orbPosition);
    appendAttribute(line, "href"_L1, style.orbHref);
    appendAttribute(line, "target"_L1, style.orbTarget);
    appendAttribute(line, "text"_L1, style.orbText);
    if (line.size() > 4) // some orb value is set
        text += line + u"/>"_s + crlf;

    for (const BlockRow &row : rows) {
        // Rover rejects the whole blockset on symbol="", so a row without a
        // single symbol gets no line (its double alone means nothing to
        // Rover); its file stays in blocks/. The block name is not written.
        if (row.symbol.isEmpty())
            continue;
        line = u"<block symbol=\""_s + row.symbol + u'"';
        appendAttribute(line, "double"_L1, row.doubleSymbol);
        line += u" file=\""_s + row.file + u'"';
        text += line + u"/>"_s + crlf;
    }

    text += crlf;
    text += u"</style>"_s + crlf;
    return toCp1252(text);
}
