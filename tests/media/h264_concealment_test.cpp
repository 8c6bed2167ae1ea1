// What is shown in place of lost macroblocks, with expectations worked out by hand, and how the decoder keeps
// within its memory.
#include "media/h264_support.h"

namespace {

using namespace h264test;
using Texts = std::vector<std::string>;

class H264Concealment : public WrittenStreams {};
class H264Memory : public WrittenStreams {};

// A unit that closes the open picture.
const std::string Close = "nal 0 9 f0\n";

// ---- Whole pictures ----

TEST_F(H264Concealment, AnIntraPictureWithoutAGoodSliceIsGreyInAllPlanes) {
    const auto frames = Decode("sps width=2 height=2\npps\nslice idr\n ue 26\n" + Close);
    ASSERT_EQ(frames.size(), 1u);
    EXPECT_TRUE(
        std::all_of(frames[0].planes.begin(), frames[0].planes.end(), [](auto s) { return s == 128; }));
    EXPECT_EQ(frames[0].numErrMbs, 4u);
    EXPECT_EQ(Logged("h264Conceal: Concealing intra slice"), 1u);
}

TEST_F(H264Concealment, AStreamThatStartsWithAPredictedPictureIsGreyUntilTheIdr) {
    const auto frames =
        Decode("sps width=2 refs=1\npps\nslice p frame_num=4\n skip 2\nslice idr\n pcm 10 20\n");
    EXPECT_EQ(LumaMaps(frames), (Texts{"128 128", "10 20"}));
    EXPECT_EQ(Logged("h264DecodeSliceData: MACRO_BLOCK"), 1u);
    EXPECT_EQ(Logged("h264Conceal: Concealing inter slice"), 1u);
}

TEST_F(H264Concealment, APredictedPictureWithoutAGoodSliceRepeatsTheReference) {
    const auto frames = Decode(
        "sps width=2 refs=1\npps\nslice idr\n pcm 10/1/2 20/3/4\nslice p frame_num=1\n ue 3\n" + Close);
    ASSERT_EQ(frames.size(), 2u);
    EXPECT_EQ(frames[0].planes, frames[1].planes);
    EXPECT_EQ(frames[1].numErrMbs, 2u);
}

// ---- Lost slices ----

TEST_F(H264Concealment, ALostSliceOfAPredictedPictureShowsTheReferenceAtItsPlace) {
    // 130 and 250 differ too much for the filter, which runs over concealed macroblocks with QP 40.
    const auto frames = Decode("sps width=2 height=2 refs=1\npps\nslice idr\n pcm 10 20 130/5/6 250/7/8\n"
                               "slice p frame_num=1\n pcm 50*2\n" +
                               Close);
    ASSERT_EQ(frames.size(), 2u);
    EXPECT_EQ(LumaMap(frames[1]), "50 50/130 250");
    EXPECT_EQ(frames[1].Cb(0, 8), 5);
    EXPECT_EQ(frames[1].Cr(0, 15), 6);
    EXPECT_EQ(frames[1].numErrMbs, 2u);
}

TEST_F(H264Concealment, AnyUnitOfTypes6To11ClosesTheOpenPicture) {
    for (const char* type : {"6", "7", "8", "9", "10", "11"}) {
        TestDecoder fresh;
        const std::string ref = std::string(type) == "7" || std::string(type) == "8" ? "1 " : "0 ";
        const auto frames =
            fresh.Decode(WriteStream("sps width=2\npps\nslice idr\n pcm 10\nnal " + ref + type + " 80\n"));
        EXPECT_EQ(frames.size(), 1u) << type;
    }
    TestDecoder fresh; // filler data does not
    EXPECT_TRUE(fresh.Decode(WriteStream("sps width=2\npps\nslice idr\n pcm 10\nnal 0 12 ff80\n")).empty());
}

TEST_F(H264Concealment, TheFillRunsFromOneSideToTheOther) {
    const auto frames =
        Decode("sps width=3\npps\nslice idr\n pcm 100\nslice idr first=2\n pcm 140\n" + Close);
    ASSERT_EQ(frames.size(), 1u);
    // dc 120, h -20: cells of 100, 110, 130, 140, then filtered with QP 40 (bS 3, tC0 7) at their edges.
    const std::uint8_t expected[] = {100, 100, 102, 104, 106, 107, 113, 118,
                                     122, 125, 130, 134, 136, 137, 140, 140};
    for (std::uint32_t i = 0; i < 16; ++i) {
        EXPECT_EQ(frames[0].Luma(16 + i, 0), expected[i]) << i;
        EXPECT_EQ(frames[0].Luma(16 + i, 15), expected[i]) << i;
    }
    // Chroma: cells of two samples; at QP_C 36 the filter (tC 5) moves the two at the middle edge.
    const std::uint8_t chroma[] = {100, 100, 110, 115, 125, 130, 140, 140};
    for (std::uint32_t i = 0; i < 8; ++i) {
        EXPECT_EQ(frames[0].Cb(8 + i, 3), chroma[i]) << i;
        EXPECT_EQ(frames[0].Cr(8 + i, 7), chroma[i]) << i;
    }
    EXPECT_EQ(frames[0].numErrMbs, 1u);
}

TEST_F(H264Concealment, TheFillRunsFromTopToBottomAlike) {
    const auto frames =
        Decode("sps height=3\npps\nslice idr\n pcm 100\nslice idr first=2\n pcm 140\n" + Close);
    ASSERT_EQ(frames.size(), 1u);
    const std::uint8_t expected[] = {100, 100, 102, 104, 106, 107, 113, 118,
                                     122, 125, 130, 134, 136, 137, 140, 140};
    for (std::uint32_t i = 0; i < 16; ++i)
        EXPECT_EQ(frames[0].Luma(9, 16 + i), expected[i]) << i;
}

TEST_F(H264Concealment, OneSideGivesItsMeanAndItsSlope) {
    const auto frames = Decode("sps height=2\npps\nslice idr\n pcm 0:40:120:160\n" + Close);
    ASSERT_EQ(frames.size(), 1u);
    // dc 80, h -60: cells of 20, 50, 110, 140. The filter leaves the outermost samples.
    for (std::uint32_t y = 16; y < 32; ++y) {
        EXPECT_EQ(frames[0].Luma(0, y), 20);
        EXPECT_EQ(frames[0].Luma(1, y), 20);
        EXPECT_EQ(frames[0].Luma(14, y), 140);
        EXPECT_EQ(frames[0].Luma(15, y), 140);
    }
    const std::uint8_t chroma[] = {20, 20, 50, 0, 0, 110, 140, 140}; // 3 and 4 are filtered
    for (std::uint32_t x : {0u, 1u, 2u, 5u, 6u, 7u})
        EXPECT_EQ(frames[0].Cb(x, 12), chroma[x]) << x;
}

TEST_F(H264Concealment, TwoThreeAndFourSidesGiveTheirMean) {
    // Sides of no slope: one value, the mean. Steps above 7 at the macroblock's edges are not filtered (QP
    // 20).
    const auto two = Decode("sps width=2 height=2\npps\nslice idr\n pcm 0 100/40/60 140/80/20\n" + Close);
    ASSERT_EQ(two.size(), 1u);
    EXPECT_EQ(LumaMap(two[0]), "0 100/140 120");
    EXPECT_EQ(two[0].Cb(12, 12), 60);
    EXPECT_EQ(two[0].Cr(12, 12), 40);

    TestDecoder threeSides;
    const auto three = threeSides.Decode(WriteStream(
        "sps width=3 height=2\npps\nslice idr\n pcm 100\nslice idr first=2\n pcm 140 1 120 2\n" + Close));
    ASSERT_EQ(three.size(), 1u);
    // (1600 + 2240 + 1920) * 21 >> 10 is 118; h runs over the flat side below, v over two flat sides.
    EXPECT_EQ(LumaMap(three[0]), "100 118 140/1 120 2");
    EXPECT_EQ(three[0].Cb(12, 4), 118);

    TestDecoder fourSides;
    const auto four = fourSides.Decode(WriteStream("sps width=3 height=3\npps\nslice idr\n pcm 0 100 0 120\n"
                                                   "slice idr first=5\n pcm 140 0 200 0\n" +
                                                   Close));
    ASSERT_EQ(four.size(), 1u);
    EXPECT_EQ(LumaMap(four[0]), "0 100 0/120 140 140/0 200 0"); // 560 / 4
}

// ---- Failed slices ----

TEST_F(H264Concealment, AFailedIntraSliceLosesItsLastMacroblocks) {
    // 4 x 6 macroblocks; number 20 is broken. Doubt begins 10 before the last one that was reached, 19: at 9.
    const auto frames = Decode("sps width=4 height=6\npps\nslice idr\n pcm 60*20\n ue 26\n" + Close);
    ASSERT_EQ(frames.size(), 1u);
    EXPECT_EQ(frames[0].numErrMbs, 24u - 9u);
    EXPECT_EQ(frames[0].Luma(0, 32), 60); // number 8 stays
}

TEST_F(H264Concealment, AFailedPredictedSliceIsLostAsAWhole) {
    const auto frames =
        Decode("sps width=4 height=2 refs=1\npps\nslice idr\n pcm 60*8\n"
               "slice p frame_num=1\n pcm 70*2\nslice p frame_num=1 first=2\n pcm 200*4\n ue 0\n ue 31\n" +
               Close);
    ASSERT_EQ(frames.size(), 2u);
    EXPECT_EQ(frames[1].numErrMbs, 6u);
    EXPECT_EQ(LumaMap(frames[1]), "70 70 60 60/60 60 60 60");
}

TEST_F(H264Concealment, ASliceThatComesAgainFillsWhatAFailedOneLeft) {
    const auto frames =
        Decode("sps width=4 refs=1\npps\nslice idr\n pcm 60*4\n"
               "slice p frame_num=1\n pcm 70*2\n ue 0\n ue 31\nslice p frame_num=1\n pcm 80*4\n");
    EXPECT_EQ(LumaMaps(frames), (Texts{"60 60 60 60", "80 80 80 80"}));
    EXPECT_EQ(frames.at(1).numErrMbs, 0u);
}

// ---- Memory ----

TEST_F(H264Memory, ParameterSetsThatRepeatForEverCostTheirMemoryOnce) {
    const std::string sets = "sps poc=1 cycle=1,2,3\nsps id=3 poc=1 cycle=5,6,7\npps groups=2 map=6 ids=0\n"
                             "pps id=9 groups=3 map=6 ids=0,1,2,0,1,2\n";
    Decode(sets);
    const std::uint32_t used = test.decoder.Memory().Used();
    for (int i = 0; i < 2000; ++i)
        Decode(sets);
    EXPECT_EQ(test.decoder.Memory().Used(), used);
}

std::string Repeated(const std::string& line, int count) {
    std::string text;
    for (int i = 0; i < count; ++i)
        text += line + "\n";
    return text;
}

TEST_F(H264Memory, APictureOfTheScreensSizeWithOneReferenceFitsThePool) {
    constexpr int Mbs = 45 * 45;
    const auto frames = Decode("sps width=45 height=45 refs=1\npps\nslice idr\n" + Repeated("i16 2", Mbs) +
                               "slice p frame_num=1\n skip 2025\n");
    ASSERT_EQ(frames.size(), 2u);
    EXPECT_EQ(frames[1].width, 720u);
    EXPECT_EQ(frames[1].planes, Bytes(720 * 720 * 3 / 2, 128)); // DC without neighbours, all over
}

TEST_F(H264Memory, ASequenceThatDoesNotFitIsRefusedAndTheNextOneDecodes) {
    const std::string large = "sps width=64 height=48 refs=1\npps\nslice idr\n i16 2\n";
    EXPECT_TRUE(Decode(large).empty());
    EXPECT_EQ(Logged("h264Decode: Param set activation"), 1u);
    EXPECT_GE(log.Count("nH264malloc: 13: out of memory"), 1u);
    const std::uint32_t used = test.decoder.Memory().Used();
    for (int i = 0; i < 100; ++i)
        Decode(large);
    EXPECT_EQ(test.decoder.Memory().Used(), used); // attempts leave nothing behind
    EXPECT_EQ(LumaMaps(Decode("sps width=2\npps\nslice idr\n pcm 1 2\n")), Texts{"1 2"});
}

TEST_F(H264Memory, SizesThatNoMemoryHoldsAreRefused) {
    for (const char* size :
         {"width=100000 height=100000", "width=4294967295 height=4294967295", "width=65536 height=65536"}) {
        TestDecoder fresh;
        EXPECT_TRUE(
            fresh.Decode(WriteStream("sps " + std::string(size) + "\npps\nslice idr\n i16 2\n")).empty());
        EXPECT_EQ(fresh.decoder.DroppedUnits(), 1u) << size;
    }
}

TEST_F(H264Memory, SequencesThatAlternateShareTheirMemory) {
    const std::string pair = "sps width=10 height=10 refs=1\npps\nslice idr\n" + Repeated("i16 2", 100) +
                             "sps width=20 height=20 refs=1\npps\nslice idr\n" + Repeated("i16 2", 400);
    Decode(pair);
    const std::uint32_t used = test.decoder.Memory().Used();
    std::size_t pictures = 0;
    for (int i = 0; i < 50; ++i)
        pictures += Decode(pair).size();
    EXPECT_EQ(pictures, 100u);
    EXPECT_EQ(test.decoder.Memory().Used(), used);
}

TEST_F(H264Memory, AFullPoolDropsNewParameterSetsAndKeepsTheOld) {
    TestDecoder small(4096);
    Bytes stream = WriteStream("sps\npps\n");
    small.Decode(stream);
    for (int id = 1; id < 256; ++id)
        small.Decode(WriteStream("pps id=" + std::to_string(id)));
    EXPECT_GE(log.Count("nH264malloc: 3: out of memory"), 100u);
    EXPECT_EQ(small.decoder.DroppedUnits(), 0u); // their lines stand alone
    EXPECT_LE(small.decoder.Memory().Used(), 4096u);
}

TEST_F(H264Memory, AllocationsAreLoggedWithWhatIsLeft) {
    TestDecoder small(2048);
    const std::string tag = "Ch264VideoDecoder::nH264malloc: ";
    ASSERT_EQ(Lines().size(), 2u); // of the fixture's decoder, too
    EXPECT_TRUE(Lines()[1].starts_with(tag + "50: malloc 0x")) << Lines()[1];
    EXPECT_TRUE(Lines()[1].ends_with("/2048)")) << Lines()[1];
}

} // namespace
