// From a macroblock's syntax to its samples (clause 8.3 to 8.5).
#pragma once

#include "media/h264/sample_routines.h"
#include "media/h264/slice_context.h"

namespace h264 {

// Reconstructs the macroblock in the slice's work area into the picture, and brings its record up to date. A
// macroblock that this picture has already keeps its samples. False when a reference, a vector, a neighbour
// or a residual value is not what the standard allows.
bool ReconstructMacroblock(SliceContext& slice, const MacroblockContext& context,
                           const SampleRoutines& routines);

} // namespace h264
