#include "controls/light.h"

#include "controls/light_item.h"
#include "controls/output_buttons.h"
#include "controls/text_command.h"
#include "foundation/clock.h"
#include "foundation/translator.h"
#include "gui/application.h"
#include "gui/font.h"
#include "gui/font_table.h"
#include "gui/text_layout.h"
#include "shell/actionbar.h"
#include "shell/frame_area.h"
#include "shell/frame_button.h"
#include "shell/main_window.h"
#include "shell/popup_frame.h"
#include "shell/popup_slider.h"
#include "structure/object_types.h"
#include "structure/structure.h"
#include "structure/style_sheet.h"

#include <algorithm>

VR_REGISTER_ELEMENT(CVrGuiLightController2)

namespace {

using Item = CVrStructureItemLightController2;

// Buttons of the action bar; the number is the id too.
enum Button : int32_t { ButtonPower = 0, ButtonDarker = 1, ButtonBrighter = 2, ButtonUnused = 3 };

// Events of the commands.
constexpr int32_t kEventOff = 0, kEventOn = 1, kEventAddMood = 2, kEventRemoveMood = 3, kEventBrightness = 6;
constexpr int32_t kCustomValue = 1; // what a tap on the strip sends

// Static symbols.
constexpr int32_t kBrightnessOff = 10003, kBrightnessDecrease = 10004, kBrightnessIncrease = 10005;
constexpr int32_t kMixMood = 10017, kLightOn = 10020, kLightOff = 10021, kCustomMood = 10031;

constexpr uint32_t kMoodSymbolSize = 64; // pixels, where the style gives none
constexpr uint32_t kMixSymbolSize = 43;
constexpr uint32_t kScrollingMoods = 9; // so many buttons do not fit any more

// The strip: symbol and text stand side by side in its middle, the text shortened to what the margin leaves.
constexpr int32_t kStripHeight = 66;
constexpr uint32_t kStripSymbolSize = 33;
constexpr int32_t kStripGap = 10; // between symbol and text
constexpr int32_t kStripMargin = 73;
constexpr uint32_t kStripDelayMs = 100; // the grid has begun to glide away

constexpr uint32_t kFirstStepMs = 600, kStepMs = 100; // of a held button
constexpr uint32_t kSliderStaysMs = 2500;             // behind the last press

CVrxStringU Translated(const char* key) {
    return CVrTranslator::Instance().Translate(key);
}

void ShowState(CVrGuiElement& button, bool selected) {
    const uint32_t wanted = selected ? CVrGuiElement::StateSelected : CVrGuiElement::StateNormal;
    if (button.state == wanted)
        return;
    button.state = wanted;
    button.OnStateChanged();
    button.Invalidate();
}

// The extra symbol at the top right, which marks the corner that adds a mood to the active ones.
void ShowMixSymbol(CVrGuiButton& button, bool shown) {
    if (button.addIconName.IsEmpty() != shown)
        return;
    button.addIconName = shown ? StaticSymbolName(kMixMood) : CVrxStringU();
    button.addIconSize = shown ? kMixSymbolSize : 0;
    if (shown)
        button.addIcon.SetStaticIconFromFile(button.addIconName, kMixSymbolSize, true);
    else
        button.addIcon.image.FreeBitmap();
    button.Invalidate();
}

} // namespace

CVrGuiLightController2::CVrGuiLightController2() {
    className = "CVrGuiLightController2";
}

CVrGuiLightController2::~CVrGuiLightController2() {
    tween.Stop();
}

void CVrGuiLightController2::CopyFrame(const CVrGuiFrame& source) {
    CVrGuiFrame::CopyFrame(source);
    customButton = nullptr;
    ForEachChild([this](CVrGuiElement& child) {
        if (child.type == ElementType::FrameBtn)
            customButton = static_cast<CVrGuiFrameBtn*>(&child);
    });
    if (customButton)
        customButton->listener = this;
    if (source.className == className)
        lightItem = static_cast<const CVrGuiLightController2&>(source).lightItem;
}

// ---------------------------------------------------------------------------------------------- building

// A group stands for its first member, but commands name the item that the page was made for.
void CVrGuiLightController2::CreateContent(CVrStructureItem* newItem) {
    const bool isLight = newItem && newItem->type == ObjectType::LightController2;
    lightItem = isLight ? static_cast<Item*>(newItem) : nullptr;
    item = newItem;
    if (newItem && newItem->IsGroup() && newItem->children.GetSize() > 0)
        item = newItem->children[0];
    if (item)
        item->element = this;
    flags |= FlagPage;
}

bool CVrGuiLightController2::IsScrollable() {
    return frameArea && frameArea->ChildCount() >= kScrollingMoods;
}

void CVrGuiLightController2::FillArea(CVrStructureItem* newItem) {
    if (!newItem)
        return;
    if (newItem != lightItem)
        StopStepping(); // the finger meant the other light
    CVrGuiFrame::FillArea(newItem);
    lightItem = newItem->type == ObjectType::LightController2 ? static_cast<Item*>(newItem) : nullptr;
    if (!frameArea || comingSoon)
        return;
    frameArea->topInset = 0;
    CreateCustomButton();
    for (uint32_t i = 0; lightItem && i < lightItem->moods.GetSize(); i++)
        AddMoodButton(*lightItem->moods[i]);
    ReloadAreaColors();
    frameArea->ApplyLayout();
    if (OwnActionbar())
        SetupSlider();
    RefreshView();
}

void CVrGuiLightController2::CreateCustomButton() {
    if (customButton) {
        customButton->SetHidden(true);
        FinishTween();
        return;
    }
    customButton = CreateChild<CVrGuiFrameBtn>("CVrGuiFrameBtn", false);
    if (!customButton)
        return;
    customButton->layout = CVrGuiButton::LayoutIconBesideText;
    customButton->eventMask = EventUp;
    customButton->listener = this;
    customButton->layoutLocked = true;
    customButton->state = StateSelected;
    customButton->SetHidden(true);
    customButton->iconSize = kStripSymbolSize;
    customButton->iconName = StaticSymbolName(kCustomMood);
    customButton->iconStatic = true;
    customButton->ReloadIcon();
    customButton->text = Translated("light.custom");
    customButton->ReloadColors();
}

void CVrGuiLightController2::AddMoodButton(const CVrLightMood& mood) {
    auto* button = frameArea->CreateChild<CVrGuiFrameBtn>("CVrGuiFrameBtn", false);
    if (!button)
        return;
    frameArea->buttonCount++;
    const int32_t width = button->EvaluateStyle(StylePart::Symbol).width;
    button->iconSize = width > 0 ? static_cast<uint32_t>(width) : kMoodSymbolSize;
    button->eventMask = EventUp;
    button->text = mood.name;
    button->id = mood.id;
    button->listener = this;
    button->layout = CVrGuiButton::LayoutStacked | CVrGuiButton::LayoutShorten;
    button->state = mood.active ? StateSelected : StateNormal;
    CVrxStringU symbol;
    if (mood.defaultIcon != 0)
        TheApplication()->Structure()->GetSymbolName(symbol, mood.defaultIcon);
    else
        symbol = CategorySymbolName(*lightItem);
    if (symbol.IsEmpty())
        return;
    button->iconName = symbol;
    button->icon.SetIconFromFile(symbol, button->iconSize);
}

// ---------------------------------------------------------------------------------------------- the item

CVrLightMood* CVrGuiLightController2::FindMood(int32_t moodId) const {
    for (uint32_t i = 0; lightItem && i < lightItem->moods.GetSize(); i++)
        if (lightItem->moods[i]->id == moodId)
            return lightItem->moods[i];
    return nullptr;
}

// The mood of the button at an index of the area. Two moods may share an id, so the place counts first.
CVrLightMood* CVrGuiLightController2::MoodOf(uint32_t button) const {
    const CVrGuiElement* child = frameArea ? frameArea->Child(button) : nullptr;
    if (!child || !lightItem)
        return nullptr;
    if (button < lightItem->moods.GetSize() && lightItem->moods[button]->id == child->id)
        return lightItem->moods[button];
    return FindMood(child->id);
}

bool CVrGuiLightController2::IsAnyMoodActive() const {
    for (uint32_t i = 0; lightItem && i < lightItem->moods.GetSize(); i++)
        if (lightItem->moods[i]->active)
            return true;
    return false;
}

bool CVrGuiLightController2::IsAnyButtonSelected() const {
    for (uint32_t i = 0; frameArea && i < frameArea->ChildCount(); i++)
        if (frameArea->Child(i) && frameArea->Child(i)->state == StateSelected)
            return true;
    return false;
}

void CVrGuiLightController2::ClearMoods() {
    for (uint32_t i = 0; lightItem && i < lightItem->moods.GetSize(); i++)
        lightItem->moods[i]->active = false;
}

void CVrGuiLightController2::TurnOff() {
    ClearMoods();
    if (!lightItem)
        return;
    lightItem->brightness = 0;
    lightItem->lightOn = false;
}

void CVrGuiLightController2::Send(int32_t event, int32_t value) const {
    if (item)
        SendTextCommand(*item, event, CommandValue{value, 0});
}

void CVrGuiLightController2::UpdateFromItem(CVrStructureItem* changed) {
    if (!changed || changed == lightItem || changed == item)
        RefreshView();
}

// ---------------------------------------------------------------------------------------------- touch

void CVrGuiLightController2::OnChildSelected(CVrGuiElement* child, uint32_t) {
    if (child && child->listener)
        child->listener->OnChildEvent(child, child->id, 1);
}

void CVrGuiLightController2::OnChildEvent(CVrGuiElement* child, int32_t, uint32_t reported) {
    const bool released = reported != 0;
    if (!child || !frameArea)
        return;
    if (child->parent == frameArea) {
        if (released && child->type == ElementType::FrameBtn)
            OnMoodTap(static_cast<CVrGuiFrameBtn&>(*child));
        return;
    }
    if (child == customButton) {
        OnCustomTap();
        return;
    }
    const CVrGuiActionbar* bar = OwnActionbar();
    if (!bar)
        return;
    if (child == bar->Button(ButtonPower) && released)
        OnPower();
    else if (child == bar->Button(ButtonDarker) || child == bar->Button(ButtonBrighter))
        OnBrightness(child == bar->Button(ButtonBrighter), released);
}

// The button has its new state already, and its neighbours theirs.
void CVrGuiLightController2::OnMoodTap(CVrGuiFrameBtn& button) {
    const bool mixes = button.cornerHit && !IsCustomShown();
    const bool selected = button.state == StateSelected;
    const int32_t moodId = button.id;
    uint32_t index = 0;
    while (index < frameArea->ChildCount() && frameArea->Child(index) != &button)
        index++;
    CVrLightMood* mood = MoodOf(index);
    ShowCustom(false, true);
    HideSlider();

    int32_t event = kEventOff;
    if (!IsAnyButtonSelected()) {
        TurnOff();
    } else {
        event = !selected ? kEventRemoveMood : mixes ? kEventAddMood : kEventOn;
        if (event == kEventOn)
            ClearMoods();
        if (mood)
            mood->active = selected;
        if (lightItem)
            lightItem->lightOn = true;
    }
    button.Invalidate();
    RefreshView();
    Send(event, moodId);
}

void CVrGuiLightController2::OnPower() {
    ShowCustom(false, false);
    HideSlider();
    ClearMoods();
    int32_t event = kEventOn, value = 0;
    if (lightItem && lightItem->lightOn) {
        frameArea->ClearSelection();
        TurnOff();
        event = kEventOff;
    } else if (lightItem) {
        if (CVrGuiElement* first = frameArea->Child(0)) {
            ShowState(*first, true);
            value = first->id;
            if (CVrLightMood* mood = MoodOf(0))
                mood->active = true;
        }
        lightItem->lightOn = true;
    }
    RefreshView();
    Send(event, value);
}

void CVrGuiLightController2::OnCustomTap() {
    HideSlider();
    ShowCustom(false, true);
    frameArea->ClearSelection();
    TurnOff();
    RefreshView();
    Send(kEventOff, kCustomValue);
}

// ---------------------------------------------------------------------------------------------- brightness

void CVrGuiLightController2::OnBrightness(bool brighter, bool released) {
    CVrGuiPopupSlider* slider = OwnSlider();
    if (!slider)
        return;
    if (released) {
        EndStepping();
        return;
    }
    const bool isKnown = lightItem && lightItem->brightness >= 0;
    BeginStepping(brighter, isKnown ? lightItem->brightness : slider->value);
}

void CVrGuiLightController2::BeginStepping(bool brighter, int32_t value) {
    const bool maySteps = brighter || value >= 1;
    const bool leavesLight = brighter || value >= 2;
    OwnSlider()->HideAfter(0);
    OpenSlider(leavesLight);
    step = !maySteps ? 0 : brighter ? 1 : -1;
    if (step == 0)
        return;
    SetTimer(kStepMs, true);
    timerDue = TickMs() + kFirstStepMs;
}

void CVrGuiLightController2::OpenSlider(bool withStrip) {
    const CVrGuiMainWin& root = *MainWindow();
    CVrGuiPopupSliderFrame& panel = *root.popupSliderFrame;
    if (!panel.IsHidden())
        return;
    const int32_t gap = GetStyleValue(StyleValue::ActionbarGap);
    if (panel.parent == root.actionbar->parent)
        panel.SetY(root.actionbar->rect.y - panel.rect.height - gap);
    panel.SetHidden(false);
    if (withStrip)
        ShowCustom(true, true);
}

// A tap is one step; a hold ends with one.
void CVrGuiLightController2::EndStepping() {
    const int32_t lastStep = step;
    StopStepping();
    CVrGuiPopupSlider& slider = *OwnSlider();
    slider.HideAfter(kSliderStaysMs);
    if (lastStep == 0)
        return;
    slider.SetValue(slider.value + lastStep);
    OnControlRefresh(true);
}

void CVrGuiLightController2::StopStepping() {
    StopTimer();
    step = 0;
}

bool CVrGuiLightController2::OnTimer(uint64_t) {
    CVrGuiPopupSlider* slider = OwnSlider();
    if (step == 0 || !slider || !slider->SetValue(slider->value + step))
        return false;
    OnControlRefresh(true);
    return true;
}

// A page that leaves the screen under the finger hears of no release.
void CVrGuiLightController2::OnVisibilityChanged(bool hidden) {
    if (hidden)
        StopStepping();
    CVrGuiFrame::OnVisibilityChanged(hidden);
}

void CVrGuiLightController2::OnControlRefresh(bool force) {
    const CVrGuiPopupSlider* slider = OwnSlider();
    if (!slider || !lightItem)
        return;
    lightItem->brightness = slider->value;
    ClearMoods();
    lightItem->lightOn = lightItem->brightness > 0;
    RefreshView();
    if (force)
        Send(kEventBrightness, lightItem->brightness);
}

// ---------------------------------------------------------------------------------------------- action bar and slider

CVrGuiActionbar* CVrGuiLightController2::OwnActionbar() const {
    CVrGuiActionbar* bar = MainWindow() ? MainWindow()->actionbar : nullptr;
    const CVrGuiActionbarBtn* button = bar ? bar->Button(ButtonPower) : nullptr;
    return button && button->owner == this ? bar : nullptr;
}

CVrGuiPopupSlider* CVrGuiLightController2::OwnSlider() const {
    const CVrGuiMainWin* root = MainWindow();
    CVrGuiPopupSlider* slider =
        root && root->popupSliderFrame ? root->popupSliderFrame->popupSlider : nullptr;
    return slider && OwnActionbar() && slider->listener == this ? slider : nullptr;
}

void CVrGuiLightController2::HideSlider() {
    if (OwnSlider())
        MainWindow()->popupSliderFrame->SetHidden(true);
}

void CVrGuiLightController2::SetupSlider() {
    const CVrGuiMainWin* root = MainWindow();
    CVrGuiPopupSlider* slider =
        root && root->popupSliderFrame ? root->popupSliderFrame->popupSlider : nullptr;
    if (!slider)
        return;
    slider->listener = this;
    slider->text = Translated("light.brightness");
    slider->LoadSliderIcons(kBrightnessOff, kBrightnessDecrease, kBrightnessIncrease);
    slider->layout = CVrGuiButton::LayoutIconLeft | CVrGuiButton::LayoutTextLeft;
}

void CVrGuiLightController2::SetupActionbar() {
    CVrGuiFrame::SetupActionbar();
    CVrGuiActionbar* bar = MainWindow() ? MainWindow()->actionbar : nullptr;
    if (!bar)
        return;
    const bool isOn = lightItem && lightItem->lightOn;
    bar->SetButton(ButtonPower, this, ButtonPower, StaticSymbolName(isOn ? kLightOff : kLightOn),
                   ActionKind::OpensSlider);
    bar->SetButton(ButtonDarker, this, ButtonDarker, StaticSymbolName(kBrightnessDecrease), ActionKind::Held);
    bar->SetButton(ButtonBrighter, this, ButtonBrighter, StaticSymbolName(kBrightnessIncrease),
                   ActionKind::HeldValue);
    if (CVrGuiActionbarBtn* unused = bar->Button(ButtonUnused))
        unused->SetHidden(true);
    SetupSlider();
    RefreshView();
}

// ---------------------------------------------------------------------------------------------- showing the item

bool CVrGuiLightController2::IsCustomDue() const {
    return lightItem && lightItem->brightness > 0 && !IsAnyMoodActive();
}

void CVrGuiLightController2::RefreshView() {
    if (!lightItem || !frameArea)
        return;
    lightItem->lightOn = IsAnyMoodActive() || lightItem->brightness > 0;
    ShowCustom(IsCustomDue(), false);
    ShowPower();
    ShowButtonStates();
    ShowMixSymbols();
    if (CVrGuiPopupSlider* slider = OwnSlider(); slider && lightItem->brightness >= 0)
        slider->SetValue(lightItem->brightness);
}

void CVrGuiLightController2::ShowPower() {
    const CVrGuiActionbar* bar = OwnActionbar();
    CVrGuiActionbarBtn* power = bar ? bar->Button(ButtonPower) : nullptr;
    if (!power)
        return;
    const CVrxStringU wanted = StaticSymbolName(lightItem->lightOn ? kLightOff : kLightOn);
    if (power->iconName != wanted) {
        power->iconName = wanted;
        power->ReloadIcon();
    }
    power->ShowState(StateNormal);
}

void CVrGuiLightController2::ShowButtonStates() {
    for (uint32_t i = 0; i < frameArea->ChildCount(); i++)
        if (const CVrLightMood* mood = MoodOf(i))
            ShowState(*frameArea->Child(i), mood->active);
}

// With a mood active each of the others can be added to it.
void CVrGuiLightController2::ShowMixSymbols() {
    const bool canMix = IsAnyButtonSelected() && !IsCustomDue();
    frameArea->ForEachChild([canMix](CVrGuiElement& child) {
        if (child.type == ElementType::FrameBtn)
            ShowMixSymbol(static_cast<CVrGuiButton&>(child), canMix && child.state == StateNormal);
    });
}

// ---------------------------------------------------------------------------------------------- the strip

bool CVrGuiLightController2::IsCustomShown() const {
    return customButton && !customButton->IsHidden();
}

CVrRect CVrGuiLightController2::StripRect(int32_t height) const {
    const CVrRect& area = frameArea->rect;
    return CVrRect(area.x, area.y, area.width, height);
}

void CVrGuiLightController2::ShowCustom(bool show, bool animate) {
    if (!customButton || !frameArea)
        return;
    if (show == IsCustomShown()) {
        customButton->state = StateSelected;
        if (show && !tween.IsRunning())
            PlaceCustom();
        return;
    }
    if (!animate || !show)
        FinishTween();
    customButton->SetHidden(!show);
    customButton->state = StateSelected;
    GlideArea(show ? kStripHeight : 0);
    if (show && animate)
        StartTween();
    else if (show)
        PlaceCustom();
    Invalidate();
}

// The grid glides under the strip, or back. Action bar and slider stay where they are.
void CVrGuiLightController2::GlideArea(int32_t inset) {
    frameArea->topInset = inset;
    frameArea->animateLayout = true;
    frameArea->ApplyLayout();
    frameArea->animateLayout = false;
}

void CVrGuiLightController2::FinishTween() {
    if (tween.IsRunning())
        OnAnimValue(tween.to);
    tween.Stop();
    tweenRunning = false;
}

void CVrGuiLightController2::StartTween() {
    tweenFrom = StripRect(0);
    tweenTo = StripRect(kStripHeight);
    CentreCustomText();
    tweenRunning = true;
    tween.Start(tweenFrom, tweenTo, this, tweenDuration, tweenCurve);
    tween.startTime += kStripDelayMs;
}

void CVrGuiLightController2::OnAnimValue(CVrRect& value) {
    if (!customButton)
        return;
    SetStrip(value);
    customButton->state = StateSelected;
    if (value == tweenTo)
        tweenRunning = false;
    Invalidate();
}

// While it grows, text and symbol are cut off at its edges: a store of its own does that. A strip that is lower than the
// symbol shows the symbol's upper part.
void CVrGuiLightController2::SetStrip(const CVrRect& place) {
    customButton->SetRect(place);
    const int32_t missing = static_cast<int32_t>(kStripSymbolSize) - place.height;
    customButton->iconOffsetY = customButton->textOffsetY = std::max(missing / 2, 0);
    if (place.height > 0 && place.height < kStripHeight) {
        customButton->flags |= FlagOwnStore;
        customButton->InitMem(place);
    } else if (customButton->HasOwnStore()) {
        customButton->flags &= ~static_cast<uint32_t>(FlagOwnStore);
        customButton->FreeMem();
    }
}

void CVrGuiLightController2::PlaceCustom() {
    const CVrRect place = StripRect(kStripHeight);
    if (customButton->rect == place)
        return;
    SetStrip(place);
    CentreCustomText();
    customButton->Invalidate();
}

void CVrGuiLightController2::CentreCustomText() {
    CVrGuiFont* font = GetFont(customButton->fontIndex);
    const int32_t width = frameArea->rect.width;
    ShortenText(customButton->text, font, Translated("light.custom"), width - kStripMargin);
    CVrSize word;
    if (font)
        font->MeasureText(word, customButton->text);
    const CVrClassStyle* row = customButton->style;
    const int32_t pair = word.width + static_cast<int32_t>(kStripSymbolSize) + kStripGap;
    customButton->iconOffsetX = std::max((width - pair) / 2, 0) - (row ? row->symbol.gap : 0);
    customButton->textOffsetX = kStripGap - (row ? row->text.gap : 0);
}

bool CVrGuiLightController2::ApplyLayout() {
    CVrGuiFrame::ApplyLayout();
    if (IsCustomShown() && frameArea && !tween.IsRunning())
        PlaceCustom();
    return false;
}

void CVrGuiLightController2::OnLanguageChanged() {
    if (customButton && frameArea)
        CentreCustomText();
    if (CVrGuiPopupSlider* slider = OwnSlider()) {
        slider->text = Translated("light.brightness");
        slider->Invalidate();
    }
    InvalidateTree();
}
