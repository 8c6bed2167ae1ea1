#include "gui/application.h"

#include "foundation/clock.h"
#include "gui/element.h"

namespace {

CVrGuiApplication* g_application = nullptr;

// Keeps the newer half, so that a long history is moved once per half its length and not at every touch.
template <typename T>
void DropOlderHalf(VrArray<T>& history) {
    const uint32_t kept = history.GetSize() / 2;
    const uint32_t dropped = history.GetSize() - kept;
    for (uint32_t i = 0; i < kept; i++)
        history[i] = history[i + dropped];
    history.SetSize(kept);
}

} // namespace

CVrGuiApplication::CVrGuiApplication() : m_former(g_application) {
    g_application = this;
}

CVrGuiApplication::~CVrGuiApplication() {
    if (g_application == this)
        g_application = m_former;
}

uint64_t CVrGuiApplication::PassTick() const {
    return TickMs();
}

void CVrGuiApplication::AddTouchPoint(const CVrPoint& point) {
    if (touchPoints.GetSize() >= kTouchHistory) {
        DropOlderHalf(touchPoints);
        DropOlderHalf(touchTicks);
    }
    if (touchPoints.Add(point) && !touchTicks.Add(TickMs()))
        touchPoints.SetSize(touchTicks.GetSize());
}

CVrGuiApplication* TheApplication() {
    return g_application;
}

CVrAnimQueue* RunningAnimations() {
    return g_application ? &g_application->animations : nullptr;
}

void RequestComposition() {
    CVrGuiElement* root = g_application ? g_application->Root() : nullptr;
    if (root && !root->IsHidden())
        root->needsUpdate = true;
}
