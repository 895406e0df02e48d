// Rover's texture and sound decisions and Shrink's rewrites over any bytes:
// they never crash or loop, and a rewrite they keep is one Rover reads.
#include "FuzzSupport.h"
#include "rover/RoverMedia.h"
#include "shrink/GifColours.h"
#include "shrink/GifShrink.h"
#include "shrink/JpegShrink.h"
#include "shrink/SoundConvert.h"
#include "shrink/TextureScale.h"

CUBRIX_FUZZ_ENTRY(fuzzMedia)
{
    const QByteArray bytes = fuzzBytes(data, size);
    const RoverTextureInfo texture = roverTextureInfo(bytes);
    (void)roverSoundInfo(bytes);
    for (const ShrinkResult &result : {optimizeJpeg(bytes), optimizeGif(bytes), reduceGifColours(bytes, 4),
                                       scaleTexture(bytes, 16, 50), reencodeJpeg(bytes, 30)}) {
        if (result.changed && texture.status == RoverTextureInfo::Usable
            && roverTextureInfo(result.bytes).status != RoverTextureInfo::Usable)
            std::abort();
    }
    const ShrinkResult sound = convertSound(bytes, {true, 11025, 8});
    if (sound.changed && !roverSoundInfo(sound.bytes).usable)
        std::abort();
    return 0;
}
