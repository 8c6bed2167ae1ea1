// Tree, redraw flags, visibility and geometry of the element. Painting stands in element_draw.cpp, touch and
// timers in element_events.cpp, everything that comes from the style sheet or the loaded house in
// element_style.cpp.

#include "gui/element.h"

#include <algorithm>
#include <cstdlib>

#include "foundation/log.h"
#include "gui/application.h"

namespace {

constexpr uint32_t kDumpIndent = 4; // blanks for each level

} // namespace

// ---- Tree ----

CVrGuiElement::CVrGuiElement() = default;

CVrGuiElement::~CVrGuiElement() {
    while (m_refs)
        m_refs->PointTo(nullptr);
    CVrGuiElement::DeleteChildren();
    if (parent)
        parent->ForgetChild(this);
    free(savedPixels);
}

CVrGuiElement* CVrGuiElement::CreateGuiChild(const CVrxStringU& name, bool createContent) {
    constexpr const char* kTag = "CVrGuiElement::CreateGuiChild";
    CVrObject* object = GetDepth() < kMaxDepth ? CClassFactory::Instance().Create(name) : nullptr;
    auto* child = dynamic_cast<CVrGuiElement*>(object);
    if (!child) {
        Log(LogError, kTag, "Create %s error", name.CStr());
        delete object;
        return nullptr;
    }
    child->parent = this;
    child->text = child->GetClassName();
    child->BindStyle();
    LoadColors();
    if (LogEnabled(LogTrace + 1)) {
        CVrxStringU path;
        child->GetPath(path);
        Log(LogTrace + 1, kTag, "%s %d/%d %d/%d", path.CStr(), child->rect.x, child->rect.y,
            child->rect.width, child->rect.height);
    }
    if (createContent)
        child->CreateContent(nullptr);
    AppendChild(child);
    return child;
}

void CVrGuiElement::AppendChild(CVrGuiElement* child) {
    child->parent = this;
    children.Add(child);
    MarkContentChanged();
}

// Searched from the end: whoever is taken out was most often put in last.
void CVrGuiElement::ForgetChild(CVrGuiElement* child) {
    for (uint32_t i = children.GetSize(); i-- > 0;) {
        if (children[i] != child)
            continue;
        children.RemoveAt(i);
        break;
    }
    child->parent = nullptr;
    MarkContentChanged();
}

bool CVrGuiElement::SetParent(CVrGuiElement* newParent) {
    if (newParent) {
        if (newParent->IsSelfOrBelow(this))
            return false;
        if (newParent->GetDepth() + 1 + GetHeight() > kMaxDepth) {
            Log(LogError, "CVrGuiElement::SetParent", "%s would lie too deep", text.CStr());
            return false;
        }
    }
    if (parent)
        parent->ForgetChild(this);
    if (newParent)
        newParent->AppendChild(this);
    return true;
}

void CVrGuiElement::DetachChildren() {
    ForEachChild([](CVrGuiElement& child) {
        child.DetachChildren();
        child.parent = nullptr;
    });
    children.Clear();
    MarkContentChanged();
}

void CVrGuiElement::DeleteChildren() {
    ForEachChild([](CVrGuiElement& child) { child.DeleteChildren(); });
    while (!children.IsEmpty()) {
        const uint32_t last = children.GetSize() - 1;
        CVrGuiElement* child = children[last];
        children.RemoveAt(last);
        if (child)
            child->parent = nullptr;
        delete child;
    }
    children.Clear();
    MarkContentChanged();
}

int32_t CVrGuiElement::GetDepth() const {
    int32_t depth = 0;
    for (const CVrGuiElement* above = parent; above; above = above->parent)
        depth++;
    return depth;
}

// Levels below this element.
int32_t CVrGuiElement::GetHeight() const {
    int32_t height = 0;
    ForEachChild([&](const CVrGuiElement& child) { height = std::max(height, child.GetHeight() + 1); });
    return height;
}

bool CVrGuiElement::IsSelfOrBelow(const CVrGuiElement* other) const {
    const CVrGuiElement* element = this;
    while (element && element != other)
        element = element->parent;
    return element != nullptr;
}

void CVrGuiElement::CopyFrom(const CVrGuiElement& source) {
    text = source.text;
    iconName = source.iconName;
    iconStatic = source.iconStatic;
    addIconName = source.addIconName;
    iconSize = source.iconSize;
    addIconSize = source.addIconSize;
    radiusOverride = source.radiusOverride;
    rect = source.rect;
    canvasSize = source.canvasSize;
    offsetX = source.offsetX;
    offsetY = source.offsetY;
    std::copy(std::begin(source.colorIndex), std::end(source.colorIndex), colorIndex);
    std::copy(std::begin(source.colors), std::end(source.colors), colors);
    styleName = source.styleName;
    style = source.style;
    hitChildren = source.hitChildren;
    source.ForEachChild([this](const CVrGuiElement& child) { CreateGuiChild(child.styleName, false); });
    SetParent(nullptr);
    free(savedPixels);
    savedPixels = nullptr;
    MarkContentChanged();
}

void CVrGuiElement::StartTree() {
    OnStart();
    ForEachChild([](CVrGuiElement& child) { child.StartTree(); });
}

void CVrGuiElement::NotifyLanguage() {
    ForEachChild([](CVrGuiElement& child) { child.NotifyLanguage(); });
    OnLanguageChanged();
}

// ---- Redraw flags ----

void CVrGuiElement::SetUpdate(bool value, bool force) {
    if (!force && (needsUpdate == value || IsHidden()))
        return;
    if (!value) {
        ClearUpdate();
        return;
    }
    needsUpdate = true;
    ForEachChild([force](CVrGuiElement& child) { child.SetUpdate(true, force); });
}

void CVrGuiElement::Invalidate() {
    if (needsUpdate || IsHidden())
        return;
    needsUpdate = true;
    ForEachChild([](CVrGuiElement& child) { child.SetUpdate(true, false); });
}

void CVrGuiElement::InvalidateTree() {
    if (IsHidden())
        return;
    ForEachChild([](CVrGuiElement& child) { child.InvalidateTree(); });
    Invalidate();
}

void CVrGuiElement::ClearUpdateTree() {
    if (IsHidden())
        return;
    ForEachChild([](CVrGuiElement& child) { child.ClearUpdateTree(); });
    ClearUpdate();
}

// A flag that goes away without painting must not let a store pass for up to date.
void CVrGuiElement::ClearUpdate() {
    if (needsUpdate)
        MarkContentChanged();
    needsUpdate = false;
}

bool CVrGuiElement::NeedsUpdateTree() const {
    for (uint32_t i = 0; i < children.GetSize(); i++)
        if (children[i] && children[i]->NeedsUpdateTree())
            return true;
    return needsUpdate;
}

// ---- Visibility ----

bool CVrGuiElement::IsVisibleInTree() const {
    const CVrGuiElement* element = this;
    while (element && !element->IsHidden())
        element = element->parent;
    return element == nullptr;
}

void CVrGuiElement::SetHidden(bool hidden) {
    if (IsHidden() == hidden)
        return;
    flags ^= FlagHidden;
    OnVisibilityChanged(hidden);
}

void CVrGuiElement::SetChildrenVisible(bool visible) {
    ForEachChild([visible](CVrGuiElement& child) { child.SetHidden(!visible); });
}

// The others go first, so that what the page takes over from them (action bar, popups) is free when it comes
// up.
void CVrGuiElement::ShowPage(CVrGuiElement* child) {
    ForEachChild([child](CVrGuiElement& page) {
        if (page.IsPage() && &page != child)
            page.SetHidden(true);
    });
    if (!child || !child->IsPage() || child->parent != this)
        return;
    CVrElementRef<> shown(child);
    child->SetHidden(false);
    if (shown)
        shown->Invalidate();
}

// ---- Geometry ----

void CVrGuiElement::SetPos(int32_t x, int32_t y) {
    SetX(x);
    SetY(y);
}

void CVrGuiElement::SetX(int32_t x) {
    rect.x = x;
    OnMovedX();
}

void CVrGuiElement::SetY(int32_t y) {
    rect.y = y;
    OnMovedY();
}

void CVrGuiElement::SetWidth(int32_t width) {
    rect.width = width;
}

void CVrGuiElement::SetHeight(int32_t height) {
    rect.height = height;
}

void CVrGuiElement::SetSize(int32_t width, int32_t height) {
    rect.width = width;
    rect.height = height;
}

void CVrGuiElement::SetSize(const CVrRect& size) {
    SetSize(size.width, size.height);
}

void CVrGuiElement::SetRect(int32_t x, int32_t y, int32_t width, int32_t height) {
    SetX(x);
    SetY(y);
    rect.width = width;
    rect.height = height;
    if (!Scrolls())
        canvasSize = CVrSize(width, height);
}

void CVrGuiElement::SetRect(const CVrRect& newRect) {
    rect = newRect;
    OnMovedX();
    OnMovedY();
    if (!Scrolls())
        canvasSize = newRect.Size();
}

int32_t CVrGuiElement::ToRootX(int32_t x) const {
    for (const CVrGuiElement* above = parent; above; above = above->parent)
        x = foundation::SaturatedAdd(x, above->rect.x);
    return x;
}

int32_t CVrGuiElement::ToRootY(int32_t y) const {
    for (const CVrGuiElement* above = parent; above; above = above->parent)
        y = foundation::SaturatedAdd(y, above->rect.y);
    return y;
}

int32_t CVrGuiElement::FromRootX(int32_t x) const {
    for (const CVrGuiElement* above = parent; above; above = above->parent)
        x = foundation::SaturatedAdd(x, -int64_t{above->rect.x});
    return x;
}

int32_t CVrGuiElement::FromRootY(int32_t y) const {
    for (const CVrGuiElement* above = parent; above; above = above->parent)
        y = foundation::SaturatedAdd(y, -int64_t{above->rect.y});
    return y;
}

namespace {

int32_t ClampedOffset(int32_t offset, int32_t size, int32_t storeSize) {
    return storeSize > size ? std::clamp(offset, size - storeSize, 0) : 0;
}

} // namespace

void CVrGuiElement::SetScrollOffset(const CVrPoint& point) {
    offsetX = ClampedOffset(point.x, rect.width, storeSize.width);
    offsetY = ClampedOffset(point.y, rect.height, storeSize.height);
}

// ---- Looking inside ----

void CVrGuiElement::GetPath(CVrxStringU& out) const {
    const CVrGuiElement* line[kMaxDepth + 1];
    int32_t count = 0;
    for (const CVrGuiElement* element = this; element && count <= kMaxDepth; element = element->parent)
        line[count++] = element;
    out.Clear();
    while (count-- > 0) {
        out.Append(line[count]->text);
        if (count > 0)
            out.Append('.');
    }
}

void CVrGuiElement::DumpLine(uint32_t level) const {
    constexpr uint32_t kNoColor = 0xFFFFFF;
    CVrxStringU path;
    GetPath(path);
    // Log cuts a line that a long path makes too long.
    Log(LogState, "CVrGuiElement::Dump",
        "%*s%s T:%d V:%d U:%d T: %ums %s x=%d y=%d w=%d h=%d Off: %d/%d C:%06x %s",
        static_cast<int>(level * kDumpIndent), "", path.CStr(), type, IsHidden() ? 1 : 0, needsUpdate ? 1 : 0,
        timerPeriod, timerPeriodic ? "periodic" : "", rect.x, rect.y, rect.width, rect.height, offsetX,
        offsetY, colorIndex[ColorBackground] != 0 ? colors[ColorBackground] : kNoColor, iconName.CStr());
}

void CVrGuiElement::Dump(uint32_t level, const char* header) {
    if (!LogEnabled(LogState))
        return;
    if (header)
        Log(LogState, "CVrGuiElement::Dump", "%s", header);
    DumpLine(level);
    ForEachChild([level](CVrGuiElement& child) { child.Dump(level + 1, nullptr); });
}
