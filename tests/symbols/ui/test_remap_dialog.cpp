#include "symbols/ui/frmRemapSymbols.h"

#include <QComboBox>
#include <QPushButton>
#include <QTabWidget>
#include <QtTest>

using namespace Qt::StringLiterals;

// frmRemapSymbols: the tab showing at OK decides the method, each tab its prefix
// list; a method that says No keeps the dialog open.
class TestRemapDialog : public QObject {
    Q_OBJECT

private slots:
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
            if (const QString dir = qEnvironmentVariable("CUBRIX_SCREENSHOTS"); !dir.isEmpty()) {
                QDir().mkpath(dir);
                dialog.grab().save(dir + u"/frmRemapSymbols.png"_s);
            }
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

QTEST_MAIN(TestRemapDialog)
#include "test_remap_dialog.moc"
