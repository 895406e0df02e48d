// RegistryWrapper: the eleven settings on top of a hive file (and of a registry
// that fails on purpose). Leaves out: the Windows registry backend, which only
// builds on Windows.
#include "common/HiveRegistry.h"
#include "common/RegistryWrapper.h"
#include "support/TestFiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

namespace {

const QString kKey = QStringLiteral("SOFTWARE\\Quillmoor\\Cubrix");

QString describe(const QString &name, const RegValue &value)
{
    return name + (value.type == 1 ? "=\"" + value.text + "\"" : "=" + QString::number(value.dword, 16));
}

// The eleven settings first start writes, in order.
const QStringList kDefaults = {
    "pathBlockset=\"\"",  "pathBlocks=\"\"",       "pathTextures=\"\"",
    "pathSounds=\"\"",    "showWarnings=ffffffff", "syncBlockset=ffffffff",
    "syncBlock=ffffffff", "syncDouble=ffffffff",   "strictPrefix=ffffffff",
    "skipEdit=0",         "updateFile=ffffffff",
};

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
    bool regSetValue(RegRoot, const QString &, const QString &name, const RegValue &value) override
    {
        calls << describe(name, value);
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

    void firstStartWritesDefaults()
    {
        HiveRegistry hive(hivePath());
        QVERIFY(RegistryWrapper(hive).loadSettings());
        QCOMPARE(hive.keyClass(kKey), QString("Application Data"));
        for (const QString &expected : kDefaults) {
            const QString name = expected.section('=', 0, 0);
            RegValue value;
            QVERIFY2(hive.regQueryValue(RegRoot::LocalMachine, kKey, name, value), qPrintable(name));
            QCOMPARE(describe(name, value), expected);
        }
    }

    void defaultsStopAtFirstFailure_data()
    {
        QTest::addColumn<bool>("createWorks");
        QTest::addColumn<int>("failWrite"); // 0 = none
        QTest::newRow("all written") << true << 0;
        QTest::newRow("key cannot be created") << false << 0;
        QTest::newRow("last option fails") << true << 11;
    }
    void defaultsStopAtFirstFailure()
    {
        QFETCH(bool, createWorks);
        QFETCH(int, failWrite);
        FailingRegistry reg;
        reg.createWorks = createWorks;
        reg.failWrite = failWrite;
        QCOMPARE(RegistryWrapper(reg).loadSettings(), createWorks && failWrite == 0);
        const QStringList writes = !createWorks ? QStringList() : failWrite ? kDefaults.mid(0, failWrite) : kDefaults;
        QCOMPARE(reg.calls, QStringList({"exists " + kKey, "create " + kKey + " Application Data"}) + writes);
    }

    // Values found in an existing key; the first start's defaults are not written
    // into it, so a deleted showWarnings reads as off and stays missing.
    void storedValuesRead_data()
    {
        QTest::addColumn<QByteArray>("stored"); // "" = missing
        QTest::addColumn<QString>("asText");
        QTest::addColumn<bool>("asFlag");
        QTest::newRow("missing") << QByteArray() << "" << false;
        QTest::newRow("on as -1") << QByteArray("dword:ffffffff") << "" << true;
        QTest::newRow("off") << QByteArray("dword:00000000") << "" << false;
        QTest::newRow("text") << QByteArray("\"C:\\\\Worlds\"") << "C:\\Worlds" << false;
        QTest::newRow("binary") << QByteArray("hex:01,02,03") << "" << false;
    }
    void storedValuesRead()
    {
        QFETCH(QByteArray, stored);
        QFETCH(QString, asText);
        QFETCH(bool, asFlag);
        const QByteArray hive = "WINE REGISTRY Version 2\n\n[SOFTWARE\\\\Quillmoor\\\\Cubrix] 1\n"
                                + (stored.isEmpty() ? QByteArray() : "\"showWarnings\"=" + stored + "\n");
        writeBytes(hivePath(), hive);
        HiveRegistry reg(hivePath());
        RegistryWrapper settings(reg);
        QVERIFY(settings.loadSettings());
        QCOMPARE(readBytes(hivePath()), hive);
        QCOMPARE(settings.getStringSetting("showWarnings"), asText);
        QCOMPARE(settings.getBoolSetting("showWarnings"), asFlag);
    }

    void settingsFileLocation_data()
    {
        QTest::addColumn<QString>("registry"); // relative to a temporary folder; "" = unset
        QTest::addColumn<QString>("xdg");
        QTest::addColumn<QString>("expected");
        QTest::newRow("CUBRIX_REGISTRY wins") << "own/hive.reg"
                                              << "xdg"
                                              << "own/hive.reg";
        QTest::newRow("XDG_CONFIG_HOME") << ""
                                         << "xdg"
                                         << "xdg/cubrix/registry.reg";
        QTest::newRow("home") << ""
                              << ""
                              << "home/.config/cubrix/registry.reg";
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
