// The tag tokenizer: every tag, its first word and its attributes, both the
// copying and the viewing forms.
#include "FuzzSupport.h"
#include "formats/Parser.h"

CUBRIX_FUZZ_ENTRY(fuzzTokenizer)
{
    Parser parser;
    parser.setBuffer(fuzzBytes(data, size));
    parser.normaliseBuffer();
    QString tag;
    QString word;
    QString name;
    QString value;
    for (int i = 0; i < 64 && parser.getNextTag(tag); ++i) {
        if (getNextWord(tag, word))
            while (getNextAttribute(tag, name, value)) {
            }
    }
    QByteArrayView view;
    QByteArrayView wordView;
    QByteArrayView nameView;
    QByteArrayView valueView;
    while (parser.getNextTagView(view)) {
        if (getNextWordView(view, wordView))
            while (getNextAttributeView(view, nameView, valueView))
                (void)nameEquals(nameView, QLatin1StringView("name"));
    }
    const QString text = QString::fromLatin1(fuzzBytes(data, size));
    (void)setAttributeValue(text, QStringLiteral("block"), QStringLiteral("name"), QStringLiteral("new_name"));
    return 0;
}
