// The cache of decoded covers and the choice among the default ones.

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <unistd.h>

#include "app/gui_app.h"
#include "support/log_capture.h"

namespace {

namespace fs = std::filesystem;

// A data folder of the test's own while it lives.
class DataFolder {
public:
    DataFolder() : path(testing::TempDir() + "wallslate-covers-" + std::to_string(getpid())) {
        fs::create_directories(path + "/cover");
        setenv("WALLSLATE_DATA_DIR", path.c_str(), 1);
    }
    ~DataFolder() {
        unsetenv("WALLSLATE_DATA_DIR");
        fs::remove_all(path);
    }
    void Write(const std::string& name, const std::string& bytes) const {
        std::ofstream(path + "/cover/" + name, std::ios::binary) << bytes;
    }
    void Copy(const std::string& from, const std::string& name) const {
        fs::copy_file(std::string(WALLSLATE_SOURCE_DIR) + "/resources/cover/" + from,
                      path + "/cover/" + name);
    }
    const std::string path;
};

const CVrGuiImageCacheData* Loaded(CVrGuiApp& app, int32_t key) {
    app.LoadCover(nullptr, key);
    return app.imageCache.Lookup(key);
}

} // namespace

TEST(ImageCache, EachDefaultCoverIsDecodedOnce) {
    LogCapture log;
    CVrGuiApp app;
    for (int32_t key = 700; key < 710; key++) {
        const CVrGuiImageCacheData* cover = Loaded(app, key);
        ASSERT_TRUE(cover && cover->loaded) << key;
        EXPECT_STREQ(cover->name.CStr(), ("cover_default_" + std::to_string(key - 700)).c_str());
        EXPECT_GE(cover->image.width, 500u);
        EXPECT_EQ(cover->image.stride, cover->image.width * 3);
        EXPECT_EQ(cover->image.bitsPerPixel, 24u);
        const size_t decoded = log.Count("Image dimensions");
        EXPECT_EQ(Loaded(app, key), cover);
        EXPECT_EQ(log.Count("Image dimensions"), decoded);
    }
    EXPECT_EQ(app.imageCache.GetCount(), 10);
}

TEST(ImageCache, WithoutItsFileOnlyTheFirstCoverHasAnotherSource) {
    DataFolder folder;
    LogCapture log(LogError);
    CVrGuiApp app;
    const CVrGuiImageCacheData* first = Loaded(app, 700);
    ASSERT_TRUE(first && first->loaded);
    EXPECT_STREQ(first->name.CStr(), "cover_default");
    for (int32_t key = 701; key < 710; key++)
        EXPECT_EQ(Loaded(app, key), nullptr) << key;
    EXPECT_EQ(log.Count("Open error " + folder.path + "/cover/default_"), 10u);

    folder.Copy("default_4.jpg", "default_4.jpg"); // the next request tries again
    EXPECT_NE(Loaded(app, 704), nullptr);
}

TEST(ImageCache, DamagedCoversLeaveNoEntry) {
    DataFolder folder;
    folder.Write("default_0.jpg", "no picture");
    folder.Write("default_1.jpg", std::string("\xFF\xD8\xFF\xD9", 4));
    folder.Write("default_2.jpg", "");
    LogCapture log(LogError);
    CVrGuiApp app;
    ASSERT_NE(Loaded(app, 700), nullptr);
    EXPECT_STREQ(Loaded(app, 700)->name.CStr(), "cover_default");
    EXPECT_EQ(Loaded(app, 701), nullptr);
    EXPECT_EQ(Loaded(app, 702), nullptr);
    EXPECT_EQ(log.Count("Failed to prepare"), 2u);
    EXPECT_EQ(app.imageCache.GetCount(), 1);
}

TEST(ImageCache, OtherKeysAreLeftAlone) {
    LogCapture log(LogError);
    CVrGuiApp app;
    for (int32_t key : {0, -1, 699, 710, 900, 65'536, INT32_MIN, INT32_MAX})
        EXPECT_EQ(Loaded(app, key), nullptr) << key;
    EXPECT_TRUE(log.All().empty());

    // A picture that somebody else put there, and one that he has not filled yet.
    auto* foreign = new CVrGuiImageCacheData;
    ASSERT_TRUE(app.imageCache.SetAt(3 * 65'536 + 1, foreign));
    EXPECT_EQ(Loaded(app, 3 * 65'536 + 1), foreign);
    auto* waiting = new CVrGuiImageCacheData;
    ASSERT_TRUE(app.imageCache.SetAt(701, waiting));
    EXPECT_EQ(Loaded(app, 701), waiting);
    EXPECT_TRUE(waiting->loaded);
}

TEST(CoverPicker, EachCoverComesOnceBeforeAnyComesAgain) {
    CVrTestClock clock;
    CVrGuiApp app;
    std::set<std::string> orders;
    for (int round = 0; round < 50; round++) {
        std::set<int32_t> dealt;
        std::string order;
        for (int i = 0; i < 10; i++) {
            const int32_t key = app.NextDefaultCover();
            EXPECT_TRUE(key >= 700 && key <= 709) << key;
            dealt.insert(key);
            order += std::to_string(key);
        }
        EXPECT_EQ(dealt.size(), 10u);
        orders.insert(order);
    }
    EXPECT_GT(orders.size(), 45u) << "the bag is shuffled anew each time";
}
