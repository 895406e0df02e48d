#include "common/ui/WindowMemory.h"

#include "common/RegistryWrapper.h"

#include <QHeaderView>
#include <QWidget>

using namespace Qt::StringLiterals;

namespace WindowMemory {

namespace {

QByteArray stored(RegistryWrapper &settings, const QString &value)
{
    return QByteArray::fromBase64(settings.getStringSetting(value).toLatin1());
}

void store(RegistryWrapper &settings, const QString &value, const QByteArray &state)
{
    (void)settings.setStringSetting(value, QString::fromLatin1(state.toBase64())); // best effort
}

} // namespace

bool restoreWindow(QWidget *window, RegistryWrapper &settings, const QString &name)
{
    const QByteArray state = stored(settings, name + u"Geometry"_s);
    return !state.isEmpty() && window->restoreGeometry(state);
}

void saveWindow(const QWidget *window, RegistryWrapper &settings, const QString &name)
{
    store(settings, name + u"Geometry"_s, window->saveGeometry());
}

bool restoreColumns(QHeaderView *header, RegistryWrapper &settings, const QString &name)
{
    const QByteArray state = stored(settings, name + u"Columns"_s);
    return !state.isEmpty() && header->restoreState(state);
}

void saveColumns(const QHeaderView *header, RegistryWrapper &settings, const QString &name)
{
    store(settings, name + u"Columns"_s, header->saveState());
}

} // namespace WindowMemory
