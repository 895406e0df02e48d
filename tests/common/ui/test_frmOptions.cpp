// frmOptions offscreen: loading, the strict-prefix / sync-double coupling, OK,
// Cancel, keyboard and layout. Leaves out: modality, which the main window decides.
#include "common/HiveRegistry.h"
#include "common/RegistryWrapper.h"
#include "common/ui/frmOptions.h"
#include "support/DataRows.h"
#include "support/TestFiles.h"

#include <QCheckBox>
#include <QDir>
#include <QFile>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

namespace {

const QString kKey = QStringLiteral("SOFTWARE\\Quillmoor\\Cubrix");

// The seven boxes in their order on screen, with their settings and captions.
const struct {
    const char *objectName, *setting;
} kBoxes[] = {
    {"cbxShowWarnings", "showWarnings"}, {"cbxSyncBlockset", "syncBlockset"}, {"cbxSyncBlock", "syncBlock"},
    {"cbxStrictPrefix", "strictPrefix"}, {"cbxSyncDouble", "syncDouble"},     {"cbxSkipEdit", "skipEdit"},
    {"cbxUpdateFile", "updateFile"},
};
enum { ShowWarnings, SyncBlockset, SyncBlock, StrictPrefix, SyncDouble, SkipEdit, UpdateFile };
const QString kDefaults = "xxxxx.x"; // first start, in box order

// The dialog on a store, shown.
struct Shown {
    HiveRegistry hive;
    RegistryWrapper settings{hive};
    frmOptions dialog{settings};
    explicit Shown(const QString &path) : hive(path) { dialog.show(); }
    QCheckBox *box(int i) const { return dialog.findChild<QCheckBox *>(kBoxes[i].objectName); }
    // Clicks a box on its indicator, as a user would.
    void click(int i) const { QTest::mouseClick(box(i), Qt::LeftButton, {}, QPoint(8, box(i)->height() / 2)); }
    void press(const char *button) const { QTest::mouseClick(dialog.findChild<QPushButton *>(button), Qt::LeftButton); }
    QString checked() const
    {
        QString text;
        for (int i = 0; i < 7; ++i)
            text += box(i)->isChecked() ? 'x' : '.';
        return text;
    }
};

} // namespace

class TestFrmOptions : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QString hivePath() const { return m_dir.filePath(QStringLiteral("registry.reg")); }

    // A settings key holding the flags in box order: 'x' on (-1), '1' on (1), '.' off, ' ' missing.
    void store(const QString &flags)
    {
        QFile::remove(hivePath());
        HiveRegistry hive(hivePath());
        QVERIFY(hive.regCreateKey(RegRoot::LocalMachine, kKey, "Application Data"));
        for (int i = 0; i < 7; ++i) {
            const quint32 dword = flags[i] == 'x' ? 0xFFFFFFFFu : flags[i] == '1' ? 1u : 0u;
            if (flags[i] != ' ')
                QVERIFY(hive.regSetValue(RegRoot::LocalMachine, kKey, kBoxes[i].setting, RegValue::fromDword(dword)));
        }
    }

private slots:
    void strictPrefixCouplesSyncDouble_data()
    {
        QTest::addColumn<QString>("flags");
        addRow("strict on, sync off", "...x...");
        addRow("strict off, sync on", "....x..");
    }
    void strictPrefixCouplesSyncDouble()
    {
        QFETCH(QString, flags);
        store(flags);
        Shown s(hivePath());
        QVERIFY(QTest::qWaitForWindowExposed(&s.dialog));
        QCheckBox *strict = s.box(StrictPrefix);
        // Each click (or space bar) turns both boxes the same way, whatever the sync box showed.
        for (int n = 0; n < 3; ++n) {
            const bool on = !strict->isChecked();
            n < 2 ? s.click(StrictPrefix) : QTest::keyClick(strict, Qt::Key_Space);
            QCOMPARE(strict->isChecked(), on);
            QCOMPARE(s.box(SyncDouble)->isChecked(), on);
            QCOMPARE(s.box(SyncDouble)->isEnabled(), on);
        }
    }

    // The boxes show the stored flags (sync double disabled without a strict
    // prefix); OK writes the seven flags (on as -1), every other way out
    // writes nothing.
    void loadAndClose_data()
    {
        // written: in box order; "" = nothing.
        addColumns<QString, QString, QList<int>, QString, QString>("flags", "loaded", "clicks", "how", "written");
        const QList<int> none, all{0, 1, 2, 3, 4, 5, 6};
        addRow("changed boxes", kDefaults, kDefaults, QList<int>{ShowWarnings, SkipEdit, SyncDouble}, "cmdOK",
               ".xxx.xx");
        addRow("one means on", "1.1111.", "x.xxxx.", none, "cmdOK", "x.xxxx.");
        addRow("unchecked strict prefix stores sync double off", kDefaults, kDefaults, QList<int>{StrictPrefix},
               "cmdOK", "xxx...x");
        addRow("strict prefix without sync double", "...x...", "...x...", none, "cmdOK", "...x...");
        addRow("disabled sync double kept as stored", "....x..", "....x..", none, "cmdOK", "....x..");
        addRow("missing values written", "       ", ".......", QList<int>{UpdateFile}, "cmdOK", "......x");
        addRow("Cancel button", kDefaults, kDefaults, all, "cmdCancel", "");
        addRow("Esc key", kDefaults, kDefaults, all, "esc", "");
    }
    void loadAndClose()
    {
        QFETCH(QString, flags);
        QFETCH(QString, loaded);
        QFETCH(QList<int>, clicks);
        QFETCH(QString, how);
        QFETCH(QString, written);
        store(flags);
        const QByteArray before = readBytes(hivePath());
        Shown s(hivePath());
        QVERIFY(QTest::qWaitForWindowExposed(&s.dialog));
        QCOMPARE(s.checked(), loaded);
        for (int i = 0; i < 7; ++i)
            QCOMPARE(s.box(i)->isEnabled(), i != SyncDouble || loaded[StrictPrefix] == 'x');
        for (int i : clicks)
            s.click(i);
        if (how.startsWith("cmd"))
            s.press(qPrintable(how));
        else
            how == "esc" ? QTest::keyClick(&s.dialog, Qt::Key_Escape) : void(s.dialog.close());
        QVERIFY(!s.dialog.isVisible());
        QCOMPARE(s.dialog.result(), int(written.isEmpty() ? QDialog::Rejected : QDialog::Accepted));
        if (written.isEmpty()) {
            QCOMPARE(readBytes(hivePath()), before);
        } else {
            QCOMPARE(Shown(hivePath()).checked(), written);
            // On is stored as -1, as the Windows registry holds it.
            QCOMPARE(readBytes(hivePath()).count("=dword:ffffffff"), written.count(u'x'));
        }
    }
};

QTEST_MAIN(TestFrmOptions)
#include "test_frmOptions.moc"
