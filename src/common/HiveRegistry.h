#pragma once

#include "common/Registry.h"

#include <QString>

#include <memory>

// A registry kept in a hive file of Wine's text format ("WINE REGISTRY Version 2").
// Every root maps to the same file (Wine's system.reg holds HKEY_LOCAL_MACHINE).
// The file is re-read when it changed on disk and rewritten atomically (temporary
// file + rename) after each change; values of types other than REG_SZ and
// REG_DWORD, key classes and keys the program does not know are kept as read.
// A missing file is an empty registry; a corrupt or unreadable one reads as
// empty and is never overwritten.
class HiveRegistry : public Registry {
public:
    explicit HiveRegistry(const QString &path, bool readOnly = false);
    ~HiveRegistry() override;
    // One object per open hive file: copies would write the file behind each other's back.
    HiveRegistry(const HiveRegistry &) = delete;
    HiveRegistry &operator=(const HiveRegistry &) = delete;

    bool regKeyExists(RegRoot root, const QString &path) override;
    bool regQueryValue(RegRoot root, const QString &path, const QString &name, RegValue &value) override;
    bool regCreateKey(RegRoot root, const QString &path, const QString &keyClass) override;
    bool regSetValue(RegRoot root, const QString &path, const QString &name, const RegValue &value) override;

    QString lastProblem() const override;

    // The class string of a key ("" when none or missing).
    QString keyClass(const QString &path);

private:
    struct Impl;
    std::unique_ptr<Impl> d;
};
