#include "cli/CliCache.h"

#include "cache/CacheAddress.h"
#include "cache/CacheLocation.h"
#include "cache/CacheManager.h"
#include "cli/CliPrompts.h"
#include "common/Registry.h"
#include "common/RegistryWrapper.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

enum ExitCode { Success = 0, Failed = 1, UsageError = 2 };

const QStringList kRowCommands = {u"remove"_s, u"force-download"_s, u"tag"_s, u"url"_s};

struct CacheOptions {
    QString command; // "" lists
    QString name;
    QString browser;
    bool json = false;
    bool answerNo = false;
};

void print(std::FILE *stream, const QString &text)
{
    const QByteArray bytes = text.toUtf8();
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stream);
    std::fflush(stream);
}

QString parse(const QStringList &arguments, CacheOptions &options)
{
    QStringList positional;
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        const QString &argument = arguments[i];
        if (argument == "--json"_L1) {
            options.json = true;
        } else if (argument == "--no"_L1) {
            options.answerNo = true;
        } else if (argument == "--browser"_L1) {
            options.browser = arguments.value(++i);
            if (options.browser != "ie"_L1 && options.browser != "netscape"_L1)
                return u"--browser takes ie or netscape"_s;
        } else if (argument.startsWith(u'-') && argument.size() > 1) {
            return u"unknown option \""_s + argument + u'"';
        } else {
            positional.append(argument);
        }
    }
    if (positional.isEmpty())
        return options.answerNo ? u"--no is an option of the cache commands"_s : QString();
    options.command = positional.takeFirst();
    if (!kRowCommands.contains(options.command))
        return u"unknown cache command \""_s + options.command + u'"';
    if (positional.size() != 1 || positional.first().isEmpty())
        return options.command + u" takes one blockset name"_s;
    if (options.json)
        return u"--json is an option of the listing"_s;
    options.name = positional.first();
    return QString();
}

// The rows `name` names: a file name, or the path as the listing prints it
// (with either slash) or the address as "cache url" prints it; case is ignored,
// as Rover's file system does.
QList<int> findRows(const CacheManager &manager, QString name)
{
    const bool address = name.startsWith(u"http://"_s, Qt::CaseInsensitive);
    if (address)
        name.remove(0, 7);
    name.replace(u'/', u'\\');
    const bool byPath = address || name.contains(u'\\');
    const QString wanted = cacheKeyOfFile({}, name.split(u'\\', Qt::SkipEmptyParts).join(u'\\'));
    QList<int> found;
    for (int i = 0; i < manager.rows().size(); ++i) {
        const CacheRow &row = manager.rows().at(i);
        if (cacheKeyOfFile(byPath ? row.path : QString(), row.fileName) == wanted)
            found.append(i);
    }
    return found;
}

QJsonValue count(const CacheRow &row, int value)
{
    return row.readable ? QJsonValue(value) : QJsonValue(QJsonValue::Null);
}

QByteArray listingJson(const CacheManager &manager, const CliPrompts &prompts)
{
    QJsonArray rows;
    for (const CacheRow &row : manager.rows()) {
        rows.append(QJsonObject{
            {u"fileName"_s, row.fileName},
            {u"path"_s, row.path},
            {u"version"_s, row.version},
            {u"size"_s, row.size},
            {u"lastUpdated"_s, row.lastUpdatedText()},
            {u"lastUpdatedTime"_s, row.updated == CacheRow::Updated::Date ? QJsonValue(row.updatedTime) : QJsonValue()},
            {u"name"_s, row.name},
            {u"synopsis"_s, row.synopsis},
            {u"author"_s, row.author},
            {u"copyright"_s, row.copyright},
            {u"blocks"_s, count(row, row.blocks)},
            {u"textures"_s, count(row, row.textures)},
            {u"sounds"_s, count(row, row.sounds)},
        });
    }
    QJsonArray messages;
    for (const QString &note : manager.indexNotes())
        messages.append(QJsonObject{{u"title"_s, u"Cache index"_s}, {u"text"_s, note}});
    for (const CliPrompts::Message &message : prompts.messages())
        messages.append(QJsonObject{{u"title"_s, message.title}, {u"text"_s, message.text}});
    const CacheManager::Browser browser = manager.browser();
    const QJsonObject root{
        {u"cacheFolder"_s, manager.cacheFolder()},
        {u"browser"_s, browser == CacheManager::Browser::InternetExplorer ? u"ie"_s
                       : browser == CacheManager::Browser::Netscape       ? u"netscape"_s
                                                                          : QString()},
        {u"ieFound"_s, manager.ieFound()},
        {u"netscapeFound"_s, manager.netscapeFound()},
        {u"status"_s, QJsonObject{{u"blocksets"_s, manager.blocksetsText()},
                                  {u"size"_s, manager.sizeText()},
                                  {u"process"_s, manager.processText()}}},
        {u"rows"_s, rows},
        {u"messages"_s, messages},
    };
    return QJsonDocument(root).toJson(QJsonDocument::Indented);
}

QString listingText(const CacheManager &manager)
{
    QString text = u"Cache folder: "_s + (manager.cacheFolder().isEmpty() ? u"(none)"_s : manager.cacheFolder()) + u'\n'
                   + manager.blocksetsText() + u", "_s + manager.sizeText() + u'\n';
    if (!manager.processText().isEmpty())
        text += manager.processText() + u'\n';
    for (const QString &note : manager.indexNotes())
        text += note + u'\n';
    for (const CacheRow &row : manager.rows()) {
        QStringList cells;
        for (int column = 0; column < CacheManager::ColumnCount; ++column)
            cells.append(CacheManager::cellText(row, column));
        text += cells.join(u'\t') + u'\n';
    }
    return text;
}

} // namespace

int runCacheCommand(const QStringList &arguments, std::FILE *out, std::FILE *err)
{
    CacheOptions options;
    const QString problem = parse(arguments, options);
    if (!problem.isEmpty()) {
        print(err,
              u"cubrix-cli: "_s + problem
                  + u"\nUsage: cubrix-cli cache [--browser ie|netscape] [--json]\n"
                    "       cubrix-cli cache remove|force-download|tag|url NAME [--browser ie|netscape] [--no]\n"_s);
        return UsageError;
    }
    const std::unique_ptr<Registry> registry = createSettingsRegistry();
    if (!registry) {
        print(err, u"cubrix-cli: the settings store cannot be used\n"_s);
        return Failed;
    }
    RegistryWrapper settings(*registry);
    settings.loadSettings();
    CliPrompts prompts(options.answerNo);
    RoverMachine machine;
    CacheManager manager(machine, prompts, settings);
    manager.load();
    if (options.browser == "ie"_L1 && !manager.ieFound()) {
        print(err, u"cubrix-cli: Rover is not installed for IE\n"_s);
        return Failed;
    }
    if (options.browser == "netscape"_L1 && !manager.netscapeFound()) {
        print(err, u"cubrix-cli: Rover is not installed for Netscape\n"_s);
        return Failed;
    }
    if (options.browser == "ie"_L1)
        manager.chooseBrowser(CacheManager::Browser::InternetExplorer);
    else if (options.browser == "netscape"_L1)
        manager.chooseBrowser(CacheManager::Browser::Netscape);

    if (options.command.isEmpty()) {
        print(out, options.json ? QString::fromUtf8(listingJson(manager, prompts)) : listingText(manager));
        return Success;
    }
    if (manager.cacheFolder().isEmpty()) {
        print(err, u"cubrix-cli: "_s + manager.processText() + u'\n');
        return Failed;
    }
    const QList<int> rows = findRows(manager, options.name);
    if (rows.size() != 1) {
        print(err, rows.isEmpty()
                       ? u"cubrix-cli: no cached blockset \""_s + options.name + u"\"\n"_s
                       : u"cubrix-cli: several cached blocksets \""_s + options.name + u"\"; name it by its path\n"_s);
        return UsageError;
    }
    const int row = rows.first();
    bool done = true;
    if (options.command == "tag"_L1)
        print(out, manager.rows().at(row).tag() + u'\n');
    else if (options.command == "url"_L1)
        print(out, manager.rows().at(row).url() + u'\n');
    else if (options.command == "remove"_L1)
        manager.remove(row);
    else
        done = manager.forceDownload(row);
    for (const CliPrompts::Message &message : prompts.messages()) {
        print(err, message.title + u": "_s + message.text + u'\n');
        if (message.icon == PromptIcon::Critical || message.icon == PromptIcon::Exclamation)
            done = false;
    }
    return done ? Success : Failed;
}
