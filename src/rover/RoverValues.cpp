#include "rover/RoverValues.h"

#include "common/AsciiChars.h"
#include "rover/RoverFinding.h"

#include <optional>

bool hasRoverError(const RoverFindings &findings)
{
    for (const RoverFinding &f : findings)
        if (f.severity == RoverFinding::Error)
            return true;
    return false;
}

namespace {

using AsciiChars::isBlank;
using AsciiChars::isDigit;

// A cursor over one value; every parser below consumes from it.
struct Cursor {
    QByteArrayView s;
    qsizetype i = 0;
    bool atEnd() const { return i >= s.size(); }
    char peek() const { return atEnd() ? '\0' : s[i]; }
    void skipBlanks()
    {
        while (!atEnd() && isBlank(s[i]))
            ++i;
    }
    bool take(char c)
    {
        if (peek() == c) {
            ++i;
            return true;
        }
        return false;
    }
};

// Optional sign then decimal digits; the value is clamped to 32 bits.
std::optional<long long> integer(Cursor &c)
{
    c.skipBlanks();
    bool negative = false;
    if (c.peek() == '+' || c.peek() == '-')
        negative = c.s[c.i++] == '-';
    if (!isDigit(c.peek()))
        return std::nullopt;
    long long v = 0;
    while (isDigit(c.peek())) {
        v = v * 10 + (c.s[c.i++] - '0');
        if (v > 0x80000000LL)
            v = 0x80000000LL;
    }
    v = negative ? -v : v;
    if (v > 0x7fffffffLL)
        v = 0x7fffffffLL;
    return v;
}

std::optional<double> decimal(Cursor &c)
{
    c.skipBlanks();
    const qsizetype start = c.i;
    if (c.peek() == '+' || c.peek() == '-')
        ++c.i;
    bool digits = false;
    while (isDigit(c.peek())) {
        ++c.i;
        digits = true;
    }
    if (c.take('.'))
        while (isDigit(c.peek())) {
            ++c.i;
            digits = true;
        }
    if (!digits)
        return std::nullopt;
    return c.s.sliced(start, c.i - start).toByteArray().toDouble();
}

bool onlyBlanksLeft(Cursor &c)
{
    c.skipBlanks();
    return c.atEnd();
}

bool isInteger(QByteArrayView v)
{
    Cursor c{v};
    return integer(c) && onlyBlanksLeft(c);
}

// Unsigned decimal part with no sign, 0..max.
bool versionPart(Cursor &c, int max)
{
    if (!isDigit(c.peek()))
        return false;
    long long v = 0;
    while (isDigit(c.peek())) {
        v = v * 10 + (c.s[c.i++] - '0');
        if (v > max)
            return false;
    }
    return true;
}

bool isVersion(QByteArrayView v)
{
    Cursor c{v};
    c.skipBlanks();
    if (!versionPart(c, 255) || !c.take('.') || !versionPart(c, 255))
        return false;
    if (c.take('.') && !versionPart(c, 255))
        return false;
    if (c.peek() == 'b' || c.peek() == 'B') {
        ++c.i;
        const auto beta = integer(c);
        if (!beta || *beta < 1 || *beta > 254)
            return false;
    }
    return onlyBlanksLeft(c);
}

bool isRgb(QByteArrayView v)
{
    Cursor c{v};
    c.skipBlanks();
    if (!c.take('('))
        return false;
    for (int part = 0; part < 3; ++part) {
        const auto n = integer(c);
        if (!n || *n < 0 || *n > 255)
            return false;
        c.skipBlanks();
        if (!c.take(part < 2 ? ',' : ')'))
            return false;
    }
    return onlyBlanksLeft(c);
}

bool isPercentage(QByteArrayView v)
{
    Cursor c{v};
    const auto n = decimal(c);
    if (!n || *n < 0 || *n > 100)
        return false;
    c.skipBlanks();
    return c.take('%') && onlyBlanksLeft(c);
}

bool isDirection(QByteArrayView v)
{
    Cursor c{v};
    c.skipBlanks();
    if (!c.take('(') || !decimal(c))
        return false;
    c.skipBlanks();
    if (!c.take(',') || !decimal(c))
        return false;
    c.skipBlanks();
    return c.take(')') && onlyBlanksLeft(c);
}

bool isName(QByteArrayView v)
{
    Cursor c{v};
    c.skipBlanks();
    const qsizetype start = c.i;
    auto nameChar = [](char ch) {
        return isDigit(ch) || ch == '_' || (ch >= 'a' && ch <= 'z') || (ch >= 'A' && ch <= 'Z');
    };
    while (!c.atEnd() && nameChar(c.peek()))
        ++c.i;
    return c.i > start && onlyBlanksLeft(c);
}

bool isPrintable(char c)
{
    return c >= '!' && c <= '~';
}

bool isSingleSymbol(QByteArrayView v)
{
    return v.size() == 1 && isPrintable(v[0]) && v[0] != '.' && v[0] != '<';
}

bool isDoubleSymbol(QByteArrayView v)
{
    return v.size() == 2 && isPrintable(v[0]) && isPrintable(v[1]) && v[0] != '<' && v != "..";
}

} // namespace

bool isRoverValue(RoverType type, QByteArrayView value)
{
    switch (type) {
    case RoverType::String: return true;
    case RoverType::Integer: return isInteger(value);
    case RoverType::Version: return isVersion(value);
    case RoverType::Rgb: return isRgb(value);
    case RoverType::Percentage: return isPercentage(value);
    case RoverType::Direction: return isDirection(value);
    case RoverType::Name: return isName(value);
    case RoverType::SingleSymbol: return isSingleSymbol(value);
    case RoverType::DoubleSymbol: return isDoubleSymbol(value);
    }
    return false;
}

const char *roverTypeName(RoverType type)
{
    switch (type) {
    case RoverType::String: return "string";
    case RoverType::Integer: return "integer";
    case RoverType::Version: return "version";
    case RoverType::Rgb: return "RGB";
    case RoverType::Percentage: return "percentage";
    case RoverType::Direction: return "direction";
    case RoverType::Name: return "name";
    case RoverType::SingleSymbol: return "single symbol";
    case RoverType::DoubleSymbol: return "double symbol";
    }
    return "";
}
