#pragma once

#include <QByteArray>
#include <QByteArrayView>

// The LZW code stream of one GIF frame (without the minimum code size byte and
// the sub-block lengths) for colour indices below 2^minCodeSize, minCodeSize 2
// to 8. The dictionary is started again with a clear code whenever it reaches a
// size limit; each limit from 2^(minCodeSize + 1) to 4096 entries is tried and
// the shortest stream kept. A noisy picture packs smaller with a small
// dictionary, whose codes are narrower, than with the full one that most
// writers fill before they clear it. Every GIF decoder reads clear codes
// wherever they come.
QByteArray packGifCodes(QByteArrayView indices, int minCodeSize);
