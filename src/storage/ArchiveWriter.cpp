#include "storage/ArchiveWriter.h"

#include "storage/ArchiveEntryNames.h"
#include "storage/ArchiveSink.h"
#include "storage/PlatformFile.h"

#include <QFileInfo>

#include <zip.h>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

QString errnoText(int err)
{
    return PlatformFile::errorText(err);
}

QString fromFsName(const QByteArray &name)
{
    return PlatformFile::decodeName(name);
}

bool isCompressedImage(const QString &name)
{
    return name.endsWith(u".gif"_s, Qt::CaseInsensitive) || name.endsWith(u".jpg"_s, Qt::CaseInsensitive)
           || name.endsWith(u".jpeg"_s, Qt::CaseInsensitive);
}

// The flags that store `name` as ArchiveEntryNames encodes it: raw bytes without
// the UTF-8 flag, or UTF-8 with it.
QByteArray storedName(const QString &name, zip_flags_t &flags)
{
    bool utf8 = false;
    QByteArray bytes = ArchiveEntryNames::encode(name, utf8);
    flags = utf8 ? ZIP_FL_ENC_UTF_8 : ZIP_FL_ENC_CP437;
    return bytes;
}

} // namespace

ArchiveWriter::ArchiveWriter(QString target) : m_target(std::move(target)) {}

Result ArchiveWriter::addFolder(const QString &folder)
{
    QByteArray root = PlatformFile::encodeName(folder);
    while (root.size() > 1 && root.endsWith('/'))
        root.chop(1);
    PlatformFile::Folder rootFolder;
    int rootError = 0;
    if (!PlatformFile::openFolder(root, true, rootFolder, rootError))
        return Result::failure(u"cannot read folder \"%1\": %2"_s.arg(folder, errnoText(rootError)));

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
            return Result::failure(
                u"cannot read folder \"%1\": %2"_s.arg(fromFsName(root + '/' + current.relative), errnoText(err)));
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

Result ArchiveWriter::writeEmpty(ArchiveSink &sink) const
{
    // An archive without entries is its end-of-directory record alone.
    static const char endRecord[22] = {'P', 'K', 5, 6};
    if (!sink.begin() || !sink.write(endRecord, sizeof endRecord) || !sink.commit())
        return Result::failure(
            u"cannot write \"%1\": %2"_s.arg(m_target, QString::fromUtf8(zip_error_strerror(sink.error()))));
    return Result();
}

// libzip builds the archive from the collected files and writes it through the sink.
Result ArchiveWriter::writeEntries(ArchiveSink &sink) const
{
    zip_error_t zipError;
    zip_error_init(&zipError);
    zip_source_t *output = sink.createSource(&zipError);
    zip_t *za = output ? zip_open_from_source(output, ZIP_CREATE | ZIP_TRUNCATE, &zipError) : nullptr;
    Result result;
    if (!za) {
        if (output)
            zip_source_free(output);
        result = Result::failure(
            u"cannot start \"%1\": %2"_s.arg(m_target, QString::fromUtf8(zip_error_strerror(&zipError))));
    }
    for (size_t i = 0; result && i < m_emptyFolders.size(); ++i) {
        zip_flags_t flags = 0;
        if (zip_dir_add(za, storedName(m_emptyFolders[i], flags).constData(), flags) < 0)
            result = Result::failure(QString::fromUtf8(zip_strerror(za)));
    }
    for (size_t i = 0; result && i < m_files.size(); ++i) {
        // Each file is read when written. GIF and JPEG data is compressed already:
        // deflate would spend most of the save to win a few bytes, so those are
        // stored; the rest is deflated at libzip's default level (zlib's 6).
        const PackedFile &file = m_files[i];
        zip_source_t *input = PlatformFile::zipFileSource(file.path, &zipError);
        zip_flags_t flags = 0;
        const QByteArray name = storedName(file.entryName, flags);
        const zip_int64_t index = input ? zip_file_add(za, name.constData(), input, flags | ZIP_FL_OVERWRITE) : -1;
        if (!input) {
            result = Result::failure(u"cannot read \"%1\": %2"_s.arg(fromFsName(file.path),
                                                                     QString::fromUtf8(zip_error_strerror(&zipError))));
        } else if (index < 0) {
            zip_source_free(input);
            result = Result::failure(
                u"cannot add \"%1\": %2"_s.arg(fromFsName(file.path), QString::fromUtf8(zip_strerror(za))));
        } else if (isCompressedImage(file.entryName)) {
            zip_set_file_compression(za, zip_uint64_t(index), ZIP_CM_STORE, 0);
        }
    }
    if (result && zip_close(za) != 0)
        result = Result::failure(u"cannot write \"%1\": %2"_s.arg(m_target, QString::fromUtf8(zip_strerror(za))));
    if (za && !result)
        zip_discard(za); // frees the sink's source, which drops the unfinished file
    zip_error_fini(&zipError);
    return result;
}

Result ArchiveWriter::write()
{
    return writeTo(false, nullptr);
}

Result ArchiveWriter::writeAside(QByteArray &asideName)
{
    return writeTo(true, &asideName);
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
        return Result::failure(u"cannot open folder \"%1\": %2"_s.arg(fromFsName(dirPath), errnoText(err)));
    ArchiveSink::removeStaleTemps(dir, name);
    PlatformFile::keepAllocatorMemory();
    ArchiveSink sink(dir, name);
    sink.setKeepAside(aside);
    Result written = m_files.empty() && m_emptyFolders.empty() ? writeEmpty(sink) : writeEntries(sink);
    if (written && asideName)
        *asideName = sink.asideName();
    return written;
}
