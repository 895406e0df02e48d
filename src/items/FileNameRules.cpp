#include "items/FileNameRules.h"

#include "storage/Cp1252.h"

#include <QStringList>

using namespace Qt::StringLiterals;

bool isPortableFileName(const QString &name)
{
    if (name.isEmpty() || name == "."_L1 || name == ".."_L1)
        return false;
    for (QChar c : name) {
        if (c.unicode() < 32 || u"\\/:*?\"<>|"_s.contains(c))
            return false;
    }
    if (name.endsWith(u' ') || name.endsWith(u'.'))
        return false;
    if (fromCp1252(toCp1252(name)) != name)
        return false;
    static const QStringList reserved{u"CON"_s,  u"PRN"_s,  u"AUX"_s,  u"NUL"_s,  u"COM1"_s, u"COM2"_s,
                                      u"COM3"_s, u"COM4"_s, u"COM5"_s, u"COM6"_s, u"COM7"_s, u"COM8"_s,
                                      u"COM9"_s, u"LPT1"_s, u"LPT2"_s, u"LPT3"_s, u"LPT4"_s, u"LPT5"_s,
                                      u"LPT6"_s, u"LPT7"_s, u"LPT8"_s, u"LPT9"_s};
    const QString stem = name.section(u'.', 0, 0).trimmed();
    return !reserved.contains(stem, Qt::CaseInsensitive);
}
