#include "cli/CliApp.h"

#include "app/BlocksetCheck.h"
#include "app/BlocksetDocument.h"
#include "cache/RoverCacheGuard.h"
#include "cli/CliCache.h"
#include "cli/CliCheck.h"
#include "cli/CliEditCommands.h"
#include "cli/CliExtract.h"
#include "cli/CliOutput.h"
#include "cli/CliPrompts.h"
#include "cli/CliRender.h"
#include "cli/CliReport.h"
#include "cli/CliShrink.h"
#include "common/ProgramVersion.h"
#include "common/Registry.h"
#include "common/RegistryWrapper.h"
#include "storage/WorkingFolder.h"

#include <QFileInfo>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

// The document works with full paths, as a file dialog would hand them over:
// the update file is looked for beside the archive.
QString fullPath(const QString &path)
{
    return QFileInfo(path).absoluteFilePath();
}

} // namespace

QString CliApp::usageText()
{
    return u"Usage: cubrix-cli info FILE.bset [--json] [--no]\n"
           "       cubrix-cli save IN.bset OUT.bset [--no]\n"
           "       cubrix-cli check FILE.bset [--json]\n"
           "       cubrix-cli cache [--browser ie|netscape] [--json]\n"
           "       cubrix-cli cache remove|force-download|tag|url NAME [--browser ie|netscape] [--no]\n"_s
           + CliEditCommands::usageLines() + CliRender::usageLines() + CliExtract::usageLines()
           + CliShrink::usageLines() + u"       cubrix-cli --help | --version\n"_s;
}

QString CliApp::helpText()
{
    return u"cubrix-cli: the Cubrix blockset editor's document commands without a window.\n"
           "\n"_s
           + usageText()
           + u"\n"
             "Commands:\n"
             "  info FILE.bset     Opens the blockset as the editor would and prints what the\n"
             "                     editor then shows: the chosen tab, whether the blockset\n"
             "                     counts as changed, the style values, the symbol settings,\n"
             "                     the blocks, textures and sounds, the update comment and\n"
             "                     every message the open showed.\n"
             "  save IN.bset OUT.bset\n"
             "                     Opens IN, then saves it as OUT exactly as the editor's\n"
             "                     Save As does: OUT gets a style file of its own name and,\n"
             "                     with the updateFile setting on, the update file OUT.txt\n"
             "                     beside it. IN is left as it was. Like the editor, it\n"
             "                     remembers OUT's folder in the pathBlockset setting.\n"_s
           + u"  check FILE.bset    Says what Rover will do with the blockset: the errors and\n"
             "                     warnings of Rover's readers for its style, every block\n"
             "                     file it lists (as blocks/FILE) and the update file (file\n"
             "                     and line), blocks Rover will not use, entries\n"
             "                     naming files the blockset does not hold, duplicate\n"
             "                     symbols and names, textures that are missing, and\n"
             "                     whether Rover loads the blockset and sees its update.\n"
             "                     A blockset over 307,200 bytes, which Rover refuses from a\n"
             "                     web address, and textures and sounds Rover's readers\n"
             "                     cannot use are reported too.\n"
             "                     Exit 0 when Rover loads it and reads its update file\n"
             "                     (where there is one) and no finding is an error, else 1.\n"
             "                     Nothing on disk is changed.\n"_s
           + CliEditCommands::helpLines() + CliRender::helpLines() + CliExtract::helpLines() + CliShrink::helpLines()
           + u"\n"
             "Options:\n"
             "  --json             Print one JSON object (UTF-8) instead of text; for info\n"
             "                     the keys file, tab (0 blocks, 1 textures, 2 sounds,\n"
             "                     3 settings, 4 version), changed, style, symbols, blocks,\n"
             "                     textures, sounds, update, messages. cubrix-cli(1) names\n"
             "                     the JSON Schema of each command's object.\n"
             "  --no               Answer No to the questions the commands ask (for example\n"
             "                     whether a differing style file is to be renamed); without\n"
             "                     it every question is answered Yes.\n"
             "  --break-lock       (edit commands) Take over the lock another Cubrix holds on\n"
             "                     the blockset (one whose process cannot be checked from\n"
             "                     here, on another computer). Without it an edit waits a\n"
             "                     few seconds for the other editor, then exits with 1.\n"
             "  --help, -h         Print this help and exit.\n"
             "  --version          Print the program's version and exit.\n"
             "  --                 Everything after it is a file name.\n"
             "\n"
             "Settings are read from the editor's settings store: the hive file named by\n"
             "CUBRIX_REGISTRY, else $XDG_CONFIG_HOME/cubrix/registry.reg (on Windows, the\n"
             "registry). The blockset is unpacked into a working folder of its own under\n"
             "$Temp (else $TMPDIR, else /tmp), which is removed again before the program\n"
             "exits.\n"
             "\n"
             "Exit status:\n"
             "  0  the command succeeded\n"
             "  1  the command failed; its message is printed on standard error\n"
             "  2  usage error (unknown command or option, wrong number of arguments)\n"_s;
}

QString CliApp::parse(const QStringList &arguments, Options &options)
{
    QStringList positional;
    bool optionsEnded = false;
    for (qsizetype i = 1; i < arguments.size(); ++i) {
        const QString &argument = arguments[i];
        if (!optionsEnded && argument.startsWith(u'-') && argument.size() > 1) {
            if (argument == "--"_L1)
                optionsEnded = true;
            else if (argument == "--help"_L1 || argument == "-h"_L1)
                options.help = true;
            else if (argument == "--json"_L1)
                options.json = true;
            else if (argument == "--no"_L1)
                options.answerNo = true;
            else if (argument == "--break-lock"_L1)
                options.breakLock = true;
            else if ((argument == "--prefix"_L1 || argument == "--from"_L1 || CliShrink::takesValue(argument))
                     && i + 1 < arguments.size())
                options.commandOptions << argument << arguments[++i];
            else if (argument == "--all"_L1 || argument == "--sync-double"_L1 || argument == "--rebuild"_L1
                     || (CliShrink::isOption(argument) && !CliShrink::takesValue(argument)))
                options.commandOptions.append(argument);
            else
                return u"unknown option \""_s + argument + u'"';
            continue;
        }
        positional.append(argument);
    }
    if (options.help)
        return QString();
    if (positional.isEmpty())
        return u"no command given"_s;

    options.command = positional.takeFirst();
    options.files = positional;
    if (options.command == "info"_L1 || options.command == "check"_L1) {
        if (options.files.size() != 1)
            return options.command + u" takes one file"_s;
    } else if (options.command == "save"_L1) {
        if (options.files.size() != 2)
            return u"save takes two files"_s;
        if (options.json)
            return u"--json is an option of info"_s;
    } else if (options.command == "shrink"_L1) {
        if (QString problem = CliShrink::check(options.files, options.commandOptions); !problem.isEmpty())
            return problem;
    } else if (CliEditCommands::handles(options.command)) {
        QString problem = CliEditCommands::check(options.command, options.files, options.commandOptions);
        if (!problem.isEmpty())
            return problem;
    } else {
        return u"unknown command \""_s + options.command + u'"';
    }
    const bool takesOptions = CliEditCommands::handles(options.command) || options.command == "shrink"_L1;
    if (!takesOptions && !options.commandOptions.isEmpty())
        return options.commandOptions.first() + u" is not an option of "_s + options.command;
    // Names and values after the blockset's file may be empty (an empty value clears).
    const QStringList files = CliEditCommands::handles(options.command) ? options.files.mid(0, 1) : options.files;
    for (const QString &file : files) {
        if (file.isEmpty())
            return u"empty file name"_s;
    }
    return QString();
}

int CliApp::run(const QStringList &arguments)
{
    if (arguments.size() == 2 && arguments[1] == "--version"_L1) {
        CliOutput::print(m_out, u"Cubrix "_s + programVersion() + u'\n');
        return Success;
    }
    // --help after cache and render asks for the help, as after any other command.
    const bool helpAsked = arguments.contains(u"--help"_s) || arguments.contains(u"-h"_s);
    if ((arguments.value(1) == "cache"_L1 || arguments.value(1) == "render"_L1) && helpAsked) {
        CliOutput::print(m_out, helpText());
        return Success;
    }
    if (arguments.value(1) == "cache"_L1)
        return runCacheCommand(arguments.mid(2), m_out, m_err);
    if (arguments.value(1) == "render"_L1)
        return CliRender::run(arguments.mid(2), m_out, m_err);
    if (arguments.value(1) == "extract"_L1)
        return CliExtract::run(arguments.mid(2), m_out, m_err);
    Options options;
    const QString problem = parse(arguments, options);
    if (!problem.isEmpty()) {
        CliOutput::print(m_err, u"cubrix-cli: "_s + problem + u"\n"_s + usageText());
        return UsageError;
    }
    if (options.help) {
        CliOutput::print(m_out, helpText());
        return Success;
    }
    return runCommand(options);
}

int CliApp::runCommand(const Options &options)
{
    // As the editor starts: settings first, then the working folder.
    const std::unique_ptr<Registry> registry = createSettingsRegistry();
    if (!registry) {
        CliOutput::print(m_err, u"cubrix-cli: the settings store cannot be used\n"_s);
        return Failed;
    }
    RegistryWrapper settings(*registry);
    // Settings that cannot be stored: said once, and the defaults hold for this run.
    if (!settings.loadSettings())
        CliOutput::print(m_err, u"cubrix-cli: warning: "_s + settings.problem() + u'\n');
    WorkingFolder folder;
    if (const Result made = folder.createWorkingFolders(); !made) {
        CliOutput::printError(m_err, made.reason());
        return Failed;
    }

    CliPrompts prompts(options.answerNo);
    int code = Failed;
    {
        BlocksetDocument document(prompts, prompts, settings, folder);
        // Blocksets in Rover's cache are Rover's: never edited. An edit holds the
        // blockset's lock (waiting a few seconds for another editor to finish);
        // info, check and the source of save only read and take no lock; shrink
        // saves, as the edit commands do.
        document.setReadOnlyRule(roverCacheReason);
        EditAccess::Policy policy;
        policy.readOnly = !CliEditCommands::handles(options.command) && options.command != "shrink"_L1;
        policy.lockWaitMs = 5000;
        policy.askWhenLocked = false;
        policy.breakLock = options.breakLock;
        document.setOpenPolicy(policy);
        if (CliEditCommands::handles(options.command))
            code = CliEditCommands(m_out, m_err)
                       .run(options.command, options.files, options.commandOptions, options.json, document, prompts);
        else if (options.command == "shrink"_L1)
            code = CliShrink(m_out, m_err).run(options.files, options.commandOptions, options.json, document, prompts);
        else
            code = options.command == "info"_L1    ? info(options, document, prompts)
                   : options.command == "check"_L1 ? check(options, document, prompts)
                                                   : save(options, document, prompts);
    }
    folder.removeWorkingFolders();
    return code;
}

int CliApp::info(const Options &options, BlocksetDocument &document, CliPrompts &prompts)
{
    const QString &file = options.files.first();
    if (!document.openBlockset(fullPath(file))) {
        CliOutput::printMessages(m_err, prompts.messages());
        return Failed;
    }
    if (options.json)
        CliOutput::printBytes(m_out, CliReport::infoJson(file, document, prompts.messages()));
    else
        CliOutput::print(m_out, CliReport::infoText(file, document, prompts.messages()));
    return Success;
}

int CliApp::check(const Options &options, BlocksetDocument &document, CliPrompts &prompts)
{
    if (!document.openBlockset(fullPath(options.files.first()))) {
        CliOutput::printMessages(m_err, prompts.messages());
        return Failed;
    }
    const BlocksetCheck result = checkBlockset(document);
    if (options.json)
        CliOutput::printBytes(m_out, CliCheck::json(result));
    else
        CliOutput::print(m_out, CliCheck::text(result));
    return CliCheck::exitCode(result);
}

int CliApp::save(const Options &options, BlocksetDocument &document, CliPrompts &prompts)
{
    const Result opened = document.openBlockset(fullPath(options.files[0]));
    // What the open showed (a missing style file, a renamed one) is worth knowing.
    CliOutput::printMessages(m_err, prompts.messages());
    if (!opened)
        return Failed;

    const qsizetype first = prompts.messageCount();
    prompts.setSaveTarget(fullPath(options.files[1]));
    const Result saved = document.saveBlocksetAs();
    CliOutput::printMessages(m_err, prompts.messages(), first);
    if (!saved) {
        // The message names the reason in its detail; without one, say it here.
        if (prompts.messageCount() == first)
            CliOutput::printError(m_err, u"the blockset was not saved: "_s + saved.reason());
        return Failed;
    }
    CliOutput::print(m_out, document.processText() + u'\n');
    return Success;
}
