#include "cache/CachedBlockset.h"

#include "common/CommonFunctions.h"
#include "formats/Parser.h"
#include "formats/Parser_Style.h"
#include "storage/ArchiveReader.h"

#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace {

// A style entry larger than this is not a style a blockset could carry.
constexpr qint64 kMaxStyleSize = 16 * 1024 * 1024;

void takeKnown(QString &column, const QString &value)
{
    if (!value.isEmpty())
        column = value;
}

} // namespace

void readCachedBlockset(const QString &path, CacheRow &row)
{
    ArchiveReader archive;
    const bool opened = archive.open(path).ok();
    // The size from the open file itself: a second look by path would walk the
    // whole path again for each of thousands of files.
    row.size = archive.fileSize() >= 0 ? archive.fileSize() : QFileInfo(path).size();
    if (!opened) {
        row.readable = false;
        return;
    }
    const QString baseName = getBaseName(row.fileName);
    qsizetype styleEntry = -1; // the last one, as extraction keeps it
    const QStringList entries = archive.entryNames();
    for (qsizetype index = 0; index < entries.size(); ++index) {
        const QString &entry = entries[index];
        const QStringView name = QStringView(entry).sliced(entry.lastIndexOf(u'/') + 1);
        const qsizetype dot = name.lastIndexOf(u'.');
        if (dot < 0)
            continue;
        const QStringView extension = name.sliced(dot + 1);
        const auto is = [&extension](QLatin1StringView wanted) {
            return extension.compare(wanted, Qt::CaseInsensitive) == 0;
        };
        if (is("block"_L1))
            ++row.blocks;
        else if (is("gif"_L1) || is("jpg"_L1))
            ++row.textures;
        else if (is("wav"_L1))
            ++row.sounds;
        else if (is("style"_L1) && name.first(dot).compare(baseName, Qt::CaseInsensitive) == 0)
            styleEntry = index;
    }
    QByteArray style;
    if (styleEntry >= 0 && archive.readEntryAt(quint64(styleEntry), style, kMaxStyleSize)) {
        Parser parser;
        parser.setBuffer(style);
        const StyleHeader header = readStyleHeader(parser);
        takeKnown(row.version, header.version);
        takeKnown(row.name, header.name);
        takeKnown(row.synopsis, header.synopsis);
        takeKnown(row.author, header.author);
        takeKnown(row.copyright, header.copyright);
    }
}
