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
        QTest::addColumn<int>("mode");
        QTest::addColumn<int>("prefixIndex");
        QTest::addColumn<QStringList>("rows"); // "single double" per block row
        QTest::addColumn<int>("edited");       // -1: Add Block
        QTest::addColumn<QString>("singles");  // the first entries of lstSingleChars
        QTest::addColumn<QString>("doubles");  // the first entries of lstDoubleChars
        QTest::addColumn<bool>("doublesEnabled");
        QTest::addColumn<QString>("single"); // what OK on the untouched dialog gives
        QTest::addColumn<QString>("doubleSymbol");

        const QStringList ab{u"A .A"_s, u"B .B"_s};
        QTest::newRow("add, strict and sync: C follows A and B")
            << int(StrictSync) << 0 << ab << -1 << u"CDE"_s << u"CDE"_s << false << u"C"_s << u".C"_s;
        QTest::newRow("add, strict: a character behind any prefix is taken")
            << int(Strict) << 2 << QStringList{u"x .A"_s} << -1 << u"ABC"_s << u"BCD"_s << true << u"A"_s << u"BB"_s;
        QTest::newRow("add, free text: empty double")
            << int(Free) << 0 << ab << -1 << u"CDE"_s << QString() << false << u"C"_s << QString();
        QTest::newRow("edit keeps its own symbols")
            << int(StrictSync) << 0 << QStringList{u"A .A"_s, u"B .B"_s, u"C .C"_s} << 1 << u"BDE"_s << u"BDE"_s
            << false << u"B"_s << u".B"_s;
        QTest::newRow("edit, strict: own double character offered")
            << int(Strict) << 0 << QStringList{u"A .A"_s, u"B .Z"_s} << 1 << u"BCD"_s << u"BCD"_s << true << u"B"_s
            << u".Z"_s;
        QTest::newRow("edit, no single symbol: none stays chosen")
            << int(StrictSync) << 0 << QStringList{u" "_s, u"A .A"_s} << 0 << u"BC"_s << u"BC"_s << false << QString()
            << QString();
        QStringList all;
        for (QChar c : symbolAlphabet())
            all << QString(c) + u" ."_s + c;
        QTest::newRow("add, every symbol used")
            << int(StrictSync) << 0 << all << -1 << QString() << QString() << false << QString() << QString();
    }

    void offered()
    {
        QFETCH(int, mode);
        QFETCH(int, prefixIndex);
        QFETCH(QStringList, rows);
        QFETCH(int, edited);
        QFETCH(QString, singles);
        QFETCH(QString, doubles);
        QFETCH(bool, doublesEnabled);
        ScriptedPrompts prompts;
        const BlocksetContent blockset = content(Mode(mode), prefixIndex, rows);
        const SymbolDialogSetup setup =
            edited < 0 ? addBlockSetup(prompts, blockset, u"new.block"_s) : editSymbolsSetup(prompts, blockset, edited);
        QCOMPARE(setup.caption,
                 edited < 0 ? u"Add symbols for new.block"_s : u"Edit symbols for b%1.block"_s.arg(edited));
        QCOMPARE(setup.singles.join(QString()).left(singles.size()), singles);
        QCOMPARE(setup.doubleChars.join(QString()).left(doubles.size()), doubles);
        QCOMPARE(setup.strictPrefix && !setup.syncDouble, doublesEnabled);
        const SymbolDialogAnswer answer = offeredSymbols(setup);
        QTEST(answer.single, "single");
        QTEST(answer.doubleSymbol, "doubleSymbol");
    }

    void typedDouble_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("edited");
        QTest::addColumn<QString>("message"); // "" = accepted
        QTest::newRow("empty") << QString() << -1 << QString();
        QTest::newRow("free") << u".C"_s << -1 << QString();
        QTest::newRow("invalid") << u"C."_s << -1 << u"Incorrect double character symbol!"_s;
        QTest::newRow("used by another row") << u".B"_s << 0 << u"The double character symbol is already used!"_s;
        QTest::newRow("the edited row's own") << u".B"_s << 1 << QString();
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
        QTest::addColumn<Script>("script");
        QTest::addColumn<QString>("symbols"); // the row's single and double after OK
        QTest::addColumn<bool>("changed");
        QTest::newRow("OK untouched") << Script{} << u"B .B"_s << false;
        QTest::newRow("cancel") << Script{Script::Cancel} << u"B .B"_s << false;
        QTest::newRow("double only") << Script{Script::Choose, u"B"_s, u".Q"_s} << u"B .Q"_s << true;
        // A refused double keeps the dialog open; the next OK closes it.
        QTest::newRow("refused, then cleared") << Script{Script::Choose, u"C"_s, u".A"_s} << u"C "_s << true;
    }

    void editWritesOnlyChanges()
    {
        QFETCH(Script, script);
        QFETCH(QString, symbols);
        FakeHost host;
        host.blockset = content(Free, 0, {u"A .A"_s, u"B .B"_s});
        host.scripted.symbolAnswers << script << Script{Script::Choose, u"C"_s, QString()};
        editSymbols(host, 1);
        QCOMPARE(host.blockset.blocks[1].symbol + u' ' + host.blockset.blocks[1].doubleSymbol, symbols);
        QTEST(host.changed, "changed");
    }
};

Q_DECLARE_METATYPE(ScriptedPrompts::SymbolScript)

QTEST_GUILESS_MAIN(TestSymbolDialogs)
#include "test_symbol_dialogs.moc"
