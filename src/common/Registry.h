#pragma once

#include <QByteArray>
#include <QString>

// Thin registry operations beneath the settings store and the Rover lookups.
// Keys and value names compare case-insensitively. No operation throws or shows
// anything: every failure is a false result.

enum class RegRoot { LocalMachine };

enum class RegType : quint32 {
    None = 0,
    Sz = 1,
    Dword = 4,
    // any other type number is kept as read
};

struct RegValue {
    quint32 type = 0;  // REG_SZ = 1, REG_DWORD = 4, anything else kept as read
    QString text;      // REG_SZ
    quint32 dword = 0; // REG_DWORD
    QByteArray raw;    // other types: the data as stored

    static RegValue fromText(const QString &text)
    {
        RegValue v;
        v.type = 1;
        v.text = text;
        return v;
    }
    static RegValue fromDword(quint32 d)
    {
        RegValue v;
        v.type = 4;
        v.dword = d;
        return v;
    }
};

class Registry {
public:
    virtual ~Registry() = default;

    // True when the key can be opened.
    virtual bool regKeyExists(RegRoot root, const QString &path) = 0;
    // True when the value was read. REG_SZ fills `value.text`, REG_DWORD `value.dword`;
    // any other type returns true and leaves `value` untouched.
    virtual bool regQueryValue(RegRoot root, const QString &path, const QString &name, RegValue &value) = 0;
    // True only when the key was newly created with the class string `keyClass`.
    virtual bool regCreateKey(RegRoot root, const QString &path, const QString &keyClass) = 0;
    // Writes REG_SZ or REG_DWORD into an existing key; other types write nothing.
    // True when the key existed and the write (if any) succeeded.
    virtual bool regSetValue(RegRoot root, const QString &path, const QString &name, const RegValue &value) = 0;
    // Why the last operation failed, naming the store ("" when unknown).
    virtual QString lastProblem() const { return QString(); }
};
