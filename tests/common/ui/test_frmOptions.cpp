// frmOptions offscreen: loading, the strict-prefix / sync-double coupling, OK,
// Cancel, keyboard and layout. Leaves out: modality, which the main window decides.
#include "common/HiveRegistry.h"
#include "common/RegistryWrapper.h"
#include "common/ui/frmOptions.h"

#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QFile>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

namespace {

const QString kKey = QStringLiteral("SOFTWARE\\Quillmoor\\Cubrix");

// The seven boxes in their order on screen, with their settings and captions.
struct Box {
    const char *objectName;
    const char *setting;
    const char *caption;
};
const Box kBoxes[] = {
    {"cbxShowWarnings", "showWarnings", "Show Warnings"},
    {"cbxSyncBlockset", "syncBlockset", "Synchronize Blockset Name with Filename"},
    {"cbxSyncBlock", "syncBlock", "Synchronize Block Name with Filename"},
    {"cbxStrictPrefix", "strictPrefix", "Use Strict Prefix for Double Character Symbols"},
    {"cbxSyncDouble", "syncDouble", "Synchronize Single and Double Character Symbols"},
    {"cbxSkipEdit", "skipEdit", "Skip Edit Symbols Dialog"},
    {"cbxUpdateFile", "updateFile", "Save Update File along with Blockset"},
};

// A hive that also records which values were written, in order.
class RecordingRegistry : public Registry {
public:
    explicit RecordingRegistry(const QString &path) : m_hive(path) {}
    QStringList writes;

    bool regKeyExists(RegRoot root, const QString &path) override { return m_hive.regKeyExists(root, path); }
    bool regQueryValue(RegRoot root, const QString &path, const QString &name, RegValue &value) override
    {
        return m_hive.regQueryValue(root, path, name, value);
    }
    bool regCreateKey(RegRoot root, const QString &path, const QString &keyClass) override
    {
        return m_hive.regCreateKey(root, path, keyClass);
    }
    bool regSetValue(RegRoot root, const QString &path, const QString &name, const RegValue &value) override
    {
        writes << name + "=" + (value.type == 4 ? QString::number(value.dword, 16) : value.text);
        return m_hive.regSetValue(root, path, name, value);
    }

private:
    HiveRegistry m_hive;
};

QByteArray readBytes(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QByteArray();
    return file.readAll();
}

} // namespace

class TestFrmOptions : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QString hivePath() const { return m_dir.filePath(QStringLiteral("registry.reg")); }

    // A settings key holding the given flags ("" = value missing).
    void store(const QStringList &flags)
    {
        QFile::remove(hivePath());
        HiveRegistry hive(hivePath());
        QVERIFY(hive.regCreateKey(RegRoot::LocalMachine, kKey, "Application Data"));
        for (int i = 0; i < 7; ++i) {
            if (!flags.value(i).isEmpty())
                QVERIFY(hive.regSetValue(RegRoot::LocalMachine, kKey, kBoxes[i].setting,
                                         RegValue::fromDword(flags[i].toUInt(nullptr, 16))));
        }
    }

    static QCheckBox *box(const QDialog &dialog, int i)
    {
        return dialog.findChild<QCheckBox *>(kBoxes[i].objectName);
    }

    static QString states(const QDialog &dialog)
    {
        QString text;
        for (int i = 0; i < 7; ++i)
            text += box(dialog, i)->isChecked() ? 'x' : '.';
        return text;
    }

    // Clicks a box on its indicator, as a user would (the middle of a wide box
    // with a short caption is empty space that does not react).
    static void click(QCheckBox *b) { QTest::mouseClick(b, Qt::LeftButton, {}, QPoint(8, b->height() / 2)); }

    static bool stored(RegistryWrapper &settings, int i) { return settings.getBoolSetting(kBoxes[i].setting); }

private slots:
    void showsTheSevenBoxes()
    {
        store({"ffffffff", "ffffffff", "ffffffff", "0", "ffffffff", "0", "ffffffff"});
        HiveRegistry hive(hivePath());
        RegistryWrapper settings(hive);
        frmOptions dialog(settings);
        QCOMPARE(dialog.windowTitle(), QString("Options"));
        int lastY = -1;
        dialog.show();
        QVERIFY(QTest::qWaitForWindowExposed(&dialog));
        for (int i = 0; i < 7; ++i) {
            QCheckBox *b = box(dialog, i);
            QVERIFY2(b, kBoxes[i].objectName);
            QCOMPARE(b->text(), QString(kBoxes[i].caption));
            QVERIFY(b->y() > lastY);
            lastY = b->y();
            // No caption is cut off.
            QVERIFY2(b->width() >= b->sizeHint().width(), kBoxes[i].objectName);
        }
        auto *ok = dialog.findChild<QPushButton *>("cmdOK");
        auto *cancel = dialog.findChild<QPushButton *>("cmdCancel");
        QVERIFY(ok && cancel);
        QCOMPARE(ok->text(), QString("OK"));
        QCOMPARE(cancel->text(), QString("Cancel"));
        QVERIFY(ok->mapTo(&dialog, QPoint()).y() > lastY);
        QVERIFY(ok->isDefault());
        QVERIFY(ok->width() >= ok->sizeHint().width() && cancel->width() >= cancel->sizeHint().width());

        const QString shots = qEnvironmentVariable("CUBRIX_SCREENSHOTS");
        if (!shots.isEmpty()) {
            QVERIFY(QDir().mkpath(shots));
            QVERIFY(dialog.grab().save(shots + "/frmOptions.png"));
        }
    }

    void loadsFromSettings_data()
    {
        QTest::addColumn<QStringList>("flags"); // stored dwords in box order, "" = missing
        QTest::addColumn<QString>("checked");   // x = checked, in box order
        QTest::addColumn<bool>("syncDoubleEnabled");
        QTest::newRow("first-start defaults")
            << QStringList{"ffffffff", "ffffffff", "ffffffff", "ffffffff", "ffffffff", "0", "ffffffff"} << "xxxxx.x"
            << true;
        QTest::newRow("all missing") << QStringList{} << "......." << false;
        QTest::newRow("one means on") << QStringList{"1", "0", "1", "1", "1", "1", "0"} << "x.xxxx." << true;
        QTest::newRow("no strict prefix, sync double kept checked")
            << QStringList{"0", "0", "0", "0", "ffffffff", "0", "0"} << "....x.." << false;
        QTest::newRow("no strict prefix, sync double off")
            << QStringList{"ffffffff", "ffffffff", "ffffffff", "0", "0", "ffffffff", "ffffffff"} << "xxx..xx"
            << false;
        QTest::newRow("strict prefix without sync double")
            << QStringList{"0", "0", "0", "ffffffff", "0", "0", "0"} << "...x..." << true;
    }
    void loadsFromSettings()
    {
        QFETCH(QStringList, flags);
        QFETCH(QString, checked);
        QFETCH(bool, syncDoubleEnabled);
        store(flags);
        HiveRegistry hive(hivePath());
        RegistryWrapper settings(hive);
        frmOptions dialog(settings);
        QCOMPARE(states(dialog), checked);
        QCOMPARE(box(dialog, 4)->isEnabled(), syncDoubleEnabled);
        for (int i = 0; i < 7; ++i) {
            if (i != 4)
                QVERIFY(box(dialog, i)->isEnabled());
        }
    }

    void strictPrefixCouplesSyncDouble_data()
    {
        QTest::addColumn<QString>("strictPrefix");
        QTest::addColumn<QString>("syncDouble");
        QTest::newRow("both on") << "ffffffff" << "ffffffff";
        QTest::newRow("strict on, sync off") << "ffffffff" << "0";
        QTest::newRow("strict off, sync on") << "0" << "ffffffff";
        QTest::newRow("both off") << "0" << "0";
    }
    void strictPrefixCouplesSyncDouble()
    {
        QFETCH(QString, strictPrefix);
        QFETCH(QString, syncDouble);
        store({"0", "0", "0", strictPrefix, syncDouble, "0", "0"});
        HiveRegistry hive(hivePath());
        RegistryWrapper settings(hive);
        frmOptions dialog(settings);
        dialog.show();
        QVERIFY(QTest::qWaitForWindowExposed(&dialog));
        QCheckBox *strict = box(dialog, 3);
        QCheckBox *sync = box(dialog, 4);
        const bool wasOn = strict->isChecked();
        // Each click turns both boxes the same way, whatever the sync box showed.
        for (int n = 1; n <= 3; ++n) {
            click(strict);
            const bool on = (n % 2 == 1) ? !wasOn : wasOn;
            QCOMPARE(strict->isChecked(), on);
            QCOMPARE(sync->isChecked(), on);
            QCOMPARE(sync->isEnabled(), on);
        }
        // The keyboard's space bar clicks too.
        strict->setFocus();
        QTest::keyClick(strict, Qt::Key_Space);
        QCOMPARE(sync->isChecked(), strict->isChecked());
        QCOMPARE(sync->isEnabled(), strict->isChecked());
    }

    void okWritesTheSevenFlags()
    {
        store({"ffffffff", "ffffffff", "ffffffff", "ffffffff", "ffffffff", "0", "ffffffff"});
        RecordingRegistry reg(hivePath());
        RegistryWrapper settings(reg);
        frmOptions dialog(settings);
        dialog.show();
        QVERIFY(QTest::qWaitForWindowExposed(&dialog));
        click(box(dialog, 0)); // show warnings off
        click(box(dialog, 5)); // skip edit on
        click(box(dialog, 4)); // sync double off
        QVERIFY(reg.writes.isEmpty());
        QTest::mouseClick(dialog.findChild<QPushButton *>("cmdOK"), Qt::LeftButton);
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        QVERIFY(!dialog.isVisible());
        QCOMPARE(reg.writes, QStringList({"showWarnings=0", "syncBlockset=ffffffff", "syncBlock=ffffffff",
                                          "syncDouble=0", "strictPrefix=ffffffff", "skipEdit=ffffffff",
                                          "updateFile=ffffffff"}));
        HiveRegistry fresh(hivePath());
        RegistryWrapper after(fresh);
        QVERIFY(!stored(after, 0));
        QVERIFY(stored(after, 5));
        QVERIFY(!stored(after, 4));
    }

    void okAfterUncheckingStrictPrefixStoresSyncDoubleOff()
    {
        store({"ffffffff", "ffffffff", "ffffffff", "ffffffff", "ffffffff", "0", "ffffffff"});
        HiveRegistry hive(hivePath());
        RegistryWrapper settings(hive);
        frmOptions dialog(settings);
        dialog.show();
        QVERIFY(QTest::qWaitForWindowExposed(&dialog));
        click(box(dialog, 3));
        QTest::mouseClick(dialog.findChild<QPushButton *>("cmdOK"), Qt::LeftButton);
        QVERIFY(!stored(settings, 3));
        QVERIFY(!stored(settings, 4));
        QVERIFY(stored(settings, 0));
    }

    void okKeepsADisabledSyncDoubleAsStored()
    {
        // Loaded with strict prefix off but sync double on: OK writes what the
        // boxes show, so sync double stays on until the user changes the prefix.
        store({"0", "0", "0", "0", "ffffffff", "0", "0"});
        HiveRegistry hive(hivePath());
        RegistryWrapper settings(hive);
        frmOptions dialog(settings);
        dialog.show();
        QVERIFY(QTest::qWaitForWindowExposed(&dialog));
        QTest::mouseClick(dialog.findChild<QPushButton *>("cmdOK"), Qt::LeftButton);
        QVERIFY(stored(settings, 4));
        QVERIFY(!stored(settings, 3));
    }

    void missingValuesAreWrittenOnOk()
    {
        store({});
        HiveRegistry hive(hivePath());
        RegistryWrapper settings(hive);
        frmOptions dialog(settings);
        dialog.show();
        QVERIFY(QTest::qWaitForWindowExposed(&dialog));
        click(box(dialog, 6));
        QTest::mouseClick(dialog.findChild<QPushButton *>("cmdOK"), Qt::LeftButton);
        for (int i = 0; i < 7; ++i) {
            RegValue value;
            QVERIFY(hive.regQueryValue(RegRoot::LocalMachine, kKey, kBoxes[i].setting, value));
            QCOMPARE(value.dword, i == 6 ? 0xFFFFFFFFu : 0u);
        }
    }

    void closingWithoutOk_data()
    {
        QTest::addColumn<QString>("how");
        QTest::newRow("Cancel button") << "cancel";
        QTest::newRow("Esc key") << "esc";
        QTest::newRow("window closed") << "close";
    }
    void closingWithoutOk()
    {
        QFETCH(QString, how);
        store({"ffffffff", "ffffffff", "ffffffff", "ffffffff", "ffffffff", "0", "ffffffff"});
        const QByteArray before = readBytes(hivePath());
        RecordingRegistry reg(hivePath());
        RegistryWrapper settings(reg);
        frmOptions dialog(settings);
        dialog.show();
        QVERIFY(QTest::qWaitForWindowExposed(&dialog));
        for (int i = 0; i < 7; ++i)
            click(box(dialog, i));
        if (how == "cancel")
            QTest::mouseClick(dialog.findChild<QPushButton *>("cmdCancel"), Qt::LeftButton);
        else if (how == "esc")
            QTest::keyClick(&dialog, Qt::Key_Escape);
        else
            dialog.close();
        QVERIFY(!dialog.isVisible());
        QCOMPARE(dialog.result(), int(QDialog::Rejected));
        QVERIFY(reg.writes.isEmpty());
        QCOMPARE(readBytes(hivePath()), before);
    }

    void enterPressesOk()
    {
        store({"0", "0", "0", "0", "0", "0", "0"});
        HiveRegistry hive(hivePath());
        RegistryWrapper settings(hive);
        frmOptions dialog(settings);
        dialog.show();
        QVERIFY(QTest::qWaitForWindowExposed(&dialog));
        QApplication::setActiveWindow(&dialog);
        box(dialog, 1)->setFocus();
        QTest::keyClick(box(dialog, 1), Qt::Key_Space);
        QTest::keyClick(box(dialog, 1), Qt::Key_Return);
        QVERIFY(!dialog.isVisible());
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        QVERIFY(stored(settings, 1));
        QVERIFY(!stored(settings, 0));
    }

    void brokenStoreShowsAllOffAndIgnoresOk()
    {
        QFile file(hivePath());
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write("not a registry");
        file.close();
        HiveRegistry hive(hivePath());
        RegistryWrapper settings(hive);
        frmOptions dialog(settings);
        QCOMPARE(states(dialog), QString("......."));
        dialog.show();
        QVERIFY(QTest::qWaitForWindowExposed(&dialog));
        click(box(dialog, 0));
        QTest::mouseClick(dialog.findChild<QPushButton *>("cmdOK"), Qt::LeftButton);
        QVERIFY(!dialog.isVisible()); // closes as usual; the failed writes are not reported
        QCOMPARE(readBytes(hivePath()), QByteArray("not a registry"));
    }
};

QTEST_MAIN(TestFrmOptions)
#include "test_frmOptions.moc"
