#include "cache/CacheManager.h"

#include "cache/CacheAddress.h"
#include "cache/CacheIndexFile.h"
#include "cache/CacheIndexStore.h"
#include "cache/CacheLocation.h"
#include "cache/CachedBlockset.h"
#include "common/ParallelFor.h"
#include "common/Prompts.h"
#include "common/RegistryWrapper.h"
#include "storage/PlatformFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

const QString kNotInstalled = u"Flatland Rover is not installed. No blockset cache found."_s;
const QString kWriteFailed = u"Couldn't write cache file to disk"_s;
const QString kTitle = u"Cache Manager"_s;

// Archives are read on several threads once there are this many rows.
constexpr size_t kRowsWorthAThread = 64;

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
    m_pluginFile = m_browser == Browser::InternetExplorer ? m_machine.pluginFileIE()
                   : m_browser == Browser::Netscape       ? m_machine.pluginFileNetscape()
                                                          : QString();
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
    m_pluginFile = browser == Browser::InternetExplorer ? m_machine.pluginFileIE() : m_machine.pluginFileNetscape();
    fill();
}

void CacheManager::fill()
{
    m_rows.clear();
    m_indexNotes.clear();
    if (!m_cacheFolder.isEmpty()) {
        walk(m_cacheFolder, QString(), true, m_rows);
        readArchives();
        sortByFolder();
        QByteArray bytes;
        bool exists = false;
        const Result read = readCacheIndexFile(indexPath(), bytes, exists);
        const CacheIndexFile index(bytes);
        if (!read)
            m_indexNotes.append(read.reason());
        else if (exists)
            m_indexNotes = cacheIndexNotes(index);
        if (read && exists && index.usable())
            applyCacheIndex(index, m_rows);
        else
            markNoCacheIndex(m_rows);
    }
    checkRover();
}

void CacheManager::checkRover()
{
    m_roverProgram = m_pluginFile.isEmpty() ? QString() : PlatformFile::processUsingFile(m_pluginFile);
    updateProcessText();
}

void CacheManager::updateProcessText()
{
    m_process = m_cacheFolder.isEmpty() ? kNotInstalled
                : m_roverProgram.isEmpty()
                    ? QString()
                    : u"Rover is running ("_s + m_roverProgram
                          + u"): changes to its cache would be undone. Close the browser first."_s;
}

QString CacheManager::indexPath() const
{
    // Rover names it "cache.txt"; Windows finds it whatever the case of its name.
    QString exact = m_cacheFolder + u"/cache.txt"_s;
    if (QFileInfo::exists(exact))
        return exact;
    const QStringList found =
        QDir(m_cacheFolder).entryList({u"cache.txt"_s}, QDir::Files | QDir::Hidden | QDir::System);
    return found.isEmpty() ? exact : m_cacheFolder + u'/' + found.first();
}

void CacheManager::sortByFolder()
{
    // By Path, then File Name, ignoring case: each key is folded once, not at
    // every comparison.
    struct Key {
        QString path, name;
        int row;
    };
    std::vector<Key> keys;
    keys.reserve(size_t(m_rows.size()));
    for (int i = 0; i < m_rows.size(); ++i)
        keys.push_back({cacheKeyOfFile({}, m_rows[i].path), cacheKeyOfFile({}, m_rows[i].fileName), i});
    std::stable_sort(keys.begin(), keys.end(), [](const Key &a, const Key &b) {
        const int byPath = a.path.compare(b.path);
        return byPath != 0 ? byPath < 0 : a.name < b.name;
    });
    QList<CacheRow> sorted;
    sorted.reserve(m_rows.size());
    for (const Key &key : keys)
        sorted.append(std::move(m_rows[key.row]));
    m_rows = std::move(sorted);
}

void CacheManager::readArchives()
{
    // Each row reads its own archive and nothing else: a cache of thousands of
    // blocksets is listed in about the time of its share on one processor, most
    // of it spent in the system's file calls.
    CacheRow *rows = m_rows.data(); // detached here, once, before any thread writes a row
    parallelFor(size_t(m_rows.size()), kRowsWorthAThread,
                [this, rows](size_t i) { readCachedBlockset(fullPath(int(i)), rows[i]); });
}

void CacheManager::walk(const QString &folder, const QString &relative, bool progress, QList<CacheRow> &rows)
{
    PlatformFile::Folder root;
    int err = 0;
    if (PlatformFile::openFolder(PlatformFile::encodeName(folder), true, root, err))
        walk(root, folder, relative, progress, rows);
}

void CacheManager::walk(const PlatformFile::Folder &dir, const QString &folder, const QString &relative, bool progress,
                        QList<CacheRow> &rows)
{
    if (progress) {
        m_process = u"Checking "_s + QDir::toNativeSeparators(folder);
        if (m_checking)
            m_checking(m_process);
    }
    // One pass over the folder's entries, unsorted and without a look at each
    // file: the rows are sorted once the whole tree is walked. Links to folders
    // are not followed.
    std::vector<PlatformFile::Entry> entries;
    int err = 0;
    if (!PlatformFile::listFolder(dir, entries, err))
        return;
    QStringList folders;
    for (const PlatformFile::Entry &entry : entries) {
        const QString name = PlatformFile::decodeName(entry.name);
        if (entry.kind == PlatformFile::Kind::Folder) {
            folders.append(name);
        } else if (name.endsWith(u".bset"_s, Qt::CaseInsensitive)) {
            CacheRow row;
            row.fileName = name;
            row.path = relative;
            rows.append(std::move(row));
        }
    }
    folders.sort(Qt::CaseInsensitive);
    for (const QString &sub : std::as_const(folders)) {
        PlatformFile::Folder child;
        if (PlatformFile::openFolderAt(dir, PlatformFile::encodeName(sub), false, child, err))
            walk(child, folder + u'/' + sub, relative.isEmpty() ? sub : relative + u'\\' + sub, progress, rows);
    }
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

bool CacheManager::refuseWhileRoverRuns()
{
    checkRover();
    if (m_roverProgram.isEmpty())
        return false;
    m_prompts.message(m_process, kTitle, PromptButtons::Ok, PromptIcon::Exclamation);
    return true;
}

bool CacheManager::changeIndex(const CacheRow &target, CacheIndexChange change, QByteArray &before)
{
    const QString cannot = change == CacheIndexChange::Remove ? u"\nThe blockset stays in the cache."_s : QString();
    QByteArray bytes;
    bool exists = false;
    if (const Result read = readCacheIndexFile(indexPath(), bytes, exists); !read) {
        m_prompts.message(kWriteFailed + u'\n' + read.reason() + cannot, kTitle, PromptButtons::Ok,
                          PromptIcon::Exclamation);
        return false;
    }
    const CacheIndexFile index(bytes);
    if (!exists || !index.usable()) {
        // Rover builds a new index from the files it finds, each to be checked.
        if (change == CacheIndexChange::ForceDownload)
            m_prompts.message(u"Rover has no index it can use: it checks every blockset for an update when it "
                              "next starts."_s,
                              kTitle, PromptButtons::Ok, PromptIcon::Information);
        return true;
    }
    QList<CacheRow> files;
    walk(m_cacheFolder, QString(), false, files);
    const CacheIndexEdit edit = editCacheIndex(index, files, cacheKeyOfFile(target.path, target.fileName), change);
    if (edit.changed == 0) {
        if (change == CacheIndexChange::ForceDownload)
            m_prompts.message(u"cache.txt does not list "_s + target.fileName
                                  + u": Rover downloads it again at its next use."_s,
                              kTitle, PromptButtons::Ok, PromptIcon::Information);
        return true;
    }
    if (const Result wrote = writeCacheIndexFile(indexPath(), edit.bytes); !wrote) {
        m_prompts.message(kWriteFailed + u'\n' + wrote.reason() + cannot, kTitle, PromptButtons::Ok,
                          PromptIcon::Exclamation);
        return false;
    }
    before = bytes;
    if (const QString dropped = edit.droppedText(); !dropped.isEmpty())
        m_prompts.message(dropped, kTitle, PromptButtons::Ok, PromptIcon::Information);
    return true;
}

bool CacheManager::remove(int row)
{
    if (row < 0 || row >= m_rows.size() || refuseWhileRoverRuns())
        return false;
    const CacheRow target = m_rows.at(row);
    if (m_settings.getBoolSetting(u"showWarnings"_s)
        && m_prompts.message(u"Are you sure to remove "_s + target.fileName + u'?', u"Remove Blockset from Cache"_s,
                             PromptButtons::YesNo, PromptIcon::Question)
               != PromptAnswer::Yes)
        return false;
    const QString path = fullPath(row);
    QByteArray before;
    bool removed = changeIndex(target, CacheIndexChange::Remove, before);
    QFile file(path);
    if (removed && !file.remove() && file.exists()) {
        removed = false;
        QString text = QDir::toNativeSeparators(path) + u": "_s + file.errorString();
        if (!before.isEmpty()) {
            if (const Result back = writeCacheIndexFile(indexPath(), before); !back)
                text += u"\nThe index could not be put back: "_s + back.reason();
        }
        m_prompts.message(text, u"Error"_s, PromptButtons::Ok, PromptIcon::Critical);
    }
    fill();
    return removed;
}

bool CacheManager::forceDownload(int row)
{
    if (row < 0 || row >= m_rows.size() || refuseWhileRoverRuns())
        return false;
    QByteArray before;
    const bool done = changeIndex(m_rows.at(row), CacheIndexChange::ForceDownload, before);
    fill();
    return done;
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
