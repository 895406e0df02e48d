#include "storage/ArchiveWriter.h"

#include "storage/ArchiveEntryNames.h"
#include "storage/ArchiveSink.h"
#include "storage/PackedEntries.h"
#include "storage/PlatformFile.h"
#include "storage/ZipWriter.h"

#include <QFileInfo>

#include <zip.h>

#include <algorithm>
#include <ctime>

using namespace Qt::StringLiterals;

namespace {

QString fromFsName(const QByteArray &name)
{
    return PlatformFile::decodeName(name);
}

} // namespace

ArchiveWriter::ArchiveWriter(QString target, PackedEntries *packed) : m_target(std::move(target)), m_packed(packed) {}

Result ArchiveWriter::addFolder(const QString &folder)
{
    QByteArray root = PlatformFile::encodeName(folder);
    while (root.size() > 1 && root.endsWith('/'))
        root.chop(1);
    m_root = root;
    PlatformFile::Folder rootFolder;
    int rootError = 0;
    if (!PlatformFile::openFolder(root, true, rootFolder, rootError))
        return Result::failure(u"cannot read folder \"%1\": %2"_s.arg(folder, PlatformFile::errorText(rootError)));

    // Depth-first, names sorted: the archive lists the top-level files first, then
    // each sub-folder with its contents, the same on every run.
    struct Pending {
        QByteArray relative; // "" for the folder itself, else "a/b/"
        int depth;
    };
    std::vector<Pending> pending{{QByteArray(), 0}};
    std::vector<PlatformFile::Entry> entries;
    while (!pending.empty()) {
        const Pending current = pending.back();
        pending.pop_back();
        int err = 0;
        bool listed = false;
        if (current.relative.isEmpty()) {
            listed = PlatformFile::listFolder(rootFolder, entries, err);
        } else {
            PlatformFile::Folder sub;
            listed = PlatformFile::openFolderAt(rootFolder, current.relative, false, sub, err)
                     && PlatformFile::listFolder(sub, entries, err);
        }
        if (!listed) {
            return Result::failure(u"cannot read folder \"%1\": %2"_s.arg(fromFsName(root + '/' + current.relative),
                                                                          PlatformFile::errorText(err)));
        }
        std::vector<QByteArray> files;
        std::vector<QByteArray> folders;
        // Links, pipes and devices are no blockset content and are not packed.
        for (const PlatformFile::Entry &entry : entries) {
            if (entry.kind == PlatformFile::Kind::File)
                files.push_back(entry.name);
            else if (entry.kind == PlatformFile::Kind::Folder)
                folders.push_back(entry.name);
        }
        if (entries.empty() && !current.relative.isEmpty())
            m_emptyFolders.push_back(fromFsName(current.relative));
        std::sort(files.begin(), files.end());
        std::sort(folders.begin(), folders.end());
        for (const QByteArray &name : files)
            m_files.push_back({fromFsName(current.relative + name), root + '/' + current.relative + name});
        if (!folders.empty() && current.depth + 1 >= ArchiveEntryNames::kMaxDepth)
            return Result::failure(u"folders nested too deeply in \"%1\""_s.arg(folder));
        for (auto it = folders.rbegin(); it != folders.rend(); ++it)
            pending.push_back({current.relative + *it + '/', current.depth + 1});
    }
    return Result();
}

QStringList ArchiveWriter::fileEntries() const
{
    QStringList names;
    names.reserve(qsizetype(m_files.size()));
    for (const PackedFile &file : m_files)
        names.append(file.entryName);
    return names;
}

QStringList ArchiveWriter::folderEntries() const
{
    return QStringList(m_emptyFolders.begin(), m_emptyFolders.end());
}

Result ArchiveWriter::writeEmpty(ArchiveSink &sink) const
{
    // An archive without entries is its end-of-directory record alone.
    static const char endRecord[22] = {'P', 'K', 5, 6};
    if (!sink.begin() || !sink.write(endRecord, sizeof endRecord) || !sink.commit())
        return Result::failure(
            u"cannot write \"%1\": %2"_s.arg(m_target, QString::fromUtf8(zip_error_strerror(sink.error()))));
    return Result();
}

// Reads the file and packs it, or takes the packed form known for it.
Result ArchiveWriter::packFile(const PackedFile &file, PlatformFile::FileStamp &stamp, PackedEntry &entry) const
{
    stamp = PlatformFile::fileStamp(file.path);
    if (m_packed) {
        if (std::optional<PackedEntry> known = m_packed->entryFor(file.entryName, stamp)) {
            entry = std::move(*known);
            return Result();
        }
    }
    qint64 size = 0;
    int err = 0;
    PlatformFile::FileHandle handle = PlatformFile::openToRead(file.path, size, err);
    if (!handle.isOpen()) {
        return Result::failure(u"cannot read \"%1\": %2"_s.arg(
            fromFsName(file.path), err != 0 ? PlatformFile::errorText(err) : u"not a plain file"_s));
    }
    QByteArray content(qsizetype(size), Qt::Uninitialized);
    if (size > 0 && !PlatformFile::readAt(handle.get(), content.data(), size, 0))
        return Result::failure(u"cannot read \"%1\""_s.arg(fromFsName(file.path)));
    if (m_packed) {
        if (std::optional<PackedEntry> known = m_packed->entryForContent(file.entryName, content)) {
            entry = std::move(*known);
            return Result();
        }
    }
    entry = EntryPacking::packForSave(file.entryName, content);
    return Result();
}

Result ArchiveWriter::writeEntries(ArchiveSink &sink, std::vector<PackedEntries::Written> &written) const
{
    ZipWriter zip(sink);
    const auto failed = [&] { return Result::failure(u"cannot write \"%1\": %2"_s.arg(m_target, zip.error())); };
    if (!zip.begin())
        return failed();
    for (const QString &folder : m_emptyFolders) {
        // The folder's own time, so that saving an unchanged blockset writes the same bytes.
        const PlatformFile::FileStamp stamp = PlatformFile::fileStamp(m_root + '/' + PlatformFile::encodeName(folder));
        if (!zip.addFolder(folder, std::time_t(stamp.exists ? stamp.mtimeNs / 1000000000 : std::time(nullptr))))
            return failed();
    }
    written.reserve(m_files.size());
    for (const PackedFile &file : m_files) {
        PlatformFile::FileStamp stamp;
        PackedEntry entry;
        if (Result packed = packFile(file, stamp, entry); !packed)
            return packed;
        const quint64 index = quint64(zip.entryCount());
        if (!zip.addFile(file.entryName, std::time_t(stamp.mtimeNs / 1000000000), entry))
            return failed();
        written.push_back({file.entryName, stamp, index, entry.form});
    }
    if (!zip.finish())
        return failed();
    if (m_packed)
        m_packed->releaseSource(); // the old archive may be the target, which Windows replaces only when closed
    if (!sink.commit())
        return Result::failure(
            u"cannot write \"%1\": %2"_s.arg(m_target, QString::fromUtf8(zip_error_strerror(sink.error()))));
    return Result();
}

Result ArchiveWriter::write()
{
    return writeTo(false, nullptr);
}

Result ArchiveWriter::writeAside(QByteArray &asideName)
{
    return writeTo(true, &asideName);
}

void ArchiveWriter::asidePutInPlace()
{
    // Renamed into place, the file keeps the stamp it was written with.
    if (m_packed && !m_writtenTarget.isEmpty())
        m_packed->adoptWritten(m_writtenTarget, m_written, m_writtenStamp);
    m_writtenTarget.clear();
}

Result ArchiveWriter::writeTo(bool aside, QByteArray *asideName)
{
    // A link as the target: the file it points to is replaced, not the link.
    QString target = m_target;
    const QFileInfo targetInfo(target);
    if (targetInfo.isSymbolicLink() && !targetInfo.canonicalFilePath().isEmpty())
        target = targetInfo.canonicalFilePath();
    const QFileInfo resolved(target);
    const QByteArray dirPath = PlatformFile::encodeName(resolved.absolutePath());
    const QByteArray name = PlatformFile::encodeName(resolved.fileName());
    if (name.isEmpty())
        return Result::failure(u"\"%1\" is not a file name"_s.arg(target));
    PlatformFile::Folder dir;
    int err = 0;
    if (!PlatformFile::openFolder(dirPath, true, dir, err))
        return Result::failure(
            u"cannot open folder \"%1\": %2"_s.arg(fromFsName(dirPath), PlatformFile::errorText(err)));
    ArchiveSink::removeStaleTemps(dir, name);
    PlatformFile::keepAllocatorMemory();
    ArchiveSink sink(dir, name);
    sink.setKeepAside(aside);
    std::vector<PackedEntries::Written> written;
    Result result = m_files.empty() && m_emptyFolders.empty() ? writeEmpty(sink) : writeEntries(sink, written);
    if (result && asideName)
        *asideName = sink.asideName();
    if (!result || !m_packed)
        return result;
    // The archive is the packed forms' source from now on; one set aside only once
    // it is in the target's place (asidePutInPlace).
    m_written = std::move(written);
    m_writtenTarget = target;
    m_writtenStamp =
        PlatformFile::fileStamp(aside ? dirPath + '/' + sink.asideName() : PlatformFile::encodeName(target));
    if (!aside)
        asidePutInPlace();
    return result;
}
