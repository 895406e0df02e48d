#include "storage/EditLock.h"

#include <QDir>
#include <QFileInfo>
#include <QLocale>
#include <QLockFile>
#include <QSysInfo>

using namespace Qt::StringLiterals;

namespace {

std::optional<LockHolder> readHolder(QLockFile &file, const QString &path)
{
    LockHolder holder;
    if (!file.getLockInfo(&holder.pid, &holder.host, &holder.program))
        return std::nullopt;
    holder.since = QFileInfo(path).lastModified();
    holder.otherHost = !holder.host.isEmpty() && holder.host != QSysInfo::machineHostName();
    return holder;
}

} // namespace

QString LockHolder::description() const
{
    QString text = u"process %1 on %2"_s.arg(pid).arg(host.isEmpty() ? u"this computer"_s : host);
    if (otherHost && since.isValid())
        text += u", since "_s + QLocale::system().toString(since, QLocale::ShortFormat);
    return text;
}

EditLock::EditLock() = default;

EditLock::~EditLock()
{
    release();
}

QString EditLock::lockPath(const QString &archivePath)
{
    const QFileInfo info(archivePath);
    return info.absolutePath() + u"/."_s + info.fileName() + u".lock"_s;
}

std::optional<LockHolder> EditLock::holderOf(const QString &archivePath)
{
    const QString path = lockPath(archivePath);
    if (!QFileInfo::exists(path))
        return std::nullopt;
    QLockFile probe(path);
    probe.setStaleLockTime(0);
    if (probe.tryLock(0)) {
        probe.unlock(); // stale or free: nobody holds it
        return std::nullopt;
    }
    return readHolder(probe, path);
}

EditLock::Outcome EditLock::take(const QString &archivePath, int waitMs)
{
    release();
    m_reason.clear();
    m_holder = LockHolder();
    const QString path = lockPath(archivePath);
    m_file = std::make_unique<QLockFile>(path);
    // Never stale by age alone: an editor may keep a blockset open for days.
    m_file->setStaleLockTime(0);
    if (m_file->tryLock(waitMs)) {
        m_archivePath = archivePath;
        return Outcome::Taken;
    }
    const QLockFile::LockError error = m_file->error();
    if (error == QLockFile::LockFailedError) {
        if (const std::optional<LockHolder> holder = readHolder(*m_file, path))
            m_holder = *holder;
        m_file.reset();
        return Outcome::Held;
    }
    m_reason = error == QLockFile::PermissionError
                   ? u"no lock can be made in \"%1\": it cannot be written"_s.arg(QFileInfo(path).absolutePath())
                   : u"no lock can be made at \"%1\""_s.arg(path);
    m_file.reset();
    return Outcome::Failed;
}

EditLock::Outcome EditLock::breakAndTake(const QString &archivePath)
{
    QFile::remove(lockPath(archivePath));
    return take(archivePath);
}

void EditLock::release()
{
    if (m_file)
        m_file->unlock();
    m_file.reset();
    m_archivePath.clear();
}

bool EditLock::isHeld() const
{
    return m_file && m_file->isLocked();
}
