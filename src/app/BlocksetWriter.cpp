#include "app/BlocksetWriter.h"

#include "app/DocumentFiles.h"
#include "formats/Parser_Style.h"
#include "formats/Parser_Version.h"
#include "storage/ArchiveWriter.h"
#include "storage/PairSwitch.h"
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

Result BlocksetWriter::packArchive(const QString &archivePath, PackedEntries &known)
{
    if (archivePath.isEmpty())
        return Result::failure(u"the blockset has no file yet"_s);
    ArchiveWriter archive(archivePath, &known);
    if (Result added = archive.addFolder(m_folder.workingFolder()); !added)
        return added;
    return archive.write();
}

namespace {

Result updateBytesFor(qint64 archiveSize, const QString &archivePath, const QString &version, const QString &comment,
                      QByteArray &bytes)
{
    if (archiveSize > std::numeric_limits<qint32>::max())
        return Result::failure(u"\"%1\" is larger than an update file can say"_s.arg(archivePath));
    bytes = writeUpdate(version, comment, qint32(archiveSize));
    return Result();
}

} // namespace

Result BlocksetWriter::packPair(const QString &archivePath, PackedEntries &known, const QString &updatePath,
                                const QString &version, const QString &comment, QByteArray &updateBytes,
                                bool &updateFailed)
{
    updateFailed = false;
    if (archivePath.isEmpty())
        return Result::failure(u"the blockset has no file yet"_s);
    ArchiveWriter archive(archivePath, &known);
    QByteArray newArchive;
    if (Result packed = archive.addFolder(m_folder.workingFolder()); !packed)
        return packed;
    if (Result packed = archive.writeAside(newArchive); !packed)
        return packed;
    const qint64 size = QFileInfo(QFileInfo(archivePath).absolutePath() + u'/' + QFile::decodeName(newArchive)).size();
    QByteArray newUpdate;
    Result written = updateBytesFor(size, archivePath, version, comment, updateBytes);
    if (written)
        written = PairSwitch::writeAside(updatePath, updateBytes, newUpdate);
    if (!written) {
        PairSwitch::dropAside(archivePath, newArchive);
        updateFailed = true;
        return written;
    }
    Result switched = PairSwitch::switchPair(archivePath, newArchive, updatePath, newUpdate);
    if (switched)
        archive.asidePutInPlace();
    // The reason names the file that could not be put in place.
    updateFailed = !switched && switched.reason().contains(QFileInfo(updatePath).fileName());
    return switched;
}

Result BlocksetWriter::writeUpdateFile(const QString &updatePath, const QString &archivePath, const QString &version,
                                       const QString &comment, QByteArray &bytes)
{
    const QFileInfo archive(archivePath);
    if (archivePath.isEmpty() || !archive.isFile())
        return Result::failure(u"\"%1\" is not a file"_s.arg(archivePath));
    if (Result made = updateBytesFor(archive.size(), archivePath, version, comment, bytes); !made)
        return made;
    return writeWholeFile(updatePath, bytes);
}
