#include "rover/RoverUpdateRules.h"

#include "rover/RoverReader.h"

namespace {

const QList<RoverReader::Rule> versionRules = {{"id", RoverType::Version, true}, {"size", RoverType::String, true}};

// Lines as Rover splits them: at CR, LF or CR LF, each cut at a NUL.
QList<QByteArray> splitLines(QByteArrayView bytes)
{
    QList<QByteArray> lines(1);
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        const char c = bytes[i];
        if (c == '\r' || c == '\n') {
            if (c == '\r' && i + 1 < bytes.size() && bytes[i + 1] == '\n')
                ++i;
            lines.append(QByteArray());
        } else {
            lines.last() += c;
        }
    }
    for (QByteArray &l : lines)
        if (const qsizetype nul = l.indexOf('\0'); nul >= 0)
            l.truncate(nul);
    return lines;
}

QByteArray withoutBlanks(const QByteArray &line)
{
    qsizetype b = 0, e = line.size();
    while (b < e && (line[b] == ' ' || line[b] == '\t'))
        ++b;
    while (e > b && (line[e - 1] == ' ' || line[e - 1] == '\t'))
        --e;
    return line.mid(b, e - b);
}

} // namespace

RoverFindings checkRoverUpdate(QByteArrayView bytes)
{
    if (bytes.isEmpty())
        return {{RoverFinding::Error, 0, roverText("The update file is empty")}};
    const QList<QByteArray> lines = splitLines(bytes);
    // Line 1: the version tag; the rest of that line is dropped.
    RoverReader reader(lines.first());
    RoverReader::Tag tag;
    if (!reader.next(tag)) {
        if (!reader.failed())
            reader.error(1, roverText("Missing \"version\" tag"));
        return reader.findings();
    }
    if (tag.end || tag.name != "version") {
        reader.error(1, roverText("Missing \"version\" tag"));
        return reader.findings();
    }
    reader.attributes(tag, versionRules);
    // The message runs up to the first line starting with '<': </version>.
    for (qsizetype i = 1; i < lines.size(); ++i) {
        const QByteArray line = withoutBlanks(lines[i]);
        if (!line.startsWith('<'))
            continue;
        if (line.toLower() != "</version>")
            reader.error(int(i + 1), roverText("Expected \"</version>\", a message line may not start with \"<\""));
        return reader.findings();
    }
    reader.error(int(lines.size()), roverText("Unexpected end of file"));
    return reader.findings();
}
