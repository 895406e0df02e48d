#include "cache/CachedBlockset.h"

#include "common/CommonFunctions.h"
#include "formats/Parser.h"
#include "formats/Parser_Style.h"

#include <QFile>

#include <zip.h>

#ifdef Q_OS_WIN
#include <string>
#endif

using namespace Qt::StringLiterals;

namespace {

// A style entry larger than this is not a style a blockset could carry.
constexpr zip_uint64_t kMaxStyleSize = 16 * 1024 * 1024;

zip_t *openReadOnly(const QString &path)
{
#ifdef Q_OS_WIN
    zip_error_t error;
    zip_error_init(&error);
    const std::wstring name = path.toStdWString();
    zip_source_t *source = zip_source_win32w_create(name.c_str(), 0, -1, &error);
    zip_t *za = source ? zip_open_from_source(source, ZIP_RDONLY, &error) : nullptr;
    if (source && !za)
        zip_source_free(source);
    zip_error_fini(&error);
    return za;
#else
    int code = 0;
    return zip_open(QFile::encodeName(path).constData(), ZIP_RDONLY, &code);
#endif
}

bool readEntry(zip_t *za, zip_uint64_t index, QByteArray &data)
{
    zip_stat_t stat;
    if (zip_stat_index(za, index, 0, &stat) != 0 || !(stat.valid & ZIP_STAT_SIZE) || stat.size > kMaxStyleSize)
        return false;
    zip_file_t *file = zip_fopen_index(za, index, 0);
    if (!file)
        return false;
    data.resize(qsizetype(stat.size));
    const zip_int64_t read = zip_fread(file, data.data(), stat.size);
    zip_fclose(file);
    return read == zip_int64_t(stat.size);
}

void takeKnown(QString &column, const QString &value)
{
    if (!value.isEmpty())
        column = value;
}

} // namespace

void readCachedBlockset(const QString &path, CacheRow &row)
{
    zip_t *za = openReadOnly(path);
    if (!za) {
        row.readable = false;
        return;
    }
    // Entry names are compared as bytes: only the extension and, for a style
    // entry, the base name matter, and both are ASCII in Rover's blocksets.
    const QByteArray baseName = getBaseName(row.fileName).toUtf8();
    const zip_int64_t count = zip_get_num_entries(za, 0);
    zip_int64_t styleIndex = -1;
    for (zip_int64_t i = 0; i < count; ++i) {
        const char *raw = zip_get_name(za, zip_uint64_t(i), ZIP_FL_ENC_RAW);
        if (!raw)
            continue;
        QByteArrayView name(raw);
        name = name.sliced(name.lastIndexOf('/') + 1);
        const qsizetype dot = name.lastIndexOf('.');
        if (dot < 0)
            continue;
        const QByteArrayView extension = name.sliced(dot + 1);
        const auto is = [&extension](const char *wanted) { return extension.compare(wanted, Qt::CaseInsensitive) == 0; };
        if (is("block"))
            ++row.blocks;
        else if (is("gif") || is("jpg"))
            ++row.textures;
        else if (is("wav"))
            ++row.sounds;
        else if (is("style") && styleIndex < 0 && name.first(dot).compare(baseName, Qt::CaseInsensitive) == 0)
            styleIndex = i;
    }
    QByteArray style;
    if (styleIndex >= 0 && readEntry(za, zip_uint64_t(styleIndex), style)) {
        Parser parser;
        parser.setBuffer(style);
        const StyleHeader header = readStyleHeader(parser);
        takeKnown(row.version, header.version);
        takeKnown(row.name, header.name);
        takeKnown(row.synopsis, header.synopsis);
        takeKnown(row.author, header.author);
        takeKnown(row.copyright, header.copyright);
    }
    zip_discard(za);
}
