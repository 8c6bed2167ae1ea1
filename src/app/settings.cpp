#include "app/settings.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <iterator>

#include "foundation/files.h"
#include "foundation/json.h"
#include "foundation/utf8.h"

const char* const CVrSchemeColors::kNames[kCount] = {"framebkg", "btnbkg", "btntext", "textdis",
                                                     "sliderbkgdis"};

namespace {

constexpr const char* kRestWords[kRestModes] = {"ECO", "TIME", "DATE", "TEMPERATURE", "HUMIDITY", "NEVER"};
constexpr uint8_t kDefaultRestMode = 1;

constexpr const char* kCountries[] = {"01", "AT", "AU", "BE", "BG", "BR", "CA", "CH", "CN", "CY", "CZ", "DE",
                                      "DK", "EE", "ES", "FI", "FR", "GB", "GR", "HK", "HR", "HU", "IE", "IN",
                                      "IS", "IT", "JP", "KR", "LI", "LT", "LU", "LV", "MT", "MX", "NL", "NO",
                                      "NZ", "PL", "PT", "RO", "SE", "SI", "SK", "TW", "US"};

// A word that stands for a number.
struct Word {
    const char* text;
    uint32_t number;
};

constexpr Word kTimeWords[] = {{"24H", 1}, {"24", 1}, {"true", 1}, {"12H", 0}, {"12", 0}, {"false", 0}};
constexpr Word kDateWords[] = {{"DDMMYYYY", 0}, {"DD/MM/YYYY", 0}, {"DDMM", 1}, {"DD/MM", 1},
                               {"MMDDYYYY", 2}, {"MM/DD/YYYY", 2}, {"MMDD", 3}, {"MM/DD", 3}};

char Lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

char Upper(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

bool SameWord(const CVrxStringU& text, const char* word) {
    return text.GetLength() == strlen(word) &&
           std::equal(text.begin(), text.end(), word, [](char a, char b) { return Lower(a) == Lower(b); });
}

// An unknown word leaves the old number.
template <size_t Count>
void ReadWord(const CVrxStringU& text, const Word (&words)[Count], uint32_t& out) {
    for (const Word& word : words)
        if (SameWord(text, word.text))
            out = word.number;
}

// The first spelling that the object has.
const CVrJsonValue* FindAny(const CVrJsonValue& object, std::initializer_list<const char*> spellings) {
    for (const char* spelling : spellings)
        if (const CVrJsonValue* found = object.Find(spelling))
            return found;
    return nullptr;
}

// Digits in decimal, octal ("017") or hexadecimal ("0x10"), also as a string; held within 32 bits.
uint32_t ReadNumberText(const CVrJsonValue& value) {
    if (value.value.IsEmpty())
        return value.ToUint32();
    const unsigned long long number = strtoull(value.value.CStr(), nullptr, 0);
    return value.value[0] == '-' ? static_cast<uint32_t>(number)
                                 : static_cast<uint32_t>(std::min<unsigned long long>(number, UINT32_MAX));
}

void ReadNumber(const CVrJsonValue* value, uint32_t& out) {
    if (value)
        out = ReadNumberText(*value);
}

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

// A word of the table, or a number below kRestModes; anything else leaves the old mode.
void ReadRestMode(const CVrJsonValue& value, uint8_t& mode) {
    if (value.IsString() && !IsDigit(value.value[0])) {
        for (uint8_t i = 0; i < kRestModes; i++)
            if (SameWord(value.value, kRestWords[i]))
                mode = i;
    } else if (const uint32_t number = ReadNumberText(value); number < kRestModes) {
        mode = static_cast<uint8_t>(number);
    }
}

void ReadBackground(const CVrJsonValue& value, uint32_t& color) {
    if (!value.IsString())
        color = value.ToUint32();
    else if (!value.value.IsEmpty())
        color = static_cast<uint32_t>(strtoull(value.value.CStr(), nullptr, 16));
}

void ReadTimeFormat(const CVrJsonValue* value, uint32_t& format) {
    if (!value)
        return;
    if (value->IsString())
        ReadWord(value->value, kTimeWords, format);
    else
        format = value->IsTrue() || value->ToUint32() != 0 ? 1 : 0;
}

void ReadDateFormat(const CVrJsonValue* value, uint32_t& format) {
    if (!value)
        return;
    if (value->IsString())
        ReadWord(value->value, kDateWords, format);
    else
        format = value->ToUint32();
}

// Up to 8 characters, and none that would not survive the way into the file and back.
void ReadLanguage(const CVrJsonValue* value, char (&out)[CVrDisplaySettings::kLanguageLength + 1]) {
    if (!value)
        return;
    const CVrxStringU text =
        value->IsString() ? value->value : CVrxStringU::Formatted("%u", value->ToUint32());
    uint32_t length = std::min(text.GetLength(), CVrDisplaySettings::kLanguageLength);
    if (const int32_t escape = text.Find('\\'); escape >= 0)
        length = std::min(length, static_cast<uint32_t>(escape));
    length = Utf8WithoutCutEnd(text.CStr(), length);
    memcpy(out, text.CStr(), length);
    out[length] = '\0';
}

void ReadColors(const CVrJsonValue& root, CVrSchemeColors& colors) {
    const CVrJsonValue* list = root.Find("colors");
    if (!list || !list->IsArray())
        return;
    for (const CVrJsonValue* entry : list->Children()) {
        if (!entry->IsObject())
            continue;
        for (uint32_t i = 0; i < CVrSchemeColors::kCount; i++)
            if (const CVrJsonValue* text = entry->Find(CVrSchemeColors::kNames[i]); text && text->IsString())
                colors.Set(static_cast<CVrSchemeColors::Color>(i), text->value.CStr());
    }
}

void ReadOptions(const CVrJsonValue& object, CVrSettingsOptions& options) {
    if (const CVrJsonValue* value = FindAny(object, {"screenSaver", "screensaver"})) {
        options.hasRestMode = true;
        ReadRestMode(*value, options.restMode);
    }
    if (const CVrJsonValue* value =
            FindAny(object, {"nRestModeDelaySeconds", "nRestmodedelayseconds", "nrestmodedelayseconds",
                             "nRestModeDelaySec", "nRestmodedelaysec", "restModeDelaySeconds",
                             "restmodedelayseconds", "restModeDelaySec", "restmodedelaysec",
                             "interactionTimeoutSec", "interactiontimeoutsec"})) {
        options.hasRestDelay = true;
        options.restDelay = ReadNumberText(*value);
    }
    if (const CVrJsonValue* value = FindAny(object, {"colorScheme", "colorscheme"})) {
        options.hasColorScheme = true;
        options.colorScheme = ReadNumberText(*value);
    }
    if (const CVrJsonValue* value = FindAny(object, {"backgroundColor", "backgroundcolor"})) {
        options.hasBackground = true;
        ReadBackground(*value, options.background);
    }
}

void ReadFormats(const CVrJsonValue& object, CVrDisplaySettings& settings) {
    ReadTimeFormat(
        FindAny(object, {"is24hFormat", "is24hformat", "timeFormat", "timeformat", "24hFormat", "24hformat"}),
        settings.timeFormat);
    ReadDateFormat(FindAny(object, {"dateFormat", "dateformat"}), settings.dateFormat);
    if (const CVrJsonValue* value = FindAny(object, {"country", "countryCode", "countrycode"}))
        ParseCountry(*value, settings.country);
    ReadLanguage(FindAny(object, {"language", "languageCode", "languagecode"}), settings.language);
    ReadNumber(FindAny(object, {"crcRooms", "crcrooms"}), settings.crcRooms);
    ReadNumber(FindAny(object, {"crcCategories", "crccategories"}), settings.crcCategories);
    ReadNumber(FindAny(object, {"crcStructure", "crcstructure"}), settings.crcStructure);
}

void WriteColors(CVrxStringU& out, const CVrSchemeColors& colors) {
    const char* separator = "\"colors\": [ ";
    for (uint32_t i = 0; i < CVrSchemeColors::kCount; i++) {
        if (!colors.has[i])
            continue;
        out += CVrxStringU::Formatted("%s{ \"%s\": \"%s\" }", separator, CVrSchemeColors::kNames[i],
                                      colors.text[i].CStr());
        separator = ", ";
    }
    out += " ]";
}

// Each option ends with the separator to what follows.
void WriteOptions(CVrxStringU& out, const CVrSettingsOptions& options) {
    const uint8_t mode = options.restMode < kRestModes ? options.restMode : kDefaultRestMode;
    if (options.hasRestMode)
        out += CVrxStringU::Formatted("\"screenSaver\": \"%s\", ", kRestWords[mode]);
    if (options.hasRestDelay)
        out += CVrxStringU::Formatted("\"interactionTimeoutSec\": %u, \"nRestModeDelaySeconds\": %u, ",
                                      options.restDelay, options.restDelay);
    if (options.hasColorScheme)
        out += CVrxStringU::Formatted("\"colorScheme\": %u, ", options.colorScheme);
    if (options.hasBackground)
        out += CVrxStringU::Formatted("\"backgroundColor\": %u, ", options.background);
}

} // namespace

void CVrSettingsOptions::TakeFrom(const CVrSettingsOptions& other) {
    const auto take = [](bool& has, auto& value, bool otherHas, const auto& otherValue) {
        if (!otherHas)
            return;
        has = true;
        value = otherValue;
    };
    take(hasRestMode, restMode, other.hasRestMode, other.restMode);
    take(hasRestDelay, restDelay, other.hasRestDelay, other.restDelay);
    take(hasColorScheme, colorScheme, other.hasColorScheme, other.colorScheme);
    take(hasBackground, background, other.hasBackground, other.background);
}

void CVrSchemeColors::Set(Color color, const char* value) {
    has[color] = true;
    text[color] = value;
}

bool CVrSchemeColors::HasAny() const {
    return std::find(std::begin(has), std::end(has), true) != std::end(has);
}

void ParseCountry(const CVrJsonValue& value, char (&out)[3]) {
    CVrxStringU code = "01";
    if (value.IsString() && value.value.GetLength() >= 2) {
        const char upper[] = {Upper(value.value[0]), Upper(value.value[1]), '\0'};
        code = upper;
    } else if (!value.IsString() && value.ToUint32() != 0) {
        code.Format("%02u", value.ToUint32());
    }
    const bool known = std::find_if(std::begin(kCountries), std::end(kCountries), [&](const char* country) {
                           return code == country;
                       }) != std::end(kCountries);
    strcpy(out, known ? code.CStr() : "01");
}

bool ParseSettings(const CVrxStringU& text, CVrSchemeColors* colors, CVrDisplaySettings* settings,
                   CVrSettingsOptions* options) {
    CVrJsonParser parser;
    const CVrJsonValue* root = parser.ParseRoot(text);
    if (!root)
        return false;
    if (!root->IsObject())
        return true;
    if (colors)
        ReadColors(*root, *colors);
    const CVrJsonValue* object = FindAny(*root, {"wallslate", "wallSlate"});
    if (!object || !object->IsObject())
        return true;
    if (options)
        ReadOptions(*object, *options);
    if (settings)
        ReadFormats(*object, *settings);
    return true;
}

void SerializeSettings(CVrxStringU& out, const CVrSchemeColors* colors, const CVrDisplaySettings* settings,
                       const CVrSettingsOptions* options) {
    out = "{ ";
    const bool hasColors = colors && colors->HasAny();
    if (hasColors)
        WriteColors(out, *colors);
    if (settings) {
        out += hasColors ? ", \"wallslate\": {" : "\"wallslate\": {";
        if (options)
            WriteOptions(out, *options);
        out += CVrxStringU::Formatted("\"24hFormat\": %u, \"dateFormat\": %u, \"country\": \"%s\", "
                                      "\"language\": \"%s\", \"crcRooms\": %u, \"crcCategories\": %u, "
                                      "\"crcStructure\": %u }",
                                      settings->timeFormat, settings->dateFormat, settings->country,
                                      settings->language, settings->crcRooms, settings->crcCategories,
                                      settings->crcStructure);
    }
    out += " }\n";
}

bool SaveSettings(const CVrDisplaySettings& settings) {
    CVrSchemeColors colors;
    CVrSettingsOptions options;
    CVrxStringU text;
    if (LoadStringFromFile(GetSettingsFilePath().CStr(), text))
        ParseSettings(text, &colors, nullptr, &options);
    options.TakeFrom(settings.options);
    SerializeSettings(text, &colors, &settings, &options);
    return SaveSettingsFile(text);
}
