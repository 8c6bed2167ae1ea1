// From the structure to pages: one hidden page and one menu button for each top-level entry.

#include "foundation/class_factory.h"
#include "gui/application.h"
#include "shell/actionbar.h"
#include "shell/frame.h"
#include "shell/main_window.h"
#include "shell/menu.h"
#include "shell/menu_button.h"
#include "shell/popup_frame.h"
#include "structure/item.h"
#include "structure/object_types.h"
#include "structure/structure.h"

namespace {

constexpr uint32_t kFewestMenuButtons = 2; // with one page there is nothing to choose

// What the children of a group have in common.
struct GroupScan {
    int32_t commonType = 0; // 0: the group is not uniform
    int32_t category = 0;   // of the first child that counts
};

// The types whose groups share one page. The shading types count as one.
int32_t PageFamily(int32_t objectType) {
    if (ObjectType::IsShading(objectType))
        return ObjectType::AutoJalousie2;
    return objectType == ObjectType::RoofWindow || objectType == ObjectType::GateController ? objectType : 0;
}

GroupScan ScanGroup(const CVrStructureItem& group) {
    GroupScan scan;
    int32_t family = 0;
    bool seen = false;
    for (const CVrStructureItem* child : group.children) {
        if (!child || child->IsHidden())
            continue;
        if (!seen) {
            scan.category = child->category;
            family = PageFamily(child->type);
            scan.commonType = family ? child->type : 0;
            seen = true;
        }
        if (family == 0 || PageFamily(child->type) != family)
            return {0, scan.category};
    }
    return scan;
}

// Symbol of a shading kind; 0 for a kind without one.
int32_t ShadingSymbol(int32_t kind) {
    switch (kind) {
    case 2:
        return 11009;
    case 4:
        return 11015;
    case 5:
        return 11012;
    case 6:
        return 11018;
    default:
        return 0;
    }
}

// The group's own kind if it is a shading itself, else the kind that all its shadings share; 0 if they disagree.
int32_t ShadingKind(const CVrStructureItem& group) {
    if (PageFamily(group.type) == ObjectType::AutoJalousie2)
        return group.kind;
    int32_t kind = 0;
    for (const CVrStructureItem* child : group.children) {
        if (!child || PageFamily(child->type) != ObjectType::AutoJalousie2)
            continue;
        if (kind != 0 && child->kind != kind)
            return 0;
        kind = child->kind;
    }
    return kind;
}

// Root first, children in order. Houses may be nested as deep as they like, so this walk does not recurse.
void CollectAudioZones(CVrStructureItem& root, VrPtrs<CVrStructureItem>& zones) {
    zones.Clear();
    for (CVrStructureItem* item = &root; item; item = item->NextBelow(root))
        if (item->IsAudioZone())
            zones.Add(item);
}

} // namespace

CVrGuiFrame* CVrGuiMainWin::AddPage(const CVrxStringU& pageClass, CVrStructureItem& entry, int32_t pageType) {
    auto* page = CreateChild<CVrGuiFrame>(pageClass, false);
    if (!page)
        page = CreateChild<CVrGuiFrame>("CVrGuiFrame", false);
    if (!page)
        return nullptr;
    page->frameType = static_cast<uint32_t>(pageType);
    page->flags |= FlagPage;
    page->text = entry.name;
    page->CreateContent(&entry);
    page->SetHidden(true);
    return page;
}

CVrGuiMenuBtn* CVrGuiMainWin::AddMenuButton(CVrStructureItem& entry, CVrGuiFrame& page) {
    auto* button = menu->CreateChild<CVrGuiMenuBtn>("CVrGuiMenuBtn", false);
    if (!button)
        return nullptr;
    button->CreateContent(&entry);
    button->id = static_cast<int32_t>(entry.uuid);
    button->linkedElement = &page;
    page.SetMenuButton(button);
    return button;
}

void CVrGuiMainWin::AddLeafEntry(CVrStructureItem& entry, CVrGuiFrame*& firstPage) {
    const CVrxStringU pageClass = entry.GetPageClass();
    if (pageClass.IsEmpty())
        return;
    CVrGuiFrame* page = AddPage(pageClass, entry, entry.type);
    if (!page)
        return;
    if (!firstPage)
        firstPage = page;
    page->items.Add(&entry);
    entry.element = page;
    AddMenuButton(entry, *page);
}

// A uniform group without a symbol of its own shows that of its shading kind, else that of its members' category.
static void SetGroupSymbol(CVrGuiMenuBtn& button, const CVrStructureItem& group, const GroupScan& scan) {
    const CVrStructure& structure = *TheApplication()->Structure();
    const CRoomCat* category = structure.categories.Lookup(scan.category);
    if (group.icon != 0 || !category || category->icon == 0)
        return;
    const bool shading = PageFamily(scan.commonType) == ObjectType::AutoJalousie2;
    const int32_t symbol = shading ? ShadingSymbol(ShadingKind(group)) : 0;
    button.iconStatic = symbol != 0;
    if (symbol != 0)
        structure.GetStaticSymbolName(button.iconName, symbol);
    else
        structure.GetSymbolName(button.iconName, category->icon);
    button.ReloadIcon();
    button.Invalidate();
}

void CVrGuiMainWin::AddGroupEntry(CVrStructureItem& group, CVrGuiFrame*& firstPage) {
    const GroupScan scan = ScanGroup(group);
    const bool uniform = scan.commonType != 0;
    CVrGuiFrame* page =
        AddPage(uniform ? CClassFactory::GetGuiClassName(static_cast<uint32_t>(scan.commonType))
                        : CVrxStringU("CVrGuiTreeLayout"),
                group, scan.commonType);
    if (!page)
        return;
    if (!firstPage)
        firstPage = page;
    if (CVrGuiMenuBtn* button = AddMenuButton(group, *page); button && uniform)
        SetGroupSymbol(*button, group, scan);
    if (page->className == "CVrGuiTreeLayout")
        return;
    for (CVrStructureItem* child : group.children) {
        if (!child || child->IsHidden())
            continue;
        page->items.Add(child);
        child->element = page;
    }
}

void CVrGuiMainWin::CreateSharedElements(CVrGuiElement& home) {
    actionbar = home.CreateChild<CVrGuiActionbar>("CVrGuiActionbar", true);
    popupFrame = home.CreateChild<CVrGuiPopupFrame>("CVrGuiPopupFrame", true);
    popupSliderFrame = home.CreateChild<CVrGuiPopupSliderFrame>("CVrGuiPopupSliderFrame", true);
    HideSharedElements(); // until a page takes them; there may be none
}

void CVrGuiMainWin::CreateContent(CVrStructureItem* rootItem) {
    if (!rootItem || menu)
        return;
    CollectAudioZones(*rootItem, TheApplication()->Structure()->audioZones);
    menu = CreateChild<CVrGuiMenu>("CVrGuiMenu", false);
    if (!menu)
        return;
    CVrGuiFrame* firstPage = nullptr;
    for (CVrStructureItem* entry : rootItem->children) {
        if (!entry || entry->IsHidden())
            continue;
        if (entry->type != 0)
            AddLeafEntry(*entry, firstPage);
        else
            AddGroupEntry(*entry, firstPage);
    }
    if (menu->ChildCount() < kFewestMenuButtons)
        menu->SetHidden(true);
    menu->ApplyLayout();
    CreateSharedElements(firstPage ? static_cast<CVrGuiElement&>(*firstPage) : *this);
    LoadColors();
    ForEachChild([](CVrGuiElement& child) { child.ReloadColors(); });
    OnColorsChanged();
}
