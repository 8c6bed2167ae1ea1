#include "structure/style_sheet.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>

#include "foundation/json.h"
#include "foundation/log.h"
#include "structure/hex.h"

namespace {

struct ClassRow {
    const char* name;
    uint32_t startFlags; // bits of the element's `flags`
};

// The order is the contract: an element's `type` is its row.
constexpr ClassRow kClassRows[] = {
    {"CVrGuiMainWin", 32},          {"CVrGuiMenu", 42},
    {"CVrGuiMenuBtn", 32},          {"CVrGuiFrame", 48},
    {"CVrGuiFrameArea", 33},        {"CVrGuiFrameBtn", 32},
    {"CVrGuiFrameCoverBtn", 32},    {"CVrGuiFrameListBtn", 32},
    {"CVrGuiActionbar", 32},        {"CVrGuiActionbarBtn", 32},
    {"CVrGuiPopupFrame", 41},       {"CVrGuiPopupMenu", 41},
    {"CVrGuiPopupMenuBtn", 32},     {"CVrGuiPopupMenuSlider", 32},
    {"CVrGuiButton", 40},           {"CVrGuiPopupSliderFrame", 32},
    {"CVrGuiPopupSlider", 40},      {"CVrGuiShadeElement", 32},
    {"CVrGuiPlainText", 32},        {"CVrGuiPlainTextSmall", 32},
    {"CVrGuiShadeIconElement", 32}, {"CVrGuiTreeIconElement", 32},
    {"CVrGuiTreeListBtn", 32},      {"CVrGuiTreeHeaderBtn", 32},
    {"CVrGuiPairingScreen", 32},    {"CVrGuiPairingRetryBtn", 32},
    {"CVrGuiScreenSaver", 32},      {"CVrGuiVideo", 40},
};

template <typename T>
void DeleteAll(VrPtrs<T>& list) {
    for (T* entry : list)
        delete entry;
    list.Clear();
}

CVrxStringU Trimmed(const CVrxStringU& text) {
    uint32_t from = 0, to = text.GetLength();
    while (from < to && text[from] == ' ')
        from++;
    while (to > from && text[to - 1] == ' ')
        to--;
    return text.Mid(static_cast<int32_t>(from), static_cast<int32_t>(to - from));
}

// The first of an object's members, which alone counts; null for another kind of entry.
const CVrJsonValue* FirstMember(const CVrJsonValue& entry) {
    return entry.IsObject() && entry.GetChildCount() > 0 ? entry.GetChild(0) : nullptr;
}

int32_t ParseInteger(const CVrxStringU& text) {
    return foundation::SaturateToInt32(strtoll(text.CStr(), nullptr, 10));
}

// A whole list, read by `read(const CVrJsonValue& member)` for the first member of each of its objects.
template <typename Reader>
void ForEachNamed(const CVrJsonValue* list, Reader read) {
    if (!list)
        return;
    for (const CVrJsonValue* entry : list->Children())
        if (const CVrJsonValue* member = FirstMember(*entry))
            read(*member);
}

} // namespace

// ---- Layout strings ----

void CStyle::Parse(const CVrxStringU& text) {
    *this = CStyle();
    spec = text;
    uint32_t from = 0;
    while (from <= text.GetLength()) {
        const int32_t comma = text.Find(',', from);
        const uint32_t to = comma < 0 ? text.GetLength() : static_cast<uint32_t>(comma);
        const CVrxStringU item =
            Trimmed(text.Mid(static_cast<int32_t>(from), static_cast<int32_t>(to - from)));
        const int32_t equals = item.Find('=');
        if (equals > 0)
            SetItem(Trimmed(item.Left(equals)),
                    Trimmed(item.Mid(equals + 1, static_cast<int32_t>(item.GetLength()))));
        from = to + 1;
    }
}

void CStyle::SetItem(const CVrxStringU& key, const CVrxStringU& value) {
    struct Place {
        const char* key;
        int32_t CStyle::*number;
        uint32_t bit, percentBit;
    };
    static constexpr Place kPlaces[] = {
        {"x", &CStyle::x, AbsoluteX, PercentX},
        {"y", &CStyle::y, AbsoluteY, PercentY},
        {"w", &CStyle::w, AbsoluteW, PercentW},
        {"h", &CStyle::h, AbsoluteH, PercentH},
        {"l", &CStyle::x, Left, 0},
        {"t", &CStyle::y, Top, 0},
        {"r", &CStyle::w, Right, 0},
        {"b", &CStyle::h, Bottom, 0},
        {"rad", &CStyle::rad, 0, 0},
        {"f", &CStyle::rad, 0, 0},
        {"g", &CStyle::gap, 0, 0},
        {"all", &CStyle::all, 0, 0},
    };
    if (value.IsEmpty())
        return;
    const auto number = ParseInteger(value);
    if (key == "m") {
        x = y = w = h = number;
        mask |= AllMargins;
        return;
    }
    for (const Place& place : kPlaces) {
        if (!(key == place.key))
            continue;
        this->*place.number = number;
        mask |= place.percentBit && value.Find('%') >= 0 ? place.percentBit : place.bit;
        return;
    }
}

CVrRect CStyle::Evaluate(const CVrSize* reference) const {
    CVrRect result;
    if (mask & (AbsoluteX | Left))
        result.x = x;
    if (mask & (AbsoluteY | Top))
        result.y = y;
    if (mask & AbsoluteW)
        result.width = w;
    if (mask & AbsoluteH)
        result.height = h;
    if (!reference)
        return result;
    const auto percent = [](int32_t whole, int32_t part) {
        return foundation::SaturateToInt32(int64_t{whole} * part / 100);
    };
    if (mask & PercentX)
        result.x = percent(reference->width, x);
    if (mask & PercentY)
        result.y = percent(reference->height, y);
    if (mask & PercentW)
        result.width = percent(reference->width, w);
    if (mask & PercentH)
        result.height = percent(reference->height, h);
    if (mask & Right)
        result.width = foundation::SaturateToInt32(int64_t{reference->width} - w - result.x);
    if (mask & Bottom)
        result.height = foundation::SaturateToInt32(int64_t{reference->height} - h - result.y);
    return result;
}

// ---- The sheet ----

CVrStyleSheet::~CVrStyleSheet() {
    ClearLists();
    ClearRows();
}

void CVrStyleSheet::ClearLists() {
    DeleteAll(colorList);
    DeleteAll(fonts);
    DeleteAll(values);
}

void CVrStyleSheet::ClearRows() {
    DeleteAll(classRows);
    classNames.SetSize(0);
}

void CVrStyleSheet::PrepareClasses() {
    ClearRows();
    for (const ClassRow& row : kClassRows) {
        auto* entry = new CVrClassStyle;
        entry->className = row.name;
        entry->startFlags = row.startFlags;
        Log(LogTrace, "CVrStructure::PrepareClasses", "%d: %s", static_cast<int32_t>(classRows.GetSize()),
            row.name);
        classNames.Add(row.name);
        classRows.Add(entry);
    }
}

const CVrClassStyle* CVrStyleSheet::Row(int32_t type) const {
    const bool known = type >= 0 && type < static_cast<int32_t>(classRows.GetSize());
    return classRows.GetAt(known ? static_cast<uint32_t>(type) : 0);
}

uint32_t CVrStyleSheet::Color(uint32_t index) const {
    const CVrColorSpec* color = colorList.GetAt(index);
    return color ? color->value : 0;
}

int32_t CVrStyleSheet::Value(uint32_t index) const {
    const CVrStyleValue* entry = values.GetAt(index);
    return entry ? entry->value : 0;
}

bool CVrStyleSheet::Load(const CVrxStringU& text) {
    constexpr const char* kTag = "CVrStructure::LoadJsonStyles";
    Log(LogTrace, kTag, "%s", text.CStr());
    CVrJsonParser parser;
    const CVrJsonValue* root = parser.ParseRoot(text);
    if (!root) {
        Log(LogError, kTag, "Parse error styles %d", static_cast<int32_t>(text.GetLength()));
        return false;
    }
    const auto number = [root](const char* key) {
        const CVrJsonValue* value = root->Find(key);
        return value ? value->ToInt32() : 0;
    };
    Log(LogEvent, kTag, "styles: %d %d", number("version"), number("formatVersion"));
    ClearLists();
    LoadColors(root->Find("colors"));
    LoadFonts(root->Find("fonts"));
    LoadValues(root->Find("values"));
    LoadRows(root->Find("styles"));
    return true;
}

int32_t CVrStyleSheet::FindColor(const CVrxStringU& name) const {
    for (uint32_t i = 0; i < colorList.GetSize(); i++)
        if (colorList[i]->name == name)
            return static_cast<int32_t>(i);
    return -1;
}

// A name that stands earlier in the list resolves at once, one that comes later in the second pass; a chain
// of forward references resolves only as far as the order allows.
void CVrStyleSheet::LoadColors(const CVrJsonValue* list) {
    ForEachNamed(list, [this](const CVrJsonValue& member) {
        auto* color = new CVrColorSpec;
        color->name = member.name;
        color->valueText = member.value;
        const int32_t known = FindColor(color->valueText);
        color->value = known >= 0 ? Color(static_cast<uint32_t>(known)) : ParseHex(color->valueText.CStr());
        colorList.Add(color);
    });
    for (CVrColorSpec* color : colorList)
        if (const int32_t known = FindColor(color->valueText); known >= 0)
            color->value = Color(static_cast<uint32_t>(known));
}

void CVrStyleSheet::LoadFonts(const CVrJsonValue* list) {
    ForEachNamed(list, [this](const CVrJsonValue& member) {
        auto* font = new CVrFontSpec;
        font->name = member.name;
        font->size = member.ToInt32();
        font->bold = member.name.Find("_bold") > 0;
        fonts.Add(font);
    });
}

void CVrStyleSheet::LoadValues(const CVrJsonValue* list) {
    ForEachNamed(list, [this](const CVrJsonValue& member) {
        auto* entry = new CVrStyleValue;
        entry->name = member.name;
        entry->value = member.ToInt32();
        values.Add(entry);
    });
}

void CVrStyleSheet::LoadRows(const CVrJsonValue* list) {
    if (!list)
        return;
    Log(LogEvent, "CVrStructure::LoadJsonStyles", "%d style children",
        static_cast<int32_t>(list->GetChildCount()));
    for (const CVrJsonValue* entry : list->Children())
        if (entry->IsObject())
            LoadRow(*entry);
}

void CVrStyleSheet::LoadRow(const CVrJsonValue& entry) {
    const CVrJsonValue* name = entry.Find("N");
    const int32_t index = name ? classNames.Find(name->value) : -1;
    if (index < 0)
        return;
    CVrClassStyle& row = *classRows[static_cast<uint32_t>(index)];
    row.styleName = name->value;
    const auto layout = [&entry](const char* key) {
        const CVrJsonValue* value = entry.Find(key);
        return value ? value->value : CVrxStringU();
    };
    row.element.Parse(layout("element"));
    row.text.Parse(layout("text"));
    row.symbol.Parse(layout("symbol"));
    row.colorNames.Clear();
    std::fill(std::begin(row.colorIndex), std::end(row.colorIndex), uint8_t{0});
    const CVrJsonValue* colors = entry.Find("colors");
    if (!colors)
        return;
    for (uint32_t i = 0; i < colors->GetChildCount() && i < CVrClassStyle::kColors; i++) {
        const CVrxStringU& color = colors->GetChild(i)->name;
        row.colorNames.Add(color);
        const int32_t known = FindColor(color);
        row.colorIndex[i] = known > 0 && known <= UINT8_MAX ? static_cast<uint8_t>(known) : 0;
    }
}
