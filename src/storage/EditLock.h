#pragma once

#include <QDateTime>
#include <QString>

#include <memory>
#include <optional>

class QLockFile;

// Who has a blockset open for editing.
struct LockHolder {
    qint64 pid = 0;
    QString host;
    QString program;
    QDateTime since;        // when the lock file was written
    bool otherHost = false; // its process cannot be checked from here

    // "process 1234 on HOST" (with the age for a lock of another host).
    QString description() const;
};

// One editor per blockset: while a blockset is open for editing, a lock file
// beside it (".NAME.lock", QLockFile's format: process, program and host)
// keeps every other Cubrix from editing it. A lock whose process is gone on this
// host is stale and taken over; one from another host cannot be checked and
// stays until the author breaks it. The lock file is removed when released.
class EditLock {
public:
    enum class Outcome { Taken, Held, Failed };

    EditLock();
    ~EditLock(); // releases
    EditLock(const EditLock &) = delete;
    EditLock &operator=(const EditLock &) = delete;

    static QString lockPath(const QString &archivePath);
    // The holder of the lock on `archivePath`, when another editor has it.
    static std::optional<LockHolder> holderOf(const QString &archivePath);

    // Takes the lock on `archivePath`, waiting up to `waitMs` for another editor
    // to finish. Held: holder() says who has it. Failed: reason() says why no
    // lock can be made (a read-only folder, say).
    Outcome take(const QString &archivePath, int waitMs = 0);
    // Removes another editor's lock file (after the author agreed), then takes it.
    Outcome breakAndTake(const QString &archivePath);
    void release();

    bool isHeld() const;
    QString lockedPath() const { return m_archivePath; }
    LockHolder holder() const { return m_holder; }
    QString reason() const { return m_reason; }

private:
    std::unique_ptr<QLockFile> m_file;
    QString m_archivePath;
    LockHolder m_holder;
    QString m_reason;
};
