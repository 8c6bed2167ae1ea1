// Gestures as timelines, driven through the root's routing with the stepped clock.

#include "shell/scroll_area.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <random>

#include "gui/test_tree.h"

using namespace test_tree;

namespace {

using State = CVrGuiScrollArea::ScrollState;
constexpr auto Down = CVrGuiElement::EventDown;
constexpr auto Move = CVrGuiElement::EventMove;
constexpr auto Up = CVrGuiElement::EventUp;

class Area : public CVrGuiScrollArea {
public:
    explicit Area(ScrollAxis axis = ScrollAxis::Vertical) : CVrGuiScrollArea(axis) {
        type = ElementType::FrameArea;
        for (uint32_t slot = 0; slot < ColorSlotCount; slot++) {
            colorIndex[slot] = 1;
            colors[slot] = 0xFFD0C0B0;
        }
    }
    void DrawContent() override { paintings++; }
    void OnDragBegin() override { dragsBegun++; }

    int paintings = 0;
    int dragsBegun = 0;
};

// Rests on multiples of `step` only.
class SnappingArea : public Area {
public:
    bool SnapsToItems() override { return true; }
    int32_t SnapPosition(int32_t pos, int32_t min, int32_t max) override {
        return std::clamp((pos - step / 2) / step * step, min, max);
    }
    int32_t step = 100;
};

class ScrollAreaTest : public testing::Test {
protected:
    static constexpr CVrRect kPlace{20, 100, 400, 300};

    ScrollAreaTest() {
        app.LoadStyles();
        area = AddArea<Area>();
        for (int i = 0; i < 10; i++)
            Add(*area, CVrRect(0, i * 100, 400, 90), 0xFF203040 + static_cast<uint32_t>(i) * 0x1000);
    }

    template <typename T>
    T* AddArea(int32_t height = 1000) {
        auto* added = new T;
        added->SetParent(app.root.get());
        added->rect = kPlace;
        added->canvasSize = kPlace.Size();
        added->OnStart();
        added->SetScrolling();
        added->SizeStore(CVrSize(kPlace.width, height));
        return added;
    }
    Probe& Child(uint32_t index) { return *static_cast<Probe*>(area->Child(index)); }

    // An event `ms` after the last one, at screen position (100, y).
    void Send(uint32_t eventType, int32_t y, uint64_t ms = 0) {
        clock.Advance(ms);
        app.root->RouteEvent(eventType, CVrPoint(100, y));
        if (eventType == Up)
            app.root->ReleasePressed();
    }
    // Passes of the main loop every 16 ms until the content rests; the offsets on the way.
    std::vector<int32_t> Coast(int32_t limit = 2000) {
        std::vector<int32_t> offsets;
        while (!app.animations.IsEmpty() && limit-- > 0) {
            clock.Advance(16);
            app.animations.Step(clock.Now());
            offsets.push_back(area->offsetY);
        }
        return offsets;
    }
    void ExpectRest() {
        EXPECT_EQ(area->scrollState, State::Idle);
        EXPECT_EQ(app.Capture(), nullptr);
        EXPECT_EQ(area->pressedChild.Get(), nullptr);
        EXPECT_FALSE(app.root->ReleasePressed());
    }

    CVrTestClock clock;
    Application app;
    Area* area = nullptr;
};

// ---- Tap and press ----

TEST_F(ScrollAreaTest, TapReachesTheChildUnderTheFinger) {
    Send(Down, 250);
    EXPECT_EQ(area->scrollState, State::Pressed);
    EXPECT_EQ(app.Capture(), area);
    EXPECT_TRUE(Child(1).pressed);
    Send(Move, 264, 16);
    Send(Up, 264, 16);
    EXPECT_EQ(Child(1).Taken(), (Notes{"down 80/150", "move 80/164", "up 80/164"}));
    EXPECT_EQ(area->offsetY, 0);
    EXPECT_EQ(area->dragsBegun, 1);
    ExpectRest();
}

TEST_F(ScrollAreaTest, TapOnScrolledContentReachesTheChildThatShowsThere) {
    area->SetScrollOffset(CVrPoint(0, -500));
    Send(Down, 250);
    Send(Up, 250, 50);
    EXPECT_EQ(Child(6).Taken(), (Notes{"down 80/650", "up 80/650"}));
}

TEST_F(ScrollAreaTest, PointsForInnerChildrenAreRelativeToTheirParentAtDownAndUp) {
    Probe& inner = Add(Child(2), CVrRect(50, 10, 200, 50));
    Send(Down, 330);
    EXPECT_TRUE(inner.pressed);
    Send(Move, 331, 10);
    Send(Up, 331, 10);
    EXPECT_EQ(inner.Taken(), (Notes{"down 80/30", "move 80/231", "up 80/31"}));
}

TEST_F(ScrollAreaTest, FourteenPixelsAreATapAndFifteenADrag) {
    Send(Down, 250);
    Send(Move, 236, 16);
    EXPECT_EQ(area->scrollState, State::Pressed);
    Send(Move, 235, 16);
    EXPECT_EQ(area->scrollState, State::Dragging);
    EXPECT_EQ(Child(1).Taken(), (Notes{"down 80/150", "move 80/136", "move 80/135", "cancelled"}));
    EXPECT_FALSE(Child(1).pressed);
    EXPECT_EQ(area->offsetY, 0); // the content follows from the next event on
    Send(Up, 235, 16);
    EXPECT_EQ(Child(1).Taken(), Notes{});
}

TEST_F(ScrollAreaTest, TravelAcrossTheAxisIsNoDrag) {
    Send(Down, 250);
    app.root->RouteEvent(Move, CVrPoint(300, 250));
    EXPECT_EQ(area->scrollState, State::Pressed);
}

TEST_F(ScrollAreaTest, ToleranceIsZeroWithoutItsRow) {
    Application bare;
    auto* lone = new Area;
    lone->SetParent(bare.root.get());
    lone->rect = kPlace;
    lone->OnStart();
    bare.root->RouteEvent(Down, CVrPoint(100, 250));
    bare.root->RouteEvent(Move, CVrPoint(100, 250));
    EXPECT_EQ(lone->scrollState, State::Dragging);
}

TEST_F(ScrollAreaTest, ChildThatKeepsTheFingerGetsItAllAndTheContentStays) {
    Child(1).letsGo = false;
    Send(Down, 250);
    Send(Move, 300, 16);
    EXPECT_EQ(area->scrollState, State::ChildOwnsFinger);
    Send(Move, 700, 16);
    Send(Up, 700, 16);
    EXPECT_EQ(Child(1).Taken(),
              (Notes{"down 80/150", "move 80/200", "cancelled", "move 80/600", "up 80/600"}));
    EXPECT_EQ(area->offsetY, 0);
    ExpectRest();
}

// ---- Drag ----

TEST_F(ScrollAreaTest, ContentFollowsTheFinger) {
    Send(Down, 250);
    Send(Move, 230, 16);
    Send(Move, 180, 16);
    EXPECT_EQ(area->offsetY, -70); // from the touch-down, the first travel included
    // delta -70 over 16 ms: -4375 px/s, halved
    EXPECT_EQ(area->velocity, -2187);
    Send(Move, 170, 16);
    EXPECT_EQ(area->velocity, -10 * 1000 / 16 / 2 - 2187 / 2);
    EXPECT_EQ(area->lastPos, 70 + 100);
}

TEST_F(ScrollAreaTest, RubberBandTakesTwoPixelsForTheFirstOneAndNeverGivesAHundred) {
    Send(Down, 150);
    Send(Move, 170, 16);
    for (const auto& [travel, offset] : std::vector<std::pair<int, int>>{
             {1, 0}, {2, 0}, {4, 1}, {20, 9}, {100, 33}, {200, 50}, {1000, 83}, {100'000'000, 99}}) {
        Send(Move, 150 + travel, 16);
        EXPECT_EQ(area->offsetY, offset) << travel;
    }
    Send(Move, 150 - 700 - 200, 16);
    EXPECT_EQ(area->offsetY, -700 - 50);
    Send(Move, INT32_MIN, 16);
    EXPECT_EQ(area->offsetY, -700 - 99);
    EXPECT_EQ(area->velocity, std::clamp(area->velocity, -6000, 6000));
}

TEST_F(ScrollAreaTest, VelocityIsClamped) {
    area->SetScrollOffset(CVrPoint(0, -600));
    Send(Down, 150);
    Send(Move, 165, 1);
    Send(Move, 365, 1);
    EXPECT_EQ(area->velocity, 6000);
    Send(Move, -300, 1);
    EXPECT_EQ(area->velocity, -6000);
}

TEST_F(ScrollAreaTest, StepsWithoutTimeOrWithLongTimeCountAsSixtyMs) {
    for (uint64_t dt : {0U, 61U, 100'000U}) {
        Send(Down, 350);
        Send(Move, 330, 16);
        Send(Move, 250, dt);
        EXPECT_EQ(area->velocity, -100 * 1000 / 60 / 2) << dt;
        Send(Up, 250, 200);
        Coast();
        area->SetScrollOffset(CVrPoint());
    }
}

TEST_F(ScrollAreaTest, FingerThatRestedMakesNoFlick) {
    for (uint64_t rest : {120U, 121U}) {
        area->SetScrollOffset(CVrPoint());
        Send(Down, 350);
        Send(Move, 330, 16);
        Send(Move, 250, 16);
        Send(Up, 240, rest);
        EXPECT_EQ(area->scrollState, rest == 120 ? State::Coasting : State::Idle);
        Coast();
        ExpectRest();
    }
}

TEST_F(ScrollAreaTest, SlowReleaseStandsStill) {
    Send(Down, 350);
    Send(Move, 330, 60);
    Send(Move, 329, 60);
    area->velocity = 40;
    Send(Up, 329, 60); // 40 / 2 is below 30
    ExpectRest();
}

// ---- Coasting ----

TEST_F(ScrollAreaTest, FlickCoastsWithFrictionAndComesToRest) {
    Send(Down, 350);
    Send(Move, 330, 16);
    Send(Move, 290, 16);
    Send(Up, 270, 16);
    const int32_t v0 = area->velocity;
    EXPECT_EQ(v0, -20 * 1000 / 16 / 2 + (-60 * 1000 / 16 / 2) / 2);
    EXPECT_EQ(area->scrollState, State::Coasting);
    int32_t v = v0, offset = area->offsetY;
    for (int step = 0; step < 20; step++) {
        v -= v / 20;
        offset += v * 16 / 1000;
        clock.Advance(16);
        app.animations.Step(clock.Now());
        EXPECT_EQ(area->velocity, v);
        EXPECT_EQ(area->offsetY, offset);
    }
    const std::vector<int32_t> rest = Coast();
    EXPECT_TRUE(std::is_sorted(rest.rbegin(), rest.rend()));
    EXPECT_GT(rest.back(), -700);
    ExpectRest();
}

TEST_F(ScrollAreaTest, FlickBeyondTheEndIsBrakedAndSpringsBack) {
    area->SetScrollOffset(CVrPoint(0, -690));
    Send(Down, 350);
    Send(Move, 330, 16);
    Send(Up, 250, 16);
    EXPECT_LT(area->offsetY, -700);
    const int32_t v = area->velocity;
    clock.Advance(16);
    app.animations.Step(clock.Now());
    EXPECT_EQ(area->velocity, v / 4);
    const std::vector<int32_t> way = Coast();
    EXPECT_EQ(way.back(), -700);
    for (int32_t offset : way)
        EXPECT_GE(offset, -800);
    ExpectRest();
}

TEST_F(ScrollAreaTest, SpringTakesAShareOfTheWayAndAtLeastTwoPixels) {
    Send(Down, 150);
    Send(Move, 170, 16);
    Send(Move, 270, 16); // 120 px beyond: 37 show
    EXPECT_EQ(area->offsetY, 37);
    Send(Up, 270, 200); // rested
    EXPECT_EQ(area->scrollState, State::Coasting);
    EXPECT_EQ(Coast(), (std::vector<int32_t>{32, 27, 23, 19, 16, 13, 11, 9, 7, 5, 3, 1, 0}));
    ExpectRest();
}

TEST_F(ScrollAreaTest, SlowPassesMoveByAtMostSixtyMs) {
    Send(Down, 150);
    Send(Move, 170, 16);
    Send(Move, 270, 16);
    Send(Up, 270, 200);
    clock.Advance(5000);
    app.animations.Step(clock.Now());
    EXPECT_EQ(area->offsetY, 37 - (37 * 60 + 119) / 120);
    clock.Advance(0);
    app.animations.Step(clock.Now()); // no time counts as 1 ms: two pixels
    EXPECT_EQ(area->offsetY, 37 - 19 - 2);
}

TEST_F(ScrollAreaTest, TouchStopsTheContentDead) {
    Send(Down, 350);
    Send(Move, 330, 16);
    Send(Up, 200, 16);
    clock.Advance(16);
    app.animations.Step(clock.Now());
    const int32_t offset = area->offsetY;
    Send(Down, 200, 5);
    EXPECT_TRUE(app.animations.IsEmpty());
    EXPECT_EQ(area->velocity, 0);
    Send(Up, 200, 50);
    EXPECT_EQ(area->offsetY, offset);
    ExpectRest();
}

// Wherever the content was, it stands at a place of rest then: within its ends, and on a border if it snaps.
TEST_F(ScrollAreaTest, ThirdAnimationStopsTheContent) {
    for (const bool snaps : {false, true}) {
        delete area;
        area = snaps ? AddArea<SnappingArea>() : AddArea<Area>();
        const auto stop = [this] {
            Area others[2];
            for (Area& other : others) {
                other.scrollState = State::Coasting;
                app.animations.Add(&other);
            }
            EXPECT_EQ(area->scrollState, State::Idle);
            EXPECT_EQ(area->velocity, 0);
        };
        Send(Down, 350);
        Send(Move, 330, 16);
        Send(Up, 200, 16);
        EXPECT_EQ(area->offsetY, -150);
        stop();
        EXPECT_EQ(area->offsetY, snaps ? -200 : -150);
        EXPECT_TRUE(app.animations.IsEmpty());
        area->SetScrollOffset(CVrPoint(0, 0));
        Send(Down, 150);
        Send(Move, 200, 16);
        Send(Up, 300, 16);
        EXPECT_GT(area->offsetY, 0);
        stop();
        EXPECT_EQ(area->offsetY, 0);
    }
}

TEST_F(ScrollAreaTest, ContentThatFitsOnlyShowsTheRubberBand) {
    area->SizeStore(CVrSize(kPlace.width, 200));
    Send(Down, 250);
    Send(Move, 200, 16);
    Send(Move, 150, 16);
    EXPECT_EQ(area->offsetY, -33);
    Send(Up, 150, 16);
    Coast();
    EXPECT_EQ(area->offsetY, 0);
    ExpectRest();
}

TEST_F(ScrollAreaTest, SnappingAreaRestsOnItsBordersAndInvalidatesItself) {
    delete area;
    auto* snapping = AddArea<SnappingArea>();
    area = snapping;
    app.root->Draw(false, true);
    Send(Down, 350);
    Send(Move, 330, 60);
    Send(Move, 280, 60);
    EXPECT_TRUE(area->needsUpdate);
    Send(Up, 280, 300);
    EXPECT_EQ(area->offsetY, -70);
    Coast();
    EXPECT_EQ(area->offsetY, -100);
    ExpectRest();
}

// ---- Fixed ----

class FixedAreaTest : public ScrollAreaTest {
protected:
    FixedAreaTest() {
        area->SetFixed();
        for (uint32_t i = 0; i < 3; i++)
            Child(i).eventMask = Up;
    }
};

TEST_F(FixedAreaTest, LongWayThatEndsOnTheSameChildIsATap) {
    Send(Down, 250);
    EXPECT_TRUE(Child(1).pressed);
    Send(Move, 390, 16);
    Send(Move, 210, 16);
    Send(Up, 210, 16);
    EXPECT_EQ(Child(1).Taken(), (Notes{"up 80/110"}));
    EXPECT_EQ(app.Capture(), nullptr);
    EXPECT_EQ(area->scrollState, State::Fixed);
}

TEST_F(FixedAreaTest, ReleaseElsewhereCancels) {
    Send(Down, 250);
    Send(Move, 390, 16);
    Send(Up, 390, 16);
    EXPECT_EQ(Child(1).Taken(), (Notes{"cancelled"}));
    EXPECT_FALSE(Child(1).pressed);
    EXPECT_EQ(Child(2).Taken(), Notes{});
    EXPECT_EQ(app.Capture(), nullptr);
}

TEST_F(FixedAreaTest, ChangeOfModeFreesTheStoreAndTheOffset) {
    EXPECT_FALSE(area->HasStore());
    area->SetScrolling();
    area->SizeStore(CVrSize(400, 1000));
    area->SetScrollOffset(CVrPoint(0, -100));
    area->SetFixed();
    EXPECT_EQ(area->offsetY, 0);
    EXPECT_TRUE(area->HitChildren());
}

// ---- What must not wedge the recogniser ----

TEST_F(ScrollAreaTest, LostUpEventIsMadeUpForByTheNextDown) {
    for (int32_t travel : {0, 50}) {
        Send(Down, 250);
        Send(Move, 250 + travel, 16);
        Send(Down, 350, 16);
        EXPECT_FALSE(Child(1).pressed);
        EXPECT_TRUE(Child(2).pressed);
        Send(Up, 350, 16);
        EXPECT_EQ(Child(2).Taken(), (Notes{"down 80/250", "up 80/250"}));
        Child(1).Taken();
        area->SetScrollOffset(CVrPoint());
        ExpectRest();
    }
}

TEST_F(ScrollAreaTest, DownElsewhereAfterALostUpGoesWhereTheFingerIs) {
    Probe& other = Add(*app.root, CVrRect(0, 500, 700, 100));
    for (bool isFixed : {false, true}) {
        if (isFixed)
            area->SetFixed();
        Send(Down, 250);
        Send(Down, 550, 16);
        Send(Up, 550, 16);
        EXPECT_EQ(other.Taken(), (Notes{"down 100/550", "up 100/550"})) << isFixed;
        EXPECT_EQ(app.Capture(), nullptr);
    }
}

TEST_F(ScrollAreaTest, PageMayBeRebuiltInTheMiddleOfEachStep) {
    for (const char* hook : {"down", "move", "cancelled", "up"}) {
        for (bool becomesFixed : {false, true}) {
            area->DeleteChildren();
            area->SetFixed();
            area->SetScrolling();
            area->SizeStore(CVrSize(400, 1000));
            Probe& button = Add(*area, CVrRect(0, 0, 400, 1000));
            button.onEvent = [&, hook](const std::string& name) {
                if (name != hook)
                    return;
                area->DeleteChildren();
                if (becomesFixed)
                    area->SetFixed();
            };
            Send(Down, 250);
            Send(Move, 300, 16);
            Send(Move, 320, 16);
            Send(Up, 320, 200);
            Coast();
            EXPECT_EQ(app.Capture(), nullptr) << hook;
            EXPECT_EQ(area->scrollState,
                      becomesFixed && area->ChildCount() == 0 ? State::Fixed : State::Idle);
        }
    }
}

TEST_F(ScrollAreaTest, AreaMayBeDestroyedByItsChild) {
    for (const char* hook : {"down", "move", "cancelled", "up"}) {
        auto* page = AddArea<Area>();
        Probe& button = Add(*page, CVrRect(0, 0, 400, 1000));
        button.onEvent = [&, hook](const std::string& name) {
            if (name == hook)
                delete page;
        };
        const int32_t end = std::string(hook) == "up" ? 250 : 320; // a tap, else a drag
        for (uint32_t eventType : {Down, Move, Move, Up})
            app.root->RouteEvent(eventType, CVrPoint(100, eventType == Down ? 250 : end));
        EXPECT_EQ(app.root->ChildCount(), 1U) << hook;
        EXPECT_EQ(app.Capture(), nullptr) << hook;
    }
}

TEST_F(ScrollAreaTest, RandomEventsNeverWedgeIt) {
    std::mt19937 random(4711);
    const auto any = [&](int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); };
    const std::vector<uint32_t> types{Down, Move, Move, Move, Up, 0, 3, 7, 1024};
    Child(3).letsGo = false;
    for (int i = 0; i < 100'000; i++) {
        clock.Advance(static_cast<uint64_t>(any(30)));
        const int far = any(50) == 0 ? 1'000'000'000 : 400;
        app.root->RouteEvent(types[static_cast<size_t>(any(static_cast<int>(types.size())))],
                             CVrPoint(any(500), any(far * 2) - far + 250));
        app.animations.Step(clock.Now());
        if (any(500) == 0)
            any(2) ? area->SetFixed() : (area->SetScrolling(), area->SizeStore(CVrSize(400, 1000)));
        if (any(100) == 0)
            app.root->ReleasePressed();
        if (i % 1000 != 999)
            continue;
        for (uint32_t c = 0; c < area->ChildCount(); c++)
            Child(c).Taken();
        area->SetScrolling();
        area->SizeStore(CVrSize(400, 1000));
        Send(Down, 250, 1000); // a lost up event may have left anything
        Send(Up, 250, 50);
        Coast();
        ASSERT_GE(area->offsetY, -700);
        ASSERT_LE(area->offsetY, 0);
        area->SetScrollOffset(CVrPoint());
        for (uint32_t c = 0; c < area->ChildCount(); c++)
            Child(c).Taken();
        Send(Down, 250);
        Send(Up, 250, 50);
        ASSERT_EQ(Child(1).Taken(), (Notes{"down 80/150", "up 80/150"})) << i;
        ExpectRest();
    }
}

// ---- Painting ----

// A scene made of a seed: overlapping panels, some round, some in others, some hidden, in an area somewhere.
Area& AddScene(CVrGuiElement& root, uint32_t seed) {
    std::mt19937 random(seed);
    const auto any = [&random](int from, int to) {
        return from + static_cast<int>(random() % static_cast<unsigned>(to - from));
    };
    auto& area = *new Area;
    area.SetParent(&root);
    area.rect = CVrRect(any(0, 200), any(0, 200), any(100, 520), any(100, 520));
    area.canvasSize = area.rect.Size();
    area.SetScrolling();
    area.SizeStore(CVrSize(area.rect.width, any(80, 1500)));
    for (int i = any(0, 30); i > 0; i--) {
        const CVrRect place(any(0, 80), any(0, 1400), any(1, 400), any(1, 300));
        Probe& panel = Add(area, place, 0xFF000000 | static_cast<uint32_t>(random()));
        panel.cornerMask = random() & CornerAll;
        panel.SetHidden(any(0, 8) == 0);
        if (any(0, 2))
            Add(panel, CVrRect(any(0, 40), any(0, 40), any(1, 60), any(1, 60)),
                static_cast<uint32_t>(any(1, 255)) << 24 | static_cast<uint32_t>(random() >> 8));
    }
    return area;
}

TEST_F(ScrollAreaTest, DragBlendsTheContentWithoutPaintingItAgain) {
    delete area;
    Application twin; // the same scenes, painted wholly at each pass
    app.root->colorIndex[0] = twin.root->colorIndex[0] = 1;
    app.root->colors[0] = twin.root->colors[0] = 0xFF101820;
    std::mt19937 random(99);
    for (uint32_t scene = 0; scene < 20; scene++) {
        Area& kept = AddScene(*app.root, scene);
        Area& whole = AddScene(*twin.root, scene);
        for (int pass = 0; pass < 12; pass++) {
            kept.offsetY = whole.offsetY = -static_cast<int>(random() % 1500) + 100;
            app.root->needsUpdate = true;
            app.root->Draw(false, true);
            twin.root->Draw(true, true);
            ASSERT_EQ(memcmp(app.root->pixels, twin.root->pixels, 720 * 720 * 4), 0) << scene << "/" << pass;
            ASSERT_EQ(kept.paintings, 1 + pass / 6);
            if (pass != 5)
                continue;
            for (Area* changed : {&kept, &whole})
                if (changed->ChildCount() > 0) {
                    changed->Child(0)->SetPos(3, 4);
                    changed->Child(0)->Invalidate();
                }
            if (kept.ChildCount() == 0)
                kept.Invalidate();
        }
        delete &kept;
        delete &whole;
    }
    area = nullptr;
}

TEST_F(ScrollAreaTest, DragFlagsTheRootAlone) {
    app.root->Draw(false, true);
    Send(Down, 350);
    Send(Move, 330, 16);
    app.root->Draw(false, true);
    Send(Move, 300, 16);
    EXPECT_TRUE(app.root->needsUpdate);
    EXPECT_FALSE(area->NeedsUpdateTree());
}

} // namespace
