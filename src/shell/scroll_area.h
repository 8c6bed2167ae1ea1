// The gesture recogniser of the display. It tells a tap from a drag and a drag from a press that a child
// keeps for itself, lets the content follow the finger with a rubber band at the ends, coasts after a flick
// and springs back. Nothing else interprets finger movement over a list: a child only learns that it was
// pressed, moved, released or cancelled.
//
// The content is the area's children. It lies in the area's own store, whose size is that of the content; a
// drag changes the offset at which the store is composed, and the content is not painted again
// (KeepsContent). Content that fits needs none of this: in the fixed state the area has no store and its
// children are hit directly.
//
//   state            entered by                       left by
//   Idle             construction, end of a gesture   down: Pressed
//   Pressed          down                             travel past the tolerance: Dragging, or ChildOwnsFinger
//                                                     if the child does not let go; up: Idle or Coasting
//   Dragging         Pressed                          up: Idle or Coasting
//   ChildOwnsFinger  Pressed                          up: Idle
//   Coasting         Settle                           at rest: Idle; down: Pressed; Cancel: Idle
//   Fixed            SetFixed                         SetScrolling
//
// All arithmetic uses the tick of the main loop's pass that delivers an event. Positions and velocities are
// those of one axis; a velocity has the sign of the offset's change.
#pragma once

#include <cstdint>

#include "gui/animation.h"
#include "gui/element.h"

enum class ScrollAxis { Horizontal, Vertical };

class CVrGuiScrollArea : public CVrGuiElement, public CVrAnimation {
public:
    enum class ScrollState : uint32_t { Idle, Pressed, Dragging, ChildOwnsFinger, Coasting, Fixed };

    explicit CVrGuiScrollArea(ScrollAxis axis);
    ~CVrGuiScrollArea() override;

    void DeleteChildren() override;
    bool HitChildren() const override { return hitInto; }
    void OnStart() override { eventMask = EventAll; }
    void DoEvent(uint32_t eventType, const CVrPoint& point) override;
    bool KeepsContent() const override { return true; }

    // True: the content rests on item borders only, and a change of the offset invalidates the area.
    virtual bool SnapsToItems() { return false; }
    // The resting place nearest to `pos` within min..max. Only asked when SnapsToItems() is true.
    virtual int32_t SnapPosition(int32_t pos, int32_t, int32_t) { return pos; }

    // CVrAnimation: the coasting.
    void Update(uint64_t now) override;
    void Cancel() override;
    bool IsFinished() const override { return scrollState != ScrollState::Coasting; }

    // The content is larger than the view: it lies in the own store and follows the finger. A gesture goes
    // on.
    void SetScrolling();
    // The content fits: no store, no offset, children are hit directly.
    void SetFixed();
    // Gives the store the content's size: kept if it has that size, else allocated anew, empty.
    void SizeStore(const CVrSize& size);

    ScrollState scrollState = ScrollState::Idle;
    bool hitInto = false;         // the hit test looks at the children
    uint64_t lastTick = 0;        // ms; of the last drag event or animation step
    int32_t velocity = 0;         // pixels per second, -6000..6000
    bool vertical = false;        // the axis
    int32_t minOffset = 0;        // 0 or negative
    int32_t maxOffset = 0;        // always 0
    int32_t pressPos = 0;         // finger at touch-down
    int32_t pressOffset = 0;      // offset at touch-down
    int32_t lastPos = 0;          // finger at the last event
    CVrPoint hitShift;            // positions of the elements between the area and `pressedChild`, summed up
    CVrElementRef<> pressedChild; // under the finger since touch-down

private:
    int32_t& AxisOffset() { return vertical ? offsetY : offsetX; }
    int32_t AxisOffset() const { return vertical ? offsetY : offsetX; }
    int32_t OnAxis(const CVrPoint& point) const { return vertical ? point.y : point.x; }
    CVrPoint ChildPoint(const CVrPoint& point) const;
    CVrGuiElement* ChildAt(const CVrPoint& point, CVrPoint* shift);

    bool FollowsFinger() const;
    bool HasCapture() const;
    bool IsGestureOpen() const;
    void Dispatch(uint32_t eventType, const CVrPoint& point);
    void BeginGesture(const CVrPoint& point);
    void DoPressed(uint32_t eventType, const CVrPoint& point);
    void DoDragging(uint32_t eventType, const CVrPoint& point);
    void DoChildOwnsFinger(uint32_t eventType, const CVrPoint& point);
    void DoFixed(uint32_t eventType, const CVrPoint& point);
    void LeavePressed();
    void AbandonGesture(const CVrPoint& point);
    void CancelChildPress();
    void ReleaseCapture();

    void MixVelocity(uint32_t eventType, int64_t delta, uint64_t dt);
    void SlowDown(int32_t over);
    bool Settle(uint64_t now);
    int32_t Over() const;
    int32_t DistanceToRest();
    static int32_t SpringStep(int32_t rest, int32_t dt);
    void MoveTo(int64_t offset);
    void LeaveQueue();
};
