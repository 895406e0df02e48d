#include "rover/RoverBlockTokens.h"

#include "common/AsciiChars.h"
#include "storage/Cp1252.h"

#include <QString>

using namespace Qt::StringLiterals;

namespace {

using AsciiChars::isBlank;

bool isQuote(char c)
{
    return c == '"' || c == '\'';
}

// Lines end at CR, LF or CR LF and a NUL ends its line early: the text is
// rebuilt with one '\n' per line.
QByteArray normalise(QByteArrayView bytes)
{
    QByteArray out;
    out.reserve(bytes.size());
    bool cut = false;
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        const char c = bytes[i];
        if (c == '\r' || c == '\n') {
            if (c == '\r' && i + 1 < bytes.size() && bytes[i + 1] == '\n')
                ++i;
            out += '\n';
            cut = false;
        } else if (c == '\0') {
            cut = true;
        } else if (!cut) {
            out += c;
        }
    }
    return out;
}

QByteArray trimmed(QByteArrayView v)
{
    qsizetype b = 0, e = v.size();
    while (b < e && isBlank(v[b]))
        ++b;
    while (e > b && isBlank(v[e - 1]))
        --e;
    return v.sliced(b, e - b).toByteArray();
}

QString text(const QByteArray &bytes)
{
    return fromCp1252(bytes);
}

} // namespace

RoverBlockTokens::RoverBlockTokens(QByteArrayView bytes) : m_text(normalise(bytes)) {}

int RoverBlockTokens::lastLine() const
{
    return m_text.endsWith('\n') ? int(m_text.count('\n')) : int(m_text.count('\n')) + 1;
}

void RoverBlockTokens::error(int line, const QString &text)
{
    m_findings.append({RoverFinding::Error, line, text});
    m_failed = true;
}

void RoverBlockTokens::warning(int line, const QString &text)
{
    m_findings.append({RoverFinding::Warning, line, text});
}

bool RoverBlockTokens::fail(const QString &text)
{
    error(m_line, text);
    return false;
}

bool RoverBlockTokens::failAtEnd()
{
    error(lastLine(), u"Unexpected end of file"_s);
    return false;
}

bool RoverBlockTokens::startsWith(QByteArrayView s) const
{
    return QByteArrayView(m_text).sliced(m_pos).startsWith(s);
}

bool RoverBlockTokens::skipComment()
{
    const qsizetype close = m_text.indexOf("-->", m_pos + 4);
    const qsizetype end = close < 0 ? m_text.size() : close + 3;
    m_line += int(QByteArrayView(m_text).sliced(m_pos, end - m_pos).count('\n'));
    m_pos = end;
    return close >= 0 || failAtEnd();
}

bool RoverBlockTokens::skipSpace()
{
    while (!atEnd()) {
        const char c = m_text[m_pos];
        if (c == '\n') {
            ++m_line;
            ++m_pos;
        } else if (isBlank(c)) {
            ++m_pos;
        } else if (startsWith("<!--")) {
            if (!skipComment())
                return false;
        } else {
            break;
        }
    }
    return true;
}

bool RoverBlockTokens::readString(QByteArray *value)
{
    const char quote = m_text[m_pos];
    const qsizetype start = ++m_pos;
    while (!atEnd() && m_text[m_pos] != quote && m_text[m_pos] != '\n')
        ++m_pos;
    if (atEnd() || m_text[m_pos] != quote)
        return fail(u"String is missing closing quotation mark"_s);
    if (value)
        *value = trimmed(QByteArrayView(m_text).sliced(start, m_pos - start));
    ++m_pos;
    return true;
}

QByteArray RoverBlockTokens::readName()
{
    const qsizetype start = m_pos;
    while (!atEnd()) {
        const char c = m_text[m_pos];
        if (isBlank(c) || c == '\n' || c == '=' || c == '>' || isQuote(c) || startsWith("/>"))
            break;
        ++m_pos;
    }
    return m_text.mid(start, m_pos - start);
}

QByteArray RoverBlockTokens::tokenHere() const
{
    if (startsWith("/>"))
        return "/>";
    const char c = m_text[m_pos];
    if (c == '>' || c == '=')
        return QByteArray(1, c);
    qsizetype end = m_pos + 1;
    if (isQuote(c)) {
        while (end < m_text.size() && m_text[end] != c && m_text[end] != '\n')
            ++end;
        return trimmed(QByteArrayView(m_text).sliced(m_pos + 1, end - m_pos - 1));
    }
    while (end < m_text.size() && !isBlank(m_text[end]) && m_text[end] != '\n' && m_text[end] != '='
           && m_text[end] != '>' && !isQuote(m_text[end]))
        ++end;
    return m_text.mid(m_pos, end - m_pos);
}

RoverBlockTokens::Markup RoverBlockTokens::next(bool textAllowed)
{
    if (m_failed)
        return failedMarkup();
    for (;;) {
        if (!skipSpace())
            return failedMarkup();
        if (atEnd())
            return Markup{Markup::EndOfFile, {}, {}, m_line};
        const char c = m_text[m_pos];
        if (c == '<')
            break;
        if (!textAllowed) {
            qsizetype end = m_pos;
            while (end < m_text.size() && !isBlank(m_text[end]) && m_text[end] != '\n' && m_text[end] != '<')
                ++end;
            return Markup{Markup::Text, {}, m_text.mid(m_pos, end - m_pos), m_line};
        }
        if (isQuote(c)) {
            if (!readString(nullptr))
                return failedMarkup();
        } else {
            ++m_pos;
        }
    }
    ++m_pos;
    Markup tag{Markup::StartTag, {}, {}, m_line};
    if (!atEnd() && m_text[m_pos] == '/') {
        tag.kind = Markup::EndTag;
        ++m_pos;
    }
    if (!skipSpace())
        return failedMarkup();
    if (atEnd())
        return failAtEnd(), failedMarkup();
    if (isQuote(m_text[m_pos]))
        return fail(u"Expected a tag name rather than the quoted string '%1'"_s.arg(text(tokenHere()))), failedMarkup();
    tag.written = readName();
    if (tag.written.isEmpty())
        return fail(u"Expected a tag name rather than '%1'"_s.arg(text(tokenHere()))), failedMarkup();
    tag.name = tag.written.toLower();
    if (tag.kind == Markup::EndTag) {
        if (!skipSpace())
            return failedMarkup();
        if (atEnd())
            return failAtEnd(), failedMarkup();
        if (m_text[m_pos] != '>')
            return fail(u"Expected 'unknown' rather than '%1'"_s.arg(text(tokenHere()))), failedMarkup();
        ++m_pos;
    }
    return tag;
}

RoverBlockTokens::Item RoverBlockTokens::nextAttribute(Attribute &attribute)
{
    if (m_failed || !skipSpace())
        return Item::Failed;
    if (atEnd())
        return failAtEnd(), Item::Failed;
    if (m_text[m_pos] == '>') {
        ++m_pos;
        return Item::Open;
    }
    if (startsWith("/>")) {
        m_pos += 2;
        return Item::SelfClose;
    }
    if (m_text[m_pos] == '=' || isQuote(m_text[m_pos])) {
        const QByteArray token = tokenHere();
        if (isQuote(m_text[m_pos]) && !readString(nullptr))
            return Item::Failed;
        return fail(u"Expected an attribute name rather than '%1'"_s.arg(text(token))), Item::Failed;
    }
    attribute.line = m_line;
    attribute.name = readName().toLower();
    if (attribute.name == "color")
        attribute.name = "colour";
    else if (attribute.name == "orient")
        attribute.name = "orientation";
    if (!skipSpace())
        return Item::Failed;
    if (atEnd())
        return failAtEnd(), Item::Failed;
    if (m_text[m_pos] != '=')
        return fail(u"Expected 'unknown' rather than '%1'"_s.arg(text(tokenHere()))), Item::Failed;
    ++m_pos;
    if (!skipSpace())
        return Item::Failed;
    if (atEnd())
        return failAtEnd(), Item::Failed;
    if (!isQuote(m_text[m_pos]))
        return fail(u"The value for parameter '%1' is not quoted"_s.arg(text(attribute.name))), Item::Failed;
    return readString(&attribute.value) ? Item::Attribute : Item::Failed;
}

bool RoverBlockTokens::skipContent(const QByteArray &name)
{
    int depth = 1;
    for (;;) {
        const Markup m = next(true);
        if (m.kind == Markup::Failed)
            return false;
        if (m.kind == Markup::EndOfFile)
            return failAtEnd();
        if (m.kind == Markup::EndTag) {
            if (m.name == name && --depth == 0)
                return true;
            continue;
        }
        Attribute ignored;
        Item item;
        while ((item = nextAttribute(ignored)) == Item::Attribute) {
        }
        if (item == Item::Failed)
            return false;
        if (item == Item::Open && m.name == name)
            ++depth;
    }
}
