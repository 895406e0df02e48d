#pragma once

#include <QString>
#include <memory>

class Registry;

// Typed access to the program's settings under "SOFTWARE\Quillmoor\Cubrix".
// Values are read at the moment of use, every time; nothing is cached.
class RegistryWrapper {
public:
    explicit RegistryWrapper(Registry &registry);

    static QString settingsKey(); // "SOFTWARE\Quillmoor\Cubrix"

    // True when the key existed or was created with all eleven defaults.
    bool loadSettings();
    QString getStringSetting(const QString &name);
    bool setStringSetting(const QString &name, const QString &value);
    bool getBoolSetting(const QString &name);
    bool setBoolSetting(const QString &name, bool flag);

private:
    Registry &m_registry;
};

// The settings store of this machine: the hive file named by $CUBRIX_REGISTRY, else
// $XDG_CONFIG_HOME/cubrix/registry.reg (~/.config/...); on Windows the real registry.
std::unique_ptr<Registry> createSettingsRegistry();
