#include "common/HiveText.h"

#include "storage/Cp1252.h"

#include <QStringDecoder>

#include <cstring>

namespace {

// Text without escapes is taken as UTF-8 when it is valid UTF-8 (what Wine's
// newer servers write) and as Windows-1252 otherwise; Wine itself writes every
// character above 127 as a "\x" escape, so this matters only for edited files.
QString decodeRun(const QByteArray &bytes)
{
    bool ascii = true;
    for (char c : bytes) {
        if (static_cast<unsigned char>(c) >= 0x80) {
            ascii = false;
            break;
        }
    }
    if (ascii)
        return QString::fromLatin1(bytes);
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = decoder.decode(bytes);
    if (decoder.hasError())
        return fromCp1252(bytes);
    return text;
}

} // namespace

namespace HiveText {

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r';
}

int hexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

qsizetype parseEscaped(const QByteArray &line, qsizetype pos, char endChar, QString &out)
{
    out.clear();
    QByteArray run;
    const qsizetype n = line.size();
    auto flush = [&] {
        if (!run.isEmpty()) {
            out += decodeRun(run);
            run.clear();
        }
    };
    while (pos < n) {
        const char c = line[pos];
        if (c == endChar) {
            flush();
            return pos + 1;
        }
        if (c != '\\') {
            run += c;
            ++pos;
            continue;
        }
        flush();
        ++pos;
        if (pos >= n)
            return -1;
        const char e = line[pos++];
        switch (e) {
        case 'a': out += QChar(7); break;
        case 'b': out += QChar(8); break;
        case 'e': out += QChar(27); break;
        case 'f': out += QChar(12); break;
        case 'n': out += QChar(10); break;
        case 'r': out += QChar(13); break;
        case 't': out += QChar(9); break;
        case 'v': out += QChar(11); break;
        case 'x': {
            char16_t code = 0;
            int digits = 0;
            while (digits < 4 && pos < n && hexDigit(line[pos]) >= 0) {
                code = char16_t(code * 16 + hexDigit(line[pos]));
                ++pos;
                ++digits;
            }
            if (digits == 0)
                out += u'x';
            else
                out += QChar(code);
            break;
        }
        default:
            if (e >= '0' && e <= '7') {
                int code = e - '0';
                for (int digits = 1; digits < 3 && pos < n && line[pos] >= '0' && line[pos] <= '7'; ++digits)
                    code = code * 8 + (line[pos++] - '0');
                out += QChar(char16_t(code));
            } else {
                // "\\", "\"", "\[", "\]" and any other character stand for themselves.
                run += e;
            }
            break;
        }
    }
    return -1;
}

QByteArray escape(const QString &text, const char *special)
{
    QByteArray out;
    out.reserve(text.size() + 8);
    const qsizetype n = text.size();
    for (qsizetype i = 0; i < n; ++i) {
        const char16_t c = text[i].unicode();
        const bool nextIsHex = i + 1 < n && text[i + 1].unicode() < 128 && hexDigit(char(text[i + 1].unicode())) >= 0;
        if (c > 127) {
            out += "\\x";
            out += nextIsHex ? QByteArray::number(c, 16).rightJustified(4, '0') : QByteArray::number(c, 16);
            continue;
        }
        if (c < 32) {
            switch (c) {
            case 7: out += "\\a"; break;
            case 8: out += "\\b"; break;
            case 27: out += "\\e"; break;
            case 12: out += "\\f"; break;
            case 10: out += "\\n"; break;
            case 13: out += "\\r"; break;
            case 9: out += "\\t"; break;
            case 11: out += "\\v"; break;
            default: {
                const bool nextIsOctal = i + 1 < n && text[i + 1] >= u'0' && text[i + 1] <= u'7';
                out += '\\';
                out += nextIsOctal ? QByteArray::number(c, 8).rightJustified(3, '0') : QByteArray::number(c, 8);
                break;
            }
            }
            continue;
        }
        const char b = char(c);
        if (b == '\\' || (special && std::strchr(special, b)))
            out += '\\';
        out += b;
    }
    return out;
}

qsizetype skipBlanks(const QByteArray &line, qsizetype pos)
{
    while (pos < line.size() && isBlank(line[pos]))
        ++pos;
    return pos;
}

bool onlyBlanksFrom(const QByteArray &line, qsizetype pos)
{
    return skipBlanks(line, pos) == line.size();
}

bool parseHexBytes(const QByteArray &text, QByteArray &bytes)
{
    bytes.clear();
    qsizetype pos = skipBlanks(text, 0);
    if (pos == text.size())
        return true;
    for (;;) {
        pos = skipBlanks(text, pos);
        int value = 0;
        int digits = 0;
        while (pos < text.size() && hexDigit(text[pos]) >= 0) {
            value = value * 16 + hexDigit(text[pos++]);
            if (++digits > 2)
                return false;
        }
        if (digits == 0)
            return false;
        bytes += char(value);
        pos = skipBlanks(text, pos);
        if (pos == text.size())
            return true;
        if (text[pos] != ',')
            return false;
        ++pos;
        // Wine ends a line of hex data with ",\" so a comma may close the list.
        if (skipBlanks(text, pos) == text.size())
            return true;
    }
}

QString foldName(const QString &name)
{
    return name.toCaseFolded();
}

std::optional<QStringList> splitKeyPath(const QString &path)
{
    if (path.isEmpty())
        return QStringList();
    QStringList names = path.split(u'\\');
    for (const QString &name : names) {
        if (name.isEmpty())
            return std::nullopt;
    }
    return names;
}

} // namespace HiveText
