#include "formats/Parser_Version.h"

#include "storage/Cp1252.h"
#include "formats/Parser.h"

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

// The comment comes back as one line: normalising deleted its line breaks and
// tabs and closed up the blanks around "=". Id and size are Rover's concern.
QString readUpdate(Parser &parser)
{
    parser.normaliseBuffer();

    QByteArrayView tag;
    QByteArrayView word;
    while (parser.getNextTagView(tag)) {
        if (getNextWordView(tag, word) && nameEquals(word, "version"_L1))
            break;
    }
    parser.cutAt("</");
    const QString comment = parser.restText();
    parser.clear();
    return comment;
}
