#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

// One file as a ZIP entry stores it: the method, the checksum and length of
// the file's bytes, and the stored bytes themselves (deflated, or the file's
// own bytes when stored).
struct PackedForm {
    enum Method : quint16 { Stored = 0, Deflated = 8 };
    quint16 method = Stored;
    quint32 crc = 0;
    qint64 size = 0;       // the file's bytes
    qint64 packedSize = 0; // the bytes in the archive

    bool operator==(const PackedForm &) const = default;
};

struct PackedEntry {
    PackedForm form;
    QByteArray packed; // form.packedSize bytes
};

namespace EntryPacking {

// libdeflate's levels: Save's everyday choice and the strongest there is (Shrink's).
constexpr int kSaveLevel = 6;
constexpr int kStrongestLevel = 12;

quint32 crc32(QByteArrayView data);

// `data` stored as it is.
PackedEntry store(QByteArrayView data);
// `data` deflated at `level`, or stored when deflating does not make it smaller.
PackedEntry pack(QByteArrayView data, int level);
// What Save writes for a new or changed file: GIF and JPEG data is compressed
// already, so it is stored (deflating it would cost most of a save for well
// under 1 %); everything else is deflated at kSaveLevel where that pays.
PackedEntry packForSave(const QString &entryName, QByteArrayView data);
// Whether Save stores the entry without trying to deflate it.
bool isCompressedImageName(const QString &entryName);

// The file's bytes back from the entry; false when the entry is broken (the
// length or the checksum differs from its form).
bool unpack(const PackedEntry &entry, QByteArray &data);

} // namespace EntryPacking
