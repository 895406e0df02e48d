#include "formats/Parser.h"
#include "storage/Cp1252.h"
#include "support/DataRows.h"

#include <QRandomGenerator>
#include <QtTest>

using namespace Qt::StringLiterals;

// The tag tokenizer: normalising, taking tags, words and attributes, and the
// in-place rewrite of one attribute value.
class TestParser : public QObject {
    Q_OBJECT

private:
    static QStringList allTags(Parser &parser)
    {
        QStringList tags;
        QString tag;
        while (parser.getNextTag(tag))
            tags << tag;
        return tags;
    }

    // The definition the single pass must match: delete CR, LF, tab, then
    // replace " =" and "= " until none is left.
    static QByteArray normaliseByReplacing(QByteArray text)
    {
        text.replace("\r", "").replace("\n", "").replace("\t", "");
        while (text.contains(" ="))
            text.replace(" =", "=");
        while (text.contains("= "))
            text.replace("= ", "=");
        return text;
    }

private slots:
    void normalise_data()
    {
        addColumns<QByteArray, QByteArray>("input", "expected");
        addRow("line breaks and tabs deleted, not turned into blanks", QByteArray("a\r\nb\tc\nd\re"),
               QByteArray("abcde"));
        addRow("blanks around equals", QByteArray("name = \"x\""), QByteArray("name=\"x\""));
        addRow("run broken by a line break", QByteArray("a \r\n = \t b"), QByteArray("a=b"));
        addRow("blanks elsewhere stay", QByteArray("  a  b  "), QByteArray("  a  b  "));
        addRow("value split over two lines", QByteArray("v=\"one\r\ntwo\""), QByteArray("v=\"onetwo\""));
        addRow("high bytes untouched", QByteArray("\x80 = \xff\xa0=\xa0"), QByteArray("\x80=\xff\xa0=\xa0"));
        // Random texts over the characters that matter, against the definition.
        QRandomGenerator random(1252);
        const char alphabet[] = {' ', ' ', ' ', '=', '=', '\r', '\n', '\t', 'a', '"'};
        for (int row = 0; row < 40; ++row) {
            QByteArray text;
            for (int i = random.bounded(0, 300); i > 0; --i)
                text += alphabet[random.bounded(int(sizeof alphabet))];
            QTest::addRow("random %d", row) << text << normaliseByReplacing(text);
        }
    }

    void normalise()
    {
        QFETCH(QByteArray, input);
        QFETCH(QByteArray, expected);
        const QByteArray original(input.constData(), input.size()); // a deep copy
        Parser parser;
        parser.setBuffer(input);
        parser.normaliseBuffer();
        QCOMPARE(parser.rest().toByteArray(), expected);
        QCOMPARE(input, original); // the caller's bytes, shared with the buffer, stay
        QCOMPARE(normaliseByReplacing(input), expected);
    }

    void tags_data()
    {
        addColumns<QByteArray, QStringList, QByteArray>("buffer", "tags", "left");
        const auto add = [](const char *name, const QByteArray &buffer, const QStringList &tags, const char *left) {
            addRow(name, buffer, tags, QByteArray(left));
        };
        add("style tag", "<style version=\"1.0\" name=\"x\">", {"style version=\"1.0\" name=\"x\""}, "");
        add("text between tags dropped, trailing text kept", "lead <a> mid <b/>tail", {"a", "b/"}, "tail");
        add("trimmed of blanks, not of no-break spaces", "<  a b \xa0>", {u"a b \u00a0"_s}, "");
        add("comment first, its end is the first -->", "<!-- a > b --><block name=\"x\">", {"", "block name=\"x\""},
            "");
        add("comment inside a tag is tag text", "<a <!-- c -->", {"a <!-- c --"}, "");
        add("no less-than", "just text > here", {}, "just text > here");
        add("unclosed tag keeps the buffer", "<a><open x=\"1\"", {"a"}, "<open x=\"1\"");
        add("stray greater-than ends the loop", "<a> > <b>", {"a"}, " > <b>");
        add("unclosed comment keeps the buffer", "<a> <!-- open <b>", {"a"}, " <!-- open <b>");
        add("comment end before the comment", "x --> <!-- c --><a>", {}, "x --> <!-- c --><a>");
    }

    void tags()
    {
        QFETCH(QByteArray, buffer);
        QFETCH(QByteArray, left);
        Parser parser;
        parser.setBuffer(buffer);
        QTEST(allTags(parser), "tags");
        QCOMPARE(parser.rest().toByteArray(), left);
        QCOMPARE(parser.isEmpty(), left.isEmpty());
        // A failed take leaves the buffer as it was, so a reader's loop ends.
        QString tag;
        QVERIFY(!parser.getNextTag(tag));
        QCOMPARE(parser.rest().toByteArray(), left);
    }

    void words_data()
    {
        addColumns<QString, bool, QString, QString>("text", "taken", "word", "left");
        addRow("name and attributes", "style version=\"1\"", true, "style", "version=\"1\"");
        addRow("lower-cased, rest not trimmed", "STYLE  Name=\"Abc\"", true, "style", " Name=\"Abc\"");
        addRow("empty", "", false, "", "");
        addRow("non-ASCII capitals lower-cased", "\u00c4RGER x", true, "\u00e4rger", "x");
    }

    // Each table row goes through the text functions and through the view
    // functions the readers use; both must read the same.
    void words()
    {
        QFETCH(QString, text);
        const QByteArray bytes = toCp1252(text);
        QByteArrayView view(bytes), wordView;
        QString word;
        const bool taken = getNextWord(text, word);
        QCOMPARE(getNextWordView(view, wordView), taken);
        QTEST(taken, "taken");
        QTEST(word, "word");
        QTEST(text, "left");
        QCOMPARE(lowerName(wordView), word);
        QCOMPARE(nameEquals(wordView, "style"_L1), word == "style"_L1);
        QCOMPARE(fromCp1252(view), text);
    }

    void attributes_data()
    {
        addColumns<QString, QStringList, QString>("text", "pairs", "left"); // pairs: name, value, name, value, ...
        addRow("two attributes", "version=\"1.0\" name=\"x\"", QStringList{"version", "1.0", "name", "x"}, "");
        addRow("names lower-cased, values keep case", "Name=\"Abc\"", QStringList{"name", "Abc"}, "");
        addRow("leading blank stays in the name", " name=\"x\" author=\"y\"", QStringList{" name", "x", "author", "y"},
               "");
        addRow("unquoted value ends the scan", "a=\"1\" b=2 ", QStringList{"a", "1"}, "b=2");
        addRow("single quotes are not quotes", "a='1'", QStringList{}, "a='1'");
        addRow("unquoted value swallowed into the next name", "a=2 b=\"1\" c=\"3\"",
               QStringList{"a=2 b", "1", "c", "3"}, "");
        addRow("empty value, blanks inside kept", "a=\"\" t=\" a b \"", QStringList{"a", "", "t", " a b "}, "");
        addRow("no closing quote", "a=\"1\" b=\"open", QStringList{"a", "1"}, "b=\"open");
        addRow("Windows-1252 name and value", u"N\u00c4ME=\"\u00e9t\u00e9 \u20ac\u0081\""_s,
               QStringList{u"n\u00e4me"_s, u"\u00e9t\u00e9 \u20ac\u0081"_s}, "");
    }

    void attributes()
    {
        QFETCH(QString, text);
        const QByteArray bytes = toCp1252(text);
        QByteArrayView view(bytes), nameView, valueView;
        QStringList got, gotFromViews;
        QString name, value;
        while (getNextAttribute(text, name, value))
            got << name << value;
        while (getNextAttributeView(view, nameView, valueView))
            gotFromViews << lowerName(nameView) << fromCp1252(valueView);
        QTEST(got, "pairs");
        QCOMPARE(gotFromViews, got);
        QTEST(text, "left");
        QCOMPARE(fromCp1252(view), text);
    }

    // Tag "block", attribute "name", new value "new". Positions are 1-based
    // 16-bit values: up to 32767 works, beyond fails as a whole so that the
    // caller never writes a half-changed file.
    void setAttributeValue_data()
    {
        addColumns<QString, bool, QString>("text", "fails", "expected");
        const auto same = [](const char *name, const QString &text) { addRow(name, text, false, text); };
        addRow("renamed", "<block name=\"Old\" type=\"sprite\">\r\n<vertices>", false,
               "<block name=\"new\" type=\"sprite\">\r\n<vertices>");
        addRow("capitals found, case of the rest kept", "<BLOCK TYPE=\"X\" NAME=\"Old\">", false,
               "<BLOCK TYPE=\"X\" NAME=\"new\">");
        addRow("only the named tag, searched from it on", "name=\"a\" <part name=\"p\"/><block name=\"b\">", false,
               "name=\"a\" <part name=\"p\"/><block name=\"new\">");
        same("no such tag", "<part name=\"p\">");
        same("no such attribute", "<block type=\"t\">");
        same("blanks around equals not matched", "<block name = \"a\">");
        same("opening quote is the last character", "<block name=\"");
        same("tag at 32767, no attribute", QString(32766, u'x') + "<block>");
        addRow("tag at 32768", QString(32767, u'x') + "<block name=\"a\">", true, QString());
        addRow("attribute beyond 32767", "<block" + QString(40000, u' ') + " name=\"a\">", true, QString());
        // "<block name=\"" is 13 characters: the closing quote of a value of
        // n characters is at position 14 + n.
        addRow("closing quote at 32767", "<block name=\"" + QString(32753, u'a') + "\">", false,
               "<block name=\"new\">");
        addRow("closing quote at 32768", "<block name=\"" + QString(32754, u'a') + "\">", true, QString());
        addRow("text long after the value", "<block name=\"a\">" + QString(100000, u'z'), false,
               "<block name=\"new\">" + QString(100000, u'z'));
    }

    void setAttributeValue()
    {
        QFETCH(QString, text);
        QFETCH(bool, fails);
        const std::optional<QString> result = ::setAttributeValue(text, "block", "name", "new");
        QCOMPARE(!result.has_value(), fails);
        if (result)
            QTEST(*result, "expected");
    }
};

QTEST_APPLESS_MAIN(TestParser)
#include "test_parser.moc"
