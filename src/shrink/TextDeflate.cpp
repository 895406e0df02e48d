#include "shrink/TextDeflate.h"

extern "C" {
#include <zopfli/deflate.h>
#include <zopfli/hash.h>
#include <zopfli/lz77.h>
#include <zopfli/symbols.h>
#include <zopfli/zopfli.h>
}

#include <array>
#include <cmath>
#include <cstdlib>
#include <vector>

namespace {

// zopfli's parser passes per block: more find little on small texts.
constexpr int kIterations = 5;
// The estimate of a block's header: a base and a share for each symbol used,
// in bits; and the fewest symbols a block may have. Tuned on block files.
constexpr double kHeaderBits = 60;
constexpr double kHeaderBitsPerSymbol = 5;
constexpr size_t kMinSymbols = 10;
constexpr int kMaxDepth = 4; // at most 16 blocks

constexpr int kLiteralLengths = 288;
constexpr int kSymbols = kLiteralLengths + 30;

// One command of the greedy parse as the estimate sees it.
struct Command {
    int literalLength = 0;
    int distance = -1; // -1 for a literal
    int extraBits = 0;
};

double plogp(double count)
{
    return count > 0 ? count * std::log2(count) : 0;
}

// The symbol counts of a run of commands and its estimated size in bits:
// each symbol at its entropy, the extra bits, and the header estimate.
class Histogram {
public:
    void add(const Command &command, int sign)
    {
        change(command.literalLength, sign, 0);
        if (command.distance >= 0)
            change(kLiteralLengths + command.distance, sign, 1);
        m_extraBits += sign * command.extraBits;
    }

    double bits() const
    {
        const double literals = double(m_totals[0] + 1); // and the end-of-block symbol
        const double distances = double(m_totals[1]);
        return plogp(literals) - m_plogp[0] + plogp(distances) - m_plogp[1] + double(m_extraBits) + kHeaderBits
               + kHeaderBitsPerSymbol * m_distinct;
    }

private:
    void change(int symbol, int sign, size_t kind)
    {
        int &count = m_counts[size_t(symbol)];
        m_plogp[kind] -= plogp(count);
        m_distinct -= count > 0;
        count += sign;
        m_plogp[kind] += plogp(count);
        m_distinct += count > 0;
        m_totals[kind] += sign;
    }

    std::array<int, kSymbols> m_counts{};
    std::array<double, 2> m_plogp{};
    std::array<long, 2> m_totals{};
    long m_extraBits = 0;
    int m_distinct = 0;
};

// Cuts [first, last) where the estimate of the two halves is smallest, if that
// beats the whole, and the halves again, in order.
void cut(const std::vector<Command> &commands, size_t first, size_t last, int depth, std::vector<size_t> &cuts)
{
    if (depth >= kMaxDepth || last - first < 2 * kMinSymbols)
        return;
    Histogram left, right;
    for (size_t i = first; i < last; ++i)
        right.add(commands[i], 1);
    double best = right.bits();
    size_t at = 0;
    for (size_t p = first; p + kMinSymbols < last; ++p) {
        left.add(commands[p], 1);
        right.add(commands[p], -1);
        if (p + 1 - first >= kMinSymbols && left.bits() + right.bits() < best) {
            best = left.bits() + right.bits();
            at = p + 1;
        }
    }
    if (at == 0)
        return;
    cut(commands, first, at, depth + 1, cuts);
    cuts.push_back(at);
    cut(commands, at, last, depth + 1, cuts);
}

// The byte positions where blocks start, after the first.
std::vector<size_t> blockStarts(const ZopfliOptions &options, const unsigned char *in, size_t size)
{
    ZopfliBlockState state;
    ZopfliInitBlockState(&options, 0, size, 0, &state);
    ZopfliLZ77Store store;
    ZopfliInitLZ77Store(in, &store);
    ZopfliHash hash;
    ZopfliAllocHash(ZOPFLI_WINDOW_SIZE, &hash);
    ZopfliLZ77Greedy(&state, in, 0, size, &store, &hash);
    std::vector<Command> commands(store.size);
    for (size_t i = 0; i < store.size; ++i) {
        const int length = store.litlens[i], distance = store.dists[i];
        commands[i] = distance == 0 ? Command{length, -1, 0}
                                    : Command{ZopfliGetLengthSymbol(length), ZopfliGetDistSymbol(distance),
                                              ZopfliGetLengthExtraBits(length) + ZopfliGetDistExtraBits(distance)};
    }
    std::vector<size_t> cuts;
    cut(commands, 0, commands.size(), 0, cuts);
    std::vector<size_t> starts;
    starts.reserve(cuts.size());
    for (size_t command : cuts)
        starts.push_back(store.pos[command]);
    ZopfliCleanHash(&hash);
    ZopfliCleanLZ77Store(&store);
    ZopfliCleanBlockState(&state);
    return starts;
}

} // namespace

QByteArray deflateInBlocks(QByteArrayView data)
{
    if (data.isEmpty())
        return {};
    ZopfliOptions options;
    ZopfliInitOptions(&options);
    options.numiterations = kIterations;
    options.blocksplitting = 0;
    const auto *in = reinterpret_cast<const unsigned char *>(data.data());
    const size_t size = size_t(data.size());
    std::vector<size_t> bounds = blockStarts(options, in, size);
    bounds.insert(bounds.begin(), 0);
    bounds.push_back(size);
    unsigned char bit = 0;
    unsigned char *out = nullptr;
    size_t outSize = 0;
    for (size_t i = 0; i + 1 < bounds.size(); ++i)
        ZopfliDeflatePart(&options, 2, i + 2 == bounds.size(), in, bounds[i], bounds[i + 1], &bit, &out, &outSize);
    QByteArray stream(reinterpret_cast<const char *>(out), qsizetype(outSize));
    std::free(out);
    return stream;
}
