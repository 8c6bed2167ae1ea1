#include "gui/element.h"

#include <cstring>
#include <gtest/gtest.h>
#include <random>

#include "gui/dummy.h"
#include "gui/test_tree.h"
#include "support/log_capture.h"

using namespace test_tree;

namespace {

class ElementTest : public testing::Test {
protected:
    CVrTestClock clock;
    Application app;
    Probe& root = *app.root;
};

// ---- Tree ----

TEST_F(ElementTest, ChildTakesRowFlagsAndPlaceFromTheStyleSheet) {
    app.LoadStyles();
    CVrGuiElement* child = root.CreateGuiChild("CVrGuiDummy", false);
    ASSERT_NE(child, nullptr);
    EXPECT_EQ(child->styleName, "CVrGuiMainWin"); // a type beyond the table is row 0
    EXPECT_EQ(child->text, "CVrGuiDummy");
    EXPECT_EQ(child->rect, CVrRect(0, 0, 720, 720));
    EXPECT_EQ(child->parent, &root);
    EXPECT_EQ(child->colors[CVrGuiElement::ColorText], 0U); // colours come with ReloadColors
    root.ReloadColors();
    EXPECT_EQ(child->colors[CVrGuiElement::ColorText], 0xFF000000U);
}

TEST_F(ElementTest, UnknownClassAndClassThatIsNoElementGiveNull) {
    LogCapture log;
    EXPECT_EQ(root.CreateGuiChild("CVrGuiNothing", true), nullptr);
    EXPECT_TRUE(log.Has("CVrGuiElement::CreateGuiChild: Create CVrGuiNothing error"));
    static const CClassRegistrar registrar("CTestNoElement", [] { return new CVrObject; });
    EXPECT_EQ(root.CreateGuiChild("CTestNoElement", true), nullptr);
    EXPECT_EQ(root.ChildCount(), 0U);
}

TEST_F(ElementTest, NestingEndsAtTheDepthLimit) {
    LogCapture log;
    CVrGuiElement* innermost = &root;
    for (int i = 0; i < 10'000; i++)
        if (CVrGuiElement* child = innermost->CreateGuiChild("CVrGuiDummy", false))
            innermost = child;
    EXPECT_EQ(innermost->GetDepth(), CVrGuiElement::kMaxDepth);
    EXPECT_GT(log.Count("Create CVrGuiDummy error"), 0U);
    Probe& branch = Add(root, CVrRect());
    Add(branch, CVrRect());
    EXPECT_FALSE(branch.SetParent(innermost->parent)); // its child would be one too deep
    EXPECT_EQ(branch.parent, &root);
    EXPECT_FALSE(root.SetParent(innermost)); // no circles
}

TEST_F(ElementTest, TenThousandSiblingsComeAndGoQuickly) {
    for (int i = 0; i < 10'000; i++)
        Add(root, CVrRect(0, 0, 1, 1));
    Probe& last = Add(root, CVrRect());
    Probe& other = Add(root, CVrRect());
    EXPECT_TRUE(last.SetParent(&other));
    EXPECT_EQ(root.ChildCount(), 10'001U);
    root.InvalidateTree();
    root.DeleteChildren();
    EXPECT_EQ(root.ChildCount(), 0U);
}

TEST_F(ElementTest, ChildrenAreDestroyedFromTheLastToTheFirst) {
    std::string order;
    for (char name : {'a', 'b', 'c'})
        Add(root, CVrRect()).onDestroy = [&order, name] { order += name; };
    delete root.Child(1); // one that goes by itself leaves its parent's list
    EXPECT_EQ(root.ChildCount(), 2U);
    root.DeleteChildren();
    EXPECT_EQ(order, "bca");
}

TEST_F(ElementTest, DetachedChildrenBelongToTheCaller) {
    Probe& child = Add(root, CVrRect());
    Probe& grandchild = Add(child, CVrRect());
    root.DetachChildren();
    EXPECT_EQ(child.parent, nullptr);
    EXPECT_EQ(child.ChildCount(), 0U);
    delete &grandchild;
    delete &child;
}

TEST_F(ElementTest, CopyTakesLookAndLikeChildren) {
    app.LoadStyles();
    CVrGuiElement* source = root.CreateGuiChild("CVrGuiDummy", false);
    source->text = "kitchen";
    source->iconName = "lamp.svg";
    source->radiusOverride = 7;
    source->hitChildren = false;
    source->offsetY = -12;
    auto copy = std::make_unique<Probe>();
    copy->CopyFrom(*source);
    EXPECT_EQ(copy->text, "kitchen");
    EXPECT_EQ(copy->iconName, "lamp.svg");
    EXPECT_EQ(copy->radiusOverride, 7);
    EXPECT_FALSE(copy->HitChildren());
    EXPECT_EQ(copy->offsetY, -12);
    EXPECT_EQ(copy->style, source->style);
    EXPECT_EQ(copy->parent, nullptr);
}

TEST_F(ElementTest, ReferencesBecomeNullWithTheirElement) {
    Probe& button = Add(root, CVrRect());
    auto* page = &Add(root, CVrRect());
    button.listener = page;
    CVrElementRef<> first(page), copy = first, moved;
    moved = copy;
    copy = nullptr;
    app.SetCapture(page);
    root.hitElement = page;
    delete page;
    EXPECT_EQ(button.listener.Get(), nullptr);
    EXPECT_EQ(first.Get(), nullptr);
    EXPECT_EQ(moved.Get(), nullptr);
    EXPECT_EQ(app.Capture(), nullptr);
    EXPECT_EQ(root.hitElement.Get(), nullptr);
}

// ---- Redraw flags ----

TEST_F(ElementTest, InvalidatePassesOverHiddenElements) {
    Probe& child = Add(root, CVrRect(0, 0, 10, 10));
    Probe& grandchild = Add(child, CVrRect(0, 0, 5, 5));
    root.ClearUpdateTree();
    EXPECT_FALSE(root.NeedsUpdateTree());
    grandchild.flags |= CVrGuiElement::FlagHidden;
    grandchild.Invalidate();
    EXPECT_FALSE(root.NeedsUpdateTree());
    child.Invalidate();
    EXPECT_TRUE(child.needsUpdate);
    EXPECT_FALSE(grandchild.needsUpdate);
    EXPECT_FALSE(root.needsUpdate);
    EXPECT_TRUE(root.NeedsUpdateTree());
}

TEST_F(ElementTest, ElementHiddenWhileMarkedStaysMarkedUntilForced) {
    Probe& child = Add(root, CVrRect(0, 0, 10, 10));
    child.flags |= CVrGuiElement::FlagHidden;
    root.Draw(false, true);
    EXPECT_TRUE(root.NeedsUpdateTree());
    child.SetUpdate(false, false);
    EXPECT_TRUE(root.NeedsUpdateTree());
    child.SetUpdate(false, true);
    EXPECT_FALSE(root.NeedsUpdateTree());
}

// ---- Visibility ----

TEST_F(ElementTest, ShowPageHidesTheOtherPagesAndInvalidatesTheOneShown) {
    Probe& first = Add(root, CVrRect());
    Probe& plain = Add(root, CVrRect());
    Probe& second = Add(root, CVrRect());
    first.flags |= CVrGuiElement::FlagPage;
    second.flags |= CVrGuiElement::FlagPage | CVrGuiElement::FlagHidden;
    root.ClearUpdateTree();
    second.SetUpdate(false, true);
    root.ShowPage(&second);
    EXPECT_EQ(first.Taken(), Notes{"hidden"});
    EXPECT_EQ(second.Taken(), Notes{"shown"});
    EXPECT_EQ(plain.Taken(), Notes{});
    EXPECT_TRUE(second.needsUpdate);
    root.ShowPage(&second);
    EXPECT_EQ(second.Taken(), Notes{});
    root.SetHidden(true);
    EXPECT_FALSE(second.IsVisibleInTree());
}

// ---- Geometry and hit testing ----

TEST_F(ElementTest, RootCoordinatesAddAndSubtractTheAncestors) {
    Probe& page = Add(root, CVrRect(6, 110, 700, 600));
    Probe& area = Add(page, CVrRect(10, 20, 600, 500));
    EXPECT_EQ(area.ToRoot(CVrPoint(1, 2)), CVrPoint(7, 112));
    EXPECT_EQ(area.FromRoot(CVrPoint(7, 112)), CVrPoint(1, 2));
}

TEST_F(ElementTest, ScrollOffsetIsClampedToWhatTheStoreHasBeyondTheView) {
    Probe& area = Add(root, CVrRect(0, 0, 100, 100));
    area.SetScrollOffset(CVrPoint(-5, -5));
    EXPECT_EQ(CVrPoint(area.offsetX, area.offsetY), CVrPoint(0, 0));
    area.InitMem(CVrRect(0, 0, 100, 250));
    area.SetScrollOffset(CVrPoint(-5, -200));
    EXPECT_EQ(CVrPoint(area.offsetX, area.offsetY), CVrPoint(0, -150));
    area.SetScrollOffset(CVrPoint(0, 9));
    EXPECT_EQ(area.offsetY, 0);
}

TEST_F(ElementTest, HitTestFindsTheTopmostDeepestVisibleElement) {
    Probe& page = Add(root, CVrRect(100, 100, 400, 400));
    Probe& below = Add(page, CVrRect(0, 0, 200, 200));
    Probe& above = Add(page, CVrRect(100, 100, 200, 200));
    Probe& inner = Add(above, CVrRect(10, 10, 20, 20));
    CVrPoint offset;
    EXPECT_EQ(root.HitTest(CVrPoint(215, 215), &offset), &inner);
    EXPECT_EQ(offset, CVrPoint(200, 200)); // page and above, without the one hit
    EXPECT_EQ(root.HitTest(CVrPoint(250, 250), nullptr), &above);
    above.SetHidden(true);
    EXPECT_EQ(root.HitTest(CVrPoint(250, 250), nullptr), &below);
    EXPECT_EQ(root.HitTest(CVrPoint(499, 499), nullptr), &page);
    EXPECT_EQ(root.HitTest(CVrPoint(500, 499), nullptr), nullptr); // empty space of the root
    above.SetHidden(false);
    above.hitChildren = false;
    EXPECT_EQ(root.HitTest(CVrPoint(215, 215), nullptr), &above);
    above.rect = CVrRect(350, 350, 200, 200);
    EXPECT_EQ(root.HitTest(CVrPoint(520, 520), nullptr), nullptr); // beyond its parent
}

TEST_F(ElementTest, HitTestFollowsTheScrolledContent) {
    Probe& area = Add(root, CVrRect(0, 100, 100, 100));
    Probe& top = Add(area, CVrRect(0, 0, 100, 100));
    Probe& bottom = Add(area, CVrRect(0, 100, 100, 100));
    area.InitMem(CVrRect(0, 0, 100, 200));
    EXPECT_EQ(root.HitTest(CVrPoint(50, 150), nullptr), &top);
    area.offsetY = -100;
    EXPECT_EQ(root.HitTest(CVrPoint(50, 150), nullptr), &bottom);
}

// ---- Routing ----

TEST_F(ElementTest, EventsBubbleToTheFirstTakerInItsParentsCoordinates) {
    Probe& page = Add(root, CVrRect(10, 20, 400, 400));
    Probe& button = Add(page, CVrRect(30, 40, 100, 100));
    button.eventMask = CVrGuiElement::EventUp;
    EXPECT_TRUE(root.RouteEvent(CVrGuiElement::EventDown, CVrPoint(50, 70)));
    EXPECT_EQ(page.Taken(), Notes{"down 50/70"});
    EXPECT_EQ(page.hitElement, &button);
    EXPECT_TRUE(button.pressed);
    EXPECT_TRUE(root.RouteEvent(CVrGuiElement::EventUp, CVrPoint(50, 70)));
    EXPECT_EQ(button.Taken(), Notes{"up 40/50"});
    EXPECT_FALSE(button.pressed);
}

TEST_F(ElementTest, EventThatNobodyTakesIsDroppedButThePressStaysUntilReleased) {
    Probe& button = Add(root, CVrRect(0, 0, 100, 100));
    button.eventMask = 0;
    EXPECT_FALSE(root.RouteEvent(CVrGuiElement::EventDown, CVrPoint(5, 5)));
    EXPECT_FALSE(root.RouteEvent(CVrGuiElement::EventDown, CVrPoint(500, 5)));
    EXPECT_TRUE(button.pressed);
    EXPECT_TRUE(root.ReleasePressed());
    EXPECT_EQ(button.Taken(), Notes{"cancelled"});
    EXPECT_FALSE(root.ReleasePressed());
}

TEST_F(ElementTest, CaptureTakesEveryTouchWhereverItIs) {
    Probe& page = Add(root, CVrRect(10, 20, 100, 100));
    Probe& slider = Add(page, CVrRect(0, 0, 50, 50));
    Probe& other = Add(root, CVrRect(300, 300, 100, 100));
    app.SetCapture(&slider);
    EXPECT_TRUE(root.RouteEvent(CVrGuiElement::EventMove, CVrPoint(310, 320)));
    EXPECT_EQ(slider.Taken(), Notes{"move 300/300"});
    EXPECT_TRUE(slider.moved);
    EXPECT_EQ(other.Taken(), Notes{});
}

TEST_F(ElementTest, UnknownEventTypeReachesNobody) {
    Probe& button = Add(root, CVrRect(0, 0, 100, 100));
    EXPECT_TRUE(root.RouteEvent(3, CVrPoint(5, 5))); // taken by the mask, but no hook fits
    EXPECT_FALSE(root.RouteEvent(8, CVrPoint(5, 5)));
    EXPECT_EQ(button.Taken(), Notes{});
}

TEST_F(ElementTest, ElementMayBeDestroyedInEachOfItsHooks) {
    for (const char* hook : {"down", "move", "up", "cancelled", "timer"}) {
        Probe& page = Add(root, CVrRect(0, 0, 100, 100));
        Probe& button = Add(page, CVrRect(0, 0, 100, 100));
        button.listener = &page;
        button.onEvent = [&, hook](const std::string& name) {
            if (name == hook)
                root.DeleteChildren();
        };
        button.SetTimer(10, true);
        const auto timed = std::string(hook) == "timer";
        for (uint32_t type : {CVrGuiElement::EventDown, CVrGuiElement::EventMove})
            root.RouteEvent(type, CVrPoint(5, 5));
        if (std::string(hook) == "cancelled")
            root.ReleasePressed();
        if (timed)
            root.UpdateTimers(clock.Now() + 10);
        root.RouteEvent(CVrGuiElement::EventUp, CVrPoint(5, 5));
        EXPECT_EQ(root.ChildCount(), 0U) << hook;
    }
}

TEST_F(ElementTest, TouchHistoryKeepsTheNewestPoints) {
    for (int i = 0; i < 5000; i++)
        app.AddTouchPoint(CVrPoint(i, 0));
    EXPECT_LE(app.touchPoints.GetSize(), CVrGuiApplication::kTouchHistory);
    EXPECT_EQ(app.touchPoints.GetSize(), app.touchTicks.GetSize());
    EXPECT_EQ(app.touchPoints.Last().x, 4999);
    EXPECT_EQ(app.touchPoints[0].x, 5000 - static_cast<int>(app.touchPoints.GetSize()));
}

// ---- Timers ----

TEST_F(ElementTest, PeriodicTimerThatComesLateFiresOnce) {
    Probe& element = Add(root, CVrRect());
    const uint64_t start = clock.Now();
    element.SetTimer(16, true);
    EXPECT_FALSE(root.UpdateTimers(start + 15));
    EXPECT_TRUE(element.ticks.empty());
    element.wantsRepaint = true;
    EXPECT_TRUE(root.UpdateTimers(start + 116));
    EXPECT_EQ(element.ticks.size(), 1U);
    EXPECT_EQ(element.timerDue, start + 117);
    root.UpdateTimers(start + 116);
    EXPECT_EQ(element.ticks.size(), 1U);
}

TEST_F(ElementTest, OneShotTimerEndsAndCanBeRestartedByItsHook) {
    Probe& element = Add(root, CVrRect());
    element.SetTimer(20, false);
    root.UpdateTimers(clock.Now() + 20);
    EXPECT_FALSE(element.IsTimerActive());
    root.UpdateTimers(clock.Now() + 500);
    EXPECT_EQ(element.ticks.size(), 1U);
}

// ---- Symbols and colours ----

TEST_F(ElementTest, SymbolComesFromItemThenShadingKindThenCategoryThenDefault) {
    app.structure.LoadJsonSymbols(R"([{"I":5,"N":"lamp.svg"},{"I":6,"N":"bulb.svg"}])");
    app.structure.LoadJsonCats(R"([{"U":9,"N":"Light","I":6},{"U":10,"N":"Empty"}])");
    app.structure.staticSymbols.SetAt(11015, new CVrxStringU("curtain-left-opened.svg"));
    app.structure.staticSymbols.SetAt(0, new CVrxStringU("tree-layer.svg"));
    app.structure.staticSymbols.SetAt(99999, new CVrxStringU("unknown.svg"));
    CVrStructureItem item;
    CVrxStringU name;
    const auto expect = [&](const char* wanted, bool isStatic) {
        root.GetItemIcon(name, &item);
        EXPECT_EQ(name, wanted);
        EXPECT_EQ(root.iconStatic, isStatic);
    };
    expect("tree-layer.svg", true);
    item.category = 10;
    expect("tree-layer.svg", true);
    item.category = 9;
    expect("bulb.svg", false);
    item.type = ObjectType::AutoJalousie2;
    item.kind = 4;
    expect("curtain-left-opened.svg", true);
    item.kind = 3;
    expect("bulb.svg", false);
    item.icon = 5;
    expect("lamp.svg", false);
    item.icon = 77;
    expect("unknown.svg", false);
}

// ---- Dump ----

TEST_F(ElementTest, DumpShowsPathAndGeometryOfEachElement) {
    root.text = "main";
    Probe& page = Add(root, CVrRect(6, 110, 708, 604), 0xFF123456);
    page.text = "kitchen";
    page.SetTimer(50, true);
    page.iconName = "lamp.svg";
    LogCapture log;
    root.Dump(0, "the tree");
    EXPECT_TRUE(log.Has("CVrGuiElement::Dump: the tree"));
    EXPECT_TRUE(
        log.Has("CVrGuiElement::Dump:     main.kitchen T:999 V:0 U:1 T: 50ms periodic x=6 y=110 w=708 h=604 "
                "Off: 0/0 C:ff123456 lamp.svg"));
    page.text = CVrxStringU(std::string(3'000'000, 'x').c_str());
    root.Dump(0, nullptr); // a path longer than a line is cut
    EXPECT_LT(log.All().back().size(), kLogLineSize);
}

} // namespace
