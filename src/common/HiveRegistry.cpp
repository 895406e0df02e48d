#include "common/HiveRegistry.h"

#include "common/HiveFile.h"
#include "common/HiveText.h"
#include "storage/PlatformFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

using namespace Qt::StringLiterals;
using PlatformFile::FileStamp;

namespace {

FileStamp stampOf(const QString &path)
{
    return PlatformFile::fileStamp(PlatformFile::encodeName(path));
}

} // namespace

struct HiveRegistry::Impl {
    enum class State { Empty, Loaded, Broken };

    QString path;
    bool readOnly = false;
    bool stampValid = false;
    FileStamp stamp;
    State state = State::Empty;
    HiveFile file;
    QString problem;

    void startEmpty()
    {
        file.startEmpty();
        state = State::Empty;
    }

    void markBroken()
    {
        file.clear();
        state = State::Broken;
        problem = u"\"%1\" cannot be read as a settings file"_s.arg(path);
    }

    // Re-reads the file when it is not the one read last time.
    void refresh()
    {
        const FileStamp now = stampOf(path);
        if (stampValid && now == stamp)
            return;
        stamp = now;
        stampValid = true;
        load(now);
    }

    void load(const FileStamp &now)
    {
        if (!now.exists) {
            // A missing file is an empty registry; one that cannot even be looked
            // at (a folder we may not enter) is not.
            if (now.missing)
                startEmpty();
            else
                markBroken();
            return;
        }
        QFile source(path);
        if (!QFileInfo(path).isFile() || !source.open(QIODevice::ReadOnly)) {
            markBroken();
            return;
        }
        const QByteArray data = source.readAll();
        if (source.error() != QFileDevice::NoError) {
            markBroken();
            return;
        }
        if (data.isEmpty()) {
            // Nothing to lose: an empty file is taken as an empty registry.
            startEmpty();
            return;
        }
        if (!file.parse(data))
            markBroken();
        else
            state = State::Loaded;
    }

    // The key at `keyPath` after a fresh look at the file: -1 when it is missing,
    // the path is malformed, the hive cannot be read, or (`writing`) may not be written.
    int lookUp(const QString &keyPath, bool writing)
    {
        refresh();
        if (state == State::Broken || (writing && readOnly))
            return -1;
        const auto names = HiveText::splitKeyPath(keyPath);
        return names ? file.keys.find(*names) : -1;
    }

    bool save()
    {
        const QByteArray bytes = file.serialize();
        const QString folder = QFileInfo(path).absolutePath();
        if (!QDir().mkpath(folder)) {
            problem = u"the folder \"%1\" cannot be made"_s.arg(folder);
            return false;
        }
        QSaveFile target(path);
        if (!target.open(QIODevice::WriteOnly) || target.write(bytes) != bytes.size() || !target.commit()) {
            problem = u"cannot write \"%1\": %2"_s.arg(path, target.errorString());
            target.cancelWriting();
            return false;
        }
        state = State::Loaded;
        stamp = stampOf(path);
        stampValid = true;
        return true;
    }

    // After a failed write the model no longer matches the file: read it again.
    bool saveOrForget()
    {
        if (save())
            return true;
        stampValid = false;
        return false;
    }
};

HiveRegistry::HiveRegistry(const QString &path, bool readOnly) : d(std::make_unique<Impl>())
{
    d->path = path;
    d->readOnly = readOnly;
    d->startEmpty();
}

HiveRegistry::~HiveRegistry() = default;

bool HiveRegistry::regKeyExists(RegRoot, const QString &path)
{
    return d->lookUp(path, false) >= 0;
}

bool HiveRegistry::regQueryValue(RegRoot, const QString &path, const QString &name, RegValue &value)
{
    const int node = d->lookUp(path, false);
    if (node < 0)
        return false;
    const auto it = d->file.keys[node].values.constFind(HiveText::foldName(name));
    if (it == d->file.keys[node].values.constEnd())
        return false;
    const HiveFile::Item &item = d->file.sections[it->section].items[it->item];
    if (item.type != 1 && item.type != 4)
        return true; // other types are reported as read, with nothing taken from them
    if (!item.decoded)
        return false; // REG_SZ / REG_DWORD data of the wrong shape cannot be read
    value.type = item.type;
    if (item.type == 1)
        value.text = item.text;
    else
        value.dword = item.dword;
    return true;
}

bool HiveRegistry::regCreateKey(RegRoot, const QString &path, const QString &keyClass)
{
    if (d->lookUp(path, true) >= 0 || d->readOnly || d->state == Impl::State::Broken)
        return false;
    const auto names = HiveText::splitKeyPath(path);
    if (!names || names->isEmpty())
        return false;
    int node = 0;
    for (const QString &name : *names)
        node = d->file.keys.child(node, name, true);
    d->file.addSection(node, keyClass);
    return d->saveOrForget();
}

bool HiveRegistry::regSetValue(RegRoot, const QString &path, const QString &name, const RegValue &value)
{
    const int node = d->lookUp(path, true);
    if (node < 0)
        return false;
    if (value.type != 1 && value.type != 4)
        return true; // nothing to write for other types
    if (node == 0 && d->file.keys[0].section < 0)
        return false; // values directly under the root are not kept
    d->file.setValue(node, name, value);
    return d->saveOrForget();
}

QString HiveRegistry::lastProblem() const
{
    if (d->readOnly)
        return u"\"%1\" is opened read-only"_s.arg(d->path);
    return d->problem;
}

QString HiveRegistry::keyClass(const QString &path)
{
    const int node = d->lookUp(path, false);
    return node < 0 ? QString() : d->file.keys[node].keyClass;
}
