#include "foundation/translator.h"

#include <cstring>
#include <strings.h>

#include "foundation/files.h"
#include "foundation/json.h"
#include "foundation/log.h"

namespace {

constexpr const char* kEnglish = "ENG";
constexpr const char* kCatalogFolder = "translations/";
constexpr const char* kCatalogPrefix = "lang_";
constexpr const char* kCatalogSuffix = ".json";

struct Alias {
    const char* name; // in any case
    const char* code;
};

constexpr Alias kAliases[] = {{"de", "DEU"}, {"en", "ENG"}, {"en_us", "ENU"}};

struct BuiltInText {
    const char* key;
    const char* text;
};

// What the display says with no catalog at all.
constexpr BuiltInText kBuiltInTexts[] = {
    {"common.loading", "Loading..."},
    {"app.loading_structure", "Loading structure..."},
    {"config.waiting_title", "Add Functions in Config to use Wall Slate."},
    {"config.help_title", "Need help?"},
    {"config.instruction_hint", "Further instruction found here:"},
    {"alert.dismiss", "Dismiss"},
    {"pairing.start_learning", "Start learning mode"},
    {"pairing.ready_title", "Add me in Config!"},
    {"pairing.identifying_title", "I'm over here!"},
    {"pairing.online_title", "Ready to go!"},
    {"pairing.connecting_title", "Connecting"},
    {"pairing.reconnecting_title", "Reconnecting"},
    {"pairing.mesh_offline_title", "Temporarily less intelligent."},
    {"pairing.spur_failed_title", "Oops, that didn't work..."},
    {"pairing.ready_status", "Ready for pairing"},
    {"pairing.identifying_status", "Identifying"},
    {"pairing.online_status", "Online"},
    {"pairing.connecting_status", "Connecting"},
    {"pairing.reconnecting_status", "Reconnecting"},
    {"pairing.mesh_offline_status", "Connection lost"},
    {"pairing.spur_failed_status", "Connection failed"},
    {"pairing.ready_desc", "Find and setup your Wall Slate in Vermara Config."},
    {"pairing.identifying_desc", "Device was selected in Vermara Config and is identifying"},
    {"pairing.online_desc", "You've successfully been connected to your Corebox!"},
    {"pairing.connecting_desc", "Device is connecting to Corebox."},
    {"pairing.reconnecting_desc", "Device is trying to reconnect to Corebox."},
    {"pairing.mesh_offline_desc", "The device is paired but can't currently reach the Corebox."},
    {"pairing.spur_failed_desc", "Wall Slate cannot connect to the Corebox via the Spur interface"},
    {"shade.opening", "Opening..."},
    {"shade.closing", "Closing..."},
    {"shade.open", "Open"},
    {"shade.closed", "Closed"},
    {"intercom.no_video", "No Video"},
    {"tree.group_empty", "This group is empty."},
    {"music.volume", "Volume"},
    {"music.source_type.radio", "Radio"},
    {"music.source_type.playlist", "Playlist"},
    {"music.source_type.bluetooth", "Bluetooth"},
    {"music.source_type.line_in", "Line-In"},
    {"light.brightness", "Brightness"},
    {"audio.loading_covers", "Loading audio covers..."},
    {"audio.loading_playlists", "Loading playlists..."},
};

// A code becomes part of a file name: only what cannot lead out of the folder is one.
bool IsFileNamePart(const CVrxStringU& code) {
    for (const char c : code) {
        const bool isLetter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
        if (!isLetter && !(c >= '0' && c <= '9') && c != '_' && c != '-')
            return false;
    }
    return !code.IsEmpty();
}

void MakeUpper(CVrxStringU& text) {
    char* c = text.GetBuffer();
    for (uint32_t i = 0; i < text.GetLength(); i++) {
        if (c[i] >= 'a' && c[i] <= 'z')
            c[i] = static_cast<char>(c[i] - 'a' + 'A');
    }
}

CVrxStringU CatalogPath(const CVrxStringU& code) {
    CVrxStringU lower = code;
    lower.MakeLower();
    return GetDataFilePath(
        CVrxStringU::Formatted("%s%s%s%s", kCatalogFolder, kCatalogPrefix, lower.CStr(), kCatalogSuffix)
            .CStr());
}

const char* FindBuiltIn(const char* key) {
    for (const BuiltInText& row : kBuiltInTexts) {
        if (strcmp(row.key, key) == 0)
            return row.text;
    }
    return nullptr;
}

} // namespace

CVrTranslator& CVrTranslator::Instance() {
    static CVrTranslator translator;
    return translator;
}

const char* CVrTranslator::GetText(const char* key) const {
    if (!key)
        return "";
    const CVrxStringU wanted(key);
    if (const int32_t index = keys.Find(wanted); index >= 0)
        return values.TextAt(index);
    if (const int32_t index = fallbackKeys.Find(wanted); index >= 0)
        return fallbackValues.TextAt(index);
    const char* builtIn = FindBuiltIn(key);
    return builtIn ? builtIn : key;
}

bool CVrTranslator::SetLanguage(const char* code) {
    constexpr const char* kTag = "CVrTranslator::SetLanguage";
    CVrxStringU wanted;
    NormalizeLanguage(code, wanted);
    if (hasLanguage && wanted == language)
        return false;
    const bool isLoaded = LoadCatalog(wanted.CStr(), keys, values);
    language = wanted;
    hasLanguage = true;
    if (isLoaded)
        Log(LogState, kTag, "[Translator] language '%s' (%u strings)", language.CStr(),
            static_cast<uint32_t>(keys.GetSize()));
    else
        Log(LogWarning, kTag, "[Translator] catalog for '%s' missing, falling back to English",
            language.CStr());
    return true;
}

bool CVrTranslator::LoadFallback() {
    constexpr const char* kTag = "CVrTranslator::Init";
    const bool isLoaded = LoadCatalog(kEnglish, fallbackKeys, fallbackValues);
    if (isLoaded)
        Log(LogState, kTag, "[Translator] loaded %u fallback strings",
            static_cast<uint32_t>(fallbackKeys.GetSize()));
    else
        Log(LogWarning, kTag, "[Translator] English fallback catalog '%s%s%s%s' not found",
            GetDataFilePath(kCatalogFolder).CStr(), kCatalogPrefix, kEnglish, kCatalogSuffix);
    return isLoaded;
}

bool CVrTranslator::LoadCatalog(const char* code, CVrxStringArray& keys, CVrxStringArray& values) {
    keys.Clear();
    values.Clear();
    const CVrxStringU name(code);
    CVrxStringU text;
    if (!IsFileNamePart(name) || !LoadStringFromFile(CatalogPath(name).CStr(), text))
        return false;
    CVrJsonParser parser;
    const CVrJsonValue* root = parser.ParseRoot(text);
    if (!root)
        return false;
    for (const CVrJsonValue* member : root->Children()) {
        if (member->IsString() && !member->value.IsNull()) { // a key without a value says nothing
            keys.Add(member->name);
            values.Add(member->value);
        }
    }
    return true;
}

void CVrTranslator::NormalizeLanguage(const char* code, CVrxStringU& out) {
    out = code && *code ? code : kEnglish;
    for (const Alias& alias : kAliases) {
        if (strcasecmp(alias.name, out.CStr()) == 0)
            out = alias.code;
    }
    MakeUpper(out);
}
