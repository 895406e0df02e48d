// Throughput of the tag tokenizer on block files shaped like Rover's: a block
// header, a long vertex list, parts with polygons and a BSP tree, indented with
// tabs and ended with CR LF. Each run normalises the buffer and takes every tag
// and its name, the way the readers do. Sizes 1 MiB and 32 MiB; the best of
// several runs counts. The per-byte time of the large file should stay close to
// that of the small one: taking a tag never copies or rescans the rest.
//
// Two clocks are read: the wall clock, and the CPU time of this thread. On a
// busy machine the wall clock also counts the time other processes held the
// CPU, which grows with the length of a run; the CPU time does not, so the goal
// is judged on it. On an idle machine the two agree.
//
// Usage: bench_tokenizer [runs]

#include "formats/Parser.h"

#include <QByteArray>
#include <QString>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <limits>

namespace {

constexpr double kMiB = 1024.0 * 1024.0;

double cpuSeconds()
{
#if defined(_WIN32)
    return double(std::clock()) / CLOCKS_PER_SEC;
#else
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return double(now.tv_sec) + double(now.tv_nsec) * 1e-9;
#endif
}

struct Stopwatch {
    std::chrono::steady_clock::time_point wallStart = std::chrono::steady_clock::now();
    double cpuStart = cpuSeconds();
    double wall() const { return std::chrono::duration<double>(std::chrono::steady_clock::now() - wallStart).count(); }
    double cpu() const { return cpuSeconds() - cpuStart; }
};

QByteArray blockFile(qsizetype targetSize)
{
    QByteArray file;
    file.reserve(targetSize + 4096);
    file += "<block name=\"Bench tower\" type=\"structural\">\r\n";
    file += "\t<!-- generated for timing the tokenizer -->\r\n";

    // Roughly: 45 % vertices, 35 % polygons, the rest BSP nodes.
    const qsizetype vertexEnd = targetSize * 45 / 100;
    const qsizetype partsEnd = targetSize * 80 / 100;

    file += "\t<vertices>\r\n";
    int vertices = 0;
    while (file.size() < vertexEnd) {
        ++vertices;
        file += "\t\t<vertex ref=\"" + QByteArray::number(vertices) + "\" coords=\"("
                + QByteArray::number((vertices % 17) * 0.5) + "," + QByteArray::number(-1.25 * (vertices % 5)) + ","
                + QByteArray::number(vertices % 9) + ")\"/>\r\n";
    }
    file += "\t</vertices>\r\n\t<parts>\r\n";

    int parts = 0;
    int polygons = 0;
    while (file.size() < partsEnd) {
        ++parts;
        file += "\t\t<part name=\"part" + QByteArray::number(parts) + "\" texture=\"stone"
                + QByteArray::number(parts % 7) + ".gif\" style=\"tiled\">\r\n";
        for (int i = 0; i < 40 && file.size() < partsEnd; ++i) {
            ++polygons;
            const int v = 1 + (polygons * 4) % std::max(vertices - 4, 1);
            file += "\t\t\t<polygon ref=\"" + QByteArray::number(polygons) + "\" vertices=\"" + QByteArray::number(v)
                    + "," + QByteArray::number(v + 1) + "," + QByteArray::number(v + 2) + ","
                    + QByteArray::number(v + 3) + "\" front=\"" + QByteArray::number(i % 2) + "\"/>\r\n";
        }
        file += "\t\t</part>\r\n";
    }
    file += "\t</parts>\r\n\t<BSP_TREE root=\"5\">\r\n";

    int nodes = 0;
    while (file.size() < targetSize - 40) {
        ++nodes;
        file += "\t\t<node ref=\"" + QByteArray::number(nodes) + "\" polygon=\"" + QByteArray::number(nodes % 1000 + 1)
                + "\" front=\"" + QByteArray::number(nodes + 1) + "\" rear=\"0\"/>\r\n";
    }
    file += "\t</BSP_TREE>\r\n</block>\r\n";
    return file;
}

struct Result {
    double bestSeconds = std::numeric_limits<double>::max(); // CPU time
    double bestWall = std::numeric_limits<double>::max();
    long tags = 0;
    long wordBytes = 0;
};

// The reader's loop over every tag: normalise, then take each tag and its name.
// `Text` is QByteArrayView for the views the readers use, QString for the text API.
template <typename Text, typename TakeTag, typename TakeWord>
Result timeLoop(const QByteArray &source, int runs, TakeTag takeTag, TakeWord takeWord)
{
    Result result;
    for (int run = 0; run < runs; ++run) {
        // A private copy per run (normalising works in place); made and paged in
        // before the clock starts.
        QByteArray copy(source.constData(), source.size());
        Parser parser;
        parser.setBuffer(std::move(copy));

        const Stopwatch watch;
        parser.normaliseBuffer();
        long tags = 0;
        long wordBytes = 0;
        Text tag;
        Text word;
        while (takeTag(parser, tag)) {
            ++tags;
            if (takeWord(tag, word))
                wordBytes += word.size();
        }
        const double cpu = watch.cpu();
        const double wall = watch.wall();

        result.bestSeconds = std::min(result.bestSeconds, cpu);
        result.bestWall = std::min(result.bestWall, wall);
        result.tags = tags;
        result.wordBytes = wordBytes;
    }
    return result;
}

Result timeViews(const QByteArray &source, int runs)
{
    return timeLoop<QByteArrayView>(
        source, runs, [](Parser &parser, QByteArrayView &tag) { return parser.getNextTagView(tag); },
        [](QByteArrayView &tag, QByteArrayView &word) { return getNextWordView(tag, word); });
}

Result timeTexts(const QByteArray &source, int runs)
{
    return timeLoop<QString>(
        source, runs, [](Parser &parser, QString &tag) { return parser.getNextTag(tag); },
        [](QString &tag, QString &word) { return getNextWord(tag, word); });
}

double mibPerSecond(qsizetype bytes, const Result &r)
{
    return double(bytes) / kMiB / r.bestSeconds;
}

double wallMibPerSecond(qsizetype bytes, const Result &r)
{
    return double(bytes) / kMiB / r.bestWall;
}

} // namespace

int main(int argc, char **argv)
{
    const int runs = argc > 1 ? std::max(1, std::atoi(argv[1])) : 7;

    const QByteArray small = blockFile(qsizetype(1) << 20);
    const QByteArray large = blockFile(qsizetype(32) << 20);

    std::printf("tokenizer: normaliseBuffer + getNextTag/getNextWord over every tag, best of %d runs (1 MiB: %d)\n",
                runs, runs * 8);

    // The small file's runs are short; more of them make its best one steady.
    const Result smallViews = timeViews(small, runs * 8);
    const Result largeViews = timeViews(large, runs);
    if (largeViews.tags == 0 || smallViews.tags == 0) {
        std::fprintf(stderr, "no tags were read: the generated file or the tokenizer is broken\n");
        return 1;
    }
    std::printf("%-8s %10s %8s %10s %10s %10s %10s\n", "size", "bytes", "tags", "cpu ms", "cpu MiB/s", "wall ms",
                "wall MiB/s");
    const auto row = [](const char *name, const QByteArray &file, const Result &r) {
        std::printf("%-8s %10lld %8ld %10.2f %10.1f %10.2f %10.1f\n", name, static_cast<long long>(file.size()), r.tags,
                    r.bestSeconds * 1000, mibPerSecond(file.size(), r), r.bestWall * 1000,
                    wallMibPerSecond(file.size(), r));
    };
    row("1 MiB", small, smallViews);
    row("32 MiB", large, largeViews);

    const double ratio =
        (largeViews.bestSeconds / double(large.size())) / (smallViews.bestSeconds / double(small.size()));
    const double wallRatio =
        (largeViews.bestWall / double(large.size())) / (smallViews.bestWall / double(small.size()));
    std::printf("per-byte time ratio 32 MiB / 1 MiB: cpu %.3f, wall %.3f\n", ratio, wallRatio);

    const Result smallTexts = timeTexts(small, runs * 8);
    const Result largeTexts = timeTexts(large, std::max(1, runs / 2));
    std::printf("for comparison, through the QString functions: 1 MiB %.1f MiB/s, 32 MiB %.1f MiB/s\n",
                mibPerSecond(small.size(), smallTexts), mibPerSecond(large.size(), largeTexts));

    const bool goal =
        mibPerSecond(small.size(), smallViews) >= 200 && mibPerSecond(large.size(), largeViews) >= 200 && ratio <= 1.3;
    std::printf("goal (cpu: >= 200 MiB/s for both sizes, ratio <= 1.3): %s\n", goal ? "met" : "NOT met");
    return goal ? 0 : 2;
}
