// The base of everything visible: tree links, geometry, style binding, colours, timer, redraw flags, hit
// testing and the routing of touch events. Drawing itself stands in CVrGuiFrameBuffer, what an element shows
// in its subclasses.
//
// Three conventions hold in the whole toolkit:
// - `rect` is relative to the parent. A point handed to DoEvent and its hooks is in the coordinates of the
//   element's parent too, so that it compares directly with `rect`.
// - Colours are 0xAARRGGBB; kUnpainted in a store marks a pixel on which nothing was painted.
// - Every visible change ends in Invalidate() of the smallest element that changed. There are no dirty
//   rectangles: one flag anywhere repaints the tree, except for the content of scrolling areas, which lies in
//   stores of their own and is painted again only when something in it changed (see DrawStored).
//
// An element is owned by its parent; `item`, `style` and all CVrElementRef are borrowed. All of this belongs
// to the GUI thread (to the pipe thread before the GUI thread exists).
//
// The tree is at most kMaxDepth levels deep, so that walks may recurse: CreateGuiChild and SetParent refuse more.
#pragma once

#include <cstdint>

#include "foundation/class_factory.h"
#include "foundation/geometry.h"
#include "foundation/object.h"
#include "foundation/ptr_array.h"
#include "foundation/string.h"
#include "gui/element_ref.h"
#include "gui/frame_buffer.h"

class CVrStructureItem;
struct CVrClassStyle;

// Registers an element class with the factory; stands once in the class's own file. `type` is set by the
// constructor.
#define VR_REGISTER_ELEMENT(Class) VR_REGISTER_CLASS_WITH(Class, object->className = #Class)

// Value of `type`: the element's row in the table of element classes.
namespace ElementType {
enum : int32_t {
    None = -1, // no constructor has set it
    MainWin = 0,
    Menu = 1,
    MenuBtn = 2,
    Frame = 3,
    FrameArea = 4,
    FrameBtn = 5,
    FrameCoverBtn = 6,
    FrameListBtn = 7,
    Actionbar = 8,
    ActionbarBtn = 9,
    PopupFrame = 10,
    PopupMenu = 11,
    PopupMenuBtn = 12,
    PopupMenuSlider = 13,
    Button = 14, // a row of the table only: CVrGuiButton itself has type 9
    PopupSliderFrame = 15,
    PopupSlider = 16,
    ShadeElement = 17,
    PlainText = 18,
    PlainTextSmall = 19,
    ShadeIconElement = 20,
    TreeIconElement = 21,
    TreeListBtn = 22,
    TreeHeaderBtn = 23,
    PairingScreen = 24,
    PairingRetryBtn = 25,
    ScreenSaver = 26,
    Video = 27,
    Dummy = 999, // beyond the table, which selects row 0
};
} // namespace ElementType

// The three layouts of a class row.
enum class StylePart { Element, Symbol, Text };

class CVrGuiElement : public CVrObject, public CVrGuiFrameBuffer {
public:
    // Deepest level of an element, the root being level 0. Real pages reach 6.
    static constexpr int32_t kMaxDepth = 64;

    // Bits of `flags`.
    enum Flag : uint32_t {
        FlagScrollsVertically = 1, // `canvasSize` is not tied to `rect`
        FlagScrollsHorizontally = 2,
        FlagScrolls = FlagScrollsVertically | FlagScrollsHorizontally,
        FlagHidden = 4,    // with its whole sub-tree
        FlagOwnStore = 8,  // paints into its own store, which Draw blends into the nearest ancestor's
        FlagPage = 16,     // among its siblings with this bit only one is shown at a time
        FlagPaintable = 32 // does not mean visible: FlagHidden has the last word
    };

    // Event types, which are also the bits of `eventMask`. The outside can send other numbers.
    enum Event : uint32_t {
        EventDown = 1,
        EventMove = 2,
        EventUp = 4,
        EventAll = EventDown | EventMove | EventUp
    };

    // Values of `state`.
    enum VisualState : uint32_t { StateNormal = 0, StateSelected = 1, StateDisabled = 2, StateCount = 3 };

    // Indices of `colors` and `colorIndex`. The groups are indexed by `state`.
    enum ColorSlot : uint32_t {
        ColorBackground = 0,
        ColorBackgroundSelected = 1,
        ColorBackgroundDisabled = 2,
        ColorFrameLine = 3,
        ColorText = 4,
        ColorTextSelected = 5,
        ColorTextDisabled = 6,
        ColorSymbol = 7,
        ColorSymbolSelected = 8,
        ColorSymbolDisabled = 9,
        ColorSlotCount = 10
    };

    CVrGuiElement();
    // Clears all references to this element, destroys the children and leaves the parent's list.
    ~CVrGuiElement() override;
    CVrGuiElement(const CVrGuiElement&) = delete;
    CVrGuiElement& operator=(const CVrGuiElement&) = delete;

    // ---- Virtual operations, in the order of their slots ----

    // Takes over look and geometry of `source` and creates a like child for each of its children. The element
    // itself leaves its parent; whoever calls this owns it.
    virtual void CopyFrom(const CVrGuiElement& source);
    virtual void SetPos(int32_t x, int32_t y);
    virtual void SetX(int32_t x);
    virtual void SetY(int32_t y);
    virtual void SetWidth(int32_t width);
    virtual void SetHeight(int32_t height);
    virtual void SetSize(int32_t width, int32_t height);
    virtual void SetSize(const CVrRect& size); // width and height of the rectangle
    // Unless the element scrolls, `canvasSize` follows.
    virtual void SetRect(int32_t x, int32_t y, int32_t width, int32_t height);
    virtual void SetRect(const CVrRect& newRect);
    virtual bool IsMainWin() const { return false; }
    virtual CVrxStringU GetClassName() const { return className; }
    virtual void OnStateChanged() {} // after `state` changed
    virtual void OnMovedY() {}
    virtual void OnMovedX() {}
    virtual void OnColorsChanged() {}   // after the colours were read again
    virtual void OnLanguageChanged() {} // fetch translated texts again
    // Which corners of the background are rounded (bits of CornerMask).
    virtual uint32_t GetCornerMask() const { return CornerNone; }
    // Evaluates the style against the parent's size. True: the direct children should follow.
    virtual bool ApplyLayout();
    virtual void ApplyLayoutTree();
    // Empties the lists of the whole sub-tree below this element without deleting; the caller owns what was
    // in them.
    virtual void DetachChildren();
    virtual void DeleteChildren();
    virtual bool AcceptsEvent(uint32_t eventType) const { return (eventMask & eventType) != 0; }
    virtual bool HitChildren() const { return hitChildren; }
    virtual void OnStart() {}    // once, through StartTree
    virtual void ShowSplash() {} // the root shows the start picture
    virtual void StartTree();
    virtual void CreateContent(CVrStructureItem* newItem) { item = newItem; }
    // New state of an item arrived; null means the element's own item.
    virtual void UpdateFromItem(CVrStructureItem*) {}
    virtual void OnTouchDown(const CVrPoint&) {}
    virtual void OnTouchMove(const CVrPoint& point); // into the application's touch history
    virtual void OnTouchUp(const CVrPoint& point);   // likewise
    // Paints the element with its sub-tree. `force`: content that lies in a store is painted again even if
    // nothing in it changed. `compose`: a store of its own is then blended into the nearest ancestor's.
    virtual void Draw(bool force, bool compose);
    virtual void DrawOverlay() {} // called on the root after each Draw
    virtual void DrawContent() {} // own text and symbols
    // Painted over the children, at every pass, also when the content of an own store was left as it is:
    // whoever has an own store paints into that of the ancestor here (GetRenderTarget with force), or paints
    // opaque.
    virtual void DrawAfterChildren() {}
    virtual void DrawBackground();
    virtual void FillBackground(uint32_t color);
    // One line at a point relative to the element; `fontIndex` is an index of the font table.
    virtual void DrawTextAt(const CVrPoint& point, uint32_t fontIndex, uint32_t color,
                            const CVrxStringU& line);
    virtual void OnChildSelected(CVrGuiElement*, uint32_t) {} // (child, state): a container's choice
    // (child, id, pressed), called on `listener`
    virtual void OnChildEvent(CVrGuiElement*, int32_t, uint32_t) {}
    virtual void OnClick(const CVrPoint&) {}  // a finished tap
    virtual void OnVisibilityChanged(bool) {} // (hidden), after FlagHidden changed
    virtual void StopTimer() { timerPeriod = 0; }
    virtual void RestartTimer();
    // Runs the timers of the sub-tree; true if one of them wants a repaint.
    virtual bool UpdateTimers(uint64_t now);
    virtual bool OnTimer(uint64_t) { return false; } // (now); true: something needs painting
    virtual bool IsTimerActive() const { return timerPeriod != 0; }
    // Moves the point into the scrolled content and tells whether it lies there.
    virtual bool ContainsPoint(CVrPoint& point) const;
    // See "Routing" in element_events.cpp. True: an element took the event. The point is in screen
    // coordinates.
    virtual bool RouteEvent(uint32_t eventType, const CVrPoint& point);
    virtual void DoEvent(uint32_t eventType, const CVrPoint& point);
    virtual void OnPopupResult(bool) {} // (accepted)
    // Writes the sub-tree to the log, one line for each element; `header` may be null.
    virtual void Dump(uint32_t level, const char* header);
    virtual void OnControlRefresh(bool) {} // (force)
    // The press ended without a click. True: a drag may take the finger over.
    virtual bool OnPressCancelled() { return true; }
    virtual void OnDragBegin() {}
    // True: the content of the own store is kept over a pass in which nothing in it changed.
    virtual bool KeepsContent() const { return false; }

    // A shade element that is a row of a list, not a tile beside another (see CVrGuiFrameArea).
    virtual bool IsListRow() const { return false; }

    // ---- Tree ----

    // Creates an element by class name, binds its style and appends it; null (and a log line) if there is no
    // such class, it is no element, or the tree would become too deep. Its colours come with ReloadColors of
    // the creator.
    CVrGuiElement* CreateGuiChild(const CVrxStringU& name, bool createContent);
    // The same, as the class that the caller knows the name to stand for.
    template <typename T>
    T* CreateChild(const CVrxStringU& name, bool createContent) {
        return static_cast<T*>(CreateGuiChild(name, createContent));
    }
    // Moves the element to the end of another parent's list; null takes it out, and the caller owns it.
    // False, and nothing changed, if the new parent lies in this sub-tree or the tree would become too deep.
    bool SetParent(CVrGuiElement* newParent);
    CVrGuiElement* Child(uint32_t index) const { return children.GetAt(index); } // null behind the end
    uint32_t ChildCount() const { return children.GetSize(); }
    // Calls `visit(CVrGuiElement&)` for each child in order; the list may change meanwhile, the element must
    // stay.
    template <typename Visitor>
    void ForEachChild(Visitor visit) const {
        for (uint32_t i = 0; i < children.GetSize(); i++)
            if (CVrGuiElement* child = children[i])
                visit(*child);
    }
    int32_t GetDepth() const; // 0: has no parent

    // ---- Redraw flags ----

    // Unless `force`, a hidden element and one whose flag has this value already stay as they are. A set flag
    // goes on to the children.
    void SetUpdate(bool value, bool force);
    void Invalidate();
    void InvalidateTree();
    void ClearUpdateTree();
    // Looks into hidden elements too.
    bool NeedsUpdateTree() const;

    // ---- Visibility ----

    bool IsHidden() const { return (flags & FlagHidden) != 0; }
    bool HasOwnStore() const { return (flags & FlagOwnStore) != 0; }
    bool IsPage() const { return (flags & FlagPage) != 0; }
    bool Scrolls() const { return (flags & FlagScrolls) != 0; }
    bool IsDrawable() const { return (flags & (FlagPaintable | FlagHidden)) == FlagPaintable; }
    bool IsVisibleInTree() const;
    // Sets FlagHidden and calls OnVisibilityChanged if that changes it; marks nothing for redraw.
    void SetHidden(bool hidden);
    void SetChildrenVisible(bool visible);
    // Shows one page among its siblings and hides the others; the page now shown is invalidated.
    void ShowPage(CVrGuiElement* child);

    // ---- Geometry ----

    // The rectangle that a layout of the element's style gives: its own in its parent, those of symbol and
    // text in the element. Empty without a style.
    CVrRect EvaluateStyle(StylePart part) const;
    int32_t ToRootX(int32_t x) const; // adds the x of every ancestor
    int32_t ToRootY(int32_t y) const;
    int32_t FromRootX(int32_t x) const; // subtracts them
    int32_t FromRootY(int32_t y) const;
    CVrPoint ToRoot(const CVrPoint& point) const { return {ToRootX(point.x), ToRootY(point.y)}; }
    CVrPoint FromRoot(const CVrPoint& point) const { return {FromRootX(point.x), FromRootY(point.y)}; }
    // Deepest element below this one at a point that is relative to this element; null if there is none: an
    // element is never hit on its own empty space. `offset`, if given, grows by the positions of the elements
    // between this one and the result.
    CVrGuiElement* HitTest(const CVrPoint& point, CVrPoint* offset);
    // Clamps to what the store has beyond the element's size.
    void SetScrollOffset(const CVrPoint& point);
    // The element whose store this one paints into; `offset` is moved from element to store coordinates.
    // Null: there is no store to be had. `force` starts at the parent even if the element has a store of its
    // own.
    CVrGuiElement* GetRenderTarget(CVrPoint& offset, bool force);
    // Darkens what lies behind a popup.
    void DrawDimmed();

    // ---- Colours, texts, symbols ----

    void LoadColors();
    void ReloadColors();
    void NotifyLanguage();
    // The colours that `state` selects.
    uint32_t BackgroundColor() const { return colors[ColorBackground + StateIndex()]; }
    uint32_t TextColor() const { return colors[ColorText + StateIndex()]; }
    uint32_t SymbolColor() const { return colors[ColorSymbol + StateIndex()]; }
    // False for a transparent colour and for one that was set to kUnpainted: then nothing is painted.
    bool HasBackground() const {
        return colorIndex[ColorBackground + StateIndex()] != 0 && BackgroundColor() != kUnpainted;
    }
    // Corner radius in pixels: the element's own, else its style's, else 15.
    int32_t CornerRadius() const;
    // `text` of all ancestors and of the element, root first, separated by ".".
    void GetPath(CVrxStringU& out) const;
    // The symbol's file name for an item; sets `iconStatic`.
    void GetItemIcon(CVrxStringU& out, const CVrStructureItem* ofItem);

    // ---- Touch ----

    // Ends every press in the sub-tree; true if there was one.
    bool ReleasePressed();
    void SetTimer(uint32_t periodMs, bool periodic); // first due after one period

    // ---- Fields ----

    CVrStructureItem* item = nullptr; // shown by this element; not owned; null for pure layout elements
    CVrGuiElement* parent = nullptr;  // null at the root
    VrPtrs<CVrGuiElement> children;   // owned, in painting order
    int32_t type = ElementType::None;
    CVrxStringU className;
    CVrxStringU text; // display text; the class name until somebody sets another
    int32_t id = 0;   // given by the creator, passed to listeners
    bool needsUpdate = true;
    CVrRect rect;                     // position relative to the parent, and size
    CVrSize canvasSize;               // size in which a store is shown; `rect`'s for ordinary elements
    int32_t offsetX = 0, offsetY = 0; // of the content, 0 or negative
    uint8_t* savedPixels = nullptr;   // copy of the root's store during animations; malloc'd, owned
    uint32_t state = StateNormal;
    uint32_t eventMask = 0;     // event types that the element takes
    CVrElementRef<> listener;   // told by OnChildEvent; usually the page
    CVrElementRef<> hitElement; // deepest element under the finger at the last event delivered here
    bool timerPeriodic = false; // the timer re-arms itself
    uint32_t timerPeriod = 0;   // ms; 0: the timer is off
    uint64_t timerDue = 0;      // tick in ms
    CVrxStringU iconName;
    bool iconStatic = false;                 // the symbol comes from the program's own set
    CVrxStringU addIconName;                 // second, smaller symbol
    uint32_t iconSize = 0, addIconSize = 0;  // pixels
    int32_t radiusOverride = -1;             // -1: the style's radius
    uint8_t colorIndex[ColorSlotCount] = {}; // index in the colour list; 0 is transparent
    uint32_t colors[ColorSlotCount] = {};
    CVrxStringU styleName; // name of the class row
    uint32_t flags = FlagPaintable;
    const CVrClassStyle* style = nullptr; // class row, owned by the style sheet
    bool pressed = false;                 // from touch-down on this element until the press ends
    bool moved = false;                   // a move event reached it during the press
    bool hitChildren = true;              // false: the hit test stops here
    bool layoutLocked = false;            // ApplyLayout leaves the rectangle alone
    uint32_t frameType = 0;               // object type of the page that the element stands for

protected:
    uint32_t StateIndex() const { return state < StateCount ? state : StateNormal; }
    // What is painted below this element changed in a way that no flag shows: a store that holds it is
    // painted again.
    void MarkContentChanged() { m_contentChanged = true; }

private:
    friend class CVrElementRefBase;

    // What of an element shows in the store that holds it, beside what its redraw flag stands for.
    struct Look {
        CVrRect rect;
        int32_t offsetX = 0, offsetY = 0;
        uint32_t flags = 0, state = 0;
        bool operator==(const Look&) const = default;
    };
    // What of an element shows in its own store.
    struct StoreLook {
        const uint32_t* pixels = nullptr;
        int32_t width = 0, height = 0;
        uint32_t state = 0;
        bool operator==(const StoreLook&) const = default;
    };
    Look CurrentLook() const { return {rect, offsetX, offsetY, flags, state}; }
    StoreLook CurrentStoreLook() const { return {pixels, storeSize.width, storeSize.height, state}; }
    bool IsContentPainted() const;
    bool IsChangedInStore() const;
    bool IsAnyChildChanged() const;
    void PaintContent(bool force);
    void DrawChildren(bool force);
    void ComposeStore();
    void ClearUpdate();
    CVrRect DimmedRect() const;

    CVrGuiElement* TopmostChildAt(const CVrPoint& point) const;
    void FinishTimer(uint64_t now);
    void AppendChild(CVrGuiElement* child);
    void ForgetChild(CVrGuiElement* child);
    bool IsSelfOrBelow(const CVrGuiElement* other) const;
    int32_t GetHeight() const;
    void BindStyle();
    void DumpLine(uint32_t level) const;

    CVrElementRefBase* m_refs = nullptr; // all references to this element
    Look m_paintedLook;                  // as of the last painting into the store that holds it
    StoreLook m_storeLook;               // as of the last painting of its own store
    bool m_contentChanged = true;        // see MarkContentChanged
};

// ---- What the style sheet and the loaded house say; empty without an application ----

// A number of the style sheet by its index in the list of values; 0 if the list is shorter.
int32_t GetStyleValue(uint32_t index);

// The colour in a slot of another class's row; `fallback` if there is no such row.
uint32_t ClassColor(int32_t type, uint32_t slot, uint32_t fallback);

// File name of one of the program's own symbols.
CVrxStringU StaticSymbolName(int32_t number);
