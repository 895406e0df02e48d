#pragma once

class frmMain;

// Opens the cache manager window beside the editor `editor`: the manager brings
// the editor up when asked ("Cubrix Editor", Open) and shares its about box.
// The editor's "Cache Manager" command is connected here too.
void showCacheManager(frmMain &editor);
void connectCacheManager(frmMain &editor);
