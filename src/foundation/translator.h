// Text keys such as "shade.opening" to the words of the current language. A key that the current catalog
// lacks is looked up in the English catalog, then in a table that is compiled in, and at last the key itself
// is shown, so that there are words even without any catalog.
//
// A catalog is the file translations/lang_CODE.json of the data folder: one JSON object, key to text, without
// escapes.
#pragma once

#include <cstdint>

#include "foundation/string.h"
#include "foundation/string_array.h"

// Belongs to the GUI thread once that runs. All look-ups are linear in the size of the catalogs: fetch texts
// when an element is built or the language changes, not while drawing.
class CVrTranslator {
public:
    static CVrTranslator& Instance();

    // The text of the key, never null; "" for a null key. Valid until the next SetLanguage or LoadFallback,
    // and no longer than `key` if that itself is the answer.
    const char* GetText(const char* key) const;

    // The same as a copy, for texts that are kept or joined.
    CVrxStringU Translate(const char* key) const { return GetText(key); }

    // Takes the catalog of the code or alias; a null or empty code is English. True if the language changed,
    // also to one without a catalog, in which case the fallbacks serve.
    bool SetLanguage(const char* code);
    bool SetLanguage(const CVrxStringU& code) { return SetLanguage(code.CStr()); }

    // Loads the English catalog behind the current one; false if it cannot be had.
    bool LoadFallback();

    // Empties both arrays and fills them from the catalog of the code, keys and texts at equal indices.
    // Members that are no strings are left out. False if there is no such catalog or it cannot be parsed.
    static bool LoadCatalog(const char* code, CVrxStringArray& keys, CVrxStringArray& values);

    // The three-letter code in upper case that the code or alias stands for.
    static void NormalizeLanguage(const char* code, CVrxStringU& out);

    CVrxStringArray keys; // of the current language
    CVrxStringArray values;
    CVrxStringArray fallbackKeys; // of the English catalog
    CVrxStringArray fallbackValues;
    CVrxStringU language; // normalised code of the current language
    bool hasLanguage = false;

private:
    CVrTranslator() = default;
};
