#include "formats/Parser_Version.h"

#include "storage/Cp1252.h"

using namespace Qt::StringLiterals;

namespace {

// The comment keeps its own line breaks; a lone LF (as a text box may hand it
// over) becomes CR LF like every other line end of the file.
QString withCrLf(const QString &text)
{
    QString out;
    out.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] == u'\n' && (i == 0 || text[i - 1] != u'\r'))
            out += u'\r';
        out += text[i];
    }
    return out;
}

} // namespace

QByteArray writeUpdate(const QString &version, const QString &comment, qint32 size)
{
    const QString crlf = u"\r\n"_s;
    const QString text = u"<version id=\""_s + version + u"\" size=\""_s + QString::number(size) + u"\">"_s + crlf
                         + withCrLf(comment) + crlf + u"</version>"_s + crlf;
    return toCp1252(text);
}

QString readUpdate(QByteArrayView bytes)
{
    const QString text = fromCp1252(bytes);
    // The comment starts on the line after the version tag...
    qsizetype start = text.indexOf(u'\n');
    if (start < 0)
        return QString();
    ++start;
    // ...and ends before the last "</version>" line, as writeUpdate wrote it.
    qsizetype end = text.size();
    for (qsizetype at = text.lastIndexOf(u"</version>"_s, -1, Qt::CaseInsensitive); at >= start;
         at = text.lastIndexOf(u"</version>"_s, at - 1, Qt::CaseInsensitive)) {
        const qsizetype lineStart = text.lastIndexOf(u'\n', at - 1) + 1;
        if (text.mid(lineStart, at - lineStart).trimmed().isEmpty()) {
            end = lineStart;
            break;
        }
        if (at == 0)
            break;
    }
    QString comment = text.mid(start, end - start);
    // The line break before "</version>" belongs to the file, not to the comment.
    if (comment.endsWith(u"\r\n"_s))
        comment.chop(2);
    else if (comment.endsWith(u'\n'))
        comment.chop(1);
    // Line breaks come back as the text box has them; writeUpdate makes them CR LF again.
    return comment.replace(u"\r\n"_s, u"\n"_s);
}
