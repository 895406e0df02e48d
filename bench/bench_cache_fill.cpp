// The cache manager's fill on a cache of 10,000 small blocksets in nested host
// folders (100 hosts, 10 folders each, 10 blocksets per folder) with an index
// listing every one, beside a bare loop over the same files that walks the
// folders, opens each archive with libzip and lists its entries, and beside the
// manager window showing the same cache (offscreen). Each measurement runs in a
// fresh process of this program, so that its peak memory (VmHWM) is its own;
// the best time of several runs counts. Wall clock and CPU time are shown.
//
// The cache lives in a fake Wine prefix (WINEPREFIX) in a temporary folder, so
// the fill starts exactly as the window's does: lookup, walk, archives, index.
//
// Usage: bench_cache_fill [blocksets] [runs]

#include "SilentPrompts.h"
#include "cache/CacheLocation.h"
#include "cache/CacheManager.h"
#include "cache/ui/frmManager.h"
#include "common/HiveRegistry.h"
#include "common/RegistryWrapper.h"
#include "storage/PlatformFile.h"

#include <QApplication>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <zip.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <limits>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

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

// This process's peak resident memory so far, in KiB.
long peakKiB()
{
    QFile status(u"/proc/self/status"_s);
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (QByteArray line = status.readLine(); !line.isEmpty(); line = status.readLine()) {
        if (line.startsWith("VmHWM:"))
            return line.mid(6).trimmed().split(' ').first().toLong();
    }
    return -1;
}

void bareLoop(const QString &cache)
{
    qint64 entries = 0;
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
    std::printf("rows %lld\n", (long long)entries / 6);
}

// One measurement in this process: "wall cpu peakKiB startKiB".
int measureOne(int argc, char *argv[], const QString &what, const QString &folder)
{
    PlatformFile::readTimeZoneOnce(); // as both programs do
    std::unique_ptr<QCoreApplication> app;
    if (what == u"window"_s)
        app = std::make_unique<QApplication>(argc, argv);
    else
        app = std::make_unique<QCoreApplication>(argc, argv);
    HiveRegistry settingsHive(folder + u"/settings.reg"_s);
    RegistryWrapper settings(settingsHive);
    SilentPrompts prompts;
    RoverMachine machine;
    const long start = peakKiB();
    const auto wallStart = std::chrono::steady_clock::now();
    const double cpuStart = cpuSeconds();
    if (what == u"fill"_s) {
        CacheManager manager(machine, prompts, settings);
        manager.load();
        std::printf("rows %lld\n", (long long)manager.rows().size());
    } else if (what == u"window"_s) {
        frmManager window(machine, prompts, settings);
        window.show();
        QApplication::processEvents();
        std::printf("rows %lld\n", (long long)window.manager().rows().size());
    } else {
        bareLoop(folder + u"/prefix/drive_c/Program Files (x86)/Rover/Flatland"_s);
    }
    const double wall = std::chrono::duration<double>(std::chrono::steady_clock::now() - wallStart).count();
    std::printf("measured %.4f %.4f %ld %ld\n", wall, cpuSeconds() - cpuStart, peakKiB(), start);
    return 0;
}

struct Figures {
    double wall = std::numeric_limits<double>::max();
    double cpu = std::numeric_limits<double>::max();
    long peak = 0;
    long start = 0;
    QByteArray rows;
};

bool runChild(const QString &what, const QString &folder, Figures &best)
{
    QProcess child;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(u"QT_QPA_PLATFORM"_s, u"offscreen"_s);
    child.setProcessEnvironment(env);
    child.start(QCoreApplication::applicationFilePath(), {u"--measure"_s, what, folder});
    if (!child.waitForFinished(600000) || child.exitCode() != 0)
        return false;
    for (const QByteArray &line : child.readAllStandardOutput().split('\n')) {
        const QList<QByteArray> parts = line.split(' ');
        if (parts.first() == "rows")
            best.rows = parts.value(1);
        if (parts.first() != "measured" || parts.size() != 5)
            continue;
        best.wall = std::min(best.wall, parts[1].toDouble());
        best.cpu = std::min(best.cpu, parts[2].toDouble());
        best.peak = std::max(best.peak, parts[3].toLong());
        best.start = parts[4].toLong();
        return true;
    }
    return false;
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc == 4 && QByteArrayView(argv[1]) == "--measure")
        return measureOne(argc, argv, QString::fromLocal8Bit(argv[2]), QString::fromLocal8Bit(argv[3]));
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

    const QStringList kinds = {u"fill"_s, u"bare"_s, u"window"_s};
    QList<Figures> best(kinds.size());
    for (int run = 0; run < runs; ++run) {
        for (int k = 0; k < kinds.size(); ++k) {
            if (!runChild(kinds[k], dir.path(), best[k])) {
                std::printf("the %s measurement failed\n", qPrintable(kinds[k]));
                return 1;
            }
        }
    }
    const char *names[] = {"manager fill ", "bare libzip  ", "window shown "};
    for (int k = 0; k < kinds.size(); ++k)
        std::printf("%s: %.3f s wall, %.3f s CPU (best of %d), peak %.1f MB (%.1f MB before), %s rows\n", names[k],
                    best[k].wall, best[k].cpu, runs, double(best[k].peak) / 1024, double(best[k].start) / 1024,
                    best[k].rows.constData());
    std::printf("fill / bare  : %.2fx wall, %.2fx CPU\n", best[0].wall / best[1].wall, best[0].cpu / best[1].cpu);
    return 0;
}
