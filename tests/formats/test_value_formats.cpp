#include "formats/ValueFormats.h"

#include <QtTest>

// What the colour, percentage and position controls take when the style reader
// sets them, and the text they then show. A refused text leaves the control's
// former value (the caller keeps it), so every refusal here is a value lost
// from a style file written by hand.
class TestValueFormats : public QObject {
    Q_OBJECT

private:
    static void addRows(const QList<std::pair<const char *, const char *>> &rows)
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("shown"); // null: refused
        for (const auto &[text, shown] : rows)
            QTest::newRow(text) << QString::fromLatin1(text) << (shown ? QString::fromLatin1(shown) : QString());
    }

private slots:
    void color_data()
    {
        addRows({
            {"(10,20,30)", "(10,20,30)"},
            {" (10,20,30) ", "(10,20,30)"},
            {"(0,0,0)", "(0,0,0)"},
            {"(255,255,255)", "(255,255,255)"},
            {"(010,20,30)", "(10,20,30)"},
            {"(+1,-0,2)", "(1,0,2)"},
            {"(10,20)", nullptr},
            {"(10,20,30,40)", nullptr},
            {"(10,20,300)", nullptr},
            {"(10,20,256)", nullptr},
            {"(-1,20,30)", nullptr},
            {"10,20,30", nullptr},
            {"(10,20,30", nullptr},
            {"10,20,30)", nullptr},
            {"(10,,30)", nullptr},
            {"(a,b,c)", nullptr},
            {"(1.5,2,3)", nullptr},
            {"(10, 20,30)", nullptr},
            {"(-,1,2)", nullptr},
            {"(99999999999999999999,1,2)", nullptr},
            {"()", nullptr},
            {"(", nullptr},
            {"", nullptr},
            {"\t(1,2,3)", nullptr},
        });
    }

    void color()
    {
        QFETCH(QString, text);
        QFETCH(QString, shown);
        const std::optional<QString> result = acceptColor(text);
        QCOMPARE(result.has_value(), !shown.isNull());
        if (result) {
            QCOMPARE(*result, shown);
            const auto parts = parseColor(text);
            QVERIFY(parts);
            QCOMPARE(formatColor((*parts)[0], (*parts)[1], (*parts)[2]), shown);
        }
    }

    void percentage_data()
    {
        addRows({
            {"80%", "80%"},
            {"100%", "100%"},
            {"0%", nullptr},
            {"00%", "0%"},
            {"05%", "5%"},
            {" 50% ", "50%"},
            {"5%", nullptr},
            {"101%", nullptr},
            {"-1%", nullptr},
            {"-0%", "0%"},
            {"+5%", "5%"},
            {"50", nullptr},
            {"50 %", nullptr},
            {"%%%", nullptr},
            {"abc%", nullptr},
            {"%", nullptr},
            {"", nullptr},
            {"1000000000000%", nullptr},
        });
    }

    void percentage()
    {
        QFETCH(QString, text);
        QFETCH(QString, shown);
        const std::optional<QString> result = acceptPercentage(text);
        QCOMPARE(result.has_value(), !shown.isNull());
        if (result) {
            QCOMPARE(*result, shown);
            QCOMPARE(formatPercentage(*parsePercentage(text)), shown);
        }
    }

    void position_data()
    {
        addRows({
            {"(45,-10)", "(45,-10)"},
            {" (45,30) ", "(45,30)"},
            {"(0,-90)", "(0,-90)"},
            {"(360,90)", "(360,90)"},
            {"(045,-010)", "(45,-10)"},
            {"(361,0)", nullptr},
            {"(-1,0)", nullptr},
            {"(0,91)", nullptr},
            {"(0,-91)", nullptr},
            {"(45)", nullptr},
            {"(45,10,0)", nullptr},
            {"45,10", nullptr},
            {"(45,-)", nullptr},
            {"(,)", nullptr},
            {"", nullptr},
        });
    }

    void position()
    {
        QFETCH(QString, text);
        QFETCH(QString, shown);
        const std::optional<QString> result = acceptPosition(text);
        QCOMPARE(result.has_value(), !shown.isNull());
        if (result) {
            QCOMPARE(*result, shown);
            const auto parts = parsePosition(text);
            QVERIFY(parts);
            QCOMPARE(formatPosition((*parts)[0], (*parts)[1]), shown);
        }
    }
};

QTEST_APPLESS_MAIN(TestValueFormats)
#include "test_value_formats.moc"
