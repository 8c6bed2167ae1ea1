// The button grid: properties that hold for every number of buttons, and the row tables themselves.

#include <gtest/gtest.h>

#include <map>
#include <tuple>
#include <vector>

#include "shell/frame.h"
#include "shell/frame_area.h"
#include "support/test_display.h"

namespace {

// A page with so many grid buttons, laid out on a display of its own.
struct GridPage {
    explicit GridPage(int count) : display(TestHouse::Of("[]")) {
        page = display.Root().CreateChild<CVrGuiFrame>("CVrGuiFrame", false);
        page->FillArea(nullptr);
        area = page->frameArea;
        for (int i = 0; i < count; i++) {
            area->CreateGuiChild("CVrGuiFrameBtn", false);
            area->buttonCount++;
        }
        area->ApplyLayout();
    }

    // Buttons in each row, from the top.
    std::vector<int> Rows() const {
        std::map<int32_t, int> rows;
        area->ForEachChild([&rows](const CVrGuiElement& button) { rows[button.rect.y]++; });
        std::vector<int> counts;
        for (const auto& [y, count] : rows)
            counts.push_back(count);
        return counts;
    }

    TestDisplay display;
    CVrGuiFrame* page = nullptr;
    CVrGuiFrameArea* area = nullptr;
};

class ShadeDouble : public CVrGuiElement {
public:
    explicit ShadeDouble(bool inList) : m_inList(inList) { type = ElementType::ShadeElement; }
    bool IsListRow() const override { return m_inList; }

private:
    bool m_inList;
};

} // namespace

TEST(FrameArea, RowsFollowTheTable) {
    const std::map<int, std::vector<int>> expected = {
        {1, {1}},        {2, {2}},        {3, {3}},           {4, {2, 2}},        {5, {2, 3}},
        {6, {3, 3}},     {7, {3, 4}},     {8, {4, 4}},        {9, {3, 3, 3}},     {10, {3, 3, 4}},
        {11, {3, 4, 4}}, {12, {4, 4, 4}}, {13, {3, 3, 4, 3}}, {14, {3, 3, 4, 4}}, {17, {3, 3, 4, 4, 3}},
    };
    for (const auto& [count, rows] : expected)
        EXPECT_EQ(GridPage(count).Rows(), rows) << count << " buttons";
}

TEST(FrameArea, CellsOfARowFillTheWidthAndNeverOverlap) {
    for (int count = 1; count <= 20; count++) {
        SCOPED_TRACE(count);
        const GridPage grid(count);
        std::map<int32_t, CVrRect> rows;
        grid.area->ForEachChild([&](const CVrGuiElement& button) {
            CVrRect& row = rows[button.rect.y];
            EXPECT_FALSE(row.Intersects(button.rect));
            row = row.United(button.rect);
        });
        for (const auto& [y, row] : rows) {
            if (row.y == rows.rbegin()->first && count > 9)
                continue; // the last row of a long list may be incomplete
            EXPECT_EQ(row.x, 0);
            EXPECT_EQ(row.width, grid.area->rect.width);
        }
    }
}

TEST(FrameArea, NineChildrenShowTwoAndAHalfRows) {
    const GridPage grid(9);
    const int32_t free = grid.area->rect.height - 2 * grid.area->gap;
    EXPECT_EQ(grid.area->Child(0)->rect.height, free * 2 / 5);
}

TEST(FrameArea, FixedGridOfOneColumnHasNoGap) {
    GridPage grid(0);
    grid.area->fixedCols = 1;
    grid.area->cellW = 300;
    grid.area->cellH = 100;
    grid.area->CreateGuiChild("CVrGuiFrameBtn", false);
    grid.area->buttonCount = 1;
    grid.area->ApplyLayout();
    EXPECT_EQ(grid.area->Child(0)->rect, CVrRect(0, 0, 300, 100));
}

// Tiles share the area while they fit at their style's height; up to three do in any case.
TEST(FrameArea, TilesShareTheAreaUntilTheyDoNotFit) {
    constexpr int32_t kStyleHeight = 149, kGap = 10, kLeft = 1;
    for (const auto& [height, count, shares] :
         std::vector<std::tuple<int32_t, int32_t, bool>>{{688, 1, true},
                                                         {688, 3, true},
                                                         {300, 3, true},
                                                         {688, 4, true},
                                                         {596, 4, true},
                                                         {595, 4, false},
                                                         {688, 5, false}}) {
        SCOPED_TRACE(std::to_string(count) + " in " + std::to_string(height));
        GridPage grid(0);
        grid.page->layoutLocked = true;
        grid.page->SetRect(0, 0, 708, height + 20);
        for (int32_t i = 0; i < count; i++)
            grid.area->CreateGuiChild("CVrGuiTreeListBtn", false);
        grid.page->ApplyLayout();
        if (shares) {
            const int32_t share = (height - kLeft - (kLeft + 1) - (count - 1) * kGap) / count;
            EXPECT_EQ(grid.area->Child(static_cast<uint32_t>(count - 1))->rect.Bottom(), height - kLeft - 1);
            EXPECT_EQ(grid.area->Child(0)->rect, CVrRect(kLeft, kLeft, 686, count == 1 ? height - 3 : share));
        } else {
            EXPECT_EQ(grid.area->Child(0)->rect, CVrRect(kLeft, kLeft, 686, kStyleHeight - kGap));
        }
        for (uint32_t i = 1; i < static_cast<uint32_t>(count); i++)
            EXPECT_EQ(grid.area->Child(i)->rect.y - grid.area->Child(i - 1)->rect.Bottom(), kGap);
    }
}

TEST(FrameArea, ButtonsGlideToTheirNewPlaces) {
    GridPage grid(2);
    const CVrRect before = grid.area->Child(0)->rect;
    grid.area->CreateGuiChild("CVrGuiFrameBtn", false);
    grid.area->buttonCount++;
    grid.area->animateLayout = true;
    grid.area->ApplyLayout();
    EXPECT_EQ(grid.area->Child(0)->rect, before) << "starts where it was";
    grid.display.Advance(100);
    const CVrRect half = grid.area->Child(0)->rect;
    EXPECT_LT(half.width, before.width);
    grid.display.Advance(150);
    const CVrRect settled = grid.area->Child(0)->rect;
    EXPECT_EQ(settled, grid.area->GridRect(*grid.area->Child(0), 0));
    EXPECT_LT(settled.width, half.width);
}

TEST(FrameArea, DestroyedWhileItsButtonsGlide) {
    GridPage grid(2);
    grid.area->animateLayout = true;
    grid.area->ApplyLayout();
    delete grid.page;
    grid.display.Advance(300);
}

// The area is 688 wide, at y 10, and has 688 pixels of height for them.
TEST(FrameArea, ShadesStandSideBySideOrInAList) {
    struct Row {
        int count;
        bool inList;
        std::vector<CVrRect> places;
    };
    const Row rows[] = {
        {1, false, {{0, 10, 688, 678}}},
        {2, false, {{0, 10, 339, 678}, {349, 10, 339, 678}}},
        {3, false, {{0, 10, 339, 678}, {349, 10, 339, 678}, {}}},
        {1, true, {{0, 0, 688, 155}}},
        {2, true, {{0, 0, 688, 339}, {0, 349, 688, 339}}},
        {3, true, {{0, 0, 688, 155}, {0, 165, 688, 155}, {0, 330, 688, 155}}},
        {4, true, {{0, 0, 688, 140}, {0, 150, 688, 140}, {0, 300, 688, 140}, {0, 450, 688, 140}}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(std::to_string(row.count) + (row.inList ? " in a list" : " side by side"));
        const GridPage grid(0);
        for (int i = 0; i < row.count; i++) // one of them is enough
            (new ShadeDouble(row.inList && i == row.count - 1))->SetParent(grid.area);
        grid.area->ApplyLayout();
        ASSERT_EQ(grid.area->rect.Size(), CVrSize(688, 688));
        for (int i = 0; i < row.count; i++) {
            const CVrGuiElement& shade = *grid.area->Child(static_cast<uint32_t>(i));
            EXPECT_EQ(shade.rect, row.places[static_cast<size_t>(i)]) << i;
            EXPECT_EQ(shade.canvasSize, shade.rect.Size());
        }
    }
}
