#include "storage/ArchiveSink.h"

#include <QByteArrayView>
#include <QRandomGenerator>

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

// Writes reach the disk in chunks of this size.
constexpr size_t kBufferSize = 256 * 1024;

QByteArray tempPrefix(const QByteArray &name)
{
    return '.' + name + ".cubrix-";
}

bool isTempSuffix(QByteArrayView suffix)
{
    return suffix.size() == 8 && std::all_of(suffix.begin(), suffix.end(), [](char c) {
               return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f');
           });
}

} // namespace

ArchiveSink::ArchiveSink(const PlatformFile::Folder &dir, QByteArray name) : m_dir(dir), m_name(std::move(name))
{
    zip_error_init(&m_error);
}

ArchiveSink::~ArchiveSink()
{
    rollback();
    zip_error_fini(&m_error);
}

void ArchiveSink::removeStaleTemps(const PlatformFile::Folder &dir, const QByteArray &name)
{
    std::vector<PlatformFile::Entry> entries;
    int err = 0;
    PlatformFile::listFolder(dir, entries, err); // what could be listed is still cleared
    const QByteArray prefix = tempPrefix(name);
    for (const PlatformFile::Entry &entry : entries) {
        const QByteArrayView fileName(entry.name);
        if (fileName.startsWith(prefix) && isTempSuffix(fileName.sliced(prefix.size())))
            PlatformFile::removeStaleSaveFile(dir, entry.name);
    }
}

zip_source_t *ArchiveSink::createSource(zip_error_t *error)
{
    return zip_source_function_create(&ArchiveSink::callback, this, error);
}

bool ArchiveSink::begin()
{
    rollback();
    int err = 0;
    if (!PlatformFile::openSaveFile(
            m_dir, m_name, [this] { return newTempName(); }, m_file, err))
        return fail(ZIP_ER_TMPOPEN, err);
    m_buffer.resize(kBufferSize);
    m_bufferStart = 0;
    m_bufferLength = 0;
    m_size = 0;
    return true;
}

bool ArchiveSink::write(const void *data, size_t length)
{
    if (m_file.fd < 0)
        return fail(ZIP_ER_INTERNAL, 0);
    if (m_bufferLength + length > m_buffer.size() && !flush())
        return false;
    if (length >= m_buffer.size()) {
        int err = 0;
        if (!PlatformFile::writeAt(m_file.fd, static_cast<const char *>(data), length, qint64(m_bufferStart), err))
            return fail(ZIP_ER_WRITE, err);
        m_bufferStart += length;
        m_size = std::max(m_size, m_bufferStart);
        return true;
    }
    std::memcpy(m_buffer.data() + m_bufferLength, data, length);
    m_bufferLength += length;
    m_size = std::max(m_size, m_bufferStart + m_bufferLength);
    return true;
}

bool ArchiveSink::seek(zip_uint64_t offset)
{
    if (!flush())
        return false;
    m_bufferStart = offset;
    return true;
}

bool ArchiveSink::commit()
{
    if (m_file.fd < 0)
        return fail(ZIP_ER_INTERNAL, 0);
    if (!flush())
        return false;
    int err = 0;
    if (m_keepAside) {
        if (!PlatformFile::keepSaveFile(
                m_dir, [this] { return newTempName(); }, m_file, err))
            return fail(ZIP_ER_WRITE, err);
        m_asideName = m_file.tempName;
        m_file.named = false; // the file is the caller's now
        return true;
    }
    PlatformFile::SaveFailure failure = PlatformFile::SaveFailure::None;
    if (PlatformFile::replaceWithSaveFile(
            m_dir, m_name, [this] { return newTempName(); }, m_file, failure, err))
        return true;
    return fail(failure == PlatformFile::SaveFailure::Open     ? ZIP_ER_TMPOPEN
                : failure == PlatformFile::SaveFailure::Rename ? ZIP_ER_RENAME
                                                               : ZIP_ER_WRITE,
                err);
}

void ArchiveSink::rollback()
{
    PlatformFile::dropSaveFile(m_dir, m_file);
}

QByteArray ArchiveSink::newTempName() const
{
    return tempPrefix(m_name) + QByteArray::number(QRandomGenerator::global()->generate(), 16).rightJustified(8, '0');
}

bool ArchiveSink::flush()
{
    if (m_bufferLength == 0)
        return true;
    int err = 0;
    if (!PlatformFile::writeAt(m_file.fd, m_buffer.data(), m_bufferLength, qint64(m_bufferStart), err))
        return fail(ZIP_ER_WRITE, err);
    m_bufferStart += m_bufferLength;
    m_bufferLength = 0;
    return true;
}

bool ArchiveSink::fail(int zipCode, int err)
{
    zip_error_set(&m_error, zipCode, err);
    return false;
}

// libzip's side of the sink. The output starts as "no file yet": libzip then
// builds a new archive and never reads the old one.
zip_int64_t ArchiveSink::callback(void *state, void *data, zip_uint64_t length, zip_source_cmd_t command)
{
    auto *sink = static_cast<ArchiveSink *>(state);
    switch (command) {
    case ZIP_SOURCE_SUPPORTS:
        return zip_source_make_command_bitmap(ZIP_SOURCE_OPEN, ZIP_SOURCE_READ, ZIP_SOURCE_CLOSE, ZIP_SOURCE_STAT,
                                              ZIP_SOURCE_ERROR, ZIP_SOURCE_FREE, ZIP_SOURCE_SEEK, ZIP_SOURCE_TELL,
                                              ZIP_SOURCE_SUPPORTS, ZIP_SOURCE_BEGIN_WRITE, ZIP_SOURCE_COMMIT_WRITE,
                                              ZIP_SOURCE_ROLLBACK_WRITE, ZIP_SOURCE_WRITE, ZIP_SOURCE_SEEK_WRITE,
                                              ZIP_SOURCE_TELL_WRITE, ZIP_SOURCE_REMOVE, -1);
    case ZIP_SOURCE_STAT:
        // libzip reads "no such file" as the start of a new archive.
        zip_error_set(&sink->m_error, ZIP_ER_READ, ENOENT);
        return -1;
    case ZIP_SOURCE_OPEN:
    case ZIP_SOURCE_CLOSE:
    case ZIP_SOURCE_READ:
    case ZIP_SOURCE_TELL: return 0;
    case ZIP_SOURCE_SEEK: return zip_source_seek_compute_offset(0, 0, data, length, &sink->m_error) < 0 ? -1 : 0;
    case ZIP_SOURCE_ERROR: return zip_error_to_data(&sink->m_error, data, length);
    case ZIP_SOURCE_FREE:
    case ZIP_SOURCE_ROLLBACK_WRITE: sink->rollback(); return 0;
    case ZIP_SOURCE_BEGIN_WRITE: return sink->begin() ? 0 : -1;
    case ZIP_SOURCE_WRITE: return sink->write(data, length) ? zip_int64_t(length) : -1;
    case ZIP_SOURCE_TELL_WRITE: return zip_int64_t(sink->tell());
    case ZIP_SOURCE_SEEK_WRITE: {
        const zip_int64_t offset =
            zip_source_seek_compute_offset(sink->tell(), sink->size(), data, length, &sink->m_error);
        return offset >= 0 && sink->seek(zip_uint64_t(offset)) ? 0 : -1;
    }
    case ZIP_SOURCE_COMMIT_WRITE: return sink->commit() ? 0 : -1;
    default: // REMOVE among them: the sink never deletes the target
        zip_error_set(&sink->m_error, ZIP_ER_OPNOTSUPP, 0);
        return -1;
    }
}
