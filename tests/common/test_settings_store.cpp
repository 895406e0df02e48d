// The settings store. HiveRegistry: the store on platforms without a Windows
// registry, and the reader of a Wine prefix's system.reg. RegistryWrapper: the
// eleven settings on top of a hive file (and of a registry that fails on
// purpose). Leaves out: Wine itself reading our files (no Wine here; the format
// follows what Wine writes) and the Windows registry backend, which only builds
// on Windows.
#include "common/HiveRegistry.h"
#include "common/RegistryWrapper.h"
#include "support/DataRows.h"
#include "support/TestFiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

namespace {

const QString kKey = QStringLiteral("SOFTWARE\\Quillmoor\\Cubrix");
const QString kPlugin = QStringLiteral("Software\\Microsoft\\Internet Explorer\\Plugins\\Extension\\.3dml");
constexpr RegRoot HKLM = RegRoot::LocalMachine;

// A hive as Wine writes it, with every kind of line the reader must keep.
const QByteArray kWineHive = R"REG(WINE REGISTRY Version 2
;; All keys relative to \\Machine

#arch=win32

[Software\\Microsoft\\Internet Explorer\\Plugins\\Extension\\.3dml] 1600000000
#time=1d6a4a1b2c3d4e5
"Location"="C:\\Program Files\\Rover\\npRover.dll"
"Binary"=hex:00,01,02,03,04,05,06,07,08,09,0a,0b,0c,0d,0e,0f,10,11,12,13,14,15,\
  16,17,18,19
"Expand"=str(2):"%SystemRoot%\\system32"
"Multi"=hex(7):41,00,00,00,42,00,00,00,00,00
;; a comment Wine does not write, kept anyway

[Software\\Quillmoor\\Cubrix] 1600000001
#time=1d6a4a1b2c3d4e6
#class="Application Data"
"pathBlockset"="C:\\Worlds"
"showWarnings"=dword:ffffffff
)REG";

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

class TestSettingsStore : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QString hivePath() const { return m_dir.filePath(QStringLiteral("registry.reg")); }

private slots:
    void init() { QFile::remove(hivePath()); }

    void values_data()
    {
        // The line as found in a file; "" = written by us, then read back.
        addColumns<QByteArray, QString, uint, QString, quint32>("line", "name", "type", "text", "dword");
        const QByteArray ours;
        addRow("empty text", ours, "pathBlocks", 1u, "", 0u);
        addRow("escapes", ours, "a\"b\\c", 1u, QString("C:\\W\\say \"hi\"\r\n\t") + QChar(1) + "7", 0u);
        // An escape followed by a hex digit, and a character outside the BMP.
        addRow("above 127", ours, "accent", 1u, "Caf\u00e9abc \u20ac \U0001F642", 0u);
        addRow("on (-1)", ours, "flag", 4u, "", 0xFFFFFFFFu);
        addRow("Wine: escaped \\ and \"", QByteArray(R"("v"="C:\\a\"b\\")"), "v", 1u, "C:\\a\"b\\", 0u);
        addRow("Wine: hex escapes", QByteArray(R"("v"="caf\xe9\x00e9a")"), "v", 1u, "caf\u00e9\u00e9a", 0u);
        addRow("Wine: C and octal escapes", QByteArray(R"("v"="a\tb\nc\rd\101\0")"), "v", 1u,
               QString("a\tb\nc\rdA") + QChar(0), 0u);
        addRow("Wine: REG_SZ as hex", QByteArray(R"("v"=hex(1):68,00,69,00,00,00)"), "v", 1u, "hi", 0u);
        addRow("Wine: REG_DWORD as hex", QByteArray(R"("v"=hex(4):01,02,00,00)"), "v", 4u, "", 0x201u);
        addRow("edited: cp1252 text", QByteArray("\"v\"=\"caf\xe9 \x80\""), "v", 1u, "caf\xc3\xa9 \xe2\x82\xac", 0u);
    }
    void values()
    {
        QFETCH(QByteArray, line);
        QFETCH(QString, name);
        QFETCH(uint, type);
        QFETCH(QString, text);
        QFETCH(quint32, dword);
        if (line.isEmpty()) {
            HiveRegistry reg(hivePath());
            QVERIFY(reg.regCreateKey(HKLM, kKey, "Application Data"));
            QVERIFY(
                reg.regSetValue(HKLM, kKey, name, type == 1 ? RegValue::fromText(text) : RegValue::fromDword(dword)));
            // Wine escapes everything above 127, so the file is plain ASCII.
            for (char c : readBytes(hivePath()))
                QVERIFY(static_cast<unsigned char>(c) < 0x80);
        } else {
            writeBytes(hivePath(), "WINE REGISTRY Version 2\n\n[Software\\\\Quillmoor\\\\Cubrix] 1\n" + line + "\n");
        }
        HiveRegistry fresh(hivePath(), true);
        RegValue value;
        QVERIFY(fresh.regQueryValue(HKLM, kKey, name, value));
        QCOMPARE(value.type, quint32(type));
        QCOMPARE(value.text, text);
        QCOMPARE(value.dword, dword);
    }

    // Starting from no file (in a folder that does not exist yet) or an empty one.
    void keys_data()
    {
        QTest::addColumn<QString>("relative");
        addRow("missing file and folder", "deep/er/registry.reg");
        addRow("empty file", "registry.reg");
    }
    void keys()
    {
        QFETCH(QString, relative);
        const QString path = m_dir.filePath(relative);
        if (relative == "registry.reg")
            writeBytes(path, QByteArray());
        HiveRegistry reg(path);
        QVERIFY(reg.regKeyExists(HKLM, QString())); // the root of an empty hive
        QVERIFY(!reg.regKeyExists(HKLM, kKey));
        QVERIFY(!reg.regSetValue(HKLM, kKey, "pathBlockset", RegValue::fromText("x")));
        QVERIFY(!QFile::exists(path) || QFileInfo(path).size() == 0);
        QVERIFY(reg.regCreateKey(HKLM, kKey, "Application Data"));
        QVERIFY(!reg.regCreateKey(HKLM, "software\\QUILLMOOR\\cubrix", QString()));
        // The parents exist as Wine creates them; creating one again is no new key.
        QVERIFY(!reg.regCreateKey(HKLM, "SOFTWARE\\Quillmoor", QString()));
        QVERIFY(!reg.regKeyExists(HKLM, "SOFTWARE\\Quillmoor\\Cubri"));
        for (const char *malformed : {"SOFTWARE\\\\Other", "\\Other", ""})
            QVERIFY2(!reg.regCreateKey(HKLM, malformed, QString()), malformed);
        RegValue value;
        QVERIFY(!reg.regQueryValue(HKLM, kKey, "showWarnings", value));
        QVERIFY(reg.regSetValue(HKLM, kKey, "showWarnings", RegValue::fromDword(0)));
        QVERIFY(reg.regSetValue(HKLM, "Software\\quillmoor\\CUBRIX", "SHOWWARNINGS", RegValue::fromDword(1)));
        // A key that exists only as a parent takes values too.
        QVERIFY(reg.regSetValue(HKLM, "SOFTWARE\\Quillmoor", "vendor", RegValue::fromText("Q")));

        HiveRegistry fresh(path);
        QVERIFY(fresh.regQueryValue(HKLM, "sOfTwArE\\Quillmoor\\Cubrix", "ShowWarnings", value));
        QCOMPARE(value.dword, 1u);
        QVERIFY(fresh.regQueryValue(HKLM, "SOFTWARE\\Quillmoor", "vendor", value));
        QCOMPARE(value.text, QString("Q"));
        QCOMPARE(fresh.keyClass("software\\quillmoor\\cubrix"), QString("Application Data"));
        QCOMPARE(fresh.keyClass("software\\quillmoor"), QString());
        const QString file = QString::fromLatin1(readBytes(path));
        QVERIFY(file.startsWith("WINE REGISTRY Version 2\n;; All keys relative to \\\\Machine\n\n#arch=win32\n"));
        const QRegularExpression section("\n\n\\[SOFTWARE\\\\\\\\Quillmoor\\\\\\\\Cubrix\\] [0-9]+\n#time=[0-9a-f]+\n"
                                         "#class=\"Application Data\"\n\"\\w+\"=dword:00000001\n\n\\[");
        QVERIFY2(section.match(file).hasMatch(), qPrintable(file));
        QCOMPARE(file.toLower().count("cubrix]"), 1); // one key and one value, whatever the case
    }

    // Read, then rewritten: a Wine hive (LF) and one saved by a Windows editor (CR LF).
    void rewriteKeepsEverythingElse_data()
    {
        QTest::addColumn<QByteArray>("eol");
        addRow("LF", QByteArray("\n"));
        addRow("CR LF", QByteArray("\r\n"));
    }
    void rewriteKeepsEverythingElse()
    {
        QFETCH(QByteArray, eol);
        writeBytes(hivePath(), QByteArray(kWineHive).replace("\n", eol));
        HiveRegistry reg(hivePath());
        // Other types read as success with nothing taken from them.
        for (const char *name : {"Binary", "Expand", "Multi"}) {
            RegValue value = RegValue::fromText("untouched");
            QVERIFY2(reg.regQueryValue(HKLM, kPlugin, name, value), name);
            QCOMPARE(value.type, 1u);
            QCOMPARE(value.text, QString("untouched"));
        }
        // A changed value is rewritten in its place, a new one goes after the key's
        // last value, a value of another type may become text, a type other than
        // text or integer writes nothing, and a new key goes at the end.
        QVERIFY(reg.regSetValue(HKLM, kKey, "pathBlockset", RegValue::fromText("D:\\New")));
        QVERIFY(reg.regSetValue(HKLM, kKey, "skipEdit", RegValue::fromDword(0)));
        QVERIFY(reg.regSetValue(HKLM, kPlugin, "Multi", RegValue::fromText("one")));
        RegValue raw;
        raw.type = 3;
        raw.raw = "xyz";
        QVERIFY(reg.regSetValue(HKLM, kKey, "blob", raw));
        QVERIFY(reg.regCreateKey(HKLM, "Software\\Other", QString()));

        QByteArray expected = kWineHive;
        expected.replace(R"("pathBlockset"="C:\\Worlds")", R"("pathBlockset"="D:\\New")");
        expected.replace("\"showWarnings\"=dword:ffffffff\n",
                         "\"showWarnings\"=dword:ffffffff\n\"skipEdit\"=dword:00000000\n");
        expected.replace("\"Multi\"=hex(7):41,00,00,00,42,00,00,00,00,00", "\"Multi\"=\"one\"");
        expected.replace("\n", eol);
        const QByteArray file = readBytes(hivePath());
        QCOMPARE(file.left(expected.size()), expected);
        QVERIFY(file.mid(expected.size()).contains("[Software\\\\Other] "));
        QCOMPARE(file.count("\n"), file.count(eol));
    }

    // Hives that are corrupt, cannot be written or not even read: every write
    // fails, the file is left as it was, a failed change is not pretended, and
    // once the file is repaired it is read again.
    void unusableFile_data()
    {
        // lock: "read-only" registry, "in place" (a folder there), "immutable" folder.
        addColumns<QByteArray, QString, bool>("bytes", "lock", "readable");
        const QByteArray head = "WINE REGISTRY Version 2\n[A] 1\n";
        addRow("other version", QByteArray("WINE REGISTRY Version 1\n\n[A] 1\n\"v\"=\"x\"\n"), "", false);
        addRow("unclosed key", QByteArray("WINE REGISTRY Version 2\n[A\\\\B 1\n"), "", false);
        addRow("unclosed string", head + "\"v\"=\"x\n", "", false);
        addRow("opened read-only (Wine's system.reg)", kWineHive, "read-only", true);
        addRow("a folder in the hive's place", QByteArray(), "in place", false);
        addRow("a folder nobody may write to", kWineHive, "immutable", true);
    }
    void unusableFile()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, lock);
        QFETCH(bool, readable);
        const QString dir = m_dir.filePath("unusable");
        const QString path = dir + "/registry.reg";
        QVERIFY(QDir().mkpath(lock == "in place" ? path : dir));
        if (lock != "in place")
            writeBytes(path, bytes);
        // chattr +i holds back root too, as missing rights would hold back a user.
        const auto writable = [&] {
            if (lock == "immutable")
                QProcess::execute("chattr", {"-i", dir});
        };
        auto restore = qScopeGuard(writable);
        if (lock == "immutable"
            && (QProcess::execute("chattr", {"+i", dir}) != 0 || QFile(dir + "/probe").open(QIODevice::WriteOnly)))
            QSKIP("this file system cannot make a folder immutable");
        HiveRegistry reg(path, lock == "read-only");
        RegValue value;
        QCOMPARE(reg.regKeyExists(HKLM, QString()), readable);
        QVERIFY(!reg.regCreateKey(HKLM, "Software\\New", "Application Data"));
        QVERIFY(!reg.regSetValue(HKLM, kKey, "pathBlockset", RegValue::fromText("x")));
        QCOMPARE(reg.regQueryValue(HKLM, kKey, "pathBlockset", value), readable);
        QCOMPARE(value.text, QString(readable ? "C:\\Worlds" : ""));
        writable();
        restore.dismiss();
        if (lock == "in place") {
            QVERIFY(QFileInfo(path).isDir() && QDir(path).isEmpty());
        } else {
            QCOMPARE(readBytes(path), bytes);
            writeBytes(path, "WINE REGISTRY Version 2\n\n[A] 1\n\"v\"=\"fixed\"\n");
            QVERIFY(reg.regQueryValue(HKLM, "A", "v", value));
            QCOMPARE(value.text, QString("fixed"));
        }
        QVERIFY(QDir(dir).removeRecursively());
    }

    void rewriteIsAtomic()
    {
        writeBytes(hivePath(), kWineHive);
        QVERIFY(QFile::setPermissions(hivePath(), QFile::ReadOwner | QFile::WriteOwner));
        HiveRegistry reg(hivePath());
        for (int i = 0; i < 3; ++i)
            QVERIFY(reg.regSetValue(HKLM, kKey, "pathBlocks", RegValue::fromText(QString::number(i))));
        // Nothing left beside the hive, and its rights are kept.
        QCOMPARE(QDir(m_dir.path()).entryList(QDir::Files | QDir::Hidden | QDir::System), QStringList{"registry.reg"});
        QCOMPARE(QFile::permissions(hivePath()),
                 QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser);
    }

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

QTEST_GUILESS_MAIN(TestSettingsStore)
#include "test_settings_store.moc"
