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

// ---- An encoder on the spot
// ------------------------------------------------------------------------------------

constexpr const char* EncoderSettings[] = {
    "-s 176x144 -crf 20",
    "-s 176x144 -qp 48 -x264-params deblock=-6,-6:ref=4",
    "-s 368x368 -crf 28 -x264-params slices=5:ref=3:partitions=all:me=umh",
    "-s 64x48 -qp 3 -x264-params constrained-intra=1",
    "-s 16x16 -crf 15 -x264-params chroma-qp-offset=9:ref=16",
    "-s 320x240 -b:v 90k -x264-params no-deblock=1:keyint=7:scenecut=0",
};

TEST_F(MadeStreams, PicturesEqualThoseOfAnIndependentDecoder) {
    if (Shell("ffmpeg -version 2>&1").exitCode != 0)
        GTEST_SKIP() << "no ffmpeg here";
    const std::string path = (folder / "made.264").string();
    for (const std::string settings : EncoderSettings) {
        const Outcome made =
            Shell("ffmpeg -loglevel error -f lavfi -i mandelbrot=s=320x240:r=25 -frames:v 20 " + settings +
                  " -pix_fmt yuv420p -c:v libx264 -profile:v baseline -threads 1 -y " + path + " 2>&1");
        if (made.exitCode != 0)
            GTEST_SKIP() << "ffmpeg cannot encode: " << (made.lines.empty() ? "" : made.lines[0]);
        const Outcome sums = Shell("ffmpeg -loglevel error -threads 1 -i " + path + " -f framemd5 -");
        std::vector<std::string> expected;
        for (const std::string& line : sums.lines) {
            if (!line.empty() && line[0] != '#')
                expected.push_back(line.substr(line.rfind(' ') + 1));
        }
        TestDecoder test;
        std::vector<std::string> actual;
        for (const Frame& frame : test.Decode(ReadBytes(path)))
            actual.push_back(frame.Sum());
        EXPECT_EQ(actual.size(), 20u) << settings;
        EXPECT_EQ(actual, expected) << settings;
    }
}

// ---- h264dump
// --------------------------------------------------------------------------------------------------

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
