#include "common/HiveFile.h"

#include "common/HiveText.h"

#include <QDateTime>

using namespace HiveText;

namespace {

constexpr char kSignature[] = "WINE REGISTRY Version 2";

} // namespace

void HiveFile::clear()
{
    headerLines.clear();
    sections.clear();
    keys.clear();
    crlf = false;
    finalNewline = true;
}

void HiveFile::startEmpty()
{
    clear();
    headerLines = {QByteArray(kSignature), QByteArrayLiteral(";; All keys relative to \\\\Machine"), QByteArray(),
                   QByteArrayLiteral("#arch=win32")};
}

QByteArray HiveFile::eol() const
{
    return crlf ? QByteArrayLiteral("\r") : QByteArray();
}

bool HiveFile::parse(const QByteArray &data)
{
    clear();
    QList<QByteArray> lines;
    qsizetype start = 0;
    while (start < data.size()) {
        qsizetype end = data.indexOf('\n', start);
        if (end < 0)
            end = data.size();
        lines.append(data.mid(start, end - start));
        start = end + 1;
    }
    finalNewline = data.endsWith('\n');
    if (lines.isEmpty())
        return false;
    crlf = lines.first().endsWith('\r');

    QByteArray first = lines.first();
    while (!first.isEmpty() && isBlank(first.back()))
        first.chop(1);
    if (first != kSignature)
        return false;
    headerLines.append(lines.first());

    int currentNode = -1;
    for (qsizetype i = 1; i < lines.size(); ++i) {
        const QByteArray &line = lines[i];
        const qsizetype pos = skipBlanks(line, 0);
        const char c = pos < line.size() ? line[pos] : '\0';
        if (c == '[') {
            QString keyPath;
            const qsizetype after = parseEscaped(line, pos + 1, ']', keyPath);
            if (after < 0)
                return false;
            int node = 0;
            if (!keyPath.isEmpty()) {
                const QStringList names = keyPath.split(u'\\');
                for (const QString &name : names) {
                    if (name.isEmpty())
                        return false;
                    node = keys.child(node, name, true);
                }
            }
            Section section;
            section.header = line;
            sections.append(section);
            if (keys[node].section < 0)
                keys[node].section = int(sections.size()) - 1;
            currentNode = node;
            continue;
        }
        if (c == '"' || c == '@') {
            if (currentNode < 0)
                return false;
            Item item;
            QString name;
            if (!parseValue(lines, i, pos, item, name))
                return false;
            Section &section = sections.last();
            section.items.append(item);
            keys[currentNode].values.insert(
                foldName(name), HiveKeyTree::ValueRef{int(sections.size()) - 1, int(section.items.size()) - 1});
            continue;
        }
        if (c == '#' || c == ';' || c == '\0') {
            if (currentNode < 0) {
                headerLines.append(line);
                continue;
            }
            if (line.mid(pos).startsWith("#class=\"")) {
                QString keyClass;
                if (parseEscaped(line, pos + 8, '"', keyClass) < 0)
                    return false;
                keys[currentNode].keyClass = keyClass;
            }
            Item item;
            item.lines.append(line);
            sections.last().items.append(item);
            continue;
        }
        return false;
    }
    return true;
}

// Parses the value starting on lines[index]; advances `index` over the
// continuation lines of hex data.
bool HiveFile::parseValue(const QList<QByteArray> &lines, qsizetype &index, qsizetype pos, Item &item, QString &name)
{
    const QByteArray &line = lines[index];
    item.lines.append(line);
    item.isValue = true;
    if (line[pos] == '@') {
        name.clear();
        ++pos;
    } else {
        pos = parseEscaped(line, pos + 1, '"', name);
        if (pos < 0)
            return false;
    }
    pos = skipBlanks(line, pos);
    if (pos >= line.size() || line[pos] != '=')
        return false;
    pos = skipBlanks(line, pos + 1);
    const QByteArray rest = line.mid(pos);

    auto quoted = [&](qsizetype from, quint32 type) {
        QString text;
        const qsizetype after = parseEscaped(line, from, '"', text);
        if (after < 0 || !onlyBlanksFrom(line, after))
            return false;
        item.type = type;
        if (type == 1) {
            item.decoded = true;
            item.text = text;
        }
        return true;
    };

    if (rest.startsWith('"'))
        return quoted(pos + 1, 1);
    if (rest.startsWith("str:\""))
        return quoted(pos + 5, 1);
    if (rest.startsWith("dword:")) {
        qsizetype p = pos + 6;
        quint32 value = 0;
        int digits = 0;
        while (p < line.size() && hexDigit(line[p]) >= 0) {
            value = value * 16 + quint32(hexDigit(line[p++]));
            if (++digits > 8)
                return false;
        }
        if (digits == 0 || !onlyBlanksFrom(line, p))
            return false;
        item.type = 4;
        item.decoded = true;
        item.dword = value;
        return true;
    }

    quint32 type = 0;
    qsizetype p = pos;
    bool isString = false;
    if (rest.startsWith("hex:")) {
        type = 3;
        p += 4;
    } else if (rest.startsWith("hex(") || rest.startsWith("str(")) {
        isString = rest.startsWith("str(");
        p += 4;
        int digits = 0;
        while (p < line.size() && hexDigit(line[p]) >= 0) {
            type = type * 16 + quint32(hexDigit(line[p++]));
            if (++digits > 8)
                return false;
        }
        if (digits == 0 || p + 1 >= line.size() || line[p] != ')' || line[p + 1] != ':')
            return false;
        p += 2;
    } else {
        return false;
    }
    if (isString) {
        if (p >= line.size() || line[p] != '"')
            return false;
        return quoted(p + 1, type);
    }

    // Hex data, possibly continued over several lines.
    item.type = type;
    QByteArray hex = line.mid(p);
    for (;;) {
        while (!hex.isEmpty() && isBlank(hex.back()))
            hex.chop(1);
        if (!hex.endsWith('\\'))
            break;
        hex.chop(1);
        if (index + 1 >= lines.size())
            return false;
        ++index;
        item.lines.append(lines[index]);
        hex += lines[index];
    }
    QByteArray bytes;
    if (!parseHexBytes(hex, bytes))
        return false;
    if (type == 1 && bytes.size() % 2 == 0) {
        // REG_SZ written as hex: UTF-16LE, up to the first terminator.
        QString text;
        for (qsizetype b = 0; b + 1 < bytes.size(); b += 2) {
            const char16_t ch = char16_t(quint8(bytes[b]) | (quint8(bytes[b + 1]) << 8));
            if (ch == 0)
                break;
            text += QChar(ch);
        }
        item.decoded = true;
        item.text = text;
    } else if (type == 4 && bytes.size() == 4) {
        item.decoded = true;
        item.dword = quint32(quint8(bytes[0])) | quint32(quint8(bytes[1])) << 8 | quint32(quint8(bytes[2])) << 16
                     | quint32(quint8(bytes[3])) << 24;
    }
    return true;
}

QByteArray HiveFile::serialize() const
{
    QByteArray out;
    bool firstLine = true;
    auto put = [&](const QByteArray &line) {
        if (!firstLine)
            out += '\n';
        out += line;
        firstLine = false;
    };
    for (const QByteArray &line : headerLines)
        put(line);
    for (const Section &section : sections) {
        put(section.header);
        for (const Item &item : section.items) {
            for (const QByteArray &line : item.lines)
                put(line);
        }
    }
    if (finalNewline)
        out += '\n';
    return out;
}

// Appends a section for `node`; Wine separates sections by a blank line.
int HiveFile::addSection(int node, const QString &keyClass)
{
    bool blankBefore = false;
    if (!sections.isEmpty() && !sections.last().items.isEmpty()) {
        const QByteArray &last = sections.last().items.last().lines.last();
        blankBefore = onlyBlanksFrom(last, 0);
    } else if (sections.isEmpty() && !headerLines.isEmpty()) {
        blankBefore = onlyBlanksFrom(headerLines.last(), 0);
    } else if (!sections.isEmpty()) {
        blankBefore = onlyBlanksFrom(sections.last().header, 0);
    }
    if (!blankBefore) {
        Item blank;
        blank.lines.append(eol());
        if (sections.isEmpty())
            headerLines.append(eol());
        else
            sections.last().items.append(blank);
    }

    const qint64 seconds = QDateTime::currentSecsSinceEpoch();
    const quint64 fileTime = quint64(seconds + 11644473600LL) * 10000000ULL;
    Section section;
    section.header = '[' + keys.pathText(node) + "] " + QByteArray::number(seconds) + eol();
    Item time;
    time.lines.append("#time=" + QByteArray::number(fileTime, 16) + eol());
    section.items.append(time);
    if (!keyClass.isEmpty()) {
        Item cls;
        cls.lines.append("#class=\"" + escape(keyClass, "\"") + '"' + eol());
        section.items.append(cls);
        keys[node].keyClass = keyClass;
    }
    sections.append(section);
    keys[node].section = int(sections.size()) - 1;
    return keys[node].section;
}

QByteArray HiveFile::valueLine(const QString &name, const RegValue &value) const
{
    QByteArray line = name.isEmpty() ? QByteArrayLiteral("@=") : '"' + escape(name, "\"") + "\"=";
    if (value.type == 4)
        line += "dword:" + QByteArray::number(value.dword, 16).rightJustified(8, '0');
    else
        line += '"' + escape(value.text, "\"") + '"';
    return line + eol();
}

void HiveFile::setValue(int node, const QString &name, const RegValue &value)
{
    Item item;
    item.isValue = true;
    item.type = value.type;
    item.decoded = true;
    item.text = value.type == 1 ? value.text : QString();
    item.dword = value.type == 4 ? value.dword : 0;
    item.lines.append(valueLine(name, value));

    HiveKeyTree::Node &key = keys[node];
    const QString folded = foldName(name);
    const auto it = key.values.constFind(folded);
    if (it != key.values.constEnd()) {
        sections[it->section].items[it->item] = item;
    } else {
        const int sectionIndex = key.section >= 0 ? key.section : addSection(node, QString());
        QList<Item> &items = sections[sectionIndex].items;
        // After the last line that is not blank, so the blank line before the
        // next section stays where it is.
        qsizetype at = items.size();
        while (at > 0 && !items[at - 1].isValue && onlyBlanksFrom(items[at - 1].lines.last(), 0))
            --at;
        items.insert(at, item);
        // Items that moved are blank lines; no value reference points at them.
        keys[node].values.insert(folded, HiveKeyTree::ValueRef{sectionIndex, int(at)});
    }
}
