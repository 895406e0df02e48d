#include "shrink/SoundConvert.h"

#include <QtEndian>

#include <soxr.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

enum class SampleKind { Integer, Float };

struct WavSound {
    SampleKind kind = SampleKind::Integer;
    int channels = 0;
    int rate = 0;
    int bits = 0;
    QByteArrayView data;
};

// The fmt and data chunks of a RIFF WAVE file, with the sample format an
// extensible fmt chunk names in its sub-format.
bool readWav(QByteArrayView bytes, WavSound *sound, QString *error)
{
    if (bytes.size() < 12 || bytes.first(4) != "RIFF" || bytes.sliced(8, 4) != "WAVE") {
        *error = u"not a WAV file (no RIFF WAVE header)"_s;
        return false;
    }
    QByteArrayView format;
    bool haveData = false;
    for (qsizetype pos = 12; pos + 8 <= bytes.size();) {
        const QByteArrayView id = bytes.sliced(pos, 4);
        const qint64 size = qFromLittleEndian<quint32>(bytes.data() + pos + 4);
        const QByteArrayView body = bytes.sliced(pos + 8, qMin<qint64>(size, bytes.size() - pos - 8));
        if (id == "fmt " && format.isEmpty())
            format = body;
        else if (id == "data" && !haveData) {
            sound->data = body; // a data chunk cut short still gives what it has
            haveData = true;
        }
        pos += 8 + size + (size & 1);
    }
    if (format.size() < 16 || !haveData) {
        *error = format.size() < 16 ? u"no readable fmt chunk"_s : u"no data chunk"_s;
        return false;
    }
    uint tag = qFromLittleEndian<quint16>(format.data());
    sound->channels = qFromLittleEndian<quint16>(format.data() + 2);
    sound->rate = int(qFromLittleEndian<quint32>(format.data() + 4));
    sound->bits = qFromLittleEndian<quint16>(format.data() + 14);
    if (tag == 0xFFFE && format.size() >= 26)
        tag = qFromLittleEndian<quint16>(format.data() + 24); // the sub-format's first two bytes
    const bool integer = tag == 1 && (sound->bits == 8 || sound->bits == 16 || sound->bits == 24 || sound->bits == 32);
    const bool floating = tag == 3 && (sound->bits == 32 || sound->bits == 64);
    if (!integer && !floating) {
        *error = u"a sound format that cannot be converted (format tag 0x%1, %2 bits)"_s.arg(
            QString::number(tag, 16).toUpper().rightJustified(4, u'0'), QString::number(sound->bits));
        return false;
    }
    if (sound->channels < 1 || sound->rate < 1 || sound->rate > 768000) {
        *error = u"the fmt chunk names no channels or no usable rate"_s;
        return false;
    }
    sound->kind = integer ? SampleKind::Integer : SampleKind::Float;
    return true;
}

// Samples between -1 and 1, mixed down to one channel when asked.
std::vector<float> samples(const WavSound &sound, bool mono)
{
    const int width = sound.bits / 8;
    const qsizetype frames = sound.data.size() / (qsizetype(width) * sound.channels);
    const int channelsOut = mono ? 1 : sound.channels;
    std::vector<float> out(size_t(frames * channelsOut), 0.0f);
    const char *p = sound.data.data();
    for (qsizetype f = 0; f < frames; ++f) {
        for (int c = 0; c < sound.channels; ++c, p += width) {
            double value = 0;
            if (sound.kind == SampleKind::Float)
                value = width == 4 ? double(qFromLittleEndian<float>(p)) : qFromLittleEndian<double>(p);
            else if (width == 1)
                value = (uchar(*p) - 128) / 128.0;
            else if (width == 2)
                value = qFromLittleEndian<qint16>(p) / 32768.0;
            else if (width == 3)
                value = ((qint32(uchar(p[0])) << 8 | qint32(uchar(p[1])) << 16 | qint32(p[2]) << 24) >> 8) / 8388608.0;
            else
                value = qFromLittleEndian<qint32>(p) / 2147483648.0;
            out[size_t(f * channelsOut + (mono ? 0 : c))] += float(mono ? value / sound.channels : value);
        }
    }
    return out;
}

QByteArray pcmWav(const std::vector<float> &samples, int channels, int rate, int bits)
{
    const qsizetype dataBytes = qsizetype(samples.size()) * (bits / 8);
    QByteArray wav(44 + dataBytes + (dataBytes & 1), '\0');
    char *p = wav.data();
    const auto put16 = [&](qsizetype at, int v) { qToLittleEndian<quint16>(quint16(v), p + at); };
    const auto put32 = [&](qsizetype at, qint64 v) { qToLittleEndian<quint32>(quint32(v), p + at); };
    std::memcpy(p, "RIFF", 4);
    put32(4, wav.size() - 8);
    std::memcpy(p + 8, "WAVEfmt ", 8);
    put32(16, 16);
    put16(20, 1);
    put16(22, channels);
    put32(24, rate);
    put32(28, qint64(rate) * channels * (bits / 8));
    put16(32, channels * (bits / 8));
    put16(34, bits);
    std::memcpy(p + 36, "data", 4);
    put32(40, dataBytes);
    char *out = p + 44;
    for (float sample : samples) {
        const double v = std::clamp(double(sample), -1.0, 1.0);
        if (bits == 8) {
            *out++ = char(std::clamp(std::lround(v * 128.0) + 128, 0L, 255L));
        } else {
            qToLittleEndian<qint16>(qint16(std::clamp(std::lround(v * 32768.0), -32768L, 32767L)), out);
            out += 2;
        }
    }
    return wav;
}

} // namespace

ShrinkResult convertSound(QByteArrayView bytes, const SoundTarget &target)
{
    if (target.bitsPerSample != 8 && target.bitsPerSample != 16)
        return ShrinkResult::kept(bytes, u"a sound is written with 8 or 16 bits per sample"_s);
    if (target.sampleRate < 0 || target.sampleRate > 192000)
        return ShrinkResult::kept(bytes, u"no usable sample rate to convert to"_s);
    WavSound sound;
    QString error;
    if (!readWav(bytes, &sound, &error))
        return ShrinkResult::kept(bytes, error);
    const int channels = target.mono ? 1 : sound.channels;
    const int rate = target.sampleRate > 0 ? target.sampleRate : sound.rate;
    std::vector<float> input = samples(sound, target.mono);
    if (rate == sound.rate || input.empty())
        return ShrinkResult::replaced(bytes, pcmWav(input, channels, rate, target.bitsPerSample));
    const size_t inFrames = input.size() / size_t(channels);
    const size_t outFrames = size_t(std::ceil(double(inFrames) * rate / sound.rate)) + 1;
    std::vector<float> output(outFrames * size_t(channels));
    size_t produced = 0;
    const soxr_io_spec_t io = soxr_io_spec(SOXR_FLOAT32_I, SOXR_FLOAT32_I);
    const soxr_quality_spec_t quality = soxr_quality_spec(SOXR_HQ, 0);
    const soxr_error_t failure = soxr_oneshot(sound.rate, rate, unsigned(channels), input.data(), inFrames, nullptr,
                                              output.data(), outFrames, &produced, &io, &quality, nullptr);
    if (failure)
        return ShrinkResult::kept(bytes, u"the sound cannot be resampled: %1"_s.arg(QString::fromLatin1(failure)));
    output.resize(produced * size_t(channels));
    return ShrinkResult::replaced(bytes, pcmWav(output, channels, rate, target.bitsPerSample));
}
