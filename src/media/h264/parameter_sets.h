// Sequence and picture parameter sets: the syntax of clauses 7.3.2.1, 7.3.2.2 and Annex E with the limits of
// this decoder. What is parsed lies in a local first; the decoder commits it to its slot when it is whole.
#pragma once

#include "media/h264/bits.h"
#include "media/h264/pool.h"

namespace h264 {

// E.1.1. The schedules of the hypothetical reference decoder are read over and not kept.
struct VuiParameters {
    bool aspect_ratio_info_present_flag = false;
    u8 aspect_ratio_idc = 0;
    u16 sar_width = 0;
    u16 sar_height = 0;
    bool overscan_info_present_flag = false;
    bool overscan_appropriate_flag = false;
    bool video_signal_type_present_flag = false;
    u8 video_format = 5; // 5: unspecified
    bool video_full_range_flag = false;
    bool colour_description_present_flag = false;
    u8 colour_primaries = 2; // 2: unspecified, as in the next two
    u8 transfer_characteristics = 2;
    u8 matrix_coefficients = 2;
    bool chroma_loc_info_present_flag = false;
    u32 chroma_sample_loc_type_top_field = 0;
    u32 chroma_sample_loc_type_bottom_field = 0;
    bool timing_info_present_flag = false;
    u32 num_units_in_tick = 0;
    u32 time_scale = 0;
    bool fixed_frame_rate_flag = false;
    bool nal_hrd_parameters_present_flag = false;
    bool vcl_hrd_parameters_present_flag = false;
    bool low_delay_hrd_flag = false;
    bool pic_struct_present_flag = false;
    bool bitstream_restriction_flag = false;
    bool motion_vectors_over_pic_boundaries_flag = false;
    u32 max_bytes_per_pic_denom = 0;
    u32 max_bits_per_mb_denom = 0;
    u32 log2_max_mv_length_horizontal = 0;
    u32 log2_max_mv_length_vertical = 0;
    u32 num_reorder_frames = 0;
    u32 max_dec_frame_buffering = 0;
};

constexpr u32 MaxPicOrderCntCycle = 255; // num_ref_frames_in_pic_order_cnt_cycle

// The part of a picture that the stream wants shown, in luma samples; even numbers.
struct CropWindow {
    u32 x = 0;
    u32 y = 0;
    u32 width = 0;
    u32 height = 0;
};

// 7.3.2.1.1
struct SeqParamSet {
    u8 profile_idc = 0;
    u8 constraint_set_flags = 0; // constraint_set0_flag is the highest of the eight bits
    u8 level_idc = 0;
    u32 seq_parameter_set_id = 0;                  // 0..31
    u32 MaxFrameNum = 16;                          // 2^4 .. 2^16
    u32 pic_order_cnt_type = 0;                    // 0..2
    u32 MaxPicOrderCntLsb = 16;                    // 2^4 .. 2^16, type 0
    bool delta_pic_order_always_zero_flag = false; // this and the next four: type 1
    i32 offset_for_non_ref_pic = 0;
    i32 offset_for_top_to_bottom_field = 0;
    u32 num_ref_frames_in_pic_order_cnt_cycle = 0; // 0..255
    PoolArray<i32> offset_for_ref_frame;           // [cycle position]
    u32 num_ref_frames = 0;                        // 0..16
    bool gaps_in_frame_num_value_allowed_flag = false;
    u32 picWidthInMbs = 0;
    u32 picHeightInMbs = 0;
    bool direct_8x8_inference_flag = false;
    bool frame_cropping_flag = false;
    u32 frame_crop_left_offset = 0; // these four in units of two luma samples
    u32 frame_crop_right_offset = 0;
    u32 frame_crop_top_offset = 0;
    u32 frame_crop_bottom_offset = 0;
    bool vui_parameters_present_flag = false;
    VuiParameters vui;
    u32 maxDpbSize = 0; // pictures; from the level, the VUI or num_ref_frames

    // The whole picture without frame_cropping_flag.
    CropWindow Crop() const;
    u64 PicSizeInMbs() const { return u64{picWidthInMbs} * picHeightInMbs; }
    // True when pictures leave in decoding order: nothing needs to wait in the picture buffer.
    bool NoReordering() const {
        return pic_order_cnt_type == 2 ||
               (vui_parameters_present_flag && vui.bitstream_restriction_flag && vui.num_reorder_frames == 0);
    }
    // The comparison that decides whether a repeated set changes the active sequence.
    bool SameSequence(const SeqParamSet& other) const;
};

// 7.3.2.2
struct PicParamSet {
    u32 pic_parameter_set_id = 0; // 0..255
    u32 seq_parameter_set_id = 0; // 0..31
    bool pic_order_present_flag = false;
    u32 num_slice_groups = 1;     // 1..8
    u32 slice_group_map_type = 0; // 0..6
    u32 run_length_minus1[MaxSliceGroups] = {};
    u32 top_left[MaxSliceGroups] = {};
    u32 bottom_right[MaxSliceGroups] = {};
    bool slice_group_change_direction_flag = false;
    u32 slice_group_change_rate_minus1 = 0;
    u32 pic_size_in_map_units_minus1 = 0;
    PoolArray<u8> slice_group_id;  // [map unit], type 6
    u32 num_ref_idx_l0_active = 1; // 1..32; a slice refuses more than 16
    u32 num_ref_idx_l1_active = 1;
    u32 weighted_bipred_idc = 0; // 0..2; B slices only, of which there are none
    i32 pic_init_qp = 26;        // 0..51
    i32 pic_init_qs = 26;
    i32 chroma_qp_index_offset = 0; // -12..12
    bool deblocking_filter_control_present_flag = false;
    bool constrained_intra_pred_flag = false;
    bool redundant_pic_cnt_present_flag = false;

    u64 SliceGroupChangeRate() const { return u64{slice_group_change_rate_minus1} + 1; }
    bool HasEvolvingMap() const {
        return num_slice_groups > 1 && slice_group_map_type >= 3 && slice_group_map_type <= 5;
    }
    bool HasExplicitMap() const { return num_slice_groups > 1 && slice_group_map_type == 6; }
    // Do the slice group data fit a picture of this size?
    bool FitsPicture(u32 picWidthInMbs, u64 picSizeInMbs) const;
};

// Reads a set whose cycle goes to `offsetForRefFrame` (room for MaxPicOrderCntCycle); the set's own array
// stays empty. False when a limit is broken or the data ends early.
bool h264DecodeSeqParamSet(BitReader& reader, SeqParamSet* sps, i32* offsetForRefFrame);

// Reads a set. The slice_group_id array is only checked; `sliceGroupIds` is left where it begins, so that it
// can be read by ReadSliceGroupIds once there is room for it.
bool h264DecodePicParamSet(BitReader& reader, PicParamSet* pps, BitReader* sliceGroupIds);
void ReadSliceGroupIds(BitReader reader, const PicParamSet& pps, u8* sliceGroupId);

} // namespace h264
