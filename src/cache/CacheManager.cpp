#include "cache/CacheManager.h"

#include "cache/CacheIndex.h"
#include "cache/CacheLocation.h"
#include "cache/CachedBlockset.h"
#include "common/Prompts.h"
#include "common/RegistryWrapper.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

const QString kNotInstalled = u"Flatland Rover is not installed. No blockset cache found."_s;
const QString kWriteFailed = u"Couldn't write cache file to disk"_s;

// Sort key of a numeric column; text columns give none.
std::optional<qint64> numericKey(const CacheRow &row, int column)
{
    switch (column) {
    case CacheManager::Size: return row.size;
    case CacheManager::LastUpdated:
        // Markers sort before every date.
        return row.updated == CacheRow::Updated::Date ? qint64(row.updatedTime) + (qint64(1) << 33)
                                                      : qint64(row.updated);
    case CacheManager::Blocks: return row.readable ? row.blocks : -1;
    case CacheManager::Textures: return row.readable ? row.textures : -1;
    case CacheManager::Sounds: return row.readable ? row.sounds : -1;
    default: return std::nullopt;
    }
}

} // namespace

CacheManager::CacheManager(RoverMachine &machine, Prompts &prompts, RegistryWrapper &settings)
    : m_machine(machine),
      m_prompts(prompts),
      m_settings(settings)
{
}

void CacheManager::load()
{
    m_netscapeFolder = m_machine.cacheFolderNetscape();
    m_ieFolder = m_machine.cacheFolderIE();
    m_browser = !m_ieFolder.isEmpty()         ? Browser::InternetExplorer
                : !m_netscapeFolder.isEmpty() ? Browser::Netscape
                                              : Browser::None;
    const QString folder = m_browser == Browser::InternetExplorer ? m_ieFolder : m_netscapeFolder;
    m_cacheFolder = folder.isEmpty() ? QString() : m_machine.hostPath(folder);
    fill();
}

void CacheManager::chooseBrowser(Browser browser)
{
    if (browser == m_browser || browser == Browser::None)
        return;
    m_browser = browser;
    const QString folder =
        browser == Browser::InternetExplorer ? m_machine.cacheFolderIE() : m_machine.cacheFolderNetscape();
    m_cacheFolder = folder.isEmpty() ? QString() : m_machine.hostPath(folder);
    fill();
}

void CacheManager::fill()
{
    m_rows.clear();
    if (m_cacheFolder.isEmpty()) {
        m_process = kNotInstalled;
        return;
    }
    walk(m_cacheFolder, QString());
    std::stable_sort(m_rows.begin(), m_rows.end(), [](const CacheRow &a, const CacheRow &b) {
        const int byPath = a.path.compare(b.path, Qt::CaseInsensitive);
        return byPath != 0 ? byPath < 0 : a.fileName.compare(b.fileName, Qt::CaseInsensitive) < 0;
    });
    QFile index(m_cacheFolder + u"/cache.txt"_s);
    if (index.open(QIODevice::ReadOnly))
        readCacheIndex(index.readAll(), m_rows);
    else
        markNoCacheIndex(m_rows);
    m_process.clear();
}

void CacheManager::walk(const QString &folder, const QString &relative)
{
    m_process = u"Checking "_s + QDir::toNativeSeparators(folder);
    if (m_checking)
        m_checking(m_process);
    // One pass over the folder's entries, unsorted: the rows are sorted once the
    // whole tree is walked.
    QStringList folders;
    QDirIterator it(folder, QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System);
    while (it.hasNext()) {
        it.next();
        const QFileInfo file = it.fileInfo();
        if (file.isDir()) {
            if (!file.isSymLink())
                folders.append(file.fileName());
            continue;
        }
        if (!file.fileName().endsWith(u".bset"_s, Qt::CaseInsensitive))
            continue;
        CacheRow row;
        row.fileName = file.fileName();
        row.path = relative;
        row.size = file.size();
        readCachedBlockset(file.filePath(), row);
        m_rows.append(row);
    }
    folders.sort(Qt::CaseInsensitive);
    for (const QString &sub : std::as_const(folders))
        walk(folder + u'/' + sub, relative.isEmpty() ? sub : relative + u'\\' + sub);
}

QString CacheManager::cellText(const CacheRow &row, int column)
{
    const auto count = [&row](int value) { return row.readable ? QString::number(value) : u"?"_s; };
    switch (column) {
    case FileName: return row.fileName;
    case Path: return row.path;
    case Version: return row.version;
    case Size: return ::sizeText(row.size);
    case LastUpdated: return row.lastUpdatedText();
    case Name: return row.name;
    case Synopsis: return row.synopsis;
    case Author: return row.author;
    case Copyright: return row.copyright;
    case Blocks: return count(row.blocks);
    case Textures: return count(row.textures);
    case Sounds: return count(row.sounds);
    default: return {};
    }
}

void CacheManager::sort(int column, bool ascending)
{
    std::stable_sort(m_rows.begin(), m_rows.end(), [column, ascending](const CacheRow &a, const CacheRow &b) {
        const CacheRow &x = ascending ? a : b;
        const CacheRow &y = ascending ? b : a;
        const std::optional<qint64> kx = numericKey(x, column);
        if (kx)
            return *kx < *numericKey(y, column);
        return cellText(x, column).compare(cellText(y, column), Qt::CaseInsensitive) < 0;
    });
}

QString CacheManager::fullPath(int row) const
{
    const CacheRow &r = m_rows.at(row);
    QString relative = r.path;
    relative.replace(u'\\', u'/');
    return m_cacheFolder + u'/' + (relative.isEmpty() ? QString() : relative + u'/') + r.fileName;
}

bool CacheManager::remove(int row)
{
    if (row < 0 || row >= m_rows.size())
        return false;
    const QString fileName = m_rows.at(row).fileName;
    if (m_settings.getBoolSetting(u"showWarnings"_s)
        && m_prompts.message(u"Are you sure to remove "_s + fileName + u'?', u"Remove Blockset from Cache"_s,
                             PromptButtons::YesNo, PromptIcon::Question)
               != PromptAnswer::Yes)
        return false;
    QFile file(fullPath(row));
    if (!file.remove()) {
        m_prompts.message(file.errorString(), u"Error"_s, PromptButtons::Ok, PromptIcon::Critical);
        return false;
    }
    m_rows.removeAt(row);
    writeIndex();
    return true;
}

bool CacheManager::forceDownload(int row)
{
    if (row < 0 || row >= m_rows.size())
        return false;
    // When the index cannot be written the row keeps what the index on disk says.
    const CacheRow::Updated before = m_rows.at(row).updated;
    m_rows[row].updated = CacheRow::Updated::ForceDownload;
    if (writeIndex())
        return true;
    m_rows[row].updated = before;
    return false;
}

bool CacheManager::writeIndex()
{
    if (writeCacheIndexFile(m_cacheFolder + u"/cache.txt"_s, m_rows))
        return true;
    m_prompts.message(kWriteFailed, u"Cache Manager"_s, PromptButtons::Ok, PromptIcon::Exclamation);
    return false;
}

QString CacheManager::blocksetsText() const
{
    if (m_rows.isEmpty())
        return u"No Blocksets"_s;
    if (m_rows.size() == 1)
        return u"1 Blockset"_s;
    return QString::number(m_rows.size()) + u" Blocksets"_s;
}

QString CacheManager::sizeInUnits(qint64 bytes)
{
    if (bytes > 1048576) {
        QString text = QString::number(double(bytes) / 1024.0 / 1024.0, 'f', 2);
        while (text.endsWith(u'0'))
            text.chop(1);
        if (text.endsWith(u'.'))
            text.chop(1);
        return text + u" MB"_s;
    }
    return QString::number(qRound64(double(bytes) / 1024.0)) + u" KB"_s;
}

QString CacheManager::sizeText() const
{
    qint64 total = 0;
    for (const CacheRow &row : m_rows)
        total += row.size;
    return sizeInUnits(total);
}

QString CacheManager::selectedSizeText(int row) const
{
    return u"Selected: "_s + sizeInUnits(m_rows.at(row).size);
}
