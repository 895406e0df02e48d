#include "app/BlocksetSizeMonitor.h"

#include "app/BlocksetDocument.h"
#include "common/CommonFunctions.h"
#include "formats/Parser_Style.h"
#include "storage/ArchiveWriter.h"
#include "storage/PackedEntries.h"
#include "storage/ZipWriter.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace {

bool isMedia(const QString &path)
{
    return path.startsWith(u"textures/"_s) || path.startsWith(u"sounds/"_s);
}

} // namespace

BlocksetSizeMonitor::BlocksetSizeMonitor(BlocksetDocument &document, QObject *parent)
    : QObject(parent),
      m_document(document)
{
    // One worker: packing competes with the window for a few cores at most.
    m_pool.setMaxThreadCount(1);
    m_refreshLater.setSingleShot(true);
    m_refreshLater.setInterval(0);
    connect(&m_refreshLater, &QTimer::timeout, this, &BlocksetSizeMonitor::refresh);
    const auto later = [this] { m_refreshLater.start(); };
    connect(&document, &BlocksetDocument::documentReset, this, later);
    connect(&document, &BlocksetDocument::itemsChanged, this, later);
    connect(&document, &BlocksetDocument::styleChanged, this, later);
    connect(&document, &BlocksetDocument::stateChanged, this, later);
}

BlocksetSizeMonitor::~BlocksetSizeMonitor()
{
    m_pool.clear();
    m_pool.waitForDone();
}

void BlocksetSizeMonitor::settle()
{
    refresh();
    // A refresh starts workers for files that changed meanwhile: a few rounds at most.
    for (int round = 0; round < 3 && !m_running.isEmpty(); ++round) {
        m_pool.waitForDone();
        QCoreApplication::sendPostedEvents(this, QEvent::MetaCall);
        refresh();
    }
}

QString BlocksetSizeMonitor::pathOf(ItemKind kind, const QString &file)
{
    switch (kind) {
    case ItemKind::Block: return u"blocks/"_s + file;
    case ItemKind::Texture: return u"textures/"_s + file;
    case ItemKind::Sound: return u"sounds/"_s + file;
    }
    return file;
}

qint64 BlocksetSizeMonitor::packedSize(ItemKind kind, const QString &file) const
{
    return m_packed.value(pathOf(kind, file), -1);
}

MediaVerdict BlocksetSizeMonitor::verdict(ItemKind kind, const QString &file) const
{
    return m_verdicts.value(pathOf(kind, file)).verdict;
}

void BlocksetSizeMonitor::refresh()
{
    m_refreshLater.stop();
    m_size = SavedSize();
    m_packed.clear();
    if (!m_document.blocksetOpen()) {
        m_verdicts.clear();
        emit sizeChanged();
        return;
    }
    const QString folder = m_document.workingFolder();
    const QString styleName = nativeBaseName(m_document.blocksetFileName()) + u".style"_s;
    PackedEntries &packed = m_document.packedEntries();
    ArchiveWriter listing(QString{});
    (void)listing.addFolder(folder); // what cannot be listed, the save reports
    QSet<QString> present;
    const auto add = [&](const QString &path, qint64 size, qint64 packedBytes, bool known) {
        SavedSize::Entry entry{path, SavedSize::kindOf(path, styleName), size, packedBytes, 0, known};
        entry.total = packedBytes + ZipWriter::entryOverhead(path);
        m_size.entries.append(entry);
        m_size.total += entry.total;
        m_size.complete = m_size.complete && known;
        m_packed.insert(path, known ? packedBytes : -1);
    };
    for (const QString &path : listing.fileEntries()) {
        if (path.compare(styleName, Qt::CaseInsensitive) == 0)
            continue; // the save writes the style anew, below
        present.insert(path);
        const PlatformFile::FileStamp stamp = PlatformFile::fileStamp(PlatformFile::encodeName(folder + u'/' + path));
        const std::optional<PackedForm> form = packed.formFor(path, stamp);
        add(path, stamp.size, form ? form->packedSize : stamp.size, form.has_value());
        const bool judged = !isMedia(path) || PackedEntries::sameFile(m_verdicts.value(path).stamp, stamp);
        if ((!form || !judged) && !m_running.contains(path))
            start({path, stamp, !form, !judged});
    }
    // The style as the next save writes it: small, packed here and now.
    const QByteArray style = writeStyle(m_document.style(), m_document.blocks());
    const std::optional<PackedEntry> known = packed.entryForContent(styleName, style);
    add(styleName, style.size(),
        known ? known->form.packedSize : EntryPacking::packForSave(styleName, style).form.packedSize, true);
    for (const QString &name : listing.folderEntries()) {
        m_size.entries.append({name, SavedSize::Other, 0, 0, ZipWriter::entryOverhead(name), true});
        m_size.total += ZipWriter::entryOverhead(name);
    }
    m_size.total += ZipWriter::kEndRecordBytes;
    m_verdicts.removeIf([&](const QHash<QString, Judged>::iterator it) { return !present.contains(it.key()); });
    emit sizeChanged();
}

void BlocksetSizeMonitor::start(const Work &work)
{
    m_running.insert(work.path);
    const QString file = m_document.workingFolder() + u'/' + work.path;
    m_pool.start([this, work, file] {
        Done done{work, PackedEntry(), MediaVerdict()};
        QFile input(file);
        if (input.open(QIODevice::ReadOnly)) {
            const QByteArray content = input.readAll();
            if (work.pack)
                done.entry = EntryPacking::packForSave(work.path, content);
            if (work.judge)
                done.verdict = entryVerdict(work.path, content);
        } else {
            done.work.pack = false; // the save will say why it cannot be read
        }
        QMetaObject::invokeMethod(
            this, [this, done] { collect(done); }, Qt::QueuedConnection);
    });
}

void BlocksetSizeMonitor::collect(const Done &done)
{
    m_running.remove(done.work.path);
    // A file changed while it was read is read again at the refresh.
    const PlatformFile::FileStamp now =
        PlatformFile::fileStamp(PlatformFile::encodeName(m_document.workingFolder() + u'/' + done.work.path));
    if (m_document.blocksetOpen() && PackedEntries::sameFile(now, done.work.stamp)) {
        if (done.work.pack)
            m_document.packedEntries().remember(done.work.path, now, done.entry);
        if (done.work.judge)
            m_verdicts.insert(done.work.path, {now, done.verdict});
    }
    m_refreshLater.start();
}
