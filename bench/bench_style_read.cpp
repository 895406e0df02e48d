// The style read against the number of block entries: 8,000, 16,000 and
// 32,000 entries, each naming one of as many rows, read into the rows. A read
// linear in its input takes about twice and four times as long for the larger
// two; the ratio to the smallest is printed. CPU time of this thread, best of
// several runs.
//
// Usage: bench_style_read [runs]

#include "formats/Parser.h"
#include "formats/Parser_Style.h"

#include <QByteArray>
#include <QString>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <limits>

namespace {

double cpuSeconds()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return double(now.tv_sec) + double(now.tv_nsec) * 1e-9;
}

QByteArray styleWith(int entries)
{
    QByteArray text = "<style name=\"Big\" version=\"1.0\">\r\n";
    for (int i = 0; i < entries; ++i)
        text += "<block symbol=\"A\" double=\".A\" file=\"block" + QByteArray::number(i) + ".block\"/>\r\n";
    return text + "</style>\r\n";
}

double bestRead(int entries, int runs)
{
    const QByteArray style = styleWith(entries);
    QList<BlockRow> rows(entries);
    for (int i = 0; i < entries; ++i)
        rows[i].file = QStringLiteral("block%1.block").arg(i);
    double best = std::numeric_limits<double>::max();
    for (int run = 0; run < runs; ++run) {
        Parser parser;
        parser.setBuffer(style);
        StyleValues values;
        QList<BlockRow> target = rows;
        const double start = cpuSeconds();
        readStyle(parser, values, target);
        best = std::min(best, cpuSeconds() - start);
    }
    return best;
}

} // namespace

int main(int argc, char **argv)
{
    const int runs = argc > 1 ? std::max(1, std::atoi(argv[1])) : 3;
    double first = 0;
    for (int entries : {8000, 16000, 32000}) {
        const double seconds = bestRead(entries, runs);
        if (first == 0)
            first = seconds;
        std::printf("%6d entries: %.3f s CPU (%.1f x the 8,000 read)\n", entries, seconds, seconds / first);
    }
    return 0;
}
