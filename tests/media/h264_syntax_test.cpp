// The byte stream, the parameter sets and the slice header: what is accepted, what is refused, and with which
// lines.
#include "media/h264_support.h"

namespace {

using namespace h264test;
using Texts = std::vector<std::string>;
using namespace std::string_literals;

class H264Syntax : public WrittenStreams {
protected:
    // A decoder of its own, its lines and how many units it dropped.
    struct Refusal {
        Texts lines;
        std::uint32_t dropped;
    };
    Refusal LinesOf(const std::string& text) {
        log.Clear();
        TestDecoder fresh;
        fresh.Decode(WriteStream(text));
        Texts lines;
        for (const std::string& line : Lines()) {
            if (line.find("nH264malloc") == std::string::npos)
                lines.push_back(line.substr(line.find("::") + 2));
        }
        return {lines, fresh.decoder.DroppedUnits()};
    }
};

const std::string Sets = "sps width=2 height=2 refs=2\npps\n";
const std::string Idr = "slice idr\n pcm 10 20 30 40\n";

// ---- Byte stream (Annex B) ----

TEST_F(H264Syntax, EmulationPreventionBytesDoNotReachTheSamples) {
    for (const char* value : {"0", "1", "2", "3"}) {
        TestDecoder fresh;
        const std::string same = value;
        const auto frames = fresh.Decode(WriteStream("sps\npps\nslice idr\n pcm " + same + "\n"));
        EXPECT_EQ(LumaMaps(frames), Texts{same});
    }
}

TEST_F(H264Syntax, ZerosAroundStartCodesDoNotMatter) {
    const auto frames = Decode("bytes 0000\n sps width=2 height=2\n bytes 000000\n pps\n bytes 0000\n" + Idr +
                               "bytes 00000000\n");
    EXPECT_EQ(LumaMaps(frames), Texts{"10 20/30 40"});
    EXPECT_EQ(test.decoder.DroppedUnits(), 0u);
}

TEST_F(H264Syntax, DataWithoutAStartCodeIsOneUnit) {
    for (const std::string& line : {"sps"s, "pps"s}) {
        Bytes unit = WriteStream(line);
        unit.erase(unit.begin(), unit.begin() + 4);
        test.Decode(unit, Feeding::AtOnce);
    }
    // The writer needs the sets to write the slice.
    Bytes whole = WriteStream("sps\npps\nslice idr\n pcm 77");
    const std::size_t sets = WriteStream("sps\npps").size();
    whole.erase(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(sets) + 4);
    EXPECT_EQ(LumaMaps(test.Decode(whole, Feeding::AtOnce)), Texts{"77"});
}

TEST_F(H264Syntax, UnitsThatNoEncoderMayWriteAreDropped) {
    const Texts broken = {
        "bytes 000001 67 000000 05",           // three zeros inside
        "bytes 000001 67 00000000 07",         // four
        "bytes 000001 67 000003 04",           // behind an emulation prevention byte more than 3
        "bytes 000001 67 42 000003",           // one as the last byte
        "bytes 000001 67 000003 00 000002 01", // 00 00 02 beside one that is right
        "bytes 0000000005",                    // no start code behind the zeros
    };
    for (const std::string& text : broken) {
        const Refusal refusal = LinesOf(text);
        EXPECT_EQ(refusal.lines, Texts{"h264Decode: BYTE_STREAM"}) << text;
        EXPECT_EQ(refusal.dropped, 1u) << text;
    }
}

TEST_F(H264Syntax, TypeAndReferenceFlagMustAgree) {
    for (const char* unit : {"1 2", "1 3", "1 4", "0 5", "0 7", "0 8", "1 6", "1 9", "2 10", "3 11", "1 12"})
        EXPECT_EQ(LinesOf("nal " + std::string(unit) + " 80").lines, Texts{"h264Decode: NAL_UNIT"}) << unit;
    EXPECT_EQ(LinesOf("bytes 00000100").lines, Texts{"h264Decode: NAL_UNIT"}); // zeros belong to no unit
    EXPECT_EQ(LinesOf("bytes 000001").lines,
              Texts{"h264Decode: BYTE_STREAM"}); // shorter than a start code and a byte
    EXPECT_EQ(LinesOf("bytes 00000001 00000001").lines,
              (Texts{"h264Decode: NAL_UNIT", "h264Decode: NAL_UNIT"}));
}

TEST_F(H264Syntax, UnitsThatCarryNothingForTheDecoderAreSkipped) {
    for (const char* type : {"0", "13", "14", "19", "24", "31"})
        EXPECT_EQ(LinesOf("nal 1 " + std::string(type) + " 80").lines,
                  Texts{"h264Decode: DISCARDED NAL (UNSPECIFIED,REGISTERED,SPS ext or AUX slice)"})
            << type;
    EXPECT_EQ(LinesOf("nal 0 6 80").lines, Texts{"h264Decode: SEI MESSAGE,NOT DECODED"});
    for (const char* type : {"9", "10", "11", "12"})
        EXPECT_EQ(LinesOf("nal 0 " + std::string(type) + " 80").lines,
                  Texts{"h264Decode: NOT IMPLEMENTED YET " + std::string(type)});
}

// ---- Parameter sets ----

struct Limit {
    std::string text;
    std::string field; // empty: no line but that of the unit
};

TEST_F(H264Syntax, SequenceParameterSetsBeyondTheLimitsAreRefusedByName) {
    const Limit limits[] = {
        {"sps id=32", "seq_param_set_id"},
        {"sps log2_frame_num=17", "log2_max_frame_num_minus4"},
        {"sps poc=3", "pic_order_cnt_type"},
        {"sps poc=0 log2_lsb=17", "log2_max_pic_order_cnt_lsb_minus4"},
        {"sps poc=1 cycle_length=256", "num_ref_frames_in_pic_order_cnt_cycle"},
        {"sps refs=17", "num_ref_frames"},
        {"sps interlaced=1", "frame_mbs_only_flag"},
        {"sps width=2 crop=15,1,0,0", "frame_cropping"},
        {"sps height=2 crop=0,0,0,16", "frame_cropping"},
        {"sps profile=100", "chroma_format_idc"}, // log2_max_frame_num_minus4 0 stands in its place
        {"sps refs=2 buffering=1", ""},
        {"sps refs=1 reorder=3 buffering=2", ""},
        {"sps refs=1 buffering=17", ""},
        {"nal 3 7 42 00 1e", ""}, // ends early
    };
    for (const Limit& limit : limits) {
        Texts expected = {"h264Decode: SEQ_PARAM_SET"};
        if (!limit.field.empty())
            expected.insert(expected.begin(), "h264DecodeSeqParamSet: " + limit.field);
        Texts lines = LinesOf(limit.text).lines;
        std::erase(lines, "h264DecodeSeqParamSet: NOT BASELINE PROFILE 100");
        EXPECT_EQ(lines, expected) << limit.text;
    }
}

TEST_F(H264Syntax, SequenceParameterSetsAtTheLimitsAreAccepted) {
    for (const char* text : {"sps id=31", "sps log2_frame_num=16", "sps poc=0 log2_lsb=16", "sps refs=16",
                             "sps width=2 crop=14,1,0,0", "sps refs=16 buffering=16",
                             "sps poc=1 cycle=1,-1,5 non_ref=-2 top_bottom=1"})
        EXPECT_EQ(LinesOf(text).lines, Texts{}) << text;
}

TEST_F(H264Syntax, OtherProfilesAreToldButNotRefused) {
    EXPECT_EQ(LinesOf("sps profile=77").lines, Texts{"h264DecodeSeqParamSet: NOT BASELINE PROFILE 77"});
}

TEST_F(H264Syntax, ALevelThatDoesNotFitGivesWayToTheNumberOfReferences) {
    for (const char* text :
         {"sps level=99 refs=3", "sps level=10 width=12 height=9 refs=3", // 108 macroblocks
          "sps level=11 width=22 height=18 refs=3"})                      // room for 2 pictures
        EXPECT_EQ(LinesOf(text).lines,
                  (Texts{"h264DecodeSeqParamSet: WARNING! Invalid DPB size based on SPS Level!",
                         "h264DecodeSeqParamSet: WARNING! Using num_ref_frames =3 for DPB size!"}))
            << text;
}

TEST_F(H264Syntax, PictureParameterSetsBeyondTheLimitsAreRefusedByName) {
    const Limit limits[] = {
        {"pps id=256", "pic_parameter_set_id"},
        {"pps sps=32", "seq_param_set_id"},
        {"pps cabac=1", "entropy_coding_mode_flag"},
        {"pps groups=9", "num_slice_groups_minus1"},
        {"pps groups=2 map=7", "slice_group_map_type"},
        {"pps groups=3 map=6 ids=0,1,2,3", "slice_group_id"},
        {"pps l0=33", "num_ref_idx_l0_active_minus1"},
        {"pps l1=33", "num_ref_idx_l1_active_minus1"},
        {"pps weighted=1", "weighted_pred_flag"},
        {"pps bipred=3", "weighted_bipred_idc"},
        {"pps qp=52", "pic_init_qp_minus26"},
        {"pps qp=-1", "pic_init_qp_minus26"},
        {"pps qs=52", "pic_init_qs_minus26"},
        {"pps chroma_offset=13", "chroma_qp_index_offset"},
        {"pps chroma_offset=-13", "chroma_qp_index_offset"},
    };
    for (const Limit& limit : limits) {
        const Refusal refusal = LinesOf(limit.text);
        EXPECT_EQ(refusal.lines, Texts{"h264DecodePicParamSet: " + limit.field}) << limit.text;
        EXPECT_EQ(refusal.dropped, 1u);
    }
    EXPECT_EQ(LinesOf("pps groups=2 map=6 units=4000000 ids=0,1").dropped, 1u); // more ids than bits
    for (const char* text : {"pps id=255", "pps sps=31", "pps l0=32 l1=32", "pps qp=0 qs=51", "pps bipred=2"})
        EXPECT_EQ(LinesOf(text).lines, Texts{}) << text;
}

TEST_F(H264Syntax, ARepeatedSequenceParameterSetChangesNothing) {
    const auto frames = Decode(Sets + Idr + "sps width=2 height=2 refs=2\nslice p frame_num=1\n skip 4\n");
    EXPECT_EQ(LumaMaps(frames), (Texts{"10 20/30 40", "10 20/30 40"}));
}

TEST_F(H264Syntax, AnotherContentUnderTheActiveIdNeedsAnIdrPicture) {
    const auto frames = Decode(Sets + Idr + "sps width=2 height=2 refs=1\nslice p frame_num=1\n skip 4\n");
    EXPECT_EQ(LumaMaps(frames), Texts{"10 20/30 40"});
    EXPECT_EQ(Logged("h264ActivateParamSets: TRYING TO CHANGE SPS IN NON-IDR SLICE"), 1u);
    EXPECT_EQ(Logged("h264Decode: Param set activation"), 1u);
}

TEST_F(H264Syntax, ANewSequenceStartsAtAnIdrPictureAndMayHaveAnotherSize) {
    const auto frames = Decode(Sets + Idr +
                               "sps width=1 height=3\n"
                               "slice idr idr_pic_id=1\n pcm 1 2 3\n"
                               "sps id=1 width=3 height=1\n pps id=1 sps=1\n"
                               "slice idr pps=1\n pcm 4 5 6\n");
    EXPECT_EQ(LumaMaps(frames), (Texts{"10 20/30 40", "1/2/3", "4 5 6"}));
    EXPECT_EQ(Logged("h264ActivateParamSets: SEQ PARAM SET CHANGING"), 2u);
}

TEST_F(H264Syntax, SlicesOfMissingOrForeignParameterSetsAreDropped) {
    EXPECT_TRUE(Decode("sps\nslice idr\n pcm 1\n").empty()); // no picture parameter set
    EXPECT_EQ(Logged("h264Decode: ACCESS UNIT BOUNDARY CHECK"), 1u);
    Decode(Sets + Idr + "sps id=1 width=2 height=2\npps id=1 sps=1\nslice p frame_num=1 pps=1\n skip 4\n");
    EXPECT_EQ(Logged("h264Decode: ACCESS UNIT BOUNDARY CHECK"), 2u); // not IDR, another sequence
}

TEST_F(H264Syntax, SliceGroupsThatDoNotFitThePictureFailTheActivation) {
    for (const char* pps :
         {"pps groups=2 map=0 runs=5,1", "pps groups=2 map=2 rects=0,4", "pps groups=2 map=2 rects=3,2",
          "pps groups=2 map=2 rects=1,2", // right of its own left side
          "pps groups=2 map=4 rate=5", "pps groups=2 map=6 ids=0,1,0"}) {
        const Refusal refusal =
            LinesOf("sps width=2 height=2\n" + std::string(pps) + "\nslice idr\n pcm 1*4\n");
        EXPECT_EQ(refusal.lines, Texts{"h264Decode: Param set activation"}) << pps;
    }
}

// ---- Slice header ----

TEST_F(H264Syntax, SliceHeadersBeyondTheLimitsAreRefusedByName) {
    const std::string sets = "sps width=2 height=2 refs=2 poc=0\npps l0=2 redundant=1\n";
    const std::string idr = "slice idr\n pcm 1*4\n";
    const std::string wide = "sps width=2 height=2 refs=2\npps l0=17\n";
    const std::string evolving = "sps width=2 height=2\npps groups=2 map=4 rate=3\n"; // two cycles, two bits
    const Limit limits[] = {
        {sets + "slice idr first=4", "h264DecodeSliceHeader: first_mb_in_slice"},
        {sets + "slice idr type=1", "h264DecodeSliceHeader: slice_type"},
        {sets + "slice idr type=3", "h264DecodeSliceHeader: slice_type"},
        {sets + "slice idr type=0", "h264DecodeSliceHeader: slice_type"},
        {sets + "slice idr frame_num=1", "h264DecodeSliceHeader: frame_num"},
        {sets + "slice idr idr_pic_id=65536", "h264DecodeSliceHeader: idr_pic_id"},
        {sets + "slice idr redundant=128", "h264DecodeSliceHeader: redundant_pic_cnt"},
        {sets + "slice idr lsb=2", ""},
        {sets + idr + "slice p frame_num=1 lsb=2 active=17",
         "h264DecodeSliceHeader: num_ref_idx_l0_active_minus1"},
        {wide + idr + "slice p frame_num=1", "h264DecodeSliceHeader: num_ref_idx_active_override_flag"},
        {sets + "slice idr qp_delta=26", "h264DecodeSliceHeader: slice_qp_delta"},
        {sets + "slice idr qp_delta=-27", "h264DecodeSliceHeader: slice_qp_delta"},
        {sets + "slice idr deblock=3", "h264DecodeSliceHeader: disable_deblocking_filter_idc"},
        {sets + "slice idr deblock=0 alpha=7", "h264DecodeSliceHeader: slice_alpha_c0_offset_div2"},
        {sets + "slice idr deblock=2 beta=-7", "h264DecodeSliceHeader: slice_beta_offset_div2"},
        {evolving + "slice idr cycle=3", "h264DecodeSliceHeader: slice_group_change_cycle"},
        {sets + idr + "slice p frame_num=1 lsb=2 reorder=-1,-1,-1",
         "RefPicListReordering: Too many reordering commands"},
        {sets + idr + "slice p frame_num=1 lsb=2 reorder=X4",
         "RefPicListReordering: reordering_of_pic_nums_idc"},
        {sets + idr + "slice p frame_num=1 lsb=2 reorder=-17",
         "RefPicListReordering: abs_diff_pic_num_minus1"},
        {sets + idr + "slice p frame_num=1 lsb=2 reorder=none",
         "RefPicListReordering: ref_pic_list_reordering"},
        {"sps refs=0\npps\nslice idr long=1", "h264DecRefPicMarking: long_term_reference_flag"},
        {sets + idr + "slice p frame_num=1 lsb=2 mmco=1:1,1:1,1:1,1:1,1:1,1:1,1:1",
         "h264DecRefPicMarking: Too many management operations"},
        {sets + idr + "slice p frame_num=1 lsb=2 mmco=7",
         "h264DecRefPicMarking: memory_management_control_operation"},
        {sets + idr + "slice p frame_num=1 lsb=2 mmco=4:3",
         "h264DecRefPicMarking: max_long_term_frame_idx_plus1"},
        {sets + idr + "slice p frame_num=1 lsb=2 mmco=4:1,4:1", ""},
        {sets + idr + "slice p frame_num=1 lsb=2 mmco=5,1:1", ""},
        {"sps refs=0\npps\nslice idr\n pcm 1\nslice p frame_num=1", "h264DecodeSliceHeader: slice_type"},
    };
    for (const Limit& limit : limits) {
        Texts lines = LinesOf(limit.text).lines;
        ASSERT_FALSE(lines.empty()) << limit.text;
        EXPECT_EQ(lines.back(), "h264Decode: SLICE_HEADER") << limit.text;
        lines.pop_back();
        if (!limit.field.empty()) {
            ASSERT_FALSE(lines.empty()) << limit.text;
            EXPECT_EQ(lines.back(), limit.field) << limit.text;
        }
    }
}

TEST_F(H264Syntax, TwoParameterSetsWithinOnePictureAreRefused) {
    Decode("sps width=2\npps\npps id=1\nslice idr\n pcm 1\nslice idr first=1 pps=1\n pcm 2\n");
    EXPECT_EQ(Logged("h264DecodeSliceHeader: pic_parameter_set_id"), 1u);
}

// ---- Slice data ----

TEST_F(H264Syntax, SliceDataThatGoesWrongSaysWhere) {
    const std::string second = Sets + Idr + "slice p frame_num=1\n";
    const Limit limits[] = {
        {Sets + "slice idr\n pcm 1*2\nslice idr first=1\n pcm 2", "Primary and already decoded"},
        {second + " skip 5", "skip_run"},
        {Sets + "slice idr\n ue 26", "macroblock_layer"}, // mb_type
        {second + " ue 0\n ue 31", "macroblock_layer"},   // the same in a P slice
        {Sets + "slice idr\n ue 0\n bits 1111111111111111\n ue 4",
         "macroblock_layer"}, // intra_chroma_pred_mode
        {second + " move 0,0\n ue 0\n ue 0\n se 0\n se 0\n ue 48", "macroblock_layer"}, // coded_block_pattern
        {second + " ue 0\n ue 0\n se 0\n se 0\n ue 1\n se 26", "macroblock_layer"},     // mb_qp_delta
        {second + " ue 0\n ue 0\n se 0\n se 0\n ue 1\n se -27", "macroblock_layer"},
        {second + " ue 0\n ue 3\n ue 4", "macroblock_layer"},              // sub_mb_type
        {Sets + "slice idr\n ue 25\n bits 1\n align", "macroblock_layer"}, // pcm_alignment_zero_bit
        {Sets + "slice idr\n i16 0", "MACRO_BLOCK"},                       // vertical with nothing above
        {Sets + "slice idr\n i16 1", "MACRO_BLOCK"},
        {Sets + "slice idr\n i16 3", "MACRO_BLOCK"},
        {second + " move 8192,0", "MACRO_BLOCK"},
        {second + " move -8193,0", "MACRO_BLOCK"},
        {second + " move 0,2048", "MACRO_BLOCK"},
        {second + " move 0,-2049", "MACRO_BLOCK"},
        {Sets + "slice idr\n pcm 1*5", "Next mb address"},
    };
    for (const Limit& limit : limits) {
        const Texts lines = LinesOf(limit.text).lines;
        ASSERT_GE(lines.size(), 2u) << limit.text;
        EXPECT_EQ(lines.back(), "h264Decode: SLICE_DATA") << limit.text;
        EXPECT_EQ(lines[lines.size() - 2], "h264DecodeSliceData: " + limit.field) << limit.text;
    }
}

TEST_F(H264Syntax, EachSliceAndSkippedMacroblockLeavesItsTrace) {
    Decode(Sets + Idr + "slice p frame_num=1\n skip 2\nslice p frame_num=1 first=2\n skip 2\n");
    EXPECT_EQ(Logged("h264Decode: SLICE DATA,FIRST 0"), 2u);
    EXPECT_EQ(Logged("h264Decode: SLICE DATA,FIRST 2"), 1u);
    for (const char* address : {"0", "1", "2", "3"})
        EXPECT_EQ(Logged("h264DecodeSliceData: Skipping macroblock " + std::string(address)), 1u);
}

} // namespace
