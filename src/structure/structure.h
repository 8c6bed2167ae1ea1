// The loaded model of the house: the tree of items, the tables of categories, rooms and symbols, and the
// style sheet. Everything comes in as JSON texts and is read tolerantly: what is malformed is dropped, its
// siblings load.
#pragma once

#include "foundation/map.h"
#include "foundation/object.h"
#include "foundation/string.h"
#include "structure/item.h"
#include "structure/style_sheet.h"

// One room or category.
struct CRoomCat {
    CVrxStringU name;
    int32_t id = 0;   // by which items refer to it
    int32_t icon = 0; // symbol number; 0: none
};

class CVrStructure : public CVrObject {
public:
    // Symbol number for everything that a table lacks.
    static constexpr int32_t kUnknownSymbol = 99999;
    static constexpr int32_t kDefaultSymbol = 0;

    CVrStructure() = default;

    // ---- The house, as the host sends it ----

    // Reads the four texts of a house in place of the one before. False, with an empty tree, for a
    // configuration that cannot be parsed; the tables are not read then. A broken text of the others leaves
    // its table empty.
    bool LoadJsonConfig(const CVrxStringU& config, const CVrxStringU& cats, const CVrxStringU& roomTexts,
                        const CVrxStringU& symbolTexts);
    bool LoadJsonCats(const CVrxStringU& text);
    bool LoadJsonRooms(const CVrxStringU& text);
    bool LoadJsonSymbols(const CVrxStringU& text);

    // Builds the item of one JSON object and everything below it under `parent`. False, and one log line, if
    // the object or something below it is malformed: what was built before that stays, the rest of the object
    // is abandoned. Takes linear time and no recursion, whatever the shape of the house.
    bool ParseJsonConfig(const CVrJsonValue& node, CVrStructureItem& parent);

    // ---- What the program carries ----

    // The program's own symbols, from the resource; false if it is missing or cannot be parsed.
    bool LoadJsonStaticSymbols();
    void PrepareClasses() { styles.PrepareClasses(); }
    bool LoadJsonStyles(const CVrxStringU& text) { return styles.Load(text); }
    // 0 for a list that is too short.
    int32_t GetStyleValue(uint32_t index) const { return styles.Value(index); }

    // ---- Look-ups ----

    // File name of a symbol of the installation, which lies in the dynamic archive; the unknown symbol's name
    // for a number without one.
    void GetSymbolName(CVrxStringU& out, int32_t number) const;
    // The same for the program's own symbols, in the static archive.
    void GetStaticSymbolName(CVrxStringU& out, int32_t number) const;

    // The item that is marked as default screen; null if none is.
    CVrStructureItem* FindDefaultScreen() const { return m_defaultScreen; }

    CVrStructureItem root;                       // invisible; its children are the top-level items
    CVrTypedMapIntToPtr<CVrStructureItem> items; // by uuid, not owned; a later item replaces the entry
    CVrTypedMapIntToPtr<CRoomCat> categories{true}, rooms{true};
    CVrTypedMapIntToPtr<CVrxStringU> symbols{true}, staticSymbols{true};
    VrPtrs<CVrStructureItem> audioZones; // not owned; filled when the screens are built
    CVrStyleSheet styles;
    uint32_t nextAutoId = kFirstAutoId; // the last number given to an item without `U`

private:
    static constexpr uint32_t kFirstAutoId = 0xF0000000;

    // An item whose children are being built.
    struct Level {
        const CVrJsonValue* node;
        CVrStructureItem* item;
        const CVrJsonValue* list; // its `sub`
        uint32_t next;            // index of the member to read next
    };
    enum class Step { Done, Descend, Failed };

    void Clear();
    Step BeginItem(const CVrJsonValue& node, CVrStructureItem& parent, Level& level);
    Step BeginControl(const CVrJsonValue& node, CVrStructureItem& parent, Level& level);
    Step BeginGroup(const CVrJsonValue& node, CVrStructureItem& parent, Level& level);
    bool FinishItem(const Level& level);
    void ApplyDefaultScreenFlag(CVrStructureItem& item, const CVrJsonValue* node);
    void Enter(CVrStructureItem& item);
    void DropLastChild(CVrStructureItem& parent);
    void RebuildItems();
    uint32_t NextAutoId();
    void CopySymbolName(CVrxStringU& out, const CVrTypedMapIntToPtr<CVrxStringU>& table,
                        int32_t number) const;

    CVrStructureItem* m_defaultScreen = nullptr;
    bool m_hasStaleEntries = false; // dropped items left holes in `items`
};
