#include "storage/ZipWriter.h"

#include "storage/ArchiveEntryNames.h"
#include "storage/ArchiveSink.h"

#include <QDateTime>
#include <QtEndian>

#include <limits>

using namespace Qt::StringLiterals;

namespace {

constexpr quint32 kLocalSignature = 0x04034b50;
constexpr quint32 kCentralSignature = 0x02014b50;
constexpr quint32 kEndSignature = 0x06054b50;
constexpr quint16 kUtf8Flag = 0x0800;
constexpr quint16 kMadeByUnix = (3 << 8) | 20; // Unix, ZIP 2.0
constexpr quint32 kFileMode = 0100644;
constexpr quint32 kFolderMode = 040755;
constexpr quint32 kDosFolder = 0x10;
constexpr qint64 kMax32 = std::numeric_limits<quint32>::max();
constexpr int kMaxEntries = std::numeric_limits<quint16>::max();

void put16(QByteArray &out, quint32 value)
{
    char bytes[2];
    qToLittleEndian(quint16(value), bytes);
    out.append(bytes, 2);
}

void put32(QByteArray &out, quint32 value)
{
    char bytes[4];
    qToLittleEndian(value, bytes);
    out.append(bytes, 4);
}

// The DOS date and time of `t` in local time, as ZIP tools write it; times
// before 1980 are stored as its first day.
std::pair<quint16, quint16> dosTime(std::time_t t)
{
    const QDateTime local = QDateTime::fromSecsSinceEpoch(qint64(t)).toLocalTime();
    const QDate day = local.date();
    const QTime time = local.time();
    if (day.year() < 1980)
        return {0, (1 << 5) | 1};
    return {quint16((time.hour() << 11) | (time.minute() << 5) | (time.second() / 2)),
            quint16(((day.year() - 1980) << 9) | (day.month() << 5) | day.day())};
}

} // namespace

qint64 ZipWriter::entryOverhead(const QString &name)
{
    bool utf8 = false;
    return 30 + 46 + 2 * qint64(ArchiveEntryNames::encode(name, utf8).size());
}

bool ZipWriter::begin()
{
    m_directory.clear();
    m_offset = 0;
    m_count = 0;
    return m_sink.begin() || fail(QString::fromUtf8(zip_error_strerror(m_sink.error())));
}

bool ZipWriter::addFolder(const QString &name, std::time_t modified)
{
    return addEntry(name, modified, PackedForm(), QByteArray(), true);
}

bool ZipWriter::addFile(const QString &name, std::time_t modified, const PackedEntry &entry)
{
    if (entry.packed.size() != entry.form.packedSize)
        return fail(u"\"%1\": its packed data is incomplete"_s.arg(name));
    return addEntry(name, modified, entry.form, entry.packed, false);
}

bool ZipWriter::addEntry(const QString &name, std::time_t modified, const PackedForm &form, const QByteArray &packed,
                         bool folder)
{
    if (m_count >= kMaxEntries)
        return fail(u"more than %1 entries, which a ZIP archive without Zip64 cannot hold"_s.arg(kMaxEntries));
    if (form.size > kMax32 || form.packedSize > kMax32 || m_offset > kMax32)
        return fail(u"\"%1\" does not fit into a ZIP archive without Zip64 (4 GiB)"_s.arg(name));
    bool utf8 = false;
    const QByteArray stored = ArchiveEntryNames::encode(name, utf8);
    if (stored.size() > std::numeric_limits<quint16>::max())
        return fail(u"\"%1\": the name is too long"_s.arg(name));
    const quint16 flags = utf8 ? kUtf8Flag : 0;
    const quint16 needed = form.method == PackedForm::Deflated || folder ? 20 : 10;
    const auto [time, date] = dosTime(modified);

    // The fields local header and directory record share, from "version needed" on.
    QByteArray common;
    put16(common, needed);
    put16(common, flags);
    put16(common, form.method);
    put16(common, time);
    put16(common, date);
    put32(common, form.crc);
    put32(common, quint32(form.packedSize));
    put32(common, quint32(form.size));
    put16(common, quint32(stored.size()));
    put16(common, 0); // no extra field

    QByteArray local;
    put32(local, kLocalSignature);
    local += common + stored;

    put32(m_directory, kCentralSignature);
    put16(m_directory, kMadeByUnix);
    m_directory += common;
    put16(m_directory, 0); // comment
    put16(m_directory, 0); // disk
    put16(m_directory, 0); // internal attributes
    put32(m_directory, folder ? (kFolderMode << 16) | kDosFolder : kFileMode << 16);
    put32(m_directory, quint32(m_offset));
    m_directory += stored;

    if (!write(local) || !write(packed))
        return false;
    ++m_count;
    return true;
}

bool ZipWriter::finish()
{
    const qint64 directoryOffset = m_offset;
    if (directoryOffset > kMax32 || m_directory.size() > kMax32)
        return fail(u"the archive does not fit into a ZIP archive without Zip64 (4 GiB)"_s);
    QByteArray end;
    put32(end, kEndSignature);
    put16(end, 0);
    put16(end, 0);
    put16(end, quint32(m_count));
    put16(end, quint32(m_count));
    put32(end, quint32(m_directory.size()));
    put32(end, quint32(directoryOffset));
    put16(end, 0); // comment
    return write(m_directory) && write(end);
}

bool ZipWriter::write(const QByteArray &bytes)
{
    if (bytes.isEmpty())
        return true;
    if (!m_sink.write(bytes.constData(), size_t(bytes.size())))
        return fail(QString::fromUtf8(zip_error_strerror(m_sink.error())));
    m_offset += bytes.size();
    return true;
}

bool ZipWriter::fail(const QString &reason)
{
    m_error = reason;
    return false;
}
