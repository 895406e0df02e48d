#include "storage/WindowsNames.h"

#include <QByteArray>

#include <cstring>

bool isWindowsPlainName(QByteArrayView part)
{
    if (part.isEmpty())
        return true;
    const char last = part.back();
    if (last == '.' || last == ' ')
        return false;
    for (const char c : part) {
        if (static_cast<unsigned char>(c) < 0x20 || std::strchr("<>:\"|?*", c))
            return false;
    }
    const qsizetype dot = part.indexOf('.');
    const QByteArray upper = part.first(dot < 0 ? part.size() : dot).toByteArray().trimmed().toUpper();
    static const char *const devices[] = {"CON", "PRN", "AUX", "NUL", "CONIN$", "CONOUT$"};
    for (const char *device : devices) {
        if (upper == device)
            return false;
    }
    if (!upper.startsWith("COM") && !upper.startsWith("LPT"))
        return true;
    const QByteArray number = upper.mid(3); // a digit, or superscript 1, 2 or 3 in UTF-8
    return !((number.size() == 1 && number.at(0) >= '0' && number.at(0) <= '9') || number == "\xC2\xB9"
             || number == "\xC2\xB2" || number == "\xC2\xB3");
}
