// RegistryWrapper: the eleven settings on top of a hive file (and of a registry
// that fails on purpose). Leaves out: the Windows registry backend, which only
// builds on Windows.
#include "common/HiveRegistry.h"
#include "common/RegistryWrapper.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

namespace {

const QString kKey = QStringLiteral("SOFTWARE\\Quillmoor\\Cubrix");

QByteArray readBytes(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QByteArray();
    return file.readAll();
}

void writeBytes(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    QCOMPARE(file.write(bytes), bytes.size());
}

QByteArray hiveWith(const QByteArray &values)
{
    return "WINE REGISTRY Version 2\n\n[SOFTWARE\\\\Quillmoor\\\\Cubrix] 1\n#class=\"Application Data\"\n" + values;
}

// Records every call and fails the write with the given number (1-based).
class FailingRegistry : public Registry {
public:
    bool keyExists = false;
    bool createWorks = true;
    int failWrite = 0;
    QStringList calls;

    bool regKeyExists(RegRoot, const QString &path) override
    {
        calls << "exists " + path;
        return keyExists;
    }
    bool regQueryValue(RegRoot, const QString &, const QString &, RegValue &) override { return false; }
    bool regCreateKey(RegRoot, const QString &path, const QString &keyClass) override
    {
        calls << "create " + path + " " + keyClass;
        return createWorks;
    }
    bool regSetValue(RegRoot, const QString &, const QString &name, const RegValue &value) override
    {
        calls << "set " + name + (value.type == 1 ? "=\"" + value.text + "\"" : "=" + QString::number(value.dword, 16));
        return ++m_writes != failWrite;
    }

private:
    int m_writes = 0;
};

const QStringList kDefaultWrites = {
    "set pathBlockset=\"\"", "set pathBlocks=\"\"",   "set pathTextures=\"\"",   "set pathSounds=\"\"",
    "set showWarnings=ffffffff", "set syncBlockset=ffffffff", "set syncBlock=ffffffff", "set syncDouble=ffffffff",
    "set strictPrefix=ffffffff", "set skipEdit=0",          "set updateFile=ffffffff",
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
        RegistryWrapper settings(hive);
        QVERIFY(settings.loadSettings());
        QCOMPARE(hive.keyClass(kKey), QString("Application Data"));

        const QStringList folders = {"pathBlockset", "pathBlocks", "pathTextures", "pathSounds"};
        for (const QString &name : folders) {
            RegValue value;
            QVERIFY2(hive.regQueryValue(RegRoot::LocalMachine, kKey, name, value), qPrintable(name));
            QCOMPARE(value.type, 1u);
            QCOMPARE(value.text, QString());
        }
        const QList<QPair<QString, quint32>> options = {
            {"showWarnings", 0xFFFFFFFF}, {"syncBlockset", 0xFFFFFFFF}, {"syncBlock", 0xFFFFFFFF},
            {"syncDouble", 0xFFFFFFFF},   {"strictPrefix", 0xFFFFFFFF}, {"skipEdit", 0},
            {"updateFile", 0xFFFFFFFF},
        };
        for (const auto &[name, dword] : options) {
            RegValue value;
            QVERIFY2(hive.regQueryValue(RegRoot::LocalMachine, kKey, name, value), qPrintable(name));
            QCOMPARE(value.type, 4u);
            QCOMPARE(value.dword, dword);
        }
        QVERIFY(settings.getBoolSetting("showWarnings"));
        QVERIFY(!settings.getBoolSetting("skipEdit"));

        // Written in this order, and only once.
        const QByteArray file = readBytes(hivePath());
        qsizetype last = -1;
        for (const QString &name : folders + QStringList{"showWarnings", "syncBlockset", "syncBlock", "syncDouble",
                                                          "strictPrefix", "skipEdit", "updateFile"}) {
            const qsizetype at = file.indexOf("\"" + name.toLatin1() + "\"=");
            QVERIFY2(at > last, qPrintable(name));
            last = at;
        }
        QVERIFY(settings.loadSettings());
        QCOMPARE(readBytes(hivePath()), file);
    }

    void defaultsStopAtFirstFailedWrite_data()
    {
        QTest::addColumn<int>("failWrite");
        QTest::newRow("no failure") << 0;
        QTest::newRow("first folder") << 1;
        QTest::newRow("last folder") << 4;
        QTest::newRow("first option") << 5;
        QTest::newRow("last option") << 11;
    }
    void defaultsStopAtFirstFailedWrite()
    {
        QFETCH(int, failWrite);
        FailingRegistry reg;
        reg.failWrite = failWrite;
        RegistryWrapper settings(reg);
        QCOMPARE(settings.loadSettings(), failWrite == 0);
        const QStringList writes = failWrite == 0 ? kDefaultWrites : kDefaultWrites.mid(0, failWrite);
        QCOMPARE(reg.calls, QStringList({"exists " + kKey, "create " + kKey + " Application Data"}) + writes);
    }

    void keyThatCannotBeCreated()
    {
        FailingRegistry reg;
        reg.createWorks = false;
        RegistryWrapper settings(reg);
        QVERIFY(!settings.loadSettings());
        QCOMPARE(reg.calls.size(), 2); // asked, tried to create, wrote nothing
    }

    void existingKeyIsLeftAsItIs()
    {
        // showWarnings deleted by hand: it reads as off and is not restored.
        const QByteArray hive = hiveWith("\"pathBlockset\"=\"/w\"\n\"syncBlock\"=dword:ffffffff\n");
        writeBytes(hivePath(), hive);
        HiveRegistry reg(hivePath());
        RegistryWrapper settings(reg);
        QVERIFY(settings.loadSettings());
        QCOMPARE(readBytes(hivePath()), hive);
        QVERIFY(!settings.getBoolSetting("showWarnings"));
        QVERIFY(settings.getBoolSetting("syncBlock"));
        QCOMPARE(settings.getStringSetting("pathBlockset"), QString("/w"));
        QCOMPARE(settings.getStringSetting("pathSounds"), QString());
    }

    void storedValuesRead_data()
    {
        QTest::addColumn<QByteArray>("stored");
        QTest::addColumn<QString>("asText");
        QTest::addColumn<bool>("asFlag");
        QTest::newRow("on as -1") << QByteArray("dword:ffffffff") << "" << true;
        QTest::newRow("on as 1") << QByteArray("dword:00000001") << "" << true;
        QTest::newRow("on as high bit") << QByteArray("dword:80000000") << "" << true;
        QTest::newRow("off") << QByteArray("dword:00000000") << "" << false;
        QTest::newRow("text") << QByteArray("\"C:\\\\Worlds\"") << "C:\\Worlds" << false;
        QTest::newRow("binary") << QByteArray("hex:01,02,03") << "" << false;
        QTest::newRow("binary zero") << QByteArray("hex:00") << "" << false;
        QTest::newRow("expandable text") << QByteArray("str(2):\"%TEMP%\"") << "" << false;
    }
    void storedValuesRead()
    {
        QFETCH(QByteArray, stored);
        QFETCH(QString, asText);
        QFETCH(bool, asFlag);
        writeBytes(hivePath(), hiveWith("\"value\"=" + stored + "\n"));
        HiveRegistry reg(hivePath());
        RegistryWrapper settings(reg);
        QCOMPARE(settings.getStringSetting("value"), asText);
        QCOMPARE(settings.getBoolSetting("value"), asFlag);
        QCOMPARE(settings.getBoolSetting("VALUE"), asFlag);
    }

    void writesAreReadBack()
    {
        HiveRegistry reg(hivePath());
        RegistryWrapper settings(reg);
        QVERIFY(!settings.setStringSetting("pathBlockset", "/before/key")); // no key yet
        QVERIFY(settings.loadSettings());
        QVERIFY(settings.setStringSetting("pathBlockset", QString::fromUtf8("/home/\xc3\xa9l\xc3\xa8ve/worlds")));
        QVERIFY(settings.setBoolSetting("showWarnings", false));
        QVERIFY(settings.setBoolSetting("skipEdit", true));

        HiveRegistry fresh(hivePath());
        RegistryWrapper again(fresh);
        QCOMPARE(again.getStringSetting("pathBlockset"), QString::fromUtf8("/home/\xc3\xa9l\xc3\xa8ve/worlds"));
        QVERIFY(!again.getBoolSetting("showWarnings"));
        QVERIFY(again.getBoolSetting("skipEdit"));
        const QByteArray file = readBytes(hivePath());
        QVERIFY(file.contains("\"showWarnings\"=dword:00000000"));
        QVERIFY(file.contains("\"skipEdit\"=dword:ffffffff"));
    }

    void corruptHive()
    {
        const QByteArray junk = "this is not a registry\n\x01\x02";
        writeBytes(hivePath(), junk);
        HiveRegistry reg(hivePath());
        RegistryWrapper settings(reg);
        QVERIFY(!settings.loadSettings());
        QCOMPARE(settings.getStringSetting("pathBlockset"), QString());
        QVERIFY(!settings.getBoolSetting("showWarnings"));
        QVERIFY(!settings.setBoolSetting("showWarnings", true));
        QVERIFY(!settings.setStringSetting("pathBlockset", "x"));
        QCOMPARE(readBytes(hivePath()), junk);
    }

    void settingsFileLocation_data()
    {
        QTest::addColumn<QString>("registry");
        QTest::addColumn<QString>("xdg");
        QTest::addColumn<QString>("expected"); // relative to the temporary folder
        QTest::newRow("CUBRIX_REGISTRY wins") << "own/hive.reg" << "xdg" << "own/hive.reg";
        QTest::newRow("XDG_CONFIG_HOME") << "" << "xdg" << "xdg/cubrix/registry.reg";
        QTest::newRow("home") << "" << "" << "home/.config/cubrix/registry.reg";
    }
    void settingsFileLocation()
    {
        QFETCH(QString, registry);
        QFETCH(QString, xdg);
        QFETCH(QString, expected);
        QTemporaryDir dir;
        const QByteArray oldRegistry = qgetenv("CUBRIX_REGISTRY");
        const QByteArray oldXdg = qgetenv("XDG_CONFIG_HOME");
        const QByteArray oldHome = qgetenv("HOME");
        auto setOrUnset = [&](const char *name, const QString &relative) {
            if (relative.isEmpty())
                qunsetenv(name);
            else
                qputenv(name, dir.filePath(relative).toLocal8Bit());
        };
        setOrUnset("CUBRIX_REGISTRY", registry);
        setOrUnset("XDG_CONFIG_HOME", xdg);
        qputenv("HOME", dir.filePath("home").toLocal8Bit());
        {
            const auto reg = createSettingsRegistry();
            RegistryWrapper settings(*reg);
            QVERIFY(settings.loadSettings());
        }
        qputenv("CUBRIX_REGISTRY", oldRegistry);
        if (oldRegistry.isEmpty())
            qunsetenv("CUBRIX_REGISTRY");
        qputenv("XDG_CONFIG_HOME", oldXdg);
        if (oldXdg.isEmpty())
            qunsetenv("XDG_CONFIG_HOME");
        qputenv("HOME", oldHome);
        QVERIFY(QFile::exists(dir.filePath(expected)));
    }
};

QTEST_GUILESS_MAIN(TestRegistryWrapper)
#include "test_registry_wrapper.moc"
