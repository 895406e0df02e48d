#pragma once

// Character classes of the ASCII text Rover's files are made of (block files,
// styles, the cache index), the same in every locale.
namespace AsciiChars {

// A blank between words and around values: a space or a tab.
constexpr bool isBlank(char c)
{
    return c == ' ' || c == '\t';
}

constexpr bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

} // namespace AsciiChars
