// The macroblock to slice group map of clause 8.2.2, for frames only: map units are macroblocks.
#pragma once

#include "media/h264/parameter_sets.h"

namespace h264 {

// Fills one entry for each macroblock of the picture, in raster order, with its slice group. The set must fit
// the picture (PicParamSet::FitsPicture). `slice_group_change_cycle` matters for the map types 3 to 5.
void BuildSliceMap(const PicParamSet& pps, u32 picWidthInMbs, u32 picHeightInMbs,
                   u32 slice_group_change_cycle, u32* sliceMap);

} // namespace h264
