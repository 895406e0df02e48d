// The cache manager's fill on a cache of 10,000 small blocksets in nested host
// folders (100 hosts, 10 folders each, 10 blocksets per folder) with an index
// listing every one, timed beside a bare loop over the same files that walks
// the folders, opens each archive with libzip and lists its entries. Both run
// in the same process, alternately, several times; the best run of each counts
// and the ratio is printed. Wall clock and this process's CPU time are shown.
//
// The cache lives in a fake Wine prefix (WINEPREFIX) in a temporary folder, so
// the fill starts exactly as the window's does: lookup, walk, archives, index.
//
// Usage: bench_cache_fill [blocksets] [runs]

#include "cache/CacheLocation.h"
#include "cache/CacheManager.h"
#include "common/HiveRegistry.h"
#include "common/Prompts.h"
#include "common/RegistryWrapper.h"

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QTemporaryDir>

#include <zip.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <functional>
#include <limits>

using namespace Qt::StringLiterals;

namespace {

class SilentPrompts : public Prompts {
public:
    PromptAnswer message(const QString &, const QString &, PromptButtons, PromptIcon) override
    {
        return PromptAnswer::Ok;
    }
    QString openFile(const QString &, const QString &, const QString &) override { return {}; }
    QStringList openFiles(const QString &, const QString &, const QString &) override { return {}; }
    QString saveFile(const QString &, const QString &, const QString &, const QString &) override { return {}; }
    NewBlocksetChoice newBlockset(bool, bool) override { return {}; }
    SymbolDialogAnswer symbolDialog(const SymbolDialogSetup &) override { return {}; }
};

bool writeBlockset(const QString &path, const QString &baseName)
{
    int code = 0;
    zip_t *za = zip_open(QFile::encodeName(path).constData(), ZIP_CREATE | ZIP_TRUNCATE, &code);
    if (!za)
        return false;
    static const QByteArray block = "<BLOCK NAME=\"wall\" TYPE=\"wall\">\r\n<VERTICES/>\r\n</BLOCK>\r\n";
    static const QByteArray image(600, 'g');
    static const QByteArray sound(900, 'w');
    const QByteArray style = "<STYLE NAME=\"Set " + baseName.toLatin1()
                             + "\" VERSION=\"1.0\" SYNOPSIS=\"bench\" AUTHOR=\"me\">\r\n"
                               "\t<BLOCK SYMBOL=\"a\" FILE=\"blocks/wall.block\"/>\r\n</STYLE>\r\n";
    const auto add = [za](const char *name, const QByteArray &data) {
        zip_source_t *source = zip_source_buffer(za, data.constData(), zip_uint64_t(data.size()), 0);
        if (!source || zip_file_add(za, name, source, ZIP_FL_OVERWRITE) < 0) {
            zip_source_free(source);
            return false;
        }
        return true;
    };
    const QByteArray styleName = baseName.toLatin1() + ".style";
    const bool ok = add(styleName.constData(), style) && add("blocks/wall.block", block)
                    && add("blocks/door.block", block) && add("textures/brick.gif", image)
                    && add("textures/wood.jpg", image) && add("sounds/bell.wav", sound);
    if (!ok) {
        zip_discard(za);
        return false;
    }
    return zip_close(za) == 0;
}

double cpuSeconds()
{
    return double(std::clock()) / CLOCKS_PER_SEC;
}

struct Timing {
    double wall = std::numeric_limits<double>::max();
    double cpu = std::numeric_limits<double>::max();
};

void measure(Timing &best, const std::function<void()> &work)
{
    const auto start = std::chrono::steady_clock::now();
    const double cpuStart = cpuSeconds();
    work();
    const double cpu = cpuSeconds() - cpuStart;
    const double wall = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    best.wall = std::min(best.wall, wall);
    best.cpu = std::min(best.cpu, cpu);
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const int count = argc > 1 ? std::max(1, std::atoi(argv[1])) : 10000;
    const int runs = argc > 2 ? std::max(1, std::atoi(argv[2])) : 3;

    QTemporaryDir dir;
    const QString prefix = dir.path() + u"/prefix"_s;
    const QString cache = prefix + u"/drive_c/Program Files (x86)/Rover/Flatland"_s;
    QDir().mkpath(prefix + u"/dosdevices"_s);
    QFile::link(u"../drive_c"_s, prefix + u"/dosdevices/c:"_s);
    QFile reg(prefix + u"/system.reg"_s);
    if (!reg.open(QIODevice::WriteOnly))
        return 1;
    reg.write("WINE REGISTRY Version 2\n\n#arch=win64\n\n[Software\\\\Wow6432Node\\\\Microsoft\\\\Internet "
              "Explorer\\\\Plugins\\\\"
              "Extension\\\\.3dml] 1\n\"Location\"=\"C:\\\\Program Files (x86)\\\\Rover\\\\npRover.dll\"\n");
    reg.close();
    qputenv("WINEPREFIX", QFile::encodeName(prefix));

    std::printf("building %d blocksets...\n", count);
    QByteArray index = "<CACHE>\r\n";
    for (int i = 0; i < count; ++i) {
        const QString host = u"www.host%1.com"_s.arg(i / 100);
        const QString folder = host + u"/worlds/set%1"_s.arg((i / 10) % 10);
        const QString base = u"blockset%1"_s.arg(i);
        QDir().mkpath(cache + u'/' + folder);
        if (!writeBlockset(cache + u'/' + folder + u'/' + base + u".bset"_s, base)) {
            std::printf("cannot write the blocksets\n");
            return 1;
        }
        index += "\t<BLOCKSET HREF=\"http://" + folder.toLatin1() + '/' + base.toLatin1()
                 + ".bset\" SIZE=\"1000\" UPDATED=\"" + QByteArray::number(1600000000 + i) + "\" NAME=\"Set\"/>\r\n";
    }
    index += "</CACHE>\r\n";
    QFile indexFile(cache + u"/cache.txt"_s);
    if (!indexFile.open(QIODevice::WriteOnly) || indexFile.write(index) != index.size())
        return 1;
    indexFile.close();

    HiveRegistry settingsHive(dir.path() + u"/settings.reg"_s);
    RegistryWrapper settings(settingsHive);
    SilentPrompts prompts;
    RoverMachine machine;

    Timing fill, bare;
    qsizetype rows = 0;
    qint64 entries = 0;
    for (int run = 0; run < runs; ++run) {
        measure(fill, [&] {
            CacheManager manager(machine, prompts, settings);
            manager.load();
            rows = manager.rows().size();
        });
        measure(bare, [&] {
            entries = 0;
            QDirIterator it(cache, {u"*.bset"_s}, QDir::Files, QDirIterator::Subdirectories);
            while (it.hasNext()) {
                int code = 0;
                zip_t *za = zip_open(QFile::encodeName(it.next()).constData(), ZIP_RDONLY, &code);
                if (!za)
                    continue;
                const zip_int64_t n = zip_get_num_entries(za, 0);
                for (zip_int64_t e = 0; e < n; ++e)
                    entries += zip_get_name(za, zip_uint64_t(e), ZIP_FL_ENC_GUESS) != nullptr;
                zip_discard(za);
            }
        });
    }
    std::printf("rows filled: %lld, entries listed by the bare loop: %lld\n", (long long)rows, (long long)entries);
    std::printf("manager fill : %.3f s wall, %.3f s CPU (best of %d)\n", fill.wall, fill.cpu, runs);
    std::printf("bare libzip  : %.3f s wall, %.3f s CPU (best of %d)\n", bare.wall, bare.cpu, runs);
    std::printf("ratio        : %.2fx wall, %.2fx CPU\n", fill.wall / bare.wall, fill.cpu / bare.cpu);
    return 0;
}
