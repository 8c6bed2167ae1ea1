// Writes H.264 byte streams from readable text, one NAL unit or macroblock a line. What the stream shows can
// be worked out by hand: raw macroblocks, skipped ones, whole-macroblock vectors, no residual.
//
//     sps width=2 height=1 refs=2            sizes in macroblocks
//     pps
//     slice idr                              all of KEY=VALUE have defaults, see the .cpp
//       pcm 10 20                            two raw macroblocks, all samples 10 and all 20
//     slice p frame_num=1
//       skip 1
//       move 4,0 ref=0                       P_L0_16x16, vector difference in quarter samples
//
// Macroblock lines: pcm V[/CB/CR][*N]... (V may be A:B:C:D, four stripes side by side), skip N, move X,Y
// [ref=R], i16 MODE (Intra_16x16 without residual), i4 MODE (all blocks of Intra_4x4 with this
// rem_intra4x4_pred_mode), ue N, se N, bits 0101, align. Other lines: nal REF TYPE HEX (any unit with this
// payload), bytes HEX (as they stand), # comment. Numbers are written as they are, legal or not: tests of
// limits depend on it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace h264test {

using Bytes = std::vector<std::uint8_t>;

Bytes WriteStream(const std::string& text);

} // namespace h264test
