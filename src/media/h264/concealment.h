// What the decoder shows in place of macroblocks that did not arrive. The standard leaves this open.
#pragma once

#include "media/h264/image.h"
#include "media/h264/macroblock.h"
#include "media/h264/sample_routines.h"

namespace h264 {

struct Concealment {
    Image image;
    Macroblock* mbs = nullptr;     // one record for each macroblock
    const u8* reference = nullptr; // picture to copy from; null for an intra slice, or when there is none
    const SampleRoutines* routines = nullptr;
};

// Fills every macroblock that was not decoded: from the reference at the same place, or smoothly from the
// sides that are there. With nothing decoded at all the whole picture is the reference, or grey, and is not
// deblocked. `isIntra` is for the log. Returns how many macroblocks were filled.
u32 h264Conceal(const Concealment& concealment, bool isIntra);

} // namespace h264
