#include "cache/CacheRow.h"

#include "common/CommonFunctions.h"

#include <QLocale>

using namespace Qt::StringLiterals;

QString CacheRow::lastUpdatedText() const
{
    switch (updated) {
    case Updated::NoIndex: return u"?"_s;
    case Updated::NotListed: return u"---"_s;
    case Updated::ForceDownload: return u"<force download>"_s;
    case Updated::Date: break;
    }
    return QLocale().toString(unixTimeToDate(updatedTime), QLocale::ShortFormat);
}

QString CacheRow::url() const
{
    QString folder = path;
    folder.replace(u'\\', u'/');
    return u"http://"_s + folder + u'/' + fileName;
}

QString CacheRow::tag() const
{
    return u"<blockset href=\""_s + url() + u"\"/>"_s;
}

QString sizeText(qint64 bytes)
{
    QLocale locale;
    locale.setNumberOptions(locale.numberOptions() & ~QLocale::OmitGroupSeparator);
    return locale.toString(bytes);
}
