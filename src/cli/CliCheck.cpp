#include "cli/CliCheck.h"

#include "app/BlocksetCheck.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

QString severityWord(RoverFinding::Severity severity)
{
    return severity == RoverFinding::Error ? u"error"_s : u"warning"_s;
}

QString summary(const BlocksetCheck &check)
{
    if (!check.roverLoadsBlockset)
        return u"Rover does not load this blockset."_s;
    if (check.roverSeesUpdate)
        return u"Rover loads this blockset and sees its update."_s;
    return u"Rover loads this blockset; it sees no update."_s;
}

} // namespace

QString CliCheck::text(const BlocksetCheck &check)
{
    QString out;
    for (const BlocksetCheck::Finding &f : check.findings) {
        out += severityWord(f.severity) + u": "_s;
        if (!f.file.isEmpty())
            out += f.file + (f.line > 0 ? u", line "_s + QString::number(f.line) : QString()) + u": "_s;
        out += f.text + u'\n';
    }
    return out + summary(check) + u'\n';
}

QByteArray CliCheck::json(const BlocksetCheck &check)
{
    QJsonArray findings;
    for (const BlocksetCheck::Finding &f : check.findings) {
        findings.append(QJsonObject{{u"severity"_s, severityWord(f.severity)},
                                    {u"file"_s, f.file},
                                    {u"line"_s, f.line > 0 ? QJsonValue(f.line) : QJsonValue()},
                                    {u"text"_s, f.text}});
    }
    const QJsonObject report{{u"roverLoadsBlockset"_s, check.roverLoadsBlockset},
                             {u"roverSeesUpdate"_s, check.roverSeesUpdate},
                             {u"findings"_s, findings}};
    return QJsonDocument(report).toJson();
}

int CliCheck::exitCode(const BlocksetCheck &check)
{
    const bool anyError =
        std::any_of(check.findings.cbegin(), check.findings.cend(),
                    [](const BlocksetCheck::Finding &f) { return f.severity == RoverFinding::Error; });
    return check.roverLoadsBlockset && (check.roverSeesUpdate || !check.updateFileExists) && !anyError ? 0 : 1;
}
