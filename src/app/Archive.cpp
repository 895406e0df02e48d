#include "app/Archive.h"

#include "app/ArchivePaths.h"
#include "app/ArchiveSink.h"
#include "app/ArchiveSource.h"
#include "app/PlatformFile.h"

#include <QByteArrayView>
#include <QFile>
#include <QFileInfo>
#include <QHash>

#include <zip.h>

#include <algorithm>
#include <string_view>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

// Entry names deeper than this are not blockset content; they are skipped on
// extraction and refused on packing, which keeps every folder walk bounded.
constexpr int kMaxDepth = 64;
// Entries are unpacked in chunks of this size.
constexpr size_t kChunk = 256 * 1024;
// More end-of-directory signatures than this in an archive's tail make libzip try
// each candidate directory in turn; no real archive has them, so it is refused.
constexpr int kMaxEndRecords = 16;
// The file type bits of a Unix mode, as ZIP tools store them in an entry's
// external attributes, and the type of a symbolic link.
constexpr zip_uint32_t kUnixTypeMask = 0170000;
constexpr zip_uint32_t kUnixLink = 0120000;

QString errnoText(int err)
{
    return PlatformFile::errorText(err);
}

QString fromFsName(const QByteArray &name)
{
    return PlatformFile::decodeName(name);
}

QString zipErrorText(int zipCode)
{
    zip_error_t error;
    zip_error_init_with_code(&error, zipCode);
    const QString text = QString::fromUtf8(zip_error_strerror(&error));
    zip_error_fini(&error);
    return text;
}

// Why an entry cannot be read, in the words its author can act on.
QString readFailure(const zip_error_t *error, zip_t *za, zip_uint64_t index)
{
    const int code = zip_error_code_zip(error);
    if (code == ZIP_ER_NOPASSWD || code == ZIP_ER_WRONGPASSWD || code == ZIP_ER_ENCRNOTSUPP)
        return u"encrypted"_s;
    if (code == ZIP_ER_CRC)
        return u"CRC error"_s;
    zip_stat_t info;
    if (code == ZIP_ER_COMPNOTSUPP && zip_stat_index(za, index, 0, &info) == 0 && (info.valid & ZIP_STAT_COMP_METHOD)) {
        static const QHash<int, QString> names{{1, u"Shrink"_s}, {6, u"Implode"_s}, {9, u"Deflate64"_s},
                                               {12, u"bzip2"_s}, {14, u"LZMA"_s},   {93, u"Zstandard"_s},
                                               {95, u"XZ"_s},    {98, u"PPMd"_s}};
        const QString name = names.value(info.comp_method, QString::number(info.comp_method));
        return u"compression method %1 is not supported"_s.arg(name);
    }
    return QString::fromUtf8(zip_error_strerror(const_cast<zip_error_t *>(error)));
}

// An entry's name as UTF-8: as stored when it is flagged or valid UTF-8, else read
// as code page 437, the ZIP format's own (libzip's guess).
QByteArray entryName(zip_t *za, zip_uint64_t index)
{
    const char *name = zip_get_name(za, index, ZIP_FL_ENC_GUESS);
    return name ? QByteArray(name) : QByteArray();
}

// Splits an entry name into the folder components it may be written to. "\" is a
// separator too (old Windows tools wrote such names). False for a name that must
// not be written at all: absolute, with a drive letter, with a ".." component, or
// too deep.
bool splitEntryName(const QByteArray &name, std::vector<QByteArray> &parts, bool &isFolder)
{
    parts.clear();
    if (name.isEmpty())
        return false;
    const char first = name.at(0);
    if (first == '/' || first == '\\')
        return false;
    if (name.size() >= 2 && name.at(1) == ':' && ((first >= 'A' && first <= 'Z') || (first >= 'a' && first <= 'z')))
        return false;
    const char last = name.at(name.size() - 1);
    isFolder = last == '/' || last == '\\';
    qsizetype start = 0;
    for (qsizetype i = 0; i <= name.size(); ++i) {
        if (i < name.size() && name.at(i) != '/' && name.at(i) != '\\')
            continue;
        const QByteArrayView part(name.constData() + start, i - start);
        start = i + 1;
        if (part.isEmpty() || part == ".")
            continue;
        if (part == "..")
            return false;
        if (!PlatformFile::isPlainName(part))
            return false;
        parts.push_back(part.toByteArray());
        if (int(parts.size()) > kMaxDepth)
            return false;
    }
    return !parts.empty();
}

// Opens (creating where missing) the folder made of the first `count` components
// below the extraction root, one component at a time and never through a link.
// Remembers the last folder: the entries of one folder usually follow each other.
class FolderWalker {
public:
    explicit FolderWalker(const PlatformFile::Folder &root) : m_root(root) {}
    ~FolderWalker() { PlatformFile::closeFolder(m_current); }
    FolderWalker(const FolderWalker &) = delete;
    FolderWalker &operator=(const FolderWalker &) = delete;

    const PlatformFile::Folder *open(const std::vector<QByteArray> &parts, size_t count, QString &error)
    {
        QByteArray key;
        for (size_t i = 0; i < count; ++i) {
            key += parts[i];
            key += '/';
        }
        if (m_current.isOpen() && key == m_key)
            return &m_current;
        PlatformFile::closeFolder(m_current);
        m_key.clear();
        PlatformFile::Folder current = m_root;
        for (size_t i = 0; i < count; ++i) {
            PlatformFile::Folder next;
            int err = 0;
            const bool opened = PlatformFile::openFolderAt(current, parts[i], true, next, err);
            if (i > 0)
                PlatformFile::closeFolder(current);
            if (!opened) {
                error = u"cannot make folder \"%1\": %2"_s.arg(fromFsName(key), errnoText(err));
                return nullptr;
            }
            current = next;
        }
        if (count == 0)
            return &m_root;
        m_current = current;
        m_key = key;
        return &m_current;
    }

private:
    const PlatformFile::Folder &m_root;
    PlatformFile::Folder m_current;
    QByteArray m_key;
};

bool isCompressedImage(const QByteArray &name)
{
    const QByteArray lower = name.right(5).toLower();
    return lower.endsWith(".gif") || lower.endsWith(".jpg") || lower.endsWith(".jpeg");
}

struct PackedFile {
    QByteArray entryName; // relative, "/" separated
    QByteArray path;      // on disk
};

} // namespace

struct Archive::Impl {
    zip_t *reader = nullptr;
    bool writing = false;
    QString target;
    QString readerPath; // the file `reader` reads
    std::vector<PackedFile> files;
    std::vector<QByteArray> emptyFolders; // "name/" entries
    QString error;

    void closeReader()
    {
        if (reader)
            zip_discard(reader);
        reader = nullptr;
    }

    bool fail(const QString &text)
    {
        error = text;
        return false;
    }

    bool writeEmptyArchive(ArchiveSink &sink);
    bool writeEntries(ArchiveSink &sink);
};

Archive::Archive() : d(std::make_unique<Impl>()) {}

Archive::~Archive()
{
    d->closeReader();
}

bool Archive::openArchive(const QString &path)
{
    d->closeReader();
    d->error.clear();
    // The file is opened here (not by libzip) so that a folder, a pipe or an empty
    // file is refused before libzip sees it, and so that the tail check and libzip
    // read the same file.
    qint64 size = 0;
    int err = 0;
    const int fd = PlatformFile::openToRead(PlatformFile::encodeName(path), size, err);
    if (fd < 0) {
        return err != 0 ? d->fail(u"cannot open \"%1\": %2"_s.arg(path, errnoText(err)))
                        : d->fail(u"\"%1\" is not a file"_s.arg(path));
    }
    if (size == 0) {
        PlatformFile::closeFile(fd);
        return d->fail(u"\"%1\" is empty"_s.arg(path));
    }

    // The end-of-directory record lies in the last 64 KiB + 22 bytes.
    const qint64 tailSize = std::min<qint64>(size, 65535 + 22);
    QByteArray tail(tailSize, '\0');
    if (!PlatformFile::readAt(fd, tail.data(), tailSize, size - tailSize)) {
        PlatformFile::closeFile(fd);
        return d->fail(u"cannot read \"%1\""_s.arg(path));
    }
    // Counted with string_view's search, which skips to each 'P' with memchr.
    const std::string_view tailView(tail.constData(), size_t(tail.size()));
    const std::string_view endSignature("PK\x05\x06", 4);
    qsizetype endRecords = 0;
    for (size_t at = tailView.find(endSignature); at != std::string_view::npos;
         at = tailView.find(endSignature, at + 4))
        ++endRecords;
    if (endRecords == 0 || endRecords > kMaxEndRecords) {
        PlatformFile::closeFile(fd);
        return d->fail(u"\"%1\" is not a ZIP archive"_s.arg(path));
    }

    zip_error_t error;
    zip_error_init(&error);
    zip_source_t *source = windowedReadSource(fd, size, &error); // the source owns the file from here
    d->reader = source ? zip_open_from_source(source, ZIP_RDONLY, &error) : nullptr;
    const int zipCode = zip_error_code_zip(&error);
    zip_error_fini(&error);
    if (!d->reader) {
        if (source)
            zip_source_free(source);
        return d->fail(u"\"%1\" is not a readable ZIP archive: %2"_s.arg(path, zipErrorText(zipCode)));
    }
    d->readerPath = path;
    return true;
}

bool Archive::extractAll(const QString &folder)
{
    d->error.clear();
    if (!d->reader)
        return d->fail(u"no archive is open"_s);
    PlatformFile::Folder root;
    int rootError = 0;
    if (!PlatformFile::openFolder(PlatformFile::encodeName(folder), false, root, rootError))
        return d->fail(u"cannot open folder \"%1\": %2"_s.arg(folder, errnoText(rootError)));

    bool ok = true;
    {
        FolderWalker walker(root);
        ArchivePaths paths;
        std::vector<char> buffer(kChunk);
        std::vector<QByteArray> parts;
        const zip_int64_t count = zip_get_num_entries(d->reader, 0);
        for (zip_int64_t i = 0; ok && i < count; ++i) {
            const zip_uint64_t index = zip_uint64_t(i);
            const QByteArray name = entryName(d->reader, index);
            bool isFolder = false;
            if (!splitEntryName(name, parts, isFolder))
                continue; // would land outside the folder
            zip_uint8_t system = 0;
            zip_uint32_t attributes = 0;
            if (zip_file_get_external_attributes(d->reader, index, 0, &system, &attributes) == 0
                && system == ZIP_OPSYS_UNIX && ((attributes >> 16) & kUnixTypeMask) == kUnixLink)
                continue; // links are never created

            const QByteArray earlier = paths.place(parts, isFolder);
            QString error;
            if (isFolder) {
                if (!walker.open(parts, parts.size(), error))
                    ok = d->fail(error);
                continue;
            }
            const PlatformFile::Folder *dir = walker.open(parts, parts.size() - 1, error);
            if (!dir) {
                ok = d->fail(error);
                break;
            }
            const QByteArray &leaf = parts.back();
            if (!earlier.isEmpty())
                PlatformFile::removeFile(*dir, earlier); // the later of two names differing in case wins
            const QString shown = QString::fromUtf8(name);
            // A link found in the folder is refused, never written through; a file
            // that is there already is emptied only once it proved to be a plain
            // file with no second name (a hard link) elsewhere.
            int err = 0;
            const int fd = PlatformFile::createFile(*dir, leaf, err);
            if (fd < 0) {
                ok = d->fail(err != 0 ? u"cannot write \"%1\": %2"_s.arg(shown, errnoText(err))
                                      : u"cannot write \"%1\": not a plain file"_s.arg(shown));
                break;
            }
            zip_file_t *entry = zip_fopen_index(d->reader, index, 0);
            if (!entry) {
                ok = d->fail(
                    u"cannot read \"%1\": %2"_s.arg(shown, readFailure(zip_get_error(d->reader), d->reader, index)));
            } else {
                for (;;) {
                    const zip_int64_t n = zip_fread(entry, buffer.data(), buffer.size());
                    if (n < 0) {
                        ok = d->fail(u"cannot read \"%1\": %2"_s.arg(
                            shown, readFailure(zip_file_get_error(entry), d->reader, index)));
                        break;
                    }
                    if (n == 0)
                        break;
                    if (!PlatformFile::writeAll(fd, buffer.data(), size_t(n), err)) {
                        ok = d->fail(u"cannot write \"%1\": %2"_s.arg(shown, errnoText(err)));
                        break;
                    }
                }
                // libzip reports a CRC mismatch at the latest here.
                if (zip_fclose(entry) != 0 && ok)
                    ok = d->fail(u"cannot read \"%1\": CRC error"_s.arg(shown));
            }
            if (ok) {
                zip_stat_t info;
                if (zip_stat_index(d->reader, index, 0, &info) == 0 && (info.valid & ZIP_STAT_MTIME))
                    PlatformFile::setModified(fd, info.mtime);
            }
            if (!PlatformFile::closeFile(fd, err) && ok)
                ok = d->fail(u"cannot write \"%1\": %2"_s.arg(shown, errnoText(err)));
            if (!ok)
                PlatformFile::removeFile(*dir, leaf); // a half-read entry is no entry
        }
    }
    PlatformFile::closeFolder(root);
    return ok;
}

QStringList Archive::entryNames() const
{
    QStringList names;
    if (!d->reader)
        return names;
    const zip_int64_t count = zip_get_num_entries(d->reader, 0);
    for (zip_int64_t i = 0; i < count; ++i) {
        names.append(QString::fromUtf8(ArchivePaths::normalised(entryName(d->reader, zip_uint64_t(i)))));
    }
    return names;
}

bool Archive::readEntry(const QString &name, QByteArray &data, qint64 maxSize)
{
    data.clear();
    d->error.clear();
    if (!d->reader)
        return d->fail(u"no archive is open"_s);
    const QByteArray wanted = name.toUtf8();
    // From the end: of two entries of one name the later one is the one extracted.
    for (zip_int64_t i = zip_get_num_entries(d->reader, 0) - 1; i >= 0; --i) {
        if (ArchivePaths::normalised(entryName(d->reader, zip_uint64_t(i))) != wanted)
            continue;
        zip_stat_t info;
        if (zip_stat_index(d->reader, zip_uint64_t(i), 0, &info) != 0 || !(info.valid & ZIP_STAT_SIZE))
            return d->fail(u"cannot read \"%1\""_s.arg(name));
        if (info.size > zip_uint64_t(maxSize))
            return d->fail(u"\"%1\" is too large"_s.arg(name));
        zip_file_t *entry = zip_fopen_index(d->reader, zip_uint64_t(i), 0);
        if (!entry)
            return d->fail(u"cannot read \"%1\": %2"_s.arg(name, QString::fromUtf8(zip_strerror(d->reader))));
        data.resize(qsizetype(info.size));
        qsizetype filled = 0;
        bool ok = true;
        char probe = 0;
        for (;;) {
            // One byte beyond the stated size would reveal a lying directory.
            char *target = filled < data.size() ? data.data() + filled : &probe;
            const zip_uint64_t room = filled < data.size() ? zip_uint64_t(data.size() - filled) : 1;
            const zip_int64_t n = zip_fread(entry, target, room);
            if (n == 0)
                break;
            if (n < 0 || target == &probe) {
                ok = false;
                break;
            }
            filled += qsizetype(n);
        }
        if (zip_fclose(entry) != 0 || filled != data.size())
            ok = false;
        if (!ok) {
            data.clear();
            return d->fail(u"cannot read \"%1\": checksum or data error"_s.arg(name));
        }
        return true;
    }
    return d->fail(u"\"%1\" is not in the archive"_s.arg(name));
}

bool Archive::newArchive(const QString &path)
{
    d->error.clear();
    d->files.clear();
    d->emptyFolders.clear();
    d->target = path;
    d->writing = !path.isEmpty();
    return true;
}

bool Archive::addFiles(const QString &folder, bool recursive)
{
    d->error.clear();
    if (!d->writing)
        return d->fail(u"no archive was started"_s);
    QByteArray root = PlatformFile::encodeName(folder);
    while (root.size() > 1 && root.endsWith('/'))
        root.chop(1);
    PlatformFile::Folder rootFolder;
    int rootError = 0;
    if (!PlatformFile::openFolder(root, true, rootFolder, rootError))
        return d->fail(u"cannot read folder \"%1\": %2"_s.arg(folder, errnoText(rootError)));

    // Depth-first, names sorted: the archive lists the top-level files first, then
    // each sub-folder with its contents, the same on every run.
    struct Pending {
        QByteArray relative; // "" for the folder itself, else "a/b/"
        int depth;
    };
    std::vector<Pending> pending{{QByteArray(), 0}};
    std::vector<PlatformFile::Entry> entries;
    bool ok = true;
    while (ok && !pending.empty()) {
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
            PlatformFile::closeFolder(sub);
        }
        if (!listed) {
            ok = d->fail(
                u"cannot read folder \"%1\": %2"_s.arg(fromFsName(root + '/' + current.relative), errnoText(err)));
            break;
        }
        std::vector<QByteArray> files;
        std::vector<QByteArray> folders;
        // Links, pipes and devices are no blockset content and are not packed.
        for (const PlatformFile::Entry &entry : entries) {
            if (entry.kind == PlatformFile::Kind::File)
                files.push_back(entry.name);
            else if (entry.kind == PlatformFile::Kind::Folder && recursive)
                folders.push_back(entry.name);
        }
        if (entries.empty() && !current.relative.isEmpty())
            d->emptyFolders.push_back(current.relative);
        std::sort(files.begin(), files.end());
        std::sort(folders.begin(), folders.end());
        for (const QByteArray &name : files)
            d->files.push_back({current.relative + name, root + '/' + current.relative + name});
        if (!folders.empty() && current.depth + 1 >= kMaxDepth) {
            ok = d->fail(u"folders nested too deeply in \"%1\""_s.arg(folder));
            break;
        }
        for (auto it = folders.rbegin(); it != folders.rend(); ++it)
            pending.push_back({current.relative + *it + '/', current.depth + 1});
    }
    PlatformFile::closeFolder(rootFolder);
    return ok;
}

bool Archive::Impl::writeEmptyArchive(ArchiveSink &sink)
{
    // An archive without entries is its end-of-directory record alone.
    static const char endRecord[22] = {'P', 'K', 5, 6};
    if (!sink.begin() || !sink.write(endRecord, sizeof endRecord) || !sink.commit())
        return fail(u"cannot write \"%1\": %2"_s.arg(target, QString::fromUtf8(zip_error_strerror(sink.error()))));
    return true;
}

// libzip builds the archive from the collected files and writes it through the sink.
bool Archive::Impl::writeEntries(ArchiveSink &sink)
{
    zip_error_t zipError;
    zip_error_init(&zipError);
    zip_source_t *output = sink.createSource(&zipError);
    zip_t *za = output ? zip_open_from_source(output, ZIP_CREATE | ZIP_TRUNCATE, &zipError) : nullptr;
    bool ok = true;
    if (!za) {
        if (output)
            zip_source_free(output);
        ok = fail(u"cannot start \"%1\": %2"_s.arg(target, QString::fromUtf8(zip_error_strerror(&zipError))));
    }
    for (size_t i = 0; ok && i < emptyFolders.size(); ++i) {
        if (zip_dir_add(za, emptyFolders[i].constData(), ZIP_FL_ENC_GUESS) < 0)
            ok = fail(QString::fromUtf8(zip_strerror(za)));
    }
    for (size_t i = 0; ok && i < files.size(); ++i) {
        // Each file is read when written. GIF and JPEG data is compressed already:
        // deflate would spend most of the save to win a few bytes, so those are
        // stored; the rest is deflated at libzip's default level (zlib's 6).
        zip_source_t *input = PlatformFile::zipFileSource(files[i].path, &zipError);
        const zip_int64_t index =
            input ? zip_file_add(za, files[i].entryName.constData(), input, ZIP_FL_ENC_GUESS | ZIP_FL_OVERWRITE) : -1;
        if (!input) {
            ok = fail(u"cannot read \"%1\": %2"_s.arg(fromFsName(files[i].path),
                                                      QString::fromUtf8(zip_error_strerror(&zipError))));
        } else if (index < 0) {
            zip_source_free(input);
            ok = fail(u"cannot add \"%1\": %2"_s.arg(fromFsName(files[i].path), QString::fromUtf8(zip_strerror(za))));
        } else if (isCompressedImage(files[i].entryName)) {
            zip_set_file_compression(za, zip_uint64_t(index), ZIP_CM_STORE, 0);
        }
    }
    if (ok && zip_close(za) != 0)
        ok = fail(u"cannot write \"%1\": %2"_s.arg(target, QString::fromUtf8(zip_strerror(za))));
    if (za && !ok)
        zip_discard(za); // frees the sink's source, which drops the unfinished file
    zip_error_fini(&zipError);
    return ok;
}

bool Archive::writeArchive()
{
    d->error.clear();
    if (!d->writing)
        return d->fail(u"no archive was started"_s);

    // A link as the target: the file it points to is replaced, not the link.
    QString target = d->target;
    const QFileInfo targetInfo(target);
    if (targetInfo.isSymbolicLink() && !targetInfo.canonicalFilePath().isEmpty())
        target = targetInfo.canonicalFilePath();
    const QFileInfo resolved(target);
    const QByteArray dirPath = PlatformFile::encodeName(resolved.absolutePath());
    const QByteArray name = PlatformFile::encodeName(resolved.fileName());
    if (name.isEmpty())
        return d->fail(u"\"%1\" is not a file name"_s.arg(target));
    PlatformFile::Folder dir;
    int err = 0;
    if (!PlatformFile::openFolder(dirPath, true, dir, err))
        return d->fail(u"cannot open folder \"%1\": %2"_s.arg(fromFsName(dirPath), errnoText(err)));
    ArchiveSink::removeStaleTemps(dir, name);
    PlatformFile::keepAllocatorMemory();
    if (PlatformFile::kReplaceNeedsClosedFile && d->reader && QFileInfo(d->readerPath) == resolved)
        d->closeReader();

    bool ok = false;
    {
        ArchiveSink sink(dir, name); // gone before its folder is closed
        ok = d->files.empty() && d->emptyFolders.empty() ? d->writeEmptyArchive(sink) : d->writeEntries(sink);
    }
    PlatformFile::closeFolder(dir);
    return ok;
}

QString Archive::lastError() const
{
    return d->error;
}
