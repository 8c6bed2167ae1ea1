// Streams that an independent encoder makes on the spot, against an independent decoder; and h264dump as a
// program.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <sstream>

#include "media/h264_support.h"

namespace {

using namespace h264test;
namespace fs = std::filesystem;

struct Outcome {
    int exitCode = -1;
    std::vector<std::string> lines; // of standard output
};

Outcome Shell(const std::string& command) {
    Outcome outcome;
    std::FILE* pipe = popen(command.c_str(), "r");
    if (pipe == nullptr)
        return outcome;
    std::string text;
    for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe))
        text += static_cast<char>(c);
    const int status = pclose(pipe);
    outcome.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        outcome.lines.push_back(line);
    return outcome;
}

class MadeStreams : public testing::Test {
protected:
    void SetUp() override {
        folder = fs::temp_directory_path() / ("h264_made_" + std::to_string(getpid()));
        fs::create_directories(folder);
    }
    void TearDown() override { fs::remove_all(folder); }

    fs::path Save(const Bytes& bytes) const {
        const fs::path path = folder / "stream.264";
        std::ofstream(path, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        return path;
    }

    fs::path folder;
};

// ---- An encoder on the spot ----

// The encoder's black box gets pictures of all kinds: still and fast, flat and noisy, fading, panning beyond the border.
struct Setting {
    const char* source; // a filter graph without its size
    const char* size;
    const char* options;
};

constexpr Setting Settings[] = {
    {"mandelbrot=s=%", "176x144", "-crf 20"},
    {"mandelbrot=s=%", "176x144", "-qp 48 -x264-params deblock=-6,-6:ref=4"},
    {"mandelbrot=s=%", "368x368", "-crf 28 -x264-params slices=5:ref=3:partitions=all:me=umh"},
    {"mandelbrot=s=%", "64x48", "-qp 3 -x264-params constrained-intra=1"},
    {"mandelbrot=s=%", "16x16", "-crf 15 -x264-params chroma-qp-offset=9:ref=16"},
    {"testsrc2=s=%", "322x238", "-b:v 90k -x264-params no-deblock=1:keyint=7:scenecut=0"},
    {"color=gray:s=%,noise=alls=100:allf=t", "98x50",
     "-qp 1 -x264-params slice-max-mbs=3:chroma-qp-offset=-12"},
    {"color=gray:s=%,noise=alls=100:allf=t", "48x80", "-qp 51 -x264-params ref=16:qpmax=51:deblock=6,-6"},
    {"mandelbrot=s=%,scroll=h=0.37:v=0.21", "130x98",
     "-crf 22 -x264-params ref=9:partitions=all:me=esa:merange=48"},
    {"testsrc2=s=%,fade=in:0:12", "720x16", "-crf 24 -x264-params keyint=1:slices=2:aud=1"},
    {"testsrc2=s=%,rotate=t*6", "18x366",
     "-crf 18 -x264-params intra-refresh=1:keyint=8:sps-id=31:slice-max-size=150"},
    {"life=s=%:ratio=0.3", "256x96",
     "-crf 30 -x264-params keyint=infinite:constrained-intra=1:slices=4:ref=2"},
};

class Encoded : public MadeStreams {
protected:
    void SetUp() override {
        MadeStreams::SetUp();
        if (Shell("ffmpeg -version 2>&1").exitCode != 0)
            GTEST_SKIP() << "no ffmpeg here";
    }
    std::string Path() const { return (folder / "made.264").string(); }
    // False when the encoder is not there.
    bool Encode(const Setting& setting) const {
        std::string source = setting.source;
        source.replace(source.find('%'), 1, setting.size);
        return Shell("ffmpeg -loglevel error -f lavfi -i '" + source + "' -frames:v 20 " + setting.options +
                     " -pix_fmt yuv420p -c:v libx264 -profile:v baseline -threads 1 -y " + Path() + " 2>&1")
                   .exitCode == 0;
    }
    std::vector<std::string> SumsOfTheOther() const {
        std::vector<std::string> sums;
        for (const std::string& line :
             Shell("ffmpeg -loglevel error -threads 1 -i " + Path() + " -f framemd5 -").lines) {
            if (!line.empty() && line[0] != '#')
                sums.push_back(line.substr(line.rfind(' ') + 1));
        }
        return sums;
    }
};

std::vector<std::string> SumsOf(const Bytes& stream) {
    TestDecoder test;
    std::vector<std::string> sums;
    for (const Frame& frame : test.Decode(stream)) {
        const Bytes shown = frame.Shown();
        sums.push_back(Md5::Of(shown.data(), shown.size()));
    }
    return sums;
}

// The slices of each picture from the last to the first.
Bytes WithSlicesReversed(const Bytes& stream) {
    Bytes out;
    std::vector<Bytes> slices;
    const auto flush = [&] {
        for (auto slice = slices.rbegin(); slice != slices.rend(); ++slice)
            out.insert(out.end(), slice->begin(), slice->end());
        slices.clear();
    };
    for (std::size_t at = 0; at < stream.size();) {
        const std::size_t length = UnitLength(stream.data() + at, stream.size() - at);
        const Bytes unit(stream.begin() + static_cast<std::ptrdiff_t>(at),
                         stream.begin() + static_cast<std::ptrdiff_t>(at + length));
        const std::size_t header = unit[2] == 1 ? 3 : 4;
        const unsigned type = unit[header] & 31;
        const bool isSlice = type == 1 || type == 5;
        if (!isSlice || (unit[header + 1] & 0x80) != 0) // first_mb_in_slice is 0
            flush();
        if (isSlice)
            slices.push_back(unit);
        else
            out.insert(out.end(), unit.begin(), unit.end());
        at += length;
    }
    flush();
    return out;
}

TEST_F(Encoded, PicturesEqualThoseOfAnIndependentDecoderInWhateverOrderTheSlicesCome) {
    for (const Setting& setting : Settings) {
        SCOPED_TRACE(std::string(setting.size) + " " + setting.options);
        if (!Encode(setting))
            GTEST_SKIP() << "ffmpeg cannot encode";
        const std::vector<std::string> expected = SumsOfTheOther();
        const Bytes stream = ReadBytes(Path());
        EXPECT_EQ(expected.size(), 20u);
        EXPECT_EQ(SumsOf(stream), expected);
        EXPECT_EQ(SumsOf(WithSlicesReversed(stream)), expected);
    }
}

// ---- h264dump ----

class H264Dump : public MadeStreams {
protected:
    void SetUp() override {
        MadeStreams::SetUp();
        if (!fs::exists(program))
            GTEST_SKIP() << "h264dump is not built";
    }
    const std::string program = std::string(WALLSLATE_BINARY_DIR) + "/h264dump";
};

TEST_F(H264Dump, PrintsOneLineForEachPictureAndTheTotals) {
    const Bytes stream =
        WriteStream("sps width=2 refs=1\npps\nslice idr\n pcm 1 2\nslice p frame_num=1\n skip 2\n"
                    "slice p frame_num=2\n ue 3\nslice p frame_num=3\n skip 2\n");
    TestDecoder test;
    const std::string sum = test.Decode(stream).at(0).Sum();
    const Outcome dump = Shell(program + " " + Save(stream).string());
    EXPECT_EQ(dump.exitCode, 0);
    EXPECT_EQ(dump.lines, (std::vector<std::string>{"0 32x16 " + sum, "1 32x16 " + sum, "2 32x16 " + sum,
                                                    "3 32x16 " + sum, "pictures 4 errors 1 concealed 2"}));
}

TEST_F(H264Dump, WritesThePlanesAndTheLog) {
    const Bytes stream = WriteStream("sps\npps\nslice idr\n pcm 7/8/9\n");
    const std::string yuv = (folder / "out.yuv").string();
    const Outcome dump =
        Shell(program + " " + Save(stream).string() + " --yuv " + yuv + " --log 2>&1 >/dev/null");
    TestDecoder test;
    EXPECT_EQ(ReadBytes(yuv), test.Decode(stream).at(0).planes);
    EXPECT_TRUE(std::any_of(dump.lines.begin(), dump.lines.end(),
                            [](const std::string& line) { return line.ends_with("SLICE DATA,FIRST 0"); }));
}

TEST_F(H264Dump, EndsWellOnAnyDataAndSaysWhatIsMissing) {
    EXPECT_EQ(Shell(program + " " + Save({}).string()).lines,
              std::vector<std::string>{"pictures 0 errors 0 concealed 0"});
    EXPECT_EQ(Shell(program + " " + Save({1, 2, 3}).string()).lines,
              std::vector<std::string>{"pictures 0 errors 1 concealed 0"});
    EXPECT_EQ(Shell(program + " " + (folder / "absent").string() + " 2>&1").exitCode, 1);
    EXPECT_EQ(Shell(program + " 2>&1").exitCode, 2);
}

} // namespace
