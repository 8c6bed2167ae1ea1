// Any bytes as the texts of a house, separated by NUL bytes: configuration, categories, rooms, symbols, style
// sheet, a layout string. What was loaded must hang together.
#include <cstdint>
#include <cstdlib>

#include "structure/structure.h"

namespace {

void Require(bool condition) {
    if (!condition)
        abort();
}

// The bytes up to the next NUL, which are taken away.
CVrxStringU NextText(const uint8_t*& data, size_t& size) {
    size_t length = 0;
    while (length < size && data[length] != 0)
        length++;
    CVrxStringU text;
    text.AssignBytes(data, static_cast<uint32_t>(length));
    const size_t taken = length < size ? length + 1 : length;
    data += taken;
    size -= taken;
    return text;
}

// Every entry of the table and the default screen stand in the tree, every child knows its parent.
void CheckTree(CVrStructure& structure) {
    int32_t tabled = 0;
    int32_t marked = 0;
    CVrStructureItem& root = structure.root;
    for (CVrStructureItem* item = root.NextBelow(root); item; item = item->NextBelow(root)) {
        for (const CVrStructureItem* child : item->children)
            Require(child->parent == item);
        tabled += structure.items.Lookup(static_cast<int32_t>(item->uuid)) == item;
        marked += item->defaultScreen;
        if (item->defaultScreen)
            Require(structure.FindDefaultScreen() == item);
        item->IsActive();
        item->GetPageClass();
    }
    Require(tabled == structure.items.GetCount());
    Require(marked == (structure.FindDefaultScreen() ? 1 : 0));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const CVrxStringU config = NextText(data, size);
    const CVrxStringU cats = NextText(data, size);
    const CVrxStringU rooms = NextText(data, size);
    const CVrxStringU symbols = NextText(data, size);
    CVrStructure structure;
    structure.PrepareClasses();
    for (int load = 0; load < 2; load++) {
        structure.LoadJsonConfig(config, cats, rooms, symbols);
        CheckTree(structure);
    }
    CVrxStringU name;
    structure.GetSymbolName(name, 1);

    structure.LoadJsonStyles(NextText(data, size));
    CStyle layout;
    layout.Parse(NextText(data, size));
    const CVrSize parent(720, 110);
    for (const CVrClassStyle* row : structure.styles.classRows) {
        row->element.Evaluate(&parent);
        row->text.Evaluate(nullptr);
    }
    layout.Evaluate(&parent);
    return 0;
}
