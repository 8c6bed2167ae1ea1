#include "gui/icon.h"

#include "foundation/archive.h"
#include "foundation/files.h"
#include "gui/application.h"
#include "gui/element.h"
#include "gui/font.h"
#include "gui/frame_buffer.h"
#include "support/golden.h"
#include "support/log_capture.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

// An application that has the program's own archives and nothing else.
class ArchiveApplication : public CVrGuiApplication {
public:
    ArchiveApplication() {
        statics.isStatic = true;
        uint32_t size = 0;
        const uint8_t* bytes = GetResource(ResourceDynamicIcons, size);
        EXPECT_TRUE(bytes && dynamics.Open(bytes, size));
    }
    CVrArchive* DynamicArchive() const override { return &dynamics; }
    CVrArchive* StaticArchive() const override { return &statics; }

    mutable CVrArchive dynamics;
    mutable CVrArchive statics;
};

std::vector<uint8_t> Bitmap(const CVrGuiIcon& icon) {
    return {icon.image.bitmap, icon.image.bitmap + icon.image.bitmapBytes};
}

class Icon : public testing::Test {
protected:
    ArchiveApplication application;
    LogCapture log{LogError};
    CVrGuiIcon icon;
};

TEST_F(Icon, ASymbolOfTheInstallationIsRenderedMonoAtItsSize) {
    ASSERT_TRUE(icon.SetIconFromFile("lamp.svg", 64));
    EXPECT_EQ(icon.image.Size(), CVrSize(64, 64));
    EXPECT_EQ(icon.image.mono, 1);
    EXPECT_EQ(icon.fileName, "lamp.svg");
    EXPECT_EQ(icon.requestedSize, 64U);
    EXPECT_TRUE(log.All().empty());
}

TEST_F(Icon, WhatTheInstallationLacksComesFromTheProgramsOwnSetAfterOneLine) {
    ASSERT_TRUE(icon.SetIconFromFile("pushbutton_on.svg", 48));
    EXPECT_EQ(log.All().size(), 1U);
    EXPECT_TRUE(log.Has("CVrGuiApp::LoadButtonFile: error 'pushbutton_on.svg'"));
    CVrGuiIcon own;
    ASSERT_TRUE(own.SetStaticIconFromFile("pushbutton_on.svg", 48, true));
    EXPECT_EQ(Bitmap(icon), Bitmap(own));
}

TEST_F(Icon, AnUnknownSymbolLeavesNoBitmapAndTwoLines) {
    ASSERT_TRUE(icon.SetIconFromFile("lamp.svg", 64));
    EXPECT_FALSE(icon.SetIconFromFile("no-such-symbol.svg", 64));
    EXPECT_FALSE(icon.HasBitmap()) << "the former bitmap is gone";
    EXPECT_EQ(icon.image.bitmapSize[0], 0U);
    EXPECT_TRUE(log.Has("CVrGuiApp::LoadButtonFile: error 'no-such-symbol.svg'"));
    EXPECT_TRUE(log.Has("CVrGuiApp::LoadStaticButtonFile: error 'no-such-symbol.svg'"));
}

TEST_F(Icon, ASizeOfZeroIsRefusedByName) {
    EXPECT_FALSE(icon.SetIconFromFile("lamp.svg", 0));
    EXPECT_FALSE(icon.SetStaticIconFromFile("info.svg", 0, true));
    EXPECT_TRUE(log.Has("CVrGuiIcon::SetIconFromFile: lamp.svg size 0 error"));
    EXPECT_TRUE(log.Has("CVrGuiIcon::SetStaticIconFromFile: info.svg size 0 error"));
    EXPECT_EQ(icon.fileName, "info.svg");
}

TEST(IconWithoutApplication, FindsNothing) {
    LogCapture log(LogError);
    CVrGuiIcon icon;
    EXPECT_FALSE(icon.SetIconFromFile("lamp.svg", 64));
    EXPECT_EQ(log.All().size(), 2U);
}

TEST_F(Icon, TheMenuButtonsFilledSymbolIsKeptForItsNameAndSize) {
    CVrGuiElement button;
    CVrGuiIcon usual;
    CVrGuiIcon other;
    auto load = [&](uint32_t size) {
        return CVrGuiIcon::SetMenuButtonSelectedIconFromFile(button, usual, other, size);
    };
    EXPECT_EQ(load(64), nullptr) << "no symbol";
    button.iconName = "house.svg";
    button.iconSize = 64;
    ASSERT_EQ(load(64), &usual);
    const uint8_t* bitmap = usual.image.bitmap;
    ASSERT_EQ(load(64), &usual);
    EXPECT_EQ(usual.image.bitmap, bitmap) << "not loaded again";
    ASSERT_EQ(load(90), &other);
    EXPECT_EQ(other.image.Size(), CVrSize(90, 90));
    EXPECT_NE(load(0), &usual);
    EXPECT_TRUE(log.Has("CVrGuiIcon::SetMenuButtonSelectedIconFromFile: house.svg size 0 error"));

    CVrGuiIcon lines;
    ASSERT_TRUE(lines.SetIconFromFile("house.svg", 64));
    EXPECT_NE(Bitmap(usual), Bitmap(lines));

    button.iconName = "info.svg";
    button.iconStatic = true;
    ASSERT_EQ(load(64), &usual);
    EXPECT_EQ(usual.fileName, "info.svg");
}

std::vector<std::string> StaticNames() {
    std::vector<std::string> names;
    for (const auto& entry :
         std::filesystem::directory_iterator(WALLSLATE_SOURCE_DIR "/resources/icons/static")) {
        if (entry.path().extension() == ".svg")
            names.push_back(entry.path().filename());
    }
    std::sort(names.begin(), names.end());
    return names;
}

// One column of sheets: the symbols at a size with their names, lines in black and, at 64 pixels, filled
// beside them.
TEST_F(Icon, AllStaticSymbolsOnOneSheet) {
    constexpr int kColumns = 13;
    constexpr int kCell = 118;
    constexpr int kSizes[] = {90, 64, 48, 24};
    const std::vector<std::string> names = StaticNames();
    ASSERT_EQ(names.size(), 78U);
    const int rows = (static_cast<int>(names.size()) + kColumns - 1) / kColumns;
    CVrGuiFrameBuffer sheet;
    sheet.InitMem(CVrRect(0, 0, kColumns * kCell, rows * kCell * 2));
    sheet.FillRect(CVrRect(0, 0, sheet.storeSize.width, sheet.storeSize.height), 0xFFD9D4CC);
    for (int i = 0; i < static_cast<int>(names.size()); i++) {
        const int x = i % kColumns * kCell;
        int y = i / kColumns * kCell * 2 + 4;
        int column = x;
        for (const int size : kSizes) {
            CVrGuiIcon symbol;
            ASSERT_TRUE(symbol.SetStaticIconFromFile(names[static_cast<size_t>(i)].c_str(),
                                                     static_cast<uint32_t>(size), true));
            // 90 above, 64 and 48 below it, 24 in the corner.
            const CVrPoint at = size == 90   ? CVrPoint(x + 4, y)
                                : size == 64 ? CVrPoint(column, y + 96)
                                : size == 48 ? CVrPoint(x + 68, y + 96)
                                             : CVrPoint(x + 92, y + 66);
            sheet.DrawSvg(symbol.image, at, 0xFF000000);
        }
        CVrGuiSvg2Img filled;
        ASSERT_TRUE(LoadStaticButtonFile(application.StaticArchive(), names[static_cast<size_t>(i)].c_str(),
                                         filled, 64, true, SymbolStyle::Filled));
        sheet.DrawSvg(filled, CVrPoint(x + 2, y + 164), 0xFF3355AA);
    }
    EXPECT_TRUE(
        golden::Matches("static-symbols", sheet.pixels, sheet.storeSize.width, sheet.storeSize.height));
}

} // namespace
