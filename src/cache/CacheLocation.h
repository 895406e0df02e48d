#pragma once

#include <QString>

#include <functional>
#include <memory>

class Registry;

// Finding Rover's cache folder ("flatland" beside the plug-in file) through the
// plug-in's registration with Internet Explorer or Netscape Navigator. The
// plug-in is a 32-bit program, so its keys are looked for in the 32-bit view
// (SOFTWARE\Wow6432Node\...) first and then in the plain one. Both return the
// Windows path in lower case, "" when not found, and never show anything.
QString findCacheFolderIE(Registry &registry);
// `hostPath` turns a Windows path into a host path ("" when it cannot); the
// plug-in file "NPRover.dll" must exist there.
QString findCacheFolderNetscape(Registry &registry, const std::function<QString(const QString &)> &hostPath);
// The plug-in file each registration names (a Windows path as registered); "" when not found.
QString findPluginFileIE(Registry &registry);
QString findPluginFileNetscape(Registry &registry, const std::function<QString(const QString &)> &hostPath);

// This machine's view of Rover: the registry holding HKEY_LOCAL_MACHINE (on
// Windows the real one; elsewhere the Wine prefix's system.reg, opened read-only)
// and the mapping from Windows paths to host paths.
class RoverMachine {
public:
    RoverMachine();
    ~RoverMachine();
    RoverMachine(const RoverMachine &) = delete;
    RoverMachine &operator=(const RoverMachine &) = delete;

    Registry &registry() { return *m_registry; }
    // The host path of a Windows path; "" when it cannot be mapped.
    QString hostPath(const QString &windowsPath) const;

    // The lookups, "" also when the folder found has no host path (no such
    // drive in the prefix, a UNC path).
    QString cacheFolderIE();
    QString cacheFolderNetscape();
    // The host path of the plug-in file of each registration; "" when not found.
    QString pluginFileIE();
    QString pluginFileNetscape();

private:
    std::unique_ptr<Registry> m_registry;
    QString m_prefix; // the Wine prefix; "" on Windows
};
