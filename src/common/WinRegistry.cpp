#include "common/WinRegistry.h"

#include <QByteArray>

#include <windows.h>

namespace {

// Access masks: reading opens with query value, enumerate sub-keys and notify;
// creating and writing with the six basic rights (query, set, create sub-key,
// enumerate, notify, create link).
constexpr REGSAM kReadAccess = 0x19;
constexpr REGSAM kWriteAccess = 0x3F;

HKEY rootKey(RegRoot root)
{
    switch (root) {
    case RegRoot::LocalMachine: return HKEY_LOCAL_MACHINE;
    }
    return HKEY_LOCAL_MACHINE;
}

// The ANSI calls take text in the system's code page.
QByteArray ansi(const QString &text)
{
    return text.toLocal8Bit();
}

// Closes the key when the scope ends, whatever path the function takes.
class KeyHandle {
public:
    KeyHandle() = default;
    ~KeyHandle()
    {
        if (m_key)
            RegCloseKey(m_key);
    }
    KeyHandle(const KeyHandle &) = delete;
    KeyHandle &operator=(const KeyHandle &) = delete;
    HKEY *out() { return &m_key; }
    HKEY get() const { return m_key; }

private:
    HKEY m_key = nullptr;
};

} // namespace

bool WinRegistry::regKeyExists(RegRoot root, const QString &path)
{
    KeyHandle key;
    const QByteArray keyPath = ansi(path);
    return RegOpenKeyExA(rootKey(root), keyPath.constData(), 0, kReadAccess, key.out()) == ERROR_SUCCESS;
}

bool WinRegistry::regQueryValue(RegRoot root, const QString &path, const QString &name, RegValue &value)
{
    KeyHandle key;
    const QByteArray keyPath = ansi(path);
    if (RegOpenKeyExA(rootKey(root), keyPath.constData(), 0, kReadAccess, key.out()) != ERROR_SUCCESS)
        return false;

    const QByteArray valueName = ansi(name);
    DWORD type = 0;
    DWORD size = 0;
    // First ask only for the type and the size of the data.
    if (RegQueryValueExA(key.get(), valueName.constData(), nullptr, &type, nullptr, &size) != ERROR_SUCCESS)
        return false;

    if (type == REG_SZ) {
        // One byte more than reported, so the text always ends in a terminator.
        QByteArray buffer(qsizetype(size) + 1, '\0');
        DWORD length = size;
        if (RegQueryValueExA(key.get(), valueName.constData(), nullptr, &type, reinterpret_cast<BYTE *>(buffer.data()),
                             &length)
            != ERROR_SUCCESS)
            return false;
        const qsizetype end = buffer.indexOf('\0');
        value.type = REG_SZ;
        value.text = QString::fromLocal8Bit(buffer.left(end < 0 ? buffer.size() : end));
        return true;
    }
    if (type == REG_DWORD) {
        DWORD data = 0;
        DWORD length = sizeof(data);
        if (RegQueryValueExA(key.get(), valueName.constData(), nullptr, &type, reinterpret_cast<BYTE *>(&data), &length)
            != ERROR_SUCCESS)
            return false;
        value.type = REG_DWORD;
        value.dword = quint32(data);
        return true;
    }
    // Any other type: reported as read, nothing taken from it.
    return true;
}

bool WinRegistry::regCreateKey(RegRoot root, const QString &path, const QString &keyClass)
{
    KeyHandle key;
    const QByteArray keyPath = ansi(path);
    QByteArray classText = ansi(keyClass);
    DWORD disposition = 0;
    if (RegCreateKeyExA(rootKey(root), keyPath.constData(), 0, classText.data(), REG_OPTION_NON_VOLATILE, kWriteAccess,
                        nullptr, key.out(), &disposition)
        != ERROR_SUCCESS)
        return false;
    // The key is flushed so the new settings key is on disk at once; the handle
    // is closed in any case (a failed flush must not leak it).
    RegFlushKey(key.get());
    return disposition == REG_CREATED_NEW_KEY;
}

bool WinRegistry::regSetValue(RegRoot root, const QString &path, const QString &name, const RegValue &value)
{
    KeyHandle key;
    const QByteArray keyPath = ansi(path);
    // Opens the existing key only: writing never creates it.
    if (RegOpenKeyExA(rootKey(root), keyPath.constData(), 0, kWriteAccess, key.out()) != ERROR_SUCCESS)
        return false;

    const QByteArray valueName = ansi(name);
    if (value.type == REG_DWORD) {
        const DWORD data = DWORD(value.dword);
        return RegSetValueExA(key.get(), valueName.constData(), 0, REG_DWORD, reinterpret_cast<const BYTE *>(&data),
                              sizeof(data))
               == ERROR_SUCCESS;
    }
    if (value.type == REG_SZ) {
        const QByteArray text = ansi(value.text);
        // The text and its terminator.
        return RegSetValueExA(key.get(), valueName.constData(), 0, REG_SZ,
                              reinterpret_cast<const BYTE *>(text.constData()), DWORD(text.size() + 1))
               == ERROR_SUCCESS;
    }
    // Other types write nothing.
    return true;
}
