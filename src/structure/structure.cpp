// The tables of categories, rooms and symbols.
#include "structure/structure.h"

#include "foundation/files.h"
#include "foundation/log.h"

namespace {

int32_t NumberOf(const CVrJsonValue& entry, const char* key) {
    const CVrJsonValue* value = entry.Find(key);
    return value ? value->ToInt32() : 0;
}

// Members of a table that are no objects say nothing; each costs a line.
bool IsEntry(const CVrJsonValue& member, const char* tag) {
    if (!member.IsObject())
        Log(LogWarning, tag, "entry '%.80s' is no object", member.name.CStr());
    return member.IsObject();
}

CVrxStringU TextOf(const CVrJsonValue& entry, const char* key) {
    const CVrJsonValue* value = entry.Find(key);
    return value ? value->value : CVrxStringU();
}

void LoadRoomCats(const CVrJsonValue& list, CVrTypedMapIntToPtr<CRoomCat>& table, const char* tag) {
    for (const CVrJsonValue* entry : list.Children()) {
        if (!IsEntry(*entry, tag))
            continue;
        auto* record = new CRoomCat;
        record->id = NumberOf(*entry, "U");
        record->icon = NumberOf(*entry, "I");
        record->name = TextOf(*entry, "N");
        table.SetAt(record->id, record);
    }
}

// True unless the text cannot be parsed.
bool LoadSymbolTable(const CVrxStringU& text, CVrTypedMapIntToPtr<CVrxStringU>& table, const char* tag) {
    table.Clear();
    CVrJsonParser parser;
    const CVrJsonValue* list = parser.ParseRoot(text);
    if (!list) {
        Log(LogError, tag, "Parse error symbols %d", static_cast<int32_t>(text.GetLength()));
        return false;
    }
    Log(LogEvent, tag, "%d symbol children", static_cast<int32_t>(list->GetChildCount()));
    for (const CVrJsonValue* entry : list->Children()) {
        if (IsEntry(*entry, tag) && entry->Find("I") && NumberOf(*entry, "I") >= 0)
            table.SetAt(NumberOf(*entry, "I"), new CVrxStringU(TextOf(*entry, "N")));
    }
    return true;
}

} // namespace

bool CVrStructure::LoadJsonCats(const CVrxStringU& text) {
    constexpr const char* kTag = "CVrStructure::LoadJsonCats";
    categories.Clear();
    CVrJsonParser parser;
    const CVrJsonValue* list = parser.ParseRoot(text);
    if (!list) {
        Log(LogError, kTag, "Parse error cats %d", static_cast<int32_t>(text.GetLength()));
        return false;
    }
    Log(LogEvent, kTag, "%d cat children", static_cast<int32_t>(list->GetChildCount()));
    LoadRoomCats(*list, categories, kTag);
    return true;
}

bool CVrStructure::LoadJsonRooms(const CVrxStringU& text) {
    constexpr const char* kTag = "CVrStructure::LoadJsonRooms";
    rooms.Clear();
    CVrJsonParser parser;
    const CVrJsonValue* list = parser.ParseRoot(text);
    if (!list) {
        Log(LogError, kTag, "Parse error rooms %d", static_cast<int32_t>(text.GetLength()));
        return false;
    }
    LoadRoomCats(*list, rooms, kTag);
    return true;
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
