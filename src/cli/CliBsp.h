#pragma once

#include <QJsonObject>
#include <QString>
#include <QStringList>

class BlocksetDocument;

// cubrix-cli bsp FILE.bset [BLOCK...] [--rebuild]: Add BSP Trees on the named
// blocks (file or block names, any case), or on every block when none is
// named. A block whose tree already holds Rover's rule keeps it unless
// --rebuild is given. CliEditCommands opens, runs and saves as for its own.
namespace CliBsp {

// Empty when `arguments` (the file first) and `options` suit the command.
QString check(const QStringList &arguments, const QStringList &options);
QString usageLine();
QString helpLines();

// Runs the command on the open document. `results` gets one line per block
// (polygons before and after, splits, depth; or why it was left) and the
// status text; `report` the key "bsp", an object with the same per block,
// named by block file. Returns 0, 1 when a block failed, 2 for a name that is
// in no block list (`error` says which).
int run(const QStringList &names, const QStringList &options, BlocksetDocument &document, QStringList &results,
        QJsonObject &report, QString &error);

} // namespace CliBsp
