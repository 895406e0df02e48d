#include "symbols/SymbolScheme.h"

#include <QSet>
#include <QtTest>

// The symbol alphabets (their order decides every symbol handed out), the
// double-symbol rule and the symbol settings after a style was read.
class TestSymbolScheme : public QObject {
    Q_OBJECT

private slots:
    void alphabets()
    {
        const QString &symbols = symbolAlphabet();
        QCOMPARE(symbols.size(), 89);
        QCOMPARE(blockLimit(), 89);
        QCOMPARE(prefixAlphabet().size(), 90);
        QCOMPARE(prefixAlphabet(), QString(u'.' + symbols));

        // Letters, then digits 1..9 and 0, then the punctuation in its order.
        QCOMPARE(symbols.left(26), QString("ABCDEFGHIJKLMNOPQRSTUVWXYZ"));
        QCOMPARE(symbols.mid(26, 26), QString("abcdefghijklmnopqrstuvwxyz"));
        QCOMPARE(symbols.mid(52, 10), QString("1234567890"));
        QCOMPARE(symbols.mid(62), QString("!@#$%^*()-_=+[]{}\\|;:',/?`~"));

        QCOMPARE(QSet<QChar>(symbols.begin(), symbols.end()).size(), 89);
        for (const QChar excluded : QString("&.\"<> "))
            QVERIFY2(!symbols.contains(excluded), qPrintable(QString(excluded)));
    }

    void doubleSymbol_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("valid");
        QTest::newRow("empty") << "" << true;
        QTest::newRow("full stop prefix") << ".A" << true;
        QTest::newRow("full stop second") << "A." << false;
        QTest::newRow("letters") << "aB" << true;
        QTest::newRow("punctuation") << "~!" << true;
        QTest::newRow("backslash and apostrophe") << "\\'" << true;
        QTest::newRow("one character") << "a" << false;
        QTest::newRow("three characters") << ".ab" << false;
        QTest::newRow("ampersand first") << "&a" << false;
        QTest::newRow("blank second") << ". " << false;
        QTest::newRow("quote second") << ".\"" << false;
        QTest::newRow("less-than first") << "<a" << false;
        QTest::newRow("non-ASCII letter") << QString("\u00e4a") << false;
        QTest::newRow("two full stops") << ".." << false;
    }

    void doubleSymbol()
    {
        QFETCH(QString, text);
        QFETCH(bool, valid);
        QCOMPARE(isValidDoubleSymbol(text), valid);
    }

    void refresh_data()
    {
        QTest::addColumn<bool>("strictConsistent");
        QTest::addColumn<bool>("syncConsistent");
        QTest::addColumn<QString>("commonPrefix");
        QTest::addColumn<bool>("strictSetting");
        QTest::addColumn<bool>("syncSetting");
        // Expected: strict checked/enabled, sync checked/enabled, list enabled, index.
        QTest::addColumn<bool>("strictChecked");
        QTest::addColumn<bool>("strictEnabled");
        QTest::addColumn<bool>("syncChecked");
        QTest::addColumn<bool>("syncEnabled");
        QTest::addColumn<bool>("listEnabled");
        QTest::addColumn<int>("index");

        // The settings start all on with index 7, so every "off" below is a change.
        QTest::newRow("prefixes differ: all off, index kept")
            << false << true << "." << true << true << false << false << false << false << false << 7;
        QTest::newRow("user setting off: strict enabled but cleared")
            << true << true << "." << false << true << false << true << false << false << false << 0;
        QTest::newRow("strict and sync, sync setting on")
            << true << true << "." << true << true << true << true << true << true << true << 0;
        QTest::newRow("strict and sync, sync setting off")
            << true << true << "a" << true << false << true << true << false << true << true << 27;
        QTest::newRow("strict only: sync cleared and disabled")
            << true << false << "~" << true << true << true << true << false << false << true << 89;
        QTest::newRow("prefix not in the list keeps the index")
            << true << true << "&" << true << true << true << true << true << true << true << 7;
        QTest::newRow("no block entries: empty prefix keeps the index")
            << true << true << "" << true << false << true << true << false << true << true << 7;
    }

    void refresh()
    {
        QFETCH(bool, strictConsistent);
        QFETCH(bool, syncConsistent);
        QFETCH(QString, commonPrefix);
        QFETCH(bool, strictSetting);
        QFETCH(bool, syncSetting);
        SymbolSettings symbols;
        symbols.strictPrefixChecked = symbols.strictPrefixEnabled = true;
        symbols.syncDoubleChecked = symbols.syncDoubleEnabled = true;
        symbols.prefixListEnabled = true;
        symbols.prefixIndex = 7;
        symbols.strictPrefixMode = true;
        symbols.syncDoubleMode = false;

        refreshSymbolSettings(symbols, strictConsistent, syncConsistent, commonPrefix, strictSetting, syncSetting);

        QTEST(symbols.strictPrefixChecked, "strictChecked");
        QTEST(symbols.strictPrefixEnabled, "strictEnabled");
        QTEST(symbols.syncDoubleChecked, "syncChecked");
        QTEST(symbols.syncDoubleEnabled, "syncEnabled");
        QTEST(symbols.prefixListEnabled, "listEnabled");
        QTEST(symbols.prefixIndex, "index");
        // The blockset's own modes are not the refresh's business.
        QCOMPARE(symbols.strictPrefixMode, true);
        QCOMPARE(symbols.syncDoubleMode, false);
    }
};

QTEST_APPLESS_MAIN(TestSymbolScheme)
#include "test_symbol_scheme.moc"
