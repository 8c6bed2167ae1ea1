// Intra prediction of samples (clause 8.3): a block is extrapolated from its neighbours in the picture.
#pragma once

#include "media/h264/types.h"

namespace h264 {

// Which neighbouring samples may be predicted from.
struct IntraNeighbours {
    bool left = false;
    bool above = false;
    bool aboveLeft = false;
    bool aboveRight = false; // of 4x4 blocks only
};

enum class Intra4x4PredMode : u8 { // Table 8-2
    Vertical = 0,
    Horizontal = 1,
    Dc = 2,
    DiagonalDownLeft = 3,
    DiagonalDownRight = 4,
    VerticalRight = 5,
    HorizontalDown = 6,
    VerticalLeft = 7,
    HorizontalUp = 8
};
enum class Intra16x16PredMode : u8 { Vertical = 0, Horizontal = 1, Dc = 2, Plane = 3 };  // Table 8-4
enum class IntraChromaPredMode : u8 { Dc = 0, Horizontal = 1, Vertical = 2, Plane = 3 }; // Table 8-5

// Each predicts the block at `dst` from the samples around it. False, and nothing written, when the mode
// needs a neighbour that is not there.
bool PredictIntra4x4(u8* dst, ptrdiff_t stride, Intra4x4PredMode mode, const IntraNeighbours& neighbours);
bool PredictIntra16x16(u8* dst, ptrdiff_t stride, Intra16x16PredMode mode, const IntraNeighbours& neighbours);
bool PredictIntraChroma(u8* dst, ptrdiff_t stride, IntraChromaPredMode mode,
                        const IntraNeighbours& neighbours);

} // namespace h264
