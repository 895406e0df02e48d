#include "rover/RoverBlockValues.h"

#include "common/AsciiChars.h"

#include <QByteArray>

#include <array>
#include <cmath>
#include <span>

namespace {

using AsciiChars::isBlank;
using AsciiChars::isDigit;

char lowerAscii(char c)
{
    return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c;
}

// A cursor over one value; the readers below consume from it.
struct Cursor {
    QByteArrayView s;
    qsizetype i = 0;

    bool atEnd() const { return i >= s.size(); }
    char peek(qsizetype ahead = 0) const { return i + ahead < s.size() ? s[i + ahead] : '\0'; }
    void skipBlanks()
    {
        while (!atEnd() && isBlank(s[i]))
            ++i;
    }
    // Blanks, then `c`.
    bool take(char c)
    {
        skipBlanks();
        if (peek() != c)
            return false;
        ++i;
        return true;
    }
    bool takeRangeMark()
    {
        skipBlanks();
        if (peek() != '.' || peek(1) != '.')
            return false;
        i += 2;
        return true;
    }
    bool onlyBlanksLeft()
    {
        skipBlanks();
        return atEnd();
    }
};

// Optional sign and decimal digits, clamped to 32 bits.
std::optional<int> integer(Cursor &c)
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
    return int(v > 0x7fffffffLL ? 0x7fffffffLL : v);
}

// A C decimal number: sign, digits with an optional point, optional exponent.
// A point that starts ".." is left for the range mark.
std::optional<double> number(Cursor &c)
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
    if (c.peek() == '.' && c.peek(1) != '.') {
        ++c.i;
        while (isDigit(c.peek())) {
            ++c.i;
            digits = true;
        }
    }
    if (!digits)
        return std::nullopt;
    if (lowerAscii(c.peek()) == 'e') {
        const qsizetype sign = (c.peek(1) == '+' || c.peek(1) == '-') ? 1 : 0;
        if (isDigit(c.peek(1 + sign))) {
            c.i += 1 + sign;
            while (isDigit(c.peek()))
                ++c.i;
        }
    }
    bool ok = false;
    const double v = c.s.sliced(start, c.i - start).toByteArray().toDouble(&ok);
    if (!ok || !std::isfinite(v))
        return std::nullopt;
    return v;
}

using Keywords = std::span<const char *const>;

// Keywords match ignoring case, as a prefix, after blanks; the first listed one
// that matches wins.
std::optional<int> keyword(Cursor &c, Keywords words)
{
    c.skipBlanks();
    for (std::size_t index = 0; index < words.size(); ++index) {
        const QByteArrayView w(words[index]);
        bool match = c.s.size() - c.i >= w.size();
        for (qsizetype k = 0; match && k < w.size(); ++k)
            match = lowerAscii(c.s[c.i + k]) == w[k];
        if (match) {
            c.i += w.size();
            return int(index);
        }
    }
    return std::nullopt;
}

constexpr const char *booleans[] = {"yes", "no"};
constexpr const char *blockTypes[] = {"structural",       "multifaceted sprite", "angled sprite",
                                      "revolving sprite", "facing sprite",       "player sprite"};
constexpr const char *textureStyles[] = {"tiled", "scaled", "stretched"};
constexpr const char *alignments[] = {"top", "center", "centre", "bottom"};
constexpr const char *playbacks[] = {"looped", "random", "single", "once"};
constexpr const char *pointLightStyles[] = {"static", "pulsate"};
constexpr const char *spotLightStyles[] = {"static", "revolve", "search"};
constexpr const char *compassWords[] = {"up", "down", "north", "south", "east", "west"};
constexpr const char *triggerWords[] = {"click on", "step on"};

Keywords keywordsOf(RoverBlockValue type)
{
    switch (type) {
    case RoverBlockValue::Boolean: return booleans;
    case RoverBlockValue::BlockType: return blockTypes;
    case RoverBlockValue::TextureStyle: return textureStyles;
    case RoverBlockValue::VerticalAlignment: return alignments;
    case RoverBlockValue::Playback: return playbacks;
    case RoverBlockValue::PointLightStyle: return pointLightStyles;
    case RoverBlockValue::SpotLightStyle: return spotLightStyles;
    default: return {};
    }
}

template <typename T, typename Read>
std::optional<T> whole(QByteArrayView value, Read read)
{
    Cursor c{value};
    std::optional<T> v = read(c);
    if (v && !c.onlyBlanksLeft())
        return std::nullopt;
    return v;
}

// "(a,b,...)" of `count` numbers read by `item`.
template <typename Item>
bool tuple(Cursor &c, int count, Item item)
{
    if (!c.take('('))
        return false;
    for (int k = 0; k < count; ++k)
        if (!item(c, k) || !c.take(k + 1 < count ? ',' : ')'))
            return false;
    return true;
}

std::optional<double> percentage(Cursor &c)
{
    const auto v = number(c);
    if (!v || *v < 0 || *v > 100 || !c.take('%'))
        return std::nullopt;
    return v;
}

bool direction(Cursor &c)
{
    return tuple(c, 2, [](Cursor &cc, int) { return number(cc).has_value(); });
}

bool percentageRange(Cursor &c)
{
    const auto low = percentage(c);
    if (!low)
        return false;
    if (!c.takeRangeMark())
        return true;
    const auto high = percentage(c);
    return high && *high >= *low;
}

bool delayRange(Cursor &c)
{
    const auto low = number(c);
    if (!low || *low < 0)
        return false;
    if (!c.takeRangeMark())
        return true;
    const auto high = number(c);
    return high && *high >= *low;
}

bool exitTrigger(Cursor &c)
{
    if (!keyword(c, triggerWords))
        return false;
    return !c.take(',') || keyword(c, triggerWords).has_value();
}

std::optional<RoverOrientation> orientation(Cursor &c)
{
    RoverOrientation o;
    if (const auto word = keyword(c, compassWords)) {
        o.form = RoverOrientation::Compass;
        o.direction = RoverDirection(*word);
        if (c.take(',')) {
            const auto a = number(c);
            if (!a)
                return std::nullopt;
            o.angle = *a;
        }
        return o;
    }
    o.form = RoverOrientation::Angles;
    std::array<double *, 3> angles{&o.y, &o.x, &o.z};
    for (std::size_t k = 0; k < angles.size(); ++k) {
        if (k > 0 && !c.take(','))
            break;
        const auto a = number(c);
        if (!a)
            return std::nullopt;
        *angles[k] = *a;
    }
    return o;
}

bool wholeValue(QByteArrayView value, bool (*read)(Cursor &))
{
    Cursor c{value};
    return read(c) && c.onlyBlanksLeft();
}

bool name(Cursor &c)
{
    c.skipBlanks();
    const qsizetype start = c.i;
    while (!c.atEnd()) {
        const char ch = lowerAscii(c.peek());
        if (!isDigit(ch) && ch != '_' && !(ch >= 'a' && ch <= 'z'))
            break;
        ++c.i;
    }
    return c.i > start;
}

bool directionRange(Cursor &c)
{
    return direction(c) && (!c.takeRangeMark() || direction(c));
}

} // namespace

std::optional<int> roverInteger(QByteArrayView value)
{
    return whole<int>(value, integer);
}

std::optional<double> roverFloat(QByteArrayView value)
{
    return whole<double>(value, number);
}

std::optional<double> roverDegrees(QByteArrayView value)
{
    auto v = roverFloat(value);
    if (v) {
        *v = std::fmod(*v, 360.0);
        if (*v < 0)
            *v += 360.0;
    }
    return v;
}

std::optional<RoverPoint> roverCoordinates(QByteArrayView value)
{
    return whole<RoverPoint>(value, [](Cursor &c) -> std::optional<RoverPoint> {
        RoverPoint p;
        std::array<double *, 3> axes{&p.x, &p.y, &p.z};
        const bool ok = tuple(c, 3, [&](Cursor &cc, int k) {
            const auto v = number(cc);
            *axes[std::size_t(k)] = v.value_or(0);
            return v.has_value();
        });
        return ok ? std::optional(p) : std::nullopt;
    });
}

std::optional<RoverRgb> roverRgb(QByteArrayView value)
{
    return whole<RoverRgb>(value, [](Cursor &c) -> std::optional<RoverRgb> {
        RoverRgb rgb;
        std::array<int *, 3> parts{&rgb.red, &rgb.green, &rgb.blue};
        const bool ok = tuple(c, 3, [&](Cursor &cc, int k) {
            const auto v = integer(cc);
            *parts[std::size_t(k)] = v.value_or(0);
            return v && *v >= 0 && *v <= 255;
        });
        return ok ? std::optional(rgb) : std::nullopt;
    });
}

std::optional<double> roverPercentage(QByteArrayView value)
{
    return whole<double>(value, percentage);
}

std::optional<QSize> roverSpriteSize(QByteArrayView value)
{
    return whole<QSize>(value, [](Cursor &c) -> std::optional<QSize> {
        std::array<int, 2> wh{};
        const bool ok = tuple(c, 2, [&](Cursor &cc, int k) {
            const auto v = integer(cc);
            wh[std::size_t(k)] = v.value_or(0);
            return v && *v >= 1 && *v <= 256;
        });
        return ok ? std::optional(QSize(wh[0], wh[1])) : std::nullopt;
    });
}

std::optional<RoverOrientation> roverOrientation(QByteArrayView value)
{
    return whole<RoverOrientation>(value, orientation);
}

std::optional<int> roverKeyword(RoverBlockValue type, QByteArrayView value)
{
    return whole<int>(value, [type](Cursor &c) { return keyword(c, keywordsOf(type)); });
}

std::optional<QList<int>> roverVertexList(QByteArrayView value)
{
    Cursor c{value};
    QList<int> refs;
    do {
        const auto ref = integer(c);
        if (!ref)
            return std::nullopt;
        refs.append(*ref);
    } while (c.take(','));
    if (!c.onlyBlanksLeft())
        return std::nullopt;
    return refs;
}

RoverTexCoordList roverTexCoordList(QByteArrayView value, qsizetype vertexCount)
{
    Cursor c{value};
    RoverTexCoordList list;
    for (qsizetype k = 0; k < vertexCount; ++k) {
        if (k > 0 && !c.take(',')) {
            list.outcome = c.onlyBlanksLeft() ? RoverTexCoordList::TooFew : RoverTexCoordList::NotAList;
            return list;
        }
        if (k == 0 && c.onlyBlanksLeft()) {
            list.outcome = RoverTexCoordList::TooFew;
            return list;
        }
        RoverTexCoord t;
        const bool ok = tuple(c, 2, [&t](Cursor &cc, int axis) {
            const auto v = number(cc);
            (axis == 0 ? t.u : t.v) = v.value_or(0);
            return v.has_value();
        });
        if (!ok) {
            list.outcome = RoverTexCoordList::NotAList;
            return list;
        }
        list.coords.append(t);
    }
    if (!c.onlyBlanksLeft())
        list.outcome = c.take(',') ? RoverTexCoordList::TooMany : RoverTexCoordList::NotAList;
    return list;
}

bool isRoverBlockValue(RoverBlockValue type, QByteArrayView value)
{
    switch (type) {
    case RoverBlockValue::String: return true;
    case RoverBlockValue::Integer: return roverInteger(value).has_value();
    case RoverBlockValue::Float:
    case RoverBlockValue::Degrees: return roverFloat(value).has_value();
    case RoverBlockValue::Name: return wholeValue(value, name);
    case RoverBlockValue::Coordinates: return roverCoordinates(value).has_value();
    case RoverBlockValue::Rgb: return roverRgb(value).has_value();
    case RoverBlockValue::Percentage: return roverPercentage(value).has_value();
    case RoverBlockValue::PercentageRange: return wholeValue(value, percentageRange);
    case RoverBlockValue::Orientation: return roverOrientation(value).has_value();
    case RoverBlockValue::SpriteSize: return roverSpriteSize(value).has_value();
    case RoverBlockValue::Radius: return roverFloat(value).value_or(0) > 0;
    case RoverBlockValue::DirectionRange: return wholeValue(value, directionRange);
    case RoverBlockValue::DelayRange: return wholeValue(value, delayRange);
    case RoverBlockValue::ExitTrigger: return wholeValue(value, exitTrigger);
    case RoverBlockValue::Boolean:
    case RoverBlockValue::BlockType:
    case RoverBlockValue::TextureStyle:
    case RoverBlockValue::VerticalAlignment:
    case RoverBlockValue::Playback:
    case RoverBlockValue::PointLightStyle:
    case RoverBlockValue::SpotLightStyle: return roverKeyword(type, value).has_value();
    }
    return false;
}

const char *roverBlockValueDescription(RoverBlockValue type)
{
    switch (type) {
    case RoverBlockValue::Integer: return "a whole number";
    case RoverBlockValue::Float: return "an angle in degrees, or two angles seperated by a comma";
    case RoverBlockValue::Degrees: return "an angle in degrees";
    case RoverBlockValue::String: return "a string";
    case RoverBlockValue::Name: return "a name containing only letters, digits and underscores";
    case RoverBlockValue::Boolean: return "'yes' or 'no'";
    case RoverBlockValue::BlockType:
        return "'structural', 'multifaceted sprite', 'angled sprite', 'revolving sprite', 'facing sprite' or "
               "'player sprite'";
    case RoverBlockValue::Coordinates: return "a valid version number";
    case RoverBlockValue::Rgb: return "an RGB value in the form '(red,green,blue)'";
    case RoverBlockValue::Percentage: return "a percentage";
    case RoverBlockValue::PercentageRange: return "a range of percentages";
    case RoverBlockValue::TextureStyle: return "'tiled', 'scaled' or 'stretched'";
    case RoverBlockValue::Orientation: return "an orientation";
    case RoverBlockValue::VerticalAlignment: return "one or more of 'click on', 'step on', 'proximity' or 'rollover'";
    case RoverBlockValue::SpriteSize: return "a sprite size in the form '(width,height)'";
    case RoverBlockValue::Radius: return "a radius in blocks";
    case RoverBlockValue::DirectionRange: return "a range of directions in the form '(turn1,tilt1)..(turn2,tilt2)'";
    case RoverBlockValue::DelayRange: return "a range of delays, in seconds, in the form 'min..max'";
    case RoverBlockValue::Playback: return "'looped' or 'random'";
    case RoverBlockValue::PointLightStyle: return "'static' or 'pulsate'";
    case RoverBlockValue::SpotLightStyle: return "'static', 'revolve' or 'search'";
    case RoverBlockValue::ExitTrigger: return "'click on', 'step on' or both";
    }
    return "";
}
