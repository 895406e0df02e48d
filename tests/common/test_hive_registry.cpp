// HiveRegistry: the settings store on platforms without a Windows registry, and
// the reader of a Wine prefix's system.reg. Leaves out: Wine itself reading our
// files (no Wine here); the format follows what Wine writes.
#include "common/HiveRegistry.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <unistd.h>

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

// A hive as Wine writes it, with every kind of line the reader must keep.
const QByteArray kWineHive = R"REG(WINE REGISTRY Version 2
;; All keys relative to \\Machine

#arch=win32

[Software\\Classes\\.bset] 1600000000
#time=1d6a4a1b2c3d4e5
@="Blockset"
"Content Type"="application/x-bset"

[Software\\Microsoft\\Internet Explorer\\Plugins\\Extension\\.3dml] 1600000000
#time=1d6a4a1b2c3d4e5
"Location"="C:\\Program Files\\Rover\\npRover.dll"
"Binary"=hex:00,01,02,03,04,05,06,07,08,09,0a,0b,0c,0d,0e,0f,10,11,12,13,14,15,\
  16,17,18,19
"Expand"=str(2):"%SystemRoot%\\system32"
"Multi"=hex(7):41,00,00,00,42,00,00,00,00,00
;; a comment Wine does not write, kept anyway
"Count"=dword:0000002a

[Software\\Quillmoor\\Cubrix] 1600000001
#time=1d6a4a1b2c3d4e6
#class="Application Data"
"pathBlockset"="C:\\Worlds"
"showWarnings"=dword:ffffffff
)REG";

} // namespace

class TestHiveRegistry : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QString hivePath() const { return m_dir.filePath(QStringLiteral("registry.reg")); }

private slots:
    void init()
    {
        QFile::remove(hivePath());
        QVERIFY(m_dir.isValid());
    }

    void textRoundTrip_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("text");
        QTest::newRow("plain") << "pathBlockset" << "/home/ann/worlds";
        QTest::newRow("empty") << "pathBlocks" << "";
        QTest::newRow("backslashes") << "pathTextures" << "C:\\Worlds\\Textures\\";
        QTest::newRow("quotes") << "quoted" << "say \"hi\" \"";
        QTest::newRow("line ends and tab") << "lines" << "a\r\nb\tc\n";
        QTest::newRow("latin and euro") << "accent" << QString::fromUtf8("Caf\xc3\xa9 \xe2\x82\xac 5");
        QTest::newRow("accent before hex digit") << "hexnext" << QString::fromUtf8("\xc3\xa9" "abc");
        QTest::newRow("outside BMP") << "emoji" << QString::fromUtf8("\xf0\x9f\x99\x82 x");
        QTest::newRow("control before digit") << "ctl" << QString(QChar(1)) + "7" + QChar(2);
        QTest::newRow("brackets") << "[section]" << "[not a section]";
        QTest::newRow("default value") << "" << "the default";
        QTest::newRow("name with quote") << "a\"b\\c" << "v";
    }
    void textRoundTrip()
    {
        QFETCH(QString, name);
        QFETCH(QString, text);
        {
            HiveRegistry reg(hivePath());
            QVERIFY(reg.regCreateKey(RegRoot::LocalMachine, kKey, "Application Data"));
            QVERIFY(reg.regSetValue(RegRoot::LocalMachine, kKey, name, RegValue::fromText(text)));
        }
        HiveRegistry fresh(hivePath());
        RegValue value;
        QVERIFY(fresh.regQueryValue(RegRoot::LocalMachine, kKey, name, value));
        QCOMPARE(value.type, 1u);
        QCOMPARE(value.text, text);
        // Wine escapes everything above 127, so the file is plain ASCII.
        for (char c : readBytes(hivePath()))
            QVERIFY(static_cast<unsigned char>(c) < 0x80);
    }

    void dwordRoundTrip_data()
    {
        QTest::addColumn<quint32>("dword");
        QTest::newRow("off") << 0u;
        QTest::newRow("on (-1)") << 0xFFFFFFFFu;
        QTest::newRow("one") << 1u;
        QTest::newRow("mixed") << 0x00ABCDEFu;
    }
    void dwordRoundTrip()
    {
        QFETCH(quint32, dword);
        {
            HiveRegistry reg(hivePath());
            QVERIFY(reg.regCreateKey(RegRoot::LocalMachine, kKey, QString()));
            QVERIFY(reg.regSetValue(RegRoot::LocalMachine, kKey, "flag", RegValue::fromDword(dword)));
        }
        QVERIFY(readBytes(hivePath()).contains("\"flag\"=dword:" + QByteArray::number(dword, 16).rightJustified(8, '0')));
        HiveRegistry fresh(hivePath());
        RegValue value;
        QVERIFY(fresh.regQueryValue(RegRoot::LocalMachine, kKey, "flag", value));
        QCOMPARE(value.type, 4u);
        QCOMPARE(value.dword, dword);
    }

    void readsWineValues_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<uint>("type");
        QTest::addColumn<QString>("text");
        QTest::addColumn<quint32>("dword");
        QTest::newRow("escaped backslash") << QByteArray(R"("v"="C:\\dir\\")") << 1u << "C:\\dir\\" << 0u;
        QTest::newRow("escaped quote") << QByteArray(R"("v"="a\"b")") << 1u << "a\"b" << 0u;
        QTest::newRow("hex escape") << QByteArray(R"("v"="caf\xe9")") << 1u << QString::fromUtf8("caf\xc3\xa9") << 0u;
        QTest::newRow("4-digit hex escape") << QByteArray(R"("v"="\x00e9a")") << 1u << QString::fromUtf8("\xc3\xa9" "a") << 0u;
        QTest::newRow("C escapes") << QByteArray(R"("v"="a\tb\nc\rd\0")") << 1u << QString("a\tb\nc\rd") + QChar(0) << 0u;
        QTest::newRow("octal") << QByteArray(R"("v"="\101\102")") << 1u << "AB" << 0u;
        QTest::newRow("str: form") << QByteArray(R"("v"=str:"text")") << 1u << "text" << 0u;
        QTest::newRow("utf-8 text") << QByteArray("\"v\"=\"caf\xc3\xa9\"") << 1u << QString::fromUtf8("caf\xc3\xa9") << 0u;
        QTest::newRow("cp1252 text") << QByteArray("\"v\"=\"caf\xe9 \x80\"") << 1u << QString::fromUtf8("caf\xc3\xa9 \xe2\x82\xac") << 0u;
        QTest::newRow("dword") << QByteArray(R"("v"=dword:0000002a)") << 4u << "" << 42u;
        QTest::newRow("short dword") << QByteArray(R"("v"=dword:1)") << 4u << "" << 1u;
        QTest::newRow("REG_SZ as hex") << QByteArray(R"("v"=hex(1):68,00,69,00,00,00)") << 1u << "hi" << 0u;
        QTest::newRow("REG_DWORD as hex") << QByteArray(R"("v"=hex(4):01,02,00,00)") << 4u << "" << 0x201u;
        QTest::newRow("blanks around =") << QByteArray("\"v\" = \"x\"  ") << 1u << "x" << 0u;
        QTest::newRow("name case") << QByteArray(R"("V"="upper")") << 1u << "upper" << 0u;
    }
    void readsWineValues()
    {
        QFETCH(QByteArray, line);
        QFETCH(uint, type);
        QFETCH(QString, text);
        QFETCH(quint32, dword);
        writeBytes(hivePath(), "WINE REGISTRY Version 2\n\n[Software\\\\Test] 1\n" + line + "\n");
        HiveRegistry reg(hivePath(), true);
        RegValue value;
        QVERIFY(reg.regQueryValue(RegRoot::LocalMachine, "software\\test", "v", value));
        QCOMPARE(value.type, quint32(type));
        QCOMPARE(value.text, text);
        QCOMPARE(value.dword, dword);
    }

    void keysAndNamesIgnoreCase()
    {
        HiveRegistry reg(hivePath());
        QVERIFY(reg.regCreateKey(RegRoot::LocalMachine, kKey, QString()));
        QVERIFY(!reg.regCreateKey(RegRoot::LocalMachine, "software\\QUILLMOOR\\cubrix", QString()));
        QVERIFY(reg.regSetValue(RegRoot::LocalMachine, kKey, "showWarnings", RegValue::fromDword(0)));
        QVERIFY(reg.regSetValue(RegRoot::LocalMachine, "Software\\quillmoor\\CUBRIX", "SHOWWARNINGS",
                                RegValue::fromDword(1)));
        RegValue value;
        QVERIFY(reg.regQueryValue(RegRoot::LocalMachine, "sOfTwArE\\Quillmoor\\Cubrix", "ShowWarnings", value));
        QCOMPARE(value.dword, 1u);
        // One value, one key: changing the case did not add a second one.
        const QByteArray file = readBytes(hivePath());
        QCOMPARE(file.count("showwarnings") + file.count("showWarnings") + file.count("SHOWWARNINGS"), 1);
        QCOMPARE(file.count("Cubrix]"), 1);
    }

    void createKey()
    {
        HiveRegistry reg(hivePath());
        QVERIFY(!reg.regKeyExists(RegRoot::LocalMachine, kKey));
        QVERIFY(reg.regCreateKey(RegRoot::LocalMachine, kKey, "Application Data"));
        QVERIFY(reg.regKeyExists(RegRoot::LocalMachine, kKey));
        // The parents exist as Wine creates them; creating any of them again is no new key.
        QVERIFY(reg.regKeyExists(RegRoot::LocalMachine, "SOFTWARE\\Quillmoor"));
        QVERIFY(!reg.regCreateKey(RegRoot::LocalMachine, "SOFTWARE\\Quillmoor", QString()));
        QVERIFY(!reg.regCreateKey(RegRoot::LocalMachine, kKey, "Application Data"));
        QVERIFY(!reg.regKeyExists(RegRoot::LocalMachine, "SOFTWARE\\Quillmoor\\Cubri"));
        // Malformed paths are refused, not created.
        QVERIFY(!reg.regCreateKey(RegRoot::LocalMachine, "SOFTWARE\\\\Other", QString()));
        QVERIFY(!reg.regCreateKey(RegRoot::LocalMachine, "\\Other", QString()));
        QVERIFY(!reg.regCreateKey(RegRoot::LocalMachine, QString(), QString()));

        HiveRegistry fresh(hivePath());
        QCOMPARE(fresh.keyClass(kKey), QString("Application Data"));
        QCOMPARE(fresh.keyClass("software\\quillmoor"), QString());
        QVERIFY(fresh.regKeyExists(RegRoot::LocalMachine, "SOFTWARE\\Quillmoor"));

        const QString file = QString::fromLatin1(readBytes(hivePath()));
        QVERIFY(file.startsWith("WINE REGISTRY Version 2\n;; All keys relative to \\\\Machine\n\n#arch=win32\n"));
        const QRegularExpression section(
            "\n\n\\[SOFTWARE\\\\\\\\Quillmoor\\\\\\\\Cubrix\\] [0-9]+\n#time=[0-9a-f]+\n#class=\"Application Data\"\n$");
        QVERIFY2(section.match(file).hasMatch(), qPrintable(file));
    }

    void valuesNeedAnExistingKey()
    {
        HiveRegistry reg(hivePath());
        QVERIFY(!reg.regSetValue(RegRoot::LocalMachine, kKey, "pathBlockset", RegValue::fromText("x")));
        QVERIFY(!QFile::exists(hivePath()));
        RegValue value;
        QVERIFY(!reg.regQueryValue(RegRoot::LocalMachine, kKey, "pathBlockset", value));
        QVERIFY(reg.regCreateKey(RegRoot::LocalMachine, kKey, QString()));
        QVERIFY(!reg.regQueryValue(RegRoot::LocalMachine, kKey, "pathBlockset", value));
        // A parent that exists only as a parent takes values too.
        QVERIFY(reg.regSetValue(RegRoot::LocalMachine, "SOFTWARE\\Quillmoor", "vendor", RegValue::fromText("Q")));
        HiveRegistry fresh(hivePath());
        QVERIFY(fresh.regQueryValue(RegRoot::LocalMachine, "SOFTWARE\\Quillmoor", "vendor", value));
        QCOMPARE(value.text, QString("Q"));
    }

    void otherTypesAnswerWithoutData_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("hex") << "Binary";
        QTest::newRow("expand string") << "Expand";
        QTest::newRow("multi string") << "Multi";
    }
    void otherTypesAnswerWithoutData()
    {
        QFETCH(QString, name);
        writeBytes(hivePath(), kWineHive);
        HiveRegistry reg(hivePath(), true);
        RegValue value;
        value.text = "untouched";
        value.dword = 7;
        QVERIFY(reg.regQueryValue(RegRoot::LocalMachine,
                                  "Software\\Microsoft\\Internet Explorer\\Plugins\\Extension\\.3dml", name, value));
        QCOMPARE(value.type, 0u);
        QCOMPARE(value.text, QString("untouched"));
        QCOMPARE(value.dword, 7u);
    }

    void rewriteKeepsEverythingElse()
    {
        writeBytes(hivePath(), kWineHive);
        HiveRegistry reg(hivePath());
        QCOMPARE(reg.keyClass(kKey), QString("Application Data"));
        RegValue value;
        QVERIFY(reg.regQueryValue(RegRoot::LocalMachine,
                                  "software\\microsoft\\internet explorer\\plugins\\extension\\.3DML", "location", value));
        QCOMPARE(value.text, QString("C:\\Program Files\\Rover\\npRover.dll"));

        // A changed value is rewritten in its place, a new one goes after the key's last value.
        QVERIFY(reg.regSetValue(RegRoot::LocalMachine, kKey, "pathBlockset", RegValue::fromText("D:\\New")));
        QVERIFY(reg.regSetValue(RegRoot::LocalMachine, kKey, "skipEdit", RegValue::fromDword(0)));
        // Replacing a value of another type by text.
        QVERIFY(reg.regSetValue(RegRoot::LocalMachine,
                                "Software\\Microsoft\\Internet Explorer\\Plugins\\Extension\\.3dml", "Multi",
                                RegValue::fromText("one")));
        // Writing a type other than text or integer writes nothing.
        RegValue raw;
        raw.type = 3;
        raw.raw = "xyz";
        QVERIFY(reg.regSetValue(RegRoot::LocalMachine, kKey, "blob", raw));

        QByteArray expected = kWineHive;
        expected.replace(R"("pathBlockset"="C:\\Worlds")", R"("pathBlockset"="D:\\New")");
        expected.replace("\"showWarnings\"=dword:ffffffff\n", "\"showWarnings\"=dword:ffffffff\n\"skipEdit\"=dword:00000000\n");
        expected.replace("\"Multi\"=hex(7):41,00,00,00,42,00,00,00,00,00", "\"Multi\"=\"one\"");
        QCOMPARE(readBytes(hivePath()), expected);
    }

    void crlfFileStaysCrlf()
    {
        QByteArray crlf = kWineHive;
        crlf.replace("\n", "\r\n");
        writeBytes(hivePath(), crlf);
        HiveRegistry reg(hivePath());
        RegValue value;
        QVERIFY(reg.regQueryValue(RegRoot::LocalMachine, kKey, "pathBlockset", value));
        QCOMPARE(value.text, QString("C:\\Worlds"));
        QVERIFY(reg.regSetValue(RegRoot::LocalMachine, kKey, "pathSounds", RegValue::fromText("S")));
        QVERIFY(reg.regCreateKey(RegRoot::LocalMachine, "Software\\Other", QString()));
        const QByteArray file = readBytes(hivePath());
        QVERIFY(file.startsWith(crlf.left(crlf.size() - 2)));
        QCOMPARE(file.count("\n"), file.count("\r\n"));
    }

    void rereadsAfterExternalChange()
    {
        HiveRegistry reg(hivePath());
        QVERIFY(reg.regCreateKey(RegRoot::LocalMachine, kKey, QString()));
        QVERIFY(reg.regSetValue(RegRoot::LocalMachine, kKey, "pathBlockset", RegValue::fromText("first")));

        // Another program (or a second editor) writes the file.
        {
            HiveRegistry other(hivePath());
            QVERIFY(other.regSetValue(RegRoot::LocalMachine, kKey, "pathBlockset", RegValue::fromText("second")));
        }
        RegValue value;
        QVERIFY(reg.regQueryValue(RegRoot::LocalMachine, kKey, "pathBlockset", value));
        QCOMPARE(value.text, QString("second"));

        // A rewrite in place that keeps the size (and the file) is seen too.
        QByteArray bytes = readBytes(hivePath());
        bytes.replace("\"second\"", "\"thirds\"");
        writeBytes(hivePath(), bytes);
        QVERIFY(reg.regQueryValue(RegRoot::LocalMachine, kKey, "pathBlockset", value));
        QCOMPARE(value.text, QString("thirds"));

        // Our next write starts from what is on disk now, not from an old copy.
        QVERIFY(reg.regSetValue(RegRoot::LocalMachine, kKey, "pathBlocks", RegValue::fromText("b")));
        HiveRegistry fresh(hivePath());
        QVERIFY(fresh.regQueryValue(RegRoot::LocalMachine, kKey, "pathBlockset", value));
        QCOMPARE(value.text, QString("thirds"));

        // The file removed from under us: an empty registry again.
        QVERIFY(QFile::remove(hivePath()));
        QVERIFY(!reg.regKeyExists(RegRoot::LocalMachine, kKey));
    }

    void corruptFileIsNeverOverwritten_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("not a hive") << QByteArray("hello world\n");
        QTest::newRow("other version") << QByteArray("WINE REGISTRY Version 1\n\n[A] 1\n\"v\"=\"x\"\n");
        QTest::newRow("regedit export") << QByteArray("REGEDIT4\n\n[HKEY_LOCAL_MACHINE\\A]\n\"v\"=\"x\"\n");
        QTest::newRow("value before any key") << QByteArray("WINE REGISTRY Version 2\n\"v\"=\"x\"\n");
        QTest::newRow("unclosed key") << QByteArray("WINE REGISTRY Version 2\n[A\\\\B 1\n");
        QTest::newRow("empty key name") << QByteArray("WINE REGISTRY Version 2\n[A\\\\\\\\B] 1\n");
        QTest::newRow("unclosed string") << QByteArray("WINE REGISTRY Version 2\n[A] 1\n\"v\"=\"x\n");
        QTest::newRow("bad dword") << QByteArray("WINE REGISTRY Version 2\n[A] 1\n\"v\"=dword:xyz\n");
        QTest::newRow("dword too long") << QByteArray("WINE REGISTRY Version 2\n[A] 1\n\"v\"=dword:123456789\n");
        QTest::newRow("bad hex") << QByteArray("WINE REGISTRY Version 2\n[A] 1\n\"v\"=hex:0g,11\n");
        QTest::newRow("continued past the end") << QByteArray("WINE REGISTRY Version 2\n[A] 1\n\"v\"=hex:01,\\\n");
        QTest::newRow("unknown type") << QByteArray("WINE REGISTRY Version 2\n[A] 1\n\"v\"=qword:1\n");
        QTest::newRow("stray text") << QByteArray("WINE REGISTRY Version 2\n[A] 1\nv=x\n");
        QTest::newRow("binary junk") << QByteArray("WINE REGISTRY Version 2\n\x01\x02\xff\0\0\n", 31);
        QTest::newRow("truncated") << kWineHive.left(kWineHive.indexOf("\"Expand\"") + 20);
    }
    void corruptFileIsNeverOverwritten()
    {
        QFETCH(QByteArray, bytes);
        writeBytes(hivePath(), bytes);
        HiveRegistry reg(hivePath());
        QVERIFY(!reg.regKeyExists(RegRoot::LocalMachine, "A"));
        QVERIFY(!reg.regKeyExists(RegRoot::LocalMachine, QString()));
        RegValue value;
        QVERIFY(!reg.regQueryValue(RegRoot::LocalMachine, "A", "v", value));
        QVERIFY(!reg.regCreateKey(RegRoot::LocalMachine, kKey, "Application Data"));
        QVERIFY(!reg.regSetValue(RegRoot::LocalMachine, "A", "v", RegValue::fromText("new")));
        QCOMPARE(reg.keyClass("A"), QString());
        QCOMPARE(readBytes(hivePath()), bytes);

        // Once the file is repaired it is read again.
        writeBytes(hivePath(), "WINE REGISTRY Version 2\n\n[A] 1\n\"v\"=\"fixed\"\n");
        QVERIFY(reg.regQueryValue(RegRoot::LocalMachine, "A", "v", value));
        QCOMPARE(value.text, QString("fixed"));
    }

    void unreadableFile_data()
    {
        QTest::addColumn<bool>("folder");
        QTest::newRow("file without rights") << false;
        QTest::newRow("folder without rights") << true;
    }
    void unreadableFile()
    {
        QFETCH(bool, folder);
        if (geteuid() == 0)
            QSKIP("root reads files without read rights");
        const QString dir = m_dir.filePath(QStringLiteral("locked"));
        QVERIFY(QDir().mkpath(dir));
        const QString path = dir + "/registry.reg";
        writeBytes(path, kWineHive);
        QFile::Permissions none;
        QVERIFY(QFile::setPermissions(folder ? dir : path, none));
        {
            HiveRegistry reg(path);
            QVERIFY(!reg.regKeyExists(RegRoot::LocalMachine, kKey));
            QVERIFY(!reg.regCreateKey(RegRoot::LocalMachine, "Software\\New", QString()));
            QVERIFY(!reg.regSetValue(RegRoot::LocalMachine, kKey, "pathBlockset", RegValue::fromText("x")));
        }
        QVERIFY(QFile::setPermissions(folder ? dir : path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        QCOMPARE(readBytes(path), kWineHive);
    }

    void missingFileCreatedOnFirstWrite()
    {
        const QString path = m_dir.filePath(QStringLiteral("deep/er/registry.reg"));
        HiveRegistry reg(path);
        QVERIFY(!reg.regKeyExists(RegRoot::LocalMachine, kKey));
        QVERIFY(reg.regKeyExists(RegRoot::LocalMachine, QString())); // the root of an empty hive
        QVERIFY(!QFile::exists(path));
        QVERIFY(reg.regCreateKey(RegRoot::LocalMachine, kKey, "Application Data"));
        QVERIFY(QFile::exists(path));
        QVERIFY(readBytes(path).startsWith("WINE REGISTRY Version 2\n"));
    }

    void emptyFileIsAnEmptyRegistry()
    {
        writeBytes(hivePath(), QByteArray());
        HiveRegistry reg(hivePath());
        QVERIFY(!reg.regKeyExists(RegRoot::LocalMachine, kKey));
        QVERIFY(reg.regCreateKey(RegRoot::LocalMachine, kKey, QString()));
        QVERIFY(readBytes(hivePath()).startsWith("WINE REGISTRY Version 2\n"));
    }

    void readOnlyNeverWrites()
    {
        HiveRegistry missing(hivePath(), true);
        QVERIFY(!missing.regCreateKey(RegRoot::LocalMachine, kKey, QString()));
        QVERIFY(!QFile::exists(hivePath()));

        writeBytes(hivePath(), kWineHive);
        HiveRegistry reg(hivePath(), true);
        QVERIFY(reg.regKeyExists(RegRoot::LocalMachine, kKey));
        QVERIFY(!reg.regSetValue(RegRoot::LocalMachine, kKey, "pathBlockset", RegValue::fromText("x")));
        QVERIFY(!reg.regCreateKey(RegRoot::LocalMachine, "Software\\New", QString()));
        QCOMPARE(readBytes(hivePath()), kWineHive);
    }

    void rewriteIsAtomic()
    {
        writeBytes(hivePath(), kWineHive);
        QVERIFY(QFile::setPermissions(hivePath(), QFile::ReadOwner | QFile::WriteOwner));
        HiveRegistry reg(hivePath());
        for (int i = 0; i < 5; ++i)
            QVERIFY(reg.regSetValue(RegRoot::LocalMachine, kKey, "pathBlocks", RegValue::fromText(QString::number(i))));
        // Nothing left beside the hive, and its rights are kept.
        QCOMPARE(QDir(m_dir.path()).entryList(QDir::Files | QDir::Hidden | QDir::System),
                 QStringList{"registry.reg"});
        QCOMPARE(QFile::permissions(hivePath()),
                 QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser);
    }

    void writeFailureLeavesFileAlone()
    {
        if (geteuid() == 0)
            QSKIP("root writes into folders without write rights");
        const QString dir = m_dir.filePath(QStringLiteral("ro"));
        QVERIFY(QDir().mkpath(dir));
        const QString path = dir + "/registry.reg";
        writeBytes(path, kWineHive);
        QVERIFY(QFile::setPermissions(dir, QFile::ReadOwner | QFile::ExeOwner));
        HiveRegistry reg(path);
        QVERIFY(!reg.regSetValue(RegRoot::LocalMachine, kKey, "pathBlockset", RegValue::fromText("x")));
        RegValue value;
        QVERIFY(reg.regQueryValue(RegRoot::LocalMachine, kKey, "pathBlockset", value));
        QCOMPARE(value.text, QString("C:\\Worlds")); // the failed change is not pretended
        QVERIFY(QFile::setPermissions(dir, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        QCOMPARE(readBytes(path), kWineHive);
    }

    void largeInputIsReadInLinearTime()
    {
        // Many keys, a deep key path and a long escaped string: a reader that is
        // quadratic in any of them takes minutes here.
        QByteArray bytes = "WINE REGISTRY Version 2\n";
        for (int i = 0; i < 20000; ++i)
            bytes += "\n[Software\\\\Many\\\\Key" + QByteArray::number(i) + "] 1\n\"v\"=dword:" + QByteArray::number(i, 16) + "\n";
        QByteArray deep = "[A";
        for (int i = 0; i < 50000; ++i)
            deep += "\\\\k";
        bytes += "\n" + deep + "] 1\n\"long\"=\"" + QByteArray(2000000, 'x').replace("xx", "\\\\") + "\"\n";
        writeBytes(hivePath(), bytes);

        QElapsedTimer timer;
        timer.start();
        HiveRegistry reg(hivePath(), true);
        RegValue value;
        QVERIFY(reg.regQueryValue(RegRoot::LocalMachine, "software\\many\\key19999", "v", value));
        QCOMPARE(value.dword, 19999u);
        QString deepPath = "A";
        for (int i = 0; i < 50000; ++i)
            deepPath += "\\k";
        QVERIFY(reg.regQueryValue(RegRoot::LocalMachine, deepPath, "long", value));
        QCOMPARE(value.text.size(), 1000000);
        QVERIFY2(timer.elapsed() < 20000, qPrintable(QString::number(timer.elapsed())));
    }
};

QTEST_GUILESS_MAIN(TestHiveRegistry)
#include "test_hive_registry.moc"
