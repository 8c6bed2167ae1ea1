// The slice header of clause 7.3.3 with its two command lists, and the part of it that tells pictures apart
// (7.4.1.2.4).
#pragma once

#include "media/h264/nal_unit.h"
#include "media/h264/parameter_sets.h"

namespace h264 {

// Table 7-6; 5 to 9 say the same for all slices of a picture.
enum class SliceType : u32 { P = 0, B = 1, I = 2, Sp = 3, Si = 4, AllP = 5, AllI = 7 };

constexpr u32 MaxReorderingCommands = MaxRefListEntries;   // with the end command
constexpr u32 MaxMarkingOperations = 2 * MaxRefFrames + 3; // with the end code
constexpr u32 NoLongTermFrameIndices = 65535;              // "no long-term frame indices"

// 7.3.3.1, one command
struct ReorderingCommand {
    u32 reordering_of_pic_nums_idc = 3; // 0..2, 3: end
    u32 abs_diff_pic_num = 0;           // abs_diff_pic_num_minus1 + 1
    u32 long_term_pic_num = 0;
};

struct RefPicListReordering {
    bool ref_pic_list_reordering_flag = false;
    ReorderingCommand commands[MaxReorderingCommands];
};

// 7.3.3.3, one operation
struct MarkingOperation {
    u32 memory_management_control_operation = 0; // 1..6, 0: end
    u32 difference_of_pic_nums = 0;              // difference_of_pic_nums_minus1 + 1
    u32 long_term_pic_num = 0;
    u32 long_term_frame_idx = 0;
    u32 max_long_term_frame_idx = NoLongTermFrameIndices; // max_long_term_frame_idx_plus1 - 1
};

struct DecRefPicMarking {
    bool no_output_of_prior_pics_flag = false;
    bool long_term_reference_flag = false;
    bool adaptive_ref_pic_marking_mode_flag = false;
    MarkingOperation operations[MaxMarkingOperations];

    bool HasOperation(u32 operation) const;
};

struct SliceHeader {
    u32 first_mb_in_slice = 0;
    SliceType slice_type = SliceType::P;
    u32 pic_parameter_set_id = 0;
    u32 frame_num = 0;
    u32 idr_pic_id = 0;
    u32 pic_order_cnt_lsb = 0;
    i32 delta_pic_order_cnt_bottom = 0;
    i32 delta_pic_order_cnt[2] = {};
    u32 redundant_pic_cnt = 0; // 0..127
    bool num_ref_idx_active_override_flag = false;
    u32 num_ref_idx_l0_active = 0; // 1..16 in a P slice
    i32 slice_qp_delta = 0;
    u32 disable_deblocking_filter_idc = 0; // 0..2
    i32 filterOffsetA = 0;                 // -12..12, slice_alpha_c0_offset_div2 * 2
    i32 filterOffsetB = 0;                 // -12..12, slice_beta_offset_div2 * 2
    u32 slice_group_change_cycle = 0;
    RefPicListReordering reordering;
    DecRefPicMarking marking;

    bool IsIntra() const { return slice_type == SliceType::I || slice_type == SliceType::AllI; }
    bool IsPrimary() const { return redundant_pic_cnt == 0; }
};

// The whole header. False when a limit is broken or the data ends early.
bool h264DecodeSliceHeader(BitReader& reader, SliceHeader* header, const SeqParamSet& sps,
                           const PicParamSet& pps, const NalUnit& nalUnit);

// Only pic_parameter_set_id, from the start of a header; false when it cannot be read.
bool PeekPicParamSetId(BitReader reader, u32* id);

// What the first slices of two pictures differ in, 7.4.1.2.4.
struct PictureIdentity {
    u8 nal_ref_idc = 0;
    bool isIdr = false;
    u32 frame_num = 0;
    u32 idr_pic_id = 0;
    u32 pic_order_cnt_lsb = 0;
    i32 delta_pic_order_cnt_bottom = 0;
    i32 delta_pic_order_cnt[2] = {};

    bool SamePicture(const PictureIdentity& other) const;
};

// Reads the head of a slice as far as it identifies the picture; false when it cannot be read.
bool ReadPictureIdentity(BitReader reader, const NalUnit& nalUnit, const SeqParamSet& sps,
                         const PicParamSet& pps, PictureIdentity* identity);

} // namespace h264
