// Whole streams against the checksums of independent decoders, with every set of sample routines; and what
// the decoder makes of streams that it must refuse, that do not fit, or that are damaged.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>
#include <sstream>

#include "media/h264_support.h"

namespace {

using namespace h264test;
namespace fs = std::filesystem;

std::vector<fs::path> Streams(const fs::path& folder) {
    std::vector<fs::path> streams;
    if (!fs::is_directory(folder))
        return streams;
    for (const auto& entry : fs::directory_iterator(folder)) {
        if (entry.path().extension() == ".264")
            streams.push_back(entry.path());
    }
    std::sort(streams.begin(), streams.end());
    return streams;
}

std::vector<std::string> ExpectedSums(fs::path stream) {
    std::ifstream file(stream.replace_extension(".md5"));
    std::vector<std::string> sums;
    for (std::string line; std::getline(file, line);) {
        std::istringstream words(line);
        std::string word, last;
        while (words >> word)
            last = word;
        if (!last.empty())
            sums.push_back(last);
    }
    return sums;
}

std::vector<std::string> Sums(const std::vector<Frame>& frames) {
    std::vector<std::string> sums;
    for (const Frame& frame : frames)
        sums.push_back(frame.Sum());
    return sums;
}

// Streams whose standard output order keeps pictures back; here each leaves at once.
bool OutputOrderDiffers(const fs::path& stream) {
    static const std::set<std::string> names = {"MR4_TANDBERG_C", "MR5_TANDBERG_C", "HCBP2_HHI_A"};
    return names.contains(stream.stem());
}

// Sized by their level, they need more pictures than the pool has room for.
bool NeedsLargerPool(const fs::path& stream) {
    static const std::set<std::string> names = {"CVPCMNL1_SVA_C", "CVFC1_Sony_C"};
    return names.contains(stream.stem()) || stream.parent_path().filename() == "toolarge";
}

constexpr std::uint32_t LargePool = 64u << 20;

class SharedStreams : public testing::Test {
protected:
    void SetUp() override {
        if (!fs::is_directory(SharedVideo()))
            GTEST_SKIP() << "no shared streams at " << SharedVideo() << "; set WALLSLATE_SHARED_DIR";
    }

    static void ExpectExact(const fs::path& stream, const h264::SampleRoutines& routines) {
        SCOPED_TRACE(stream.filename().string() + " with " + routines.name);
        TestDecoder test(NeedsLargerPool(stream) ? LargePool : h264::PoolBytes);
        test.decoder.UseRoutines(routines);
        std::vector<std::string> sums = Sums(test.Decode(ReadBytes(stream)));
        std::vector<std::string> expected = ExpectedSums(stream);
        ASSERT_EQ(sums.size(), expected.size());
        if (OutputOrderDiffers(stream)) {
            std::sort(sums.begin(), sums.end());
            std::sort(expected.begin(), expected.end());
        }
        const auto mismatch = std::mismatch(sums.begin(), sums.end(), expected.begin());
        EXPECT_EQ(mismatch.first - sums.begin(), static_cast<std::ptrdiff_t>(sums.size()))
            << "first wrong picture";
        EXPECT_EQ(test.decoder.DroppedUnits(), 0u);
    }
};

TEST_F(SharedStreams, EveryPictureOfEveryStreamIsExact) {
    for (const char* folder : {"", "speed", "toolarge"}) {
        for (const fs::path& stream : Streams(SharedVideo() / folder))
            ExpectExact(stream, h264::BestRoutines());
    }
}

TEST_F(SharedStreams, OtherRoutinesGiveTheSamePictures) {
    for (const h264::SampleRoutines* routines : {&h264::PlainRoutines(), h264::Sse2Routines()}) {
        for (const char* name :
             {"x264_qvga_scroll", "MR2_TANDBERG_E", "x264_qcif_qp1", "jm_dis2_slices", "CI_MW_D"}) {
            const fs::path stream = SharedVideo() / (std::string(name) + ".264");
            if (routines != nullptr && fs::exists(stream))
                ExpectExact(stream, *routines);
        }
    }
}

TEST_F(SharedStreams, PicturesDoNotDependOnHowTheStreamIsFed) {
    for (const char* name : {"oddnals_a", "mix_sizes_a", "MPS_MW_A"}) {
        const Bytes stream = ReadBytes(SharedVideo() / (std::string(name) + ".264"));
        TestDecoder atOnce;
        EXPECT_EQ(Sums(atOnce.Decode(stream, Feeding::AtOnce)),
                  ExpectedSums(SharedVideo() / (std::string(name) + ".264")))
            << name;
    }
}

TEST_F(SharedStreams, StreamsThatDoNotFitThePoolGiveNoPicture) {
    std::vector<fs::path> streams = Streams(SharedVideo() / "toolarge");
    streams.push_back(SharedVideo() / "CVPCMNL1_SVA_C.264");
    for (const fs::path& stream : streams) {
        TestDecoder test;
        EXPECT_TRUE(test.Decode(ReadBytes(stream)).empty()) << stream;
        EXPECT_GT(test.decoder.DroppedUnits(), 0u) << stream;
    }
}

// Those that keep to the tools in most of their pictures may show these.
TEST_F(SharedStreams, StreamsOutsideOfTheToolSetAreRefused) {
    const std::set<std::string> shownInPart = {"BA3_SVA_C", "bslices_cavlc", "sp2_bt_b"};
    for (const fs::path& stream : Streams(SharedVideo() / "refuse")) {
        TestDecoder test;
        const std::vector<Frame> frames = test.Decode(ReadBytes(stream));
        const bool nothingToRefuse = stream.stem() == "sps_subsetsps_bothVUI"; // but units to skip
        EXPECT_TRUE(frames.empty() || shownInPart.contains(stream.stem())) << stream;
        EXPECT_TRUE(test.decoder.DroppedUnits() > 0 || nothingToRefuse) << stream;
    }
}

TEST_F(SharedStreams, DamagedStreamsEnd) {
    for (const fs::path& stream : Streams(SharedVideo() / "damaged")) {
        for (Feeding feeding : {Feeding::ByUnit, Feeding::AtOnce}) {
            TestDecoder test;
            test.Decode(ReadBytes(stream), feeding);
        }
    }
}

TEST_F(SharedStreams, ALostPictureDisturbsOnlyUpToTheNextIdr) {
    const fs::path original = SharedVideo() / "BA_MW_D.264";
    TestDecoder test;
    const std::vector<std::string> sums =
        Sums(test.Decode(ReadBytes(SharedVideo() / "damaged/BA_MW_D_P_LOST.264")));
    const std::vector<std::string> expected = ExpectedSums(original);
    constexpr std::ptrdiff_t BehindNextIdr = 70;
    ASSERT_EQ(sums.size(), expected.size() - 1);
    EXPECT_EQ(sums.front(), expected.front());
    EXPECT_TRUE(std::equal(sums.end() - BehindNextIdr, sums.end(), expected.end() - BehindNextIdr));
}

// Where each NAL unit begins, and whether it is an IDR slice.
struct UnitPlace {
    std::size_t begin, size;
    bool isIdr;
};
std::vector<UnitPlace> Units(const Bytes& stream) {
    std::vector<UnitPlace> units;
    for (std::size_t at = 0; at < stream.size();) {
        const std::size_t size = UnitLength(stream.data() + at, stream.size() - at);
        std::size_t header = at;
        while (stream[header] == 0)
            ++header;
        units.push_back({at, size, (stream[header + 1] & 31) == 5});
        at += size;
    }
    return units;
}

// Whatever happens to slices and parameter sets between two IDR pictures: behind an IDR picture with good
// parameter sets all pictures are right again.
TEST_F(SharedStreams, DecodingRecoversAtTheNextIdrWithExactPictures) {
    const fs::path path = SharedVideo() / "x264_qcif_keyint5.264";
    const Bytes good = ReadBytes(path);
    const std::vector<std::string> expected = ExpectedSums(path);
    const std::vector<UnitPlace> units = Units(good);
    std::vector<std::size_t> idrs;
    for (std::size_t i = 0; i < units.size(); ++i) {
        if (units[i].isIdr)
            idrs.push_back(i);
    }
    ASSERT_GE(idrs.size(), 6u);
    const std::size_t firstSet = idrs[0]; // units before it are parameter sets and SEI
    const std::size_t recovery = idrs[3];
    const std::size_t picturesBehind = 15; // of 30, 5 between IDR pictures
    std::mt19937 random(7);
    for (int round = 0; round < 60; ++round) {
        Bytes stream(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(units[recovery].begin));
        for (int hit = 0; hit < 1 << (round % 8); ++hit)
            stream[random() % stream.size()] ^= static_cast<std::uint8_t>(1u << random() % 8);
        stream.insert(stream.end(), good.begin(),
                      good.begin() +
                          static_cast<std::ptrdiff_t>(units[firstSet].begin)); // parameter sets again
        stream.insert(stream.end(), good.begin() + static_cast<std::ptrdiff_t>(units[recovery].begin),
                      good.end());
        TestDecoder test;
        const std::vector<std::string> sums = Sums(test.Decode(stream));
        ASSERT_GE(sums.size(), picturesBehind) << "round " << round;
        EXPECT_TRUE(std::equal(sums.end() - picturesBehind, sums.end(), expected.end() - picturesBehind))
            << "round " << round;
    }
}

} // namespace
