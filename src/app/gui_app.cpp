#include "app/gui_app.h"

#include <cstring>

#include "foundation/clock.h"
#include "foundation/files.h"
#include "foundation/log.h"
#include "foundation/translator.h"
#include "gui/font.h"

namespace {

constexpr uint32_t kBusyWaitMs = 2;  // a pass while something moves
constexpr uint32_t kIdleWaitMs = 10; // a pass while nothing does
constexpr uint32_t kTouchPatienceMs = 100;

const char* EventName(uint32_t touchEvent) {
    switch (touchEvent) {
    case CVrGuiElement::EventDown:
        return "Down";
    case CVrGuiElement::EventUp:
        return "Up";
    case CVrGuiElement::EventMove:
        return "Move";
    default:
        return "Unknown";
    }
}

} // namespace

CVrGuiApp::CVrGuiApp() {
    SetName("CVrGuiApp");
}

CVrGuiApp::~CVrGuiApp() {
    RequestStop();
    Join();
    videoDecoder.StopShowing(videoDecoder.videoElement);
    mainWin.DeleteChildren();
    imageCache.autoDelete = true;
    imageCache.Clear();
}

void CVrGuiApp::CreateScreen() {
    for (CVrxByteArray& buffer : screenBuffer)
        buffer.SetSize(kScreenBytes);
    mainWin.SetSize(CVrRect(0, 0, kScreenSide, kScreenSide));
}

// ---------------------------------------------------------------------------------------------- loading

void CVrGuiApp::InitAndLoad() {
    LoadSettings();
    imageCache.autoDelete = true;
    CVrTranslator::Instance().LoadFallback();
    CVrTranslator::Instance().SetLanguage(settings.language);
    mainWin.ShowSplash();
    LoadArchives();
    structure.styles.PrepareClasses();
    structure.LoadJsonStaticSymbols();
    LoadStyles();
}

void CVrGuiApp::LoadArchives() {
    staticArchive.isStatic = true;
    LoadResourceData(ResourceDynamicIcons, dynamicArchive.blob);
    if (!dynamicArchive.OpenBlob())
        Log(LogError, "CVrGuiApp::InitAndLoad", "Failed to open dynamic icon archive");
}

void CVrGuiApp::LoadStyles() {
    uint32_t size = 0;
    const uint8_t* resource = GetResource(ResourceStyleSheet, size);
    CVrxStringU sheet;
    sheet.AssignBytes(resource, size);
    if (!sheet.IsEmpty())
        structure.styles.Load(sheet);
    mainWin.AdoptStyle();
}

void CVrGuiApp::LoadStructure(const char* config, const char* categories, const char* rooms,
                              const char* symbols) {
    structure.LoadJsonConfig(config, categories, rooms, symbols);
    mainWin.DeleteChildren();
    mainWin.ClearChildLinks();
    mainWin.CreateContent(&structure.root);
}

// ---------------------------------------------------------------------------------------------- posting

void CVrGuiApp::PostTouch(uint32_t touchEvent, CVrPoint point, uint32_t gesture) {
    // The record has one slot. A move may be overwritten by the next event, a down or up should reach the tree first:
    // a tap whose two events arrive within one pass would be no tap otherwise.
    for (uint32_t waited = 0; waited < kTouchPatienceMs && !touchConsumed.load(std::memory_order_acquire) &&
                              touchType.load(std::memory_order_relaxed) != CVrGuiElement::EventMove &&
                              state.load(std::memory_order_relaxed) == Running;
         waited++)
        SleepMs(1);
    touchType.store(touchEvent, std::memory_order_relaxed);
    touchX.store(point.x, std::memory_order_relaxed);
    touchY.store(point.y, std::memory_order_relaxed);
    touchGesture.store(gesture, std::memory_order_relaxed);
    touchConsumed.store(false, std::memory_order_release);
    Log(LogEvent, "CVrGuiApp::TouchEvent", "%d/%d %08x gesture %08x", point.x, point.y, touchEvent, gesture);
    eventWord.fetch_or(touchEvent, std::memory_order_release);
    wakeEvent.Set();
}

void CVrGuiApp::WakeForRepaint() {
    eventWord.fetch_or(kWakeRepaint, std::memory_order_release);
    wakeEvent.Set();
}

void CVrGuiApp::Wakeup() {
    wakeEvent.Set();
}

void CVrGuiApp::SendCommand(const CVrxStringU& command) {
    if (commandSlot)
        commandSlot(command.CStr());
}

// ---------------------------------------------------------------------------------------------- drawing

bool CVrGuiApp::AnythingFlagged() const {
    if (mainWin.needsUpdate)
        return true;
    for (const CVrGuiElement* child : mainWin.children)
        if (child && child->NeedsUpdateTree())
            return true;
    return false;
}

void CVrGuiApp::DrawAndUpdate() {
    if (!AnythingFlagged() || mainWin.LeavesElementsOut())
        return;
    m_frameOwed = !HasRoomForFrame();
    if (!m_frameOwed)
        Paint();
}

void CVrGuiApp::Paint() {
    mainWin.Draw(false, true);
    mainWin.DrawOverlay();
    if (mainWin.loading)
        mainWin.DrawStatusPanel(CVrTranslator::Instance().Translate("app.loading_structure").CStr(), true);
    else if (mainWin.emptyConfiguration)
        mainWin.DrawStatusPanel("Empty configuration", false);
    UpdateFullscreen();
}

void CVrGuiApp::UpdateFullscreen() {
    Log(LogTrace, "CVrGuiApp::UpdateFullscreen", "UpdateFullscreen");
    if (!mainWin.IsHidden()) {
        mainWin.ForEachChild([](CVrGuiElement& child) { child.ClearUpdateTree(); });
        mainWin.needsUpdate = false;
    }
    PresentStore();
}

void CVrGuiApp::PresentStore() {
    CVrxByteArray& buffer = screenBuffer[screenIndex];
    if (buffer.GetSize() > 0 && mainWin.HasStore())
        memcpy(buffer.GetData(), mainWin.pixels, buffer.GetSize());
    SendFrame();
}

void CVrGuiApp::SendFrame() {
    uint32_t written = 0;
    {
        CVrScopeLock guard(screenLock);
        written = screenIndex;
        screenIndex = screenIndex == 0 ? 1 : 0;
    }
    const CVrxByteArray& screen = screenBuffer[written];
    if (screen.GetSize() == 0 || !frameSlot)
        return;
    const auto* pixels = reinterpret_cast<const uint32_t*>(screen.GetData());
    if (const uint8_t* frame = ComposeFrame(pixels, m_frame))
        frameSlot(frame, kFrameBytes);
}

void CVrGuiApp::FlagAll() {
    mainWin.RepaintAll();
}

void CVrGuiApp::ApplyColors() {
    mainWin.LoadColors();
    mainWin.ForEachChild([](CVrGuiElement& child) { child.ReloadColors(); });
    mainWin.OnColorsChanged();
    mainWin.DropSavedPicture();
    FlagAll();
    DrawAndUpdate();
}

void CVrGuiApp::ApplyLanguage() {
    mainWin.ForEachChild([](CVrGuiElement& child) { child.NotifyLanguage(); });
    mainWin.OnLanguageChanged();
    mainWin.DropSavedPicture();
    FlagAll();
    DrawAndUpdate();
}

// ---------------------------------------------------------------------------------------------- main loop

// Returns why the loop was woken: touch types and kWakeRepaint as bits, or 0.
uint32_t CVrGuiApp::WaitForWork(uint32_t timeout) {
    if (!wakeEvent.Wait(timeout))
        return 0;
    wakeEvent.Reset();
    return eventWord.exchange(0, std::memory_order_acq_rel);
}

// Copies the record and marks it consumed before anything is delivered, so that a touch that arrives meanwhile stays.
bool CVrGuiApp::TakeTouch(Touch& touch) {
    if (touchConsumed.load(std::memory_order_acquire))
        return false;
    touch.type = touchType.load(std::memory_order_relaxed);
    touch.point = CVrPoint(touchX.load(std::memory_order_relaxed), touchY.load(std::memory_order_relaxed));
    touch.gesture = touchGesture.load(std::memory_order_relaxed);
    touchConsumed.store(true, std::memory_order_release);
    return true;
}

// True: the tree took the event and wants a repaint.
bool CVrGuiApp::DeliverTouch(const Touch& touch) {
    constexpr const char* kMultiClickTag = "CVrGuiApp::OnTwoFingerMultiClick";
    switch (touch.gesture) {
    case GestureTwoFingerDoubleClick:
    case GestureTwoFingerTripleClick:
        Log(LogState, kMultiClickTag, "Two-finger %u-click detected",
            touch.gesture == GestureTwoFingerDoubleClick ? 2u : 3u);
        return false;
    case GestureCancel:
        if (mainWin.ReleasePressed()) {
            FlagAll();
            WakeForRepaint();
        }
        return false;
    default:
        Log(LogEvent, "CVrGuiApp::MainLoop", "Event: %s %d/%d", EventName(touch.type), touch.point.x,
            touch.point.y);
        return mainWin.RouteEvent(touch.type, touch.point);
    }
}

void CVrGuiApp::BeginLoop() {
    now = TickMs();
    mainWin.StartTree();
    mainWin.SelectInitialScreen();
    Log(LogEvent, "CVrGuiApp::DrawAndUpdate", "Force all update");
    mainWin.Invalidate();
    Paint();
    m_timeout = kIdleWaitMs;
}

void CVrGuiApp::MainLoop() {
    BeginLoop();
    while (!IsStopRequested())
        RunPass(m_timeout);
    videoDecoder.StopShowing(videoDecoder.videoElement);
}

// True while the root leads an element over a saved picture.
bool CVrGuiApp::StepRootAnimations() {
    if (!mainWin.StartAnimations())
        return false;
    if (!mainWin.scrollAnimation.element)
        m_timeout = kBusyWaitMs;
    if (mainWin.StepAnimations()) {
        mainWin.Invalidate();
        DrawAndUpdate();
    }
    return true;
}

void CVrGuiApp::RunPass(uint32_t timeout) {
    const uint32_t flags = WaitForWork(timeout);
    if (IsStopRequested())
        return;
    pendingText.Clear();
    if (drainSlot)
        drainSlot();
    now = TickMs();
    const bool animating = animations.Step(now);
    const bool leads = StepRootAnimations();
    Touch touch;
    const bool touched = TakeTouch(touch);
    if (!leads && flags == 0 && !touched) {
        const bool changed = mainWin.UpdateTimers(TickMs());
        if (changed || animating || m_frameOwed)
            DrawAndUpdate();
        m_timeout = changed || animating || m_frameOwed ? kBusyWaitMs : kIdleWaitMs;
        return;
    }
    bool repaint = animating;
    if (flags & kWakeRepaint) {
        FlagAll();
        repaint = true;
    }
    if (touched && DeliverTouch(touch))
        repaint = true;
    if (!repaint || mainWin.scrollAnimation.element)
        return;
    DrawAndUpdate();
    Log(LogEvent, "CVrGuiApp::MainLoop", "DrawAndUpdate done");
}
