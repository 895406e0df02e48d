#pragma once

#include "storage/PlatformFile.h"

#include <QByteArray>

#include <zip.h>

#include <vector>

// The file that a save writes, handed to libzip as its output.
//
// libzip's own file output writes a temporary file beside the target, renames it
// without flushing it to disk and leaves it behind when the process dies. Instead
// libzip writes into this sink, which writes a save file (PlatformFile::SaveFile:
// unnamed where the system allows, else a hidden ".<target>.cubrix-XXXXXXXX"),
// buffers the small writes libzip makes into large ones and, on commit, puts the
// file on disk and in the target's place: the old archive stays whole until then,
// and a killed or failed save leaves nothing behind (or a leftover that the next
// save to the same folder removes, see removeStaleTemps).
class ArchiveSink {
public:
    // `dir` is the target's folder (kept open by the caller), `name` the file in it.
    ArchiveSink(const PlatformFile::Folder &dir, QByteArray name);
    ~ArchiveSink(); // drops an unfinished file
    ArchiveSink(const ArchiveSink &) = delete;
    ArchiveSink &operator=(const ArchiveSink &) = delete;

    // Removes hidden temporary files of earlier saves to `name` whose process is gone.
    static void removeStaleTemps(const PlatformFile::Folder &dir, const QByteArray &name);

    // A libzip source that writes through this sink; it must be freed (by
    // zip_close, zip_discard or zip_source_free) before the sink is destroyed.
    zip_source_t *createSource(zip_error_t *error);

    // When set, commit puts the finished file on disk under a hidden name of its
    // own beside the target (asideName) and leaves the target as it is.
    void setKeepAside(bool aside) { m_keepAside = aside; }
    QByteArray asideName() const { return m_asideName; }

    // The write protocol, also usable without libzip.
    bool begin();
    bool write(const void *data, size_t length);
    bool seek(zip_uint64_t offset);
    zip_uint64_t tell() const { return m_bufferStart + m_bufferLength; }
    zip_uint64_t size() const { return m_size; }
    bool commit();
    void rollback();

    zip_error_t *error() { return &m_error; }

private:
    static zip_int64_t callback(void *state, void *data, zip_uint64_t length, zip_source_cmd_t command);
    QByteArray newTempName() const;
    bool flush();
    bool fail(int zipCode, int err);

    const PlatformFile::Folder &m_dir;
    QByteArray m_name;
    PlatformFile::SaveFile m_file;
    std::vector<char> m_buffer;
    zip_uint64_t m_bufferStart = 0; // file offset of m_buffer[0]
    size_t m_bufferLength = 0;
    zip_uint64_t m_size = 0;
    zip_error_t m_error;
    bool m_keepAside = false;
    QByteArray m_asideName;
};
