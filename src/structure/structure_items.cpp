// From the configuration text to the tree of items.
//
// A malformed object ends the reading of everything above it up to the top-level member, which is left as far
// as it came; the next top-level member goes on. A control whose own values have the wrong JSON type is taken
// out again with everything below it.
#include "foundation/array.h"
#include "foundation/class_factory.h"
#include "foundation/log.h"
#include "structure/hex.h"
#include "structure/structure.h"

namespace {

constexpr const char* kTag = "CVrStructure::ParseJsonConfig";

// A number, or a string of hexadecimal digits up to the first other character. False for anything else.
bool ReadId(const CVrJsonValue* node, uint32_t& id) {
    if (!node || (!node->IsNumber() && !node->IsString()))
        return false;
    if (node->IsNumber()) {
        id = node->ToUint32();
        return true;
    }
    id = 0;
    for (const char c : node->value) {
        if (!AppendHexDigit(c, id))
            break;
    }
    return true;
}

// A key that is missing, or has a value of the wanted kind.
bool ReadWantedText(const CVrJsonValue& node, const char* key, CVrxStringU& out) {
    return item_json::ReadTextKey(&node, key, out) || !node.Find(key);
}

bool ReadWantedNumber(const CVrJsonValue& node, const char* key, int32_t& out) {
    return item_json::ReadNumberKey(&node, key, out) || !node.Find(key);
}

bool IsMissingOrArray(const CVrJsonValue& node, const char* key) {
    const CVrJsonValue* value = node.Find(key);
    return !value || value->IsArray();
}

void LogDropped(uint32_t uuid, const char* reason) {
    Log(LogError, kTag, "object U=%x dropped or incomplete: %s", uuid, reason);
}

} // namespace

void CVrStructure::Clear() {
    items.RemoveAll();
    audioZones.Clear();
    root.DeleteChildren();
    root.defaultScreen = false;
    m_defaultScreen = nullptr;
    m_hasStaleEntries = false;
    nextAutoId = kFirstAutoId;
}

bool CVrStructure::LoadJsonConfig(const CVrxStringU& config, const CVrxStringU& cats,
                                  const CVrxStringU& roomTexts, const CVrxStringU& symbolTexts) {
    constexpr const char* kLoadTag = "CVrStructure::LoadJsonConfig";
    Clear();
    {
        CVrJsonParser parser;
        const CVrJsonValue* house = parser.ParseRoot(config);
        if (!house) {
            Log(LogError, kLoadTag, "Parse error config %d", static_cast<int32_t>(config.GetLength()));
            return false;
        }
        Log(LogEvent, kLoadTag, "%d config children", static_cast<int32_t>(house->GetChildCount()));
        for (const CVrJsonValue* member : house->Children())
            ParseJsonConfig(*member, root);
    }
    if (m_hasStaleEntries)
        RebuildItems();
    LoadJsonSymbols(symbolTexts);
    LoadJsonCats(cats);
    LoadJsonRooms(roomTexts);
    return true;
}

bool CVrStructure::ParseJsonConfig(const CVrJsonValue& node, CVrStructureItem& parent) {
    VrArray<Level> open; // the items whose children are being read, outermost first
    Level level = {};
    Step step = BeginItem(node, parent, level);
    for (;;) {
        if (step == Step::Failed)
            return false;
        if (step == Step::Descend) {
            Log(LogEvent, kTag, "%d sub children", static_cast<int32_t>(level.list->GetChildCount()));
            if (!open.Add(level))
                return false;
        }
        while (!open.IsEmpty() && open.Last().next == open.Last().list->GetChildCount()) {
            level = open.Last();
            open.RemoveAt(open.GetSize() - 1);
            if (!FinishItem(level))
                return false;
        }
        if (open.IsEmpty())
            return true;
        Level& inner = open.Last();
        step = BeginItem(*inner.list->GetChild(inner.next++), *inner.item, level);
    }
}

// Reads an object up to its `sub`. Descend: `level` is filled, and FinishItem is due behind its members.
CVrStructure::Step CVrStructure::BeginItem(const CVrJsonValue& node, CVrStructureItem& parent, Level& level) {
    if (!node.IsObject()) {
        LogDropped(parent.uuid, "a member is no object");
        return Step::Failed;
    }
    return node.Find("T") ? BeginControl(node, parent, level) : BeginGroup(node, parent, level);
}

CVrStructure::Step CVrStructure::BeginControl(const CVrJsonValue& node, CVrStructureItem& parent,
                                              Level& level) {
    uint32_t uuid = 0;
    int32_t type = 0;
    const char* fault = nullptr;
    if (!ReadId(node.Find("U"), uuid))
        fault = "U is missing or neither number nor string";
    else if (!item_json::ReadNumberKey(&node, "T", type))
        fault = "T is no number";
    else if (*CClassFactory::GetClassSuffix(static_cast<uint32_t>(type)) == '\0')
        fault = "T is no type of this display";
    if (fault) {
        LogDropped(uuid, fault);
        return Step::Failed;
    }
    auto* item = static_cast<CVrStructureItem*>(
        CClassFactory::Instance().Create(CClassFactory::GetStructureClassName(static_cast<uint32_t>(type))));
    if (!item)
        return Step::Failed; // the factory has said so
    item->uuid = uuid;
    item->type = type;
    parent.AddChild(item);
    if (!ReadWantedText(node, "N", item->name) || !ReadWantedNumber(node, "R", item->room) ||
        !ReadWantedNumber(node, "C", item->category) || !ReadWantedNumber(node, "I", item->icon))
        fault = "N is no string, or R, C or I no number";
    if (!fault) {
        ApplyDefaultScreenFlag(*item, node.Find("defScr"));
        ReadBool(node.Find("actCtrl"), item->activeController);
        if (!IsMissingOrArray(node, "sub"))
            fault = "sub is no array";
    }
    if (fault) {
        LogDropped(uuid, fault);
        DropLastChild(parent);
        return Step::Failed;
    }
    level = {&node, item, node.Find("sub"), 0};
    if (level.list)
        return Step::Descend;
    return FinishItem(level) ? Step::Done : Step::Failed;
}

CVrStructure::Step CVrStructure::BeginGroup(const CVrJsonValue& node, CVrStructureItem& parent,
                                            Level& level) {
    auto* group = new CVrStructureItem;
    item_json::ReadTextKey(&node, "N", group->name);
    item_json::ReadNumberKey(&node, "I", group->icon);
    ReadId(node.Find("U"), group->uuid);
    if (group->uuid == 0)
        group->uuid = NextAutoId();
    ApplyDefaultScreenFlag(*group, node.Find("defScr"));
    ReadBool(node.Find("actCtrl"), group->activeController);
    parent.AddChild(group);
    Enter(*group);
    if (!IsMissingOrArray(node, "sub")) {
        LogDropped(group->uuid, "sub is no array");
        return Step::Failed;
    }
    level = {&node, group, node.Find("sub"), 0};
    return level.list ? Step::Descend : Step::Done;
}

// What stands behind `sub`: the keys of the control's kind.
bool CVrStructure::FinishItem(const Level& level) {
    CVrStructureItem& item = *level.item;
    if (item.IsGroup())
        return true;
    if (!IsMissingOrArray(*level.node, "moodList") || !item.ReadOwnKeys(*level.node)) {
        LogDropped(item.uuid, "a key of its kind has the wrong type");
        DropLastChild(*item.parent);
        return false;
    }
    Enter(item);
    return true;
}

// The first marked item in document order wins.
void CVrStructure::ApplyDefaultScreenFlag(CVrStructureItem& item, const CVrJsonValue* node) {
    bool isWanted = false;
    if (!ReadBool(node, isWanted))
        return;
    if (isWanted && m_defaultScreen) {
        Log(LogWarning, "VrStructureApplyDefaultScreenFlag", "Ignoring duplicate default screen marker U=%x",
            item.uuid);
        return;
    }
    item.defaultScreen = isWanted;
    if (isWanted)
        m_defaultScreen = &item;
}

void CVrStructure::Enter(CVrStructureItem& item) {
    item.m_isEntered = true;
    items.SetAt(static_cast<int32_t>(item.uuid), &item);
}

void CVrStructure::DropLastChild(CVrStructureItem& parent) {
    CVrStructureItem& dropped = *parent.children[parent.children.GetSize() - 1];
    for (CVrStructureItem* item = &dropped; item; item = item->NextBelow(dropped)) {
        if (item == m_defaultScreen)
            m_defaultScreen = nullptr;
        const auto key = static_cast<int32_t>(item->uuid);
        if (items.Lookup(key) != item)
            continue;
        items.SetAt(key, nullptr);
        m_hasStaleEntries = true;
    }
    parent.DeleteLastChild();
}

// The map knows no removal, and a dropped item may have hidden an earlier one of the same number.
void CVrStructure::RebuildItems() {
    items.RemoveAll();
    m_hasStaleEntries = false;
    for (CVrStructureItem* item = root.NextBelow(root); item; item = item->NextBelow(root)) {
        if (item->m_isEntered)
            Enter(*item);
    }
}

uint32_t CVrStructure::NextAutoId() {
    do
        nextAutoId++;
    while (items.Lookup(static_cast<int32_t>(nextAutoId)));
    return nextAutoId;
}
