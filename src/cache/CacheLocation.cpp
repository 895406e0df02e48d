#include "cache/CacheLocation.h"

#include "cache/WinePath.h"
#include "common/CommonFunctions.h"
#include "common/HiveRegistry.h"
#include "common/Registry.h"
#ifdef Q_OS_WIN
#include "common/WinRegistry.h"
#endif

#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace {

// The 32-bit view first: that is where a 64-bit system keeps the plug-in's keys.
const QString kViews[] = {u"SOFTWARE\\Wow6432Node\\"_s, u"SOFTWARE\\"_s};

bool readText(Registry &registry, const QString &key, const QString &name, QString &text)
{
    RegValue value;
    if (!registry.regQueryValue(RegRoot::LocalMachine, key, name, value) || value.type != 1)
        return false;
    text = value.text;
    return true;
}

// The "Location" of the Internet Explorer registration: the plug-in file.
bool readLocation(Registry &registry, QString &location)
{
    for (const QString &view : kViews) {
        const QString key = view + u"Microsoft\\Internet Explorer\\Plugins\\Extension\\.3dml"_s;
        if (registry.regKeyExists(RegRoot::LocalMachine, key) && readText(registry, key, u"Location"_s, location))
            return true;
    }
    return false;
}

} // namespace

QString findPluginFileIE(Registry &registry)
{
    QString location;
    return readLocation(registry, location) ? location : QString();
}

QString findCacheFolderIE(Registry &registry)
{
    QString location;
    return readLocation(registry, location) ? (getFolder(location) + u"\\flatland"_s).toLower() : QString();
}

QString findCacheFolderNetscape(Registry &registry, const std::function<QString(const QString &)> &hostPath)
{
    const QString plugin = findPluginFileNetscape(registry, hostPath);
    return plugin.isEmpty() ? QString() : (getFolder(plugin) + u"\\flatland"_s).toLower();
}

QString findPluginFileNetscape(Registry &registry, const std::function<QString(const QString &)> &hostPath)
{
    for (const QString &view : kViews) {
        const QString key = view + u"Netscape\\Netscape Navigator"_s;
        if (!registry.regKeyExists(RegRoot::LocalMachine, key))
            continue;
        QString version;
        QString plugins;
        if (!readText(registry, key, u"CurrentVersion"_s, version)
            || !readText(registry, key + u'\\' + version + u"\\Main"_s, u"Plugins Directory"_s, plugins))
            continue;
        const QString plugin = hostPath(plugins + u"\\NPRover.dll"_s);
        if (plugin.isEmpty() || !QFileInfo(plugin).isFile())
            continue;
        return plugins + u"\\NPRover.dll"_s;
    }
    return {};
}

RoverMachine::RoverMachine()
{
#ifdef Q_OS_WIN
    m_registry = std::make_unique<WinRegistry>();
#else
    m_prefix = winePrefix();
    m_registry = std::make_unique<HiveRegistry>(m_prefix + u"/system.reg"_s, true);
#endif
}

RoverMachine::~RoverMachine() = default;

QString RoverMachine::hostPath(const QString &windowsPath) const
{
#ifdef Q_OS_WIN
    return windowsPath;
#else
    return winePathToHost(m_prefix, windowsPath);
#endif
}

QString RoverMachine::cacheFolderIE()
{
    const QString folder = findCacheFolderIE(*m_registry);
    return hostPath(folder).isEmpty() ? QString() : folder;
}

QString RoverMachine::cacheFolderNetscape()
{
    const QString folder = findCacheFolderNetscape(*m_registry, [this](const QString &path) { return hostPath(path); });
    return hostPath(folder).isEmpty() ? QString() : folder;
}

QString RoverMachine::pluginFileIE()
{
    return hostPath(findPluginFileIE(*m_registry));
}

QString RoverMachine::pluginFileNetscape()
{
    return hostPath(findPluginFileNetscape(*m_registry, [this](const QString &path) { return hostPath(path); }));
}
