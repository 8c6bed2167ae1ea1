// macroblock_layer() of clause 7.3.5: from bits to MacroblockSyntax.
#pragma once

#include "media/h264/bits.h"
#include "media/h264/slice_context.h"

namespace h264 {

// Reads one macroblock that is not skipped into the slice's work area, coefficients already scaled, and
// brings the running QP up to date. False when a limit is broken, a code is not in its table, or the data
// ends.
bool DecodeMacroblockLayer(BitReader& reader, SliceContext& slice, const MacroblockContext& context);

// Fills the work area as for P_Skip.
void SetSkippedMacroblock(MacroblockSyntax* syntax);

} // namespace h264
