#include "common/HiveRegistry.h"

#include "storage/Cp1252.h"
#include "storage/PlatformFile.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QList>
#include <QSaveFile>
#include <QStringDecoder>

#include <optional>
#include <vector>

#include <cerrno>
#include <cstring>


using namespace Qt::StringLiterals;

// The file is kept in memory as the lines it was read from. A key's section is
// its header line followed by items; an item is one line, or for a value one or
// more lines (hex data may continue over several lines with a trailing "\").
// Only a value that the program sets is written anew; every other line goes back
// to the file byte for byte, in its place. Keys are found through a tree of key
// names (case-folded), so a key that only exists as the parent of another one
// (Wine writes no section for it) exists here too.

namespace {

constexpr char kSignature[] = "WINE REGISTRY Version 2";

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

// Reads a Wine-escaped string from `line` at `pos` up to the unescaped `endChar`.
// Returns the position after `endChar`, or -1 when the line ends first.
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

// Escapes text the way Wine writes it: "\" and the characters of `special` get a
// backslash, control characters C escapes or octal, characters above 127 "\x".
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

// "01,02,ff" (blanks allowed around the bytes) into bytes; false when malformed.
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

// A key path given by a caller: names separated by "\", none of them empty.
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

using PlatformFile::FileStamp;

FileStamp stampOf(const QString &path)
{
    return PlatformFile::fileStamp(PlatformFile::encodeName(path));
}

} // namespace

struct HiveRegistry::Impl {
    enum class State { Empty, Loaded, Broken };

    struct Item {
        QList<QByteArray> lines;
        bool isValue = false;
        quint32 type = 0;
        bool decoded = false; // text / dword hold the data (REG_SZ, REG_DWORD)
        QString text;
        quint32 dword = 0;
    };
    struct Section {
        QByteArray header;
        QList<Item> items;
    };
    struct ValueRef {
        int section = -1;
        int item = -1;
    };
    struct Node {
        QString name; // as first written
        int parent = -1;
        QHash<QString, int> children;    // folded name -> node
        int section = -1;                // first section of this key, -1 when only implied
        QHash<QString, ValueRef> values; // folded value name -> where it was read last
        QString keyClass;
    };

    QString path;
    bool readOnly = false;
    bool stampValid = false;
    FileStamp stamp;
    State state = State::Empty;

    QList<QByteArray> headerLines;
    QList<Section> sections;
    std::vector<Node> nodes;
    bool crlf = false;
    bool finalNewline = true;

    void clear()
    {
        headerLines.clear();
        sections.clear();
        nodes.clear();
        nodes.push_back(Node());
        crlf = false;
        finalNewline = true;
    }

    void startEmpty()
    {
        clear();
        state = State::Empty;
        headerLines = {QByteArray(kSignature), QByteArrayLiteral(";; All keys relative to \\\\Machine"), QByteArray(),
                       QByteArrayLiteral("#arch=win32")};
    }

    void markBroken()
    {
        clear();
        state = State::Broken;
    }

    // Re-reads the file when it is not the one read last time.
    void refresh()
    {
        const FileStamp now = stampOf(path);
        if (stampValid && now == stamp)
            return;
        stamp = now;
        stampValid = true;
        load(now);
    }

    void load(const FileStamp &now)
    {
        if (!now.exists) {
            // A missing file is an empty registry; one that cannot even be looked
            // at (a folder we may not enter) is not.
            if (now.missing)
                startEmpty();
            else
                markBroken();
            return;
        }
        QFile file(path);
        if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly)) {
            markBroken();
            return;
        }
        const QByteArray data = file.readAll();
        if (file.error() != QFileDevice::NoError) {
            markBroken();
            return;
        }
        if (data.isEmpty()) {
            // Nothing to lose: an empty file is taken as an empty registry.
            startEmpty();
            return;
        }
        if (!parse(data))
            markBroken();
        else
            state = State::Loaded;
    }

    int childNode(int parent, const QString &name, bool create)
    {
        const QString folded = foldName(name);
        const auto it = nodes[parent].children.constFind(folded);
        if (it != nodes[parent].children.constEnd())
            return it.value();
        if (!create)
            return -1;
        Node node;
        node.name = name;
        node.parent = parent;
        nodes.push_back(node);
        const int index = int(nodes.size()) - 1;
        nodes[parent].children.insert(folded, index);
        return index;
    }

    int findNode(const QStringList &names)
    {
        int node = 0;
        for (const QString &name : names) {
            node = childNode(node, name, false);
            if (node < 0)
                return -1;
        }
        return node;
    }

    bool parse(const QByteArray &data)
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
                        node = childNode(node, name, true);
                    }
                }
                Section section;
                section.header = line;
                sections.append(section);
                if (nodes[node].section < 0)
                    nodes[node].section = int(sections.size()) - 1;
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
                nodes[currentNode].values.insert(foldName(name),
                                                 ValueRef{int(sections.size()) - 1, int(section.items.size()) - 1});
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
                    nodes[currentNode].keyClass = keyClass;
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
    bool parseValue(const QList<QByteArray> &lines, qsizetype &index, qsizetype pos, Item &item, QString &name)
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

    QByteArray eol() const { return crlf ? QByteArrayLiteral("\r") : QByteArray(); }

    QByteArray serialize() const
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

    bool save()
    {
        const QByteArray bytes = serialize();
        const QFileInfo info(path);
        if (!QDir().mkpath(info.absolutePath()))
            return false;
        QSaveFile file(path);
        if (!file.open(QIODevice::WriteOnly))
            return false;
        if (file.write(bytes) != bytes.size()) {
            file.cancelWriting();
            return false;
        }
        if (!file.commit())
            return false;
        state = State::Loaded;
        stamp = stampOf(path);
        stampValid = true;
        return true;
    }

    // After a failed write the model no longer matches the file: read it again.
    bool saveOrForget()
    {
        if (save())
            return true;
        stampValid = false;
        return false;
    }

    QByteArray keyPathText(int node) const
    {
        QList<int> chain;
        for (int n = node; n > 0; n = nodes[n].parent)
            chain.prepend(n);
        QByteArray text;
        for (int n : chain) {
            if (!text.isEmpty())
                text += "\\\\";
            text += escape(nodes[n].name, "[]");
        }
        return text;
    }

    // Appends a section for `node`; Wine separates sections by a blank line.
    int addSection(int node, const QString &keyClass)
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
        section.header = '[' + keyPathText(node) + "] " + QByteArray::number(seconds) + eol();
        Item time;
        time.lines.append("#time=" + QByteArray::number(fileTime, 16) + eol());
        section.items.append(time);
        if (!keyClass.isEmpty()) {
            Item cls;
            cls.lines.append("#class=\"" + escape(keyClass, "\"") + '"' + eol());
            section.items.append(cls);
            nodes[node].keyClass = keyClass;
        }
        sections.append(section);
        nodes[node].section = int(sections.size()) - 1;
        return nodes[node].section;
    }

    QByteArray valueLine(const QString &name, const RegValue &value) const
    {
        QByteArray line = name.isEmpty() ? QByteArrayLiteral("@=") : '"' + escape(name, "\"") + "\"=";
        if (value.type == 4)
            line += "dword:" + QByteArray::number(value.dword, 16).rightJustified(8, '0');
        else
            line += '"' + escape(value.text, "\"") + '"';
        return line + eol();
    }
};

HiveRegistry::HiveRegistry(const QString &path, bool readOnly) : d(std::make_unique<Impl>())
{
    d->path = path;
    d->readOnly = readOnly;
    d->startEmpty();
}

HiveRegistry::~HiveRegistry() = default;

bool HiveRegistry::regKeyExists(RegRoot, const QString &path)
{
    d->refresh();
    if (d->state == Impl::State::Broken)
        return false;
    const auto names = splitKeyPath(path);
    return names && d->findNode(*names) >= 0;
}

bool HiveRegistry::regQueryValue(RegRoot, const QString &path, const QString &name, RegValue &value)
{
    d->refresh();
    if (d->state == Impl::State::Broken)
        return false;
    const auto names = splitKeyPath(path);
    if (!names)
        return false;
    const int node = d->findNode(*names);
    if (node < 0)
        return false;
    const auto it = d->nodes[node].values.constFind(foldName(name));
    if (it == d->nodes[node].values.constEnd())
        return false;
    const Impl::Item &item = d->sections[it->section].items[it->item];
    if (item.type != 1 && item.type != 4)
        return true; // other types are reported as read, with nothing taken from them
    if (!item.decoded)
        return false; // REG_SZ / REG_DWORD data of the wrong shape cannot be read
    value.type = item.type;
    if (item.type == 1)
        value.text = item.text;
    else
        value.dword = item.dword;
    return true;
}

bool HiveRegistry::regCreateKey(RegRoot, const QString &path, const QString &keyClass)
{
    d->refresh();
    if (d->readOnly || d->state == Impl::State::Broken)
        return false;
    const auto names = splitKeyPath(path);
    if (!names || names->isEmpty() || d->findNode(*names) >= 0)
        return false;
    int node = 0;
    for (const QString &name : *names)
        node = d->childNode(node, name, true);
    d->addSection(node, keyClass);
    return d->saveOrForget();
}

bool HiveRegistry::regSetValue(RegRoot, const QString &path, const QString &name, const RegValue &value)
{
    d->refresh();
    if (d->readOnly || d->state == Impl::State::Broken)
        return false;
    const auto names = splitKeyPath(path);
    if (!names)
        return false;
    const int node = d->findNode(*names);
    if (node < 0)
        return false;
    if (value.type != 1 && value.type != 4)
        return true; // nothing to write for other types
    if (node == 0 && d->nodes[0].section < 0)
        return false; // values directly under the root are not kept

    Impl::Item item;
    item.isValue = true;
    item.type = value.type;
    item.decoded = true;
    item.text = value.type == 1 ? value.text : QString();
    item.dword = value.type == 4 ? value.dword : 0;
    item.lines.append(d->valueLine(name, value));

    Impl::Node &key = d->nodes[node];
    const QString folded = foldName(name);
    const auto it = key.values.constFind(folded);
    if (it != key.values.constEnd()) {
        d->sections[it->section].items[it->item] = item;
    } else {
        const int sectionIndex = key.section >= 0 ? key.section : d->addSection(node, QString());
        QList<Impl::Item> &items = d->sections[sectionIndex].items;
        // After the last line that is not blank, so the blank line before the
        // next section stays where it is.
        qsizetype at = items.size();
        while (at > 0 && !items[at - 1].isValue && onlyBlanksFrom(items[at - 1].lines.last(), 0))
            --at;
        items.insert(at, item);
        // Items that moved are blank lines; no value reference points at them.
        d->nodes[node].values.insert(folded, Impl::ValueRef{sectionIndex, int(at)});
    }
    return d->saveOrForget();
}

QString HiveRegistry::keyClass(const QString &path)
{
    d->refresh();
    if (d->state == Impl::State::Broken)
        return QString();
    const auto names = splitKeyPath(path);
    if (!names)
        return QString();
    const int node = d->findNode(*names);
    return node < 0 ? QString() : d->nodes[node].keyClass;
}
