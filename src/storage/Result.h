#pragma once

#include <QString>

#include <utility>

// The outcome of an operation that can fail: done, cancelled by the user (not a
// failure: the user chose not to go on), or failed with the reason in words the
// user can act on (the file system's or the archive's own, naming the path).
class [[nodiscard]] Result {
public:
    Result() = default; // done
    static Result failure(QString reason) { return Result(State::Failed, std::move(reason)); }
    static Result cancelled() { return Result(State::Cancelled, QString()); }

    bool ok() const { return m_state == State::Done; }
    explicit operator bool() const { return ok(); }
    bool wasCancelled() const { return m_state == State::Cancelled; }
    bool failed() const { return m_state == State::Failed; }
    const QString &reason() const { return m_reason; }

private:
    enum class State { Done, Cancelled, Failed };
    Result(State state, QString reason) : m_state(state), m_reason(std::move(reason)) {}

    State m_state = State::Done;
    QString m_reason;
};
