#include "support/DataRows.h"
#include "support/Screenshot.h"
#include "support/ScriptedPrompts.h"
#include "symbols/SymbolDialogs.h"
#include "symbols/ui/SymbolDialog.h"
#include "symbols/ui/frmRemapSymbols.h"

#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QtTest>

using namespace Qt::StringLiterals;

// frmAddBlock and frmEditSymbols as windows: which controls each symbol mode
// shows and lets the user change, the double following the single one, and an
// OK that a refused double symbol keeps open with the focus in the field.
// frmRemapSymbols: the tab showing at OK decides the method, each tab its prefix
// list; a method that says No keeps the dialog open.
class TestSymbolDialogsGui : public QObject {
    Q_OBJECT

    static BlocksetContent blockset(bool strict, bool sync)
    {
        BlocksetContent content;
        content.symbols.strictPrefixBoxChecked = strict;
        content.symbols.syncDoubleBoxChecked = sync;
        content.blocks = {BlockRow{u"a.block"_s, {}, u"A"_s, u".A"_s}, BlockRow{u"b.block"_s, {}, u"B"_s, u".B"_s}};
        return content;
    }

    // Runs the dialog, lets `act` work on it while it is shown, and returns its answer.
    static SymbolDialogAnswer run(const SymbolDialogSetup &setup, ScriptedPrompts &prompts,
                                  const std::function<void(QDialog &)> &act)
    {
        SymbolDialogAnswer answer;
        QTimer::singleShot(0, [&] {
            auto *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget());
            QVERIFY(dialog);
            QTimer::singleShot(20000, dialog, &QDialog::reject); // never hang on a failure
            act(*dialog);
            if (dialog->isVisible())
                dialog->reject();
        });
        answer = SymbolDialog::ask(setup, prompts, nullptr);
        return answer;
    }

private slots:
    void modes_data()
    {
        // doubleSymbol: after choosing E as single symbol.
        addColumns<bool, bool, QString>("strict", "sync", "doubleSymbol");
        addRow("free text", false, false, u"!a"_s);
        addRow("strict prefix", true, false, u".C"_s);
        addRow("strict prefix and sync double", true, true, u".E"_s);
    }

    void modes()
    {
        QFETCH(bool, strict);
        QFETCH(bool, sync);
        ScriptedPrompts prompts;
        const BlocksetContent content = blockset(strict, sync);
        const SymbolDialogAnswer answer =
            run(addBlockSetup(prompts, content, u"c.block"_s), prompts, [&](QDialog &dialog) {
                QCOMPARE(dialog.objectName(), u"frmAddBlock"_s);
                QCOMPARE(dialog.windowTitle(), u"Add symbols for c.block"_s);
                auto *single = dialog.findChild<QComboBox *>(u"lstSingleChars"_s);
                auto *prefix = dialog.findChild<QComboBox *>(u"lstDoublePrefix"_s);
                auto *chars = dialog.findChild<QComboBox *>(u"lstDoubleChars"_s);
                auto *field = dialog.findChild<QLineEdit *>(u"fldDoubleChars"_s);
                QVERIFY(single && prefix && chars && field);
                QCOMPARE(prefix->isVisible(), strict);
                QCOMPARE(chars->isVisible(), strict);
                QCOMPARE(field->isVisible(), !strict);
                if (strict) {
                    QVERIFY(!prefix->isEnabled()); // always the blockset's prefix
                    QCOMPARE(prefix->count(), 90);
                    QCOMPARE(chars->isEnabled(), !sync);
                }
                single->setFocus();
                single->setCurrentIndex(single->findText(u"E"_s));
                if (!strict)
                    field->setText(u"!a"_s);
                QVERIFY(saveScreenshot(dialog, u"frmAddBlock-"_s + QString::fromUtf8(QTest::currentDataTag())));
                dialog.findChild<QPushButton *>(u"btnOK"_s)->click();
            });
        QVERIFY(answer.accepted);
        QCOMPARE(answer.single, u"E"_s);
        QTEST(answer.doubleSymbol, "doubleSymbol");
    }

    void refusedDoubleKeepsDialogOpen()
    {
        ScriptedPrompts prompts;
        const BlocksetContent content = blockset(false, false);
        const SymbolDialogAnswer answer = run(editSymbolsSetup(prompts, content, 1), prompts, [&](QDialog &dialog) {
            QCOMPARE(dialog.objectName(), u"frmEditSymbols"_s);
            auto *field = dialog.findChild<QLineEdit *>(u"fldDoubleChars"_s);
            QCOMPARE(field->text(), u".B"_s);
            field->setText(u".A"_s);
            dialog.findChild<QPushButton *>(u"btnOK"_s)->click();
            QVERIFY(dialog.isVisible());
            QCOMPARE(dialog.focusWidget(), field);
            dialog.findChild<QPushButton *>(u"btnEditBlock"_s)->click();
            field->setText(u".Q"_s);
            dialog.findChild<QPushButton *>(u"btnOK"_s)->click();
        });
        QCOMPARE(prompts.messageTexts(), QStringList({u"The double character symbol is already used!"_s,
                                                      u"Yet not implemented in this version"_s}));
        QVERIFY(answer.accepted);
        QCOMPARE(answer.doubleSymbol, u".Q"_s);
        QCOMPARE(answer.single, u"B"_s);
    }

    void tabDecidesMethod()
    {
        frmRemapSymbols dialog;
        auto *tabs = dialog.findChild<QTabWidget *>(u"tabMethod"_s);
        auto *remapAll = dialog.findChild<QComboBox *>(u"lstStrictPrefixRemapAll"_s);
        auto *syncDouble = dialog.findChild<QComboBox *>(u"lstStrictPrefixSyncDouble"_s);
        auto *ok = dialog.findChild<QPushButton *>(u"btnOK"_s);
        QVERIFY(tabs && remapAll && syncDouble && ok);
        QCOMPARE(remapAll->count(), 90);
        QCOMPARE(syncDouble->currentText(), u"."_s);

        QTimer::singleShot(20000, &dialog, &QDialog::reject); // never hang on a failure
        QList<RemapChoice> choices;
        QTimer::singleShot(0, &dialog, [&] {
            remapAll->setCurrentIndex(4);
            syncDouble->setCurrentIndex(7);
            tabs->setCurrentIndex(1);
            QVERIFY(saveScreenshot(dialog, u"frmRemapSymbols"_s));
            ok->click(); // answered No: stays open
            QVERIFY(dialog.isVisible());
            tabs->setCurrentIndex(0);
            ok->click();
        });
        const bool ran = dialog.run([&choices](const RemapChoice &choice) {
            choices.append(choice);
            return choices.size() > 1;
        });
        QVERIFY(ran);
        QCOMPARE(choices.size(), 2);
        QCOMPARE(choices[0].method, RemapChoice::SyncDouble);
        QCOMPARE(choices[0].prefixIndex, 7);
        QCOMPARE(choices[1].method, RemapChoice::RemapAll);
        QCOMPARE(choices[1].prefixIndex, 4);
    }
};

QTEST_MAIN(TestSymbolDialogsGui)
#include "test_symbol_dialogs_gui.moc"
