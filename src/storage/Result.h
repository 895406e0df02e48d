#pragma once

#include <QString>

#include <utility>

// The outcome of an operation that can fail: success, or the reason in words the
// user can act on (the file system's or the archive's own, naming the path).
class [[nodiscard]] Result {
public:
    Result() = default; // success
    static Result failure(QString reason) { return Result(std::move(reason), true); }

    bool ok() const { return !m_failed; }
    explicit operator bool() const { return ok(); }
    const QString &reason() const { return m_reason; }

private:
    Result(QString reason, bool failed) : m_reason(std::move(reason)), m_failed(failed) {}

    QString m_reason;
    bool m_failed = false;
};
