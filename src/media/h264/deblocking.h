// The deblocking filter (clause 8.7), run over a whole picture when all of its macroblocks are there.
#pragma once

#include "media/h264/image.h"
#include "media/h264/macroblock.h"
#include "media/h264/sample_routines.h"

namespace h264 {

// Filters the picture in raster order by what the records say. `mbs` has one record for each macroblock.
void DeblockPicture(const Image& image, const Macroblock* mbs, const SampleRoutines& routines);

} // namespace h264
