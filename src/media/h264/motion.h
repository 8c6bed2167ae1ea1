// Motion vectors of P macroblocks and the prediction that they point to (clause 8.4).
#pragma once

#include "media/h264/sample_routines.h"
#include "media/h264/slice_context.h"

namespace h264 {

// Predicts all samples of an inter macroblock: derives its vectors from the syntax and the neighbours, fills
// the record's vectors and references, and interpolates. False for a vector out of range or a reference that
// is not there.
bool PredictInter(const SliceContext& slice, const MacroblockContext& context,
                  const SampleRoutines& routines);

// A block of a picture in quarter luma samples off its own place; what lies outside repeats the border.
// `x`, `y`, `width`, `height` are luma samples.
struct InterBlock {
    u32 x, y, width, height;
    MotionVector mv;
};
void InterpolateBlock(const u8* reference, const Image& target, const InterBlock& block,
                      const SampleRoutines& routines);

} // namespace h264
