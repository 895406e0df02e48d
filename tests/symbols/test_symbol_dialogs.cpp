#include "support/DataRows.h"
#include "support/FakeHost.h"
#include "symbols/SymbolDialogs.h"
#include "symbols/SymbolScheme.h"

#include <QtTest>

using namespace Qt::StringLiterals;
using Script = ScriptedPrompts::SymbolScript;

// What the Add Block and Edit Symbols dialogs offer in the three symbol modes,
// their OK check of a typed double symbol, and what Edit Symbols writes back.
class TestSymbolDialogs : public QObject {
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

private slots:
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
};

Q_DECLARE_METATYPE(ScriptedPrompts::SymbolScript)

QTEST_GUILESS_MAIN(TestSymbolDialogs)
#include "test_symbol_dialogs.moc"
