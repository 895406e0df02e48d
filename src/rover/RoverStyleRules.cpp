#include "rover/RoverStyleRules.h"

#include "rover/RoverReader.h"
#include "storage/Cp1252.h"

#include <QSet>

namespace {

using Rule = RoverReader::Rule;

const QList<Rule> styleRules = {
    {"name", RoverType::String, false}, {"synopsis", RoverType::String, false}, {"version", RoverType::Version, false}};
const QList<Rule> placeholderRules = {{"texture", RoverType::String, true}};
const QList<Rule> skyRules = {{"texture", RoverType::String, false},
                              {"colour", RoverType::Rgb, false},
                              {"brightness", RoverType::Percentage, false},
                              {"stream", RoverType::Name, false}};
const QList<Rule> groundRules = {
    {"texture", RoverType::String, false}, {"colour", RoverType::Rgb, false}, {"stream", RoverType::Name, false}};
const QList<Rule> orbRules = {{"texture", RoverType::String, false},        {"position", RoverType::Direction, false},
                              {"brightness", RoverType::Percentage, false}, {"colour", RoverType::Rgb, false},
                              {"href", RoverType::String, false},           {"target", RoverType::String, false},
                              {"text", RoverType::String, false},           {"stream", RoverType::Name, false}};
const QList<Rule> blockRules = {{"symbol", RoverType::SingleSymbol, true},
                                {"double", RoverType::DoubleSymbol, false},
                                {"name", RoverType::Name, false},
                                {"file", RoverType::String, true}};

const QList<Rule> *rulesFor(const QByteArray &tag)
{
    if (tag == "placeholder")
        return &placeholderRules;
    if (tag == "sky")
        return &skyRules;
    if (tag == "ground")
        return &groundRules;
    if (tag == "orb")
        return &orbRules;
    if (tag == "block")
        return &blockRules;
    return nullptr;
}

QString latin(const QByteArray &b)
{
    return QString::fromLatin1(b);
}

} // namespace

RoverFindings checkRoverStyle(QByteArrayView bytes, const QStringList *blockFiles, QList<RoverStyleBlock> *blocks)
{
    RoverReader reader(bytes);
    RoverReader::Tag tag;
    // Up to the style tag, anything else is skipped whole.
    bool found = false;
    while (reader.next(tag)) {
        if (tag.end)
            return reader.error(tag.line, roverText("End tag \"%1\" has no start tag").arg(latin(tag.name))),
                   reader.findings();
        if (tag.name == "style") {
            found = true;
            break;
        }
        if (!reader.skipContent(tag))
            break;
    }
    if (!found) {
        if (!reader.failed())
            reader.error(reader.line(), roverText("Missing \"style\" tag"));
        return reader.findings();
    }
    reader.attributes(tag, styleRules);
    if (tag.selfClosing)
        return reader.findings();

    QSet<QByteArray> seenOnce;
    QSet<QByteArray> symbols;
    QSet<QString> names;
    QSet<QString> files;
    if (blockFiles)
        for (const QString &f : *blockFiles)
            files.insert(f.toLower());
    while (reader.next(tag)) {
        if (tag.end) {
            if (tag.name != "style")
                reader.error(tag.line, roverText("End tag \"%1\" has no start tag").arg(latin(tag.name)));
            return reader.findings(); // whatever follows </style> is never read
        }
        const QList<Rule> *rules = rulesFor(tag.name);
        if (!rules) {
            if (!reader.skipContent(tag))
                return reader.findings();
            continue;
        }
        if (!tag.selfClosing) {
            reader.error(tag.line, roverText("Tag \"%1\" must end with \"/>\"").arg(latin(tag.name)));
            return reader.findings();
        }
        if (tag.name != "block") {
            if (seenOnce.contains(tag.name)) {
                reader.warning(tag.line, roverText("A second \"%1\" tag is ignored").arg(latin(tag.name)));
                continue;
            }
            seenOnce.insert(tag.name);
            reader.attributes(tag, *rules);
            continue;
        }
        const QList<QByteArray> v = reader.attributes(tag, *rules);
        const QByteArray &symbol = v[0];
        const QByteArray &name = v[2];
        const QByteArray &file = v[3];
        const bool repeated = !symbol.isEmpty() && symbols.contains(symbol);
        if (repeated)
            reader.warning(tag.line, roverText("Another block already has symbol \"%1\"").arg(latin(symbol)));
        else if (blocks && !reader.failed() && !file.isEmpty())
            blocks->append({fromCp1252(file), fromCp1252(symbol), fromCp1252(name), tag.line});
        symbols.insert(symbol);
        const QString lowerName = latin(name).toLower();
        if (!name.isEmpty() && names.contains(lowerName))
            reader.warning(tag.line, roverText("Another block already has name \"%1\"").arg(latin(name)));
        names.insert(lowerName);
        if (blockFiles && !file.isEmpty() && !files.contains(latin(file).toLower()))
            reader.error(tag.line, roverText("Block file \"%1\" is not in the blocks folder").arg(latin(file)));
    }
    if (!reader.failed())
        reader.error(reader.line(), roverText("Unexpected end of file"));
    return reader.findings();
}
