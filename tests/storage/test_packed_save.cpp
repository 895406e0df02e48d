// Saving copies what did not change: an entry whose file is unchanged since the
// archive was read (or whose packed form Shrink made) keeps its compressed
// bytes, a changed one is packed anew, and an archive changed behind the
// editor's back is never copied from.

#include "storage/ArchiveReader.h"
#include "storage/ArchiveWriter.h"
#include "storage/PackedEntries.h"
#include "support/TestFiles.h"

#include <QSaveFile>
#include <QtTest>

#include <zip.h>

using namespace Qt::StringLiterals;

namespace {

const QMap<QString, QByteArray> kFiles{
    {u"Set.style"_s, QByteArray("<style name=\"Set\">\r\n").repeated(20)},
    {u"blocks/wall.block"_s, QByteArray("<vertex ref=\"1\" coords=\"(0,0,0)\"/>\r\n").repeated(200)},
    {u"sounds/bell.wav"_s, QByteArray("RIFF....WAVEfmt data").repeated(500)},
    {u"textures/sky.gif"_s, QByteArray("GIF89a") + QByteArray(3000, 'x')},
};

// The archive as another tool writes it: every entry deflated at level 1, which
// Cubrix's own packing (level 6, or stored for images) never gives.
void writeFastArchive(const QString &path)
{
    int error = 0;
    zip_t *za = zip_open(QFile::encodeName(path).constData(), ZIP_CREATE | ZIP_TRUNCATE, &error);
    QVERIFY(za);
    for (auto it = kFiles.cbegin(); it != kFiles.cend(); ++it) {
        zip_source_t *source = zip_source_buffer(za, it.value().constData(), zip_uint64_t(it.value().size()), 0);
        const zip_int64_t index = zip_file_add(za, it.key().toUtf8().constData(), source, 0);
        QVERIFY(index >= 0);
        zip_set_file_compression(za, zip_uint64_t(index), ZIP_CM_DEFLATE, 1);
    }
    QCOMPARE(zip_close(za), 0);
}

// Each entry's stored bytes by name.
QMap<QString, QByteArray> packedBytes(const QString &archivePath)
{
    QMap<QString, QByteArray> entries;
    ArchiveReader reader;
    if (!reader.open(archivePath))
        return entries;
    const QStringList names = reader.entryNames();
    for (qsizetype i = 0; i < names.size(); ++i) {
        PackedEntry entry;
        if (reader.readPacked(quint64(i), entry))
            entries.insert(names[i], entry.packed);
    }
    return entries;
}

void replaceFile(const QString &path, const QByteArray &bytes)
{
    QSaveFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(bytes);
    QVERIFY(file.commit());
}

} // namespace

class TestPackedSave : public QObject {
    Q_OBJECT
private slots:
    void save_data();
    void save();
};

void TestPackedSave::save_data()
{
    // What happens between the open and the save; which entries must keep the source's bytes.
    QTest::addColumn<QString>("change");
    QTest::addColumn<QStringList>("kept");
    const QStringList all = kFiles.keys();
    QTest::newRow("nothing") << u"nothing"_s << all;
    QTest::newRow("one block edited") << u"edit"_s
                                      << QStringList{u"Set.style"_s, u"sounds/bell.wav"_s, u"textures/sky.gif"_s};
    QTest::newRow("a file written anew with the same bytes") << u"same"_s << all;
    QTest::newRow("a form Shrink made") << u"shrink"_s
                                        << QStringList{u"Set.style"_s, u"sounds/bell.wav"_s, u"textures/sky.gif"_s};
    QTest::newRow("the archive replaced by another program") << u"replaced"_s << QStringList();
}

void TestPackedSave::save()
{
    QFETCH(QString, change);
    QFETCH(QStringList, kept);
    QTemporaryDir dir;
    const QString source = dir.filePath(u"Set.bset"_s);
    const QString folder = dir.filePath(u"work"_s);
    QVERIFY(QDir().mkpath(folder));
    writeFastArchive(source);
    const QMap<QString, QByteArray> before = packedBytes(source);

    ArchiveReader reader;
    std::vector<ArchiveEntryOrigin> origins;
    QVERIFY(reader.open(source) && reader.extractAll(folder, &origins));
    PackedEntries packed;
    packed.adoptArchive(source, folder, origins);

    const QString wall = u"blocks/wall.block"_s;
    const QByteArray edited = kFiles[wall] + "<!-- edited -->";
    QByteArray strongest;
    if (change == "edit"_L1)
        replaceFile(folder + u'/' + wall, edited);
    if (change == "same"_L1)
        replaceFile(folder + u'/' + wall, kFiles[wall]);
    if (change == "shrink"_L1) {
        const PackedEntry entry = EntryPacking::pack(kFiles[wall], EntryPacking::kStrongestLevel);
        strongest = entry.packed;
        packed.remember(wall, PlatformFile::fileStamp(QFile::encodeName(folder + u'/' + wall)), entry);
    }
    if (change == "replaced"_L1) {
        QVERIFY(QFile::remove(source));
        ArchiveWriter other(source);
        QVERIFY(other.addFolder(folder) && other.write());
    }

    // Saved twice: the second save copies from the first one's archive.
    const QString target = dir.filePath(u"Saved.bset"_s);
    for (int save = 0; save < 2; ++save) {
        ArchiveWriter writer(target, &packed);
        QVERIFY(writer.addFolder(folder));
        QVERIFY(writer.write());
    }
    const QMap<QString, QByteArray> after = packedBytes(target);
    QCOMPARE(after.keys(), kFiles.keys());
    for (const QString &name : kFiles.keys())
        QCOMPARE(after[name] == before[name], kept.contains(name));
    if (!strongest.isEmpty())
        QCOMPARE(after[wall], strongest);

    // Whatever was copied, the archive holds the files as they are now.
    QTemporaryDir check;
    ArchiveReader saved;
    QVERIFY(saved.open(target) && saved.extractAll(check.path()));
    for (const QString &name : kFiles.keys())
        QCOMPARE(readBytes(check.filePath(name)), name == wall && change == "edit"_L1 ? edited : kFiles[name]);
}

QTEST_GUILESS_MAIN(TestPackedSave)
#include "test_packed_save.moc"
