// Runs the checked-in fuzz inputs through the fuzz targets in the ordinary
// build: every file of the given folders goes to the named target once, so the
// seed corpus and every input that once crashed are read again on each test run.
//
// Usage: fuzz_replay TARGET FOLDER...

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QMap>

#include <cstdint>
#include <cstdio>

using FuzzFunction = int (*)(const uint8_t *, size_t);

extern "C" {
int fuzzTokenizer(const uint8_t *, size_t);
int fuzzStyle(const uint8_t *, size_t);
int fuzzBlock(const uint8_t *, size_t);
int fuzzUpdate(const uint8_t *, size_t);
int fuzzValues(const uint8_t *, size_t);
int fuzzHive(const uint8_t *, size_t);
int fuzzArchive(const uint8_t *, size_t);
int fuzzCacheIndex(const uint8_t *, size_t);
int fuzzRover(const uint8_t *, size_t);
int fuzzRoverBlock(const uint8_t *, size_t);
int fuzzMedia(const uint8_t *, size_t);
int fuzzBsp(const uint8_t *, size_t);
}

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const QMap<QString, FuzzFunction> targets{
        {QStringLiteral("tokenizer"), fuzzTokenizer}, {QStringLiteral("style"), fuzzStyle},
        {QStringLiteral("block"), fuzzBlock},         {QStringLiteral("update"), fuzzUpdate},
        {QStringLiteral("values"), fuzzValues},       {QStringLiteral("hive"), fuzzHive},
        {QStringLiteral("archive"), fuzzArchive},     {QStringLiteral("cache_index"), fuzzCacheIndex},
        {QStringLiteral("rover"), fuzzRover},         {QStringLiteral("rover_block"), fuzzRoverBlock},
        {QStringLiteral("media"), fuzzMedia},         {QStringLiteral("bsp"), fuzzBsp}};
    const QStringList arguments = app.arguments();
    const FuzzFunction target = targets.value(arguments.value(1));
    if (!target) {
        std::fprintf(stderr, "usage: fuzz_replay TARGET FOLDER...\n");
        return 2;
    }
    int inputs = 0;
    for (const QString &folder : arguments.mid(2)) {
        for (const QFileInfo &info : QDir(folder).entryInfoList(QDir::Files, QDir::Name)) {
            QFile file(info.filePath());
            if (!file.open(QIODevice::ReadOnly)) {
                std::fprintf(stderr, "cannot read %s\n", qPrintable(info.filePath()));
                return 1;
            }
            const QByteArray bytes = file.readAll();
            target(reinterpret_cast<const uint8_t *>(bytes.constData()), size_t(bytes.size()));
            ++inputs;
        }
    }
    std::printf("%d inputs read by %s\n", inputs, qPrintable(arguments[1]));
    return inputs > 0 ? 0 : 1;
}
