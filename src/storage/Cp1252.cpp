#include "storage/Cp1252.h"

#include <array>

namespace {

// Characters of the bytes 0x80..0x9F; the five bytes the code page leaves
// undefined keep their own value, as Windows itself maps them.
constexpr std::array<char16_t, 32> kHighControls = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};

// The byte of `c`, or -1 when the code page has none.
int byteOf(char16_t c)
{
    if (c < 0x80 || (c >= 0xA0 && c <= 0xFF))
        return c;
    for (std::size_t i = 0; i < kHighControls.size(); ++i) {
        if (kHighControls[i] == c)
            return int(0x80 + i);
    }
    return -1;
}

char byteFor(char16_t c)
{
    const int b = byteOf(c);
    return b < 0 ? '?' : char(b);
}

} // namespace

QString fromCp1252(QByteArrayView bytes)
{
    QString text(bytes.size(), Qt::Uninitialized);
    QChar *out = text.data();
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        const auto b = static_cast<unsigned char>(bytes[i]);
        out[i] = (b >= 0x80 && b < 0xA0) ? QChar(kHighControls[b - 0x80]) : QChar(char16_t(b));
    }
    return text;
}

QByteArray toCp1252(const QString &text)
{
    QByteArray bytes(text.size(), Qt::Uninitialized);
    char *out = bytes.data();
    const QChar *in = text.constData();
    for (qsizetype i = 0; i < text.size(); ++i)
        out[i] = byteFor(in[i].unicode());
    return bytes;
}

bool isCp1252(const QString &text)
{
    for (const QChar c : text) {
        if (byteOf(c.unicode()) < 0)
            return false;
    }
    return true;
}
