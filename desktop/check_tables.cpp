#include "desktop/check_tables.h"

#include "desktop/symbol_files.h"

namespace desktop {

namespace {

class TableCheck : public FileCheck {
public:
    using FileCheck::FileCheck;

    Numbers RoomsOrCategories(const std::optional<Numbers>& symbols) {
        static constexpr std::string_view keys[] = {"U", "N", "I"};
        Numbers numbers;
        ForEachEntry(keys, [&](Node entry) {
            const Node id = Find(entry, "U");
            if (id == None)
                report.Warn(entry, "has no \"U\"; it lands under the number 0");
            Enter(numbers, Whole(entry, "U").value_or(0), id == None ? entry : id);
            WarnAboutName(entry, "has no name \"N\"");
            const auto icon = Whole(entry, "I");
            if (icon && symbols && !symbols->contains(*icon))
                report.Warn(Find(entry, "I"), "no symbol has the number " + std::to_string(*icon));
        });
        return numbers;
    }

    Numbers Symbols() {
        static constexpr std::string_view keys[] = {"I", "N"};
        Numbers numbers;
        ForEachEntry(keys, [&](Node entry) {
            const Node number = Find(entry, "I");
            if (number == None)
                return report.Error(entry, "has no number \"I\"; the display skips it");
            const int value = Whole(entry, "I").value_or(0);
            if (value < 0)
                return report.Error(number, "a symbol's number is not negative; the display skips it");
            Enter(numbers, value, number);
            WarnAboutName(entry, "has no file name \"N\"");
            const Node name = Find(entry, "N");
            if (HasKind(name, Kind::String) && !doc.Raw(name).ends_with(".svg"))
                report.Warn(name, "is no name of a symbol file, as \"lamp.svg\"");
            else if (HasKind(name, Kind::String) && !doc.Raw(name).empty() && !IsSymbolFile(doc.Raw(name)))
                report.Warn(name, "the display has no symbol file " + Shown(doc.Raw(name)) +
                                      "; its items stay without a symbol");
        });
        return numbers;
    }

private:
    template <class Visit>
    void ForEachEntry(std::span<const std::string_view> keys, Visit visit) {
        for (Node entry = doc.At(doc.Root()).firstChild; entry != None; entry = doc.At(entry).nextSibling) {
            if (KindOf(entry) != Kind::Object) {
                report.Error(entry, "is " + std::string(KindName(KindOf(entry))) + ", not an object");
                continue;
            }
            WarnMisspeltKeys(entry, keys);
            visit(entry);
        }
    }

    void Enter(Numbers& numbers, int number, Node at) {
        if (!numbers.insert(number).second)
            report.Warn(at,
                        "the number " + std::to_string(number) + " is taken already; the later entry counts");
    }

    void WarnAboutName(Node entry, const char* without) {
        const Node name = Find(entry, "N");
        if (name == None || (HasKind(name, Kind::String) && doc.Raw(name).empty()))
            report.Warn(name == None ? entry : name, without);
        WarnUnlessString(entry, "N");
    }
};

} // namespace

Numbers CheckRoomsOrCategories(const JsonDocument& doc, Report& report,
                               const std::optional<Numbers>& symbols) {
    return TableCheck(doc, report).RoomsOrCategories(symbols);
}

Numbers CheckSymbols(const JsonDocument& doc, Report& report) {
    return TableCheck(doc, report).Symbols();
}

} // namespace desktop
