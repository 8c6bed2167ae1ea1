// All that the decoder remembers between NAL units. The memory behind it comes from the pool.
#pragma once

#include "media/h264/dpb.h"
#include "media/h264/picture_order_count.h"
#include "media/h264/slice_context.h"

namespace h264 {

struct Storage {
    // Parameter sets; a slot is allocated when its id first arrives and is overwritten later.
    SeqParamSet* sps[MaxSeqParamSets] = {};
    PicParamSet* pps[MaxPicParamSets] = {};
    u32 activeSpsId = NoSeqParamSet;
    u32 activePpsId = NoPicParamSet;
    bool pendingActivation = false; // chosen, but its memory is not taken yet

    // Memory of the active sequence.
    PictureSize size;
    PoolArray<Macroblock> mbs; // [macroblock address]
    PoolArray<u32> sliceMap;   // [macroblock address], slice group
    Dpb dpb;

    MacroblockSyntax* syntax = nullptr; // the work area

    // The picture being decoded.
    bool pictureOpen = false;     // slices of it have come, and it is not complete
    bool sliceAccepted = false;   // one of them had a good header
    bool pictureComplete = false; // what else comes of it is redundant
    Image currentImage;
    NalUnit nalUnit;        // of the last accepted slice
    SliceHeader headers[2]; // the current slice's, and the one that a new slice is read into
    u32 currentHeader = 0;
    u32 sliceId = 0;       // slices of this picture so far
    u32 numDecodedMbs = 0; // by slices that ended well
    u32 numConcealedMbs = 0;
    u32 lastMbReached = 0; // by the slice, in I slices only
    u32 picId = 0;         // the caller's

    // For the check of access unit boundaries.
    bool anySliceSeen = false;
    PictureIdentity previousSlice;

    PicOrderCounter picOrderCounter;

    SliceHeader& CurrentHeader() { return headers[currentHeader]; }
    SliceHeader& NextHeader() { return headers[1 - currentHeader]; }
    bool HasSequenceMemory() const { return size.Mbs() > 0; }
    const SeqParamSet* ActiveSps() const {
        return activeSpsId < MaxSeqParamSets ? sps[activeSpsId] : nullptr;
    }
    const PicParamSet* ActivePps() const {
        return activePpsId < MaxPicParamSets ? pps[activePpsId] : nullptr;
    }
};

} // namespace h264
