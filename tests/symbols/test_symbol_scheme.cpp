#include "support/DataRows.h"
#include "symbols/SymbolScheme.h"

#include <QtTest>

// The double-symbol rule and the symbol settings after a style was read.
class TestSymbolScheme : public QObject {
    Q_OBJECT

private slots:
    void doubleSymbol_data()
    {
        addColumns<QString, bool>("text", "valid");
        addRow("empty", "", true);
        addRow("full stop prefix", ".A", true);
        addRow("full stop second", "A.", false);
        addRow("last characters of the alphabet", "~`", true);
        addRow("one character", "a", false);
        addRow("three characters", ".ab", false);
        addRow("ampersand first", "&a", false);
        addRow("quote second", ".\"", false);
        addRow("non-ASCII letter", "\u00e4a", false);
    }

    void doubleSymbol()
    {
        QFETCH(QString, text);
        QTEST(isValidDoubleSymbol(text), "valid");
    }

    void refresh_data()
    {
        // boxes: strict prefix checked and enabled, sync double checked and
        // enabled, prefix list enabled; "x" on, "." off.
        addColumns<bool, bool, QString, bool, bool, QString, int>("strictConsistent", "syncConsistent", "commonPrefix",
                                                                  "strictSetting", "syncSetting", "boxes", "index");
        // The settings start all on with index 7, so every "off" below is a change.
        addRow("prefixes differ: all off, index kept", false, true, ".", true, true, ".....", 7);
        addRow("user setting off: strict enabled but cleared", true, true, ".", false, true, ".x...", 0);
        addRow("strict and sync, sync setting on", true, true, ".", true, true, "xxxxx", 0);
        addRow("strict and sync, sync setting off", true, true, "a", true, false, "xx.xx", 27);
        addRow("strict only: sync cleared and disabled", true, false, "~", true, true, "xx..x", 89);
        addRow("prefix not in the list keeps the index", true, true, "&", true, true, "xxxxx", 7);
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
        QString boxes;
        for (bool on : {symbols.strictPrefixBoxChecked, symbols.strictPrefixBoxEnabled, symbols.syncDoubleBoxChecked,
                        symbols.syncDoubleBoxEnabled, symbols.prefixListEnabled})
            boxes += on ? u'x' : u'.';
        QTEST(boxes, "boxes");
        QTEST(symbols.prefixIndex, "index");
        // The blockset's own modes are not the refresh's business.
        QVERIFY(symbols.blocksetStrictPrefix && !symbols.blocksetSyncDouble);
    }
};

QTEST_APPLESS_MAIN(TestSymbolScheme)
#include "test_symbol_scheme.moc"
