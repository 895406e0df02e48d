#include "rover/RoverCacheRules.h"

#include "rover/RoverReader.h"

namespace {

const QList<RoverReader::Rule> blocksetRules = {
    {"href", RoverType::String, true},  {"size", RoverType::Integer, true},     {"updated", RoverType::Integer, true},
    {"name", RoverType::String, false}, {"synopsis", RoverType::String, false}, {"version", RoverType::Version, false}};

} // namespace

RoverFindings checkRoverCache(QByteArrayView bytes)
{
    if (bytes.isEmpty())
        return {{RoverFinding::Error, 0, roverText("The cache index is empty")}};
    RoverReader reader(bytes);
    RoverReader::Tag tag;
    if (!reader.next(tag) || tag.end || tag.name != "cache") {
        if (!reader.failed())
            reader.error(tag.line ? tag.line : reader.line(), roverText("Missing \"CACHE\" tag"));
        return reader.findings();
    }
    while (reader.next(tag)) {
        if (tag.end) {
            if (tag.name != "cache")
                reader.error(tag.line, roverText("End tag \"%1\" has no start tag").arg(QString::fromLatin1(tag.name)));
            return reader.findings();
        }
        if (tag.name != "blockset") {
            if (!reader.skipContent(tag))
                return reader.findings();
            continue;
        }
        if (!tag.selfClosing) {
            reader.error(tag.line, roverText("Tag \"BLOCKSET\" must end with \"/>\""));
            return reader.findings();
        }
        reader.attributes(tag, blocksetRules);
    }
    if (!reader.failed())
        reader.error(reader.line(), roverText("Unexpected end of file"));
    return reader.findings();
}
