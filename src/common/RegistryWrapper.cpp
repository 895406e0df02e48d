#include "common/RegistryWrapper.h"

#include "common/Registry.h"

#ifdef Q_OS_WIN
#include "common/WinRegistry.h"
#else
#include "common/HiveRegistry.h"
#include <QDir>
#include <QtGlobal>
#endif

using namespace Qt::StringLiterals;

namespace {

constexpr quint32 kOn = 0xFFFFFFFFu; // -1: flags are stored as 32-bit integers

} // namespace

RegistryWrapper::RegistryWrapper(Registry &registry) : m_registry(registry) {}

QString RegistryWrapper::settingsKey()
{
    return u"SOFTWARE\\Quillmoor\\Cubrix"_s;
}

namespace {

const QString kFolders[] = {u"pathBlockset"_s, u"pathBlocks"_s, u"pathTextures"_s, u"pathSounds"_s};
const struct {
    QString name;
    bool on;
} kOptions[] = {
    {u"showWarnings"_s, true}, {u"syncBlockset"_s, true}, {u"syncBlock"_s, true},  {u"syncDouble"_s, true},
    {u"strictPrefix"_s, true}, {u"skipEdit"_s, false},    {u"updateFile"_s, true},
};

} // namespace

bool RegistryWrapper::loadSettings()
{
    const QString key = settingsKey();
    if (m_registry.regKeyExists(RegRoot::LocalMachine, key))
        return true;
    bool stored = m_registry.regCreateKey(RegRoot::LocalMachine, key, u"Application Data"_s);
    // First start: the defaults, in this order, stopping at the first failure.
    for (const QString &name : kFolders)
        stored = stored && setStringSetting(name, QString());
    for (const auto &option : kOptions)
        stored = stored && setBoolSetting(option.name, option.on);
    if (!stored)
        useDefaultsInMemory();
    return stored;
}

void RegistryWrapper::useDefaultsInMemory()
{
    const QString why = m_registry.lastProblem();
    m_problem = u"The settings cannot be stored"_s + (why.isEmpty() ? QString() : u": "_s + why)
                + u". Cubrix uses its default settings until it ends."_s;
    m_memory.clear();
    for (const QString &name : kFolders)
        m_memory.insert(name, RegValue::fromText(QString()));
    for (const auto &option : kOptions)
        m_memory.insert(option.name, RegValue::fromDword(option.on ? kOn : 0));
}

QString RegistryWrapper::getStringSetting(const QString &name)
{
    if (!m_problem.isEmpty())
        return m_memory.value(name).text;
    RegValue value;
    if (!m_registry.regQueryValue(RegRoot::LocalMachine, settingsKey(), name, value))
        return QString();
    // A value of another type reads as success but leaves `value` empty.
    return value.type == 1 ? value.text : QString();
}

bool RegistryWrapper::setStringSetting(const QString &name, const QString &value)
{
    if (!m_problem.isEmpty()) {
        m_memory.insert(name, RegValue::fromText(value));
        return true;
    }
    return m_registry.regSetValue(RegRoot::LocalMachine, settingsKey(), name, RegValue::fromText(value));
}

bool RegistryWrapper::getBoolSetting(const QString &name)
{
    if (!m_problem.isEmpty())
        return m_memory.value(name).dword != 0;
    RegValue value;
    if (!m_registry.regQueryValue(RegRoot::LocalMachine, settingsKey(), name, value))
        return false;
    return value.type == 4 && value.dword != 0;
}

bool RegistryWrapper::setBoolSetting(const QString &name, bool flag)
{
    if (!m_problem.isEmpty()) {
        m_memory.insert(name, RegValue::fromDword(flag ? kOn : 0));
        return true;
    }
    return m_registry.regSetValue(RegRoot::LocalMachine, settingsKey(), name, RegValue::fromDword(flag ? kOn : 0));
}

std::unique_ptr<Registry> createSettingsRegistry()
{
#ifdef Q_OS_WIN
    return std::make_unique<WinRegistry>();
#else
    QString path = qEnvironmentVariable("CUBRIX_REGISTRY");
    if (path.isEmpty()) {
        QString config = qEnvironmentVariable("XDG_CONFIG_HOME");
        // A relative XDG_CONFIG_HOME is invalid and is ignored, as the XDG rules say.
        if (config.isEmpty() || QDir::isRelativePath(config))
            config = QDir::homePath() + u"/.config"_s;
        path = config + u"/cubrix/registry.reg"_s;
    }
    return std::make_unique<HiveRegistry>(path);
#endif
}
