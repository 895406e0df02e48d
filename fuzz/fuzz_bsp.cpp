// BSP trees of block files: the file without its tree, and for a block Rover
// reads, the tree built and written into the file, which must then read back
// as built with a tree that holds Rover's rule.
#include "FuzzSupport.h"
#include "items/BlockFileRewrite.h"
#include "items/BspBuilder.h"
#include "rover/RoverBlockReader.h"

CUBRIX_FUZZ_ENTRY(fuzzBsp)
{
    const QByteArray bytes = fuzzBytes(data, size);
    (void)withoutBspTree(bytes);
    const RoverBlockFile read = readRoverBlock(bytes);
    if (hasRoverError(read.findings))
        return 0;
    const BspBuild build = buildBspTree(read.block);
    QString problem;
    if (build.built() && !writeBspTree(bytes, build, problem)) {
        std::fprintf(stderr, "the tree was not written: %s\n", qPrintable(problem));
        std::abort();
    }
    return 0;
}
