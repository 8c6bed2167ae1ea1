// The decoder thread between a simulated camera and an output that keeps what it is shown.
#include <gtest/gtest.h>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <mutex>

#include "media/camera_support.h"
#include "media/h264_support.h"
#include "media/video_decoder.h"
#include "support/log_capture.h"

namespace {

using namespace cameratest;
using camsim::AtEnd;
using camsim::CameraServer;
using camsim::Packet;
using camsim::Script;
using camsim::ScriptOf;
using camsim::StreamOptions;
using h264test::Bytes;
using h264test::WriteStream;

// Keeps the luma map of each picture; refuses pictures of another width than `width`, if that is set.
class Screen : public IVrVideoOutput {
public:
    bool ShowFrame(const h264::DecodedPicture& picture) override {
        const std::size_t size = std::size_t{picture.width} * picture.height * 3 / 2;
        const h264test::Frame frame = {picture.width, picture.height,
                                       Bytes(picture.planes, picture.planes + size), picture.numErrMbs};
        const std::lock_guard lock(mutex);
        if (width != 0 && picture.width != width)
            return false;
        shown.push_back(h264test::LumaMap(frame));
        return true;
    }
    std::vector<std::string> Shown() const {
        const std::lock_guard lock(mutex);
        return shown;
    }

    std::uint32_t width = 0;

private:
    mutable std::mutex mutex;
    std::vector<std::string> shown;
};

void Start(Ch264VideoDecoder& decoder, Screen& screen, std::uint16_t port) {
    decoder.StopShowing(decoder.videoElement);
    decoder.camClient.RequestStop();
    decoder.camClient.Join();
    decoder.camClient.net.port = port;
    decoder.ShowOn(&screen, Loopback());
}

bool Shows(const Screen& screen, const std::vector<std::string>& expected) {
    const bool complete = WaitUntil([&] { return screen.Shown().size() >= expected.size(); });
    EXPECT_EQ(screen.Shown(), expected);
    return complete;
}

// Pictures of two macroblocks; each P picture moves on by one raw macroblock.
const std::string kFirst = "sps width=2\npps\nslice idr\n pcm 10 20\n";
const std::string kSecond = "slice p frame_num=1\n pcm 30\n skip 1\n";
const std::string kThird = "slice p frame_num=2\n skip 1\n pcm 40\n";
const std::vector<std::string> kPictures = {"10 20", "30 20", "30 40"};

Bytes ThreePictures() {
    return WriteStream(kFirst + kSecond + kThird);
}

// A program that runs until this goes; its standard output is read line by line.
class Program {
public:
    explicit Program(std::vector<std::string> words) {
        int ends[2] = {-1, -1};
        EXPECT_EQ(pipe(ends), 0);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
        posix_spawn_file_actions_addclose(&actions, ends[0]);
        std::vector<char*> arguments;
        for (std::string& word : words)
            arguments.push_back(word.data());
        arguments.push_back(nullptr);
        EXPECT_EQ(posix_spawn(&pid, arguments[0], &actions, nullptr, arguments.data(), environ), 0);
        posix_spawn_file_actions_destroy(&actions);
        close(ends[1]);
        output = fdopen(ends[0], "r");
    }
    ~Program() {
        kill(pid, SIGTERM);
        int status = -1;
        waitpid(pid, &status, 0);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "ends cleanly when asked";
        fclose(output);
    }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    std::string ReadLine() {
        char line[512] = {};
        return fgets(line, sizeof line, output) != nullptr ? line : "";
    }

private:
    pid_t pid = -1;
    FILE* output = nullptr;
};

} // namespace

TEST(VideoDecoder, ShowsEachPictureOnceWhateverTheWireDoes) {
    StreamOptions options;
    options.atEnd = AtEnd::Silence;
    options.rate = 100;
    for (const bool faulty : {false, true}) {
        if (faulty) {
            options.byNal = true;
            options.pieceBytes = 5;
            options.faults = {.wrongMagic = 2, .zeroLength = 3, .hugeLength = 1, .audio = 2};
        }
        LogCapture log;
        const CameraServer server(ScriptOf(ThreePictures(), options));
        Screen screen;
        Ch264VideoDecoder decoder;
        Start(decoder, screen, server.Port());
        EXPECT_TRUE(Shows(screen, kPictures));
        EXPECT_TRUE(WaitUntil([&] { return log.Has("Ch264VideoDecoder::MainLoop: Frame 3: Wait "); }));
        EXPECT_EQ(decoder.frameCount, 3);
        EXPECT_EQ(log.Count("Ch264VideoDecoder::MainLoop: h264 Frame 0"), 3U);
        EXPECT_EQ(log.Count("Ch264VideoDecoder::MainLoop: Received "), faulty ? 5U : 3U);
        EXPECT_TRUE(log.Has("Ch264VideoDecoder::MainLoop: start video loop 0"));
    }
}

TEST(VideoDecoder, ShowsWhatTheSimulatorProgramServes) {
    namespace fs = std::filesystem;
    const std::string program = std::string(WALLSLATE_BINARY_DIR) + "/camsim";
    if (!fs::exists(program))
        GTEST_SKIP() << "camsim is not built";
    const fs::path file = fs::temp_directory_path() / ("camsim_" + std::to_string(getpid()) + ".264");
    const Bytes stream = ThreePictures();
    std::ofstream(file, std::ios::binary)
        .write(reinterpret_cast<const char*>(stream.data()), static_cast<std::streamsize>(stream.size()));
    Program camsim({program, file.string(), "--listen", "127.0.0.1:0", "--rate", "50", "--audio", "1",
                    "--pause", "3", "--pause-ms", "30"});
    const std::string line = camsim.ReadLine();
    fs::remove(file);
    ASSERT_TRUE(line.starts_with("serving " + file.string() + " on 127.0.0.1:")) << line;
    Screen screen;
    Ch264VideoDecoder decoder;
    Start(decoder, screen, static_cast<std::uint16_t>(std::stoi(line.substr(line.rfind(':') + 1))));
    EXPECT_EQ(camsim.ReadLine(), "client connected\n");
    EXPECT_TRUE(WaitUntil([&] { return screen.Shown().size() >= 6; })) << "begins again at the end";
    const std::vector<std::string> shown = screen.Shown();
    EXPECT_EQ(std::vector<std::string>(shown.begin(), shown.begin() + 3), kPictures);
    EXPECT_EQ(std::vector<std::string>(shown.begin() + 3, shown.begin() + 6), kPictures);
    EXPECT_GT(decoder.camClient.audioIn.Held(), 0U);
}

// Everything in one packet, the connection gone before the first picture is on the screen: all are shown.
TEST(VideoDecoder, ShowsWhatIsLeftAfterTheEndOfTheStream) {
    const CameraServer server({{{Packet('H', ThreePictures())}}, AtEnd::Close});
    Screen screen;
    Ch264VideoDecoder decoder;
    Start(decoder, screen, server.Port());
    EXPECT_TRUE(Shows(screen, kPictures));
    EXPECT_TRUE(WaitUntil([&] { return decoder.camClient.streamState == CCamClient::StreamEnded; }));
    EXPECT_TRUE(decoder.HasThread()) << "the last picture stays until somebody stops the run";
}

TEST(VideoDecoder, UnitOfSizeZeroIsSkipped) {
    const CameraServer silent({{}, AtEnd::Silence});
    Screen screen;
    Ch264VideoDecoder decoder;
    Start(decoder, screen, silent.Port());
    CCamClient& client = decoder.camClient;
    ASSERT_TRUE(WaitUntil([&] { return client.streamState == CCamClient::Connected; }));
    const Bytes unit = WriteStream(kFirst);
    client.frameSizes[0] = 0; // in place of the stream thread, which waits
    std::copy(unit.begin(), unit.end(), client.frames[1].GetData());
    client.frameSizes[1] = static_cast<std::uint32_t>(unit.size());
    client.writeIndex = 2;
    EXPECT_TRUE(Shows(screen, {"10 20"}));
    EXPECT_TRUE(WaitUntil([&] { return client.readIndex == 2; }));
}

TEST(VideoDecoder, PictureThatDoesNotFitEndsTheRunAndTheStream) {
    StreamOptions options;
    options.rate = 100;
    const Bytes otherSize = WriteStream("sps width=3\npps\nslice idr\n pcm 50*3\n");
    Bytes stream = WriteStream(kFirst);
    stream.insert(stream.end(), otherSize.begin(), otherSize.end());
    const CameraServer server(ScriptOf(stream, options));
    Screen screen;
    screen.width = 32;
    Ch264VideoDecoder decoder;
    Start(decoder, screen, server.Port());
    EXPECT_TRUE(WaitUntil([&] { return !decoder.HasThread() && !decoder.camClient.HasThread(); }));
    EXPECT_EQ(screen.Shown(), std::vector<std::string>{"10 20"});
}

// A sequence that the memory cannot hold costs one line and its pictures; what fits afterwards is shown.
TEST(VideoDecoder, OutlivesASequenceThatExhaustsItsMemory) {
    const Bytes tooLarge = WriteStream("sps width=120 height=68 refs=1\npps\nslice idr\n pcm 1\n");
    LogCapture log(LogError);
    const CameraServer server(
        {{{Packet('H', tooLarge)}, {Packet('H', ThreePictures()), 20}}, AtEnd::Silence});
    Screen screen;
    Ch264VideoDecoder decoder;
    Start(decoder, screen, server.Port());
    EXPECT_TRUE(Shows(screen, kPictures));
    EXPECT_TRUE(log.Has("Ch264VideoDecoder::nH264malloc: ")) << "out of memory";
}

TEST(VideoDecoder, NewStartShowsTheCameraThatCameBack) {
    Screen screen;
    Ch264VideoDecoder decoder;
    StreamOptions options;
    options.rate = 0;
    options.atEnd = AtEnd::Close;
    options.faults.cutIn = 2; // dies in the middle of a picture
    std::uint16_t port = 0;
    {
        const CameraServer server(ScriptOf(ThreePictures(), options));
        port = server.Port();
        Start(decoder, screen, port);
        EXPECT_TRUE(Shows(screen, {"10 20"}));
        EXPECT_TRUE(WaitUntil([&] { return decoder.camClient.streamState == CCamClient::StreamEnded; }));
    }
    options.faults.cutIn = 0;
    const CameraServer back(ScriptOf(ThreePictures(), options), "127.0.0.1", port);
    Start(decoder, screen, port);
    EXPECT_TRUE(Shows(screen, {"10 20", "10 20", "30 20", "30 40"}));
    EXPECT_TRUE(WaitUntil([&] { return decoder.frameCount == 3; })) << "counted in this run";
}

TEST(VideoDecoder, StopsAndDestructionsEndAtOnceInEverySituation) {
    StreamOptions options;
    options.rate = 0;
    const CameraServer busy(ScriptOf(ThreePictures(), options));
    const CameraServer silent({{}, AtEnd::Silence});
    const DeafListener deaf;
    std::uint16_t nobody = 0;
    {
        const CameraServer gone({});
        nobody = gone.Port();
    }
    for (const std::uint16_t port : {busy.Port(), silent.Port(), deaf.port, nobody}) {
        for (const std::uint32_t afterMs : {0U, 50U}) {
            EXPECT_LT(Duration([&] {
                          Screen screen, other;
                          Ch264VideoDecoder decoder;
                          decoder.Start(); // without an element it ends by itself
                          decoder.Join();
                          Start(decoder, screen, port);
                          platform::SleepMs(afterMs);
                          decoder.StopShowing(&other); // shows on another output: goes on
                          decoder.StopShowing(&screen);
                          EXPECT_FALSE(decoder.HasThread());
                          Start(decoder, screen, port);
                          Start(decoder, screen, port);
                          decoder.RequestStop();
                          decoder.Start();
                          platform::SleepMs(afterMs);
                      }),
                      kStopBoundMs)
                << "port " << port << " after " << afterMs;
        }
    }
}
