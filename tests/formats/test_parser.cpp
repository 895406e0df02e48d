#include "common/Cp1252.h"
#include "formats/Parser.h"

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
        QTest::addColumn<QByteArray>("input");
        QTest::addColumn<QByteArray>("expected");
        QTest::newRow("line breaks and tabs are deleted, not turned into blanks")
            << QByteArray("a\r\nb\tc\nd\re") << QByteArray("abcde");
        QTest::newRow("blanks around equals") << QByteArray("name = \"x\"") << QByteArray("name=\"x\"");
        QTest::newRow("runs of blanks around equals") << QByteArray("a    =    b") << QByteArray("a=b");
        QTest::newRow("blanks elsewhere stay") << QByteArray("  a  b  ") << QByteArray("  a  b  ");
        QTest::newRow("line break inside the run") << QByteArray("a \r\n = \t b") << QByteArray("a=b");
        QTest::newRow("blanks between two equals") << QByteArray("a = = b") << QByteArray("a==b");
        QTest::newRow("equals at the ends") << QByteArray(" = x = ") << QByteArray("=x=");
        QTest::newRow("value split over two lines") << QByteArray("v=\"one\r\ntwo\"") << QByteArray("v=\"onetwo\"");
        QTest::newRow("empty") << QByteArray() << QByteArray();
        QTest::newRow("only removable characters") << QByteArray("\r\n\t\r\n") << QByteArray();
        QTest::newRow("high bytes untouched") << QByteArray("\x80 = \xff\xa0=\xa0") << QByteArray("\x80=\xff\xa0=\xa0");
    }

    void normalise()
    {
        QFETCH(QByteArray, input);
        QFETCH(QByteArray, expected);
        Parser parser;
        parser.setBuffer(input);
        parser.normaliseBuffer();
        QCOMPARE(parser.rest().toByteArray(), expected);
        QCOMPARE(normaliseByReplacing(input), expected);
    }

    void normaliseMatchesRepeatedReplacing()
    {
        // Random texts over the characters that matter, against the definition.
        QRandomGenerator random(1252);
        const char alphabet[] = {' ', ' ', ' ', '=', '=', '\r', '\n', '\t', 'a', '"'};
        for (int round = 0; round < 3000; ++round) {
            QByteArray text;
            const int length = random.bounded(0, 24);
            for (int i = 0; i < length; ++i)
                text += alphabet[random.bounded(int(sizeof alphabet))];
            Parser parser;
            parser.setBuffer(text);
            parser.normaliseBuffer();
            QCOMPARE(parser.rest().toByteArray(), normaliseByReplacing(text));
        }
    }

    // Long texts of tags, comments (also ones whose "<!--" or "-->" only forms
    // once line breaks are deleted) and runs of blanks: normalising and taking
    // tags must give exactly the tags of the text normalised by its definition.
    void normalisedTagsMatchDefinition_data()
    {
        QTest::addColumn<int>("seed");
        QTest::addColumn<bool>("lookAtTheRestHalfway");
        for (int seed = 1; seed <= 12; ++seed)
            QTest::addRow("seed %d", seed) << seed << (seed % 3 == 0);
    }

    void normalisedTagsMatchDefinition()
    {
        QFETCH(int, seed);
        QFETCH(bool, lookAtTheRestHalfway);
        QRandomGenerator random{quint32(seed)};
        const char filler[] = {' ', ' ', ' ', '=', '=', '\r', '\n', '\t', 'a', 'B', '"', '-', '!', '\xe9'};
        const auto fill = [&](QByteArray &text, int count) {
            for (int i = 0; i < count; ++i)
                text += filler[random.bounded(int(sizeof filler))];
        };
        QByteArray text;
        const qsizetype target = 100000 + random.bounded(50000);
        while (text.size() < target) {
            switch (random.bounded(6)) {
            case 0: text += "<!--"; fill(text, random.bounded(40)); text += "-->"; break;
            case 1: text += "<!\r\n--"; fill(text, random.bounded(10)); text += "-\r\n \t->"; break;
            case 2: fill(text, random.bounded(30)); break;
            case 3: text += QByteArray(random.bounded(1, 300), ' ') + "="; break;
            default: text += '<'; fill(text, random.bounded(60)); text += '>'; break;
            }
        }
        text += "<tail";

        Parser whole;
        whole.setBuffer(normaliseByReplacing(text));
        const QStringList expected = allTags(whole);
        QVERIFY(expected.size() > 500);

        Parser lazy;
        lazy.setBuffer(text);
        lazy.normaliseBuffer();
        QStringList got;
        QString tag;
        while (lazy.getNextTag(tag)) {
            got << tag;
            if (lookAtTheRestHalfway && got.size() == expected.size() / 2) {
                QVERIFY(!lazy.isEmpty());
                QVERIFY(lazy.rest().endsWith("<tail"));
                lazy.normaliseBuffer();
            }
        }
        QCOMPARE(got, expected);
        QCOMPARE(lazy.rest().toByteArray(), whole.rest().toByteArray());
    }

    void normaliseWorksOnWhatIsLeft()
    {
        Parser parser;
        parser.setBuffer("<a x = \"1\">\r\n<b y = \"2\">");
        QString tag;
        QVERIFY(parser.getNextTag(tag));
        QCOMPARE(tag, QString("a x = \"1\""));
        parser.normaliseBuffer();
        QCOMPARE(parser.restText(), QString("<b y=\"2\">"));
    }

    void normaliseDoesNotChangeTheCallersBytes()
    {
        const QByteArray original("a = b\r\n");
        Parser parser;
        parser.setBuffer(original);
        parser.normaliseBuffer();
        QCOMPARE(original, QByteArray("a = b\r\n"));
        QCOMPARE(parser.rest().toByteArray(), QByteArray("a=b"));
    }

    void tags_data()
    {
        QTest::addColumn<QByteArray>("buffer");
        QTest::addColumn<QStringList>("tags");
        QTest::addColumn<QByteArray>("left");
        QTest::newRow("style tag") << QByteArray("<style version=\"1.0\" name=\"x\">")
                                   << QStringList{"style version=\"1.0\" name=\"x\""} << QByteArray();
        QTest::newRow("text between tags dropped, trailing text kept")
            << QByteArray("lead <a> mid <b/>tail") << QStringList{"a", "b/"} << QByteArray("tail");
        QTest::newRow("tag text trimmed of blanks only") << QByteArray("<  a b  >") << QStringList{"a b"}
                                                          << QByteArray();
        QTest::newRow("comment first, its end is the first -->")
            << QByteArray("<!-- a > b --><block name=\"x\">") << QStringList{"", "block name=\"x\""}
            << QByteArray();
        QTest::newRow("comment after a tag") << QByteArray("<a><!-- c --> <b>") << QStringList{"a", "", "b"}
                                             << QByteArray();
        QTest::newRow("empty comment forms") << QByteArray("<!---->x<!-->y") << QStringList{"", ""}
                                             << QByteArray("y");
        QTest::newRow("comment inside a tag is tag text")
            << QByteArray("<a <!-- c -->") << QStringList{"a <!-- c --"} << QByteArray();
        QTest::newRow("no less-than") << QByteArray("just text > here") << QStringList{}
                                      << QByteArray("just text > here");
        QTest::newRow("unclosed tag keeps the buffer") << QByteArray("<a><open x=\"1\"") << QStringList{"a"}
                                                       << QByteArray("<open x=\"1\"");
        QTest::newRow("stray greater-than before the tag ends the loop")
            << QByteArray("<a> > <b>") << QStringList{"a"} << QByteArray(" > <b>");
        QTest::newRow("stray greater-than at the start") << QByteArray("> <b>") << QStringList{}
                                                         << QByteArray("> <b>");
        QTest::newRow("unclosed comment keeps the buffer") << QByteArray("<a> <!-- open <b>") << QStringList{"a"}
                                                           << QByteArray(" <!-- open <b>");
        QTest::newRow("comment end before the comment")
            << QByteArray("x --> <!-- c --><a>") << QStringList{} << QByteArray("x --> <!-- c --><a>");
        QTest::newRow("less-than inside a tag") << QByteArray("<a <b>c>") << QStringList{"a <b"}
                                                << QByteArray("c>");
        QTest::newRow("not quite a comment") << QByteArray("<!- x -><a>") << QStringList{"!- x -", "a"}
                                             << QByteArray();
        QTest::newRow("comment opener at the very end") << QByteArray("<a><!--") << QStringList{"a"}
                                                         << QByteArray("<!--");
        QTest::newRow("no-break spaces are not trimmed") << QByteArray("<\xa0" "a\xa0>")
                                                         << QStringList{u"\u00a0a\u00a0"_s} << QByteArray();
        QTest::newRow("empty tag") << QByteArray("<><  >") << QStringList{"", ""} << QByteArray();
    }

    void tags()
    {
        QFETCH(QByteArray, buffer);
        QFETCH(QStringList, tags);
        QFETCH(QByteArray, left);
        Parser parser;
        parser.setBuffer(buffer);
        QCOMPARE(allTags(parser), tags);
        QCOMPARE(parser.rest().toByteArray(), left);
        QCOMPARE(parser.isEmpty(), left.isEmpty());
        // A failed take leaves the buffer as it was, so a reader's loop ends.
        QString tag;
        QVERIFY(!parser.getNextTag(tag));
        QCOMPARE(parser.rest().toByteArray(), left);
    }

    void words_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("taken");
        QTest::addColumn<QString>("word");
        QTest::addColumn<QString>("left");
        QTest::newRow("name and attributes") << "style version=\"1\"" << true << "style" << "version=\"1\"";
        QTest::newRow("lower-cased, rest not trimmed") << "STYLE  Name=\"Abc\"" << true << "style"
                                                      << " Name=\"Abc\"";
        QTest::newRow("single word") << "/Style" << true << "/style" << "";
        QTest::newRow("empty") << "" << false << "" << "";
        QTest::newRow("leading blank gives an empty word") << " a" << true << "" << "a";
        QTest::newRow("non-ASCII capitals lower-cased") << "\u00c4RGER x" << true << "\u00e4rger" << "x";
    }

    void words()
    {
        QFETCH(QString, text);
        QFETCH(bool, taken);
        QFETCH(QString, word);
        QFETCH(QString, left);
        QString got;
        QCOMPARE(getNextWord(text, got), taken);
        QCOMPARE(got, word);
        QCOMPARE(text, left);
    }

    void attributes_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("pairs"); // name, value, name, value, ...
        QTest::addColumn<QString>("left");
        QTest::newRow("two attributes") << "version=\"1.0\" name=\"x\"" << QStringList{"version", "1.0", "name", "x"}
                                        << "";
        QTest::newRow("names lower-cased, values keep case") << "Name=\"Abc\"" << QStringList{"name", "Abc"} << "";
        QTest::newRow("leading blank stays in the name") << " name=\"x\" author=\"y\""
                                                         << QStringList{" name", "x", "author", "y"} << "";
        QTest::newRow("rest trimmed after each value") << "a=\"1\"    b=\"2\"   " << QStringList{"a", "1", "b", "2"}
                                                       << "";
        QTest::newRow("unquoted value ends the scan") << "a=\"1\" b=2 " << QStringList{"a", "1"} << "b=2";
        QTest::newRow("single quotes are not quotes") << "a='1'" << QStringList{} << "a='1'";
        QTest::newRow("unquoted value swallowed into the next name")
            << "a=2 b=\"1\" c=\"3\"" << QStringList{"a=2 b", "1", "c", "3"} << "";
        QTest::newRow("empty value") << "a=\"\" b=\"2\"" << QStringList{"a", "", "b", "2"} << "";
        QTest::newRow("nothing after the opening quote") << "a=\"" << QStringList{} << "a=\"";
        QTest::newRow("no closing quote") << "a=\"1\" b=\"open" << QStringList{"a", "1"} << "b=\"open";
        QTest::newRow("self-closing slash left over") << "x=\"1\"/" << QStringList{"x", "1"} << "/";
        QTest::newRow("blank inside a value kept") << "t=\" a b \"" << QStringList{"t", " a b "} << "";
        QTest::newRow("empty name") << "=\"v\"" << QStringList{"", "v"} << "";
    }

    void attributes()
    {
        QFETCH(QString, text);
        QFETCH(QStringList, pairs);
        QFETCH(QString, left);
        QStringList got;
        QString name;
        QString value;
        while (getNextAttribute(text, name, value))
            got << name << value;
        QCOMPARE(got, pairs);
        QCOMPARE(text, left);
    }

    // The allocation-free view functions the readers use must read exactly what
    // the text functions read.
    void viewsReadLikeTexts_data()
    {
        QTest::addColumn<QByteArray>("tag");
        QTest::newRow("plain") << QByteArray("style version=\"1.0\" name=\"x\"");
        QTest::newRow("capitals") << QByteArray("STYLE NAME=\"Abc\" AuThOr=\"q\"");
        QTest::newRow("two blanks") << QByteArray("style  name=\"x\" author=\"y\"");
        QTest::newRow("unquoted") << QByteArray("sky a=2 color=\"(1,2,3)\" b=\"3\" c=4");
        QTest::newRow("high bytes") << QByteArray("\xc4rger N\xc4ME=\"\xe9t\xe9 \x80\" \xdf=\"\x81\"");
        QTest::newRow("no attributes") << QByteArray("/style");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("open quote") << QByteArray("block name=\"x");
    }

    void viewsReadLikeTexts()
    {
        QFETCH(QByteArray, tag);
        Parser parser;
        parser.setBuffer("<" + tag + ">");
        QByteArrayView view;
        QVERIFY(parser.getNextTagView(view));
        Parser textParser;
        textParser.setBuffer("<" + tag + ">");
        QString text;
        QVERIFY(textParser.getNextTag(text));

        QString word;
        QByteArrayView wordView;
        const bool hasWord = getNextWord(text, word);
        QCOMPARE(getNextWordView(view, wordView), hasWord);
        QCOMPARE(lowerName(wordView), word);
        for (const char *known : {"style", "block", "/style", "sky"})
            QCOMPARE(nameEquals(wordView, QLatin1StringView(known)), word == QLatin1StringView(known));

        QString name, value;
        QByteArrayView nameView, valueView;
        for (;;) {
            const bool taken = getNextAttribute(text, name, value);
            QCOMPARE(getNextAttributeView(view, nameView, valueView), taken);
            if (!taken)
                break;
            QCOMPARE(lowerName(nameView), name);
            QCOMPARE(fromCp1252(valueView), value);
        }
    }

    // The worked examples readers rely on, through normalising and all.
    void readerExamples_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QString>("wanted");
        QTest::addColumn<QStringList>("pairs");
        QTest::newRow("capitals") << QByteArray("<STYLE Name=\"Abc\">") << "style" << QStringList{"name", "Abc"};
        QTest::newRow("blanks around equals")
            << QByteArray("<style  name = \"x\"  author =  \"y\">") << "style" << QStringList{" name", "x", "author", "y"};
        QTest::newRow("value over two lines") << QByteArray("<orb text=\"one\r\n\ttwo\">") << "orb"
                                              << QStringList{"text", "onetwo"};
        QTest::newRow("unquoted value reads nothing") << QByteArray("<sky color=(1,2,3)>") << "sky" << QStringList{};
        QTest::newRow("tag name split by a line break") << QByteArray("<sk\r\ny texture=\"a\">") << "sky"
                                                        << QStringList{"texture", "a"};
        QTest::newRow("after a comment") << QByteArray("<!-- <style name=\"no\"> --><style name=\"yes\">") << "style"
                                         << QStringList{"name", "yes"};
    }

    void readerExamples()
    {
        QFETCH(QByteArray, file);
        QFETCH(QString, wanted);
        QFETCH(QStringList, pairs);
        Parser parser;
        parser.setBuffer(file);
        parser.normaliseBuffer();
        QString tag, word, name, value;
        QStringList got;
        bool found = false;
        while (!found && parser.getNextTag(tag)) {
            if (!getNextWord(tag, word) || word != wanted)
                continue;
            found = true;
            while (getNextAttribute(tag, name, value))
                got << name << value;
        }
        QVERIFY(found);
        QCOMPARE(got, pairs);
    }

    void restHelpers()
    {
        Parser parser;
        parser.setBuffer("<a>one<BSP_TREE root=\"1\">two</x>");
        QVERIFY(!parser.skipTo("<bsp_tree"));
        QCOMPARE(parser.rest().toByteArray(), QByteArray("<a>one<BSP_TREE root=\"1\">two</x>"));
        QVERIFY(parser.skipTo("<BSP_TREE"));
        QCOMPARE(parser.rest().toByteArray(), QByteArray("<BSP_TREE root=\"1\">two</x>"));
        parser.cutAt("</");
        QCOMPARE(parser.restText(), QString("<BSP_TREE root=\"1\">two"));
        parser.cutAt("nothing");
        QCOMPARE(parser.restText(), QString("<BSP_TREE root=\"1\">two"));
        parser.clear();
        QVERIFY(parser.isEmpty());
        QString tag;
        QVERIFY(!parser.getNextTag(tag));
    }

    void windows1252Text()
    {
        Parser parser;
        parser.setBuffer("<a v=\"\x80\x81\x9f\xa0\xe9\xff\">");
        QString tag;
        QVERIFY(parser.getNextTag(tag));
        QCOMPARE(tag, u"a v=\"\u20ac\u0081\u0178\u00a0\u00e9\u00ff\""_s);
        parser.setBufferText(u"<b t=\"\u20ac\"/>"_s);
        QCOMPARE(parser.rest().toByteArray(), QByteArray("<b t=\"\x80\"/>"));
    }

    // Real block files run to megabytes: taking tags must not rescan or copy
    // what is left, or opening a blockset stalls.
    void manyTagsInOneLargeBuffer()
    {
        const int count = 200000;
        QByteArray file;
        file.reserve(count * 44);
        for (int i = 0; i < count; ++i)
            file += "\t\t<vertex ref=\"" + QByteArray::number(i) + "\" coords=\"(0.5,-1.25,3)\"/>\r\n";
        Parser parser;
        parser.setBuffer(file);
        parser.normaliseBuffer();
        QElapsedTimer timer;
        timer.start();
        QByteArrayView tag, word, name, value;
        int tags = 0;
        int last = -1;
        while (parser.getNextTagView(tag)) {
            ++tags;
            QVERIFY(getNextWordView(tag, word));
            QVERIFY(getNextAttributeView(tag, name, value));
            last = value.toByteArray().toInt();
        }
        QCOMPARE(tags, count);
        QCOMPARE(last, count - 1);
        QVERIFY(parser.isEmpty());
        QVERIFY2(timer.elapsed() < 20000, "taking tags is not linear in the buffer's size");
    }

    void setAttributeValue_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("tag");
        QTest::addColumn<QString>("attribute");
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("expected");
        QTest::newRow("renamed") << "<block name=\"Old\" type=\"sprite\">\r\n<vertices>" << "block" << "name" << "New"
                                 << "<block name=\"New\" type=\"sprite\">\r\n<vertices>";
        QTest::newRow("capitals found, case of the rest kept") << "<BLOCK TYPE=\"X\" NAME=\"Old\">" << "block"
                                                              << "name" << "New Name"
                                                              << "<BLOCK TYPE=\"X\" NAME=\"New Name\">";
        QTest::newRow("only the named tag") << "<part name=\"p\"/><block name=\"b\">" << "block" << "name" << "n"
                                            << "<part name=\"p\"/><block name=\"n\">";
        QTest::newRow("attribute searched from the tag on") << "name=\"a\" <block name=\"b\">" << "block" << "name"
                                                            << "c" << "name=\"a\" <block name=\"c\">";
        QTest::newRow("empty value") << "<block name=\"\">" << "block" << "name" << "x" << "<block name=\"x\">";
        QTest::newRow("to an empty value") << "<block name=\"abc\">" << "block" << "name" << "" << "<block name=\"\">";
        QTest::newRow("no such tag") << "<part name=\"p\">" << "block" << "name" << "x" << "<part name=\"p\">";
        QTest::newRow("no such attribute") << "<block type=\"t\">" << "block" << "name" << "x" << "<block type=\"t\">";
        QTest::newRow("blanks around equals not matched") << "<block name = \"a\">" << "block" << "name" << "x"
                                                          << "<block name = \"a\">";
        QTest::newRow("opening quote is the last character") << "<block name=\"" << "block" << "name" << "x"
                                                             << "<block name=\"";
        QTest::newRow("no closing quote") << "<block name=\"abc" << "block" << "name" << "x" << "<block name=\"abc";
        QTest::newRow("windows-1252 text kept") << u"<block name=\"M\u00e4uer\u20ac\"> \u00c9"_s << "block" << "name"
                                                << u"T\u00fcr"_s << u"<block name=\"T\u00fcr\"> \u00c9"_s;
    }

    void setAttributeValue()
    {
        QFETCH(QString, text);
        QFETCH(QString, tag);
        QFETCH(QString, attribute);
        QFETCH(QString, value);
        QFETCH(QString, expected);
        const std::optional<QString> result = ::setAttributeValue(text, tag, attribute, value);
        QVERIFY(result.has_value());
        QCOMPARE(*result, expected);
    }

    // Positions are 1-based 16-bit values: up to 32767 works, beyond fails as a
    // whole so that the caller never writes a half-changed file.
    void setAttributeValueLimit_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("fails");
        QTest::addColumn<QString>("expected");
        const QString tagAt32767 = QString(32766, u'x') + "<block>";
        QTest::newRow("tag at 32767, no attribute") << tagAt32767 << false << tagAt32767;
        QTest::newRow("tag at 32768") << QString(32767, u'x') + "<block name=\"a\">" << true << QString();
        const QString attributeMissing = "<block" + QString(40000, u' ') + ">";
        QTest::newRow("attribute not found in a long text") << attributeMissing << false << attributeMissing;
        QTest::newRow("attribute beyond 32767") << "<block" + QString(40000, u' ') + " name=\"a\">" << true
                                                << QString();
        // "<block name=\"" is 13 characters: the closing quote of a value of
        // n characters is at position 14 + n.
        QTest::newRow("closing quote at 32767") << "<block name=\"" + QString(32753, u'a') + "\">" << false
                                                << "<block name=\"new\">";
        QTest::newRow("closing quote at 32768") << "<block name=\"" + QString(32754, u'a') + "\">" << true
                                                << QString();
        QTest::newRow("text long after the value") << "<block name=\"a\">" + QString(100000, u'z') << false
                                                   << "<block name=\"new\">" + QString(100000, u'z');
    }

    void setAttributeValueLimit()
    {
        QFETCH(QString, text);
        QFETCH(bool, fails);
        QFETCH(QString, expected);
        const std::optional<QString> result = ::setAttributeValue(text, "block", "name", "new");
        QCOMPARE(!result.has_value(), fails);
        if (result)
            QCOMPARE(*result, expected);
    }
};

QTEST_APPLESS_MAIN(TestParser)
#include "test_parser.moc"
