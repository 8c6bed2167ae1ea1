#include "shell/frame.h"

#include "foundation/class_factory.h"
#include "gui/application.h"
#include "gui/plain_text.h"
#include "shell/actionbar.h"
#include "shell/frame_area.h"
#include "shell/main_window.h"
#include "shell/popup_frame.h"
#include "shell/popup_menu.h"
#include "structure/item.h"
#include "structure/object_types.h"
#include "structure/structure.h"
#include "structure/style_sheet.h"

VR_REGISTER_ELEMENT(CVrGuiFrame)

namespace {

constexpr uint32_t kComingSoonIconSize = 64; // pixels
constexpr int32_t kComingSoonStackGap = 30;
constexpr uint32_t kGroupButton = 3; // of the action bar: the players of a group
constexpr int32_t kGroupButtonId = 3, kGroupButtonSymbol = 10010;

// The symbol of the item's category tells best what will stand here one day; without one it is the item's own.
void FindNoticeSymbol(CVrGuiComingSoonText& notice, const CVrStructureItem* item) {
    const CVrStructure* structure = TheApplication()->Structure();
    const CRoomCat* category = item && structure ? structure->categories.Lookup(item->category) : nullptr;
    notice.iconName.Clear();
    notice.iconStatic = false;
    if (category && category->icon != 0)
        structure->GetSymbolName(notice.iconName, category->icon);
    if (notice.iconName.IsEmpty())
        notice.GetItemIcon(notice.iconName, item);
}

} // namespace

CVrGuiFrame::CVrGuiFrame() {
    type = ElementType::Frame;
    className = "CVrGuiFrame";
}

CVrGuiFrame::~CVrGuiFrame() = default;

// ---------------------------------------------------------------------------------------------- served items

int32_t CVrGuiFrame::ServedCount() const {
    if (items.GetSize() > 0)
        return static_cast<int32_t>(items.GetSize());
    return item ? 1 : 0;
}

CVrStructureItem* CVrGuiFrame::ServedItem(int32_t index) const {
    if (index < 0 || index >= ServedCount())
        return nullptr;
    return items.GetSize() > 0 ? static_cast<CVrStructureItem*>(items[static_cast<uint32_t>(index)]) : item;
}

CVrStructureItem* CVrGuiFrame::FindServedItem(uint32_t uuid) const {
    if (item && item->uuid == uuid)
        return item;
    for (uint32_t i = 0; i < items.GetSize(); ++i) {
        auto* served = static_cast<CVrStructureItem*>(items[i]);
        if (served && served->uuid == uuid)
            return served;
    }
    return nullptr;
}

// ---------------------------------------------------------------------------------------------- layout

bool CVrGuiFrame::ApplyLayout() {
    CVrGuiElement::ApplyLayout();
    const CVrGuiMainWin* root = MainWindow();
    if (root && root->menu && root->menu->IsHidden() && parent && parent->IsMainWin()) {
        // With one page there is no menu row: the page begins as far from the top as from the left.
        const int32_t gained = rect.y - rect.x;
        rect.y = rect.x;
        rect.height += gained;
        canvasSize = CVrSize(rect.width, rect.height);
    }
    if (frameArea)
        frameArea->ApplyLayout();
    PlaceComingSoonText();
    if (root && HasActionbar() && root->actionbar)
        root->actionbar->ApplyLayout();
    return false;
}

CVrRect CVrGuiFrame::GetContentRect() {
    CVrRect content = rect;
    const CVrGuiMainWin* root = MainWindow();
    if (HasActionbar() && root && root->actionbar)
        content.height -= root->actionbar->rect.height;
    return content;
}

void CVrGuiFrame::ReserveActionbarSpace() {
    const CVrGuiMainWin* root = MainWindow();
    if (!root || !frameArea || !root->actionbar || root->actionbar->IsHidden())
        return;
    const CVrGuiElement& bar = *root->actionbar;
    frameArea->rect.height -= bar.rect.height;
    frameArea->canvasSize = CVrSize(frameArea->rect.width, frameArea->rect.height);
    if (CVrGuiElement* slider = root->popupSliderFrame) {
        // One that is up stays where its page has put it.
        if (slider->IsHidden() && SharesParentWith(*slider, bar))
            slider->SetY(bar.rect.y - bar.rect.height);
        slider->ApplyLayout();
    }
}

bool CVrGuiFrame::SharesParentWith(const CVrGuiElement& element, const CVrGuiElement& other) const {
    return element.parent == other.parent;
}

void CVrGuiFrame::FitIcon(CVrGuiButton& button) {
    const CVrRect symbol = button.EvaluateStyle(StylePart::Symbol);
    const int32_t size = symbol.width < symbol.height ? symbol.width : symbol.height;
    if (size < 1)
        return;
    button.iconSize = static_cast<uint32_t>(size);
    button.ReloadIcon();
    button.Invalidate();
}

// ---------------------------------------------------------------------------------------------- building

void CVrGuiFrame::CreateContent(CVrStructureItem* newItem) {
    CVrGuiElement::CreateContent(newItem);
    if (item)
        item->element = this;
    flags |= FlagPage;
}

void CVrGuiFrame::CopyFrame(const CVrGuiFrame& source) {
    CopyFrom(source);
    comingSoon = source.comingSoon;
}

void CVrGuiFrame::CreateArea() {
    frameArea = CreateChild<CVrGuiFrameArea>("CVrGuiFrameArea", false);
}

void CVrGuiFrame::FillArea(CVrStructureItem* newItem) {
    if (newItem)
        item = newItem;
    if (frameArea)
        frameArea->DeleteChildren();
    else
        CreateArea();
    if (frameArea && item)
        frameArea->text = item->name;
    ApplyLayout();
    if (comingSoon) {
        AddComingSoonText();
        ReloadAreaColors();
    }
}

void CVrGuiFrame::ReloadAreaColors() {
    if (!frameArea)
        return;
    frameArea->LoadColors();
    frameArea->ForEachChild([](CVrGuiElement& child) { child.ReloadColors(); });
    frameArea->OnColorsChanged();
}

void CVrGuiFrame::AddComingSoonText() {
    if (!frameArea)
        return;
    auto* notice = frameArea->CreateChild<CVrGuiComingSoonText>("CVrGuiComingSoonText", false);
    if (!notice)
        return;
    notice->CreateContent(nullptr);
    notice->eventMask = 0;
    notice->layout = CVrGuiButton::LayoutStackedWrapped;
    notice->fontIndex = FontIndex::BigBold;
    notice->stackGap = kComingSoonStackGap;
    notice->OnLanguageChanged();
    FindNoticeSymbol(*notice, item);
    notice->iconSize = notice->addIconSize = kComingSoonIconSize;
    notice->layoutLocked = true;
    PlaceComingSoonText();
    notice->LoadIcons();
}

void CVrGuiFrame::PlaceComingSoonText() {
    if (!comingSoon || !frameArea)
        return;
    frameArea->ForEachChild([this](CVrGuiElement& child) {
        if (child.type == ElementType::PlainText)
            child.SetRect(CVrRect(0, 0, frameArea->rect.width, frameArea->rect.height));
    });
}

void CVrGuiFrame::SelectRoomItem(int32_t room) {
    for (uint32_t i = 0; i < items.GetSize(); ++i) {
        auto* served = static_cast<CVrStructureItem*>(items[i]);
        if (!served || served->room != room)
            continue;
        FillArea(served);
        Activate();
        if (frameArea)
            frameArea->offsetX = frameArea->offsetY = 0;
        return;
    }
}

// ---------------------------------------------------------------------------------------------- activation

void CVrGuiFrame::OnVisibilityChanged(bool hidden) {
    if (!hidden)
        Activate();
}

void CVrGuiFrame::Activate() {
    CVrGuiMainWin* root = MainWindow();
    if (!root)
        return;
    root->EmptyPopups();
    CVrStructureItem* shown = item ? item : ServedItem(0);
    if (shown && (!frameArea || frameArea->children.GetSize() == 0))
        FillArea(shown);
    if (HasActionbar())
        ActivateActionbar();
    else
        HideActionbar();
}

void CVrGuiFrame::ActivateActionbar() {
    CVrGuiMainWin& root = *MainWindow();
    root.LendSharedElements(*this);
    SetupActionbar();
    FillPopup();
    ApplyLayout();
    CVrGuiElement* bar = root.actionbar;
    if (!bar)
        return;
    bar->SetY(rect.height - bar->rect.height);
    bar->SetHidden(false);
    bar->Invalidate();
    if (CVrGuiElement* slider = root.popupSliderFrame)
        slider->SetY(SharesParentWith(*slider, *bar) ? bar->rect.y : 0);
    if (CVrGuiElement* popup = root.popupFrame) {
        if (CVrGuiElement* list = root.popupFrame->popupMenu)
            list->CreateContent(nullptr);
        const int32_t gap = GetStyleValue(StyleValue::ActionbarGap);
        popup->SetY(SharesParentWith(*popup, *bar) ? bar->rect.y - popup->rect.height - gap : -gap);
    }
}

void CVrGuiFrame::HideActionbar() {
    CVrGuiMainWin& root = *MainWindow();
    root.ResetActionbarButtons();
    root.HideSharedElements();
    ApplyLayout();
}

void CVrGuiFrame::SetupActionbar() {
    CVrGuiActionbar* bar = MainWindow() ? MainWindow()->actionbar : nullptr;
    if (!bar)
        return;
    for (uint32_t i = 0; i < CVrGuiActionbar::kMaxButtons; i++)
        if (CVrGuiActionbarBtn* button = bar->Button(i))
            FitIcon(*button);
    bar->item = item;
    if (HasGroupMenu() && item && item->type == ObjectType::MusicPlayer)
        bar->SetButton(kGroupButton, this, kGroupButtonId, StaticSymbolName(kGroupButtonSymbol),
                       ActionKind::OpensMenu);
    else if (CVrGuiElement* button = bar->Button(kGroupButton))
        button->SetHidden(true);
    bar->Invalidate();
}
