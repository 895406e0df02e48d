#include "storage/ArchiveReader.h"

#include "storage/ArchiveEntryNames.h"
#include "storage/ArchivePaths.h"
#include "storage/ArchiveSource.h"
#include "storage/PlatformFile.h"

#include <QHash>

#include <zip.h>

#include <algorithm>
#include <string_view>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

// Entries are unpacked in chunks of this size.
constexpr size_t kChunk = 256 * 1024;
// More end-of-directory signatures than this in an archive's tail make libzip try
// each candidate directory in turn; no real archive has them, so it is refused.
constexpr int kMaxEndRecords = 16;
// The file type bits of a Unix mode, as ZIP tools store them in an entry's
// external attributes, and the type of a symbolic link.
constexpr zip_uint32_t kUnixTypeMask = 0170000;
constexpr zip_uint32_t kUnixLink = 0120000;

QString zipErrorText(int zipCode)
{
    zip_error_t error;
    zip_error_init_with_code(&error, zipCode);
    QString text = QString::fromUtf8(zip_error_strerror(&error));
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

// An entry's name, decoded by its UTF-8 flag. libzip tells the flag only
// indirectly: a name it reads strictly (code page 437 unless flagged) comes back
// unchanged only when it is flagged, or plain ASCII.
bool isAscii(QByteArrayView bytes)
{
    return std::all_of(bytes.begin(), bytes.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

QString entryName(zip_t *za, zip_uint64_t index)
{
    const char *raw = zip_get_name(za, index, ZIP_FL_ENC_RAW);
    if (!raw)
        return QString();
    const QByteArray stored(raw);
    if (isAscii(stored))
        return QString::fromLatin1(stored);
    const char *strict = zip_get_name(za, index, ZIP_FL_ENC_STRICT);
    return ArchiveEntryNames::decode(stored, strict && stored == QByteArrayView(strict));
}

// The name as UTF-8; a plain ASCII name, the usual one, is its own UTF-8.
QByteArray normalisedName(zip_t *za, zip_uint64_t index)
{
    const char *raw = zip_get_name(za, index, ZIP_FL_ENC_RAW);
    if (raw && isAscii(raw))
        return ArchivePaths::normalised(QByteArray(raw));
    return ArchivePaths::normalised(entryName(za, index).toUtf8());
}

// Opens (creating where missing) the folder made of the first `count` components
// below the extraction root, one component at a time and never through a link.
// Remembers the last folder: the entries of one folder usually follow each other.
class FolderWalker {
public:
    explicit FolderWalker(const PlatformFile::Folder &root) : m_root(root) {}

    const PlatformFile::Folder *open(const std::vector<QByteArray> &parts, size_t count, QString &error)
    {
        if (count == 0)
            return &m_root;
        QByteArray key;
        for (size_t i = 0; i < count; ++i) {
            key += parts[i];
            key += '/';
        }
        if (m_current.isOpen() && key == m_key)
            return &m_current;
        m_current = PlatformFile::Folder();
        m_key.clear();
        const PlatformFile::Folder *parent = &m_root;
        PlatformFile::Folder opened;
        for (size_t i = 0; i < count; ++i) {
            PlatformFile::Folder next;
            int err = 0;
            if (!PlatformFile::openFolderAt(*parent, parts[i], true, next, err)) {
                error =
                    u"cannot make folder \"%1\": %2"_s.arg(PlatformFile::decodeName(key), PlatformFile::errorText(err));
                return nullptr;
            }
            opened = std::move(next);
            parent = &opened;
        }
        m_current = std::move(opened);
        m_key = key;
        return &m_current;
    }

private:
    const PlatformFile::Folder &m_root;
    PlatformFile::Folder m_current;
    QByteArray m_key;
};

} // namespace

struct ArchiveReader::Impl {
    struct ZipDiscard {
        void operator()(zip_t *za) const { zip_discard(za); }
    };
    struct ZipFileClose {
        void operator()(zip_file_t *file) const { zip_fclose(file); }
    };
    std::unique_ptr<zip_t, ZipDiscard> zip;
    qint64 fileSize = -1;

    Result extractEntry(zip_uint64_t index, FolderWalker &walker, ArchivePaths &paths, std::vector<char> &buffer,
                        QHash<QString, ArchiveEntryOrigin> *origins);
    Result copyEntry(zip_uint64_t index, int fd, const QString &shown, std::vector<char> &buffer);
    void noteOrigin(QHash<QString, ArchiveEntryOrigin> &origins, zip_uint64_t index,
                    const std::vector<QByteArray> &parts, const QByteArray &earlier) const;
    bool packedForm(zip_uint64_t index, PackedForm &form) const;
};

ArchiveReader::ArchiveReader() : d(std::make_unique<Impl>()) {}

ArchiveReader::~ArchiveReader() = default;

bool ArchiveReader::isOpen() const
{
    return d->zip != nullptr;
}

qint64 ArchiveReader::fileSize() const
{
    return d->fileSize;
}

void ArchiveReader::close()
{
    d->zip.reset();
}

Result ArchiveReader::open(const QString &path)
{
    close();
    d->fileSize = -1;
    // The file is opened here (not by libzip) so that a folder, a pipe or an empty
    // file is refused before libzip sees it, and so that the tail check and libzip
    // read the same file.
    qint64 size = 0;
    int err = 0;
    PlatformFile::FileHandle file = PlatformFile::openToRead(PlatformFile::encodeName(path), size, err);
    if (!file.isOpen()) {
        return Result::failure(err != 0 ? u"cannot open \"%1\": %2"_s.arg(path, PlatformFile::errorText(err))
                                        : u"\"%1\" is not a file"_s.arg(path));
    }
    d->fileSize = size;
    if (size == 0)
        return Result::failure(u"\"%1\" is empty"_s.arg(path));

    // The end-of-directory record lies in the last 64 KiB + 22 bytes.
    const qint64 tailSize = std::min<qint64>(size, 65535 + 22);
    std::vector<char> tail(static_cast<size_t>(tailSize));
    if (!PlatformFile::readAt(file.get(), tail.data(), tailSize, size - tailSize))
        return Result::failure(u"cannot read \"%1\""_s.arg(path));
    // Counted with string_view's search, which skips to each 'P' with memchr.
    const std::string_view tailView(tail.data(), tail.size());
    const std::string_view endSignature("PK\x05\x06", 4);
    qsizetype endRecords = 0;
    for (size_t at = tailView.find(endSignature); at != std::string_view::npos;
         at = tailView.find(endSignature, at + 4))
        ++endRecords;
    if (endRecords == 0 || endRecords > kMaxEndRecords)
        return Result::failure(u"\"%1\" is not a ZIP archive"_s.arg(path));

    zip_error_t error;
    zip_error_init(&error);
    zip_source_t *source = windowedReadSource(file.release(), size, std::move(tail), &error); // owns the file now
    d->zip.reset(source ? zip_open_from_source(source, ZIP_RDONLY, &error) : nullptr);
    const int zipCode = zip_error_code_zip(&error);
    zip_error_fini(&error);
    if (!d->zip) {
        if (source)
            zip_source_free(source);
        return Result::failure(u"\"%1\" is not a readable ZIP archive: %2"_s.arg(path, zipErrorText(zipCode)));
    }
    return Result();
}

Result ArchiveReader::extractAll(const QString &folder, std::vector<ArchiveEntryOrigin> *origins)
{
    if (!d->zip)
        return Result::failure(u"no archive is open"_s);
    PlatformFile::Folder root;
    int rootError = 0;
    if (!PlatformFile::openFolder(PlatformFile::encodeName(folder), false, root, rootError))
        return Result::failure(u"cannot open folder \"%1\": %2"_s.arg(folder, PlatformFile::errorText(rootError)));

    FolderWalker walker(root);
    ArchivePaths paths;
    std::vector<char> buffer(kChunk);
    QHash<QString, ArchiveEntryOrigin> found;
    const zip_int64_t count = zip_get_num_entries(d->zip.get(), 0);
    for (zip_int64_t i = 0; i < count; ++i) {
        if (Result result = d->extractEntry(zip_uint64_t(i), walker, paths, buffer, origins ? &found : nullptr);
            !result)
            return result;
    }
    if (origins) {
        origins->clear();
        origins->reserve(size_t(found.size()));
        for (const ArchiveEntryOrigin &origin : std::as_const(found))
            origins->push_back(origin);
    }
    return Result();
}

Result ArchiveReader::Impl::extractEntry(zip_uint64_t index, FolderWalker &walker, ArchivePaths &paths,
                                         std::vector<char> &buffer, QHash<QString, ArchiveEntryOrigin> *origins)
{
    const QString shown = entryName(zip.get(), index);
    std::vector<QByteArray> parts;
    bool isFolder = false;
    if (!ArchiveEntryNames::split(PlatformFile::encodeName(shown), parts, isFolder))
        return Result(); // would land outside the folder
    zip_uint8_t system = 0;
    zip_uint32_t attributes = 0;
    if (zip_file_get_external_attributes(zip.get(), index, 0, &system, &attributes) == 0 && system == ZIP_OPSYS_UNIX
        && ((attributes >> 16) & kUnixTypeMask) == kUnixLink)
        return Result(); // links are never created

    const QByteArray earlier = paths.place(parts, isFolder);
    QString error;
    if (isFolder)
        return walker.open(parts, parts.size(), error) ? Result() : Result::failure(error);
    const PlatformFile::Folder *dir = walker.open(parts, parts.size() - 1, error);
    if (!dir)
        return Result::failure(error);
    const QByteArray &leaf = parts.back();
    if (!earlier.isEmpty())
        PlatformFile::removeFile(*dir, earlier); // the later of two names differing in case wins
    // A link found in the folder is refused, never written through; a file that is
    // there already is emptied only once it proved to be a plain file with no
    // second name (a hard link) elsewhere.
    int err = 0;
    PlatformFile::FileHandle file = PlatformFile::createFile(*dir, leaf, err);
    if (!file.isOpen()) {
        return Result::failure(err != 0 ? u"cannot write \"%1\": %2"_s.arg(shown, PlatformFile::errorText(err))
                                        : u"cannot write \"%1\": not a plain file"_s.arg(shown));
    }
    Result copied = copyEntry(index, file.get(), shown, buffer);
    if (copied && !file.close(err))
        copied = Result::failure(u"cannot write \"%1\": %2"_s.arg(shown, PlatformFile::errorText(err)));
    if (!copied) {
        file.reset();
        PlatformFile::removeFile(*dir, leaf); // a half-read entry is no entry
    } else if (origins) {
        noteOrigin(*origins, index, parts, earlier);
    }
    return copied;
}

void ArchiveReader::Impl::noteOrigin(QHash<QString, ArchiveEntryOrigin> &origins, zip_uint64_t index,
                                     const std::vector<QByteArray> &parts, const QByteArray &earlier) const
{
    QByteArray folder;
    for (size_t i = 0; i + 1 < parts.size(); ++i)
        folder += parts[i] + '/';
    const QString path = PlatformFile::decodeName(folder + parts.back());
    if (!earlier.isEmpty())
        origins.remove(PlatformFile::decodeName(folder + earlier));
    ArchiveEntryOrigin origin;
    origin.path = path;
    origin.index = index;
    if (packedForm(index, origin.form))
        origins.insert(path, origin);
    else
        origins.remove(path);
}

bool ArchiveReader::Impl::packedForm(zip_uint64_t index, PackedForm &form) const
{
    zip_stat_t info;
    constexpr zip_uint64_t needed = ZIP_STAT_SIZE | ZIP_STAT_COMP_SIZE | ZIP_STAT_CRC | ZIP_STAT_COMP_METHOD;
    if (zip_stat_index(zip.get(), index, 0, &info) != 0 || (info.valid & needed) != needed)
        return false;
    // Only what Rover's ZIP reader reads is worth copying as it is.
    if (info.comp_method != ZIP_CM_STORE && info.comp_method != ZIP_CM_DEFLATE)
        return false;
    if ((info.valid & ZIP_STAT_ENCRYPTION_METHOD) && info.encryption_method != ZIP_EM_NONE)
        return false;
    form.method = quint16(info.comp_method);
    form.crc = info.crc;
    form.size = qint64(info.size);
    form.packedSize = qint64(info.comp_size);
    return true;
}

Result ArchiveReader::Impl::copyEntry(zip_uint64_t index, int fd, const QString &shown, std::vector<char> &buffer)
{
    std::unique_ptr<zip_file_t, ZipFileClose> entry(zip_fopen_index(zip.get(), index, 0));
    if (!entry) {
        return Result::failure(
            u"cannot read \"%1\": %2"_s.arg(shown, readFailure(zip_get_error(zip.get()), zip.get(), index)));
    }
    for (;;) {
        const zip_int64_t n = zip_fread(entry.get(), buffer.data(), buffer.size());
        if (n < 0) {
            return Result::failure(
                u"cannot read \"%1\": %2"_s.arg(shown, readFailure(zip_file_get_error(entry.get()), zip.get(), index)));
        }
        if (n == 0)
            break;
        int err = 0;
        if (!PlatformFile::writeAll(fd, buffer.data(), size_t(n), err))
            return Result::failure(u"cannot write \"%1\": %2"_s.arg(shown, PlatformFile::errorText(err)));
    }
    // libzip reports a CRC mismatch at the latest here.
    if (zip_fclose(entry.release()) != 0)
        return Result::failure(u"cannot read \"%1\": CRC error"_s.arg(shown));
    zip_stat_t info;
    if (zip_stat_index(zip.get(), index, 0, &info) == 0 && (info.valid & ZIP_STAT_MTIME))
        PlatformFile::setModified(fd, info.mtime);
    return Result();
}

QStringList ArchiveReader::entryNames() const
{
    QStringList names;
    if (!d->zip)
        return names;
    const zip_int64_t count = zip_get_num_entries(d->zip.get(), 0);
    for (zip_int64_t i = 0; i < count; ++i)
        names.append(QString::fromUtf8(normalisedName(d->zip.get(), zip_uint64_t(i))));
    return names;
}

Result ArchiveReader::readEntry(const QString &name, QByteArray &data, qint64 maxSize)
{
    data.clear();
    if (!d->zip)
        return Result::failure(u"no archive is open"_s);
    const QByteArray wanted = name.toUtf8();
    // From the end: of two entries of one name the later one is the one extracted.
    for (zip_int64_t i = zip_get_num_entries(d->zip.get(), 0) - 1; i >= 0; --i) {
        if (normalisedName(d->zip.get(), zip_uint64_t(i)) == wanted)
            return readEntryAt(quint64(i), data, maxSize);
    }
    return Result::failure(u"\"%1\" is not in the archive"_s.arg(name));
}

Result ArchiveReader::readEntryAt(quint64 index, QByteArray &data, qint64 maxSize)
{
    data.clear();
    if (!d->zip || zip_int64_t(index) >= zip_get_num_entries(d->zip.get(), 0))
        return Result::failure(u"no such entry"_s);
    zip_t *za = d->zip.get();
    const QString name = entryName(za, index);
    zip_stat_t info;
    if (zip_stat_index(za, index, 0, &info) != 0 || !(info.valid & ZIP_STAT_SIZE))
        return Result::failure(u"cannot read \"%1\""_s.arg(name));
    if (info.size > zip_uint64_t(maxSize))
        return Result::failure(u"\"%1\" is too large"_s.arg(name));
    std::unique_ptr<zip_file_t, Impl::ZipFileClose> entry(zip_fopen_index(za, index, 0));
    if (!entry)
        return Result::failure(u"cannot read \"%1\": %2"_s.arg(name, QString::fromUtf8(zip_strerror(za))));
    data.resize(qsizetype(info.size));
    qsizetype filled = 0;
    bool ok = true;
    char probe = 0;
    for (;;) {
        // One byte beyond the stated size would reveal a lying directory.
        char *target = filled < data.size() ? data.data() + filled : &probe;
        const zip_uint64_t room = filled < data.size() ? zip_uint64_t(data.size() - filled) : 1;
        const zip_int64_t n = zip_fread(entry.get(), target, room);
        if (n == 0)
            break;
        if (n < 0 || target == &probe) {
            ok = false;
            break;
        }
        filled += qsizetype(n);
    }
    if (zip_fclose(entry.release()) != 0 || filled != data.size())
        ok = false;
    if (!ok) {
        data.clear();
        return Result::failure(u"cannot read \"%1\": checksum or data error"_s.arg(name));
    }
    return Result();
}

Result ArchiveReader::readPacked(quint64 index, PackedEntry &entry)
{
    entry = PackedEntry();
    if (!d->zip)
        return Result::failure(u"no archive is open"_s);
    zip_t *za = d->zip.get();
    if (index >= zip_uint64_t(zip_get_num_entries(za, 0)) || !d->packedForm(index, entry.form))
        return Result::failure(u"entry %1 cannot be copied"_s.arg(index));
    std::unique_ptr<zip_file_t, Impl::ZipFileClose> file(zip_fopen_index(za, index, ZIP_FL_COMPRESSED));
    if (!file)
        return Result::failure(u"entry %1: %2"_s.arg(index).arg(QString::fromUtf8(zip_strerror(za))));
    entry.packed.resize(qsizetype(entry.form.packedSize));
    qsizetype filled = 0;
    while (filled < entry.packed.size()) {
        const zip_int64_t n =
            zip_fread(file.get(), entry.packed.data() + filled, zip_uint64_t(entry.packed.size() - filled));
        if (n <= 0)
            break;
        filled += qsizetype(n);
    }
    if (filled != entry.packed.size()) {
        entry = PackedEntry();
        return Result::failure(u"entry %1 is cut short"_s.arg(index));
    }
    return Result();
}
