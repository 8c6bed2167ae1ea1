// Slice groups, slice order, redundant slices, references and gaps, by streams whose pictures are known
// without a decoder.
#include "media/h264_support.h"

namespace {

using namespace h264test;
using Texts = std::vector<std::string>;

class H264Pictures : public WrittenStreams {};

// ---- Slice groups ----

struct GroupCase {
    std::string pps;
    std::string cycle; // slice_group_change_cycle, or empty
    std::string map;   // slice group of each macroblock, row by row, 4 x 3
};

// Worked out by hand from 8.2.2.1 to 8.2.2.7.
const GroupCase GroupCases[] = {
    {"groups=2 map=0 runs=2,3", "", "0011 1001 1100"},
    {"groups=3 map=0 runs=1,1,4", "", "0122 2201 2222"},
    {"groups=3 map=1", "", "0120 1201 0120"},
    {"groups=2 map=1", "", "0101 1010 0101"},
    {"groups=2 map=2 rects=1,6", "", "1001 1001 1111"},
    {"groups=3 map=2 rects=0,5,5,10", "", "0022 0012 2112"}, // the lower group wins
    {"groups=2 map=3 direction=0", "5", "1000 1001 1111"},
    {"groups=2 map=3 direction=1", "5", "1101 1001 1001"},
    {"groups=2 map=3 direction=0 rate=4", "2", "1000 1000 1100"},
    {"groups=2 map=4 direction=0 rate=2", "2", "0000 1111 1111"},
    {"groups=2 map=4 direction=1 rate=2", "2", "1111 1111 0000"},
    {"groups=2 map=4 direction=0 rate=5", "3", "0000 0000 0000"}, // 15 units of 12
    {"groups=2 map=5 direction=0", "4", "0011 0111 0111"},
    {"groups=2 map=5 direction=1", "4", "1110 1110 1100"},
    {"groups=4 map=6 ids=3,2,1,0,0,0,1,1,2,2,3,3", "", "3210 0011 2233"},
};

struct GroupStream {
    Texts slices;         // one for each group that has macroblocks
    std::string expected; // LumaMap: 10 in group 0, 20 in group 1, ...
};

GroupStream SlicesOf(const GroupCase& groupCase) {
    GroupStream stream;
    std::string map = groupCase.map;
    std::erase(map, ' ');
    for (std::size_t i = 0; i < map.size(); ++i) {
        stream.expected += i == 0 ? "" : i % 4 == 0 ? "/" : " ";
        stream.expected += std::to_string((map[i] - '0' + 1) * 10);
    }
    for (char group = '0'; group < '8'; ++group) {
        const auto count = std::count(map.begin(), map.end(), group);
        if (count == 0)
            continue;
        const std::string cycle = groupCase.cycle.empty() ? "" : " cycle=" + groupCase.cycle;
        stream.slices.push_back("slice idr first=" + std::to_string(map.find(group)) + cycle + "\n pcm " +
                                std::to_string((group - '0' + 1) * 10) + "*" + std::to_string(count) + "\n");
    }
    return stream;
}

TEST_F(H264Pictures, EachSliceGroupMapPutsTheMacroblocksInTheirPlaces) {
    for (const GroupCase& groupCase : GroupCases) {
        const GroupStream stream = SlicesOf(groupCase);
        std::string text = "sps width=4 height=3\npps " + groupCase.pps + "\n";
        for (const std::string& slice : stream.slices)
            text += slice;
        TestDecoder fresh;
        EXPECT_EQ(LumaMaps(fresh.Decode(WriteStream(text))), Texts{stream.expected}) << groupCase.pps;
        EXPECT_EQ(fresh.decoder.DroppedUnits(), 0u) << groupCase.pps;
    }
}

TEST_F(H264Pictures, SlicesMayComeInAnyOrder) {
    for (const GroupCase& groupCase : GroupCases) {
        GroupStream stream = SlicesOf(groupCase);
        std::reverse(stream.slices.begin(), stream.slices.end());
        std::string text = "sps width=4 height=3\npps " + groupCase.pps + "\n";
        for (const std::string& slice : stream.slices)
            text += slice;
        TestDecoder fresh;
        EXPECT_EQ(LumaMaps(fresh.Decode(WriteStream(text))), Texts{stream.expected}) << groupCase.pps;
    }
    const auto frames =
        Decode("sps width=2 height=2\npps\nslice idr first=3\n pcm 4\nslice idr first=1\n pcm 2 3\n"
               "slice idr first=0\n pcm 1\n");
    EXPECT_EQ(LumaMaps(frames), Texts{"1 2/3 4"});
}

TEST_F(H264Pictures, AnEvolvingMapFollowsTheCycleOfEachPicture) {
    const auto frames = Decode("sps width=4 height=1 refs=1\npps groups=2 map=4 rate=1\n"
                               "slice idr first=0 cycle=1\n pcm 1\nslice idr first=1 cycle=1\n pcm 2*3\n"
                               "slice p frame_num=1 first=0 cycle=3\n pcm 3*3\n"
                               "slice p frame_num=1 first=3 cycle=3\n pcm 4\n");
    EXPECT_EQ(LumaMaps(frames), (Texts{"1 2 2 2", "3 3 3 4"}));
}

// ---- Redundant slices ----

const std::string RedundantSets = "sps width=4 refs=1\npps redundant=1\n";

TEST_F(H264Pictures, ARedundantSliceBehindACompletePictureChangesNothing) {
    const auto frames = Decode(RedundantSets + "slice idr\n pcm 1*4\nslice idr redundant=1\n pcm 2*4\n"
                                               "slice p frame_num=1\n skip 4\n");
    EXPECT_EQ(LumaMaps(frames), (Texts{"1 1 1 1", "1 1 1 1"}));
}

TEST_F(H264Pictures, ARedundantSliceFillsWhatIsMissingAndOnlyThat) {
    const auto frames = Decode(RedundantSets + "slice idr\n pcm 1*2\nslice idr redundant=1\n pcm 2*4\n");
    EXPECT_EQ(LumaMaps(frames), Texts{"1 1 2 2"});
    EXPECT_EQ(frames.at(0).numErrMbs, 0u);
}

TEST_F(H264Pictures, APrimarySliceOverDecodedMacroblocksIsRefused) {
    const auto frames = Decode(
        RedundantSets + "slice idr\n pcm 1*2\nslice idr first=1\n pcm 9*2\nslice idr first=2\n pcm 3*2\n");
    EXPECT_EQ(LumaMaps(frames), Texts{"1 1 3 3"});
    EXPECT_EQ(Logged("h264DecodeSliceData: Primary and already decoded"), 1u);
}

// ---- Motion ----

TEST_F(H264Pictures, VectorsFarOutsideReadTheEdge) {
    const std::string start =
        "sps width=2 height=2 refs=1\npps\nslice idr\n pcm 10 20 30 40\nslice p frame_num=1\n ";
    const struct {
        const char* vector;
        const char* expected;
    } cases[] = {{"-8192,-2048", "10 10/10 10"}, {"8191,-2048", "20 20/20 20"}, {"-8192,2047", "30 30/30 30"},
                 {"8191,2047", "40 40/40 40"},   {"0,-2048", "10 20/10 20"},    {"8191,0", "20 20/40 40"}};
    for (const auto& [vector, expected] : cases) {
        TestDecoder fresh;
        // The other three predict the same vector.
        const auto frames =
            fresh.Decode(WriteStream(start + "move " + vector + "\n move 0,0\n move 0,0\n move 0,0\n"));
        EXPECT_EQ(LumaMaps(frames).back(), expected) << vector;
    }
}

TEST_F(H264Pictures, AHalfSampleStepOverAnEdgeRingsAsTheSixTapsDo) {
    const auto frames = Decode("sps width=2 refs=1\npps\nslice idr\n pcm 10 20\n"
                               "slice p frame_num=1\n move 2,0\n move 0,0\n");
    const Frame& frame = frames.at(1);
    const std::uint8_t expected[] = {10, 10, 9, 15, 21, 20, 20}; // between samples 12|13, 13|14, ...
    for (std::uint32_t i = 0; i < std::size(expected); ++i)
        EXPECT_EQ(frame.Luma(12 + i, 5), expected[i]) << i;
    EXPECT_EQ(frame.Cb(6, 2), 10);
    EXPECT_EQ(frame.Cb(7, 2), 13); // a quarter on: (6 * 10 + 2 * 20) / 8, rounded
    EXPECT_EQ(frame.Cb(8, 2), 20);
}

// ---- References ----

// Pictures 0, 1, 2 of one macroblock with samples 10, 20, 30, all references.
std::string ThreePictures(const std::string& spsOptions) {
    return "sps " + spsOptions +
           "\npps\nslice idr\n pcm 10\nslice p frame_num=1\n pcm 20\n"
           "slice p frame_num=2\n pcm 30\n";
}

TEST_F(H264Pictures, TheInitialListRunsFromTheNewestPictureToTheOldest) {
    for (int ref = 0; ref < 3; ++ref) {
        TestDecoder fresh;
        const auto frames = fresh.Decode(WriteStream(
            ThreePictures("refs=3") + "slice p frame_num=3 active=3\n move 0,0 ref=" + std::to_string(ref)));
        EXPECT_EQ(LumaMaps(frames).back(), std::to_string(30 - 10 * ref));
    }
}

TEST_F(H264Pictures, ReorderingPutsPicturesFirst) {
    const struct {
        const char* commands;
        const char* list[3];
    } cases[] = {{"-3", {"10", "30", "20"}},
                 {"-2", {"20", "30", "10"}},
                 {"-3,+1", {"10", "20", "30"}},
                 {"-2,-1", {"20", "10", "30"}},
                 {"+14", {"20", "30", "10"}}}; // 3 + 14 is 1 modulo 16
    for (const auto& [commands, list] : cases) {
        for (int ref = 0; ref < 3; ++ref) {
            TestDecoder fresh;
            const auto frames = fresh.Decode(WriteStream(ThreePictures("refs=3") +
                                                         "slice p frame_num=3 active=3 reorder=" + commands +
                                                         "\n move 0,0 ref=" + std::to_string(ref)));
            EXPECT_EQ(LumaMaps(frames).back(), list[ref]) << commands << ", " << ref;
        }
    }
    Decode(ThreePictures("refs=3") + "slice p frame_num=3 active=3 reorder=-4\n move 0,0\n");
    EXPECT_EQ(Logged("h264Decode: Reordering"), 1u);
}

TEST_F(H264Pictures, TheSlidingWindowLosesTheOldestPicture) {
    const auto frames = Decode(ThreePictures("refs=2") + "slice p frame_num=3 active=2\n move 0,0 ref=1\n"
                                                         "slice p frame_num=4 active=3\n move 0,0 ref=2\n");
    EXPECT_EQ(LumaMaps(frames).back(), "20");
    EXPECT_EQ(Logged("h264DecodeSliceData: MACRO_BLOCK"), 1u); // the third entry is empty
}

TEST_F(H264Pictures, FrameNumbersWrap) {
    std::string text = "sps refs=3\npps\nslice idr\n pcm 100\n";
    for (int i = 1; i < 18; ++i) {
        const std::string number = std::to_string(i);
        text += "slice p frame_num=" + std::to_string(i % 16) + "\n pcm " + number + "\n";
    }
    const auto frames = Decode(text + "slice p frame_num=2 active=3 reorder=-3\n move 0,0 ref=0\n" +
                               "slice p frame_num=3 active=3\n move 0,0 ref=1\n");
    ASSERT_EQ(frames.size(), 20u);
    EXPECT_EQ(LumaMap(frames[18]), "15"); // 2 - 3 is 15 before the wrap
    EXPECT_EQ(LumaMap(frames[19]), "17");
}

TEST_F(H264Pictures, NonReferencePicturesAreShownButNotReferredTo) {
    const auto frames =
        Decode("sps refs=2 poc=0\npps\nslice idr\n pcm 10\nslice p frame_num=1 ref=0 lsb=2\n pcm 99\n"
               "slice p frame_num=1 lsb=4\n move 0,0\n");
    EXPECT_EQ(LumaMaps(frames), (Texts{"10", "99", "10"}));
}

TEST_F(H264Pictures, EveryPictureLeavesAsSoonAsItIsDecoded) {
    const auto frames =
        Decode("sps refs=2 poc=0 level=40\npps\nslice idr\n pcm 10\nslice p frame_num=1 lsb=8\n pcm 20\n"
               "slice p frame_num=2 lsb=4\n pcm 30\nslice p frame_num=3 lsb=2\n pcm 40\n");
    EXPECT_EQ(LumaMaps(frames), (Texts{"10", "20", "30", "40"}));
}

// ---- Marking operations ----

struct MarkingCase {
    const char* name;
    std::string text;     // behind ThreePictures("refs=3")
    std::string lastLuma; // of the last picture; empty: the last slice fails
};

class H264Marking : public WrittenStreams, public testing::WithParamInterface<MarkingCase> {};

TEST_P(H264Marking, LeavesTheRightPictures) {
    const MarkingCase& c = GetParam();
    const auto frames = Decode(ThreePictures("refs=3") + c.text);
    if (c.lastLuma.empty())
        EXPECT_GE(Logged("h264DecodeSliceData: MACRO_BLOCK") + Logged("h264Decode: Reordering"), 1u);
    else
        EXPECT_EQ(LumaMaps(frames).back(), c.lastLuma);
}

const MarkingCase MarkingCases[] = {
    {"Operation1UnmarksAShortTermPicture",
     "slice p frame_num=3 mmco=1:2\n pcm 40\nslice p frame_num=4 active=3\n move 0,0 ref=2\n",
     "10"}, // 40 30 10
    {"Operation2UnmarksALongTermPicture",
     "slice p frame_num=3 mmco=4:1,3:3:0\n pcm 40\nslice p frame_num=4 mmco=2:0\n pcm 50\n"
     "slice p frame_num=5 active=3 reorder=L0\n move 0,0\n",
     ""},
    {"Operation3KeepsAPictureBeyondTheWindow",
     "slice p frame_num=3 mmco=4:1,3:3:0\n pcm 40\nslice p frame_num=4\n pcm 50\nslice p frame_num=5\n pcm "
     "60\n"
     "slice p frame_num=6\n pcm 70\nslice p frame_num=7 active=3\n move 0,0 ref=2\n",
     "10"}, // 70 60 long
    {"LongTermPicturesAreReorderedByTheirIndex",
     "slice p frame_num=3 mmco=4:2,3:3:1,3:2:0\n pcm 40\nslice p frame_num=4 active=3 reorder=L1\n move "
     "0,0\n",
     "10"},
    {"LongTermPicturesStandBehindTheOthersInTheOrderOfTheirIndex",
     "slice p frame_num=3 mmco=4:2,3:3:1,3:2:0\n pcm 40\nslice p frame_num=4 active=3\n move 0,0 ref=1\n",
     "20"},
    {"Operation3TakesTheIndexFromAnotherPicture",
     "slice p frame_num=3 mmco=4:1,3:3:0,3:2:0\n pcm 40\nslice p frame_num=4 active=3\n move 0,0 ref=2\n",
     "20"},
    {"Operation4DropsIndicesThatAreTooHigh",
     "slice p frame_num=3 mmco=4:2,3:3:1,3:2:0\n pcm 40\nslice p frame_num=4 mmco=4:1\n pcm 50\n"
     "slice p frame_num=5 active=3 reorder=L1\n move 0,0\n",
     ""},
    {"Operation5DropsAllReferencesAndRestartsCounting",
     "slice p frame_num=3 mmco=5\n pcm 40\nslice p frame_num=1 active=2 reorder=-1\n move 0,0 ref=0\n", "40"},
    {"BehindOperation5NothingOlderCanBeReferredTo",
     "slice p frame_num=3 mmco=5\n pcm 40\nslice p frame_num=1 active=2\n move 0,0 ref=1\n", ""},
    {"Operation6MakesTheCurrentPictureLongTerm",
     "slice p frame_num=3 mmco=1:3,4:1,6:0\n pcm 40\nslice p frame_num=4\n pcm 50\nslice p frame_num=5\n pcm "
     "60\n"
     "slice p frame_num=6 active=3 reorder=L0\n move 0,0\n",
     "40"},
    {"AnIdrPictureMayBeLongTerm",
     "slice idr long=1 idr_pic_id=1\n pcm 40\nslice p frame_num=1\n pcm 50\nslice p frame_num=2 active=2 "
     "reorder=L0\n"
     " move 0,0\n",
     "40"},
    {"AnIdrPictureDropsAllReferences",
     "slice idr idr_pic_id=1\n pcm 40\nslice p frame_num=1 active=2\n move 0,0 ref=1\n", ""},
};
INSTANTIATE_TEST_SUITE_P(Each, H264Marking, testing::ValuesIn(MarkingCases),
                         [](const auto& each) { return std::string(each.param.name); });

TEST_F(H264Pictures, APictureWithContradictoryMarkingIsLostAndTheRestGoesOn) {
    const std::string text = "pps\nslice idr\n pcm 10\nslice p frame_num=1 lsb=2 mmco=1:9\n pcm 20\n"
                             "slice p frame_num=2 lsb=4\n move 0,0\n";
    EXPECT_EQ(LumaMaps(Decode("sps refs=2 poc=0\n" + text)), (Texts{"10", "10"}));
    TestDecoder inOrder; // without reordering it is shown all the same
    EXPECT_EQ(LumaMaps(inOrder.Decode(WriteStream("sps refs=2 poc=0 reorder=0 buffering=2\n" + text))),
              (Texts{"10", "20", "10"}));
}

// ---- Gaps in frame_num ----

TEST_F(H264Pictures, AGapThatIsNotAllowedPassesWithoutTrace) {
    const auto frames = Decode("sps refs=3\npps\nslice idr\n pcm 10\nslice p frame_num=5\n move 0,0\n");
    EXPECT_EQ(LumaMaps(frames), (Texts{"10", "10"}));
    EXPECT_EQ(test.decoder.DroppedUnits(), 0u);
}

TEST_F(H264Pictures, AGapMakesPicturesThatExistOnlyInTheLists) {
    const std::string start = "sps refs=3 gaps=1\npps\nslice idr\n pcm 10\n";
    const auto frames =
        Decode(start + "slice p frame_num=3 active=3\n move 0,0 ref=2\n"); // 2 and 1 stand before
    EXPECT_EQ(LumaMaps(frames), (Texts{"10", "10"}));
    for (const char* slice :
         {"slice p frame_num=3 active=3\n move 0,0 ref=0\n",            // not there
          "slice p frame_num=3 active=3 reorder=-1\n move 0,0 ref=0\n", // nor to be reordered
          "slice p frame_num=4 active=3\n move 0,0 ref=2\n"}) {         // 10 slid out
        TestDecoder fresh;
        fresh.Decode(WriteStream(start + slice));
        EXPECT_EQ(fresh.decoder.DroppedUnits(), 1u) << slice;
    }
}

TEST_F(H264Pictures, AReferenceWithTheNumberOfThePreviousOneFailsWhereGapsAreAllowed) {
    const std::string slices =
        "slice idr\n pcm 10\nslice p frame_num=1 lsb=2\n pcm 20\nslice p frame_num=1 lsb=4\n pcm 30\n";
    EXPECT_EQ(LumaMaps(Decode("sps refs=3 poc=0 gaps=1\npps\n" + slices)), (Texts{"10", "20"}));
    EXPECT_EQ(Logged("h264Decode: Gaps in frame num"), 1u);
    TestDecoder without;
    EXPECT_EQ(LumaMaps(without.Decode(WriteStream("sps refs=3 poc=0\npps\n" + slices))),
              (Texts{"10", "20", "30"}));
}

TEST_F(H264Pictures, ThousandsOfTheLongestGapsAreDoneInNoTime) {
    std::string text = "sps refs=3 gaps=1 log2_frame_num=16\npps\nslice idr\n pcm 10\n";
    for (int i = 0; i < 2000; ++i) // each 65533 pictures on, or two back
        text += "slice p frame_num=" + std::to_string(65534 - 2 * i) + " active=3\n pcm 20\n";
    const auto frames = Decode(text + "slice p frame_num=3 active=3 reorder=-1\n move 0,0\n");
    EXPECT_EQ(frames.size(), 2001u);
    EXPECT_EQ(Logged("h264Decode: Reordering"), 1u); // 2 does not exist
}

} // namespace
