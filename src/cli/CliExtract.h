#pragma once

#include <QString>
#include <QStringList>

#include <cstdio>

// cubrix-cli extract FILE.bset NAME... --to DIR [--overwrite]
// Copies the named items (a block, texture or sound file name in any case, or
// its path in the archive: "textures/brick.gif") out of a blockset into DIR. A
// file of that name in DIR is replaced only with --overwrite; without it the
// command names the file and exits 1, having written nothing. The archive is read
// directly: no working folder, no settings. `arguments` are those after "extract".
namespace CliExtract {

int run(const QStringList &arguments, std::FILE *out, std::FILE *err);

QString usageLines();
QString helpLines();

} // namespace CliExtract
