#include "storage/PackedEntries.h"

namespace {

// Older forms of one file are kept for an undo that brings the file back.
constexpr qsizetype kFormsPerFile = 4;

} // namespace

PackedEntries::PackedEntries() = default;
PackedEntries::~PackedEntries() = default;

void PackedEntries::clear()
{
    m_forms.clear();
    m_sourcePath.clear();
    m_sourceStamp = PlatformFile::FileStamp();
    m_source.reset();
}

bool PackedEntries::sameFile(const PlatformFile::FileStamp &a, const PlatformFile::FileStamp &b)
{
    // Not the change time: a hard link made to keep the file for an undo changes it.
    return a.exists && b.exists && a.size == b.size && a.mtimeNs == b.mtimeNs && a.inode == b.inode;
}

void PackedEntries::adoptArchive(const QString &archivePath, const QString &folder,
                                 const std::vector<ArchiveEntryOrigin> &origins)
{
    clear();
    m_sourcePath = archivePath;
    m_sourceStamp = PlatformFile::fileStamp(PlatformFile::encodeName(archivePath));
    for (const ArchiveEntryOrigin &origin : origins) {
        const PlatformFile::FileStamp stamp =
            PlatformFile::fileStamp(PlatformFile::encodeName(folder + u'/' + origin.path));
        if (stamp.exists && stamp.size == origin.form.size)
            add(origin.path, {stamp, origin.form, QByteArray(), qint64(origin.index)});
    }
}

void PackedEntries::adoptWritten(const QString &archivePath, const std::vector<Written> &written,
                                 const PlatformFile::FileStamp &archiveStamp)
{
    // Forms of other files stay (an undo may bring a file back), but only in memory.
    for (auto it = m_forms.begin(); it != m_forms.end(); ++it)
        it->removeIf([](const Form &form) { return form.archiveIndex >= 0; });
    m_source.reset();
    m_sourcePath = archivePath;
    m_sourceStamp = archiveStamp;
    for (const Written &entry : written) {
        // Its bytes are in the archive now: the copy in memory goes.
        m_forms[entry.path].removeIf([&](const Form &form) { return form.form == entry.form; });
        add(entry.path, {entry.stamp, entry.form, QByteArray(), qint64(entry.index)});
    }
    m_forms.removeIf([](const QHash<QString, QList<Form>>::iterator it) { return it->isEmpty(); });
}

void PackedEntries::add(const QString &path, Form form)
{
    QList<Form> &forms = m_forms[path];
    forms.prepend(std::move(form));
    if (forms.size() > kFormsPerFile)
        forms.resize(kFormsPerFile);
}

void PackedEntries::remember(const QString &path, const PlatformFile::FileStamp &stamp, const PackedEntry &entry)
{
    if (stamp.exists && stamp.size == entry.form.size)
        add(path, {stamp, entry.form, entry.packed, -1});
}

void PackedEntries::rememberContent(const QString &path, const PackedEntry &entry)
{
    add(path, {PlatformFile::FileStamp(), entry.form, entry.packed, -1});
}

std::optional<PackedForm> PackedEntries::formFor(const QString &path, const PlatformFile::FileStamp &stamp) const
{
    const auto found = m_forms.constFind(path);
    if (found == m_forms.cend())
        return std::nullopt;
    for (const Form &form : *found) {
        if (sameFile(form.stamp, stamp))
            return form.form;
    }
    return std::nullopt;
}

std::optional<PackedEntry> PackedEntries::entryFor(const QString &path, const PlatformFile::FileStamp &stamp)
{
    const auto found = m_forms.constFind(path);
    if (found == m_forms.cend())
        return std::nullopt;
    for (const Form &form : *found) {
        if (sameFile(form.stamp, stamp))
            return bytesOf(form);
    }
    return std::nullopt;
}

std::optional<PackedEntry> PackedEntries::entryForContent(const QString &path, const QByteArray &content)
{
    const auto found = m_forms.constFind(path);
    if (found == m_forms.cend())
        return std::nullopt;
    const QList<Form> &forms = *found;
    quint32 crc = 0;
    bool crcKnown = false;
    for (const Form &form : forms) {
        if (form.form.size != content.size())
            continue;
        if (!crcKnown) {
            crc = EntryPacking::crc32(content);
            crcKnown = true;
        }
        if (form.form.crc != crc)
            continue;
        // A checksum can agree by chance: the bytes themselves must.
        std::optional<PackedEntry> entry = bytesOf(form);
        QByteArray unpacked;
        if (entry && EntryPacking::unpack(*entry, unpacked) && unpacked == content)
            return entry;
    }
    return std::nullopt;
}

std::optional<PackedEntry> PackedEntries::bytesOf(const Form &form)
{
    if (form.archiveIndex < 0)
        return PackedEntry{form.form, form.packed};
    // The archive must still be the one whose entries were noted.
    if (!m_source) {
        if (!sameFile(PlatformFile::fileStamp(PlatformFile::encodeName(m_sourcePath)), m_sourceStamp))
            return std::nullopt;
        auto source = std::make_unique<ArchiveReader>();
        if (!source->open(m_sourcePath))
            return std::nullopt;
        m_source = std::move(source);
    }
    PackedEntry entry;
    if (!m_source->readPacked(quint64(form.archiveIndex), entry) || entry.form != form.form)
        return std::nullopt;
    return entry;
}

void PackedEntries::releaseSource()
{
    m_source.reset();
}
