// Picture order count (clause 8.2.1): where a picture stands in output order.
#pragma once

#include "media/h264/slice_header.h"

namespace h264 {

class PicOrderCounter {
public:
    // PicOrderCnt of a finished picture, the smaller of its two fields, and the step to the next picture.
    i32 Advance(const SeqParamSet& sps, const SliceHeader& header, const NalUnit& nalUnit);
    void Reset() { *this = PicOrderCounter{}; }

private:
    struct Fields {
        i32 top, bottom;
        i32 Smaller() const { return top < bottom ? top : bottom; }
    };
    Fields CountByLsb(const SeqParamSet& sps, const SliceHeader& header, const NalUnit& nalUnit);
    Fields CountByCycle(const SeqParamSet& sps, const SliceHeader& header, const NalUnit& nalUnit) const;
    Fields CountByDecodingOrder(const SliceHeader& header, const NalUnit& nalUnit) const;
    void AdvanceFrameNumOffset(const SeqParamSet& sps, const SliceHeader& header, const NalUnit& nalUnit);

    // All counting is modulo 2^32: a stream may write any number, and only a broken one makes it overflow.
    u32 picOrderCntMsb = 0;     // type 0, of the picture being counted
    u32 prevPicOrderCntMsb = 0; // of the last reference picture
    u32 prevPicOrderCntLsb = 0;
    u32 frameNumOffset = 0; // types 1 and 2; of the last picture until the next is counted
    u32 prevFrameNum = 0;
};

} // namespace h264
