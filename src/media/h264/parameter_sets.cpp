// Parsing of parameter sets. Sections: sequence parameter set (level, cropping, VUI), picture parameter set
// (slice groups), comparison.
#include "media/h264/parameter_sets.h"

#include <algorithm>
#include <iterator>

#include "foundation/log.h"

namespace h264 {

namespace {

constexpr const char* SpsTag = "Ch264VideoDecoder::h264DecodeSeqParamSet";
constexpr const char* PpsTag = "Ch264VideoDecoder::h264DecodePicParamSet";

constexpr u32 BaselineProfile = 66;
constexpr u32 MaxLog2Minus4 = 12; // of log2_max_frame_num_minus4 and log2_max_pic_order_cnt_lsb_minus4
constexpr u32 MaxCpbCount = 32;   // cpb_cnt_minus1 is 0..31, E.2.2
constexpr u32 ExtendedSar = 255;  // Table E-1

// Names the field that broke a limit, unless what was read stands in for data that ended early.
bool Refuse(const BitReader& reader, const char* tag, const char* field) {
    if (!reader.Failed())
        Log(LogError, tag, "%s", field);
    return false;
}

// ---- Sequence parameter set ----

// Table A-1: what a level allows.
struct LevelLimits {
    u8 level_idc;
    u32 maxFrameSizeInMbs; // MaxFS
    u32 maxDpbBytes;       // MaxDPB
};

constexpr LevelLimits Levels[] = {
    {10, 99, 152064},     {11, 396, 345600},     {12, 396, 912384},     {13, 396, 912384},
    {20, 396, 912384},    {21, 792, 1824768},    {22, 1620, 3110400},   {30, 1620, 3110400},
    {31, 3600, 6912000},  {32, 5120, 7864320},   {40, 8192, 12582912},  {41, 8192, 12582912},
    {42, 8704, 13369344}, {50, 22080, 42393600}, {51, 36864, 70778880},
};

// MaxDpbSize of A.3.1 in pictures, or 0 when the level is unknown or too small for the picture.
u32 DpbSizeOfLevel(const SeqParamSet& sps) {
    for (const LevelLimits& level : Levels) {
        if (level.level_idc != sps.level_idc)
            continue;
        if (sps.PicSizeInMbs() > level.maxFrameSizeInMbs)
            return 0;
        const u64 pictures = level.maxDpbBytes / (sps.PicSizeInMbs() * SamplesPerMb);
        return static_cast<u32>(std::min<u64>(pictures, MaxRefFrames));
    }
    return 0;
}

void SizePictureBuffer(SeqParamSet* sps) {
    sps->maxDpbSize = DpbSizeOfLevel(*sps);
    if (sps->maxDpbSize != 0 && sps->num_ref_frames <= sps->maxDpbSize)
        return;
    Log(LogEvent, SpsTag, "WARNING! Invalid DPB size based on SPS Level!");
    Log(LogEvent, SpsTag, "WARNING! Using num_ref_frames =%d for DPB size!",
        static_cast<int>(sps->num_ref_frames));
    sps->maxDpbSize = sps->num_ref_frames;
}

// Profiles whose sets carry the block about chroma format, bit depth and scaling (7.3.2.1.1).
bool HasHighProfileSyntax(u32 profile_idc) {
    constexpr u8 Profiles[] = {44, 83, 86, 100, 110, 118, 122, 128, 134, 135, 138, 139, 244};
    return std::find(std::begin(Profiles), std::end(Profiles), profile_idc) != std::end(Profiles);
}

// Such a stream may still keep to the baseline tools: 4:2:0, 8 bits, flat scaling.
bool ReadHighProfileBlock(BitReader& reader) {
    if (reader.ReadUe() != 1)
        return Refuse(reader, SpsTag, "chroma_format_idc");
    if (reader.ReadUe() != 0)
        return Refuse(reader, SpsTag, "bit_depth_luma_minus8");
    if (reader.ReadUe() != 0)
        return Refuse(reader, SpsTag, "bit_depth_chroma_minus8");
    if (reader.ReadFlag())
        return Refuse(reader, SpsTag, "qpprime_y_zero_transform_bypass_flag");
    if (reader.ReadFlag())
        return Refuse(reader, SpsTag, "seq_scaling_matrix_present_flag");
    return true;
}

bool ReadPicOrderCntCycle(BitReader& reader, SeqParamSet* sps, i32* offsetForRefFrame) {
    sps->delta_pic_order_always_zero_flag = reader.ReadFlag();
    sps->offset_for_non_ref_pic = reader.ReadSe();
    sps->offset_for_top_to_bottom_field = reader.ReadSe();
    sps->num_ref_frames_in_pic_order_cnt_cycle = reader.ReadUe();
    if (sps->num_ref_frames_in_pic_order_cnt_cycle > MaxPicOrderCntCycle)
        return Refuse(reader, SpsTag, "num_ref_frames_in_pic_order_cnt_cycle");
    for (u32 i = 0; i < sps->num_ref_frames_in_pic_order_cnt_cycle; ++i)
        offsetForRefFrame[i] = reader.ReadSe();
    return true;
}

bool ReadPicOrderCntSyntax(BitReader& reader, SeqParamSet* sps, i32* offsetForRefFrame) {
    sps->pic_order_cnt_type = reader.ReadUe();
    if (sps->pic_order_cnt_type > 2)
        return Refuse(reader, SpsTag, "pic_order_cnt_type");
    if (sps->pic_order_cnt_type == 1)
        return ReadPicOrderCntCycle(reader, sps, offsetForRefFrame);
    if (sps->pic_order_cnt_type == 0) {
        const u32 log2_max_pic_order_cnt_lsb_minus4 = reader.ReadUe();
        if (log2_max_pic_order_cnt_lsb_minus4 > MaxLog2Minus4)
            return Refuse(reader, SpsTag, "log2_max_pic_order_cnt_lsb_minus4");
        sps->MaxPicOrderCntLsb = 16u << log2_max_pic_order_cnt_lsb_minus4;
    }
    return true;
}

constexpr u32 CropUnit = 2; // luma samples; 4:2:0, frames only

// One direction of the crop must leave at least one sample pair.
bool CropFits(u32 first, u32 second, u32 sizeInMbs) {
    constexpr u64 CropUnitsPerMb = MbSize / CropUnit;
    return u64{first} + second + 1 <= CropUnitsPerMb * sizeInMbs;
}

bool ReadCropping(BitReader& reader, SeqParamSet* sps) {
    sps->frame_cropping_flag = reader.ReadFlag();
    if (!sps->frame_cropping_flag)
        return true;
    sps->frame_crop_left_offset = reader.ReadUe();
    sps->frame_crop_right_offset = reader.ReadUe();
    sps->frame_crop_top_offset = reader.ReadUe();
    sps->frame_crop_bottom_offset = reader.ReadUe();
    if (!CropFits(sps->frame_crop_left_offset, sps->frame_crop_right_offset, sps->picWidthInMbs) ||
        !CropFits(sps->frame_crop_top_offset, sps->frame_crop_bottom_offset, sps->picHeightInMbs))
        return Refuse(reader, SpsTag, "frame_cropping");
    return true;
}

// 7.3.2.1.1 has the size less one, so the largest code would wrap; such a picture is far beyond every limit.
u32 ReadSizeInMbs(BitReader& reader) {
    return static_cast<u32>(std::min<u64>(u64{reader.ReadUe()} + 1, UINT32_MAX));
}

bool ReadPictureSyntax(BitReader& reader, SeqParamSet* sps) {
    sps->num_ref_frames = reader.ReadUe();
    if (sps->num_ref_frames > MaxRefFrames)
        return Refuse(reader, SpsTag, "num_ref_frames");
    sps->gaps_in_frame_num_value_allowed_flag = reader.ReadFlag();
    sps->picWidthInMbs = ReadSizeInMbs(reader);
    sps->picHeightInMbs = ReadSizeInMbs(reader);
    const bool frame_mbs_only_flag = reader.ReadFlag();
    if (!frame_mbs_only_flag)
        return Refuse(reader, SpsTag, "frame_mbs_only_flag");
    sps->direct_8x8_inference_flag = reader.ReadFlag();
    return ReadCropping(reader, sps);
}

// E.1.2 hrd_parameters(), read over.
bool SkipHrdParameters(BitReader& reader) {
    const u32 cpb_cnt_minus1 = reader.ReadUe();
    if (cpb_cnt_minus1 >= MaxCpbCount)
        return false;
    reader.Skip(4 + 4); // bit_rate_scale, cpb_size_scale
    for (u32 i = 0; i <= cpb_cnt_minus1; ++i) {
        reader.ReadUe(); // bit_rate_value_minus1
        reader.ReadUe(); // cpb_size_value_minus1
        reader.Skip(1);  // cbr_flag
    }
    reader.Skip(5 + 5 + 5 + 5); // three delay lengths, time_offset_length
    return !reader.Failed();
}

void ReadAspectRatio(BitReader& reader, VuiParameters* vui) {
    vui->aspect_ratio_info_present_flag = reader.ReadFlag();
    if (!vui->aspect_ratio_info_present_flag)
        return;
    vui->aspect_ratio_idc = static_cast<u8>(reader.ReadBits(8));
    if (vui->aspect_ratio_idc == ExtendedSar) {
        vui->sar_width = static_cast<u16>(reader.ReadBits(16));
        vui->sar_height = static_cast<u16>(reader.ReadBits(16));
    }
}

void ReadVideoSignal(BitReader& reader, VuiParameters* vui) {
    vui->overscan_info_present_flag = reader.ReadFlag();
    if (vui->overscan_info_present_flag)
        vui->overscan_appropriate_flag = reader.ReadFlag();
    vui->video_signal_type_present_flag = reader.ReadFlag();
    if (vui->video_signal_type_present_flag) {
        vui->video_format = static_cast<u8>(reader.ReadBits(3));
        vui->video_full_range_flag = reader.ReadFlag();
        vui->colour_description_present_flag = reader.ReadFlag();
        if (vui->colour_description_present_flag) {
            vui->colour_primaries = static_cast<u8>(reader.ReadBits(8));
            vui->transfer_characteristics = static_cast<u8>(reader.ReadBits(8));
            vui->matrix_coefficients = static_cast<u8>(reader.ReadBits(8));
        }
    }
    vui->chroma_loc_info_present_flag = reader.ReadFlag();
    if (vui->chroma_loc_info_present_flag) {
        vui->chroma_sample_loc_type_top_field = reader.ReadUe();
        vui->chroma_sample_loc_type_bottom_field = reader.ReadUe();
    }
}

bool ReadTiming(BitReader& reader, VuiParameters* vui) {
    vui->timing_info_present_flag = reader.ReadFlag();
    if (vui->timing_info_present_flag) {
        vui->num_units_in_tick = reader.ReadBits(32);
        vui->time_scale = reader.ReadBits(32);
        vui->fixed_frame_rate_flag = reader.ReadFlag();
    }
    vui->nal_hrd_parameters_present_flag = reader.ReadFlag();
    if (vui->nal_hrd_parameters_present_flag && !SkipHrdParameters(reader))
        return false;
    vui->vcl_hrd_parameters_present_flag = reader.ReadFlag();
    if (vui->vcl_hrd_parameters_present_flag && !SkipHrdParameters(reader))
        return false;
    if (vui->nal_hrd_parameters_present_flag || vui->vcl_hrd_parameters_present_flag)
        vui->low_delay_hrd_flag = reader.ReadFlag();
    return true;
}

void ReadBitstreamRestriction(BitReader& reader, VuiParameters* vui) {
    vui->pic_struct_present_flag = reader.ReadFlag();
    vui->bitstream_restriction_flag = reader.ReadFlag();
    if (!vui->bitstream_restriction_flag)
        return;
    vui->motion_vectors_over_pic_boundaries_flag = reader.ReadFlag();
    vui->max_bytes_per_pic_denom = reader.ReadUe();
    vui->max_bits_per_mb_denom = reader.ReadUe();
    vui->log2_max_mv_length_horizontal = reader.ReadUe();
    vui->log2_max_mv_length_vertical = reader.ReadUe();
    vui->num_reorder_frames = reader.ReadUe();
    vui->max_dec_frame_buffering = reader.ReadUe();
}

// E.1.1 vui_parameters()
bool ReadVui(BitReader& reader, VuiParameters* vui) {
    ReadAspectRatio(reader, vui);
    ReadVideoSignal(reader, vui);
    if (!ReadTiming(reader, vui))
        return false;
    ReadBitstreamRestriction(reader, vui);
    return !reader.Failed();
}

// The stream's own word on how many pictures it keeps replaces that of the level.
bool ApplyBitstreamRestriction(SeqParamSet* sps) {
    const VuiParameters& vui = sps->vui;
    if (!vui.bitstream_restriction_flag)
        return true;
    if (vui.max_dec_frame_buffering < vui.num_reorder_frames ||
        vui.max_dec_frame_buffering < sps->num_ref_frames || vui.max_dec_frame_buffering > sps->maxDpbSize)
        return false;
    sps->maxDpbSize = std::max<u32>(vui.max_dec_frame_buffering, 1);
    return true;
}

bool ReadSequenceHead(BitReader& reader, SeqParamSet* sps) {
    sps->profile_idc = static_cast<u8>(reader.ReadBits(8));
    if (sps->profile_idc != BaselineProfile)
        Log(LogEvent, SpsTag, "NOT BASELINE PROFILE %d", static_cast<int>(sps->profile_idc));
    sps->constraint_set_flags = static_cast<u8>(reader.ReadBits(8));
    sps->level_idc = static_cast<u8>(reader.ReadBits(8));
    sps->seq_parameter_set_id = reader.ReadUe();
    if (sps->seq_parameter_set_id >= MaxSeqParamSets)
        return Refuse(reader, SpsTag, "seq_param_set_id");
    if (HasHighProfileSyntax(sps->profile_idc) && !ReadHighProfileBlock(reader))
        return false;
    const u32 log2_max_frame_num_minus4 = reader.ReadUe();
    if (log2_max_frame_num_minus4 > MaxLog2Minus4)
        return Refuse(reader, SpsTag, "log2_max_frame_num_minus4");
    sps->MaxFrameNum = 16u << log2_max_frame_num_minus4;
    return true;
}

// ---- Picture parameter set ----

u32 SliceGroupIdBits(u32 numSliceGroups) { // Ceil(Log2(num_slice_groups_minus1 + 1))
    return static_cast<u32>(std::bit_width(numSliceGroups - 1));
}

bool ReadExplicitSliceGroups(BitReader& reader, PicParamSet* pps, BitReader* sliceGroupIds) {
    pps->pic_size_in_map_units_minus1 = reader.ReadUe();
    *sliceGroupIds = reader;
    const u32 bits = SliceGroupIdBits(pps->num_slice_groups);
    const u64 mapUnits = u64{pps->pic_size_in_map_units_minus1} + 1;
    if (mapUnits * bits > reader.BitsLeft())
        return false;
    for (u64 i = 0; i < mapUnits; ++i) {
        if (reader.ReadBits(bits) >= pps->num_slice_groups)
            return Refuse(reader, PpsTag, "slice_group_id");
    }
    return true;
}

bool ReadSliceGroups(BitReader& reader, PicParamSet* pps, BitReader* sliceGroupIds) {
    pps->slice_group_map_type = reader.ReadUe();
    if (pps->slice_group_map_type > 6)
        return Refuse(reader, PpsTag, "slice_group_map_type");
    if (pps->slice_group_map_type == 0) {
        for (u32 group = 0; group < pps->num_slice_groups; ++group)
            pps->run_length_minus1[group] = reader.ReadUe();
    } else if (pps->slice_group_map_type == 2) {
        for (u32 group = 0; group + 1 < pps->num_slice_groups; ++group) {
            pps->top_left[group] = reader.ReadUe();
            pps->bottom_right[group] = reader.ReadUe();
        }
    } else if (pps->HasEvolvingMap()) {
        pps->slice_group_change_direction_flag = reader.ReadFlag();
        pps->slice_group_change_rate_minus1 = reader.ReadUe();
    } else if (pps->HasExplicitMap()) {
        return ReadExplicitSliceGroups(reader, pps, sliceGroupIds);
    }
    return true;
}

bool ReadReferenceSyntax(BitReader& reader, PicParamSet* pps) {
    constexpr u32 MaxActiveMinus1 = 31;
    const u32 num_ref_idx_l0_active_minus1 = reader.ReadUe();
    if (num_ref_idx_l0_active_minus1 > MaxActiveMinus1)
        return Refuse(reader, PpsTag, "num_ref_idx_l0_active_minus1");
    pps->num_ref_idx_l0_active = num_ref_idx_l0_active_minus1 + 1;
    const u32 num_ref_idx_l1_active_minus1 = reader.ReadUe();
    if (num_ref_idx_l1_active_minus1 > MaxActiveMinus1)
        return Refuse(reader, PpsTag, "num_ref_idx_l1_active_minus1");
    pps->num_ref_idx_l1_active = num_ref_idx_l1_active_minus1 + 1;
    const bool weighted_pred_flag = reader.ReadFlag();
    if (weighted_pred_flag)
        return Refuse(reader, PpsTag, "weighted_pred_flag");
    pps->weighted_bipred_idc = reader.ReadBits(2);
    return pps->weighted_bipred_idc <= 2 || Refuse(reader, PpsTag, "weighted_bipred_idc");
}

// pic_init_qp_minus26 and pic_init_qs_minus26
bool ReadInitialQp(BitReader& reader, i32* qp, const char* field) {
    const i64 value = i64{reader.ReadSe()} + 26;
    if (value < 0 || value > MaxQp)
        return Refuse(reader, PpsTag, field);
    *qp = static_cast<i32>(value);
    return true;
}

bool ReadQuantizerSyntax(BitReader& reader, PicParamSet* pps) {
    if (!ReadInitialQp(reader, &pps->pic_init_qp, "pic_init_qp_minus26") ||
        !ReadInitialQp(reader, &pps->pic_init_qs, "pic_init_qs_minus26"))
        return false;
    pps->chroma_qp_index_offset = reader.ReadSe();
    if (pps->chroma_qp_index_offset < -12 || pps->chroma_qp_index_offset > 12)
        return Refuse(reader, PpsTag, "chroma_qp_index_offset");
    return true;
}

// What the High profiles append. Only its neutral form stays within the tools of this decoder.
bool ReadHighProfileTail(BitReader& reader, const PicParamSet& pps) {
    reader.FindTrailingBits();
    if (!reader.MoreRbspData())
        return true;
    if (reader.ReadFlag())
        return Refuse(reader, PpsTag, "transform_8x8_mode_flag");
    if (reader.ReadFlag())
        return Refuse(reader, PpsTag, "pic_scaling_matrix_present_flag");
    if (reader.ReadSe() != pps.chroma_qp_index_offset)
        return Refuse(reader, PpsTag, "second_chroma_qp_index_offset");
    return true;
}

bool ReadPictureHead(BitReader& reader, PicParamSet* pps) {
    pps->pic_parameter_set_id = reader.ReadUe();
    if (pps->pic_parameter_set_id >= MaxPicParamSets)
        return Refuse(reader, PpsTag, "pic_parameter_set_id");
    pps->seq_parameter_set_id = reader.ReadUe();
    if (pps->seq_parameter_set_id >= MaxSeqParamSets)
        return Refuse(reader, PpsTag, "seq_param_set_id");
    const bool entropy_coding_mode_flag = reader.ReadFlag();
    if (entropy_coding_mode_flag)
        return Refuse(reader, PpsTag, "entropy_coding_mode_flag");
    pps->pic_order_present_flag = reader.ReadFlag();
    const u32 num_slice_groups_minus1 = reader.ReadUe();
    if (num_slice_groups_minus1 >= MaxSliceGroups)
        return Refuse(reader, PpsTag, "num_slice_groups_minus1");
    pps->num_slice_groups = num_slice_groups_minus1 + 1;
    return true;
}

} // namespace

bool h264DecodeSeqParamSet(BitReader& reader, SeqParamSet* sps, i32* offsetForRefFrame) {
    if (!ReadSequenceHead(reader, sps) || !ReadPicOrderCntSyntax(reader, sps, offsetForRefFrame) ||
        !ReadPictureSyntax(reader, sps))
        return false;
    sps->vui_parameters_present_flag = reader.ReadFlag();
    if (reader.Failed())
        return false;
    SizePictureBuffer(sps);
    if (!sps->vui_parameters_present_flag)
        return true;
    return ReadVui(reader, &sps->vui) && ApplyBitstreamRestriction(sps);
}

bool h264DecodePicParamSet(BitReader& reader, PicParamSet* pps, BitReader* sliceGroupIds) {
    if (!ReadPictureHead(reader, pps))
        return false;
    if (pps->num_slice_groups > 1 && !ReadSliceGroups(reader, pps, sliceGroupIds))
        return false;
    if (!ReadReferenceSyntax(reader, pps) || !ReadQuantizerSyntax(reader, pps))
        return false;
    pps->deblocking_filter_control_present_flag = reader.ReadFlag();
    pps->constrained_intra_pred_flag = reader.ReadFlag();
    pps->redundant_pic_cnt_present_flag = reader.ReadFlag();
    return !reader.Failed() && ReadHighProfileTail(reader, *pps);
}

void ReadSliceGroupIds(BitReader reader, const PicParamSet& pps, u8* sliceGroupId) {
    const u32 bits = SliceGroupIdBits(pps.num_slice_groups);
    for (u64 i = 0; i <= pps.pic_size_in_map_units_minus1; ++i)
        sliceGroupId[i] = static_cast<u8>(reader.ReadBits(bits));
}

CropWindow SeqParamSet::Crop() const {
    const u32 width = picWidthInMbs * MbSize;
    const u32 height = picHeightInMbs * MbSize;
    return {frame_crop_left_offset * CropUnit, frame_crop_top_offset * CropUnit,
            width - (frame_crop_left_offset + frame_crop_right_offset) * CropUnit,
            height - (frame_crop_top_offset + frame_crop_bottom_offset) * CropUnit};
}

bool SeqParamSet::SameSequence(const SeqParamSet& other) const {
    if (profile_idc != other.profile_idc || level_idc != other.level_idc ||
        MaxFrameNum != other.MaxFrameNum || pic_order_cnt_type != other.pic_order_cnt_type ||
        num_ref_frames != other.num_ref_frames ||
        gaps_in_frame_num_value_allowed_flag != other.gaps_in_frame_num_value_allowed_flag ||
        picWidthInMbs != other.picWidthInMbs || picHeightInMbs != other.picHeightInMbs ||
        frame_cropping_flag != other.frame_cropping_flag ||
        frame_crop_left_offset != other.frame_crop_left_offset ||
        frame_crop_right_offset != other.frame_crop_right_offset ||
        frame_crop_top_offset != other.frame_crop_top_offset ||
        frame_crop_bottom_offset != other.frame_crop_bottom_offset ||
        vui_parameters_present_flag != other.vui_parameters_present_flag)
        return false;
    if (pic_order_cnt_type == 0)
        return MaxPicOrderCntLsb == other.MaxPicOrderCntLsb;
    if (pic_order_cnt_type == 2)
        return true;
    return delta_pic_order_always_zero_flag == other.delta_pic_order_always_zero_flag &&
           offset_for_non_ref_pic == other.offset_for_non_ref_pic &&
           offset_for_top_to_bottom_field == other.offset_for_top_to_bottom_field &&
           num_ref_frames_in_pic_order_cnt_cycle == other.num_ref_frames_in_pic_order_cnt_cycle &&
           std::equal(offset_for_ref_frame.data,
                      offset_for_ref_frame.data + num_ref_frames_in_pic_order_cnt_cycle,
                      other.offset_for_ref_frame.data);
}

bool PicParamSet::FitsPicture(u32 picWidthInMbs, u64 picSizeInMbs) const {
    if (num_slice_groups == 1)
        return true;
    switch (slice_group_map_type) {
    case 0:
        return std::all_of(run_length_minus1, run_length_minus1 + num_slice_groups,
                           [&](u32 length) { return u64{length} + 1 <= picSizeInMbs; });
    case 2:
        for (u32 group = 0; group + 1 < num_slice_groups; ++group) {
            if (top_left[group] > bottom_right[group] || bottom_right[group] >= picSizeInMbs ||
                top_left[group] % picWidthInMbs > bottom_right[group] % picWidthInMbs)
                return false;
        }
        return true;
    case 3:
    case 4:
    case 5:
        return SliceGroupChangeRate() <= picSizeInMbs;
    case 6:
        return u64{pic_size_in_map_units_minus1} + 1 >= picSizeInMbs;
    default:
        return true;
    }
}

} // namespace h264
