#include "storage/PairSwitch.h"

#include "storage/PlatformFile.h"

#include <QFileInfo>
#include <QList>
#include <QRandomGenerator>

using namespace Qt::StringLiterals;

namespace {

struct Place {
    PlatformFile::Folder dir;
    QString folder;
    QByteArray name;
};

Result openPlace(const QString &path, Place &place)
{
    const QFileInfo info(path);
    place.folder = info.absolutePath();
    place.name = PlatformFile::encodeName(info.fileName());
    int err = 0;
    if (!PlatformFile::openFolder(PlatformFile::encodeName(place.folder), true, place.dir, err))
        return Result::failure(u"cannot open folder \"%1\": %2"_s.arg(place.folder, PlatformFile::errorText(err)));
    return Result();
}

QByteArray journalName(const QByteArray &archive)
{
    return '.' + archive + ".cubrix-pair";
}

QByteArray keptName(const QByteArray &archive)
{
    return '.' + archive + ".cubrix-old";
}

QString fileText(const Place &place, const QByteArray &name)
{
    return place.folder + u'/' + PlatformFile::decodeName(name);
}

QString failureText(const Place &place, const QByteArray &name, int err)
{
    return u"cannot write \"%1\": %2"_s.arg(fileText(place, name), PlatformFile::errorText(err));
}

// The journal: one "key name" line each for the new archive, the kept old one
// ("-" when there was none) and the new update file.
struct Journal {
    QByteArray newArchive;
    QByteArray oldArchive;
    QByteArray newUpdate;
    QByteArray update;
};

QByteArray journalText(const Journal &journal)
{
    return "new-archive " + journal.newArchive + "\nold-archive " + journal.oldArchive + "\nnew-update "
           + journal.newUpdate + "\nupdate " + journal.update + '\n';
}

bool parseJournal(const QByteArray &text, Journal &journal)
{
    for (const QByteArray &line : text.split('\n')) {
        const qsizetype blank = line.indexOf(' ');
        if (blank <= 0)
            continue;
        const QByteArray key = line.left(blank);
        const QByteArray value = line.mid(blank + 1);
        if (key == "new-archive")
            journal.newArchive = value;
        else if (key == "old-archive")
            journal.oldArchive = value;
        else if (key == "new-update")
            journal.newUpdate = value;
        else if (key == "update")
            journal.update = value;
    }
    return !journal.newArchive.isEmpty() && !journal.newUpdate.isEmpty() && !journal.update.isEmpty()
           && !journal.oldArchive.isEmpty();
}

Result writeFileIn(const Place &place, const QByteArray &target, const QByteArray &bytes, QByteArray &asideName)
{
    PlatformFile::SaveFile file;
    int err = 0;
    const auto newName = [&target] {
        return '.' + target + ".cubrix-"
               + QByteArray::number(QRandomGenerator::global()->generate(), 16).rightJustified(8, '0');
    };
    if (!PlatformFile::openSaveFile(place.dir, target, newName, file, err))
        return Result::failure(failureText(place, target, err));
    if (!PlatformFile::writeAll(file.fd, bytes.constData(), size_t(bytes.size()), err)) {
        PlatformFile::dropSaveFile(place.dir, file);
        return Result::failure(failureText(place, target, err));
    }
    if (!PlatformFile::keepSaveFile(place.dir, newName, file, err))
        return Result::failure(failureText(place, target, err));
    asideName = file.tempName;
    return Result();
}

} // namespace

namespace PairSwitch {

Result writeAside(const QString &path, const QByteArray &bytes, QByteArray &asideName)
{
    Place place;
    if (Result opened = openPlace(path, place); !opened)
        return opened;
    return writeFileIn(place, place.name, bytes, asideName);
}

void dropAside(const QString &besidePath, const QByteArray &asideName)
{
    Place place;
    if (!asideName.isEmpty() && openPlace(besidePath, place))
        PlatformFile::removeFile(place.dir, asideName);
}

Result switchPair(const QString &archivePath, const QByteArray &newArchive, const QString &updatePath,
                  const QByteArray &newUpdate)
{
    Place place;
    if (Result opened = openPlace(archivePath, place); !opened)
        return opened;
    const QByteArray update = PlatformFile::encodeName(QFileInfo(updatePath).fileName());
    const auto dropBoth = [&] {
        PlatformFile::removeFile(place.dir, newArchive);
        PlatformFile::removeFile(place.dir, newUpdate);
    };
    int err = 0;
    Journal journal{newArchive, "-", newUpdate, update};
    // The old archive keeps a second name until the switch is done.
    const QByteArray kept = keptName(place.name);
    PlatformFile::removeFile(place.dir, kept);
    if (PlatformFile::kindAt(place.dir, place.name) == PlatformFile::Kind::File) {
        if (!PlatformFile::linkIn(place.dir, place.name, kept, err)) {
            dropBoth();
            return Result::failure(failureText(place, kept, err));
        }
        journal.oldArchive = kept;
    }
    QByteArray written;
    if (Result result = writeFileIn(place, journalName(place.name), journalText(journal), written); !result) {
        PlatformFile::removeFile(place.dir, kept);
        dropBoth();
        return result;
    }
    if (!PlatformFile::renameIn(place.dir, written, journalName(place.name), err)
        || !PlatformFile::syncFolder(place.dir, err)) {
        PlatformFile::removeFile(place.dir, written);
        PlatformFile::removeFile(place.dir, kept);
        dropBoth();
        return Result::failure(failureText(place, journalName(place.name), err));
    }
    // From here the journal says how to finish or undo the switch.
    if (!PlatformFile::renameIn(place.dir, newArchive, place.name, err)) {
        const QString reason = failureText(place, place.name, err);
        (void)recover(archivePath);
        return Result::failure(reason);
    }
    if (!PlatformFile::renameIn(place.dir, newUpdate, update, err)) {
        const QString reason = failureText(place, update, err);
        (void)recover(archivePath); // the update file was not renamed: the old archive goes back
        return Result::failure(reason);
    }
    return recover(archivePath); // both are in place: the kept archive and the journal go
}

Result recover(const QString &archivePath)
{
    Place place;
    if (Result opened = openPlace(archivePath, place); !opened)
        return opened;
    const QByteArray journalFile = journalName(place.name);
    if (PlatformFile::kindAt(place.dir, journalFile) != PlatformFile::Kind::File)
        return Result();
    qint64 size = 0;
    int err = 0;
    const PlatformFile::FileHandle file =
        PlatformFile::openToRead(PlatformFile::encodeName(fileText(place, journalFile)), size, err);
    QByteArray text(qsizetype(qMin<qint64>(size, 64 * 1024)), '\0');
    Journal journal;
    if (!file.isOpen() || !PlatformFile::readAt(file.get(), text.data(), text.size(), 0)
        || !parseJournal(text, journal))
        return Result::failure(u"\"%1\" records a save that cannot be completed"_s.arg(fileText(place, journalFile)));

    const bool updateRenamed = PlatformFile::kindAt(place.dir, journal.newUpdate) == PlatformFile::Kind::Missing;
    if (!updateRenamed) {
        // The update file is still the old one: the old archive goes back.
        if (journal.oldArchive != "-") {
            if (PlatformFile::kindAt(place.dir, journal.oldArchive) == PlatformFile::Kind::File
                && !PlatformFile::renameIn(place.dir, journal.oldArchive, place.name, err))
                return Result::failure(failureText(place, place.name, err));
        } else if (PlatformFile::kindAt(place.dir, journal.newArchive) == PlatformFile::Kind::Missing) {
            PlatformFile::removeFile(place.dir, place.name); // the new archive of a first save, alone
        }
        PlatformFile::removeFile(place.dir, journal.newArchive);
        PlatformFile::removeFile(place.dir, journal.newUpdate);
    } else if (journal.oldArchive != "-") {
        PlatformFile::removeFile(place.dir, journal.oldArchive);
    }
    PlatformFile::removeFile(place.dir, journalFile);
    if (!PlatformFile::syncFolder(place.dir, err))
        return Result::failure(failureText(place, journalFile, err));
    return Result();
}

} // namespace PairSwitch
