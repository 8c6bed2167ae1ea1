// Painting of the element: the order of a sub-tree's painting, backgrounds, stores of their own and their
// composition, and the darkening behind a popup.
//
// Kept content. The content of a scrolling area lies in a store of its own. A pass in which nothing in it
// changed only blends that store, which is what makes a drag cheap; the picture is the same to the pixel as
// if it had been painted. "Nothing changed" means, for everything visible below the area: no redraw flag is
// set, place, size, state, flags and scroll offset are those of the last painting, and no child came or went
// (MarkContentChanged). What changes anything else that shows has to invalidate, as everywhere.

#include "gui/element.h"

#include <algorithm>

#include "gui/application.h"
#include "gui/font_table.h"
#include "gui/pixel_ops.h"
#include "structure/style_sheet.h"

namespace {

constexpr int32_t kDefaultRadius = 15; // of an element without style
constexpr int32_t kComposeRadius = 16; // of a store's corners
constexpr int32_t kDimmedRadius = 15;  // of the darkened area's corners
constexpr int32_t kScreenWidth = 720;  // no line of text is longer

// Darkening is a blend with black.
constexpr uint32_t kShadow = 0xFF000000;
constexpr uint32_t kShadowAlpha = 128;

// `coverage` of the corner's table: an unpainted pixel becomes a shadow of that strength.
uint32_t DimmedCornerPixel(uint32_t pixel, uint32_t coverage) {
    if (pixel == kUnpainted)
        return coverage << 24;
    return pixelops::BlendPixel(pixel, kShadow, coverage * kShadowAlpha >> 8);
}

} // namespace

// ---- Order of painting ----

void CVrGuiElement::Draw(bool force, bool compose) {
    if (!IsDrawable())
        return;
    if (force || !IsContentPainted())
        PaintContent(force);
    if (parent && HasOwnStore() && compose)
        ComposeStore();
    DrawAfterChildren();
    needsUpdate = false;
}

void CVrGuiElement::PaintContent(bool force) {
    DrawBackground();
    DrawContent();
    DrawChildren(force);
    m_contentChanged = false;
    m_storeLook = HasOwnStore() ? CurrentStoreLook() : StoreLook();
}

// Popups are painted anew at every pass, over the darkened rest of their page.
void CVrGuiElement::DrawChildren(bool force) {
    const CVrGuiApplication* application = TheApplication();
    const bool popupIsUp = type == ElementType::Frame && application && application->IsPopupUp();
    bool isDimmed = false;
    ForEachChild([&](CVrGuiElement& child) {
        const bool isPopup = popupIsUp && (child.type == ElementType::PopupFrame ||
                                           child.type == ElementType::PopupSliderFrame);
        if (isPopup && !isDimmed) {
            DrawDimmed();
            isDimmed = true;
        }
        child.Draw(force || isPopup, true);
        if (!child.IsHidden())
            child.needsUpdate = false;
        child.m_paintedLook = child.CurrentLook();
    });
}

// ---- Kept content ----

bool CVrGuiElement::IsContentPainted() const {
    return KeepsContent() && HasOwnStore() && pixels && !needsUpdate && !m_contentChanged &&
           m_storeLook == CurrentStoreLook() && !IsAnyChildChanged();
}

bool CVrGuiElement::IsAnyChildChanged() const {
    for (uint32_t i = 0; i < children.GetSize(); i++)
        if (children[i] && children[i]->IsChangedInStore())
            return true;
    return false;
}

// Whether this element would show differently in the store that holds it.
bool CVrGuiElement::IsChangedInStore() const {
    if (m_paintedLook != CurrentLook())
        return true;
    return IsDrawable() && (needsUpdate || m_contentChanged || IsAnyChildChanged());
}

// ---- Stores ----

CVrGuiElement* CVrGuiElement::GetRenderTarget(CVrPoint& offset, bool force) {
    CVrGuiElement* target = this;
    while (target->parent && (!target->HasOwnStore() || (force && target == this))) {
        if (!target->HasOwnStore() && target->type != ElementType::MainWin && target->HasStore())
            target->FreeMem();
        offset.Offset(target->rect.x, target->rect.y);
        target = target->parent;
    }
    if (!target->HasStore())
        target->InitMem(CVrRect(0, 0, target->rect.width, target->rect.height));
    return target->HasStore() ? target : nullptr;
}

void CVrGuiElement::ComposeStore() {
    CVrPoint position;
    CVrGuiElement* target = GetRenderTarget(position, true);
    if (!target || !HasStore())
        return;
    CVrRect view(position, canvasSize.width != 0 ? canvasSize : rect.Size());
    view.height = std::min({view.height, target->rect.height, rect.height});
    if (view.height <= 1)
        return;
    target->BlendStore(view, *this, position.Moved(offsetX, offsetY), kComposeRadius);
}

// ---- Background and text ----

int32_t CVrGuiElement::CornerRadius() const {
    if (radiusOverride >= 0)
        return radiusOverride;
    return style ? style->element.rad : kDefaultRadius;
}

void CVrGuiElement::DrawBackground() {
    if (!IsDrawable())
        return;
    if (HasBackground())
        FillBackground(BackgroundColor());
    else if (HasOwnStore())
        FillBackground(kUnpainted);
}

void CVrGuiElement::FillBackground(uint32_t color) {
    CVrPoint origin;
    CVrGuiElement* target = GetRenderTarget(origin, false);
    if (!target)
        return;
    const CVrRect area(origin, HasOwnStore() ? target->storeSize : rect.Size());
    const uint32_t corners = GetCornerMask();
    if (corners != CornerNone && HasBackground())
        target->FillRoundRect(area, CornerRadius(), corners, color,
                              HasOwnStore() ? CornerAlpha::Write : CornerAlpha::Blend);
    else
        target->FillRect(area, color);
}

void CVrGuiElement::DrawTextAt(const CVrPoint& point, uint32_t fontIndex, uint32_t color,
                               const CVrxStringU& line) {
    CVrPoint position = point;
    CVrGuiFont* font = GetFont(fontIndex);
    CVrGuiElement* target = font ? GetRenderTarget(position, false) : nullptr;
    if (target)
        target->DrawText(position, *font, line.CStr(), color, kUnpainted, kScreenWidth);
}

// ---- Darkening ----

// What is darkened, relative to the element: the visible frame area, else the element above its action bar.
CVrRect CVrGuiElement::DimmedRect() const {
    CVrRect whole(0, 0, rect.width, rect.height);
    for (uint32_t i = 0; i < children.GetSize(); i++) {
        const CVrGuiElement* child = children[i];
        if (!child || child->IsHidden() || child->rect.IsEmpty())
            continue;
        if (child->type == ElementType::FrameArea)
            return child->rect;
        if (child->type == ElementType::Actionbar && child->rect.y >= 0 && child->rect.y < whole.height)
            whole.height = child->rect.y;
    }
    return whole;
}

void CVrGuiElement::DrawDimmed() {
    CVrRect wanted = DimmedRect();
    if (!HasOwnStore()) // an area that sticks out of its page darkens nobody else's pixels
        wanted = wanted.Intersected(CVrRect(0, 0, rect.width, rect.height));
    CVrPoint origin = wanted.Origin();
    CVrGuiElement* target = wanted.x >= 0 && wanted.y >= 0 ? GetRenderTarget(origin, false) : nullptr;
    const CVrRect area(origin, wanted.Size());
    if (!target || !target->Fits(area))
        return;
    constexpr int32_t kCorner = kDimmedRadius + 1;
    const uint8_t* table = GetCornerTable(kDimmedRadius);
    const int32_t rows = std::min(area.Bottom(), target->DrawableHeight()) - area.y;
    for (int32_t y = 0; y < rows; y++) {
        uint32_t* row = target->Row(area.y + y) + area.x;
        const int32_t fromEdge = std::min(y, area.height - 1 - y); // rows to the nearer of top and bottom
        int32_t left = 0, right = area.width;
        if (fromEdge < kCorner) {
            const uint8_t* coverage = table + fromEdge * kCorner;
            for (; left < std::min(kCorner, area.width); left++)
                row[left] = DimmedCornerPixel(row[left], coverage[left]);
            for (; right > left && area.width - right < kCorner; right--)
                row[right - 1] = DimmedCornerPixel(row[right - 1], coverage[area.width - right]);
        }
        pixelops::BestLoops().blendColor(row + left, static_cast<size_t>(right - left), kShadow,
                                         kShadowAlpha);
    }
}
