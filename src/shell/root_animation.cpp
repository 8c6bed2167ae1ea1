#include "shell/root_animation.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "foundation/log.h"
#include "gui/application.h"
#include "gui/pixel_ops.h"
#include "shell/main_window.h"

namespace {

constexpr int32_t kStoreRadius = 16; // of a composed store's corners
constexpr uint32_t kOpaque = 255;

// Takes an element out of the picture while it lives; nobody is told.
class LeftOut {
public:
    explicit LeftOut(CVrGuiElement* element)
        : m_element(element && !element->IsHidden() ? element : nullptr) {
        if (m_element)
            m_element->flags |= CVrGuiElement::FlagHidden;
    }
    ~LeftOut() {
        if (m_element)
            m_element->flags &= ~static_cast<uint32_t>(CVrGuiElement::FlagHidden);
    }
    LeftOut(const LeftOut&) = delete;
    LeftOut& operator=(const LeftOut&) = delete;

private:
    CVrGuiElement* m_element;
};

// Where an element shows: its corner on the screen, and how much of it the views of its ancestors let through.
struct Showing {
    explicit Showing(const CVrGuiElement& element) : view(0, 0, element.rect.width, element.rect.height) {
        const CVrGuiElement* inner = &element;
        for (const CVrGuiElement* above = element.parent; above; inner = above, above = above->parent) {
            CVrPoint by = inner->rect.Origin();
            if (above->HasOwnStore())
                by = by + CVrPoint(above->offsetX, above->offsetY);
            corner = corner + by;
            view = view.Moved(by).Intersected(CVrRect(0, 0, above->rect.width, above->rect.height));
        }
    }

    CVrPoint corner;
    CVrRect view; // on the screen
};

bool StartSlot(CVrGuiElement* element, bool& running, bool composed) {
    if (!element)
        return false;
    element->SetHidden(false);
    element->Draw(true, composed);
    running = true;
    return true;
}

} // namespace

// ---- Arming ----

bool CVrGuiMainWin::ArmMove(CVrGuiElement& element, int32_t startY, int32_t targetY, uint32_t pixelsPerPass) {
    CVrScopeLock lock(animationLock);
    if (moveAnimation.element || startY == targetY || pixelsPerPass == 0 || pixelsPerPass > kLongestStep)
        return false;
    const auto step = static_cast<int32_t>(pixelsPerPass);
    moveAnimation.element = &element;
    moveAnimation.running = moveAnimation.done = false;
    moveAnimation.startY = startY;
    moveAnimation.targetY = targetY;
    moveAnimation.step = startY < targetY ? step : -step;
    element.SetY(startY);
    return true;
}

bool CVrGuiMainWin::ArmFade(CVrGuiButton& button, uint32_t passes) {
    CVrScopeLock lock(animationLock);
    if (buttonAnimation.element || passes == 0)
        return false;
    buttonAnimation.element = &button;
    buttonAnimation.running = buttonAnimation.paused = false;
    button.fadeCounter = 0;
    button.fadeLength = passes;
    return true;
}

bool CVrGuiMainWin::ArmScroll(CVrGuiElement& element) {
    CVrScopeLock lock(animationLock);
    if (scrollAnimation.element)
        return false;
    scrollAnimation.element = &element;
    scrollAnimation.running = false;
    return true;
}

bool CVrGuiMainWin::LeavesElementsOut() const {
    return moveAnimation.element || buttonAnimation.element;
}

// ---- The picture of the rest ----

void CVrGuiMainWin::Draw(bool force, bool compose) {
    const LeftOut move(moveAnimation.element), button(buttonAnimation.element);
    CVrGuiElement::Draw(force, compose);
}

bool CVrGuiMainWin::SavePicture() {
    free(savedPixels);
    savedPixels = static_cast<uint8_t*>(HasStore() ? malloc(StoreBytes()) : nullptr);
    if (!savedPixels)
        return false;
    Invalidate();
    Draw(false, true);
    memcpy(savedPixels, pixels, StoreBytes());
    return true;
}

void CVrGuiMainWin::DropSavedPicture() {
    CVrScopeLock lock(animationLock);
    free(savedPixels);
    savedPixels = nullptr;
}

// ---- The steps ----

bool CVrGuiMainWin::StartAnimations() {
    CVrScopeLock lock(animationLock);
    const bool anyRuns = moveAnimation.running || scrollAnimation.running || buttonAnimation.running;
    if (!LeavesElementsOut() && !scrollAnimation.element) {
        if (anyRuns) { // the element is gone
            RemoveAnimations();
            RepaintAll();
            TheApplication()->WakeForRepaint();
        }
        return false;
    }
    const bool allRun = (!moveAnimation.element || moveAnimation.running) &&
                        (!scrollAnimation.element || scrollAnimation.running) &&
                        (!buttonAnimation.element || buttonAnimation.running);
    if (allRun && savedPixels)
        return true;
    if (!SavePicture()) {
        RemoveAnimations();
        return false;
    }
    StartSlot(buttonAnimation.element, buttonAnimation.running, true);
    StartSlot(moveAnimation.element, moveAnimation.running, false);
    if (StartSlot(scrollAnimation.element, scrollAnimation.running, true))
        scrollAnimation.started = false;
    return true;
}

bool CVrGuiMainWin::StepAnimations() {
    CVrScopeLock lock(animationLock);
    if (!LeavesElementsOut())
        return true;
    bool isWorkLeft = StepFade();
    if (moveAnimation.element && !moveAnimation.done) {
        if (moveAnimation.step == 0)
            return false;
        isWorkLeft = StepMove() || isWorkLeft;
    }
    if (!isWorkLeft) {
        RemoveAnimations();
        return true;
    }
    PresentAnimations();
    return false;
}

// True: there is more to do. So are the next two.
bool CVrGuiMainWin::StepFade() {
    CVrGuiButton* button = buttonAnimation.element;
    if (!button || buttonAnimation.paused)
        return false;
    const bool isWorkLeft = button->fadeCounter < button->fadeLength;
    if (isWorkLeft) {
        button->fadeCounter++;
        button->Invalidate();
    }
    if (button->HasOwnStore())
        button->Draw(true, false);
    return isWorkLeft;
}

bool CVrGuiMainWin::StepMove() {
    CVrGuiMoveAnimation& move = moveAnimation;
    CVrGuiElement& element = *move.element;
    if (element.IsHidden()) {
        element.SetHidden(false);
        element.SetY(move.startY);
    }
    const auto hasReached = [&move](int64_t y) {
        return move.step > 0 ? y >= move.targetY : y <= move.targetY;
    };
    if (hasReached(element.rect.y)) {
        move.done = true;
        element.SetY(move.targetY);
        return false;
    }
    const int64_t next = int64_t{element.rect.y} + move.step;
    element.SetY(hasReached(next) ? move.targetY : static_cast<int32_t>(next));
    return true;
}

// What would not be taken is not even painted; the next pass has a newer picture.
void CVrGuiMainWin::PresentAnimations() {
    if (!TheApplication()->HasRoomForFrame())
        return;
    memcpy(pixels, savedPixels, StoreBytes());
    if (CVrGuiButton* button = buttonAnimation.element) {
        PaintOver(*button);
        LetPictureThrough(*button);
    }
    clip = moveAnimation.clipRect;
    if (CVrGuiElement* element = moveAnimation.element)
        PaintOver(*element);
    clip = CVrRect();
    TheApplication()->PresentStore();
}

// From its own store, else painted now; where that goes into the store of a scrolling area, the element's part of it
// shows.
void CVrGuiMainWin::PaintOver(CVrGuiElement& element) {
    const Showing showing(element);
    if (element.HasOwnStore()) {
        BlendStore(showing.view, element, showing.corner + CVrPoint(element.offsetX, element.offsetY),
                   kStoreRadius);
        return;
    }
    element.Draw(true, true);
    CVrPoint inTarget;
    const CVrGuiElement* target = element.GetRenderTarget(inTarget, true);
    if (target && target != this)
        BlendStore(showing.view, *target, showing.corner - inTarget, 0);
}

// The share of the fade that is still to come belongs to the saved picture.
void CVrGuiMainWin::LetPictureThrough(const CVrGuiButton& button) {
    const uint64_t come = std::min(button.fadeCounter, button.fadeLength);
    const auto share = static_cast<uint32_t>(kOpaque - come * kOpaque / std::max(button.fadeLength, 1U));
    const CVrRect view = Showing(button).view;
    for (int32_t y = view.y; y < view.Bottom(); y++) {
        const auto* saved = reinterpret_cast<const uint32_t*>(savedPixels) + int64_t{y} * storeSize.width;
        uint32_t* row = Row(y);
        for (int32_t x = view.x; x < view.Right(); x++)
            row[x] = pixelops::BlendPixel(row[x], saved[x], share);
    }
}

void CVrGuiMainWin::RemoveAnimations() {
    CVrElementRef<> told;
    bool argument = false;
    {
        CVrScopeLock lock(animationLock);
        moveAnimation.running = scrollAnimation.running = buttonAnimation.running = false;
        buttonAnimation.paused = false;
        if (CVrGuiButton* button = buttonAnimation.element)
            button->OnFadeEnd();
        moveAnimation.element = nullptr;
        scrollAnimation.element = nullptr;
        buttonAnimation.element = nullptr;
        // Taken out before it is told: it may arm the next move.
        told = std::exchange(moveAnimation.listener, CVrElementRef<>());
        argument = std::exchange(moveAnimation.listenerArgument, false);
        DropSavedPicture();
        clip = CVrRect();
    }
    Log(LogEvent, "CVrGuiMainWin::RemoveAnimations", "done");
    if (told)
        told->OnPopupResult(argument);
}
