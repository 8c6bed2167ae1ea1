// LiveHost's settings: read from JSON as the page and the API send them, sent on as the display wants them.
#include "desktop/live_host.h"

#include <algorithm>
#include <cctype>
#include <functional>
#include <utility>

namespace desktop {

namespace {

using nlohmann::json;

constexpr int RestModes = 6;
constexpr int DateFormats = 4;
constexpr std::uint32_t LongestRestDelay = 86'400;
constexpr std::uint32_t HighestLogLevel = 9;
constexpr int FahrenheitBit = 256;

// Reads one value; false when it is none that the key can have.
template <class Number>
bool ReadNumber(const json& value, std::optional<Number>& out, std::int64_t highest) {
    if (!value.is_number_integer() || value < 0 || value > highest)
        return false;
    out = value.get<Number>();
    return true;
}

bool ReadFlag(const json& value, std::optional<bool>& out) {
    if (!value.is_boolean())
        return false;
    out = value.get<bool>();
    return true;
}

// "#rrggbb"
bool ReadColor(const json& value, std::optional<std::uint32_t>& out) {
    const std::string text = value.is_string() ? value.get<std::string>() : "";
    const auto isHex = [](char c) { return std::isxdigit(static_cast<unsigned char>(c)) != 0; };
    if (text.size() != 7 || text[0] != '#' || !std::all_of(text.begin() + 1, text.end(), isHex))
        return false;
    out = static_cast<std::uint32_t>(std::stoul(text.substr(1), nullptr, 16));
    return true;
}

bool ReadCode(const json& value, std::optional<std::string>& out, std::size_t length) {
    const std::string text = value.is_string() ? value.get<std::string>() : "";
    const auto plain = [](char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0; };
    if (text.size() != length || !std::all_of(text.begin(), text.end(), plain))
        return false;
    out = text;
    return true;
}

std::string ColorText(std::uint32_t color) {
    std::string text = "#000000";
    for (std::size_t i = 6; i > 0; --i, color >>= 4)
        text[i] = "0123456789abcdef"[color & 15];
    return text;
}

// The change counter of a house: any number that differs from house to house (FNV-1a).
std::uint32_t CounterOf(const std::string& text) {
    std::uint32_t hash = 2166136261u;
    for (const char c : text)
        hash = (hash ^ static_cast<unsigned char>(c)) * 16777619u;
    return hash;
}

} // namespace

std::optional<std::string> LiveHost::ReadSettings(const json& wishes, Settings& read) const {
    if (!wishes.is_object() || wishes.empty())
        return "Settings are a JSON object with at least one key.";
    struct Key {
        const char* name;
        const char* wants;
        std::function<bool(const json&)> read;
    };
    const Key keys[] = {
        {"night", "true or false", [&](const json& v) { return ReadFlag(v, read.night); }},
        {"color", "a colour as \"#rrggbb\"", [&](const json& v) { return ReadColor(v, read.color); }},
        {"restMode", "a number from 0 to 5",
         [&](const json& v) { return ReadNumber(v, read.restMode, RestModes - 1); }},
        {"restDelay", "seconds from 0 to 86400",
         [&](const json& v) { return ReadNumber(v, read.restDelay, LongestRestDelay); }},
        {"hours24", "true or false", [&](const json& v) { return ReadFlag(v, read.hours24); }},
        {"dateFormat", "a number from 0 to 3",
         [&](const json& v) { return ReadNumber(v, read.dateFormat, DateFormats - 1); }},
        {"fahrenheit", "true or false", [&](const json& v) { return ReadFlag(v, read.fahrenheit); }},
        {"country", "two letters or digits", [&](const json& v) { return ReadCode(v, read.country, 2); }},
        {"language", "three letters", [&](const json& v) { return ReadCode(v, read.language, 3); }},
        {"logLevel", "a number from 0 to 9",
         [&](const json& v) { return ReadNumber(v, read.logLevel, HighestLogLevel); }},
        {"rest", "true",
         [&](const json& v) { return v.is_boolean() && std::exchange(read.rest, v.get<bool>()) == false; }},
    };
    for (const auto& [name, value] : wishes.items()) {
        const auto key = std::find_if(std::begin(keys), std::end(keys),
                                      [&wanted = name](const Key& k) { return k.name == wanted; });
        if (key == std::end(keys))
            return "There is no setting \"" + name.substr(0, 40) + "\".";
        if (!key->read(value))
            return "The setting \"" + name + "\" wants " + key->wants + ".";
    }
    return std::nullopt;
}

std::optional<std::string> LiveHost::ApplySettings(const json& wishes) {
    Settings read;
    if (const auto problem = ReadSettings(wishes, read))
        return problem;
    Commit(read);
    ++stateVersion;
    NewsForAll();
    return std::nullopt;
}

void LiveHost::Commit(const Settings& read) {
    const auto keep = [](auto& into, const auto& from) {
        if (from)
            into = from;
    };
    keep(settings.night, read.night);
    keep(settings.color, read.color);
    keep(settings.restMode, read.restMode);
    keep(settings.restDelay, read.restDelay);
    keep(settings.hours24, read.hours24);
    keep(settings.dateFormat, read.dateFormat);
    keep(settings.fahrenheit, read.fahrenheit);
    keep(settings.country, read.country);
    keep(settings.language, read.language);
    keep(settings.logLevel, read.logLevel);
    const auto send = [&](Command command, const std::string& payload) {
        SendRaw(static_cast<std::uint32_t>(command), payload);
    };
    if (read.logLevel)
        send(Command::LogLevel, EncodeU32(*read.logLevel));
    if (read.HasFormats())
        SendFormats();
    if (read.HasRuntime())
        SendRuntime(read);
    if (read.night)
        send(Command::Night, EncodeU32(*read.night ? 1 : 0));
    if (read.rest)
        send(Command::Rest, "");
}

// Formats go all together: what is missing would fall back to its default.
void LiveHost::SendFormats() {
    const int format =
        settings.dateFormat.value_or(0) + (settings.fahrenheit.value_or(false) ? FahrenheitBit : 0);
    const json message = {{"wallslate",
                           {{"24hFormat", settings.hours24.value_or(true) ? 1 : 0},
                            {"dateFormat", format},
                            {"country", settings.country.value_or("01")},
                            {"language", settings.language.value_or("ENG")},
                            {"crcRooms", CounterOf(house.Text(HouseFile::Rooms))},
                            {"crcCategories", CounterOf(house.Text(HouseFile::Categories))},
                            {"crcStructure", CounterOf(house.Text(HouseFile::Structure))}}}};
    SendRaw(static_cast<std::uint32_t>(Command::Settings), message.dump() + std::string(1, '\0'));
}

void LiveHost::SendRuntime(const Settings& read) {
    json message = json::object();
    if (read.color) { // the display wants blue in the high byte
        const std::uint32_t c = *read.color;
        message["color"] = (c & 0xFF) << 16 | (c & 0xFF00) | c >> 16;
    }
    if (read.restMode)
        message["restmode"] = *read.restMode;
    if (read.restDelay)
        message["restModeDelay"] = *read.restDelay;
    SendRaw(static_cast<std::uint32_t>(Command::Runtime), message.dump() + std::string(1, '\0'));
}

// What was set in this run; the rest is as the display has stored it.
nlohmann::json LiveHost::SettingsJson() const {
    json known = json::object();
    const auto put = [&](const char* key, const auto& value) {
        if (value)
            known[key] = *value;
    };
    put("night", settings.night);
    put("restMode", settings.restMode);
    put("restDelay", settings.restDelay);
    put("hours24", settings.hours24);
    put("dateFormat", settings.dateFormat);
    put("fahrenheit", settings.fahrenheit);
    put("country", settings.country);
    put("language", settings.language);
    put("logLevel", settings.logLevel);
    if (settings.color)
        known["color"] = ColorText(*settings.color);
    return known;
}

} // namespace desktop
