#include "controls/room_climate.h"

#include "controls/room_climate_item.h"
#include "controls/temperature_widget.h"
#include "controls/text_command.h"
#include "foundation/translator.h"
#include "gui/font.h"
#include "gui/font_table.h"
#include "gui/plain_text.h"
#include "shell/actionbar.h"
#include "shell/frame_area.h"
#include "shell/main_window.h"
#include "shell/popup_frame.h"
#include "shell/popup_menu.h"
#include "structure/object_types.h"
#include "structure/style_sheet.h"

#include <cstdlib>
#include <initializer_list>

VR_REGISTER_ELEMENT(CVrGuiHeatIRoomController2)

namespace {

using Item = CVrStructureItemHeatIRoomController2;

// Buttons of the action bar; the number is the id too.
enum Button : int32_t { ButtonSchedule = 0, ButtonMinus = 1, ButtonPlus = 2, ButtonInfo = 3 };

// Events of the commands.
constexpr int32_t kEventSchedule = 1, kEventWarmer = 2, kEventColder = 3;

// Static symbols.
constexpr int32_t kFlame = 10029, kSnowflake = 10030;
constexpr int32_t kSchedule = 10032, kMinus = 10022, kPlus = 10023, kInfo = 10024;
constexpr uint32_t kScheduleSize = 47, kModeSymbolSize = 32; // pixels

// The block of texts is so high and stands in the middle of the area; each row has its y in the block. Pixels.
constexpr int32_t kBlockHeight = 480;
constexpr int32_t kModeY = 87, kWidgetY = 139, kTargetY = 319, kActiveModeY = 393;
constexpr int32_t kRowHeight = 32, kWidgetHeight = 148;
// Symbol and mode text are centred as a pair: the symbol moves left by this, the text right by its own size.
constexpr int32_t kSymbolShift = 12, kTextShift = 32;
// Room behind a text that begins at the left of its row: its last letter may lean over its advance.
constexpr int32_t kOverhang = 8;

bool Heats(int32_t mode) {
    return mode == Item::Heating || mode == Item::HeatingToo;
}

bool Cools(int32_t mode) {
    return mode == Item::Cooling || mode == Item::CoolingToo;
}

CVrxStringU Translated(const char* key) {
    return CVrTranslator::Instance().Translate(key);
}

CVrxStringU TemperatureText(int32_t tenths) {
    return CVrxStringU::Formatted("%s%d.%d", tenths < 0 ? "-" : "", std::abs(tenths / 10),
                                  std::abs(tenths % 10));
}

void ShowWord(CVrGuiPlainText* label, const CVrxStringU& word) {
    if (label)
        label->text = word;
}

void TakeTextColors(CVrGuiElement& symbol, const CVrGuiElement& label) {
    for (uint32_t i = 0; i < CVrGuiElement::StateCount; i++) {
        symbol.colorIndex[CVrGuiElement::ColorSymbol + i] = label.colorIndex[CVrGuiElement::ColorText + i];
        symbol.colors[CVrGuiElement::ColorSymbol + i] = label.colors[CVrGuiElement::ColorText + i];
    }
}

} // namespace

CVrGuiHeatIRoomController2::CVrGuiHeatIRoomController2() {
    className = "CVrGuiHeatIRoomController2";
}

void CVrGuiHeatIRoomController2::CopyFrame(const CVrGuiFrame& source) {
    CVrGuiFrame::CopyFrame(source);
    if (source.className != className)
        return;
    const auto& other = static_cast<const CVrGuiHeatIRoomController2&>(source);
    currentTemp = other.currentTemp;
    targetTemp = other.targetTemp;
    operatingMode = other.operatingMode;
    activeMode = other.activeMode;
}

// ---------------------------------------------------------------------------------------------- words and symbol

bool CVrGuiHeatIRoomController2::IsOff() const {
    return activeMode == Item::Off;
}

CVrxStringU CVrGuiHeatIRoomController2::ModeWord() const {
    if (IsOff())
        return Translated("common.off");
    if (Heats(operatingMode))
        return Translated("climate.heating");
    return Cools(operatingMode) ? Translated("climate.cooling") : CVrxStringU();
}

CVrxStringU CVrGuiHeatIRoomController2::ActiveModeWord() const {
    if (IsOff())
        return {};
    switch (activeMode) {
    case Item::Eco:
        return Translated("climate.eco");
    case Item::Comfort:
        return Translated("climate.comfort");
    case Item::BuildingProtection:
        return Translated("climate.building_protection");
    default:
        break;
    }
    const bool isFixed = activeMode == Item::FixedSetpoint || (activeMode & Item::kFixedSetpointBit) != 0;
    return isFixed ? Translated("climate.fixed_setpoint") : CVrxStringU();
}

CVrxStringU CVrGuiHeatIRoomController2::TargetWord() const {
    const CVrxStringU temperature = TemperatureText(targetTemp);
    if (!Heats(operatingMode) && !Cools(operatingMode))
        return temperature;
    const CVrxStringU limit = Translated(Heats(operatingMode) ? "common.min" : "common.max");
    return limit.IsEmpty() ? temperature : CVrxStringU::Formatted("%s %s", limit.CStr(), temperature.CStr());
}

int32_t CVrGuiHeatIRoomController2::WantedSymbol() const {
    if (IsOff())
        return 0;
    return Heats(operatingMode) ? kFlame : Cools(operatingMode) ? kSnowflake : 0;
}

void CVrGuiHeatIRoomController2::ShowTexts() {
    ShowWord(modeText, ModeWord());
    ShowWord(targetText, TargetWord());
    ShowWord(activeModeText, ActiveModeWord());
    if (activeModeText)
        activeModeText->SetHidden(activeModeText->text.IsEmpty());
}

// A symbol that could not be loaded is tried again at the next update.
void CVrGuiHeatIRoomController2::ShowSymbol() {
    const int32_t wanted = WantedSymbol();
    if (wanted == 0) {
        DropSymbol();
        return;
    }
    if (wanted != modeSymbol || !modeSymbolText || !modeSymbolText->icon.HasBitmap())
        modeSymbol = LoadSymbol(wanted) ? wanted : 0;
    if (modeSymbolText) {
        if (modeText)
            TakeTextColors(*modeSymbolText, *modeText);
        modeSymbolText->SetHidden(modeSymbol == 0);
    }
}

bool CVrGuiHeatIRoomController2::LoadSymbol(int32_t number) {
    const CVrxStringU name = StaticSymbolName(number);
    if (!modeImage.SetStaticIconFromFile(name, kModeSymbolSize, true) || !modeSymbolText)
        return false;
    modeSymbolText->iconName = name;
    modeSymbolText->iconStatic = true;
    modeSymbolText->iconSize = kModeSymbolSize;
    return modeSymbolText->ReloadIcon();
}

void CVrGuiHeatIRoomController2::DropSymbol() {
    modeSymbol = 0;
    modeImage.image.FreeBitmap();
    if (!modeSymbolText)
        return;
    modeSymbolText->iconName.Clear();
    modeSymbolText->icon.image.FreeBitmap();
    modeSymbolText->SetHidden(true);
}

// ---------------------------------------------------------------------------------------------- the area

CVrGuiPlainText* CVrGuiHeatIRoomController2::AddText(uint32_t layoutBits, uint32_t font) {
    auto* label = frameArea->CreateChild<CVrGuiPlainText>("CVrGuiPlainText", true);
    if (!label)
        return nullptr;
    label->eventMask = 0;
    label->text.Clear();
    label->layout = layoutBits;
    label->fontIndex = font;
    return label;
}

void CVrGuiHeatIRoomController2::CreateAreaContent() {
    backPanel = frameArea->CreateChild<CVrGuiBackgroundPanel>("CVrGuiBackgroundPanel", true);
    if (backPanel) {
        backPanel->eventMask = 0;
        backPanel->layoutLocked = true;
        backPanel->SetHidden(true);
    }
    modeText = AddText(CVrGuiButton::LayoutTextCenter, FontIndex::BiggerBold);
    modeSymbolText = AddText(CVrGuiButton::LayoutIcon, FontIndex::NormalBold);
    if (modeSymbolText)
        modeSymbolText->SetHidden(true);
    widget = frameArea->CreateChild<CVrGuiTemperatureWidget>("CVrGuiTemperatureWidget", true);
    targetText = AddText(CVrGuiButton::LayoutTextCenter, FontIndex::SmallBold);
    activeModeText = AddText(CVrGuiButton::LayoutTextCenter, FontIndex::SmallerBold);
}

void CVrGuiHeatIRoomController2::FillArea(CVrStructureItem* newItem) {
    backPanel = nullptr;
    modeText = modeSymbolText = targetText = activeModeText = nullptr;
    widget = nullptr;
    CVrGuiFrame::FillArea(newItem);
    if (!frameArea || comingSoon)
        return;
    CreateAreaContent();
    LoadColors(); // a page made on demand has none yet, and the widget wants them
    ReloadAreaColors();
    OnColorsChanged();
    UpdateFromItem(item);
    ApplyLayout();
}

bool CVrGuiHeatIRoomController2::ApplyLayout() {
    CVrGuiFrame::ApplyLayout();
    if (!frameArea || !widget)
        return false;
    ShowTexts();
    const int32_t width = frameArea->rect.width;
    const int32_t top = (frameArea->rect.height - kBlockHeight) / 2;
    PlaceModeRow(width, top + kModeY);
    widget->SetHidden(false);
    widget->SetRect(0, top + kWidgetY, width, kWidgetHeight);
    if (targetText) {
        targetText->SetHidden(IsOff());
        targetText->SetRect(0, top + kTargetY, width, kRowHeight);
    }
    if (activeModeText)
        activeModeText->SetRect(0, top + kActiveModeY, width, kRowHeight);
    if (CVrGuiElement* bar = OwnsActionbar() ? MainWindow()->actionbar : nullptr; bar && bar->parent)
        bar->SetY(bar->parent->rect.height - bar->rect.height);
    return false;
}

// The word alone stands in the middle; with its symbol, both do.
void CVrGuiHeatIRoomController2::PlaceModeRow(int32_t width, int32_t y) {
    if (!modeText || !modeSymbolText)
        return;
    modeText->fontIndex = FontIndex::NormalBold;
    const bool hasSymbol = WantedSymbol() != 0;
    modeSymbolText->SetHidden(!hasSymbol || modeSymbol == 0);
    if (!hasSymbol) {
        modeText->layout = CVrGuiButton::LayoutTextCenter;
        modeText->SetRect(0, y, width, kRowHeight);
        return;
    }
    CVrSize word;
    if (CVrGuiFont* font = GetFont(modeText->fontIndex))
        font->MeasureText(word, modeText->text);
    const int32_t left = (width - word.width - kTextShift) / 2;
    modeSymbolText->SetRect(left - kSymbolShift, y, kModeSymbolSize, kModeSymbolSize);
    modeText->layout = CVrGuiButton::LayoutTextLeft;
    modeText->SetRect(left + kTextShift, y, word.width + kOverhang, kRowHeight);
}

// ---------------------------------------------------------------------------------------------- state, colours, words

void CVrGuiHeatIRoomController2::UpdateFromItem(CVrStructureItem* changed) {
    const CVrStructureItem* source = changed ? changed : item;
    if (!source || source->type != ObjectType::HeatIRoomController2)
        return;
    const auto& climate = static_cast<const Item&>(*source);
    const bool isOtherMode = activeMode != climate.activeMode;
    const bool isOtherLayout = isOtherMode || operatingMode != climate.operatingMode;
    currentTemp = climate.currentTemp;
    targetTemp = climate.targetTemp;
    operatingMode = climate.operatingMode;
    activeMode = climate.activeMode;
    if (widget)
        widget->ShowTenths(currentTemp);
    ShowTexts();
    ShowSymbol();
    if (isOtherMode && OwnsActionbar())
        SetupActionbar();
    if (isOtherLayout && frameArea)
        ApplyLayout();
    if (IsInfoUp())
        FillPopup();
    InvalidateTree();
}

void CVrGuiHeatIRoomController2::ColorTexts() {
    for (CVrGuiPlainText* label : {modeText, modeSymbolText, targetText, activeModeText})
        for (uint32_t i = 0; label && i < StateCount; i++)
            label->colors[ColorBackground + i] = kUnpainted;
    if (modeSymbolText)
        TakeTextColors(*modeSymbolText, modeText ? *modeText : *modeSymbolText);
}

void CVrGuiHeatIRoomController2::OnColorsChanged() {
    if (widget)
        widget->TakeColors(*this);
    ColorTexts();
    InvalidateTree();
}

void CVrGuiHeatIRoomController2::OnLanguageChanged() {
    ShowTexts();
    ShowSymbol();
    ApplyLayout();
    InvalidateTree();
}

// ---------------------------------------------------------------------------------------------- action bar and popup

// Whether the shared bar serves this page; a page that is not up leaves it alone.
bool CVrGuiHeatIRoomController2::OwnsActionbar() const {
    const CVrGuiMainWin* root = MainWindow();
    const CVrGuiActionbarBtn* button =
        root && root->actionbar ? root->actionbar->Button(ButtonInfo) : nullptr;
    return button && button->owner == this && IsVisibleInTree();
}

bool CVrGuiHeatIRoomController2::IsInfoUp() const {
    return OwnsActionbar() && MainWindow()->popupFrame && !MainWindow()->popupFrame->IsHidden();
}

void CVrGuiHeatIRoomController2::SetupActionbar() {
    CVrGuiFrame::SetupActionbar();
    CVrGuiActionbar* bar = MainWindow() ? MainWindow()->actionbar : nullptr;
    if (!bar)
        return;
    AssignScheduleButton(*bar);
    bar->SetButton(ButtonMinus, this, ButtonMinus, StaticSymbolName(kMinus), ActionKind::Momentary);
    bar->SetButton(ButtonPlus, this, ButtonPlus, StaticSymbolName(kPlus), ActionKind::Momentary);
    bar->SetButton(ButtonInfo, this, ButtonInfo, StaticSymbolName(kInfo), ActionKind::OpensMenu);
    if (IsInfoUp())
        bar->Button(ButtonInfo)->ShowState(StateSelected);
}

// There is nothing to return to while the schedule's own comfort mode runs.
void CVrGuiHeatIRoomController2::AssignScheduleButton(CVrGuiActionbar& bar) {
    CVrGuiActionbarBtn* button = bar.Button(ButtonSchedule);
    if (!button)
        return;
    if (activeMode == Item::Comfort) {
        button->SetHidden(true);
        return;
    }
    button->iconSize = kScheduleSize;
    bar.SetButton(ButtonSchedule, this, ButtonSchedule, StaticSymbolName(kSchedule), ActionKind::OpensSlider);
    button->SetRestState(StateSelected);
}

void CVrGuiHeatIRoomController2::FillPopup() {
    const CVrGuiMainWin* root = MainWindow();
    if (root && root->popupFrame && root->popupFrame->popupMenu)
        root->popupFrame->popupMenu->ShowValueRows(root->roomCo2, root->roomHumidity, currentTemp);
}

void CVrGuiHeatIRoomController2::ToggleInfo() {
    FillPopup();
    CVrGuiMainWin& root = *MainWindow();
    CVrGuiActionbarBtn* button = root.actionbar->Button(ButtonInfo);
    if (!root.popupFrame || !button)
        return;
    const bool opens = button->state == StateNormal;
    button->ShowState(opens ? StateSelected : StateNormal);
    root.popupFrame->SetHidden(!opens);
}

void CVrGuiHeatIRoomController2::CloseInfo() {
    CVrGuiMainWin& root = *MainWindow();
    if (root.popupFrame)
        root.popupFrame->SetHidden(true);
    if (CVrGuiActionbarBtn* button = root.actionbar->Button(ButtonInfo))
        button->ShowState(StateNormal);
    if (root.popupSliderFrame)
        root.popupSliderFrame->SetHidden(true);
}

void CVrGuiHeatIRoomController2::OnChildEvent(CVrGuiElement* child, int32_t, uint32_t reported) {
    const CVrGuiMainWin* root = MainWindow();
    if (reported == 0 || !child || !root || !root->actionbar)
        return;
    for (int32_t button : {ButtonSchedule, ButtonMinus, ButtonPlus, ButtonInfo}) {
        if (child != root->actionbar->Button(static_cast<uint32_t>(button)))
            continue;
        if (button == ButtonInfo) {
            ToggleInfo();
        } else {
            CloseInfo();
            SendCommandOf(button);
        }
    }
}

// Steps wait for the answer: the target changes when UpdateFromItem brings it.
void CVrGuiHeatIRoomController2::SendCommandOf(int32_t button) {
    if (!item)
        return;
    if (button == ButtonSchedule)
        SendTextCommand(*item, kEventSchedule, kCommandOne);
    else if (!IsOff())
        SendTextCommand(*item, button == ButtonPlus ? kEventWarmer : kEventColder, kCommandHalf);
}
