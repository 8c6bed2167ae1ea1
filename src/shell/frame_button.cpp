#include "shell/frame_button.h"

#include "foundation/array.h"
#include "gui/image.h"
#include "gui/pixel_ops.h"
#include "gui/vector/stock_animations.h"
#include "shell/frame_area.h"
#include "shell/main_window.h"
#include "structure/style_sheet.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

VR_REGISTER_ELEMENT(CVrGuiFrameBtn)
VR_REGISTER_ELEMENT(CVrGuiFrameCoverBtn)
VR_REGISTER_ELEMENT(CVrGuiFrameListBtn)

namespace {

// The corner zone is the extra symbol's square with this much room around it.
constexpr int32_t kCornerZoneMargin = 20;

constexpr int32_t kSwipeTravel = 18;        // pixels along the direction of a swipe
constexpr int32_t kSwipeLead = 4;           // by which that exceeds the travel across
constexpr uint32_t kArrowSize = 48;         // pixels
constexpr int32_t kPlayingSymbol = 10014;   // a spectrum
constexpr uint32_t kPlayingSize = 64;       // pixels, where no size is given
constexpr int32_t kArrowMargin = 24;        // from the button's edge
constexpr int32_t kCornerMargin = 10;       // of the extra symbol from the edges
constexpr int32_t kDefaultRadius = 15;      // of a picture without style
constexpr uint32_t kNightTint = 0x55B00000; // alpha 85
constexpr uint32_t kBandColor = 0x667F7C77; // alpha 102
constexpr int32_t kBandMargin = 10;         // above the text
constexpr int32_t kRampLength = 250;        // pixels
constexpr int32_t kRampAlpha = 204;         // at the edge
constexpr uint32_t kRampColor = 0x555350;

// A square of `side` pixels at (x, y), moved into a box of that size if it leaves it at the left or the top.
CVrRect SquareInside(int32_t x, int32_t y, int32_t side) {
    return {std::max(x, 0), std::max(y, 0), side, side};
}

bool ContainsEdges(const CVrRect& square, const CVrPoint& point) {
    return point.x >= square.x && point.x <= square.Right() && point.y >= square.y &&
           point.y <= square.Bottom();
}

// Strength of a ramp that begins at an edge, `distance` pixels away from it.
int32_t RampAt(int32_t distance, int32_t length) {
    return distance < length ? kRampAlpha - kRampAlpha * distance / length : 0;
}

int32_t CombinedRamps(int32_t a, int32_t b) {
    return std::min(a - a * b / kRampAlpha + b, kRampAlpha);
}

} // namespace

// ---------------------------------------------------------------------------------------------- the grid button

CVrGuiFrameBtn::CVrGuiFrameBtn() {
    type = ElementType::FrameBtn;
    className = "CVrGuiFrameBtn";
}

void CVrGuiFrameBtn::OnStart() {
    CVrGuiButton::OnStart();
    eventMask = EventUp;
}

bool CVrGuiFrameBtn::ContainsWithEdges(const CVrPoint& point) const {
    return point.x >= rect.x && point.x <= rect.x + rect.width && point.y >= rect.y &&
           point.y <= rect.y + rect.height;
}

void CVrGuiFrameBtn::OnTouchUp(const CVrPoint& point) {
    if (pressed && ContainsWithEdges(point))
        OnClick(point);
}

bool CVrGuiFrameBtn::IsCornerHit(const CVrPoint& point) const {
    const auto zone = static_cast<int32_t>(addIconSize) + kCornerZoneMargin;
    return point.x > rect.x + rect.width - zone && point.y < rect.y + zone;
}

void CVrGuiFrameBtn::OnClick(const CVrPoint& point) {
    cornerHit = IsCornerHit(point);
    if (!parent)
        return;
    // A plain tap on an unselected button deselects its neighbours; a corner tap selects several together.
    if (!cornerHit && state == StateNormal && parent->type == ElementType::FrameArea)
        static_cast<CVrGuiFrameArea*>(parent)->ClearSelection();
    parent->OnChildSelected(this, state == StateNormal ? StateSelected : StateNormal);
}

// ---------------------------------------------------------------------------------------------- the cover's touch

CVrGuiFrameCoverBtn::CVrGuiFrameCoverBtn() {
    type = ElementType::FrameCoverBtn;
    fontIndex = font2Index = FontIndex::Cover;
}

void CVrGuiFrameCoverBtn::CopyCoverBtn(const CVrGuiFrameCoverBtn& source) {
    CopyFrom(source);
    cornerAtBottom = source.cornerAtBottom;
}

// The press is over before the cover looks at what the touch was: what it then calls may destroy or rebuild it.
void CVrGuiFrameCoverBtn::DoEvent(uint32_t eventType, const CVrPoint& point) {
    if (eventType == EventUp) {
        pressedAtUp = pressed;
        pressed = moved = false;
    }
    CVrGuiFrameBtn::DoEvent(eventType, point);
}

void CVrGuiFrameCoverBtn::OnTouchDown(const CVrPoint& point) {
    swipeArmed = true;
    swipeStartX = point.x;
    swipeStartY = point.y;
    swipeDone = pressedAtUp = false;
    swipeDirection = Swipe::None;
}

void CVrGuiFrameCoverBtn::OnTouchMove(const CVrPoint& point) {
    if (!swipeArmed)
        return;
    const int64_t dx = int64_t{point.x} - swipeStartX, dy = int64_t{point.y} - swipeStartY;
    const int64_t across = std::abs(dx), down = std::abs(dy);
    if (across >= kSwipeTravel && across >= down + kSwipeLead)
        swipeDirection = dx < 0 ? Swipe::Left : Swipe::Right;
    else if (down >= kSwipeTravel && down >= across + kSwipeLead)
        swipeDirection = dy > 0 ? Swipe::Down : Swipe::None;
    else
        return;
    swipeArmed = false;
    swipeDone = true;
}

// True: the listener has been told.
bool CVrGuiFrameCoverBtn::FollowSwipe(Swipe swipe) {
    auto* host = dynamic_cast<IVrCoverListener*>(listener.Get());
    if (!host || swipe == Swipe::None)
        return false;
    if (swipe == Swipe::Down)
        host->CloseCover();
    else
        host->SkipCover(swipe == Swipe::Left);
    return true;
}

void CVrGuiFrameCoverBtn::OnTouchUp(const CVrPoint& point) {
    const bool wasPressed = pressed || pressedAtUp;
    const bool wasSwipe = std::exchange(swipeDone, false);
    const Swipe swipe = std::exchange(swipeDirection, Swipe::None);
    swipeArmed = pressedAtUp = false;
    if (FollowSwipe(swipe) || wasSwipe || !wasPressed)
        return;
    if (!IsCornerHit(point)) {
        // A finger at the left arrow goes back as one that swipes to the right does.
        if (IsArrowHit(Side::Left, point) && FollowSwipe(Swipe::Right))
            return;
        if (IsArrowHit(Side::Right, point) && FollowSwipe(Swipe::Left))
            return;
    }
    OnClick(point);
}

void CVrGuiFrameCoverBtn::OnClick(const CVrPoint& point) {
    cornerHit = IsCornerHit(point);
    if (listener)
        listener->OnChildEvent(this, id, 1);
}

// ---------------------------------------------------------------------------------------------- the cover's zones

CVrRect CVrGuiFrameCoverBtn::ArrowSquare(Side side) const {
    const CVrGuiIcon& arrow = side == Side::Left ? leftArrowIcon : rightArrowIcon;
    const auto size = static_cast<int32_t>(arrow.requestedSize > 0 ? arrow.requestedSize : kArrowSize);
    const int32_t margin = rect.width < size + 2 * kArrowMargin ? 0 : kArrowMargin;
    const int32_t x = side == Side::Left ? margin : rect.width - margin - size;
    return SquareInside(x, (rect.height - size) / 2, size);
}

bool CVrGuiFrameCoverBtn::IsArrowHit(Side side, const CVrPoint& point) const {
    return arrowsShown && ContainsEdges(ArrowSquare(side), point - rect.Origin());
}

CVrRect CVrGuiFrameCoverBtn::CornerSquare() const {
    const auto size = static_cast<int32_t>(addIcon.requestedSize);
    return SquareInside(rect.width - kCornerMargin - size,
                        cornerAtBottom ? rect.height - kCornerMargin - size : kCornerMargin, size);
}

bool CVrGuiFrameCoverBtn::IsCornerHit(const CVrPoint& point) const {
    return addIcon.HasBitmap() && addIcon.requestedSize > 0 &&
           ContainsEdges(CornerSquare(), point - rect.Origin());
}

void CVrGuiFrameCoverBtn::SetArrows(const CVrxStringU& leftName, const CVrxStringU& rightName) {
    leftArrowIcon.image.FreeBitmap();
    rightArrowIcon.image.FreeBitmap();
    arrowsShown = false;
    if (!leftName.IsEmpty() && !rightName.IsEmpty()) {
        const bool left = leftArrowIcon.SetStaticIconFromFile(leftName, kArrowSize, false);
        const bool right = rightArrowIcon.SetStaticIconFromFile(rightName, kArrowSize, false);
        arrowsShown = left && right;
    }
    MarkContentChanged();
    Invalidate();
}

void CVrGuiFrameCoverBtn::ShowArrows(bool on) {
    const bool shown = on && HasBothArrows();
    if (std::exchange(arrowsShown, shown) == shown)
        return;
    MarkContentChanged();
    Invalidate();
}

void CVrGuiFrameCoverBtn::ShowPlaying(bool on) {
    if (std::exchange(m_isPlaying, on) == on)
        return;
    vector = nullptr;
    if (on) {
        if (iconSize < 1)
            iconSize = kPlayingSize;
        iconName = StaticSymbolName(kPlayingSymbol);
        iconStatic = true;
        ReloadIcon();
        const auto side = static_cast<int32_t>(iconSize);
        if (m_bars.Load(MakePlayingAnimation(), side, side))
            vector = &m_bars;
    } else {
        m_bars.Unload();
        iconName.Clear();
        icon.image.FreeBitmap();
    }
    RestartVector();
    MarkContentChanged();
    Invalidate();
}

// ---------------------------------------------------------------------------------------------- the cover's picture

int32_t CVrGuiFrameCoverBtn::PictureRadius() const {
    return style ? style->element.rad : kDefaultRadius;
}

CVrRect CVrGuiFrameCoverBtn::PictureArea() const {
    if (!image)
        return {0, 0, rect.width, rect.height};
    return {0, 0, std::min(rect.width, static_cast<int32_t>(image->width)),
            std::min(rect.height, static_cast<int32_t>(image->height))};
}

void CVrGuiFrameCoverBtn::DrawUnderlay(CVrGuiElement& target, Placement& place, const CVrPoint& origin) {
    if (image) {
        DrawPicture(target, origin);
        PlaceTextByPicture(place);
        DrawTextBand(target, place, PictureArea().Moved(origin));
    }
    DrawCoverOverlay(target, origin);
}

void CVrGuiFrameCoverBtn::DrawPicture(CVrGuiElement& target, const CVrPoint& origin) {
    const int32_t radius = PictureRadius();
    target.DrawRoundImage(CVrRect(origin, rect.Size()), radius, image);
    const CVrGuiMainWin* root = MainWindow();
    if (root && root->night)
        target.FillRoundRect(PictureArea().Moved(origin), radius, CornerAll, kNightTint);
}

// From a little above the text to the bottom of the picture, so that the text reads on any picture; behind a symbol
// alone all of it, for the same reason.
void CVrGuiFrameCoverBtn::DrawTextBand(CVrGuiElement& target, const Placement& place,
                                       const CVrRect& picture) {
    if (!HasSymbol())
        return;
    const bool hasText = !text.IsEmpty() && Has(LayoutAnyText) && !Has(LayoutTextBelow);
    const int32_t top = hasText ? std::max(place.first.y - kBandMargin, picture.y) : picture.y;
    if (top < picture.Bottom())
        target.FillRoundRect(CVrRect::FromEdges(picture.x, top, picture.Right(), picture.Bottom()),
                             PictureRadius(), CornerAll, kBandColor);
}

uint32_t CVrGuiFrameCoverBtn::SecondLineColor() const {
    constexpr uint32_t kAlphaShift = 24;
    const uint32_t color = TextColor();
    return Has(LayoutTextBelow) ? (color & 0x00FFFFFF) | (color >> kAlphaShift) / 2 << kAlphaShift : color;
}

void CVrGuiFrameCoverBtn::DrawAddIcon(CVrGuiElement& target, const CVrPoint& origin) {
    if (addIcon.HasBitmap())
        target.DrawSvg(addIcon.image, CornerSquare().Moved(origin).Origin(), SymbolColor());
}

void CVrGuiFrameCoverBtn::DrawCoverOverlay(CVrGuiElement& target, const CVrPoint& origin) {
    if (!arrowsShown && !(HasBothArrows() && Has(LayoutTextBottom)))
        return;
    Darken(target, PictureArea().Moved(origin));
    if (!arrowsShown)
        return;
    target.DrawSvg(leftArrowIcon.image, ArrowSquare(Side::Left).Moved(origin).Origin(), SymbolColor());
    target.DrawSvg(rightArrowIcon.image, ArrowSquare(Side::Right).Moved(origin).Origin(), SymbolColor());
}

// Towards the bottom, and with the arrows towards left and right too: a ramp from each edge, combined, within the
// rounded shape.
void CVrGuiFrameCoverBtn::Darken(CVrGuiElement& target, const CVrRect& area) const {
    VrArray<uint32_t> sides, line; // strength of each column; a row of pixels to blend
    const auto width = static_cast<uint32_t>(std::max(area.width, 0));
    if (!target.Fits(area) || !sides.SetSize(width) || !line.SetSize(width))
        return;
    const int32_t sideLength = arrowsShown ? std::min(kRampLength, area.width / 2) : 0;
    for (int32_t x = 0; x < area.width; x++)
        sides[static_cast<uint32_t>(x)] = static_cast<uint32_t>(
            CombinedRamps(RampAt(x, sideLength), RampAt(area.width - 1 - x, sideLength)));
    const int32_t bottomLength = std::min(area.height, kRampLength);
    const int32_t radius = std::min(PictureRadius(), std::min(area.width, area.height) / 2);
    const uint8_t* table = GetCornerTable(radius);
    const int32_t corner = radius + 1;
    const int32_t rows = std::min(area.Bottom(), target.DrawableHeight()) - area.y;
    for (int32_t y = 0; y < rows; y++) {
        const int32_t bottom = RampAt(area.height - 1 - y, bottomLength);
        for (uint32_t x = 0; x < width; x++)
            line[x] = static_cast<uint32_t>(CombinedRamps(static_cast<int32_t>(sides[x]), bottom)) << 24 |
                      kRampColor;
        const int32_t fromEdge = std::min(y, area.height - 1 - y);
        for (int32_t x = 0; fromEdge < corner && x < std::min(corner, area.width); x++) {
            const uint32_t coverage = table[fromEdge * corner + x];
            for (uint32_t* pixel :
                 {&line[static_cast<uint32_t>(x)], &line[width - 1 - static_cast<uint32_t>(x)]})
                *pixel = (*pixel >> 24) * coverage / 255 << 24 | kRampColor;
        }
        pixelops::BestLoops().blendColors(target.Row(area.y + y) + area.x, &line[0], width);
    }
}

// ---------------------------------------------------------------------------------------------- the list button

CVrGuiFrameListBtn::CVrGuiFrameListBtn() {
    type = ElementType::FrameListBtn;
}

void CVrGuiFrameListBtn::OnStart() {
    CVrGuiButton::OnStart();
    eventMask = EventUp;
}

void CVrGuiFrameListBtn::CreateContent(CVrStructureItem* newItem) {
    CVrGuiButton::CreateContent(newItem);
    eventMask = EventUp;
}
