// RegistryWrapper: the eleven settings on top of a hive file (and of a registry
// that fails on purpose). Leaves out: the Windows registry backend, which only
// builds on Windows.
#include "common/HiveRegistry.h"
#include "common/RegistryWrapper.h"
#include "support/DataRows.h"
#include "support/TestFiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

namespace {

const QString kKey = QStringLiteral("SOFTWARE\\Quillmoor\\Cubrix");

// Records every call; key creation and the n-th write (1-based) can be made to fail.
class FailingRegistry : public Registry {
public:
    bool createWorks = true;
    int failWrite = 0;
    QStringList calls;

    bool regKeyExists(RegRoot, const QString &path) override
    {
        calls << "exists " + path;
        return false;
    }
    bool regQueryValue(RegRoot, const QString &, const QString &, RegValue &) override { return false; }
    bool regCreateKey(RegRoot, const QString &path, const QString &keyClass) override
    {
        calls << "create " + path + " " + keyClass;
        return createWorks;
    }
    bool regSetValue(RegRoot, const QString &, const QString &name, const RegValue &) override
    {
        calls << name;
        return calls.size() - 2 != failWrite;
    }
};

} // namespace

class TestRegistryWrapper : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QString hivePath() const { return m_dir.filePath(QStringLiteral("registry.reg")); }

private slots:
    void init() { QFile::remove(hivePath()); }

    // The first start creates the key and writes the eleven settings, stopping at
    // the first write that fails.
    void defaultsStopAtFirstFailure_data()
    {
        addColumns<bool, int, bool, int>("createWorks", "failWrite", "loaded", "writes"); // failWrite 0 = none
        addRow("all written", true, 0, true, 11);
        addRow("key cannot be created", false, 0, false, 0);
        addRow("first option fails", true, 1, false, 1);
    }
    void defaultsStopAtFirstFailure()
    {
        QFETCH(bool, createWorks);
        QFETCH(int, failWrite);
        QFETCH(int, writes);
        FailingRegistry reg;
        reg.createWorks = createWorks;
        reg.failWrite = failWrite;
        QTEST(RegistryWrapper(reg).loadSettings(), "loaded");
        QCOMPARE(reg.calls.mid(0, 2), QStringList({"exists " + kKey, "create " + kKey + " Application Data"}));
        QCOMPARE(reg.calls.size(), 2 + writes);
    }

    // Values found in an existing key; the first start's defaults are not written
    // into it, so a deleted showWarnings reads as off and stays missing.
    void storedValuesRead_data()
    {
        addColumns<QByteArray, QString, bool>("stored", "asText", "asFlag"); // stored "" = missing
        addRow("missing", QByteArray(), "", false);
        addRow("on as -1", QByteArray("dword:ffffffff"), "", true);
        addRow("off", QByteArray("dword:00000000"), "", false);
        addRow("text", QByteArray("\"C:\\\\Worlds\""), "C:\\Worlds", false);
        addRow("binary", QByteArray("hex:01,02,03"), "", false);
    }
    void storedValuesRead()
    {
        QFETCH(QByteArray, stored);
        const QByteArray hive = "WINE REGISTRY Version 2\n\n[SOFTWARE\\\\Quillmoor\\\\Cubrix] 1\n"
                                + (stored.isEmpty() ? QByteArray() : "\"showWarnings\"=" + stored + "\n");
        writeBytes(hivePath(), hive);
        HiveRegistry reg(hivePath());
        RegistryWrapper settings(reg);
        QVERIFY(settings.loadSettings());
        QCOMPARE(readBytes(hivePath()), hive);
        QTEST(settings.getStringSetting("showWarnings"), "asText");
        QTEST(settings.getBoolSetting("showWarnings"), "asFlag");
    }

    void settingsFileLocation_data()
    {
        // Paths relative to a temporary folder; "" = unset.
        addColumns<QString, QString, QString>("registry", "xdg", "expected");
        addRow("CUBRIX_REGISTRY wins", "own/hive.reg", "xdg", "own/hive.reg");
        addRow("XDG_CONFIG_HOME", "", "xdg", "xdg/cubrix/registry.reg");
        addRow("home", "", "", "home/.config/cubrix/registry.reg");
    }
    void settingsFileLocation()
    {
        QFETCH(QString, registry);
        QFETCH(QString, xdg);
        QFETCH(QString, expected);
        QTemporaryDir dir;
        const char *names[] = {"CUBRIX_REGISTRY", "XDG_CONFIG_HOME", "HOME"};
        const QString values[] = {registry, xdg, "home"};
        QByteArray old[3];
        for (int i = 0; i < 3; ++i) {
            old[i] = qgetenv(names[i]);
            values[i].isEmpty() ? qunsetenv(names[i]) : qputenv(names[i], dir.filePath(values[i]).toLocal8Bit());
        }
        const bool loaded = RegistryWrapper(*createSettingsRegistry()).loadSettings();
        for (int i = 0; i < 3; ++i)
            old[i].isNull() ? qunsetenv(names[i]) : qputenv(names[i], old[i]);
        QVERIFY(loaded);
        QVERIFY(QFile::exists(dir.filePath(expected)));
    }
};

QTEST_GUILESS_MAIN(TestRegistryWrapper)
#include "test_registry_wrapper.moc"
