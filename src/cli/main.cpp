#include "cli/CliApp.h"
#include "storage/PlatformFile.h"

#include <QCoreApplication>

int main(int argc, char *argv[])
{
    PlatformFile::readTimeZoneOnce();
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("cubrix-cli"));
    CliApp cli;
    return cli.run(QCoreApplication::arguments());
}
