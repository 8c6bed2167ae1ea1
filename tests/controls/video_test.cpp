// A camera's pictures on a page: from the simulated camera over TCP to the screen.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "controls/video.h"
#include "media/camera_support.h"
#include "media/h264_stream_writer.h"
#include "media/video_decoder.h"
#include "shell/frame.h"
#include "support/golden.h"
#include "support/test_display.h"

namespace {

using namespace cameratest;
using camsim::AtEnd;
using camsim::CameraServer;
using camsim::ScriptOf;
using camsim::StreamOptions;

constexpr int kCardMbs = 23; // 368 samples, of which 360 are shown

// A test card of 360 x 360: colour bars, a row of stripes, a ramp of greys.
std::string TestCard(const std::string& crop) {
    const std::string bars[] = {"235/128/128", "210/16/146", "170/166/16", "145/54/34",
                                "106/202/222", "81/90/240",  "41/240/110"};
    std::string text = "sps width=23 height=23 crop=" + crop + "\npps\nslice idr\n pcm";
    for (int y = 0; y < kCardMbs; ++y) {
        for (int x = 0; x < kCardMbs; ++x) {
            if (y < 16)
                text += " " + bars[x * 7 / kCardMbs];
            else if (y == 16)
                text += " 235:16:235:16/128/128";
            else
                text += " " + std::to_string(16 + x * 219 / (kCardMbs - 1)) + "/128/128";
        }
    }
    return text + "\n";
}

// The card again with a red field in its middle, as a P picture.
std::string RedField() {
    constexpr int kSide = 7, kFirst = (kCardMbs - kSide) / 2;
    std::string text = "slice p frame_num=1\n skip " + std::to_string(kCardMbs * kFirst + kFirst) + "\n";
    for (int row = 0; row < kSide; ++row)
        text +=
            " pcm 81/90/240*" + std::to_string(kSide) + "\n skip " + std::to_string(kCardMbs - kSide) + "\n";
    return text + " skip " + std::to_string(kCardMbs * kFirst - kFirst) + "\n";
}

// A display with an empty page, and an element for video on that.
struct VideoDisplay {
    explicit VideoDisplay(const CVrRect& place)
        : display(TestHouse::Of(R"([{"T":342,"U":1,"N":"One","C":1},{"T":342,"U":2,"N":"Two","C":1}])")) {
        auto* page = display.Root().CreateChild<CVrGuiFrame>("CVrGuiFrame", false);
        page->flags |= CVrGuiElement::FlagPage;
        page->FillArea(nullptr);
        video = page->CreateChild<CVrGuiVideo>("CVrGuiVideo", false);
        page->ReloadColors();
        if (place.width == kScreenSide)
            page->SetRect(place);
        display.Root().ShowPage(page);
        video->SetRect(place);
        video->PrepareStore();
    }
    Ch264VideoDecoder& Decoder() { return display.App().videoDecoder; }
    void Show(CVrGuiVideo* element, const CameraServer& camera) {
        Decoder().StopShowing(Decoder().videoElement);
        Decoder().camClient.RequestStop();
        Decoder().camClient.Join();
        Decoder().camClient.net.port = camera.Port();
        Decoder().ShowOn(element, Loopback());
    }
    // Passes of the main loop until the element has shown so many pictures, and what follows from that.
    bool WaitForPictures(std::uint32_t count) {
        const bool shown = WaitUntil([&] {
            display.Pass();
            return video->frameCounter >= count;
        });
        display.Settle();
        return shown;
    }
    testing::AssertionResult ScreenMatches(const std::string& name) {
        return golden::Matches(name, display.Screen(), kScreenSide, kScreenSide);
    }

    TestDisplay display;
    CVrGuiVideo* video = nullptr; // of the page
};

camsim::Script Silently(const std::string& text) {
    StreamOptions options;
    options.rate = 0;
    options.atEnd = AtEnd::Silence;
    return ScriptOf(h264test::WriteStream(text), options);
}

// A picture of one luma value a macroblock column, and grey chroma.
struct Columns {
    explicit Columns(std::uint32_t widthMbs, std::uint32_t heightMbs) {
        picture.width = widthMbs * 16;
        picture.height = heightMbs * 16;
        picture.crop = {0, 0, picture.width, picture.height};
        planes.assign(picture.width * picture.height * 3 / 2, 128);
        for (std::uint32_t i = 0; i < picture.width * picture.height; ++i)
            planes[i] = static_cast<std::uint8_t>(16 + i % picture.width);
        picture.planes = planes.data();
    }
    std::vector<std::uint8_t> planes;
    h264::DecodedPicture picture;
};

std::uint32_t Grey(std::uint32_t luma) {
    const std::uint32_t level = (luma - 16) * 1164 / 1000;
    return 0xFF000000U | level * 0x010101U;
}

} // namespace

TEST(GoldenVideo, CameraOnAPageDiesAndComesBack) {
    VideoDisplay shown(CVrRect(0, 0, kScreenSide, kScreenSide));
    auto camera = std::make_unique<CameraServer>(Silently(TestCard("0,4,0,4") + RedField()));
    shown.Show(shown.video, *camera);
    ASSERT_TRUE(shown.WaitForPictures(2));
    EXPECT_TRUE(shown.ScreenMatches("video-doubled"));
    camera.reset();
    shown.display.Advance(500);
    EXPECT_TRUE(shown.ScreenMatches("video-doubled")) << "the last picture stays";
    camera = std::make_unique<CameraServer>(Silently(TestCard("0,4,0,4")));
    shown.Show(shown.video, *camera);
    ASSERT_TRUE(shown.WaitForPictures(3));
    EXPECT_TRUE(shown.ScreenMatches("video-came-back"));
}

TEST(GoldenVideo, OneToOneBesideTheRestOfThePage) {
    VideoDisplay shown(CVrRect(180, 140, 360, 360));
    shown.display.App().WakeForRepaint();
    shown.display.Settle();
    EXPECT_EQ(shown.display.PixelAt(360, 400), shown.display.PixelAt(100, 400)) << "nothing to see yet";
    const CameraServer camera(Silently(TestCard("2,2,2,2")));
    shown.Show(shown.video, camera);
    ASSERT_TRUE(shown.WaitForPictures(1));
    EXPECT_TRUE(shown.ScreenMatches("video-on-page"));
}

TEST(Video, SizeDecidesHowAPictureIsShown) {
    struct Case {
        CVrSize store;
        h264::CropWindow crop;
        bool fits;
        std::uint32_t scale, left; // left: first sample that is shown
    };
    const Case cases[] = {
        {{48, 32}, {0, 0, 48, 32}, true, 1, 0},   {{96, 64}, {0, 0, 48, 32}, true, 2, 0},
        {{48, 32}, {4, 2, 40, 28}, true, 1, 0}, // the coded size comes first
        {{40, 28}, {4, 2, 40, 28}, true, 1, 4},   {{80, 56}, {4, 2, 40, 28}, true, 2, 4},
        {{96, 32}, {0, 0, 48, 32}, false, 0, 0},  {{48, 64}, {0, 0, 48, 32}, false, 0, 0},
        {{144, 96}, {0, 0, 48, 32}, false, 0, 0}, {{40, 32}, {4, 2, 40, 28}, false, 0, 0},
        {{24, 16}, {0, 0, 48, 32}, false, 0, 0},
    };
    for (const Case& c : cases) {
        VideoDisplay shown(CVrRect(0, 0, c.store.width, c.store.height));
        Columns columns(3, 2);
        columns.picture.crop = c.crop;
        SCOPED_TRACE(std::to_string(c.store.width) + "x" + std::to_string(c.store.height));
        EXPECT_EQ(shown.video->ShowFrame(columns.picture), c.fits);
        EXPECT_EQ(shown.video->frameCounter, c.fits ? 1U : 0U);
        if (!c.fits)
            continue;
        shown.display.Pass();
        for (const int y : {0, c.store.height - 1}) {
            for (std::uint32_t x = 0; x < static_cast<std::uint32_t>(c.store.width); ++x)
                ASSERT_EQ(shown.video->Row(y)[x], Grey(16 + c.left + x / c.scale)) << x;
        }
    }
}

// A page that is gone, a display that goes: the thread ends with its element, and with nothing else.
TEST(Video, StreamEndsWithItsElement) {
    StreamOptions options;
    options.rate = 0;
    const CameraServer camera(ScriptOf(h264test::WriteStream(TestCard("0,4,0,4") + RedField()), options));
    EXPECT_LT(Duration([&] {
                  VideoDisplay shown(CVrRect(0, 0, 720, 720));
                  CVrGuiElement* const page = shown.video->parent;
                  auto* other = page->CreateChild<CVrGuiVideo>("CVrGuiVideo", false);
                  shown.Show(shown.video, camera);
                  EXPECT_TRUE(shown.WaitForPictures(2));
                  delete other;
                  EXPECT_TRUE(shown.Decoder().HasThread()) << "it showed on another element";
                  delete shown.video;
                  EXPECT_FALSE(shown.Decoder().HasThread());
                  EXPECT_EQ(shown.Decoder().videoElement, nullptr);
                  shown.video = page->CreateChild<CVrGuiVideo>("CVrGuiVideo", false);
                  shown.video->SetRect(0, 0, 720, 720);
                  shown.video->PrepareStore();
                  shown.Show(shown.video, camera);
                  EXPECT_TRUE(shown.WaitForPictures(1));
                  shown.video->SetRect(0, 0, 300, 300); // no picture fits any more
                  EXPECT_TRUE(WaitUntil([&] {
                      shown.display.Pass();
                      return !shown.Decoder().HasThread();
                  }));
                  shown.video->SetRect(0, 0, 720, 720);
                  shown.video->PrepareStore();
                  shown.Show(shown.video, camera);
              }), // and the display goes while the stream runs
              kPatienceMs);
}

// The real thread of the display draws while the decoder's shows, and takes it along when it ends.
TEST(Video, StreamEndsWithTheMainLoop) {
    StreamOptions options;
    options.rate = 0;
    const CameraServer camera(ScriptOf(h264test::WriteStream(TestCard("0,4,0,4") + RedField()), options));
    VideoDisplay shown(CVrRect(0, 0, 720, 720));
    shown.Show(shown.video, camera);
    CVrGuiApp& app = shown.display.App();
    app.Start();
    EXPECT_TRUE(WaitUntil([&] { return shown.video->frameCounter >= 10; }));
    EXPECT_LT(Duration([&] {
                  app.RequestStop();
                  app.Join();
              }),
              kStopBoundMs);
    EXPECT_FALSE(shown.Decoder().HasThread());
}
