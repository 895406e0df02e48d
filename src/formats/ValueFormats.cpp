#include "formats/ValueFormats.h"

#include <QStringList>

using namespace Qt::StringLiterals;

namespace {

QStringView withoutOuterSpaces(QStringView text)
{
    while (!text.isEmpty() && text.front() == u' ')
        text = text.sliced(1);
    while (!text.isEmpty() && text.back() == u' ')
        text.chop(1);
    return text;
}

// A whole number as the controls' integer conversion takes it: an optional sign
// followed by decimal digits. Values far outside every range saturate, so that
// long runs of digits are still refused by the range check and never overflow.
std::optional<int> wholeNumber(QStringView text)
{
    qsizetype i = 0;
    bool negative = false;
    if (i < text.size() && (text[i] == u'+' || text[i] == u'-')) {
        negative = text[i] == u'-';
        ++i;
    }
    if (i == text.size())
        return std::nullopt;
    int value = 0;
    for (; i < text.size(); ++i) {
        const char16_t c = text[i].unicode();
        if (c < u'0' || c > u'9')
            return std::nullopt;
        if (value < 100000)
            value = value * 10 + (c - u'0');
    }
    return negative ? -value : value;
}

struct Range {
    int low;
    int high;
};

// "(a,b,...)" with exactly N parts, each a whole number within its range.
template <std::size_t N>
std::optional<std::array<int, N>> parseTuple(const QString &text, const std::array<Range, N> &ranges)
{
    const QStringView trimmed = withoutOuterSpaces(text);
    if (trimmed.size() < 3 || trimmed.front() != u'(' || trimmed.back() != u')')
        return std::nullopt;
    const QStringView inside = trimmed.sliced(1, trimmed.size() - 2);
    const auto parts = inside.split(u',');
    if (parts.size() != qsizetype(N))
        return std::nullopt;
    std::array<int, N> values{};
    for (std::size_t i = 0; i < N; ++i) {
        const auto number = wholeNumber(parts[qsizetype(i)]);
        if (!number || *number < ranges[i].low || *number > ranges[i].high)
            return std::nullopt;
        values[i] = *number;
    }
    return values;
}

} // namespace

std::optional<std::array<int, 3>> parseColor(const QString &text)
{
    return parseTuple<3>(text, {Range{0, 255}, Range{0, 255}, Range{0, 255}});
}

std::optional<int> parsePercentage(const QString &text)
{
    const QStringView trimmed = withoutOuterSpaces(text);
    if (trimmed.size() <= 2 || trimmed.back() != u'%')
        return std::nullopt;
    const auto number = wholeNumber(trimmed.chopped(1));
    if (!number || *number < 0 || *number > 100)
        return std::nullopt;
    return number;
}

std::optional<std::array<int, 2>> parsePosition(const QString &text)
{
    return parseTuple<2>(text, {Range{0, 360}, Range{-90, 90}});
}

QString formatColor(int red, int green, int blue)
{
    return u'(' + QString::number(red) + u',' + QString::number(green) + u',' + QString::number(blue) + u')';
}

QString formatPercentage(int percent)
{
    return QString::number(percent) + u'%';
}

QString formatPosition(int turn, int tilt)
{
    return u'(' + QString::number(turn) + u',' + QString::number(tilt) + u')';
}

std::optional<QString> acceptColor(const QString &text)
{
    const auto color = parseColor(text);
    if (!color)
        return std::nullopt;
    return formatColor((*color)[0], (*color)[1], (*color)[2]);
}

std::optional<QString> acceptPercentage(const QString &text)
{
    const auto percent = parsePercentage(text);
    if (!percent)
        return std::nullopt;
    return formatPercentage(*percent);
}

std::optional<QString> acceptPosition(const QString &text)
{
    const auto position = parsePosition(text);
    if (!position)
        return std::nullopt;
    return formatPosition((*position)[0], (*position)[1]);
}

bool isAcceptableAttributeValue(const QString &text)
{
    return !text.contains(u'"');
}

QString itemSizeText(qint64 bytes)
{
    // "#,###,###": thousands separators, nothing at all for zero.
    QString digits = bytes == 0 ? QString() : QString::number(bytes);
    for (qsizetype i = digits.size() - 3; i > 0; i -= 3)
        digits.insert(i, u',');
    return digits.rightJustified(10, u' ');
}
