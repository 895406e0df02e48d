#include "cli/CliApp.h"
#include "cli/CliRender.h"
#include "storage/PlatformFile.h"

#include <QCoreApplication>
#include <QGuiApplication>

#include <memory>

int main(int argc, char *argv[])
{
    PlatformFile::readTimeZoneOnce();
    QStringList commandLine;
    for (int i = 1; i < argc; ++i)
        commandLine.append(QString::fromLocal8Bit(argv[i]));
    // Only the catalogue sheet writes text, which needs Qt's fonts: it gets a
    // GUI application on the offscreen platform, so no display is ever needed.
    std::unique_ptr<QCoreApplication> app;
    if (CliRender::writesText(commandLine)) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        app = std::make_unique<QGuiApplication>(argc, argv);
    } else {
        app = std::make_unique<QCoreApplication>(argc, argv);
    }
    QCoreApplication::setApplicationName(QStringLiteral("cubrix-cli"));
    CliApp cli;
    return cli.run(QCoreApplication::arguments());
}
