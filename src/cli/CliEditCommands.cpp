#include "cli/CliEditCommands.h"

#include "app/BlocksetDocument.h"
#include "cli/CliBsp.h"
#include "cli/CliOutput.h"
#include "cli/CliPrompts.h"
#include "cli/CliReport.h"
#include "common/RegistryWrapper.h"
#include "formats/ValueFormats.h"
#include "items/AddItems.h"
#include "items/FileNameRules.h"
#include "items/RemoveItems.h"
#include "items/RenameItem.h"
#include "items/ReplaceBlocks.h"
#include "symbols/RemapDialog.h"
#include "symbols/RemapSymbols.h"
#include "symbols/StrictPrefix.h"
#include "symbols/SymbolDialogs.h"
#include "symbols/SymbolScheme.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <optional>

using namespace Qt::StringLiterals;

namespace {

const ItemKind kKinds[] = {ItemKind::Block, ItemKind::Texture, ItemKind::Sound};

// The list whose Add command takes the file (extension compared ignoring case).
std::optional<ItemKind> addKind(const QString &path)
{
    const QString lower = path.toLower();
    for (ItemKind kind : kKinds) {
        if (isItemFile(kind, lower))
            return kind;
    }
    return std::nullopt;
}

// The option values that follow each `name` in `options`, in order.
QStringList optionValues(const QStringList &options, const QString &name)
{
    QStringList values;
    for (qsizetype i = 0; i + 1 < options.size(); ++i) {
        if (options[i] == name)
            values.append(options[++i]);
    }
    return values;
}

// The row named `name` (ignoring case, as Windows names match) in the lists.
bool findItem(BlocksetDocument &document, const QString &name, ItemKind &kind, int &row)
{
    for (ItemKind candidate : kKinds) {
        const QStringList names = itemFileNames(document, candidate);
        for (qsizetype i = 0; i < names.size(); ++i) {
            if (names[i].compare(name, Qt::CaseInsensitive) == 0) {
                kind = candidate;
                row = int(i);
                return true;
            }
        }
    }
    return false;
}

// The dialog answered with the method and prefix of the command line; a No to
// the method's question leaves the dialog open, which here means cancelled.
class ChosenRemap : public RemapDialog {
public:
    explicit ChosenRemap(RemapChoice choice) : m_choice(choice) {}
    bool run(const std::function<bool(const RemapChoice &)> &accept) override { return accept(m_choice); }

private:
    RemapChoice m_choice;
};

// How a control of the settings or version page takes a whole typed value.
enum class ValueRule { Line, Color, Percentage, Position };

struct SetField {
    QLatin1String key;
    StyleField field;
    QLatin1String control;
    ValueRule rule;
};

const SetField kSetFields[] = {
    {"version"_L1, StyleField::Version, "fldVersion"_L1, ValueRule::Line},
    {"name"_L1, StyleField::Name, "fldBlocksetName"_L1, ValueRule::Line},
    {"synopsis"_L1, StyleField::Synopsis, "fldSynopsis"_L1, ValueRule::Line},
    {"author"_L1, StyleField::Author, "fldAuthor"_L1, ValueRule::Line},
    {"copyright"_L1, StyleField::Copyright, "fldCopyright"_L1, ValueRule::Line},
    {"placeholderTexture"_L1, StyleField::PlaceholderTexture, "lstPlaceholderTexture"_L1, ValueRule::Line},
    {"skyTexture"_L1, StyleField::SkyTexture, "lstSkyTexture"_L1, ValueRule::Line},
    {"skyColor"_L1, StyleField::SkyColor, "rgbSky"_L1, ValueRule::Color},
    {"skyBrightness"_L1, StyleField::SkyBrightness, "prcSky"_L1, ValueRule::Percentage},
    {"groundTexture"_L1, StyleField::GroundTexture, "lstGroundTexture"_L1, ValueRule::Line},
    {"groundColor"_L1, StyleField::GroundColor, "rgbGround"_L1, ValueRule::Color},
    {"orbTexture"_L1, StyleField::OrbTexture, "lstOrbTexture"_L1, ValueRule::Line},
    {"orbColor"_L1, StyleField::OrbColor, "rgbOrb"_L1, ValueRule::Color},
    {"orbBrightness"_L1, StyleField::OrbBrightness, "prcOrb"_L1, ValueRule::Percentage},
    {"orbPosition"_L1, StyleField::OrbPosition, "posOrb"_L1, ValueRule::Position},
    {"orbHref"_L1, StyleField::OrbHref, "fldOrbHREF"_L1, ValueRule::Line},
    {"orbTarget"_L1, StyleField::OrbTarget, "fldOrbTarget"_L1, ValueRule::Line},
    {"orbText"_L1, StyleField::OrbText, "fldOrbText"_L1, ValueRule::Line},
};

const SetField *findSetField(const QString &key)
{
    for (const SetField &entry : kSetFields) {
        if (key == entry.key)
            return &entry;
    }
    return nullptr;
}

// The text the control shows after `value` was typed into it, or nullopt with
// `rule` saying what the control takes.
std::optional<QString> acceptValue(ValueRule kind, const QString &value, QString &rule)
{
    switch (kind) {
    case ValueRule::Line:
        rule = u"one line of text"_s;
        if (value.contains(u'\n') || value.contains(u'\r'))
            return std::nullopt;
        return value;
    case ValueRule::Color:
        rule = u"a colour \"(red,green,blue)\", each 0 to 255, or nothing"_s;
        return value.isEmpty() ? std::optional<QString>(value) : acceptColor(value);
    case ValueRule::Percentage:
        rule = u"a percentage \"n%\" from 0 to 100, or nothing"_s;
        return value.isEmpty() ? std::optional<QString>(value) : acceptPercentage(value);
    case ValueRule::Position:
        rule = u"a position \"(turn,tilt)\", turn 0 to 360 and tilt -90 to 90, or nothing"_s;
        return value.isEmpty() ? std::optional<QString>(value) : acceptPosition(value);
    }
    return std::nullopt;
}

// Whether the command's last message was a question answered No: the user
// declined, which is not a failure of the command.
bool declined(const CliPrompts &prompts, qsizetype first)
{
    const QList<CliPrompts::Message> &messages = prompts.messages();
    return messages.size() > first && messages.last().buttons != PromptButtons::Ok;
}

} // namespace

bool CliEditCommands::handles(const QString &command)
{
    static const QStringList commands{u"add"_s,     u"remove"_s, u"rename"_s, u"replace"_s,
                                      u"symbols"_s, u"remap"_s,  u"prefix"_s, u"set"_s};
    return commands.contains(command) || command == "bsp"_L1;
}

QString CliEditCommands::check(const QString &command, const QStringList &arguments, const QStringList &options)
{
    const qsizetype n = arguments.size();
    if (command == "remap"_L1) {
        const int methods = int(options.count(u"--all"_s) + options.count(u"--sync-double"_s));
        if (n != 1)
            return u"remap takes one file"_s;
        if (methods != 1)
            return u"remap takes exactly one of --all and --sync-double"_s;
        const qsizetype at = options.indexOf(u"--prefix"_s);
        const QString prefix = at >= 0 ? options.value(at + 1) : u"."_s;
        if (prefix.size() != 1 || !prefixAlphabet().contains(prefix))
            return u"\""_s + prefix + u"\" is not in the prefix list"_s;
        return QString();
    }
    if (command == "replace"_L1) {
        if (n < 2)
            return u"replace takes a file and at least one block"_s;
        if (options.size() != 2 * optionValues(options, u"--from"_s).size())
            return u"replace takes only --from PATH"_s;
        return QString();
    }
    if (command == "bsp"_L1)
        return CliBsp::check(arguments, options);
    if (!options.isEmpty())
        return options.first() + u" is not an option of "_s + command;
    if (command == "add"_L1) {
        if (n < 2)
            return u"add takes a file and at least one path"_s;
        for (const QString &path : arguments.mid(1)) {
            if (!addKind(path))
                return u"\""_s + path + u"\" is no block, texture or sound file (.block, .gif, .jpg, .wav)"_s;
        }
    }
    if (command == "symbols"_L1 && n != 4)
        return u"symbols takes a file, a block, the single and the double symbol"_s;
    if (command == "remove"_L1 && n < 2)
        return u"remove takes a file and at least one name"_s;
    if (command == "rename"_L1 && n != 3)
        return u"rename takes a file, the old and the new name"_s;
    if (command == "prefix"_L1) {
        if (n != 2)
            return u"prefix takes a file and one character"_s;
        if (arguments[1].size() != 1 || !prefixAlphabet().contains(arguments[1]))
            return u"\""_s + arguments[1] + u"\" is not in the prefix list"_s;
    }
    if (command == "set"_L1) {
        if (n != 3)
            return u"set takes a file, a field and a value"_s;
        const QString &field = arguments[1];
        if (!findSetField(field) && field != "update"_L1 && field != "strictPrefix"_L1)
            return u"unknown field \""_s + field + u'"';
        if (field == "strictPrefix"_L1 && arguments[2] != "on"_L1 && arguments[2] != "off"_L1)
            return u"strictPrefix takes on or off"_s;
    }
    return QString();
}

QString CliEditCommands::usageLines()
{
    return u"       cubrix-cli add FILE.bset PATH... [--json] [--no]\n"
           "       cubrix-cli remove FILE.bset NAME... [--json] [--no]\n"
           "       cubrix-cli rename FILE.bset OLD NEW [--json] [--no]\n"
           "       cubrix-cli replace FILE.bset BLOCK... [--from PATH]... [--json] [--no]\n"
           "       cubrix-cli symbols FILE.bset BLOCK SINGLE DOUBLE [--json] [--no]\n"
           "       cubrix-cli remap FILE.bset --all|--sync-double [--prefix C] [--json] [--no]\n"
           "       cubrix-cli prefix FILE.bset C [--json] [--no]\n"
           "       cubrix-cli set FILE.bset FIELD VALUE [--json] [--no]\n"_s
           + CliBsp::usageLine();
}

QString CliEditCommands::helpLines()
{
    return u"  add FILE.bset PATH...\n"
           "                     Adds block, texture and sound files (by extension, any\n"
           "                     case) as Add Block, Add Texture and Add Sound do, each\n"
           "                     symbol dialog answered with OK on what it offers first.\n"
           "  remove FILE.bset NAME...\n"
           "                     Removes the named blocks, textures and sounds (file names,\n"
           "                     any case) as the Remove command of each list does.\n"
           "  rename FILE.bset OLD NEW\n"
           "                     Renames the item OLD to NEW as editing its label does.\n"
           "  replace FILE.bset BLOCK... [--from PATH]...\n"
           "                     Update/Replace on the named blocks: a block whose source\n"
           "                     file still exists is refreshed from it; each file the\n"
           "                     command asks for is the next --from PATH (none: skipped).\n"
           "  symbols FILE.bset BLOCK SINGLE DOUBLE\n"
           "                     Chooses SINGLE and DOUBLE (\"\" for none) in the Edit\n"
           "                     Symbols dialog of BLOCK; a symbol the dialog does not\n"
           "                     offer, or a double it refuses, is an error.\n"
           "  remap FILE.bset --all|--sync-double [--prefix C]\n"
           "                     OK on the Remap All or Sync Double tab of Remap Symbols\n"
           "                     with the prefix C (default \".\").\n"
           "  prefix FILE.bset C Chooses C in the strict prefix list of the settings page.\n"
           "  set FILE.bset FIELD VALUE\n"
           "                     Types VALUE into one settings or version control: FIELD is\n"
           "                     a key of \"style\" in info --json, update (the update\n"
           "                     comment) or strictPrefix (on or off: the check box).\n"_s
           + CliBsp::helpLines()
           + u"                     These nine commands save the blockset with Save when it\n"
             "                     changed; with --json they print the info object read\n"
             "                     after the save plus \"results\" (the status texts shown);\n"
             "                     bsp adds \"bsp\", its lines per block as an object.\n"_s;
}

int CliEditCommands::run(const QString &command, const QStringList &arguments, const QStringList &options, bool json,
                         BlocksetDocument &document, CliPrompts &prompts)
{
    const QString &file = arguments.first();
    const auto printMessages = [this, &prompts](qsizetype first) {
        CliOutput::printMessages(m_err, prompts.messages(), first);
    };
    if (!document.openBlockset(QFileInfo(file).absoluteFilePath())) {
        printMessages(0);
        return Failed;
    }

    const qsizetype first = prompts.messageCount();
    document.clearProcess();
    QString error;
    QStringList results;
    QJsonObject extra; // keys a command adds to the --json report
    int code = Failed;
    if (command == "add"_L1)
        code = add(arguments.mid(1), document, prompts, results);
    else if (command == "replace"_L1)
        code = replace(arguments.mid(1), options, document, prompts, error);
    else if (command == "symbols"_L1)
        code = symbols(arguments, document, prompts, error);
    else if (command == "remove"_L1)
        code = remove(arguments.mid(1), document, error);
    else if (command == "rename"_L1)
        code = rename(arguments[1], arguments[2], document, error);
    else if (command == "remap"_L1)
        code = remap(options, document);
    else if (command == "bsp"_L1)
        code = CliBsp::run(arguments.mid(1), options, document, results, extra, error);
    else if (command == "prefix"_L1)
        code = prefix(arguments[1], document, error);
    else
        code = set(arguments[1], arguments[2], document, error);
    if (code == Failed && error.isEmpty() && declined(prompts, first))
        code = Success;
    if (results.isEmpty() && !document.processText().isEmpty())
        results.append(document.processText());

    if (code != UsageError && document.isChanged()) {
        if (const Result saved = document.saveBlockset(); !saved) {
            code = Failed;
            if (error.isEmpty())
                error = u"the blockset was not saved: "_s + saved.reason();
        }
    }
    if (!error.isEmpty())
        CliOutput::printError(m_err, error);
    if (code == UsageError)
        return code;

    if (json) {
        if (code != Success)
            printMessages(first);
        QJsonObject report = QJsonDocument::fromJson(CliReport::infoJson(file, document, prompts.messages())).object();
        report.insert(u"results"_s, QJsonArray::fromStringList(results));
        for (auto it = extra.constBegin(); it != extra.constEnd(); ++it)
            report.insert(it.key(), it.value());
        CliOutput::printBytes(m_out, QJsonDocument(report).toJson());
    } else {
        printMessages(first);
        for (const QString &result : std::as_const(results))
            CliOutput::print(m_out, result + u'\n');
    }
    return code;
}

int CliEditCommands::add(const QStringList &paths, BlocksetDocument &document, CliPrompts &prompts,
                         QStringList &results)
{
    int added = 0;
    for (ItemKind kind : kKinds) {
        QStringList chosen;
        for (const QString &path : paths) {
            if (addKind(path) == kind)
                chosen.append(QFileInfo(path).absoluteFilePath());
        }
        if (chosen.isEmpty())
            continue;
        prompts.setMultiOpenAnswers({chosen});
        added += addItems(document, kind);
        results.append(document.processText());
    }
    // Every path refused (each with its message): nothing changed, which is a failure.
    return added > 0 ? Success : Failed;
}

int CliEditCommands::replace(const QStringList &names, const QStringList &options, BlocksetDocument &document,
                             CliPrompts &prompts, QString &error)
{
    QList<int> rows;
    for (const QString &name : names) {
        ItemKind kind;
        int row;
        if (!findItem(document, name, kind, row) || kind != ItemKind::Block) {
            error = u"\""_s + name + u"\" is in no block list"_s;
            return UsageError;
        }
        rows.append(row);
    }
    QStringList sources;
    for (const QString &path : optionValues(options, u"--from"_s))
        sources.append(QFileInfo(path).absoluteFilePath());
    prompts.setOpenAnswers(sources);
    replaceBlocks(document, rows);
    return Success;
}

int CliEditCommands::symbols(const QStringList &arguments, BlocksetDocument &document, CliPrompts &prompts,
                             QString &error)
{
    ItemKind kind;
    int row;
    if (!findItem(document, arguments[1], kind, row) || kind != ItemKind::Block) {
        error = u"\""_s + arguments[1] + u"\" is in no block list"_s;
        return UsageError;
    }
    prompts.chooseSymbols(arguments[2], arguments[3]);
    editSymbols(document, row);
    error = prompts.symbolError();
    return error.isEmpty() ? Success : Failed;
}

int CliEditCommands::remove(const QStringList &names, BlocksetDocument &document, QString &error)
{
    QList<ListSelection> selections(3);
    for (const QString &name : names) {
        ItemKind kind;
        int row;
        if (!findItem(document, name, kind, row)) {
            error = u"\""_s + name + u"\" is in no list"_s;
            return UsageError;
        }
        ListSelection &selection = selections[int(kind)];
        if (!selection.selected.contains(row))
            selection.selected.append(row);
    }
    bool removedAll = true;
    for (ItemKind kind : kKinds) {
        ListSelection &selection = selections[int(kind)];
        if (selection.selected.isEmpty())
            continue;
        selection.current = *std::min_element(selection.selected.begin(), selection.selected.end());
        if (!removeItems(document, kind, selection))
            removedAll = false;
    }
    return removedAll ? Success : Failed;
}

int CliEditCommands::rename(const QString &oldName, const QString &newName, BlocksetDocument &document, QString &error)
{
    ItemKind kind;
    int row;
    if (!findItem(document, oldName, kind, row)) {
        error = u"\""_s + oldName + u"\" is in no list"_s;
        return UsageError;
    }
    if (newName == itemFileNames(document, kind)[row])
        return Success; // the label left as it was
    return renameItem(document, kind, row, newName) ? Success : Failed;
}

int CliEditCommands::remap(const QStringList &options, BlocksetDocument &document)
{
    RemapChoice choice;
    choice.method = options.contains(u"--all"_s) ? RemapChoice::RemapAll : RemapChoice::SyncDouble;
    const qsizetype at = options.indexOf(u"--prefix"_s);
    choice.prefixIndex = at >= 0 ? int(prefixAlphabet().indexOf(options.value(at + 1))) : 0;
    ChosenRemap dialog(choice);
    return remapSymbolsCommand(document, dialog) ? Success : Failed;
}

int CliEditCommands::prefix(const QString &character, BlocksetDocument &document, QString &error)
{
    if (!document.symbols().prefixListEnabled) {
        error = u"the strict prefix list is disabled (strict prefix is off)"_s;
        return Failed;
    }
    std::optional<int> remembered = document.symbols().prefixIndex;
    const int chosen = int(prefixAlphabet().indexOf(character));
    return remapPrefix(document, remembered, chosen) == chosen ? Success : Failed;
}

int CliEditCommands::set(const QString &field, const QString &value, BlocksetDocument &document, QString &error)
{
    if (field == "strictPrefix"_L1) {
        SymbolSettings symbols = document.symbols();
        if (!symbols.strictPrefixBoxEnabled) {
            error = u"cbxStrictPrefix is disabled"_s;
            return Failed;
        }
        const bool on = value == "on"_L1;
        if (symbols.strictPrefixBoxChecked != on) {
            strictPrefixClicked(symbols, on, document.settings().getBoolSetting(u"syncDouble"_s));
            document.setSymbolSettings(symbols);
        }
        return Success;
    }
    // Style values are Windows-1252 text between double quotes, which nothing can escape.
    const QString control = field == "update"_L1 ? u"fldUpdate"_s : QString(findSetField(field)->control);
    if (const QString outside = firstCharacterOutsideCp1252(value); !outside.isEmpty()) {
        error = control + u" does not take \""_s + value
                + u"\": Windows-1252, the code page of the style file, has no \""_s + outside + u'"';
        return Failed;
    }
    if (field != "update"_L1 && !isAcceptableAttributeValue(value)) {
        error = control + u" does not take \""_s + value + u"\": a value cannot hold a double quote"_s;
        return Failed;
    }
    if (field == "update"_L1) {
        if (value != document.updateComment())
            document.editUpdateComment(value);
        return Success;
    }
    const SetField *entry = findSetField(field);
    QString rule;
    const std::optional<QString> shown = acceptValue(entry->rule, value, rule);
    if (!shown) {
        error = QString(entry->control) + u" does not take \""_s + value + u"\": it takes "_s + rule;
        return Failed;
    }
    if (*shown != styleValue(document.style(), entry->field))
        document.editStyleValue(entry->field, *shown);
    return Success;
}
