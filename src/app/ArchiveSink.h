#pragma once

#include "app/PlatformFile.h"

#include <QByteArray>

#include <zip.h>

#include <vector>

// The file that a save writes, handed to libzip as its output.
//
// libzip's own file output writes a temporary file beside the target, renames it
// without flushing it to disk and leaves it behind when the process dies. Instead
// libzip writes into this sink: an unnamed O_TMPFILE file in the target's folder,
// which vanishes by itself if the process dies or the save fails. On commit the
// data is fsync'ed, the file is linked under a hidden temporary name, renamed over
// the target (the old archive stays whole until this instant) and the folder is
// fsync'ed so that the rename survives a power loss.
//
// Where O_TMPFILE is not available the sink creates a uniquely named hidden file
// instead (".<target>.cubrix-XXXXXXXX"), removed on every failure. Every such file
// is flock'ed while its save runs, so the next save to the same folder can tell
// the leftovers of a killed process (no lock) from a save in progress and removes
// them (removeStaleTemps).
//
// On Windows the sink writes a uniquely named hidden file beside the target, held
// open without leave to delete it while the save runs (which marks it as in use
// for removeStaleTemps), flushes it with _commit (FlushFileBuffers), closes it and
// moves it over the target with MoveFileExW(MOVEFILE_REPLACE_EXISTING |
// MOVEFILE_WRITE_THROUGH). The file is removed on every failure.
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
    bool openOutput();
    bool publish();
    bool linkUnnamed();
    bool flush();
    bool fail(int zipCode, int err);
    bool failAndRollback(int zipCode, int err);

    PlatformFile::Folder m_dir;
    QByteArray m_name;
    QByteArray m_tempName;
    int m_fd = -1;
    bool m_named = false; // the open file has a name in the folder
    bool m_stallForTest = false;
    bool m_forceNamed = false;
    bool m_flushed = false;
    std::vector<char> m_buffer;
    zip_uint64_t m_bufferStart = 0; // file offset of m_buffer[0]
    size_t m_bufferLength = 0;
    zip_uint64_t m_size = 0;
    zip_error_t m_error;
#ifndef Q_OS_UNIX
    unsigned long m_attributes = 0; // the old archive's, given to the new one
#endif
};
