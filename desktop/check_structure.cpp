// The walk over the items goes by a list, not by recursion: a house may nest as deep as it likes.
#include "desktop/check_structure.h"

#include "desktop/item_types.h"

#include <unordered_map>
#include <vector>

namespace desktop {

namespace {

constexpr std::size_t MaxTreeDepth = 100;       // groups that the user can walk down into
constexpr std::uint32_t MaxGroupMembers = 4096; // tiles of one list that the display can tell apart
constexpr int MoodWithoutButton = 778;
constexpr int WindowBits = 32; // windows whose state the display can hold
constexpr std::size_t MaxHexDigits = 8;
constexpr int AnalogIo = 1;
constexpr int IoTypes = 3;

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

} // namespace

void CheckStructure(const JsonDocument& doc, Report& report, const Tables& tables) {
    StructureCheck(doc, report, tables).Run();
}

} // namespace desktop
