#include "gui/button.h"

#include <algorithm>

#include "foundation/clock.h"
#include "foundation/log.h"
#include "gui/font.h"
#include "gui/font_table.h"
#include "gui/image.h"
#include "gui/pixel_ops.h"
#include "gui/text_layout.h"
#include "gui/vector_player.h"
#include "structure/style_sheet.h"

VR_REGISTER_ELEMENT(CVrGuiButton)

namespace {

constexpr int32_t kWrapMargin = 10;        // pixels that wrapped text keeps free beside the gap
constexpr int32_t kShortenMargin = 30;     // pixels that a shortened line keeps free
constexpr int32_t kWrappedOverlap = 5;     // pixels that wrapped lines stand closer than the font is high
constexpr int32_t kPictureTextIndent = 25; // of text over a picture
constexpr int32_t kPictureTextLift = 30;
constexpr int32_t kAddIconMargin = 10; // from the right and the top edge
constexpr uint32_t kPictureTint = 0x7F7C77;
constexpr uint32_t kPictureTintAlpha = 102;
constexpr int32_t kDefaultPictureRadius = 15;
constexpr uint32_t kDefaultVectorPeriod = 50; // ms
constexpr uint32_t kAlphaShift = 24;

// One pixel in a rounded corner of a picture that gets the tint.
uint32_t TintedCornerPixel(uint32_t pixel, uint32_t coverage) {
    if (pixel == kUnpainted)
        return coverage << kAlphaShift | kPictureTint;
    return pixelops::BlendPixel(pixel, kPictureTint, coverage * kPictureTintAlpha >> 8);
}

// Lays the tint over a rectangle with rounded corners.
void TintPicture(CVrGuiFrameBuffer& target, const CVrRect& area, int32_t radius) {
    if (!target.Fits(area))
        return;
    const uint8_t* table = CVrGuiFrameBuffer::GetCornerTable(radius);
    const int32_t corner = radius + 1;
    const int32_t rows = std::min(area.Bottom(), target.DrawableHeight()) - area.y;
    for (int32_t y = 0; y < rows; y++) {
        uint32_t* row = target.Row(area.y + y) + area.x;
        const int32_t fromEdge = std::min(y, area.height - 1 - y); // rows to the nearer of top and bottom
        int32_t left = 0, right = area.width;
        if (fromEdge < corner) {
            const uint8_t* coverage = table + fromEdge * corner;
            for (; left < std::min(corner, area.width); left++)
                row[left] = TintedCornerPixel(row[left], coverage[left]);
            for (; right > left && area.width - right < corner; right--)
                row[right - 1] = TintedCornerPixel(row[right - 1], coverage[area.width - right]);
        }
        pixelops::BestLoops().blendColor(row + left, static_cast<size_t>(right - left), kPictureTint,
                                         kPictureTintAlpha);
    }
}

CVrSize Measured(CVrGuiFont* font, const CVrxStringU& line) {
    CVrSize size;
    if (font)
        font->MeasureText(size, line);
    return size;
}

} // namespace

// The text of a button, ready for painting.
struct CVrGuiButton::Lines {
    CVrGuiFont* firstFont = nullptr;
    CVrGuiFont* secondFont = nullptr;
    CVrxStringU first; // with LayoutWrap all lines
    CVrxStringU second;
    bool hasSecond = false;
    CVrSize size;             // of the first line
    int32_t secondHeight = 0; // 0 without a second line
};

CVrGuiButton::CVrGuiButton() {
    type = ElementType::ActionbarBtn;
    className = "CVrGuiButton";
}

CVrGuiButton::~CVrGuiButton() {
    SetImage(nullptr, false);
}

void CVrGuiButton::SetImage(CVrGuiImage* newImage, bool owned) {
    if (ownsImage && image != newImage)
        delete image;
    image = newImage;
    ownsImage = owned;
    MarkContentChanged();
}

// ---- Symbols ----

namespace {

bool LoadSymbol(CVrGuiIcon& icon, const CVrxStringU& name, uint32_t size, bool isStatic) {
    return isStatic ? icon.SetStaticIconFromFile(name, size, true) : icon.SetIconFromFile(name, size);
}

} // namespace

void CVrGuiButton::LoadIcons() {
    constexpr const char* kTag = "CVrGuiButton::LoadIcons";
    if (rect.width == 0 || rect.height == 0 || iconName.IsEmpty())
        return;
    if (!icon.HasBitmap()) {
        Log(LogEvent, kTag, "Reload %s", iconName.CStr());
        if (icon.image.parseFailed)
            return;
        if (!LoadSymbol(icon, iconName, iconSize, iconStatic)) {
            Log(LogError, kTag, "Error loading %s %d", iconName.CStr(), static_cast<int32_t>(iconSize));
            return;
        }
        MarkContentChanged();
    }
    if (addIconName.IsEmpty() || addIcon.HasBitmap())
        return;
    Log(LogEvent, kTag, "Reload %s", addIconName.CStr());
    if (addIcon.image.parseFailed)
        return;
    if (!addIcon.SetIconFromFile(addIconName, addIconSize))
        Log(LogError, kTag, "Error loading add %s %d", addIconName.CStr(), static_cast<int32_t>(addIconSize));
    MarkContentChanged();
}

bool CVrGuiButton::ReloadIcon() {
    if (iconName.IsEmpty())
        return false;
    MarkContentChanged();
    icon.image.parseFailed = 0;
    if (LoadSymbol(icon, iconName, iconSize, iconStatic))
        return true;
    Log(LogError, "CVrGuiButton::ReloadIcon", "Error loading %s %d", iconName.CStr(),
        static_cast<int32_t>(iconSize));
    return false;
}

CVrGuiIcon* CVrGuiButton::GetIconForSize(uint32_t size) {
    if (size == iconSize)
        return icon.HasBitmap() ? &icon : nullptr;
    // A symbol that could not be loaded is not tried again at every painting.
    if (altIcon.requestedSize != size || altIcon.fileName != iconName)
        LoadSymbol(altIcon, iconName, size, iconStatic);
    return altIcon.HasBitmap() ? &altIcon : nullptr;
}

bool CVrGuiButton::HasSymbol() const {
    return vector || icon.HasBitmap();
}

uint32_t CVrGuiButton::ShownIconSize() const {
    return vector ? iconSize : icon.requestedSize;
}

// ---- Placing ----

int32_t CVrGuiButton::GapOfText() const {
    return style ? style->text.gap : 0;
}

int32_t CVrGuiButton::GapOfSymbol() const {
    return style ? style->symbol.gap : 0;
}

// A line feed separates the two lines; wrapped text is one text with as many as it likes.
void CVrGuiButton::SplitText(Lines& lines) const {
    lines.firstFont = GetFont(fontIndex);
    const int32_t lineFeed = Has(LayoutWrap) ? -1 : text.Find('\n');
    if (lineFeed < 0) {
        lines.first = text;
        return;
    }
    lines.secondFont = GetFont(font2Index);
    lines.first = text.Left(lineFeed);
    lines.second = text.Mid(lineFeed + 1, static_cast<int32_t>(text.GetLength()));
    lines.hasSecond = true;
}

void CVrGuiButton::MeasureLines(Lines& lines) const {
    if (Has(LayoutWrap))
        WrapText(lines.first, lines.firstFont, lines.first,
                 std::max(rect.width - GapOfText() - kWrapMargin, 0),
                 static_cast<uint32_t>(std::max(rect.height, 0)) + 1); // a line is at least a pixel high
    if (Has(LayoutShorten))
        ShortenText(lines.first, lines.firstFont, lines.first, std::max(rect.width - kShortenMargin, 0));
    lines.size = Measured(lines.firstFont, lines.first);
    if (lines.hasSecond)
        lines.secondHeight = Measured(lines.secondFont, lines.second).height;
}

void CVrGuiButton::PlaceSymbol(Placement& place, const CVrPoint& origin) const {
    const auto size = static_cast<int32_t>(ShownIconSize());
    const int32_t height = image ? static_cast<int32_t>(image->height) : rect.height;
    int32_t x = (rect.width - size) / 2;
    if (Has(LayoutIconLeft))
        x = GapOfSymbol();
    else if (Has(LayoutIconRight))
        x = rect.width - GapOfSymbol() - size;
    place.symbol = origin.Moved(x + iconOffsetX, (height - size) / 2 + iconOffsetY);
}

void CVrGuiButton::PlaceTextX(Placement& place, Lines& lines, const CVrPoint& origin) const {
    const bool besideSymbol = Has(LayoutIconLeft) && HasSymbol();
    const int32_t symbolX = place.symbol.x - origin.x;
    int32_t x = (rect.width - lines.size.width) / 2;
    if (Has(LayoutTextLeft) && besideSymbol) {
        x = symbolX + GapOfText() + static_cast<int32_t>(ShownIconSize());
        if (Has(LayoutShorten)) {
            ShortenText(lines.first, lines.firstFont, lines.first, rect.width - x - kShortenMargin);
            lines.size = Measured(lines.firstFont, lines.first);
        }
    } else if (Has(LayoutTextLeft)) {
        x = GapOfText();
    } else if (Has(LayoutTextRight)) {
        x = rect.width - lines.size.width - GapOfText() - (besideSymbol ? symbolX : 0);
    }
    // A text that is too wide begins with the button and dissolves at its end.
    place.first.x = place.second.x = foundation::SaturatedAdd(origin.x, std::max(x, 0));
}

void CVrGuiButton::PlaceTextY(Placement& place, const Lines& lines, const CVrPoint& origin) const {
    const int32_t height = lines.size.height;
    const bool atBottom = Has(LayoutTextBottom) || (Has(LayoutTextBelow) && !image);
    if (atBottom) {
        place.second.y = origin.y + rect.height - lines.secondHeight;
        place.first.y = place.second.y - height;
    } else if (Has(LayoutTextBelow)) {
        place.first.y = origin.y;
        place.second.y = origin.y + lines.secondHeight;
    } else {
        place.first.y = origin.y + (rect.height - height) / 2;
        place.second.y = place.first.y + height; // nothing in the system builds this one
    }
    if (!Has(LayoutTextBottom)) {
        place.first.y += textOffsetY;
        place.second.y += textOffsetY;
    }
    if (IsStacked() && HasSymbol()) {
        place.symbol.y -= height / 2 + stackGap / 2;
        place.first.y = place.symbol.y + stackGap + static_cast<int32_t>(ShownIconSize());
    }
}

// ---- Painting ----

void CVrGuiButton::DrawContent() {
    if (!IsDrawable() || rect.width == 0 || rect.height == 0 || layout == 0)
        return;
    CVrPoint origin;
    CVrGuiElement* target = GetRenderTarget(origin, false);
    if (!target)
        return;
    Lines lines;
    if (Has(LayoutAnyText)) {
        SplitText(lines);
        MeasureLines(lines);
    }
    Placement place;
    PlaceSymbol(place, origin);
    PlaceTextX(place, lines, origin);
    PlaceTextY(place, lines, origin);
    DrawUnderlay(*target, place, origin);
    DrawTextLines(*target, place, lines, foundation::SaturatedAdd(origin.y, rect.height));
    DrawSymbol(*target, place);
    DrawAddIcon(*target, origin);
    ApplyAlphaRamp();
}

void CVrGuiButton::PlaceTextByPicture(Placement& place) const {
    CVrPoint by;
    if (Has(LayoutTextBelow))
        by.y += static_cast<int32_t>(image->height);
    if (Has(LayoutTextBottom))
        by = by + CVrPoint(kPictureTextIndent, -kPictureTextLift);
    place.first = place.first + by;
    place.second = place.second + by;
}

void CVrGuiButton::DrawUnderlay(CVrGuiElement& target, Placement& place, const CVrPoint& origin) {
    if (!image)
        return;
    const int32_t radius = style ? style->element.rad : kDefaultPictureRadius;
    const CVrRect area(origin, rect.Size());
    target.DrawRoundImage(area, radius, image);
    PlaceTextByPicture(place);
    if (HasSymbol())
        TintPicture(target,
                    CVrRect(origin.x, origin.y, std::min(area.width, static_cast<int32_t>(image->width)),
                            std::min(area.height, static_cast<int32_t>(image->height))),
                    radius);
}

void CVrGuiButton::DrawTextLines(CVrGuiElement& target, const Placement& place, const Lines& lines,
                                 int32_t bottom) {
    if (!Has(LayoutAnyText) || !lines.firstFont)
        return;
    if (Has(LayoutWrap)) {
        DrawWrapped(target, place, lines, bottom);
        return;
    }
    target.DrawText(place.first.Moved(textOffsetX, 0), *lines.firstFont, lines.first.CStr(), TextColor(),
                    BackgroundColor(), rect.width);
    if (lines.hasSecond && lines.secondFont)
        target.DrawText(place.second.Moved(textOffsetX, 0), *lines.secondFont, lines.second.CStr(),
                        SecondLineColor(), BackgroundColor(), rect.width);
}

void CVrGuiButton::DrawWrapped(CVrGuiElement& target, const Placement& place, const Lines& lines,
                               int32_t bottom) {
    const int32_t lineHeight = std::max(Measured(lines.firstFont, "Ay").height, 1);
    const bool isCentered = !Has(LayoutTextLeft | LayoutTextRight);
    // The last line that shows is the last one with room; the first always shows.
    const int32_t last = std::max(bottom - lineHeight, place.first.y);
    CVrPoint position = place.first.Moved(textOffsetX, 0);
    int32_t begin = 0;
    for (int32_t lineFeed = 0; lineFeed >= 0 && position.y <= last; begin = lineFeed + 1) {
        lineFeed = lines.first.Find('\n', static_cast<uint32_t>(begin));
        const CVrxStringU line = lines.first.Mid(begin, lineFeed < 0 ? INT32_MAX : lineFeed - begin);
        CVrPoint at = position;
        if (isCentered)
            at.x += (lines.size.width - Measured(lines.firstFont, line).width) / 2;
        target.DrawText(at, *lines.firstFont, line.CStr(), TextColor(), BackgroundColor(), rect.width);
        position.y += lineHeight - kWrappedOverlap;
    }
}

void CVrGuiButton::DrawSymbol(CVrGuiElement& target, const Placement& place) {
    if (vector) {
        target.DrawVectorFrame(*vector, place.symbol, SymbolColor());
        return;
    }
    const CVrGuiIcon* shown = icon.HasBitmap() ? GetIconForSize(ShownIconSize()) : nullptr;
    if (shown && shown->HasBitmap())
        target.DrawSvg(shown->image, place.symbol, SymbolColor());
}

void CVrGuiButton::DrawAddIcon(CVrGuiElement& target, const CVrPoint& origin) {
    if (!addIcon.HasBitmap())
        return;
    const auto size = static_cast<int32_t>(addIcon.requestedSize);
    target.DrawSvg(addIcon.image, origin.Moved(rect.width - size - kAddIconMargin, kAddIconMargin),
                   SymbolColor());
}

// Lets the button fade out to one side when its store is composed.
void CVrGuiButton::ApplyAlphaRamp() {
    if (alphaRamp == RampNone || !HasOwnStore() || !HasStore())
        return;
    const int32_t width = storeSize.width;
    for (int32_t y = 0; y < storeSize.height; y++) {
        uint32_t* row = Row(y);
        for (int32_t x = 0; x < width; x++) {
            const int32_t share = alphaRamp == RampFadesLeft ? x : width - x;
            const auto alpha = static_cast<uint8_t>((int64_t{share} << 8) / width);
            row[x] = (row[x] & 0x00FFFFFF) | uint32_t{alpha} << kAlphaShift;
        }
    }
}

// ---- Vector animation ----

bool CVrGuiButton::OnTimer(uint64_t now) {
    if (!vector || !vector->HasContent())
        return false;
    vector->Advance(now);
    if (!IsVisibleInTree()) // timers go on in hidden pages; the time counts, but nobody sees it
        return false;
    Invalidate();
    return true;
}

void CVrGuiButton::RestartVector() {
    if (!vector || !vector->HasContent()) {
        StopTimer();
        return;
    }
    vector->Start(TickMs());
    SetTimer(vectorPeriod != 0 ? vectorPeriod : kDefaultVectorPeriod, true);
}
