#include "items/FileNameRules.h"

#include "storage/Cp1252.h"

#include <QStringList>

using namespace Qt::StringLiterals;

QString firstCharacterOutsideCp1252(const QString &text)
{
    for (qsizetype i = 0; i < text.size(); ++i) {
        const qsizetype length = text[i].isHighSurrogate() && i + 1 < text.size() ? 2 : 1;
        QString character = text.mid(i, length);
        if (!isCp1252(character))
            return character;
        i += length - 1;
    }
    return QString();
}

QString fileNameProblem(const QString &name)
{
    const QString stem = name.section(u'.', 0, 0);
    if (name.isEmpty() || stem.trimmed().isEmpty() || name == "."_L1 || name == ".."_L1)
        return u"its name before the extension is empty"_s;
    if (name.front().isSpace() || name.back().isSpace())
        return u"it starts or ends with a blank, which Rover drops, so it would never find the file"_s;
    if (const QString outside = firstCharacterOutsideCp1252(name); !outside.isEmpty())
        return u"Windows-1252, the code page of the style file, has no \"%1\""_s.arg(outside);
    for (QChar c : name) {
        if (c.unicode() < 32)
            return u"it holds a control character"_s;
        if (u"\\/:*?\"<>|"_s.contains(c))
            return u"Windows does not allow \"%1\" in a file name"_s.arg(c);
    }
    if (name.endsWith(u'.'))
        return u"Windows drops a full stop at the end of a file name"_s;
    static const QStringList reserved{u"CON"_s,  u"PRN"_s,  u"AUX"_s,  u"NUL"_s,  u"COM1"_s, u"COM2"_s,
                                      u"COM3"_s, u"COM4"_s, u"COM5"_s, u"COM6"_s, u"COM7"_s, u"COM8"_s,
                                      u"COM9"_s, u"LPT1"_s, u"LPT2"_s, u"LPT3"_s, u"LPT4"_s, u"LPT5"_s,
                                      u"LPT6"_s, u"LPT7"_s, u"LPT8"_s, u"LPT9"_s};
    if (reserved.contains(stem.trimmed(), Qt::CaseInsensitive))
        return u"Windows reserves the name \"%1\" for a device"_s.arg(stem.trimmed());
    return QString();
}

bool isPortableFileName(const QString &name)
{
    return fileNameProblem(name).isEmpty();
}

bool sameFileName(const QString &a, const QString &b)
{
    return a.compare(b, Qt::CaseInsensitive) == 0;
}

QString refusedNameText(const QString &name, const QString &problem)
{
    return u"\""_s + name + u"\" cannot be used as a file name: "_s + problem + u'!';
}
