#include "common/ProgramVersion.h"

QString programVersion()
{
    return QString::number(CUBRIX_VERSION_MAJOR) + QLatin1Char('.') + QString::number(CUBRIX_VERSION_MINOR)
           + QLatin1Char(' ') + QLatin1StringView(CUBRIX_RELEASE_COMMENT);
}
