#include "cache/CacheIndexFile.h"

#include "common/AsciiChars.h"
#include "rover/RoverReader.h"
#include "storage/Cp1252.h"

#include <QHash>

#include <algorithm>
#include <limits>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

using AsciiChars::isBlank;

const QList<RoverReader::Rule> kBlocksetRules = {
    {"href", RoverType::String, true},  {"size", RoverType::Integer, true},     {"updated", RoverType::Integer, true},
    {"name", RoverType::String, false}, {"synopsis", RoverType::String, false}, {"version", RoverType::Version, false}};
enum BlocksetValue { HrefValue, SizeValue, UpdatedValue, NameValue, SynopsisValue, VersionValue };

// One tag of the file, or a part the reader could not read.
struct Token {
    enum Kind { Start, End, Empty, Broken };
    Kind kind = Broken;
    bool selfClosing = false; // an end tag written "</name/>" closes nothing
    QByteArray name;
    qsizetype from = 0;
    qsizetype to = 0;
    int line = 0;
    int match = -1;   // a start tag: its end tag
    int element = -1; // a <BLOCKSET/> Rover accepts: its place in the elements
    QString reason;   // why Rover rejects it ("" when it does not)
};

// Rover's integer: already checked to be digits with an optional sign and blanks;
// clamped to 32 bits.
qint32 toSeconds(QByteArrayView text)
{
    text = text.trimmed();
    const bool negative = text.startsWith('-');
    if (text.startsWith('-') || text.startsWith('+'))
        text = text.sliced(1);
    qint64 value = 0;
    for (const char c : text) {
        value = std::min<qint64>(value * 10 + (c - '0'), qint64(std::numeric_limits<qint32>::max()) + 1);
    }
    value = negative ? -value : value;
    return qint32(std::clamp<qint64>(value, std::numeric_limits<qint32>::min(), std::numeric_limits<qint32>::max()));
}

// Where the line `at` stands in starts, when only blanks come before `at` on it;
// -1 otherwise. Looks back over the blanks only, so that many parts on one long
// line cost no more than the line.
qsizetype blankLineStart(const QByteArray &bytes, qsizetype at)
{
    while (at > 0 && isBlank(bytes[at - 1]))
        --at;
    return at == 0 || bytes[at - 1] == '\n' || bytes[at - 1] == '\r' ? at : -1;
}

// Just past the end of the line `at` stands in, when only blanks come before
// it; -1 otherwise.
qsizetype pastLineEnd(const QByteArray &bytes, qsizetype at)
{
    while (at < bytes.size() && isBlank(bytes[at]))
        ++at;
    if (at == bytes.size())
        return at;
    if (bytes[at] == '\r')
        return at + 1 < bytes.size() && bytes[at + 1] == '\n' ? at + 2 : at + 1;
    return bytes[at] == '\n' ? at + 1 : -1;
}

// A part to leave out, widened to its whole lines when nothing else is on them.
std::pair<qsizetype, qsizetype> wholeLines(const QByteArray &bytes, qsizetype from, qsizetype to)
{
    const qsizetype start = blankLineStart(bytes, from);
    if (start < 0)
        return {from, to};
    const qsizetype end = pastLineEnd(bytes, to);
    if (end >= 0)
        return {start, end};
    // A part ending where the next tag starts, on a later line.
    const qsizetype nextStart = blankLineStart(bytes, to);
    return nextStart > start ? std::pair{start, nextStart} : std::pair{from, to};
}

} // namespace

CacheIndexFile::CacheIndexFile(QByteArray bytes) : m_bytes(std::move(bytes))
{
    read();
}

void CacheIndexFile::read()
{
    if (m_bytes.isEmpty()) {
        m_problem = roverText("The cache index is empty");
        return;
    }
    RoverReader reader(m_bytes);
    RoverReader::Tag tag;
    if (!reader.next(tag) || tag.end || tag.name != "cache") {
        m_problem = reader.failed() ? reader.findings().constLast().text : roverText("Missing \"CACHE\" tag");
        return;
    }
    // Every tag after <CACHE>, read on past each broken part.
    QList<Token> tokens;
    for (;;) {
        const bool read = reader.next(tag);
        if (reader.failed()) {
            Token broken{
                Token::Broken, false, {}, tag.from, 0, reader.line(), -1, -1, reader.findings().constLast().text};
            const bool more = reader.resume();
            broken.to = more ? reader.offset() : m_bytes.size();
            tokens.append(std::move(broken));
            if (more)
                continue;
            break;
        }
        if (!read)
            break;
        Token token{tag.end           ? Token::End
                    : tag.selfClosing ? Token::Empty
                                      : Token::Start,
                    tag.selfClosing,
                    tag.end || !tag.selfClosing ? tag.name : QByteArray(), // only the matching needs it
                    tag.from,
                    tag.to,
                    tag.line,
                    -1,
                    -1,
                    {}};
        if (token.kind == Token::Empty && tag.name == "blockset") {
            const qsizetype errors = reader.findings().size();
            const QList<QByteArray> values = reader.attributes(tag, kBlocksetRules);
            const auto firstError =
                std::find_if(reader.findings().cbegin() + errors, reader.findings().cend(),
                             [](const RoverFinding &f) { return f.severity == RoverFinding::Error; });
            if (firstError != reader.findings().cend()) {
                token.reason = firstError->text;
            } else {
                token.element = int(m_elements.size());
                Element element{tag.from,
                                tag.to,
                                fromCp1252(values[HrefValue]),
                                fromCp1252(values[NameValue]),
                                fromCp1252(values[SynopsisValue]),
                                fromCp1252(values[VersionValue]),
                                toSeconds(values[UpdatedValue])};
                for (const RoverReader::Attribute &a : std::as_const(tag.attributes)) {
                    if (a.name == "updated") {
                        element.updatedFrom = a.valueFrom;
                        element.updatedTo = a.valueTo;
                        break;
                    }
                }
                m_elements.append(std::move(element));
            }
            reader.findings().resize(errors); // the findings are not kept: linear in the file
        } else if (token.kind == Token::Start && tag.name == "blockset") {
            token.reason = roverText("Tag \"BLOCKSET\" must end with \"/>\"");
        }
        tokens.append(std::move(token));
    }
    reader = RoverReader({}); // its copy of the text is no longer needed

    // Rover skips an unexpected tag with its content up to its own end tag,
    // counting only tags of the same name: each start's end, one pass.
    QHash<QByteArray, QList<int>> open;
    for (int i = 0; i < tokens.size(); ++i) {
        if (tokens[i].kind == Token::Start) {
            open[tokens[i].name].append(i);
        } else if (tokens[i].kind == Token::End && !tokens[i].selfClosing) {
            QList<int> &starts = open[tokens[i].name];
            if (!starts.isEmpty())
                tokens[starts.takeLast()].match = i;
        }
    }

    // The list as Rover reads it once the broken parts are gone.
    QList<bool> accepted(m_elements.size(), false);
    QList<Rejected> brokenInside;
    bool listEnded = false;
    for (int i = 0; i < tokens.size() && !listEnded; ++i) {
        const Token &token = tokens[i];
        const auto reject = [&](const QString &reason) {
            m_rejected.append({token.from, token.to, token.line, reason});
        };
        switch (token.kind) {
        case Token::Broken: brokenInside.append({token.from, token.to, token.line, token.reason}); break;
        case Token::End:
            if (token.name == "cache")
                listEnded = true;
            else
                reject(roverText("End tag \"%1\" has no start tag").arg(QString::fromLatin1(token.name)));
            break;
        case Token::Empty:
            if (token.element >= 0)
                accepted[token.element] = true;
            else if (!token.reason.isEmpty())
                reject(token.reason);
            break;
        case Token::Start:
            if (!token.reason.isEmpty()) {
                reject(token.reason);
            } else if (token.match < 0) {
                reject(roverText("Tag \"%1\" has no end tag").arg(QString::fromLatin1(token.name)));
            } else {
                // Skipped with its content; a broken part in there is still broken.
                for (int j = i + 1; j < token.match; ++j) {
                    if (tokens[j].kind == Token::Broken)
                        brokenInside.append({tokens[j].from, tokens[j].to, tokens[j].line, tokens[j].reason});
                }
                i = token.match;
            }
            break;
        }
    }
    m_endMissing = !listEnded;
    qsizetype kept = 0;
    for (qsizetype i = 0; i < m_elements.size(); ++i) {
        if (accepted[i])
            m_elements[kept++] = std::move(m_elements[i]);
    }
    m_elements.resize(kept);
    m_rejected += brokenInside;
    std::sort(m_rejected.begin(), m_rejected.end(),
              [](const Rejected &a, const Rejected &b) { return a.from < b.from; });
}

QByteArray CacheIndexFile::rewritten(const QList<int> &dropped, const QList<int> &forced) const
{
    // Edits in file order: [from, to) replaced by `text`.
    struct Edit {
        qsizetype from, to;
        QByteArray text;
    };
    QList<Edit> edits;
    for (const Rejected &part : m_rejected) {
        const auto [from, to] = wholeLines(m_bytes, part.from, part.to);
        edits.append({from, to, {}});
    }
    QList<bool> isDropped(m_elements.size(), false);
    for (int index : dropped) {
        isDropped[index] = true;
        const auto [from, to] = wholeLines(m_bytes, m_elements[index].from, m_elements[index].to);
        edits.append({from, to, {}});
    }
    for (int index : forced) {
        if (!isDropped[index])
            edits.append({m_elements[index].updatedFrom, m_elements[index].updatedTo, "0"});
    }
    std::sort(edits.begin(), edits.end(), [](const Edit &a, const Edit &b) { return a.from < b.from; });
    QByteArray out;
    out.reserve(m_bytes.size() + 16);
    qsizetype at = 0;
    for (const Edit &edit : std::as_const(edits)) {
        if (edit.to <= at)
            continue; // inside a part already left out
        out += QByteArrayView(m_bytes).sliced(at, std::max(at, edit.from) - at);
        out += edit.text;
        at = edit.to;
    }
    out += QByteArrayView(m_bytes).sliced(at);
    if (m_endMissing) {
        if (!out.isEmpty() && !out.endsWith('\n') && !out.endsWith('\r'))
            out += "\r\n";
        out += "</CACHE>\r\n";
    }
    return out;
}
