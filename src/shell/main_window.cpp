#include "shell/main_window.h"

#include "foundation/class_factory.h"
#include "foundation/clock.h"
#include "foundation/log.h"
#include "gui/application.h"
#include "platform/stop_signal.h"
#include "shell/actionbar.h"
#include "shell/frame.h"
#include "shell/frame_area.h"
#include "shell/menu_button.h"
#include "shell/popup_frame.h"
#include "shell/popup_menu.h"
#include "shell/popup_slider.h"
#include "structure/item.h"
#include "structure/structure.h"

#include <cstring>
#include <initializer_list>

VR_REGISTER_ELEMENT(CVrGuiMainWin)

namespace {

constexpr uint32_t kTimerPeriodMs = 50;

bool IsUp(const CVrGuiElement* popup) {
    return popup && !popup->IsHidden();
}

// The element's rectangle on the screen, both edges included.
bool ScreenRectContains(const CVrGuiElement& element, const CVrPoint& point) {
    const int32_t left = element.ToRootX(element.rect.x);
    const int32_t top = element.ToRootY(element.rect.y);
    return point.x >= left && point.x <= left + element.rect.width && point.y >= top &&
           point.y <= top + element.rect.height;
}

// Whether the point lies in any visible frame area of the tree; a hidden element hides its sub-tree.
bool LiesInFrameArea(const CVrGuiElement& element, const CVrPoint& point) {
    if (element.IsHidden())
        return false;
    if (element.type == ElementType::FrameArea && ScreenRectContains(element, point))
        return true;
    for (uint32_t i = 0; i < element.children.GetSize(); ++i)
        if (const CVrGuiElement* child = element.Child(i); child && LiesInFrameArea(*child, point))
            return true;
    return false;
}

} // namespace

CVrGuiMainWin::CVrGuiMainWin() {
    type = ElementType::MainWin;
    className = "CVrGuiMainWin";
    flags |= FlagOwnStore;
    lastInteraction = TickMs();
}

CVrGuiMainWin::~CVrGuiMainWin() {
    DeleteChildren();
}

CVrGuiMainWin* MainWindow() {
    CVrGuiApplication* app = TheApplication();
    return app ? static_cast<CVrGuiMainWin*>(app->Root()) : nullptr;
}

void CVrGuiMainWin::SetSize(const CVrRect& size) {
    rect.width = size.width;
    rect.height = size.height;
    canvasSize = CVrSize(size.width, size.height);
    InitMem(size);
}

void CVrGuiMainWin::AdoptStyle() {
    style = TheApplication()->Structure()->styles.Row(type);
    if (style)
        styleName = style->className;
}

void CVrGuiMainWin::ClearChildLinks() {
    menu = nullptr;
    actionbar = nullptr;
    popupFrame = nullptr;
    popupSliderFrame = nullptr;
    pairingScreen = screenSaver = nullptr;
    hitElement = nullptr;
}

void CVrGuiMainWin::RepaintAll() {
    needsUpdate = 1;
    ForEachChild([](CVrGuiElement& child) { child.SetUpdate(1, true); });
}

// ---------------------------------------------------------------------------------------------- start

void CVrGuiMainWin::ShowSplash() {
    text = className;
    if (savedPixels && HasStore())
        memcpy(pixels, savedPixels, StoreBytes());
    TheApplication()->PresentStore();
    flags = (flags & ~FlagHidden) | FlagPaintable;
    platform::Pause(splashMs);
}

void CVrGuiMainWin::OnStart() {
    timerPeriodic = 1;
    timerPeriod = kTimerPeriodMs;
    timerDue = TickMs() + kTimerPeriodMs;
}

void CVrGuiMainWin::SelectInitialScreen() {
    if (TheApplication()->Structure()->root.children.GetSize() == 0) {
        SetEmptyConfiguration(true);
        return;
    }
    emptyConfiguration = false;
    RepaintAll();
    if (menu && menu->children.GetSize() > 0) {
        CVrGuiElement* first = menu->Child(0);
        first->OnClick(CVrPoint(first->offsetX, first->offsetY));
    } else if (children.GetSize() > 0) {
        ShowPage(Child(0));
    }
}

void CVrGuiMainWin::SetEmptyConfiguration(bool on) {
    emptyConfiguration = on;
    RepaintAll();
}

bool CVrGuiMainWin::ShowDefaultScreen() {
    CVrStructureItem* target = TheApplication()->Structure()->FindDefaultScreen();
    if (!target)
        return false;
    CVrGuiElement* page = nullptr;
    for (CVrStructureItem* shown = target; shown && !page; shown = shown->parent)
        page = shown->element;
    if (!page || page->type != ElementType::Frame)
        return false;
    auto* frame = static_cast<CVrGuiFrame*>(page);
    if (frame->menuButton)
        frame->menuButton->OnClick(CVrPoint(0, 0));
    else
        ShowPage(frame);
    if (frame->item != target) {
        frame->FillArea(target);
        frame->Activate();
        if (frame->frameArea)
            frame->frameArea->SetScrollOffset(CVrPoint(0, 0));
    }
    RepaintAll();
    return true;
}

// ---------------------------------------------------------------------------------------------- popups

// One that is on its way counts, also while the picture behind it is painted: it is dimmed from the start.
bool CVrGuiMainWin::IsPopupUp() const {
    const CVrGuiElement* moving = moveAnimation.element;
    const bool isOnItsWay = moving && (moving == popupFrame || moving == popupSliderFrame);
    return isOnItsWay || IsUp(popupFrame) || IsUp(popupSliderFrame);
}

void CVrGuiMainWin::ClosePopups() {
    if (IsUp(popupFrame)) {
        popupFrame->SetHidden(true);
        ResetActionbarButtons();
    }
    if (IsUp(popupSliderFrame))
        popupSliderFrame->SetHidden(true);
}

void CVrGuiMainWin::EmptyPopups() {
    if (popupSliderFrame && popupSliderFrame->popupSlider)
        popupSliderFrame->popupSlider->DeleteChildren();
    if (popupFrame && popupFrame->popupMenu)
        popupFrame->popupMenu->DeleteChildren();
}

void CVrGuiMainWin::ResetActionbarButtons() {
    if (actionbar)
        actionbar->ResetButtons();
}

void CVrGuiMainWin::LendSharedElements(CVrGuiElement& page) {
    for (CVrGuiElement* shared :
         std::initializer_list<CVrGuiElement*>{actionbar, popupFrame, popupSliderFrame}) {
        if (!shared)
            continue;
        shared->SetParent(&page);
        shared->SetHidden(shared != actionbar);
    }
}

void CVrGuiMainWin::HideSharedElements() {
    for (CVrGuiElement* shared :
         std::initializer_list<CVrGuiElement*>{actionbar, popupFrame, popupSliderFrame})
        if (shared)
            shared->SetHidden(true);
}

// ---------------------------------------------------------------------------------------------- touch filter

// Every touch of the user passes here, and the rules run in this order: loading swallows all; a dark display
// only wakes; the rest of a waking touch is dropped; a finished touch is an interaction; the rest of a touch
// that closed a popup is dropped; a tap beside a popup closes it; then the tree gets the event; and at last no
// element may go on looking pressed.
bool CVrGuiMainWin::RouteEvent(uint32_t eventType, const CVrPoint& point) {
    if (loading)
        return true;
    if (displayOff) {
        WakeFromDark();
        swallowUntilUp = eventType != EventUp;
        return true;
    }
    if (swallowUntilUp) {
        swallowUntilUp = eventType != EventUp;
        return true;
    }
    if (eventType == EventUp)
        RestartTimer();
    if (swallowAfterPopup) {
        if (eventType != EventMove)
            swallowAfterPopup = false;
        if (eventType == EventUp || eventType == EventMove)
            return true;
    }
    if (eventType == EventDown && IsPopupUp() && TapClosesPopup(point)) {
        ClosePopups();
        swallowAfterPopup = true;
        RepaintAll();
        return true;
    }
    const bool taken = CVrGuiElement::RouteEvent(eventType, point);
    if (eventType == EventUp && ReleasePressed()) {
        RepaintAll();
        TheApplication()->WakeForRepaint();
    }
    return taken;
}

// A tap on the content beside the popups; the menu row and the action bar keep their taps.
bool CVrGuiMainWin::TapClosesPopup(const CVrPoint& point) const {
    for (const CVrGuiElement* popup :
         std::initializer_list<const CVrGuiElement*>{popupFrame, popupSliderFrame})
        if (IsUp(popup) && ScreenRectContains(*popup, point))
            return false;
    return LiesInFrameArea(*this, point);
}

// ---------------------------------------------------------------------------------------------- time

void CVrGuiMainWin::RestartTimer() {
    timerDue = TickMs() + timerPeriod;
    lastInteraction = TickMs();
    idle = false;
    idleSince = 0;
    displayOff = false;
    swallowUntilUp = false;
    InvalidateTree();
}

namespace {

bool HoldsOffRest(const CVrStructureItem* item) {
    return item && item->activeController && item->IsActive();
}

// Whether a page serves an active controller that runs: its own item, those of a group page, or, where it has none of
// these, the members of its group.
bool ServesRunningControl(const CVrGuiFrame& page) {
    if (HoldsOffRest(page.item))
        return true;
    for (uint32_t i = 0; i < page.items.GetSize(); i++)
        if (HoldsOffRest(static_cast<const CVrStructureItem*>(page.items[i])))
            return true;
    if (page.items.GetSize() > 0 || !page.item || !page.item->IsGroup())
        return false;
    for (const CVrStructureItem* member : page.item->children)
        if (HoldsOffRest(member))
            return true;
    return false;
}

} // namespace

// The tree is at most kMaxDepth levels deep.
CVrGuiElement* CVrGuiMainWin::FindActiveControl(CVrGuiElement* element) const {
    if (!element || (element->IsHidden() && element != this))
        return nullptr;
    if (element->type == ElementType::Frame &&
        ServesRunningControl(static_cast<const CVrGuiFrame&>(*element)))
        return element;
    for (uint32_t i = 0; i < element->ChildCount(); i++)
        if (CVrGuiElement* found = FindActiveControl(element->Child(i)))
            return found;
    return nullptr;
}

bool CVrGuiMainWin::OnTimer(uint64_t now) {
    if (loading) {
        RepaintAll(); // the spinner turns
        return true;
    }
    if (!RestIsDue(now))
        return false;
    idle = true;
    idleSince = now;
    EnterIdle();
    return true;
}
