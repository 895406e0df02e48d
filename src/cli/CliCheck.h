#pragma once

#include <QByteArray>
#include <QString>

class BlocksetDocument;
struct BlocksetCheck;

// cubrix-cli check FILE.bset [--json]: what Rover will do with the blockset.
namespace CliCheck {

// One line per finding ("error: Castle.style, line 3: ..."), then whether Rover
// loads the blockset and sees its update.
QString text(const BlocksetCheck &check);
// {"roverLoadsBlockset", "roverSeesUpdate", "findings": [{severity, file, line, text}]}
QByteArray json(const BlocksetCheck &check);
// 0 when Rover loads the blockset, reads its update file where there is one
// and nothing is an error (a four-channel JPEG is), else 1.
int exitCode(const BlocksetCheck &check);

} // namespace CliCheck
