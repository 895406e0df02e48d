#include "storage/PackedEntry.h"

#include <libdeflate.h>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

struct CompressorFree {
    void operator()(libdeflate_compressor *c) const { libdeflate_free_compressor(c); }
};
struct DecompressorFree {
    void operator()(libdeflate_decompressor *d) const { libdeflate_free_decompressor(d); }
};

// A compressor per level and thread: the strongest level allocates about a
// megabyte of tables, which a blockset's hundreds of small entries would
// otherwise allocate again for each.
libdeflate_compressor *compressor(int level)
{
    thread_local std::unique_ptr<libdeflate_compressor, CompressorFree> cached;
    thread_local int cachedLevel = -1;
    if (!cached || cachedLevel != level) {
        cached.reset(libdeflate_alloc_compressor(level));
        cachedLevel = level;
    }
    return cached.get();
}

} // namespace

namespace EntryPacking {

quint32 crc32(QByteArrayView data)
{
    return quint32(libdeflate_crc32(0, data.data(), size_t(data.size())));
}

PackedEntry store(QByteArrayView data)
{
    PackedEntry entry;
    entry.form = {PackedForm::Stored, crc32(data), data.size(), data.size()};
    entry.packed = data.toByteArray();
    return entry;
}

PackedEntry pack(QByteArrayView data, int level)
{
    libdeflate_compressor *c = compressor(level);
    if (!c || data.isEmpty())
        return store(data);
    QByteArray out(qsizetype(libdeflate_deflate_compress_bound(c, size_t(data.size()))), Qt::Uninitialized);
    // Nothing is gained unless the result is at least one byte smaller.
    const size_t length =
        libdeflate_deflate_compress(c, data.data(), size_t(data.size()), out.data(), size_t(data.size() - 1));
    if (length == 0)
        return store(data);
    out.truncate(qsizetype(length));
    out.squeeze();
    PackedEntry entry;
    entry.form = {PackedForm::Deflated, crc32(data), data.size(), qint64(length)};
    entry.packed = std::move(out);
    return entry;
}

bool isCompressedImageName(const QString &entryName)
{
    return entryName.endsWith(u".gif"_s, Qt::CaseInsensitive) || entryName.endsWith(u".jpg"_s, Qt::CaseInsensitive)
           || entryName.endsWith(u".jpeg"_s, Qt::CaseInsensitive);
}

PackedEntry packForSave(const QString &entryName, QByteArrayView data)
{
    return isCompressedImageName(entryName) ? store(data) : pack(data, kSaveLevel);
}

bool unpack(const PackedEntry &entry, QByteArray &data)
{
    const PackedForm &form = entry.form;
    if (entry.packed.size() != form.packedSize || form.size < 0)
        return false;
    if (form.method == PackedForm::Stored) {
        data = entry.packed;
    } else if (form.method == PackedForm::Deflated) {
        thread_local std::unique_ptr<libdeflate_decompressor, DecompressorFree> d(libdeflate_alloc_decompressor());
        data.resize(qsizetype(form.size));
        size_t actual = 0;
        if (!d
            || libdeflate_deflate_decompress(d.get(), entry.packed.constData(), size_t(entry.packed.size()),
                                             data.data(), size_t(data.size()), &actual)
                   != LIBDEFLATE_SUCCESS
            || qint64(actual) != form.size) {
            data.clear();
            return false;
        }
    } else {
        return false;
    }
    if (data.size() != form.size || crc32(data) != form.crc) {
        data.clear();
        return false;
    }
    return true;
}

} // namespace EntryPacking
