#include "app/BlocksetWriter.h"

#include "app/DocumentFiles.h"
#include "formats/Parser_Style.h"
#include "formats/Parser_Version.h"
#include "storage/ArchiveWriter.h"
#include "storage/WorkingFolder.h"

#include <QFile>
#include <QFileInfo>

#include <limits>

using namespace Qt::StringLiterals;

Result BlocksetWriter::writeStyle(const QString &styleName, const BlocksetContent &content, QByteArray &bytes)
{
    bytes = ::writeStyle(content.style, content.blocks);
    if (Result written = writeWholeFile(m_folder.workingFolder() + u'/' + styleName, bytes); !written)
        return written;
    // Where file names tell case apart, a style file unpacked as "Castle.STYLE" is
    // still the blockset's own: drop it so only the one just written is packed.
    for (const QFileInfo &info : listFolderFiles(m_folder.workingFolder(), {u"*.style"_s})) {
        if (info.fileName() != styleName && info.fileName().compare(styleName, Qt::CaseInsensitive) == 0)
            QFile::remove(info.absoluteFilePath());
    }
    return Result();
}

Result BlocksetWriter::packArchive(const QString &archivePath, PackedEntries &packed)
{
    if (archivePath.isEmpty())
        return Result::failure(u"the blockset has no file yet"_s);
    ArchiveWriter archive(archivePath, &packed);
    if (Result added = archive.addFolder(m_folder.workingFolder()); !added)
        return added;
    return archive.write();
}

Result BlocksetWriter::writeUpdateFile(const QString &updatePath, const QString &archivePath, const QString &version,
                                       const QString &comment, QByteArray &bytes)
{
    const QFileInfo archive(archivePath);
    if (archivePath.isEmpty() || !archive.isFile())
        return Result::failure(u"\"%1\" is not a file"_s.arg(archivePath));
    if (archive.size() > std::numeric_limits<qint32>::max())
        return Result::failure(u"\"%1\" is larger than an update file can say"_s.arg(archivePath));
    bytes = writeUpdate(version, comment, qint32(archive.size()));
    return writeWholeFile(updatePath, bytes);
}
