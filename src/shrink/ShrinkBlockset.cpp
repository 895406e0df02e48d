#include "shrink/ShrinkBlockset.h"

#include "common/ParallelFor.h"
#include "shrink/GifShrink.h"
#include "shrink/JpegShrink.h"
#include "shrink/TextDeflate.h"
#include "storage/ArchiveWriter.h"
#include "storage/PackedEntries.h"
#include "storage/ZipWriter.h"

#include <QFile>
#include <QSaveFile>

#include <algorithm>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

// Text larger than this is left to libdeflate: zopfli takes about a second for 250 KB.
constexpr qsizetype kMaxTextSize = 256 * 1024;

QString bytesText(qint64 bytes)
{
    QString digits = QString::number(bytes);
    for (qsizetype i = digits.size() - 3; i > 0; i -= 3)
        digits.insert(i, u',');
    return digits;
}

// The lossless rewrite of a texture by what its bytes are, whatever its name.
ShrinkResult rewriteTexture(const QByteArray &content, QString &kind)
{
    if (content.startsWith("GIF87a") || content.startsWith("GIF89a")) {
        kind = u"GIF"_s;
        return optimizeGif(content);
    }
    if (content.startsWith("\xFF\xD8")) {
        kind = u"JPEG"_s;
        return optimizeJpeg(content);
    }
    return ShrinkResult::kept(content, QString());
}

// libdeflate's strongest level, and for text (a small entry that Deflate halves
// at least) zopfli block by block, whichever is smaller; zopfli's stream is kept
// only when libdeflate inflates it back to the same bytes.
PackedEntry strongestPacking(const QByteArray &bytes)
{
    PackedEntry best = EntryPacking::pack(bytes, EntryPacking::kStrongestLevel);
    if (best.form.method != PackedForm::Deflated || bytes.size() > kMaxTextSize
        || best.form.packedSize * 2 > bytes.size())
        return best;
    PackedEntry text;
    text.packed = deflateInBlocks(bytes);
    text.form = {PackedForm::Deflated, best.form.crc, bytes.size(), text.packed.size()};
    QByteArray check;
    if (text.form.packedSize < best.form.packedSize && EntryPacking::unpack(text, check))
        return text;
    return best;
}

ShrinkPlan::Step planStep(const QString &path, const QByteArray &content, const PackedForm &current, bool isStyle)
{
    ShrinkPlan::Step step;
    step.byContent = isStyle;
    step.item.path = path;
    step.item.sizeBefore = step.item.sizeAfter = content.size();
    step.item.before = current.packedSize;

    QString kind;
    const ShrinkResult rewritten = isStyle ? ShrinkResult::kept(content, QString()) : rewriteTexture(content, kind);
    const QByteArray &bytes = rewritten.changed ? rewritten.bytes : content;
    step.packed = strongestPacking(bytes);
    if (rewritten.changed) {
        step.rewrite = true;
        step.content = bytes;
        step.item.sizeAfter = bytes.size();
        step.item.note = u"%1 rewritten losslessly (%2 bytes before)"_s.arg(kind, bytesText(content.size()));
    } else if (step.packed.form.packedSize >= current.packedSize) {
        step.item.after = current.packedSize;
        step.item.note = rewritten.reason.isEmpty() ? u"already as small as Shrink makes it"_s : rewritten.reason;
        return step;
    } else {
        step.item.note = rewritten.reason;
    }
    step.item.after = step.packed.form.packedSize;
    const QString method = step.packed.form.method == PackedForm::Stored ? u"stored"_s : u"deflated"_s;
    step.item.note = step.item.note.isEmpty() ? method : step.item.note + u"; "_s + method;
    return step;
}

// One entry to plan: its bytes, its packed form now, and its stamp on disk.
struct Job {
    QString path;
    QByteArray content;
    PackedForm current;
    bool isStyle = false;
    PlatformFile::FileStamp stamp;
};

// Each job's step, on up to four threads: the rewrites and the packing of one
// entry need nothing from the others, and zopfli and the JPEG rewrites take
// most of Shrink's time. The steps keep the jobs' order.
QList<ShrinkPlan::Step> planSteps(const std::vector<Job> &jobs)
{
    std::vector<ShrinkPlan::Step> steps(jobs.size());
    parallelFor(jobs.size(), 2, [&](size_t i) {
        steps[i] = planStep(jobs[i].path, jobs[i].content, jobs[i].current, jobs[i].isStyle);
        steps[i].stamp = jobs[i].stamp;
    });
    return QList<ShrinkPlan::Step>(std::make_move_iterator(steps.begin()), std::make_move_iterator(steps.end()));
}

} // namespace

QList<ShrinkItem> ShrinkPlan::items() const
{
    QList<ShrinkItem> list;
    list.reserve(steps.size());
    for (const Step &step : steps)
        list.append(step.item);
    return list;
}

qint64 ShrinkPlan::before() const
{
    qint64 sum = 0;
    for (const Step &step : steps)
        sum += step.item.before;
    return sum;
}

qint64 ShrinkPlan::after() const
{
    qint64 sum = 0;
    for (const Step &step : steps)
        sum += step.item.after;
    return sum;
}

bool ShrinkPlan::changesAnything() const
{
    return std::any_of(steps.cbegin(), steps.cend(), [](const Step &step) { return step.item.changed(); });
}

ShrinkPlan planShrink(const QString &folder, PackedEntries &packed, const QString &styleName, const QByteArray &style)
{
    ShrinkPlan plan;
    ArchiveWriter listing(QString{});
    if (!listing.addFolder(folder))
        return plan;
    plan.emptyFolders = listing.folderEntries();
    std::vector<Job> jobs;
    const auto addStyle = [&] {
        const std::optional<PackedEntry> known = packed.entryForContent(styleName, style);
        jobs.push_back(
            {styleName, style, known ? known->form : EntryPacking::packForSave(styleName, style).form, true, {}});
    };
    bool styleListed = false;
    for (const QString &path : listing.fileEntries()) {
        if (path.compare(styleName, Qt::CaseInsensitive) == 0) {
            if (!std::exchange(styleListed, true))
                addStyle();
            continue;
        }
        const QString file = folder + u'/' + path;
        const PlatformFile::FileStamp stamp = PlatformFile::fileStamp(PlatformFile::encodeName(file));
        QFile input(file);
        if (!input.open(QIODevice::ReadOnly))
            continue; // the save reports what it cannot read
        const QByteArray content = input.readAll();
        const std::optional<PackedForm> known = packed.formFor(path, stamp);
        jobs.push_back({path, content, known ? *known : EntryPacking::packForSave(path, content).form, false, stamp});
    }
    if (!styleListed && !style.isEmpty())
        addStyle();
    plan.steps = planSteps(jobs);
    return plan;
}

Result applyShrink(const ShrinkPlan &plan, const QString &folder, PackedEntries &packed)
{
    for (const ShrinkPlan::Step &step : plan.steps) {
        if (!step.item.changed())
            continue;
        if (step.byContent) {
            packed.rememberContent(step.item.path, step.packed);
            continue;
        }
        const QString file = folder + u'/' + step.item.path;
        const QByteArray fsName = PlatformFile::encodeName(file);
        if (!PackedEntries::sameFile(PlatformFile::fileStamp(fsName), step.stamp))
            continue; // changed since the plan: its packed form would not fit
        if (step.rewrite) {
            QSaveFile output(file);
            if (!output.open(QIODevice::WriteOnly) || output.write(step.content) != step.content.size()
                || !output.commit())
                return Result::failure(u"cannot write \"%1\": %2"_s.arg(file, output.errorString()));
        }
        packed.remember(step.item.path, PlatformFile::fileStamp(fsName), step.packed);
    }
    return Result();
}

namespace {

// The archive's bytes besides the entries' data: headers and directory.
qint64 archiveOverhead(const ShrinkPlan &plan)
{
    qint64 sum = ZipWriter::kEndRecordBytes;
    for (const ShrinkPlan::Step &step : plan.steps)
        sum += ZipWriter::entryOverhead(step.item.path);
    for (const QString &folder : plan.emptyFolders)
        sum += ZipWriter::entryOverhead(folder);
    return sum;
}

} // namespace

qint64 ShrinkPlan::archiveBefore() const
{
    return before() + archiveOverhead(*this);
}

qint64 ShrinkPlan::archiveAfter() const
{
    return after() + archiveOverhead(*this);
}
