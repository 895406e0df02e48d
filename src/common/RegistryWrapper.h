#pragma once

#include "common/Registry.h"

#include <QHash>
#include <QString>
#include <memory>

// Typed access to the program's settings under "SOFTWARE\Quillmoor\Cubrix".
// Values are read at the moment of use, every time; nothing is cached. When the
// store cannot be used at all (it cannot be read, or the key cannot be made),
// the settings live in memory with their defaults for this session, so that the
// program still works as the defaults say (the update file is still written),
// and problem() says why.
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

    // Why the settings live in memory only, naming the store; "" when they do not.
    QString problem() const { return m_problem; }

private:
    void useDefaultsInMemory();

    Registry &m_registry;
    QString m_problem;
    QHash<QString, RegValue> m_memory; // while the store cannot be used
};

// The settings store of this machine: the hive file named by $CUBRIX_REGISTRY, else
// $XDG_CONFIG_HOME/cubrix/registry.reg (~/.config/...); on Windows the real registry.
std::unique_ptr<Registry> createSettingsRegistry();
