#include "rover/RoverReader.h"

#include "common/AsciiChars.h"

#include <algorithm>
#include <cstring>

namespace {

using AsciiChars::isBlank;

// Lines end at CR, LF or CR LF and a NUL ends its line early: the text is
// rebuilt with one '\n' per line so that line counting is trivial. The start of
// each line in both texts is noted.
QByteArray normalise(QByteArrayView bytes, QList<qsizetype> &lineStarts, QList<qsizetype> &sourceLineStarts)
{
    QByteArray out(bytes.size(), Qt::Uninitialized);
    char *to = out.data();
    lineStarts = {0};
    sourceLineStarts = {0};
    const char *from = bytes.data();
    const char *const end = from + bytes.size();
    while (from < end) {
        // One line: its text up to a NUL is kept, the rest of it dropped.
        const char *stop = from;
        while (stop < end && *stop != '\r' && *stop != '\n' && *stop != '\0')
            ++stop;
        std::memcpy(to, from, size_t(stop - from));
        to += stop - from;
        while (stop < end && *stop != '\r' && *stop != '\n')
            ++stop;
        if (stop == end)
            break;
        stop += *stop == '\r' && stop + 1 < end && stop[1] == '\n' ? 2 : 1;
        *to++ = '\n';
        lineStarts.append(to - out.data());
        sourceLineStarts.append(stop - bytes.data());
        from = stop;
    }
    out.truncate(to - out.data());
    return out;
}

// Without the blanks (spaces and tabs only) at both ends.
QByteArrayView trimmed(QByteArrayView v)
{
    qsizetype b = 0, e = v.size();
    while (b < e && isBlank(v[b]))
        ++b;
    while (e > b && isBlank(v[e - 1]))
        --e;
    return v.sliced(b, e - b);
}

} // namespace

QString roverText(const char *text)
{
    return QString::fromUtf8(text);
}

RoverReader::RoverReader(QByteArrayView bytes)
{
    m_text = normalise(bytes, m_lineStarts, m_sourceLineStarts);
}

qsizetype RoverReader::sourceOffset(qsizetype pos) const
{
    // Reading goes forward: the line of the last position is where to look first.
    qsizetype line = m_lineHint;
    if (m_lineStarts[line] > pos)
        line = std::upper_bound(m_lineStarts.cbegin(), m_lineStarts.cend(), pos) - m_lineStarts.cbegin() - 1;
    while (line + 1 < m_lineStarts.size() && m_lineStarts[line + 1] <= pos)
        ++line;
    m_lineHint = line;
    return m_sourceLineStarts[line] + (pos - m_lineStarts[line]);
}

bool RoverReader::resume()
{
    m_failed = false;
    m_pos = std::max(m_pos, m_pieceStart + 1);
    while (m_pos < m_text.size() && m_text[m_pos] != '<') {
        if (m_text[m_pos] == '\n')
            ++m_line;
        ++m_pos;
    }
    return m_pos < m_text.size();
}

void RoverReader::error(int line, const QString &text)
{
    m_findings.append({RoverFinding::Error, line, text});
}

void RoverReader::warning(int line, const QString &text)
{
    m_findings.append({RoverFinding::Warning, line, text});
}

bool RoverReader::fail(const QString &text)
{
    error(m_line, text);
    m_failed = true;
    return false;
}

void RoverReader::skipSpace()
{
    while (m_pos < m_text.size() && (isBlank(m_text[m_pos]) || m_text[m_pos] == '\n')) {
        if (m_text[m_pos] == '\n')
            ++m_line;
        ++m_pos;
    }
}

bool RoverReader::readString(char quote, QByteArray *out, qsizetype *from, qsizetype *to)
{
    const qsizetype start = ++m_pos;
    while (m_pos < m_text.size() && m_text[m_pos] != quote && m_text[m_pos] != '\n')
        ++m_pos;
    if (m_pos >= m_text.size() || m_text[m_pos] != quote)
        return fail(roverText("String is missing closing quotation mark"));
    if (out) {
        *out = trimmed(QByteArrayView(m_text).sliced(start, m_pos - start)).toByteArray();
        *from = sourceOffset(start);
        *to = sourceOffset(m_pos);
    }
    ++m_pos;
    return true;
}

bool RoverReader::next(Tag &tag)
{
    if (m_failed)
        return false;
    // Text between tags: a quote there still opens a string.
    for (;;) {
        while (m_pos < m_text.size() && m_text[m_pos] != '<') {
            const char c = m_text[m_pos];
            if (c == '"' || c == '\'') {
                m_pieceStart = m_pos;
                if (!readString(c, nullptr, nullptr, nullptr)) {
                    tag.from = sourceOffset(m_pieceStart);
                    return false;
                }
                continue;
            }
            if (c == '\n')
                ++m_line;
            ++m_pos;
        }
        if (m_pos >= m_text.size())
            return false;
        m_pieceStart = m_pos;
        // Views, not copies: a copy of the rest of the text at every tag would make
        // reading quadratic in the file's size.
        if (!QByteArrayView(m_text).sliced(m_pos).startsWith("<!--"))
            break;
        const qsizetype close = m_text.indexOf("-->", m_pos + 4);
        if (close < 0) {
            m_line += int(QByteArrayView(m_text).sliced(m_pos).count('\n'));
            tag.from = sourceOffset(m_pos);
            m_pos = m_text.size();
            return fail(roverText("Unexpected end of file"));
        }
        m_line += int(QByteArrayView(m_text).sliced(m_pos, close - m_pos).count('\n'));
        m_pos = close + 3;
    }
    // The attribute list keeps its room from the last tag.
    tag.attributes.clear();
    tag.end = false;
    tag.selfClosing = false;
    tag.to = 0;
    tag.line = m_line;
    tag.from = sourceOffset(m_pos);
    ++m_pos;
    if (m_pos < m_text.size() && m_text[m_pos] == '/') {
        tag.end = true;
        ++m_pos;
    }
    auto nameChar = [this](qsizetype i) {
        const char c = m_text[i];
        return !isBlank(c) && c != '\n' && c != '>' && c != '/' && c != '=' && c != '"' && c != '\'';
    };
    const qsizetype nameStart = m_pos;
    while (m_pos < m_text.size() && nameChar(m_pos))
        ++m_pos;
    tag.name = m_text.mid(nameStart, m_pos - nameStart).toLower();
    for (;;) {
        skipSpace();
        if (m_pos >= m_text.size())
            return fail(roverText("Unexpected end of file"));
        if (m_text[m_pos] == '>') {
            ++m_pos;
            tag.to = sourceOffset(m_pos);
            return true;
        }
        if (QByteArrayView(m_text).sliced(m_pos).startsWith("/>")) {
            tag.selfClosing = true;
            m_pos += 2;
            tag.to = sourceOffset(m_pos);
            return true;
        }
        const qsizetype attrStart = m_pos;
        while (m_pos < m_text.size() && nameChar(m_pos))
            ++m_pos;
        const QByteArray name = m_text.mid(attrStart, m_pos - attrStart).toLower();
        if (name.isEmpty())
            return fail(roverText("Unexpected character in tag \"%1\"").arg(QString::fromLatin1(tag.name)));
        skipSpace();
        if (m_pos >= m_text.size() || m_text[m_pos] != '=')
            return fail(roverText("Attribute \"%1\" has no value").arg(QString::fromLatin1(name)));
        ++m_pos;
        skipSpace();
        if (m_pos >= m_text.size())
            return fail(roverText("Unexpected end of file"));
        const char quote = m_text[m_pos];
        if (quote != '"' && quote != '\'')
            return fail(roverText("Value of attribute \"%1\" is not quoted").arg(QString::fromLatin1(name)));
        Attribute attribute{name == "color" ? QByteArray("colour") : name, {}, 0, 0};
        if (!readString(quote, &attribute.value, &attribute.valueFrom, &attribute.valueTo))
            return false;
        tag.attributes.append(std::move(attribute));
    }
}

bool RoverReader::skipContent(const Tag &tag)
{
    if (tag.end || tag.selfClosing)
        return true;
    int depth = 1;
    Tag t;
    while (next(t)) {
        if (t.name != tag.name || t.selfClosing)
            continue;
        depth += t.end ? -1 : 1;
        if (depth == 0)
            return true;
    }
    if (!m_failed)
        fail(roverText("Unexpected end of file"));
    return false;
}

QList<QByteArray> RoverReader::attributes(const Tag &tag, const QList<Rule> &rules)
{
    QList<QByteArray> values(rules.size());
    for (qsizetype r = 0; r < rules.size(); ++r) {
        const Rule &rule = rules[r];
        const Attribute *found = nullptr;
        for (const Attribute &a : tag.attributes)
            if (a.name == rule.name) {
                found = &a; // the first of a repeated attribute counts
                break;
            }
        if (!found) {
            if (rule.required)
                error(tag.line, roverText("Tag \"%1\" is missing required attribute \"%2\"")
                                    .arg(QString::fromLatin1(tag.name), QString::fromLatin1(rule.name)));
            continue;
        }
        if (!isRoverValue(rule.type, found->value)) {
            const QString text =
                roverText("Attribute \"%1\" of tag \"%2\" has an invalid %3 value \"%4\"")
                    .arg(QString::fromLatin1(rule.name), QString::fromLatin1(tag.name),
                         QString::fromLatin1(roverTypeName(rule.type)), QString::fromLatin1(found->value));
            if (rule.required)
                error(tag.line, text);
            else
                warning(tag.line, text);
            continue;
        }
        values[r] = found->value;
    }
    return values;
}
