#include "structure/structure.h"

#include <cstdlib>

#include "foundation/class_factory.h"
#include "foundation/files.h"
#include "foundation/log.h"

namespace {

bool ReadId(const CVrJsonValue* node, uint32_t& id) {
    if (!node)
        return false;
    if (node->IsNumber()) {
        id = node->ToUint32();
        return true;
    }
    if (!node->IsString())
        return false;
    // Hexadecimal digits up to the first other character. A sign or a prefix is such a character too.
    id = 0;
    for (uint32_t i = 0; i < node->value.GetLength(); i++) {
        const char c = node->value[i];
        const char lower = static_cast<char>(c | 0x20);
        if (c >= '0' && c <= '9')
            id = id << 4 | static_cast<uint32_t>(c - '0');
        else if (lower >= 'a' && lower <= 'f')
            id = id << 4 | static_cast<uint32_t>(lower - 'a' + 10);
        else
            break;
    }
    return true;
}

// A key that must be a number if it is there. False: it is something else.
bool ReadWantedNumber(const CVrJsonValue& node, const char* key, int32_t& out) {
    const CVrJsonValue* value = node.Find(key);
    if (value && !value->IsNumber())
        return false;
    if (value)
        out = value->ToInt32();
    return true;
}

int32_t NumberOf(const CVrJsonValue& entry, const char* key) {
    const CVrJsonValue* value = entry.Find(key);
    return value ? value->ToInt32() : 0;
}

bool LoadRoomCats(const CVrJsonValue* root, CVrTypedMapIntToPtr<CRoomCat>& table) {
    if (!root)
        return false;
    for (const CVrJsonValue* entry : root->Children()) {
        auto* record = new CRoomCat;
        record->id = NumberOf(*entry, "U");
        record->icon = NumberOf(*entry, "I");
        item_json::ReadTextKey(entry, "N", record->name);
        table.SetAt(record->id, record);
    }
    return true;
}

// True unless the text cannot be parsed.
bool LoadSymbolTable(const CVrxStringU& text, CVrTypedMapIntToPtr<CVrxStringU>& table, const char* tag) {
    table.Clear();
    CVrJsonParser parser;
    const CVrJsonValue* root = parser.ParseRoot(text);
    if (!root) {
        Log(LogError, tag, "Parse error symbols %d", static_cast<int32_t>(text.GetLength()));
        return false;
    }
    Log(LogEvent, tag, "%d symbol children", static_cast<int32_t>(root->GetChildCount()));
    for (const CVrJsonValue* entry : root->Children()) {
        if (!entry->Find("I") || NumberOf(*entry, "I") < 0)
            continue;
        auto* name = new CVrxStringU;
        item_json::ReadTextKey(entry, "N", *name);
        table.SetAt(NumberOf(*entry, "I"), name);
    }
    return true;
}

} // namespace

// ---- The four texts ----

void CVrStructure::Clear() {
    items.RemoveAll();
    audioZones.Clear();
    for (CVrStructureItem* item : root.children)
        delete item;
    root.children.Clear();
    root.defaultScreen = false;
    m_defaultScreen = nullptr;
    nextAutoId = kFirstAutoId;
}

bool CVrStructure::LoadJsonConfig(const CVrxStringU& config, const CVrxStringU& cats, const CVrxStringU& roomTexts,
                                  const CVrxStringU& symbolTexts) {
    constexpr const char* kTag = "CVrStructure::LoadJsonConfig";
    Clear();
    {
        CVrJsonParser parser;
        const CVrJsonValue* house = parser.ParseRoot(config);
        if (!house) {
            Log(LogError, kTag, "Parse error config %d", static_cast<int32_t>(config.GetLength()));
            return false;
        }
        Log(LogEvent, kTag, "%d config children", static_cast<int32_t>(house->GetChildCount()));
        uint32_t index = 0;
        for (const CVrJsonValue* child : house->Children()) {
            index++;
            if (!ParseJsonConfig(*child, root, 1))
                Log(LogError, kTag, "Entry %u of the configuration is dropped or incomplete", index);
        }
    }
    LoadJsonSymbols(symbolTexts);
    LoadJsonCats(cats);
    LoadJsonRooms(roomTexts);
    return true;
}

bool CVrStructure::LoadJsonCats(const CVrxStringU& text) {
    constexpr const char* kTag = "CVrStructure::LoadJsonCats";
    categories.Clear();
    CVrJsonParser parser;
    const CVrJsonValue* list = parser.ParseRoot(text);
    if (!LoadRoomCats(list, categories)) {
        Log(LogError, kTag, "Parse error cats %d", static_cast<int32_t>(text.GetLength()));
        return false;
    }
    Log(LogEvent, kTag, "%d cat children", static_cast<int32_t>(list->GetChildCount()));
    return true;
}

bool CVrStructure::LoadJsonRooms(const CVrxStringU& text) {
    rooms.Clear();
    CVrJsonParser parser;
    if (LoadRoomCats(parser.ParseRoot(text), rooms))
        return true;
    Log(LogError, "CVrStructure::LoadJsonRooms", "Parse error rooms %d", static_cast<int32_t>(text.GetLength()));
    return false;
}

bool CVrStructure::LoadJsonSymbols(const CVrxStringU& text) {
    return LoadSymbolTable(text, symbols, "CVrStructure::LoadJsonSymbols");
}

bool CVrStructure::LoadJsonStaticSymbols() {
    uint32_t size = 0;
    const uint8_t* resource = GetResource(ResourceStaticSymbols, size);
    if (!resource || size == 0)
        return false;
    CVrxStringU text;
    text.AssignBytes(resource, size);
    return LoadSymbolTable(text, staticSymbols, "CVrStructure::LoadJsonStaticSymbols");
}

void CVrStructure::CopySymbolName(CVrxStringU& out, const CVrTypedMapIntToPtr<CVrxStringU>& table,
                                  int32_t number) const {
    const CVrxStringU* name = table.Lookup(number);
    if (!name)
        name = staticSymbols.Lookup(kUnknownSymbol);
    out = name ? *name : CVrxStringU();
}

void CVrStructure::GetSymbolName(CVrxStringU& out, int32_t number) const {
    CopySymbolName(out, symbols, number);
}

void CVrStructure::GetStaticSymbolName(CVrxStringU& out, int32_t number) const {
    CopySymbolName(out, staticSymbols, number);
}

// ---- Items ----

// False: the object, or something below it, failed. What that ends is decided level by level: a failing member ends
// the lists of all its ancestors, and the top-level member after it goes on.
bool CVrStructure::ParseJsonConfig(const CVrJsonValue& node, CVrStructureItem& parent, int32_t depth) {
    if (!node.IsObject())
        return false;
    const CVrJsonValue* typeNode = node.Find("T");
    return typeNode ? ParseControl(node, *typeNode, parent, depth) : ParseGroup(node, parent, depth);
}

bool CVrStructure::ParseControl(const CVrJsonValue& node, const CVrJsonValue& typeNode, CVrStructureItem& parent,
                                int32_t depth) {
    uint32_t uuid = 0;
    if (!typeNode.IsNumber() || !ReadId(node.Find("U"), uuid))
        return false;
    const int32_t type = typeNode.ToInt32();
    const CVrxStringU modelClass = CClassFactory::GetStructureClassName(static_cast<uint32_t>(type));
    auto* item = modelClass.IsEmpty() ? nullptr
                                      : static_cast<CVrStructureItem*>(CClassFactory::Instance().Create(modelClass));
    if (!item)
        return false;
    item->uuid = uuid;
    item->type = type;
    item->parent = &parent;
    parent.children.Add(item);
    if (!ReadCommonKeys(node, *item)) {
        Drop(item);
        return false;
    }
    ApplyDefaultScreenFlag(*item, node.Find("defScr"));
    ReadBool(node.Find("actCtrl"), item->activeController);
    if (const CVrJsonValue* list = node.Find("sub")) {
        if (!list->IsArray()) {
            Drop(item);
            return false;
        }
        if (!ParseChildren(*list, *item, depth))
            return false;
    }
    if (!item->ReadOwnKeys(node)) {
        Drop(item);
        return false;
    }
    Enter(*item);
    return true;
}

bool CVrStructure::ReadCommonKeys(const CVrJsonValue& node, CVrStructureItem& item) {
    const CVrJsonValue* name = node.Find("N");
    if (name && !name->IsString())
        return false;
    if (name)
        item.name = name->value;
    return ReadWantedNumber(node, "R", item.room) && ReadWantedNumber(node, "C", item.category) &&
           ReadWantedNumber(node, "I", item.icon);
}

bool CVrStructure::ParseGroup(const CVrJsonValue& node, CVrStructureItem& parent, int32_t depth) {
    auto* group = new CVrStructureItem;
    item_json::ReadTextKey(&node, "N", group->name);
    item_json::ReadNumberKey(&node, "I", group->icon);
    ReadId(node.Find("U"), group->uuid);
    if (group->uuid == 0)
        group->uuid = NextAutoId();
    group->parent = &parent;
    parent.children.Add(group);
    ApplyDefaultScreenFlag(*group, node.Find("defScr"));
    ReadBool(node.Find("actCtrl"), group->activeController);
    Enter(*group);
    const CVrJsonValue* list = node.Find("sub");
    return !list || (list->IsArray() && ParseChildren(*list, *group, depth));
}

bool CVrStructure::ParseChildren(const CVrJsonValue& list, CVrStructureItem& item, int32_t depth) {
    constexpr const char* kTag = "CVrStructure::ParseJsonConfig";
    Log(LogEvent, kTag, "%d sub children", static_cast<int32_t>(list.GetChildCount()));
    if (depth >= kMaxDepth) {
        Log(LogError, kTag, "U=%x is nested too deep, its members are dropped", item.uuid);
        return true;
    }
    for (const CVrJsonValue* child : list.Children())
        if (!ParseJsonConfig(*child, item, depth + 1))
            return false;
    return true;
}

void CVrStructure::ApplyDefaultScreenFlag(CVrStructureItem& item, const CVrJsonValue* node) {
    bool wanted = false;
    if (!ReadBool(node, wanted))
        return;
    if (wanted && m_defaultScreen && m_defaultScreen != &item) {
        Log(LogWarning, "VrStructureApplyDefaultScreenFlag", "Ignoring duplicate default screen marker U=%x",
            item.uuid);
        return;
    }
    item.defaultScreen = wanted;
    if (wanted)
        m_defaultScreen = &item;
}

void CVrStructure::Enter(CVrStructureItem& item) {
    items.SetAt(static_cast<int32_t>(item.uuid), &item);
}

void CVrStructure::Forget(CVrStructureItem& item) {
    for (CVrStructureItem* child : item.children)
        Forget(*child);
    const auto key = static_cast<int32_t>(item.uuid);
    if (items.Lookup(key) == &item)
        items.SetAt(key, nullptr);
    if (m_defaultScreen == &item)
        m_defaultScreen = nullptr;
}

void CVrStructure::Drop(CVrStructureItem* item) {
    Forget(*item);
    item->parent->children.SetSize(item->parent->children.GetSize() - 1);
    delete item;
}

uint32_t CVrStructure::NextAutoId() {
    do
        nextAutoId++;
    while (items.Lookup(static_cast<int32_t>(nextAutoId)));
    return nextAutoId;
}
