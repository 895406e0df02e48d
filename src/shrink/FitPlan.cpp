#include "shrink/FitPlan.h"

#include "rover/RoverMedia.h"
#include "shrink/GifColours.h"
#include "shrink/JpegShrink.h"
#include "shrink/SoundConvert.h"
#include "shrink/TextureScale.h"
#include "storage/PackedEntry.h"

#include <QImage>
#include <QSet>

#include <algorithm>
#include <numeric>

using namespace Qt::StringLiterals;

namespace {

constexpr int kRoverTextureSide = 256;

// Builds one item's ladder: each step is kept only when it saves bytes (or is needed).
class Ladder {
public:
    Ladder(QList<FitStep> &steps, const FitItem &item) : m_steps(steps), m_item(item), m_packed(item.packed) {}

    // Adds a step whose result is `result`; `needed` keeps it even when it saves nothing.
    bool add(FitStep::Kind kind, int rank, const QString &text, const ShrinkResult &result, bool needed = false)
    {
        if (!result.changed)
            return false;
        const qint64 packed = EntryPacking::pack(result.bytes, EntryPacking::kStrongestLevel).form.packedSize;
        if (packed >= m_packed && !needed)
            return false;
        FitStep step;
        step.path = m_item.path;
        step.kind = kind;
        step.text = text;
        step.rank = rank;
        step.content = result.bytes;
        step.packed = packed;
        step.saved = m_packed - packed;
        step.previous = m_last;
        m_last = int(m_steps.size());
        m_packed = packed;
        m_steps.append(step);
        return true;
    }
    // The item's bytes after the last step added.
    QByteArray current() const { return m_last < 0 ? m_item.content : m_steps[m_last].content; }

private:
    QList<FitStep> &m_steps;
    const FitItem &m_item;
    qint64 m_packed;
    int m_last = -1;
};

void textureLadder(QList<FitStep> &steps, const FitItem &item, const FitOptions &options)
{
    const RoverTextureInfo info = roverTextureInfo(item.content);
    if (info.format == RoverTextureInfo::None)
        return;
    Ladder ladder(steps, item);
    const int side = std::max(info.width, info.height);
    if (side > options.maxTexture) {
        const ShrinkResult scaled = scaleTexture(item.content, options.maxTexture);
        const QImage shape = QImage::fromData(scaled.bytes);
        ladder.add(FitStep::ScaleTexture, side > kRoverTextureSide ? 0 : 1,
                   u"scaled from %1×%2 to %3×%4 pixels"_s.arg(info.width)
                       .arg(info.height)
                       .arg(shape.width())
                       .arg(shape.height()),
                   scaled, side > kRoverTextureSide);
    }
    const QByteArray base = ladder.current();
    const bool jpeg = base.startsWith("\xFF\xD8");
    const QList<int> &levels = jpeg ? options.jpegQualities : options.gifColours;
    for (qsizetype i = 0; i < levels.size(); ++i) {
        const int rank = 2 + int(i);
        if (jpeg)
            ladder.add(FitStep::JpegQuality, rank, u"JPEG quality %1"_s.arg(levels[i]), reencodeJpeg(base, levels[i]));
        else
            ladder.add(FitStep::GifColours, rank, u"reduced to %1 colours"_s.arg(levels[i]),
                       reduceGifColours(base, levels[i]));
    }
}

void soundLadder(QList<FitStep> &steps, const FitItem &item, const FitOptions &options)
{
    Ladder ladder(steps, item);
    RoverSoundInfo info = roverSoundInfo(item.content);
    if (!info.usable) {
        const ShrinkResult plain = convertSound(item.content, {false, 0, 16});
        const RoverSoundInfo after = roverSoundInfo(plain.bytes);
        if (!plain.changed || !after.usable)
            return;
        ladder.add(FitStep::PlainPcm, 0, u"written as plain PCM, which Rover plays"_s, plain, true);
        info = after;
    }
    SoundTarget target{false, 0, info.bitsPerSample <= 8 ? 8 : 16};
    const QByteArray base = ladder.current();
    if (options.soundMono && info.channels > 1) {
        target.mono = true;
        if (!ladder.add(FitStep::SoundMono, 2, u"made mono"_s, convertSound(base, target)))
            target.mono = false;
    }
    int rank = 3;
    for (int rate : options.soundRates) {
        if (rate <= 0 || rate >= info.sampleRate || (target.sampleRate != 0 && rate >= target.sampleRate))
            continue;
        SoundTarget next = target;
        next.sampleRate = rate;
        if (ladder.add(FitStep::SoundRate, rank++, u"resampled from %1 Hz to %2 Hz"_s.arg(info.sampleRate).arg(rate),
                       convertSound(base, next)))
            target = next;
    }
    if (options.sound8Bit && target.bitsPerSample > 8) {
        SoundTarget next = target;
        next.bitsPerSample = 8;
        ladder.add(FitStep::Sound8Bit, 5, u"cut to 8 bits"_s, convertSound(base, next));
    }
}

} // namespace

qint64 FitPlan::sizeAfter() const
{
    qint64 size = sizeBefore;
    for (const FitStep &step : steps) {
        if (step.chosen)
            size -= step.saved;
    }
    return size;
}

void FitPlan::choose(int index, bool chosen)
{
    if (index < 0 || index >= steps.size())
        return;
    steps[index].chosen = chosen;
    if (chosen) {
        for (int at = steps[index].previous; at >= 0; at = steps[at].previous)
            steps[at].chosen = true;
        return;
    }
    // Every later step of the ladder stands on this one.
    for (qsizetype i = 0; i < steps.size(); ++i) {
        for (int at = steps[i].previous; at >= 0; at = steps[at].previous) {
            if (at == index)
                steps[i].chosen = false;
        }
    }
}

QMap<QString, QByteArray> FitPlan::chosenContents() const
{
    // The chosen step no other chosen step stands on is the last of its ladder.
    QSet<int> stoodOn;
    for (const FitStep &step : steps) {
        if (step.chosen && step.previous >= 0)
            stoodOn.insert(step.previous);
    }
    QMap<QString, QByteArray> contents;
    for (qsizetype i = 0; i < steps.size(); ++i) {
        if (steps[i].chosen && !stoodOn.contains(int(i)))
            contents.insert(steps[i].path, steps[i].content);
    }
    return contents;
}

FitPlan planFit(const QList<FitItem> &items, qint64 archiveSize, const FitOptions &options)
{
    FitPlan plan;
    plan.sizeBefore = archiveSize;
    plan.limit = options.limit;
    QList<FitStep> steps;
    for (const FitItem &item : items) {
        if (item.path.startsWith(u"textures/"_s, Qt::CaseInsensitive))
            textureLadder(steps, item, options);
        else if (item.path.startsWith(u"sounds/"_s, Qt::CaseInsensitive))
            soundLadder(steps, item, options);
    }
    // Shown and chosen in the order: least lossy first, then the largest saving.
    // A ladder's steps rise in rank, so each still follows the one it stands on.
    QList<int> order(steps.size());
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(), [&](int a, int b) {
        return steps[a].rank != steps[b].rank ? steps[a].rank < steps[b].rank : steps[a].saved > steps[b].saved;
    });
    QList<int> position(steps.size());
    for (qsizetype i = 0; i < order.size(); ++i)
        position[order[i]] = int(i);
    for (int index : order) {
        FitStep step = steps[index];
        if (step.previous >= 0)
            step.previous = position[step.previous];
        plan.steps.append(step);
    }
    for (qsizetype i = 0; i < plan.steps.size(); ++i) {
        const FitStep &step = plan.steps[i];
        const bool ready = step.previous < 0 || plan.steps[step.previous].chosen;
        if (step.rank == 0 || (ready && !plan.fits()))
            plan.steps[i].chosen = true;
    }
    return plan;
}
