// The pieces of the live page that need no network: picture updates, touch pacing, words for commands, the
// guard.
#include "desktop/fault.h"
#include "desktop/house_index.h"
#include "desktop/live_guard.h"
#include "desktop/tile_store.h"
#include "desktop/touch_pacer.h"

#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <random>

namespace {

using namespace desktop;
using namespace std::chrono_literals;

// ---- picture updates ----

std::vector<std::uint8_t> FrameOf(std::uint8_t value) {
    return std::vector<std::uint8_t>(FrameBytes, value);
}

void SetPixel(std::vector<std::uint8_t>& frame, int x, int y, std::uint32_t rgb) {
    std::uint8_t* p =
        frame.data() + (static_cast<std::size_t>(y) * FramePixels + static_cast<std::size_t>(x)) * PixelBytes;
    p[0] = static_cast<std::uint8_t>(rgb);
    p[1] = static_cast<std::uint8_t>(rgb >> 8);
    p[2] = static_cast<std::uint8_t>(rgb >> 16);
}

// A viewer as the page is one: keeps a picture and takes updates into it.
class Viewer {
public:
    void Take(const std::vector<std::uint8_t>& update) {
        const auto u16 = [&](std::size_t at) { return update[at] | update[at + 1] << 8; };
        ASSERT_EQ(update[0], 1);
        tiles = static_cast<std::size_t>(u16(2));
        serial = static_cast<std::uint32_t>(u16(4) | u16(6) << 16);
        const std::span<const std::uint8_t> body = std::span(update).subspan(8 + 2 * tiles);
        std::vector<std::uint32_t> pixels;
        if (update[1] == 1)
            pixels = DecodePixels(body, tiles * 256);
        else
            for (std::size_t i = 0; i + 2 < body.size(); i += 3)
                pixels.push_back(std::uint32_t{body[i]} << 16 | std::uint32_t{body[i + 1]} << 8 |
                                 body[i + 2]);
        ASSERT_EQ(pixels.size(), tiles * 256);
        for (std::size_t t = 0; t < tiles; ++t)
            for (int i = 0; i < 256; ++i)
                SetPixel(picture, u16(8 + 2 * t) % 49 * 16 + i % 16, u16(8 + 2 * t) / 49 * 16 + i / 16,
                         pixels[t * 256 + static_cast<std::size_t>(i)]);
    }

    std::vector<std::uint8_t> picture = FrameOf(0);
    std::uint32_t serial = 0;
    std::size_t tiles = 0;
};

TEST(TileStore, AViewerThatSkipsUpdatesEndsWithTheSamePicture) {
    std::mt19937 random(7);
    TileStore store;
    Viewer eager, lazy;
    std::vector<std::uint8_t> frame = FrameOf(0);
    for (int round = 0; round < 60; ++round) {
        const int side = 1 + static_cast<int>(random() % 90);
        const int left = static_cast<int>(random() % static_cast<unsigned>(FramePixels - side));
        const int top = static_cast<int>(random() % static_cast<unsigned>(FramePixels - side));
        const bool noisy = random() % 2;
        const std::uint32_t colour = random() & 0xFFFFFF;
        for (int y = top; y < top + side; ++y)
            for (int x = left; x < left + side; ++x)
                SetPixel(frame, x, y, noisy ? random() & 0xFFFFFF : colour);
        store.Update(frame);
        eager.Take(store.UpdateSince(eager.serial));
        if (round % 7 == 0)
            lazy.Take(store.UpdateSince(lazy.serial));
    }
    lazy.Take(store.UpdateSince(lazy.serial));
    EXPECT_TRUE(eager.picture == frame);
    EXPECT_TRUE(lazy.picture == frame);
}

TEST(TileStore, OnlyChangedTilesTravelAndSameFramesDoNot) {
    TileStore store;
    std::vector<std::uint8_t> frame = FrameOf(9);
    EXPECT_EQ(store.Update(frame), TileStore::TileCount);
    EXPECT_EQ(store.Update(frame), 0);
    EXPECT_EQ(store.Serial(), 1u);
    SetPixel(frame, 783, 783, 0x123456);
    EXPECT_EQ(store.Update(frame), 1);
    Viewer viewer;
    viewer.Take(store.UpdateSince(1));
    EXPECT_EQ(viewer.tiles, 1u);
    viewer.Take(store.UpdateSince(2));
    EXPECT_EQ(viewer.tiles, 0u);
}

TEST(TileStore, AFlatPictureIsTinyAndNoiseIsNeverLongerThanPlain) {
    TileStore store;
    std::vector<std::uint8_t> frame = FrameOf(200);
    store.Update(frame);
    EXPECT_LT(store.UpdateSince(0).size(), 6000u);
    std::mt19937 random(3);
    for (std::uint8_t& byte : frame)
        byte = static_cast<std::uint8_t>(random());
    store.Update(frame);
    EXPECT_LE(store.UpdateSince(0).size(), 8 + 2 * 2401 + std::size_t{784} * 784 * 3);
}

TEST(PixelCode, EveryRunLengthAndEveryStepSurvives) {
    for (const std::size_t run : {1u, 63u, 64u, 65u, 66u, 8255u, 8256u, 8257u, 20000u}) {
        std::vector<std::uint32_t> pixels(run, 0);
        pixels.insert(pixels.end(), run, 0xFFFFFF);
        EXPECT_EQ(DecodePixels(EncodePixels(pixels), pixels.size()), pixels) << run;
    }
    std::vector<std::uint32_t> steps;
    for (int step = -255; step <= 255; ++step)
        steps.insert(steps.end(), {0x808080, 0x808080u + static_cast<std::uint32_t>(step & 0xFF),
                                   static_cast<std::uint32_t>(step & 0xFF) << 16 | 0x0100, 0xFF00FF});
    EXPECT_EQ(DecodePixels(EncodePixels(steps), steps.size()), steps);
}

// ---- touches ----

TEST(TouchPacer, AClickOfNoLengthIsStillAPressAndARelease) {
    TouchPacer pacer;
    const TouchPacer::Time start = std::chrono::steady_clock::now();
    pacer.Add({TouchType::Down, {1, 2}});
    pacer.Add({TouchType::Up, {1, 2}});
    EXPECT_EQ(pacer.Next(start)->type, TouchType::Down);
    EXPECT_FALSE(pacer.Next(start + 29ms));
    EXPECT_EQ(*pacer.Due(), start + 30ms);
    EXPECT_EQ(pacer.Next(start + 30ms)->type, TouchType::Up);
    EXPECT_TRUE(pacer.Empty());
}

TEST(TouchPacer, OfWaitingMovesOnlyTheNewestGoesOut) {
    TouchPacer pacer;
    const TouchPacer::Time start = std::chrono::steady_clock::now();
    pacer.Add({TouchType::Down, {0, 0}});
    for (int x = 1; x < 1000; ++x)
        pacer.Add({TouchType::Move, {x, 0}});
    pacer.Add({TouchType::Up, {999, 0}});
    EXPECT_EQ(pacer.Next(start)->type, TouchType::Down);
    EXPECT_EQ(pacer.Next(start + 30ms)->at.x, 999);
    EXPECT_EQ(pacer.Next(start + 30ms)->type, TouchType::Up);
}

TEST(TouchPacer, AnUpIsNeverDroppedHoweverLongTheQueue) {
    TouchPacer pacer;
    for (int i = 0; i < 10'000; ++i) {
        pacer.Add({TouchType::Down, {i, 0}});
        pacer.Add({TouchType::Move, {i, 1}});
    }
    pacer.Add({TouchType::Up, {5, 5}});
    std::optional<PacedTouch> last;
    TouchPacer::Time now = std::chrono::steady_clock::now();
    int count = 0;
    while (const auto touch = pacer.Next(now += 30ms)) {
        last = touch;
        ++count;
    }
    EXPECT_EQ(last->type, TouchType::Up);
    EXPECT_LT(count, 300);
}

// ---- words ----

TEST(HouseIndex, CommandsAreSaidInTheWordsOfTheHouse) {
    const HouseIndex index(ReadHouse(std::filesystem::path(WALLSLATE_SOURCE_DIR) / "demo"));
    const std::pair<const char*, const char*> cases[] = {
        {"{\"U\":2001,\"E\":1,\"T\":2,\"V\":1.0}", "Küche, Küchenlicht: mood Kochen"},
        {"{\"U\":1001,\"E\":6,\"T\":2,\"V\":40.0}", "Wohnzimmer: brightness 40 %"},
        {"{\"U\":1001,\"E\":1,\"T\":2,\"V\":99.0}", "Wohnzimmer: mood 99"},
        {"{\"U\":-2147442687,\"E\":1,\"T\":2,\"V\":1.0}", "Кімната Софійки, Нічник біля ліжка: off"},
        {"{\"U\":1907,\"E\":0,\"T\":2,\"V\":45.5}", "Haustechnik, Vorlauftemperatur: set to 45.5"},
        {"{\"U\":1101,\"E\":4,\"T\":2,\"V\":0.0}", "Wohnzimmer, Wohnzimmer Süd: automatic off"},
        {"{\"U\":1302,\"E\":7,\"T\":2,\"V\":1.0}", "Eingang und Diele, Türöffner: event 7 with 1"},
        {"{\"U\":5,\"E\":0,\"T\":2,\"V\":1.0}", "no item of the house has the number 5"},
        {"no JSON", "no JSON"},
        {"{\"U\":\"1\"}", "{\"U\":\"1\"}"},
        {"{\"U\":1e300,\"E\":0,\"V\":0}", "{\"U\":1e300,\"E\":0,\"V\":0}"},
    };
    for (const auto& [command, words] : cases)
        EXPECT_EQ(index.Describe(command), words);
}

TEST(HouseIndex, DeepAndBrokenHousesAreListedAsFarAsTheyGo) {
    std::string deep, closing;
    for (int i = 0; i < 50'000; ++i)
        deep += "{\"N\":\"g\",\"sub\":[", closing += "]}";
    House house;
    house.texts = {"no", "", "[]", "[" + deep + closing + "]"};
    EXPECT_EQ(HouseIndex(house).Items().back().depth, 49'999);
    house.Text(HouseFile::Structure) = "[";
    EXPECT_TRUE(HouseIndex(house).Items().empty());
}

// ---- guard ----

TEST(Guard, OnlyAddressesAndLocalhostAreNamesOfThisHost) {
    for (const char* good : {"127.0.0.1:8720", "localhost", "localhost:1", "[::1]:8720", "192.168.1.5:80"})
        EXPECT_TRUE(Guard::HostAllowed(good)) << good;
    for (const char* bad :
         {"", "evil.example", "evil.example:8720", "127.0.0.1.evil.example", "localhost.evil:8720", "["})
        EXPECT_FALSE(Guard::HostAllowed(bad)) << bad;
}

TEST(Guard, OnlyThePageItselfMayAskFromABrowser) {
    EXPECT_TRUE(Guard::OriginAllowed(std::nullopt, "localhost:8720"));
    EXPECT_TRUE(Guard::OriginAllowed("http://localhost:8720", "localhost:8720"));
    for (const char* bad :
         {"http://localhost:1", "https://localhost:8720", "null", "", "http://evil.example"})
        EXPECT_FALSE(Guard::OriginAllowed(bad, "localhost:8720")) << bad;
}

TEST(Guard, ATokenMustMatchWhole) {
    const Guard guard("0123456789abcdef");
    EXPECT_TRUE(guard.AuthorizationAllowed("Bearer 0123456789abcdef"));
    EXPECT_TRUE(guard.ProtocolsAllowed("wallslate, token.0123456789abcdef"));
    for (const char* bad :
         {"", "Bearer ", "Bearer 0123456789abcde", "Bearer 0123456789abcdef0", "0123456789abcdef"})
        EXPECT_FALSE(guard.AuthorizationAllowed(bad)) << bad;
    EXPECT_FALSE(guard.ProtocolsAllowed("wallslate, token.0123456789abcdeX"));
    EXPECT_FALSE(guard.ProtocolsAllowed("wallslate"));
    EXPECT_TRUE(Guard("").AuthorizationAllowed("")) << "a loopback host asks for none";
}

TEST(Guard, ListenAddressesAreReadOrRefusedWithAReason) {
    EXPECT_EQ(ParseListenAddress("localhost:0").Authority(), "127.0.0.1:0");
    EXPECT_TRUE(ParseListenAddress("[::1]:9").loopback);
    EXPECT_FALSE(ParseListenAddress("0.0.0.0:8720").loopback);
    for (const char* bad :
         {"", "8720", "127.0.0.1", "127.0.0.1:x", "127.0.0.1:70000", "name.example:80", "::1:80"})
        EXPECT_THROW(ParseListenAddress(bad), Fault) << bad;
}

TEST(Guard, TokensComeFromTheEnvironmentOrAreMadeUp) {
    ::setenv("WALLSLATE_TOKEN", "too-short", 1);
    EXPECT_THROW(ObtainToken(), Fault);
    ::setenv("WALLSLATE_TOKEN", "long-enough-to-be-a-token", 1);
    EXPECT_EQ(ObtainToken().text, "long-enough-to-be-a-token");
    ::unsetenv("WALLSLATE_TOKEN");
    ::setenv("WALLSLATE_TOKEN_FILE", "/no/such/file", 1);
    EXPECT_THROW(ObtainToken(), Fault);
    ::unsetenv("WALLSLATE_TOKEN_FILE");
    const Token made = ObtainToken();
    EXPECT_TRUE(made.generated);
    EXPECT_NE(made.text, ObtainToken().text);
}

} // namespace
