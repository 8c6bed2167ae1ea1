// Parsing of slice headers. Sections: reference list commands, marking commands, the header proper, picture
// identity.
#include "media/h264/slice_header.h"

#include <algorithm>

#include "foundation/log.h"

namespace h264 {

namespace {

constexpr const char* HeaderTag = "Ch264VideoDecoder::h264DecodeSliceHeader";
constexpr const char* ReorderingTag = "Ch264VideoDecoder::RefPicListReordering";
constexpr const char* MarkingTag = "Ch264VideoDecoder::h264DecRefPicMarking";

constexpr u32 MaxIdrPicId = 65535;
constexpr u32 MaxRedundantPicCnt = 127;
constexpr u32 MaxDisableDeblockingFilterIdc = 2;
constexpr i32 MaxFilterOffsetDiv2 = 6;

// Names the field that broke a limit, unless what was read stands in for data that ended early.
bool Refuse(const BitReader& reader, const char* tag, const char* field) {
    if (!reader.Failed())
        Log(LogError, tag, "%s", field);
    return false;
}

u32 FrameNumBits(const SeqParamSet& sps) {
    return static_cast<u32>(std::countr_zero(sps.MaxFrameNum));
}

u32 PicOrderCntLsbBits(const SeqParamSet& sps) {
    return static_cast<u32>(std::countr_zero(sps.MaxPicOrderCntLsb));
}

// ---- Reference list commands ----

constexpr u32 EndOfReordering = 3;

bool ReadReorderingCommand(BitReader& reader, ReorderingCommand* command, u32 MaxFrameNum) {
    command->reordering_of_pic_nums_idc = reader.ReadUe();
    if (command->reordering_of_pic_nums_idc > EndOfReordering)
        return Refuse(reader, ReorderingTag, "reordering_of_pic_nums_idc");
    if (command->reordering_of_pic_nums_idc == 2) {
        command->long_term_pic_num = reader.ReadUe();
    } else if (command->reordering_of_pic_nums_idc < 2) {
        const u32 abs_diff_pic_num_minus1 = reader.ReadUe();
        if (abs_diff_pic_num_minus1 >= MaxFrameNum)
            return Refuse(reader, ReorderingTag, "abs_diff_pic_num_minus1");
        command->abs_diff_pic_num = abs_diff_pic_num_minus1 + 1;
    }
    return !reader.Failed();
}

// 7.3.3.1 ref_pic_list_reordering()
bool ReadReordering(BitReader& reader, RefPicListReordering* reordering, u32 numActive, u32 MaxFrameNum) {
    reordering->ref_pic_list_reordering_flag = reader.ReadFlag();
    if (!reordering->ref_pic_list_reordering_flag)
        return true;
    for (u32 i = 0;; ++i) {
        if (i > numActive)
            return Refuse(reader, ReorderingTag, "Too many reordering commands");
        ReorderingCommand& command = reordering->commands[i];
        if (!ReadReorderingCommand(reader, &command, MaxFrameNum))
            return false;
        if (command.reordering_of_pic_nums_idc == EndOfReordering)
            return i > 0 || Refuse(reader, ReorderingTag, "ref_pic_list_reordering");
    }
}

// ---- Marking commands ----

bool ReadMarkingOperation(BitReader& reader, MarkingOperation* operation, u32 num_ref_frames) {
    const u32 code = operation->memory_management_control_operation = reader.ReadUe();
    if (code > 6)
        return Refuse(reader, MarkingTag, "memory_management_control_operation");
    if (code == 1 || code == 3)
        operation->difference_of_pic_nums = reader.ReadUe() + 1;
    if (code == 2)
        operation->long_term_pic_num = reader.ReadUe();
    if (code == 3 || code == 6)
        operation->long_term_frame_idx = reader.ReadUe();
    if (code == 4) {
        const u32 max_long_term_frame_idx_plus1 = reader.ReadUe();
        if (max_long_term_frame_idx_plus1 > num_ref_frames)
            return Refuse(reader, MarkingTag, "max_long_term_frame_idx_plus1");
        operation->max_long_term_frame_idx =
            max_long_term_frame_idx_plus1 == 0 ? NoLongTermFrameIndices : max_long_term_frame_idx_plus1 - 1;
    }
    return !reader.Failed();
}

// 4, 5 and 6 may stand once each; 5 takes all marks away, so that 1, 2 and 3 beside it contradict it.
bool OperationsAgree(const u32 (&count)[7]) {
    const bool selective = count[1] + count[2] + count[3] > 0;
    return count[4] <= 1 && count[5] <= 1 && count[6] <= 1 && !(count[5] > 0 && selective);
}

bool ReadMarkingOperations(BitReader& reader, DecRefPicMarking* marking, u32 num_ref_frames) {
    u32 count[7] = {}; // [memory_management_control_operation]
    for (u32 i = 0;; ++i) {
        if (i >= 2 * num_ref_frames + 3)
            return Refuse(reader, MarkingTag, "Too many management operations");
        MarkingOperation& operation = marking->operations[i];
        if (!ReadMarkingOperation(reader, &operation, num_ref_frames))
            return false;
        ++count[operation.memory_management_control_operation];
        if (operation.memory_management_control_operation == 0)
            return OperationsAgree(count);
    }
}

// 7.3.3.3 dec_ref_pic_marking()
bool ReadMarking(BitReader& reader, DecRefPicMarking* marking, const NalUnit& nalUnit, u32 num_ref_frames) {
    if (nalUnit.IsIdr()) {
        marking->no_output_of_prior_pics_flag = reader.ReadFlag();
        marking->long_term_reference_flag = reader.ReadFlag();
        if (marking->long_term_reference_flag && num_ref_frames == 0)
            return Refuse(reader, MarkingTag, "long_term_reference_flag");
        return true;
    }
    marking->adaptive_ref_pic_marking_mode_flag = reader.ReadFlag();
    return !marking->adaptive_ref_pic_marking_mode_flag ||
           ReadMarkingOperations(reader, marking, num_ref_frames);
}

// ---- The header ----

bool SliceTypeAllowed(u32 type, const NalUnit& nalUnit, const SeqParamSet& sps) {
    switch (static_cast<SliceType>(type)) {
    case SliceType::I:
    case SliceType::AllI:
        return true;
    case SliceType::P:
    case SliceType::AllP:
        return !nalUnit.IsIdr() && sps.num_ref_frames > 0;
    default:
        return false; // B, SP, SI
    }
}

bool ReadHead(BitReader& reader, SliceHeader* header, const SeqParamSet& sps, const PicParamSet& pps,
              const NalUnit& nalUnit) {
    header->first_mb_in_slice = reader.ReadUe();
    if (header->first_mb_in_slice >= sps.PicSizeInMbs())
        return Refuse(reader, HeaderTag, "first_mb_in_slice");
    const u32 slice_type = reader.ReadUe();
    if (!SliceTypeAllowed(slice_type, nalUnit, sps))
        return Refuse(reader, HeaderTag, "slice_type");
    header->slice_type = static_cast<SliceType>(slice_type);
    header->pic_parameter_set_id = reader.ReadUe();
    if (header->pic_parameter_set_id != pps.pic_parameter_set_id)
        return Refuse(reader, HeaderTag, "pic_parameter_set_id");
    header->frame_num = reader.ReadBits(FrameNumBits(sps));
    if (nalUnit.IsIdr() && header->frame_num != 0)
        return Refuse(reader, HeaderTag, "frame_num");
    if (nalUnit.IsIdr()) {
        header->idr_pic_id = reader.ReadUe();
        if (header->idr_pic_id > MaxIdrPicId)
            return Refuse(reader, HeaderTag, "idr_pic_id");
    }
    return true;
}

// 8.2.1 with all counters at their start: an IDR picture has the picture order count 0.
bool IdrPicOrderCntIsZero(const SliceHeader& header, const SeqParamSet& sps) {
    if (sps.pic_order_cnt_type == 0) {
        const i64 lsb = header.pic_order_cnt_lsb;
        return lsb <= sps.MaxPicOrderCntLsb / 2 &&
               std::min(lsb, lsb + header.delta_pic_order_cnt_bottom) == 0;
    }
    if (sps.pic_order_cnt_type == 1) {
        const i64 top = header.delta_pic_order_cnt[0];
        const i64 bottom = top + sps.offset_for_top_to_bottom_field + header.delta_pic_order_cnt[1];
        return std::min(top, bottom) == 0;
    }
    return true;
}

bool ReadPicOrderCnt(BitReader& reader, SliceHeader* header, const SeqParamSet& sps, const PicParamSet& pps,
                     const NalUnit& nalUnit) {
    if (sps.pic_order_cnt_type == 0) {
        header->pic_order_cnt_lsb = reader.ReadBits(PicOrderCntLsbBits(sps));
        if (pps.pic_order_present_flag)
            header->delta_pic_order_cnt_bottom = reader.ReadSe();
    } else if (sps.pic_order_cnt_type == 1 && !sps.delta_pic_order_always_zero_flag) {
        header->delta_pic_order_cnt[0] = reader.ReadSe();
        if (pps.pic_order_present_flag)
            header->delta_pic_order_cnt[1] = reader.ReadSe();
    }
    return !nalUnit.IsIdr() || IdrPicOrderCntIsZero(*header, sps);
}

bool ReadRedundantPicCnt(BitReader& reader, SliceHeader* header, const PicParamSet& pps) {
    if (!pps.redundant_pic_cnt_present_flag)
        return true;
    header->redundant_pic_cnt = reader.ReadUe();
    return header->redundant_pic_cnt <= MaxRedundantPicCnt || Refuse(reader, HeaderTag, "redundant_pic_cnt");
}

bool ReadActiveReferences(BitReader& reader, SliceHeader* header, const PicParamSet& pps) {
    if (header->IsIntra())
        return true;
    header->num_ref_idx_active_override_flag = reader.ReadFlag();
    if (!header->num_ref_idx_active_override_flag) {
        header->num_ref_idx_l0_active = pps.num_ref_idx_l0_active;
        return header->num_ref_idx_l0_active <= MaxRefFrames ||
               Refuse(reader, HeaderTag, "num_ref_idx_active_override_flag");
    }
    const u32 num_ref_idx_l0_active_minus1 = reader.ReadUe();
    if (num_ref_idx_l0_active_minus1 >= MaxRefFrames)
        return Refuse(reader, HeaderTag, "num_ref_idx_l0_active_minus1");
    header->num_ref_idx_l0_active = num_ref_idx_l0_active_minus1 + 1;
    return true;
}

bool ReadFilterOffset(BitReader& reader, i32* offset, const char* field) {
    const i32 div2 = reader.ReadSe();
    if (div2 < -MaxFilterOffsetDiv2 || div2 > MaxFilterOffsetDiv2)
        return Refuse(reader, HeaderTag, field);
    *offset = div2 * 2;
    return true;
}

bool ReadQuantizerAndFilter(BitReader& reader, SliceHeader* header, const PicParamSet& pps) {
    header->slice_qp_delta = reader.ReadSe();
    const i64 qp = i64{pps.pic_init_qp} + header->slice_qp_delta;
    if (qp < 0 || qp > MaxQp)
        return Refuse(reader, HeaderTag, "slice_qp_delta");
    if (!pps.deblocking_filter_control_present_flag)
        return true;
    header->disable_deblocking_filter_idc = reader.ReadUe();
    if (header->disable_deblocking_filter_idc > MaxDisableDeblockingFilterIdc)
        return Refuse(reader, HeaderTag, "disable_deblocking_filter_idc");
    return header->disable_deblocking_filter_idc == 1 ||
           (ReadFilterOffset(reader, &header->filterOffsetA, "slice_alpha_c0_offset_div2") &&
            ReadFilterOffset(reader, &header->filterOffsetB, "slice_beta_offset_div2"));
}

// 7.4.3: Ceil(Log2(PicSizeInMapUnits / SliceGroupChangeRate + 1)) bits, the division exact.
bool ReadSliceGroupChangeCycle(BitReader& reader, SliceHeader* header, const SeqParamSet& sps,
                               const PicParamSet& pps) {
    if (!pps.HasEvolvingMap())
        return true;
    const u64 rate = pps.SliceGroupChangeRate();
    const u64 cycles = (sps.PicSizeInMbs() + rate - 1) / rate;
    header->slice_group_change_cycle = reader.ReadBits(static_cast<u32>(std::bit_width(cycles)));
    return header->slice_group_change_cycle <= cycles ||
           Refuse(reader, HeaderTag, "slice_group_change_cycle");
}

} // namespace

bool h264DecodeSliceHeader(BitReader& reader, SliceHeader* header, const SeqParamSet& sps,
                           const PicParamSet& pps, const NalUnit& nalUnit) {
    *header = SliceHeader{};
    if (!ReadHead(reader, header, sps, pps, nalUnit) || !ReadPicOrderCnt(reader, header, sps, pps, nalUnit) ||
        !ReadRedundantPicCnt(reader, header, pps) || !ReadActiveReferences(reader, header, pps))
        return false;
    if (!header->IsIntra() &&
        !ReadReordering(reader, &header->reordering, header->num_ref_idx_l0_active, sps.MaxFrameNum))
        return false;
    if (nalUnit.IsReference() && !ReadMarking(reader, &header->marking, nalUnit, sps.num_ref_frames))
        return false;
    return ReadQuantizerAndFilter(reader, header, pps) &&
           ReadSliceGroupChangeCycle(reader, header, sps, pps) && !reader.Failed();
}

bool DecRefPicMarking::HasOperation(u32 operation) const {
    if (!adaptive_ref_pic_marking_mode_flag)
        return false;
    for (const MarkingOperation& entry : operations) {
        if (entry.memory_management_control_operation == operation)
            return true;
        if (entry.memory_management_control_operation == 0)
            return false;
    }
    return false;
}

bool PeekPicParamSetId(BitReader reader, u32* id) {
    reader.ReadUe(); // first_mb_in_slice
    reader.ReadUe(); // slice_type
    *id = reader.ReadUe();
    return !reader.Failed();
}

// ---- Picture identity ----

bool ReadPictureIdentity(BitReader reader, const NalUnit& nalUnit, const SeqParamSet& sps,
                         const PicParamSet& pps, PictureIdentity* identity) {
    *identity = PictureIdentity{};
    identity->nal_ref_idc = nalUnit.nal_ref_idc;
    identity->isIdr = nalUnit.IsIdr();
    reader.ReadUe(); // first_mb_in_slice
    reader.ReadUe(); // slice_type
    reader.ReadUe(); // pic_parameter_set_id
    identity->frame_num = reader.ReadBits(FrameNumBits(sps));
    if (nalUnit.IsIdr())
        identity->idr_pic_id = reader.ReadUe();
    if (sps.pic_order_cnt_type == 0) {
        identity->pic_order_cnt_lsb = reader.ReadBits(PicOrderCntLsbBits(sps));
        if (pps.pic_order_present_flag)
            identity->delta_pic_order_cnt_bottom = reader.ReadSe();
    } else if (sps.pic_order_cnt_type == 1 && !sps.delta_pic_order_always_zero_flag) {
        identity->delta_pic_order_cnt[0] = reader.ReadSe();
        if (pps.pic_order_present_flag)
            identity->delta_pic_order_cnt[1] = reader.ReadSe();
    }
    return !reader.Failed();
}

// The fields that a type of picture order count does not use are 0 on both sides.
bool PictureIdentity::SamePicture(const PictureIdentity& other) const {
    const bool sameReference =
        nal_ref_idc == other.nal_ref_idc || (nal_ref_idc != 0 && other.nal_ref_idc != 0);
    return sameReference && isIdr == other.isIdr && frame_num == other.frame_num &&
           idr_pic_id == other.idr_pic_id && pic_order_cnt_lsb == other.pic_order_cnt_lsb &&
           delta_pic_order_cnt_bottom == other.delta_pic_order_cnt_bottom &&
           delta_pic_order_cnt[0] == other.delta_pic_order_cnt[0] &&
           delta_pic_order_cnt[1] == other.delta_pic_order_cnt[1];
}

} // namespace h264
