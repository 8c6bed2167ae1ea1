// What the stages of macroblock decoding share: the slice, and the place of the macroblock within it.
#pragma once

#include "media/h264/image.h"
#include "media/h264/macroblock.h"
#include "media/h264/slice_header.h"

namespace h264 {

// A picture that P macroblocks predict from.
struct ReferencePicture {
    const u8* data = nullptr; // null: the list entry is empty or its picture does not exist
    u8 bufferId = 0;          // tells pictures apart, for the deblocking
};

struct SliceContext {
    const PicParamSet* pps = nullptr;
    const SliceHeader* header = nullptr;
    MacroblockSyntax* syntax = nullptr; // the work area
    Image image;                        // the picture being decoded
    ReferencePicture references[MaxRefListEntries];
    u32 sliceId = 0;
    i32 qpY = 0; // the running QP, QP_Y,PRED of the next macroblock

    bool ConstrainedIntraPred() const { return pps->constrained_intra_pred_flag; }
};

struct MacroblockContext {
    Macroblock* mb = nullptr;
    // Neighbours that belong to the same slice (6.4.8), otherwise null.
    const Macroblock* a = nullptr;
    const Macroblock* b = nullptr;
    const Macroblock* c = nullptr;
    const Macroblock* d = nullptr;
    u32 mbX = 0; // in macroblocks
    u32 mbY = 0;

    // Steps onto `macroblock` at (x, y), whose record carries the slice id already.
    void Enter(Macroblock* macroblock, u32 x, u32 y) {
        mb = macroblock;
        mbX = x;
        mbY = y;
        a = OfSlice(mb->mbA);
        b = OfSlice(mb->mbB);
        c = OfSlice(mb->mbC);
        d = OfSlice(mb->mbD);
    }

private:
    const Macroblock* OfSlice(const Macroblock* neighbour) const {
        return neighbour != nullptr && neighbour->sliceId == mb->sliceId ? neighbour : nullptr;
    }
};

} // namespace h264
