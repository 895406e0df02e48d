#pragma once

#include "formats/BlocksetModel.h"
#include "storage/Result.h"

#include <QString>

#include <functional>

class Prompts;
class RegistryWrapper;
class WorkingFolder;

// What reading an unpacked blockset gives the document.
struct BlocksetRead {
    BlocksetContent content;
    QString updateComment;
    // The user agreed to give a differing style file the archive's name: the
    // blockset counts as changed.
    bool styleRenamed = false;
};

// Reads a blockset unpacked into the working folder: the three item lists from
// its folders, the style file named after the archive (or, when the user agrees,
// the first other one, renamed), the name, type and BSP state of every block
// file, and the update file beside the archive. `progress` receives the status
// texts ("Parsing Blockset...").
class BlocksetReader {
public:
    BlocksetReader(Prompts &prompts, RegistryWrapper &settings, const WorkingFolder &folder,
                   std::function<void(const QString &)> progress);

    // `archivePath` is the .bset file; `updatePath` the update file beside it.
    Result read(const QString &archivePath, const QString &updatePath, BlocksetRead &read);

private:
    void fillLists(BlocksetContent &content) const;
    Result findStyle(const QString &baseName, QString &styleFile, bool &renamed);
    Result readStyleFile(const QString &styleFile, const QString &baseName, BlocksetContent &content);
    Result readBlocks(BlocksetContent &content);

    Prompts &m_prompts;
    RegistryWrapper &m_settings;
    const WorkingFolder &m_folder;
    std::function<void(const QString &)> m_progress;
};
