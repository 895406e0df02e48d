#include "symbols/SymbolScheme.h"

#include <QtTest>

// The symbol alphabets (their order decides every symbol handed out), the
// double-symbol rule and the symbol settings after a style was read.
class TestSymbolScheme : public QObject {
    Q_OBJECT

private slots:
    void alphabets()
    {
        // Letters, then digits 1..9 and 0, then the punctuation in its order;
        // no ampersand, full stop, quote, less-than, greater-than or blank.
        QCOMPARE(symbolAlphabet(), QString("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz1234567890"
                                           "!@#$%^*()-_=+[]{}\\|;:',/?`~"));
        QCOMPARE(blockLimit(), 89);
        QCOMPARE(prefixAlphabet(), QString(u'.' + symbolAlphabet()));
    }

    void doubleSymbol_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("valid");
        QTest::newRow("empty") << "" << true;
        QTest::newRow("full stop prefix") << ".A" << true;
        QTest::newRow("full stop second") << "A." << false;
        QTest::newRow("last characters of the alphabet") << "~`" << true;
        QTest::newRow("one character") << "a" << false;
        QTest::newRow("three characters") << ".ab" << false;
        QTest::newRow("ampersand first") << "&a" << false;
        QTest::newRow("quote second") << ".\"" << false;
        QTest::newRow("non-ASCII letter") << QString("\u00e4a") << false;
    }

    void doubleSymbol()
    {
        QFETCH(QString, text);
        QTEST(isValidDoubleSymbol(text), "valid");
    }

    void refresh_data()
    {
        QTest::addColumn<bool>("strictConsistent");
        QTest::addColumn<bool>("syncConsistent");
        QTest::addColumn<QString>("commonPrefix");
        QTest::addColumn<bool>("strictSetting");
        QTest::addColumn<bool>("syncSetting");
        for (const char *expected : {"strictChecked", "strictEnabled", "syncChecked", "syncEnabled", "listEnabled"})
            QTest::addColumn<bool>(expected);
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
    }

    void refresh()
    {
        QFETCH(bool, strictConsistent);
        QFETCH(bool, syncConsistent);
        QFETCH(QString, commonPrefix);
        QFETCH(bool, strictSetting);
        QFETCH(bool, syncSetting);
        SymbolSettings symbols{true, true, true, true, true, 7, true, false};
        refreshSymbolSettings(symbols, strictConsistent, syncConsistent, commonPrefix, strictSetting, syncSetting);
        QTEST(symbols.strictPrefixBoxChecked, "strictChecked");
        QTEST(symbols.strictPrefixBoxEnabled, "strictEnabled");
        QTEST(symbols.syncDoubleBoxChecked, "syncChecked");
        QTEST(symbols.syncDoubleBoxEnabled, "syncEnabled");
        QTEST(symbols.prefixListEnabled, "listEnabled");
        QTEST(symbols.prefixIndex, "index");
        // The blockset's own modes are not the refresh's business.
        QVERIFY(symbols.blocksetStrictPrefix && !symbols.blocksetSyncDouble);
    }
};

QTEST_APPLESS_MAIN(TestSymbolScheme)
#include "test_symbol_scheme.moc"
