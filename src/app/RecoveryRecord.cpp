#include "app/RecoveryRecord.h"

#include "storage/WholeFile.h"

#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

Result RecoveryRecord::write(const QString &path) const
{
    const QJsonObject symbolSettings{{u"strictPrefixBoxChecked"_s, symbols.strictPrefixBoxChecked},
                                     {u"strictPrefixBoxEnabled"_s, symbols.strictPrefixBoxEnabled},
                                     {u"syncDoubleBoxChecked"_s, symbols.syncDoubleBoxChecked},
                                     {u"syncDoubleBoxEnabled"_s, symbols.syncDoubleBoxEnabled},
                                     {u"prefixListEnabled"_s, symbols.prefixListEnabled},
                                     {u"prefixIndex"_s, symbols.prefixIndex},
                                     {u"blocksetStrictPrefix"_s, symbols.blocksetStrictPrefix},
                                     {u"blocksetSyncDouble"_s, symbols.blocksetSyncDouble}};
    const QJsonObject record{{u"blocksetPath"_s, blocksetPath},   {u"blocksetFileName"_s, blocksetFileName},
                             {u"untitled"_s, untitled},           {u"blocksetChanged"_s, blocksetChanged},
                             {u"updateChanged"_s, updateChanged}, {u"style"_s, QString::fromLatin1(style.toBase64())},
                             {u"symbols"_s, symbolSettings},      {u"updateComment"_s, updateComment},
                             {u"versionText"_s, versionText}};
    return writeWholeFile(path, QJsonDocument(record).toJson(QJsonDocument::Compact));
}

std::optional<RecoveryRecord> RecoveryRecord::read(const QString &path)
{
    QByteArray bytes;
    if (!readWholeFile(path, bytes))
        return std::nullopt;
    const QJsonObject object = QJsonDocument::fromJson(bytes).object();
    if (object.isEmpty())
        return std::nullopt;
    RecoveryRecord record;
    record.blocksetPath = object.value(u"blocksetPath"_s).toString();
    record.blocksetFileName = object.value(u"blocksetFileName"_s).toString();
    record.untitled = object.value(u"untitled"_s).toBool();
    record.blocksetChanged = object.value(u"blocksetChanged"_s).toBool();
    record.updateChanged = object.value(u"updateChanged"_s).toBool();
    record.style = QByteArray::fromBase64(object.value(u"style"_s).toString().toLatin1());
    const QJsonObject symbols = object.value(u"symbols"_s).toObject();
    record.symbols.strictPrefixBoxChecked = symbols.value(u"strictPrefixBoxChecked"_s).toBool();
    record.symbols.strictPrefixBoxEnabled = symbols.value(u"strictPrefixBoxEnabled"_s).toBool();
    record.symbols.syncDoubleBoxChecked = symbols.value(u"syncDoubleBoxChecked"_s).toBool();
    record.symbols.syncDoubleBoxEnabled = symbols.value(u"syncDoubleBoxEnabled"_s).toBool();
    record.symbols.prefixListEnabled = symbols.value(u"prefixListEnabled"_s).toBool();
    record.symbols.prefixIndex = symbols.value(u"prefixIndex"_s).toInt();
    record.symbols.blocksetStrictPrefix = symbols.value(u"blocksetStrictPrefix"_s).toBool();
    record.symbols.blocksetSyncDouble = symbols.value(u"blocksetSyncDouble"_s).toBool();
    record.updateComment = object.value(u"updateComment"_s).toString();
    record.versionText = object.value(u"versionText"_s).toString();
    if (record.blocksetFileName.isEmpty())
        return std::nullopt;
    return record;
}
