// Rover's texture and sound decisions over any bytes: they never crash, never
// loop, and read each byte at most once.
#include "FuzzSupport.h"
#include "rover/RoverMedia.h"

CUBRIX_FUZZ_ENTRY(fuzzMedia)
{
    const QByteArray bytes = fuzzBytes(data, size);
    (void)roverTextureInfo(bytes);
    (void)roverSoundInfo(bytes);
    return 0;
}
