#include "formats/Parser.h"

#include "storage/Cp1252.h"

#include <cstring>

using namespace Qt::StringLiterals;

namespace {

const char *findByte(const char *from, const char *end, char c)
{
    if (from >= end)
        return nullptr;
    return static_cast<const char *>(std::memchr(from, c, size_t(end - from)));
}

// First occurrence of "-->" in [from, end).
const char *findCommentEnd(const char *from, const char *end)
{
    while (end - from >= 3) {
        const char *dash = findByte(from, end - 2, '-');
        if (!dash)
            return nullptr;
        if (dash[1] == '-' && dash[2] == '>')
            return dash;
        from = dash + 1;
    }
    return nullptr;
}

QByteArrayView trimSpaces(QByteArrayView text)
{
    qsizetype begin = 0;
    qsizetype end = text.size();
    while (begin < end && text[begin] == ' ')
        ++begin;
    while (end > begin && text[end - 1] == ' ')
        --end;
    return text.sliced(begin, end - begin);
}

// Lower-cases character by character, so that positions in the copy are
// positions in the original.
QString lowerSameLength(const QString &text)
{
    QString lower = text;
    QChar *c = lower.data();
    for (qsizetype i = 0; i < lower.size(); ++i)
        c[i] = c[i].toLower();
    return lower;
}

constexpr qsizetype kLastPosition = 32767; // positions are 1-based signed 16-bit values

} // namespace

void Parser::setBuffer(QByteArray bytes)
{
    m_buffer = std::move(bytes);
    m_front = 0;
}

void Parser::setBufferText(const QString &text)
{
    setBuffer(toCp1252(text));
}

void Parser::clear()
{
    m_buffer.clear();
    m_front = 0;
}

// One pass, in place, equivalent to: delete CR, LF and tab; replace " =" by "="
// until none is left; then replace "= " by "=" until none is left. Together the
// replacements drop every run of spaces that touches an "=" on either side,
// where the runs are those of the text with CR, LF and tab already deleted.
void Parser::normaliseBuffer()
{
    const qsizetype size = m_buffer.size() - m_front;
    if (size <= 0) {
        clear();
        return;
    }
    char *data = m_buffer.data(); // detaches a shared buffer once
    const char *in = data + m_front;
    const char *const end = data + m_buffer.size();
    char *out = data;
    char *const outBegin = data;

    while (in < end) {
        const char c = *in;
        if (c == '\r' || c == '\n' || c == '\t') {
            ++in;
        } else if (c == ' ') {
            // A run of spaces, possibly broken by characters that are deleted.
            qsizetype spaces = 0;
            const char *next = in;
            while (next < end && (*next == ' ' || *next == '\r' || *next == '\n' || *next == '\t')) {
                if (*next == ' ')
                    ++spaces;
                ++next;
            }
            const bool afterEquals = out > outBegin && out[-1] == '=';
            const bool beforeEquals = next < end && *next == '=';
            if (!afterEquals && !beforeEquals) {
                std::memset(out, ' ', size_t(spaces));
                out += spaces;
            }
            in = next;
        } else {
            *out++ = c;
            ++in;
        }
    }
    m_buffer.truncate(out - outBegin);
    m_front = 0;
}

bool Parser::getNextTagView(QByteArrayView &tag)
{
    const char *const begin = m_buffer.constData() + m_front;
    const char *const end = m_buffer.constData() + m_buffer.size();
    const char *lt = findByte(begin, end, '<');
    if (!lt)
        return false;

    const bool comment = end - lt >= 4 && std::memcmp(lt, "<!--", 4) == 0;
    if (!comment) {
        // The first ">" of the whole buffer must follow the "<".
        const char *gt = findByte(begin, end, '>');
        if (!gt || gt < lt)
            return false;
        tag = trimSpaces(QByteArrayView(lt + 1, gt - lt - 1));
        m_front = (gt + 1) - m_buffer.constData();
        return true;
    }

    // The first "-->" of the whole buffer ends the comment; it must start after the "<".
    const char *close = findCommentEnd(begin, end);
    if (!close || close <= lt)
        return false;
    tag = QByteArrayView();
    m_front = (close + 3) - m_buffer.constData();
    return true;
}

bool Parser::getNextTag(QString &tag)
{
    QByteArrayView view;
    if (!getNextTagView(view))
        return false;
    tag = fromCp1252(view);
    return true;
}

QByteArrayView Parser::rest() const
{
    return QByteArrayView(m_buffer.constData() + m_front, m_buffer.size() - m_front);
}

QString Parser::restText() const
{
    return fromCp1252(rest());
}

bool Parser::skipTo(QByteArrayView needle)
{
    const qsizetype at = rest().indexOf(needle);
    if (at < 0)
        return false;
    m_front += at;
    return true;
}

void Parser::cutAt(QByteArrayView needle)
{
    const qsizetype at = rest().indexOf(needle);
    if (at >= 0)
        m_buffer.truncate(m_front + at);
}

bool Parser::isEmpty() const
{
    return m_front >= m_buffer.size();
}

bool getNextWordView(QByteArrayView &text, QByteArrayView &word)
{
    const qsizetype sp = text.indexOf(' ');
    if (sp >= 0) {
        word = text.first(sp);
        text = text.sliced(sp + 1);
        return true;
    }
    if (text.isEmpty())
        return false;
    word = text;
    text = QByteArrayView();
    return true;
}

bool getNextAttributeView(QByteArrayView &text, QByteArrayView &name, QByteArrayView &value)
{
    const char *const begin = text.data();
    const char *const end = begin + text.size();
    const char *eq = nullptr;
    for (const char *from = begin;;) {
        eq = findByte(from, end, '=');
        if (!eq || eq + 1 >= end)
            return false;
        if (eq[1] == '"')
            break;
        from = eq + 1;
    }
    const char *open = eq + 1;
    if (open + 1 >= end)
        return false; // nothing after the opening quote
    const char *close = findByte(open + 1, end, '"');
    if (!close)
        return false;
    name = QByteArrayView(begin, eq - begin);
    value = QByteArrayView(open + 1, close - open - 1);
    text = trimSpaces(QByteArrayView(close + 1, end - close - 1));
    return true;
}

bool nameEquals(QByteArrayView name, QLatin1StringView lowerName)
{
    if (name.size() != lowerName.size())
        return false;
    for (qsizetype i = 0; i < name.size(); ++i) {
        char c = name[i];
        if (c >= 'A' && c <= 'Z')
            c = char(c - 'A' + 'a');
        if (c != lowerName[i].toLatin1())
            return false;
    }
    return true;
}

QString lowerName(QByteArrayView name)
{
    return fromCp1252(name).toLower();
}

bool getNextWord(QString &text, QString &word)
{
    const qsizetype sp = text.indexOf(u' ');
    if (sp >= 0) {
        word = text.first(sp).toLower();
        text = text.sliced(sp + 1);
        return true;
    }
    if (text.isEmpty())
        return false;
    word = text.toLower();
    text.clear();
    return true;
}

bool getNextAttribute(QString &text, QString &name, QString &value)
{
    const qsizetype eq = text.indexOf(u"=\""_s);
    if (eq < 0)
        return false;
    const qsizetype valueStart = eq + 2;
    if (valueStart >= text.size())
        return false;
    const qsizetype close = text.indexOf(u'"', valueStart);
    if (close < 0)
        return false;
    name = text.first(eq).toLower();
    value = text.sliced(valueStart, close - valueStart);
    text = close + 1 < text.size() ? trimSpaces(text.sliced(close + 1)) : QString();
    return true;
}

std::optional<QString> setAttributeValue(const QString &text, const QString &tagName, const QString &attributeName,
                                         const QString &newValue)
{
    const QString lower = lowerSameLength(text);

    const qsizetype p = lower.indexOf(u'<' + tagName);
    if (p < 0)
        return text;
    if (p >= kLastPosition)
        return std::nullopt;

    const qsizetype q = lower.indexOf(u' ' + attributeName + u'=', p);
    if (q < 0)
        return text;
    if (q >= kLastPosition)
        return std::nullopt;

    const qsizetype o = lower.indexOf(u'"', q);
    if (o < 0)
        return text;
    if (o >= kLastPosition)
        return std::nullopt;
    if (o + 1 >= lower.size())
        return text; // nothing after the opening quote

    const qsizetype c = lower.indexOf(u'"', o + 1);
    if (c < 0)
        return text;
    if (c >= kLastPosition)
        return std::nullopt;

    return text.first(o + 1) + newValue + text.sliced(c);
}

QString trimSpaces(const QString &text)
{
    qsizetype begin = 0;
    qsizetype end = text.size();
    while (begin < end && text[begin] == u' ')
        ++begin;
    while (end > begin && text[end - 1] == u' ')
        --end;
    return text.sliced(begin, end - begin);
}
