#include "shell/scroll_area.h"

#include <algorithm>
#include <cstdlib>

#include "gui/application.h"
#include "structure/style_sheet.h"

namespace {

constexpr int64_t kRubberBand = 100;    // pixels that the content never passes beyond its range
constexpr int32_t kMaxVelocity = 6000;  // pixels per second
constexpr int32_t kMinVelocity = 30;    // below it the content stands
constexpr uint64_t kMaxStep = 60;       // ms; what takes longer counts as this
constexpr uint64_t kRestedFinger = 121; // ms without movement before the up event: no flick
constexpr int32_t kFriction = 20;       // share of the velocity that a step takes away
constexpr int32_t kBrake = 4;           // the same beyond the range
constexpr int32_t kSpring = 120;        // ms in which the spring would go the whole way at its present pace
constexpr int32_t kMinSpringStep = 2;   // pixels

uint64_t PassTick() {
    const CVrGuiApplication* application = TheApplication();
    return application ? application->PassTick() : 0;
}

// The excess that shows for an excess of the finger: the first pixels cost two each, and kRubberBand is never
// reached.
int64_t RubberBand(int64_t excess) {
    const int64_t over = excess / 2;
    return over * kRubberBand / (over + kRubberBand);
}

} // namespace

CVrGuiScrollArea::CVrGuiScrollArea(ScrollAxis axis) : vertical(axis == ScrollAxis::Vertical) {
}

CVrGuiScrollArea::~CVrGuiScrollArea() {
    LeaveQueue();
}

void CVrGuiScrollArea::DeleteChildren() {
    pressedChild = nullptr;
    CVrGuiElement::DeleteChildren();
}

// ---- Modes ----

bool CVrGuiScrollArea::FollowsFinger() const {
    return scrollState == ScrollState::Pressed || scrollState == ScrollState::Dragging ||
           scrollState == ScrollState::ChildOwnsFinger;
}

bool CVrGuiScrollArea::HasCapture() const {
    const CVrGuiApplication* application = TheApplication();
    return application && application->Capture() == this;
}

// A gesture whose up event has not come yet.
bool CVrGuiScrollArea::IsGestureOpen() const {
    return FollowsFinger() || pressedChild || HasCapture();
}

void CVrGuiScrollArea::SetScrolling() {
    if (!FollowsFinger())
        scrollState = ScrollState::Idle;
    hitInto = false;
    eventMask = EventAll;
    flags |= FlagOwnStore;
}

void CVrGuiScrollArea::SetFixed() {
    scrollState = ScrollState::Fixed;
    velocity = 0;
    LeaveQueue();
    hitInto = true;
    eventMask = EventAll;
    flags &= ~static_cast<uint32_t>(FlagOwnStore);
    FreeMem();
    offsetX = offsetY = 0;
}

void CVrGuiScrollArea::SizeStore(const CVrSize& size) {
    if (!HasStore() || storeSize != size)
        MarkContentChanged();
    InitMem(CVrRect(0, 0, size.width, size.height));
}

void CVrGuiScrollArea::LeaveQueue() {
    if (CVrAnimQueue* queue = RunningAnimations())
        queue->Remove(this);
}

// ---- Gestures ----
//
// Tap, in any scrolling state of the content:
//     down  child: down, pressed         up  child: up -> its click
// Drag (travel of the tolerance or more along the axis):
//     down  child: down, pressed         move  child: move, then cancelled; the content stays
//     moves the content follows          up  coasting, spring, or rest
// Slider in a list (the child answers false to OnPressCancelled):
//     down  child: down, pressed         moves, up  the child gets all of them, the content stays
//
// The area captures the touch from the down event on. Whatever happens in between, an up event releases it; a
// down event while it is held means that the up event got lost: that gesture is given up, and the down event
// goes its ordinary way.

CVrPoint CVrGuiScrollArea::ChildPoint(const CVrPoint& point) const {
    return point - CVrPoint(offsetX, offsetY) - rect.Origin();
}

CVrGuiElement* CVrGuiScrollArea::ChildAt(const CVrPoint& point, CVrPoint* shift) {
    return HitTest(point - rect.Origin(), shift);
}

void CVrGuiScrollArea::ReleaseCapture() {
    if (HasCapture())
        TheApplication()->SetCapture(nullptr);
}

void CVrGuiScrollArea::DoEvent(uint32_t eventType, const CVrPoint& point) {
    if (eventType == EventDown && IsGestureOpen()) {
        AbandonGesture(point);
        return;
    }
    CVrElementRef<> self(this);
    Dispatch(eventType, point);
    if (self && eventType == EventUp)
        ReleaseCapture();
}

void CVrGuiScrollArea::Dispatch(uint32_t eventType, const CVrPoint& point) {
    switch (scrollState) {
    case ScrollState::Idle:
    case ScrollState::Coasting:
        if (eventType == EventDown)
            BeginGesture(point);
        break;
    case ScrollState::Pressed:
        DoPressed(eventType, point);
        break;
    case ScrollState::Dragging:
        DoDragging(eventType, point);
        break;
    case ScrollState::ChildOwnsFinger:
        DoChildOwnsFinger(eventType, point);
        break;
    case ScrollState::Fixed:
        DoFixed(eventType, point);
        break;
    }
}

// The up event of the last gesture never came. What it pressed is let go, and the down event is routed anew.
void CVrGuiScrollArea::AbandonGesture(const CVrPoint& point) {
    CVrElementRef<> self(this);
    const CVrGuiApplication* application = TheApplication();
    CVrGuiElement* root =
        HasCapture() ? application->Root() : nullptr; // without capture it was routed here already
    ReleaseCapture();
    CancelChildPress();
    if (!self)
        return;
    velocity = 0;
    if (scrollState != ScrollState::Fixed)
        scrollState = ScrollState::Idle;
    if (root)
        root->CVrGuiElement::RouteEvent(EventDown, ToRoot(point));
    else
        Dispatch(EventDown, point);
}

void CVrGuiScrollArea::CancelChildPress() {
    CVrElementRef<> child(pressedChild);
    pressedChild = nullptr;
    if (child)
        child->OnPressCancelled();
    if (child)
        child->pressed = child->moved = false;
}

// A touch during coasting stops the content dead.
void CVrGuiScrollArea::BeginGesture(const CVrPoint& point) {
    velocity = 0;
    LeaveQueue();
    lastTick = PassTick();
    pressPos = OnAxis(point);
    pressOffset = AxisOffset();
    const int32_t view = vertical ? rect.height : rect.width;
    const int32_t content = vertical ? storeSize.height : storeSize.width;
    minOffset = content > view ? view - content : 0;
    maxOffset = 0;
    hitShift = CVrPoint();
    pressedChild = ChildAt(point, &hitShift);
    CVrElementRef<> self(this);
    if (pressedChild)
        pressedChild->DoEvent(EventDown, ChildPoint(point) - hitShift);
    if (!self)
        return;
    if (pressedChild)
        pressedChild->pressed = true;
    OnDragBegin();
    if (!self || scrollState == ScrollState::Fixed)
        return;
    if (CVrGuiApplication* application = TheApplication())
        application->SetCapture(this);
    scrollState = ScrollState::Pressed;
}

void CVrGuiScrollArea::DoPressed(uint32_t eventType, const CVrPoint& point) {
    if (eventType != EventMove && eventType != EventUp)
        return;
    CVrElementRef<> self(this);
    // The move goes without hitShift: children inside children get it relative to the content.
    const CVrPoint inContent = ChildPoint(point);
    if (pressedChild)
        pressedChild->DoEvent(eventType, eventType == EventUp ? inContent - hitShift : inContent);
    if (!self || scrollState != ScrollState::Pressed)
        return; // the child rebuilt the page
    if (eventType == EventUp) {
        pressedChild = nullptr;
        lastPos = OnAxis(point);
        Settle(PassTick());
        return;
    }
    lastTick = PassTick();
    const int64_t travel = int64_t{OnAxis(point)} - pressPos;
    if (std::abs(travel) >= GetStyleValue(StyleValue::MoveTolerance))
        LeavePressed();
}

// The finger has left its place: the press ends, unless the child keeps it.
void CVrGuiScrollArea::LeavePressed() {
    CVrElementRef<> self(this);
    const bool letsGo = !pressedChild || pressedChild->OnPressCancelled();
    if (!self || scrollState != ScrollState::Pressed)
        return;
    if (!letsGo) {
        scrollState = ScrollState::ChildOwnsFinger;
        return;
    }
    if (pressedChild)
        pressedChild->pressed = pressedChild->moved = false;
    pressedChild = nullptr;
    scrollState = ScrollState::Dragging;
}

void CVrGuiScrollArea::DoDragging(uint32_t eventType, const CVrPoint& point) {
    if (eventType != EventMove && eventType != EventUp)
        return;
    int64_t wanted = int64_t{pressOffset} - pressPos + OnAxis(point);
    if (wanted > maxOffset)
        wanted = maxOffset + RubberBand(wanted - maxOffset);
    else if (wanted < minOffset)
        wanted = minOffset - RubberBand(minOffset - wanted);
    const uint64_t tick = PassTick();
    const uint64_t dt = tick > lastTick ? tick - lastTick : 0;
    lastTick = tick;
    lastPos = OnAxis(point);
    MixVelocity(eventType, wanted - AxisOffset(), dt);
    MoveTo(wanted);
    if (eventType == EventUp)
        Settle(tick);
}

void CVrGuiScrollArea::MixVelocity(uint32_t eventType, int64_t delta, uint64_t dt) {
    if (eventType == EventUp && dt >= kRestedFinger) {
        velocity = 0;
        return;
    }
    const auto step = static_cast<int64_t>(dt >= 1 && dt <= kMaxStep ? dt : kMaxStep);
    const int64_t mixed = delta * 1000 / step / 2 + velocity / 2;
    velocity = static_cast<int32_t>(std::clamp<int64_t>(mixed, -kMaxVelocity, kMaxVelocity));
    if (eventType == EventUp && std::abs(velocity) < kMinVelocity)
        velocity = 0;
}

// A plain area is only composed anew; the content in its store stays as it is.
void CVrGuiScrollArea::MoveTo(int64_t offset) {
    AxisOffset() = foundation::SaturateToInt32(offset);
    if (SnapsToItems())
        Invalidate();
    else
        RequestComposition();
}

void CVrGuiScrollArea::DoChildOwnsFinger(uint32_t eventType, const CVrPoint& point) {
    CVrElementRef<> self(this);
    if (pressedChild)
        pressedChild->DoEvent(eventType, ChildPoint(point));
    if (!self || eventType != EventUp)
        return;
    if (pressedChild)
        pressedChild->pressed = false;
    pressedChild = nullptr;
    if (scrollState == ScrollState::ChildOwnsFinger)
        scrollState = ScrollState::Idle;
}

// The content fits. The finger may leave the child and come back; a release elsewhere cancels. Travel alone
// does not.
void CVrGuiScrollArea::DoFixed(uint32_t eventType, const CVrPoint& point) {
    if (eventType == EventDown) {
        pressedChild = ChildAt(point, nullptr);
        if (pressedChild) {
            pressedChild->pressed = true;
            if (CVrGuiApplication* application = TheApplication())
                application->SetCapture(this);
        }
    }
    CVrElementRef<> child(pressedChild);
    if (!child)
        return;
    hitShift = CVrPoint();
    const CVrGuiElement* under = ChildAt(point, &hitShift);
    if (eventType == EventUp) {
        pressedChild = nullptr;
        ReleaseCapture();
    }
    if (under == child && child->AcceptsEvent(eventType)) {
        child->DoEvent(eventType, ChildPoint(point) - hitShift);
        return;
    }
    if (eventType != EventUp)
        return;
    if (under != child)
        child->OnPressCancelled();
    if (child)
        child->pressed = false;
}

// ---- Coasting ----

// How far the offset lies outside its range, with the sign of the direction.
int32_t CVrGuiScrollArea::Over() const {
    const int32_t offset = AxisOffset();
    if (offset > maxOffset)
        return offset - maxOffset;
    return offset < minOffset ? offset - minOffset : 0;
}

int32_t CVrGuiScrollArea::DistanceToRest() {
    const int32_t over = Over();
    if (over != 0 || !SnapsToItems())
        return over;
    return AxisOffset() - SnapPosition(AxisOffset(), minOffset, maxOffset);
}

// The end of a gesture: true if the content goes on moving by itself.
bool CVrGuiScrollArea::Settle(uint64_t now) {
    if (velocity == 0 && DistanceToRest() == 0) {
        scrollState = ScrollState::Idle;
        return false;
    }
    lastTick = now;
    scrollState = ScrollState::Coasting;
    LeaveQueue();
    if (CVrAnimQueue* queue = RunningAnimations())
        queue->Add(this);
    return true;
}

void CVrGuiScrollArea::SlowDown(int32_t over) {
    if (over == 0 && velocity != 0) {
        const int32_t share = velocity / kFriction;
        velocity -= share != 0 ? share : velocity > 0 ? 1 : -1;
        if (std::abs(velocity) < kMinVelocity)
            velocity = 0;
    } else if (over != 0 && velocity != 0 && (over > 0) == (velocity > 0)) {
        velocity /= kBrake;
    } else {
        velocity = 0;
    }
}

// Each step takes away dt / kSpring of the distance, and at least 2 pixels until the last two.
int32_t CVrGuiScrollArea::SpringStep(int32_t rest, int32_t dt) {
    const int64_t distance = std::abs(int64_t{rest});
    int64_t step = (distance * dt + kSpring - 1) / kSpring;
    if (step < kMinSpringStep && distance > kMinSpringStep)
        step = kMinSpringStep;
    step = std::min(step, distance);
    return static_cast<int32_t>(rest > 0 ? -step : step);
}

void CVrGuiScrollArea::Update(uint64_t now) {
    if (scrollState != ScrollState::Coasting)
        return;
    const uint64_t elapsed = now > lastTick ? now - lastTick : 0;
    const auto dt = static_cast<int32_t>(std::clamp<uint64_t>(elapsed, 1, kMaxStep));
    lastTick = now;
    SlowDown(Over());
    int32_t move = velocity * dt / 1000;
    if (move == 0)
        velocity = 0;
    if (velocity == 0)
        move = SpringStep(DistanceToRest(), dt);
    MoveTo(int64_t{AxisOffset()} + move);
    if (velocity == 0 && DistanceToRest() == 0)
        scrollState = ScrollState::Idle;
}

// Other animations have taken the places in the queue: no content stays beyond its end or between two items.
void CVrGuiScrollArea::Cancel() {
    velocity = 0;
    if (scrollState == ScrollState::Coasting)
        MoveTo(int64_t{AxisOffset()} - DistanceToRest());
    if (scrollState != ScrollState::Fixed)
        scrollState = ScrollState::Idle;
}
