// Sections: reading of values as the display reads them, Report, tables, items, the walk over the structure.
#include "desktop/house_check.h"

#include "desktop/item_types.h"
#include "desktop/json_document.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace desktop {

namespace {

using Node = std::uint32_t;
using Kind = JsonDocument::Kind;
constexpr Node None = JsonDocument::None;

constexpr std::size_t MaxFindings = 1000;
constexpr std::size_t MaxTreeDepth = 100;       // groups that the user can walk down into
constexpr std::uint32_t MaxGroupMembers = 4096; // tiles of one list that the display can tell apart
constexpr int MoodWithoutButton = 778;
constexpr int WindowBits = 32; // windows whose state the display can hold
constexpr std::size_t MaxHexDigits = 8;
constexpr int AnalogIo = 1;
constexpr int IoTypes = 3;
constexpr std::size_t LongestShownText = 40;

// ---- values as the display reads them ----

// null is read as the number 0
bool IsNumber(const JsonDocument& doc, Node node) {
    return doc.At(node).kind == Kind::Number || doc.At(node).kind == Kind::Null;
}

const char* KindName(Kind kind) {
    switch (kind) {
    case Kind::Object:
        return "an object";
    case Kind::Array:
        return "an array";
    case Kind::String:
        return "a string";
    case Kind::Number:
        return "a number";
    case Kind::Boolean:
        return "true or false";
    default:
        return "null";
    }
}

bool IsHexDigit(char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

std::string Shown(std::string_view text) {
    std::size_t end = std::min(text.size(), LongestShownText);
    while (end > 0 && end < text.size() && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80)
        --end; // not inside a character
    return "\"" + std::string(text.substr(0, end)) + (end < text.size() ? "..." : "") + "\"";
}

std::string ShownNumber(double value) {
    std::string text = std::to_string(value);
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.')
        text.pop_back();
    return text;
}

bool EqualIgnoringCase(std::string_view a, std::string_view b) {
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [&](char x, char y) { return lower(x) == lower(y); });
}

std::optional<bool> ReadYesNo(const JsonDocument& doc, Node node) {
    const std::string_view raw = doc.Raw(node);
    if (IsNumber(doc, node))
        return std::trunc(doc.Number(node)) != 0;
    if (doc.At(node).kind == Kind::Boolean || raw == "true" || raw == "false")
        return doc.At(node).kind == Kind::Boolean || doc.At(node).kind == Kind::String
                   ? std::optional<bool>(raw == "true")
                   : std::nullopt;
    if (doc.At(node).kind != Kind::String)
        return std::nullopt;
    if (raw == "1" || raw == "TRUE")
        return true;
    if (raw == "0" || raw == "FALSE")
        return false;
    return std::nullopt;
}

// A number, or a string of a sign, digits and at most one separator.
std::optional<double> ReadLooseNumber(const JsonDocument& doc, Node node) {
    if (IsNumber(doc, node))
        return doc.Number(node);
    if (doc.At(node).kind != Kind::String)
        return std::nullopt;
    std::string text(doc.Raw(node));
    const std::size_t sign = text.starts_with('+') || text.starts_with('-') ? 1 : 0;
    std::size_t digits = 0, separators = 0;
    for (std::size_t i = sign; i < text.size(); ++i) {
        const bool separator = text[i] == '.' || text[i] == ',';
        separators += separator;
        digits += !separator && text[i] >= '0' && text[i] <= '9';
    }
    if (digits == 0 || separators > 1 || sign + digits + separators != text.size())
        return std::nullopt;
    std::replace(text.begin(), text.end(), ',', '.');
    return std::strtod(text.c_str(), nullptr);
}

// What is wrong with the text that formats a value; empty when nothing is.
std::string FormatFault(std::string_view format) {
    int placeholders = 0;
    for (std::size_t i = 0; i < format.size(); ++i) {
        if (format[i] != '%')
            continue;
        if (i + 1 < format.size() && format[i + 1] == '%') {
            ++i;
            continue;
        }
        std::size_t digit = i + 2;
        while (digit < format.size() && format[digit] >= '0' && format[digit] <= '9')
            ++digit;
        const bool shaped = i + 1 < format.size() && format[i + 1] == '.' && digit > i + 2 &&
                            digit < format.size() && (format[digit] == 'f' || format[digit] == 'F');
        if (!shaped)
            return "a '%' that is neither \"%%\" nor a placeholder as \"%.1f\"";
        if (digit - i - 2 > 1)
            return "a placeholder has at most 9 decimals";
        ++placeholders;
        i = digit;
    }
    if (placeholders > 1)
        return "more than one placeholder";
    return "";
}

// ---- the report ----

class Report {
public:
    Report(CheckResult& into, HouseFile of, const JsonDocument& document)
        : result(into), file(of), doc(document) {}

    void Error(Node node, std::string text) { Add(Severity::Error, node, std::move(text)); }
    void Warn(Node node, std::string text) { Add(Severity::Warning, node, std::move(text)); }

    void AddAt(Severity severity, std::size_t offset, std::string path, std::string text) {
        ++(severity == Severity::Error ? result.errors : result.warnings);
        if (result.findings.size() >= MaxFindings)
            return;
        const TextPosition at = doc.PositionOf(offset);
        result.findings.push_back({file, at.line, at.column, severity, std::move(path), std::move(text)});
    }

private:
    void Add(Severity severity, Node node, std::string text) {
        const bool shown = result.findings.size() < MaxFindings;
        AddAt(severity, doc.At(node).start, shown ? doc.PathOf(node) : "", std::move(text));
    }

    CheckResult& result;
    HouseFile file;
    const JsonDocument& doc;
};

// What all checks of one file share.
class FileCheck {
public:
    FileCheck(const JsonDocument& document, Report& to) : doc(document), report(to) {}

protected:
    Node Find(Node object, std::string_view key) const { return doc.Find(object, key); }
    Kind KindOf(Node node) const { return doc.At(node).kind; }
    bool HasKind(Node node, Kind kind) const { return node != None && KindOf(node) == kind; }

    // The whole number under the key; 0 with a warning where the display would read 0 as well.
    std::optional<int> Whole(Node object, std::string_view key) {
        const Node node = Find(object, key);
        if (node == None)
            return std::nullopt;
        if (!IsNumber(doc, node)) {
            report.Warn(node, "is " + std::string(KindName(KindOf(node))) + ", not a number; read as 0");
            return 0;
        }
        return WholeOf(node);
    }

    int WholeOf(Node node) {
        const double value = doc.Number(node);
        if (value != std::trunc(value))
            report.Warn(node, "is no whole number; what stands behind the point is dropped");
        if (value < std::numeric_limits<int>::min() || value > std::numeric_limits<int>::max()) {
            report.Warn(node, "is too large for a 32-bit number");
            return 0;
        }
        return static_cast<int>(value);
    }

    void WarnUnlessString(Node object, std::string_view key) {
        const Node node = Find(object, key);
        if (node != None && KindOf(node) != Kind::String)
            report.Warn(node, "is " + std::string(KindName(KindOf(node))) + ", not a string");
    }

    // Keys count letter by letter; "n" for "N" is a slip that nothing else would tell.
    void WarnMisspeltKeys(Node object, std::span<const std::string_view> known) {
        for (Node i = doc.At(object).firstChild; i != None; i = doc.At(i).nextSibling) {
            const std::string_view key = doc.Key(i);
            if (std::find(known.begin(), known.end(), key) != known.end())
                continue;
            for (const std::string_view meant : known)
                if (EqualIgnoringCase(key, meant))
                    report.Warn(i, "is not read; the key is \"" + std::string(meant) + "\"");
        }
    }

    const JsonDocument& doc;
    Report& report;
};

// ---- tables ----

using Numbers = std::unordered_set<int>;

// nullopt: the file could not be read, so nobody knows what it would hold
struct Tables {
    std::optional<Numbers> categories;
    std::optional<Numbers> rooms;
    std::optional<Numbers> symbols;
};

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

// ---- the structure ----

class StructureCheck : public FileCheck {
public:
    StructureCheck(const JsonDocument& document, Report& to, const Tables& with)
        : FileCheck(document, to), tables(with) {}

    void Run() {
        if (doc.At(doc.Root()).childCount == 0)
            report.Warn(doc.Root(), "has no entry; the display shows \"Empty configuration\"");
        PushMembers(doc.Root(), 1);
        while (!open.empty()) {
            const Open next = open.back();
            open.pop_back();
            Item(next.node, next.depth);
        }
        WarnAboutHiddenZones();
    }

private:
    struct Open {
        Node node = None;
        std::size_t depth = 0; // 1 at the top
    };
    struct Zone {
        Node node = None;
        std::string_view group;
    };

    void PushMembers(Node list, std::size_t depth) {
        const std::size_t before = open.size();
        for (Node i = doc.At(list).firstChild; i != None; i = doc.At(i).nextSibling)
            open.push_back({i, depth});
        std::reverse(open.begin() + static_cast<std::ptrdiff_t>(before),
                     open.end()); // the first one comes next
    }

    // What an item that fails takes with it.
    std::string Loss(std::size_t depth) const {
        return depth == 1 ? "; the display leaves this entry out"
                          : "; the display leaves out this item and all that follows in its top-level entry";
    }

    void Item(Node node, std::size_t depth) {
        if (KindOf(node) != Kind::Object)
            return report.Error(node,
                                "is " + std::string(KindName(KindOf(node))) + ", not an item" + Loss(depth));
        static constexpr std::string_view keys[] = {
            "T",   "U",        "N",       "R",       "C",  "I",  "defScr", "actCtrl",
            "sub", "moodList", "details", "windows", "WA", "ST", "MIN",    "MAX"};
        WarnMisspeltKeys(node, keys);
        if (depth == MaxTreeDepth + 1 && !std::exchange(saidTooDeep, true))
            report.Warn(node, "lies deeper than " + std::to_string(MaxTreeDepth) +
                                  " groups; the user cannot get there");
        const bool isGroup = Find(node, "T") == None;
        if (isGroup ? GroupItem(node) : Control(node, depth))
            Members(node, depth, isGroup);
    }

    // ---- what groups and controls share ----

    void Members(Node node, std::size_t depth, bool isGroup) {
        const Node sub = Find(node, "sub");
        if (sub == None || doc.At(sub).childCount == 0) {
            if (isGroup)
                report.Warn(sub == None ? node : sub, "this group is empty");
            return;
        }
        if (!isGroup)
            report.Warn(sub, "what lies below a control gets no page of its own");
        if (doc.At(sub).childCount > MaxGroupMembers)
            report.Warn(sub, "has more than " + std::to_string(MaxGroupMembers) +
                                 " members; the display cannot tell their tiles apart");
        PushMembers(sub, depth + 1);
    }

    bool SubIsList(Node node, std::size_t depth) {
        const Node sub = Find(node, "sub");
        if (sub == None || KindOf(sub) == Kind::Array)
            return true;
        report.Error(sub, "is " + std::string(KindName(KindOf(sub))) + ", not an array" + Loss(depth));
        return false;
    }

    void Marks(Node node) {
        if (const Node mark = Find(node, "defScr"); mark != None && YesNo(mark).value_or(false)) {
            if (defaultScreen != None)
                report.Warn(mark, "a default screen is marked already at " + doc.PathOf(defaultScreen) +
                                      "; the first one counts");
            else
                defaultScreen = node;
        }
        if (const Node mark = Find(node, "actCtrl"); mark != None)
            YesNo(mark);
    }

    std::optional<bool> YesNo(Node node) {
        const auto value = ReadYesNo(doc, node);
        if (!value)
            report.Warn(node, "says neither yes nor no; the display ignores it");
        return value;
    }

    void Uuid(Node node, std::uint32_t value, Node at) {
        const auto [known, added] = uuids.try_emplace(value, node);
        if (!added)
            report.Warn(at, "the item " + doc.PathOf(known->second) +
                                " has the same \"U\"; nobody can tell their "
                                "commands apart");
    }

    std::uint32_t ReadUuid(Node at) {
        if (IsNumber(doc, at)) {
            const double value = doc.Number(at);
            if (value < std::numeric_limits<std::int32_t>::min() ||
                value > std::numeric_limits<std::uint32_t>::max()) {
                report.Warn(at, "does not fit into 32 bits");
                return 0;
            }
            return static_cast<std::uint32_t>(static_cast<std::int64_t>(value));
        }
        const std::string_view raw = doc.Raw(at);
        std::size_t digits = 0;
        std::uint32_t value = 0;
        for (; digits < raw.size() && IsHexDigit(raw[digits]); ++digits)
            value =
                value << 4 | static_cast<std::uint32_t>(std::stoi(std::string(1, raw[digits]), nullptr, 16));
        if (digits != raw.size() || digits == 0)
            report.Warn(at, Shown(raw) + " is read as hexadecimal digits up to the first other character");
        if (digits > MaxHexDigits)
            report.Warn(at, Shown(raw) + " has more than 8 digits");
        return value;
    }

    // ---- groups ----

    // Whether the group's members are read.
    bool GroupItem(Node node) {
        for (const std::string_view key : {"details", "moodList", "windows"})
            if (const Node at = Find(node, key); at != None)
                report.Warn(at, "belongs to a control, but this item has no \"T\" and becomes a group");
        WarnUnlessString(node, "N");
        if (Find(node, "N") == None)
            report.Warn(node, "this group has no name \"N\"");
        if (const Node icon = Find(node, "I"); icon != None && !IsNumber(doc, icon))
            report.Warn(icon, "is " + std::string(KindName(KindOf(icon))) + ", not a number; ignored");
        else
            Symbol(node, "I");
        if (const Node uuid = Find(node, "U"); uuid != None) {
            if (!IsNumber(doc, uuid) && KindOf(uuid) != Kind::String)
                report.Warn(uuid, "is neither a number nor hexadecimal digits in a string; ignored");
            else if (const std::uint32_t value = ReadUuid(uuid); value != 0)
                Uuid(node, value, uuid);
        }
        Marks(node);
        const Node sub = Find(node, "sub");
        if (sub == None || KindOf(sub) == Kind::Array)
            return true;
        report.Error(sub, "is " + std::string(KindName(KindOf(sub))) +
                              ", not an array; the group stays empty, and " +
                              "what follows in its top-level entry is left out");
        return false;
    }

    // ---- controls ----

    // Whether the control survives, so that what lies below it is read.
    bool Control(Node node, std::size_t depth) {
        if (!TypeAndUuid(node, depth) || !BaseKeys(node, depth) || !SubIsList(node, depth) ||
            !Moods(node, depth))
            return false;
        const int type = static_cast<int>(doc.Number(Find(node, "T")));
        References(node);
        Marks(node);
        Details(node, type);
        Windows(node, type);
        return true;
    }

    bool TypeAndUuid(Node node, std::size_t depth) {
        const Node type = Find(node, "T");
        if (!IsNumber(doc, type)) {
            report.Error(type, "is " + std::string(KindName(KindOf(type))) + ", but a type is a number" +
                                   Loss(depth));
            return false;
        }
        if (ItemTypeName(WholeOf(type)).empty()) {
            report.Error(type,
                         ShownNumber(doc.Number(type)) + " is no type that the display knows" + Loss(depth));
            return false;
        }
        const Node uuid = Find(node, "U");
        if (uuid == None) {
            report.Error(node, "has no number \"U\"" + Loss(depth));
            return false;
        }
        if (!IsNumber(doc, uuid) && KindOf(uuid) != Kind::String) {
            report.Error(uuid, "is neither a number nor hexadecimal digits in a string" + Loss(depth));
            return false;
        }
        const std::uint32_t value = ReadUuid(uuid);
        if (value == 0)
            report.Warn(uuid, "is 0, a number that no control should have");
        Uuid(node, value, uuid);
        return true;
    }

    // N, R, C and I of a wrong kind cost the whole control.
    bool BaseKeys(Node node, std::size_t depth) {
        const Node name = Find(node, "N");
        if (name != None && KindOf(name) != Kind::String) {
            report.Error(name, "is " + std::string(KindName(KindOf(name))) + ", but a name is a string" +
                                   Loss(depth));
            return false;
        }
        if (name == None)
            report.Warn(node, "has no name \"N\"");
        for (const std::string_view key : {"R", "C", "I"}) {
            const Node at = Find(node, key);
            if (at == None || IsNumber(doc, at))
                continue;
            report.Error(at, "is " + std::string(KindName(KindOf(at))) + ", not a number" + Loss(depth));
            return false;
        }
        return true;
    }

    void References(Node node) {
        Room(node, "R");
        if (const auto category = Whole(node, "C");
            category && *category != 0 && tables.categories && !tables.categories->contains(*category))
            report.Warn(Find(node, "C"), "no category has the number " + std::to_string(*category));
        Symbol(node, "I");
    }

    void Room(Node object, std::string_view key) {
        if (const auto room = Whole(object, key);
            room && *room != 0 && tables.rooms && !tables.rooms->contains(*room))
            report.Warn(Find(object, key), "no room has the number " + std::to_string(*room));
    }

    void Symbol(Node object, std::string_view key) {
        if (const auto icon = Whole(object, key);
            icon && *icon != 0 && tables.symbols && !tables.symbols->contains(*icon))
            report.Warn(Find(object, key), "no symbol has the number " + std::to_string(*icon));
    }

    // ---- moods ----

    bool Moods(Node node, std::size_t depth) {
        const Node list = Find(node, "moodList");
        const bool isLight = static_cast<int>(doc.Number(Find(node, "T"))) == Light;
        if (list == None) {
            if (isLight)
                report.Warn(node, "a light without \"moodList\" has an empty page");
            return true;
        }
        if (KindOf(list) != Kind::Array) {
            report.Error(list, "is " + std::string(KindName(KindOf(list))) + ", not an array" + Loss(depth));
            return false;
        }
        if (!isLight) {
            report.Warn(list, "only a light has moods; ignored");
            return true;
        }
        Numbers ids;
        for (Node mood = doc.At(list).firstChild; mood != None; mood = doc.At(mood).nextSibling)
            Mood(mood, ids);
        return true;
    }

    void Mood(Node mood, Numbers& ids) {
        static constexpr std::string_view keys[] = {"id", "name", "defaultIcon"};
        if (KindOf(mood) != Kind::Object)
            return report.Error(mood, "is " + std::string(KindName(KindOf(mood))) + ", not a mood; skipped");
        WarnMisspeltKeys(mood, keys);
        const auto id = Whole(mood, "id");
        if (!id)
            report.Warn(mood, "this mood has no \"id\"; its button would send 0");
        if (id == MoodWithoutButton)
            return;
        if (id && !ids.insert(*id).second)
            report.Warn(Find(mood, "id"), "another mood of this light has the id " + std::to_string(*id));
        if (Find(mood, "name") == None)
            report.Warn(mood, "this mood has no \"name\"");
        WarnUnlessString(mood, "name");
        Symbol(mood, "defaultIcon");
    }

    // ---- details ----

    void Details(Node node, int type) {
        Node details = Find(node, "details");
        if (details != None && KindOf(details) != Kind::Object) {
            report.Warn(details, "is " + std::string(KindName(KindOf(details))) + ", not an object; ignored");
            details = None;
        }
        if (details != None) {
            static constexpr std::string_view keys[] = {"type",   "T",      "playerid", "fixGroup",
                                                        "hidden", "server", "groupid",  "DU",
                                                        "WA",     "ST",     "MIN",      "MAX"};
            WarnMisspeltKeys(details, keys);
        }
        if (type == GenericIo)
            return Io(node, details);
        if (details == None)
            return;
        if (type == Blind348 || type == Blind476 || type == RoofShade)
            Whole(details, "type");
        if (type == Gate || type == RoofWindow)
            Whole(details, Find(details, "type") != None ? "type" : "T");
        if (type == MusicPlayer)
            Music(node, details);
    }

    void Music(Node node, Node details) {
        if (const auto id = Whole(details, "playerid"); id && !players.insert(*id).second)
            report.Warn(Find(details, "playerid"), "another zone has the number " + std::to_string(*id) +
                                                       "; they would share their covers");
        WarnUnlessString(details, "server");
        WarnUnlessString(details, "groupid");
        const auto flag = [&](std::string_view key) {
            const Node at = Find(details, key);
            return at != None && YesNo(at).value_or(false);
        };
        const bool fixed = flag("fixGroup");
        const Node group = Find(details, "groupid");
        const std::string_view name = HasKind(group, Kind::String) ? doc.Raw(group) : std::string_view();
        if (fixed && name.empty())
            report.Warn(details, "a zone with \"fixGroup\" wants a \"groupid\"");
        if (flag("hidden"))
            hiddenZones.push_back({node, name});
        else if (fixed)
            shownGroups.insert(name);
    }

    // A hidden zone serves in the group of one that is shown; without that it is nowhere.
    void WarnAboutHiddenZones() {
        for (const Zone& zone : hiddenZones)
            if (!shownGroups.contains(zone.group))
                report.Warn(
                    zone.node,
                    "this zone is hidden, and no zone with \"fixGroup\" and its \"groupid\" is shown");
    }

    void Io(Node node, Node details) {
        const auto find = [&](std::string_view key) {
            const Node inside = details != None ? Find(details, key) : None;
            return inside != None ? inside : Find(node, key);
        };
        std::optional<int> ioType;
        if (details != None) {
            ioType = Whole(details, "T");
            if (ioType && (*ioType < 0 || *ioType >= IoTypes))
                report.Warn(Find(details, "T"), "is none of 0 (digital), 1 (analog), 2 (text)");
            WarnUnlessString(details, "DU");
            if (const Node format = Find(details, "DU"); HasKind(format, Kind::String))
                if (const std::string fault = FormatFault(doc.Raw(format)); !fault.empty())
                    report.Warn(format, fault + "; the value is shown without its unit");
        }
        const Node writable = find("WA");
        if (writable != None && YesNo(writable).value_or(false) && ioType.value_or(0) != AnalogIo)
            report.Warn(
                writable,
                "only an analog value (\"T\" 1 in \"details\") can be written; this one is read only");
        const auto limit = [&](std::string_view key) {
            const Node at = find(key);
            const auto value = at == None ? std::nullopt : ReadLooseNumber(doc, at);
            if (at != None && !value)
                report.Warn(at, "is no number; ignored");
            return value;
        };
        limit("ST");
        const auto lowest = limit("MIN");
        const auto highest = limit("MAX");
        if (lowest && highest && *highest < *lowest)
            report.Warn(find("MAX"), "lies below \"MIN\"; the value can only be " + ShownNumber(*lowest));
    }

    // ---- windows ----

    void Windows(Node node, int type) {
        const Node list = Find(node, "windows");
        if (type != WindowsMonitor) {
            if (list != None)
                report.Warn(list, "only a windows monitor (482) has windows; ignored");
            return;
        }
        if (!HasKind(list, Kind::Array)) {
            report.Warn(list == None ? node : list,
                        "a windows monitor wants an array \"windows\"; its page is empty");
            return;
        }
        Numbers ids;
        for (Node window = doc.At(list).firstChild; window != None; window = doc.At(window).nextSibling)
            Window(window, ids);
    }

    void Window(Node window, Numbers& ids) {
        static constexpr std::string_view keys[] = {"id", "name", "R", "room"};
        if (KindOf(window) != Kind::Object)
            return report.Error(window,
                                "is " + std::string(KindName(KindOf(window))) + ", not a window; skipped");
        WarnMisspeltKeys(window, keys);
        const Node at = Find(window, "id");
        if (at == None || !IsNumber(doc, at))
            return report.Error(at == None ? window : at,
                                "a window wants a number \"id\"; the display skips it");
        const int id = WholeOf(at);
        if (id < 0 || id >= WindowBits)
            report.Warn(at, "only the ids 0 to 31 have a state; this window always counts as closed");
        if (!ids.insert(id).second)
            report.Warn(at, "another window has the id " + std::to_string(id));
        WarnUnlessString(window, "name");
        Room(window, Find(window, "R") != None ? "R" : "room");
    }

    const Tables& tables;
    std::vector<Open> open; // items still to look at, the next one last
    std::unordered_map<std::uint32_t, Node> uuids;
    Node defaultScreen = None;
    Numbers players;
    std::vector<Zone> hiddenZones;
    std::unordered_set<std::string_view> shownGroups;
    bool saidTooDeep = false;
};

// ---- the whole house ----

// Reads one file; false with an error in the result when it cannot be read.
bool ReadFile(const House& house, HouseFile file, JsonDocument& doc, CheckResult& result) {
    const auto problem = doc.Parse(house.Text(file));
    Report report(result, file, doc);
    const auto pathOf = [&](const JsonRemark& remark) {
        return remark.node < doc.NodeCount() ? doc.PathOf(remark.node) : "";
    };
    for (const JsonRemark& remark : doc.Remarks())
        report.AddAt(Severity::Warning, remark.offset, pathOf(remark), remark.text);
    if (problem)
        report.AddAt(Severity::Error, problem->offset, pathOf(*problem), problem->text);
    return !problem;
}

} // namespace

CheckResult CheckHouse(const House& house) {
    CheckResult result;
    Tables tables;
    const auto check = [&](HouseFile file, auto visit) {
        JsonDocument doc;
        Report report(result, file, doc);
        if (ReadFile(house, file, doc, result))
            visit(doc, report);
    };
    check(HouseFile::Symbols, [&](const JsonDocument& doc, Report& report) {
        tables.symbols = TableCheck(doc, report).Symbols();
    });
    check(HouseFile::Categories, [&](const JsonDocument& doc, Report& report) {
        tables.categories = TableCheck(doc, report).RoomsOrCategories(tables.symbols);
    });
    check(HouseFile::Rooms, [&](const JsonDocument& doc, Report& report) {
        tables.rooms = TableCheck(doc, report).RoomsOrCategories(tables.symbols);
    });
    check(HouseFile::Structure,
          [&](const JsonDocument& doc, Report& report) { StructureCheck(doc, report, tables).Run(); });
    std::stable_sort(result.findings.begin(), result.findings.end(), [](const Finding& a, const Finding& b) {
        return std::tuple(a.file, a.line, a.column) < std::tuple(b.file, b.line, b.column);
    });
    return result;
}

std::string FormatFinding(const Finding& finding, const std::filesystem::path& folder) {
    std::string line = (folder / FileNameOf(finding.file)).string() + ":" + std::to_string(finding.line) +
                       ":" + std::to_string(finding.column) + ": ";
    line += finding.severity == Severity::Error ? "error: " : "warning: ";
    if (!finding.path.empty())
        line += finding.path + ": ";
    return line + finding.text;
}

std::string Summary(const CheckResult& result) {
    const auto count = [](std::size_t number, const char* what) {
        return std::to_string(number) + " " + what + (number == 1 ? "" : "s");
    };
    if (result.errors + result.warnings == 0)
        return "no faults";
    std::string text = count(result.errors, "error") + ", " + count(result.warnings, "warning");
    if (result.findings.size() < result.errors + result.warnings)
        text += "; the first " + std::to_string(result.findings.size()) + " are shown";
    return text;
}

} // namespace desktop
