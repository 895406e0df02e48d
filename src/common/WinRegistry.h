#pragma once

#include "common/Registry.h"

// The Windows registry through advapi32 (ANSI calls, as the settings are ANSI
// text). Compiled only on Windows.
class WinRegistry : public Registry {
public:
    bool regKeyExists(RegRoot root, const QString &path) override;
    bool regQueryValue(RegRoot root, const QString &path, const QString &name, RegValue &value) override;
    bool regCreateKey(RegRoot root, const QString &path, const QString &keyClass) override;
    bool regSetValue(RegRoot root, const QString &path, const QString &name, const RegValue &value) override;
};
