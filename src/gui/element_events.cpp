// Hit testing, touch routing and timers of the element.
//
// Routing. An event goes to the capturing element, wherever the finger is, if there is one. Otherwise the
// deepest element under the finger is found, a down event marks it as pressed, and the event goes to the
// first element on the way up, the found one included, that takes events of this type. A walk without a taker
// drops the event; the mark stays until ReleasePressed. The point that is delivered is in the coordinates of
// the taker's parent; scroll offsets do not count there.
//
// Every hook may destroy any element, this one included: a reference is held across each call.

#include "gui/element.h"

#include "foundation/clock.h"
#include "foundation/log.h"
#include "gui/application.h"

// ---- Hit testing ----

bool CVrGuiElement::ContainsPoint(CVrPoint& point) const {
    point = point - CVrPoint(offsetX, offsetY);
    const bool hasStore = storeSize.width != 0 || storeSize.height != 0;
    const int32_t width = hasStore ? storeSize.width : rect.width;
    const int32_t height = hasStore ? storeSize.height : rect.height;
    return point.x >= 0 && point.x < width && point.y >= 0 && point.y < height;
}

// Later children lie on top. `point` is relative to this element, as it lies on the screen.
CVrGuiElement* CVrGuiElement::TopmostChildAt(const CVrPoint& point) const {
    const CVrPoint scrolled = point - CVrPoint(offsetX, offsetY);
    for (uint32_t i = children.GetSize(); i-- > 0;) {
        CVrGuiElement* child = children[i];
        if (!child || child->IsHidden())
            continue;
        CVrPoint inChild = scrolled - child->rect.Origin();
        if (child->ContainsPoint(inChild))
            return child;
    }
    return nullptr;
}

CVrGuiElement* CVrGuiElement::HitTest(const CVrPoint& point, CVrPoint* offset) {
    CVrPoint inside = point;
    if (IsHidden() || !ContainsPoint(inside))
        return nullptr;
    CVrGuiElement* hit = nullptr;
    const CVrGuiElement* level = this;
    CVrPoint onLevel = point;
    while (CVrGuiElement* child = level->TopmostChildAt(onLevel)) {
        if (hit && offset)
            offset->Offset(hit->rect.x, hit->rect.y);
        hit = child;
        if (!child->HitChildren())
            break;
        onLevel = onLevel - CVrPoint(level->offsetX, level->offsetY) - child->rect.Origin();
        level = child;
    }
    return hit;
}

// ---- Touch ----

bool CVrGuiElement::RouteEvent(uint32_t eventType, const CVrPoint& point) {
    CVrGuiApplication* application = TheApplication();
    if (CVrGuiElement* capturing = application ? application->Capture() : nullptr) {
        capturing->DoEvent(eventType, capturing->FromRoot(point));
        return true;
    }
    CVrGuiElement* hit = HitTest(point, nullptr);
    if (!hit)
        return false;
    if (eventType == EventDown)
        hit->pressed = true;
    CVrGuiElement* taker = hit;
    while (taker && !taker->AcceptsEvent(eventType))
        taker = taker->parent;
    if (!taker)
        return false;
    taker->hitElement = hit;
    taker->DoEvent(eventType, taker->FromRoot(point));
    return true;
}

void CVrGuiElement::DoEvent(uint32_t eventType, const CVrPoint& point) {
    Log(LogEvent, "CVrGuiElement::DoEvent", "DoEvent %s %08x %d/%d %08x", text.CStr(),
        static_cast<uint32_t>(id), point.x, point.y, eventType);
    CVrElementRef<> self(this);
    switch (eventType) {
    case EventDown:
        OnTouchDown(point);
        if (self)
            moved = false;
        break;
    case EventMove:
        OnTouchMove(point);
        if (self)
            moved = true;
        break;
    case EventUp:
        OnTouchUp(point);
        if (self)
            pressed = moved = false;
        break;
    default:
        break;
    }
}

void CVrGuiElement::OnTouchMove(const CVrPoint& point) {
    if (CVrGuiApplication* application = TheApplication())
        application->AddTouchPoint(point);
}

void CVrGuiElement::OnTouchUp(const CVrPoint& point) {
    CVrGuiElement::OnTouchMove(point);
}

bool CVrGuiElement::ReleasePressed() {
    CVrElementRef<> self(this);
    bool found = false;
    for (uint32_t i = 0; self && i < children.GetSize(); i++)
        if (CVrGuiElement* child = children[i])
            found |= child->ReleasePressed();
    if (!self || !pressed)
        return found;
    OnPressCancelled();
    if (self)
        pressed = moved = false;
    return true;
}

// ---- Timers ----

void CVrGuiElement::SetTimer(uint32_t periodMs, bool periodic) {
    timerPeriodic = periodic;
    timerPeriod = periodMs;
    timerDue = TickMs() + periodMs;
}

void CVrGuiElement::RestartTimer() {
    timerDue = TickMs() + timerPeriod;
}

bool CVrGuiElement::UpdateTimers(uint64_t now) {
    CVrElementRef<> self(this);
    bool changed = false;
    for (uint32_t i = 0; self && i < children.GetSize(); i++)
        if (CVrGuiElement* child = children[i])
            changed |= child->UpdateTimers(now);
    if (!self || timerPeriod == 0 || now < timerDue)
        return changed;
    changed |= OnTimer(now);
    if (self)
        FinishTimer(now);
    return changed;
}

// A timer that comes late fires once, not in a burst.
void CVrGuiElement::FinishTimer(uint64_t now) {
    if (!timerPeriodic) {
        timerPeriod = 0;
        return;
    }
    timerDue += timerPeriod;
    if (timerDue <= now)
        timerDue = now + 1;
}
