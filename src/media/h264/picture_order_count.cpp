// The three types of picture order count.
#include "media/h264/picture_order_count.h"

namespace h264 {

i32 PicOrderCounter::Advance(const SeqParamSet& sps, const SliceHeader& header, const NalUnit& nalUnit) {
    AdvanceFrameNumOffset(sps, header, nalUnit);
    Fields fields{};
    if (sps.pic_order_cnt_type == 0)
        fields = CountByLsb(sps, header, nalUnit);
    else if (sps.pic_order_cnt_type == 1)
        fields = CountByCycle(sps, header, nalUnit);
    else
        fields = CountByDecodingOrder(header, nalUnit);

    const bool restarts = nalUnit.IsReference() && header.marking.HasOperation(5);
    if (restarts) { // the picture counts as if it were an IDR picture with frame_num 0 from here
        prevPicOrderCntMsb = 0;
        prevPicOrderCntLsb = static_cast<u32>(fields.top) - static_cast<u32>(fields.Smaller());
        frameNumOffset = 0;
        prevFrameNum = 0;
        return 0;
    }
    if (nalUnit.IsReference()) {
        prevPicOrderCntMsb = picOrderCntMsb;
        prevPicOrderCntLsb = header.pic_order_cnt_lsb;
    }
    prevFrameNum = header.frame_num;
    return fields.Smaller();
}

// 8.2.1.2 and 8.2.1.3: FrameNumOffset
void PicOrderCounter::AdvanceFrameNumOffset(const SeqParamSet& sps, const SliceHeader& header,
                                            const NalUnit& nalUnit) {
    if (nalUnit.IsIdr())
        frameNumOffset = 0;
    else if (prevFrameNum > header.frame_num)
        frameNumOffset += sps.MaxFrameNum;
}

// 8.2.1.1
PicOrderCounter::Fields PicOrderCounter::CountByLsb(const SeqParamSet& sps, const SliceHeader& header,
                                                    const NalUnit& nalUnit) {
    if (nalUnit.IsIdr())
        prevPicOrderCntMsb = prevPicOrderCntLsb = 0;
    const u32 lsb = header.pic_order_cnt_lsb;
    const u32 half = sps.MaxPicOrderCntLsb / 2;
    picOrderCntMsb = prevPicOrderCntMsb;
    if (lsb < prevPicOrderCntLsb && prevPicOrderCntLsb - lsb >= half)
        picOrderCntMsb += sps.MaxPicOrderCntLsb;
    else if (lsb > prevPicOrderCntLsb && lsb - prevPicOrderCntLsb > half)
        picOrderCntMsb -= sps.MaxPicOrderCntLsb;
    const u32 top = picOrderCntMsb + lsb;
    return {static_cast<i32>(top),
            static_cast<i32>(top + static_cast<u32>(header.delta_pic_order_cnt_bottom))};
}

// 8.2.1.2
PicOrderCounter::Fields PicOrderCounter::CountByCycle(const SeqParamSet& sps, const SliceHeader& header,
                                                      const NalUnit& nalUnit) const {
    const u32 cycle = sps.num_ref_frames_in_pic_order_cnt_cycle;
    u32 absFrameNum = cycle != 0 ? frameNumOffset + header.frame_num : 0;
    if (!nalUnit.IsReference() && absFrameNum > 0)
        --absFrameNum;
    u32 expected = 0;
    if (absFrameNum > 0) {
        u32 expectedDeltaPerPicOrderCntCycle = 0;
        for (u32 i = 0; i < cycle; ++i)
            expectedDeltaPerPicOrderCntCycle += static_cast<u32>(sps.offset_for_ref_frame[i]);
        const u32 picOrderCntCycleCnt = (absFrameNum - 1) / cycle;
        const u32 frameNumInPicOrderCntCycle = (absFrameNum - 1) % cycle;
        expected = picOrderCntCycleCnt * expectedDeltaPerPicOrderCntCycle;
        for (u32 i = 0; i <= frameNumInPicOrderCntCycle; ++i)
            expected += static_cast<u32>(sps.offset_for_ref_frame[i]);
    }
    if (!nalUnit.IsReference())
        expected += static_cast<u32>(sps.offset_for_non_ref_pic);
    const u32 top = expected + static_cast<u32>(header.delta_pic_order_cnt[0]);
    const u32 bottom = top + static_cast<u32>(sps.offset_for_top_to_bottom_field) +
                       static_cast<u32>(header.delta_pic_order_cnt[1]);
    return {static_cast<i32>(top), static_cast<i32>(bottom)};
}

// 8.2.1.3
PicOrderCounter::Fields PicOrderCounter::CountByDecodingOrder(const SliceHeader& header,
                                                              const NalUnit& nalUnit) const {
    if (nalUnit.IsIdr())
        return {0, 0};
    const u32 count = 2 * (frameNumOffset + header.frame_num) - (nalUnit.IsReference() ? 0 : 1);
    return {static_cast<i32>(count), static_cast<i32>(count)};
}

} // namespace h264
