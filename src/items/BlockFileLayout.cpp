#include "items/BlockFileLayout.h"

#include "common/AsciiChars.h"

namespace {

using AsciiChars::isBlank;

bool isLineEnd(char c)
{
    return c == '\r' || c == '\n';
}

bool isQuote(char c)
{
    return c == '"' || c == '\'';
}

// Rover's tokens over the file's own bytes. Rover ends a line at CR, LF or CR
// LF and drops what follows a NUL up to the line's end; here those bytes are
// stepped over instead, so offsets stay the file's.
class Scanner {
public:
    struct Tag {
        enum Kind { Start, End, Failed };
        Kind kind = Failed;
        QByteArray name; // lower case
        QByteArray written;
        BlockFileLayout::Range range;
        bool open = false; // a start tag closed with '>' rather than '/>'
    };

    explicit Scanner(QByteArrayView text) : m_text(text) {}
    Tag next();
    bool skipContent(const QByteArray &name);

private:
    bool atEnd() const { return m_pos >= m_text.size(); }
    bool startsWith(QByteArrayView s) const { return m_text.sliced(m_pos).startsWith(s); }
    void skipDropped();
    bool skipSpace();
    bool skipComment();
    bool skipString();
    QByteArray readName();
    bool readAttributes(Tag &tag);

    QByteArrayView m_text;
    qsizetype m_pos = 0;
};

void Scanner::skipDropped()
{
    while (!atEnd() && !isLineEnd(m_text[m_pos]))
        ++m_pos;
}

bool Scanner::skipComment()
{
    m_pos += 4;
    while (!atEnd()) {
        if (m_text[m_pos] == '\0')
            skipDropped();
        else if (startsWith("-->"))
            return m_pos += 3, true;
        else
            ++m_pos;
    }
    return false;
}

bool Scanner::skipSpace()
{
    while (!atEnd()) {
        const char c = m_text[m_pos];
        if (isBlank(c) || isLineEnd(c))
            ++m_pos;
        else if (c == '\0')
            skipDropped();
        else if (startsWith("<!--")) {
            if (!skipComment())
                return false;
        } else
            break;
    }
    return true;
}

bool Scanner::skipString()
{
    const char quote = m_text[m_pos++];
    while (!atEnd() && m_text[m_pos] != quote && !isLineEnd(m_text[m_pos]) && m_text[m_pos] != '\0')
        ++m_pos;
    if (atEnd() || m_text[m_pos] != quote)
        return false;
    ++m_pos;
    return true;
}

QByteArray Scanner::readName()
{
    const qsizetype start = m_pos;
    while (!atEnd()) {
        const char c = m_text[m_pos];
        if (isBlank(c) || isLineEnd(c) || c == '\0' || c == '=' || c == '>' || isQuote(c) || startsWith("/>"))
            break;
        ++m_pos;
    }
    return m_text.sliced(start, m_pos - start).toByteArray();
}

bool Scanner::readAttributes(Tag &tag)
{
    for (;;) {
        if (!skipSpace() || atEnd())
            return false;
        if (m_text[m_pos] == '>') {
            tag.open = true;
            ++m_pos;
            return true;
        }
        if (startsWith("/>")) {
            m_pos += 2;
            return true;
        }
        if (m_text[m_pos] == '=' || isQuote(m_text[m_pos]))
            return false;
        readName();
        if (!skipSpace() || atEnd() || m_text[m_pos] != '=')
            return false;
        ++m_pos;
        if (!skipSpace() || atEnd() || !isQuote(m_text[m_pos]) || !skipString())
            return false;
    }
}

Scanner::Tag Scanner::next()
{
    Tag tag;
    for (;;) {
        if (!skipSpace() || atEnd())
            return tag;
        const char c = m_text[m_pos];
        if (c == '<')
            break;
        if (isQuote(c)) {
            if (!skipString())
                return tag;
        } else {
            ++m_pos;
        }
    }
    tag.range.begin = m_pos++;
    const bool end = !atEnd() && m_text[m_pos] == '/';
    if (end)
        ++m_pos;
    if (!skipSpace() || atEnd() || isQuote(m_text[m_pos]))
        return tag;
    tag.written = readName();
    tag.name = tag.written.toLower();
    if (tag.written.isEmpty())
        return tag;
    if (end) {
        if (!skipSpace() || atEnd() || m_text[m_pos] != '>')
            return tag;
        ++m_pos;
    } else if (!readAttributes(tag)) {
        return tag;
    }
    tag.kind = end ? Tag::End : Tag::Start;
    tag.range.end = m_pos;
    return tag;
}

bool Scanner::skipContent(const QByteArray &name)
{
    int depth = 1;
    for (;;) {
        const Tag tag = next();
        if (tag.kind == Tag::Failed)
            return false;
        if (tag.kind == Tag::End && tag.name == name && --depth == 0)
            return true;
        if (tag.kind == Tag::Start && tag.open && tag.name == name)
            ++depth;
    }
}

// Hands each start tag of `parent`'s content to `onTag` up to its end tag,
// whose place it returns; an invalid range when the file breaks off.
template <typename OnTag>
BlockFileLayout::Range readContent(Scanner &scanner, const QByteArray &parent, OnTag onTag)
{
    for (;;) {
        const Scanner::Tag tag = scanner.next();
        if (tag.kind == Scanner::Tag::Failed || (tag.kind == Scanner::Tag::End && tag.name != parent))
            return {};
        if (tag.kind == Scanner::Tag::End)
            return tag.range;
        if (!onTag(tag))
            return {};
    }
}

QByteArray firstLineEnd(QByteArrayView bytes)
{
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        if (bytes[i] == '\n')
            return "\n";
        if (bytes[i] == '\r')
            return i + 1 < bytes.size() && bytes[i + 1] == '\n' ? "\r\n" : "\r";
    }
    return "\r\n";
}

} // namespace

QByteArray BlockFileLayout::indentOf(QByteArrayView bytes, qsizetype offset)
{
    qsizetype start = offset;
    while (start > 0 && isBlank(bytes[start - 1]))
        --start;
    if (start > 0 && !isLineEnd(bytes[start - 1]))
        return {};
    return bytes.sliced(start, offset - start).toByteArray();
}

std::optional<BlockFileLayout> blockFileLayout(QByteArrayView bytes)
{
    Scanner scanner(bytes);
    const Scanner::Tag block = scanner.next();
    if (block.kind != Scanner::Tag::Start || block.name != "block" || !block.open)
        return std::nullopt;
    BlockFileLayout layout;
    layout.lineEnd = firstLineEnd(bytes);
    // An unexpected tag is skipped with whatever it holds.
    const auto skip = [&scanner](const Scanner::Tag &tag) { return !tag.open || scanner.skipContent(tag.name); };
    const auto polygonTag = [&](const Scanner::Tag &tag) {
        if (tag.name != "polygon")
            return skip(tag);
        layout.polygons.append(tag.range);
        layout.polygonTagNames.append(tag.written);
        return !tag.open;
    };
    const auto partTag = [&](const Scanner::Tag &tag) {
        if (tag.name != "part")
            return skip(tag);
        return tag.open && readContent(scanner, "part", polygonTag).isValid();
    };
    const auto vertexTag = [&](const Scanner::Tag &tag) {
        if (tag.name != "vertex")
            return skip(tag);
        layout.lastVertex = tag.range;
        layout.vertexTagName = tag.written;
        return !tag.open;
    };
    const auto blockTag = [&](const Scanner::Tag &tag) {
        if (tag.name == "vertices" && !layout.verticesEnd.isValid()) {
            if (!tag.open)
                return false;
            layout.verticesEnd = readContent(scanner, "vertices", vertexTag);
            return layout.verticesEnd.isValid();
        }
        if (tag.name == "parts" && !layout.partsEnd.isValid()) {
            if (!tag.open || !layout.verticesEnd.isValid())
                return false;
            layout.partsEnd = readContent(scanner, "parts", partTag);
            return layout.partsEnd.isValid();
        }
        if (tag.name == "bsp_tree" && !layout.bspTree.isValid())
            layout.bspTree = tag.range;
        return skip(tag);
    };
    if (!readContent(scanner, "block", blockTag).isValid() || !layout.partsEnd.isValid())
        return std::nullopt;
    return layout;
}
