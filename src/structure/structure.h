// The loaded model of the house: the tree of items, the tables of categories, rooms and symbols, and the style sheet.
// Everything comes in as JSON texts and is read tolerantly: what is malformed is dropped, its siblings load.
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
    // Items may be nested this deep; what lies deeper is dropped with a log line.
    static constexpr int32_t kMaxDepth = 48;
    // Symbol number for everything that a table lacks.
    static constexpr int32_t kUnknownSymbol = 99999;
    static constexpr int32_t kDefaultSymbol = 0;

    CVrStructure() = default;

    // Reads the four texts of a house. False, with everything left empty, for a configuration that cannot be parsed;
    // a broken text of the others leaves its table empty and the rest loads.
    bool LoadJsonConfig(const CVrxStringU& config, const CVrxStringU& cats, const CVrxStringU& roomTexts,
                        const CVrxStringU& symbolTexts);
    bool LoadJsonCats(const CVrxStringU& text);
    bool LoadJsonRooms(const CVrxStringU& text);
    bool LoadJsonSymbols(const CVrxStringU& text);
    // The program's own symbols, from the resource; false if it is missing or cannot be parsed.
    bool LoadJsonStaticSymbols();

    // File name of a symbol of the installation, which lies in the dynamic archive; the unknown symbol's name for a
    // number without one.
    void GetSymbolName(CVrxStringU& out, int32_t number) const;
    // The same for the program's own symbols, in the static archive.
    void GetStaticSymbolName(CVrxStringU& out, int32_t number) const;

    // The item that is marked as default screen; null if none is.
    CVrStructureItem* FindDefaultScreen() const { return m_defaultScreen; }

    CVrStructureItem root;                            // invisible; its children are the top-level items
    CVrTypedMapIntToPtr<CVrStructureItem> items;      // by uuid, not owned; a later item replaces the entry
    CVrTypedMapIntToPtr<CRoomCat> categories{true}, rooms{true};
    CVrTypedMapIntToPtr<CVrxStringU> symbols{true}, staticSymbols{true};
    VrPtrs<CVrStructureItem> audioZones;              // not owned; filled when the screens are built
    CVrStyleSheet styles;

private:
    static constexpr uint32_t kFirstAutoId = 0xF0000000;

    void Clear();
    bool ParseJsonConfig(const CVrJsonValue& node, CVrStructureItem& parent, int32_t depth);
    bool ParseControl(const CVrJsonValue& node, const CVrJsonValue& typeNode, CVrStructureItem& parent, int32_t depth);
    bool ParseGroup(const CVrJsonValue& node, CVrStructureItem& parent, int32_t depth);
    bool ParseChildren(const CVrJsonValue& list, CVrStructureItem& item, int32_t depth);
    bool ReadCommonKeys(const CVrJsonValue& node, CVrStructureItem& item);
    void ApplyDefaultScreenFlag(CVrStructureItem& item, const CVrJsonValue* node);
    void Enter(CVrStructureItem& item);
    // Takes an item that is its parent's last child out of tree and tables and destroys it.
    void Drop(CVrStructureItem* item);
    void Forget(CVrStructureItem& item);
    uint32_t NextAutoId();
    void CopySymbolName(CVrxStringU& out, const CVrTypedMapIntToPtr<CVrxStringU>& table, int32_t number) const;

    uint32_t nextAutoId = kFirstAutoId; // the last number given to an item without `U`
    CVrStructureItem* m_defaultScreen = nullptr;
};
