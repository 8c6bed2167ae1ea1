#include "motion_page.h"

#include "gui/application.h"
#include "gui/image.h"
#include "shell/frame_area.h"
#include "shell/frame_button.h"
#include "shell/main_window.h"
#include "structure/style_sheet.h"

#include <algorithm>

VR_REGISTER_ELEMENT(CVrGuiMotionPage)

namespace {

constexpr int32_t kColumns = 3;
constexpr uint32_t kSlide = 32;      // pixels a pass
constexpr uint32_t kFadePasses = 60; // of 2 ms and what painting takes
constexpr int32_t kScreenHeight = 720;

} // namespace

void CVrGuiMotionPage::FillArea(CVrStructureItem* newItem) {
    CVrGuiFrame::FillArea(newItem);
    frameArea->fixedCols = kColumns;
    frameArea->cellW = GetStyleValue(StyleValue::CoverSize);
    frameArea->cellH = GetStyleValue(StyleValue::CoverButtonHeight);
    for (int32_t i = 0; i < kTiles; i++)
        AddTile(i);
    ApplyLayout();
    ReloadAreaColors();
}

void CVrGuiMotionPage::AddTile(int32_t index) {
    auto* tile = frameArea->CreateChild<CVrGuiFrameCoverBtn>("CVrGuiFrameCoverBtn", false);
    CVrGuiApplication& application = *TheApplication();
    const int32_t key = application.NextDefaultCover();
    application.LoadCover(tile, key);
    const CVrGuiImageCacheData* cover = application.ImageCache()->Lookup(key);
    const int32_t side = frameArea->cellW;
    if (cover && cover->loaded)
        tile->SetImage(CreateScaledImage(cover->image, CVrSize(side, side)), true);
    tile->text.Format("Cover %d", key - CoverKey::kFirstDefault);
    tile->layout = CVrGuiButton::LayoutIcon | CVrGuiButton::LayoutTextLeft | CVrGuiButton::LayoutTextBelow;
    tile->id = index;
    tile->listener = this;
    tile->eventMask = EventUp;
    frameArea->buttonCount++;
}

void CVrGuiMotionPage::OnChildEvent(CVrGuiElement* child, int32_t childId, uint32_t) {
    auto* tile = static_cast<CVrGuiFrameCoverBtn*>(child);
    const bool plays = !tile->IsPlaying();
    if (m_playing)
        m_playing->ShowPlaying(false);
    tile->ShowPlaying(plays);
    m_playing = plays ? tile : nullptr;
    MainWindow()->ArmFade(*tile, kFadePasses);
    CVrxStringU command;
    command.Format(R"({"U":%u,"E":%d,"T":2,"V":%d.0})", kNumber, childId, plays ? 1 : 0);
    TheApplication()->SendCommand(command);
}

void CVrGuiMotionPage::OnVisibilityChanged(bool hidden) {
    CVrGuiFrame::OnVisibilityChanged(hidden);
    if (!hidden)
        SlideUp();
}

// On its way the page is a store that is only blended.
void CVrGuiMotionPage::SlideUp() {
    CVrGuiMainWin& root = *MainWindow();
    if (!root.ArmMove(*this, kScreenHeight, rect.y, kSlide))
        return;
    flags |= FlagOwnStore;
    root.moveAnimation.listener = this;
}

void CVrGuiMotionPage::OnPopupResult(bool) {
    flags &= ~static_cast<uint32_t>(FlagOwnStore);
    FreeMem();
    InvalidateTree();
}
