#include "support/DataRows.h"
#include "support/FakeHost.h"
#include "symbols/RemapSymbols.h"
#include "symbols/StrictPrefix.h"
#include "symbols/SymbolDialogs.h"
#include "symbols/SymbolScheme.h"

#include <QtTest>

using namespace Qt::StringLiterals;
using Script = ScriptedPrompts::SymbolScript;

Q_DECLARE_METATYPE(ScriptedPrompts::SymbolScript)

// The symbol operations: the double-symbol rule and the symbol settings after a
// style was read; what the Add Block and Edit Symbols dialogs offer in the three
// symbol modes, their OK check of a typed double symbol, and what Edit Symbols
// writes back; Remap All, Sync Double, the prefix change and the strict prefix
// check box.
class TestSymbols : public QObject {
    Q_OBJECT

    enum Mode { Free, Strict, StrictSync };

    static BlocksetContent content(Mode mode, int prefixIndex, const QStringList &symbols)
    {
        BlocksetContent content;
        content.symbols.strictPrefixBoxChecked = mode != Free;
        content.symbols.syncDoubleBoxChecked = mode == StrictSync;
        content.symbols.prefixIndex = prefixIndex;
        for (const QString &pair : symbols) {
            const QStringList parts = pair.split(u' ');
            content.blocks.append(BlockRow{u"b%1.block"_s.arg(content.blocks.size()), {}, parts[0], parts.value(1)});
        }
        return content;
    }

    static void addBlocks(FakeHost &host, int count)
    {
        for (int i = 0; i < count; ++i)
            host.blockset.blocks.append(BlockRow{QString::number(i) + u".block"_s, QString(), u"x"_s, u"#x"_s});
    }

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

    void offered_data()
    {
        // rows: "single double" per block row; edited -1: Add Block; singles and
        // doubles: the first entries of lstSingleChars and lstDoubleChars; single and
        // doubleSymbol: what OK on the untouched dialog gives.
        addColumns<int, int, QStringList, int, QString, QString, bool, QString, QString>(
            "mode", "prefixIndex", "rows", "edited", "singles", "doubles", "doublesEnabled", "single", "doubleSymbol");
        const QStringList ab{"A .A", "B .B"};
        addRow("add, strict and sync: C follows A and B", int(StrictSync), 0, ab, -1, "CDE", "CDE", false, "C", ".C");
        addRow("add, strict: a character behind any prefix is taken", int(Strict), 2, QStringList{"x .A"}, -1, "ABC",
               "BCD", true, "A", "BB");
        addRow("add, free text: empty double", int(Free), 0, ab, -1, "CDE", "", false, "C", "");
        addRow("edit keeps its own symbols", int(StrictSync), 0, ab + QStringList{"C .C"}, 1, "BDE", "BDE", false, "B",
               ".B");
        addRow("edit, strict: own double character offered", int(Strict), 0, QStringList{"A .A", "B .Z"}, 1, "BCD",
               "BCD", true, "B", ".Z");
        addRow("edit, no single symbol: none stays chosen", int(StrictSync), 0, QStringList{" ", "A .A"}, 0, "BC", "BC",
               false, "", "");
        QStringList all;
        for (QChar c : symbolAlphabet())
            all << QString(c) + u" ."_s + c;
        addRow("add, every symbol used", int(StrictSync), 0, all, -1, "", "", false, "", "");
    }

    void offered()
    {
        QFETCH(int, mode);
        QFETCH(int, prefixIndex);
        QFETCH(QStringList, rows);
        QFETCH(int, edited);
        QFETCH(QString, singles);
        QFETCH(QString, doubles);
        ScriptedPrompts prompts;
        const BlocksetContent blockset = content(Mode(mode), prefixIndex, rows);
        const SymbolDialogSetup setup =
            edited < 0 ? addBlockSetup(prompts, blockset, u"new.block"_s) : editSymbolsSetup(prompts, blockset, edited);
        QCOMPARE(setup.caption,
                 edited < 0 ? u"Add symbols for new.block"_s : u"Edit symbols for b%1.block"_s.arg(edited));
        QCOMPARE(setup.singles.join(QString()).left(singles.size()), singles);
        QCOMPARE(setup.doubleChars.join(QString()).left(doubles.size()), doubles);
        QTEST(setup.strictPrefix && !setup.syncDouble, "doublesEnabled");
        const SymbolDialogAnswer answer = offeredSymbols(setup);
        QTEST(answer.single, "single");
        QTEST(answer.doubleSymbol, "doubleSymbol");
    }

    void typedDouble_data()
    {
        addColumns<QString, int, QString>("text", "edited", "message"); // message "" = accepted
        addRow("empty", "", -1, "");
        addRow("free", ".C", -1, "");
        addRow("invalid", "C.", -1, "Incorrect double character symbol!");
        addRow("used by another row", ".B", 0, "The double character symbol is already used!");
        addRow("the edited row's own", ".B", 1, "");
    }

    void typedDouble()
    {
        QFETCH(QString, text);
        QFETCH(int, edited);
        QFETCH(QString, message);
        ScriptedPrompts prompts;
        const BlocksetContent blockset = content(Free, 0, {u"A .A"_s, u"B .B"_s});
        QCOMPARE(checkTypedDouble(prompts, blockset.blocks, text, edited), message.isEmpty());
        QCOMPARE(prompts.messageTexts(), message.isEmpty() ? QStringList() : QStringList{message});
    }

    void editWritesOnlyChanges_data()
    {
        addColumns<Script, QString, bool>("script", "symbols", "changed"); // symbols: the row's after OK
        addRow("OK untouched", Script{}, "B .B", false);
        addRow("cancel", Script{Script::Cancel}, "B .B", false);
        addRow("double only", Script{Script::Choose, u"B"_s, u".Q"_s}, "B .Q", true);
        // A refused double keeps the dialog open; the next OK closes it.
        addRow("refused, then cleared", Script{Script::Choose, u"C"_s, u".A"_s}, "C ", true);
    }

    void editWritesOnlyChanges()
    {
        QFETCH(Script, script);
        FakeHost host;
        host.blockset = content(Free, 0, {u"A .A"_s, u"B .B"_s});
        host.scripted.symbolAnswers << script << Script{Script::Choose, u"C"_s, QString()};
        editSymbols(host, 1);
        QTEST(host.blockset.blocks[1].symbol + u' ' + host.blockset.blocks[1].doubleSymbol, "symbols");
        QTEST(host.changed, "changed");
    }

    void remapAll_data()
    {
        addColumns<int, bool, QString, QStringList>("count", "yes", "last", "messages"); // last: its single symbol
        const QStringList asked{u"Are you sure to remap all symbols?"_s};
        addRow("3 blocks", 3, true, u"C"_s, asked);
        addRow("53rd gets 1", 53, true, u"1"_s, asked);
        addRow("61st gets 9", 61, true, u"9"_s, asked);
        addRow("62nd gets 0", 62, true, u"0"_s, asked);
        addRow("89th gets the tilde", 89, true, u"~"_s, asked);
        addRow("90th gets nothing", 90, true, QString(),
               asked + QStringList{u"There are more than 89 blocks in the blockset!"_s});
        addRow("answered no", 3, false, u"x"_s, asked);
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
        addRow("yes", true, true, 3, u"Cx"_s);
        addRow("no", true, false, 0, u"#x"_s);
        addRow("set by the program", false, true, 3, u"#x"_s);
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
        // doubles: those of blocks "a" and "b"
        addColumns<bool, bool, QString, bool, bool>("checked", "blocksetModes", "doubles", "syncEnabled",
                                                    "syncChecked");
        addRow("cleared", false, true, u"#a#b"_s, false, false);
        addRow("ticked, blockset synced", true, true, u"#a!b"_s, true, true);
        addRow("ticked, opened in sync", true, false, u"#a#b"_s, true, true);
        addRow("ticked, opened not in sync", true, false, u"#a#c"_s, false, false);
    }

    void strictPrefixClick()
    {
        QFETCH(bool, checked);
        QFETCH(bool, blocksetModes);
        QFETCH(QString, doubles);
        QList<BlockRow> blocks(2);
        blocks[0].symbol = u"a"_s;
        blocks[1].symbol = u"b"_s;
        blocks[0].doubleSymbol = doubles.left(2);
        blocks[1].doubleSymbol = doubles.mid(2);
        SymbolSettings symbols;
        symbols.blocksetStrictPrefix = symbols.blocksetSyncDouble = blocksetModes;
        symbols.syncDoubleBoxChecked = symbols.syncDoubleBoxEnabled = !checked;
        strictPrefixClicked(symbols, blocks, checked, true);
        QCOMPARE(symbols.prefixListEnabled, checked);
        QTEST(symbols.syncDoubleBoxEnabled, "syncEnabled");
        QTEST(symbols.syncDoubleBoxChecked, "syncChecked");
    }
};

QTEST_GUILESS_MAIN(TestSymbols)
#include "test_symbols.moc"
