#include "support/DataRows.h"
#include "support/FakeHost.h"
#include "symbols/RemapSymbols.h"
#include "symbols/StrictPrefix.h"
#include "symbols/SymbolScheme.h"

#include <QtTest>

using namespace Qt::StringLiterals;

// Remap All, Sync Double, the prefix change and the strict prefix check box.
class TestRemapSymbols : public QObject {
    Q_OBJECT

    static void addBlocks(FakeHost &host, int count)
    {
        for (int i = 0; i < count; ++i)
            host.blockset.blocks.append(BlockRow{QString::number(i) + u".block"_s, QString(), u"x"_s, u"#x"_s});
    }

private slots:
    void remapAll_data()
    {
        addColumns<int, bool, QString, QStringList>("count", "yes", "last", "messages"); // last: its single symbol
        const QStringList asked{u"Are you sure to remap all symbols?"_s};
        QTest::newRow("3 blocks") << 3 << true << u"C"_s << asked;
        QTest::newRow("53rd gets 1") << 53 << true << u"1"_s << asked;
        QTest::newRow("61st gets 9") << 61 << true << u"9"_s << asked;
        QTest::newRow("62nd gets 0") << 62 << true << u"0"_s << asked;
        QTest::newRow("89th gets the tilde") << 89 << true << u"~"_s << asked;
        QTest::newRow("90th gets nothing")
            << 90 << true << QString() << asked + QStringList{u"There are more than 89 blocks in the blockset!"_s};
        QTest::newRow("answered no") << 3 << false << u"x"_s << asked;
    }

    void remapAll()
    {
        QFETCH(int, count);
        QFETCH(bool, yes);
        QFETCH(QString, last);
        FakeHost host;
        addBlocks(host, count);
        host.scripted.answers = {yes ? PromptAnswer::Yes : PromptAnswer::No};
        QCOMPARE(remapAllSymbols(host, 2), yes); // prefix "B"
        QTEST(host.scripted.messageTexts(), "messages");
        QCOMPARE(host.blockset.blocks.last().symbol, last);
        const QString prefix = yes ? u"B"_s : u"#"_s;
        QCOMPARE(host.blockset.blocks.last().doubleSymbol, last.isEmpty() ? QString() : prefix + last);
        QCOMPARE(host.blockset.blocks.first().doubleSymbol, yes ? u"BA"_s : u"#x"_s);
        QCOMPARE(host.changed, yes);
        const SymbolSettings &symbols = host.blockset.symbols;
        QCOMPARE(symbols.blocksetStrictPrefix && symbols.blocksetSyncDouble && symbols.syncDoubleBoxChecked, yes);
        QCOMPARE(symbols.prefixIndex, yes ? 2 : 0);
    }

    void syncDoubleKeepsUndefined()
    {
        FakeHost host;
        host.settings().setBoolSetting(u"showWarnings"_s, false);
        addBlocks(host, 2);
        host.blockset.blocks[0].symbol.clear();
        QVERIFY(syncDoubleSymbols(host, 0));
        QCOMPARE(host.blockset.blocks[0].doubleSymbol, u"#x"_s);
        QCOMPARE(host.blockset.blocks[1].doubleSymbol, u".x"_s);
        QCOMPARE(host.scripted.messageTexts(), QStringList{u"There were undefined single character symbols!\r"
                                                           "Be sure to correct those entries manually."_s});
        QCOMPARE(host.scripted.messages[0].title, u"Undefined symbols"_s);
    }

    void remapPrefix_data()
    {
        // focused: the list had the focus before the choice; doubleSymbol: of the block that had "#x".
        addColumns<bool, bool, int, QString>("focused", "yes", "shown", "doubleSymbol");
        QTest::newRow("yes") << true << true << 3 << u"Cx"_s;
        QTest::newRow("no") << true << false << 0 << u"#x"_s;
        QTest::newRow("set by the program") << false << true << 3 << u"#x"_s;
    }

    void remapPrefix()
    {
        QFETCH(bool, focused);
        QFETCH(bool, yes);
        QFETCH(QString, doubleSymbol);
        FakeHost host;
        addBlocks(host, 2);
        host.blockset.blocks[1].doubleSymbol.clear();
        if (focused)
            host.scripted.answers = {yes ? PromptAnswer::Yes : PromptAnswer::No};
        std::optional<int> remembered;
        if (focused)
            remembered = 0;
        QTEST(::remapPrefix(host, remembered, 3), "shown");
        QCOMPARE(host.blockset.blocks[0].doubleSymbol, doubleSymbol);
        QCOMPARE(host.blockset.blocks[0].symbol, u"x"_s);
        QCOMPARE(host.blockset.blocks[1].doubleSymbol, QString());
        QCOMPARE(host.changed, doubleSymbol != u"#x"_s);
        QVERIFY(host.scripted.unexpected.isEmpty());
        QCOMPARE(host.scripted.messages.size(), focused ? 1 : 0);
    }

    void strictPrefixClick_data()
    {
        addColumns<bool, bool, bool, bool>("checked", "blocksetModes", "syncEnabled", "syncChecked");
        QTest::newRow("cleared") << false << true << false << false;
        QTest::newRow("ticked, blockset synced") << true << true << true << true;
        QTest::newRow("ticked, blockset not synced") << true << false << false << false;
    }

    void strictPrefixClick()
    {
        QFETCH(bool, checked);
        QFETCH(bool, blocksetModes);
        SymbolSettings symbols;
        symbols.blocksetStrictPrefix = symbols.blocksetSyncDouble = blocksetModes;
        symbols.syncDoubleBoxChecked = symbols.syncDoubleBoxEnabled = !checked;
        strictPrefixClicked(symbols, checked, true);
        QCOMPARE(symbols.prefixListEnabled, checked);
        QTEST(symbols.syncDoubleBoxEnabled, "syncEnabled");
        QTEST(symbols.syncDoubleBoxChecked, "syncChecked");
    }
};

QTEST_GUILESS_MAIN(TestRemapSymbols)
#include "test_remap_symbols.moc"
