#include "gui/plain_text.h"

#include "foundation/translator.h"
#include "structure/style_sheet.h"

VR_REGISTER_ELEMENT(CVrGuiPlainText)
VR_REGISTER_ELEMENT(CVrGuiPlainTextSmall)
VR_REGISTER_ELEMENT(CVrGuiComingSoonText)
VR_REGISTER_ELEMENT(CVrGuiBackgroundPanel)

namespace {

constexpr uint32_t kNoAction = 0; // `actionMode` of what is no button

} // namespace

CVrGuiPlainText::CVrGuiPlainText() {
    type = ElementType::PlainText;
    className = "CVrGuiPlainText";
    actionMode = kNoAction;
}

CVrGuiPlainTextSmall::CVrGuiPlainTextSmall() {
    type = ElementType::PlainTextSmall;
    className = "CVrGuiPlainTextSmall";
    fontIndex = FontIndex::Normal;
    actionMode = kNoAction;
}

CVrGuiComingSoonText::CVrGuiComingSoonText() {
    className = "CVrGuiComingSoonText";
}

void CVrGuiComingSoonText::OnColorsChanged() {
    for (uint32_t i = 0; i < StateCount; i++) {
        colorIndex[ColorSymbol + i] = colorIndex[ColorText + i];
        colors[ColorSymbol + i] = colors[ColorText + i];
    }
    Invalidate();
}

void CVrGuiComingSoonText::OnLanguageChanged() {
    text = CVrTranslator::Instance().Translate("frame.coming_soon");
    Invalidate();
}

CVrGuiBackgroundPanel::CVrGuiBackgroundPanel() {
    type = ElementType::ActionbarBtn;
    className = "CVrGuiBackgroundPanel";
    actionMode = kNoAction;
}
