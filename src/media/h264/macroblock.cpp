// The records of a picture and their neighbours (6.4.8, 6.4.9).
#include "media/h264/macroblock.h"

#include <new>

namespace h264 {

void InitMacroblocks(Macroblock* mbs, const PictureSize& size) {
    const u32 width = size.widthInMbs;
    for (u32 i = 0; i < size.Mbs(); ++i) {
        Macroblock& mb = *new (mbs + i) Macroblock;
        const bool left = i % width > 0;
        const bool right = i % width + 1 < width;
        const bool above = i >= width;
        mb.mbA = left ? &mbs[i - 1] : nullptr;
        mb.mbB = above ? &mbs[i - width] : nullptr;
        mb.mbC = above && right ? &mbs[i - width + 1] : nullptr;
        mb.mbD = above && left ? &mbs[i - width - 1] : nullptr;
    }
}

} // namespace h264
