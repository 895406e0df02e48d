#pragma once

#include <QString>

// The program's version as users see it, e.g. "0.9 Beta 1": the welcome text,
// the About box, the application version and the generator line of a saved
// style all show this one string.
QString programVersion();
