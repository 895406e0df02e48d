#pragma once

#include <QStringList>

#include <cstdio>

// cubrix-cli cache [--browser ie|netscape] [--json]
// cubrix-cli cache remove|force-download|tag|url NAME [--browser ...] [--no]
// Lists Rover's cache as the cache manager window shows it after it opened, or
// runs one of its commands on the row named NAME (its File Name, or Path and
// File Name joined by "/"). `arguments` are those after "cache".
int runCacheCommand(const QStringList &arguments, std::FILE *out, std::FILE *err);
