#include "formats/ValueFormats.h"
#include "support/DataRows.h"

#include <QtTest>

// What the colour, percentage and position controls take when the style reader
// sets them, and the text they then show. A refused text leaves the control's
// former value (the caller keeps it), so every refusal here is a value lost
// from a style file written by hand.
class TestValueFormats : public QObject {
    Q_OBJECT

private slots:
    void accept_data()
    {
        // shown: null when refused.
        addColumns<char, QString, QString>("kind", "text", "shown");
        const auto add = [](char kind, const char *text, const char *shown) {
            QTest::addRow("%c %s", kind, text) << kind << QString(text) << (shown ? QString(shown) : QString());
        };
        add('c', " (10,20,30) ", "(10,20,30)");
        add('c', "(0,255,0)", "(0,255,0)");
        add('c', "(010,+1,-0)", "(10,1,0)");
        for (const char *refused : {"(10,20)", "(10,20,30,40)", "(10,20,256)", "(-1,20,30)", "10,20,30)", "(10,,30)",
                                    "(1.5,2,3)", "(10, 20,30)", "(99999999999999999999,1,2)", "()", "\t(1,2,3)"})
            add('c', refused, nullptr);
        add('%', " 100% ", "100%");
        add('%', "00%", "0%");
        add('%', "05%", "5%");
        for (const char *refused : {"0%", "101%", "-1%", "50", "50 %", "abc%", "1000000000000%"})
            add('%', refused, nullptr);
        add('p', " (045,-010) ", "(45,-10)");
        add('p', "(0,-90)", "(0,-90)");
        add('p', "(360,90)", "(360,90)");
        for (const char *refused : {"(361,0)", "(-1,0)", "(0,91)", "(0,-91)", "(45)", "(45,10,0)", "(45,-)"})
            add('p', refused, nullptr);
    }

    // The shown text is the accepted one; it is also what the parsed numbers format to.
    void accept()
    {
        QFETCH(char, kind);
        QFETCH(QString, text);
        QFETCH(QString, shown);
        std::optional<QString> result, formatted;
        if (kind == 'c') {
            result = acceptColor(text);
            if (const auto parts = parseColor(text))
                formatted = formatColor((*parts)[0], (*parts)[1], (*parts)[2]);
        } else if (kind == '%') {
            result = acceptPercentage(text);
            if (const auto percent = parsePercentage(text))
                formatted = formatPercentage(*percent);
        } else {
            result = acceptPosition(text);
            if (const auto parts = parsePosition(text))
                formatted = formatPosition((*parts)[0], (*parts)[1]);
        }
        QCOMPARE(result.has_value(), !shown.isNull());
        QCOMPARE(formatted, result);
        if (result)
            QCOMPARE(*result, shown);
    }
};

QTEST_APPLESS_MAIN(TestValueFormats)
#include "test_value_formats.moc"
