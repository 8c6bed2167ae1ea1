#include "desktop/house_index.h"

#include "desktop/item_types.h"
#include "desktop/json_document.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <optional>

namespace desktop {

namespace {

using Node = std::uint32_t;
constexpr Node None = JsonDocument::None;
using Names = std::unordered_map<int, std::string>;

constexpr std::size_t LongestName = 200; // of a name in the page's list
constexpr int MoodWithoutButton = 778;

int IntOf(const JsonDocument& doc, Node object, std::string_view key) {
    const Node node = doc.Find(object, key);
    const double value = node == None ? 0 : doc.Number(node);
    return value > -2147483649.0 && value < 2147483648.0 ? static_cast<int>(value) : 0;
}

std::string TextOf(const JsonDocument& doc, Node object, std::string_view key) {
    const Node node = doc.Find(object, key);
    if (node == None || doc.At(node).kind != JsonDocument::Kind::String)
        return "";
    std::string text(doc.Raw(node));
    if (text.size() > LongestName) {
        text.resize(LongestName);
        while (!text.empty() && (static_cast<unsigned char>(text.back()) & 0xC0) == 0x80)
            text.pop_back(); // not inside a character
        if (!text.empty() && static_cast<unsigned char>(text.back()) >= 0xC0)
            text.pop_back();
        text += "...";
    }
    return text;
}

std::uint32_t UuidOf(const JsonDocument& doc, Node object) {
    const Node node = doc.Find(object, "U");
    if (node == None)
        return 0;
    if (doc.At(node).kind != JsonDocument::Kind::String) {
        const double value = doc.Number(node);
        return value > -2147483649.0 && value < 4294967296.0
                   ? static_cast<std::uint32_t>(static_cast<std::int64_t>(value))
                   : 0;
    }
    std::uint32_t value = 0;
    for (const char c : doc.Raw(node)) {
        const char lower = static_cast<char>(c | 0x20);
        if (c >= '0' && c <= '9')
            value = value << 4 | static_cast<std::uint32_t>(c - '0');
        else if (lower >= 'a' && lower <= 'f')
            value = value << 4 | static_cast<std::uint32_t>(lower - 'a' + 10);
        else
            break;
    }
    return value;
}

Names ReadNames(const std::string& text) {
    Names names;
    JsonDocument doc;
    if (doc.Parse(text))
        return names;
    for (Node i = doc.At(doc.Root()).firstChild; i != None; i = doc.At(i).nextSibling)
        if (doc.At(i).kind == JsonDocument::Kind::Object)
            names[IntOf(doc, i, "U")] = TextOf(doc, i, "N");
    return names;
}

std::string NameIn(const Names& names, int number) {
    const auto at = names.find(number);
    return number != 0 && at != names.end() ? at->second : "";
}

// "5" for 5.0, "21.5" for 21.5
std::string Plain(double value) {
    std::string text = std::to_string(value);
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.')
        text.pop_back();
    return text;
}

std::string Mood(const HouseItem& item, int id) {
    for (const auto& [known, name] : item.moods)
        if (known == id && !name.empty())
            return "mood " + name;
    return "mood " + std::to_string(id);
}

std::string LightWords(const HouseItem& item, int event, double value) {
    const int id = static_cast<int>(value);
    switch (event) {
    case 0:
        return "off";
    case 1:
        return Mood(item, id);
    case 2:
        return "add " + Mood(item, id);
    case 3:
        return "remove " + Mood(item, id);
    case 6:
        return "brightness " + Plain(value) + " %";
    default:
        return "";
    }
}

std::string MusicWords(int event, double value) {
    switch (event) {
    case 0:
        return value == 0 ? "pause" : "favourite " + Plain(value);
    case 1:
        return "play";
    case 4:
        return "volume " + Plain(value) + " %";
    case 5:
        return "previous";
    case 6:
        return "next";
    default:
        return "";
    }
}

std::string WordAt(std::initializer_list<const char*> words, int event) {
    return event >= 0 && static_cast<std::size_t>(event) < words.size() ? *(words.begin() + event) : "";
}

// What an event means to a kind of item; empty when nobody knows.
std::string EventWords(const HouseItem& item, int event, double value) {
    switch (item.type) {
    case Switch:
        return WordAt({"on", "off"}, event);
    case PushButton:
        return WordAt({"pressed"}, event);
    case Light:
        return LightWords(item, event, value);
    case RoomClimate:
        return WordAt({"", "back to the schedule", "warmer", "cooler"}, event);
    case Blind348:
    case Blind476:
    case RoofShade:
        return event == 4 ? (value == 0 ? "automatic off" : "automatic on")
                          : WordAt({"up", "down", "full shade"}, event);
    case RoofWindow:
        return WordAt({"open", "close", "", "tilt"}, event);
    case Gate:
        return WordAt({"open", "close", "", "move"}, event);
    case MusicPlayer:
        return MusicWords(event, value);
    case Sauna:
    case SteamSauna:
        return WordAt({"on or off", "warmer", "cooler", "timer"}, event);
    case GenericIo:
        return event == 0 ? "set to " + Plain(value) : "";
    default:
        return "";
    }
}

struct ParsedCommand {
    std::uint32_t uuid = 0;
    int event = 0;
    double value = 0;
};

std::optional<ParsedCommand> ParseCommand(const std::string& text) {
    const nlohmann::json json = nlohmann::json::parse(text, nullptr, /*allow_exceptions=*/false);
    if (!json.is_object())
        return std::nullopt;
    const auto number = [&](const char* key) {
        const auto at = json.find(key);
        return at != json.end() && at->is_number() ? std::optional<double>(at->get<double>()) : std::nullopt;
    };
    const auto uuid = number("U"), event = number("E"), value = number("V");
    const auto fits = [](double n) { return n > -2147483649.0 && n < 4294967296.0; };
    if (!uuid || !event || !value || !fits(*uuid) || !fits(*event))
        return std::nullopt;
    // U is written as a signed number
    return ParsedCommand{static_cast<std::uint32_t>(static_cast<std::int64_t>(*uuid)),
                         static_cast<int>(static_cast<std::int64_t>(*event)), *value};
}

} // namespace

HouseIndex::HouseIndex(const House& house) {
    const Names rooms = ReadNames(house.Text(HouseFile::Rooms));
    const Names categories = ReadNames(house.Text(HouseFile::Categories));
    JsonDocument doc;
    if (doc.Parse(house.Text(HouseFile::Structure)))
        return;
    struct Open {
        Node node;
        int depth;
    };
    std::vector<Open> open;
    const auto push = [&](Node list, int depth) {
        const auto before = static_cast<std::ptrdiff_t>(open.size());
        for (Node i = doc.At(list).firstChild; i != None; i = doc.At(i).nextSibling)
            if (doc.At(i).kind == JsonDocument::Kind::Object)
                open.push_back({i, depth});
        std::reverse(open.begin() + before, open.end());
    };
    push(doc.Root(), 0);
    while (!open.empty()) {
        const Open next = open.back();
        open.pop_back();
        HouseItem item;
        item.uuid = UuidOf(doc, next.node);
        item.type = IntOf(doc, next.node, "T");
        item.depth = next.depth;
        item.name = TextOf(doc, next.node, "N");
        item.room = NameIn(rooms, IntOf(doc, next.node, "R"));
        item.category = NameIn(categories, IntOf(doc, next.node, "C"));
        const Node moods = doc.Find(next.node, "moodList");
        for (Node mood = moods == None ? None : doc.At(moods).firstChild; mood != None;
             mood = doc.At(mood).nextSibling)
            if (doc.At(mood).kind == JsonDocument::Kind::Object &&
                IntOf(doc, mood, "id") != MoodWithoutButton)
                item.moods.emplace_back(IntOf(doc, mood, "id"), TextOf(doc, mood, "name"));
        if (item.uuid != 0)
            byUuid[item.uuid] = items.size();
        items.push_back(std::move(item));
        if (const Node sub = doc.Find(next.node, "sub"); sub != None)
            push(sub, next.depth + 1);
    }
}

const HouseItem* HouseIndex::Find(std::uint32_t uuid) const {
    const auto at = byUuid.find(uuid);
    return at == byUuid.end() ? nullptr : &items[at->second];
}

std::string HouseIndex::Describe(const std::string& command) const {
    const auto parsed = ParseCommand(command);
    if (!parsed)
        return command;
    const HouseItem* item = Find(parsed->uuid);
    if (!item)
        return "no item of the house has the number " + std::to_string(parsed->uuid);
    std::string words = item->room.empty() || item->room == item->name ? "" : item->room + ", ";
    words += item->name.empty() ? "item " + std::to_string(item->uuid) : item->name;
    const std::string what = EventWords(*item, parsed->event, parsed->value);
    return words + ": " +
           (what.empty() ? "event " + std::to_string(parsed->event) + " with " + Plain(parsed->value) : what);
}

} // namespace desktop
